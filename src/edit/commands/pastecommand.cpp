#include "pastecommand.h"

#include <algorithm>

PasteCommand::PasteCommand(TableModel* m, RangeVector sel, const RangeVector& clipboard,
                           bool set_sel, QUndoCommand* parent)
    : TableUndoCommand(m, sel, set_sel, parent), selection(std::move(sel)) {
    setText(QStringLiteral("PasteCommand"));
    if (clipboard.empty() || selection.empty()) {
        is_valid = false;
        return;
    }
    if (clipboard.size() == 1) {
        target = selection;
        for (Range& r : target) {
            r.value = clipboard.front().value.toString();
            r.values.clear();
            r.value_grid.clear();
            r.is_main = false;
        }
    } else {
        // The cells become one block of values, so that a big paste is one
        // range and not one per cell.
        int rows = 0, cols = 0;
        for (const Range& c : clipboard) {
            rows = std::max(rows, c.row + 1);
            cols = std::max(cols, c.col + 1);
        }
        Range block = Range::wholeTable(Range::Model);
        block.row = TableModel::selectionMinRow(selection);
        block.col = TableModel::selectionMinCol(selection);
        block.row_end = block.row + rows - 1;
        block.col_end = block.col + cols - 1;
        block.value_grid.assign(size_t(rows), std::vector<QVariant>(size_t(cols), QString()));
        for (const Range& c : clipboard)
            block.value_grid[size_t(c.row)][size_t(c.col)] = c.value.toString();
        target.push_back(std::move(block));
    }
    target = model->toRawRanges(target);
    RangeVector old = target;
    model->captureRanges(old, false, true);
    for (size_t i = 0; i < target.size(); ++i)
        target[i].old_value = std::move(old[i].old_value);
    is_valid = model->rangesChange(target);
}

void PasteCommand::redo() {
    noteSize();
    model->writeRanges(target, false);
    if (set_selection) model->setSelectedRanges(redo_selection, true);
    model->autoFitChangedLines(target);
    redoEpilogue();
}

void PasteCommand::undo() {
    model->writeRanges(target, true);
    if (set_selection) model->setSelectedRanges(undo_selection, true);
    model->autoFitChangedLines(target);
    undoEpilogue();
}
