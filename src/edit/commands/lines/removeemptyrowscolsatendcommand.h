#pragma once

#include "edit/commands/lines/linecommand.h"

// "Remove Extraneous Rows and Columns": the rows and columns at the data's
// end with no text in them go. Their cells are kept all the same, since a
// quoted empty field is still written to the file.
class RemoveEmptyRowsColsAtEndCommand : public LineCommand {
public:
    RemoveEmptyRowsColsAtEndCommand(TableModel* model, RangeVector selection,
                                    QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    int num_empty_rows = 0;
    int num_empty_cols = 0;
    int first_empty_row = 0; // raw
    int first_empty_col = 0; // raw

private:
    RemovedLines removed_rows;
    RemovedLines removed_cols;
};
