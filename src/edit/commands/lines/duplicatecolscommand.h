#pragma once

#include "edit/commands/lines/insertlinescommand.h"

// Copies of each selected line, `count` times, just below (right of) it.
class DuplicateColsCommand : public InsertLinesCommand {
public:
    DuplicateColsCommand(TableModel* model, RangeVector selection, int count,
                         QUndoCommand* parent = nullptr)
        : InsertLinesCommand(model, std::move(selection), false, count, false, true, parent) {}
};
