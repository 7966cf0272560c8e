#pragma once

#include "edit/commands/lines/movelinescommand.h"

// Columns left (-1) or right (1) one place.
class MoveColsRelativeCommand : public MoveLinesCommand {
public:
    MoveColsRelativeCommand(TableModel* model, RangeVector selection, int offset,
                            QUndoCommand* parent = nullptr)
        : MoveLinesCommand(model, std::move(selection), false, parent) {
        initRelative(offset);
    }
};
