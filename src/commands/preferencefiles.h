#pragma once

#include "data/extensiondata.h"

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <vector>

class CommandTable;
class Settings;
class TableData;

// Where a user file's header row is: the row, and the column of each name
// looked for. Row -1: not found.
struct HeaderLocation {
    int row = -1;
    QList<int> columns;

    bool found() const { return row >= 0; }
};

// The three user files of the preference folder: "Settings (User).csv",
// "Shortcuts (User).csv" and "File Extensions (User).csv". Each explains
// itself in lines at its top, above a header row that readers find by its
// column names, so users may add or remove lines up there. The files are
// read and written as plain grids through a TableModel in the default CSV
// dialect.
//
// The object also watches the folder and reports a changed file by one of
// its signals; the owner reloads and applies it.
class PreferenceFiles : public QObject {
    Q_OBJECT

public:
    static const QString kSettingsFileName;
    static const QString kShortcutsFileName;
    static const QString kFileExtensionsFileName;

    explicit PreferenceFiles(const QString& folder, QObject* parent = nullptr);

    QString folder() const { return folder_; }
    QString settingsPath() const;
    QString shortcutsPath() const;
    QString fileExtensionsPath() const;

    // At start: a file that is missing, or whose header is not found, is
    // replaced by its default. Nothing is reported.
    void checkFiles();
    // Watches the folder and the three files; call after checkFiles.
    void startWatching();

    // ---- Settings ----
    bool isValidSettingsFile() const;
    bool writeDefaultSettingsFile() const;
    bool writeSettingsFile(const Settings& settings) const;
    // After a version change: the current default file, with the user's
    // non-blank values carried over.
    bool updateSettingsFile() const;
    // Each known setting named in the file takes its "User Value" through
    // its setter, so a blank or bad value gives the default. False, and the
    // settings untouched, when the file or its header is missing.
    bool readSettings(Settings& settings) const;
    // Writes one value into its row; blank when it is the default. A file
    // without the row is left alone.
    bool writeSetting(int id, const Settings& settings) const;

    // ---- Shortcuts ----
    bool isValidShortcutsFile() const;
    bool writeDefaultShortcutsFile() const;
    bool writeShortcutsFile(const CommandTable& commands) const;
    bool updateShortcutsFile() const;
    // False, and the table untouched, when the file or its header is
    // missing.
    bool applyUserShortcuts(CommandTable& commands) const;

    // ---- File extensions ----
    static std::vector<ExtensionData> defaultFileExtensions();
    bool isValidFileExtensionsFile() const;
    bool writeDefaultFileExtensionsFile() const;
    bool writeFileExtensionsFile(const std::vector<ExtensionData>& extensions) const;
    // Also turns the older form, with its "Delimiter (Save)" column, into
    // the current one.
    bool updateFileExtensionsFile() const;
    // False, and `extensions` untouched, when the file or its header is
    // missing.
    bool readFileExtensions(std::vector<ExtensionData>& extensions) const;

    // Scans the first 100 rows and columns for a row holding every name.
    static HeaderLocation findHeader(const TableData& data, const QStringList& names);

signals:
    void settingsFileChangedSignal();
    void shortcutsFileChangedSignal();
    void fileExtensionsFileChangedSignal();

public slots:
    // Tells which of the three files `path` is and reports it.
    void onPreferenceChanged(const QString& path);

private slots:
    void onFileChanged(const QString& path);
    void onDirectoryChanged(const QString& path);

private:
    using Grid = QList<QStringList>;
    bool saveGrid(const Grid& grid, const QString& path) const;
    // Replaces the file's default when its header is missing.
    void checkFile(const QString& path, const QStringList& header,
                   bool (PreferenceFiles::*write_default)() const);
    bool readShortcutTexts(QHash<QString, QString>& texts) const;
    // Reports a file whose size or time differs from what was last seen:
    // a save that replaces the file shows up both as a change of the file
    // and of the folder.
    void reportIfChanged(const QString& path);

    QString folder_;
    QFileSystemWatcher watcher;
    QHash<QString, QPair<QDateTime, qint64>> seen;
};
