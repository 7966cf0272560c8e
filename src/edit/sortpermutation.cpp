#include "edit/sortpermutation.h"

#include "data/sortcanceledexception.h"
#include "edit/sortcompare.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

namespace {

constexpr std::ptrdiff_t kInsertionSortLimit = 32;
// The clock is read once per this many comparisons: reading it costs about as
// much as a comparison, and this keeps a report within microseconds of due.
constexpr uint64_t kClockCheckMask = 1023;

// The sort moves these records rather than bare line numbers: most
// comparisons (numbers, empty cells, words that differ early) are decided by
// the traits alone, reading memory in sequence instead of chasing each line's
// key, and the rest reach the characters by the key's address in one step.
struct Record {
    SortKeyTraits traits;
    uint32_t address = 0;
    int32_t line = 0;
};

// Where a line's key is found, and its record made.
class KeySource {
public:
    KeySource(const SortKeys& keys, const std::vector<int>& key_of) : keys(keys), key_of(key_of) {}

    Record record(int line) {
        Record r;
        r.line = line;
        r.address = keys.address(keyOf(line));
        r.traits = SortKeyTraits::of(keys.textAt(r.address, scratch));
        return r;
    }
    // For a line whose record comes soon: its key's address, and a little
    // later the key, are asked for ahead (a run's lines are scattered).
    void prefetchFar(int line) const { keys.prefetchAddressOf(keyOf(line)); }
    void prefetchNear(int line) const { keys.prefetch(keys.address(keyOf(line))); }

private:
    int keyOf(int line) const { return key_of.empty() ? line : key_of[size_t(line)]; }

    const SortKeys& keys;
    const std::vector<int>& key_of;
    SortKeys::Scratch scratch;
};

// How far ahead of a merge the keys are asked for: a few comparisons' time
// covers a trip to memory.
constexpr int kPrefetchAhead = 8;

// The two stages for the line at `i` of a run ending at `end`.
void prefetchRun(const KeySource& source, const int* lines, int i, int end) {
    if (i + 2 * kPrefetchAhead < end) source.prefetchFar(lines[i + 2 * kPrefetchAhead]);
    if (i + kPrefetchAhead < end) source.prefetchNear(lines[i + kPrefetchAhead]);
}

class CountingLess {
public:
    CountingLess(const SortKeys& keys, const SortOptions& options, double total_estimate)
        : keys(keys), descending(options.descending), progress(options.progress),
          interval(options.progress_interval), estimate(total_estimate),
          last_report(std::chrono::steady_clock::now()) {}

    bool operator()(const Record& a, const Record& b) {
        if (progress && (++count & kClockCheckMask) == 0) maybeReport();
        const int quick = compareSortTraits(a.traits, b.traits, descending);
        if (quick >= 0) return quick == 1;
        // Then where the keys differ, on the stored units (narrow ones are
        // not widened); the chunk walk only for equal digit runs there.
        const SortKeys::Units ua = keys.unitsAt(a.address);
        const SortKeys::Units ub = keys.unitsAt(b.address);
        int decided = -1;
        if (ua.wide && ub.wide)
            decided = compareSortKeysAtDifference(
                QStringView(reinterpret_cast<const char16_t*>(ua.data), ua.size), a.traits,
                QStringView(reinterpret_cast<const char16_t*>(ub.data), ub.size), b.traits,
                descending);
        else if (!ua.wide && !ub.wide)
            decided =
                compareSortKeysAtDifference(QLatin1String(ua.data, ua.size), a.traits,
                                            QLatin1String(ub.data, ub.size), b.traits, descending);
        if (decided >= 0) return decided == 1;
        return compareSortKeysInFull(keys.textAt(a.address, scratch_a), a.traits,
                                     keys.textAt(b.address, scratch_b), b.traits, descending);
    }

    // The keys of the records a merge reads next: most comparisons late in
    // a sort read characters, and their memory then arrives while the
    // comparisons before them run.
    void prefetch(const Record& r) const { keys.prefetch(r.address); }

private:
    void maybeReport() {
        const auto now = std::chrono::steady_clock::now();
        if (now - last_report < interval) return;
        last_report = now;
        progress(static_cast<float>(std::min(1.0, static_cast<double>(count) / estimate)));
    }

    const SortKeys& keys;
    bool descending;
    const SortProgressCallback& progress;
    std::chrono::steady_clock::duration interval;
    double estimate;
    uint64_t count = 0;
    std::chrono::steady_clock::time_point last_report;
    SortKeys::Scratch scratch_a;
    SortKeys::Scratch scratch_b;
};

// Guarded insertion sort: each step checks the front, so a comparator that
// contradicts itself can misplace elements but never leave the range.
template <class T, class Less> void insertionSort(T* first, T* last, Less& less) {
    for (T* i = first + 1; i < last; ++i) {
        T value = std::move(*i);
        T* j = i;
        while (j > first && less(value, *(j - 1))) {
            *j = std::move(*(j - 1));
            --j;
        }
        *j = std::move(value);
    }
}

// Top-down stable merge sort. The left half is moved to `buffer` (at least
// half the range long) and merged back; the right half is taken only when
// strictly less, which keeps equal keys in order. Every loop is bounded by
// positions alone, whatever the comparator answers.
template <class T, class Less> void mergeSort(T* first, T* last, T* buffer, Less& less) {
    const std::ptrdiff_t length = last - first;
    if (length <= kInsertionSortLimit) {
        insertionSort(first, last, less);
        return;
    }
    T* middle = first + length / 2;
    mergeSort(first, middle, buffer, less);
    mergeSort(middle, last, buffer, less);
    // Already in order: common in exports that are sorted by this key.
    if (!less(*middle, *(middle - 1))) return;

    T* const buffer_end = std::move(first, middle, buffer);
    T* left = buffer;
    T* right = middle;
    T* out = first;
    while (left < buffer_end && right < last) {
        if (less(*right, *left)) {
            *out++ = std::move(*right++);
            if (right + kPrefetchAhead < last) less.prefetch(right[kPrefetchAhead]);
        } else {
            *out++ = std::move(*left++);
            if (left + kPrefetchAhead < buffer_end) less.prefetch(left[kPrefetchAhead]);
        }
    }
    std::move(left, buffer_end, out);
}

// The lines in place, by records: the fast way, at about 48 bytes a line.
void sortByRecords(int* lines, int count, KeySource& source, CountingLess& less,
                   std::vector<Record>& records, std::vector<Record>& buffer) {
    records.resize(size_t(count));
    buffer.resize(size_t(count / 2 + 1));
    for (int k = 0; k < count; ++k)
        records[size_t(k)] = source.record(lines[k]);
    mergeSort(records.data(), records.data() + count, buffer.data(), less);
    for (int k = 0; k < count; ++k)
        lines[k] = records[size_t(k)].line;
}

// The low-memory sort works on line numbers alone. Records live only for a
// block at a time and for the heads of the runs being merged, each made
// again from its key when a line comes to the head: three times a line in
// all, where a sort of records of every line would hold them all at once.

// Blocks of `block` lines, each already sorted, merged into `out` by a
// tournament: the tree's nodes hold the run that wins below them, the left
// run winning a tie, since it holds the earlier lines.
void mergeBlocks(const int* lines, int count, int block, int* out, KeySource& source,
                 CountingLess& less) {
    const int runs = (count + block - 1) / block;
    int leaves = 1;
    while (leaves < runs)
        leaves <<= 1;
    std::vector<Record> heads(static_cast<size_t>(runs));
    std::vector<int> next(static_cast<size_t>(runs)), end(static_cast<size_t>(runs));
    std::vector<int> tree(size_t(2 * leaves), -1);
    for (int r = 0; r < runs; ++r) {
        next[size_t(r)] = r * block;
        end[size_t(r)] = std::min(count, (r + 1) * block);
        heads[size_t(r)] = source.record(lines[next[size_t(r)]]);
        tree[size_t(leaves + r)] = r;
    }
    auto winner = [&](int a, int b) {
        if (a < 0) return b;
        if (b < 0) return a;
        return less(heads[size_t(b)], heads[size_t(a)]) ? b : a;
    };
    for (int i = leaves - 1; i >= 1; --i)
        tree[size_t(i)] = winner(tree[size_t(2 * i)], tree[size_t(2 * i + 1)]);
    for (int o = 0; o < count; ++o) {
        const int r = tree[1];
        out[o] = heads[size_t(r)].line;
        if (++next[size_t(r)] < end[size_t(r)]) {
            prefetchRun(source, lines, next[size_t(r)], end[size_t(r)]);
            heads[size_t(r)] = source.record(lines[next[size_t(r)]]);
        } else
            tree[size_t(leaves + r)] = -1;
        for (int i = (leaves + r) / 2; i >= 1; i /= 2)
            tree[size_t(i)] = winner(tree[size_t(2 * i)], tree[size_t(2 * i + 1)]);
    }
}

// Merges the sorted [0, left) and [left, count) through `buffer`, which holds
// the left part.
void mergeHalves(int* lines, int left, int count, int* buffer, KeySource& source,
                 CountingLess& less) {
    if (left == 0 || left == count) return;
    Record right_head = source.record(lines[left]);
    if (!less(right_head, source.record(lines[left - 1]))) return;
    std::copy(lines, lines + left, buffer);
    Record left_head = source.record(buffer[0]);
    int i = 0, j = left, o = 0;
    while (i < left && j < count) {
        if (less(right_head, left_head)) {
            lines[o++] = right_head.line;
            prefetchRun(source, lines, j + 1, count);
            if (++j < count) right_head = source.record(lines[j]);
        } else {
            lines[o++] = left_head.line;
            prefetchRun(source, buffer, i + 1, left);
            if (++i < left) left_head = source.record(buffer[i]);
        }
    }
    // What is left of the right part is in place already.
    std::copy(buffer + i, buffer + left, lines + o);
}

// The block's records (about 12 MB with their merge buffer at the default
// size) stay within the caches' reach while a block is sorted.
void sortLean(int* lines, int count, int block, KeySource& source, CountingLess& less) {
    std::vector<Record> records, record_buffer;
    if (count <= block) {
        sortByRecords(lines, count, source, less, records, record_buffer);
        return;
    }
    const int half = count / 2;
    std::vector<int> buffer(size_t(count - half));
    for (const auto& [from, to] : {std::pair{0, half}, std::pair{half, count}}) {
        for (int b = from; b < to; b += block)
            sortByRecords(lines + b, std::min(block, to - b), source, less, records, record_buffer);
        if (to - from > block) {
            mergeBlocks(lines + from, to - from, block, buffer.data(), source, less);
            std::copy(buffer.begin(), buffer.begin() + (to - from), lines + from);
        }
    }
    std::vector<Record>().swap(records);
    std::vector<Record>().swap(record_buffer);
    mergeHalves(lines, half, count, buffer.data(), source, less);
}

std::vector<int> sortLines(const SortKeys& keys, const std::vector<int>& key_of,
                           const SortOptions& options) {
    const int total = key_of.empty() ? keys.size() : int(key_of.size());
    const int first = std::clamp(options.first_index, 0, total);
    std::vector<int> permutation(static_cast<size_t>(total));
    std::iota(permutation.begin(), permutation.end(), 0);
    const int n = total - first;
    if (n < 2) return permutation;
    const double estimate = std::max(1.0, n * std::log2(static_cast<double>(n)));
    CountingLess less(keys, options, estimate);
    KeySource source(keys, key_of);
    int* lines = permutation.data() + first;
    if (options.low_memory) {
        sortLean(lines, n, std::max(options.low_memory_block, 2), source, less);
    } else {
        std::vector<Record> records, buffer;
        sortByRecords(lines, n, source, less, records, buffer);
    }
    return permutation;
}

SortKeys storeOf(const QStringList& texts) {
    SortKeys keys;
    keys.reserve(size_t(texts.size()));
    for (const QString& text : texts)
        // Past 8 GiB of keys memory runs out first; an empty key keeps the
        // count right all the same.
        if (!keys.append(text)) keys.append(QStringView());
    return keys;
}

} // namespace

std::vector<int> sortPermutation(QStringList keys, const SortOptions& options) {
    const int first = std::clamp(options.first_index, 0, static_cast<int>(keys.size()));
    if (!options.case_sensitive) {
        for (qsizetype i = first; i < keys.size(); ++i)
            keys[i] = std::move(keys[i]).toLower();
    }
    const SortKeys store = storeOf(keys);
    keys = QStringList();
    return sortLines(store, {}, options);
}

std::vector<int> sortPermutation(const SortKeys& keys, const std::vector<int>& key_of,
                                 const SortOptions& options) {
    return sortLines(keys, key_of, options);
}

QStringList sortCellGroup(QStringList texts, int group_number, bool descending,
                          bool case_sensitive) {
    if (!case_sensitive && group_number >= 0 && group_number < texts.size())
        texts[group_number] = texts[group_number].toLower();
    SortOptions options;
    options.descending = descending;
    const std::vector<int> order = sortLines(storeOf(texts), {}, options);
    QStringList sorted;
    sorted.reserve(texts.size());
    for (const int i : order)
        sorted.append(texts.at(i));
    return sorted;
}
