#pragma once

#include "edit/commands/tableundocommand.h"

#include <functional>
#include <vector>

// Copies each selected block onto its neighbour of the same size in a
// direction (0 up, 1 down, 2 left, 3 right); the selection then covers both.
// The "To" form (direction -1) copies the blocks so that the main one starts
// at a model cell, the others keeping their places to it; the copies are
// selected. A copy that would leave the table at the top or left is cut at
// its edge.
class DuplicateCellContentsCommand : public TableUndoCommand {
public:
    DuplicateCellContentsCommand(TableModel* model, RangeVector selection, int direction,
                                 QUndoCommand* parent = nullptr);
    DuplicateCellContentsCommand(TableModel* model, RangeVector selection, int to_model_row,
                                 int to_model_col, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    int direction;
    RangeVector target;
    std::vector<int> rows_changed;
    std::vector<int> cols_changed;

private:
    // Copies each member onto itself moved by the (rows, columns) `offset`
    // gives for its height and width; `select_both` selects source and copy
    // together, else the copy alone.
    void build(const RangeVector& selection,
               const std::function<std::pair<int, int>(int, int)>& offset, bool select_both);
};
