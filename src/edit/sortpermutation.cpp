#include "edit/sortpermutation.h"

#include "data/sortcanceledexception.h"
#include "edit/sortcompare.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace {

constexpr std::ptrdiff_t kInsertionSortLimit = 32;
// The clock is read once per this many comparisons: reading it costs about as
// much as a comparison, and this keeps a report within microseconds of due.
constexpr uint64_t kClockCheckMask = 1023;

// The sort moves these records rather than bare line numbers: most
// comparisons (numbers, empty cells, words that differ early) are decided by
// the traits alone, reading memory in sequence instead of chasing each line's
// key, and the rest reach the characters in one step.
struct Record {
    SortKeyTraits traits;
    const QChar* data = nullptr;
    int32_t size = 0;
    int32_t line = 0;

    QStringView key() const { return QStringView(data, size); }
};

class CountingLess {
public:
    CountingLess(const SortOptions& options, double total_estimate)
        : descending(options.descending), progress(options.progress),
          interval(options.progress_interval), estimate(total_estimate),
          last_report(std::chrono::steady_clock::now()) {}

    bool operator()(const Record& a, const Record& b) {
        if (progress && (++count & kClockCheckMask) == 0) maybeReport();
        const int quick = compareSortTraits(a.traits, b.traits, descending);
        if (quick >= 0) return quick == 1;
        return compareSortKeysInFull(a.key(), a.traits, b.key(), b.traits, descending);
    }

private:
    void maybeReport() {
        const auto now = std::chrono::steady_clock::now();
        if (now - last_report < interval) return;
        last_report = now;
        progress(static_cast<float>(std::min(1.0, static_cast<double>(count) / estimate)));
    }

    bool descending;
    const SortProgressCallback& progress;
    std::chrono::steady_clock::duration interval;
    double estimate;
    uint64_t count = 0;
    std::chrono::steady_clock::time_point last_report;
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
        if (less(*right, *left))
            *out++ = std::move(*right++);
        else
            *out++ = std::move(*left++);
    }
    std::move(left, buffer_end, out);
}

// The stable order of keys[first..], as line numbers.
std::vector<int> sortLines(const QStringList& keys, int first, const SortOptions& options) {
    const int total = static_cast<int>(keys.size());
    std::vector<int> permutation(static_cast<std::size_t>(total));
    for (int i = 0; i < first; ++i)
        permutation[static_cast<std::size_t>(i)] = i;
    const int n = total - first;

    std::vector<Record> records(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        Record& r = records[static_cast<std::size_t>(i)];
        const QString& key = keys.at(first + i);
        r.line = first + i;
        r.data = key.constData();
        r.size = static_cast<int32_t>(key.size());
        r.traits = SortKeyTraits::of(key);
    }
    if (n > 1) {
        const double estimate = std::max(1.0, n * std::log2(static_cast<double>(n)));
        CountingLess less(options, estimate);
        std::vector<Record> buffer(static_cast<std::size_t>(n / 2 + 1));
        mergeSort(records.data(), records.data() + n, buffer.data(), less);
    }
    for (int i = 0; i < n; ++i)
        permutation[static_cast<std::size_t>(first + i)] =
            records[static_cast<std::size_t>(i)].line;
    return permutation;
}

} // namespace

std::vector<int> sortPermutation(QStringList keys, const SortOptions& options) {
    const int first = std::clamp(options.first_index, 0, static_cast<int>(keys.size()));
    if (!options.case_sensitive) {
        for (qsizetype i = first; i < keys.size(); ++i)
            keys[i] = std::move(keys[i]).toLower();
    }
    return sortLines(keys, first, options);
}

QStringList sortCellGroup(QStringList texts, int group_number, bool descending,
                          bool case_sensitive) {
    if (!case_sensitive && group_number >= 0 && group_number < texts.size())
        texts[group_number] = texts[group_number].toLower();
    SortOptions options;
    options.descending = descending;
    const std::vector<int> order = sortLines(texts, 0, options);
    QStringList sorted;
    sorted.reserve(texts.size());
    for (const int i : order)
        sorted.append(texts.at(i));
    return sorted;
}
