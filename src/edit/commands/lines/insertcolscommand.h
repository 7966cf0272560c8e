#pragma once

#include "edit/commands/lines/insertlinescommand.h"

// `count` empty lines before or after each selected line.
class InsertColsCommand : public InsertLinesCommand {
public:
    InsertColsCommand(TableModel* model, RangeVector selection, int count, bool before,
                      QUndoCommand* parent = nullptr)
        : InsertLinesCommand(model, std::move(selection), false, count, before, false, parent) {}
};
