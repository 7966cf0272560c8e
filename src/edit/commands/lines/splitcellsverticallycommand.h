#pragma once

#include "edit/commands/lines/splitcellscommand.h"

// Each selected cell split by the rule, into the cells below; with `insert_rows` new rows open
// below each split row.
class SplitCellsVerticallyCommand : public SplitCellsCommand {
public:
    SplitCellsVerticallyCommand(TableModel* model, RangeVector selection, SplitRule rule,
                                bool insert_rows, QUndoCommand* parent = nullptr)
        : SplitCellsCommand(model, std::move(selection), false, std::move(rule), insert_rows,
                            parent) {}
};
