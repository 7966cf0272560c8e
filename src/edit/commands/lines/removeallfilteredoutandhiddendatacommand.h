#pragma once

#include "edit/commands/lines/linecommand.h"

// Makes the present view the table: every hidden row and column goes, with
// its cells kept for undo, which puts them back hidden as they were.
class RemoveAllFilteredOutAndHiddenDataCommand : public LineCommand {
public:
    RemoveAllFilteredOutAndHiddenDataCommand(TableModel* model, RangeVector selection,
                                             QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    std::vector<int> hidden_rows; // raw, before the removal
    std::vector<int> hidden_cols;

private:
    RemovedLines removed_rows;
    RemovedLines removed_cols;
};
