#include "tableundocommand.h"

TableUndoCommand::TableUndoCommand(TableModel* m, RangeVector c, RangeVector selection,
                                   bool set_sel, QUndoCommand* parent)
    : QUndoCommand(parent), model(m), cells(std::move(c)), set_selection(set_sel),
      col_sort_state(SortState::of(m->colSort())), row_sort_state(SortState::of(m->rowSort())) {
    if (set_selection) {
        redo_selection = m->toRawSelection(cells);
        undo_selection = m->toRawSelection(selection);
    }
}

TableUndoCommand::TableUndoCommand(TableModel* m, RangeVector c, bool set_sel, QUndoCommand* parent)
    : QUndoCommand(parent), model(m), cells(std::move(c)), set_selection(set_sel),
      col_sort_state(SortState::of(m->colSort())), row_sort_state(SortState::of(m->rowSort())) {
    if (set_selection) setSelection(cells);
}

void TableUndoCommand::setSelection(const RangeVector& selection) {
    redo_selection = model->toRawSelection(selection);
    undo_selection = redo_selection;
}

void TableUndoCommand::noteSize() {
    stored_mark = model->tableData().storedRowMark();
    if (size_preset) {
        size_preset = false;
        return;
    }
    rows_before = model->tableData().numRawRows();
    cols_before = model->tableData().numRawColumns();
}

void TableUndoCommand::redoEpilogue() {
    model->enforceTableSize();
    // Growth is counted on the data, not the grid: the grid's virtual lines
    // come and go with the selection, the data's lines end up in the file.
    num_rows_added = std::max(model->tableData().numRawRows() - rows_before, 0);
    num_cols_added = std::max(model->tableData().numRawColumns() - cols_before, 0);
    model->setColSort({2, 1, -1});
    model->setRowSort({2, 0, -1});
    emit model->updateFindReplaceMatchesSignal();
    model->saveIfSaveAfterEachEdit();
}

void TableUndoCommand::undoEpilogue() {
    TableData& data = model->tableData();
    if (num_rows_added > 0) data.removeRows(data.numModelRows() - num_rows_added, num_rows_added);
    if (num_cols_added > 0)
        data.removeColumns(data.numModelColumns() - num_cols_added, num_cols_added);
    // Rows that were a count only and got written are a count again.
    data.restoreStoredRowMark(stored_mark);
    model->enforceTableSize();
    model->setColSort(col_sort_state.record());
    emit model->refreshHeadersSignal();
    model->setRowSort(row_sort_state.record());
    emit model->refreshHeadersSignal();
    emit model->updateFindReplaceMatchesSignal();
    model->saveIfSaveAfterEachEdit();
}
