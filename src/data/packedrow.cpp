#include "packedrow.h"

#include <climits>
#include <malloc.h>

namespace {

uint64_t getEnd(const uint8_t* p, size_t w) {
    switch (w) {
    case 1:
        return *p;
    case 2: {
        uint16_t v;
        std::memcpy(&v, p, 2);
        return v;
    }
    case 4: {
        uint32_t v;
        std::memcpy(&v, p, 4);
        return v;
    }
    default: {
        uint64_t v;
        std::memcpy(&v, p, 8);
        return v;
    }
    }
}

void putEnd(uint8_t* p, size_t w, uint64_t v) {
    switch (w) {
    case 1:
        *p = uint8_t(v);
        break;
    case 2: {
        const auto t = uint16_t(v);
        std::memcpy(p, &t, 2);
        break;
    }
    case 4: {
        const auto t = uint32_t(v);
        std::memcpy(p, &t, 4);
        break;
    }
    default:
        std::memcpy(p, &v, 8);
    }
}

} // namespace

size_t PackedRow::blockBytes() const noexcept {
    if (!block_) return 0;
    const size_t w = width();
    const size_t count = size_t(field(0));
    const size_t total = size_t(field(1));
    const size_t marked = size_t(markedSize());
    const size_t tail = count * w + (marked + 7) / 8;
    return headerBytes() + total + std::max(tail, kSlack);
}

void PackedRowBuilder::grow(size_t n) {
    size_t capacity = std::max({capacity_ * 2, size_ + n, size_t(256)});
    void* block = std::realloc(data_, capacity);
    if (!block) throw std::bad_alloc();
    data_ = static_cast<char*>(block);
    capacity_ = capacity;
}

template <class T> PackedRow PackedRowBuilder::buildWith() const {
    int marked = std::min(marked_, int(marks_.size() * 64));
    while (marked > 0 && !isMarked(marked - 1))
        --marked;
    const size_t count = size_t(ends_.size());
    const size_t w = sizeof(T);
    const size_t header = 1 + w * (marked ? 3 : 2);
    const size_t mark_bytes = (size_t(marked) + 7) / 8;
    const size_t tail = count * w + mark_bytes;
    const size_t bytes = header + size_ + std::max(tail, PackedRow::kSlack);
    auto* b = static_cast<uint8_t*>(std::malloc(bytes));
    if (!b) throw std::bad_alloc();

    b[0] = uint8_t((w == 1   ? 0
                    : w == 2 ? 1
                    : w == 4 ? 2
                             : 3) |
                   (marked ? PackedRow::kMarksFlag : 0));
    auto put = [](uint8_t* p, uint64_t v) {
        const T t = T(v);
        std::memcpy(p, &t, sizeof t);
    };
    put(b + 1, count);
    put(b + 1 + w, size_);
    if (marked) put(b + 1 + 2 * w, uint64_t(marked));
    uint8_t* data = b + header;
    if (size_) std::memcpy(data, data_, size_);
    uint8_t* ends = data + size_;
    for (size_t i = 0; i < count; ++i)
        put(ends + i * w, ends_[int(i)]);
    uint8_t* m = ends + count * w;
    for (size_t k = 0; k < mark_bytes; ++k)
        m[k] = uint8_t(marks_[k >> 3] >> ((k & 7) * 8));
    // The slack is never read for its value, only over; zero keeps it tidy.
    if (tail < PackedRow::kSlack) std::memset(ends + tail, 0, PackedRow::kSlack - tail);
    return PackedRow(b);
}

PackedRow PackedRowBuilder::build() const {
    const bool marked = marked_ > 0 && std::any_of(marks_.begin(), marks_.end(),
                                                   [](uint64_t word) { return word != 0; });
    if (ends_.empty() && !marked) return PackedRow();
    // The offsets' width covers the count, the bytes and the marked positions.
    const uint64_t largest =
        std::max<uint64_t>({uint64_t(size_), uint64_t(ends_.size()), uint64_t(marked_)});
    if (largest <= UINT8_MAX) return buildWith<uint8_t>();
    if (largest <= UINT16_MAX) return buildWith<uint16_t>();
    if (largest <= UINT32_MAX) return buildWith<uint32_t>();
    return buildWith<uint64_t>();
}

template <class T>
PackedRow PackedRowBuilder::fromLineWith(const char* line, const uint32_t* stops, int count,
                                         size_t total, size_t readable, uint64_t* fill,
                                         int fill_bit) {
    const size_t w = sizeof(T);
    const size_t header = 1 + 2 * w;
    const size_t tail = size_t(count) * w;
    auto* b =
        static_cast<uint8_t*>(std::malloc(header + total + std::max(tail, PackedRow::kSlack)));
    if (!b) throw std::bad_alloc();
    b[0] = uint8_t(w == 1 ? 0 : w == 2 ? 1 : w == 4 ? 2 : 3);
    const T header_fields[2] = {T(count), T(total)};
    std::memcpy(b + 1, header_fields, sizeof header_fields);
    uint8_t* data = b + header;
    // Field k lands k delimiters before its place in the line. A short field
    // is one 16-byte move whatever its length; what it writes past the field
    // is overwritten by the next field or the offsets, or falls in the slack.
    size_t begin = 0;
    for (int k = 0; k < count; ++k) {
        const size_t end = stops[k];
        const size_t n = end - begin;
        fill[k] |= uint64_t(n != 0) << fill_bit;
        uint8_t* to = data + begin - size_t(k);
        if (Q_LIKELY(n <= 16 && begin + 16 <= readable))
            std::memcpy(to, line + begin, 16);
        else
            std::memcpy(to, line + begin, n);
        begin = end + 1;
    }
    uint8_t* ends = data + total;
    for (int k = 0; k < count; ++k) {
        const T end = T(stops[k] - uint32_t(k));
        std::memcpy(ends + size_t(k) * w, &end, w);
    }
    if (tail < PackedRow::kSlack) std::memset(ends + tail, 0, PackedRow::kSlack - tail);
    return PackedRow(b);
}

PackedRow PackedRowBuilder::fromLine(const char* line, const uint32_t* stops, int fields,
                                     size_t readable, uint64_t* fill, int fill_bit) {
    // Empty fields at the end store nothing, as with appending.
    int count = fields;
    while (count > 0 && stops[count - 1] == (count > 1 ? stops[count - 2] + 1 : 0))
        --count;
    if (count == 0) return PackedRow();
    const size_t total = size_t(stops[count - 1]) - size_t(count - 1);
    const uint64_t largest = std::max<uint64_t>(total, uint64_t(count));
    auto with = [&](auto width) {
        return fromLineWith<decltype(width)>(line, stops, count, total, readable, fill, fill_bit);
    };
    if (largest <= UINT8_MAX) return with(uint8_t());
    if (largest <= UINT16_MAX) return with(uint16_t());
    if (largest <= UINT32_MAX) return with(uint32_t());
    return with(uint64_t());
}

bool PackedRow::replaceCell(int i, QByteArrayView bytes) {
    if (!block_ || i < 0 || i >= size()) return false;
    const QByteArrayView old = cell(i);
    const qsizetype d = bytes.size() - old.size();
    if (d == 0) {
        overwrite(i, bytes.data());
        return true;
    }
    const size_t w = width();
    const size_t total = size_t(field(1));
    const size_t new_total = size_t(qsizetype(total) + d);
    const uint64_t limit = w == 8 ? UINT64_MAX : (uint64_t(1) << (8 * w)) - 1;
    if (new_total > limit) return false;
    // The bytes may lie in this block, which can move below.
    const char* src = bytes.data();
    QByteArray copy;
    const auto* b = reinterpret_cast<const char*>(block_);
    if (src >= b && src < b + blockBytes()) {
        copy = bytes.toByteArray();
        src = copy.constData();
    }
    const size_t header = headerBytes();
    const size_t count = size_t(field(0));
    const size_t mark_bytes = (size_t(markedSize()) + 7) / 8;
    const size_t tail = count * w + mark_bytes;
    const size_t start = size_t(old.data() - reinterpret_cast<const char*>(block_ + header));
    const size_t old_end = start + size_t(old.size());
    const size_t needed = header + new_total + std::max(tail, kSlack);
    if (d > 0 && needed > malloc_usable_size(block_)) {
        // Some room to spare, so that the next keystrokes stay in place.
        void* grown = std::realloc(block_, needed + needed / 8);
        if (!grown) throw std::bad_alloc();
        block_ = static_cast<uint8_t*>(grown);
    }
    uint8_t* data = block_ + header;
    // Everything after the cell (the cells, then offsets and marks) moves as one.
    std::memmove(data + old_end + d, data + old_end, total - old_end + tail);
    if (!bytes.isEmpty()) std::memcpy(data + start, src, size_t(bytes.size()));
    putEnd(block_ + 1 + w, w, new_total);
    uint8_t* ends = data + new_total;
    size_t j = size_t(i);
    if (w == 1) {
        // Eight one-byte ends at a time: every end from i on moves by d and
        // stays within a byte (the new total fits), so no byte carries into
        // its neighbour.
        const uint64_t lanes = uint64_t(d < 0 ? -d : d) * 0x0101010101010101ULL;
        for (; j + 8 <= count; j += 8) {
            uint64_t v;
            std::memcpy(&v, ends + j, 8);
            v = d < 0 ? v - lanes : v + lanes;
            std::memcpy(ends + j, &v, 8);
        }
    }
    for (; j < count; ++j)
        putEnd(ends + j * w, w, uint64_t(qsizetype(getEnd(ends + j * w, w)) + d));
    clearMark(i);
    return true;
}

namespace {

// A row's mark bits put aside while its block is rearranged, and laid out
// anew: moved, dropped or added position by position. Rows rarely have more
// than a few dozen positions, so the bits mostly stay on the stack.
class MarkBits {
public:
    explicit MarkBits(size_t positions) : bytes_((positions + 7) / 8) {
        if (bytes_ > sizeof small_) large_.assign(bytes_, 0);
    }
    uint8_t* data() { return large_.empty() ? small_ : large_.data(); }
    size_t bytes() const { return bytes_; }
    void set(size_t i) { data()[i >> 3] |= uint8_t(1u << (i & 7)); }

private:
    size_t bytes_;
    uint8_t small_[64] = {};
    std::vector<uint8_t> large_;
};

inline bool bitAt(const uint8_t* bits, size_t i) {
    return (bits[i >> 3] >> (i & 7)) & 1;
}

} // namespace

void PackedRow::eraseCells(int from, int to) {
    if (!block_ || from < 0 || from >= to) return;
    const size_t w = width();
    const size_t count = size_t(field(0));
    const size_t total = size_t(field(1));
    const size_t marked = size_t(markedSize());
    const size_t header = headerBytes();
    const uint8_t* data = block_ + header;
    const uint8_t* ends = data + total;
    // Positions from `to` on move down by the whole span, marks past the
    // stored cells too; the highest mark left decides the new marked size,
    // as building the row afresh would.
    const size_t shift = size_t(to - from);
    size_t new_marked = 0;
    MarkBits bits(marked);
    if (marked) {
        const uint8_t* old_bits = ends + count * w;
        const size_t span = marked <= size_t(from) ? marked
                            : marked <= size_t(to) ? size_t(from)
                                                   : marked - shift;
        for (size_t i = 0; i < span; ++i)
            if (bitAt(old_bits, i < size_t(from) ? i : i + shift)) {
                bits.set(i);
                new_marked = i + 1;
            }
    }
    const size_t cut_to = std::min(size_t(to), count);
    const size_t k = size_t(from) < cut_to ? cut_to - size_t(from) : 0;
    const size_t start = k && from ? size_t(getEnd(ends + size_t(from - 1) * w, w)) : 0;
    const size_t stop = k ? size_t(getEnd(ends + (cut_to - 1) * w, w)) : start;
    const size_t d = stop - start;
    // With no mark left the header loses its marked field, and everything
    // after it moves down by one width as well.
    const size_t new_header = marked && !new_marked ? header - w : header;
    uint8_t* new_data = block_ + new_header;
    if (k) {
        if (new_header != header) std::memmove(new_data, data, start);
        std::memmove(new_data + start, data + stop, total - stop);
    } else if (new_header != header) {
        std::memmove(new_data, data, total);
    }
    const size_t new_total = total - d;
    // The ends move down with the bytes; each lands at or below where it
    // was read from, so one pass upwards is safe.
    uint8_t* new_ends = new_data + new_total;
    for (size_t i = 0; i < size_t(from) && i < count; ++i)
        putEnd(new_ends + i * w, w, getEnd(ends + i * w, w));
    for (size_t i = std::max(size_t(from), cut_to); i < count; ++i)
        putEnd(new_ends + (i - k) * w, w, getEnd(ends + i * w, w) - d);
    const size_t new_count = count - k;
    if (new_marked) {
        std::memcpy(new_ends + new_count * w, bits.data(), (new_marked + 7) / 8);
        putEnd(block_ + 1 + 2 * w, w, new_marked);
    } else if (marked) {
        block_[0] &= uint8_t(~kMarksFlag);
    }
    putEnd(block_ + 1, w, new_count);
    putEnd(block_ + 1 + w, w, new_total);
}

bool PackedRow::insertCells(int at, const QByteArrayView* cells, int n, const char* quoted) {
    if (!block_ || at < 0 || at > size() || n < 0) return false;
    if (n == 0) return true;
    bool any_quoted = false;
    for (int j = 0; quoted && j < n; ++j)
        any_quoted = any_quoted || quoted[j];
    // A row without marks has no field to hold new ones.
    if (any_quoted && !hasMarks()) return false;
    const size_t w = width();
    const size_t count = size_t(field(0));
    const size_t total = size_t(field(1));
    const size_t marked = size_t(markedSize());
    size_t add = 0;
    for (int j = 0; j < n; ++j)
        add += size_t(cells[j].size());
    const size_t new_total = total + add, new_count = count + size_t(n);
    size_t new_marked = marked > size_t(at) ? marked + size_t(n) : marked;
    for (int j = n; any_quoted && j-- > 0;)
        if (quoted[j]) {
            new_marked = std::max(new_marked, size_t(at + j + 1));
            break;
        }
    const uint64_t limit = w == 8 ? UINT64_MAX : (uint64_t(1) << (8 * w)) - 1;
    if (new_total > limit || new_count > limit || new_marked > limit) return false;
    const size_t header = headerBytes();
    const size_t mark_bytes = (new_marked + 7) / 8;
    const size_t needed = header + new_total + std::max(new_count * w + mark_bytes, kSlack);
    if (needed > malloc_usable_size(block_)) {
        void* grown = std::realloc(block_, needed);
        if (!grown) throw std::bad_alloc();
        block_ = static_cast<uint8_t*>(grown);
    }
    uint8_t* data = block_ + header;
    const uint8_t* ends = data + total;
    // The marks are laid out anew before the ends grow over them.
    MarkBits bits(new_marked);
    if (new_marked) {
        const uint8_t* old_bits = ends + count * w;
        for (size_t i = 0; i < new_marked; ++i) {
            const bool set = i < size_t(at) ? i < marked && bitAt(old_bits, i)
                             : i < size_t(at) + size_t(n)
                                 ? quoted && quoted[i - size_t(at)]
                                 : i - size_t(n) < marked && bitAt(old_bits, i - size_t(n));
            if (set) bits.set(i);
        }
    }
    uint8_t* new_ends = data + new_total;
    const size_t start = at ? size_t(getEnd(ends + size_t(at - 1) * w, w)) : 0;
    // Ends first, from the top down: each lands at or above where it was
    // read from, and above the bytes that will grow into the old ends.
    for (size_t j = new_count; j-- > 0;) {
        uint64_t v;
        if (j >= size_t(at) + size_t(n)) {
            v = getEnd(ends + (j - size_t(n)) * w, w) + add;
        } else if (j >= size_t(at)) {
            v = start;
            for (size_t q = size_t(at); q <= j; ++q)
                v += uint64_t(cells[q - size_t(at)].size());
        } else {
            v = getEnd(ends + j * w, w);
        }
        putEnd(new_ends + j * w, w, v);
    }
    std::memmove(data + start + add, data + start, total - start);
    size_t p = start;
    for (int j = 0; j < n; ++j) {
        if (!cells[j].isEmpty()) std::memcpy(data + p, cells[j].data(), size_t(cells[j].size()));
        p += size_t(cells[j].size());
    }
    if (new_marked) {
        std::memcpy(new_ends + new_count * w, bits.data(), mark_bytes);
        putEnd(block_ + 1 + 2 * w, w, new_marked);
    }
    putEnd(block_ + 1, w, new_count);
    putEnd(block_ + 1 + w, w, new_total);
    return true;
}

namespace {
// Lines may have more fields than the 64 that `quoted` can mark.
inline size_t quotedAt(uint64_t quoted, int k) {
    return k < 64 ? (quoted >> k) & 1 : 0;
}
} // namespace

template <class T>
PackedRow PackedRowBuilder::fromQuotedLineWith(const char* line, const uint32_t* stops, int count,
                                               uint64_t quoted, int marked, size_t total,
                                               size_t readable, uint64_t* fill, int fill_bit) {
    const size_t w = sizeof(T);
    const size_t header = 1 + 3 * w;
    const size_t mark_bytes = (size_t(marked) + 7) / 8;
    const size_t tail = size_t(count) * w + mark_bytes;
    auto* b =
        static_cast<uint8_t*>(std::malloc(header + total + std::max(tail, PackedRow::kSlack)));
    if (!b) throw std::bad_alloc();
    b[0] = uint8_t((w == 1 ? 0 : w == 2 ? 1 : w == 4 ? 2 : 3) | PackedRow::kMarksFlag);
    const T header_fields[3] = {T(count), T(total), T(marked)};
    std::memcpy(b + 1, header_fields, sizeof header_fields);
    uint8_t* data = b + header;
    uint8_t* ends = data + total;
    // As in fromLineWith, but a quoted field leaves out its two quotes, so
    // places are counted as the fields go. The offsets come after all the
    // bytes, which may run over them.
    size_t at = 0, from = 0;
    for (int k = 0; k < count; ++k) {
        const size_t q = quotedAt(quoted, k);
        const size_t begin = from + q;
        const size_t n = stops[k] - q - begin;
        fill[k] |= uint64_t(n != 0) << fill_bit;
        if (n <= 16 && begin + 16 <= readable)
            std::memcpy(data + at, line + begin, 16);
        else
            std::memcpy(data + at, line + begin, n);
        at += n;
        from = stops[k] + 1;
    }
    at = 0, from = 0;
    for (int k = 0; k < count; ++k) {
        at += stops[k] - from - 2 * quotedAt(quoted, k);
        const T end = T(at);
        std::memcpy(ends + size_t(k) * w, &end, w);
        from = stops[k] + 1;
    }
    uint8_t* m = ends + size_t(count) * w;
    for (size_t k = 0; k < mark_bytes; ++k)
        m[k] = uint8_t(quoted >> (k * 8));
    if (tail < PackedRow::kSlack) std::memset(ends + tail, 0, PackedRow::kSlack - tail);
    return PackedRow(b);
}

PackedRow PackedRowBuilder::fromQuotedLine(const char* line, const uint32_t* stops, int fields,
                                           uint64_t quoted, size_t readable, uint64_t* fill,
                                           int fill_bit) {
    if (!quoted) return fromLine(line, stops, fields, readable, fill, fill_bit);
    auto bytes = [&](int k) {
        return stops[k] - (k ? stops[k - 1] + 1 : 0) - 2 * uint32_t(quotedAt(quoted, k));
    };
    // Empty fields at the end store no cell, but their quotes are remembered.
    int count = fields;
    while (count > 0 && bytes(count - 1) == 0)
        --count;
    const int marked = 64 - __builtin_clzll(quoted);
    const uint64_t stored = count < 64 ? quoted & ((uint64_t(1) << count) - 1) : quoted;
    const size_t total = count ? size_t(stops[count - 1]) - size_t(count - 1) -
                                     2 * size_t(__builtin_popcountll(stored))
                               : 0;
    const uint64_t largest = std::max<uint64_t>({total, uint64_t(count), uint64_t(marked)});
    auto with = [&](auto width) {
        return fromQuotedLineWith<decltype(width)>(line, stops, count, quoted, marked, total,
                                                   readable, fill, fill_bit);
    };
    if (largest <= UINT8_MAX) return with(uint8_t());
    if (largest <= UINT16_MAX) return with(uint16_t());
    if (largest <= UINT32_MAX) return with(uint32_t());
    return with(uint64_t());
}
