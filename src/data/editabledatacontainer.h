#pragma once

#include "abstractdatacontainer.h"
#include "fillbits.h"
#include "linerun.h"
#include "packedrow.h"
#include "relocatablevector.h"

#include <functional>
#include <memory>
#include <utility>

class ReadWindow;
class CsvRowSink;

// The in-memory store. Sparse at its right and bottom edges: `row_count` and
// `column_count` are logical sizes, and anything beyond what is stored reads
// as an empty cell. An empty cell and a missing cell are the same thing.
//
// Each row is one packed block (PackedRow): its cells' bytes back to back
// and their offsets. Changing a cell rebuilds its row, O(row length), or
// writes in place when the length stays. The rows also remember which cells
// the file had in quotes; a save in the standard of the load quotes those
// again, so that an unchanged file keeps the quoting it came with.
class EditableDataContainer : public AbstractDataContainer {
    Q_OBJECT

public:
    explicit EditableDataContainer(QObject* parent = nullptr);
    ~EditableDataContainer() override;

    QByteArray data(int row, int column, bool raw = false) const override;
    int rowCount() const override { return row_count; }
    int columnCount() const override { return column_count; }
    int columnCountOfRow(int row) const override;
    IndexList emptyRows(int start_column, SelectionMode mode,
                        const IndexList& columns) const override;
    IndexList emptyColumns(int start_row, SelectionMode mode, const IndexList& rows) const override;
    int trailingEmptyRows() const override;
    int trailingEmptyColumns() const override;
    bool setCell(int row, int column, QByteArrayView bytes) override;
    bool setRowCount(int n) override;
    bool setColumnCount(int n) override;
    bool clear() override;
    void getRow(CellList& out, int row, SelectionMode mode,
                const IndexList& columns) const override;
    void getColumn(CellList& out, int column, SelectionMode mode,
                   const IndexList& rows) const override;
    void setRow(int row, CellList&& cells) override;
    void setColumn(int column, CellList&& cells) override;
    void insertRow(int row, CellList&& cells) override;
    void insertColumn(int column, CellList&& cells) override;
    void insertRowList(int row, std::vector<CellList>&& new_rows) override;
    void insertColumnList(int column, std::vector<CellList>&& columns) override;
    bool insertRows(int row, int count) override;
    bool insertColumns(int column, int count) override;
    bool removeRows(int row, int count) override;
    bool removeColumns(int column, int count) override;
    void copyRow(int from, int to) override;
    void copyColumn(int from, int to) override;
    void rowToBytes(QByteArray& out, int row, SelectionMode mode,
                    const IndexList& columns) const override;
    void rowToBytesWide(QByteArray& out, int row, SelectionMode mode,
                        const IndexList& columns) const override;
    void columnToBytes(QByteArray& out, int column, SelectionMode mode,
                       const IndexList& rows) const override;
    void columnToBytesWide(QByteArray& out, int column, SelectionMode mode,
                           const IndexList& rows) const override;

    // Allocation-free access for hot paths (painting, saving, sort keys).
    // The view is valid until the store is next changed.
    QByteArrayView cellView(int row, int column) const {
        if (row < 0 || row >= rows.size() || column < 0 || column >= rows[row].size()) return {};
        return rows[row].cell(column);
    }
    // The first row from `from`, stepping by `step` (+1 or -1) up to and
    // including `limit`, whose cell in `column` is filled (or empty, with
    // `want_filled` false); `limit + step` when there is none.
    int findInColumn(int column, int from, int step, int limit, bool want_filled) const;
    int storedRowCount() const { return rows.size(); }
    // All of a stored row's cell bytes back to back.
    QByteArrayView rowData(int row) const {
        return row >= 0 && row < rows.size() ? rows[row].data() : QByteArrayView();
    }
    // Every stored column's fill bits as the last load found them (entry c
    // for column c), made while the rows were stored. Handed over once;
    // empty after a failed load and after the first call.
    std::vector<FillBits> takeFillBits() { return std::exchange(loaded_fill, {}); }
    int storedCellCount(int row) const {
        return row >= 0 && row < rows.size() ? rows[row].size() : 0;
    }
    // Whether the file had the cell in quotes (and it is unchanged since).
    bool isQuoted(int row, int column) const {
        return row >= 0 && row < rows.size() && column >= 0 && rows[row].isQuoted(column);
    }
    // setCell as a reader does it: `quoted` records that the field had
    // quotes, which a quoted empty field keeps even where it stores no cell.
    bool setCell(int row, int column, QByteArrayView bytes, bool quoted);
    // The same bytes into cells [first_row, last_row] of a column, unquoted,
    // the way typing into a selected column writes them at each keystroke.
    // Returns how many cells changed.
    qint64 fillColumn(int column, int first_row, int last_row, QByteArrayView bytes);
    // The standard whose save honours the remembered quotes: the one of the
    // last load.
    ParsingStandard quotingStandard() const { return quoting_standard; }
    // Bytes held by the rows' blocks and handles (not the allocator's own).
    qint64 storeBytes() const;
    qint64 fileSize() const { return file_size; }
    // Chunks of at least twice this many bytes are read on two threads.
    // Tests lower it to put the split into small files.
    void setParallelThreshold(qint64 bytes) { parallel_threshold = bytes; }

    // Whole lines out and back for undo steps, each in one pass over the
    // store however many runs there are. Runs are ascending and disjoint.
    // Taken rows keep every position up to the column count, quote marks
    // included; rows past the stored ones (a count only) hold nothing.
    StoredCells captureRowRuns(const LineRuns& runs) const;
    void removeRowRuns(const LineRuns& runs);
    // Runs are positions after the insertion. The first `stored_rows` rows
    // of the result are stored ones, the put-back ones among them made from
    // `cells` in order.
    void insertRowRuns(const LineRuns& runs, const StoredCells& cells, int stored_rows);
    StoredCells captureColumnRuns(const LineRuns& runs) const;
    void removeColumnRuns(const LineRuns& runs);
    void insertColumnRuns(const LineRuns& runs, const StoredCells& cells);
    // The row handles at the ascending `positions` rotated so that the one at
    // positions[middle] comes first, as std::rotate does; other rows stay.
    void rotateRows(const std::vector<int>& positions, int middle);
    // Drops stored rows from n on when none holds a byte or a quote mark:
    // a step that wrote past the stored rows and was taken back leaves them.
    void dropEmptyStoredRowsFrom(int n);

    // Sort application: P[i] is the position the line now at i moves to.
    // Row handles and cells move; no byte is copied. `step(done, total)` is
    // asked as the work goes on; returning false stops at the end of the
    // current cycle, leaving a consistent store in a mixed order.
    bool applyRowPermutation(const std::vector<int>& P,
                             const std::function<bool(int, int)>& step = {});
    void applyColumnPermutation(const std::vector<int>& P);
    // The sort's form: position i takes the row now at order[i], or with
    // `inverse` the row at i goes to order[i]; `order` must be a permutation
    // of at least the stored rows. The handles move into a fresh array, whose
    // scattered reads (or writes) overlap where a walk along the cycles would
    // wait for each in turn: a tenth of the time on millions of rows. It runs
    // to its end; `progress(done, total)` hears how far it is.
    void reorderRows(const std::vector<int>& order, bool inverse,
                     const std::function<void(int, int)>& progress = {});

public slots:
    bool loadCSV() override;
    bool loadCSVNoDelimiter();
    bool loadCSVWide();
    bool loadCSVWideNoDelimiter();

protected:
    int storedLineCount() const override { return rows.size(); }
    void appendRowForSave(SaveBuffer& out, const CsvLineWriter& writer, int row,
                          const IndexList& hidden_columns) const override;

private:
    friend class CsvRowSink;
    friend class ReadWindow;
    template <class Impl> bool runLoad(Impl& impl);
    template <class Engine, class MakeEngine>
    bool feedChunk(Engine& engine, MakeEngine& make_engine, CsvRowSink& sink, ReadWindow& window,
                   std::unique_ptr<ReadWindow>& side_window, int fd, qint64 from, qint64 to,
                   bool& ok);
    template <class Out>
    void appendRowBytes(Out& out, const CsvLineWriter& writer, int row, SelectionMode mode,
                        const IndexList& columns) const;
    bool keepsQuotes() const { return parsing_standard == quoting_standard; }
    // Cell `column` of the row becomes `bytes` with the given mark; other
    // cells and marks stay. Stores no cell for empty bytes past the row's end.
    static void putCell(PackedRow& row, int column, QByteArrayView bytes, bool quoted);

    RelocatableVector<PackedRow> rows;
    std::vector<FillBits> loaded_fill;
    ParsingStandard quoting_standard = Rfc4180;
    qint64 file_size = 0;
    int row_count = 0;
    int column_count = 0;
    qint64 parallel_threshold = 16 * 1024 * 1024;
};
