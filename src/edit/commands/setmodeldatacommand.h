#pragma once

#include "edit/commands/tableundocommand.h"

// Writes new values into cells and back. The cells carry their new values;
// old ones are captured from the table when the command is made, unless
// the caller filled them. With `clear_cells` it is a move: those cells (the
// sources) are emptied and `cells` (the targets) written, in one step.
class SetModelDataCommand : public TableUndoCommand {
public:
    SetModelDataCommand(TableModel* model, RangeVector cells, bool set_selection, bool capture,
                        QUndoCommand* parent = nullptr);
    SetModelDataCommand(TableModel* model, RangeVector cells, RangeVector clear_cells,
                        bool has_clear_cells, bool set_selection, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    RangeVector clear_cells;
    bool has_clear_cells = false;
};
