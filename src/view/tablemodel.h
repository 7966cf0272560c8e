#pragma once

#include "data/dialect.h"
#include "data/tabledata.h"
#include "edit/filterdata.h"
#include "edit/findreplacequery.h"
#include "view/context.h"
#include "view/range.h"
#include "view/theme.h"

#include <QAbstractTableModel>
#include <QBrush>
#include <QColor>
#include <QFile>
#include <QFont>
#include <QMutex>
#include <QRegularExpression>
#include <QThread>
#include <QWaitCondition>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class QMimeData;
class FindMatcher;
class LookupMap;
class TableModelWorker;

// Which line a sort last ran on and how; it decides the arrows in the labels.
struct SortRecord {
    int order = 2; // 0 ascending, 1 descending, 2 none
    int kind = 3;
    int index = -1; // raw index of the sorted row or column
};

// The one object through which views, the editor pane, the printer and the
// analysis tools see a file. It adds to the raw cells what they do not know:
// the virtual size that makes the table look endless, the labels, every
// colour and font a cell is painted with, and the selection.
class TableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    // The lowest 32-bit integer: a label for an index that does not exist.
    static constexpr int kMissingLabel = INT32_MIN;

    explicit TableModel(bool read_only = false, QObject* parent = nullptr);
    ~TableModel() override;

    // QAbstractTableModel
    QModelIndex index(int row, int col, const QModelIndex& parent = {}) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    bool setHeaderData(int section, Qt::Orientation orientation, const QVariant& value,
                       int role = Qt::EditRole) override;
    bool insertRows(int row, int count, const QModelIndex& parent = {}) override;
    bool insertColumns(int col, int count, const QModelIndex& parent = {}) override;
    bool removeRows(int row, int count, const QModelIndex& parent = {}) override;
    bool removeColumns(int col, int count, const QModelIndex& parent = {}) override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // Writes without a signal, for batches that repaint once at their end.
    bool setDataSilent(int model_row, int model_col, const QString& text);
    // Writes by raw position. Rows and columns at 0 are left to the wider
    // repaint that follows such writes, so no signal goes out for them.
    bool setRawData(int raw_row, int raw_col, const QString& text);

    // Loads a file through table_data; a threaded load ends in onLoadFinished.
    void load(const QString& filepath, bool asynchronous);
    TableData& tableData() { return table_data; }
    const TableData& tableData() const { return table_data; }
    QFile& file() { return file_; }

    // The growth rule behind the virtual rows and columns. With `in_steps`
    // (the end of a load) more than kRowGrowthStep rows are added a step at
    // a time, the rest following on the next turns of the event loop.
    void enforceTableSize(bool in_steps = false);
    static constexpr int kRowGrowthStep = 262144;
    // After a removal: pulls selection members back inside the table.
    void clampSelectionToRows();
    void clampSelectionToColumns();
    // The texts of the last header row, one per visible column.
    QStringList headerLabelsOfData() const;
    void refreshAll();

    // Labels
    int rowLabel(int model_row) const;
    QString columnLabelText(int model_col) const;

    // Settings and file parameters.
    void setTheme(const Theme& theme);
    const Theme& currentTheme() const { return theme; }
    void setShadeRows(bool on);
    void setShadeCols(bool on);
    void setHighlightMainRow(bool on);
    void setHighlightMainCol(bool on);
    void setHighlightHeaderRows(bool on);
    void setHighlightHeaderCols(bool on);
    void setNumHeaderRows(int n);
    void setNumHeaderCols(int n);
    void setMinRows(int n);
    void setMinCols(int n);
    void setBufferRows(int n);
    void setBufferCols(int n);
    void setFirstRowIndex(int n);
    void setFirstColIndex(int n);
    void setColumnsAsLetters(bool on);
    void setCaseSensitiveSorting(bool on);
    void setTextPixelSize(int pixels);
    void setFontFamily(const QString& family);
    void setSaveAfterEachEdit(bool on) { save_after_each_edit = on; }
    void setSaveTrailingDelimiters(bool on);
    bool setReadOnly(bool on);
    void setExtension(const QString& extension);
    void setDelimiter(const QString& open, const QString& save);
    void setLineEnding(LineEndingType line_ending);
    void setEncoding(EncodingType encoding, bool convert_cells = false);
    void setParsingStandard(ParsingStandard standard);
    void setRowSort(SortRecord record);
    void setColSort(SortRecord record);
    void setFindQuery(const FindReplaceQuery& query) { find_query = query; }
    void setFindMatches(RangeVector matches);

    bool isReadOnly() const { return read_only; }
    bool highlightHeaderRows() const { return highlight_header_rows; }
    bool highlightHeaderCols() const { return highlight_header_cols; }
    bool saveAfterEachEdit() const { return save_after_each_edit; }
    bool saveTrailingDelimiters() const { return save_trailing_delimiters; }
    int numHeaderRows() const { return num_header_rows; }
    int numHeaderCols() const { return num_header_cols; }
    int minRows() const { return min_rows; }
    int minCols() const { return min_cols; }
    int bufferRows() const { return buffer_rows; }
    int bufferCols() const { return buffer_cols; }
    int firstRowIndex() const { return first_row_index; }
    int firstColIndex() const { return first_col_index; }
    bool columnsAsLetters() const { return columns_as_letters; }
    bool caseSensitiveSorting() const { return case_sensitive_sorting; }
    QString extension() const { return extension_; }
    QString delimiterOpen() const { return delimiter_open; }
    QString delimiterSave() const { return delimiter_save; }
    LineEndingType lineEnding() const { return line_ending; }
    EncodingType encoding() const { return encoding_; }
    ParsingStandard parsingStandard() const { return parsing_standard; }
    const QFont& cellFont() const { return cell_font; }
    const QFont& headerCellFont() const { return header_cell_font; }
    int textPixelSize() const { return text_pixel_size; }
    SortRecord rowSort() const { return row_sort; }
    SortRecord colSort() const { return col_sort; }
    const std::vector<FilterData>& filterList() const { return filters; }
    int lastDataRow() const { return last_data_row; }
    // How many cell texts have been read through data(): the auto-fit reads
    // a bounded sample, and this is how that bound is checked.
    qint64 displayReads() const { return display_reads; }
    int lastDataCol() const { return last_data_col; }

    // Read by the view; kept here so that a file's own values travel with it.
    int max_row_height_for_auto_fit = 240;
    int max_col_width_for_auto_fit = 800;
    bool auto_fit_rows = false;
    bool auto_fit_cols = true;
    // Row and column operations change only the model's count.
    bool size_only = false;
    bool lock_row_insert = false;
    bool suppress_raw_cell_signal = false;
    bool suppress_layout_signals = false;
    // A sort's local event loop lets keys and clicks through, to a progress
    // dialog's Cancel; off, they wait for the sort's end.
    bool sort_takes_input = true;

    // ---- Selection ----
    const RangeVector& selectionRanges() const { return selection; }
    const Range& mainCell() const { return main_cell; }
    const Range& pendingCornerStart() const { return pending_corner_start; }
    const Range& pendingCornerEnd() const { return pending_corner_end; }
    bool hasPendingRectangle() const { return pending_corner_start.row >= 0; }

    void selectSingleCell(Range cell);
    void setMainCell(Range cell);
    void setMainAndSelection(Range main, RangeVector ranges);
    void setSelection(RangeVector ranges, bool clear_expansion);
    void addRange(Range range);
    void addRanges(RangeVector ranges);
    bool isSelected(const Range& cell) const;
    bool isCellSelected(int row, int col) const;
    bool deselectCell(int row, int col);
    bool setPendingCorner(Range cell, bool is_start);
    void setPendingCorners(Range start, Range end);
    // Mouse release: the rectangle from start to end becomes one Cell member
    // per cell; with `ctrl` they join the selection, otherwise replace it.
    void commitPendingRectangle(bool ctrl);

    static int selectionMinRow(const RangeVector& ranges);
    static int selectionMinCol(const RangeVector& ranges);
    int selectionMaxRow(const RangeVector& ranges, bool ignore_open) const;
    int selectionMaxCol(const RangeVector& ranges, bool ignore_open) const;
    qint64 numSelectedCells() const;
    RangeSize selectionSize() const;

    // Keyboard extension: direction 0 up, 1 down (2 left, 3 right for the
    // horizontal twin). Returns false when nothing moved.
    bool expandVertical(int direction, bool at_edge, bool by_block, bool* popped);
    bool expandHorizontal(int direction, bool at_edge, bool by_block, bool* popped);
    // "Move Selection Up" and its twins: every member by the clamped step.
    void moveSelection(int dy, int dx);
    // "by a Block": the main cell's target by the block rule; every member moves
    // by the same difference. Whole rows or columns go to the table's end.
    void moveSelectionByBlock(int direction);
    // Where the block rule takes a model cell in a direction (0 up, 1 down,
    // 2 left, 3 right); the result is clamped to the model.
    std::pair<int, int> blockTarget(int model_row, int model_col, int direction) const;

    // "Add Next Match to Selection" with the find bar closed: the main cell's
    // text is the query. With `query`, the bar's own query is used.
    bool addNextMatch(const FindReplaceQuery* query);

    // ---- Find and replace (tablemodel_find.cpp) ----
    // The next cell as shown after `from` (before, `backwards`) whose text
    // matches, wrapping at the ends; the start cell is tried last.
    bool findNext(const FindReplaceQuery& query, Range from, bool backwards, Range& found) const;
    // Every matching cell as shown, in reading order, in model coordinates.
    RangeVector findAll(const FindReplaceQuery& query) const;
    // The highlighted matches of the given model area, from the model's query.
    void updateFindMatches(int first_row, int last_row, int first_col, int last_col);
    // Each cell's text after replacement, for the cells that change.
    RangeVector replacedCells(const FindReplaceQuery& query, const RangeVector& cells) const;
    QString cellText(int model_row, int model_col) const;
    const FindReplaceQuery& findQuery() const { return find_query; }

    void updateStatusBarStats();

    // ---- Undo support: commands keep their cells in raw coordinates ----
    // Model and label ranges to raw ones. A line run that crosses hidden
    // lines splits at them, so writes never reach a hidden cell; per-line
    // values are sliced with it.
    RangeVector toRawRanges(const RangeVector& ranges) const;
    // The selection's own form of raw: each member mapped by its corners,
    // unsplit, so that it comes back as the user made it.
    RangeVector toRawSelection(const RangeVector& ranges) const;
    // Reads the present cells of each range (mapped to raw in place) into
    // its new-values slot, its old-values slot or both, as StoredCells.
    void captureRanges(RangeVector& ranges, bool capture_new, bool capture_old) const;
    // Writes one slot of every range. A slot is one text for all its cells,
    // per-line values, or StoredCells (put back at the range's origin,
    // quotes and all). `skip` (kind Invalid: none) is left out. Returns
    // whether any cell changed.
    bool writeRanges(const RangeVector& ranges, bool use_old_values, const Range& skip = Range(),
                     bool through_model = false);
    // Raw ranges to the selection; hidden members drop, the first member
    // marked main gives the main cell, and with none left the top left cell.
    void setSelectedRanges(const RangeVector& raw_ranges, bool update_main_cell);
    void autoFitChangedLines(const RangeVector& ranges);
    // Whether writing the new values of raw ranges over their captured old
    // ones would change any cell; a command that changes none is dropped.
    bool rangesChange(const RangeVector& raw_ranges) const;
    // "Save After Each Edit": saves at once when on and the table has a file.
    void saveIfSaveAfterEachEdit();

    // Whether each save parameter was chosen by the user since the load.
    bool delimiterSet() const { return delimiter_set; }
    bool lineEndingSet() const { return line_ending_set; }
    bool encodingSet() const { return encoding_set; }
    bool parsingStandardSet() const { return parsing_standard_set; }
    void setDelimiterSet(bool on) { delimiter_set = on; }
    void setLineEndingSet(bool on) { line_ending_set = on; }
    void setEncodingSet(bool on) { encoding_set = on; }
    void setParsingStandardSet(bool on) { parsing_standard_set = on; }

    // ---- Whole rows and columns (tablemodel_lines.cpp) ----
    // The model lines the selection touches (`any_cell`), or only those it
    // covers whole; ascending, open ends cut at the data's last line.
    std::vector<int> selectedRows(const RangeVector& ranges, bool any_cell) const;
    std::vector<int> selectedCols(const RangeVector& ranges, bool any_cell) const;
    // The selected model cells line by line: each selected row with its
    // selected columns (groupByRow), or each column with its rows.
    std::map<int, std::vector<int>> groupByRow(const RangeVector& ranges) const;
    std::map<int, std::vector<int>> groupByColumn(const RangeVector& ranges) const;
    // Every hidden line, raw and ascending: those the user hid and those
    // the filters leave out.
    std::vector<int> rawHiddenRows() const;
    std::vector<int> rawHiddenCols() const;
    // The lines the user hid, and their setters, which show the table with
    // the new list (and the filters) at once.
    std::vector<int> userHiddenRows() const;
    std::vector<int> userHiddenCols() const;
    void setHiddenRows(std::vector<int> raw_rows);
    void setHiddenCols(std::vector<int> raw_cols);

    // ---- Filters (tablemodel_filters.cpp) ----
    // Stores the lists and hides every line a filter leaves out, with the
    // lines the user hid. Header lines are never left out.
    void applyFiltersAndHiddenData(std::vector<FilterData> new_filters,
                                   std::vector<int> hidden_rows, std::vector<int> hidden_cols);
    void applyFilters(std::vector<FilterData> new_filters);
    // Adds to each filter the visible lines it does not match, so that a
    // later application keeps them in view; returns them as ranges.
    RangeVector collectFilterExceptions();
    // Everything that says which lines are hidden, for a step that takes
    // hidden lines out and must put the view back as it was.
    struct HiddenState {
        std::vector<int> hidden_rows, hidden_cols;           // all hidden, raw
        std::vector<int> user_hidden_rows, user_hidden_cols; // those the user hid
        std::vector<int> filtered_rows, filtered_cols;       // those the filters left out
        std::vector<FilterData> filters;
    };
    HiddenState hiddenState() const;
    void restoreHiddenState(const HiddenState& state);
    // Raw data lines (header lines excluded) empty in every cell, or with
    // `based_on_selected` in the cells of the selected columns (rows).
    std::vector<int> emptyRows(bool based_on_selected) const;
    std::vector<int> emptyCols(bool based_on_selected) const;
    // Raw data lines that repeat an earlier line exactly (case counts), on
    // the whole line or the selected cross lines; axis 0 rows, 1 columns.
    std::vector<int> findDuplicates(int axis, bool based_on_selected) const;
    // Line changes of the commands: the data first, then the model's own
    // count brought in step at its end, the size rule and the labels.
    bool insertRawRows(int raw_row, int count);
    bool insertRawCols(int raw_col, int count);
    RemovedLines takeRawRows(const LineRuns& runs);
    RemovedLines takeRawCols(const LineRuns& runs);
    void restoreRawLines(const RemovedLines& lines);
    // Cuts the data back to `count` raw lines, taking back growth.
    void truncateRawRows(int count);
    void truncateRawCols(int count);
    bool rotateModelRows(int first, int middle, int last);
    bool rotateModelCols(int first, int middle, int last);
    // Rows and columns exchange in O(1): the data is never moved.
    void transpose();

    // ---- Column lookup (tablemodel_lookup.cpp) ----
    // The source side: every raw row from `first_row` on stores its key
    // column's text with the texts of `value_cols` (raw, in the given
    // order); a later row with the same key replaces an earlier one. Invalid
    // (and empty) when a column or the first row is out of range.
    LookupMap buildLookupMap(int key_col, const std::vector<int>& value_cols, int first_row) const;
    // The destination side: for every raw row from `first_row` on, its key
    // column's text looked up in `map`; the found values go into the raw
    // columns from `first_value_col` on, one Block member a column, as
    // stored cells. A row without a match takes `mismatch` when it is not
    // empty; otherwise it keeps its cells (or, with `insert`, where the
    // columns are new, stays empty). `out` is empty when nothing can be
    // written.
    void lookupRanges(RangeVector& out, const LookupMap& map, int key_col, int first_value_col,
                      const QString& mismatch, int first_row, bool insert) const;

    // ---- Clipboard ----
    // The selection as "text/csv" (several cells), plain text and, under
    // 10,000 cells, an HTML table. The caller owns the result.
    QMimeData* makeMimeData(bool with_header) const;
    // Cells from mime data, shifted to start at (0, 0), raw coordinates.
    static void readMimeData(const QMimeData* mime, RangeVector* out);

    // ---- Sorting (tablemodel_sort.cpp) ----
    // The order of a sort by one line: `state.kind` 0 orders the rows by raw
    // column `state.index`, 1 the columns by raw row `state.index`;
    // `state.order` 0 ascending, 1 descending. Position i takes raw line
    // permutation[i]; the lines before `first_index` keep their place. The
    // keys are read and sorted on the worker while a local event loop runs
    // (`use_event_loop`), or on this thread. False when cancelled (through
    // cancelJob or the shared flag), with the permutation left empty.
    bool getSortPermutation(std::vector<int>& permutation, SortRecord state, int first_index,
                            bool use_event_loop);
    // The first raw line a sort moves along an axis (0 rows, 1 columns):
    // the header lines shown at the top or left stay.
    int firstSortedLine(int axis) const;
    // Applies a sort's permutation, sets its record and clears the other
    // axis's, whose line now holds other cells. False for an order that does
    // not fit the table.
    bool sortRowsByColumn(const std::vector<int>& permutation, int order, int column);
    bool sortColsByRow(const std::vector<int>& permutation, int order, int row);
    // Takes a permutation back; the records are the caller's to restore.
    bool unsortRows(const std::vector<int>& permutation);
    bool unsortCols(const std::vector<int>& permutation);
    // Asks the running job to stop at its next report.
    void cancelJob();
    bool isSorting() const { return sorting; }

    // Worker jobs; each blocks in a local event loop until its reply.
    bool getModelWithColModelSubset(TableModel* new_model, std::vector<int>* col_model_list,
                                    int num_rows, int num_cols);
    bool getEdgeIndexesOfSortedColumns(const std::vector<int>& col_model_list,
                                       bool include_end_index, std::vector<int>& edges);
    // 1: all numbers, 0: not, -1: cancelled.
    int isColumnAllNumbers(int col_model);
    void setCancelInfo(std::shared_ptr<bool> flag, std::shared_ptr<QMutex> mutex);

    QMutex* loadMutex() const { return mutex.get(); }
    QWaitCondition* loadWaitCondition() const { return wait_condition.get(); }

signals:
    void newDataCommittedSignal();
    void startProgressUpdateSignal();
    void loadProgressUpdateSignal(int curr_num_reports, int num_total_reports, int filesize_mb);
    void loadFinishedSignal();
    void loadFailedSignal();
    void saveStartedSignal(QString filepath);
    void saveFinishedSignal(QString filepath);
    void enforceTableSizeSignal();
    void toggleTransposeSignal();
    void selectionChangedSignal();
    void mainCellChangedSignal(Range main_cell);
    void selectionSizeChangedSignal(RangeSize selection_size);
    void newPendingSelectionCornerSignal(Range corner);
    void tableSizeChangedSignal(int num_raw_rows, int num_raw_cols, int num_model_rows,
                                int num_model_cols);
    void setDelimiterSignal(QString delimiter);
    void setLineEndingSignal(LineEndingType line_ending);
    void setEncodingSignal(EncodingType encoding);
    void setParsingStandardSignal(ParsingStandard parsing_standard);
    void updateStatusBarSignal();
    void updateFindReplaceMatchesSignal();
    void updateStatsLabelSignal(QString stats_str);
    void updateProgressSignal(float proportion);
    void undoStackCleanChangedSignal(bool is_saved);
    void getModelWithColModelSubsetSignal(TableModel* new_model, TableData* table_data,
                                          std::vector<int>* col_model_list, int num_rows,
                                          int num_cols);
    void getEdgeIndexesOfSortedColumnsSignal(std::vector<int> col_model_list,
                                             bool include_end_index, TableModel* model);
    void isColumnAllNumbersSignal(int col_model, TableModel* model);
    void endGetModelWithColModelSubsetLoopSignal();
    void endGetEdgeIndexesOfSortedColumnsLoopSignal();
    void endIsColumnAllNumbersSignal();
    void getSortPermutationSignal();
    void endGetSortPermutationLoopSignal();
    void insertRowsGuiSignal(int row, int count);
    void insertRowsGuiSignal(std::vector<int>& rows);
    void insertColsGuiSignal(int col, int count);
    void insertColsGuiSignal(std::vector<int>& cols);
    void removeRowsGuiSignal(int row, int count);
    void removeRowsGuiSignal(std::vector<int>& rows);
    void removeColsGuiSignal(int col, int count);
    void removeColsGuiSignal(std::vector<int>& cols);
    void enforceAutoFitRowHeightsAllSignal();
    void enforceAutoFitRowHeightsAllSignal(int skip);
    void enforceAutoFitRowHeightsSignal(std::vector<int> rows);
    void enforceAutoFitColWidthsAllSignal();
    void enforceAutoFitColWidthsAllSignal(int skip);
    void enforceAutoFitColWidthsSignal(std::vector<int> cols);
    void resizeRowSignal(int row, int size);
    void resizeRowsSignal(std::vector<int> rows, std::vector<int> sizes);
    void resizeRowsBeforeInsertSignal(std::vector<int> rows);
    void resizeColSignal(int col, int size);
    void resizeColsSignal(std::vector<int> cols, std::vector<int> sizes);
    void resizeColsBeforeInsertSignal(std::vector<int> cols);
    void refreshHeadersSignal();
    void scrollToMainCellSignal(bool only_if_outside_view, bool keep_cell_on_edge);
    void scrollToRowSignal(int row, bool only_if_outside_view, bool keep_cell_on_edge);
    void scrollToColSignal(int col, bool only_if_outside_view, bool keep_cell_on_edge);
    void addContextSignal(Context context);
    void removeContextSignal(Context context);

public slots:
    void onLoadFinished();
    void onSaveStarted(QString filepath);
    void onSaveFinished(QString filepath);
    void updateProgress(float proportion);
    void onGetModelWithColSubsetFinished(bool complete);
    void onGetEdgeIndexesOfSortedColumnsFinished(bool completed);
    void onIsColumnAllNumbersFinished(bool completed);
    void onGetSortPermutationFinished(bool completed);

private:
    bool rowMayMatch(const FindMatcher& matcher, int model_row) const;
    void findInRows(const FindMatcher& matcher, int first_row, int last_row,
                    RangeVector& out) const;
    bool isHeaderCell(int row, int col) const {
        return (highlight_header_rows && row < num_header_rows) ||
               (highlight_header_cols && col < num_header_cols);
    }
    QColor backgroundColor(int row, int col) const;
    bool inFindMatch(int row, int col) const;
    const Range* findMatchAt(int row, int col) const;
    Range toModel(Range range) const;
    void normalise();
    void rebuildSelectionIndex();
    void emitSelectionSignals();
    void updateMultiCellContext();
    void clearExpansion();
    bool expand(int code, bool vertical, bool at_edge, bool* popped);
    int moveAlong(int model_row, int model_col, int code, bool vertical) const;
    void clampSelectionTo(bool rows);
    // Around a change of whole lines: layout signals, and the model's count
    // following the visible data's.
    void beginLineChange();
    void endLineChange();
    void afterLineChange();
    bool insertRawLines(bool rows, int raw, int count);
    RemovedLines takeRawLines(bool rows, const LineRuns& runs);
    bool rotateModelLines(bool rows, int first, int middle, int last);
    void updateHiddenContext();
    // Raw indexes the model keeps (the user's hidden lines, the filters'
    // lines and exceptions) moved as `move` moves the lines of one axis.
    void trackLines(bool rows, const std::function<void(std::vector<int>&)>& move);
    void trackRemoval(bool rows, const LineRuns& runs);
    void trackRestore(bool rows, const LineRuns& runs);
    void trackRotation(bool rows, int first, int middle, int last);
    // The raw lines one filter leaves out.
    std::vector<int> filterExclusions(const FilterData& filter) const;
    void setContainerHidden(std::vector<int> rows, std::vector<int> cols);
    void showUserAndFiltered();
    void forgetFiltered();
    void refreshThemeCaches();
    static qint64 estimateRowCount(const QString& filepath);
    void growDuringLoad(int curr_num_reports, int num_total_reports);
    bool applyLineOrder(bool rows, const std::vector<int>& permutation, bool inverse);

    TableData table_data;
    int num_model_rows = 0;
    int num_model_cols = 0;
    int last_data_row = -1;
    int last_data_col = -1;
    QFile file_;
    int max_double_digits = 16;
    Theme theme;
    // Colours read for every painted cell, copied out of the theme once.
    QBrush text_brush;
    QBrush highlighted_text_brush;
    bool shade_rows = false;
    bool shade_cols = false;
    bool highlight_main_row = false;
    bool highlight_main_col = false;

    RangeVector selection;
    Range main_cell;
    Range pending_corner_start{-1, -1, Range::Model};
    Range pending_corner_end{-1, -1, Range::Model};
    RangeVector expansion_base;
    int expansion_base_mark = -1;
    int expansion_axis = 4;
    std::vector<int> expansion_moves;
    // Painting asks about every visible cell: Cell members are kept as sorted
    // keys for a bisection, the few wider members apart.
    std::vector<uint64_t> selected_cell_keys;
    std::vector<int> selected_wide_members;
    int selected_rows_max = -1; // any member reaching beyond this row is wide

    QFont cell_font;
    QFont header_cell_font;
    QFont label_font;
    int text_pixel_size = 13;
    bool read_only = false;
    QString extension_ = QStringLiteral("csv");
    QString delimiter_open = QStringLiteral(",");
    QString delimiter_save = QStringLiteral(",");
    LineEndingType line_ending = UnixLineEnding;
    EncodingType encoding_ = Utf8;
    ParsingStandard parsing_standard = Rfc4180;
    int num_header_rows = 1;
    int num_header_cols = 0;
    int min_rows = 50;
    int min_cols = 50;
    int buffer_rows = 2;
    int buffer_cols = 2;
    bool save_after_each_edit = false;
    bool save_trailing_delimiters = true;
    bool highlight_header_rows = true;
    bool highlight_header_cols = true;
    int first_row_index = 0;
    int first_col_index = 0;
    bool columns_as_letters = false;
    bool case_sensitive_sorting = true;
    bool delimiter_set = false;
    bool line_ending_set = false;
    bool encoding_set = false;
    bool parsing_standard_set = false;
    RangeVector find_matches;
    FindReplaceQuery find_query;
    SortRecord row_sort;
    SortRecord col_sort;
    std::vector<FilterData> filters;
    // The lines the user hid, kept apart from those the filters leave out.
    std::vector<int> user_hidden_rows;
    std::vector<int> user_hidden_cols;
    // The lines the filters left out at their last application.
    std::vector<int> filtered_rows;
    std::vector<int> filtered_cols;
    // A line change took a filter's own line: the lines it left out are
    // shown again once the change is over.
    bool filters_lost_line = false;
    bool keep_filter_lines = false;
    int header_font_point_size = 10;
    std::unique_ptr<QMutex> mutex;
    std::unique_ptr<QWaitCondition> wait_condition;
    QThread worker_thread;
    TableModelWorker* worker = nullptr;
    bool job_completed = false;
    bool sorting = false;
    std::shared_ptr<bool> cancel_flag;
    std::shared_ptr<QMutex> cancel_mutex;
    bool growth_pending = false;
    qint64 load_row_estimate = 0;
    mutable qint64 display_reads = 0;
    int line_change_rows = 0;
    int line_change_cols = 0;
};
