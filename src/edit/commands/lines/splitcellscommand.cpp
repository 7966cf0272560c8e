#include "splitcellscommand.h"

#include "edit/celltransforms.h"

#include <algorithm>
#include <climits>
#include <map>

SplitCellsCommand::SplitCellsCommand(TableModel* m, RangeVector selection, bool horizontal,
                                     SplitRule split_rule, bool insert, QUndoCommand* parent)
    : LineCommand(m, std::move(selection), !horizontal, parent), rule(std::move(split_rule)),
      insert_lines(insert) {
    // `rows` is the axis lines may open on: columns for a horizontal split.
    const bool by_row = horizontal;
    const auto groups = by_row ? model->groupByRow(cells) : model->groupByColumn(cells);
    struct Cut {
        int line, cross;
        QStringList pieces;
    };
    std::vector<Cut> cuts;
    std::map<int, int> widest; // split line to its largest number of parts
    for (const auto& group : groups) {
        for (int line : group.second) {
            const int r = by_row ? group.first : line, c = by_row ? line : group.first;
            const QString text = model->tableData().data(r, c).toString();
            QStringList pieces = rule.by_delimiter ? splitByDelimiter(text, rule.delimiter)
                                                   : splitByIndexes(text, rule.indexes);
            if (pieces.size() < 2) continue;
            int& w = widest[line];
            w = std::max(w, int(pieces.size()));
            cuts.push_back({line, group.first, std::move(pieces)});
        }
    }
    if (cuts.empty()) {
        is_valid = false;
        return;
    }
    if (insert_lines)
        for (const auto& entry : widest)
            inserted.push_back({entry.first, entry.second - 1});
    // Where a part lands once lines are opened: its split line moves on by
    // the lines opened after split lines before it, and its own parts fill
    // its own new lines.
    auto landing = [this](int split_line, int k) {
        int opened = 0;
        for (const auto& entry : inserted)
            if (entry.first < split_line) opened += entry.second;
        return split_line + opened + k;
    };
    int lo_line = INT_MAX, hi_line = 0, lo_cross = INT_MAX, hi_cross = 0;
    for (const Cut& cut : cuts) {
        for (qsizetype k = 0; k < cut.pieces.size(); ++k) {
            const int at = landing(cut.line, int(k));
            parts.push_back({at, cut.cross, cut.pieces[k]});
            lo_line = std::min(lo_line, at);
            hi_line = std::max(hi_line, at);
        }
        lo_cross = std::min(lo_cross, cut.cross);
        hi_cross = std::max(hi_cross, cut.cross);
    }
    Range block = Range::wholeTable(Range::Model);
    block.row = by_row ? lo_cross : lo_line;
    block.row_end = by_row ? hi_cross : hi_line;
    block.col = by_row ? lo_line : lo_cross;
    block.col_end = by_row ? hi_line : hi_cross;
    block.is_main = true;
    block.main_offset_row = block.row;
    block.main_offset_col = block.col;
    after_selection = {block};
}

void SplitCellsCommand::redo() {
    keepHidden();
    raw_before = numRaw();
    stored_mark = model->tableData().storedRowMark();
    // Last first, so that each position still means what it meant.
    for (auto it = inserted.rbegin(); it != inserted.rend(); ++it)
        if (it->second > 0) insertRaw(rawFromModel(it->first) + 1, it->second);
    if (!writes_made) {
        // Parts of one line across, in runs of neighbouring cells, one
        // range each: a column of a million cells is a few ranges.
        const bool by_row = !rows;
        std::map<std::pair<int, int>, QString> at; // (line, cross) -> text; later parts win
        for (const Part& p : parts)
            at[{p.line, p.cross}] = p.text;
        RangeVector model_ranges;
        for (auto it = at.begin(); it != at.end();) {
            const int line = it->first.first;
            Range r = Range::line(line, by_row ? Range::Column : Range::Row, Range::Model);
            int start = it->first.second, end = start;
            std::vector<QVariant> values{it->second};
            ++it;
            while (it != at.end() && it->first.first == line && it->first.second == end + 1) {
                values.push_back(it->second);
                end = it->first.second;
                ++it;
            }
            if (by_row) {
                r.row = start;
                r.row_end = end;
            } else {
                r.col = start;
                r.col_end = end;
            }
            r.values = std::move(values);
            model_ranges.push_back(std::move(r));
        }
        writes = model->toRawRanges(model_ranges);
        RangeVector old = writes;
        model->captureRanges(old, false, true);
        for (size_t i = 0; i < writes.size(); ++i)
            writes[i].old_value = std::move(old[i].old_value);
        writes_made = true;
    }
    model->writeRanges(writes, false);
    emit model->dataChanged(model->index(0, 0),
                            model->index(model->rowCount() - 1, model->columnCount() - 1));
    model->setSelection(after_selection, true);
    finishRedo();
}

void SplitCellsCommand::undo() {
    model->writeRanges(writes, true);
    if (!inserted.empty()) {
        LineRuns runs;
        int opened = 0;
        for (const auto& entry : inserted) {
            if (entry.second < 1) continue;
            runs.push_back({rawFromModel(entry.first + opened) + 1, entry.second});
            opened += entry.second;
        }
        takeRaw(runs);
    }
    truncateRaw(raw_before);
    model->tableData().restoreStoredRowMark(stored_mark);
    emit model->dataChanged(model->index(0, 0),
                            model->index(model->rowCount() - 1, model->columnCount() - 1));
    model->setSelectedRanges(undo_selection, true);
    restoreHidden();
    finishUndo();
}
