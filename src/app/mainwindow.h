#pragma once

#include "commands/refreshbehavior.h"
#include "data/dialect.h"
#include "data/extensiondata.h"
#include "edit/filterdata.h"
#include "edit/findreplacequery.h"
#include "view/context.h"
#include "view/range.h"
#include "view/theme.h"

#include "app/optionlistwidget.h"

#include <QFileSystemWatcher>
#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

class FileMetadataWidget;
class FindReplaceWidget;
class FindResultsWidget;
class QLayout;
class CommandTable;
class PreferenceFiles;
class PreferencesWindow;
class Settings;
class PaneView;
class QMenuBar;
class QLabel;
class SideBar;
class StatusBar;
class TabBar;
class Launcher;
class TableModel;
class TableUndoCommand;
class TableView;
class TitleBarButton;

// What to do when another program changes an open file.

// The open tables of one window and every flow from a file name to a tab and
// back: open, save, close, reload, rename, move, duplicate, delete, watching
// the disk, and the recent files. Commands arrive as command... slots.
class MainWindow : public QWidget {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    QWidget* titleBar() const { return title_bar; }
    QLabel* titleLabel() const { return title_label; }
    PaneView* paneView() const { return pane_view; }
    TabBar* tabBar() const { return tab_bar; }
    SideBar* sideBar() const { return side_bar; }

    TableView* currentView() const;
    const std::vector<TableView*>& views() const { return table_views; }
    TableView* viewForPath(const QString& filepath) const;
    void setCurrentView(TableView* view);
    QStringList recentFiles() const { return recent_filepath_list; }
    QStringList watchedFiles() const { return file_watcher.files(); }

    // Settings this window acts on, at their defaults until the settings
    // files exist.
    bool default_read_only = false;
    int read_only_query_mb = 100;
    RefreshBehavior refresh_behavior = RefreshOnChange;
    bool retain_sort_and_filters = true;
    qint64 asynchronous_threshold = 25165824;

    // ---- File flows ----
    // With `params`, the dialect is the given one rather than the extension's.
    bool openFiles(const QStringList& filepath_list, const ExtensionData* params = nullptr);
    bool openFile(const QString& filepath) { return openFiles({filepath}); }
    TableView* addTableForFile(const QString& filepath, bool read_only,
                               const ExtensionData* params);
    TableView* newUntitledTable();
    bool saveTable(TableView* view);
    bool saveTableAs(TableView* view, const QString& filepath, bool visible_only);
    void saveAll();
    // False when the user cancelled; callers looping over tabs stop then.
    bool closeFile(TableView* view);
    bool closeFiles(const std::vector<TableView*>& list);
    bool closeAll();
    void reloadFile(TableView* view);
    // Switching between read-only and editable loads the file again.
    bool setReadOnly(TableView* view, bool read_only);
    bool reloadWithParameters(TableView* view, const QString& delimiter, EncodingType encoding,
                              ParsingStandard standard);
    bool renameFile(const QString& filepath_old, const QString& filepath_new);
    bool moveFileTo(const QString& src_filepath, const QString& folder);
    bool duplicateFileTo(TableView* view, const QString& filepath);
    bool deleteFile(TableView* view);
    void openRecentFile(const QString& filepath);

    // Chooses a path for a file dialog; tests answer it without a dialog.
    using PathChooser = std::function<QString(const QString& title, const QString& start)>;
    void setPathChooser(PathChooser chooser) { choose_path = std::move(chooser); }

    void applyTheme(const Theme& theme);
    // The user's preference files live in `folder` (the per-user folder in
    // the program, a temporary one in tests); their settings apply at once
    // and again whenever another program changes them.
    void usePreferenceFolder(const QString& folder);
    const Settings& currentSettings() const { return *settings; }
    // The dialect of each extension, from "File Extensions (User).csv".
    const std::vector<ExtensionData>& extensionDataList() const { return extension_data_list; }
    // Null while it is closed.
    PreferencesWindow* preferencesWindow() const;

signals:
    void minimizeButtonClickedSignal();
    void maximizeButtonClickedSignal();
    void closeButtonClickedSignal();
    void setWindowTitleSignal(QString title);
    void createNewInstanceSignal(bool setup_default_geometry, QStringList filepath_list);
    void openTerminalToFilesDirectorySignal(QString folderpath);
    void showFileInFileSystemSignal(QString filepath);
    void mainWindowClosedSignal();

public slots:
    void commandNewFile();
    void commandNewWindow();
    void commandOpenFile();
    void commandSaveFile();
    void commandSaveFileAs();
    void commandSaveVisibleDataAs();
    void commandSaveAllFiles();
    void commandCloseFile();
    void commandCloseAllFiles();
    void commandReloadFile();
    void commandMoveFile();
    void commandDuplicateFile();
    void commandDeleteFile();
    void commandRenameFile();
    void commandShowFileInFileSystem();
    void commandOpenTerminalToFilesDirectory();
    void onFileChanged(const QString& filepath);
    void onSaveStarted(const QString& filepath);
    void onSaveFinished(const QString& filepath);
    void resetFilepathSavedList();
    void addContext(Context context, bool set_context = true);
    void removeContext(Context context, bool set_context = true);

    // Edit menu and the cell movements (mainwindow_edit.cpp).
    void commandUndo();
    void commandRedo();
    void commandCutCells();
    void commandCopyCells();
    void commandCopyCellsWithHeader();
    void commandPasteCells();
    void commandEditSelectedCell();
    void commandStopEditing();
    void commandClearCellContentsNavigate();
    void commandMoveCellContentsUp();
    void commandMoveCellContentsDown();
    void commandMoveCellContentsLeft();
    void commandMoveCellContentsRight();
    void commandDuplicateSelectedCellContentsUp();
    void commandDuplicateSelectedCellContentsDown();
    void commandDuplicateSelectedCellContentsLeft();
    void commandDuplicateSelectedCellContentsRight();
    void commandToggleShowEditorPane();
    void commandToggleAutoFitRowHeight();
    void commandToggleAutoFitColumnWidth();
    void commandToggleHighlightHeaderRows();
    void commandToggleHighlightHeaderColumns();
    void commandToggleReadOnly();
    // Row and column commands, hiding, empties and duplicates (mainwindow_lines.cpp).
    void commandInsertRowsBefore();
    void commandInsertColumnsBefore();
    void commandInsertRowsAfter();
    void commandInsertColumnsAfter();
    void commandInsertRowsBeforeMultipleTimes();
    void commandInsertColumnsBeforeMultipleTimes();
    void commandInsertCellsMoveRestOfRowRight();
    void commandInsertCellsMoveRestOfColumnDown();
    void commandRemoveRows();
    void commandRemoveColumns();
    void commandRemoveSelectedCellsMoveRestOfRowLeft();
    void commandRemoveSelectedCellsMoveRestOfColumnUp();
    void commandRemoveSelectedCellsAndTheRestOfTheirRows();
    void commandRemoveSelectedCellsAndTheRestOfTheirColumns();
    void commandMoveRowsUp();
    void commandMoveRowsDown();
    void commandMoveColumnsLeft();
    void commandMoveColumnsRight();
    void commandMoveRowsJustAboveRow();
    void commandMoveColumnsToTheLeftOfColumn();
    void commandDuplicateRows();
    void commandDuplicateColumns();
    void commandDuplicateRowsMultipleTimes();
    void commandDuplicateColumnsMultipleTimes();
    void commandTransposeTable();
    void commandTransposeSelectedCells();
    void commandHideSelectedRows();
    void commandHideSelectedColumns();
    void commandHideAllButSelectedRows();
    void commandHideAllButSelectedColumns();
    void commandHideEmptyRows();
    void commandHideEmptyColumns();
    void commandShowAllHiddenRows();
    void commandShowAllHiddenColumns();
    void commandShowHiddenRowsInSelection();
    void commandShowHiddenColumnsInSelection();
    void commandShowEmptyRows();
    void commandShowEmptyColumns();
    void commandRemoveEmptyRows();
    void commandRemoveEmptyColumns();
    void commandRemoveEmptyRowsBasedOnSelectedColumnsOnly();
    void commandRemoveEmptyColumnsBasedOnSelectedRowsOnly();
    void commandRemoveDuplicateRows();
    void commandRemoveDuplicateColumns();
    void commandRemoveDuplicateRowsBasedOnSelectedColumnsOnly();
    void commandRemoveDuplicateColumnsBasedOnSelectedRowsOnly();
    void commandSelectDuplicateRows();
    void commandSelectDuplicateColumns();
    void commandSelectDuplicateRowsBasedOnSelectedColumnsOnly();
    void commandSelectDuplicateColumnsBasedOnSelectedRowsOnly();
    void commandRemoveAllFilteredOutAndHiddenData();
    void commandRemoveExtraneousRowsAndColumns();
    // Global settings that switch on and off (mainwindow_settings.cpp).
    void commandToggleHighlightMainSelectedCellsRow();
    void commandToggleHighlightMainSelectedCellsColumn();
    void commandToggleLetEditorPaneConsumeNavigationKeystrokes();
    void commandToggleRepresentColumnsAsLetters();
    void commandToggleSaveAfterEachEdit();
    void commandToggleSaveWithTrailingDelimiters();
    void commandToggleShadeEveryOtherRow();
    void commandToggleShadeEveryOtherColumn();
    void commandToggleShowRowLabels();
    void commandToggleShowColumnLabels();
    void commandToggleShowTabBar();
    void commandToggleSnapToRowAfterScrolling();
    void commandToggleSnapToColumnAfterScrolling();
    // Select and Go To menus.
    void commandSelectUp();
    void commandSelectDown();
    void commandSelectLeft();
    void commandSelectRight();
    void commandSelectUpByABlock();
    void commandSelectDownByABlock();
    void commandSelectLeftByABlock();
    void commandSelectRightByABlock();
    void commandMoveSelectionUp();
    void commandMoveSelectionDown();
    void commandMoveSelectionLeft();
    void commandMoveSelectionRight();
    void commandMoveSelectionUpByABlock();
    void commandMoveSelectionDownByABlock();
    void commandMoveSelectionLeftByABlock();
    void commandMoveSelectionRightByABlock();
    void commandSelectEntireColumns();
    void commandSelectEntireColumnsHeaderExcluded();
    void commandSelectEntireRows();
    void commandSelectEntireRowsHeaderExcluded();
    void commandSelectEntireTable();
    void commandSelectUpToTopOfColumnHeaderExcluded();
    void commandSelectDownToBottomOfColumn();
    void commandSelectLeftToStartOfRowHeaderExcluded();
    void commandSelectRightToEndOfRow();
    void commandGoUpOneScreen();
    void commandGoDownOneScreen();
    void commandGoLeftOneScreen();
    void commandGoRightOneScreen();
    void commandGoToTop();
    void commandGoToBottom();
    void commandGoToFarLeft();
    void commandGoToFarRight();
    // The launcher and the questions commands ask (mainwindow_launcher.cpp).
    void commandCommandLauncher();
    void onCommandLauncherResponseReceived(QString response);
    void commandGoToCell();
    void commandSelectFromMainCellTo();
    void commandMoveCellContentsTo();
    void commandDuplicateCellContentsTo();
    void commandReloadFileWithDelimiter();
    void commandReloadFileWithEncoding();
    void commandReloadFileWithParsingStandard();
    void commandReloadFileWithDifferentParameters();
    void commandSetDelimiterForFileSave();
    void commandSetLineEndingForFileSave();
    void commandSetEncodingForFileSave();
    void commandSetParsingStandardForFileSave();
    void commandSetParametersForFileSave();
    void commandSetFont();
    void commandSetTextSize();
    void commandSetTheme();
    void commandSetMinimumNumberOfTableRows();
    void commandSetMinimumNumberOfTableColumns();
    void commandSetNumberOfBufferRows();
    void commandSetNumberOfBufferColumns();
    void commandSetDefaultRowHeight();
    void commandSetDefaultColumnWidth();
    void commandSetMinFileSizeReadOnlyModeQueryMb();
    void commandSetTextEditor();
    void commandSetSearchEngine();
    void commandSetOnlineMap();
    void commandSetBehaviorWhenFileIsChangedExternally();
    void commandSetUuidType();
    void commandSetFirstRowIndex();
    void commandSetFirstColumnIndex();
    void commandSetNumberOfHeaderRows();
    void commandSetNumberOfHeaderColumns();
    void commandSetMaximumRowHeightForAutoFit();
    void commandSetMaximumColumnWidthForAutoFit();
    // Between tabs and screens, and the file's location (mainwindow_goto.cpp).
    void commandGoToFile();
    void commandSwitchToTabOnTheRight();
    void commandSwitchToTabOnTheLeft();
    void commandSwitchToTab1();
    void commandSwitchToTab2();
    void commandSwitchToTab3();
    void commandSwitchToTab4();
    void commandSwitchToTab5();
    void commandSwitchToTab6();
    void commandSwitchToTab7();
    void commandSwitchToTab8();
    void commandSwitchToTab9();
    void commandSwitchToTab10();
    void commandScrollUpOneScreen();
    void commandScrollDownOneScreen();
    void commandScrollLeftOneScreen();
    void commandScrollRightOneScreen();
    void commandScrollToTop();
    void commandScrollToBottom();
    void commandScrollToFarLeft();
    void commandScrollToFarRight();
    void commandCloseAllFilesExceptCurrent();
    void commandCopyFilePathToClipboard();
    void commandCopyFolderPathToClipboard();
    void commandCopyFileNameToClipboard();
    // The find bar (mainwindow_find.cpp).
    void commandFindPrompt();
    void commandReplacePrompt();
    void commandFindNextMatch();
    void commandFindPrevMatch();
    void commandFindAllMatches();
    void commandReplaceNextMatch();
    void commandReplacePreviousMatch();
    void commandReplaceAllMatches();
    void commandSelectAllMatches();
    void commandAddNextMatchToSelection();
    void onFindReplaceEdited(FindReplaceQuery query);
    void closeFindReplace();
    void onNoMatch(const QString& find_str);
    void onFindAllResultSelected(Range cell);
    // Preferences menu (mainwindow_preferences.cpp).
    void commandPreferences();
    void commandEditSettings();
    void commandEditKeyboardShortcuts();
    void commandEditFileExtensionOptions();
    // Sorting (mainwindow_sort.cpp).
    void commandSortSelectedColumnAscending();
    void commandSortSelectedColumnDescending();
    void commandSortSelectedRowAscending();
    void commandSortSelectedRowDescending();
    void commandSortSelectedCellsHorizontallyAscending();
    void commandSortSelectedCellsHorizontallyDescending();
    void commandSortSelectedCellsVerticallyAscending();
    void commandSortSelectedCellsVerticallyDescending();

public:
    // One question of a launcher. `accept` takes the answer and gives an
    // error text when it can't, which asks the same question again.
    struct PromptStep {
        QString prompt;
        QString guide;
        std::vector<OptionData> options;
        QString preset;
        std::function<QString(const QString&)> accept;
        // Runs on each launcher made for the step, the one that asks again
        // after an error too (live previews, highlights while typing).
        std::function<void(Launcher*)> setup;
    };
    Launcher* prompt(const PromptStep& step);
    // Puts an answered step on the strip above the next question;
    // `ask_again` runs when the user goes back to it.
    void promptNext(const QString& answered_prompt, const QString& answer,
                    std::function<void()> ask_again);

    // ---- Cell transforms of the Data menu (mainwindow_transforms.cpp) ----
public slots:
    void commandUpperCase();
    void commandLowerCase();
    void commandTitleCase();
    void commandUpperCamelCase();
    void commandLowerCamelCase();
    void commandUpperSnakeCase();
    void commandLowerSnakeCase();
    void commandConvertToAcronym();
    void commandConvertDateTimeFormat();
    void commandConvertNumberFormat();
    void commandPlaceCurrentDateTimeStampNowInSelectedCells();
    void commandZeroFillWholeNumbers();
    void commandRemoveLeadingZeros();
    void commandRandomIntegersInSelectedCells();
    void commandRandomDecimalsFloatsInSelectedCells();
    void commandSetNumberOfDecimals();
    void commandCopyMainCellContentsToAllSelectedCells();
    void commandFillSelectedCellsWithSeries();
    void commandReshapeSelectedCellsRowWise();
    void commandReshapeSelectedCellsColumnWise();
    void commandJoinSelectedCellsHorizontally();
    void commandJoinSelectedCellsVertically();
    void commandJoinSelectedCellsHorizontallyMoveRestOfRowLeft();
    void commandSplitSelectedCellsHorizontally();
    void commandSplitSelectedCellsVertically();
    void commandSplitSelectedCellsHorizontallyMoveRestOfRowRight();
    void commandKeepOnlyLeftPartOfSelectedCells();
    void commandKeepOnlyMiddlePartOfSelectedCells();
    void commandKeepOnlyRightPartOfSelectedCells();
    void commandPrependCellContents();
    void commandAppendCellContents();
    void commandTrimSelectedCells();
    void commandFillSelectedCellsWithUuidGuid();
    void commandAddOrUpdateIdColumn();

    // ---- Filters (mainwindow_filters.cpp) ----
    void commandAddFilter();
    void commandAddFilterWithRegularExpressions();
    void commandViewEditFilters();
    void commandFilterSelectedRow();
    void commandFilterSelectedColumn();
    void commandFilterSelectedRowWithRegularExpressions();
    void commandFilterSelectedColumnWithRegularExpressions();
    void commandFilterSelectedRowsWithSelectedCellContents();
    void commandFilterSelectedColumnsWithSelectedCellContents();
    void commandRemoveIndividualFilters();
    void commandRemoveAllFilters();
    void commandRefreshFilters();

private:
    // "Row 5" or "Column C", as the user sees the line now.
    QString filterLineName(TableView* view, FilterLine line) const;
    // The line an answer to "Column or Row to Filter:" names, raw; invalid
    // when it names none.
    FilterLine readFilterLine(TableView* view, const QString& text) const;
    void highlightFilterLine(TableView* view, FilterLine line);
    void clearFilterHighlight(TableView* view);
    void promptForFilterLine(bool with_regex, const QString& preset);
    void promptForFilterText(FilterLine line, bool with_regex);
    void promptForFilterList(bool to_clear);
    void filterMainCellLine(bool row, bool with_regex);
    // Filters by the selected cells' texts; a refusal is told in a message.
    void filterWithCellContents(bool rows);

private:
    // The current grid when it may be edited (a cell edit committed first).
    TableView* transformTarget();
    // Closes the prompts and runs `act` on the current grid.
    void runTransform(const std::function<void(TableView*)>& act);
    // A question answered by one of `options`; `take` gets its index.
    PromptStep optionStep(const QString& prompt_text, const QString& guide,
                          std::vector<OptionData> options,
                          std::function<void(int, const QString&)> take);
    void promptForText(const QString& prompt_text, const QString& guide,
                       std::function<QString(const QString&)> accept);
    void promptForSeries(const QString& prompt_text,
                         const std::function<void(TableView*, const QString&)>& act);
    void promptForReshape(bool row_wise);
    void promptForJoin(bool horizontally, bool move_rest = false);
    // With `move_rest`, columns open after each split one so nothing is
    // overwritten ("Split Selected Cells Horizontally, Move Rest of Row Right").
    void promptForSplit(bool horizontally, bool move_rest = false);
    void promptForKeepPart(bool left);
    void promptForAffix(bool prepend);
    void onConvertDateTimeCustomFromPrompt();
    void onConvertDateTimeToPrompt(int from_kind, const QString& from_format);
    void onConvertDateTimeCustomToPrompt(int from_kind, const QString& from_format);

    // ---- Column lookup (mainwindow_lookup.cpp) ----
public slots:
    void commandColumnLookup();

private slots:
    // The chain's steps in order; each ...Received takes an answer and gives
    // an error text that asks again, or goes on to the next step.
    void onColumnLookupFromFilePrompt();
    QString onColumnLookupFromFilePromptReceived(QString answer);
    void onColumnLookupFromKeyColPrompt();
    void onColumnLookupFromKeyColPromptEdited(QString text);
    QString onColumnLookupFromKeyColPromptReceived(QString answer);
    void onColumnLookupFromValueColsPrompt();
    void onColumnLookupFromValueColsPromptEdited(QString text);
    QString onColumnLookupFromValueColsPromptReceived(QString answer);
    void onColumnLookupToFilePrompt();
    QString onColumnLookupToFilePromptReceived(QString answer);
    void onColumnLookupToKeyColPrompt();
    void onColumnLookupToKeyColPromptEdited(QString text);
    QString onColumnLookupToKeyColPromptReceived(QString answer);
    void onColumnLookupInsertNewColsPrompt();
    void onColumnLookupInsertNewColsPromptReceived(int index, QString answer);
    void onColumnLookupToValueColPrompt();
    void onColumnLookupToValueColPromptEdited(QString text);
    QString onColumnLookupToValueColPromptReceived(QString answer);
    void onColumnLookupHandleMismatchesPrompt();
    QString onColumnLookupHandleMismatchesPromptReceived(QString answer);

private:
    // The answers of the chain so far; dropped when its launcher closes.
    // Columns are raw.
    struct ColumnLookupAnswers {
        QPointer<TableView> source;
        QPointer<TableView> destination;
        int source_key_col = -1;
        std::vector<int> source_value_cols;
        int destination_key_col = -1;
        int destination_value_col = -1;
        bool insert_new_cols = true;
        QString mismatch;
        // The selection of the table a column step highlights in, as it was
        // when the step opened, to go back to while the answer names nothing.
        RangeVector kept_selection;
        Range kept_main;
    };
    ColumnLookupAnswers column_lookup;
    // The open files as options, the current one first; answers are indexes
    // into table_views.
    std::vector<OptionData> lookupFileOptions() const;
    TableView* lookupFileFromAnswer(const QString& answer) const;
    // A file step: the open files as options, the answer to `received`.
    void promptForLookupFile(const QString& prompt_text, QString (MainWindow::*received)(QString));
    // A column step: its prompt over `view`, answers highlighted there while typed.
    void promptForLookupColumn(const QString& prompt_text, const QString& guide, TableView* view,
                               void (MainWindow::*edited)(QString),
                               QString (MainWindow::*received)(QString));
    // Highlights the columns `text` names in `view` (the kept selection when
    // it names none); `all_but` is the raw column "*" leaves out, or -2 when
    // "*" means nothing.
    void highlightLookupColumns(TableView* view, const QString& text, int all_but);
    // What a column answer names in `view`'s table, as raw columns, in the
    // typed order; empty when it names none.
    std::vector<int> lookupColumns(TableView* view, const QString& text, int all_but) const;
    // A step that takes one column: a blank answer leaves `col` as the
    // step's default; otherwise the answer's column, or the error to ask again with.
    QString readOneLookupColumn(TableView* view, const QString& answer, int& col) const;
    // Builds the lookup from the answers and pushes it on the destination's stack.
    void runColumnLookup(const ColumnLookupAnswers& answers);

protected:
    void closeEvent(QCloseEvent* e) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* e) override;
    void dropEvent(QDropEvent* e) override;

private:
    // Launcher helpers (mainwindow_launcher.cpp).
    QString cellAddressGuide() const;
    // A typed address as a model cell, taken to the table's edges; false
    // when the text names no row or column.
    bool readCellAddress(const QString& text, int& row, int& col) const;
    void promptForCell(const QString& prompt_text, std::function<void(TableView*, int, int)> act);
    // A whole number of at least `minimum` (0 or 1) for `act` on the current
    // grid, which must be writable; a bad answer asks again with the error,
    // as does one that `refuse` gives an error text for.
    void promptForCount(const QString& prompt_text, int minimum,
                        const std::function<void(TableView*, int)>& act,
                        const std::function<QString(TableView*, int)>& refuse = {});
    // The count of lines to add, for the row (`rows`) or column commands
    // that add `count` lines at each run (or, `each_line`, at each line).
    void promptForLineCount(const QString& prompt_text, bool rows, bool each_line,
                            const std::function<void(TableView*, int)>& act);
    // A typed row (`rows`) or column label as a model line, taken to the
    // table's edges; false when the text names no line of that kind.
    bool readLineAddress(const QString& text, bool rows, int& line) const;
    void promptForLine(const QString& prompt_text, bool rows,
                       const std::function<void(TableView*, int)>& act);
    void promptForSetting(int id, std::vector<OptionData> options = {}, QString guide = {});
    void setGlobalSettingFromText(int id, const QString& text);
    void applyTableSetting(int id, const QString& text);
    PromptStep delimiterStep(const QString& prompt_text, bool for_reload,
                             std::function<void(const QString&, const QString&)> take);
    PromptStep encodingStep(const QString& prompt_text,
                            std::function<void(EncodingType, const QString&)> take);
    PromptStep standardStep(const QString& prompt_text,
                            std::function<void(ParsingStandard, const QString&)> take);
    PromptStep lineEndingStep(const QString& prompt_text,
                              std::function<void(LineEndingType, const QString&)> take);
    void reloadCurrent(const QString& delimiter, EncodingType encoding, ParsingStandard standard);
    void onReloadEncodingPrompt(const QString& delimiter);
    void onSaveLineEndingPrompt(const QString& delimiter);
    void onSaveEncodingPrompt(const QString& delimiter, LineEndingType ending);
    void pushOnCurrent(const std::function<TableUndoCommand*(TableModel*)>& make);
    void switchToTab(int index);
    void buildFindBar(QLayout* under_tables);
    void openFindBar(bool replace);
    FindReplaceQuery barQuery() const;
    // 0: the path, 1: the folder, 2: the name.
    void copyFileLocation(int part);
    void saveDialect(const QString& delimiter, LineEndingType ending, EncodingType encoding,
                     ParsingStandard standard);

    void buildLayout();
    void applySettings();
    // With `table_scope`, the Table settings too: the defaults a newly
    // opened file starts from.
    void applySettingsTo(TableView* view, bool table_scope);
    // Flips a switch setting, writes it to the user's file and applies it.
    void toggleSetting(int id);
    void connectView(TableView* view);
    void removeView(TableView* view);
    void updateTitle();
    void updateTab(TableView* view);
    int indexOf(TableView* view) const;
    void addRecent(const QString& filepath);
    void removeRecent(const QString& filepath);
    QString ask(const QString& text, const QStringList& buttons);
    // Asks before a file at `target` is replaced; true when it may go.
    bool mayOverwrite(const QString& target);
    // Before a reload drops the edits: save, don't, or stop (false).
    bool saveBeforeReload(TableView* view);
    // Settles the dialect of a file to open and stores it on the view.
    void settleDialect(TableView* view, const QString& filepath, const ExtensionData* params);
    void loadView(TableView* view, const QString& filepath);
    QString chooseSavePath(TableView* view, const QString& title);
    // Opens the window's one preferences window, or raises it, on `tab`.
    void openPreferences(int tab);
    void openFileMetadata();

    QWidget* title_bar = nullptr;
    QMenuBar* menu_bar = nullptr;
    std::unique_ptr<CommandTable> command_table;
    std::unique_ptr<Settings> settings;
    std::unique_ptr<PreferenceFiles> preference_files;
    QLabel* title_label = nullptr;
    TitleBarButton* minimize_button = nullptr;
    TitleBarButton* maximize_button = nullptr;
    TitleBarButton* close_button = nullptr;
    TabBar* tab_bar = nullptr;
    SideBar* side_bar = nullptr;
    PaneView* pane_view = nullptr;
    FileMetadataWidget* metadata = nullptr;
    StatusBar* status_bar = nullptr;
    FindReplaceWidget* find_bar = nullptr;
    FindResultsWidget* find_results = nullptr;
    RangeVector find_all_cells;

    std::vector<TableView*> table_views; // in tab order
    QFileSystemWatcher file_watcher;
    QStringList filepath_saved_list;
    QStringList recent_filepath_list;
    QString default_open_folderpath;
    quint32 context = TableOpen;
    bool closing = false;
    Theme theme;
    PathChooser choose_path;
    std::vector<ExtensionData> extension_data_list;
    QPointer<PreferencesWindow> preferences_window;
};
