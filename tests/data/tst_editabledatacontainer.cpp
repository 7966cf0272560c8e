#include "data/cell.h"
#include "data/editabledatacontainer.h"
#include "testutilstore.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <functional>
#include <map>
#include <numeric>

using namespace testutil;

// One change to the store; the result is what the operation returns (true
// for those that return nothing).
using StoreOp = std::function<bool(EditableDataContainer&)>;
Q_DECLARE_METATYPE(StoreOp)
#define OP(...) StoreOp([](EditableDataContainer& c) { return __VA_ARGS__; })
#define DO(...) OP((__VA_ARGS__, true))

namespace {

// Stored rows as text: rows split by '|', one character per cell, '.' for an
// empty cell and [...] for a longer one. The row lengths are the stored
// cell counts, so the sparse layout is compared along with the cells.
Table grid(QByteArrayView text) {
    Table t;
    if (!text.isEmpty()) t.append(QByteArrayList());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == '|') {
            t.append(QByteArrayList());
        } else if (text[i] == '[') {
            const qsizetype end = text.indexOf(']', i);
            t.back().append(text.sliced(i + 1, end - i - 1).toByteArray());
            i = end;
        } else {
            t.back().append(text[i] == '.' ? QByteArray() : QByteArray(1, text[i]));
        }
    }
    return t;
}

QByteArray cellText(QByteArrayView bytes) {
    if (bytes.size() == 1) return bytes.toByteArray();
    return bytes.isEmpty() ? QByteArray(".") : "[" + bytes.toByteArray() + "]";
}

std::vector<CellList> cellRows(const char* rows) {
    std::vector<CellList> out;
    for (const QByteArrayList& row : grid(rows)) {
        out.emplace_back();
        for (const QByteArray& bytes : row)
            out.back().emplace_back(QByteArrayView(bytes));
    }
    return out;
}

CellList cells(const char* row) {
    return cellRows(row).at(0);
}

// A whole store as "<rows>x<columns> <stored rows>".
QByteArray layout(const EditableDataContainer& c) {
    QByteArray out = QByteArray::number(c.rowCount()) + 'x' + QByteArray::number(c.columnCount());
    for (int r = 0; r < c.storedRowCount(); ++r) {
        out += r ? "|" : " ";
        for (int col = 0; col < c.storedCellCount(r); ++col)
            out += cellText(c.cellView(r, col));
    }
    return c.storedRowCount() ? out : out + ' ';
}

void build(EditableDataContainer& c, QByteArrayView state) {
    const qsizetype space = state.indexOf(' ');
    const QByteArrayList sizes = state.first(space).toByteArray().split('x');
    fill(c, grid(state.sliced(space + 1)));
    c.setRowCount(sizes[0].toInt());
    c.setColumnCount(sizes[1].toInt());
}

// The store before, the change, the store after and what the change returns.
using OpCase = std::tuple<const char*, StoreOp, const char*, bool>;

void opColumns() {
    QTest::addColumn<OpCase>("test");
}

void opRow(const char* name, const char* start, const StoreOp& op, const char* expected,
           bool result = true) {
    QTest::newRow(name) << OpCase(start, op, expected, result);
}

void runOp() {
    QFETCH(OpCase, test);
    const auto& [start, op, expected, result] = test;
    EditableDataContainer c;
    build(c, start);
    QCOMPARE(op(c), result);
    QCOMPARE(layout(c), QByteArray(expected));
}

// By row or column, index, mode, list: the cells got.
using LineCase = std::tuple<bool, int, SelectionMode, IndexList, const char*>;
// Of rows or columns, start, mode, list: the empty ones.
using EmptyCase = std::tuple<bool, int, SelectionMode, IndexList, QList<int>>;

const char* const k3x3 = "3x3 abc|def|ghi";
const char* const kRagged = "4x3 abc|d||gh";
const char* const kRaggedTall = "6x5 abc|d||gh"; // with rows and columns only counted

} // namespace

class TestEditableDataContainer : public QObject {
    Q_OBJECT

private slots:
    // The inline/heap boundary of a cell, and its copies and moves.
    void cell_data() {
        QTest::addColumn<int>("size");
        for (int n : {0, 15, 16, 70000})
            QTest::addRow("%d bytes", n) << n;
    }
    void cell() {
        QFETCH(int, size);
        QByteArray bytes(size, '\0');
        for (int i = 0; i < size; ++i)
            bytes[i] = char('A' + i % 26);
        if (size) bytes[size - 1] = '\0'; // bytes, not C strings

        Cell c(bytes);
        QCOMPARE(c.size(), size_t(size));
        QCOMPARE(c.isEmpty(), size == 0);
        QCOMPARE(c.isHeap(), size > Cell::kInlineCapacity);
        QCOMPARE(c.toByteArray(), bytes);

        Cell copy(c);
        QVERIFY(copy == c);
        if (size > Cell::kInlineCapacity) QVERIFY(copy.data() != c.data()); // nothing shared

        Cell moved(std::move(copy));
        QVERIFY(moved == c);
        QVERIFY(copy.isEmpty());

        Cell assigned;
        assigned = c;
        QVERIFY(assigned == c);
        const Cell& alias = assigned;
        assigned = alias; // self-assignment keeps the bytes
        QVERIFY(assigned == c);

        // Assigning a part of its own bytes must not read freed memory.
        assigned.assign(assigned.view().sliced(size / 2));
        QCOMPARE(assigned.toByteArray(), bytes.sliced(size / 2));

        assigned = std::move(moved);
        QVERIFY(assigned == c);
    }

    // An empty cell and a missing one are the same: empties never lengthen a row.
    void setCell_data() {
        opColumns();
        opRow("empty past the row's end", "1x2 ab", OP(c.setCell(0, 5, "")), "1x6 ab");
        opRow("empty on a new row: stored row, no cell", "1x1 a", OP(c.setCell(3, 0, "")),
              "4x1 a|||");
        opRow("text past the row's end", "2x1 a|b", OP(c.setCell(0, 3, "d")), "2x4 a..d|b");
        opRow("text beyond the stored rows", "0x0 ", OP(c.setCell(2, 1, "x")), "3x2 ||.x");
        opRow("empty over text keeps the slot", "1x2 ab", OP(c.setCell(0, 1, "")), "1x2 a.");
        opRow("own heap bytes as the source", "1x1 [0123456789abcdefXYZ]",
              OP(c.setCell(0, 0, c.cellView(0, 0).sliced(2))), "1x1 [23456789abcdefXYZ]");
        opRow("negative index", "1x1 a", OP(c.setCell(-1, 0, "x") || c.setCell(0, -1, "x")),
              "1x1 a", false);
    }
    void setCell() { runOp(); }

    void sizes_data() {
        opColumns();
        opRow("a million rows cost nothing", "0x0 ", OP(c.setRowCount(1000000)), "1000000x0 ");
        opRow("fewer rows cut the store", kRagged, OP(c.setRowCount(2)), "2x3 abc|d");
        opRow("fewer columns cut longer rows", kRagged, OP(c.setColumnCount(2)), "4x2 ab|d||gh");
        opRow("more columns touch no row", kRagged, OP(c.setColumnCount(9)), "4x9 abc|d||gh");
        opRow(
            "cut then grow: cells gone", k3x3,
            OP(c.setColumnCount(1) && c.setColumnCount(3) && c.setRowCount(1) && c.setRowCount(3)),
            "3x3 a");
        opRow("clear keeps the sizes", "8x5 abc|def|ghi", OP(c.clear()), "8x5 ");
        opRow("negative count", k3x3, OP(c.setRowCount(-1) || c.setColumnCount(-1)), k3x3, false);
    }
    void sizes() { runOp(); }

    void lines_data() {
        opColumns();
        opRow("setRow replaces the whole row", k3x3, DO(c.setRow(1, cells("x"))), "3x3 abc|x|ghi");
        opRow("setRow beyond the store", "1x1 a", DO(c.setRow(3, cells("pq"))), "4x2 a|||pq");
        opRow("setColumn, ragged rows", kRagged, DO(c.setColumn(1, cells("1234"))),
              "4x3 a1c|d2|.3|g4");
        opRow("setColumn, short list", k3x3, DO(c.setColumn(0, cells("x"))), "3x3 xbc|def|ghi");
        opRow("setColumn, long list", "1x1 a", DO(c.setColumn(2, cells("xyz"))), "3x3 a.x|..y|..z");
        opRow("setColumn, empties", "2x1 a|b", DO(c.setColumn(3, cells(".y"))), "2x4 a|b..y");
    }
    void lines() { runOp(); }

    void insert_data() {
        opColumns();
        opRow("rows in the middle", k3x3, OP(c.insertRows(1, 2)), "5x3 abc|||def|ghi");
        opRow("rows at the stored end", k3x3, OP(c.insertRows(3, 4)), "7x3 abc|def|ghi");
        opRow("rows beyond the logical end", k3x3, OP(c.insertRows(7, 2)), "9x3 abc|def|ghi");
        opRow("rows in counted-only rows", "6x3 abc|def|ghi", OP(c.insertRows(4, 2)),
              "8x3 abc|def|ghi");
        opRow("no rows, negative row", k3x3, OP(c.insertRows(1, 0) || c.insertRows(-1, 1)), k3x3,
              false);
        opRow("columns into long rows", kRagged, OP(c.insertColumns(1, 2)), "4x5 a..bc|d||g..h");
        opRow("columns at the end", k3x3, OP(c.insertColumns(3, 2)), "3x5 abc|def|ghi");
        opRow("columns past the end", k3x3, OP(c.insertColumns(8, 2)), "3x10 abc|def|ghi");
        opRow("no columns, negative column", k3x3,
              OP(c.insertColumns(0, 0) || c.insertColumns(-2, 1)), k3x3, false);
        opRow("insertRow", k3x3, DO(c.insertRow(1, cells("pqrs"))), "4x4 abc|pqrs|def|ghi");
        opRow("insertRow past the store", "5x3 abc|def|ghi", DO(c.insertRow(4, cells("p"))),
              "6x3 abc|def|ghi||p");
        opRow("insertColumn", kRagged, DO(c.insertColumn(1, cells("123"))), "4x4 a1bc|d2|.3|g.h");
        opRow("insertRowList", k3x3, DO(c.insertRowList(1, cellRows("p|qr"))),
              "5x3 abc|p|qr|def|ghi");
        opRow("insertColumnList", k3x3, DO(c.insertColumnList(0, cellRows("123|456"))),
              "3x5 14abc|25def|36ghi");
        opRow("insertColumnList, no rows", "0x0 ",
              DO(c.insertColumnList(0, std::vector<CellList>(3))), "0x3 ");
    }
    void insert() { runOp(); }

    void remove_data() {
        opColumns();
        opRow("rows in the middle", k3x3, OP(c.removeRows(1, 1)), "2x3 abc|ghi");
        opRow("row count cut", k3x3, OP(c.removeRows(1, 100)), "1x3 abc");
        opRow("rows at the end do nothing", k3x3, OP(c.removeRows(3, 1)), k3x3);
        opRow("counted-only rows", "10x3 abc|def|ghi", OP(c.removeRows(5, 2)), "8x3 abc|def|ghi");
        opRow("rows across the stored end", "10x3 abc|def|ghi", OP(c.removeRows(1, 5)), "5x3 abc");
        opRow("no rows, negative row", k3x3, OP(c.removeRows(0, 0) || c.removeRows(-1, 1)), k3x3,
              false);
        opRow("columns from long rows", kRagged, OP(c.removeColumns(1, 1)), "4x2 ac|d||g");
        opRow("column count cut", kRagged, OP(c.removeColumns(1, 50)), "4x1 a|d||g");
        opRow("columns at the end do nothing", kRagged, OP(c.removeColumns(3, 1)), kRagged);
        opRow("no columns, negative column", kRagged,
              OP(c.removeColumns(0, 0) || c.removeColumns(-1, 1)), kRagged, false);
    }
    void remove() { runOp(); }

    void copy_data() {
        opColumns();
        opRow("row from beyond the store", "5x1 0|1|2|3|4", DO(c.copyRow(10, 2)), "5x1 0|1||3|4");
        opRow("row to beyond the store", k3x3, DO(c.copyRow(0, 5)), "6x3 abc|def|ghi|||abc");
        opRow("copied row owns its bytes", "1x2 [0123456789abcdefXYZ]s",
              DO(c.copyRow(0, 1), c.setCell(0, 0, "changed"), c.setCell(0, 1, "t")),
              "2x2 [changed]t|[0123456789abcdefXYZ]s");
        opRow("column into ragged rows", kRagged, DO(c.copyColumn(1, 4)), "4x5 abc.b|d||gh..h");
        opRow("column from short rows", kRagged, DO(c.copyColumn(2, 0)), "4x3 cbc|.||.h");
    }
    void copy() { runOp(); }

    // P[i] is where the line at i goes. A column move leaves no stored row ending
    // in empty cells.
    void permutation_data() {
        opColumns();
        opRow("rows: reverse", k3x3, OP(c.applyRowPermutation({2, 1, 0})), "3x3 ghi|def|abc");
        opRow("rows: one cycle", k3x3, OP(c.applyRowPermutation({1, 2, 0})), "3x3 ghi|abc|def");
        opRow("rows: counted-only rows", "4x1 a|b", OP(c.applyRowPermutation({3, 2, 1, 0})),
              "4x1 ||b|a");
        opRow("rows: short P", k3x3, OP(c.applyRowPermutation({1, 0})), "3x3 def|abc|ghi");
        opRow("rows: duplicate", k3x3, OP(c.applyRowPermutation({0, 0, 2})), k3x3, false);
        opRow("rows: out of range", k3x3, OP(c.applyRowPermutation({0, 3, 1})), k3x3, false);
        opRow("columns: one cycle", k3x3, DO(c.applyColumnPermutation({1, 2, 0})),
              "3x3 cab|fde|igh");
        opRow("columns: ragged rows", "4x4 abc|d||gh", DO(c.applyColumnPermutation({3, 0, 1, 2})),
              "4x4 bc.a|...d||h..g");
        opRow("columns: invalid", k3x3, DO(c.applyColumnPermutation({2, 2, 0})), k3x3);
    }
    void permutation() { runOp(); }

    // getRow and getColumn on kRaggedTall; an empty list means every line.
    void getLine_data() {
        QTest::addColumn<LineCase>("test");
        // clang-format off
        const std::pair<const char*, LineCase> rows[] = {
            {"row: all, padded to the column count", {true, 1, All, {0}, "d...."}},
            {"row: except, ascending list", {true, 0, Except, {1, 3}, "ac."}},
            {"row: only, in list order, beyond the row too", {true, 3, Only, {4, 1, 0}, ".hg"}},
            {"row: empty list", {true, 0, Only, {}, "abc.."}},
            {"row: counted only", {true, 5, All, {}, "....."}},
            {"column: all, one entry per logical row", {false, 1, All, {}, "b..h.."}},
            {"column: except", {false, 0, Except, {0, 2, 4}, "dg."}},
            {"column: only, in list order", {false, 0, Only, {3, 0, 9}, "ga."}},
            {"column: empty list", {false, 2, Except, {}, "c....."}}};
        // clang-format on
        for (const auto& [name, test] : rows)
            QTest::newRow(name) << test;
    }
    void getLine() {
        QFETCH(LineCase, test);
        const auto& [row, index, mode, list, expected] = test;
        EditableDataContainer c;
        build(c, kRaggedTall);
        CellList out{Cell("stale")};
        row ? c.getRow(out, index, mode, list) : c.getColumn(out, index, mode, list);
        QByteArray text;
        for (const Cell& cell : out)
            text += cellText(cell.view());
        QCOMPARE(text, QByteArray(expected));
    }

    // emptyRows and emptyColumns on kRaggedTall: a b c / d / - / g h / - / -.
    void emptyLines_data() {
        QTest::addColumn<EmptyCase>("test");
        // clang-format off
        const std::pair<const char*, EmptyCase> rows[] = {
            {"rows: all", {true, 0, All, {}, {2, 4, 5}}},
            {"rows: all from column 1", {true, 1, All, {}, {1, 2, 4, 5}}},
            {"rows: except column 0", {true, 0, Except, {0}, {1, 2, 4, 5}}},
            {"rows: only column 2", {true, 0, Only, {2}, {1, 2, 3, 4, 5}}},
            {"rows: only columns past every row", {true, 0, Only, {4, 3}, {0, 1, 2, 3, 4, 5}}},
            {"rows: empty list", {true, 1, Only, {}, {1, 2, 4, 5}}},
            {"columns: all", {false, 0, All, {}, {3, 4}}},
            {"columns: all from row 1", {false, 1, All, {}, {2, 3, 4}}},
            {"columns: except row 0", {false, 0, Except, {0}, {2, 3, 4}}},
            {"columns: only rows 2 and 1", {false, 0, Only, {2, 1}, {1, 2, 3, 4}}},
            {"columns: only counted rows", {false, 0, Only, {5, 4}, {0, 1, 2, 3, 4}}}};
        // clang-format on
        for (const auto& [name, test] : rows)
            QTest::newRow(name) << test;
    }
    void emptyLines() {
        QFETCH(EmptyCase, test);
        const auto& [rows, start, mode, list, expected] = test;
        EditableDataContainer c;
        build(c, kRaggedTall);
        const IndexList found =
            rows ? c.emptyRows(start, mode, list) : c.emptyColumns(start, mode, list);
        QCOMPARE(QList<int>(found.begin(), found.end()), expected);
    }

    // Stored empty cells and rows count as empty, like the ones only counted.
    void trailingEmpty() {
        // clang-format off
        const std::tuple<const char*, int, int> cases[] = {
            {"1000000x7 ", 1000000, 7}, {k3x3, 0, 0}, {"6x4 a|b.|.|", 4, 3},
            {"3x6 a..|bc..|....", 1, 4}, {"2x2 .|", 2, 2}};
        // clang-format on
        for (const auto& [state, rows, columns] : cases) {
            EditableDataContainer c;
            build(c, state);
            QCOMPARE(std::pair(c.trailingEmptyRows(), c.trailingEmptyColumns()),
                     std::pair(rows, columns));
        }
    }

    // Columns up to the last one holding text.
    void columnCountOfRow() {
        EditableDataContainer c;
        build(c, "4x5 abc..|..|.b.|");
        for (const auto& [row, count] : {std::pair(-1, 0), {0, 3}, {1, 0}, {2, 2}, {3, 0}, {9, 0}})
            QCOMPARE(c.columnCountOfRow(row), count);
    }

    // The moves by cycles must end in the same order as the plain way of
    // applying a permutation: save a line before it is overwritten, otherwise
    // copy it over.
    void permutationsMatchCopyingAlgorithm() {
        QRandomGenerator random(20240611);
        for (int round = 0; round < 300; ++round) {
            const bool by_rows = round % 2 == 0;
            const int rows = random.bounded(0, 12), columns = random.bounded(1, 6);
            const int row_count = rows + random.bounded(3),
                      column_count = columns + random.bounded(3);
            QByteArray state =
                QByteArray::number(row_count) + 'x' + QByteArray::number(column_count) + ' ';
            for (int r = 0; r < rows; ++r) {
                if (r) state += '|';
                for (int col = random.bounded(0, columns + 1); col > 0; --col)
                    state += random.bounded(4) == 0 ? QByteArray(".")
                                                    : '[' + QByteArray::number(r * 10 + col) +
                                                          QByteArray(random.bounded(20), 'x') + ']';
            }
            EditableDataContainer moved, copied;
            build(moved, state);
            build(copied, state);

            const int n = random.bounded(0, (by_rows ? row_count : column_count) + 1);
            std::vector<int> p(static_cast<size_t>(n));
            std::iota(p.begin(), p.end(), 0);
            std::shuffle(p.begin(), p.end(), random);

            std::map<int, CellList> saved;
            for (int i = 0; i < n; ++i) {
                const int to = p[size_t(i)];
                if (to == i) continue;
                if (to > i)
                    by_rows ? copied.getRow(saved[to], to, All, {})
                            : copied.getColumn(saved[to], to, All, {});
                if (auto it = saved.find(i); it != saved.end()) {
                    by_rows ? copied.setRow(to, std::move(it->second))
                            : copied.setColumn(to, std::move(it->second));
                    saved.erase(it);
                } else {
                    by_rows ? copied.copyRow(i, to) : copied.copyColumn(i, to);
                }
            }
            QVERIFY(by_rows ? moved.applyRowPermutation(p)
                            : (moved.applyColumnPermutation(p), true));
            QCOMPARE(moved.rowCount(), copied.rowCount());
            QCOMPARE(moved.columnCount(), copied.columnCount());
            QCOMPARE(show(logicalCells(moved)), show(logicalCells(copied)));
            if (!by_rows) QVERIFY(!layout(moved).contains(".|") && !layout(moved).endsWith('.'));
        }
    }

    // A stop asked for between cycles leaves every row in the store exactly once.
    void rowPermutationStopsBetweenCycles() {
        Table t;
        std::vector<int> p(40); // cycles of length 2: (0 1)(2 3)...
        for (int r = 0; r < 40; ++r) {
            t.append({QByteArray::number(r), QByteArray(r, 'z')});
            p[size_t(r)] = r ^ 1;
        }
        for (int allowed : {0, 1, 7, 19}) {
            EditableDataContainer c;
            fill(c, t);
            int calls = 0;
            QVERIFY(!c.applyRowPermutation(p, [&](int done, int total) {
                if (total != 40 || done < 0 || done > total) return false;
                return calls++ < allowed;
            }));
            QCOMPARE(c.rowCount(), 40);
            QCOMPARE(c.storedRowCount(), 40);
            for (int r = 0; r < 40; ++r) {
                const QByteArray first = c.data(r, 0);
                QCOMPARE(c.data(r, 1), QByteArray(first.toInt(), 'z'));
                // The first `allowed` pairs were swapped, the rest untouched.
                QCOMPARE(first.toInt(), r < 2 * allowed ? r ^ 1 : r);
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestEditableDataContainer)
#include "tst_editabledatacontainer.moc"
