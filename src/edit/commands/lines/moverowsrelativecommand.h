#pragma once

#include "edit/commands/lines/movelinescommand.h"

// Rows up (-1) or down (1) one place.
class MoveRowsRelativeCommand : public MoveLinesCommand {
public:
    MoveRowsRelativeCommand(TableModel* model, RangeVector selection, int offset,
                            QUndoCommand* parent = nullptr)
        : MoveLinesCommand(model, std::move(selection), true, parent) {
        initRelative(offset);
    }
};
