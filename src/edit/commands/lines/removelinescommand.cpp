#include "removelinescommand.h"

RemoveLinesCommand::RemoveLinesCommand(TableModel* m, RangeVector selection, bool rows_axis,
                                       QUndoCommand* parent)
    : LineCommand(m, std::move(selection), rows_axis, parent) {
    std::vector<int> raw;
    for (int line : selectedLines(cells, true))
        raw.push_back(rawFromModel(line));
    setLines(std::move(raw));
}

RemoveLinesCommand::RemoveLinesCommand(TableModel* m, RangeVector selection, bool rows_axis,
                                       std::vector<int> raw_lines, QUndoCommand* parent)
    : LineCommand(m, std::move(selection), rows_axis, parent) {
    setLines(std::move(raw_lines));
}

void RemoveLinesCommand::setLines(std::vector<int> raw_lines) {
    setText(QString::fromLatin1(rows ? "RemoveRowsCommand" : "RemoveColsCommand"));
    // Lines past the data hold nothing to remove.
    const int size = numRaw();
    std::sort(raw_lines.begin(), raw_lines.end());
    raw_lines.erase(std::unique(raw_lines.begin(), raw_lines.end()), raw_lines.end());
    raw_lines.erase(std::lower_bound(raw_lines.begin(), raw_lines.end(), size), raw_lines.end());
    raw_lines.erase(raw_lines.begin(), std::lower_bound(raw_lines.begin(), raw_lines.end(), 0));
    lines = std::move(raw_lines);
    spans = runsOf(lines);
    is_valid = !spans.empty();
}

void RemoveLinesCommand::redo() {
    keepHidden();
    removed_data = takeRaw(spans);
    // The main cell stays where it was, pulled back inside the table.
    Range main = model->mainCell();
    int& along = rows ? main.row : main.col;
    const int count = rows ? model->rowCount() : model->columnCount();
    if (along >= count) along = std::max(count - 1, 0);
    model->selectSingleCell(main);
    finishRedo();
}

void RemoveLinesCommand::undo() {
    restore(removed_data);
    removed_data = RemovedLines();
    restoreHidden();
    model->setSelectedRanges(undo_selection, true);
    finishUndo();
}
