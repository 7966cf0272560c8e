#include "changeselectioncommand.h"

ChangeSelectionCommand::ChangeSelectionCommand(TableModel* m, RangeVector new_selection,
                                               RangeVector old, QUndoCommand* parent)
    : TableUndoCommand(m, std::move(new_selection), false, parent) {
    cells = model->toRawSelection(cells);
    before = model->toRawSelection(old);
}

void ChangeSelectionCommand::redo() {
    model->setSelectedRanges(cells, true);
    emit model->scrollToMainCellSignal(true, false);
}

void ChangeSelectionCommand::undo() {
    model->setSelectedRanges(before, true);
    emit model->scrollToMainCellSignal(true, false);
}
