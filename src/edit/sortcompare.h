#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringView>

#include <cstdint>

// The natural order of cells: numbers as numbers, mixed text by chunks of
// digits and non-digits, empty cells last (first when descending). Returns
// whether `a` goes before `b`.
//
// This is not a strict weak ordering on every input: "0" and texts with
// leading zeros order as plain text against everything, and numbers order by
// value among themselves but by chunks against text ("1.5" < "1.7a" < "1.10"
// < "1.5"), so cells can form cycles. Sorts that use it must stay safe there.
bool compareForSort(const QString& a, const QString& b, bool descending);

// What the comparator learns about one key without looking at another. A sort
// computes it once per key instead of once per comparison.
struct SortKeyTraits {
    enum Flag : uint8_t {
        ZeroRule = 1, // after leading spaces a "0" not followed by ".": ordered as text
        Number = 2,   // no "_" and reads as a number
        // Not under the zero rule and not all spaces: two such keys with the
        // same leading spaces whose prefixes differ inside their leading
        // non-digit runs are ordered by the prefixes alone.
        PrefixOrdered = 4,
        // PrefixOrdered, and after the leading spaces a run of at most 15
        // digits, whose value is in `number` (a Number key is then that run).
        LeadRun = 8,
        Empty = 16,
        // The prefix holds eight code units of eight bits, not four of sixteen.
        Narrow = 32,
        // The whole key is in the prefix.
        Whole = 64,
        // PrefixOrdered, not a number, and its leading non-digit run ends
        // inside the prefix, where a run of at most 15 digits follows, whose
        // value is in `number`: "item12", "SKU-7".
        SecondRun = 128,
    };
    double number = 0.0;
    // The first code units, big-endian and zero-padded, so that comparing two
    // prefixes of the same width as integers compares those code units in
    // order. Eight of them when they are all below 256, else four.
    uint64_t prefix = 0;
    int32_t leading_spaces = 0;
    uint8_t flags = 0;
    // How many code units of the key the prefix holds.
    uint8_t prefix_length = 0;
    // How many prefix positions, from the start, hold no digit (a position
    // past the end of the key counts as no digit).
    uint8_t prefix_non_digits = 0;

    static SortKeyTraits of(QStringView key);
};

// The comparison as far as the traits decide it: 1 when the first key goes
// first, 0 when it does not, -1 when the characters must be read.
int compareSortTraits(const SortKeyTraits& ta, const SortKeyTraits& tb, bool descending);

// compareForSort on keys whose traits are known.
bool compareSortKeys(QStringView a, const SortKeyTraits& ta, QStringView b, const SortKeyTraits& tb,
                     bool descending);

// The rules read step by step, without the shortcuts of compareSortTraits:
// what a sort falls back to when the traits don't decide, and what the
// shortcuts are checked against.
bool compareSortKeysInFull(QStringView a, const SortKeyTraits& ta, QStringView b,
                           const SortKeyTraits& tb, bool descending);

// The rules read where the two keys first differ, for what the traits left
// open: 1 when `a` goes first, 0 when it does not, -1 when digit runs of
// equal value there ("01" and "1") need the rules in full. Neighbours in
// sorted order share long prefixes, so the late comparisons of a sort are of
// this kind; one walk to the first difference replaces the chunk walk.
int compareSortKeysAtDifference(QStringView a, const SortKeyTraits& ta, QStringView b,
                                const SortKeyTraits& tb, bool descending);
// The same on keys stored one byte a code unit (Latin-1), not widened.
int compareSortKeysAtDifference(QLatin1String a, const SortKeyTraits& ta, QLatin1String b,
                                const SortKeyTraits& tb, bool descending);
