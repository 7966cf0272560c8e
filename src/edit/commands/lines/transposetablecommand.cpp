#include "transposetablecommand.h"

#include <algorithm>
#include <utility>

namespace {

Range turned(Range r) {
    std::swap(r.row, r.col);
    std::swap(r.row_end, r.col_end);
    std::swap(r.main_offset_row, r.main_offset_col);
    std::swap(r.excluded_rows, r.excluded_cols);
    for (auto& cell : r.excluded_cells)
        std::swap(cell.first, cell.second);
    if (r.kind == Range::Row)
        r.kind = Range::Column;
    else if (r.kind == Range::Column)
        r.kind = Range::Row;
    return r;
}

// The columns on screen after the turn: fitting all of them, a column per
// row of a long table, would cost seconds.
void fitColumns(TableModel* model) {
    std::vector<int> cols;
    for (int c = 0; c < std::min(model->columnCount(), 200); ++c)
        cols.push_back(c);
    emit model->enforceAutoFitColWidthsSignal(cols);
}

} // namespace

TransposeTableCommand::TransposeTableCommand(TableModel* m, RangeVector selection,
                                             QUndoCommand* parent)
    : TableUndoCommand(m, std::move(selection), false, parent) {
    setText(QStringLiteral("TransposeTableCommand"));
    for (const Range& r : cells)
        transposed_selection.push_back(turned(r));
}

void TransposeTableCommand::redo() {
    model->transpose();
    model->setSelection(transposed_selection, true);
    model->setColSort({2, 1, -1});
    model->setRowSort({2, 0, -1});
    emit model->refreshHeadersSignal();
    fitColumns(model);
    emit model->scrollToMainCellSignal(true, false);
    emit model->updateFindReplaceMatchesSignal();
    model->saveIfSaveAfterEachEdit();
}

void TransposeTableCommand::undo() {
    model->transpose();
    model->setSelection(cells, true);
    model->setColSort(col_sort_state.record());
    emit model->refreshHeadersSignal();
    model->setRowSort(row_sort_state.record());
    emit model->refreshHeadersSignal();
    fitColumns(model);
    emit model->scrollToMainCellSignal(true, false);
    emit model->updateFindReplaceMatchesSignal();
    model->saveIfSaveAfterEachEdit();
}
