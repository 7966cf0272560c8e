#include "range.h"

#include <algorithm>

Range::Range(int r, int c, int coords) : kind(Cell), coordinates(coords), row(r), col(c) {}

Range Range::line(int index, int k, int coords) {
    Range range;
    range.kind = k;
    range.coordinates = coords;
    if (k == Row)
        range.row = index;
    else
        range.col = index;
    return range;
}

Range Range::wholeTable(int coords) {
    Range range;
    range.kind = Block;
    range.coordinates = coords;
    return range;
}

bool Range::operator==(const Range& other) const {
    if (kind > Block || other.kind > Block) return kind == other.kind;
    return kind == other.kind && row == other.row && col == other.col;
}

bool Range::contains(const Range& b) const {
    switch (b.kind) {
    case Cell:
        if (kind == Cell) return b.row == row && b.col == col;
        if (kind > Block) return false;
        if (b.row < row || b.col < col) return false;
        if (kind != Row && b.row > row_end) return false;
        if (kind != Column && b.col > col_end) return false;
        // A Row is one row tall and a Column one column wide.
        if (kind == Row && b.row != row) return false;
        if (kind == Column && b.col != col) return false;
        return true;
    case Row:
        if (kind != Row && kind != Block) return false;
        if (kind == Row) return b.row == row && b.col >= col && b.col_end <= col_end;
        return b.row >= row && b.row <= row_end && b.col >= col && b.col_end <= col_end;
    case Column:
        if (kind != Column && kind != Block) return false;
        if (kind == Column) return b.col == col && b.row >= row && b.row_end <= row_end;
        return b.col >= col && b.col <= col_end && b.row >= row && b.row_end <= row_end;
    case Block:
        return kind == Block && b.row >= row && b.col >= col && b.row_end <= row_end &&
               b.col_end <= col_end;
    default:
        return false;
    }
}

bool Range::containsCell(int r, int c) const {
    switch (kind) {
    case Cell:
        return r == row && c == col;
    case Row:
        if (r != row || c < col || c > col_end) return false;
        return std::find(excluded_cols.begin(), excluded_cols.end(), c) == excluded_cols.end();
    case Column:
        if (c != col || r < row || r > row_end) return false;
        return std::find(excluded_rows.begin(), excluded_rows.end(), r) == excluded_rows.end();
    case Block: {
        if (r < row || c < col || r > row_end || c > col_end) return false;
        for (size_t i = 0; i < excluded_rows.size() && i < excluded_cols.size(); ++i) {
            const int er = excluded_rows[i], ec = excluded_cols[i];
            if ((er == r || er == -1) && (ec == c || ec == -1)) return false;
        }
        for (const auto& [er, ec] : excluded_cells)
            if (er == r && ec == c) return false;
        return true;
    }
    default:
        return false;
    }
}

void Range::shift(int dy, int dx, bool clamp_to_invalid) {
    auto move = [](int v, int d) { return v == kToEnd ? v : v + d; };
    row += dy;
    col += dx;
    if (kind == Cell && clamp_to_invalid && (row < 0 || col < 0)) {
        kind = Invalid;
        return;
    }
    row = std::max(row, 0);
    col = std::max(col, 0);
    if (kind == Column || kind == Block) row_end = std::max(move(row_end, dy), 0);
    if (kind == Row || kind == Block) col_end = std::max(move(col_end, dx), 0);
}

bool Range::isValid() const {
    switch (kind) {
    case Cell:
        return row >= 0 && col >= 0;
    case Row:
        return row >= 0;
    case Column:
        return col >= 0;
    case Block:
        return true;
    default:
        return false;
    }
}

QVariant Range::valueAt(int r, int c, bool old) const {
    const auto& line_values = old ? old_values : values;
    const auto& grid = old ? old_value_grid : value_grid;
    const QVariant& single = old ? old_value : value;
    // A row's values run along its columns, a column's down its rows.
    if (kind == Row) {
        const size_t i = size_t(c - col);
        if (c >= col && i < line_values.size()) return line_values[i];
    } else if (kind == Column) {
        const size_t i = size_t(r - row);
        if (r >= row && i < line_values.size()) return line_values[i];
    } else if (kind == Block && r >= row && c >= col) {
        const size_t i = size_t(r - row), j = size_t(c - col);
        if (i < grid.size() && j < grid[i].size()) return grid[i][j];
    }
    return single;
}

std::pair<int, int> Range::mainPosition() const {
    switch (kind) {
    case Row:
        return {row, main_offset};
    case Column:
        return {main_offset, col};
    case Block:
        return {main_offset_row, main_offset_col};
    default:
        return {row, col};
    }
}

void registerRangeMetaTypes() {
    qRegisterMetaType<Range>("Range");
    qRegisterMetaType<RangeVector>("RangeVector");
    qRegisterMetaType<RangeSize>("RangeSize");
    qRegisterMetaType<Direction>("Direction");
    qRegisterMetaType<Axis>("Axis");
}
