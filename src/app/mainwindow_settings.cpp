// The window's settings: read from the user's files at start and again when
// another program changes them, and carried into every table.

#include "app/paneview.h"
#include "app/preferenceswindow.h"
#include "app/sidebar.h"
#include "app/tabbar.h"
#include "commands/commandtable.h"
#include "commands/preferencefiles.h"
#include "commands/settings.h"
#include "mainwindow.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QHeaderView>
#include <QMenuBar>

void MainWindow::usePreferenceFolder(const QString& folder) {
    preference_files = std::make_unique<PreferenceFiles>(folder);
    preference_files->checkFiles();
    preference_files->readSettings(*settings);
    if (preference_files->applyUserShortcuts(*command_table)) {
        command_table->buildMenus(menu_bar);
        command_table->setContext(context);
    }
    preference_files->readFileExtensions(extension_data_list);
    preference_files->startWatching();
    connect(preference_files.get(), &PreferenceFiles::settingsFileChangedSignal, this, [this] {
        if (preference_files->readSettings(*settings)) applySettings();
    });
    connect(preference_files.get(), &PreferenceFiles::shortcutsFileChangedSignal, this, [this] {
        if (!preference_files->applyUserShortcuts(*command_table)) return;
        command_table->buildMenus(menu_bar);
        command_table->setContext(context);
    });
    connect(preference_files.get(), &PreferenceFiles::fileExtensionsFileChangedSignal, this,
            [this] { preference_files->readFileExtensions(extension_data_list); });
    applySettings();
}

void MainWindow::applySettings() {
    using namespace SettingId;
    const Settings& s = *settings;
    read_only_query_mb = s.integer(MinFileSizeReadOnlyQueryMb);
    default_read_only = s.boolean(SettingId::ReadOnly); // the mode new tabs start in
    refresh_behavior = s.refreshBehavior(ChangedExternally);
    retain_sort_and_filters = s.boolean(RetainSortAndFilters);
    tab_bar->setVisible(s.boolean(ShowTabBar));
    side_bar->setVisible(s.boolean(ShowSideBar));
    pane_view->setSettings(s);
    pane_view->setLetEditorPaneConsumeNavigationKeys(s.boolean(EditorPaneConsumesNavigation));
    pane_view->showEditorPane(s.boolean(ShowEditorPane), false);
    const ::Theme chosen = s.theme();
    if (chosen.name != theme.name) applyTheme(chosen);
    for (TableView* v : table_views)
        applySettingsTo(v, false);
    if (preferences_window) preferences_window->setSettings(*settings);
}

void MainWindow::applySettingsTo(TableView* view, bool table_scope) {
    if (!settings) return;
    using namespace SettingId;
    const Settings& s = *settings;
    TableModel& m = *view->model();
    if (table_scope) {
        // Table settings are the defaults of a newly opened file; after
        // that the file keeps its own, changed by its commands.
        m.setFirstRowIndex(s.integer(FirstRowIndex));
        m.setFirstColIndex(s.integer(FirstColumnIndex));
        m.setHighlightHeaderRows(s.boolean(HighlightHeaderRows));
        m.setHighlightHeaderCols(s.boolean(HighlightHeaderColumns));
        m.setNumHeaderRows(s.integer(HeaderRows));
        m.setNumHeaderCols(s.integer(HeaderColumns));
        view->setMaxRowHeight(s.integer(MaxRowHeightForAutoFit));
        view->setMaxColWidth(s.integer(MaxColumnWidthForAutoFit));
        view->setAutoFitRows(s.boolean(AutoFitRowHeight));
        view->setAutoFitCols(s.boolean(AutoFitColumnWidth));
    }
    m.setCaseSensitiveSorting(s.boolean(CaseSensitiveSorting));
    m.setHighlightMainRow(s.boolean(HighlightMainRow));
    m.setHighlightMainCol(s.boolean(HighlightMainColumn));
    m.setColumnsAsLetters(s.boolean(ColumnsAsLetters));
    m.setSaveAfterEachEdit(s.boolean(SaveAfterEachEdit));
    m.setSaveTrailingDelimiters(s.boolean(SaveTrailingDelimiters));
    m.setShadeRows(s.boolean(ShadeRows));
    m.setShadeCols(s.boolean(ShadeColumns));
    m.setFontFamily(s.font().family());
    if (!m.isReadOnly()) {
        m.setMinRows(s.integer(MinTableRows));
        m.setMinCols(s.integer(MinTableColumns));
        m.setBufferRows(s.integer(BufferRows));
        m.setBufferCols(s.integer(BufferColumns));
    }
    view->setDefaultRowHeight(s.integer(DefaultRowHeight));
    view->setDefaultColWidth(s.integer(DefaultColumnWidth));
    view->setSnapToRow(s.boolean(SnapToRow));
    view->setSnapToCol(s.boolean(SnapToColumn));
    view->setTextPixelSize(s.integer(TextSize));
    view->horizontalHeader()->setVisible(s.boolean(ShowColumnLabels));
    view->verticalHeader()->setVisible(s.boolean(ShowRowLabels));
    view->refreshView();
}

void MainWindow::toggleSetting(int id) {
    settings->toggle(id);
    // The file is the settings' home: the watcher's report of this write
    // reads back the same values.
    if (preference_files) preference_files->writeSetting(id, *settings);
    applySettings();
}

void MainWindow::commandToggleHighlightMainSelectedCellsRow() {
    toggleSetting(SettingId::HighlightMainRow);
}

void MainWindow::commandToggleHighlightMainSelectedCellsColumn() {
    toggleSetting(SettingId::HighlightMainColumn);
}

void MainWindow::commandToggleLetEditorPaneConsumeNavigationKeystrokes() {
    toggleSetting(SettingId::EditorPaneConsumesNavigation);
}

void MainWindow::commandToggleRepresentColumnsAsLetters() {
    toggleSetting(SettingId::ColumnsAsLetters);
}

void MainWindow::commandToggleSaveAfterEachEdit() {
    toggleSetting(SettingId::SaveAfterEachEdit);
}

void MainWindow::commandToggleSaveWithTrailingDelimiters() {
    toggleSetting(SettingId::SaveTrailingDelimiters);
}

void MainWindow::commandToggleShadeEveryOtherRow() {
    toggleSetting(SettingId::ShadeRows);
}

void MainWindow::commandToggleShadeEveryOtherColumn() {
    toggleSetting(SettingId::ShadeColumns);
}

void MainWindow::commandToggleShowRowLabels() {
    toggleSetting(SettingId::ShowRowLabels);
}

void MainWindow::commandToggleShowColumnLabels() {
    toggleSetting(SettingId::ShowColumnLabels);
}

void MainWindow::commandToggleShowTabBar() {
    toggleSetting(SettingId::ShowTabBar);
}

void MainWindow::commandToggleSnapToRowAfterScrolling() {
    toggleSetting(SettingId::SnapToRow);
}

void MainWindow::commandToggleSnapToColumnAfterScrolling() {
    toggleSetting(SettingId::SnapToColumn);
}

// Table settings switch for the current table alone.
void MainWindow::commandToggleAutoFitRowHeight() {
    if (TableView* v = currentView()) v->setAutoFitRows(!v->autoFitRows());
}

void MainWindow::commandToggleAutoFitColumnWidth() {
    if (TableView* v = currentView()) v->setAutoFitCols(!v->autoFitCols());
}

void MainWindow::commandToggleHighlightHeaderRows() {
    if (TableView* v = currentView()) {
        v->model()->setHighlightHeaderRows(!v->model()->highlightHeaderRows());
        v->refreshView();
    }
}

void MainWindow::commandToggleHighlightHeaderColumns() {
    if (TableView* v = currentView()) {
        v->model()->setHighlightHeaderCols(!v->model()->highlightHeaderCols());
        v->refreshView();
    }
}

void MainWindow::commandToggleReadOnly() {
    if (TableView* v = currentView()) setReadOnly(v, !v->model()->isReadOnly());
}
