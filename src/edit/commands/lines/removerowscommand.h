#pragma once

#include "edit/commands/lines/removelinescommand.h"

// Removes the selected rows, or the given raw rows.
class RemoveRowsCommand : public RemoveLinesCommand {
public:
    RemoveRowsCommand(TableModel* model, RangeVector selection, QUndoCommand* parent = nullptr)
        : RemoveLinesCommand(model, std::move(selection), true, parent) {}
    RemoveRowsCommand(TableModel* model, RangeVector selection, std::vector<int> raw_lines,
                      QUndoCommand* parent = nullptr)
        : RemoveLinesCommand(model, std::move(selection), true, std::move(raw_lines), parent) {}
};
