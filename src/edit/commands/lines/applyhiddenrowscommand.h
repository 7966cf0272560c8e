#pragma once

#include "edit/commands/lines/applyhiddenlinescommand.h"

// The user's hidden rows become `new_hidden` (raw).
class ApplyHiddenRowsCommand : public ApplyHiddenLinesCommand {
public:
    ApplyHiddenRowsCommand(TableModel* model, RangeVector selection, std::vector<int> new_hidden,
                           QUndoCommand* parent = nullptr)
        : ApplyHiddenLinesCommand(model, std::move(selection), true, std::move(new_hidden),
                                  parent) {}
};
