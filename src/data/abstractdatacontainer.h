#pragma once

#include "cell.h"
#include "dialect.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <atomic>
#include <string>
#include <vector>

class QMutex;
class QWaitCondition;
class CsvLineWriter;
class SaveBuffer;

using IndexList = std::vector<int>;
using CellList = std::vector<Cell>;

// Limits shared by the readers of both container kinds.
namespace csv {
constexpr qint64 kChunkLimit = 268435456;       // largest single read
constexpr qint64 kProgressStep = 8388608;       // file offset between two reports
constexpr qint64 kProgressThreshold = 25165824; // from this size on, progress is reported
constexpr qint64 kDelimiterSample = 10000;
constexpr qint64 kByteOrderSample = 1000;
constexpr qint64 kMiB = 1048576;
} // namespace csv

// The cells of one open file, kept as raw bytes in the file's encoding.
// TableData owns exactly one; the editable store keeps everything in memory,
// the read-only one keeps the file on disk behind an index.
class AbstractDataContainer : public QObject {
    Q_OBJECT

public:
    explicit AbstractDataContainer(QObject* parent = nullptr) : QObject(parent) {}
    ~AbstractDataContainer() override = default;

    virtual QByteArray data(int row, int column, bool raw = false) const = 0;
    virtual int rowCount() const = 0;
    virtual int columnCount() const = 0;
    virtual int columnCountOfRow(int row) const = 0;
    virtual IndexList emptyRows(int start_column, SelectionMode mode,
                                const IndexList& columns) const;
    virtual IndexList emptyColumns(int start_row, SelectionMode mode, const IndexList& rows) const;
    virtual int trailingEmptyRows() const { return 0; }
    virtual int trailingEmptyColumns() const { return 0; }
    virtual bool setCell(int row, int column, QByteArrayView bytes);
    virtual bool setRowCount(int n);
    virtual bool setColumnCount(int n);
    virtual bool clear() { return false; }
    virtual void getRow(CellList& out, int row, SelectionMode mode, const IndexList& columns) const;
    virtual void getColumn(CellList& out, int column, SelectionMode mode,
                           const IndexList& rows) const;
    virtual void setRow(int row, CellList&& cells);
    virtual void setColumn(int column, CellList&& cells);
    virtual void insertRow(int row, CellList&& cells);
    virtual void insertColumn(int column, CellList&& cells);
    virtual void insertRowList(int row, std::vector<CellList>&& rows);
    virtual void insertColumnList(int column, std::vector<CellList>&& columns);
    virtual bool insertRows(int row, int count);
    virtual bool insertColumns(int column, int count);
    virtual bool removeRows(int row, int count);
    virtual bool removeColumns(int column, int count);
    virtual void copyRow(int from, int to);
    virtual void copyColumn(int from, int to);
    virtual bool saveAs(const QString& path, bool keep_backup, bool transposed,
                        const IndexList& hidden_rows, const IndexList& hidden_columns);
    // Every save writes a complete temporary file beside the file and then
    // replaces it (FileReplacement), so `keep_backup` no longer chooses the
    // route: the quick save that goes without it is as safe as any other.
    virtual bool save(bool keep_backup, bool transposed, const IndexList& hidden_rows,
                      const IndexList& hidden_columns);
    virtual void rowToBytes(QByteArray& out, int row, SelectionMode mode,
                            const IndexList& columns) const = 0;
    virtual void rowToBytesWide(QByteArray& out, int row, SelectionMode mode,
                                const IndexList& columns) const = 0;
    virtual void columnToBytes(QByteArray& out, int column, SelectionMode mode,
                               const IndexList& rows) const = 0;
    virtual void columnToBytesWide(QByteArray& out, int column, SelectionMode mode,
                                   const IndexList& rows) const = 0;

    void setFilepath(const QString& path) { filepath_ = path; }
    QString filepath() const { return filepath_; }
    void setDelimiters(char load, char save) {
        delimiter_load = load;
        delimiter_save = save;
    }
    void setLineEnding(LineEndingType ending) { line_ending = ending; }
    void setEncoding(EncodingType value) {
        encoding = value;
        width = encodingWidth(value);
    }
    void setParsingStandard(ParsingStandard standard) { parsing_standard = standard; }
    void setSaveTrailingDelimiters(bool on) { save_trailing_delimiters = on; }
    void setCanceled(bool on) { canceled.store(on, std::memory_order_relaxed); }
    void setMutexAndCondition(QMutex* m, QWaitCondition* c) {
        mutex = m;
        wait_condition = c;
    }

    // Number of bytes of a byte order mark of this encoding at the start of
    // the buffer, 0 when none. With `store`, remembers the mark for saving.
    int detectBom(const char* buffer, qint64 size, bool store);

    // Tests set a small chunk so that every seam position can be exercised.
    void setChunkLimit(qint64 bytes) { chunk_limit = bytes; }

    bool isReadOnly() const { return read_only; }
    bool isCanceled() const { return canceled.load(std::memory_order_relaxed); }
    char delimiterLoad() const { return delimiter_load; }
    char delimiterSave() const { return delimiter_save; }
    LineEndingType lineEnding() const { return line_ending; }
    EncodingType encodingType() const { return encoding; }
    ParsingStandard parsingStandard() const { return parsing_standard; }
    int unitWidth() const { return width; }
    bool saveTrailingDelimiters() const { return save_trailing_delimiters; }
    bool hasBom() const { return has_bom; }
    QByteArray byteOrderMark() const { return bom; }
    // Why the last load or save failed, in words for the user; empty after
    // one that worked.
    QString errorString() const { return error_text; }

signals:
    void startProgressUpdateSignal();
    void loadProgressUpdateSignal(int curr_num_reports, int num_total_reports, int filesize_mb);
    void loadFinishedSignal();

public slots:
    virtual bool loadCSV() = 0;

protected:
    // Calls f(i) for each position of 0..count-1 that a selection mode
    // chooses: all, all but the ascending list, or only the listed ones in
    // list order. An empty list chooses all.
    template <class F>
    static void forEachChosen(int count, SelectionMode mode, const IndexList& list, F&& f) {
        if (list.empty()) mode = All;
        if (mode == Only) {
            for (int i : list)
                f(i);
            return;
        }
        size_t k = 0;
        for (int i = 0; i < count; ++i) {
            if (mode == Except) {
                while (k < list.size() && list[k] < i)
                    ++k;
                if (k < list.size() && list[k] == i) continue;
            }
            f(i);
        }
    }

    // Whether the store reads its cells from this file (by device and inode)
    // while it is open: such a file may be replaced, but not written over.
    virtual bool isOpenSource(quint64 device, quint64 inode) const {
        Q_UNUSED(device);
        Q_UNUSED(inode);
        return false;
    }
    // Rows that exist in the store (not the logical count): what a save writes.
    virtual int storedLineCount() const { return rowCount(); }
    // One row of a non-transposed save appended to the output; a store may
    // write straight into the output instead of through rowToBytes.
    // The line writer for the save dialect as it stands now.
    CsvLineWriter lineWriter() const;
    virtual void appendRowForSave(SaveBuffer& out, const CsvLineWriter& writer, int row,
                                  const IndexList& hidden_columns) const;

    // The start-of-load pause that lets the GUI thread raise its progress
    // display. Without a handshake partner (tests, benchmarks) it is skipped.
    void startProgressHandshake();
    void progressHandshake(int curr, int total, int filesize_mb);

    bool read_only = false;
    std::atomic<bool> canceled{false};
    QString filepath_;
    char delimiter_load = ',';
    char delimiter_save = ',';
    LineEndingType line_ending = WindowsLineEnding;
    EncodingType encoding = Utf8;
    ParsingStandard parsing_standard = Rfc4180;
    int width = 1; // bytes per code unit, kept in step with the encoding
    QMutex* mutex = nullptr;
    QWaitCondition* wait_condition = nullptr;
    bool save_trailing_delimiters = true;
    bool has_bom = false;
    QByteArray bom;
    qint64 chunk_limit = csv::kChunkLimit;
    QString error_text;
};
