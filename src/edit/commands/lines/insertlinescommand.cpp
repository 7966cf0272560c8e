#include "insertlinescommand.h"

#include <climits>

InsertLinesCommand::InsertLinesCommand(TableModel* m, RangeVector selection, bool rows_axis, int n,
                                       bool before_line, bool dup, QUndoCommand* parent)
    : LineCommand(m, std::move(selection), rows_axis, parent), count(n), before(before_line),
      duplicate(dup) {
    const char* texts[2][2] = {{"InsertColsCommand", "InsertRowsCommand"},
                               {"DuplicateColsCommand", "DuplicateRowsCommand"}};
    setText(QString::fromLatin1(texts[duplicate][rows]));
    const std::vector<int> selected = selectedLines(cells, true);
    if (count < 0 || (duplicate && count < 1) || selected.empty()) {
        is_valid = false;
        return;
    }
    if (duplicate) {
        for (int line : selected) {
            lines.push_back(rawFromModel(line) + 1);
            counts.push_back(count);
        }
    } else {
        for (const LineRun& run : runsOf(selected)) {
            lines.push_back(before ? rawFromModel(run.start) : rawFromModel(run.end() - 1) + 1);
            counts.push_back(count > 0 ? count : run.length);
        }
    }
    // Where each selected line stands afterwards: moved on by what went in
    // at or before it.
    for (int line : selected) {
        const int raw = rawFromModel(line);
        int moved = 0;
        for (size_t i = 0; i < lines.size() && lines[i] <= raw; ++i)
            moved += counts[i];
        line_map[raw] = raw + moved;
    }
    if (duplicate) {
        const TableData& d = model->tableData();
        for (int at : lines) {
            const int raw = at - 1;
            sources.push_back(rows ? d.captureRaw(raw, raw, 0, INT_MAX)
                                   : d.captureRaw(0, INT_MAX, raw, raw));
        }
    }
}

void InsertLinesCommand::redo() {
    keepHidden();
    raw_before = numRaw();
    stored_mark = model->tableData().storedRowMark();
    // Last first, so that each position still means what it meant.
    for (int i = int(lines.size()) - 1; i >= 0; --i)
        insertRaw(lines[size_t(i)], counts[size_t(i)]);
    if (duplicate) {
        TableData& d = model->tableData();
        int before_it = 0;
        for (size_t i = 0; i < lines.size(); ++i) {
            const StoredCells& source = sources[i];
            const int first = lines[i] + before_it;
            before_it += counts[i];
            if (source.isEmpty()) continue;
            for (int c = 0; c < counts[i]; ++c)
                d.restoreRaw(rows ? source.shifted(first + c - source.firstRow(), 0)
                                  : source.shifted(0, first + c - source.firstColumn()));
        }
        emit model->dataChanged(model->index(0, 0),
                                model->index(model->rowCount() - 1, model->columnCount() - 1));
    }
    // The new lines are selected, the main cell on the first of them.
    RangeVector added;
    int before_it = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        Range r = wholeLines(modelFromRaw(lines[i] + before_it), counts[i], mainCross());
        r.is_main = i == 0;
        added.push_back(r);
        before_it += counts[i];
    }
    model->setSelection(added, true);
    finishRedo();
}

void InsertLinesCommand::undo() {
    LineRuns runs;
    int before_it = 0;
    for (size_t i = 0; i < lines.size(); ++i) {
        runs.push_back({lines[i] + before_it, counts[i]});
        before_it += counts[i];
    }
    takeRaw(runs);
    truncateRaw(raw_before);
    model->tableData().restoreStoredRowMark(stored_mark);
    model->setSelectedRanges(undo_selection, true);
    restoreHidden();
    finishUndo();
}
