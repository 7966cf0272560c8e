#include "readonlydatacontainer.h"

#include "csvboundarymachine.h"
#include "csvlinewriter.h"
#include "narrowboundaryscanner.h"
#include "regularfile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// File offset between two progress reports of a pass.
constexpr qint64 kProgressStep = 24 * csv::kMiB;
// The scan reads the file in pieces that stay in the core's cache between the
// read and the walk over it. With the reader's 256 MiB chunks the copy out of
// the page cache went to memory and back: 0.72 s against 0.55 s over 512 MB,
// and 310 MB of peak memory against 42 MB.
constexpr qint64 kScanChunk = 1 * csv::kMiB;
// A stretch between two entries is read in one piece up to this size; longer
// ones (a huge cell) are read in growing pieces until the cell is complete.
constexpr qint64 kFirstRead = 64 * 1024;
// Walks over many lines (a column, a save) read ahead of the stretch.
constexpr qint64 kReadAhead = 256 * 1024;
// A read window grown beyond this by one huge line is given back afterwards.
constexpr qint64 kKeptWindow = 4 * csv::kMiB;

// What the file holds at `offset`, up to `size` bytes; short only at its end
// (or on an error, which reads as the end).
qint64 preadFully(int fd, char* buffer, qint64 size, qint64 offset) {
    qint64 got = 0;
    while (got < size) {
        const ssize_t n = ::pread(fd, buffer + got, size_t(size - got), off_t(offset + got));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        got += n;
    }
    return got;
}

} // namespace

// ---------------------------------------------------------------------------
// The two passes

// Progress and cancel at each line start. A pass reports in units of 24 MiB;
// the bar runs in thirds of t = size / 24 MiB + 1, one for the first pass and
// two for the second, which is the slower.
struct ReadOnlyDataContainer::ScanProgress {
    ScanProgress(ReadOnlyDataContainer& c, int pass)
        : c(c), pass(pass), report(c.file_size >= csv::kProgressThreshold),
          step_units(kProgressStep / c.reading.width), t(int(c.file_size / kProgressStep + 1)),
          size_mb(int(c.file_size / csv::kMiB)) {}

    bool lineStart(qint64 unit) {
        if (c.isCanceled()) return false;
        if (report && unit > next_report) {
            next_report += step_units;
            const int k = int(unit / step_units);
            c.progressHandshake(pass == 1 ? k : t + 2 * k, 3 * t, size_mb);
        }
        return true;
    }

    ReadOnlyDataContainer& c;
    const int pass;
    const bool report;
    const qint64 step_units;
    const int t;
    const int size_mb;
    qint64 next_report = -1;
};

struct ReadOnlyDataContainer::CountingPass {
    bool lineStart(qint64 unit) {
        ++lines;
        return progress.lineStart(unit);
    }
    bool fieldStart(qint64, qint64) { return true; }
    bool fieldEnd(qint64) { return true; }
    bool lineEnd(qint64, qint64 fields) {
        widest = std::max(widest, fields);
        return true;
    }

    ScanProgress progress;
    qint64 lines = 0;
    qint64 widest = 0;
};

// Cell numbers run over the rectangle of the first pass's counts. Fields past
// the widest line and lines past the counted ones can only appear when the
// file changed between the passes; they are left out, so that entry k always
// stands for cell k * stride.
struct ReadOnlyDataContainer::IndexingPass {
    bool lineStart(qint64 unit) {
        ++row;
        first = row * columns;
        return progress.lineStart(unit);
    }
    bool fieldStart(qint64 unit, qint64 column) {
        if (first + column == next_entry && column < columns && row < rows) {
            index.push_back({qint32(row), qint32(column), unit});
            next_entry += stride;
        }
        return true;
    }
    bool fieldEnd(qint64) { return true; }
    // The line's missing cells exist too; their entries point at its end.
    bool lineEnd(qint64 unit, qint64) {
        if (row >= rows) return true;
        for (; next_entry < first + columns; next_entry += stride)
            index.push_back({qint32(row), qint32(next_entry - first), unit});
        return true;
    }

    ScanProgress progress;
    std::vector<CellIndexEntry>& index;
    const qint64 rows;
    const qint64 columns;
    const qint64 stride;
    qint64 row = -1;
    qint64 first = -1; // number of the line's first cell
    qint64 next_entry = 0;
};

ReadOnlyDataContainer::ReadOnlyDataContainer(QObject* parent) : AbstractDataContainer(parent) {
    read_only = true;
}

ReadOnlyDataContainer::~ReadOnlyDataContainer() = default;

void ReadOnlyDataContainer::resetTable() {
    index = std::vector<CellIndexEntry>();
    row_count = 0;
    column_count = 0;
    row_map.clear();
    column_map.clear();
    row_map_active = false;
    column_map_active = false;
    window = Window();
}

template <class Walk> bool ReadOnlyDataContainer::withUnitMachine(Walk&& walk) const {
    const bool d = reading.delimiter != 0;
    const bool be = reading.big_endian;
    if (reading.width == 2) {
        if (be)
            return d ? walk.template operator()<2, true, true>()
                     : walk.template operator()<2, true, false>();
        return d ? walk.template operator()<2, false, true>()
                 : walk.template operator()<2, false, false>();
    }
    if (reading.width == 4) {
        if (be)
            return d ? walk.template operator()<4, true, true>()
                     : walk.template operator()<4, true, false>();
        return d ? walk.template operator()<4, false, true>()
                 : walk.template operator()<4, false, false>();
    }
    return d ? walk.template operator()<1, false, true>()
             : walk.template operator()<1, false, false>();
}

// One pass over the file from behind the byte order mark; false when the host
// stopped it (a cancel).
template <class Host>
bool ReadOnlyDataContainer::scan(Host& host, qint64 skip_units, qint64 chunk, char* buffer) {
    const int fd = file->handle();
    const int w = reading.width;
    auto run = [&](auto& scanner) {
        qint64 offset = skip_units * w;
        while (offset < file_size) {
            const qint64 want = std::min(chunk, file_size - offset);
            const qint64 got = preadFully(fd, buffer, want, offset);
            const qint64 units = got / w; // a trailing part of a unit is dropped
            if (units == 0) break;
            if (!scanner.feed(buffer, units, offset / w)) return false;
            offset += units * w;
            if (got < want) break; // the file shrank: its end is here
        }
        return scanner.finish(offset / w);
    };
    const bool quotes = reading.standard != DelimiterOnly;
    const char d = reading.delimiter;
    if (w == 1 && d == 0) {
        NarrowBoundaryScanner<false, Host> scanner(host, 0, false);
        return run(scanner);
    }
    if (w == 1 && NarrowBoundaryScanner<true, Host>::supportsDelimiter(d)) {
        NarrowBoundaryScanner<true, Host> scanner(host, d, quotes);
        return run(scanner);
    }
    return withUnitMachine([&]<int W, bool BE, bool D>() {
        CsvBoundaryMachine<W, BE, D, Host> machine(host, d, quotes);
        return run(machine);
    });
}

bool ReadOnlyDataContainer::loadCSV() {
    resetTable();
    has_bom = false;
    bom.clear();
    reading = {delimiter_load, parsing_standard, width, encodingIsBigEndian(encoding)};
    // Opened afresh by every scan, so that the offsets belong to the file
    // that the path names now.
    if (!file) file = std::make_unique<QFile>();
    file->close();
    file->setFileName(filepath_);
    error_text.clear();
    const int opened = openRegularFile(filepath_, error_text);
    if (opened < 0) return false;
    file->open(opened, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle);
    file_size = file->size();
    if (file_size == 0) {
        file->close();
        emit loadFinishedSignal();
        return true;
    }
    if (file_size >= csv::kProgressThreshold) startProgressHandshake();
    const int fd = file->handle();
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);

    // The mark belongs to no cell: both passes start behind it, so that the
    // first cell and a later save see what the editable store would.
    char head[4];
    const qint64 head_size = preadFully(fd, head, std::min<qint64>(file_size, 4), 0);
    const qint64 skip_units = detectBom(head, head_size, true) / width;

    qint64 chunk = std::min({file_size, std::max<qint64>(chunk_limit, width), kScanChunk});
    chunk = std::max<qint64>(chunk - chunk % width, width);
    const std::unique_ptr<char[]> buffer(new char[size_t(chunk)]);

    CountingPass counting{ScanProgress(*this, 1)};
    if (!scan(counting, skip_units, chunk, buffer.get())) {
        resetTable();
        return false;
    }
    // Row and column numbers are 32-bit; lines beyond that stay out of reach.
    row_count = int(std::min<qint64>(counting.lines, INT_MAX));
    column_count = int(std::min<qint64>(counting.widest, INT_MAX));

    const qint64 cells = qint64(row_count) * column_count;
    index.reserve(size_t((cells + index_stride - 1) / index_stride));
    IndexingPass indexing{ScanProgress(*this, 2), index, row_count, column_count, index_stride};
    if (!scan(indexing, skip_units, chunk, buffer.get())) {
        resetTable();
        return false;
    }
    emit loadFinishedSignal();
    return true;
}

// ---------------------------------------------------------------------------
// Reading cells

qint64 ReadOnlyDataContainer::entryOffset(qint64 k) const {
    return k < qint64(index.size()) ? index[size_t(k)].offset : dataEnd();
}

QByteArrayView ReadOnlyDataContainer::readBytes(Window& w, qint64 from, qint64 to,
                                                qint64 ahead) const {
    to = std::min(to, file_size);
    if (from >= to) return {};
    const qint64 held = w.bytes.size();
    if (from >= w.start && to <= w.start + held)
        return QByteArrayView(w.bytes).sliced(from - w.start, to - from);
    const qint64 want = std::min(std::max(to, from + ahead), file_size) - from;
    if (w.bytes.capacity() > kKeptWindow && want <= kKeptWindow) w.bytes = QByteArray();
    w.bytes.resize(want);
    const qint64 got =
        file && file->isOpen() ? preadFully(file->handle(), w.bytes.data(), want, from) : 0;
    w.bytes.resize(got);
    w.start = from;
    return QByteArrayView(w.bytes).first(std::min(got, to - from));
}

// Walks from an entry to one cell, noting where its raw field lies.
struct ReadOnlyDataContainer::FieldFinder {
    bool lineStart(qint64) { return ++row <= target_row; }
    bool fieldStart(qint64 unit, qint64 column) {
        if (column == target_column && row == target_row) begin = unit;
        return true;
    }
    bool fieldEnd(qint64 unit) {
        if (begin < 0) return true;
        end = unit;
        return false;
    }
    // The wanted row ended short of the column: the cell is missing.
    bool lineEnd(qint64, qint64) { return row < target_row; }

    qint64 row;
    const qint64 target_row;
    const qint64 target_column;
    qint64 begin = -1;
    qint64 end = -1;
};

QByteArrayView ReadOnlyDataContainer::rawField(Window& win, qint64 row, qint64 column,
                                               qint64 ahead) const {
    const qint64 k = (row * column_count + column) / index_stride;
    if (k >= qint64(index.size())) return {};
    const CellIndexEntry& e = index[size_t(k)];
    const qint64 from = e.offset;
    const qint64 to = entryOffset(k + 1);
    const int w = reading.width;
    qint64 len = std::min(to - from, kFirstRead / w);
    for (;;) {
        const QByteArrayView bytes = readBytes(win, from * w, (from + len) * w, ahead);
        const qint64 units = bytes.size() / w;
        // All of the stretch is here, or all that the file still holds.
        const bool whole = units < len || from + units >= to;
        FieldFinder finder{e.row, row, column};
        const bool decided = withUnitMachine([&]<int W, bool BE, bool D>() {
            CsvBoundaryMachine<W, BE, D, FieldFinder> machine(finder, reading.delimiter,
                                                              reading.standard != DelimiterOnly);
            machine.startInsideLine(e.column);
            if (!machine.feed(bytes.data(), units, from)) return true;
            if (!whole) return false;
            machine.finish(from + units);
            return true;
        });
        if (decided) {
            if (finder.end < 0) return {};
            return bytes.sliced((finder.begin - from) * w, (finder.end - finder.begin) * w);
        }
        len = std::min(to - from, len * 2);
    }
}

// Walks over one line from the entry of its first cell, noting every field.
struct ReadOnlyDataContainer::RowCollector {
    bool lineStart(qint64) { return ++row <= target_row; }
    bool fieldStart(qint64 unit, qint64 column) {
        if (row == target_row && column < qint64(spans.size())) {
            begin = unit;
            at = column;
        }
        return true;
    }
    bool fieldEnd(qint64 unit) {
        if (begin >= 0) spans[size_t(at)] = {begin, unit};
        begin = -1;
        return true;
    }
    bool lineEnd(qint64, qint64) { return row < target_row; }

    qint64 row;
    const qint64 target_row;
    std::vector<Span>& spans;
    qint64 begin = -1;
    qint64 at = 0;
};

// The raw fields of file line `row` as spans in units, one per column (empty
// for a missing cell); the returned pointer holds unit `base`.
const char* ReadOnlyDataContainer::rawRow(Window& win, qint64 row, std::vector<Span>& spans,
                                          qint64& base) const {
    spans.assign(size_t(column_count), Span{});
    base = 0;
    const qint64 first = row * column_count;
    const qint64 k = first / index_stride;
    if (row < 0 || row >= row_count || k >= qint64(index.size())) return nullptr;
    const CellIndexEntry& e = index[size_t(k)];
    const qint64 from = e.offset;
    const qint64 to = entryOffset((first + column_count - 1) / index_stride + 1);
    const int w = reading.width;
    const QByteArrayView bytes = readBytes(win, from * w, to * w, kReadAhead);
    const qint64 units = bytes.size() / w;
    RowCollector collector{e.row, row, spans};
    withUnitMachine([&]<int W, bool BE, bool D>() {
        CsvBoundaryMachine<W, BE, D, RowCollector> machine(collector, reading.delimiter,
                                                           reading.standard != DelimiterOnly);
        machine.startInsideLine(e.column);
        if (machine.feed(bytes.data(), units, from)) machine.finish(from + units);
        return true;
    });
    base = from;
    return bytes.data();
}

QByteArrayView ReadOnlyDataContainer::spanBytes(const char* p, qint64 base, const Span& s) const {
    if (!p || s.end <= s.begin) return {};
    const int w = reading.width;
    return QByteArrayView(p + (s.begin - base) * w, (s.end - s.begin) * w);
}

// The cell as this mode shows it. Unlike the reader of the editable store,
// quotes are judged on the raw field alone: "All Quotes" always strips the
// first and last unit, "RFC 4180" only a field of two units or more that
// begins and ends with a quote, and the other standards (and a file without
// delimiter, where quotes mean nothing) show the field as the file has it.
bool ReadOnlyDataContainer::appendShown(QByteArray& out, QByteArrayView field) const {
    const int w = reading.width;
    const char* raw = field.data();
    const qint64 n = field.size() / w;
    if (n == 0) return false;
    const bool be = reading.big_endian;
    auto code = [&](qint64 k) {
        const char* u = raw + k * w;
        uint32_t c = 0;
        for (int b = 0; b < w; ++b)
            c = (c << 8) | uint8_t(u[be ? b : w - 1 - b]);
        return c;
    };
    if (n == 1) {
        const uint32_t c = code(0);
        if (c == '\r' || c == '\n' || (w == 1 && c == 0x1E)) return false;
    }
    const bool strip = reading.delimiter != 0 &&
                       (reading.standard == AllQuotes || (reading.standard == Rfc4180 && n > 1 &&
                                                          code(0) == '"' && code(n - 1) == '"'));
    if (!strip) {
        out.append(raw, n * w);
        return false;
    }
    for (qint64 k = 1; k < n - 1; ++k) {
        out.append(raw + k * w, w);
        if (code(k) == '"' && k + 1 < n - 1 && code(k + 1) == '"') ++k;
    }
    return true;
}

int ReadOnlyDataContainer::fileRow(int shown) const {
    if (!row_map_active || shown < 0 || shown >= int(row_map.size())) return shown;
    const int r = row_map[size_t(shown)];
    return r >= 0 && r < row_count ? r : -1;
}

int ReadOnlyDataContainer::fileColumn(int shown) const {
    if (!column_map_active || shown < 0 || shown >= int(column_map.size())) return shown;
    const int c = column_map[size_t(shown)];
    return c >= 0 && c < column_count ? c : -1;
}

QByteArray ReadOnlyDataContainer::data(int row, int column, bool raw) const {
    // A column beyond the count would otherwise land in the next line.
    if (row < 0 || column < 0 || row >= row_count || column >= column_count) return {};
    if (!raw) {
        row = fileRow(row);
        column = fileColumn(column);
        if (row < 0 || column < 0) return {};
    }
    const QByteArrayView field = rawField(window, row, column, 0);
    QByteArray out;
    appendShown(out, field);
    return out;
}

int ReadOnlyDataContainer::columnCountOfRow(int row) const {
    return row >= 0 && row < row_count ? column_count : 0;
}

void ReadOnlyDataContainer::getRow(CellList& out, int row, SelectionMode mode,
                                   const IndexList& columns) const {
    out.clear();
    qint64 base = 0;
    const char* p = rawRow(window, row, row_spans, base);
    QByteArray shown;
    auto cell = [&](int c) {
        if (!p || c < 0 || c >= column_count) return Cell();
        shown.resize(0);
        const bool quoted = appendShown(shown, spanBytes(p, base, row_spans[size_t(c)]));
        Cell cell(shown.constData(), size_t(shown.size()));
        cell.setQuoted(quoted);
        return cell;
    };
    forEachChosen(column_count, mode, columns, [&](int i) { out.push_back(cell(i)); });
}

void ReadOnlyDataContainer::getColumn(CellList& out, int column, SelectionMode mode,
                                      const IndexList& rows) const {
    out.clear();
    QByteArray shown;
    auto cell = [&](int r) {
        if (r < 0 || r >= row_count || column < 0 || column >= column_count) return Cell();
        const QByteArrayView raw = rawField(window, r, column, kReadAhead);
        shown.resize(0);
        const bool quoted = appendShown(shown, raw);
        Cell cell(shown.constData(), size_t(shown.size()));
        cell.setQuoted(quoted);
        return cell;
    };
    forEachChosen(row_count, mode, rows, [&](int i) { out.push_back(cell(i)); });
}

bool ReadOnlyDataContainer::readFileColumn(
    int file_column, const std::function<bool(int, QByteArrayView)>& take) const {
    Window own;
    QByteArray shown;
    const bool inside = file_column >= 0 && file_column < column_count;
    for (int r = 0; r < row_count; ++r) {
        shown.resize(0);
        if (inside) appendShown(shown, rawField(own, r, file_column, kReadAhead));
        if (!take(r, shown)) return false;
    }
    return true;
}

bool ReadOnlyDataContainer::readFileRow(
    int file_row, const std::function<bool(int, QByteArrayView)>& take) const {
    Window own;
    std::vector<Span> spans;
    qint64 base = 0;
    const char* p =
        file_row >= 0 && file_row < row_count ? rawRow(own, file_row, spans, base) : nullptr;
    QByteArray shown;
    for (int c = 0; c < column_count; ++c) {
        shown.resize(0);
        if (p) appendShown(shown, spanBytes(p, base, spans[size_t(c)]));
        if (!take(c, shown)) return false;
    }
    return true;
}

// ---------------------------------------------------------------------------
// Writing

namespace {
int lastNonEmpty(const std::vector<qsizetype>& ends) {
    int n = int(ends.size());
    while (n > 0 && ends[size_t(n - 1)] == (n > 1 ? ends[size_t(n - 2)] : 0))
        --n;
    return n;
}
} // namespace

// The cells of shown line `row`, in shown column order, into line_bytes.
void ReadOnlyDataContainer::collectShownRow(int row) const {
    line_bytes.resize(0);
    line_ends.clear();
    line_quoted.clear();
    const int file_row = row >= 0 && row < row_count ? fileRow(row) : -1;
    if (file_row < 0) return;
    qint64 base = 0;
    const char* p = rawRow(window, file_row, row_spans, base);
    if (!p) return;
    for (int j = 0; j < column_count; ++j) {
        const int c = fileColumn(j);
        line_quoted.push_back(c >= 0 &&
                              appendShown(line_bytes, spanBytes(p, base, row_spans[size_t(c)])));
        line_ends.push_back(line_bytes.size());
    }
}

void ReadOnlyDataContainer::collectShownColumn(int column) const {
    line_bytes.resize(0);
    line_ends.clear();
    line_quoted.clear();
    const int file_column = column >= 0 && column < column_count ? fileColumn(column) : -1;
    for (int i = 0; i < row_count; ++i) {
        const int r = fileRow(i);
        bool quoted = false;
        if (r >= 0 && file_column >= 0) {
            const QByteArrayView raw = rawField(window, r, file_column, kReadAhead);
            quoted = appendShown(line_bytes, raw);
        }
        line_quoted.push_back(quoted);
        line_ends.push_back(line_bytes.size());
    }
}

void ReadOnlyDataContainer::rowToBytes(QByteArray& out, int row, SelectionMode mode,
                                       const IndexList& columns) const {
    out.resize(0);
    collectShownRow(row);
    // The editable store holds a loaded line up to its last non-empty cell;
    // the same count gives the same padding.
    const int n = lastNonEmpty(line_ends);
    const bool keep = keepsQuotes();
    lineWriter().appendLine(
        out, n, column_count, mode, columns, [this](int i) { return collectedCell(i); },
        line_ending,
        [&](int i) { return keep && i < int(line_quoted.size()) && line_quoted[size_t(i)]; });
}

bool ReadOnlyDataContainer::isOpenSource(quint64 device, quint64 inode) const {
    struct stat source {};
    return file && file->isOpen() && ::fstat(file->handle(), &source) == 0 &&
           quint64(source.st_dev) == device && quint64(source.st_ino) == inode;
}

void ReadOnlyDataContainer::rowToBytesWide(QByteArray& out, int row, SelectionMode mode,
                                           const IndexList& columns) const {
    rowToBytes(out, row, mode, columns);
}

void ReadOnlyDataContainer::columnToBytes(QByteArray& out, int column, SelectionMode mode,
                                          const IndexList& rows) const {
    out.resize(0);
    collectShownColumn(column);
    const int n = save_trailing_delimiters ? int(line_ends.size()) : lastNonEmpty(line_ends);
    const bool keep = keepsQuotes();
    lineWriter().appendLine(
        out, n, row_count, mode, rows, [this](int i) { return collectedCell(i); }, UnixLineEnding,
        [&](int i) { return keep && i < int(line_quoted.size()) && line_quoted[size_t(i)]; });
}

void ReadOnlyDataContainer::columnToBytesWide(QByteArray& out, int column, SelectionMode mode,
                                              const IndexList& rows) const {
    columnToBytes(out, column, mode, rows);
}

// ---------------------------------------------------------------------------
// Index maps and refusals

void ReadOnlyDataContainer::setRowMap(std::vector<int> map) {
    row_map = std::move(map);
    row_map_active = !row_map.empty();
}

void ReadOnlyDataContainer::setColumnMap(std::vector<int> map) {
    column_map = std::move(map);
    column_map_active = !column_map.empty();
}

bool ReadOnlyDataContainer::setCell(int, int, QByteArrayView) {
    return false;
}
bool ReadOnlyDataContainer::setRowCount(int) {
    return false;
}
bool ReadOnlyDataContainer::setColumnCount(int) {
    return false;
}
bool ReadOnlyDataContainer::clear() {
    return false;
}
void ReadOnlyDataContainer::setRow(int, CellList&& cells) {
    CellList().swap(cells);
}
void ReadOnlyDataContainer::setColumn(int, CellList&& cells) {
    CellList().swap(cells);
}
void ReadOnlyDataContainer::insertRow(int, CellList&& cells) {
    CellList().swap(cells);
}
void ReadOnlyDataContainer::insertColumn(int, CellList&& cells) {
    CellList().swap(cells);
}
bool ReadOnlyDataContainer::insertRows(int, int) {
    return false;
}
bool ReadOnlyDataContainer::insertColumns(int, int) {
    return false;
}
bool ReadOnlyDataContainer::removeRows(int, int) {
    return false;
}
bool ReadOnlyDataContainer::removeColumns(int, int) {
    return false;
}
