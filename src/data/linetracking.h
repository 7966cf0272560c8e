#pragma once

#include "linerun.h"

#include <algorithm>
#include <vector>

// How ascending lists of raw line indexes follow their lines when lines come
// and go: the hidden lists of TableData, and whatever else a model keeps by
// raw index (its filters' lines, the lines the user hid).
namespace linetracking {

// A list of lines in the form every one here is kept: ascending, each once.
inline void sortUnique(std::vector<int>& lines) {
    std::sort(lines.begin(), lines.end());
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
}

// Indexes at or above `raw` move up by `count`.
inline void shiftForInsert(std::vector<int>& lines, int raw, int count) {
    for (int& h : lines)
        if (h >= raw) h += count;
}

// Indexes inside a removed run go; those above drop by what went below them.
// `runs` are ascending and disjoint; anything with start and length will do.
template <class Runs> void dropForRemoval(std::vector<int>& lines, const Runs& runs) {
    std::vector<int> kept;
    kept.reserve(lines.size());
    size_t k = 0;
    int removed_before = 0;
    for (int h : lines) {
        while (k < runs.size() && runs[k].start + runs[k].length <= h)
            removed_before += runs[k++].length;
        if (k < runs.size() && h >= runs[k].start) continue; // inside a removed run
        kept.push_back(h - removed_before);
    }
    lines.swap(kept);
}

// Put-back runs (positions after the insertion, ascending): indexes move up
// by the lines put back at or below them.
inline void shiftForRuns(std::vector<int>& lines, const LineRuns& runs) {
    int added = 0;
    size_t k = 0;
    for (int& h : lines) {
        while (k < runs.size() && runs[k].start <= h + added)
            added += runs[k++].length;
        h += added;
    }
}

// A reordering of the first order.size() lines: position i takes the line now
// at order[i], or with `inverse` the line at i goes back to order[i]. Indexes
// past the order stay.
inline void remap(std::vector<int>& lines, const std::vector<int>& order, bool inverse) {
    if (lines.empty()) return;
    const int n = int(order.size());
    std::vector<int> moved;
    moved.reserve(lines.size());
    if (inverse) {
        for (const int h : lines)
            moved.push_back(h < n ? order[size_t(h)] : h);
    } else {
        // One pass over the order instead of a full inverse: the lists are
        // short next to the table.
        std::vector<bool> was_listed(size_t(n), false);
        for (const int h : lines) {
            if (h < n)
                was_listed[size_t(h)] = true;
            else
                moved.push_back(h);
        }
        for (int i = 0; i < n; ++i)
            if (was_listed[size_t(order[size_t(i)])]) moved.push_back(i);
    }
    std::sort(moved.begin(), moved.end());
    lines.swap(moved);
}

} // namespace linetracking
