#pragma once

#include "edit/commands/tableundocommand.h"

// Changes the quoting standard a save writes with. It touches no cell, yet it is a
// step of the undo stack because it changes what the file will hold.
class SetParsingStandardCommand : public TableUndoCommand {
public:
    SetParsingStandardCommand(TableModel* model, ParsingStandard new_value,
                              QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    ParsingStandard new_value;
    ParsingStandard old_value;
    bool old_set;
};
