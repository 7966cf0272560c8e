#include "movecellcontentscommand.h"

#include "edit/commands/cellblocks.h"

#include <algorithm>

using namespace cellblocks;

MoveCellContentsCommand::MoveCellContentsCommand(TableModel* m, RangeVector selection, int dy,
                                                 int dx, QUndoCommand* parent)
    : TableUndoCommand(m, selection, true, parent) {
    setText(QStringLiteral("MoveCellContentsCommand"));
    const int top = TableModel::selectionMinRow(selection);
    const int left = TableModel::selectionMinCol(selection);
    row_offset = std::max(dy, -top);
    col_offset = std::max(dx, -left);
    if ((row_offset == 0 && col_offset == 0) || selection.empty()) {
        is_valid = false;
        return;
    }
    std::vector<Block> extents;
    for (const Range& member : selection) {
        Block b;
        if (!rawBlockOf(*model, member, b)) continue;
        // The area the move sweeps: the block and what it passes over.
        Block e{std::min(b.r0, b.r0 + row_offset), std::max(b.r1, b.r1 + row_offset),
                std::min(b.c0, b.c0 + col_offset), std::max(b.c1, b.c1 + col_offset)};
        for (const Block& other : extents)
            if (overlaps(e, other)) {
                // Sweeps that cross would move cells twice.
                is_valid = false;
                return;
            }
        extents.push_back(e);
        const StoredCells old = model->tableData().captureRaw(e.r0, e.r1, e.c0, e.c1);
        const Grid grid(old);
        const int h = b.r1 - b.r0 + 1, w = b.c1 - b.c0 + 1;
        // Where the cell now at (r, c) of the sweep comes from: a cell of
        // the block from its place less the offset; a passed-over cell
        // from the far side of the block.
        auto sourceRow = [&](int r) {
            if (row_offset == 0) return r;
            const bool in_block = r >= b.r0 + row_offset && r <= b.r1 + row_offset;
            if (in_block) return r - row_offset;
            return row_offset < 0 ? r - h : r + h;
        };
        auto sourceCol = [&](int c) {
            if (col_offset == 0) return c;
            const bool in_block = c >= b.c0 + col_offset && c <= b.c1 + col_offset;
            if (in_block) return c - col_offset;
            return col_offset < 0 ? c - w : c + w;
        };
        StoredCells moved(e.r0, e.r1, e.c0, e.c1);
        for (int r = e.r0; r <= e.r1; ++r) {
            const int sr = sourceRow(r);
            for (int c = e.c0; c <= e.c1; ++c) {
                // A row move keeps each cell's column; cells of a sweep both
                // ways take their row first, then their column.
                const bool row_in_block =
                    row_offset == 0 || (r >= b.r0 + row_offset && r <= b.r1 + row_offset);
                const int sc = row_in_block ? sourceCol(c) : c;
                bool quoted = false;
                const QByteArrayView bytes = grid.at(sr, sc, &quoted);
                moved.append(bytes, quoted);
            }
        }
        cell_values.push_back(rangeFor(e, std::move(moved), old));
        for (int r = std::max(e.r0, 0); r <= e.r1 && rows_changed.size() < 1000; ++r)
            rows_changed.push_back(r);
        for (int c = std::max(e.c0, 0); c <= e.c1 && cols_changed.size() < 1000; ++c)
            cols_changed.push_back(c);
    }
    is_valid = model->rangesChange(cell_values) || !cell_values.empty();
    RangeVector after = selection;
    for (Range& r : after)
        r.shift(row_offset, col_offset, false);
    redo_selection = model->toRawSelection(after);
    undo_selection = model->toRawSelection(selection);
}

void MoveCellContentsCommand::scrollToEdge() {
    const RangeVector& sel = model->selectionRanges();
    if (row_offset != 0)
        emit model->scrollToRowSignal(row_offset < 0 ? TableModel::selectionMinRow(sel)
                                                     : model->selectionMaxRow(sel, true),
                                      true, true);
    if (col_offset != 0)
        emit model->scrollToColSignal(col_offset < 0 ? TableModel::selectionMinCol(sel)
                                                     : model->selectionMaxCol(sel, true),
                                      true, true);
}

void MoveCellContentsCommand::redo() {
    noteSize();
    model->writeRanges(cell_values, false);
    model->autoFitChangedLines(cell_values);
    model->setSelectedRanges(redo_selection, true);
    scrollToEdge();
    emit model->refreshHeadersSignal();
    redoEpilogue();
}

void MoveCellContentsCommand::undo() {
    model->writeRanges(cell_values, true);
    model->autoFitChangedLines(cell_values);
    model->setSelectedRanges(undo_selection, true);
    scrollToEdge();
    undoEpilogue();
}
