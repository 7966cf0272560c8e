#include "removeemptyrowscolsatendcommand.h"

RemoveEmptyRowsColsAtEndCommand::RemoveEmptyRowsColsAtEndCommand(TableModel* m,
                                                                 RangeVector selection,
                                                                 QUndoCommand* parent)
    : LineCommand(m, std::move(selection), true, parent) {
    setText(QStringLiteral("RemoveEmptyRowsColsAtEndCommand"));
    const TableData& d = model->tableData();
    num_empty_rows = std::max(d.trailingEmptyRows(), 0);
    num_empty_cols = std::max(d.trailingEmptyColumns(), 0);
    first_empty_row = d.numRawRows() - num_empty_rows;
    first_empty_col = d.numRawColumns() - num_empty_cols;
    is_valid = num_empty_rows > 0 || num_empty_cols > 0;
}

void RemoveEmptyRowsColsAtEndCommand::redo() {
    keepHidden();
    if (num_empty_rows > 0) removed_rows = model->takeRawRows({{first_empty_row, num_empty_rows}});
    if (num_empty_cols > 0) removed_cols = model->takeRawCols({{first_empty_col, num_empty_cols}});
    model->clampSelectionToRows();
    model->clampSelectionToColumns();
    finishRedo();
}

void RemoveEmptyRowsColsAtEndCommand::undo() {
    model->restoreRawLines(removed_cols);
    model->restoreRawLines(removed_rows);
    removed_rows = removed_cols = RemovedLines();
    restoreHidden();
    model->setSelectedRanges(undo_selection, true);
    finishUndo();
}
