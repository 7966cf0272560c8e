#pragma once

#include "edit/commands/lines/applyhiddenlinescommand.h"

// The user's hidden columns become `new_hidden` (raw).
class ApplyHiddenColsCommand : public ApplyHiddenLinesCommand {
public:
    ApplyHiddenColsCommand(TableModel* model, RangeVector selection, std::vector<int> new_hidden,
                           QUndoCommand* parent = nullptr)
        : ApplyHiddenLinesCommand(model, std::move(selection), false, std::move(new_hidden),
                                  parent) {}
};
