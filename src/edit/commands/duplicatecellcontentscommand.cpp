#include "duplicatecellcontentscommand.h"

#include "edit/commands/cellblocks.h"

#include <algorithm>

using namespace cellblocks;

DuplicateCellContentsCommand::DuplicateCellContentsCommand(TableModel* m, RangeVector selection,
                                                           int dir, QUndoCommand* parent)
    : TableUndoCommand(m, selection, true, parent), direction(dir) {
    RangeVector after;
    for (const Range& member : selection) {
        Block b;
        if (!rawBlockOf(*model, member, b)) continue;
        const int h = b.r1 - b.r0 + 1, w = b.c1 - b.c0 + 1;
        Block t = b;
        switch (direction) {
        case 0:
            t.r0 = b.r0 - h, t.r1 = b.r0 - 1;
            break;
        case 1:
            t.r0 = b.r1 + 1, t.r1 = b.r1 + h;
            break;
        case 2:
            t.c0 = b.c0 - w, t.c1 = b.c0 - 1;
            break;
        default:
            t.c0 = b.c1 + 1, t.c1 = b.c1 + w;
            break;
        }
        // Cut at the top or left edge: the rows or columns nearest the
        // source stay, the far ones fall off.
        const int cut_rows = std::max(0, -t.r0), cut_cols = std::max(0, -t.c0);
        t.r0 += cut_rows;
        t.c0 += cut_cols;
        if (t.r0 > t.r1 || t.c0 > t.c1) continue;
        const StoredCells source =
            model->tableData().captureRaw(b.r0 + cut_rows, b.r1, b.c0 + cut_cols, b.c1);
        const Grid grid(source);
        StoredCells copy(t.r0, t.r1, t.c0, t.c1);
        for (int r = 0; r <= t.r1 - t.r0; ++r)
            for (int c = 0; c <= t.c1 - t.c0; ++c) {
                bool quoted = false;
                const QByteArrayView bytes =
                    grid.at(b.r0 + cut_rows + r, b.c0 + cut_cols + c, &quoted);
                copy.append(bytes, quoted);
            }
        target.push_back(
            rangeFor(t, std::move(copy), model->tableData().captureRaw(t.r0, t.r1, t.c0, t.c1)));
        for (int r = t.r0; r <= t.r1 && rows_changed.size() < 1000; ++r)
            rows_changed.push_back(r);
        for (int c = t.c0; c <= t.c1 && cols_changed.size() < 1000; ++c)
            cols_changed.push_back(c);
        Range both = Range::wholeTable(Range::Raw);
        both.row = std::min(b.r0, t.r0);
        both.row_end = std::max(b.r1, t.r1);
        both.col = std::min(b.c0, t.c0);
        both.col_end = std::max(b.c1, t.c1);
        if (member.is_main) {
            const RangeVector raw_member = model->toRawSelection(RangeVector{member});
            const auto [mr, mc] = raw_member.front().mainPosition();
            both.is_main = true;
            both.main_offset_row = mr;
            both.main_offset_col = mc;
        }
        after.push_back(both);
    }
    is_valid = model->rangesChange(target);
    redo_selection = after;
}

void DuplicateCellContentsCommand::redo() {
    noteSize();
    model->writeRanges(target, false);
    model->autoFitChangedLines(target);
    model->setSelectedRanges(redo_selection, true);
    const RangeVector& sel = model->selectionRanges();
    if (direction == 0) emit model->scrollToRowSignal(TableModel::selectionMinRow(sel), true, true);
    if (direction == 1)
        emit model->scrollToRowSignal(model->selectionMaxRow(sel, true), true, true);
    if (direction == 2) emit model->scrollToColSignal(TableModel::selectionMinCol(sel), true, true);
    if (direction == 3)
        emit model->scrollToColSignal(model->selectionMaxCol(sel, true), true, true);
    emit model->refreshHeadersSignal();
    redoEpilogue();
}

void DuplicateCellContentsCommand::undo() {
    model->writeRanges(target, true);
    model->autoFitChangedLines(target);
    model->setSelectedRanges(undo_selection, true);
    undoEpilogue();
}
