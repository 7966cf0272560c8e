#include "applyhiddenlinescommand.h"

#include <algorithm>

ApplyHiddenLinesCommand::ApplyHiddenLinesCommand(TableModel* m, RangeVector sel, bool rows_axis,
                                                 std::vector<int> hidden, QUndoCommand* parent)
    : TableUndoCommand(m, std::move(sel), false, parent), new_hidden(std::move(hidden)),
      rows(rows_axis) {
    setText(QString::fromLatin1(rows ? "ApplyHiddenRowsCommand" : "ApplyHiddenColsCommand"));
    old_hidden = rows ? model->userHiddenRows() : model->userHiddenCols();
    const int size = rows ? model->tableData().numRawRows() : model->tableData().numRawColumns();
    std::sort(new_hidden.begin(), new_hidden.end());
    new_hidden.erase(std::unique(new_hidden.begin(), new_hidden.end()), new_hidden.end());
    new_hidden.erase(std::lower_bound(new_hidden.begin(), new_hidden.end(), size),
                     new_hidden.end());
    new_hidden.erase(new_hidden.begin(), std::lower_bound(new_hidden.begin(), new_hidden.end(), 0));
    selection = model->toRawSelection(cells);
    is_valid = new_hidden != old_hidden;
}

void ApplyHiddenLinesCommand::apply(const std::vector<int>& hidden) {
    if (rows)
        model->setHiddenRows(hidden);
    else
        model->setHiddenCols(hidden);
    // Members on lines now hidden drop; with none left the top left cell.
    model->setSelectedRanges(selection, true);
    emit model->scrollToMainCellSignal(true, false);
    emit model->refreshHeadersSignal();
    emit model->updateFindReplaceMatchesSignal();
}

void ApplyHiddenLinesCommand::redo() {
    apply(new_hidden);
    model->setColSort({2, 1, -1});
    model->setRowSort({2, 0, -1});
}

void ApplyHiddenLinesCommand::undo() {
    apply(old_hidden);
    model->setColSort(col_sort_state.record());
    emit model->refreshHeadersSignal();
    model->setRowSort(row_sort_state.record());
    emit model->refreshHeadersSignal();
}
