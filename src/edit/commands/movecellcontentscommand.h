#pragma once

#include "edit/commands/tableundocommand.h"

#include <vector>

// Moves the selected cells' contents by an offset. The cells the block
// passes over shift the other way, so a move never overwrites: moving a
// block up one row exchanges it with the row above. Offsets that would
// leave the table at the top or left are cut at its edge; at the bottom
// and right the table grows.
class MoveCellContentsCommand : public TableUndoCommand {
public:
    MoveCellContentsCommand(TableModel* model, RangeVector selection, int row_offset,
                            int col_offset, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    int row_offset = 0;
    int col_offset = 0;
    std::vector<int> rows_changed;
    std::vector<int> cols_changed;
    RangeVector cell_values; // each block passed over: new and old contents

private:
    void scrollToEdge();
};
