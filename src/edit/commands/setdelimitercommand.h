#pragma once

#include "edit/commands/tableundocommand.h"

// Changes the save delimiter a save writes with. It touches no cell, yet it is a
// step of the undo stack because it changes what the file will hold.
class SetDelimiterCommand : public TableUndoCommand {
public:
    SetDelimiterCommand(TableModel* model, QString new_value, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    QString new_value;
    QString old_value;
    bool old_set;
};
