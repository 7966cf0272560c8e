#pragma once

#include "edit/commands/tableundocommand.h"

// Rows become columns and columns rows, by a flag: nothing is copied. The
// selection turns with the table.
class TransposeTableCommand : public TableUndoCommand {
public:
    TransposeTableCommand(TableModel* model, RangeVector selection, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    RangeVector transposed_selection; // model
};
