#include "sortcommand.h"

SortCommand::SortCommand(TableModel* m, SortState state, QUndoCommand* parent, bool use_event_loop)
    : TableUndoCommand(m, RangeVector(), false, parent), order(state.order), axis(state.axis),
      index(state.index) {
    makePermutation(use_event_loop);
}

SortCommand::SortCommand(TableModel* m, const RangeVector& selection, bool set_sel, int order_,
                         int axis_, QUndoCommand* parent, bool use_event_loop)
    : TableUndoCommand(m, selection, set_sel, parent), order(order_), axis(axis_) {
    const Range main = m->mainCell();
    TableData& data = m->tableData();
    index = axis == 0 ? data.rawColumnFromModel(main.col) : data.rawRowFromModel(main.row);
    makePermutation(use_event_loop);
}

void SortCommand::makePermutation(bool use_event_loop) {
    const TableData& data = model->tableData();
    const int lines = axis == 0 ? data.numRawColumns() : data.numRawRows();
    // A key line past the data holds nothing to sort by.
    is_valid = (order == 0 || order == 1) && (axis == 0 || axis == 1) && index >= 0 &&
               index < lines &&
               model->getSortPermutation(permutation, {order, axis, index},
                                         model->firstSortedLine(axis), use_event_loop);
}

void SortCommand::redo() {
    if (axis == 0)
        model->sortRowsByColumn(permutation, order, index);
    else
        model->sortColsByRow(permutation, order, index);
    if (set_selection) model->setSelectedRanges(redo_selection, true);
    emit model->updateFindReplaceMatchesSignal();
    model->saveIfSaveAfterEachEdit();
}

void SortCommand::undo() {
    if (axis == 0)
        model->unsortRows(permutation);
    else
        model->unsortCols(permutation);
    model->setColSort(col_sort_state.record());
    emit model->refreshHeadersSignal();
    model->setRowSort(row_sort_state.record());
    emit model->refreshHeadersSignal();
    if (set_selection) model->setSelectedRanges(undo_selection, true);
    emit model->updateFindReplaceMatchesSignal();
    model->saveIfSaveAfterEachEdit();
}
