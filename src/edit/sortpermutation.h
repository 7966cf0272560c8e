#pragma once

#include "data/sortkeys.h"

#include <QStringList>

#include <chrono>
#include <functional>
#include <vector>

// Receives the sort's progress, 0 to 1. It may throw SortCanceledException to
// stop the sort; nothing is then returned and every buffer is freed.
using SortProgressCallback = std::function<void(float)>;

struct SortOptions {
    bool descending = false;
    // Off: every key is lower-cased once before sorting. Keys handed over
    // as SortKeys are taken as they are: their reader lower-cases them.
    bool case_sensitive = true;
    // Header lines at the start that keep their place.
    int first_index = 0;
    SortProgressCallback progress;
    std::chrono::milliseconds progress_interval{100};
    // Working memory near two bytes a line instead of about fifty, for files
    // kept on disk whose lines outnumber what memory would hold of records;
    // the order is the same, the time somewhat longer.
    bool low_memory = false;
    // Lines per block of that sort; tests make it small to reach every merge.
    int low_memory_block = 1 << 18;
};

// The stable order of the lines whose keys are given, one key per line:
// position i of the result takes line permutation[i]. Lines before
// first_index stay where they are; equal keys keep their order. The result is
// a permutation of 0..keys.size()-1 even where compareForSort contradicts
// itself.
std::vector<int> sortPermutation(QStringList keys, const SortOptions& options);

// The same over a key store: position i has key key_of[i], or key i when
// key_of is empty.
std::vector<int> sortPermutation(const SortKeys& keys, const std::vector<int>& key_of,
                                 const SortOptions& options);

// The cells of one selected row or column (group number `group_number`,
// counted from 0), sorted by compareForSort. Without case sensitivity only
// the text at position `group_number` is lower-cased, and it stays so in the
// result: the way selected cells have always been sorted.
QStringList sortCellGroup(QStringList texts, int group_number, bool descending,
                          bool case_sensitive);
