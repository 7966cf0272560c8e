#include "cellblocks.h"

#include "view/tablemodel.h"

#include <algorithm>

namespace cellblocks {

bool rawBlockOf(const TableModel& model, const Range& member, Block& out) {
    RangeVector raw = model.toRawSelection(RangeVector{member});
    const Range& r = raw.front();
    const TableData& data = model.tableData();
    const int last_row = data.numRawRows() - 1, last_col = data.numRawColumns() - 1;
    switch (r.kind) {
    case Range::Cell:
        out = {r.row, r.row, r.col, r.col};
        break;
    case Range::Row:
        out = {r.row, r.row, r.col, r.col_end};
        break;
    case Range::Column:
        out = {r.row, r.row_end, r.col, r.col};
        break;
    case Range::Block:
        out = {r.row, r.row_end, r.col, r.col_end};
        break;
    default:
        return false;
    }
    if (out.r1 == Range::kToEnd) out.r1 = last_row;
    if (out.c1 == Range::kToEnd) out.c1 = last_col;
    return out.r0 <= out.r1 && out.c0 <= out.c1;
}

Grid::Grid(const StoredCells& c) : cells(c) {
    StoredCells::Reader reader(cells);
    views.reserve(size_t(cells.cellCount()));
    while (!reader.atEnd()) {
        bool q = false;
        views.push_back(reader.next(&q));
        quotes.push_back(q);
    }
}

QByteArrayView Grid::at(int row, int col, bool* quoted) const {
    *quoted = false;
    if (row < cells.firstRow() || row > cells.lastRow() || col < cells.firstColumn() ||
        col > cells.lastColumn())
        return {};
    const size_t i =
        size_t(row - cells.firstRow()) * size_t(cells.lastColumn() - cells.firstColumn() + 1) +
        size_t(col - cells.firstColumn());
    if (i >= views.size()) return {};
    *quoted = quotes[i];
    return views[i];
}

Range rangeFor(const Block& b, StoredCells new_cells, StoredCells old_cells) {
    Range r = Range::wholeTable(Range::Raw);
    r.row = b.r0;
    r.row_end = b.r1;
    r.col = b.c0;
    r.col_end = b.c1;
    r.value = QVariant::fromValue(std::move(new_cells));
    r.old_value = QVariant::fromValue(std::move(old_cells));
    return r;
}

bool overlaps(const Block& a, const Block& b) {
    return a.r0 <= b.r1 && b.r0 <= a.r1 && a.c0 <= b.c1 && b.c0 <= a.c1;
}

} // namespace cellblocks
