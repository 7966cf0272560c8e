#pragma once

#include "edit/commands/lines/linecommand.h"

#include <QList>
#include <QString>

// How a split cuts a cell's text.
struct SplitRule {
    bool by_delimiter = true;
    QString delimiter; // already decoded ("\n" is a newline); empty: each character
    QList<int> indexes;
};

// Splits each selected cell's text into parts: the first stays, the others
// go into the cells to the right (horizontal) or below. With `insert_lines`
// new columns (rows) open after each split column (row) first, so nothing is
// overwritten. SplitCellsHorizontallyCommand and SplitCellsVerticallyCommand
// are its forms.
class SplitCellsCommand : public LineCommand {
public:
    SplitCellsCommand(TableModel* model, RangeVector selection, bool horizontal, SplitRule rule,
                      bool insert_lines, QUndoCommand* parent = nullptr);

    void redo() override;
    void undo() override;

    SplitRule rule;
    bool insert_lines = false;
    // Each split line (model, ascending) with the lines opened after it.
    std::vector<std::pair<int, int>> inserted;

private:
    struct Part {
        int line;  // model position along the split (the cell's column when horizontal)
        int cross; // model position across (its row)
        QString text;
    };
    std::vector<Part> parts; // in the table as it is before the insertion
    RangeVector writes;      // raw, new and old values, made at the first redo
    bool writes_made = false;
    int raw_before = 0;
    int stored_mark = 0;
    RangeVector after_selection;
};
