#include "removeallfilteredoutandhiddendatacommand.h"

RemoveAllFilteredOutAndHiddenDataCommand::RemoveAllFilteredOutAndHiddenDataCommand(
    TableModel* m, RangeVector selection, QUndoCommand* parent)
    : LineCommand(m, std::move(selection), true, parent) {
    setText(QStringLiteral("RemoveAllFilteredOutAndHiddenDataCommand"));
    // Every hidden line: those the filters leave out and those the user hid.
    hidden_rows = model->rawHiddenRows();
    hidden_cols = model->rawHiddenCols();
    is_valid = !hidden_rows.empty() || !hidden_cols.empty();
}

void RemoveAllFilteredOutAndHiddenDataCommand::redo() {
    keepHidden();
    // Shown first, so that the lines leave as plain lines, and no filter
    // is left to hide anything.
    model->applyFiltersAndHiddenData({}, {}, {});
    removed_rows = model->takeRawRows(runsOf(hidden_rows));
    removed_cols = model->takeRawCols(runsOf(hidden_cols));
    model->selectSingleCell(Range(0, 0, Range::Model));
    finishRedo();
}

void RemoveAllFilteredOutAndHiddenDataCommand::undo() {
    model->restoreRawLines(removed_cols);
    model->restoreRawLines(removed_rows);
    removed_rows = removed_cols = RemovedLines();
    restoreHidden();
    model->setSelectedRanges(undo_selection, true);
    finishUndo();
}
