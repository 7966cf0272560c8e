#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

// Copies a few bytes with fixed-size moves that overlap instead of a library
// call: most cells are a few bytes, and the call dominated their copying.
inline void copySmallBytes(char* dst, const char* src, size_t size) noexcept {
    if (size >= 16) {
        std::memcpy(dst, src, size);
    } else if (size >= 8) {
        uint64_t a, b;
        std::memcpy(&a, src, 8);
        std::memcpy(&b, src + size - 8, 8);
        std::memcpy(dst, &a, 8);
        std::memcpy(dst + size - 8, &b, 8);
    } else if (size >= 4) {
        uint32_t a, b;
        std::memcpy(&a, src, 4);
        std::memcpy(&b, src + size - 4, 4);
        std::memcpy(dst, &a, 4);
        std::memcpy(dst + size - 4, &b, 4);
    } else if (size) {
        dst[0] = src[0];
        dst[size / 2] = src[size / 2];
        dst[size - 1] = src[size - 1];
    }
}

// The bytes of one cell, in the file's encoding, owned by the cell.
//
// Sixteen bytes in all: up to 15 bytes live inline and cost no allocation,
// which covers ids, numbers, dates and most words. Longer contents go to an
// exactly sized heap block. Byte 15 tells the two apart: its low five bits are
// the inline length, 0xFF marks a heap cell whose length sits in the lower 55
// bits of the second word.
//
// A cell also carries one bit the store hands out with it: whether the file
// had the cell in quotes. It rides along when cells move between rows (undo,
// column moves), and any new content drops it: a changed cell is quoted by the
// save dialect's rule alone. Equality looks at the bytes only. A zero-filled Cell is the empty
// cell, so arrays of cells can be grown with memset and moved with memcpy/realloc (the type is
// trivially relocatable by construction: no pointer into itself).
class Cell {
public:
    static constexpr int kInlineCapacity = 15;

    Cell() noexcept { clearRaw(); }
    explicit Cell(QByteArrayView bytes) { initFrom(bytes.data(), size_t(bytes.size())); }
    Cell(const char* bytes, size_t size) { initFrom(bytes, size); }
    Cell(const Cell& other) {
        initFrom(other.data(), other.size());
        setQuoted(other.isQuoted());
    }
    Cell(Cell&& other) noexcept {
        std::memcpy(raw_, other.raw_, sizeof raw_);
        other.clearRaw();
    }
    ~Cell() { release(); }

    Cell& operator=(const Cell& other) {
        if (this != &other) {
            assign(other.data(), other.size());
            setQuoted(other.isQuoted());
        }
        return *this;
    }
    Cell& operator=(Cell&& other) noexcept {
        if (this != &other) {
            release();
            std::memcpy(raw_, other.raw_, sizeof raw_);
            other.clearRaw();
        }
        return *this;
    }

    void assign(const char* bytes, size_t size) {
        // The source may alias our own heap block (self-assignment of a view).
        Cell fresh(bytes, size);
        *this = std::move(fresh);
    }
    void assign(QByteArrayView bytes) { assign(bytes.data(), size_t(bytes.size())); }

    bool isHeap() const noexcept { return uint8_t(raw_[15]) == kHeapTag; }
    size_t size() const noexcept {
        if (!isHeap()) return uint8_t(raw_[15]) & kInlineSizeMask;
        uint64_t word;
        std::memcpy(&word, raw_ + 8, 8);
        return size_t(word & kSizeMask);
    }
    bool isEmpty() const noexcept { return (uint8_t(raw_[15]) & kInlineSizeMask) == 0; }

    // Whether the file had this cell in quotes.
    bool isQuoted() const noexcept {
        if (!isHeap()) return uint8_t(raw_[15]) & kInlineQuoted;
        uint64_t word;
        std::memcpy(&word, raw_ + 8, 8);
        return word & kHeapQuoted;
    }
    void setQuoted(bool on) noexcept {
        if (!isHeap()) {
            raw_[15] = char((uint8_t(raw_[15]) & ~kInlineQuoted) | (on ? kInlineQuoted : 0));
            return;
        }
        uint64_t word;
        std::memcpy(&word, raw_ + 8, 8);
        word = (word & ~kHeapQuoted) | (on ? kHeapQuoted : 0);
        std::memcpy(raw_ + 8, &word, 8);
    }
    const char* data() const noexcept {
        if (!isHeap()) return raw_;
        const char* p;
        std::memcpy(&p, raw_, sizeof p);
        return p;
    }
    QByteArrayView view() const noexcept { return QByteArrayView(data(), qsizetype(size())); }
    QByteArray toByteArray() const { return QByteArray(data(), qsizetype(size())); }

    friend bool operator==(const Cell& a, const Cell& b) noexcept {
        size_t n = a.size();
        return n == b.size() && std::memcmp(a.data(), b.data(), n) == 0;
    }
    friend bool operator==(const Cell& a, QByteArrayView b) noexcept { return a.view() == b; }

    // Adopts a block from malloc of exactly `size` bytes; used by the parser
    // to avoid a second copy of long fields.
    static Cell adoptHeap(char* block, size_t size) noexcept {
        Cell c;
        c.setHeap(block, size);
        return c;
    }

private:
    static constexpr uint8_t kHeapTag = 0xFF;
    static constexpr uint8_t kInlineSizeMask = 0x1F;
    static constexpr uint8_t kInlineQuoted = 0x40;
    static constexpr uint64_t kHeapQuoted = uint64_t(1) << 55;
    static constexpr uint64_t kSizeMask = kHeapQuoted - 1;

    void clearRaw() noexcept { std::memset(raw_, 0, sizeof raw_); }
    void release() noexcept {
        if (isHeap()) std::free(const_cast<char*>(data()));
    }
    void setHeap(char* block, size_t size) noexcept {
        std::memcpy(raw_, &block, sizeof block);
        uint64_t word = uint64_t(size) | (uint64_t(kHeapTag) << 56);
        std::memcpy(raw_ + 8, &word, 8);
    }
    Q_ALWAYS_INLINE void initFrom(const char* bytes, size_t size) {
        if (size <= size_t(kInlineCapacity)) {
            clearRaw();
            copySmallBytes(raw_, bytes, size);
            raw_[15] = char(size);
            return;
        }
        initHeap(bytes, size);
    }
    Q_NEVER_INLINE void initHeap(const char* bytes, size_t size) {
        char* block = static_cast<char*>(std::malloc(size));
        if (!block) throw std::bad_alloc();
        std::memcpy(block, bytes, size);
        setHeap(block, size);
    }

    alignas(8) char raw_[16];
};

static_assert(sizeof(Cell) == 16, "a cell must stay two words");
