#pragma once

#include "edit/commands/lines/removelinescommand.h"

// Removes the selected columns, or the given raw columns.
class RemoveColsCommand : public RemoveLinesCommand {
public:
    RemoveColsCommand(TableModel* model, RangeVector selection, QUndoCommand* parent = nullptr)
        : RemoveLinesCommand(model, std::move(selection), false, parent) {}
    RemoveColsCommand(TableModel* model, RangeVector selection, std::vector<int> raw_lines,
                      QUndoCommand* parent = nullptr)
        : RemoveLinesCommand(model, std::move(selection), false, std::move(raw_lines), parent) {}
};
