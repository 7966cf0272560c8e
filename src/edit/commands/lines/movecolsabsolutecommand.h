#pragma once

#include "edit/commands/lines/movelinescommand.h"

// The selected columns to stand just left of model column target.
class MoveColsAbsoluteCommand : public MoveLinesCommand {
public:
    MoveColsAbsoluteCommand(TableModel* model, RangeVector selection, int target,
                            QUndoCommand* parent = nullptr)
        : MoveLinesCommand(model, std::move(selection), false, parent) {
        initAbsolute(target);
    }
};
