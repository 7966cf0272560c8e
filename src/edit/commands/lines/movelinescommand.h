#pragma once

#include "edit/commands/lines/linecommand.h"

#include <array>

// Moves whole lines among the visible ones; hidden lines keep their raw
// places. A move is a short list of rotations of model positions, which
// undo runs backwards, each inverted: a row move stores a few integers and
// no cell. Its forms: MoveRowsRelativeCommand (up or down one, only for
// wholly selected rows), MoveRowsAbsoluteCommand (all selected rows to
// stand just above a target row, in their order), and the column twins.
class MoveLinesCommand : public LineCommand {
public:
    void redo() override;
    void undo() override;

    int offset = 0;           // relative moves: -1 or 1
    int target = -1;          // absolute moves: the model line they go above
    int resulting_offset = 0; // absolute moves: where the first moved line lands

protected:
    MoveLinesCommand(TableModel* model, RangeVector selection, bool rows,
                     QUndoCommand* parent = nullptr);
    void initRelative(int offset);
    void initAbsolute(int target);

private:
    std::vector<std::array<int, 3>> rotations; // first, middle, last
    RangeVector moved_selection;               // model, after redo
    int raw_before = 0;
    int stored_mark = 0;
};
