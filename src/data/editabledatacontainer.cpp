#include "editabledatacontainer.h"

#include "csvlinewriter.h"
#include "csvstatemachine.h"
#include "narrowcsvscanner.h"
#include "regularfile.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <climits>
#include <cstring>
#include <thread>

#include <cerrno>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <unistd.h>
#if defined(__GLIBC__)
#include <malloc.h>
#endif
#include <unordered_map>

namespace {

constexpr qint64 kMaxIndex = INT_MAX - 1; // row and column numbers are 32-bit

// Each reading thread streams its share of a chunk through a small window of
// its own, reused for the whole load. A window that fits in the cache keeps
// the kernel's copy and the scan on the same hot lines, and a chunk-sized
// buffer would cost a page fault per 4 KiB read and a quarter of the file on
// top of the cells at the peak.
constexpr qint64 kWindowBytes = 1024 * 1024;

qint64 readAt(int fd, char* buffer, qint64 size, qint64 offset) {
    qint64 got = 0;
    while (got < size) {
        const ssize_t n = ::pread(fd, buffer + got, size_t(size - got), off_t(offset + got));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break; // an error mid-file reads as the end of the data
        got += n;
    }
    return got;
}

// A large load makes millions of small blocks. By default the allocator grows
// its heaps 128 KiB at a time, and a thread's own heap grows by an mprotect
// call each time: a fifth of the load's kernel time went there. Asking for
// 64 MiB at a time costs address space only; untouched pages stay unmapped.
void growHeapsInLargeSteps() {
#if defined(__GLIBC__)
    static std::once_flag once;
    std::call_once(once, [] { ::mallopt(M_TOP_PAD, 64 * 1024 * 1024); });
#endif
}

} // namespace

class ReadWindow {
public:
    ReadWindow(int fd, qint64 size, int width)
        : fd_(fd), size_(size), width_(width), data_(new char[size_t(size)]) {}

    // Feeds the units of the file's bytes [from, to) to the engine, window by
    // window. `from` and `to` are multiples of the unit width.
    enum Outcome { Done, EndOfData, Stopped };
    template <class Engine> Outcome stream(Engine& engine, qint64 from, qint64 to) {
        while (from < to) {
            const qint64 want = std::min(size_, to - from);
            const qint64 got = readAt(fd_, data_.get(), want, from);
            const qint64 units = got / width_; // a trailing part of a unit is dropped
            if (units > 0 && !engine.feed(data_.get(), units, from / width_)) return Stopped;
            if (got < want) return EndOfData;
            from += got;
        }
        return Done;
    }
    // The offset just past the first LF in [from, to), or -1.
    qint64 lineAfter(qint64 from, qint64 to) {
        while (from < to) {
            const qint64 want = std::min(size_, to - from);
            const qint64 got = readAt(fd_, data_.get(), want, from);
            if (const void* lf = std::memchr(data_.get(), '\n', size_t(got)))
                return from + (static_cast<const char*>(lf) - data_.get()) + 1;
            if (got < want) return -1;
            from += got;
        }
        return -1;
    }

private:
    int fd_;
    qint64 size_;
    int width_;
    std::unique_ptr<char[]> data_;
};

namespace {

// Frees large stores on a thread of its own. Giving back millions of heap
// blocks takes a good part of a second, and it happens when a table is
// closed, often mid-load: the window should not freeze for it. The thread
// drains its queue before the process ends.
class StoreReleaser {
public:
    static StoreReleaser& instance() {
        static StoreReleaser releaser;
        return releaser;
    }
    void release(RelocatableVector<PackedRow>&& rows) {
        std::lock_guard lock(mutex_);
        queue_.push_back(std::move(rows));
        if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
        changed_.notify_one();
    }

private:
    ~StoreReleaser() {
        {
            std::lock_guard lock(mutex_);
            done_ = true;
        }
        changed_.notify_one();
        if (thread_.joinable()) thread_.join();
    }
    void run() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return done_ || !queue_.empty(); });
            if (queue_.empty()) return;
            RelocatableVector<PackedRow> rows = std::move(queue_.back());
            queue_.pop_back();
            lock.unlock();
            rows = RelocatableVector<PackedRow>();
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<RelocatableVector<PackedRow>> queue_;
    bool done_ = false;
    std::thread thread_;
};

constexpr int kReleaseInBackgroundRows = 100000;

// Rows freed in bulk lie anywhere in the heap, between blocks still in use,
// where the allocator keeps them for reuse. Past this many, their whole pages
// are handed back to the system as well, so that removing a large block of
// rows shows in the process size and not only in later reuse.
void giveBackFreedRows(int rows) {
#if defined(__GLIBC__)
    if (rows >= kReleaseInBackgroundRows) ::malloc_trim(0);
#else
    Q_UNUSED(rows);
#endif
}

void releaseRows(RelocatableVector<PackedRow>& rows) {
    if (rows.size() < kReleaseInBackgroundRows) return;
    try {
        StoreReleaser::instance().release(std::move(rows));
    } catch (const std::exception&) {
        // No thread to spare: the rows are freed by their owner, as any are.
    }
}

} // namespace

// Receives the reader's cells. Lines arrive strictly in order, so a line is
// gathered in a scratch row and moved into the store, exactly sized, when the
// next line starts. The effect is that of setCell for each field.
//
// The main sink writes into the container and reports progress; a side sink
// (for the second half of a split chunk) gathers rows of its own, numbered
// from 0, and is absorbed into the main one when its half is accepted.
class CsvRowSink {
public:
    CsvRowSink(EditableDataContainer& c, qint64 file_size)
        : c_(c), rows_(&c.rows), row_count_(&c.row_count), column_count_(&c.column_count),
          file_size_(file_size), report_(file_size >= csv::kProgressThreshold),
          step_units_(csv::kProgressStep / c.width) {}

    // A side sink.
    // A side sink whose rows were not taken over (a cancel, or a wrong guess
    // of the line start) lets them go without holding up the load.
    ~CsvRowSink() { releaseRows(own_rows_); }

    explicit CsvRowSink(EditableDataContainer& c)
        : c_(c), rows_(&own_rows_), row_count_(&own_row_count_), column_count_(&own_column_count_),
          file_size_(0), report_(false), step_units_(1) {}

    bool lineStart(qint64 unit_offset) {
        if (c_.canceled.load(std::memory_order_relaxed)) return false;
        // Lines come by the million; the offset of the next report is worked
        // out once per report, not once per line.
        if (report_ && unit_offset >= report_due_) report(unit_offset);
        return true;
    }

    // While another thread reads the second half of a chunk, this half's pace
    // stands for both: offsets in [from, split) are reported as if the whole
    // [from, to) went by, so the bar moves through the file instead of
    // stalling at each middle and jumping at each chunk's end. In units.
    void scaleProgress(qint64 from, qint64 split, qint64 to) {
        scale_from_ = from;
        scale_split_ = split;
        scale_to_ = to;
        report_due_ = nextReportDue();
    }
    void unscaleProgress() {
        scale_from_ = -1;
        report_due_ = nextReportDue();
    }

    // Fields arrive left to right within a line, so the common case appends
    // to the line being gathered; empty fields are left as gaps, which cost
    // nothing at the right edge and an offset elsewhere.
    Q_ALWAYS_INLINE void setCell(qint64 row, qint64 column, const char* bytes, size_t size) {
        if (Q_LIKELY(row == current_row_ && column < *column_count_ && column >= scratch_.size())) {
            if (size) {
                if (column > scratch_.size()) scratch_.appendEmpty(int(column) - scratch_.size());
                scratch_.append(bytes, size);
            }
            return;
        }
        setCellSlow(row, column, bytes, size, false);
    }
    // The same for bytes that may be read 16 at a time (see the scanner).
    Q_ALWAYS_INLINE void setCellPadded(qint64 row, qint64 column, const char* bytes, size_t size) {
        if (Q_LIKELY(row == current_row_ && column < *column_count_ && column >= scratch_.size())) {
            if (size) {
                if (column > scratch_.size()) scratch_.appendEmpty(int(column) - scratch_.size());
                scratch_.appendPadded(bytes, size);
            }
            return;
        }
        setCellSlow(row, column, bytes, size, false);
    }
    // A whole line (see the scanner): the same row as its fields given one
    // by one would make, built in one go. Bit k of `quoted` marks field k as
    // unwrapped from quotes.
    bool setLine(qint64 row, const char* line, const uint32_t* stops, int fields, uint64_t quoted,
                 qint64 readable) {
        if (Q_UNLIKELY(row > kMaxIndex || row < 0)) return false;
        commit();
        fill_.row(rows_->size(), fields);
        // Most lines have no quoted field; they skip the marks' bookkeeping.
        rows_->push_back(quoted ? PackedRowBuilder::fromQuotedLine(line, stops, fields, quoted,
                                                                   size_t(readable), fill_.words(),
                                                                   fill_.bit())
                                : PackedRowBuilder::fromLine(line, stops, fields, size_t(readable),
                                                             fill_.words(), fill_.bit()));
        *row_count_ = int(row + 1);
        if (fields > *column_count_) *column_count_ = fields;
        return true;
    }
    void setQuotedCell(qint64 row, qint64 column, const char* bytes, size_t size) {
        setCellSlow(row, column, bytes, size, true);
    }

    Q_NEVER_INLINE void setCellSlow(qint64 row, qint64 column, const char* bytes, size_t size,
                                    bool quoted) {
        if (Q_UNLIKELY(row > kMaxIndex || column > kMaxIndex || row < 0 || column < 0)) return;
        if (row != current_row_) {
            commit();
            current_row_ = row;
            *row_count_ = int(row + 1);
        }
        if (column >= *column_count_) *column_count_ = int(column + 1);
        const int col = int(column);
        if (quoted)
            scratch_.mark(col);
        else
            scratch_.unmark(col);
        if (col >= scratch_.size()) {
            if (size == 0) return;
            scratch_.appendEmpty(col - scratch_.size());
            scratch_.append(bytes, size);
            return;
        }
        // A field written again: the readers do so for the last field of a
        // file that ends in CR LF.
        scratch_.replace(col, bytes, size);
    }

    void commit() {
        if (current_row_ < 0) return;
        const int cells = scratch_.size();
        fill_.row(rows_->size(), cells);
        for (int k = 0; k < cells; ++k)
            fill_.note(k, scratch_.filledAt(k));
        rows_->push_back(scratch_.build());
        scratch_.clear();
        current_row_ = -1;
    }

    // Takes over a side sink's rows, which follow the `lines_before` lines
    // this sink has seen, and its unfinished last line.
    void absorb(CsvRowSink& side, qint64 lines_before) {
        commit();
        const qint64 offset = rows_->size();
        side.own_rows_.relocateAppendTo(*rows_);
        fill_.append(side.fill_, offset, rows_->size());
        *column_count_ = std::max(*column_count_, side.own_column_count_);
        if (side.own_row_count_ > 0) *row_count_ = int(lines_before + side.own_row_count_);
        if (side.current_row_ >= 0) {
            scratch_.swap(side.scratch_);
            current_row_ = side.current_row_ + lines_before;
        }
    }

    // Every column's fill bits of the rows stored so far.
    std::vector<FillBits> takeFill() { return fill_.take(); }

private:
    EditableDataContainer& c_;
    RelocatableVector<PackedRow>* rows_;
    int* row_count_;
    int* column_count_;
    RelocatableVector<PackedRow> own_rows_;
    int own_row_count_ = 0;
    int own_column_count_ = 0;
    const qint64 file_size_;
    const bool report_;
    const qint64 step_units_;
    qint64 next_report_ = -1;
    qint64 report_due_ = 0;
    qint64 scale_from_ = -1;
    qint64 scale_split_ = 0;
    qint64 scale_to_ = 0;

    // Every step gets its report, in order, even where an offset passes more
    // than one step at once.
    Q_NEVER_INLINE void report(qint64 unit_offset) {
        const qint64 at = reportedOffset(unit_offset);
        while (at > next_report_) {
            const int index = int((next_report_ + 1) / step_units_);
            next_report_ += step_units_;
            c_.progressHandshake(index, int(file_size_ / csv::kProgressStep + 1),
                                 int(file_size_ / csv::kMiB));
        }
        report_due_ = nextReportDue();
    }
    // The lowest offset whose reported offset may pass next_report_; never
    // above the true one, so no report comes late.
    qint64 nextReportDue() const {
        const qint64 want = next_report_ + 1;
        if (scale_from_ < 0 || want <= scale_from_) return want;
        const qint64 scaled = scale_from_ + (want - scale_from_) * (scale_split_ - scale_from_) /
                                                (scale_to_ - scale_from_);
        return std::min(scaled, std::max(want, scale_split_));
    }
    qint64 reportedOffset(qint64 unit_offset) const {
        if (scale_from_ < 0 || unit_offset < scale_from_ || unit_offset >= scale_split_)
            return unit_offset;
        return scale_from_ + (unit_offset - scale_from_) * (scale_to_ - scale_from_) /
                                 (scale_split_ - scale_from_);
    }
    qint64 current_row_ = -1;
    PackedRowBuilder scratch_;
    FillGatherer fill_;
};

EditableDataContainer::EditableDataContainer(QObject* parent) : AbstractDataContainer(parent) {}

EditableDataContainer::~EditableDataContainer() {
    releaseRows(rows);
}

// Reads one chunk, [from, to) of the file, on two threads when it is large:
// the second thread starts at the first line end past the middle, on the
// guess that it lies outside quotes. The first half's final state confirms or
// refutes the guess; when refuted, the first thread simply reads on through
// the second half too. Returns whether the data goes on past the chunk.
template <class Engine, class MakeEngine>
bool EditableDataContainer::feedChunk(Engine& engine, MakeEngine& make_engine, CsvRowSink& sink,
                                      ReadWindow& window, std::unique_ptr<ReadWindow>& side_window,
                                      int fd, qint64 from, qint64 to, bool& ok) {
    if constexpr (requires { engine.atLineStart(); }) {
        const qint64 n = std::min(to, file_size) - from;
        const qint64 split =
            n >= 2 * parallel_threshold ? window.lineAfter(from + n / 2, from + n) : -1;
        if (split > from && split < to) {
            if (!side_window) side_window = std::make_unique<ReadWindow>(fd, kWindowBytes, 1);
            CsvRowSink side_sink(*this);
            auto side = make_engine(side_sink);
            ReadWindow::Outcome side_outcome = ReadWindow::Done;
            std::exception_ptr side_error;
            std::thread worker([&] {
                try {
                    side_outcome = side_window->stream(side, split, to);
                } catch (...) {
                    side_error = std::current_exception();
                }
            });
            ReadWindow::Outcome outcome;
            sink.scaleProgress(from / width, split / width, std::min(to, file_size) / width);
            try {
                outcome = window.stream(engine, from, split);
            } catch (...) {
                sink.unscaleProgress();
                worker.join();
                throw;
            }
            sink.unscaleProgress();
            worker.join();
            if (side_error) std::rethrow_exception(side_error);
            ok = outcome != ReadWindow::Stopped;
            if (outcome != ReadWindow::Done) return false;
            // A line end inside quotes in the middle makes the side's rows wrong.
            if (!engine.atLineStart())
                from = split;
            else {
                ok = side_outcome != ReadWindow::Stopped;
                if (!ok) return false;
                const qint64 lines_before = engine.linesSeen();
                sink.absorb(side_sink, lines_before);
                side.continueAfter(lines_before, sink);
                engine = std::move(side);
                return side_outcome == ReadWindow::Done;
            }
        }
    }
    const auto outcome = window.stream(engine, from, to);
    ok = outcome != ReadWindow::Stopped;
    return outcome == ReadWindow::Done;
}

template <class Engine> bool EditableDataContainer::runLoad(Engine& make_engine) {
    error_text.clear();
    const int opened = openRegularFile(filepath_, error_text);
    if (opened < 0) return false;
    QFile file;
    file.open(opened, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle);
    const int fd = file.handle();
    const qint64 size = file.size();
    file_size = size;
    if (size == 0) {
        file.close();
        emit loadFinishedSignal();
        return true;
    }
    if (size >= csv::kProgressThreshold) {
        startProgressHandshake();
        growHeapsInLargeSteps();
    }

    rows = RelocatableVector<PackedRow>();
    loaded_fill.clear();
    row_count = 0;
    column_count = 0;
    quoting_standard = parsing_standard;

    const int w = width;
    qint64 chunk = std::min(size, chunk_limit);
    chunk -= chunk % w;
    if (chunk < w) chunk = w;
    ReadWindow window(fd, std::min(chunk, kWindowBytes - kWindowBytes % w), w);
    std::unique_ptr<ReadWindow> side_window;
    CsvRowSink sink(*this, size);
    auto engine = make_engine(sink);

    char head[4];
    const qint64 head_size = readAt(fd, head, std::min<qint64>(size, 4), 0);
    qint64 from = detectBom(head, head_size, true) / w * w;
    try {
        for (qint64 to = chunk;; to += chunk) {
            if (to <= from) continue; // a test's chunk smaller than the byte order mark
            bool ok = true;
            const bool more =
                feedChunk(engine, make_engine, sink, window, side_window, fd, from, to, ok);
            if (!ok) {
                sink.commit(); // what was read so far stays
                return false;
            }
            if (!more) break;
            from = to;
        }
        engine.finish();
        sink.commit();
        loaded_fill = sink.takeFill();
    } catch (const std::exception&) {
        // A file too large for memory (or a thread refused) fails like an
        // unreadable one, and what was read of it is given back.
        rows = RelocatableVector<PackedRow>();
        row_count = 0;
        column_count = 0;
        error_text = tr("Not enough memory to load %1.").arg(QDir::toNativeSeparators(filepath_));
        return false;
    }
    file.close();
    emit loadFinishedSignal();
    return true;
}

bool EditableDataContainer::loadCSV() {
    if (width > 1) return loadCSVWide();
    if (delimiter_load == 0) return loadCSVNoDelimiter();
    const bool quotes = parsing_standard != DelimiterOnly;
    if (NarrowCsvScanner<true, CsvRowSink>::supportsDelimiter(delimiter_load)) {
        auto make = [&](CsvRowSink& s) {
            return NarrowCsvScanner<true, CsvRowSink>(s, delimiter_load, quotes);
        };
        return runLoad(make);
    }
    auto make = [&](CsvRowSink& s) {
        return CsvStateMachine<1, false, true, CsvRowSink>(s, delimiter_load, quotes);
    };
    return runLoad(make);
}

bool EditableDataContainer::loadCSVNoDelimiter() {
    auto make = [&](CsvRowSink& s) { return NarrowCsvScanner<false, CsvRowSink>(s, 0, false); };
    return runLoad(make);
}

namespace {
template <bool Delimited, class Container, class Run>
bool runWide(int width, bool big_endian, char delimiter, bool quotes, Run&& run) {
    if (width == 2 && big_endian) {
        auto make = [&](CsvRowSink& s) {
            return CsvStateMachine<2, true, Delimited, CsvRowSink>(s, delimiter, quotes);
        };
        return run(make);
    }
    if (width == 2) {
        auto make = [&](CsvRowSink& s) {
            return CsvStateMachine<2, false, Delimited, CsvRowSink>(s, delimiter, quotes);
        };
        return run(make);
    }
    if (big_endian) {
        auto make = [&](CsvRowSink& s) {
            return CsvStateMachine<4, true, Delimited, CsvRowSink>(s, delimiter, quotes);
        };
        return run(make);
    }
    auto make = [&](CsvRowSink& s) {
        return CsvStateMachine<4, false, Delimited, CsvRowSink>(s, delimiter, quotes);
    };
    return run(make);
}
} // namespace

bool EditableDataContainer::loadCSVWide() {
    if (delimiter_load == 0) return loadCSVWideNoDelimiter();
    if (width == 1) return loadCSV();
    return runWide<true, EditableDataContainer>(width, encodingIsBigEndian(encoding),
                                                delimiter_load, parsing_standard != DelimiterOnly,
                                                [this](auto& make) { return runLoad(make); });
}

bool EditableDataContainer::loadCSVWideNoDelimiter() {
    if (width == 1) return loadCSVNoDelimiter();
    return runWide<false, EditableDataContainer>(width, encodingIsBigEndian(encoding), 0, false,
                                                 [this](auto& make) { return runLoad(make); });
}

// ---------------------------------------------------------------------------
// Cell and line operations

QByteArray EditableDataContainer::data(int row, int column, bool) const {
    return cellView(row, column).toByteArray();
}

int EditableDataContainer::columnCountOfRow(int row) const {
    if (row < 0 || row >= rows.size()) return 0;
    return rows[row].columnCount();
}

qint64 EditableDataContainer::storeBytes() const {
    qint64 bytes = qint64(rows.capacity()) * qint64(sizeof(PackedRow));
    for (const PackedRow& r : rows)
        bytes += qint64(r.blockBytes());
    return bytes;
}

namespace {
// Walks the columns (or rows) chosen by a selection mode, from `start` to
// `end`, calling f(index) until it returns true; returns whether any did.
template <class F>
bool anyChosen(int start, int end, SelectionMode mode, const IndexList& list, F&& f) {
    if (list.empty()) mode = All;
    if (mode == All) {
        for (int i = std::max(start, 0); i < end; ++i)
            if (f(i)) return true;
    } else if (mode == Except) {
        size_t k = 0;
        for (int i = std::max(start, 0); i < end; ++i) {
            while (k < list.size() && list[k] < i)
                ++k;
            if (k < list.size() && list[k] == i) continue;
            if (f(i)) return true;
        }
    } else {
        for (int i : list)
            if (i >= start && i < end && f(i)) return true;
    }
    return false;
}

// Runs `work(first, last)` over [0, n), on two threads for many rows: each
// row is its own block, so halves never meet.
template <class Work> void splitRows(int n, Work&& work) {
    constexpr int kSplitRows = 200000;
    if (n < kSplitRows) {
        work(0, n);
        return;
    }
    const int middle = n / 2;
    std::thread helper([&] { work(middle, n); });
    work(0, middle);
    helper.join();
}

// Rebuilding a row reuses one gathering buffer per thread, so an edit
// allocates only the row's new block.
PackedRowBuilder& rowBuilder() {
    thread_local PackedRowBuilder builder;
    builder.clear();
    return builder;
}

PackedRow rowFromCells(const CellList& cells) {
    PackedRowBuilder& b = rowBuilder();
    const int n = int(cells.size());
    for (int i = 0; i < n; ++i) {
        const Cell& cell = cells[size_t(i)];
        b.append(cell.data(), cell.size());
        if (cell.isQuoted()) b.mark(i);
    }
    return b.build();
}

// Whether the row holds a cell or a mark at or past `column`.
bool reachesColumn(const PackedRow& r, int column) {
    return r.size() > column || r.markedSize() > column;
}
} // namespace

IndexList EditableDataContainer::emptyRows(int start_column, SelectionMode mode,
                                           const IndexList& columns) const {
    IndexList result;
    for (int r = 0; r < row_count; ++r) {
        if (r >= rows.size() || rows[r].size() == 0) {
            result.push_back(r);
            continue;
        }
        const PackedRow& row = rows[r];
        if (!anyChosen(start_column, row.size(), mode, columns,
                       [&](int c) { return !row.cell(c).isEmpty(); }))
            result.push_back(r);
    }
    return result;
}

IndexList EditableDataContainer::emptyColumns(int start_row, SelectionMode mode,
                                              const IndexList& chosen_rows) const {
    IndexList result;
    const int stored = rows.size();
    for (int c = 0; c < column_count; ++c) {
        if (!anyChosen(start_row, stored, mode, chosen_rows,
                       [&](int r) { return !rows[r].isEmptyAt(c); }))
            result.push_back(c);
    }
    return result;
}

int EditableDataContainer::trailingEmptyRows() const {
    int count = row_count - rows.size();
    for (int r = rows.size() - 1; r >= 0; --r) {
        if (columnCountOfRow(r) > 0) break;
        ++count;
    }
    return count;
}

int EditableDataContainer::trailingEmptyColumns() const {
    if (rows.empty()) return column_count;
    int smallest = column_count;
    for (int r = 0; r < rows.size(); ++r)
        smallest = std::min(smallest, column_count - columnCountOfRow(r));
    return std::max(smallest, 0);
}

void EditableDataContainer::putCell(PackedRow& r, int column, QByteArrayView bytes, bool quoted) {
    const int n = r.size();
    if (column >= n && bytes.isEmpty() && r.isQuoted(column) == quoted) return;
    // A cell the row already has is rewritten in its block, whatever its
    // new length, unless the row's offsets would have to widen.
    if (column < n && !quoted && r.replaceCell(column, bytes)) return;
    // Otherwise the row is gathered anew around the cell. `bytes` may lie in
    // the row itself, which stays until the new block is made.
    PackedRowBuilder& b = rowBuilder();
    b.appendCells(r, 0, std::min(column, n));
    if (!bytes.isEmpty() || column < n) {
        if (column > n) b.appendEmpty(column - n);
        b.append(bytes);
        b.appendCells(r, column + 1, n);
    }
    b.copyMarks(r, 0, r.markedSize(), 0);
    if (quoted)
        b.mark(column);
    else
        b.unmark(column);
    r = b.build();
}

bool EditableDataContainer::setCell(int row, int column, QByteArrayView bytes) {
    return setCell(row, column, bytes, false);
}

bool EditableDataContainer::setCell(int row, int column, QByteArrayView bytes, bool quoted) {
    if (row < 0 || column < 0) return false;
    if (row >= rows.size()) {
        rows.resize(row + 1);
        row_count = std::max(row_count, row + 1);
    }
    if (column >= column_count) setColumnCount(column + 1);
    putCell(rows[row], column, bytes, quoted);
    return true;
}

bool EditableDataContainer::setRowCount(int n) {
    if (n < 0) return false;
    if (n < rows.size()) {
        const int cut = rows.size() - n;
        rows.resize(n);
        giveBackFreedRows(cut);
    }
    row_count = n;
    return true;
}

bool EditableDataContainer::setColumnCount(int n) {
    if (n < 0) return false;
    if (n < column_count)
        for (PackedRow& r : rows) {
            if (!reachesColumn(r, n)) continue;
            PackedRowBuilder& b = rowBuilder();
            b.appendCells(r, 0, std::min(n, r.size()));
            b.copyMarks(r, 0, n, 0);
            r = b.build();
        }
    column_count = n;
    return true;
}

bool EditableDataContainer::clear() {
    rows = RelocatableVector<PackedRow>();
    return true;
}

void EditableDataContainer::getRow(CellList& out, int row, SelectionMode mode,
                                   const IndexList& columns) const {
    out.clear();
    const PackedRow* r = row >= 0 && row < rows.size() ? &rows[row] : nullptr;
    auto cell = [&](int c) { return r && c >= 0 ? r->cellCopy(c) : Cell(); };
    forEachChosen(column_count, mode, columns, [&](int i) { out.push_back(cell(i)); });
}

void EditableDataContainer::getColumn(CellList& out, int column, SelectionMode mode,
                                      const IndexList& chosen_rows) const {
    out.clear();
    auto cell = [&](int r) {
        return r >= 0 && r < rows.size() && column >= 0 ? rows[r].cellCopy(column) : Cell();
    };
    forEachChosen(row_count, mode, chosen_rows, [&](int i) { out.push_back(cell(i)); });
}

void EditableDataContainer::setRow(int row, CellList&& cells) {
    if (row < 0) return;
    if (row >= rows.size()) rows.resize(row + 1);
    row_count = std::max(row_count, row + 1);
    column_count = std::max(column_count, int(cells.size()));
    rows[row] = rowFromCells(cells);
}

void EditableDataContainer::setColumn(int column, CellList&& cells) {
    if (column < 0) return;
    const int n = int(cells.size());
    if (n > rows.size()) rows.resize(n);
    row_count = std::max(row_count, n);
    column_count = std::max(column_count, column + 1);
    for (int r = 0; r < n; ++r) {
        const Cell& cell = cells[size_t(r)];
        putCell(rows[r], column, cell.view(), cell.isQuoted());
    }
}

void EditableDataContainer::insertRow(int row, CellList&& cells) {
    if (!insertRows(row, 1)) return;
    setRow(row, std::move(cells));
}

void EditableDataContainer::insertColumn(int column, CellList&& cells) {
    if (!insertColumns(column, 1)) return;
    setColumn(column, std::move(cells));
}

void EditableDataContainer::insertRowList(int row, std::vector<CellList>&& new_rows) {
    const int count = int(new_rows.size());
    if (row < 0 || count < 1) return;
    if (row > rows.size()) rows.resize(row);
    rows.insertEmpty(row, count);
    for (int i = 0; i < count; ++i) {
        column_count = std::max(column_count, int(new_rows[size_t(i)].size()));
        rows[row + i] = rowFromCells(new_rows[size_t(i)]);
        new_rows[size_t(i)] = CellList(); // the cells' own blocks go as the rows arrive
    }
    row_count = std::max(row_count, row) + count;
}

// One pass over the rows: empty columns opened where a row reaches the
// position (as insertColumns does), then the given cells put in (as
// setColumn does for each column), each row rebuilt once.
void EditableDataContainer::insertColumnList(int column, std::vector<CellList>&& columns) {
    const int count = int(columns.size());
    if (column < 0 || count < 1) return;
    if (rows.empty()) {
        column_count += count;
        return;
    }
    column_count = column >= column_count ? column + count : column_count + count;
    int longest = 0;
    for (const CellList& cells : columns)
        longest = std::max(longest, int(cells.size()));
    if (longest > rows.size()) rows.resize(longest);
    row_count = std::max(row_count, longest);
    auto given = [&](int j, int r) -> const Cell* {
        const CellList& cells = columns[size_t(j)];
        return r < int(cells.size()) ? &cells[size_t(r)] : nullptr;
    };
    for (int r = 0; r < rows.size(); ++r) {
        PackedRow& row = rows[r];
        const int n = row.size();
        const bool shifted = n > column;
        bool touched = shifted || row.markedSize() > column;
        int last = shifted ? n + count : n;
        for (int j = 0; j < count; ++j)
            if (const Cell* c = given(j, r)) {
                touched = true;
                if (!c->isEmpty()) last = std::max(last, column + j + 1);
            }
        if (!touched) continue;
        PackedRowBuilder& b = rowBuilder();
        for (int p = 0; p < last; ++p) {
            if (p < column) {
                b.append(p < n ? row.cell(p) : QByteArrayView());
            } else if (p < column + count) {
                const Cell* c = given(p - column, r);
                b.append(c ? c->view() : QByteArrayView());
            } else {
                b.append(p - count < n ? row.cell(p - count) : QByteArrayView());
            }
        }
        b.copyMarks(row, 0, column, 0);
        b.copyMarks(row, column, row.markedSize(), count);
        for (int j = 0; j < count; ++j)
            if (const Cell* c = given(j, r); c && c->isQuoted()) b.mark(column + j);
        row = b.build();
    }
}

bool EditableDataContainer::insertRows(int row, int count) {
    if (count < 1 || row < 0) return false;
    if (row >= rows.size()) {
        row_count = std::max(row_count, row) + count;
        return true;
    }
    rows.insertEmpty(row, count);
    row_count += count;
    return true;
}

bool EditableDataContainer::insertColumns(int column, int count) {
    if (count < 1 || column < 0) return false;
    if (column >= column_count) {
        column_count = column + count;
        return true;
    }
    const std::vector<QByteArrayView> empties(static_cast<size_t>(count));
    splitRows(rows.size(), [&](int from, int to) {
        for (int i = from; i < to; ++i) {
            PackedRow& r = rows[i];
            if (!reachesColumn(r, column)) continue;
            const int n = r.size();
            // In the block itself where the row has a cell there; a row
            // reached only by marks, or whose offsets would widen, is rebuilt.
            if (n > column && r.insertCells(column, empties.data(), count)) continue;
            PackedRowBuilder& b = rowBuilder();
            b.appendCells(r, 0, std::min(column, n));
            if (n > column) {
                b.appendEmpty(count);
                b.appendCells(r, column, n);
            }
            b.copyMarks(r, 0, column, 0);
            b.copyMarks(r, column, r.markedSize(), count);
            r = b.build();
        }
    });
    column_count += count;
    return true;
}

bool EditableDataContainer::removeRows(int row, int count) {
    if (count < 1 || row < 0) return false;
    if (row >= row_count) return true;
    count = std::min(count, row_count - row);
    if (row < rows.size()) {
        const int stored = std::min(count, rows.size() - row);
        rows.erase(row, stored);
        giveBackFreedRows(stored);
    }
    row_count -= count;
    return true;
}

bool EditableDataContainer::removeColumns(int column, int count) {
    if (count < 1 || column < 0) return false;
    if (column >= column_count) return true;
    count = std::min(count, column_count - column);
    for (PackedRow& r : rows) {
        if (!reachesColumn(r, column)) continue;
        const int n = r.size();
        PackedRowBuilder& b = rowBuilder();
        b.appendCells(r, 0, std::min(column, n));
        b.appendCells(r, std::min(column + count, n), n);
        b.copyMarks(r, 0, column, 0);
        b.copyMarks(r, column + count, r.markedSize(), -count);
        r = b.build();
    }
    column_count -= count;
    return true;
}

void EditableDataContainer::copyRow(int from, int to) {
    if (to < 0 || from == to) return;
    if (to >= rows.size()) rows.resize(to + 1);
    row_count = std::max(row_count, to + 1);
    if (from >= 0 && from < rows.size())
        rows[to] = rows[from];
    else
        rows[to] = PackedRow();
}

void EditableDataContainer::copyColumn(int from, int to) {
    if (to < 0 || from == to) return;
    column_count = std::max(column_count, to + 1);
    for (PackedRow& r : rows) {
        const bool stored = from >= 0 && from < r.size();
        putCell(r, to, stored ? r.cell(from) : QByteArrayView(), from >= 0 && r.isQuoted(from));
    }
}

// ---------------------------------------------------------------------------
// Sort application

bool EditableDataContainer::applyRowPermutation(const std::vector<int>& P,
                                                const std::function<bool(int, int)>& step) {
    const int n = int(P.size());
    {
        std::vector<bool> seen(size_t(n), false);
        for (int p : P) {
            if (p < 0 || p >= n || seen[size_t(p)]) return false;
            seen[size_t(p)] = true;
        }
    }
    if (n > rows.size()) rows.resize(n); // lines beyond the store are empty rows
    row_count = std::max(row_count, n);
    // Cycle by cycle, one row handle in hand: the store holds every row exactly
    // once between cycles, so stopping there leaves a consistent table.
    std::vector<bool> done(size_t(n), false);
    int moved = 0;
    for (int s = 0; s < n; ++s) {
        if (done[size_t(s)]) continue;
        if (step && !step(moved, n)) return false;
        PackedRow in_hand = std::move(rows[s]);
        int j = s;
        do {
            done[size_t(j)] = true;
            const int dest = P[size_t(j)];
            std::swap(in_hand, rows[dest]);
            j = dest;
            ++moved;
        } while (j != s);
    }
    return true;
}

void EditableDataContainer::reorderRows(const std::vector<int>& order, bool inverse,
                                        const std::function<void(int, int)>& progress) {
    constexpr int kProgressRows = 1 << 16;
    const int n = int(order.size());
    if (n > rows.size()) rows.resize(n); // lines beyond the store are empty rows
    row_count = std::max(row_count, n);
    RelocatableVector<PackedRow> fresh;
    fresh.resize(rows.size());
    // Handles move by their bytes, as the vector itself moves them; the old
    // array is then cleared to null handles, so that nothing is freed twice.
    PackedRow* const from = rows.begin();
    PackedRow* const to = fresh.begin();
    for (int start = 0; start < n; start += kProgressRows) {
        if (progress) progress(start, n);
        const int end = std::min(n, start + kProgressRows);
        if (inverse) {
            for (int i = start; i < end; ++i)
                std::memcpy(static_cast<void*>(to + order[size_t(i)]), from + i, sizeof(PackedRow));
        } else {
            for (int i = start; i < end; ++i)
                std::memcpy(static_cast<void*>(to + i), from + order[size_t(i)], sizeof(PackedRow));
        }
    }
    const int stored = rows.size();
    if (stored > n)
        std::memcpy(static_cast<void*>(to + n), from + n, sizeof(PackedRow) * size_t(stored - n));
    std::memset(static_cast<void*>(from), 0, sizeof(PackedRow) * size_t(stored));
    rows = std::move(fresh);
}

void EditableDataContainer::applyColumnPermutation(const std::vector<int>& P) {
    const int n = int(P.size());
    {
        std::vector<bool> seen(size_t(n), false);
        for (int p : P) {
            if (p < 0 || p >= n || seen[size_t(p)]) return;
            seen[size_t(p)] = true;
        }
    }
    column_count = std::max(column_count, n);
    std::vector<QByteArrayView> placed;
    for (PackedRow& r : rows) {
        if (r.isNull()) continue;
        const int size = r.size();
        placed.assign(size_t(std::max(n, size)), QByteArrayView());
        auto dest = [&](int c) { return c < n ? P[size_t(c)] : c; };
        for (int c = 0; c < size; ++c)
            placed[size_t(dest(c))] = r.cell(c);
        int stored = int(placed.size());
        while (stored > 0 && placed[size_t(stored - 1)].isEmpty())
            --stored;
        PackedRowBuilder& b = rowBuilder();
        for (int c = 0; c < stored; ++c)
            b.append(placed[size_t(c)]);
        for (int c = 0; c < r.markedSize(); ++c)
            if (r.isQuoted(c)) b.mark(dest(c));
        r = b.build();
    }
}

// ---------------------------------------------------------------------------
// Writing

// Every packed row can be read 16 bytes on from the start of any of its
// cells (its block ends in at least that much slack after the bytes), which
// is the writer's `Padded` promise.
template <class Out>
void EditableDataContainer::appendRowBytes(Out& out, const CsvLineWriter& writer, int row,
                                           SelectionMode mode, const IndexList& columns) const {
    const PackedRow* r = row >= 0 && row < rows.size() ? &rows[row] : nullptr;
    int n = r ? r->size() : 0;
    if (!save_trailing_delimiters) n = std::min(n, columnCountOfRow(row));
    auto cell = [&](int c) { return r->cell(c); };
    if (r && r->hasMarks() && keepsQuotes())
        writer.appendLine<true>(out, n, column_count, mode, columns, cell, line_ending,
                                [&](int c) { return r->isQuoted(c); });
    else
        writer.appendLine<true>(out, n, column_count, mode, columns, cell, line_ending);
}

void EditableDataContainer::appendRowForSave(SaveBuffer& out, const CsvLineWriter& writer, int row,
                                             const IndexList& hidden_columns) const {
    appendRowBytes(out, writer, row, Except, hidden_columns);
}

void EditableDataContainer::rowToBytes(QByteArray& out, int row, SelectionMode mode,
                                       const IndexList& columns) const {
    out.resize(0);
    if (width > 1) {
        rowToBytesWide(out, row, mode, columns);
        return;
    }
    appendRowBytes(out, lineWriter(), row, mode, columns);
}

void EditableDataContainer::rowToBytesWide(QByteArray& out, int row, SelectionMode mode,
                                           const IndexList& columns) const {
    out.resize(0);
    appendRowBytes(out, lineWriter(), row, mode, columns);
}

namespace {
int lastNonEmpty(const CellList& cells) {
    int n = int(cells.size());
    while (n > 0 && cells[size_t(n - 1)].isEmpty())
        --n;
    return n;
}
} // namespace

// One writer serves every width; the Wide forms exist for the interface.
void EditableDataContainer::columnToBytes(QByteArray& out, int column, SelectionMode mode,
                                          const IndexList& chosen_rows) const {
    out.resize(0);
    CellList cells;
    getColumn(cells, column, All, {});
    int n = int(cells.size());
    if (!save_trailing_delimiters) n = lastNonEmpty(cells);
    const bool keep = keepsQuotes();
    lineWriter().appendLine(
        out, n, row_count, mode, chosen_rows, [&](int r) { return cells[size_t(r)].view(); },
        UnixLineEnding,
        [&](int r) { return keep && r < int(cells.size()) && cells[size_t(r)].isQuoted(); });
}

void EditableDataContainer::columnToBytesWide(QByteArray& out, int column, SelectionMode mode,
                                              const IndexList& chosen_rows) const {
    columnToBytes(out, column, mode, chosen_rows);
}

int EditableDataContainer::findInColumn(int column, int from, int step, int limit,
                                        bool want_filled) const {
    // Distances ahead for the two prefetches: far enough to cover a memory
    // access, near enough to stay in cache until used.
    constexpr int kHeaderAhead = 16;
    constexpr int kEndAhead = 8;
    const int stored = rows.size();
    auto filled = [&](int r) { return r < stored && !rows[r].isEmptyAt(column); };
    for (int r = from; step > 0 ? r <= limit : r >= limit; r += step) {
        const int h = r + step * kHeaderAhead, e = r + step * kEndAhead;
        if (h >= 0 && h < stored) rows[h].prefetchHeader();
        if (e >= 0 && e < stored) rows[e].prefetchEnd(column);
        // Past the stored rows every cell is empty.
        if (step > 0 && r >= stored) return want_filled ? limit + step : r;
        if (filled(r) == want_filled) return r;
    }
    return limit + step;
}

qint64 EditableDataContainer::fillColumn(int column, int first_row, int last_row,
                                         QByteArrayView bytes) {
    // Rows past the stored ones are empty already: an empty text stores
    // nothing there, or a save would write them out as lines.
    if (bytes.isEmpty()) last_row = std::min(last_row, rows.size() - 1);
    if (column < 0 || first_row < 0 || last_row < first_row) return 0;
    if (last_row >= rows.size()) {
        rows.resize(last_row + 1);
        row_count = std::max(row_count, last_row + 1);
    }
    if (column >= column_count && !bytes.isEmpty()) setColumnCount(column + 1);
    auto fill = [this, column, bytes](int from, int to) {
        qint64 changed = 0;
        constexpr int kAhead = 8;
        for (int r = from; r <= to; ++r) {
            // Each row is its own block: ask for the ones ahead while this
            // one is written.
            if (r + kAhead <= to) rows[r + kAhead].prefetchHeader();
            PackedRow& row = rows[r];
            if (column < row.size()) {
                if (row.cell(column) == bytes && !row.isQuoted(column)) continue;
            } else if (bytes.isEmpty() && !row.isQuoted(column)) {
                continue;
            }
            putCell(row, column, bytes, false);
            ++changed;
        }
        return changed;
    };
    // A keystroke into a selected column of millions of rows writes every
    // one of them; the rows are independent blocks, so two threads share
    // the work. Below this many rows a thread costs more than it saves.
    constexpr int kSplitRows = 200000;
    const int n = last_row - first_row + 1;
    if (n < kSplitRows) return fill(first_row, last_row);
    const int middle = first_row + n / 2;
    qint64 second = 0;
    std::thread helper([&] { second = fill(middle, last_row); });
    const qint64 first = fill(first_row, middle - 1);
    helper.join();
    return first + second;
}

// ---------------------------------------------------------------------------
// Whole lines out and back

namespace {

int totalLength(const LineRuns& runs) {
    int n = 0;
    for (const LineRun& r : runs)
        n += r.length;
    return n;
}

// A row of `width` captured positions, as the store keeps it: cells up to
// the last one with bytes, marks wherever the file had quotes.
PackedRow rowFromCapture(StoredCells::Reader& reader, int width) {
    PackedRowBuilder& b = rowBuilder();
    int kept = 0;
    for (int c = 0; c < width; ++c) {
        bool quoted = false;
        const QByteArrayView bytes = reader.next(&quoted);
        if (!bytes.isEmpty()) {
            b.appendEmpty(c - kept);
            b.append(bytes);
            kept = c + 1;
        }
        if (quoted) b.mark(c);
    }
    return b.build();
}

} // namespace

StoredCells EditableDataContainer::captureRowRuns(const LineRuns& runs) const {
    int stored = 0;
    for (const LineRun& run : runs)
        stored += std::max(0, std::min(run.end(), rows.size()) - run.start);
    StoredCells out(0, stored - 1, 0, column_count - 1);
    for (const LineRun& run : runs)
        for (int r = run.start; r < std::min(run.end(), rows.size()); ++r) {
            const PackedRow& row = rows[r];
            for (int c = 0; c < column_count; ++c)
                out.append(c < row.size() ? row.cell(c) : QByteArrayView(), row.isQuoted(c));
        }
    out.squeeze();
    return out;
}

void EditableDataContainer::removeRowRuns(const LineRuns& runs) {
    if (runs.empty()) return;
    int removed = 0, removed_stored = 0;
    for (const LineRun& run : runs) {
        const int end = std::min(run.end(), row_count);
        if (run.start < end) removed += end - run.start;
    }
    // Row handles may move by their bytes: the taken rows are freed, the
    // kept ones between them slide down a stretch at a time, and the slots
    // left at the end, copies now, are zeroed before the size drops.
    const int stored = rows.size();
    PackedRow* base = rows.begin();
    int w = -1, kept_from = 0;
    for (const LineRun& run : runs) {
        const int s = std::min(run.start, stored), e = std::min(run.end(), stored);
        for (int p = s; p < e; ++p)
            rows[p] = PackedRow();
        removed_stored += e - s;
        if (w < 0) {
            w = s;
        } else if (s > kept_from) {
            std::memmove(static_cast<void*>(base + w), base + kept_from,
                         sizeof(PackedRow) * size_t(s - kept_from));
            w += s - kept_from;
        }
        kept_from = e;
    }
    if (stored > kept_from) {
        std::memmove(static_cast<void*>(base + w), base + kept_from,
                     sizeof(PackedRow) * size_t(stored - kept_from));
        w += stored - kept_from;
    }
    std::memset(static_cast<void*>(base + w), 0, sizeof(PackedRow) * size_t(stored - w));
    rows.resize(w);
    row_count -= removed;
    giveBackFreedRows(removed_stored);
}

void EditableDataContainer::insertRowRuns(const LineRuns& runs, const StoredCells& cells,
                                          int stored_rows) {
    const int total = totalLength(runs);
    if (total == 0) return;
    const int width = cells.isEmpty() ? 0 : cells.lastColumn() - cells.firstColumn() + 1;
    // The put-back rows first, in order; then the old rows slide up a
    // stretch at a time from the end, and each run's slots take their rows.
    RelocatableVector<PackedRow> made;
    StoredCells::Reader reader(cells);
    for (const LineRun& run : runs)
        for (int p = run.start; p < std::min(run.end(), stored_rows); ++p)
            made.push_back(width ? rowFromCapture(reader, width) : PackedRow());
    const int old_stored = rows.size();
    const int new_stored = old_stored + made.size();
    rows.resize(new_stored);
    PackedRow* base = rows.begin();
    int old_end = old_stored, new_end = new_stored, m = made.size();
    for (auto it = runs.rbegin(); it != runs.rend(); ++it) {
        const int s = it->start, e = std::min(it->end(), new_stored);
        if (s >= new_stored) continue;
        const int n = new_end - e;
        std::memmove(static_cast<void*>(base + e), base + old_end - n,
                     sizeof(PackedRow) * size_t(n));
        old_end -= n;
        for (int p = e - 1; p >= s; --p) {
            // The slot holds a stale copy now: the handle goes in by its bytes.
            std::memcpy(static_cast<void*>(base + p), &made[--m], sizeof(PackedRow));
            std::memset(static_cast<void*>(&made[m]), 0, sizeof(PackedRow));
        }
        new_end = s;
    }
    row_count += total;
    column_count = std::max(column_count, width);
}

StoredCells EditableDataContainer::captureColumnRuns(const LineRuns& runs) const {
    const int total = totalLength(runs);
    StoredCells out(0, rows.size() - 1, 0, total - 1);
    if (total == 0 || rows.empty()) return out;
    out.reserve(qsizetype(rows.size()) * total * 4);
    for (int r = 0; r < rows.size(); ++r) {
        const PackedRow& row = rows[r];
        const int n = row.size();
        const bool marks = row.hasMarks();
        for (const LineRun& run : runs)
            for (int c = run.start; c < run.end(); ++c)
                out.append(c < n ? row.cell(c) : QByteArrayView(), marks && row.isQuoted(c));
    }
    out.squeeze();
    return out;
}

void EditableDataContainer::removeColumnRuns(const LineRuns& runs) {
    if (runs.empty()) return;
    int removed = 0;
    for (const LineRun& run : runs) {
        const int end = std::min(run.end(), column_count);
        if (run.start < end) removed += end - run.start;
    }
    const int first = runs.front().start;
    splitRows(rows.size(), [&](int from, int to) {
        for (int r = from; r < to; ++r) {
            PackedRow& row = rows[r];
            if (!reachesColumn(row, first)) continue;
            // In the block itself, from the last run down so that positions
            // hold: no allocation, and the freed room serves the undo.
            for (auto it = runs.rbegin(); it != runs.rend(); ++it)
                row.eraseCells(it->start, it->end());
        }
    });
    column_count -= removed;
}

void EditableDataContainer::insertColumnRuns(const LineRuns& runs, const StoredCells& cells) {
    const int total = totalLength(runs);
    if (total == 0) return;
    const int first = runs.front().start;
    const int captured_rows = cells.isEmpty() ? 0 : std::min(cells.lastRow() + 1, rows.size());
    auto work = [&](int from, int to) {
        StoredCells::Reader reader(cells);
        if (from < captured_rows) reader.skip(qint64(from) * total);
        std::vector<QByteArrayView> put(static_cast<size_t>(total));
        std::vector<char> put_quoted(static_cast<size_t>(total));
        for (int r = from; r < to; ++r) {
            PackedRow& row = rows[r];
            bool any = false;
            int last_put = -1; // the last put-back cell with bytes
            if (r >= captured_rows) {
                std::fill(put.begin(), put.end(), QByteArrayView());
                std::fill(put_quoted.begin(), put_quoted.end(), char(0));
            } else {
                for (int j = 0; j < total; ++j) {
                    bool q = false;
                    put[size_t(j)] = reader.next(&q);
                    put_quoted[size_t(j)] = q;
                    any = any || q;
                    if (!put[size_t(j)].isEmpty()) last_put = j;
                }
            }
            if (last_put < 0 && !any && !reachesColumn(row, first)) continue;
            const bool marks = row.hasMarks();
            if ((!any || marks) && !row.isNull()) {
                // In the block itself: each run where the row reaches it,
                // none past its end when nothing there holds bytes. Marks
                // past a row's end would have to move with no cell to put,
                // so such a row is rebuilt.
                int size = row.size(), j0 = 0;
                bool fits = true;
                for (const LineRun& run : runs) {
                    if (run.start > size) {
                        fits = last_put < j0 && !marks;
                        break;
                    }
                    size += run.length;
                    j0 += run.length;
                }
                if (fits) {
                    size_t done = 0;
                    int j = 0;
                    for (; done < runs.size(); ++done) {
                        const LineRun& run = runs[done];
                        if (run.start > row.size()) break;
                        if (!row.insertCells(run.start, put.data() + j, run.length,
                                             put_quoted.data() + j)) {
                            fits = false;
                            break;
                        }
                        j += run.length;
                    }
                    if (fits) continue;
                    // Offsets too narrow part way: the runs put in so far
                    // come out again, and the row is rebuilt below.
                    while (done-- > 0)
                        row.eraseCells(runs[done].start, runs[done].end());
                }
            }
            // Old stretches and put-back runs in turn; new positions are the
            // old ones moved on by the runs before them.
            PackedRowBuilder& b = rowBuilder();
            const int n = row.size();
            int old_from = 0, shift = 0, j = 0;
            for (const LineRun& run : runs) {
                const int old_to = run.start - shift; // old cells before this run
                b.appendCells(row, std::min(old_from, n), std::min(old_to, n));
                b.copyMarks(row, old_from, old_to, shift);
                const bool more_old = old_to < n;
                for (int k = 0; k < run.length; ++k, ++j) {
                    if (r < captured_rows && put_quoted[size_t(j)]) b.mark(run.start + k);
                    if (!more_old && j > last_put) continue;
                    // Cells before this one that were cut short are empty.
                    b.appendEmpty(run.start + k - b.size());
                    b.append(r < captured_rows ? put[size_t(j)] : QByteArrayView());
                }
                old_from = old_to;
                shift += run.length;
            }
            if (old_from < n) {
                b.appendEmpty(old_from + shift - b.size());
                b.appendCells(row, old_from, n);
            }
            b.copyMarks(row, old_from, row.markedSize(), shift);
            row = b.build();
        }
    };
    splitRows(rows.size(), work);
    column_count += total;
}

void EditableDataContainer::rotateRows(const std::vector<int>& positions, int middle) {
    if (positions.size() < 2 || middle <= 0 || middle >= int(positions.size())) return;
    const int last = positions.back();
    if (last >= rows.size()) rows.resize(last + 1);
    row_count = std::max(row_count, last + 1);
    const int first = positions.front();
    if (last - first + 1 == int(positions.size())) {
        std::rotate(rows.begin() + first, rows.begin() + first + middle, rows.begin() + last + 1);
        return;
    }
    std::vector<PackedRow> held;
    held.reserve(positions.size());
    for (int p : positions)
        held.push_back(std::move(rows[p]));
    std::rotate(held.begin(), held.begin() + middle, held.end());
    for (size_t i = 0; i < positions.size(); ++i)
        rows[positions[i]] = std::move(held[i]);
}

void EditableDataContainer::dropEmptyStoredRowsFrom(int n) {
    if (n < 0 || n >= rows.size()) return;
    for (int r = n; r < rows.size(); ++r)
        if (rows[r].columnCount() > 0 || rows[r].hasMarks()) return;
    rows.resize(n);
}
