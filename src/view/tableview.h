#pragma once

#include "data/dialect.h"
#include "edit/filterdata.h"
#include "edit/findreplacequery.h"
#include "edit/numbertransforms.h"
#include "edit/uuidtext.h"
#include "view/abstracttableview.h"
#include "view/theme.h"

#include <QPointer>
#include <QTimer>
#include <QVariant>

#include <functional>
#include <memory>
#include <vector>

class HeaderView;
class SortCommand;
struct SortRecord;
class TableDelegate;
class TableUndoCommand;
struct SplitRule;
class QTableWidget;
class QUndoStack;
class QVariantAnimation;

// One open file on the screen: the grid, its model and its undo stack.
// Every command reaches a file through one of its methods.
class TableView : public AbstractTableView {
    Q_OBJECT

public:
    explicit TableView(bool read_only = false, QWidget* parent = nullptr);
    ~TableView() override;

    TableModel* model() const { return table_model; }
    QUndoStack* undoStack() const { return undo_stack; }
    HeaderView* horizontalLabels() const { return horizontal_header; }
    HeaderView* verticalLabels() const { return vertical_header; }

    // Navigation and selection commands.
    void moveSelectionRelative(int vertical, int horizontal) override;
    void moveSelectionByBlock(Direction direction);
    // Shift+arrow (or by a block with Ctrl): every member grows at once.
    void extendSelection(Direction direction, bool by_block);
    void goOneScreen(Direction direction);
    void goToEdge(Direction direction);
    void selectEntireRows(bool header_excluded);
    void selectEntireColumns(bool header_excluded);
    void selectEntireTable();
    void selectToEdge(Direction direction);

    // Sizes.
    void setDefaultRowHeight(int pixels);
    void setDefaultColWidth(int pixels);
    int defaultRowHeight() const { return default_row_height; }
    int defaultColWidth() const { return default_col_width; }
    void setMaxRowHeight(int pixels) { max_row_height = pixels; }
    void setMaxColWidth(int pixels) { max_col_width = pixels; }
    void setAutoFitRows(bool on);
    void setAutoFitCols(bool on);
    bool autoFitRows() const { return auto_fit_rows; }
    bool autoFitCols() const { return auto_fit_cols; }
    void setTheme(const Theme& theme);
    void setTextPixelSize(int pixels);
    void setSnapToRow(bool on) { snap_rows = on; }
    void setSnapToCol(bool on) { snap_cols = on; }
    int auto_fit_skip_count = -1; // -1: never skip

    // ---- Editing, undo and the clipboard ----
    // Pushes a command that changes something (running its redo) and
    // repaints; one that would change nothing is deleted unseen.
    void pushCommand(TableUndoCommand* command);
    void commandUndo();
    void commandRedo();
    void copyCells(bool with_header);
    void cutCells();
    void pasteCells();
    // "Clear Cell Contents": one undo step emptying the selection.
    void deleteCells();
    // Moves and copies of cell contents by the given step, as the Data
    // menu's commands do.
    void moveCellContents(int row_offset, int col_offset);
    void duplicateCellContents(Direction direction);
    // The selected blocks copied so that the main one starts at the cell.
    void duplicateCellContentsTo(int model_row, int model_col);
    // ---- Whole rows and columns (tableview_lines.cpp) ----
    // Each pushes one undo step, or nothing when it would change nothing.
    // `count` 0: before (or after) each run of selected lines, as many lines
    // as the run holds; otherwise `count` lines at each run.
    void insertRows(int count, bool before);
    void insertCols(int count, bool before);
    // "Insert Cells, Move Rest of Row Right" (rows) and "... Column Down".
    void insertCellsMoveRest(bool rows);
    void removeRows();
    void removeCols();
    // "Remove Selected Cells, Move Rest of Row Left" (rows), "... Column Up".
    void removeSelectedCellsMoveRest(bool rows);
    // "Remove Selected Cells and the Rest of Their Rows" (rows) or Columns.
    void removeSelectedCellsAndRestOfLines(bool rows);
    // Whole selected lines one place: -1 up (left), 1 down (right).
    void moveRowsRelative(int offset);
    void moveColsRelative(int offset);
    // The selected lines to stand just above model row `target` (left of
    // model column `target`), in their order.
    void moveRowsAbove(int target);
    void moveColsLeftOf(int target);
    // `count` copies of each selected line below (right of) it.
    void duplicateRows(int count);
    void duplicateCols(int count);
    // Whether `count` new lines at each run of selected lines (`each_line`:
    // at each selected line, as duplicates are) still fit: the table stays
    // addressable, and a rough floor of the bytes they take is free memory.
    bool roomForLines(bool rows, int count, bool each_line) const;
    void transposeTable();
    void transposeSelectedCells();
    // Split each selected cell by `rule` into the cells to its right
    // (`horizontal`) or below, as one undo step; with `insert_lines` new
    // lines open after each split line first, so nothing is overwritten
    // ("Split Selected Cells Horizontally, Move Rest of Row Right").
    void splitCells(bool horizontal, const SplitRule& rule, bool insert_lines);
    // Hide and show (`rows` or columns).
    void hideSelected(bool rows);
    void hideAllButSelected(bool rows);
    void hideEmpty(bool rows);
    void showAllHidden(bool rows);
    void showHiddenInSelection(bool rows);
    void showEmpty(bool rows);
    // Empties and duplicates, on whole lines or the selected cross lines.
    void removeEmpty(bool rows, bool based_on_selected);
    void removeDuplicates(bool rows, bool based_on_selected);
    void selectDuplicates(bool rows, bool based_on_selected);
    void removeAllFilteredOutAndHiddenData();
    void removeExtraneousRowsAndColumns();
    // The column whose label in the last header row reads "id" in any case,
    // or -1 (always with no header row).
    int idColumn() const;
    // Numbers the ID column's empty data cells after the largest number in
    // it, as one undo step; nothing when none is empty.
    void updateIdColumn(int col);
    // A new first column, "ID" in its last header row and the data rows
    // numbered from `first`, as one undo step ("Add ID Column").
    void addIdColumn(qint64 first);
    bool isEditing() const { return context & CellEditing; }
    // "Edit Selected Cell": the main cell's text stays, the cursor at its end.
    void editSelectedCell();
    QWidget* cellEditor() const { return editor; }
    TableDelegate* tableDelegate() const { return delegate; }

    // ---- Cell transforms of the Data menu (tableview_transforms.cpp) ----
    // Each is one undo step over every member of the selection; hidden cells
    // are left alone, and a cell its function can't treat keeps its text.
    // A function from a cell's text to its new text. With `empty_keeps`, an
    // empty result means "not applicable" and the cell stays as it was.
    using TextFunction = std::function<QString(const QString&)>;
    void transformSelectedCells(const TextFunction& f, bool empty_keeps = false);
    void upperCase();
    void lowerCase();
    void titleCase();
    void upperCamelCase();
    void lowerCamelCase();
    void upperSnakeCase();
    void lowerSnakeCase();
    void convertToAcronym();
    // Kinds numbered as DateTimeFormatKind.
    void convertDateTimeFormat(int from_kind, int to_kind, const QString& from_format,
                               const QString& to_format);
    void convertNumberFormat(bool to_comma_decimal);
    void zeroFillWholeNumbers(int total_digits);
    void removeLeadingZeros();
    void setNumberOfDecimals(int decimals);
    void trimSelectedCells();
    void keepOnlyLeftPart(int n);
    void keepOnlyMiddlePart(int index, int count);
    void keepOnlyRightPart(int n);
    void prependToCells(const QString& text);
    void appendToCells(const QString& text);
    // Values laid out one to a cell: each member in row-major order.
    void prependSeriesToCells(const QString& series);
    void appendSeriesToCells(const QString& series);
    // One text into every selected cell ("Place Current Date/Time Stamp").
    void fillSelectedCells(const QString& text);
    void copyMainCellToSelectedCells();
    // Each selected line from its start: down the columns of a member taller
    // than wide, else along its rows. An empty field empties the selection.
    void fillSelectedCellsWithSeries(const QString& series);
    // Fresh values for each cell, drawn in row-major order of each member.
    void randomIntegersInSelectedCells(const RandomIntegerChoices& choices);
    void randomDecimalsInSelectedCells(const RandomDecimalChoices& choices);
    void fillSelectedCellsWithUuids(UuidVersion version, UuidForm form);
    // Each member's rows (horizontally) or columns joined into their first
    // cell, the others emptied.
    void joinSelectedCells(bool horizontally, const QString& separator);
    // The horizontal join, then the cells it emptied removed with the rest
    // of their rows moving left: one undo step.
    void joinSelectedCellsMoveRestLeft(const QString& separator);
    // Each selected cell's parts go to it and the cells to its right (or
    // below), over what is there. By delimiter, or with `by_index` at the
    // given character indexes.
    void splitSelectedCells(bool horizontally, bool by_index, const QString& delimiter,
                            const QList<int>& indexes);
    // The main member's values in the new shape from its top left corner;
    // false when the shape is invalid.
    bool reshapeSelectedCells(const QString& answer, bool row_wise);
    // The values a reshape would lay out: the main member's texts.
    qsizetype reshapeValueCount() const;
    // Members of at least this many cells are transformed on their stored
    // bytes, a column of millions at once; smaller ones cell by cell.
    qint64 bulk_transform_cells = 20000;

    // ---- Find and replace (tableview_find.cpp) ----
    // Moves the main cell to the next (previous) match; noMatchSignal when
    // there is none.
    bool findMatch(const FindReplaceQuery& query, bool backwards);
    RangeVector findAllMatches(const FindReplaceQuery& query);
    // Replaces in the main cell when it matches, then moves on as find does.
    bool replaceMatch(const FindReplaceQuery& query, bool backwards);
    // One undo step; the number of cells changed.
    int replaceAllMatches(const FindReplaceQuery& query);
    bool selectAllMatches(const FindReplaceQuery& query);
    // The query whose matches are highlighted (when it asks for that).
    void setFindQuery(const FindReplaceQuery& query);
    void refreshFindMatches();
    // ---- Sorting (tableview_sort.cpp) ----
    // By the main cell's column or row; order 0 ascending, 1 descending.
    // A long sort shows its progress and can be cancelled, leaving the table
    // as it was and no undo step.
    void sortSelectedColumn(int order);
    void sortSelectedRow(int order);
    // Each selected row (horizontally) or column of cells in itself: one
    // undo step.
    void sortSelectedCells(bool horizontally, int order);
    // The sort a reload keeps (a column record sorts rows, a row record
    // columns), made again on the new table. False when there is none, the
    // line is gone or the user cancels.
    bool restoreSort(SortRecord record);

    // ---- Filters (tableview_filters.cpp) ----
    // Each new filter replaces the one on its line (its exceptions cleared)
    // or joins the list; one undo step for all.
    void addFilters(const std::vector<FilterData>& new_filters);
    void addFilter(const FilterData& filter);
    void removeFilter(FilterLine line);
    void removeAllFilters();
    // Applies the filters again from scratch: lines edited out of their
    // filter's match leave the view, undoably.
    void refreshFilters();
    // One filter per selected row (`rows`) or column, whose alternatives are
    // the selected cells' texts, matched whole and in any case. The reason
    // when it refuses (too many lines or values), else empty.
    QString filterSelectedWithCellContents(bool rows);

    // The width auto-fit gives a column: five measured strings at most,
    // from at most 100 + eval_precision sampled rows.
    int autoFitWidth(int col, int eval_precision) const;

signals:
    void undoStackCleanChangedSignal(bool is_saved);
    void startProgressUpdateSignal();
    void loadProgressUpdateSignal(int curr_num_reports, int num_total_reports, int filesize_mb);
    void loadFinishedSignal();
    void saveStartedSignal(QString filepath);
    void saveFinishedSignal(QString filepath);
    void selectionChangedSignal(TableView* table_view);
    void mainCellChangedSignal(Range main_cell);
    void tableSizeChangedSignal(int num_raw_rows, int num_raw_cols, int num_model_rows,
                                int num_model_cols);
    void updateStatusBarSignal();
    void noMatchSignal(QString find_str);
    void selectionSizeChangedSignal(RangeSize selection_size);
    void tableViewDestroyedSignal();
    void mainCellLengthChangedSignal(int length);
    // The edit goes on in the editor pane (shown and in use).
    void startOffCellEditSignal(bool blank, bool move_cursor_to_end);
    void startOffCellEditSignal(bool blank, QKeyEvent* ke);

public slots:
    void startEditing(bool blank, bool move_cursor_to_end);
    void startEditing(bool blank) { startEditing(blank, false); }
    void startEditing(bool blank, QKeyEvent* ke);
    void onCellEditorCreated(QWidget* editor);
    void onCellTextEdited(QString text);
    void onCellEditingFinished();
    void stopEditing(bool make_undo_command);
    void stopEditing() { stopEditing(true); }
    // Direct writes of a list (the middle-button fill): one undo step.
    void onDataChanged(RangeVector cells);
    void onMoveCellContentsAbsolute(RangeVector selection, Range main_cell, int row_model,
                                    int col_model);
    void onUndoStackCleanChanged(bool is_clean);
    void scrollToMainCell(bool only_if_outside_view = true, bool keep_cell_on_edge = false);
    void scrollToRow(int row, bool only_if_outside_view = true, bool keep_cell_on_edge = false);
    void scrollToCol(int col, bool only_if_outside_view = true, bool keep_cell_on_edge = false);
    void scroll(Direction direction, bool full_screen, int num_ver_pixels = 75,
                int num_hor_pixels = 250);
    void wheelScroll(Axis axis, int num_pixels);
    void resizeColumnsToContents();
    void resizeColumnToContents(int col, int num_eval_rows);
    void enforceAutoFitColWidth(bool scroll);
    void enforceAutoFitColWidths(std::vector<int> cols);
    void enforceAutoFitRowHeight(bool scroll);
    void enforceAutoFitRowHeight(int row);
    void enforceAutoFitRowHeights(std::vector<int> rows);
    void resizeRow(int row, int size);
    void resizeRows(std::vector<int> rows, std::vector<int> sizes);
    void resizeCol(int col, int size);
    void resizeCols(std::vector<int> cols, std::vector<int> sizes);
    void insertRowsSlot(int row, int count);
    void removeRowsSlot(int row, int count);
    void insertColsSlot(int col, int count);
    void removeColsSlot(int col, int count);
    void setRowHeightsSlot(QVariant normalized_row_height);
    void setColWidthsSlot(QVariant normalized_col_width);
    void performRemoveRows();
    void performRemoveCols();
    void enforceTableSize();
    void onLoadFinished();
    void onSelectionChanged();
    void onScrollBarReleased();
    void onWheelSnapTimerStopped();
    void onHorizontalSectionClicked(int col);
    void onHorizontalSectionCtrlClicked(int col);
    void onHorizontalSectionShiftClicked(int col);
    void onHorizontalSectionEntered(int col);
    void onHorizontalMouseReleased();
    void onVerticalSectionClicked(int row);
    void onVerticalSectionCtrlClicked(int row);
    void onVerticalSectionShiftClicked(int row);
    void onVerticalSectionEntered(int row);
    void onVerticalMouseReleased();
    // A double-click on a label sorts by that line: ascending, or descending
    // when it is sorted ascending already.
    void onHorizontalSectionDoubleClicked(int col);
    void onVerticalSectionDoubleClicked(int row);
    void onTopLeftCornerButtonClicked();
    void onTopLeftCornerButtonCtrlClicked();
    void selectRow(int row);
    void selectCol(int col);

protected:
    bool eventFilter(QObject* watched, QEvent* e) override;
    void wheelEvent(QWheelEvent* e) override;
    bool handleNavigationKey(QKeyEvent* e) override;

private:
    // Scrolls one axis so that a line is in view; `what` 0 rows, 1 columns.
    void scrollToPosition(int row, int col, bool only_if_outside_view, bool keep_cell_on_edge,
                          int what);
    void scrollAxisTo(bool rows, int index, bool only_if_outside_view, bool keep_cell_on_edge);
    void snapAxis(bool rows);
    void selectLines(bool rows, int line, bool add);
    void extendLinesTo(bool rows, int line);
    void measureFonts();
    bool beginEdit(bool blank);
    void openCellEditor(bool blank);
    void widenColumnsFor(const QString& text);
    bool handleEditingKey(QKeyEvent* e);
    // Ends a running edit; false when the table may not change.
    bool readyToChange(bool writes);
    bool readyToFilter();
    void applyHidden(bool rows, std::vector<int> hidden);
    void dragEnterEvent(QDragEnterEvent* e) override;
    void dragMoveEvent(QDragMoveEvent* e) override;
    void dropEvent(QDropEvent* e) override;
    void startCellDrag();
    // A sort by raw line `index` along `axis` (0: rows move), with progress.
    void sortByLine(int axis, int index, int order);
    // Makes the sort's command, showing progress on a long table, and hands
    // it to `finish` while the progress still shows the lines moving.
    void runSort(int axis, int index, int order, const std::function<void(SortCommand*)>& finish);

    TableDelegate* delegate = nullptr;
    RangeVector edit_ranges;
    Range edit_main_cell;
    QVariant edit_value;
    bool edit_is_blank = false;
    int edit_rows_before = 0;
    int edit_cols_before = 0;
    QPointer<QWidget> editor;
    int editor_cursor_position = 0;
    bool reopening_editor = false;
    // The drag of cells inside the grid.
    bool dragging_cells = false;
    RangeVector drag_cells;
    Range drag_main_cell;
    int drag_offset_row = 0;
    int drag_offset_col = 0;
    Range drag_current_cell;

    QUndoStack* undo_stack = nullptr;
    HeaderView* horizontal_header = nullptr;
    HeaderView* vertical_header = nullptr;
    QVariantAnimation* row_animation = nullptr;
    QVariantAnimation* col_animation = nullptr;
    QTableWidget* measure_row = nullptr;
    QTableWidget* measure_col = nullptr;
    QTimer* wheel_snap_timer = nullptr;
    int default_row_height = 24;
    int default_col_width = 80;
    int max_row_height = 240;
    int max_col_width = 800;
    bool auto_fit_rows = false;
    bool auto_fit_cols = true;
    bool snap_rows = true;
    bool snap_cols = false;
    int char_width = 8;
    int header_char_width = 9;
    int col_click_anchor = -1;
    int row_click_anchor = -1;
    RangeVector header_drag_base;
    std::vector<int> animated_rows;
    std::vector<int> animated_cols;
    std::vector<int> animated_row_heights;
    std::vector<int> animated_col_widths;
};
