#include "view/theme.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

const QStringList kBuiltInNames{"Dark", "Light", "Dracula", "Solarized Dark", "Solarized Light"};

} // namespace

class TestTheme : public QObject {
    Q_OBJECT

private slots:
    void builtInColor_data();
    void builtInColor();
    void builtInsComplete();
    void nameNormalForm_data();
    void nameNormalForm();
    void userTheme_data();
    void userTheme();
    void userThemeNames();
    void styleSheet_data();
    void styleSheet();
};

void TestTheme::builtInColor_data() {
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");
    QTest::newRow("dark cell") << "Dark"
                               << "CellColor"
                               << "#222222";
    QTest::newRow("dark text") << "Dark"
                               << "TextColor"
                               << "#ffffff";
    QTest::newRow("dark main") << "Dark"
                               << "MainCellColor"
                               << "#770077";
    QTest::newRow("dark highlighted shade 2") << "Dark"
                                              << "HighlightedCellShade2Color"
                                              << "#666600";
    QTest::newRow("light header cell shade 1") << "Light"
                                               << "HeaderCellShade1Color"
                                               << "#aaffaa";
    QTest::newRow("light static text") << "Light"
                                       << "StaticTextColor"
                                       << "#4f4f4f";
    QTest::newRow("light button text") << "Light"
                                       << "ButtonTextColor"
                                       << "#000000";
    QTest::newRow("dracula header cell") << "Dracula"
                                         << "HeaderCellColor"
                                         << "#ff5555";
    QTest::newRow("dracula fuzzy") << "Dracula"
                                   << "FuzzySearchHighlightedTextColor"
                                   << "#93949a";
    QTest::newRow("dracula cell shade 1 is darker")
        << "Dracula"
        << "CellShade1Color" << QColor("#282a36").darker(115).name();
    QTest::newRow("solarized dark background 5") << "Solarized Dark"
                                                 << "Background5Color"
                                                 << "#1187a5";
    QTest::newRow("solarized dark disabled") << "Solarized Dark"
                                             << "DisabledTextColor"
                                             << "#b1b8b3";
    QTest::newRow("solarized light main") << "Solarized Light"
                                          << "MainCellColor"
                                          << "#c8e600";
    QTest::newRow("solarized light histogram") << "Solarized Light"
                                               << "HistogramBarColor"
                                               << "#f45a1a";
}

void TestTheme::builtInColor() {
    QFETCH(QString, theme);
    QFETCH(QString, key);
    QFETCH(QString, expected);
    Theme t;
    t.apply(theme);
    const auto role = Theme::userRole(key);
    QVERIFY(role);
    QCOMPARE(t.color(*role).name(), expected);
}

void TestTheme::builtInsComplete() {
    const QList<int> alphas{230, 235, 240, 220, 220};
    for (int i = 0; i < kBuiltInNames.size(); ++i) {
        Theme t;
        t.apply(kBuiltInNames[i]);
        QCOMPARE(t.name, kBuiltInNames[i]);
        QCOMPARE(t.launcher_background_alpha, alphas[i]);
        QCOMPARE(t.line_blend_factor, i == 0 ? 0.2f : 0.15f);
        for (int role = 0; role < Theme::RoleCount; ++role)
            QVERIFY2(t.color(Theme::Role(role)).isValid(),
                     qPrintable(Theme::key(Theme::Role(role))));
        QColor translucent = t.color(Theme::MainCellColor);
        translucent.setAlpha(40);
        QCOMPARE(t.color(Theme::MainCellTranslucentColor), translucent);
    }
}

void TestTheme::nameNormalForm_data() {
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("chosen");
    QTest::newRow("capitals and blanks") << "  SOLARIZED dark "
                                         << "Solarized Dark";
    QTest::newRow("lower case") << "dracula"
                                << "Dracula";
    QTest::newRow("trailing tab") << "Light\t"
                                  << "Light";
    QTest::newRow("inner blanks count") << "solarized  light"
                                        << "Dark";
    QTest::newRow("unknown") << "Midnight"
                             << "Dark";
    QTest::newRow("empty") << ""
                           << "Dark";
}

void TestTheme::nameNormalForm() {
    QFETCH(QString, asked);
    QFETCH(QString, chosen);
    Theme t;
    t.apply("Solarized Light"); // so that falling back to Dark changes something
    t.apply(asked);
    Theme expected;
    expected.apply(chosen);
    QCOMPARE(t.name, chosen);
    QVERIFY(t == expected);
}

void TestTheme::userTheme_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<int>("alpha");
    const QString dark_cell = "#222222";
    QTest::newRow("six digits") << QByteArray("Key,Value\nCellColor,ff0000\n") << "#ff0000" << 230;
    QTest::newRow("any case, no header, CRLF")
        << QByteArray("CellColor,Ff00aA\r\nLauncherBackgroundAlpha,0\r\n") << "#ff00aa" << 0;
    QTest::newRow("quoted, byte order mark")
        << QByteArray("\xEF\xBB\xBF\"CellColor\",\"00ff00\"") << "#00ff00" << 230;
    QTest::newRow("hash ignored") << QByteArray("CellColor,#ff0000\n") << dark_cell << 230;
    QTest::newRow("seven digits ignored") << QByteArray("CellColor,ff00000\n") << dark_cell << 230;
    QTest::newRow("colour name ignored") << QByteArray("CellColor,red\n") << dark_cell << 230;
    QTest::newRow("blank ignored") << QByteArray("CellColor, ff0000\n") << dark_cell << 230;
    QTest::newRow("later row wins")
        << QByteArray("CellColor,ff0000\nCellColor,0000ff\n") << "#0000ff" << 230;
    QTest::newRow("alpha above 255 ignored")
        << QByteArray("LauncherBackgroundAlpha,256\n") << dark_cell << 230;
    QTest::newRow("alpha text ignored")
        << QByteArray("LauncherBackgroundAlpha,high\n") << dark_cell << 230;
    QTest::newRow("widget colour key skipped")
        << QByteArray("InputColor,ff0000\nMainCellTranslucentColor,ff0000\n") << dark_cell << 230;
}

void TestTheme::userTheme() {
    QFETCH(QByteArray, file);
    QFETCH(QString, cell);
    QFETCH(int, alpha);
    QTemporaryDir dir;
    writeFile(dir.filePath("Ocean.csv"), file + "\nMainCellColor,123456\n");
    Theme t;
    t.loadUserThemes(dir.path());
    t.apply("Light");
    t.apply("ocean");
    QCOMPARE(t.name, QString("Ocean"));
    QCOMPARE(t.color(Theme::CellColor).name(), cell);
    QCOMPARE(t.launcher_background_alpha, alpha);
    // Roles the file does not set keep Dark's colours, widget colours included.
    Theme dark;
    QCOMPARE(t.color(Theme::TextColor), dark.color(Theme::TextColor));
    QCOMPARE(t.color(Theme::InputColor), dark.color(Theme::InputColor));
    QCOMPARE(t.iconVariant(), QString("Dark"));
    QCOMPARE(t.color(Theme::MainCellTranslucentColor), QColor(0x12, 0x34, 0x56, 40));
}

void TestTheme::userThemeNames() {
    QTemporaryDir dir;
    writeFile(dir.filePath("b.csv"), "CellColor,0000ff\n");
    writeFile(dir.filePath("Alpha.csv"), "CellColor,00ff00\n");
    writeFile(dir.filePath("dark.csv"), "CellColor,ff0000\n");  // shadowed by the built-in
    writeFile(dir.filePath("ALPHA.csv"), "CellColor,ff0000\n"); // same name as an earlier one
    writeFile(dir.filePath("notes.txt"), "CellColor,ff0000\n");
    QVERIFY(QDir(dir.path()).mkdir("folder.csv"));

    Theme t;
    t.loadUserThemes(dir.path());
    QCOMPARE(t.names(), kBuiltInNames + QStringList({"ALPHA", "b"}));
    t.apply(" alpha");
    QCOMPARE(t.color(Theme::CellColor), QColor("#ff0000"));
    t.apply("B");
    QCOMPARE(t.color(Theme::CellColor), QColor("#0000ff"));
    t.apply("Dark");
    QCOMPARE(t.color(Theme::CellColor), QColor("#222222"));

    t.loadUserThemes(dir.filePath("missing"));
    QCOMPARE(t.names(), kBuiltInNames);
}

void TestTheme::styleSheet_data() {
    QTest::addColumn<QString>("theme");
    QTest::addColumn<QString>("variant");
    for (const QString& name : kBuiltInNames)
        QTest::newRow(qPrintable(name))
            << name << (name == "Light" || name == "Solarized Light" ? "Light" : "Dark");
}

void TestTheme::styleSheet() {
    QFETCH(QString, theme);
    QFETCH(QString, variant);
    Theme t;
    t.apply(theme);
    QCOMPARE(t.iconVariant(), variant);
    const QString sheet = t.styleSheet();

    qsizetype last = -1;
    for (const char* cls :
         {"QWidget",        "QCheckBox",    "QComboBox",   "QFrame",         "QGroupBox",
          "QHeaderView",    "QLabel",       "QLineEdit",   "QMenu",          "QMenuBar",
          "QPlainTextEdit", "QProgressBar", "QPushButton", "QRadioButton",   "QRubberBand",
          "QScrollArea",    "QScrollBar",   "QSpinBox",    "QDoubleSpinBox", "QTabBar",
          "QTableView",     "QTextEdit",    "QToolTip",    "QTreeView"}) {
        const qsizetype at = sheet.indexOf(
            QRegularExpression(QString("^%1 \\{$").arg(cls), QRegularExpression::MultilineOption));
        QVERIFY2(at > last, cls);
        last = at;
    }
    for (const char* figure :
         {"QScrollBar:vertical {\nwidth: 12px;", "QScrollBar:horizontal {\nheight: 12px;",
          "min-height: 25px;", "min-width: 25px;", "width: 0px;\nheight: 0px;",
          "QCheckBox::indicator {\nwidth: 15px;\nheight: 15px;",
          "width: 15px;\nheight: 15px;\nborder-radius: 7px;", "padding-left: 6px;",
          "font-size: 14px;", "padding: 0px 6px 5px 6px;", "margin-top: 20px;",
          "border-radius: 8px;", "padding: -26px 6px 10px 6px;",
          "padding-top: 2px;\npadding-bottom: 2px;",
          "QHeaderView::section:vertical {\npadding-left: 3px;\npadding-right: 3px;",
          "border-radius: 3px;", "border-style: none;"}) {
        QVERIFY2(sheet.contains(QLatin1String(figure)), figure);
    }
    QVERIFY(sheet.contains("QTableView {\nbackground-color: " + t.color(Theme::CellColor).name()));

    const QString cell_border = t.color(Theme::CellBorderColor).name();
    QVERIFY(t.tableViewStyleSheet(1).contains("border-left: 1px solid " + cell_border));
    QVERIFY(t.tableViewStyleSheet(2).contains("border-bottom: 1px solid " + cell_border));
    QVERIFY(!t.tableViewStyleSheet(0).contains(cell_border));

    QStringList images;
    for (const auto& match : QRegularExpression("url\\(\"([^\"]+)\"\\)").globalMatch(sheet))
        images.append(match.captured(1));
    QVERIFY(images.contains(QString(":/images/Check Box- %1 Checked.png").arg(variant)));
    QVERIFY(images.contains(QString(":/images/ComboBox- %1.png").arg(variant)));
    for (const QString& image : images)
        QVERIFY2(!QImage(image).isNull(), qPrintable(image));
}

QTEST_MAIN(TestTheme)
#include "tst_theme.moc"
