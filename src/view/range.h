#pragma once

#include <QMetaType>
#include <QVariant>

#include <climits>
#include <utility>
#include <vector>

// One set of cells: a single cell, a row segment, a column segment or a
// block, in raw, model or label coordinates. It is also how undo commands
// carry cell values, hence the value slots.
struct Range {
    enum Kind { Cell = 0, Row = 1, Column = 2, Block = 3, Invalid = 4 };
    enum Coordinates { Raw = 0, Model = 1, Label = 2, InvalidCoordinates = 4 };
    static constexpr int kToEnd = INT_MAX;

    int kind = Invalid;
    int coordinates = InvalidCoordinates;
    int row = 0;
    int col = 0;
    int row_end = kToEnd;
    int col_end = kToEnd;
    QVariant value;
    QVariant old_value;
    std::vector<QVariant> values;
    std::vector<QVariant> old_values;
    std::vector<std::vector<QVariant>> value_grid;
    std::vector<std::vector<QVariant>> old_value_grid;
    bool is_main = false;
    int main_offset = -1;
    int main_offset_row = -1;
    int main_offset_col = -1;
    // In a Block the two lists run in parallel: (r, c) cuts one cell, and -1
    // on either side stands for the whole column or row.
    std::vector<int> excluded_rows;
    std::vector<int> excluded_cols;
    std::vector<std::pair<int, int>> excluded_cells;

    Range() = default;
    // A single cell.
    Range(int row, int col, int coordinates);
    // A whole row (kind Row) or column (kind Column) at `index`.
    static Range line(int index, int kind, int coordinates);
    // The whole table as one Block.
    static Range wholeTable(int coordinates);

    // Same kind and origin; values and exclusions do not take part.
    bool operator==(const Range& other) const;
    bool operator!=(const Range& other) const { return !(*this == other); }

    // Whether `b` lies inside this range's extent; exclusions are not looked at.
    bool contains(const Range& b) const;
    // Whether the cell lies inside, with the holes cut by exclusions left out.
    bool containsCell(int r, int c) const;

    void shift(int dy, int dx, bool clamp_to_invalid);
    bool isValid() const;
    QVariant valueAt(int r, int c, bool old) const;

    // The main cell's position inside a Row, Column or Block member.
    std::pair<int, int> mainPosition() const;
};

struct RangeVector : std::vector<Range> {
    using std::vector<Range>::vector;
    int spare1 = -1;
    int spare2 = -1;
};

struct RangeSize {
    int num_cells = 0;
    int num_rows = 0;
    int num_cols = 0;
    int block_rows = 0;
    int block_cols = 0;
};

enum Direction { Up = 0, Down = 1, Left = 2, Right = 3 };
enum Axis { RowAxis = 0, ColumnAxis = 1 };

Q_DECLARE_METATYPE(Range)
Q_DECLARE_METATYPE(RangeVector)
Q_DECLARE_METATYPE(RangeSize)
Q_DECLARE_METATYPE(Direction)
Q_DECLARE_METATYPE(Axis)

// Registers the names above with the meta-type system; cheap to call again.
void registerRangeMetaTypes();
