#include "duplicatecellcontentscommand.h"

#include "edit/commands/cellblocks.h"

#include <algorithm>

using namespace cellblocks;

DuplicateCellContentsCommand::DuplicateCellContentsCommand(TableModel* m, RangeVector selection,
                                                           int dir, QUndoCommand* parent)
    : TableUndoCommand(m, selection, true, parent), direction(dir) {
    // The neighbour: one block's height or width away.
    build(
        selection,
        [this](int h, int w) {
            return std::pair{direction == 0   ? -h
                             : direction == 1 ? h
                                              : 0,
                             direction == 2   ? -w
                             : direction == 3 ? w
                                              : 0};
        },
        true);
}

DuplicateCellContentsCommand::DuplicateCellContentsCommand(TableModel* m, RangeVector selection,
                                                           int to_model_row, int to_model_col,
                                                           QUndoCommand* parent)
    : TableUndoCommand(m, selection, true, parent), direction(-1) {
    // Every member moves by the main member's offset to the target cell,
    // counted on raw lines so that hidden ones between are counted too.
    Block main_block;
    bool found = false;
    for (const Range& member : selection)
        if (member.is_main) found = rawBlockOf(*model, member, main_block);
    if (!found && !selection.empty()) found = rawBlockOf(*model, selection.front(), main_block);
    const TableData& d = model->tableData();
    const int dr = d.rawRowFromModel(to_model_row) - main_block.r0;
    const int dc = d.rawColumnFromModel(to_model_col) - main_block.c0;
    if (!found || (dr == 0 && dc == 0)) {
        is_valid = false;
        return;
    }
    build(
        selection,
        [dr, dc](int, int) {
            return std::pair{dr, dc};
        },
        false);
}

void DuplicateCellContentsCommand::build(const RangeVector& selection,
                                         const std::function<std::pair<int, int>(int, int)>& offset,
                                         bool select_both) {
    RangeVector after;
    for (const Range& member : selection) {
        Block b;
        if (!rawBlockOf(*model, member, b)) continue;
        const int h = b.r1 - b.r0 + 1, w = b.c1 - b.c0 + 1;
        const auto [dr, dc] = offset(h, w);
        Block t = b;
        t.r0 += dr, t.r1 += dr, t.c0 += dc, t.c1 += dc;
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
        Range shown = Range::wholeTable(Range::Raw);
        shown.row = select_both ? std::min(b.r0, t.r0) : t.r0;
        shown.row_end = select_both ? std::max(b.r1, t.r1) : t.r1;
        shown.col = select_both ? std::min(b.c0, t.c0) : t.c0;
        shown.col_end = select_both ? std::max(b.c1, t.c1) : t.c1;
        if (member.is_main) {
            const RangeVector raw_member = model->toRawSelection(RangeVector{member});
            const auto [mr, mc] = raw_member.front().mainPosition();
            shown.is_main = true;
            shown.main_offset_row = select_both ? mr : mr + dr;
            shown.main_offset_col = select_both ? mc : mc + dc;
        }
        after.push_back(shown);
    }
    is_valid = !target.empty() && model->rangesChange(target);
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
