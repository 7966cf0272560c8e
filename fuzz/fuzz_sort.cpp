// The sort comparator is not a strict weak ordering on every input (the "0"
// rule, numbers against mixed text), so the sort must stay bounded and still
// return a permutation whatever the keys. One key per line; the first byte
// picks the options.
#include "data/sortcanceledexception.h"
#include "edit/sortcompare.h"
#include "edit/sortpermutation.h"

#include "analysis/statistics.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

void check(bool condition) {
    if (!condition) __builtin_trap();
}

bool isPermutation(const std::vector<int>& p, int n) {
    if (static_cast<int>(p.size()) != n) return false;
    std::vector<char> seen(static_cast<std::size_t>(n), 0);
    for (const int i : p) {
        if (i < 0 || i >= n || seen[static_cast<std::size_t>(i)]) return false;
        seen[static_cast<std::size_t>(i)] = 1;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint8_t flags = data[0];
    const QString input = QString::fromUtf8(reinterpret_cast<const char*>(data + 1),
                                            static_cast<qsizetype>(size - 1));
    const QStringList keys = input.split(u'\n');
    const int n = static_cast<int>(keys.size());

    SortOptions options;
    options.descending = flags & 1;
    options.case_sensitive = flags & 2;
    options.first_index = (flags >> 2) & 3;
    const std::vector<int> permutation = sortPermutation(keys, options);
    check(isPermutation(permutation, n));
    for (int i = 0; i < options.first_index && i < n; ++i)
        check(permutation[static_cast<std::size_t>(i)] == i);

    // A cancel from the progress hook leaves through the sort, freeing its buffers.
    if (flags & 16) {
        int calls = 0;
        options.progress_interval = std::chrono::milliseconds(0);
        options.progress = [&](float value) {
            check(value >= 0.0f && value <= 1.0f);
            if (++calls == 2) throw SortCanceledException();
        };
        try {
            check(isPermutation(sortPermutation(keys, options), n));
        } catch (const SortCanceledException&) {
        }
    }

    const QStringList cells =
        sortCellGroup(keys, flags >> 5, options.descending, options.case_sensitive);
    check(cells.size() == keys.size());

    for (int i = 0; i + 1 < n; ++i) {
        const QString& a = keys[i];
        const QString& b = keys[i + 1];
        check(!compareForSort(a, a, false) && !compareForSort(a, a, true));
        check(compareForSort(a, b, true) == compareForSort(b, a, false));
        const SortKeyTraits ta = SortKeyTraits::of(a);
        const SortKeyTraits tb = SortKeyTraits::of(b);
        for (const bool descending : {false, true}) {
            check(compareSortKeys(a, ta, b, tb, descending) ==
                  compareSortKeysInFull(a, ta, b, tb, descending));
        }
    }
    computeStatistics(collectNumbers(keys));
    return 0;
}
