#include "sortkeys.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint8_t kWideFlag = 0x80;
constexpr uint32_t kLongLength = 0x7F;
// Addresses count two-byte steps: 2^32 of them.
constexpr uint64_t kAddressLimit = uint64_t(1) << 33;
// The first block is small, so that a sort of a few cells costs a few
// hundred bytes; each next one doubles up to the full block.
constexpr std::size_t kFirstBlockBytes = 256;

std::size_t headerSize(std::size_t length) {
    return length < kLongLength ? 1 : 5;
}

// Bytes of an entry, kept even so that the next one starts even.
std::size_t entrySize(std::size_t length, bool wide) {
    std::size_t size = headerSize(length);
    if (wide)
        size = ((size + 1) & ~std::size_t(1)) + 2 * length;
    else
        size += length;
    return (size + 1) & ~std::size_t(1);
}

// Writes the header; returns where the units go.
char* writeHeader(char* p, std::size_t length, bool wide) {
    const uint8_t flag = wide ? kWideFlag : 0;
    if (length < kLongLength) {
        p[0] = char(flag | uint8_t(length));
        p += 1;
    } else {
        p[0] = char(flag | kLongLength);
        const uint32_t n = uint32_t(length);
        std::memcpy(p + 1, &n, 4);
        p += 5;
    }
    return p;
}

} // namespace

char* SortKeys::reserveEntry(std::size_t size, uint64_t& position) {
    if (blocks.empty() || used + size > block_sizes.back()) {
        // A fresh block takes the next slot of the address space; an entry
        // larger than a slot takes as many slots as it needs.
        const std::size_t previous = blocks.empty() ? 0 : block_sizes.back();
        const std::size_t grown = std::min(kBlockBytes, std::max(kFirstBlockBytes, 2 * previous));
        const std::size_t bytes = std::max(grown, size);
        const std::size_t spanned = (bytes + kBlockBytes - 1) / kBlockBytes;
        if ((uint64_t(blocks.size()) + spanned) * kBlockBytes > kAddressLimit) return nullptr;
        blocks.emplace_back(new char[bytes]);
        block_sizes.push_back(bytes);
        for (std::size_t s = 1; s < spanned; ++s) {
            blocks.emplace_back();
            block_sizes.push_back(0);
        }
        used = 0;
        if (spanned > 1) {
            // The entry fills its own spanned; the next one opens a new block.
            position = uint64_t(blocks.size() - spanned) << kBlockShift;
            used = block_sizes.back();
            return blocks[blocks.size() - spanned].get();
        }
    }
    position = (uint64_t(blocks.size() - 1) << kBlockShift) + used;
    char* p = blocks.back().get() + used;
    used += size;
    return p;
}

bool SortKeys::append(QStringView key) {
    const std::size_t length = std::size_t(key.size());
    const bool wide =
        std::any_of(key.begin(), key.end(), [](QChar c) { return c.unicode() > 0xFF; });
    uint64_t position = 0;
    char* p = reserveEntry(entrySize(length, wide), position);
    if (!p) return false;
    char* const entry = p;
    p = writeHeader(p, length, wide);
    if (wide) {
        p = entry + (((p - entry) + 1) & ~std::ptrdiff_t(1));
        std::memcpy(p, key.utf16(), 2 * length);
    } else {
        for (std::size_t i = 0; i < length; ++i)
            p[i] = char(key[qsizetype(i)].unicode());
    }
    positions.push_back(uint32_t(position >> 1));
    return true;
}

bool SortKeys::appendAscii(QByteArrayView key, bool lower_case) {
    const std::size_t length = std::size_t(key.size());
    uint64_t position = 0;
    char* p = reserveEntry(entrySize(length, false), position);
    if (!p) return false;
    p = writeHeader(p, length, false);
    if (lower_case) {
        for (std::size_t i = 0; i < length; ++i) {
            const char c = key[qsizetype(i)];
            p[i] = c >= 'A' && c <= 'Z' ? char(c + ('a' - 'A')) : c;
        }
    } else if (length) {
        std::memcpy(p, key.data(), length);
    }
    positions.push_back(uint32_t(position >> 1));
    return true;
}

SortKeys::Units SortKeys::unitsAt(uint32_t position) const {
    const uint64_t address = uint64_t(position) << 1;
    const char* const entry =
        blocks[std::size_t(address >> kBlockShift)].get() + (address & (kBlockBytes - 1));
    const uint8_t header = uint8_t(entry[0]);
    std::size_t length = header & kLongLength;
    const char* p = entry + 1;
    if (length == kLongLength) {
        uint32_t n = 0;
        std::memcpy(&n, p, 4);
        length = n;
        p += 4;
    }
    const bool wide = header & kWideFlag;
    if (wide) p = entry + (((p - entry) + 1) & ~std::ptrdiff_t(1));
    return {p, qsizetype(length), wide};
}

QStringView SortKeys::textAt(uint32_t position, Scratch& scratch) const {
    const Units key = unitsAt(position);
    if (key.wide) return QStringView(reinterpret_cast<const char16_t*>(key.data), key.size);
    scratch.resize(key.size);
    char16_t* out = scratch.data();
    for (qsizetype k = 0; k < key.size; ++k)
        out[k] = char16_t(uint8_t(key.data[k]));
    return QStringView(out, key.size);
}

std::size_t SortKeys::bytes() const {
    std::size_t total = positions.capacity() * sizeof(uint32_t);
    for (std::size_t size : block_sizes)
        total += size;
    return total;
}
