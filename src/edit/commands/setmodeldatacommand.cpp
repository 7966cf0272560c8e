#include "setmodeldatacommand.h"

SetModelDataCommand::SetModelDataCommand(TableModel* m, RangeVector c, bool set_sel, bool capture,
                                         QUndoCommand* parent)
    : TableUndoCommand(m, std::move(c), set_sel, parent) {
    setText(QStringLiteral("SetModelDataCommand"));
    cells = model->toRawRanges(cells);
    if (capture) {
        // Capturing replaces the new-values slot too; keep what the caller gave.
        RangeVector old = cells;
        model->captureRanges(old, false, true);
        for (size_t i = 0; i < cells.size(); ++i)
            cells[i].old_value = std::move(old[i].old_value);
    }
    is_valid = model->rangesChange(cells);
}

SetModelDataCommand::SetModelDataCommand(TableModel* m, RangeVector c, RangeVector clear,
                                         bool has_clear, bool set_sel, QUndoCommand* parent)
    : TableUndoCommand(m, std::move(c), set_sel, parent), clear_cells(std::move(clear)),
      has_clear_cells(has_clear) {
    setText(QStringLiteral("SetModelDataCommand"));
    cells = model->toRawRanges(cells);
    clear_cells = model->toRawRanges(clear_cells);
    for (RangeVector* set : {&cells, &clear_cells}) {
        RangeVector old = *set;
        model->captureRanges(old, false, true);
        for (size_t i = 0; i < set->size(); ++i)
            (*set)[i].old_value = std::move(old[i].old_value);
    }
    for (Range& r : clear_cells) {
        r.value = QString();
        r.values.clear();
        r.value_grid.clear();
    }
    is_valid = model->rangesChange(cells) || model->rangesChange(clear_cells);
}

void SetModelDataCommand::redo() {
    noteSize();
    if (has_clear_cells) {
        model->writeRanges(clear_cells, false);
        model->writeRanges(cells, false);
        RangeVector both = clear_cells;
        both.insert(both.end(), cells.begin(), cells.end());
        model->autoFitChangedLines(both);
    } else {
        model->writeRanges(cells, false);
        model->autoFitChangedLines(cells);
    }
    if (set_selection) model->setSelectedRanges(redo_selection, true);
    redoEpilogue();
}

void SetModelDataCommand::undo() {
    if (clear_cells.empty()) {
        model->writeRanges(cells, true);
        model->autoFitChangedLines(cells);
        if (set_selection)
            model->setSelectedRanges(undo_selection.empty() ? redo_selection : undo_selection,
                                     true);
    } else {
        model->writeRanges(cells, true);
        model->writeRanges(clear_cells, true);
        RangeVector both = clear_cells;
        both.insert(both.end(), cells.begin(), cells.end());
        model->autoFitChangedLines(both);
        if (set_selection) model->setSelectedRanges(undo_selection, true);
    }
    undoEpilogue();
}
