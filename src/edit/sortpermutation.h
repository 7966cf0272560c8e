#pragma once

#include <QStringList>

#include <chrono>
#include <functional>
#include <vector>

// Receives the sort's progress, 0 to 1. It may throw SortCanceledException to
// stop the sort; nothing is then returned and every buffer is freed.
using SortProgressCallback = std::function<void(float)>;

struct SortOptions {
    bool descending = false;
    // Off: every key is lower-cased once before sorting.
    bool case_sensitive = true;
    // Header lines at the start that keep their place.
    int first_index = 0;
    SortProgressCallback progress;
    std::chrono::milliseconds progress_interval{100};
};

// The stable order of the lines whose keys are given, one key per line:
// position i of the result takes line permutation[i]. Lines before
// first_index stay where they are; equal keys keep their order. The result is
// a permutation of 0..keys.size()-1 even where compareForSort contradicts
// itself.
std::vector<int> sortPermutation(QStringList keys, const SortOptions& options);

// The cells of one selected row or column (group number `group_number`,
// counted from 0), sorted by compareForSort. Without case sensitivity only
// the text at position `group_number` is lower-cased, and it stays so in the
// result: the way selected cells have always been sorted.
QStringList sortCellGroup(QStringList texts, int group_number, bool descending,
                          bool case_sensitive);
