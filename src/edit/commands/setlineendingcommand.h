#pragma once

#include "edit/commands/tableundocommand.h"

// Changes the line ending a save writes with. It touches no cell, yet it is a
// step of the undo stack because it changes what the file will hold.
class SetLineEndingCommand : public TableUndoCommand {
public:
    SetLineEndingCommand(TableModel* model, LineEndingType new_value,
                         QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    LineEndingType new_value;
    LineEndingType old_value;
    bool old_set;
};
