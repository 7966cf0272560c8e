#pragma once

#include "abstractdatacontainer.h"
#include "dialect.h"
#include "fillbits.h"
#include "linerun.h"
#include "storedcells.h"

#include <QMutex>
#include <QObject>
#include <QThread>
#include <QVariant>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

class EditableDataContainer;
class QTextCodec;
class SortKeys;
class QWaitCondition;
class TableDataWorker;

// One open file as the table model knows it: the container, the dialect and
// its codec, the hidden rows and columns, the transpose flag, and the threads
// that do long work. Every read and write of a cell comes through here.
class TableData : public QObject {
    Q_OBJECT

public:
    enum ContainerKind { EditableKind = 0, ReadOnlyKind = 1, NeverLoaded = 2 };

    explicit TableData(QObject* parent = nullptr);
    ~TableData() override;

    void load(const QString& filepath, bool asynchronous, bool read_only,
              const QString& delimiter_open, const QString& delimiter_save, EncodingType encoding,
              ParsingStandard parsing_standard);
    bool save(bool keep_backup, bool visible_only);
    bool saveAs(const QString& filepath, bool keep_backup, bool visible_only);

    void setDelimiters(const QString& load, const QString& save);
    void setLineEnding(LineEndingType line_ending);
    void setParsingStandard(ParsingStandard standard);
    void setSaveTrailingDelimiters(bool on);
    void setExtension(const QString& extension);
    void setEncoding(EncodingType encoding, bool convert_cells);
    void setMutexAndCondition(QMutex* mutex, QWaitCondition* wait_condition);
    void setCancelInfo(std::shared_ptr<bool> cancel_flag, std::shared_ptr<QMutex> cancel_mutex);

    QVariant data(int model_row, int model_column) const;
    QVariant rawData(int raw_row, int raw_column) const;
    bool setData(int model_row, int model_column, const QString& text, bool no_swap = false);
    // Writes by raw position (rows and columns as the container has them when
    // not transposed); grows the table as setData does.
    bool setRawData(int raw_row, int raw_column, const QString& text);

    // Bulk cell work of undo steps and multi-cell edits, by raw block
    // (inclusive bounds; Range's open end, INT_MAX, is welcome).
    // The cells of the block that lie inside the table, as stored.
    StoredCells captureRaw(int first_row, int last_row, int first_col, int last_col) const;
    // Whether every cell's text survives a change to `to` (always so
    // between the Unicode forms).
    bool encodingKeepsText(EncodingType to) const;
    // A text as the store keeps it, in the table's encoding.
    QByteArray encodeText(const QString& text) const;
    // Puts captured cells back, quotes and all. True when any cell changed.
    bool restoreRaw(const StoredCells& cells);
    // One text into every cell of the block; rows and columns past the
    // table's end are written (and the table grows) only for a non-empty
    // text and a closed bound. True when any cell changed.
    bool fillRaw(int first_row, int last_row, int first_col, int last_col, const QString& text);

    // Line surgery by model position. Hidden positions at or above an insert
    // move up with it; those above a removed run move down, those inside it go.
    bool insertRows(int model_row, int count);
    bool insertColumns(int model_column, int count);
    bool removeRows(int model_row, int count);
    bool removeColumns(int model_column, int count);

    // ---- Whole lines for the row and column commands ----
    // Raw positions here are the model's (with the table transposed, a raw
    // row is a stored column). Each keeps the hidden lists in step.
    //
    // `count` empty lines at a raw position: hidden positions at or above it
    // move up first. A position past the table's end touches only them and
    // gives false: that is the caller's fault.
    bool insertRawRows(int raw_row, int count);
    bool insertRawColumns(int raw_column, int count);
    // Takes the lines of the runs out (the part inside the table), with
    // their cells as stored, to be put back by restoreRawLines. Hidden
    // positions inside a run go; those above drop by what went below them.
    RemovedLines takeRawRows(const LineRuns& runs);
    RemovedLines takeRawColumns(const LineRuns& runs);
    // Puts taken lines back where they were, cells, quote marks and all;
    // hidden positions move up past them. Lines that were hidden come back
    // shown: the caller restores its hidden lists.
    bool restoreRawLines(const RemovedLines& lines);
    // Model positions [first, last) rotated so that the line at `middle`
    // comes first, as std::rotate does. Hidden lines between them keep their
    // raw places; a range reaching past the data grows the table to it.
    bool rotateModelRows(int first, int middle, int last);
    bool rotateModelColumns(int first, int middle, int last);
    // One line moved across hidden ones: from model position p by distance d.
    bool moveRow(int model_row, int distance);
    bool moveColumn(int model_column, int distance);
    // How many rows the store holds (not the logical count), for a step
    // that may leave empty stored rows past them to give back.
    int storedRowMark() const;
    void restoreStoredRowMark(int mark);

    // ---- Duplicates and empties, on raw bytes ----
    // Raw lines from `first` on that repeat an earlier one, ascending. Lines
    // are compared on the raw positions `compared` across them (all when
    // empty), byte for byte: "a" and "A" differ.
    std::vector<int> duplicateRawRows(int first_row,
                                      const std::vector<int>& compared_columns) const;
    std::vector<int> duplicateRawColumns(int first_column,
                                         const std::vector<int>& compared_rows) const;
    // Raw lines from `first` on with no bytes at the compared positions.
    std::vector<int> emptyRawRows(int first_row, const std::vector<int>& compared_columns) const;
    std::vector<int> emptyRawColumns(int first_column, const std::vector<int>& compared_rows) const;

    // The block rule of Ctrl+arrow movement on the raw table: from the cell
    // (raw_row, raw_column), direction 0 up, 1 down, 2 left, 3 right, the raw
    // index along that axis where the move lands. Going up or left it may be
    // negative; the caller clamps.
    int blockTarget(int raw_row, int raw_column, int direction) const;
    bool isRawCellEmpty(int raw_row, int raw_column) const;

    // False only when no cell of the raw row can hold `needle`: the row's
    // bytes lack it (compared ASCII-lower-cased with `fold_case`). True
    // wherever the bytes can't tell: other encodings, read-only or
    // transposed tables. Safe to call from several threads at once while
    // nothing writes.
    bool rawRowMayContain(int raw_row, QByteArrayView needle, bool fold_case) const;
    // The same for one cell.
    bool rawCellMayContain(int raw_row, int raw_column, QByteArrayView needle,
                           bool fold_case) const;
    // Which cells of one raw line pass `test`: for a line that moves rows
    // (`rows_move`), the cells of raw column `index`, one per raw row, else
    // those of raw row `index`. Entry i answers for position i; positions
    // below `first` are not read and answer true. The editable store reads
    // on two threads when cells decode without a codec, each with its own
    // test from `make_test`; a file on disk is read once in its own order.
    // Empty while the table loads or reorders.
    using CellTest = std::function<bool(const QString&)>;
    std::vector<char> matchLine(bool rows_move, int index, int first,
                                const std::function<CellTest()>& make_test) const;
    // Whether cells decode without shared state, so threads may read them.
    bool decodesWithoutCodec() const { return encoding == Utf8 || encoding == Iso8859_1; }
    int rawRowFromModel(int model_row, bool no_swap = false) const;
    int rawColumnFromModel(int model_column, bool no_swap = false) const;
    int modelRowFromRaw(int raw_row, bool nearest = false, bool no_swap = false) const;
    int modelColumnFromRaw(int raw_column, bool nearest = false, bool no_swap = false) const;
    int numHiddenRows(bool no_swap = false) const;
    int numHiddenColumns(bool no_swap = false) const;
    int numRawRows(bool no_swap = false) const;
    int numRawColumns(bool no_swap = false) const;
    int numModelRows(bool no_swap = false) const;
    int numModelColumns(bool no_swap = false) const;
    int trailingEmptyRows(bool no_swap = false) const;
    int trailingEmptyColumns(bool no_swap = false) const;

    // ---- Sorting (tabledata_sort.cpp) ----
    // The keys of a sort, read from one raw line and decoded once by the
    // table's encoding: the cells of raw column `index` for a sort that moves
    // rows (`rows_move`), of raw row `index` for one that moves columns;
    // lower-cased when not `case_sensitive`. Key i belongs to position i, or
    // to the positions that sortKeyMap maps to it. `step(done, total)` is
    // asked as the reading goes on; false from it stops the reading, and the
    // call returns false, as it does for a table that is loading.
    // Safe on a worker while the GUI thread reads cells; nothing may write.
    bool readSortKeys(bool rows_move, int index, bool case_sensitive, SortKeys& keys,
                      const std::function<bool(qint64, qint64)>& step = {}) const;
    // Position i's key is key map[i]: a file on disk is read in its own
    // order and shown through its index map. Empty when position i has key i.
    const std::vector<int>& sortKeyMap(bool rows_move) const;
    // Reorders the raw rows or columns: position i takes the line now at
    // order[i] (the order a sort makes), or with `inverse` the line at i goes
    // back to order[i] (its undo). Hidden lines go with their data. The
    // editable store moves its lines, the read-only store changes its index
    // map. False, with nothing changed, when `order` is no permutation of
    // the raw lines. The row form can run on the worker thread, with
    // progress; once begun it runs to its end, so that a table is never left
    // half sorted.
    bool applyRowOrder(const std::vector<int>& order, bool inverse, bool asynchronous);
    bool applyColumnOrder(const std::vector<int>& order, bool inverse);

    void setHiddenRows(std::vector<int> rows) { hidden_rows = std::move(rows); }
    void setHiddenColumns(std::vector<int> columns) { hidden_columns = std::move(columns); }
    const std::vector<int>& hiddenRows() const { return hidden_rows; }
    const std::vector<int>& hiddenColumns() const { return hidden_columns; }
    // The fill bits describe stored columns, which a transposition leaves
    // where they are.
    void setTransposed(bool on) { transposed = on; }
    bool isTransposed() const { return transposed; }
    bool isLoading() const { return loading; }
    // Lines are moving on the worker: cells read as empty meanwhile.
    bool isReordering() const { return reordering; }
    ContainerKind containerKind() const { return ContainerKind(container_kind); }
    AbstractDataContainer* dataContainer() const { return container.get(); }
    EncodingType encodingType() const { return encoding; }
    QString filepath() const { return container->filepath(); }
    // Why the last load or save failed, for a message beside "File failed to save.".
    QString errorString() const { return container->errorString(); }
    bool isWordSeparator(QChar c) const {
        return c.unicode() < 256 ? word_separator_table[c.unicode()] : false;
    }

    static const QString kDefaultWordSeparators;

signals:
    void startProgressUpdateSignal();
    void loadProgressUpdateSignal(int curr_num_reports, int num_total_reports, int filesize_mb);
    void loadFinishedSignal();
    // A load that could not read its file; the synchronous path still ends
    // with loadFinishedSignal on an empty table.
    void loadFailedSignal();
    void saveStartedSignal(QString filepath);
    void saveFinishedSignal(QString filepath);
    void tableSizeChangedSignal(int num_raw_rows, int num_raw_cols, int num_model_rows,
                                int num_model_cols);
    void updateProgressSignal(float proportion);
    void sortRowsEditableSignal(const std::vector<int>* indexes, bool inverse,
                                EditableDataContainer* data_container);
    void endLoopSignal();

public slots:
    void onLoadFinished();
    void onSortRowsEditableFinished(bool completed);

private:
    // Whether a raw byte search for `needle` decides what a text search would.
    bool bytesSearchable(QByteArrayView needle) const;
    // Row and column as the container stores them.
    bool setStoredCell(int row, int column, const QString& text);
    // Which rows of a stored column hold text, one bit a row, so that block
    // moves over millions of rows read bits, not rows. An editable load
    // hands over every column's bits; otherwise a column's are made on the
    // first block move along it. Every change of cells through this class
    // keeps them right or drops them.
    const FillBits& fillBits(int stored_column) const;
    void forgetFillBits() const { fill_bits.clear(); }
    // After a bulk write of the stored block: the kept bits of its columns
    // read the cells again (a transposed table drops them instead).
    void refreshFillBits(int first_row, int last_row, int first_col, int last_col);
    // After a successful editable load: the bits its reader noted.
    void takeLoadedFillBits();
    // Stored column c's bits become those of column to(c), or go when that
    // is negative.
    void moveFillColumns(const std::function<int(int)>& to);
    bool insertRawLines(bool stored_rows, int raw, int count);
    RemovedLines takeLines(bool stored_rows, const LineRuns& runs);
    bool rotateLines(bool stored_rows, int first, int middle, int last);
    std::vector<int> duplicateLines(bool stored_rows, int first,
                                    const std::vector<int>& compared) const;
    // Line surgery on the stored axis (rows, or columns when false).
    bool insertLines(bool stored_rows, int model_pos, int count);
    bool removeLines(bool stored_rows, int model_pos, int count);
    void emitTableSize();
    // The sort orders on the stored axis: rows, or columns when false.
    bool reorderLines(bool stored_rows, const std::vector<int>& order, bool inverse,
                      bool asynchronous);
    void applyDialectTo(AbstractDataContainer& c);

    std::unique_ptr<AbstractDataContainer> container;
    int container_kind = NeverLoaded;
    int num_raw_rows = 0;
    int num_raw_cols = 0;
    bool transposed = false;
    std::vector<int> hidden_rows;
    std::vector<int> hidden_columns;
    QString word_separators = kDefaultWordSeparators;
    std::array<bool, 256> word_separator_table{};
    QMutex* mutex = nullptr;
    QWaitCondition* wait_condition = nullptr;
    bool save_trailing_delimiters = true;
    QString extension = QStringLiteral("csv");
    char delimiter_load = ',';
    char delimiter_save = ',';
    LineEndingType line_ending = UnixLineEnding;
    EncodingType encoding = Utf8;
    ParsingStandard parsing_standard = Rfc4180;
    QByteArray codec_name;
    QTextCodec* codec = nullptr;
    QThread* load_thread = nullptr;
    bool loading = false;
    QThread worker_thread;
    std::array<TableDataWorker*, 2> workers{};
    bool sort_completed = false;
    bool reordering = false;
    mutable std::unordered_map<int, FillBits> fill_bits;
};
