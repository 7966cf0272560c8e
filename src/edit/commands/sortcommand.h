#pragma once

#include "edit/commands/tableundocommand.h"

#include <vector>

// A sort of the table by one line: rows by a column (axis 0) or columns by a
// row (axis 1). The permutation is made while the command is built, on the
// model's worker with progress, so that a cancelled sort leaves no command
// (is_valid false); redo applies it, undo applies its inverse. The command
// holds the permutation alone, never the cells.
class SortCommand : public TableUndoCommand {
public:
    // `state`: order 0 ascending or 1 descending, axis, raw index of the key
    // line.
    SortCommand(TableModel* model, SortState state, QUndoCommand* parent = nullptr,
                bool use_event_loop = true);
    // By the line of the selection's main cell; with `set_selection` redo and
    // undo put the selection back.
    SortCommand(TableModel* model, const RangeVector& selection, bool set_selection, int order,
                int axis, QUndoCommand* parent = nullptr, bool use_event_loop = true);

    void redo() override;
    void undo() override;

    // Position i of the sorted table takes raw line permutation[i].
    std::vector<int> permutation;
    int order = 0;
    int axis = 0;
    int index = -1;
    // The filter lists before and after the sort join these once the table
    // has filters: the sort remaps their raw indexes and re-applies them.

private:
    void makePermutation(bool use_event_loop);
};
