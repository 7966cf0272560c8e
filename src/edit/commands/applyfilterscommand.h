#pragma once

#include "edit/commands/tableundocommand.h"
#include "edit/filterdata.h"

#include <vector>

// Replaces a table's filter list and shows what the new list leaves in view.
// Lines are hidden, never removed, so the step holds only the two lists and
// the selection, raw so that it comes back at the same data.
class ApplyFiltersCommand : public TableUndoCommand {
public:
    ApplyFiltersCommand(TableModel* model, RangeVector selection,
                        std::vector<FilterData> filters_after,
                        std::vector<FilterData> filters_before, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    std::vector<FilterData> filters_after;
    std::vector<FilterData> filters_before;
    RangeVector selection; // raw

private:
    // Everything hidden before the first redo: undo puts it back as it was
    // rather than applying the old list again, which would hide lines
    // added or edited since and move what later steps count in the view.
    TableModel::HiddenState before_state;
    bool state_kept = false;
    void showSelection(const RangeVector& raw_selection);
};
