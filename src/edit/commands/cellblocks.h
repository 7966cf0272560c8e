#pragma once

#include "data/storedcells.h"
#include "view/range.h"

#include <QByteArrayView>

#include <vector>

class TableModel;

// Raw blocks of cells that the move and duplicate commands shift around.
namespace cellblocks {

struct Block {
    int r0, r1, c0, c1; // raw, inclusive, inside or past the data
};

// A member of the selection as a raw block, its open ends cut at the data's
// end. False when it lies wholly past the data.
bool rawBlockOf(const TableModel& model, const Range& member, Block& out);

// Captured cells laid out for random access; cells outside the capture
// (past the data when it was taken) read as empty.
class Grid {
public:
    explicit Grid(const StoredCells& cells);
    QByteArrayView at(int row, int col, bool* quoted) const;

private:
    StoredCells cells;
    std::vector<QByteArrayView> views;
    std::vector<bool> quotes;
};

// A range that writes `cells` (extent and all) as its new values.
Range rangeFor(const Block& b, StoredCells new_cells, StoredCells old_cells);

bool overlaps(const Block& a, const Block& b);

} // namespace cellblocks
