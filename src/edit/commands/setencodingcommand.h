#pragma once

#include "edit/commands/tableundocommand.h"

// Changes the encoding a save writes with. The cells are re-encoded so
// that their text stays; where the new encoding cannot hold some text, the
// table as it was is kept, so that undo gives back every byte.
class SetEncodingCommand : public TableUndoCommand {
public:
    SetEncodingCommand(TableModel* model, EncodingType new_value, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    EncodingType new_value;
    EncodingType old_value;
    bool old_set;

private:
    StoredCells lost; // the table before a change that lost text
    bool lossy = false;
};
