#include "abstractdatacontainer.h"

#include "csvlinewriter.h"
#include "fileparameters.h"
#include "filereplacement.h"

#include <QDir>
#include <QFile>
#include <QMutex>
#include <QThread>
#include <QWaitCondition>

#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <thread>
#include <unistd.h>

IndexList AbstractDataContainer::emptyRows(int, SelectionMode, const IndexList&) const {
    return {};
}
IndexList AbstractDataContainer::emptyColumns(int, SelectionMode, const IndexList&) const {
    return {};
}
bool AbstractDataContainer::setCell(int, int, QByteArrayView) {
    return false;
}
bool AbstractDataContainer::setRowCount(int) {
    return false;
}
bool AbstractDataContainer::setColumnCount(int) {
    return false;
}
void AbstractDataContainer::getRow(CellList& out, int, SelectionMode, const IndexList&) const {
    out.clear();
}
void AbstractDataContainer::getColumn(CellList& out, int, SelectionMode, const IndexList&) const {
    out.clear();
}
void AbstractDataContainer::setRow(int, CellList&&) {}
void AbstractDataContainer::setColumn(int, CellList&&) {}
void AbstractDataContainer::insertRow(int, CellList&&) {}
void AbstractDataContainer::insertColumn(int, CellList&&) {}
void AbstractDataContainer::insertRowList(int, std::vector<CellList>&&) {}
void AbstractDataContainer::insertColumnList(int, std::vector<CellList>&&) {}
bool AbstractDataContainer::insertRows(int, int) {
    return false;
}
bool AbstractDataContainer::insertColumns(int, int) {
    return false;
}
bool AbstractDataContainer::removeRows(int, int) {
    return false;
}
bool AbstractDataContainer::removeColumns(int, int) {
    return false;
}
void AbstractDataContainer::copyRow(int, int) {}
void AbstractDataContainer::copyColumn(int, int) {}

int AbstractDataContainer::detectBom(const char* buffer, qint64 size, bool store) {
    const qsizetype n = bomLengthAtStart(QByteArrayView(buffer, size), encoding);
    if (n > 0 && store) {
        bom = QByteArray(buffer, n);
        has_bom = true;
    }
    return int(n);
}

void AbstractDataContainer::startProgressHandshake() {
    if (!mutex || !wait_condition) {
        emit startProgressUpdateSignal();
        return;
    }
    mutex->lock();
    emit startProgressUpdateSignal();
    wait_condition->wait(mutex, 1);
    QThread::msleep(500);
    mutex->unlock();
}

void AbstractDataContainer::progressHandshake(int curr, int total, int filesize_mb) {
    if (!mutex || !wait_condition) {
        emit loadProgressUpdateSignal(curr, total, filesize_mb);
        return;
    }
    mutex->lock();
    emit loadProgressUpdateSignal(curr, total, filesize_mb);
    wait_condition->wait(mutex, 1);
    mutex->unlock();
}

bool AbstractDataContainer::saveAs(const QString& path, bool keep_backup, bool transposed,
                                   const IndexList& hidden_rows, const IndexList& hidden_columns) {
    filepath_ = path; // kept even when the save fails; callers rely on it
    return save(keep_backup, transposed, hidden_rows, hidden_columns);
}

namespace {

// Writes through large buffers and a plain descriptor: a row is a few dozen
// bytes, and per-row calls into QIODevice cost more than the copy. Two
// buffers take turns: a writer thread hands one to the kernel while the
// caller formats rows into the other, so a save costs about the larger of
// the two instead of their sum.
//
// Where the file system allows it the descriptor is opened for direct
// transfer: the bytes go from an aligned staging buffer to the disk without
// passing through the page cache. Filling half a gigabyte of fresh cache
// pages was most of a large save's time, and varied twofold between runs.
class BatchWriter {
public:
    // `direct`: the descriptor has O_DIRECT. Without it, since every save is
    // synced at the end, buffered pages are handed to the disk batch by
    // batch, so that the final sync has little left to wait for.
    BatchWriter(int fd, bool direct) : fd_(fd), direct_(direct) {
        current_.reserve(kBatch + 65536);
        pending_.reserve(kBatch + 65536);
        if (direct_) {
            staging_ = static_cast<char*>(std::aligned_alloc(kBlock, kStaging));
            if (!staging_) throw std::bad_alloc();
        }
        thread_ = std::thread([this] { run(); });
    }
    ~BatchWriter() {
        finish();
        std::free(staging_);
    }
    BatchWriter(const BatchWriter&) = delete;
    BatchWriter& operator=(const BatchWriter&) = delete;

    SaveBuffer& batch() { return current_; }
    bool maybeFlush() { return current_.size() < kBatch ? !failed_.load() : handOff(); }
    // The errno value of the first failed write, 0 when none failed.
    int error() const { return error_.load(); }
    // Writes what is left and waits for the writer; false on any write error.
    bool flush() {
        if (!current_.empty()) handOff();
        finish();
        if (!failed_.load() && !writeTail()) failed_ = true;
        return !failed_.load();
    }

private:
    static constexpr size_t kBatch = 4 * 1024 * 1024;
    static constexpr size_t kBlock = 4096; // covers every device's direct-transfer unit
    static constexpr size_t kStaging = 4 * 1024 * 1024;

    bool handOff() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !pending_ready_; });
        std::swap(current_, pending_);
        current_.clear();
        pending_ready_ = true;
        changed_.notify_all();
        return !failed_.load();
    }
    void finish() {
        if (!thread_.joinable()) return;
        {
            std::lock_guard lock(mutex_);
            done_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    void run() {
        for (;;) {
            {
                std::unique_lock lock(mutex_);
                changed_.wait(lock, [this] { return pending_ready_ || done_; });
                if (!pending_ready_) return;
            }
            // The caller leaves `pending_` alone until it is handed back.
            if (!failed_.load() && !writeBatch(pending_.data(), pending_.size())) failed_ = true;
            std::lock_guard lock(mutex_);
            pending_ready_ = false;
            changed_.notify_all();
        }
    }
    bool writeBatch(const char* p, size_t n) {
        logical_size_ += n;
        if (direct_) {
            // Whole blocks go out; the rest waits at the start of the staging
            // buffer for the next batch.
            while (n > 0) {
                const size_t take = std::min(n, kStaging - carry_);
                std::memcpy(staging_ + carry_, p, take);
                carry_ += take;
                p += take;
                n -= take;
                const size_t whole = carry_ & ~(kBlock - 1);
                if (whole == 0) continue;
                if (!writeAll(staging_, whole)) return false;
                std::memmove(staging_, staging_ + whole, carry_ - whole);
                carry_ -= whole;
            }
            return true;
        }
        const off64_t at = off64_t(logical_size_ - n);
        if (!writeAll(p, n)) return false;
#if defined(__linux__)
        ::sync_file_range(fd_, at, off64_t(n), SYNC_FILE_RANGE_WRITE);
#endif
        return true;
    }
    // The last part block of a direct save goes out padded, and the file is
    // then cut to its true length.
    bool writeTail() {
        if (!direct_ || carry_ == 0) return true;
        const size_t padded = (carry_ + kBlock - 1) & ~(kBlock - 1);
        std::memset(staging_ + carry_, 0, padded - carry_);
        carry_ = 0;
        if (!writeAll(staging_, padded)) return false;
        if (::ftruncate(fd_, off_t(logical_size_)) == 0) return true;
        noteError(errno);
        return false;
    }
    bool writeAll(const char* p, size_t left) {
        while (left > 0) {
            const ssize_t n = ::write(fd_, p, left);
            if (n < 0) {
                if (errno == EINTR) continue;
                // A file system may open for direct transfer and still refuse
                // it; the rest then goes through the page cache.
                if (errno == EINVAL && direct_ && dropDirect()) continue;
                noteError(errno);
                return false;
            }
            p += n;
            left -= size_t(n);
        }
        return true;
    }
    void noteError(int error) {
        int none = 0;
        error_.compare_exchange_strong(none, error);
    }
    bool dropDirect() {
#if defined(O_DIRECT)
        const int flags = ::fcntl(fd_, F_GETFL);
        if (flags < 0 || !(flags & O_DIRECT)) return false;
        return ::fcntl(fd_, F_SETFL, flags & ~O_DIRECT) == 0;
#else
        return false;
#endif
    }

    int fd_;
    bool direct_;
    size_t logical_size_ = 0;
    char* staging_ = nullptr;
    size_t carry_ = 0;
    SaveBuffer current_;
    SaveBuffer pending_;
    std::mutex mutex_;
    std::condition_variable changed_;
    bool pending_ready_ = false;
    bool done_ = false;
    std::atomic<bool> failed_{false};
    std::atomic<int> error_{0};
    std::thread thread_;
};

} // namespace

void AbstractDataContainer::appendRowForSave(SaveBuffer& out, const CsvLineWriter&, int row,
                                             const IndexList& hidden_columns) const {
    QByteArray line;
    rowToBytes(line, row, Except, hidden_columns);
    out.append(line.constData(), size_t(line.size()));
}

CsvLineWriter AbstractDataContainer::lineWriter() const {
    return CsvLineWriter(delimiter_save, parsing_standard, save_trailing_delimiters, width,
                         encodingIsBigEndian(encoding));
}

bool AbstractDataContainer::save(bool, bool transposed, const IndexList& hidden_rows,
                                 const IndexList& hidden_columns) {
    error_text.clear();
    FileReplacement out(filepath_);
    if (!out.open(true)) {
        error_text = out.errorString();
        return false;
    }
    if (out.byCopy() &&
        isOpenSource(quint64(out.original().st_dev), quint64(out.original().st_ino))) {
        error_text = tr("%1 has to be written in place (it has another name, or an owner that "
                        "cannot be kept), and it is open read-only from that same file.")
                         .arg(QDir::toNativeSeparators(out.targetPath()));
        return false;
    }

    bool ok = true;
    int write_error = 0;
    try {
        BatchWriter writer(out.handle(), out.isDirect());
        // A mark survives as long as the encoding still fits it.
        if (has_bom && !bom.isEmpty() && bomMatchesEncoding(bom, encoding))
            writer.batch().append(bom.constData(), size_t(bom.size()));

        const CsvLineWriter line_writer = lineWriter();
        QByteArray line;
        if (!transposed) {
            const int n = storedLineCount();
            size_t h = 0;
            for (int row = 0; row < n && ok; ++row) {
                while (h < hidden_rows.size() && hidden_rows[h] < row)
                    ++h;
                if (h < hidden_rows.size() && hidden_rows[h] == row) continue;
                appendRowForSave(writer.batch(), line_writer, row, hidden_columns);
                ok = writer.maybeFlush();
            }
        } else {
            const int n = columnCount();
            size_t h = 0;
            for (int column = 0; column < n && ok; ++column) {
                while (h < hidden_columns.size() && hidden_columns[h] < column)
                    ++h;
                if (h < hidden_columns.size() && hidden_columns[h] == column) continue;
                columnToBytes(line, column, All, hidden_columns);
                writer.batch().append(line.constData(), size_t(line.size()));
                ok = writer.maybeFlush();
            }
        }
        ok = ok && writer.flush();
        write_error = writer.error();
    } catch (const std::exception&) {
        error_text = tr("Not enough memory to save %1.").arg(QDir::toNativeSeparators(filepath_));
        return false; // the temporary file goes with `out`; the old file is intact
    }
    if (!ok) {
        error_text = tr("Cannot write %1: %2")
                         .arg(QDir::toNativeSeparators(out.temporaryPath()),
                              qt_error_string(write_error ? write_error : EIO));
        return false;
    }
    if (!out.commit()) {
        error_text = out.errorString();
        return false;
    }
    return true;
}
