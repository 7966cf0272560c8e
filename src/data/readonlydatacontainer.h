#pragma once

#include "abstractdatacontainer.h"

#include <QByteArray>

#include <functional>

#include <memory>
#include <vector>

class QFile;

// Where the index finds cell number k * stride: its position, and the file
// offset of its first code unit (in units of the file's width). For a column
// that its line lacks, the offset is that of the line's terminator, or of the
// end of the file for a last line without one.
struct CellIndexEntry {
    qint32 row = 0;
    qint32 column = 0;
    qint64 offset = 0;
};
static_assert(sizeof(CellIndexEntry) == 16, "the index costs 16 bytes per entry");

// A file too large to hold, shown from disk. Two passes over the file find the
// table's size and then the offset of every 25th cell of the row-major
// rectangle; a cell read seeks to the entry at or before it and walks at most
// 24 fields. Nothing can be edited. A sort installs index maps instead of
// moving anything.
//
// Index spaces: data() without `raw`, rowToBytes and columnToBytes (and so
// save and saveAs) work on shown positions, which the maps translate to file
// lines. data() with `raw`, getRow and getColumn work on file lines: a sort
// reads its keys from them, and its result P, with P[i] the file line shown at
// position i, is installed as it is.
//
// Reads come from one thread at a time (the GUI thread, or a worker while the
// GUI thread waits), so the read window below is not locked.
class ReadOnlyDataContainer : public AbstractDataContainer {
    Q_OBJECT

public:
    static constexpr int kIndexStride = 25;

    explicit ReadOnlyDataContainer(QObject* parent = nullptr);
    ~ReadOnlyDataContainer() override;

    QByteArray data(int row, int column, bool raw = false) const override;
    int rowCount() const override { return row_count; }
    int columnCount() const override { return column_count; }
    // Every line counts as full width: a short line's missing cells exist as
    // empty ones.
    int columnCountOfRow(int row) const override;
    int trailingEmptyRows() const override { return 0; }
    int trailingEmptyColumns() const override { return 0; }

    // Edits are refused. The model refuses them before they get here, so the
    // refusal is silent; moved-in cells are destroyed.
    bool setCell(int row, int column, QByteArrayView bytes) override;
    bool setRowCount(int n) override;
    bool setColumnCount(int n) override;
    bool clear() override;
    void setRow(int row, CellList&& cells) override;
    void setColumn(int column, CellList&& cells) override;
    void insertRow(int row, CellList&& cells) override;
    void insertColumn(int column, CellList&& cells) override;
    bool insertRows(int row, int count) override;
    bool insertColumns(int column, int count) override;
    bool removeRows(int row, int count) override;
    bool removeColumns(int column, int count) override;

    void getRow(CellList& out, int row, SelectionMode mode,
                const IndexList& columns) const override;
    void getColumn(CellList& out, int column, SelectionMode mode,
                   const IndexList& rows) const override;

    // One writer serves every width; the Wide forms delegate.
    void rowToBytes(QByteArray& out, int row, SelectionMode mode,
                    const IndexList& columns) const override;
    void rowToBytesWide(QByteArray& out, int row, SelectionMode mode,
                        const IndexList& columns) const override;
    void columnToBytes(QByteArray& out, int column, SelectionMode mode,
                       const IndexList& rows) const override;
    void columnToBytesWide(QByteArray& out, int column, SelectionMode mode,
                           const IndexList& rows) const override;

    // A sort result: map[i] is the file line shown at position i. Assigning
    // activates the map; an empty one returns to file order.
    void setRowMap(std::vector<int> map);
    void setColumnMap(std::vector<int> map);
    const std::vector<int>& rowMap() const { return row_map; }
    const std::vector<int>& columnMap() const { return column_map; }
    bool rowMapActive() const { return row_map_active; }
    bool columnMapActive() const { return column_map_active; }
    // The file line shown at a position, through the map when one is active;
    // -1 for a map entry out of range.
    int fileRow(int shown) const;
    int fileColumn(int shown) const;

    // Every cell of a file column, in file order, or of a file line, in
    // column order: take(i, bytes) gets the i-th cell as shown, and stops the
    // walk by returning false (the call then returns false). These walks read
    // through buffers of their own, so that a worker may run one while the
    // GUI thread paints from the same file.
    bool readFileColumn(int file_column,
                        const std::function<bool(int, QByteArrayView)>& take) const;
    bool readFileRow(int file_row, const std::function<bool(int, QByteArrayView)>& take) const;

    const std::vector<CellIndexEntry>& cellIndex() const { return index; }
    int indexStride() const { return index_stride; }
    // Memory held by the index.
    qint64 indexBytes() const { return qint64(index.capacity() * sizeof(CellIndexEntry)); }
    qint64 fileSize() const { return file_size; }

public slots:
    bool loadCSV() override;

protected:
    int storedLineCount() const override { return row_count; }
    // A save that replaces the source by a rename leaves the open descriptor
    // reading the old file, which the index describes; one that would write
    // over it in place (a hard-linked source) is refused.
    bool isOpenSource(quint64 device, quint64 inode) const override;

private:
    struct ScanProgress;
    struct CountingPass;
    struct IndexingPass;
    struct FieldFinder;
    struct RowCollector;
    struct Span {
        qint64 begin = 0; // in units, absolute
        qint64 end = 0;
    };
    // The last stretch of the file read, reused while later reads fall inside
    // it: painting reads neighbouring cells, a save reads lines in order.
    struct Window {
        QByteArray bytes;
        qint64 start = 0;
    };
    template <class Walk> bool withUnitMachine(Walk&& walk) const;
    template <class Host> bool scan(Host& host, qint64 skip_units, qint64 chunk, char* buffer);
    void resetTable();

    qint64 dataEnd() const { return file_size / reading.width; }
    qint64 entryOffset(qint64 k) const;
    QByteArrayView readBytes(Window& win, qint64 from, qint64 to, qint64 ahead) const;
    QByteArrayView rawField(Window& win, qint64 row, qint64 column, qint64 ahead) const;
    const char* rawRow(Window& win, qint64 row, std::vector<Span>& spans, qint64& base) const;
    QByteArrayView spanBytes(const char* p, qint64 base, const Span& s) const;
    // Returns whether the field was unwrapped from quotes.
    bool appendShown(QByteArray& out, QByteArrayView field) const;
    // A save in the standard the file was opened with quotes again what the
    // file quoted, as the editable store does.
    bool keepsQuotes() const { return parsing_standard == reading.standard; }
    void collectShownRow(int row) const;
    void collectShownColumn(int column) const;
    // Cell i of the line last collected.
    QByteArrayView collectedCell(int i) const {
        const qsizetype begin = i > 0 ? line_ends[size_t(i - 1)] : 0;
        return QByteArrayView(line_bytes).sliced(begin, line_ends[size_t(i)] - begin);
    }

    // The dialect the file was scanned in. Cells are read by it for the
    // container's life; the dialect setters only change what a save writes.
    struct ReadingDialect {
        char delimiter = ',';
        ParsingStandard standard = Rfc4180;
        int width = 1;
        bool big_endian = false;
    };

    ReadingDialect reading;
    std::unique_ptr<QFile> file;
    qint64 file_size = 0;
    std::vector<CellIndexEntry> index;
    qint32 index_stride = kIndexStride;
    qint32 row_count = 0;
    qint32 column_count = 0;
    std::vector<int> row_map;
    std::vector<int> column_map;
    bool row_map_active = false;
    bool column_map_active = false;

    // The window of the GUI thread's reads.
    mutable Window window;
    // Scratch of the line writers: the shown cells of one line, back to back.
    mutable QByteArray line_bytes;
    mutable std::vector<qsizetype> line_ends;
    mutable std::vector<bool> line_quoted;
    mutable std::vector<Span> row_spans;
};
