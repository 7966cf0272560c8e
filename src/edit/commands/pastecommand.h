#pragma once

#include "edit/commands/tableundocommand.h"

// Cells from the clipboard or a drop. One value fills every selected cell;
// a block of values lands with its top left on the selection's, running
// over as far as it needs, the table growing with it.
class PasteCommand : public TableUndoCommand {
public:
    // `clipboard_ranges` as the clipboard reader gives them: Cells from (0, 0).
    PasteCommand(TableModel* model, RangeVector selection, const RangeVector& clipboard_ranges,
                 bool set_selection, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    RangeVector selection;
    RangeVector target;
};
