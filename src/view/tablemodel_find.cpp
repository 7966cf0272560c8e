// Find and replace on the table as shown: cells are read raw, rows whose
// bytes can't hold the text are passed over whole, and long walks run on two
// threads.

#include "data/fileparameters.h"
#include "edit/findmatcher.h"
#include "view/tablemodel.h"

#include <algorithm>
#include <thread>

namespace {

// Rows per thread below which a second thread costs more than it saves.
constexpr int kThreadedRows = 20000;

} // namespace

QString TableModel::cellText(int model_row, int model_col) const {
    return table_data.data(model_row, model_col).toString();
}

bool TableModel::rowMayMatch(const FindMatcher& matcher, int model_row) const {
    if (matcher.prefilter().isEmpty()) return true;
    return table_data.rawRowMayContain(table_data.rawRowFromModel(model_row), matcher.prefilter(),
                                       matcher.foldsCase());
}

void TableModel::findInRows(const FindMatcher& matcher, int first_row, int last_row,
                            RangeVector& out) const {
    const int cols = table_data.numModelColumns();
    const bool in_selection = matcher.query().in_selected_cells;
    const QByteArray& needle = matcher.prefilter();
    for (int r = first_row; r <= last_row; ++r) {
        if (!rowMayMatch(matcher, r)) continue;
        const int raw_row = table_data.rawRowFromModel(r);
        for (int c = 0; c < cols; ++c) {
            if (in_selection && !isCellSelected(r, c)) continue;
            // Only cells that hold the bytes are decoded.
            if (!needle.isEmpty() &&
                !table_data.rawCellMayContain(raw_row, table_data.rawColumnFromModel(c), needle,
                                              matcher.foldsCase()))
                continue;
            if (matcher.findInText(cellText(r, c))) out.emplace_back(r, c, Range::Model);
        }
    }
}

RangeVector TableModel::findAll(const FindReplaceQuery& query) const {
    RangeVector found;
    const FindMatcher matcher(query);
    const int rows = table_data.numModelRows();
    if (!matcher.isValid() || rows == 0 || table_data.numModelColumns() == 0) return found;
    // Two halves on two threads when cells decode without a shared codec
    // and the selection isn't consulted (its lookups aren't thread-safe).
    const bool threaded = rows >= 2 * kThreadedRows && table_data.decodesWithoutCodec() &&
                          !query.in_selected_cells && std::thread::hardware_concurrency() > 1;
    if (!threaded) {
        findInRows(matcher, 0, rows - 1, found);
        return found;
    }
    const int half = rows / 2;
    RangeVector second;
    const FindMatcher other(query);
    std::thread running(
        [this, &other, half, rows, &second] { findInRows(other, half, rows - 1, second); });
    findInRows(matcher, 0, half - 1, found);
    running.join();
    found.insert(found.end(), std::make_move_iterator(second.begin()),
                 std::make_move_iterator(second.end()));
    return found;
}

bool TableModel::findNext(const FindReplaceQuery& query, Range from, bool backwards,
                          Range& found) const {
    const FindMatcher matcher(query);
    const int rows = table_data.numModelRows();
    const int cols = table_data.numModelColumns();
    if (!matcher.isValid() || (query.find_str.isEmpty() && !query.whole_cell)) return false;
    if (rows == 0 || cols == 0) return false;
    // A start beyond the table wraps at once.
    int r = std::clamp(from.row, 0, rows);
    int c = std::clamp(from.col, 0, cols - 1);
    if (r == rows) {
        r = backwards ? rows - 1 : 0;
        c = backwards ? cols : -1;
    }
    const int start_r = r, start_c = c;
    const int step = backwards ? -1 : 1;
    const bool in_selection = query.in_selected_cells;
    // Cell by cell in reading order; the start cell itself comes last, so a
    // lone match is found again.
    for (qint64 visited = 0; visited <= qint64(rows) * cols; ++visited) {
        c += step;
        if (c < 0 || c >= cols) {
            r = (r + step + rows) % rows;
            c = backwards ? cols - 1 : 0;
            // A row that can't match is passed over whole, unless the walk
            // ends in it.
            while (r != start_r && !rowMayMatch(matcher, r)) {
                visited += cols;
                if (visited > qint64(rows) * cols) return false;
                r = (r + step + rows) % rows;
            }
        }
        if (in_selection && !isCellSelected(r, c)) continue;
        if (matcher.findInText(cellText(r, c))) {
            found = Range(r, c, Range::Model);
            return true;
        }
        if (r == start_r && c == start_c) break;
    }
    return false;
}

void TableModel::updateFindMatches(int first_row, int last_row, int first_col, int last_col) {
    RangeVector matches;
    if (find_query.highlight_matches) {
        const FindMatcher matcher(find_query);
        const int rows = table_data.numModelRows(), cols = table_data.numModelColumns();
        if (matcher.isValid() && (!find_query.find_str.isEmpty() || find_query.whole_cell)) {
            for (int r = std::max(0, first_row); r <= std::min(last_row, rows - 1); ++r) {
                if (!rowMayMatch(matcher, r)) continue;
                for (int c = std::max(0, first_col); c <= std::min(last_col, cols - 1); ++c) {
                    if (find_query.in_selected_cells && !isCellSelected(r, c)) continue;
                    const QString text = cellText(r, c);
                    if (!matcher.findInText(text)) continue;
                    Range m(table_data.rawRowFromModel(r), table_data.rawColumnFromModel(c),
                            Range::Raw);
                    // What the cell shows: the replacement while it is
                    // previewed.
                    m.value = find_query.preview_replace ? matcher.replaceInText(text) : text;
                    matches.push_back(std::move(m));
                }
            }
        }
    }
    find_matches = std::move(matches);
}

RangeVector TableModel::replacedCells(const FindReplaceQuery& query,
                                      const RangeVector& cells) const {
    const FindMatcher matcher(query);
    RangeVector result;
    result.reserve(cells.size());
    for (const Range& cell : cells) {
        const QString text = cellText(cell.row, cell.col);
        const QString replaced = matcher.replaceInText(text);
        if (replaced == text) continue;
        Range r(cell.row, cell.col, Range::Model);
        r.value = replaced;
        result.push_back(std::move(r));
    }
    return result;
}
