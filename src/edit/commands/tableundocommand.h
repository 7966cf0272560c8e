#pragma once

#include "view/range.h"
#include "view/tablemodel.h"

#include <QUndoCommand>

// The sort a command found when it was made, so that undo brings the label
// arrows back: order 0 ascending, 1 descending, 2 none.
struct SortState {
    int order = 2;
    int axis = 3;
    int index = -1;

    static SortState of(const SortRecord& r) { return {r.order, r.kind, r.index}; }
    SortRecord record() const { return {order, axis, index}; }
};

// One change a user made to a table, as a step of its undo stack. A command
// holds only the cells it touches, in raw coordinates so that it finds them
// again after filters or hidden lines changed; whole-table changes hold a
// permutation or a list of lines, never a copy of the table. Commands never
// merge: each edit is its own step.
class TableUndoCommand : public QUndoCommand {
public:
    TableUndoCommand(TableModel* model, RangeVector cells, RangeVector selection,
                     bool set_selection, QUndoCommand* parent = nullptr);
    TableUndoCommand(TableModel* model, RangeVector cells, bool set_selection,
                     QUndoCommand* parent = nullptr);

    // Stores the selection of the moment as both the one after redo and
    // the one after undo.
    void setSelection(const RangeVector& selection);
    // The data's size before the change, for a change the user made live
    // (typing) before its command existed: its growth counts from there.
    void presetSizeBefore(int rows, int cols) {
        rows_before = rows;
        cols_before = cols;
        size_preset = true;
    }

    TableModel* model;
    RangeVector cells;
    bool set_selection;
    // False when the command would change nothing: it is then never pushed.
    bool is_valid = true;
    SortState col_sort_state;
    SortState row_sort_state;
    int num_rows_added = 0;
    int num_cols_added = 0;
    RangeVector redo_selection;
    RangeVector undo_selection;

protected:
    // The data's size before a redo, for the growth it caused.
    void noteSize();
    // After a data-changing redo: growth noted, sort arrows cleared, find
    // matches refreshed, and the save that "Save After Each Edit" asks for.
    void redoEpilogue();
    // After its undo: growth taken back, size re-established, arrows back.
    void undoEpilogue();

private:
    int rows_before = 0;
    int cols_before = 0;
    int stored_mark = 0;
    bool size_preset = false;
};
