#pragma once

#include <QByteArrayView>
#include <QStringView>
#include <QVarLengthArray>

#include <cstdint>
#include <memory>
#include <vector>

// The keys of one sort, one text per line, decoded once and laid back to back
// in large blocks. A key costs its code units and about six bytes, where a
// string object each would cost forty or more: a sort of a file kept on disk
// holds one column's keys of tens of millions of lines. A key whose code
// units all fit in eight bits is stored one byte a unit, any other two.
class SortKeys {
public:
    // Where a narrow key is widened for the comparator.
    using Scratch = QVarLengthArray<char16_t, 64>;

    SortKeys() = default;
    SortKeys(SortKeys&&) noexcept = default;
    SortKeys& operator=(SortKeys&&) noexcept = default;

    void reserve(std::size_t lines) { positions.reserve(lines); }
    // Appends the next line's key. False, with nothing added, once the keys
    // would pass what the store can address (8 GiB of units).
    bool append(QStringView key);
    // The same for bytes known to be ASCII, lower-cased on the way when asked:
    // the common cell needs no decoder and no string.
    bool appendAscii(QByteArrayView key, bool lower_case);

    int size() const { return int(positions.size()); }
    // Key i as stored: `size` units at `data`, of two bytes when `wide`.
    struct Units {
        const char* data = nullptr;
        qsizetype size = 0;
        bool wide = false;
    };
    Units units(int i) const { return unitsAt(address(i)); }
    // Key i; a narrow key is widened into `scratch`, which must outlive the view.
    QStringView text(int i, Scratch& scratch) const { return textAt(address(i), scratch); }
    // The same by the key's address in the store: a sort keeps the address
    // beside each line, so that a comparison reaches the key in one step.
    uint32_t address(int i) const { return positions[std::size_t(i)]; }
    Units unitsAt(uint32_t address) const;
    // Asks for memory ahead of its use: where key i's address is kept, and
    // the key at an address.
    void prefetchAddressOf(int i) const { __builtin_prefetch(positions.data() + i); }
    void prefetch(uint32_t position) const {
        const uint64_t address = uint64_t(position) << 1;
        __builtin_prefetch(blocks[std::size_t(address >> kBlockShift)].get() +
                           (address & (kBlockBytes - 1)));
    }
    QStringView textAt(uint32_t address, Scratch& scratch) const;
    // Memory held, for the benchmarks.
    std::size_t bytes() const;

private:
    // Room for an entry of `size` bytes, starting at an even address; null
    // when the store is full. `position` receives the entry's address.
    char* reserveEntry(std::size_t size, uint64_t& position);

    static constexpr int kBlockShift = 22; // 4 MiB blocks
    static constexpr std::size_t kBlockBytes = std::size_t(1) << kBlockShift;

    // Each key's entry address in two-byte steps over all blocks (block
    // number times the block size plus the offset), so that 32 bits reach
    // 8 GiB. An entry is a header byte (the wide flag and a length below
    // 127, or 127 and four bytes of length), then the units, the wide ones at
    // an even address. An entry never crosses a block's end; one larger than
    // a block gets blocks of its own.
    std::vector<uint32_t> positions;
    std::vector<std::unique_ptr<char[]>> blocks;
    std::vector<std::size_t> block_sizes; // allocated bytes; 0 for a slot a large entry spans
    std::size_t used = 0;                 // in the last block
};
