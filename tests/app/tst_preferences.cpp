#include "app/fileextensionswidget.h"
#include "app/mainwindow.h"
#include "app/preferenceswindow.h"
#include "app/settingswidget.h"
#include "app/shortcutswidget.h"
#include "commands/commandtable.h"
#include "commands/preferencefiles.h"
#include "commands/settings.h"
#include "commands/shortcutconflicts.h"
#include "data/fileparameters.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/msgbox.h"
#include "widgets/searchedit.h"
#include "widgets/togglebutton.h"

#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>

namespace {

// A window over a preference folder of its own, as the program starts one.
struct Fixture {
    QTemporaryDir dir;
    MainWindow window;
    PreferenceFiles files{dir.path()};

    Fixture() { window.usePreferenceFolder(dir.path()); }
    static QByteArray read(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
    }
    QByteArray settingsFile() const { return read(files.settingsPath()); }
    QByteArray shortcutsFile() const { return read(files.shortcutsPath()); }
    QAction* action(const QString& label) const {
        for (QAction* a : window.findChildren<QAction*>())
            if (a->text() == label) return a;
        return nullptr;
    }
};

void retype(QWidget* editor, const QString& text) {
    if (auto* spin = qobject_cast<QAbstractSpinBox*>(editor)) spin->selectAll();
    if (auto* line = qobject_cast<QLineEdit*>(editor)) line->selectAll();
    if (text.isEmpty())
        QTest::keyClick(editor, Qt::Key_Delete);
    else
        QTest::keyClicks(editor, text);
}

} // namespace

class TestPreferences : public QObject {
    Q_OBJECT

    QStringList asked;

private slots:
    // A question no test expects is recorded and dismissed, never waited on.
    void init() {
        asked.clear();
        MsgBox::setAutoAnswer([this](MsgBox& box) { asked << box.text(); });
    }
    void cleanup() { MsgBox::setAutoAnswer({}); }

    // Edited settings reach the file and the window on Apply, Global ones at
    // once and Table ones for the next file; Cancel drops edits.
    void settingsApply() {
        Fixture f;
        const QByteArray untouched = f.settingsFile();
        f.window.commandEditSettings();
        PreferencesWindow* pw = f.window.preferencesWindow();
        QVERIFY(pw);
        QCOMPARE(pw->currentTab(), PreferencesWindow::SettingsTab);
        SettingsWidget* sw = pw->settingsWidget();
        retype(sw->editor(SettingId::TextSize), QStringLiteral("15"));
        QTest::mouseClick(pw->cancelButton(), Qt::LeftButton);
        QTRY_VERIFY(!f.window.preferencesWindow());
        QCOMPARE(f.settingsFile(), untouched);

        f.window.commandPreferences();
        pw = f.window.preferencesWindow();
        sw = pw->settingsWidget();
        QCOMPARE(sw->editorText(SettingId::TextSize), QStringLiteral("12"));
        QVERIFY(!pw->applyButton()->isEnabled());
        retype(sw->editor(SettingId::TextSize), QStringLiteral("15"));
        retype(sw->editor(SettingId::HeaderRows), QStringLiteral("3"));
        QTest::mouseClick(sw->editor(SettingId::ShowRowLabels), Qt::LeftButton);
        QTest::mouseClick(sw->editor(SettingId::ReadOnly), Qt::LeftButton);
        QVERIFY(pw->applyButton()->isEnabled());
        QTest::mouseClick(pw->applyButton(), Qt::LeftButton);

        QVERIFY(!pw->applyButton()->isEnabled());
        const QByteArray file = f.settingsFile();
        QVERIFY(file.contains("\nText Size,Global,integer >= 1,12,15\n"));
        QVERIFY(file.contains("\nNumber of Header Rows,Table,integer >= 0,1,3\n"));
        QVERIFY(file.contains("\nShow Row Labels,Global,true|false,true,false\n"));
        QCOMPARE(f.window.currentSettings().integer(SettingId::TextSize), 15);
        QVERIFY(f.window.currentView()->verticalHeader()->isHidden());
        QCOMPARE(f.window.currentView()->model()->numHeaderRows(), 1);
        QVERIFY(!f.window.currentView()->model()->isReadOnly());
        QFile csv(f.dir.filePath(QStringLiteral("later.csv")));
        QVERIFY(csv.open(QIODevice::WriteOnly));
        csv.write("a,b\n1,2\n3,4\n5,6\n");
        csv.close();
        QVERIFY(f.window.openFile(csv.fileName()));
        QCOMPARE(f.window.currentView()->model()->numHeaderRows(), 3);
        QVERIFY(f.window.currentView()->model()->isReadOnly());

        // A value the window changes meanwhile shows in the form.
        f.window.commandToggleShowRowLabels();
        QCOMPARE(sw->editorText(SettingId::ShowRowLabels), QStringLiteral("true"));

        QTest::mouseClick(sw->restoreDefaultsButton(), Qt::LeftButton);
        QVERIFY(!sw->defaultButton(SettingId::TextSize)->isEnabled());
        QTest::mouseClick(pw->okButton(), Qt::LeftButton);
        QTRY_VERIFY(!f.window.preferencesWindow());
        QVERIFY(f.settingsFile().contains("\nText Size,Global,integer >= 1,12,\n"));
        QVERIFY(f.settingsFile().contains("\nNumber of Header Rows,Table,integer >= 0,1,\n"));
        QCOMPARE(f.window.currentSettings().integer(SettingId::TextSize), 12);
    }

    // One row back to its default; the search shows matching rows with the
    // matched letters in the theme's highlight colour.
    void settingsRowDefaultAndSearch() {
        Settings settings;
        settings.setFromText(SettingId::Theme, QStringLiteral("Light"));
        SettingsWidget sw(settings);
        QPushButton* button = sw.defaultButton(SettingId::MinTableRows);
        QVERIFY(!button->isEnabled());
        retype(sw.editor(SettingId::MinTableRows), QStringLiteral("70"));
        QVERIFY(button->isEnabled());
        QVERIFY(sw.isModified());
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(sw.editorText(SettingId::MinTableRows), QStringLiteral("50"));
        QVERIFY(!sw.isModified());

        QTest::keyClicks(sw.searchEdit(), QStringLiteral("txsz"));
        QVERIFY(sw.isRowShown(SettingId::TextSize));
        QVERIFY(!sw.isRowShown(SettingId::Theme));
        const QString colour =
            settings.theme().color(Theme::FuzzySearchHighlightedTextColor).name();
        QCOMPARE(sw.nameLabel(SettingId::TextSize)->text(),
                 QStringLiteral("<span style=\"color:%1;\">T</span>e<span "
                                "style=\"color:%1;\">x</span>t <span "
                                "style=\"color:%1;\">S</span>i<span "
                                "style=\"color:%1;\">z</span>e")
                     .arg(colour));
        sw.searchEdit()->clear();
        QVERIFY(sw.isRowShown(SettingId::Theme));
        QCOMPARE(sw.nameLabel(SettingId::TextSize)->text(), QStringLiteral("Text Size"));
    }

    void conflicts_data() {
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QList<quint32>>("contexts");
        QTest::addColumn<QStringList>("defaults");
        QTest::addColumn<QString>("expected");
        const quint32 any = kAnyContext;
        QTest::newRow("overlapping gates")
            << QStringList{"ctrl+s", "ctrl+s"} << QList<quint32>{TableFocus, any} << QStringList{}
            << "ctrl+s=A+B";
        QTest::newRow("gates that exclude each other")
            << QStringList{"ctrl+e", "ctrl+e"} << QList<quint32>{TableFocus, CellEditing}
            << QStringList{} << "";
        QTest::newRow("a third row meets both")
            << QStringList{"f9", "f9", "f9"} << QList<quint32>{TableFocus, CellEditing, any}
            << QStringList{} << "f9=A+B+C";
        QTest::newRow("only the rows that overlap")
            << QStringList{"f9", "f9", "f9"}
            << QList<quint32>{TableFocus, CellEditing, MultiCellSelection} << QStringList{}
            << "f9=A+C";
        QTest::newRow("one of several alternatives")
            << QStringList{"ctrl+e|f2", "f2"} << QList<quint32>{TableFocus, TableOpen}
            << QStringList{} << "f2=A+B";
        QTest::newRow("Enter and Return are one key")
            << QStringList{"ctrl+enter", "ctrl+return"} << QList<quint32>{TableOpen, TableOpen}
            << QStringList{} << "ctrl+enter=A+B";
        QTest::newRow("a chord is not its first step")
            << QStringList{"ctrl+k,ctrl+d", "ctrl+k"} << QList<quint32>{TableOpen, TableOpen}
            << QStringList{} << "";
        QTest::newRow("the same chord")
            << QStringList{"ctrl+k,ctrl+d", "ctrl+k,ctrl+d"} << QList<quint32>{TableOpen, TableOpen}
            << QStringList{} << "ctrl+k,ctrl+d=A+B";
        QTest::newRow("case and blanks")
            << QStringList{" Ctrl+S ", "ctrl+s"} << QList<quint32>{TableOpen, TableOpen}
            << QStringList{} << "ctrl+s=A+B";
        QTest::newRow("nothing bound")
            << QStringList{"(none)", ""} << QList<quint32>{any, any} << QStringList{} << "";
        QTest::newRow("blocks in the order of their first row")
            << QStringList{"f5|f6", "f6", "f5"} << QList<quint32>{any, any, any} << QStringList{}
            << "f5=A+C;f6=A+B";
        QTest::newRow("built-in pair")
            << QStringList{"alt+enter", "alt+return"} << QList<quint32>{TableOpen, TableOpen}
            << QStringList{"alt+enter", "alt+return"} << "";
        QTest::newRow("built-in pair joined by a new binding")
            << QStringList{"alt+enter", "alt+return", "alt+enter"}
            << QList<quint32>{TableOpen, TableOpen, TableOpen}
            << QStringList{"alt+enter", "alt+return", ""} << "alt+enter=A+B+C";
    }

    void conflicts() {
        QFETCH(QStringList, texts);
        QFETCH(QList<quint32>, contexts);
        QFETCH(QStringList, defaults);
        QFETCH(QString, expected);
        std::vector<ShortcutAssignment> rows;
        for (int i = 0; i < texts.size(); ++i)
            rows.push_back({QString(QChar(u'A' + i)), texts[i], contexts[i],
                            defaults.value(i, QStringLiteral("-"))});
        QStringList found;
        for (const ShortcutConflict& c : findShortcutConflicts(rows))
            found << c.sequence + u'=' + c.names.join(u'+');
        QCOMPARE(found.join(u';'), expected);
    }

    // The keys the table shares on purpose raise no question.
    void defaultShortcutsHaveNoConflict() {
        CommandTable commands(nullptr);
        std::vector<ShortcutAssignment> rows;
        for (const CommandRecord* r : commands.sorted())
            rows.push_back({r->name, r->defaultShortcut, r->requiredContexts, r->defaultShortcut});
        QCOMPARE(shortcutConflictBlocks(findShortcutConflicts(rows)), QString());
    }

    void conflictQuestion_data() {
        QTest::addColumn<bool>("closing");
        QTest::addColumn<int>("answer");
        QTest::newRow("Apply, fix") << false << 0;
        QTest::newRow("Apply, apply") << false << 1;
        QTest::newRow("OK, stay and fix") << true << 0;
        QTest::newRow("OK, apply and exit") << true << 1;
    }

    // A key given to two commands that can fire together asks first; the
    // answer decides whether anything is applied.
    void conflictQuestion() {
        QFETCH(bool, closing);
        QFETCH(int, answer);
        Fixture f;
        const QByteArray untouched = f.shortcutsFile();
        f.window.commandEditKeyboardShortcuts();
        PreferencesWindow* pw = f.window.preferencesWindow();
        QCOMPARE(pw->currentTab(), PreferencesWindow::ShortcutsTab);
        retype(pw->shortcutsWidget()->shortcutEdit(QStringLiteral("New File")),
               QStringLiteral("ctrl+s"));
        pw->setCurrentTab(PreferencesWindow::SettingsTab);

        QString text, informative;
        QStringList buttons;
        MsgBox::setAutoAnswer([&](MsgBox& box) {
            text = box.text();
            informative = box.informativeText();
            buttons = box.buttonTexts();
            box.clickButton(buttons.value(answer));
        });
        QTest::mouseClick(closing ? pw->okButton() : pw->applyButton(), Qt::LeftButton);

        QCOMPARE(text, QStringLiteral("The following shortcuts appear on multiple commands."));
        QCOMPARE(informative,
                 QStringLiteral("<b>ctrl+s</b>:<br>New File<br>Save File<br><br>If left "
                                "unresolved, these shortcuts won't work on any of the commands.") +
                     (closing ? QStringLiteral("<br>Would you like to apply the changes and exit "
                                               "or stay and fix them?")
                              : QStringLiteral("<br>Would you still like to apply changes or fix "
                                               "them first?")));
        const QStringList expected_buttons = closing
                                                 ? QStringList{"&Stay and Fix", "&Apply and Exit"}
                                                 : QStringList{"&Fix", "&Apply"};
        QCOMPARE(buttons, expected_buttons);
        QAction* new_file = f.action(QStringLiteral("&New File"));
        if (answer == 0) {
            QCOMPARE(f.shortcutsFile(), untouched);
            QCOMPARE(new_file->shortcuts(), QList<QKeySequence>{QKeySequence("Ctrl+N")});
            QCOMPARE(f.window.preferencesWindow(), pw);
            QCOMPARE(pw->currentTab(), PreferencesWindow::ShortcutsTab);
            QVERIFY(pw->applyButton()->isEnabled());
        } else {
            QVERIFY(f.shortcutsFile().contains("\nNew File,ctrl+n,ctrl+s\n"));
            // Both rows are enabled: the key goes to the one with the
            // narrower gate, so it still does something.
            QVERIFY(!new_file->shortcuts().contains(QKeySequence("Ctrl+N")));
            QCOMPARE(f.action(QStringLiteral("&Save File"))->shortcuts(),
                     QList<QKeySequence>{QKeySequence("Ctrl+S")});
            if (closing) QTRY_VERIFY(!f.window.preferencesWindow());
        }
    }

    void shortcutSearch_data() {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("hidden");
        QTest::newRow("best match first") << "new file"
                                          << "New File"
                                          << "Undo";
        QTest::newRow("a key finds its command") << "ctrl+alt+s"
                                                 << "Save File As"
                                                 << "New File";
        QTest::newRow("everything, in name order") << ""
                                                   << "About"
                                                   << "";
    }

    void shortcutSearch() {
        QFETCH(QString, query);
        QFETCH(QString, first);
        QFETCH(QString, hidden);
        CommandTable commands(nullptr);
        ShortcutsWidget sw(commands);
        QTest::keyClicks(sw.searchEdit(), query);
        QTableWidget* table = sw.table();
        int top = 0;
        while (table->isRowHidden(top))
            ++top;
        QCOMPARE(table->item(top, 0)->text(), first);
        // Its editor moved along with it.
        QCOMPARE(table->cellWidget(top, 1)->isAncestorOf(sw.shortcutEdit(first)), true);
        if (!hidden.isEmpty())
            QVERIFY(table->isRowHidden(table->findItems(hidden, Qt::MatchExactly).value(0)->row()));
    }

    void shortcutApply_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QByteArray>("row");
        QTest::addColumn<QStringList>("keys");
        QTest::newRow("blank over a default")
            << "New File"
            << "" << QByteArray("New File,ctrl+n,(none)") << QStringList{};
        QTest::newRow("(none) over a default")
            << "New File"
            << "(none)" << QByteArray("New File,ctrl+n,(none)") << QStringList{};
        QTest::newRow("(none) where there is no default")
            << "Close All Files"
            << "(none)" << QByteArray("Close All Files,(none),") << QStringList{};
        QTest::newRow("two keys") << "Close All Files"
                                  << "ctrl+alt+f11|ctrl+shift+f11"
                                  << QByteArray(
                                         "Close All Files,(none),ctrl+alt+f11|ctrl+shift+f11")
                                  << QStringList{"Ctrl+Alt+F11", "Ctrl+Shift+F11"};
        QTest::newRow("Enter binds Return too")
            << "Close All Files"
            << "alt+shift+enter" << QByteArray("Close All Files,(none),alt+shift+enter")
            << QStringList{"Alt+Shift+Enter", "Alt+Shift+Return"};
    }

    void shortcutApply() {
        QFETCH(QString, command);
        QFETCH(QString, typed);
        QFETCH(QByteArray, row);
        QFETCH(QStringList, keys);
        Fixture f;
        f.window.commandEditKeyboardShortcuts();
        PreferencesWindow* pw = f.window.preferencesWindow();
        QLineEdit* edit = pw->shortcutsWidget()->shortcutEdit(command);
        retype(edit, QStringLiteral("ctrl+alt+f12")); // an edit before the real one
        retype(edit, typed);
        QTest::mouseClick(pw->applyButton(), Qt::LeftButton);
        QCOMPARE(asked, QStringList());

        QVERIFY2(f.shortcutsFile().contains('\n' + row + '\n'), f.shortcutsFile().constData());
        QAction* action = nullptr;
        for (QAction* a : f.window.findChildren<QAction*>())
            if (QString(a->text()).remove(u'&') == command) action = a;
        QVERIFY(action);
        QStringList bound;
        for (const QKeySequence& k : action->shortcuts())
            bound << k.toString(QKeySequence::PortableText);
        QCOMPARE(bound, keys);

        // The Default button brings the built-in key back: a blank user cell.
        QTest::mouseClick(pw->shortcutsWidget()->defaultButton(command), Qt::LeftButton);
        QTest::mouseClick(pw->okButton(), Qt::LeftButton);
        const QByteArray restored = row.left(row.lastIndexOf(',') + 1);
        QVERIFY(f.shortcutsFile().contains('\n' + restored + '\n'));
    }

    // Edits of the extension table go through the file and back unchanged,
    // and a file opened afterwards takes its extension's dialect.
    void fileExtensionsRoundTrip() {
        Fixture f;
        f.window.commandEditFileExtensionOptions();
        PreferencesWindow* pw = f.window.preferencesWindow();
        QCOMPARE(pw->currentTab(), PreferencesWindow::FileExtensionsTab);
        FileExtensionsWidget* fw = pw->fileExtensionsWidget();
        QCOMPARE(fw->rowCount(), 6); // the five defaults and a row for a new one
        QTest::keyClicks(fw->extensionEdit(5), QStringLiteral(".TXT"));
        QCOMPARE(fw->rowCount(), 7);
        fw->delimiterCombo(5)->lineEdit()->selectAll();
        QTest::keyClicks(fw->delimiterCombo(5)->lineEdit(), QStringLiteral(";"));
        fw->lineEndingCombo(5)->setCurrentText(QStringLiteral("Windows (CR LF)"));
        fw->encodingCombo(5)->setCurrentIndex(fw->encodingCombo(5)->findData(int(Iso8859_15)));
        fw->parsingStandardCombo(5)->setCurrentText(QStringLiteral("Delimiter Only"));
        QTest::mouseClick(fw->clearButton(3), Qt::LeftButton); // "dsv"
        QComboBox* psv = fw->delimiterCombo(4);
        const int ascii = psv->findText(QStringLiteral("ASCII Separated Values"));
        psv->setCurrentIndex(ascii);
        emit psv->activated(ascii);
        QTest::mouseClick(pw->applyButton(), Qt::LeftButton);

        std::vector<ExtensionData> read;
        QVERIFY(f.files.readFileExtensions(read));
        QCOMPARE(read.size(), size_t(5));
        QVERIFY(read == fw->extensions());
        QVERIFY(read == f.window.extensionDataList());
        const ExtensionData& psv_row = read[3];
        QCOMPARE(psv_row.extension, QStringLiteral("psv"));
        QCOMPARE(psv_row.delimiter_open, QString(QChar(0x1F)));
        QCOMPARE(psv_row.line_ending, RecordSeparatorLineEnding);
        QCOMPARE(psv_row.parsing_standard, AsciiSeparatedValues);
        const ExtensionData& txt = read[4];
        QCOMPARE(txt.extension, QStringLiteral("txt"));
        QCOMPARE(txt.delimiter_open, QStringLiteral(";"));
        QCOMPARE(txt.line_ending, WindowsLineEnding);
        QCOMPARE(txt.encoding, Iso8859_15);
        QCOMPARE(txt.parsing_standard, DelimiterOnly);

        QFile data(f.dir.filePath(QStringLiteral("x.txt")));
        QVERIFY(data.open(QIODevice::WriteOnly));
        data.write("a;b,c\n1;2,3\n"); // detection would take the comma
        data.close();
        QVERIFY(f.window.openFile(data.fileName()));
        TableModel* m = f.window.currentView()->model();
        QCOMPARE(m->data(m->index(0, 1)).toString(), QStringLiteral("b,c"));

        QTest::mouseClick(fw->restoreDefaultsButton(), Qt::LeftButton);
        QTest::mouseClick(pw->okButton(), Qt::LeftButton);
        QVERIFY(f.files.readFileExtensions(read));
        QVERIFY(read == PreferenceFiles::defaultFileExtensions());
    }

    void delimiterTyping_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<bool>("refused");
        QTest::newRow("one character") << "x"
                                       << "x" << false;
        QTest::newRow("a keyword") << "space"
                                   << "space" << false;
        QTest::newRow("three characters") << "abc"
                                          << "(auto)" << true;
        QTest::newRow("a quote") << "\""
                                 << "(auto)" << true;
    }

    void delimiterTyping() {
        QFETCH(QString, typed);
        QFETCH(QString, shown);
        QFETCH(bool, refused);
        FileExtensionsWidget fw(PreferenceFiles::defaultFileExtensions());
        fw.show();
        QComboBox* combo = fw.delimiterCombo(0);
        combo->lineEdit()->selectAll();
        QTest::keyClicks(combo->lineEdit(), typed);
        QTest::keyClick(combo->lineEdit(), Qt::Key_Return);
        QCOMPARE(combo->currentText(), shown);
        QCOMPARE(fw.delimiterErrorLabel()->isVisibleTo(&fw), refused);
    }
};

QTEST_MAIN(TestPreferences)
#include "tst_preferences.moc"
