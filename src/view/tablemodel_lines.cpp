// Whole rows and columns as the commands see them: which lines a selection
// names, the user's hidden lines, empties and duplicates, and the line
// changes themselves with the model's count kept in step.

#include "tablemodel.h"

#include "data/linetracking.h"

#include <algorithm>
#include <climits>
#include <functional>

namespace {

// Lines [first, last] of a member along one axis, open ends cut at `end`.
void addLines(std::vector<int>& out, int first, int last, int end,
              const std::vector<int>& excluded) {
    if (last == Range::kToEnd) last = end - 1;
    for (int i = std::max(first, 0); i <= last; ++i)
        if (std::find(excluded.begin(), excluded.end(), i) == excluded.end()) out.push_back(i);
}

// Whole-line exclusions of a Block: entries whose other side is -1.
std::vector<int> wholeExclusions(const Range& r, bool rows) {
    std::vector<int> out;
    for (size_t i = 0; i < r.excluded_rows.size() && i < r.excluded_cols.size(); ++i) {
        const int line = rows ? r.excluded_rows[i] : r.excluded_cols[i];
        const int other = rows ? r.excluded_cols[i] : r.excluded_rows[i];
        if (other == -1 && line >= 0) out.push_back(line);
    }
    return out;
}

} // namespace

std::vector<int> TableModel::selectedRows(const RangeVector& ranges, bool any_cell) const {
    std::vector<int> out;
    const int end = table_data.numModelRows();
    for (const Range& r0 : ranges) {
        const Range r = toModel(r0);
        switch (r.kind) {
        case Range::Cell:
            if (any_cell) out.push_back(r.row);
            break;
        case Range::Row:
            if (any_cell || (r.col == 0 && r.col_end == Range::kToEnd && r.excluded_cols.empty()))
                out.push_back(r.row);
            break;
        case Range::Column:
            if (any_cell) addLines(out, r.row, r.row_end, end, r.excluded_rows);
            break;
        case Range::Block:
            if (any_cell || (r.col == 0 && r.col_end == Range::kToEnd))
                addLines(out, r.row, r.row_end, end, wholeExclusions(r, true));
            break;
        default:
            break;
        }
    }
    linetracking::sortUnique(out);
    return out;
}

std::vector<int> TableModel::selectedCols(const RangeVector& ranges, bool any_cell) const {
    std::vector<int> out;
    const int end = table_data.numModelColumns();
    for (const Range& r0 : ranges) {
        const Range r = toModel(r0);
        switch (r.kind) {
        case Range::Cell:
            if (any_cell) out.push_back(r.col);
            break;
        case Range::Column:
            if (any_cell || (r.row == 0 && r.row_end == Range::kToEnd && r.excluded_rows.empty()))
                out.push_back(r.col);
            break;
        case Range::Row:
            if (any_cell) addLines(out, r.col, r.col_end, end, r.excluded_cols);
            break;
        case Range::Block:
            if (any_cell || (r.row == 0 && r.row_end == Range::kToEnd))
                addLines(out, r.col, r.col_end, end, wholeExclusions(r, false));
            break;
        default:
            break;
        }
    }
    linetracking::sortUnique(out);
    return out;
}

std::map<int, std::vector<int>> TableModel::groupByRow(const RangeVector& ranges) const {
    std::map<int, std::vector<int>> groups;
    const int rows = table_data.numModelRows(), cols = table_data.numModelColumns();
    for (const Range& r0 : ranges) {
        const Range r = toModel(r0);
        if (r.kind > Range::Block) continue;
        const bool spans_rows = r.kind == Range::Column || r.kind == Range::Block;
        const bool spans_cols = r.kind == Range::Row || r.kind == Range::Block;
        const int r1 = spans_rows ? (r.row_end == Range::kToEnd ? rows - 1 : r.row_end) : r.row;
        const int c1 = spans_cols ? (r.col_end == Range::kToEnd ? cols - 1 : r.col_end) : r.col;
        for (int row = std::max(r.row, 0); row <= r1; ++row)
            for (int col = std::max(r.col, 0); col <= c1; ++col)
                if (r.kind == Range::Cell || r.containsCell(row, col)) groups[row].push_back(col);
    }
    for (auto& entry : groups)
        linetracking::sortUnique(entry.second);
    return groups;
}

std::map<int, std::vector<int>> TableModel::groupByColumn(const RangeVector& ranges) const {
    std::map<int, std::vector<int>> groups;
    for (const auto& entry : groupByRow(ranges))
        for (int col : entry.second)
            groups[col].push_back(entry.first);
    return groups;
}

// ---- Hidden lines ----

std::vector<int> TableModel::rawHiddenRows() const {
    return table_data.isTransposed() ? table_data.hiddenColumns() : table_data.hiddenRows();
}

std::vector<int> TableModel::rawHiddenCols() const {
    return table_data.isTransposed() ? table_data.hiddenRows() : table_data.hiddenColumns();
}

void TableModel::updateHiddenContext() {
    if (filters.empty())
        emit removeContextSignal(FiltersPresent);
    else
        emit addContextSignal(FiltersPresent);
    if (userHiddenRows().empty() && userHiddenCols().empty()) {
        emit removeContextSignal(HiddenPresent);
    } else {
        emit addContextSignal(HiddenPresent);
        emit updateStatusBarSignal();
    }
}

// ---- Empties and duplicates ----

namespace {

std::vector<int> toRaw(const std::vector<int>& model_lines, const std::function<int(int)>& raw,
                       int raw_count) {
    std::vector<int> out;
    for (int m : model_lines) {
        const int r = raw(m);
        if (r >= 0 && r < raw_count) out.push_back(r);
    }
    return out;
}

} // namespace

std::vector<int> TableModel::emptyRows(bool based_on_selected) const {
    std::vector<int> compared;
    if (based_on_selected) {
        compared = toRaw(
            selectedCols(selection, true),
            [this](int m) { return table_data.rawColumnFromModel(m); }, table_data.numRawColumns());
        // Nothing of the data selected across: no line is found by it.
        if (compared.empty()) return {};
    }
    return table_data.emptyRawRows(num_header_rows, compared);
}

std::vector<int> TableModel::emptyCols(bool based_on_selected) const {
    std::vector<int> compared;
    if (based_on_selected) {
        compared = toRaw(
            selectedRows(selection, true), [this](int m) { return table_data.rawRowFromModel(m); },
            table_data.numRawRows());
        if (compared.empty()) return {};
    }
    return table_data.emptyRawColumns(num_header_cols, compared);
}

std::vector<int> TableModel::findDuplicates(int axis, bool based_on_selected) const {
    const bool rows = axis == 0;
    std::vector<int> compared;
    if (based_on_selected) {
        compared = rows ? toRaw(
                              selectedCols(selection, true),
                              [this](int m) { return table_data.rawColumnFromModel(m); },
                              table_data.numRawColumns())
                        : toRaw(
                              selectedRows(selection, true),
                              [this](int m) { return table_data.rawRowFromModel(m); },
                              table_data.numRawRows());
        if (compared.empty()) return {};
    }
    return rows ? table_data.duplicateRawRows(num_header_rows, compared)
                : table_data.duplicateRawColumns(num_header_cols, compared);
}

// ---- Line changes ----

void TableModel::beginLineChange() {
    emit layoutAboutToBeChanged();
    line_change_rows = table_data.numModelRows();
    line_change_cols = table_data.numModelColumns();
}

void TableModel::endLineChange() {
    const int dr = table_data.numModelRows() - line_change_rows;
    const int dc = table_data.numModelColumns() - line_change_cols;
    // The grid's count moves by what the visible data moved by, at its end,
    // so that the labels and sizes of the lines before stay put.
    size_only = true;
    const bool layout_was_suppressed = suppress_layout_signals;
    suppress_layout_signals = true;
    if (dr > 0) insertRows(num_model_rows, dr);
    if (dr < 0) removeRows(std::max(num_model_rows + dr, 0), -dr);
    if (dc > 0) insertColumns(num_model_cols, dc);
    if (dc < 0) removeColumns(std::max(num_model_cols + dc, 0), -dc);
    suppress_layout_signals = layout_was_suppressed;
    size_only = false;
    emit layoutChanged();
    afterLineChange();
}

void TableModel::afterLineChange() {
    last_data_row = table_data.numModelRows() - 1;
    last_data_col = table_data.numModelColumns() - 1;
    enforceTableSize();
    updateHiddenContext();
    emit refreshHeadersSignal();
    if (filters_lost_line) {
        filters_lost_line = false;
        // Lines edited out of a remaining filter's match stay in view. The
        // lists as kept: with the last filter gone, the data's hidden list
        // still holds what it left out.
        collectFilterExceptions();
        applyFiltersAndHiddenData(filters, user_hidden_rows, user_hidden_cols);
    }
}

// A change of one run of shown lines tells the grid exactly where lines
// come or go, so that it moves its labels in one step; any other change
// (several runs, hidden lines among them) re-lays the whole grid out, which
// on millions of lines costs the grid a walk over all of them.
namespace {

// How many of the ascending hidden lines lie in [first, last).
int hiddenIn(const std::vector<int>& hidden, int first, int last) {
    return int(std::lower_bound(hidden.begin(), hidden.end(), last) -
               std::lower_bound(hidden.begin(), hidden.end(), first));
}

} // namespace

bool TableModel::insertRawLines(bool rows, int raw, int count) {
    const int size = rows ? table_data.numRawRows() : table_data.numRawColumns();
    const std::vector<int> hidden = rows ? rawHiddenRows() : rawHiddenCols();
    // Below the data the table first grows to the position.
    const int at = std::min(raw, size);
    const int n = raw > size ? raw - size + count : count;
    const int model_at = at - hiddenIn(hidden, 0, at);
    if (rows)
        beginInsertRows({}, model_at, model_at + n - 1);
    else
        beginInsertColumns({}, model_at, model_at + n - 1);
    const bool ok = rows ? table_data.insertRawRows(at, n) : table_data.insertRawColumns(at, n);
    // Lines added at the end take the places of lines past the data, where
    // a filter may stand: it stays on its place, as it does when they go.
    if (raw < size)
        trackLines(rows, [at, n](std::vector<int>& l) { linetracking::shiftForInsert(l, at, n); });
    (rows ? num_model_rows : num_model_cols) += n;
    if (rows)
        endInsertRows();
    else
        endInsertColumns();
    afterLineChange();
    return ok;
}

RemovedLines TableModel::takeRawLines(bool rows, const LineRuns& runs) {
    const int size = rows ? table_data.numRawRows() : table_data.numRawColumns();
    const std::vector<int> hidden = rows ? rawHiddenRows() : rawHiddenCols();
    if (runs.size() == 1 && runs[0].start < size &&
        hiddenIn(hidden, runs[0].start, runs[0].end()) == 0) {
        const int len = std::min(runs[0].end(), size) - runs[0].start;
        const int model_at = runs[0].start - hiddenIn(hidden, 0, runs[0].start);
        if (rows)
            beginRemoveRows({}, model_at, model_at + len - 1);
        else
            beginRemoveColumns({}, model_at, model_at + len - 1);
        RemovedLines taken = rows ? table_data.takeRawRows(runs) : table_data.takeRawColumns(runs);
        trackRemoval(rows, taken.runs);
        (rows ? num_model_rows : num_model_cols) -= len;
        if (rows)
            endRemoveRows();
        else
            endRemoveColumns();
        afterLineChange();
        return taken;
    }
    beginLineChange();
    RemovedLines taken = rows ? table_data.takeRawRows(runs) : table_data.takeRawColumns(runs);
    trackRemoval(rows, taken.runs);
    endLineChange();
    return taken;
}

bool TableModel::insertRawRows(int raw_row, int count) {
    return insertRawLines(true, raw_row, count);
}

bool TableModel::insertRawCols(int raw_col, int count) {
    return insertRawLines(false, raw_col, count);
}

RemovedLines TableModel::takeRawRows(const LineRuns& runs) {
    return takeRawLines(true, runs);
}

RemovedLines TableModel::takeRawCols(const LineRuns& runs) {
    return takeRawLines(false, runs);
}

void TableModel::restoreRawLines(const RemovedLines& lines) {
    if (lines.runs.empty()) return;
    // The model's axis of the lines: the store's, turned when transposed.
    const bool rows = lines.stored_rows != table_data.isTransposed();
    if (lines.runs.size() == 1) {
        // Lines come back shown, after the hidden ones below them.
        const LineRun run = lines.runs[0];
        const std::vector<int> hidden = rows ? rawHiddenRows() : rawHiddenCols();
        const int model_at = run.start - hiddenIn(hidden, 0, run.start);
        if (rows)
            beginInsertRows({}, model_at, model_at + run.length - 1);
        else
            beginInsertColumns({}, model_at, model_at + run.length - 1);
        table_data.restoreRawLines(lines);
        trackRestore(rows, lines.runs);
        (rows ? num_model_rows : num_model_cols) += run.length;
        if (rows)
            endInsertRows();
        else
            endInsertColumns();
        afterLineChange();
        return;
    }
    beginLineChange();
    table_data.restoreRawLines(lines);
    trackRestore(rows, lines.runs);
    endLineChange();
}

// Growth taken back: nothing below moves, and a filter on a line past the
// new end keeps its line (it filters empty cells there, as before).
void TableModel::truncateRawRows(int count) {
    const int rows = table_data.numRawRows();
    if (rows <= count) return;
    keep_filter_lines = true;
    takeRawRows({{count, rows - count}});
    keep_filter_lines = false;
}

void TableModel::truncateRawCols(int count) {
    const int cols = table_data.numRawColumns();
    if (cols <= count) return;
    keep_filter_lines = true;
    takeRawCols({{count, cols - count}});
    keep_filter_lines = false;
}

bool TableModel::rotateModelLines(bool rows, int first, int middle, int last) {
    trackRotation(rows, first, middle, last);
    const int visible = rows ? table_data.numModelRows() : table_data.numModelColumns();
    if (last > visible) {
        // Reaching past the data grows the table: a new layout.
        beginLineChange();
        const bool ok = rows ? table_data.rotateModelRows(first, middle, last)
                             : table_data.rotateModelColumns(first, middle, last);
        endLineChange();
        return ok;
    }
    // Lines change places among themselves: only their cells repaint.
    const bool ok = rows ? table_data.rotateModelRows(first, middle, last)
                         : table_data.rotateModelColumns(first, middle, last);
    if (rows)
        emit dataChanged(index(first, 0), index(last - 1, std::max(num_model_cols - 1, 0)), {});
    else
        emit dataChanged(index(0, first), index(std::max(num_model_rows - 1, 0), last - 1), {});
    emit refreshHeadersSignal();
    return ok;
}

bool TableModel::rotateModelRows(int first, int middle, int last) {
    return rotateModelLines(true, first, middle, last);
}

bool TableModel::rotateModelCols(int first, int middle, int last) {
    return rotateModelLines(false, first, middle, last);
}

void TableModel::transpose() {
    beginResetModel();
    table_data.setTransposed(!table_data.isTransposed());
    // What was kept by row is now kept by column.
    std::swap(user_hidden_rows, user_hidden_cols);
    std::swap(filtered_rows, filtered_cols);
    for (FilterData& f : filters)
        f.range = f.range.transposed();
    std::swap(num_model_rows, num_model_cols);
    std::swap(main_cell.row, main_cell.col);
    endResetModel();
    last_data_row = table_data.numModelRows() - 1;
    last_data_col = table_data.numModelColumns() - 1;
    enforceTableSize();
    emit toggleTransposeSignal();
    emit refreshHeadersSignal();
}
