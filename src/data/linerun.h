#pragma once

#include "storedcells.h"

#include <vector>

// A run of consecutive lines [start, start + length): raw positions, the
// unit in which whole rows or columns leave the table and come back.
struct LineRun {
    int start = 0;
    int length = 0;
    int end() const { return start + length; }
    bool operator==(const LineRun& other) const {
        return start == other.start && length == other.length;
    }
};

using LineRuns = std::vector<LineRun>;

// Sorted positions merged into runs; duplicates and negatives are dropped.
LineRuns runsOf(std::vector<int> positions);

// Lines taken out of a table by an undo step, kept to be put back as they
// were: the runs (ascending, as positions before the removal) and the
// lines' cells, bytes and quote marks, in the store's own order, run after
// run. No text is decoded on the way out or back.
struct RemovedLines {
    LineRuns runs;
    StoredCells cells;
    // How many rows the store held before: rows past the file's last line
    // exist only as a count, and must come back as such.
    int stored_rows_before = -1;
    bool stored_rows = true; // the store's axis they came from
    int count() const {
        int n = 0;
        for (const LineRun& r : runs)
            n += r.length;
        return n;
    }
};
