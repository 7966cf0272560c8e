#pragma once

#include "edit/commands/lines/linecommand.h"

#include <map>

// Inserts empty lines before or after each run of neighbouring lines the
// selection touches: `count` of them, or with `count` 0 as many as the run
// holds (three selected rows, three new rows above them). With `duplicate`
// each selected line gets `count` copies of itself just below it.
// The row and column forms are InsertRowsCommand, InsertColsCommand,
// DuplicateRowsCommand and DuplicateColsCommand.
class InsertLinesCommand : public LineCommand {
public:
    InsertLinesCommand(TableModel* model, RangeVector selection, bool rows, int count, bool before,
                       bool duplicate, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    // Raw positions at which the insertions run, ascending, as the table
    // stands before the command, and how many lines go in at each.
    std::vector<int> lines;
    std::vector<int> counts;
    // Each selected line (raw) to where it stands after the insertion.
    std::map<int, int> line_map;
    int count = 1;
    bool before = true;
    bool duplicate = false;

private:
    int raw_before = 0;
    int stored_mark = 0;
    std::vector<StoredCells> sources; // each duplicated line's cells
};
