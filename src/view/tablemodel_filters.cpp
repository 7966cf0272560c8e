// Filters on the table: which lines each filter leaves out, merged with the
// lines the user hid into the one hidden list of the data, and the raw
// indexes behind all of them kept in step when lines come, go and move.

#include "view/tablemodel.h"

#include "data/linetracking.h"

#include <algorithm>
#include <memory>

namespace {

// A hidden list as the data keeps it: ascending, once each, inside the data.
std::vector<int> cleanLines(std::vector<int> lines, int size) {
    linetracking::sortUnique(lines);
    lines.erase(std::lower_bound(lines.begin(), lines.end(), size), lines.end());
    lines.erase(lines.begin(), std::lower_bound(lines.begin(), lines.end(), 0));
    return lines;
}

bool isRowFilter(const FilterData& f) {
    return f.range.kind == FilterLine::kRow;
}

} // namespace

std::vector<int> TableModel::userHiddenRows() const {
    // Without filters every hidden line is the user's: the data's list is
    // the one to trust, whoever set it.
    return filters.empty() ? rawHiddenRows() : user_hidden_rows;
}

std::vector<int> TableModel::userHiddenCols() const {
    return filters.empty() ? rawHiddenCols() : user_hidden_cols;
}

// Hiding and showing by hand leaves the filters' verdicts as they were: a
// line edited out of its filter's match stays in view.
void TableModel::setHiddenRows(std::vector<int> raw_rows) {
    if (filters.empty()) forgetFiltered();
    user_hidden_rows = cleanLines(std::move(raw_rows), table_data.numRawRows());
    user_hidden_cols = userHiddenCols();
    showUserAndFiltered();
}

void TableModel::setHiddenCols(std::vector<int> raw_cols) {
    if (filters.empty()) forgetFiltered();
    user_hidden_rows = userHiddenRows();
    user_hidden_cols = cleanLines(std::move(raw_cols), table_data.numRawColumns());
    showUserAndFiltered();
}

void TableModel::forgetFiltered() {
    filtered_rows.clear();
    filtered_cols.clear();
}

void TableModel::showUserAndFiltered() {
    std::vector<int> rows = user_hidden_rows, cols = user_hidden_cols;
    rows.insert(rows.end(), filtered_rows.begin(), filtered_rows.end());
    cols.insert(cols.end(), filtered_cols.begin(), filtered_cols.end());
    setContainerHidden(std::move(rows), std::move(cols));
}

std::vector<int> TableModel::filterExclusions(const FilterData& filter) const {
    const bool column_filter = filter.range.kind == FilterLine::kColumn;
    if (!column_filter && !isRowFilter(filter)) return {};
    const int index = column_filter ? filter.range.col : filter.range.row;
    const int first = column_filter ? num_header_rows : num_header_cols;
    // Each reading thread asks its own copy, with a pattern of its own: a
    // copied pattern would share its compiled form between the threads.
    const std::vector<char> matched =
        table_data.matchLine(column_filter, index, first, [&filter]() -> TableData::CellTest {
            auto own = std::make_shared<FilterData>(filter);
            if (own->use_regex) {
                own->regex = QRegularExpression(filter.regex.pattern(), filter.regex.patternOptions());
                own->regex.optimize();
            }
            return [own](const QString& text) { return ::cellMatchesFilter(*own, text); };
        });
    std::vector<int> out;
    const std::vector<int>& exceptions = filter.exceptions;
    for (int p = first; p < int(matched.size()); ++p)
        if (!matched[size_t(p)] && !std::binary_search(exceptions.begin(), exceptions.end(), p))
            out.push_back(p);
    return out;
}

void TableModel::applyFiltersAndHiddenData(std::vector<FilterData> new_filters,
                                           std::vector<int> hidden_rows,
                                           std::vector<int> hidden_cols) {
    for (FilterData& f : new_filters) {
        f.parse();
        linetracking::sortUnique(f.exceptions);
    }
    filters = std::move(new_filters);
    user_hidden_rows = cleanLines(std::move(hidden_rows), table_data.numRawRows());
    user_hidden_cols = cleanLines(std::move(hidden_cols), table_data.numRawColumns());
    filtered_rows.clear();
    filtered_cols.clear();
    for (const FilterData& f : filters) {
        std::vector<int> out = filterExclusions(f);
        std::vector<int>& into = isRowFilter(f) ? filtered_cols : filtered_rows;
        into.insert(into.end(), out.begin(), out.end());
    }
    linetracking::sortUnique(filtered_rows);
    linetracking::sortUnique(filtered_cols);
    showUserAndFiltered();
    emit updateStatusBarSignal();
}

void TableModel::applyFilters(std::vector<FilterData> new_filters) {
    applyFiltersAndHiddenData(std::move(new_filters), userHiddenRows(), userHiddenCols());
}

void TableModel::setContainerHidden(std::vector<int> rows, std::vector<int> cols) {
    rows = cleanLines(std::move(rows), table_data.numRawRows());
    cols = cleanLines(std::move(cols), table_data.numRawColumns());
    if (rows == rawHiddenRows() && cols == rawHiddenCols()) {
        updateHiddenContext();
        return;
    }
    beginLineChange();
    const bool transposed = table_data.isTransposed();
    table_data.setHiddenRows(transposed ? std::move(cols) : std::move(rows));
    table_data.setHiddenColumns(transposed ? std::move(rows) : std::move(cols));
    endLineChange();
}

RangeVector TableModel::collectFilterExceptions() {
    RangeVector collected;
    for (FilterData& f : filters) {
        f.parse();
        const std::vector<int> out = filterExclusions(f);
        const bool stored_rows = isRowFilter(f) == table_data.isTransposed();
        const std::vector<int>& hidden =
            stored_rows ? table_data.hiddenRows() : table_data.hiddenColumns();
        for (const int line : out) {
            if (std::binary_search(hidden.begin(), hidden.end(), line)) continue;
            f.exceptions.push_back(line);
            collected.push_back(
                Range::line(line, isRowFilter(f) ? Range::Column : Range::Row, Range::Raw));
        }
        linetracking::sortUnique(f.exceptions);
    }
    return collected;
}

TableModel::HiddenState TableModel::hiddenState() const {
    return {rawHiddenRows(), rawHiddenCols(), user_hidden_rows, user_hidden_cols,
            filtered_rows,   filtered_cols,   filters};
}

void TableModel::restoreHiddenState(const HiddenState& state) {
    filters = state.filters;
    user_hidden_rows = state.user_hidden_rows;
    user_hidden_cols = state.user_hidden_cols;
    filtered_rows = state.filtered_rows;
    filtered_cols = state.filtered_cols;
    setContainerHidden(state.hidden_rows, state.hidden_cols);
}

void TableModel::trackLines(bool rows, const std::function<void(std::vector<int>&)>& move) {
    move(rows ? user_hidden_rows : user_hidden_cols);
    move(rows ? filtered_rows : filtered_cols);
    bool dropped = false;
    for (auto it = filters.begin(); it != filters.end();) {
        FilterData& f = *it;
        // A row filter's own line lies on the rows; its exceptions are columns.
        if (isRowFilter(f) == rows) {
            if (keep_filter_lines) {
                ++it;
                continue;
            }
            int& own = rows ? f.range.row : f.range.col;
            std::vector<int> line{own};
            move(line);
            if (line.empty()) {
                it = filters.erase(it);
                dropped = true;
                continue;
            }
            own = line.front();
        } else {
            move(f.exceptions);
        }
        ++it;
    }
    filters_lost_line = filters_lost_line || dropped;
}

void TableModel::trackRemoval(bool rows, const LineRuns& runs) {
    trackLines(rows, [&runs](std::vector<int>& l) { linetracking::dropForRemoval(l, runs); });
}

void TableModel::trackRestore(bool rows, const LineRuns& runs) {
    trackLines(rows, [&runs](std::vector<int>& l) { linetracking::shiftForRuns(l, runs); });
}

void TableModel::trackRotation(bool rows, int first, int middle, int last) {
    // Only the filters hold visible lines by raw index; the user's hidden
    // lines are not among the rotated ones.
    if (filters.empty() || first < 0 || middle <= first || last <= middle) return;
    std::vector<int> positions;
    positions.reserve(size_t(last - first));
    for (int m = first; m < last; ++m)
        positions.push_back(rows ? table_data.rawRowFromModel(m) : table_data.rawColumnFromModel(m));
    const int n = int(positions.size());
    const int shift = middle - first;
    trackLines(rows, [&](std::vector<int>& lines) {
        for (int& h : lines) {
            const auto at = std::lower_bound(positions.begin(), positions.end(), h);
            if (at == positions.end() || *at != h) continue;
            const int j = int(at - positions.begin());
            h = positions[size_t((j - shift + n) % n)];
        }
        std::sort(lines.begin(), lines.end());
    });
}
