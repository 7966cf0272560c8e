#pragma once

#include "commands/settings.h"
#include "data/extensiondata.h"

#include <QWidget>

#include <vector>

class CommandTable;
class FileExtensionsWidget;
class PreferenceFiles;
class QPushButton;
class QTabWidget;
class SettingsWidget;
class ShortcutsWidget;

// A form editor over the three user files, one tab each. Nothing changes
// until "Apply" or "OK": then each tab with edits writes its file and tells
// the window, which applies the values at once (the file watcher reads the
// same values back afterwards).
class PreferencesWindow : public QWidget {
    Q_OBJECT

public:
    enum Tab : int { SettingsTab = 0, ShortcutsTab = 1, FileExtensionsTab = 2 };

    // `commands` and `files` belong to the window that opens this one and
    // outlive it; `files` may be null, and then nothing is written.
    PreferencesWindow(const Settings& settings, CommandTable& commands,
                      const std::vector<ExtensionData>& extensions, PreferenceFiles* files,
                      QWidget* parent = nullptr);

    void setCurrentTab(Tab tab);
    Tab currentTab() const;

    // The window's values changed under the form: rows the user has not
    // edited follow them.
    void setSettings(const Settings& settings);
    void refreshShortcuts();
    void setFileExtensions(const std::vector<ExtensionData>& extensions);

    // What the conflict question says beneath its first line, or empty when
    // the shortcuts as edited have no conflict. `closing`: asked by "OK".
    QString conflictMessage(bool closing) const;
    // The texts of the conflict question's two buttons: stay, then apply.
    static QStringList conflictButtons(bool closing);

    SettingsWidget* settingsWidget() const { return settings_widget; }
    ShortcutsWidget* shortcutsWidget() const { return shortcuts_widget; }
    FileExtensionsWidget* fileExtensionsWidget() const { return extensions_widget; }
    QPushButton* cancelButton() const { return cancel_button; }
    QPushButton* applyButton() const { return apply_button; }
    QPushButton* okButton() const { return ok_button; }

signals:
    // Values of the settings file, the window's others as they were.
    void settingsAppliedSignal(const Settings& settings);
    // The command table holds the new shortcuts.
    void shortcutsAppliedSignal();
    void fileExtensionsAppliedSignal(const std::vector<ExtensionData>& extensions);
    void openFileMetadataSignal();

public slots:
    void onCancelClicked();
    void onApplyClicked();
    void onOkClicked();
    void onSettingsUpdated();
    void onShortcutsUpdated();
    void onPreferencesUpdated();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    // False when the window should stay open: the user stays to fix
    // conflicts, or a file failed to save.
    bool apply(bool closing);

    CommandTable& commands;
    PreferenceFiles* files;
    QTabWidget* tabs = nullptr;
    SettingsWidget* settings_widget = nullptr;
    ShortcutsWidget* shortcuts_widget = nullptr;
    FileExtensionsWidget* extensions_widget = nullptr;
    QPushButton* cancel_button = nullptr;
    QPushButton* apply_button = nullptr;
    QPushButton* ok_button = nullptr;
    bool settings_updated = false;
    bool shortcuts_updated = false;
    bool extensions_updated = false;
};
