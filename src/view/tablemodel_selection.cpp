// The selection of a table: members of every kind, the main cell, holes,
// pending corners and the keyboard extension that moves every member at once.

#include "tablemodel.h"

#include <QRegularExpression>

#include <algorithm>
#include <stdexcept>

namespace {

uint64_t cellKey(int row, int col) {
    return (uint64_t(uint32_t(row)) << 32) | uint32_t(col);
}

bool lessByPosition(const Range& a, const Range& b) {
    if (a.row != b.row) return a.row < b.row;
    if (a.col != b.col) return a.col < b.col;
    return a.kind < b.kind;
}

bool isInverse(int a, int b) {
    return a != b && a / 2 == b / 2;
}

} // namespace

Range TableModel::toModel(Range range) const {
    if (range.coordinates == Range::Model || range.coordinates == Range::InvalidCoordinates) {
        range.coordinates = Range::Model;
        return range;
    }
    int raw_row = range.row, raw_col = range.col;
    if (range.coordinates == Range::Label) {
        raw_row -= first_row_index;
        if (!columns_as_letters) raw_col -= first_col_index;
    }
    // Positions past the data have no raw twin; they keep their distance.
    auto map = [](int raw, int raw_count, int hidden, auto&& mapper) {
        if (raw >= raw_count) return raw - hidden;
        return mapper(raw);
    };
    if (range.kind != Range::Column || range.row != 0)
        range.row = map(raw_row, table_data.numRawRows(), table_data.numHiddenRows(),
                        [&](int r) { return table_data.modelRowFromRaw(r, true); });
    if (range.kind != Range::Row || range.col != 0)
        range.col = map(raw_col, table_data.numRawColumns(), table_data.numHiddenColumns(),
                        [&](int c) { return table_data.modelColumnFromRaw(c, true); });
    range.coordinates = Range::Model;
    return range;
}

void TableModel::clearExpansion() {
    expansion_base.clear();
    expansion_base_mark = -1;
    expansion_axis = 4;
    expansion_moves.clear();
}

void TableModel::selectSingleCell(Range cell) {
    cell = toModel(cell);
    if (cell.row >= 0 && cell.col >= 0) {
        main_cell = Range(cell.row, cell.col, Range::Model);
        main_cell.is_main = true;
    }
    clearExpansion();
    selection.assign(1, main_cell);
    rebuildSelectionIndex();
    updateMultiCellContext();
    emit mainCellChangedSignal(main_cell);
    emit selectionChangedSignal();
}

void TableModel::setMainCell(Range range) {
    clearExpansion();
    range.is_main = true;
    range = toModel(range);
    const auto [r, c] = range.mainPosition();
    if (r < 0 || c < 0) throw std::runtime_error("Invalid main range_model.");
    main_cell = Range(r, c, Range::Model);
    main_cell.is_main = true;
    selection.assign(1, range);
    normalise();
    updateMultiCellContext();
    emitSelectionSignals();
}

void TableModel::setMainAndSelection(Range main, RangeVector ranges) {
    clearExpansion();
    main = toModel(main);
    main_cell = Range(main.row, main.col, Range::Model);
    main_cell.is_main = true;
    for (Range& r : ranges)
        r = toModel(std::move(r));
    selection = std::move(ranges);
    normalise();
    updateMultiCellContext();
    emitSelectionSignals();
}

void TableModel::setSelection(RangeVector ranges, bool clear_expansion) {
    if (clear_expansion) clearExpansion();
    bool found_main = false;
    for (Range& r : ranges) {
        r = toModel(std::move(r));
        if (r.is_main && !found_main) {
            const auto [row, col] = r.mainPosition();
            if (row >= 0 && col >= 0) {
                main_cell = Range(row, col, Range::Model);
                found_main = true;
                continue;
            }
        }
        r.is_main = false;
    }
    if (!found_main) {
        main_cell = Range(0, 0, Range::Model);
        ranges.assign(1, main_cell);
    }
    main_cell.is_main = true;
    selection = std::move(ranges);
    normalise();
    updateMultiCellContext();
    emitSelectionSignals();
}

void TableModel::addRange(Range range) {
    RangeVector one;
    one.push_back(std::move(range));
    addRanges(std::move(one));
}

void TableModel::addRanges(RangeVector ranges) {
    clearExpansion();
    for (Range& r : ranges) {
        r = toModel(std::move(r));
        r.is_main = false;
        selection.push_back(std::move(r));
    }
    normalise();
    updateMultiCellContext();
    emitSelectionSignals();
}

bool TableModel::isSelected(const Range& cell) const {
    const Range c = toModel(cell);
    return isCellSelected(c.row, c.col);
}

bool TableModel::isCellSelected(int row, int col) const {
    if (std::binary_search(selected_cell_keys.begin(), selected_cell_keys.end(), cellKey(row, col)))
        return true;
    for (int i : selected_wide_members)
        if (selection[size_t(i)].containsCell(row, col)) return true;
    return false;
}

void TableModel::normalise() {
    if (main_cell.row < 0 || main_cell.col < 0)
        throw std::runtime_error("Main cell not a single cell.");
    main_cell.kind = Range::Cell;
    main_cell.is_main = true;

    // Duplicates collapse; an is_main mark survives on the member that stays.
    std::stable_sort(selection.begin(), selection.end(), lessByPosition);
    RangeVector kept;
    kept.reserve(selection.size());
    for (Range& r : selection) {
        if (!kept.empty() && kept.back() == r) {
            kept.back().is_main = kept.back().is_main || r.is_main;
            continue;
        }
        kept.push_back(std::move(r));
    }
    selection.swap(kept);

    // A Cell on a hole of a wider member fills the hole and disappears; a Cell
    // or line inside a wider member, outside its holes, is redundant.
    std::vector<bool> removed(selection.size(), false);
    for (size_t i = 0; i < selection.size(); ++i) {
        Range& wide = selection[i];
        if (wide.kind == Range::Cell || removed[i]) continue;
        if (wide.kind == Range::Block) {
            std::sort(wide.excluded_cells.begin(), wide.excluded_cells.end());
            wide.excluded_cells.erase(
                std::remove_if(wide.excluded_cells.begin(), wide.excluded_cells.end(),
                               [&](const std::pair<int, int>& p) {
                                   return !wide.contains(Range(p.first, p.second, Range::Model));
                               }),
                wide.excluded_cells.end());
        }
        for (size_t j = 0; j < selection.size(); ++j) {
            if (j == i || removed[j]) continue;
            const Range& other = selection[j];
            if (other.kind == Range::Cell) {
                if (!wide.contains(other)) continue;
                if (wide.containsCell(other.row, other.col)) {
                    removed[j] = true;
                    continue;
                }
                // The Cell sits on a hole: fill it.
                auto& cells = wide.excluded_cells;
                cells.erase(
                    std::remove(cells.begin(), cells.end(), std::make_pair(other.row, other.col)),
                    cells.end());
                for (size_t k = 0; k < wide.excluded_rows.size() && k < wide.excluded_cols.size();
                     ++k) {
                    if (wide.kind == Range::Block && wide.excluded_rows[k] == other.row &&
                        wide.excluded_cols[k] == other.col) {
                        wide.excluded_rows.erase(wide.excluded_rows.begin() + long(k));
                        wide.excluded_cols.erase(wide.excluded_cols.begin() + long(k));
                        break;
                    }
                }
                if (wide.kind == Range::Row)
                    std::erase(wide.excluded_cols, other.col);
                else if (wide.kind == Range::Column)
                    std::erase(wide.excluded_rows, other.row);
                removed[j] = true;
            } else if (wide.contains(other) && other.excluded_rows.empty() &&
                       other.excluded_cols.empty() && !(other == wide)) {
                removed[j] = true;
            }
        }
    }
    kept.clear();
    for (size_t i = 0; i < selection.size(); ++i)
        if (!removed[i]) kept.push_back(std::move(selection[i]));
    selection.swap(kept);

    if (selection.empty()) {
        selection.push_back(main_cell);
    } else {
        bool matched = false;
        for (Range& r : selection) {
            r.is_main = false;
            if (matched) continue;
            if (r.kind == Range::Cell && r.row == main_cell.row && r.col == main_cell.col) {
                r.is_main = matched = true;
            } else if (r.kind != Range::Cell && r.containsCell(main_cell.row, main_cell.col)) {
                r.is_main = matched = true;
                r.main_offset =
                    r.kind == Range::Row ? main_cell.col - r.col : main_cell.row - r.row;
                r.main_offset_row = main_cell.row - r.row;
                r.main_offset_col = main_cell.col - r.col;
            }
        }
        if (!matched) {
            selection.push_back(main_cell);
            std::stable_sort(selection.begin(), selection.end(), lessByPosition);
        }
    }
    rebuildSelectionIndex();
}

void TableModel::rebuildSelectionIndex() {
    selected_cell_keys.clear();
    selected_wide_members.clear();
    for (size_t i = 0; i < selection.size(); ++i) {
        const Range& r = selection[i];
        if (r.kind == Range::Cell)
            selected_cell_keys.push_back(cellKey(r.row, r.col));
        else if (r.kind <= Range::Block)
            selected_wide_members.push_back(int(i));
    }
    std::sort(selected_cell_keys.begin(), selected_cell_keys.end());
}

void TableModel::emitSelectionSignals() {
    emit mainCellChangedSignal(main_cell);
    emit selectionChangedSignal();
    emit selectionSizeChangedSignal(selectionSize());
}

void TableModel::updateMultiCellContext() {
    const bool multi =
        selection.size() > 1 || (selection.size() == 1 && selection.front().kind != Range::Cell);
    if (multi)
        emit addContextSignal(MultiCellSelection);
    else
        emit removeContextSignal(MultiCellSelection);
}

bool TableModel::deselectCell(int row, int col) {
    bool changed = false;
    for (size_t i = 0; i < selection.size(); ++i) {
        Range& r = selection[i];
        if (r.kind == Range::Block) {
            if (!r.contains(Range(row, col, Range::Model))) continue;
            if (!r.containsCell(row, col)) return false;
            r.excluded_rows.push_back(row);
            r.excluded_cols.push_back(col);
            changed = true;
            break;
        }
        if (r.kind == Range::Row && r.row == row && col >= r.col && col <= r.col_end) {
            if (std::find(r.excluded_cols.begin(), r.excluded_cols.end(), col) !=
                r.excluded_cols.end())
                return false;
            r.excluded_cols.push_back(col);
            changed = true;
        } else if (r.kind == Range::Column && r.col == col && row >= r.row && row <= r.row_end) {
            if (std::find(r.excluded_rows.begin(), r.excluded_rows.end(), row) !=
                r.excluded_rows.end())
                return false;
            r.excluded_rows.push_back(row);
            changed = true;
        } else if (r.kind == Range::Cell && r.row == row && r.col == col) {
            // The main cell cannot be deselected.
            if (row == main_cell.row && col == main_cell.col) return false;
            selection.erase(selection.begin() + long(i));
            changed = true;
            break;
        }
    }
    if (!changed) return false;
    rebuildSelectionIndex();
    updateMultiCellContext();
    emitSelectionSignals();
    return true;
}

bool TableModel::setPendingCorner(Range cell, bool is_start) {
    if (is_start) {
        pending_corner_end = Range(-1, -1, Range::Model);
        pending_corner_start = cell;
    } else {
        if (cell.row == pending_corner_end.row && cell.col == pending_corner_end.col) return false;
        pending_corner_end = cell;
        emit newPendingSelectionCornerSignal(cell);
    }
    emit selectionSizeChangedSignal(selectionSize());
    return true;
}

void TableModel::setPendingCorners(Range start, Range end) {
    pending_corner_start = std::move(start);
    pending_corner_end = std::move(end);
}

void TableModel::commitPendingRectangle(bool ctrl) {
    const Range start = pending_corner_start;
    const Range end = pending_corner_end.row >= 0 ? pending_corner_end : pending_corner_start;
    pending_corner_start = Range(-1, -1, Range::Model);
    pending_corner_end = Range(-1, -1, Range::Model);
    if (start.row < 0) return;
    RangeVector list;
    for (int r = std::min(start.row, end.row); r <= std::max(start.row, end.row); ++r)
        for (int c = std::min(start.col, end.col); c <= std::max(start.col, end.col); ++c)
            if (ctrl || r != start.row || c != start.col) list.emplace_back(r, c, Range::Model);
    if (ctrl) {
        addRanges(std::move(list));
    } else if (!list.empty()) {
        RangeVector all = selection;
        all.insert(all.end(), std::make_move_iterator(list.begin()),
                   std::make_move_iterator(list.end()));
        setMainAndSelection(main_cell, std::move(all));
    } else {
        emitSelectionSignals();
    }
}

int TableModel::selectionMinRow(const RangeVector& ranges) {
    int m = INT32_MAX;
    for (const Range& r : ranges)
        m = std::min(m, r.row);
    return m;
}

int TableModel::selectionMinCol(const RangeVector& ranges) {
    int m = INT32_MAX;
    for (const Range& r : ranges)
        m = std::min(m, r.col);
    return m;
}

int TableModel::selectionMaxRow(const RangeVector& ranges, bool ignore_open) const {
    int m = -1;
    for (const Range& r : ranges) {
        if (r.kind == Range::Cell || r.kind == Range::Row) {
            m = std::max(m, r.row);
        } else if (r.kind == Range::Column && r.row_end != Range::kToEnd) {
            m = std::max(m, r.row_end);
        } else if (!ignore_open && (r.kind == Range::Column || r.kind == Range::Block)) {
            return table_data.numModelRows() - 1;
        }
    }
    return m;
}

int TableModel::selectionMaxCol(const RangeVector& ranges, bool ignore_open) const {
    int m = -1;
    for (const Range& r : ranges) {
        if (r.kind == Range::Cell || r.kind == Range::Column) {
            m = std::max(m, r.col);
        } else if (r.kind == Range::Row && r.col_end != Range::kToEnd) {
            m = std::max(m, r.col_end);
        } else if (!ignore_open && (r.kind == Range::Row || r.kind == Range::Block)) {
            return table_data.numModelColumns() - 1;
        }
    }
    return m;
}

qint64 TableModel::numSelectedCells() const {
    qint64 n = 0;
    for (const Range& r : selection) {
        const qint64 rows_to_end =
            std::max<qint64>(0, qint64(std::min(r.row_end, num_model_rows - 1)) - r.row + 1);
        const qint64 cols_to_end =
            std::max<qint64>(0, qint64(std::min(r.col_end, num_model_cols - 1)) - r.col + 1);
        switch (r.kind) {
        case Range::Cell:
            n += 1;
            break;
        case Range::Row:
            n += cols_to_end;
            break;
        case Range::Column:
            n += rows_to_end;
            break;
        case Range::Block:
            n += rows_to_end * cols_to_end;
            break;
        default:
            break;
        }
    }
    return n;
}

RangeSize TableModel::selectionSize() const {
    RangeSize size;
    size.num_cells = int(std::min<qint64>(numSelectedCells(), INT32_MAX));
    int min_row = INT32_MAX, min_col = INT32_MAX, max_row = -1, max_col = -1;
    for (const Range& r : selection) {
        min_row = std::min(min_row, r.row);
        min_col = std::min(min_col, r.col);
        max_row = std::max(max_row, r.kind == Range::Cell || r.kind == Range::Row
                                        ? r.row
                                        : std::min(r.row_end, num_model_rows - 1));
        max_col = std::max(max_col, r.kind == Range::Cell || r.kind == Range::Column
                                        ? r.col
                                        : std::min(r.col_end, num_model_cols - 1));
    }
    if (hasPendingRectangle() && pending_corner_end.row >= 0) {
        const Range& s = pending_corner_start;
        const Range& e = pending_corner_end;
        size.block_rows = std::abs(s.row - e.row) + 1;
        size.block_cols = std::abs(s.col - e.col) + 1;
        size.num_rows = size.block_rows;
        size.num_cols = size.block_cols;
        size.num_cells = size.block_rows * size.block_cols;
        return size;
    }
    if (max_row >= min_row && max_col >= min_col) {
        size.block_rows = max_row - min_row + 1;
        size.block_cols = max_col - min_col + 1;
        size.num_rows = size.block_rows;
        size.num_cols = size.block_cols;
    }
    return size;
}

// ---- Keyboard extension ----

int TableModel::moveAlong(int model_row, int model_col, int code, bool vertical) const {
    const int step = (code % 2 == 0) ? -1 : 1;
    const int pos = vertical ? model_row : model_col;
    if (code < 4) return pos + step;
    const auto [r, c] =
        blockTarget(model_row, model_col, vertical ? (step < 0 ? 0 : 1) : (step < 0 ? 2 : 3));
    return vertical ? r : c;
}

bool TableModel::expand(int code, bool vertical, bool at_edge, bool* popped) {
    if (popped) *popped = false;
    const int axis = code % 4;
    const bool axis_change =
        vertical ? expansion_axis > 1 : (expansion_axis != 2 && expansion_axis != 3);
    if (axis_change) {
        expansion_base = selection;
        expansion_base_mark = int(std::find_if(selection.begin(), selection.end(),
                                               [](const Range& r) { return r.is_main; }) -
                                  selection.begin());
        expansion_moves.clear();
    }
    expansion_axis = axis;
    if (!expansion_moves.empty() && isInverse(expansion_moves.back(), code)) {
        expansion_moves.pop_back();
        if (popped) *popped = true;
    } else if (at_edge && (code % 2 == 0)) {
        return false;
    } else {
        expansion_moves.push_back(code);
    }

    // Each base member grows along the axis by where its own moving copy got
    // to. A run of cells becomes one segment member rather than a member per
    // cell, so extending over millions of rows stays one record.
    RangeVector result = expansion_base;
    for (const Range& base : expansion_base) {
        const bool grows = vertical ? (base.kind == Range::Cell || base.kind == Range::Row)
                                    : (base.kind == Range::Cell || base.kind == Range::Column);
        if (!grows) continue;
        int row = base.row, col = base.col;
        for (int move : expansion_moves) {
            const int to = moveAlong(std::max(row, 0), std::max(col, 0), move, vertical);
            (vertical ? row : col) = to;
        }
        int delta = vertical ? row - base.row : col - base.col;
        const int from = vertical ? base.row : base.col;
        if (from + delta < 0) delta = -from;
        if (delta == 0) continue;
        const int lo = delta > 0 ? from + 1 : from + delta;
        const int hi = delta > 0 ? from + delta : from - 1;
        if (base.kind == Range::Cell) {
            Range seg = Range::line(vertical ? base.col : base.row,
                                    vertical ? Range::Column : Range::Row, Range::Model);
            if (vertical) {
                seg.row = lo;
                seg.row_end = hi;
            } else {
                seg.col = lo;
                seg.col_end = hi;
            }
            if (lo == hi)
                seg = vertical ? Range(lo, base.col, Range::Model)
                               : Range(base.row, lo, Range::Model);
            result.push_back(std::move(seg));
        } else {
            // A whole line grows into a block of whole lines.
            Range block = Range::wholeTable(Range::Model);
            if (vertical) {
                block.row = lo;
                block.row_end = hi;
                block.col = base.col;
                block.col_end = base.col_end;
            } else {
                block.col = lo;
                block.col_end = hi;
                block.row = base.row;
                block.row_end = base.row_end;
            }
            result.push_back(std::move(block));
        }
    }
    // setSelection takes the main cell from the marked member.
    for (Range& r : result)
        r.is_main = false;
    Range main = main_cell;
    main.is_main = true;
    result.push_back(main);
    setSelection(std::move(result), false);
    return true;
}

bool TableModel::expandVertical(int direction, bool at_edge, bool by_block, bool* popped) {
    return expand(direction + (by_block ? 4 : 0), true, at_edge, popped);
}

bool TableModel::expandHorizontal(int direction, bool at_edge, bool by_block, bool* popped) {
    return expand(direction + (by_block ? 4 : 0), false, at_edge, popped);
}

void TableModel::moveSelection(int dy, int dx) {
    dy = std::clamp(main_cell.row + dy, 0, std::max(num_model_rows - 1, 0)) - main_cell.row;
    dx = std::clamp(main_cell.col + dx, 0, std::max(num_model_cols - 1, 0)) - main_cell.col;
    if (dy == 0 && dx == 0) return;
    // A cell pushed off the table is kept as a marker at -2, and the next step
    // back lands it on 0 again.
    auto step = [](int v, int d) {
        if (d == 0) return v;
        if (v == -2 && d > 0) v = -d;
        v += d;
        return v < 0 ? -2 : v;
    };
    RangeVector moved = selection;
    for (Range& r : moved) {
        switch (r.kind) {
        case Range::Cell:
            r.row = step(r.row, dy);
            r.col = step(r.col, dx);
            break;
        case Range::Row:
            if (r.is_main) r.main_offset += dx;
            break;
        case Range::Column:
            if (r.is_main) r.main_offset += dy;
            break;
        case Range::Block:
            if (r.is_main) {
                r.main_offset_row += dy;
                r.main_offset_col += dx;
            }
            break;
        default:
            break;
        }
    }
    moved.erase(std::remove_if(moved.begin(), moved.end(),
                               [](const Range& r) {
                                   return r.kind == Range::Cell && (r.row < 0 || r.col < 0);
                               }),
                moved.end());
    Range main(main_cell.row + dy, main_cell.col + dx, Range::Model);
    setMainAndSelection(main, std::move(moved));
}

std::pair<int, int> TableModel::blockTarget(int model_row, int model_col, int direction) const {
    const bool vertical = direction < 2;
    const int raw_row = table_data.rawRowFromModel(model_row);
    const int raw_col = table_data.rawColumnFromModel(model_col);
    const int raw = table_data.blockTarget(raw_row, raw_col, direction);
    if (vertical) {
        if (raw < 0) return {0, model_col};
        const int m = raw >= table_data.numRawRows() ? raw - table_data.numHiddenRows()
                                                     : table_data.modelRowFromRaw(raw, true);
        return {std::clamp(m, 0, std::max(num_model_rows - 1, 0)), model_col};
    }
    if (raw < 0) return {model_row, 0};
    const int m = raw >= table_data.numRawColumns() ? raw - table_data.numHiddenColumns()
                                                    : table_data.modelColumnFromRaw(raw, true);
    return {model_row, std::clamp(m, 0, std::max(num_model_cols - 1, 0))};
}

void TableModel::moveSelectionByBlock(int direction) {
    const bool vertical = direction < 2;
    const bool all_lines = std::all_of(selection.begin(), selection.end(), [&](const Range& r) {
        return r.kind == (vertical ? Range::Column : Range::Row);
    });
    int target;
    if (all_lines) {
        const bool forward = direction == 1 || direction == 3;
        const int last =
            vertical ? table_data.numModelRows() - 1 : table_data.numModelColumns() - 1;
        target = forward ? std::max(last, 0) : 0;
    } else {
        const auto [r, c] = blockTarget(main_cell.row, main_cell.col, direction);
        target = vertical ? r : c;
    }
    const int diff = target - (vertical ? main_cell.row : main_cell.col);
    if (diff == 0) return;
    RangeVector moved = selection;
    for (Range& r : moved) {
        if (r.kind == Range::Cell) {
            (vertical ? r.row : r.col) += diff;
        } else if (r.kind == Range::Row) {
            if (!vertical && r.is_main) r.main_offset += diff;
        } else if (r.kind == Range::Column) {
            if (vertical && r.is_main) r.main_offset += diff;
        } else if (r.kind == Range::Block && r.is_main) {
            (vertical ? r.main_offset_row : r.main_offset_col) += diff;
        }
    }
    moved.erase(std::remove_if(moved.begin(), moved.end(),
                               [](const Range& r) {
                                   return r.kind == Range::Cell && (r.row < 0 || r.col < 0);
                               }),
                moved.end());
    Range main = main_cell;
    (vertical ? main.row : main.col) += diff;
    setMainAndSelection(main, std::move(moved));
}

// ---- Add Next Match ----

bool TableModel::addNextMatch(const FindReplaceQuery* bar_query) {
    FindReplaceQuery query;
    if (bar_query) {
        query = *bar_query;
    } else {
        query = find_query;
        query.find_str = table_data.data(main_cell.row, main_cell.col).toString();
    }
    if (query.find_str.isEmpty()) return false;
    QRegularExpression re;
    const auto cs = query.case_sensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    if (query.regex || query.whole_word) {
        QString pattern = query.regex ? query.find_str : QRegularExpression::escape(query.find_str);
        if (query.whole_word) pattern = QStringLiteral("\\b(?:%1)\\b").arg(pattern);
        if (query.whole_cell) pattern = QStringLiteral("^(?:%1)$").arg(pattern);
        re.setPattern(pattern);
        if (!query.case_sensitive) re.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
        if (!re.isValid()) return false;
    }
    auto matches = [&](const QString& text) {
        if (text.isEmpty()) return false;
        if (re.pattern().size()) return re.match(text).hasMatch();
        if (query.whole_cell) return text.compare(query.find_str, cs) == 0;
        return text.contains(query.find_str, cs);
    };
    const bool main_matches = matches(table_data.data(main_cell.row, main_cell.col).toString());
    const int rows = table_data.numModelRows(), cols = table_data.numModelColumns();
    if (rows <= 0 || cols <= 0) return false;
    // Row by row from the cell after the main cell, wrapping once; cells
    // already selected are passed over so that each call adds a new one.
    const qint64 total = qint64(rows) * cols;
    const qint64 start =
        qint64(std::min(main_cell.row, rows - 1)) * cols + std::min(main_cell.col, cols - 1);
    for (qint64 k = 1; k <= total; ++k) {
        const qint64 p = (start + k) % total;
        const int r = int(p / cols), c = int(p % cols);
        if (isCellSelected(r, c)) continue;
        if (!matches(table_data.data(r, c).toString())) continue;
        Range found(r, c, Range::Model);
        if (!bar_query || main_matches)
            setMainAndSelection(found, selection);
        else
            setMainCell(found);
        emit scrollToMainCellSignal(true, false);
        return true;
    }
    return false;
}
