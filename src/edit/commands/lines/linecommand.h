#pragma once

#include "edit/commands/tableundocommand.h"

#include <vector>

// What the commands on whole rows or columns share: the axis they act on,
// the model's line changes for that axis, and the common ends of redo and
// undo. The row form of each is told; the column form swaps the axes.
//
// The model moves the raw indexes it keeps (filters, hidden lines) with
// every line change. Each step still keeps them whole before its redo and
// puts them back after its undo: lines put back come back shown, a filter
// on a removed line is gone, and growth past the data moves nothing.
class LineCommand : public TableUndoCommand {
public:
    bool rowsAxis() const { return rows; }

protected:
    LineCommand(TableModel* model, RangeVector selection, bool rows, QUndoCommand* parent);

    // Model and raw positions on the command's axis; positions past the data
    // keep their distance from its end.
    int rawFromModel(int model_line) const;
    int modelFromRaw(int raw_line) const;
    int numRaw() const;
    int numModel() const;
    std::vector<int> selectedLines(const RangeVector& ranges, bool any_cell) const;

    bool insertRaw(int raw, int count);
    RemovedLines takeRaw(const LineRuns& runs);
    void restore(const RemovedLines& lines);
    void truncateRaw(int count);
    bool rotate(int first, int middle, int last);

    // Whole lines [first, first + count) of the model as one selection
    // member, the main cell on the first line at `cross` across it.
    Range wholeLines(int first, int count, int cross) const;
    // The main cell's position across the axis (its column for rows).
    int mainCross() const;

    // After a redo: the labels and sizes follow, the sort arrows go, find
    // matches are refreshed, "Save After Each Edit" saves.
    void finishRedo();
    // After an undo: the same, with the sort arrows put back.
    void finishUndo();
    void fitLinesNearMain();

    // The hidden lists and filters as they were before the redo.
    void keepHidden();
    void restoreHidden();

    bool rows;

private:
    TableModel::HiddenState kept_hidden;
};
