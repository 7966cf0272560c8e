#pragma once

#include "edit/commands/lines/splitcellscommand.h"

// Each selected cell split by the rule, into the cells to the right; with `insert_columns` new
// columns open after each split column.
class SplitCellsHorizontallyCommand : public SplitCellsCommand {
public:
    SplitCellsHorizontallyCommand(TableModel* model, RangeVector selection, SplitRule rule,
                                  bool insert_columns, QUndoCommand* parent = nullptr)
        : SplitCellsCommand(model, std::move(selection), true, std::move(rule), insert_columns,
                            parent) {}
};
