// The Preferences menu: one preferences window per main window, whose
// applied values come back here to take effect at once.

#include "app/filemetadatawidget.h"
#include "app/preferenceswindow.h"
#include "commands/commandtable.h"
#include "commands/settings.h"
#include "mainwindow.h"

#include <QMenuBar>
#include <QSplitter>

PreferencesWindow* MainWindow::preferencesWindow() const {
    return preferences_window;
}

void MainWindow::commandPreferences() {
    // An open window stays on the tab the user left it on.
    openPreferences(preferences_window ? int(preferences_window->currentTab())
                                       : int(PreferencesWindow::SettingsTab));
}

void MainWindow::commandEditSettings() {
    openPreferences(PreferencesWindow::SettingsTab);
}

void MainWindow::commandEditKeyboardShortcuts() {
    openPreferences(PreferencesWindow::ShortcutsTab);
}

void MainWindow::commandEditFileExtensionOptions() {
    openPreferences(PreferencesWindow::FileExtensionsTab);
}

void MainWindow::openPreferences(int tab) {
    if (!preferences_window) {
        auto* w = new PreferencesWindow(*settings, *command_table, extension_data_list,
                                        preference_files.get(), this);
        connect(w, &PreferencesWindow::settingsAppliedSignal, this, [this](const Settings& s) {
            // Only the file's settings: the panel switches kept outside it
            // may have moved while the form was open.
            for (int id = 0; id < SettingId::Count; ++id)
                if (s.record(id).in_user_file) settings->record(id).value = s.record(id).value;
            applySettings();
        });
        connect(w, &PreferencesWindow::shortcutsAppliedSignal, this, [this] {
            command_table->buildMenus(menu_bar);
            command_table->setContext(context);
        });
        connect(w, &PreferencesWindow::fileExtensionsAppliedSignal, this,
                [this](const std::vector<ExtensionData>& extensions) {
                    extension_data_list = extensions;
                });
        connect(w, &PreferencesWindow::openFileMetadataSignal, this, &MainWindow::openFileMetadata);
        preferences_window = w;
        const QRect frame = window()->frameGeometry();
        w->move(frame.center() - w->rect().center());
    }
    preferences_window->setCurrentTab(PreferencesWindow::Tab(tab));
    preferences_window->show();
    preferences_window->raise();
    preferences_window->activateWindow();
}

void MainWindow::openFileMetadata() {
    settings->record(SettingId::ShowFileMetadata).value = true;
    metadata->show();
    // A pane dragged shut stays shut when merely shown.
    if (auto* splitter = qobject_cast<QSplitter*>(metadata->parentWidget())) {
        const int index = splitter->indexOf(metadata);
        QList<int> sizes = splitter->sizes();
        if (index >= 0 && sizes[index] == 0) {
            const int wanted = std::max(metadata->sizeHint().width(), 260);
            int widest = 0;
            for (int i = 1; i < sizes.size(); ++i)
                if (sizes[i] > sizes[widest]) widest = i;
            sizes[widest] = std::max(0, sizes[widest] - wanted);
            sizes[index] = wanted;
            splitter->setSizes(sizes);
        }
    }
    window()->raise();
    window()->activateWindow();
}
