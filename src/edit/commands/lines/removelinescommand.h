#pragma once

#include "edit/commands/lines/linecommand.h"

// Removes whole lines: those the selection touches, or a list of raw lines
// (empties, duplicates). Redo keeps the removed lines' cells as the store
// held them; undo puts them back byte for byte. RemoveRowsCommand and
// RemoveColsCommand are its two forms.
class RemoveLinesCommand : public LineCommand {
public:
    // The lines the selection touches.
    RemoveLinesCommand(TableModel* model, RangeVector selection, bool rows,
                       QUndoCommand* parent = nullptr);
    // The given raw lines; `selection` is only restored by undo.
    RemoveLinesCommand(TableModel* model, RangeVector selection, bool rows,
                       std::vector<int> raw_lines, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    std::vector<int> lines; // raw, ascending
    LineRuns spans;         // merged runs of `lines`
    RemovedLines removed_data;

private:
    void setLines(std::vector<int> raw_lines);
};
