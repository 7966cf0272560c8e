#include "movelinescommand.h"

MoveLinesCommand::MoveLinesCommand(TableModel* m, RangeVector selection, bool rows_axis,
                                   QUndoCommand* parent)
    : LineCommand(m, std::move(selection), rows_axis, parent) {}

void MoveLinesCommand::initRelative(int step) {
    setText(QString::fromLatin1(rows ? "MoveRowsRelativeCommand" : "MoveColsRelativeCommand"));
    offset = step < 0 ? -1 : 1;
    const LineRuns spans = runsOf(selectedLines(cells, false));
    // No whole line selected, or the first line at the top moving up.
    if (spans.empty() || (offset < 0 && spans.front().start == 0)) {
        is_valid = false;
        return;
    }
    // Up: the line above each span goes below it, top span first. Down:
    // the line below goes above, bottom span first.
    if (offset < 0) {
        for (const LineRun& s : spans)
            rotations.push_back({s.start - 1, s.start, s.end()});
    } else {
        for (auto it = spans.rbegin(); it != spans.rend(); ++it)
            rotations.push_back({it->start, it->end(), it->end() + 1});
    }
    moved_selection = cells;
    for (Range& r : moved_selection) {
        r.shift(rows ? offset : 0, rows ? 0 : offset, false);
        // A block's main cell is held by position, not by offset.
        (rows ? r.main_offset_row : r.main_offset_col) += offset;
    }
}

void MoveLinesCommand::initAbsolute(int to) {
    setText(QString::fromLatin1(rows ? "MoveRowsAbsoluteCommand" : "MoveColsAbsoluteCommand"));
    target = to;
    const LineRuns spans = runsOf(selectedLines(cells, true));
    if (spans.empty() || target < 0) {
        is_valid = false;
        return;
    }
    int above = 0, total = 0;
    for (const LineRun& s : spans) {
        total += s.length;
        if (s.start < target) above += std::min(s.end(), target) - s.start;
    }
    // Spans above the target close up to it from the last; spans below
    // follow it from the first. A span across the target is split there,
    // each part already in place.
    int anchor = target;
    for (auto it = spans.rbegin(); it != spans.rend(); ++it) {
        if (it->start >= target) continue;
        const int end = std::min(it->end(), target);
        if (end < anchor) rotations.push_back({it->start, end, anchor});
        anchor -= end - it->start;
    }
    anchor = target;
    for (const LineRun& s : spans) {
        if (s.end() <= target) continue;
        const int from = std::max(s.start, target);
        if (from > anchor) rotations.push_back({anchor, from, s.end()});
        anchor += s.end() - from;
    }
    if (rotations.empty()) {
        is_valid = false;
        return;
    }
    resulting_offset = target - above;
    moved_selection = {wholeLines(resulting_offset, total, mainCross())};
}

void MoveLinesCommand::redo() {
    keepHidden();
    raw_before = numRaw();
    stored_mark = model->tableData().storedRowMark();
    for (const auto& r : rotations)
        rotate(r[0], r[1], r[2]);
    model->setSelection(moved_selection, true);
    if (rows)
        emit model->scrollToRowSignal(offset < 0 ? TableModel::selectionMinRow(moved_selection)
                                                 : model->selectionMaxRow(moved_selection, true),
                                      true, true);
    else
        emit model->scrollToColSignal(offset < 0 ? TableModel::selectionMinCol(moved_selection)
                                                 : model->selectionMaxCol(moved_selection, true),
                                      true, true);
    finishRedo();
}

void MoveLinesCommand::undo() {
    for (auto it = rotations.rbegin(); it != rotations.rend(); ++it) {
        const auto& r = *it;
        rotate(r[0], r[0] + (r[2] - r[1]), r[2]);
    }
    truncateRaw(raw_before);
    model->tableData().restoreStoredRowMark(stored_mark);
    model->setSelectedRanges(undo_selection, true);
    restoreHidden();
    finishUndo();
}
