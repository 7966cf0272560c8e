#include "preferencefiles.h"

#include "commands/commandtable.h"
#include "commands/settings.h"
#include "data/fileparameters.h"
#include "view/tablemodel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <memory>

const QString PreferenceFiles::kSettingsFileName = QStringLiteral("Settings (User).csv");
const QString PreferenceFiles::kShortcutsFileName = QStringLiteral("Shortcuts (User).csv");
const QString PreferenceFiles::kFileExtensionsFileName =
    QStringLiteral("File Extensions (User).csv");

namespace {

const QString kSetting = QStringLiteral("Setting");
const QString kScope = QStringLiteral("Scope");
const QString kType = QStringLiteral("Type");
const QString kDefaultValue = QStringLiteral("Default Value");
const QString kUserValue = QStringLiteral("User Value");
const QString kCommand = QStringLiteral("Command");
const QString kDefaultShortcut = QStringLiteral("Default Shortcut");
const QString kUserShortcut = QStringLiteral("User Shortcut");
const QString kNone = QStringLiteral("(none)");
const QString kMarker = QStringLiteral("!!! Make changes below !!!");

const QStringList kExtensionHeader = {QStringLiteral("Extension"), QStringLiteral("Delimiter"),
                                      QStringLiteral("Line Ending"), QStringLiteral("Encoding"),
                                      QStringLiteral("Parsing Standard")};
const QString kOldSaveDelimiter = QStringLiteral("Delimiter (Save)");

constexpr int kHeaderSearchLimit = 100;

// A user file as a grid; null when it does not exist.
std::unique_ptr<TableModel> loadGrid(const QString& path) {
    if (!QFileInfo(path).isFile()) return nullptr;
    auto model = std::make_unique<TableModel>();
    model->load(path, false);
    return model;
}

QString cell(const TableData& data, int row, int col) {
    if (row < 0 || col < 0) return {};
    return data.rawData(row, col).toString();
}

// The rows of a grid under its header, each as the texts of the wanted
// columns.
QList<QStringList> rowsBelow(const TableData& data, const HeaderLocation& header) {
    QList<QStringList> rows;
    for (int r = header.row + 1; r < data.numRawRows(); ++r) {
        QStringList row;
        for (int col : header.columns)
            row.append(cell(data, r, col));
        rows.append(row);
    }
    return rows;
}

// A file written anew keeps what the user wrote above its header: the lines
// up there are theirs. The header and all below come from `grid`.
QList<QStringList> keepingPreamble(const QString& path, const QStringList& header_names,
                                   QList<QStringList> grid) {
    const auto old = loadGrid(path);
    if (!old) return grid;
    const TableData& data = old->tableData();
    const HeaderLocation old_header = PreferenceFiles::findHeader(data, header_names);
    if (!old_header.found()) return grid;
    qsizetype new_header = -1;
    for (qsizetype r = 0; r < grid.size() && new_header < 0; ++r) {
        bool all = true;
        for (const QString& name : header_names)
            all = all && grid[r].contains(name);
        if (all) new_header = r;
    }
    if (new_header < 0) return grid;
    QList<QStringList> result;
    for (int r = 0; r < old_header.row; ++r) {
        QStringList line;
        for (int c = 0; c < data.numRawColumns(); ++c)
            line.append(cell(data, r, c));
        result.append(line);
    }
    result.append(grid.mid(new_header));
    return result;
}

void put(QList<QStringList>& grid, int row, int col, const QString& text) {
    while (grid.size() <= row)
        grid.append(QStringList());
    QStringList& line = grid[row];
    while (line.size() <= col)
        line.append(QString());
    line[col] = text;
}

QList<QStringList> settingsGrid(const Settings& settings,
                                const QHash<QString, QString>* user_texts) {
    QList<QStringList> grid;
    put(grid, 0, 0,
        QStringLiteral("Place your desired setting in the \"%1\" column.").arg(kUserValue));
    put(grid, 1, 0,
        QStringLiteral("If \"%1\" is blank or invalid, the default value will be used.")
            .arg(kUserValue));
    put(grid, 2, 0,
        QStringLiteral("The \"%1\" and \"%2\" columns are for informative")
            .arg(kType, kDefaultValue));
    put(grid, 3, 0, QStringLiteral("purposes only. Changing them won't make any difference."));
    put(grid, 4, 0, QStringLiteral("Scope: Global applies immediately to the whole program."));
    put(grid, 5, 0, QStringLiteral("Table scope Settings are defaults for newly opened files."));
    put(grid, 6, 4, kMarker);
    grid.append({kSetting, kScope, kType, kDefaultValue, kUserValue});
    for (int id : settings.sortedIds()) {
        const Setting& s = settings.record(id);
        if (!s.in_user_file) continue;
        const QString default_text = settings.defaultAsString(id);
        QString user = user_texts ? user_texts->value(s.name) : settings.valueAsString(id);
        if (user == default_text) user.clear();
        grid.append({s.name, Settings::scopeName(s.scope), Settings::typeName(s.data_type),
                     default_text, user});
    }
    return grid;
}

QList<QStringList> shortcutsGrid(const CommandTable& commands,
                                 const QHash<QString, QString>* user_texts) {
    QList<QStringList> grid;
    put(grid, 0, 0,
        QStringLiteral("Place your desired shortcuts in the \"%1\" column.").arg(kUserShortcut));
    put(grid, 1, 0, QStringLiteral("If \"%1\" is blank or invalid,").arg(kUserShortcut));
    put(grid, 2, 0, QStringLiteral("the default shortcut will be used."));
    put(grid, 3, 0, QStringLiteral("To have no shortcuts for a command, use \"(none)\"."));
    put(grid, 4, 0, QStringLiteral("If you want multiple shortcuts for one command,"));
    put(grid, 5, 0, QStringLiteral("separate them with a bar (|)."));
    put(grid, 6, 0, QStringLiteral("If you use the same shortcut for multiple commands,"));
    put(grid, 7, 0, QStringLiteral("it may not work for any of them."));
    put(grid, 8, 0, QStringLiteral("The \"%1\" column is for informative").arg(kDefaultShortcut));
    put(grid, 9, 0, QStringLiteral("purposes only. Changing it won't make any difference."));
    put(grid, 10, 2, kMarker);
    grid.append({kCommand, kDefaultShortcut, kUserShortcut});
    for (const CommandRecord* record : commands.sorted()) {
        const QString& fallback = record->defaultShortcut;
        QString user;
        if (user_texts) {
            user = user_texts->value(record->name);
            if (user == fallback) user.clear();
        } else if (record->shortcut.isEmpty() && !fallback.isEmpty()) {
            user = kNone;
        } else if (record->shortcut != fallback) {
            user = record->shortcut;
        }
        grid.append({record->name, fallback.isEmpty() ? kNone : fallback, user});
    }
    return grid;
}

QList<QStringList> fileExtensionsGrid(const std::vector<ExtensionData>& extensions) {
    static const QList<QStringList> sections = {
        {QStringLiteral("For a given file extension,"),
         QStringLiteral("set your preferred delimiter,"), QStringLiteral("character encoding, and"),
         QStringLiteral("parsing standard. You may add"), QStringLiteral("your own extensions."),
         QStringLiteral("No extension: Type \"(none)\".")},
        {QStringLiteral("--- Delimiter ---"), QStringLiteral("Limited to one ASCII character."),
         QStringLiteral("No delimiter: Type \"(none)\"."),
         QStringLiteral("Auto-detect: Type \"(auto)\"."),
         QStringLiteral("Tab: Type \"\\t\" or \"tab\"."),
         QStringLiteral("Space: Type \"\\s\" or \"space\"."),
         QStringLiteral("Default delimiter: auto-detect"),
         QStringLiteral("if enabled. Otherwise, comma.")},
        {QStringLiteral("--- Line Ending ---"), QStringLiteral("Affects file save only."),
         QStringLiteral("Windows (CR LF): \"Windows\""), QStringLiteral("Mac/Linux (LF): \"Unix\""),
         QStringLiteral("Current Platform: \"(platform)\""),
         QStringLiteral("Default ending: current platform")},
        {QStringLiteral("--- Encoding ---"), QStringLiteral("To see supported encodings, call the"),
         QStringLiteral("\"List Character Encodings\" command"),
         QStringLiteral("and select one to copy to the clipboard."),
         QStringLiteral("Default encoding: UTF-8")},
        {QStringLiteral("--- Parsing Standard ---"), QStringLiteral("The current options include "),
         QStringLiteral("\"RFC 4180\", \"Delimiter Only\", "),
         QStringLiteral("\"All Quotes\", and \"Sparse Quotes\"."),
         QStringLiteral("Default standard: RFC 4180.")},
    };
    QList<QStringList> grid;
    qsizetype longest = 0;
    for (int col = 0; col < sections.size(); ++col) {
        longest = std::max(longest, sections[col].size());
        for (int row = 0; row < sections[col].size(); ++row)
            put(grid, row, col, sections[col][row]);
    }
    put(grid, int(longest), 0, QString()); // the blank row
    grid.append(kExtensionHeader);
    for (const ExtensionData& e : extensions) {
        grid.append({e.extension, e.delimiter_open,
                     e.line_ending_from_platform ? QStringLiteral("(platform)")
                                                 : lineEndingShortName(e.line_ending),
                     encodingDisplayName(e.encoding), parsingStandardName(e.parsing_standard)});
    }
    return grid;
}

// A delimiter as the file may give it: a keyword or one ASCII character.
// Anything else, like a blank, leaves the choice to detection.
QString readDelimiter(const QString& text) {
    // A lone blank is the space delimiter itself.
    const QString given = text.size() == 1 ? text : text.trimmed();
    if (given.size() == 1) return given.front().unicode() < 128 ? given : QString();
    const QString word = given.toLower();
    for (const char* keyword : {"(none)", "(auto)", "\\t", "tab", "\\s", "space"})
        if (word == QLatin1String(keyword)) return given;
    return {};
}

bool isAuto(const QString& delimiter) {
    return delimiter.isEmpty() || delimiter.compare(u"(auto)", Qt::CaseInsensitive) == 0;
}

ExtensionData readExtension(const QStringList& row, bool has_save_column) {
    ExtensionData e;
    e.extension = row[0].trimmed().toLower();
    e.delimiter_open = readDelimiter(row[1]);
    // Without a column of its own, a file is saved with the delimiter it is
    // opened with.
    if (has_save_column)
        e.delimiter_save = readDelimiter(row[5]);
    else
        e.delimiter_save = isAuto(e.delimiter_open) ? QString() : e.delimiter_open;
    const QString ending = row[2].trimmed();
    const LineEndingType line_ending = lineEndingFromText(ending);
    e.line_ending_from_platform = line_ending == InvalidLineEnding;
    e.line_ending = e.line_ending_from_platform ? platformLineEnding() : line_ending;
    const EncodingType encoding = encodingFromText(row[3].trimmed());
    e.encoding = encoding == UnknownEncoding ? Utf8 : encoding;
    const ParsingStandard standard = parsingStandardFromText(row[4].trimmed());
    e.parsing_standard = standard == InvalidStandard ? Rfc4180 : standard;
    return e;
}

} // namespace

PreferenceFiles::PreferenceFiles(const QString& folder, QObject* parent)
    : QObject(parent), folder_(folder) {
    connect(&watcher, &QFileSystemWatcher::fileChanged, this, &PreferenceFiles::onFileChanged);
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this,
            &PreferenceFiles::onDirectoryChanged);
}

QString PreferenceFiles::settingsPath() const {
    return QDir(folder_).filePath(kSettingsFileName);
}

QString PreferenceFiles::shortcutsPath() const {
    return QDir(folder_).filePath(kShortcutsFileName);
}

QString PreferenceFiles::fileExtensionsPath() const {
    return QDir(folder_).filePath(kFileExtensionsFileName);
}

HeaderLocation PreferenceFiles::findHeader(const TableData& data, const QStringList& names) {
    const int rows = std::min(data.numRawRows(), kHeaderSearchLimit);
    const int cols = std::min(data.numRawColumns(), kHeaderSearchLimit);
    for (int r = 0; r < rows; ++r) {
        HeaderLocation found{r, {}};
        for (const QString& name : names) {
            int at = -1;
            for (int c = 0; c < cols && at < 0; ++c)
                if (cell(data, r, c).trimmed() == name) at = c;
            if (at < 0) break;
            found.columns.append(at);
        }
        if (found.columns.size() == names.size()) return found;
    }
    return {};
}

bool PreferenceFiles::saveGrid(const Grid& grid, const QString& path) const {
    QDir().mkpath(folder_);
    TableModel model;
    TableData& data = model.tableData();
    data.setDelimiters(QStringLiteral(","), QStringLiteral(","));
    data.setLineEnding(platformLineEnding());
    data.setParsingStandard(Rfc4180);
    for (int r = 0; r < grid.size(); ++r)
        for (int c = 0; c < grid[r].size(); ++c)
            if (!grid[r][c].isEmpty()) data.setRawData(r, c, grid[r][c]);
    // A blank last row would be lost to the writer; the grids never end in
    // one.
    return data.saveAs(path, false, false);
}

void PreferenceFiles::checkFile(const QString& path, const QStringList& header,
                                bool (PreferenceFiles::*write_default)() const) {
    if (const auto model = loadGrid(path)) {
        if (findHeader(model->tableData(), header).found()) return;
    }
    QFile::remove(path);
    (this->*write_default)();
}

void PreferenceFiles::checkFiles() {
    checkFile(settingsPath(), {kSetting, kUserValue}, &PreferenceFiles::writeDefaultSettingsFile);
    checkFile(shortcutsPath(), {kCommand, kUserShortcut},
              &PreferenceFiles::writeDefaultShortcutsFile);
    checkFile(fileExtensionsPath(), kExtensionHeader,
              &PreferenceFiles::writeDefaultFileExtensionsFile);
}

// ---- Settings ----

bool PreferenceFiles::isValidSettingsFile() const {
    const auto model = loadGrid(settingsPath());
    return model && findHeader(model->tableData(), {kSetting, kUserValue}).found();
}

bool PreferenceFiles::writeDefaultSettingsFile() const {
    return writeSettingsFile(Settings());
}

bool PreferenceFiles::writeSettingsFile(const Settings& settings) const {
    return saveGrid(keepingPreamble(settingsPath(), {kSetting, kUserValue},
                                    settingsGrid(settings, nullptr)),
                    settingsPath());
}

bool PreferenceFiles::updateSettingsFile() const {
    const auto model = loadGrid(settingsPath());
    const HeaderLocation header =
        model ? findHeader(model->tableData(), {kSetting, kUserValue}) : HeaderLocation();
    if (!header.found()) return writeDefaultSettingsFile();
    const Settings defaults;
    QHash<QString, QString> user_texts;
    for (const QStringList& row : rowsBelow(model->tableData(), header)) {
        const QString name = row[0].trimmed();
        if (!row[1].trimmed().isEmpty() && defaults.recordByName(name))
            user_texts.insert(name, row[1]);
    }
    return saveGrid(settingsGrid(defaults, &user_texts), settingsPath());
}

bool PreferenceFiles::readSettings(Settings& settings) const {
    const auto model = loadGrid(settingsPath());
    if (!model) return false;
    const HeaderLocation header = findHeader(model->tableData(), {kSetting, kUserValue});
    if (!header.found()) return false;
    for (const QStringList& row : rowsBelow(model->tableData(), header))
        if (Setting* s = settings.recordByName(row[0].trimmed())) s->setFromText(row[1]);
    return true;
}

bool PreferenceFiles::writeSetting(int id, const Settings& settings) const {
    const auto model = loadGrid(settingsPath());
    if (!model) return false;
    TableData& data = model->tableData();
    const HeaderLocation header = findHeader(data, {kSetting, kUserValue});
    if (!header.found()) return false;
    QString text = settings.valueAsString(id);
    if (text == settings.defaultAsString(id)) text.clear();
    const QString& name = settings.record(id).name;
    for (int r = header.row + 1; r < data.numRawRows(); ++r) {
        if (cell(data, r, header.columns[0]).trimmed() != name) continue;
        data.setRawData(r, header.columns[1], text);
        return data.saveAs(settingsPath(), false, false);
    }
    return false;
}

// ---- Shortcuts ----

bool PreferenceFiles::isValidShortcutsFile() const {
    const auto model = loadGrid(shortcutsPath());
    return model && findHeader(model->tableData(), {kCommand, kUserShortcut}).found();
}

bool PreferenceFiles::writeDefaultShortcutsFile() const {
    return writeShortcutsFile(CommandTable(nullptr));
}

bool PreferenceFiles::writeShortcutsFile(const CommandTable& commands) const {
    return saveGrid(keepingPreamble(shortcutsPath(), {kCommand, kUserShortcut},
                                    shortcutsGrid(commands, nullptr)),
                    shortcutsPath());
}

bool PreferenceFiles::readShortcutTexts(QHash<QString, QString>& texts) const {
    const auto model = loadGrid(shortcutsPath());
    if (!model) return false;
    const HeaderLocation header = findHeader(model->tableData(), {kCommand, kUserShortcut});
    if (!header.found()) return false;
    for (const QStringList& row : rowsBelow(model->tableData(), header))
        texts.insert(row[0].trimmed(), row[1]); // a later duplicate wins
    return true;
}

bool PreferenceFiles::updateShortcutsFile() const {
    QHash<QString, QString> texts;
    if (!readShortcutTexts(texts)) return writeDefaultShortcutsFile();
    const CommandTable defaults(nullptr);
    QHash<QString, QString> user_texts;
    for (auto it = texts.cbegin(); it != texts.cend(); ++it)
        if (!it->trimmed().isEmpty() && defaults.record(it.key())) user_texts.insert(it.key(), *it);
    return saveGrid(shortcutsGrid(defaults, &user_texts), shortcutsPath());
}

bool PreferenceFiles::applyUserShortcuts(CommandTable& commands) const {
    QHash<QString, QString> texts;
    if (!readShortcutTexts(texts)) return false;
    commands.applyUserShortcuts(texts);
    return true;
}

// ---- File extensions ----

std::vector<ExtensionData> PreferenceFiles::defaultFileExtensions() {
    auto row = [](const char* extension, const char* open, const char* save) {
        ExtensionData e;
        e.extension = QString::fromLatin1(extension);
        e.delimiter_open = QString::fromLatin1(open);
        e.delimiter_save = QString::fromLatin1(save);
        e.line_ending = platformLineEnding();
        e.line_ending_from_platform = true;
        e.encoding = Utf8;
        e.parsing_standard = Rfc4180;
        return e;
    };
    return {row("csv", "(auto)", ""), row("tsv", "\\t", "\\t"), row("tab", "\\t", "\\t"),
            row("dsv", ";", ";"), row("psv", "|", "|")};
}

bool PreferenceFiles::isValidFileExtensionsFile() const {
    const auto model = loadGrid(fileExtensionsPath());
    return model && findHeader(model->tableData(), kExtensionHeader).found();
}

bool PreferenceFiles::writeDefaultFileExtensionsFile() const {
    return writeFileExtensionsFile(defaultFileExtensions());
}

bool PreferenceFiles::writeFileExtensionsFile(const std::vector<ExtensionData>& extensions) const {
    return saveGrid(
        keepingPreamble(fileExtensionsPath(), kExtensionHeader, fileExtensionsGrid(extensions)),
        fileExtensionsPath());
}

bool PreferenceFiles::readFileExtensions(std::vector<ExtensionData>& extensions) const {
    const auto model = loadGrid(fileExtensionsPath());
    if (!model) return false;
    const TableData& data = model->tableData();
    HeaderLocation header = findHeader(data, kExtensionHeader);
    if (!header.found()) return false;
    bool has_save_column = false;
    for (int c = 0; c < std::min(data.numRawColumns(), kHeaderSearchLimit); ++c) {
        if (cell(data, header.row, c).trimmed() == kOldSaveDelimiter) {
            header.columns.append(c);
            has_save_column = true;
            break;
        }
    }
    std::vector<ExtensionData> result;
    for (const QStringList& row : rowsBelow(data, header)) {
        ExtensionData e = readExtension(row, has_save_column);
        if (!e.extension.isEmpty()) result.push_back(e);
    }
    extensions = std::move(result);
    return true;
}

bool PreferenceFiles::updateFileExtensionsFile() const {
    std::vector<ExtensionData> extensions;
    if (!readFileExtensions(extensions)) return writeDefaultFileExtensionsFile();
    // A new version's file starts with its own instructions.
    return saveGrid(fileExtensionsGrid(extensions), fileExtensionsPath());
}

// ---- Watching ----

void PreferenceFiles::startWatching() {
    QDir().mkpath(folder_);
    watcher.addPath(folder_);
    for (const QString& path : {settingsPath(), shortcutsPath(), fileExtensionsPath()}) {
        const QFileInfo info(path);
        seen.insert(path, {info.lastModified(), info.size()});
        if (info.exists()) watcher.addPath(path);
    }
}

void PreferenceFiles::reportIfChanged(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) return; // reported when it comes back
    // A file replaced by a rename is no longer the one being watched.
    if (!watcher.files().contains(path)) watcher.addPath(path);
    const QPair<QDateTime, qint64> stamp{info.lastModified(), info.size()};
    if (seen.value(path) == stamp) return;
    seen.insert(path, stamp);
    onPreferenceChanged(path);
}

void PreferenceFiles::onFileChanged(const QString& path) {
    reportIfChanged(path);
}

void PreferenceFiles::onDirectoryChanged(const QString&) {
    for (const QString& path : {settingsPath(), shortcutsPath(), fileExtensionsPath()})
        reportIfChanged(path);
}

void PreferenceFiles::onPreferenceChanged(const QString& path) {
    if (path.endsWith(kSettingsFileName))
        emit settingsFileChangedSignal();
    else if (path.endsWith(kShortcutsFileName))
        emit shortcutsFileChangedSignal();
    else if (path.endsWith(kFileExtensionsFileName))
        emit fileExtensionsFileChangedSignal();
}
