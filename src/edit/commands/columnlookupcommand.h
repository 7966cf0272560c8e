#pragma once

#include "edit/commands/lines/insertcolscommand.h"
#include "edit/commands/setmodeldatacommand.h"

#include <functional>
#include <memory>

// "Column Lookup" as one undo step on the destination's stack: the cells
// that TableModel::lookupRanges built written in, and with
// `insert_new_cols` the new columns that take them inserted first. The two
// parts are commands of their own, owned here and never on a stack.
class ColumnLookupCommand : public TableUndoCommand {
public:
    ColumnLookupCommand(TableModel* model, RangeVector lookup_cells, RangeVector selection,
                        bool insert_new_cols, bool set_selection, QUndoCommand* parent = nullptr);
    ~ColumnLookupCommand() override;

    void redo() override;
    void undo() override;

    // Null when existing columns are overwritten.
    std::unique_ptr<InsertColsCommand> insert_command;
    std::unique_ptr<SetModelDataCommand> set_command;
    bool insert_new_cols = false;
    RangeVector lookup_cells;

private:
    void withoutSaving(const std::function<void()>& part);
};
