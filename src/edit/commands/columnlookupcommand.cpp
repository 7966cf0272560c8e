#include "columnlookupcommand.h"

#include <algorithm>
#include <set>

ColumnLookupCommand::ColumnLookupCommand(TableModel* m, RangeVector c, RangeVector selection,
                                         bool insert, bool set_sel, QUndoCommand* parent)
    : TableUndoCommand(m, RangeVector(), set_sel, parent), insert_new_cols(insert),
      lookup_cells(std::move(c)) {
    setText(QStringLiteral("ColumnLookupCommand"));
    if (lookup_cells.empty()) {
        is_valid = false;
        return;
    }
    if (insert_new_cols) {
        // The target columns, raw, go in as new empty columns before the
        // first of them.
        std::set<int> columns;
        for (const Range& r : model->toRawRanges(lookup_cells))
            for (int col = r.col; col <= r.col_end && r.col_end != Range::kToEnd; ++col)
                columns.insert(col);
        if (columns.empty()) {
            is_valid = false;
            return;
        }
        const int first = *columns.begin();
        const TableData& d = model->tableData();
        const int model_col = first < d.numRawColumns() ? d.modelColumnFromRaw(first, true)
                                                        : first - d.numHiddenColumns();
        Range at = Range::line(model_col, Range::Column, Range::Model);
        insert_command =
            std::make_unique<InsertColsCommand>(model, RangeVector{at}, int(columns.size()), true);
        // A hidden column at the place leaves the model's column beside it:
        // the raw place is the one asked for.
        insert_command->lines = {first};
        insert_command->counts = {int(columns.size())};
        // Its undo gives back the selection of the moment, not the column.
        insert_command->undo_selection = model->toRawSelection(selection);
    }
    // New columns hold nothing to capture: their cells go back to empty on
    // undo, and then the columns go.
    set_command =
        std::make_unique<SetModelDataCommand>(model, lookup_cells, false, !insert_new_cols);
    set_command->setSelection(selection);
    is_valid = insert_new_cols ? insert_command->is_valid : set_command->is_valid;
}

ColumnLookupCommand::~ColumnLookupCommand() = default;

// One step saves once, at its end, when "Save After Each Edit" asks: the
// part that runs first does not.
void ColumnLookupCommand::withoutSaving(const std::function<void()>& part) {
    const bool save = model->saveAfterEachEdit();
    model->setSaveAfterEachEdit(false);
    part();
    model->setSaveAfterEachEdit(save);
}

void ColumnLookupCommand::redo() {
    if (insert_command) withoutSaving([this] { insert_command->redo(); });
    set_command->redo();
}

void ColumnLookupCommand::undo() {
    if (!insert_command) {
        set_command->undo();
        return;
    }
    withoutSaving([this] { set_command->undo(); });
    insert_command->undo();
}
