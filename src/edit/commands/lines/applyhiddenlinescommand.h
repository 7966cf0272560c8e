#pragma once

#include "edit/commands/tableundocommand.h"

#include <vector>

// Hides and shows lines by replacing the user's hidden list of one axis.
// A list equal to the present one makes no undo step. The row and column
// forms are ApplyHiddenRowsCommand and ApplyHiddenColsCommand.
class ApplyHiddenLinesCommand : public TableUndoCommand {
public:
    ApplyHiddenLinesCommand(TableModel* model, RangeVector selection, bool rows,
                            std::vector<int> new_hidden, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    std::vector<int> new_hidden; // raw, ascending
    std::vector<int> old_hidden; // raw, ascending
    RangeVector selection;       // raw
    bool rows = true;

private:
    void apply(const std::vector<int>& hidden);
};
