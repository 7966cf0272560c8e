#pragma once

#include "edit/commands/lines/movelinescommand.h"

// The selected rows to stand just above model row target.
class MoveRowsAbsoluteCommand : public MoveLinesCommand {
public:
    MoveRowsAbsoluteCommand(TableModel* model, RangeVector selection, int target,
                            QUndoCommand* parent = nullptr)
        : MoveLinesCommand(model, std::move(selection), true, parent) {
        initAbsolute(target);
    }
};
