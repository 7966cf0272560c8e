#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstdint>
#include <vector>

// Which rows of a stored column hold text: bit r of word r / 64 for row r.
// Rows past the last word are empty. Block moves down a column read these
// instead of the rows, so that crossing millions of rows costs microseconds.
using FillBits = std::vector<uint64_t>;

namespace fillbits {

inline bool test(const FillBits& bits, qint64 row) {
    const size_t word = size_t(row >> 6);
    return word < bits.size() && (bits[word] >> (row & 63)) & 1;
}

inline void set(FillBits& bits, qint64 row, bool filled) {
    const size_t word = size_t(row >> 6);
    if (word >= bits.size()) {
        if (!filled) return;
        bits.resize(word + 1, 0);
    }
    const uint64_t bit = uint64_t(1) << (row & 63);
    bits[word] = filled ? bits[word] | bit : bits[word] & ~bit;
}

// Rows [first, last] all filled or all empty.
inline void setRange(FillBits& bits, qint64 first, qint64 last, bool filled) {
    if (last < first) return;
    if (size_t(last >> 6) >= bits.size()) {
        if (!filled)
            last = qint64(bits.size()) * 64 - 1;
        else
            bits.resize(size_t(last >> 6) + 1, 0);
    }
    for (qint64 r = first; r <= last;) {
        const size_t w = size_t(r >> 6);
        const int lo = int(r & 63);
        const int hi = int(std::min<qint64>(63, last - (qint64(w) << 6)));
        const uint64_t mask =
            (hi == 63 ? ~uint64_t(0) : ((uint64_t(1) << (hi + 1)) - 1)) & (~uint64_t(0) << lo);
        bits[w] = filled ? bits[w] | mask : bits[w] & ~mask;
        r = (qint64(w) + 1) << 6;
    }
}

// Bits [from, from + count) of `src`, 64 at a time.
inline uint64_t word(const FillBits& src, qint64 from) {
    const size_t w = size_t(from >> 6);
    const int shift = int(from & 63);
    const uint64_t lo = w < src.size() ? src[w] : 0;
    if (!shift) return lo;
    const uint64_t hi = w + 1 < src.size() ? src[w + 1] : 0;
    return (lo >> shift) | (hi << (64 - shift));
}

// Appends bits [from, from + count) of `src` to the `size` bits of `out`.
inline void appendRange(FillBits& out, qint64& size, const FillBits& src, qint64 from,
                        qint64 count) {
    if (count <= 0) return;
    out.resize(size_t((size + count + 63) >> 6), 0);
    qint64 done = 0;
    while (done < count) {
        const int take = int(std::min<qint64>(64 - ((size + done) & 63), count - done));
        uint64_t piece = word(src, from + done);
        if (take < 64) piece &= (uint64_t(1) << take) - 1;
        out[size_t((size + done) >> 6)] |= piece << ((size + done) & 63);
        done += take;
    }
    size += count;
}

// `count` empty rows opened at `at`.
inline void insert(FillBits& bits, qint64 at, qint64 count) {
    const qint64 n = qint64(bits.size()) * 64;
    if (at >= n || count <= 0) return;
    FillBits out((size_t(at) + 63) / 64, 0);
    qint64 size = 0;
    appendRange(out, size, bits, 0, at);
    size += count;
    appendRange(out, size, bits, at, n - at);
    bits.swap(out);
}

// Rows in the sorted, disjoint runs [start, start + length) taken out.
template <class Runs> void remove(FillBits& bits, const Runs& runs) {
    const qint64 n = qint64(bits.size()) * 64;
    FillBits out;
    out.reserve(bits.size());
    qint64 size = 0, from = 0;
    for (const auto& run : runs) {
        if (run.start >= n) break;
        appendRange(out, size, bits, from, run.start - from);
        from = run.start + run.length;
    }
    if (from < n) appendRange(out, size, bits, from, n - from);
    bits.swap(out);
}

// The bits of `src` laid over `dst` from row `offset` on.
inline void orAt(FillBits& dst, const FillBits& src, qint64 offset) {
    if (src.empty()) return;
    const qint64 count = qint64(src.size()) * 64;
    dst.resize(size_t((offset + count + 63) >> 6), 0);
    const int shift = int(offset & 63);
    const size_t base = size_t(offset >> 6);
    for (size_t k = 0; k < src.size(); ++k) {
        dst[base + k] |= src[k] << shift;
        if (shift && src[k] >> (64 - shift)) dst[base + k + 1] |= src[k] >> (64 - shift);
    }
}

} // namespace fillbits

// Gathers every column's fill bits while a reader stores rows in order. The
// 64-row word that rows are being added to stays in a small array that is
// hot in cache, one word a column; it goes to the columns when the rows
// leave it. Noting a cell is one OR.
class FillGatherer {
public:
    // The row's cells come next; rows arrive in order, from 0 or from
    // where reopen() said.
    Q_ALWAYS_INLINE void row(qint64 row, int cells) {
        if (Q_UNLIKELY((row >> 6) != group_)) moveTo(row >> 6);
        if (Q_UNLIKELY(size_t(cells) > pending_.size())) pending_.resize(size_t(cells), 0);
        bit_ = int(row & 63);
    }
    Q_ALWAYS_INLINE void note(int column, bool filled) {
        pending_[size_t(column)] |= uint64_t(filled) << bit_;
    }
    // For noting inside a loop that has the cells at hand: the row's bit
    // goes into words()[column].
    uint64_t* words() { return pending_.data(); }
    int bit() const { return bit_; }

    // Another gatherer's rows, which come after this one's at row `offset`;
    // the next row noted here is `next_row`.
    void append(FillGatherer& other, qint64 offset, qint64 next_row) {
        flush();
        other.flush();
        if (other.columns_.size() > columns_.size()) columns_.resize(other.columns_.size());
        for (size_t c = 0; c < other.columns_.size(); ++c)
            fillbits::orAt(columns_[c], other.columns_[c], offset);
        other.columns_.clear();
        reopen(next_row);
    }

    // The bits, one entry per column seen; the gatherer starts over.
    std::vector<FillBits> take() {
        flush();
        std::vector<FillBits> out;
        out.swap(columns_);
        for (FillBits& bits : out)
            bits.shrink_to_fit();
        pending_.clear();
        group_ = 0;
        return out;
    }

private:
    // The pending word goes to its columns, which then end at group_ + 1.
    void flush() {
        if (columns_.size() < pending_.size()) columns_.resize(pending_.size());
        for (size_t c = 0; c < pending_.size(); ++c) {
            FillBits& bits = columns_[c];
            if (bits.size() <= size_t(group_)) bits.resize(size_t(group_) + 1, 0);
            bits[size_t(group_)] |= pending_[c];
            pending_[c] = 0;
        }
    }
    void moveTo(qint64 group) {
        flush();
        group_ = group;
    }
    // Rows from `next_row` on are added to the words already there.
    void reopen(qint64 next_row) {
        group_ = next_row >> 6;
        if (pending_.size() < columns_.size()) pending_.resize(columns_.size(), 0);
        for (size_t c = 0; c < columns_.size(); ++c) {
            FillBits& bits = columns_[c];
            if (bits.size() > size_t(group_)) {
                pending_[c] = bits[size_t(group_)];
                bits[size_t(group_)] = 0;
            }
        }
    }

    std::vector<FillBits> columns_;
    std::vector<uint64_t> pending_;
    qint64 group_ = 0;
    int bit_ = 0;
};
