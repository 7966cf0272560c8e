// What undo commands ask of the model: ranges in raw coordinates, the cells
// under them captured and written back in bulk, the selection restored.

#include "tablemodel.h"

#include <algorithm>
#include <climits>

namespace {

struct Extent {
    int r0, r1, c0, c1;
};

Extent extentOf(const Range& r) {
    switch (r.kind) {
    case Range::Cell:
        return {r.row, r.row, r.col, r.col};
    case Range::Row:
        return {r.row, r.row, r.col, r.col_end};
    case Range::Column:
        return {r.row, r.row_end, r.col, r.col};
    default:
        return {r.row, r.row_end, r.col, r.col_end};
    }
}

bool hasExclusions(const Range& r) {
    return !r.excluded_rows.empty() || !r.excluded_cols.empty() || !r.excluded_cells.empty();
}

// A run of model lines [m0, m1] that maps onto consecutive raw lines from raw0.
struct Run {
    int m0, m1, raw0;
};

} // namespace

RangeVector TableModel::toRawRanges(const RangeVector& ranges) const {
    RangeVector out;
    out.spare1 = ranges.spare1;
    out.spare2 = ranges.spare2;
    // Model lines [first, last] (last may be open) as raw runs.
    auto runs = [this](bool rows, int first, int last) {
        std::vector<Run> result;
        const int hidden = rows ? table_data.numHiddenRows() : table_data.numHiddenColumns();
        auto raw = [&](int m) {
            return rows ? table_data.rawRowFromModel(m) : table_data.rawColumnFromModel(m);
        };
        if (hidden == 0) {
            result.push_back({first, last, first});
            return result;
        }
        const int data_lines = rows ? table_data.numModelRows() : table_data.numModelColumns();
        const int end = std::min(last, data_lines - 1);
        int start = first, start_raw = first <= end ? raw(first) : first + hidden;
        for (int m = first + 1; m <= end; ++m) {
            const int r = raw(m);
            if (r != start_raw + (m - start)) {
                result.push_back({start, m - 1, start_raw});
                start = m;
                start_raw = r;
            }
        }
        // Lines past the data keep their distance from its end, as positions
        // past the data do; hidden lines at the data's end lie between.
        if (first > end) {
            result.push_back({first, last, first + hidden});
        } else if (last > end && start_raw + (end - start) + 1 != end + 1 + hidden) {
            result.push_back({start, end, start_raw});
            result.push_back({end + 1, last, end + 1 + hidden});
        } else {
            result.push_back({start, last, start_raw});
        }
        return result;
    };
    auto slice = [](const std::vector<QVariant>& v, int from, int to) {
        std::vector<QVariant> s;
        if (from < int(v.size()))
            s.assign(v.begin() + from, v.begin() + std::min<size_t>(size_t(to) + 1, v.size()));
        return s;
    };
    auto mapExclusions = [this](Range& r) {
        for (int& e : r.excluded_rows)
            if (e >= 0) e = table_data.rawRowFromModel(e);
        for (int& e : r.excluded_cols)
            if (e >= 0) e = table_data.rawColumnFromModel(e);
        for (auto& [er, ec] : r.excluded_cells) {
            er = table_data.rawRowFromModel(er);
            ec = table_data.rawColumnFromModel(ec);
        }
    };

    for (Range r : ranges) {
        if (r.kind == Range::Invalid || r.coordinates == Range::Raw) {
            out.push_back(std::move(r));
            continue;
        }
        if (r.coordinates == Range::Label) {
            r.row -= first_row_index;
            if (r.row_end != Range::kToEnd) r.row_end -= first_row_index;
            if (!columns_as_letters) {
                r.col -= first_col_index;
                if (r.col_end != Range::kToEnd) r.col_end -= first_col_index;
            }
        }
        const Extent e = extentOf(r);
        const bool spans_rows = r.kind == Range::Column || r.kind == Range::Block;
        const bool spans_cols = r.kind == Range::Row || r.kind == Range::Block;
        const std::vector<Run> row_runs =
            spans_rows ? runs(true, e.r0, e.r1) : std::vector<Run>{{e.r0, e.r0, -1}};
        const std::vector<Run> col_runs =
            spans_cols ? runs(false, e.c0, e.c1) : std::vector<Run>{{e.c0, e.c0, -1}};
        for (const Run& rr : row_runs)
            for (const Run& cr : col_runs) {
                Range piece = r;
                piece.coordinates = Range::Raw;
                piece.row = spans_rows ? rr.raw0 : table_data.rawRowFromModel(r.row);
                piece.col = spans_cols ? cr.raw0 : table_data.rawColumnFromModel(r.col);
                if (spans_rows)
                    piece.row_end =
                        rr.m1 == Range::kToEnd ? Range::kToEnd : rr.raw0 + (rr.m1 - rr.m0);
                if (spans_cols)
                    piece.col_end =
                        cr.m1 == Range::kToEnd ? Range::kToEnd : cr.raw0 + (cr.m1 - cr.m0);
                if (r.row < 0 || r.col < 0) {
                    piece.row = r.row;
                    piece.col = r.col;
                }
                // Per-line values follow their lines into the piece.
                const int dr = rr.m0 - e.r0, dc = cr.m0 - e.c0;
                if (r.kind == Range::Row) {
                    piece.values = slice(r.values, dc, cr.m1 - e.c0);
                    piece.old_values = slice(r.old_values, dc, cr.m1 - e.c0);
                } else if (r.kind == Range::Column) {
                    piece.values = slice(r.values, dr, rr.m1 - e.r0);
                    piece.old_values = slice(r.old_values, dr, rr.m1 - e.r0);
                } else if (r.kind == Range::Block && (row_runs.size() > 1 || col_runs.size() > 1)) {
                    auto cut = [&](const std::vector<std::vector<QVariant>>& grid) {
                        std::vector<std::vector<QVariant>> g;
                        for (int i = dr; i < int(grid.size()) && i <= rr.m1 - e.r0; ++i)
                            g.push_back(slice(grid[size_t(i)], dc, cr.m1 - e.c0));
                        return g;
                    };
                    piece.value_grid = cut(r.value_grid);
                    piece.old_value_grid = cut(r.old_value_grid);
                }
                if (r.is_main) {
                    // The main cell stays marked in the piece that holds it.
                    const auto [mr, mc] = r.mainPosition();
                    piece.is_main = mr >= rr.m0 && mr <= rr.m1 && mc >= cr.m0 && mc <= cr.m1;
                    piece.main_offset_row = mr - rr.m0 + piece.row;
                    piece.main_offset_col = mc - cr.m0 + piece.col;
                    piece.main_offset =
                        r.kind == Range::Row ? piece.main_offset_col : piece.main_offset_row;
                }
                mapExclusions(piece);
                out.push_back(std::move(piece));
            }
    }
    return out;
}

RangeVector TableModel::toRawSelection(const RangeVector& ranges) const {
    RangeVector out;
    for (Range r : ranges) {
        if (r.kind == Range::Invalid || r.coordinates == Range::Raw) {
            out.push_back(std::move(r));
            continue;
        }
        const int row_base = r.coordinates == Range::Label ? first_row_index : 0;
        const int col_base =
            r.coordinates == Range::Label && !columns_as_letters ? first_col_index : 0;
        auto rawRow = [&](int m) {
            if (m == Range::kToEnd || m < 0) return m;
            return table_data.rawRowFromModel(m - row_base);
        };
        auto rawCol = [&](int m) {
            if (m == Range::kToEnd || m < 0) return m;
            return table_data.rawColumnFromModel(m - col_base);
        };
        const auto [mr, mc] = r.mainPosition();
        r.row = rawRow(r.row);
        r.col = rawCol(r.col);
        r.row_end = rawRow(r.row_end);
        r.col_end = rawCol(r.col_end);
        if (r.kind == Range::Row) r.main_offset = rawCol(mc);
        if (r.kind == Range::Column) r.main_offset = rawRow(mr);
        if (r.kind == Range::Block) {
            r.main_offset_row = rawRow(mr);
            r.main_offset_col = rawCol(mc);
        }
        r.coordinates = Range::Raw;
        out.push_back(std::move(r));
    }
    return out;
}

void TableModel::setSelectedRanges(const RangeVector& raw_ranges, bool update_main_cell) {
    RangeVector model;
    auto modelRow = [this](int raw) {
        if (raw == Range::kToEnd || raw < 0) return raw;
        if (raw >= table_data.numRawRows()) return raw - table_data.numHiddenRows();
        return table_data.modelRowFromRaw(raw);
    };
    auto modelCol = [this](int raw) {
        if (raw == Range::kToEnd || raw < 0) return raw;
        if (raw >= table_data.numRawColumns()) return raw - table_data.numHiddenColumns();
        return table_data.modelColumnFromRaw(raw);
    };
    auto hiddenRow = [&](int raw) {
        return raw >= 0 && raw != Range::kToEnd && raw < table_data.numRawRows() &&
               modelRow(raw) < 0;
    };
    auto hiddenCol = [&](int raw) {
        return raw >= 0 && raw != Range::kToEnd && raw < table_data.numRawColumns() &&
               modelCol(raw) < 0;
    };
    for (Range r : raw_ranges) {
        if (r.kind == Range::Invalid) continue;
        if (r.coordinates != Range::Raw) {
            model.push_back(std::move(r));
            continue;
        }
        // A member whose anchor line is hidden now is dropped.
        if ((r.kind != Range::Column && r.kind != Range::Block && hiddenRow(r.row)) ||
            (r.kind != Range::Row && r.kind != Range::Block && hiddenCol(r.col)))
            continue;
        const auto [mr, mc] = r.mainPosition();
        r.row = modelRow(r.row);
        r.col = modelCol(r.col);
        if (r.row < 0 || r.col < 0) continue;
        r.row_end = modelRow(r.row_end);
        r.col_end = modelCol(r.col_end);
        if (r.is_main) {
            if (hiddenRow(mr) || hiddenCol(mc)) {
                r.is_main = false;
            } else if (r.kind == Range::Row) {
                r.main_offset = modelCol(mc);
            } else if (r.kind == Range::Column) {
                r.main_offset = modelRow(mr);
            } else if (r.kind == Range::Block) {
                r.main_offset_row = modelRow(mr);
                r.main_offset_col = modelCol(mc);
            }
        }
        r.coordinates = Range::Model;
        model.push_back(std::move(r));
    }
    if (!update_main_cell) {
        const Range main = main_cell;
        setSelection(std::move(model), true);
        if (main.row >= 0) setMainAndSelection(main, selection);
        return;
    }
    setSelection(std::move(model), true);
}

void TableModel::captureRanges(RangeVector& ranges, bool capture_new, bool capture_old) const {
    ranges = toRawRanges(ranges);
    for (Range& r : ranges) {
        if (r.kind == Range::Invalid) continue;
        const Extent e = extentOf(r);
        const StoredCells cells = table_data.captureRaw(e.r0, e.r1, e.c0, e.c1);
        if (capture_new) {
            r.value = QVariant::fromValue(cells);
            r.values.clear();
            r.value_grid.clear();
        }
        if (capture_old) {
            r.old_value = QVariant::fromValue(cells);
            r.old_values.clear();
            r.old_value_grid.clear();
        }
    }
}

bool TableModel::writeRanges(const RangeVector& ranges, bool use_old_values, const Range& skip,
                             bool through_model) {
    const RangeVector raw = toRawRanges(ranges);
    // Open ends reach the table's end as the whole write leaves it: the
    // growth of every member is worked out first, so that the result is the
    // same whatever the order of the members, at each keystroke and at each
    // redo.
    int end_row = table_data.numRawRows() - 1, end_col = table_data.numRawColumns() - 1;
    for (const Range& r : raw) {
        if (r.kind == Range::Invalid || !r.isValid()) continue;
        const Extent e = extentOf(r);
        const QVariant& single = use_old_values ? r.old_value : r.value;
        const auto& line_values = use_old_values ? r.old_values : r.values;
        const auto& grid = use_old_values ? r.old_value_grid : r.value_grid;
        int last_row = e.r1, last_col = e.c1;
        if (single.userType() == qMetaTypeId<StoredCells>()) {
            const StoredCells cells = single.value<StoredCells>();
            if (cells.isEmpty()) continue;
            last_row = e.r0 + (cells.lastRow() - cells.firstRow());
            last_col = e.c0 + (cells.lastColumn() - cells.firstColumn());
        } else if (line_values.empty() && grid.empty() && single.toString().isEmpty()) {
            continue;
        }
        if (last_row != Range::kToEnd) end_row = std::max(end_row, last_row);
        if (last_col != Range::kToEnd) end_col = std::max(end_col, last_col);
    }
    const RangeVector skip_raw =
        skip.kind == Range::Invalid ? RangeVector() : toRawRanges(RangeVector{skip});
    bool changed = false;
    for (const Range& r : raw) {
        if (r.kind == Range::Invalid || !r.isValid()) continue;
        Extent e = extentOf(r);
        const QVariant& single = use_old_values ? r.old_value : r.value;
        const auto& line_values = use_old_values ? r.old_values : r.values;
        const auto& grid = use_old_values ? r.old_value_grid : r.value_grid;
        if (line_values.empty() && grid.empty()) {
            if (e.r1 == Range::kToEnd) e.r1 = end_row;
            if (e.c1 == Range::kToEnd) e.c1 = end_col;
            if (e.r0 > e.r1 || e.c0 > e.c1) continue;
        }
        const bool per_cell = hasExclusions(r) || !skip_raw.empty();
        const bool captured = single.userType() == qMetaTypeId<StoredCells>();

        if (!per_cell && captured) {
            const StoredCells cells = single.value<StoredCells>();
            // Captured cells go back where the range now starts; what the
            // capture did not reach (past the data then) is emptied.
            const int dr = e.r0 - cells.firstRow(), dc = e.c0 - cells.firstColumn();
            const bool moved = dr != 0 || dc != 0;
            const bool covers =
                !cells.isEmpty() && dr == 0 && dc == 0 &&
                cells.lastRow() >= std::min(e.r1, table_data.numRawRows() - 1) &&
                cells.lastColumn() >= std::min(e.c1, table_data.numRawColumns() - 1);
            if (!covers) changed |= table_data.fillRaw(e.r0, e.r1, e.c0, e.c1, QString());
            if (!cells.isEmpty())
                changed |= table_data.restoreRaw(moved ? cells.shifted(dr, dc) : cells);
            continue;
        }
        if (!per_cell && line_values.empty() && grid.empty()) {
            changed |= table_data.fillRaw(e.r0, e.r1, e.c0, e.c1, single.toString());
            continue;
        }

        // Per cell: values by line or grid, holes, or a skipped range. Open
        // ends stop at the data's end or, for values, at the values' end.
        int r1 = e.r1, c1 = e.c1;
        const int rows = table_data.numRawRows(), cols = table_data.numRawColumns();
        if (r1 == Range::kToEnd)
            r1 = r.kind == Range::Column && !line_values.empty()
                     ? e.r0 + int(line_values.size()) - 1
                 : r.kind == Range::Block && !grid.empty() ? e.r0 + int(grid.size()) - 1
                                                           : rows - 1;
        if (c1 == Range::kToEnd) {
            int widest = 0;
            for (const auto& line : grid)
                widest = std::max(widest, int(line.size()));
            c1 = r.kind == Range::Row && !line_values.empty() ? e.c0 + int(line_values.size()) - 1
                 : r.kind == Range::Block && !grid.empty()    ? e.c0 + widest - 1
                                                              : cols - 1;
        }
        StoredCells cells;
        StoredCells::Reader reader(cells);
        if (captured) {
            cells = single.value<StoredCells>();
            reader = StoredCells::Reader(cells);
        }
        for (int row = e.r0; row <= r1; ++row)
            for (int col = e.c0; col <= c1; ++col) {
                QVariant v;
                bool from_capture = false;
                QByteArrayView bytes;
                bool quoted = false;
                if (captured) {
                    const bool inside = row - e.r0 + cells.firstRow() <= cells.lastRow() &&
                                        col - e.c0 + cells.firstColumn() <= cells.lastColumn();
                    if (inside) {
                        bytes = reader.next(&quoted);
                        from_capture = true;
                    }
                } else {
                    v = r.valueAt(row, col, use_old_values);
                }
                bool skip_cell = !r.containsCell(row, col) && r.kind != Range::Cell;
                for (const Range& s : skip_raw)
                    skip_cell = skip_cell || s.containsCell(row, col);
                if (skip_cell) continue;
                if (from_capture) {
                    StoredCells one(row, row, col, col);
                    one.append(bytes, quoted);
                    changed |= table_data.restoreRaw(one);
                } else if (captured) {
                    changed |= table_data.fillRaw(row, row, col, col, QString());
                } else {
                    changed |= table_data.setRawData(row, col, v.toString());
                }
            }
    }
    if (through_model && changed)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1), {});
    return changed;
}

void TableModel::autoFitChangedLines(const RangeVector& ranges) {
    std::vector<int> rows, cols;
    bool all_rows = false, all_cols = false;
    for (const Range& r : ranges) {
        if (r.kind == Range::Invalid) continue;
        const Extent e = extentOf(r);
        auto collect = [](std::vector<int>& out, bool& all, int first, int last, bool raw,
                          auto&& map) {
            if (all) return;
            if (last == Range::kToEnd || last - first > 1000) {
                all = true;
                return;
            }
            for (int i = first; i <= last; ++i) {
                const int m = raw ? map(i) : i;
                if (m >= 0) out.push_back(m);
            }
        };
        const bool raw = r.coordinates == Range::Raw;
        collect(rows, all_rows, e.r0, e.r1, raw,
                [this](int i) { return table_data.modelRowFromRaw(i); });
        collect(cols, all_cols, e.c0, e.c1, raw,
                [this](int i) { return table_data.modelColumnFromRaw(i); });
    }
    auto unique = [](std::vector<int>& v) {
        std::sort(v.begin(), v.end());
        v.erase(std::unique(v.begin(), v.end()), v.end());
    };
    unique(rows);
    unique(cols);
    if (all_rows)
        emit enforceAutoFitRowHeightsAllSignal();
    else if (!rows.empty())
        emit enforceAutoFitRowHeightsSignal(rows);
    if (all_cols)
        emit enforceAutoFitColWidthsAllSignal();
    else if (!cols.empty())
        emit enforceAutoFitColWidthsSignal(cols);
}

void TableModel::saveIfSaveAfterEachEdit() {
    if (!save_after_each_edit || read_only || table_data.filepath().isEmpty()) return;
    if (table_data.save(false, false)) emit undoStackCleanChangedSignal(true);
}

bool TableModel::rangesChange(const RangeVector& raw_ranges) const {
    for (const Range& r : raw_ranges) {
        if (r.kind == Range::Invalid) continue;
        if (r.old_value.userType() != qMetaTypeId<StoredCells>()) return true;
        const StoredCells old = r.old_value.value<StoredCells>();
        const Extent e = extentOf(r);
        // Writing past what was captured (past the data then) changes the
        // table unless nothing but empty text goes there.
        const bool beyond = (e.r1 != Range::kToEnd && e.r1 > old.lastRow()) ||
                            (e.c1 != Range::kToEnd && e.c1 > old.lastColumn()) || old.isEmpty();
        if (r.value.userType() == qMetaTypeId<StoredCells>()) {
            const StoredCells now = r.value.value<StoredCells>();
            if (now.firstRow() != old.firstRow() || now.firstColumn() != old.firstColumn())
                return true;
            StoredCells::Reader a(old), b(now);
            while (!a.atEnd() || !b.atEnd()) {
                bool qa = false, qb = false;
                if (a.atEnd() || b.atEnd() || a.next(&qa) != b.next(&qb) || qa != qb) return true;
            }
            if (beyond) return true;
            continue;
        }
        if (!r.values.empty() || !r.value_grid.empty()) return true;
        const QString text = r.value.toString();
        if (beyond && !text.isEmpty()) return true;
        const QByteArray bytes = table_data.encodeText(text);
        StoredCells::Reader reader(old);
        while (!reader.atEnd()) {
            bool quoted = false;
            if (reader.next(&quoted) != bytes || quoted) return true;
        }
    }
    return false;
}
