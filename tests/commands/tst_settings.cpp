#include "commands/commandtable.h"
#include "commands/preferencefiles.h"
#include "commands/settings.h"
#include "commands/shortcutnotation.h"
#include "data/fileparameters.h"
#include "view/tablemodel.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>

namespace S = SettingId;

namespace {

QString readText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

void writeText(const QString& path, const QString& text) {
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text.toUtf8());
}

// A value of each setting that is not its default, as the file would hold it.
QString otherValue(const Settings& settings, int id) {
    const Setting& s = settings.record(id);
    switch (s.data_type) {
    case Setting::BooleanType:
        return s.default_value.toBool() ? "false" : "true";
    case Setting::DomainType:
        return "example.org";
    case Setting::FilePathType:
        return "/usr/bin/true";
    case Setting::FontType:
        return "Arial";
    case Setting::ThemeType:
        return "Solarized Light";
    case Setting::RefreshType:
        return "ask";
    case Setting::UuidVersionType:
        return "Time-ordered (v7)";
    default:
        return QString::number(s.default_value.toInt() + 7);
    }
}

} // namespace

class TestSettings : public QObject {
    Q_OBJECT

private slots:
    void setter_data();
    void setter();
    void typedAccess();
    void copyIsIndependent();
    void tableSnapshot();
    void settingsFileRoundTrip();
    void settingsFromUserEdits_data();
    void settingsFromUserEdits();
    void startupCheck_data();
    void startupCheck();
    void settingsVersionMerge();
    void userShortcuts_data();
    void userShortcuts();
    void fileExtensions_data();
    void fileExtensions();
    void watcher();
};

void TestSettings::setter_data() {
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored"); // valueAsString
    QTest::addColumn<QString>("shown");  // the getter
    QTest::newRow("text size 0") << int(S::TextSize) << "0"
                                 << "12"
                                 << "12";
    QTest::newRow("text size abc") << int(S::TextSize) << "abc"
                                   << "12"
                                   << "12";
    QTest::newRow("text size -3") << int(S::TextSize) << "-3"
                                  << "-3"
                                  << "-3";
    QTest::newRow("read-only threshold -1") << int(S::MinFileSizeReadOnlyQueryMb) << "-1"
                                            << "100"
                                            << "100";
    QTest::newRow("buffer rows -1") << int(S::BufferRows) << "-1"
                                    << "-1"
                                    << "-1";
    QTest::newRow("buffer rows x") << int(S::BufferRows) << "x"
                                   << "2"
                                   << "2";
    QTest::newRow("boolean with blanks") << int(S::ShadeRows) << " TRUE "
                                         << "true"
                                         << "Shaded";
    QTest::newRow("boolean yes") << int(S::ShowTabBar) << "yes"
                                 << "true"
                                 << "Shown";
    QTest::newRow("boolean false") << int(S::ReadOnly) << "false"
                                   << "false"
                                   << "Editable";
    QTest::newRow("behaviour, capitalised") << int(S::ChangedExternally) << "Ignore"
                                            << "refresh"
                                            << "Refresh";
    QTest::newRow("behaviour") << int(S::ChangedExternally) << "ask"
                               << "ask"
                               << "Ask";
    QTest::newRow("uuid v7") << int(S::UuidType) << " V7 "
                             << "Time-ordered (v7)"
                             << "Time-ordered (v7)";
    QTest::newRow("uuid unknown") << int(S::UuidType) << "v9"
                                  << "Random (v4)"
                                  << "Random (v4)";
    QTest::newRow("font") << int(S::Font) << "Arial" << QFont("Arial").toString() << "Arial";
    QTest::newRow("font, full description")
        << int(S::Font) << QFont("Arial").toString() << QFont("Arial").toString() << "Arial";
    QTest::newRow("font blank") << int(S::Font) << "" << QFont("Verdana").toString() << "Verdana";
    QTest::newRow("theme") << int(S::Theme) << "light"
                           << "Light"
                           << "Light";
    QTest::newRow("theme blank") << int(S::Theme) << ""
                                 << "Dark"
                                 << "Dark";
    QTest::newRow("domain blank") << int(S::SearchEngine) << ""
                                  << "duckduckgo.com"
                                  << "duckduckgo.com";
    QTest::newRow("delimiter blank stays blank") << int(S::DelimiterSave) << ""
                                                 << ""
                                                 << "";
    QTest::newRow("first row index") << int(S::FirstRowIndex) << "-5"
                                     << "-5"
                                     << "-5";
    QTest::newRow("line ending") << int(S::LineEndingSave) << "Windows"
                                 << "Windows"
                                 << "Windows";
    QTest::newRow("encoding") << int(S::EncodingReload) << "iso-8859-1"
                              << encodingDisplayName(Iso8859_1) << encodingDisplayName(Iso8859_1);
}

void TestSettings::setter() {
    QFETCH(int, id);
    QFETCH(QString, text);
    QFETCH(QString, stored);
    QFETCH(QString, shown);
    Settings settings;
    settings.setFromText(id, text);
    QCOMPARE(settings.valueAsString(id), stored);
    QCOMPARE(settings.record(id).displayText(), shown);
}

void TestSettings::typedAccess() {
    Settings settings;
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, settings.boolean(S::TextSize));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, settings.integer(S::Theme));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, settings.toggle(S::TextSize));
    QVERIFY_THROWS_EXCEPTION(std::out_of_range, settings.record(S::Count));
    settings.toggle(S::ShowTabBar);
    QCOMPARE(settings.boolean(S::ShowTabBar), false);
    QCOMPARE(settings.refreshBehavior(S::ChangedExternally), RefreshOnChange);
    QCOMPARE(settings.lineEnding(S::LineEndingSave), platformLineEnding());
    QCOMPARE(settings.font().family(), QString("Verdana"));
    // Shared names resolve to the reload parameters.
    QCOMPARE(settings.recordByName("Delimiter")->id, int(S::DelimiterReload));
    QVERIFY(!settings.recordByName("No Such Setting"));
}

void TestSettings::copyIsIndependent() {
    Settings original;
    Settings copy = original;
    copy.setFromText(S::TextSize, "20");
    copy.record(S::ShowTabBar).setFromText("false");
    QCOMPARE(copy.integer(S::TextSize), 20);
    QCOMPARE(original.integer(S::TextSize), 12);
    QCOMPARE(original.boolean(S::ShowTabBar), true);
}

void TestSettings::tableSnapshot() {
    Settings window;
    window.setFromText(S::TextSize, "20");
    window.setFromText(S::HeaderRows, "7");
    TableModel model;
    model.setDelimiter("\t", ";");
    model.setNumHeaderRows(3);
    model.setFirstColIndex(-1);
    model.setEncoding(Utf16LE);
    model.auto_fit_cols = false;
    const Settings snapshot = Settings::tableSnapshot(window, model);
    QCOMPARE(snapshot.integer(S::TextSize), 20); // Global: the window's
    QCOMPARE(snapshot.integer(S::HeaderRows), 3);
    QCOMPARE(snapshot.string(S::DelimiterReload), QString("\t"));
    QCOMPARE(snapshot.string(S::DelimiterSave), QString(";"));
    QCOMPARE(snapshot.integer(S::FirstColumnIndex), -1);
    QCOMPARE(snapshot.encoding(S::EncodingSave), Utf16LE);
    QCOMPARE(snapshot.boolean(S::AutoFitColumnWidth), false);
    QCOMPARE(window.integer(S::HeaderRows), 7);
}

void TestSettings::settingsFileRoundTrip() {
    QTemporaryDir dir;
    PreferenceFiles files(dir.path());
    Settings settings;
    int in_file = 0;
    for (int id = 0; id < S::Count; ++id) {
        if (!settings.record(id).in_user_file) continue;
        ++in_file;
        settings.setFromText(id, otherValue(settings, id));
        QVERIFY2(settings.valueAsString(id) != settings.defaultAsString(id),
                 qPrintable(settings.record(id).name));
    }
    QCOMPARE(in_file, 46);
    QVERIFY(files.writeSettingsFile(settings));
    Settings read;
    QVERIFY(files.readSettings(read));
    for (int id = 0; id < S::Count; ++id)
        QCOMPARE(read.valueAsString(id), settings.valueAsString(id));
    QVERIFY(read == settings);

    // Defaults are written as blanks, so a later default change reaches
    // every user who kept it.
    QVERIFY(files.writeDefaultSettingsFile());
    const QStringList lines = readText(files.settingsPath()).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 8 + 46);
    QCOMPARE(lines[0], "\"Place your desired setting in the \"\"User Value\"\" column.\",,,,");
    QCOMPARE(lines[7], "Setting,Scope,Type,Default Value,User Value");
    for (int i = 8; i < lines.size(); ++i)
        QVERIFY2(lines[i].endsWith(','), qPrintable(lines[i]));

    // Lines the user wrote above the header outlive every rewrite, of each
    // of the three files.
    const QString note = QStringLiteral("my note, keep it");
    for (const QString& path :
         {files.settingsPath(), files.shortcutsPath(), files.fileExtensionsPath()}) {
        if (path != files.settingsPath()) {
            QVERIFY(path == files.shortcutsPath() ? files.writeDefaultShortcutsFile()
                                                  : files.writeDefaultFileExtensionsFile());
        }
        writeText(path, "\"" + note + "\"\n" + readText(path));
    }
    QVERIFY(files.writeSettingsFile(settings));
    QVERIFY(files.writeShortcutsFile(CommandTable(nullptr)));
    QVERIFY(files.writeFileExtensionsFile(PreferenceFiles::defaultFileExtensions()));
    for (const QString& path :
         {files.settingsPath(), files.shortcutsPath(), files.fileExtensionsPath()})
        QVERIFY2(readText(path).startsWith("\"" + note + "\""), qPrintable(path));
    Settings again;
    QVERIFY(files.readSettings(again));
    QVERIFY(again == settings);
}

void TestSettings::settingsFromUserEdits_data() {
    QTest::addColumn<QString>("line");   // a line of the default file
    QTest::addColumn<QString>("edited"); // what the user made of it
    QTest::addColumn<int>("id");
    QTest::addColumn<QString>("expected");
    QTest::newRow("value") << "Text Size,Global,integer >= 1,12,"
                           << "Text Size,Global,integer >= 1,12,16" << int(S::TextSize) << "16";
    QTest::newRow("bad value") << "Text Size,Global,integer >= 1,12,"
                               << "Text Size,Global,integer >= 1,12,abc" << int(S::TextSize)
                               << "12";
    QTest::newRow("default column edited")
        << "Text Size,Global,integer >= 1,12,"
        << "Text Size,Global,integer >= 1,30," << int(S::TextSize) << "12";
    QTest::newRow("marker line deleted") << ",,,,!!! Make changes below !!!"
                                         << "" << int(S::TextSize) << "12";
    QTest::newRow("bad boolean") << "Show Tab Bar,Global,true|false,true,"
                                 << "Show Tab Bar,Global,true|false,true,maybe"
                                 << int(S::ShowTabBar) << "true";
}

void TestSettings::settingsFromUserEdits() {
    QFETCH(QString, line);
    QFETCH(QString, edited);
    QFETCH(int, id);
    QFETCH(QString, expected);
    QTemporaryDir dir;
    PreferenceFiles files(dir.path());
    QVERIFY(files.writeDefaultSettingsFile());
    QString text = readText(files.settingsPath());
    const qsizetype at = text.indexOf(line + '\n');
    QVERIFY2(at >= 0, qPrintable(text.left(600)));
    text.replace(at, line.size(), edited);
    writeText(files.settingsPath(), text);
    Settings settings;
    settings.setFromText(S::TextSize, "99");
    QVERIFY(files.readSettings(settings));
    QCOMPARE(settings.valueAsString(id), expected);
}

void TestSettings::startupCheck_data() {
    QTest::addColumn<QString>("contents"); // empty: no file
    QTest::addColumn<bool>("replaced");
    QTest::newRow("missing") << "" << true;
    QTest::newRow("garbage") << "a,b\n1,2\n" << true;
    QTest::newRow("header found") << "notes\nUser Value,x,Setting\n1,Text Size,20\n" << false;
    QTest::newRow("header beyond row 100") << QString("\n").repeated(100) + "Setting,User Value\n"
                                           << true;
    QTest::newRow("header beyond column 100") << QString(",").repeated(100) + "Setting,User Value\n"
                                              << true;
}

void TestSettings::startupCheck() {
    QFETCH(QString, contents);
    QFETCH(bool, replaced);
    QTemporaryDir dir;
    PreferenceFiles files(dir.path());
    if (!contents.isEmpty()) writeText(files.settingsPath(), contents);
    files.checkFiles();
    QCOMPARE(readText(files.settingsPath()) != contents, replaced);
    QVERIFY(files.isValidSettingsFile());
    QVERIFY(files.isValidShortcutsFile());
    QVERIFY(files.isValidFileExtensionsFile());
}

void TestSettings::settingsVersionMerge() {
    QTemporaryDir dir;
    PreferenceFiles files(dir.path());
    writeText(files.settingsPath(), "Setting,User Value,Default Value\n"
                                    "Text Size,14,10\n"
                                    "Theme,Dark,\n"
                                    "Retired Setting,1,\n"
                                    "Show Row Labels,,\n");
    QVERIFY(files.updateSettingsFile());
    const QString text = readText(files.settingsPath());
    QVERIFY(text.contains("\nText Size,Global,integer >= 1,12,14\n"));
    QVERIFY(text.contains("\nTheme,Global,theme,Dark,\n"));
    QVERIFY(!text.contains("Retired Setting"));
    Settings settings;
    QVERIFY(files.readSettings(settings));
    QCOMPARE(settings.integer(S::TextSize), 14);

    // One value written through leaves the others as they are.
    settings.setFromText(S::ShadeRows, "true");
    QVERIFY(files.writeSetting(S::ShadeRows, settings));
    Settings reread;
    QVERIFY(files.readSettings(reread));
    QCOMPARE(reread.boolean(S::ShadeRows), true);
    QCOMPARE(reread.integer(S::TextSize), 14);
    settings.setFromText(S::TextSize, "12");
    QVERIFY(files.writeSetting(S::TextSize, settings));
    QVERIFY(readText(files.settingsPath()).contains("\nText Size,Global,integer >= 1,12,\n"));
}

void TestSettings::userShortcuts_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("in_force");
    QTest::addColumn<QString>("rewritten"); // the row of the file written afterwards
    QTest::newRow("untouched") << "Undo"
                               << ""
                               << "ctrl+z"
                               << "Undo,ctrl+z,";
    QTest::newRow("user keys") << "Exit"
                               << "ctrl+shift+f12|alt+f4"
                               << "ctrl+shift+f12|alt+f4"
                               << "Exit,(none),ctrl+shift+f12|alt+f4";
    QTest::newRow("none") << "New File"
                          << "(none)"
                          << ""
                          << "New File,ctrl+n,(none)";
    QTest::newRow("none without a default") << "Title Case"
                                            << "(none)"
                                            << ""
                                            << "Title Case,(none),";
    QTest::newRow("invalid keys") << "Redo"
                                  << "ctrl+nokey"
                                  << "ctrl+y"
                                  << "Redo,ctrl+y,";
    QTest::newRow("same as default") << "Go to File"
                                     << "ctrl+p|ctrl+t"
                                     << "ctrl+p|ctrl+t"
                                     << "Go to File,ctrl+p|ctrl+t,";
}

void TestSettings::userShortcuts() {
    QFETCH(QString, command);
    QFETCH(QString, user);
    QFETCH(QString, in_force);
    QFETCH(QString, rewritten);
    QTemporaryDir dir;
    PreferenceFiles files(dir.path());
    QVERIFY(files.writeDefaultShortcutsFile());
    QString text = readText(files.shortcutsPath());
    const CommandTable defaults;
    const CommandRecord* row = defaults.record(command);
    const QString line =
        command + ',' + (row->defaultShortcut.isEmpty() ? "(none)" : row->defaultShortcut) + ",\n";
    QVERIFY2(text.contains('\n' + line), qPrintable(line));
    text.replace('\n' + line, '\n' + line.chopped(1) + user + '\n');
    writeText(files.shortcutsPath(), text);

    CommandTable commands;
    QVERIFY(files.applyUserShortcuts(commands));
    for (const CommandRecord* other : commands.sorted()) {
        const QString expected = other->name == command ? in_force : other->defaultShortcut;
        QCOMPARE(other->shortcut, expected);
        QCOMPARE(other->action->shortcuts(), parseShortcut(expected));
    }
    QVERIFY(files.writeShortcutsFile(commands));
    const QStringList lines = readText(files.shortcutsPath()).split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 12 + 323);
    QCOMPARE(lines[11], "Command,Default Shortcut,User Shortcut");
    QVERIFY(lines.contains(rewritten));
    // Only the edited row differs from the default file.
    CommandTable fresh;
    QVERIFY(files.writeShortcutsFile(fresh));
    const QStringList default_lines =
        readText(files.shortcutsPath()).split('\n', Qt::SkipEmptyParts);
    int differing = 0;
    for (int i = 0; i < lines.size(); ++i)
        differing += lines[i] != default_lines[i];
    const bool edited = !default_lines.contains(rewritten);
    QCOMPARE(differing, edited ? 1 : 0);
}

void TestSettings::fileExtensions_data() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<QString>("save_delimiter");
    QTest::addColumn<int>("line_ending");
    QTest::addColumn<bool>("from_platform");
    QTest::addColumn<int>("encoding");
    QTest::addColumn<int>("standard");
    const QString header = "Extension,Delimiter,Line Ending,Encoding,Parsing Standard\n";
    QTest::newRow("explicit") << header + " TXT ,tab,Windows,ISO-8859-1,sparse quotes\n"
                              << "tab"
                              << "tab" << int(WindowsLineEnding) << false << int(Iso8859_1)
                              << int(SparseQuotes);
    QTest::newRow("unknown values")
        << header + "txt,ab,sideways,klingon,loose\n"
        << ""
        << "" << int(platformLineEnding()) << true << int(Utf8) << int(Rfc4180);
    QTest::newRow("space and platform")
        << header + "txt, ,(platform),UTF-8,RFC 4180\n"
        << " "
        << " " << int(platformLineEnding()) << true << int(Utf8) << int(Rfc4180);
    QTest::newRow("older form")
        << "Extension,Delimiter,Delimiter (Save),Line Ending,Encoding,Parsing Standard\n"
           "txt,(auto),;,Unix,UTF-8,All Quotes\n"
        << "(auto)"
        << ";" << int(UnixLineEnding) << false << int(Utf8) << int(AllQuotes);
}

void TestSettings::fileExtensions() {
    QFETCH(QString, file);
    QFETCH(QString, delimiter);
    QFETCH(QString, save_delimiter);
    QFETCH(int, line_ending);
    QFETCH(bool, from_platform);
    QFETCH(int, encoding);
    QFETCH(int, standard);
    QTemporaryDir dir;
    PreferenceFiles files(dir.path());

    QVERIFY(files.writeDefaultFileExtensionsFile());
    std::vector<ExtensionData> read;
    QVERIFY(files.readFileExtensions(read));
    QVERIFY(read == PreferenceFiles::defaultFileExtensions());
    const QStringList lines = readText(files.fileExtensionsPath()).split('\n');
    QCOMPARE(lines[9], "Extension,Delimiter,Line Ending,Encoding,Parsing Standard");
    QCOMPARE(lines[11], "tsv,\\t,(platform),UTF-8,RFC 4180");

    writeText(files.fileExtensionsPath(), file);
    QVERIFY(files.readFileExtensions(read));
    QCOMPARE(read.size(), size_t(1));
    const ExtensionData e = read.front();
    QCOMPARE(e.extension, QString("txt"));
    QCOMPARE(e.delimiter_open, delimiter);
    QCOMPARE(e.delimiter_save, save_delimiter);
    QCOMPARE(int(e.line_ending), line_ending);
    QCOMPARE(e.line_ending_from_platform, from_platform);
    QCOMPARE(int(e.encoding), encoding);
    QCOMPARE(int(e.parsing_standard), standard);

    // Rewritten in the current form, the row keeps what that form holds.
    QVERIFY(files.updateFileExtensionsFile());
    QVERIFY(files.readFileExtensions(read));
    QCOMPARE(read.size(), size_t(1));
    QCOMPARE(read.front().delimiter_open, e.delimiter_open);
    QCOMPARE(read.front().encoding, e.encoding);
    QCOMPARE(readText(files.fileExtensionsPath()).split('\n')[9], lines[9]);
}

void TestSettings::watcher() {
    QTemporaryDir dir;
    PreferenceFiles files(dir.path());
    files.checkFiles();
    files.startWatching();
    QSignalSpy settings_spy(&files, &PreferenceFiles::settingsFileChangedSignal);
    QSignalSpy shortcuts_spy(&files, &PreferenceFiles::shortcutsFileChangedSignal);
    Settings settings;
    settings.toggle(S::ShadeRows);
    QVERIFY(files.writeSetting(S::ShadeRows, settings));
    QTRY_COMPARE(settings_spy.count(), 1);
    // The save replaced the file; the next one is seen all the same.
    settings.setFromText(S::TextSize, "30");
    QVERIFY(files.writeSetting(S::TextSize, settings));
    QTRY_COMPARE(settings_spy.count(), 2);
    QVERIFY(files.writeDefaultShortcutsFile());
    QTRY_COMPARE(shortcuts_spy.count(), 1);
    QTest::qWait(200);
    QCOMPARE(settings_spy.count(), 2);
    QCOMPARE(shortcuts_spy.count(), 1);
}

QTEST_MAIN(TestSettings)
#include "tst_settings.moc"
