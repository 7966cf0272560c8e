#pragma once

#include "edit/commands/lines/insertlinescommand.h"

// Copies of each selected line, `count` times, just below (right of) it.
class DuplicateRowsCommand : public InsertLinesCommand {
public:
    DuplicateRowsCommand(TableModel* model, RangeVector selection, int count,
                         QUndoCommand* parent = nullptr)
        : InsertLinesCommand(model, std::move(selection), true, count, false, true, parent) {}
};
