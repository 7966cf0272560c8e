#pragma once

#include "cell.h"
#include "relocatablevector.h"

#include <QByteArrayView>
#include <QtGlobal>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

// One stored row as a single heap block, its handle one pointer.
//
// A row of short cells held as separate 16-byte cells costs several times
// its bytes in the file; packed, it costs its bytes plus one offset per cell.
// The block is
//
//   flags   1 byte: bits 0-1 the offset width w (1, 2, 4 or 8 bytes), bit 2
//           set when the row carries quote marks
//   count   w bytes: stored cells (the row's stored size)
//   total   w bytes: bytes of all cells together
//   marked  w bytes, only with marks: positions the mark bits cover
//   data    the cells' bytes back to back
//   ends    count offsets of w bytes, cell i ending at ends[i] in data
//   marks   one bit per position, only with marks
//   slack   up to 16 bytes, so that 16 bytes can be read from the start of
//           any cell (the save's vector copy of short cells)
//
// w is the narrowest width that holds count, total and marked: one byte per
// cell for rows under 256 bytes. A cell is found in O(1) from two offsets.
//
// Marks say which positions the file had in quotes. They may reach beyond
// the stored cells: a quoted empty field at the end of a line stores no cell,
// yet its quotes are remembered. A row without marks pays nothing for them.
//
// The null handle is a stored row of no cells; an all-zero handle being valid
// and the block owning no pointer lets RelocatableVector move handles by
// memcpy/realloc.
class PackedRow {
public:
    PackedRow() noexcept = default;
    PackedRow(const PackedRow& other) : block_(other.block_ ? other.clone() : nullptr) {}
    PackedRow(PackedRow&& other) noexcept : block_(other.block_) { other.block_ = nullptr; }
    ~PackedRow() { std::free(block_); }
    PackedRow& operator=(const PackedRow& other) {
        if (this != &other) *this = PackedRow(other);
        return *this;
    }
    PackedRow& operator=(PackedRow&& other) noexcept {
        if (this != &other) {
            std::free(block_);
            block_ = other.block_;
            other.block_ = nullptr;
        }
        return *this;
    }

    bool isNull() const noexcept { return block_ == nullptr; }
    int size() const noexcept { return block_ ? int(field(0)) : 0; }

    // Column walks touch one block per row; asking for the next rows' memory
    // ahead of time keeps them from waiting on each block in turn. The first
    // call brings the header, the second (once the header is near) the end
    // offset of cell i.
    void prefetchHeader() const noexcept {
        if (block_) __builtin_prefetch(block_);
    }
    void prefetchEnd(int i) const noexcept {
        if (!block_ || i >= size()) return;
        const unsigned w = width();
        const size_t total = size_t(field(1));
        __builtin_prefetch(block_ + 1 + ((block_[0] & kMarksFlag) ? 3 : 2) * w + total +
                           size_t(i) * w);
    }

    // Cell i, 0 <= i < size().
    Q_ALWAYS_INLINE QByteArrayView cell(int i) const noexcept {
        switch (block_[0] & kWidthMask) {
        case 0:
            return cellAt<uint8_t>(i);
        case 1:
            return cellAt<uint16_t>(i);
        case 2:
            return cellAt<uint32_t>(i);
        default:
            return cellAt<uint64_t>(i);
        }
    }
    size_t cellSize(int i) const noexcept { return size_t(cell(i).size()); }
    // Every cell's bytes back to back, with no separator: a search can pass
    // over a row that lacks a text without looking at its cells.
    QByteArrayView data() const noexcept {
        if (!block_) return {};
        return QByteArrayView(reinterpret_cast<const char*>(block_ + headerBytes()),
                              qsizetype(field(1)));
    }
    bool isEmptyAt(int i) const noexcept { return i >= size() || cell(i).isEmpty(); }

    bool hasMarks() const noexcept { return block_ && (block_[0] & kMarksFlag); }
    // Positions the marks cover; 0 without marks.
    int markedSize() const noexcept { return hasMarks() ? int(field(2)) : 0; }
    // Whether the file had position i in quotes; any i >= 0.
    bool isQuoted(int i) const noexcept {
        if (!hasMarks() || i >= markedSize()) return false;
        const uint8_t* m = marksStart();
        return (m[i >> 3] >> (i & 7)) & 1;
    }

    // One past the last non-empty cell.
    int columnCount() const noexcept {
        for (int c = size(); c > 0; --c)
            if (!cell(c - 1).isEmpty()) return c;
        return 0;
    }

    // The cell as it is handed out of the store, quote mark included.
    Cell cellCopy(int i) const {
        Cell c = i < size() ? Cell(cell(i)) : Cell();
        if (isQuoted(i)) c.setQuoted(true);
        return c;
    }

    // New bytes of the same length into cell i, in place; drops its mark.
    // The bytes may overlap the row's own.
    void overwrite(int i, const char* bytes) noexcept {
        const QByteArrayView c = cell(i);
        if (!c.isEmpty()) std::memmove(const_cast<char*>(c.data()), bytes, size_t(c.size()));
        clearMark(i);
    }
    void clearMark(int i) noexcept {
        if (!isQuoted(i)) return;
        uint8_t* m = const_cast<uint8_t*>(marksStart());
        m[i >> 3] &= uint8_t(~(1u << (i & 7)));
    }

    size_t blockBytes() const noexcept;

    // Cell i (< size()) becomes `bytes` of another length in the block
    // itself, growing it with realloc when the allocator has no room left
    // in it; the mark of i is dropped. False, with the row untouched, when
    // the new bytes would need wider offsets: the caller rebuilds the row.
    // Typing into a selected column rewrites every row's cell at each
    // keystroke, and this keeps that to a move of the row's tail.
    bool replaceCell(int i, QByteArrayView bytes);
    // Positions [from, to) taken out in the block itself, cells and quote
    // marks, those after them moving down; the block keeps its room. A
    // column removed from millions of rows and put back then costs no
    // allocation at all.
    void eraseCells(int from, int to);
    // `n` cells put in before cell `at` (at most size()), marks after them
    // moving up, growing the block when it lacks room. `quoted`, when given,
    // marks the new cells: quoted[j] for cells[j]. False, with the row
    // untouched, when the offsets would have to widen, or when a new cell is
    // quoted in a row that has no marks yet: the caller rebuilds it.
    bool insertCells(int at, const QByteArrayView* cells, int n, const char* quoted = nullptr);

private:
    friend class PackedRowBuilder;
    static constexpr uint8_t kWidthMask = 3;
    static constexpr uint8_t kMarksFlag = 4;
    static constexpr size_t kSlack = 16;

    explicit PackedRow(uint8_t* block) noexcept : block_(block) {}

    template <class T> static T load(const uint8_t* p) noexcept {
        T v;
        std::memcpy(&v, p, sizeof v);
        return v;
    }
    unsigned width() const noexcept { return 1u << (block_[0] & kWidthMask); }
    // Header field k: 0 count, 1 total, 2 marked.
    uint64_t field(int k) const noexcept {
        const uint8_t* p = block_ + 1 + k * width();
        switch (block_[0] & kWidthMask) {
        case 0:
            return *p;
        case 1:
            return load<uint16_t>(p);
        case 2:
            return load<uint32_t>(p);
        default:
            return load<uint64_t>(p);
        }
    }
    size_t headerBytes() const noexcept { return 1 + width() * ((block_[0] & kMarksFlag) ? 3 : 2); }
    const uint8_t* marksStart() const noexcept {
        return block_ + headerBytes() + size_t(field(1)) + size_t(field(0)) * width();
    }
    template <class T> Q_ALWAYS_INLINE QByteArrayView cellAt(int i) const noexcept {
        const uint8_t* h = block_ + 1;
        const size_t total = load<T>(h + sizeof(T));
        const uint8_t* data = h + ((block_[0] & kMarksFlag) ? 3 : 2) * sizeof(T);
        const uint8_t* ends = data + total;
        const size_t end = load<T>(ends + size_t(i) * sizeof(T));
        const size_t start = i ? size_t(load<T>(ends + size_t(i - 1) * sizeof(T))) : 0;
        return QByteArrayView(reinterpret_cast<const char*>(data + start), qsizetype(end - start));
    }
    uint8_t* clone() const {
        const size_t n = blockBytes();
        auto* b = static_cast<uint8_t*>(std::malloc(n));
        if (!b) throw std::bad_alloc();
        std::memcpy(b, block_, n);
        return b;
    }

    uint8_t* block_ = nullptr;
};

static_assert(sizeof(PackedRow) == sizeof(void*), "a row handle is one pointer");

// Gathers a row's cells and marks, then makes its block. Reused from row to
// row, so that gathering allocates nothing once its buffers have grown.
class PackedRowBuilder {
public:
    PackedRowBuilder() = default;
    PackedRowBuilder(const PackedRowBuilder&) = delete;
    PackedRowBuilder& operator=(const PackedRowBuilder&) = delete;
    ~PackedRowBuilder() { std::free(data_); }

    void clear() noexcept {
        size_ = 0;
        ends_.clear();
        marks_.clear();
        marked_ = 0;
    }
    int size() const noexcept { return ends_.size(); }
    size_t bytes() const noexcept { return size_; }
    bool filledAt(int i) const noexcept { return ends_[i] != (i ? ends_[i - 1] : 0); }
    void swap(PackedRowBuilder& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(capacity_, other.capacity_);
        std::swap(ends_, other.ends_);
        marks_.swap(other.marks_);
        std::swap(marked_, other.marked_);
    }

    Q_ALWAYS_INLINE void append(const char* p, size_t n) {
        if (Q_UNLIKELY(capacity_ - size_ < n)) grow(n);
        copySmallBytes(data_ + size_, p, n);
        size_ += n;
        ends_.emplace_back(size_);
    }
    void append(QByteArrayView v) { append(v.data(), size_t(v.size())); }
    // As append, for bytes that may be read 16 at a time from `p`: a short
    // cell is then one fixed-size move, with no branch on its length.
    Q_ALWAYS_INLINE void appendPadded(const char* p, size_t n) {
        if (Q_UNLIKELY(capacity_ - size_ < n + 16)) grow(n + 16);
        if (Q_LIKELY(n <= 16))
            std::memcpy(data_ + size_, p, 16);
        else
            std::memcpy(data_ + size_, p, n);
        size_ += n;
        ends_.emplace_back(size_);
    }
    // Gaps in a line are mostly a single missing cell.
    Q_ALWAYS_INLINE void appendEmpty(int count) {
        for (int i = 0; i < count; ++i)
            ends_.emplace_back(size_);
    }
    // Drops the cells from position n on (their marks stay).
    void truncate(int n) {
        if (n >= size()) return;
        size_ = n ? size_t(ends_[n - 1]) : 0;
        ends_.resize(n);
    }
    // Cell i (< size()) becomes [p, p + n); p must not point into the builder.
    void replace(int i, const char* p, size_t n) {
        const size_t start = i ? size_t(ends_[i - 1]) : 0;
        const size_t end = size_t(ends_[i]);
        if (n > end - start && capacity_ - size_ < n - (end - start)) grow(n - (end - start));
        std::memmove(data_ + start + n, data_ + end, size_ - end);
        if (n) std::memcpy(data_ + start, p, n);
        const uint64_t delta = uint64_t(n) - uint64_t(end - start); // modular
        size_ += size_t(delta);
        for (int k = i; k < ends_.size(); ++k)
            ends_[k] += delta;
    }
    // Cells [from, to) of a row, appended; marks are copied separately.
    void appendCells(const PackedRow& row, int from, int to) {
        for (int i = from; i < to; ++i)
            append(row.cell(i));
    }

    void mark(int position) {
        const size_t word = size_t(position) >> 6;
        if (word >= marks_.size()) marks_.resize(word + 1, 0);
        marks_[word] |= uint64_t(1) << (position & 63);
        marked_ = std::max(marked_, position + 1);
    }
    void unmark(int position) {
        const size_t word = size_t(position) >> 6;
        if (word < marks_.size()) marks_[word] &= ~(uint64_t(1) << (position & 63));
    }
    bool isMarked(int position) const {
        const size_t word = size_t(position) >> 6;
        return word < marks_.size() && (marks_[word] >> (position & 63)) & 1;
    }
    // The row's marks on positions [from, to), each moved by `shift`.
    void copyMarks(const PackedRow& row, int from, int to, int shift) {
        if (!row.hasMarks()) return;
        to = std::min(to, row.markedSize());
        for (int i = std::max(from, 0); i < to; ++i)
            if (row.isQuoted(i)) mark(i + shift);
    }

    // The block for what was gathered; the null row when there is nothing.
    PackedRow build() const;

    // The row of a line's unquoted fields, as appending them one by one and
    // building would make it: field k ends at line[stops[k]] and starts one
    // past the previous end (at 0 for the first). `readable` bytes from
    // `line` on may be read. Whether each stored field holds bytes is ORed
    // into bit `fill_bit` of fill[k] while the field is at hand, for the
    // columns' fill bits.
    static PackedRow fromLine(const char* line, const uint32_t* stops, int fields, size_t readable,
                              uint64_t* fill, int fill_bit);
    // The same where bit k of `quoted` says field k (k < 64) is in quotes
    // with none inside: its cell is what lies between them, and it is marked.
    static PackedRow fromQuotedLine(const char* line, const uint32_t* stops, int fields,
                                    uint64_t quoted, size_t readable, uint64_t* fill, int fill_bit);

private:
    Q_NEVER_INLINE void grow(size_t n);
    template <class T> PackedRow buildWith() const;
    template <class T>
    static PackedRow fromLineWith(const char* line, const uint32_t* stops, int count, size_t total,
                                  size_t readable, uint64_t* fill, int fill_bit);
    template <class T>
    static PackedRow fromQuotedLineWith(const char* line, const uint32_t* stops, int count,
                                        uint64_t quoted, int marked, size_t total, size_t readable,
                                        uint64_t* fill, int fill_bit);

    char* data_ = nullptr;
    size_t size_ = 0;
    size_t capacity_ = 0;
    RelocatableVector<uint64_t> ends_; // the per-field path inlines its growth check
    std::vector<uint64_t> marks_;
    int marked_ = 0; // one past the highest position ever marked
};
