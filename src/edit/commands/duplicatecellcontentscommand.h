#pragma once

#include "edit/commands/tableundocommand.h"

#include <vector>

// Copies each selected block onto its neighbour of the same size in a
// direction (0 up, 1 down, 2 left, 3 right); the selection then covers both.
// A copy that would leave the table at the top or left is cut at its edge.
class DuplicateCellContentsCommand : public TableUndoCommand {
public:
    DuplicateCellContentsCommand(TableModel* model, RangeVector selection, int direction,
                                 QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    int direction;
    RangeVector target;
    std::vector<int> rows_changed;
    std::vector<int> cols_changed;
};
