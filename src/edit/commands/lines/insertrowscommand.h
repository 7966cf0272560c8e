#pragma once

#include "edit/commands/lines/insertlinescommand.h"

// `count` empty lines before or after each selected line.
class InsertRowsCommand : public InsertLinesCommand {
public:
    InsertRowsCommand(TableModel* model, RangeVector selection, int count, bool before,
                      QUndoCommand* parent = nullptr)
        : InsertLinesCommand(model, std::move(selection), true, count, before, false, parent) {}
};
