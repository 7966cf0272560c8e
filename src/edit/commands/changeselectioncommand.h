#pragma once

#include "edit/commands/tableundocommand.h"

// A change of selection that the user should be able to step back from
// (one that jumps far, as a search over the whole table does).
class ChangeSelectionCommand : public TableUndoCommand {
public:
    ChangeSelectionCommand(TableModel* model, RangeVector new_selection, RangeVector before,
                           QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    RangeVector before;
};
