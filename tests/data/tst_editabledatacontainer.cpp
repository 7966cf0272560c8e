#include "data/cell.h"
#include "data/editabledatacontainer.h"
#include "testutilstore.h"

#include <QRandomGenerator>
#include <QSize>
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

namespace {

CellList cells(const QByteArrayList& list) {
    CellList out;
    for (const QByteArray& b : list)
        out.emplace_back(QByteArrayView(b));
    return out;
}

QByteArrayList bytesOf(const CellList& list) {
    QByteArrayList out;
    for (const Cell& c : list)
        out.append(c.toByteArray());
    return out;
}

QList<int> listOf(const IndexList& v) {
    return QList<int>(v.begin(), v.end());
}
IndexList indexes(const QList<int>& v) {
    return IndexList(v.begin(), v.end());
}

// A store with exactly the given stored rows, then the logical sizes (-1:
// as the rows make them).
void build(EditableDataContainer& c, const Table& rows, QSize logical) {
    fill(c, rows);
    if (logical.height() >= 0) c.setRowCount(logical.height());
    if (logical.width() >= 0) c.setColumnCount(logical.width());
}

const QSize kAsBuilt(-1, -1);

// Columns of the operation tables: start layout, operation, its result and
// the store afterwards (cells, logical sizes, stored cell count per row).
void opColumns() {
    QTest::addColumn<Table>("start");
    QTest::addColumn<QSize>("logical");
    QTest::addColumn<StoreOp>("op");
    QTest::addColumn<bool>("result");
    QTest::addColumn<Table>("cells");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QList<int>>("stored");
}

void runOp() {
    QFETCH(Table, start);
    QFETCH(QSize, logical);
    QFETCH(StoreOp, op);
    QFETCH(bool, result);
    QFETCH(Table, cells);
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(QList<int>, stored);

    EditableDataContainer c;
    build(c, start, logical);
    QCOMPARE(op(c), result);
    QCOMPARE(c.rowCount(), rows);
    QCOMPARE(c.columnCount(), columns);
    QCOMPARE(storedCounts(c), stored);
    // Only the corner that holds anything is compared cell by cell; the
    // logical sizes can be huge.
    const int r_end = std::min(rows, int(cells.size()) + 2);
    for (int r = 0; r < r_end; ++r)
        for (int col = 0; col < std::min(columns, 64); ++col) {
            const QByteArray want =
                r < cells.size() && col < cells[r].size() ? cells[r][col] : QByteArray();
            if (c.data(r, col) != want)
                QFAIL(
                    qPrintable(QStringLiteral("cell %1,%2: %3, expected %4; store %5")
                                   .arg(r)
                                   .arg(col)
                                   .arg(show(c.data(r, col)), show(want), show(logicalCells(c)))));
        }
}

const Table k3x3{{"a", "b", "c"}, {"d", "e", "f"}, {"g", "h", "i"}};
const Table kRagged{{"a", "b", "c"}, {"d"}, {}, {"g", "h"}};

} // namespace

class TestEditableDataContainer : public QObject {
    Q_OBJECT

private slots:
    void cell_data();
    void cell();
    void setCell_data();
    void setCell() { runOp(); }
    void sizes_data();
    void sizes() { runOp(); }
    void lines_data();
    void lines() { runOp(); }
    void insert_data();
    void insert() { runOp(); }
    void remove_data();
    void remove() { runOp(); }
    void copy_data();
    void copy() { runOp(); }
    void getRow_data();
    void getRow();
    void getColumn_data();
    void getColumn();
    void columnCountOfRow_data();
    void columnCountOfRow();
    void trailingEmpty_data();
    void trailingEmpty();
    void emptyRows_data();
    void emptyRows();
    void emptyColumns_data();
    void emptyColumns();
    void rowPermutation_data();
    void rowPermutation();
    void permutationsMatchCopyingAlgorithm();
    void rowPermutationStopsBetweenCycles();
};

// The inline/heap boundary of a cell, and its copies and moves.
void TestEditableDataContainer::cell_data() {
    QTest::addColumn<int>("size");
    for (int n : {0, 1, 14, 15, 16, 17, 255, 70000})
        QTest::addRow("%d bytes", n) << n;
}

void TestEditableDataContainer::cell() {
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

void TestEditableDataContainer::setCell_data() {
    opColumns();
    auto set = [](int r, int col, QByteArray b) {
        return StoreOp([=](EditableDataContainer& c) { return c.setCell(r, col, b); });
    };
    QTest::newRow("empty past the row's end stores nothing")
        << Table{{"a", "b"}} << kAsBuilt << set(0, 5, "") << true << Table{{"a", "b"}} << 1 << 6
        << QList<int>{2};
    QTest::newRow("empty on a new row grows the store, not the row")
        << Table{{"a"}} << kAsBuilt << set(3, 0, "") << true << Table{{"a"}} << 4 << 1
        << QList<int>{1, 0, 0, 0};
    QTest::newRow("text past the row's end grows the row to it")
        << Table{{"a"}, {"b"}} << kAsBuilt << set(0, 3, "d") << true
        << Table{{"a", "", "", "d"}, {"b"}} << 2 << 4 << QList<int>{4, 1};
    QTest::newRow("text beyond the stored rows")
        << Table{} << kAsBuilt << set(2, 1, "x") << true << Table{{}, {}, {"", "x"}} << 3 << 2
        << QList<int>{0, 0, 2};
    QTest::newRow("empty over text keeps the slot")
        << Table{{"a", "b"}} << kAsBuilt << set(0, 1, "") << true << Table{{"a"}} << 1 << 2
        << QList<int>{2};
    QTest::newRow("15 bytes inline")
        << Table{{"a"}} << kAsBuilt << set(0, 0, QByteArray(15, 'x')) << true
        << Table{{QByteArray(15, 'x')}} << 1 << 1 << QList<int>{1};
    QTest::newRow("16 bytes on the heap")
        << Table{{"a"}} << kAsBuilt << set(0, 0, QByteArray(16, 'y')) << true
        << Table{{QByteArray(16, 'y')}} << 1 << 1 << QList<int>{1};
    QTest::newRow("heap cell shrinks to inline")
        << Table{{QByteArray(40, 'z')}} << kAsBuilt << set(0, 0, "s") << true << Table{{"s"}} << 1
        << 1 << QList<int>{1};
    QTest::newRow("embedded line breaks and NUL stay bytes")
        << Table{} << kAsBuilt << set(0, 0, QByteArray("a\r\nb\0c", 6)) << true
        << Table{{QByteArray("a\r\nb\0c", 6)}} << 1 << 1 << QList<int>{1};
    QTest::newRow("own heap bytes as the source")
        << Table{{"0123456789abcdefXYZ"}} << kAsBuilt << StoreOp([](EditableDataContainer& c) {
               return c.setCell(0, 0, c.cellView(0, 0).sliced(2));
           })
        << true << Table{{"23456789abcdefXYZ"}} << 1 << 1 << QList<int>{1};
    QTest::newRow("negative row refused") << Table{{"a"}} << kAsBuilt << set(-1, 0, "x") << false
                                          << Table{{"a"}} << 1 << 1 << QList<int>{1};
}

void TestEditableDataContainer::sizes_data() {
    opColumns();
    QTest::newRow("a million logical rows cost no storage")
        << Table{} << kAsBuilt
        << StoreOp([](EditableDataContainer& c) { return c.setRowCount(1000000); }) << true
        << Table{} << 1000000 << 0 << QList<int>{};
    QTest::newRow("fewer rows cut the store")
        << kRagged << kAsBuilt << StoreOp([](EditableDataContainer& c) { return c.setRowCount(2); })
        << true << Table{{"a", "b", "c"}, {"d"}} << 2 << 3 << QList<int>{3, 1};
    QTest::newRow("more rows than stored")
        << k3x3 << kAsBuilt << StoreOp([](EditableDataContainer& c) { return c.setRowCount(7); })
        << true << k3x3 << 7 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("negative row count refused")
        << k3x3 << kAsBuilt << StoreOp([](EditableDataContainer& c) { return c.setRowCount(-1); })
        << false << k3x3 << 3 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("fewer columns cut only the longer rows")
        << kRagged << kAsBuilt
        << StoreOp([](EditableDataContainer& c) { return c.setColumnCount(2); }) << true
        << Table{{"a", "b"}, {"d"}, {}, {"g", "h"}} << 4 << 2 << QList<int>{2, 1, 0, 2};
    QTest::newRow("more columns touch no row")
        << kRagged << kAsBuilt
        << StoreOp([](EditableDataContainer& c) { return c.setColumnCount(9); }) << true << kRagged
        << 4 << 9 << QList<int>{3, 1, 0, 2};
    QTest::newRow("cut then grow gives empty cells back")
        << k3x3 << kAsBuilt << StoreOp([](EditableDataContainer& c) {
               return c.setColumnCount(1) && c.setColumnCount(3) && c.setRowCount(1) &&
                      c.setRowCount(3);
           })
        << true << Table{{"a"}} << 3 << 3 << QList<int>{1};
    QTest::newRow("clear keeps the sizes")
        << k3x3 << QSize(5, 8) << StoreOp([](EditableDataContainer& c) { return c.clear(); })
        << true << Table{} << 8 << 5 << QList<int>{};
}

void TestEditableDataContainer::lines_data() {
    opColumns();
    auto setRow = [](int r, QByteArrayList list) {
        return StoreOp([=](EditableDataContainer& c) {
            c.setRow(r, cells(list));
            return true;
        });
    };
    auto setColumn = [](int col, QByteArrayList list) {
        return StoreOp([=](EditableDataContainer& c) {
            c.setColumn(col, cells(list));
            return true;
        });
    };
    QTest::newRow("setRow replaces the whole row")
        << k3x3 << kAsBuilt << setRow(1, {"x"}) << true << Table{{"a", "b", "c"}, {"x"}, k3x3[2]}
        << 3 << 3 << QList<int>{3, 1, 3};
    QTest::newRow("setRow beyond the store grows it")
        << Table{{"a"}} << kAsBuilt << setRow(3, {"p", "q"}) << true
        << Table{{"a"}, {}, {}, {"p", "q"}} << 4 << 2 << QList<int>{1, 0, 0, 2};
    QTest::newRow("setColumn over rows of any length")
        << kRagged << kAsBuilt << setColumn(1, {"1", "2", "3", "4"}) << true
        << Table{{"a", "1", "c"}, {"d", "2"}, {"", "3"}, {"g", "4"}} << 4 << 3
        << QList<int>{3, 2, 2, 2};
    QTest::newRow("setColumn leaves rows beyond the list")
        << k3x3 << kAsBuilt << setColumn(0, {"x"}) << true
        << Table{{"x", "b", "c"}, k3x3[1], k3x3[2]} << 3 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("setColumn longer than the table adds rows")
        << Table{{"a"}} << kAsBuilt << setColumn(2, {"x", "y", "z"}) << true
        << Table{{"a", "", "x"}, {"", "", "y"}, {"", "", "z"}} << 3 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("setColumn's empty cells don't lengthen short rows")
        << Table{{"a"}, {"b"}} << kAsBuilt << setColumn(3, {"", "y"}) << true
        << Table{{"a"}, {"b", "", "", "y"}} << 2 << 4 << QList<int>{1, 4};
}

void TestEditableDataContainer::insert_data() {
    opColumns();
    auto rowsAt = [](int r, int n) {
        return StoreOp([=](EditableDataContainer& c) { return c.insertRows(r, n); });
    };
    auto columnsAt = [](int col, int n) {
        return StoreOp([=](EditableDataContainer& c) { return c.insertColumns(col, n); });
    };
    QTest::newRow("rows in the middle")
        << k3x3 << kAsBuilt << rowsAt(1, 2) << true << Table{k3x3[0], {}, {}, k3x3[1], k3x3[2]} << 5
        << 3 << QList<int>{3, 0, 0, 3, 3};
    QTest::newRow("rows at the stored end only count")
        << k3x3 << kAsBuilt << rowsAt(3, 4) << true << k3x3 << 7 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("rows beyond the logical end")
        << k3x3 << kAsBuilt << rowsAt(7, 2) << true << k3x3 << 9 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("rows inside a logical-only extent")
        << k3x3 << QSize(3, 6) << rowsAt(4, 2) << true << k3x3 << 8 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("no rows refused")
        << k3x3 << kAsBuilt << rowsAt(1, 0) << false << k3x3 << 3 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("negative row refused")
        << k3x3 << kAsBuilt << rowsAt(-1, 1) << false << k3x3 << 3 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("columns into the rows long enough")
        << kRagged << kAsBuilt << columnsAt(1, 2) << true
        << Table{{"a", "", "", "b", "c"}, {"d"}, {}, {"g", "", "", "h"}} << 4 << 5
        << QList<int>{5, 1, 0, 4};
    QTest::newRow("columns at the logical end only count")
        << k3x3 << kAsBuilt << columnsAt(3, 2) << true << k3x3 << 3 << 5 << QList<int>{3, 3, 3};
    QTest::newRow("columns well past the end set the count")
        << k3x3 << kAsBuilt << columnsAt(3 + 5, 2) << true << k3x3 << 3 << 10
        << QList<int>{3, 3, 3};
    QTest::newRow("no columns refused")
        << k3x3 << kAsBuilt << columnsAt(0, 0) << false << k3x3 << 3 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("negative column refused")
        << k3x3 << kAsBuilt << columnsAt(-2, 1) << false << k3x3 << 3 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("insertRow with cells")
        << k3x3 << kAsBuilt << StoreOp([](EditableDataContainer& c) {
               c.insertRow(1, cells({"p", "q", "r", "s"}));
               return true;
           })
        << true << Table{k3x3[0], {"p", "q", "r", "s"}, k3x3[1], k3x3[2]} << 4 << 4
        << QList<int>{3, 4, 3, 3};
    QTest::newRow("insertRow past the store")
        << k3x3 << QSize(3, 5) << StoreOp([](EditableDataContainer& c) {
               c.insertRow(4, cells({"p"}));
               return true;
           })
        << true << Table{k3x3[0], k3x3[1], k3x3[2], {}, {"p"}} << 6 << 3
        << QList<int>{3, 3, 3, 0, 1};
    QTest::newRow("insertColumn with cells")
        << kRagged << kAsBuilt << StoreOp([](EditableDataContainer& c) {
               c.insertColumn(1, cells({"1", "2", "3"}));
               return true;
           })
        << true << Table{{"a", "1", "b", "c"}, {"d", "2"}, {"", "3"}, {"g", "", "h"}} << 4 << 4
        << QList<int>{4, 2, 2, 3};
    QTest::newRow("insertRowList as one block")
        << k3x3 << kAsBuilt << StoreOp([](EditableDataContainer& c) {
               std::vector<CellList> block;
               block.push_back(cells({"p"}));
               block.push_back(cells({"q", "r"}));
               c.insertRowList(1, std::move(block));
               return true;
           })
        << true << Table{k3x3[0], {"p"}, {"q", "r"}, k3x3[1], k3x3[2]} << 5 << 3
        << QList<int>{3, 1, 2, 3, 3};
    QTest::newRow("insertColumnList as one block")
        << k3x3 << kAsBuilt << StoreOp([](EditableDataContainer& c) {
               std::vector<CellList> block;
               block.push_back(cells({"1", "2", "3"}));
               block.push_back(cells({"4", "5", "6"}));
               c.insertColumnList(0, std::move(block));
               return true;
           })
        << true
        << Table{{"1", "4", "a", "b", "c"}, {"2", "5", "d", "e", "f"}, {"3", "6", "g", "h", "i"}}
        << 3 << 5 << QList<int>{5, 5, 5};
    QTest::newRow("insertColumnList on an empty store only counts")
        << Table{} << kAsBuilt << StoreOp([](EditableDataContainer& c) {
               std::vector<CellList> block(3);
               c.insertColumnList(0, std::move(block));
               return true;
           })
        << true << Table{} << 0 << 3 << QList<int>{};
}

void TestEditableDataContainer::remove_data() {
    opColumns();
    auto rowsAt = [](int r, int n) {
        return StoreOp([=](EditableDataContainer& c) { return c.removeRows(r, n); });
    };
    auto columnsAt = [](int col, int n) {
        return StoreOp([=](EditableDataContainer& c) { return c.removeColumns(col, n); });
    };
    Table ten;
    for (int r = 0; r < 10; ++r)
        ten.append({QByteArray::number(r)});
    QList<int> ones(10, 1);
    QTest::newRow("count cut to what exists")
        << ten << kAsBuilt << rowsAt(5, 100) << true << ten.mid(0, 5) << 5 << 1 << ones.mid(0, 5);
    QTest::newRow("at the end does nothing")
        << ten << kAsBuilt << rowsAt(10, 1) << true << ten << 10 << 1 << ones;
    QTest::newRow("negative row refused")
        << ten << kAsBuilt << rowsAt(-1, 1) << false << ten << 10 << 1 << ones;
    QTest::newRow("no rows refused")
        << ten << kAsBuilt << rowsAt(0, 0) << false << ten << 10 << 1 << ones;
    QTest::newRow("rows in the middle") << k3x3 << kAsBuilt << rowsAt(1, 1) << true
                                        << Table{k3x3[0], k3x3[2]} << 2 << 3 << QList<int>{3, 3};
    QTest::newRow("rows that are only logical")
        << k3x3 << QSize(3, 10) << rowsAt(5, 2) << true << k3x3 << 8 << 3 << QList<int>{3, 3, 3};
    QTest::newRow("rows across the stored end") << k3x3 << QSize(3, 10) << rowsAt(1, 5) << true
                                                << Table{k3x3[0]} << 5 << 3 << QList<int>{3};
    QTest::newRow("columns from rows long enough")
        << kRagged << kAsBuilt << columnsAt(1, 1) << true << Table{{"a", "c"}, {"d"}, {}, {"g"}}
        << 4 << 2 << QList<int>{2, 1, 0, 1};
    QTest::newRow("column count cut to what exists")
        << kRagged << kAsBuilt << columnsAt(1, 50) << true << Table{{"a"}, {"d"}, {}, {"g"}} << 4
        << 1 << QList<int>{1, 1, 0, 1};
    QTest::newRow("columns at the end do nothing") << kRagged << kAsBuilt << columnsAt(3, 1) << true
                                                   << kRagged << 4 << 3 << QList<int>{3, 1, 0, 2};
    QTest::newRow("negative column refused") << kRagged << kAsBuilt << columnsAt(-1, 1) << false
                                             << kRagged << 4 << 3 << QList<int>{3, 1, 0, 2};
    QTest::newRow("no columns refused") << kRagged << kAsBuilt << columnsAt(0, 0) << false
                                        << kRagged << 4 << 3 << QList<int>{3, 1, 0, 2};
}

void TestEditableDataContainer::copy_data() {
    opColumns();
    auto copyRow = [](int from, int to) {
        return StoreOp([=](EditableDataContainer& c) {
            c.copyRow(from, to);
            return true;
        });
    };
    auto copyColumn = [](int from, int to) {
        return StoreOp([=](EditableDataContainer& c) {
            c.copyColumn(from, to);
            return true;
        });
    };
    Table five{{"0"}, {"1"}, {"2"}, {"3"}, {"4"}};
    QTest::newRow("row from beyond the store empties the target")
        << five << kAsBuilt << copyRow(10, 2) << true << Table{{"0"}, {"1"}, {}, {"3"}, {"4"}} << 5
        << 1 << QList<int>{1, 1, 0, 1, 1};
    QTest::newRow("row to beyond the store grows it")
        << k3x3 << kAsBuilt << copyRow(0, 5) << true
        << Table{k3x3[0], k3x3[1], k3x3[2], {}, {}, k3x3[0]} << 6 << 3
        << QList<int>{3, 3, 3, 0, 0, 3};
    QTest::newRow("copied row owns its bytes")
        << Table{{QByteArray(30, 'L'), "s"}} << kAsBuilt << StoreOp([](EditableDataContainer& c) {
               c.copyRow(0, 1);
               return c.setCell(0, 0, "changed") && c.setCell(0, 1, "t");
           })
        << true << Table{{"changed", "t"}, {QByteArray(30, 'L'), "s"}} << 2 << 2
        << QList<int>{2, 2};
    QTest::newRow("column into short and long rows")
        << kRagged << kAsBuilt << copyColumn(1, 4) << true
        << Table{{"a", "b", "c", "", "b"}, {"d"}, {}, {"g", "h", "", "", "h"}} << 4 << 5
        << QList<int>{5, 1, 0, 5};
    QTest::newRow("column from where rows are short empties the target")
        << kRagged << kAsBuilt << copyColumn(2, 0) << true
        << Table{{"c", "b", "c"}, {""}, {}, {"", "h"}} << 4 << 3 << QList<int>{3, 1, 0, 2};
}

void TestEditableDataContainer::getRow_data() {
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<int>>("list");
    QTest::addColumn<QByteArrayList>("expected");
    // kRagged with 5 logical columns and 6 logical rows.
    QTest::newRow("all, padded to the column count")
        << 1 << int(All) << QList<int>{0} << QByteArrayList{"d", "", "", "", ""};
    QTest::newRow("except, ascending list")
        << 0 << int(Except) << QList<int>{1, 3} << QByteArrayList{"a", "c", ""};
    QTest::newRow("only, in list order, beyond the row too")
        << 3 << int(Only) << QList<int>{4, 1, 0} << QByteArrayList{"", "h", "g"};
    QTest::newRow("empty list means all")
        << 0 << int(Only) << QList<int>{} << QByteArrayList{"a", "b", "c", "", ""};
    QTest::newRow("logical-only row")
        << 5 << int(All) << QList<int>{} << QByteArrayList{"", "", "", "", ""};
}

void TestEditableDataContainer::getRow() {
    QFETCH(int, row);
    QFETCH(int, mode);
    QFETCH(QList<int>, list);
    QFETCH(QByteArrayList, expected);
    EditableDataContainer c;
    build(c, kRagged, QSize(5, 6));
    CellList out{Cell("stale")};
    c.getRow(out, row, SelectionMode(mode), indexes(list));
    QCOMPARE(bytesOf(out), expected);
}

void TestEditableDataContainer::getColumn_data() {
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<int>>("list");
    QTest::addColumn<QByteArrayList>("expected");
    QTest::newRow("all, one entry per logical row")
        << 1 << int(All) << QList<int>{} << QByteArrayList{"b", "", "", "h", "", ""};
    QTest::newRow("except") << 0 << int(Except) << QList<int>{0, 2, 4}
                            << QByteArrayList{"d", "g", ""};
    QTest::newRow("only, in list order")
        << 0 << int(Only) << QList<int>{3, 0, 9} << QByteArrayList{"g", "a", ""};
    QTest::newRow("empty list means all")
        << 2 << int(Except) << QList<int>{} << QByteArrayList{"c", "", "", "", "", ""};
    QTest::newRow("beyond the stored columns")
        << 4 << int(All) << QList<int>{} << QByteArrayList{"", "", "", "", "", ""};
}

void TestEditableDataContainer::getColumn() {
    QFETCH(int, column);
    QFETCH(int, mode);
    QFETCH(QList<int>, list);
    QFETCH(QByteArrayList, expected);
    EditableDataContainer c;
    build(c, kRagged, QSize(5, 6));
    CellList out{Cell("stale")};
    c.getColumn(out, column, SelectionMode(mode), indexes(list));
    QCOMPARE(bytesOf(out), expected);
}

void TestEditableDataContainer::columnCountOfRow_data() {
    QTest::addColumn<Table>("start");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("expected");
    QTest::newRow("full row") << k3x3 << 0 << 3;
    QTest::newRow("stored empty cells after the last text")
        << Table{{"a", "", "c", "", ""}} << 0 << 3;
    QTest::newRow("only empty cells") << Table{{"", ""}} << 0 << 0;
    QTest::newRow("row not stored") << k3x3 << 7 << 0;
    QTest::newRow("negative row") << k3x3 << -1 << 0;
}

void TestEditableDataContainer::columnCountOfRow() {
    QFETCH(Table, start);
    QFETCH(int, row);
    QFETCH(int, expected);
    EditableDataContainer c;
    build(c, start, kAsBuilt);
    QCOMPARE(c.columnCountOfRow(row), expected);
}

void TestEditableDataContainer::trailingEmpty_data() {
    QTest::addColumn<Table>("start");
    QTest::addColumn<QSize>("logical");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::newRow("nothing stored") << Table{} << QSize(7, 1000000) << 1000000 << 7;
    QTest::newRow("full table") << k3x3 << kAsBuilt << 0 << 0;
    QTest::newRow("stored empty rows and logical ones")
        << Table{{"a"}, {"b", ""}, {""}, {}} << QSize(4, 6) << 4 << 3;
    QTest::newRow("smallest gap over the stored rows")
        << Table{{"a", "", ""}, {"b", "c", "", ""}, {"", "", "", ""}} << QSize(6, -1) << 1 << 4;
    QTest::newRow("every row stored empty") << Table{{""}, {}} << QSize(2, -1) << 2 << 2;
}

void TestEditableDataContainer::trailingEmpty() {
    QFETCH(Table, start);
    QFETCH(QSize, logical);
    QFETCH(int, rows);
    QFETCH(int, columns);
    EditableDataContainer c;
    build(c, start, logical);
    QCOMPARE(c.trailingEmptyRows(), rows);
    QCOMPARE(c.trailingEmptyColumns(), columns);
    if (start.isEmpty()) QCOMPARE(c.data(c.rowCount() - 1, 0), QByteArray());
}

// kRagged with 5 logical columns and 6 rows:
//   a b c / d / (none) / g h / (logical) / (logical)
void TestEditableDataContainer::emptyRows_data() {
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<int>>("list");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("all") << 0 << int(All) << QList<int>{} << QList<int>{2, 4, 5};
    QTest::newRow("all from column 1") << 1 << int(All) << QList<int>{} << QList<int>{1, 2, 4, 5};
    QTest::newRow("except column 0") << 0 << int(Except) << QList<int>{0} << QList<int>{1, 2, 4, 5};
    QTest::newRow("except columns 1 and 2")
        << 0 << int(Except) << QList<int>{1, 2} << QList<int>{2, 4, 5};
    QTest::newRow("only column 2") << 0 << int(Only) << QList<int>{2} << QList<int>{1, 2, 3, 4, 5};
    QTest::newRow("only columns past every row")
        << 0 << int(Only) << QList<int>{4, 3} << QList<int>{0, 1, 2, 3, 4, 5};
    QTest::newRow("empty list means all")
        << 1 << int(Only) << QList<int>{} << QList<int>{1, 2, 4, 5};
}

void TestEditableDataContainer::emptyRows() {
    QFETCH(int, start);
    QFETCH(int, mode);
    QFETCH(QList<int>, list);
    QFETCH(QList<int>, expected);
    EditableDataContainer c;
    build(c, kRagged, QSize(5, 6));
    QCOMPARE(listOf(c.emptyRows(start, SelectionMode(mode), indexes(list))), expected);
}

void TestEditableDataContainer::emptyColumns_data() {
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<int>>("list");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("all") << 0 << int(All) << QList<int>{} << QList<int>{3, 4};
    QTest::newRow("all from row 1") << 1 << int(All) << QList<int>{} << QList<int>{2, 3, 4};
    QTest::newRow("except row 0") << 0 << int(Except) << QList<int>{0} << QList<int>{2, 3, 4};
    QTest::newRow("only rows 1 and 2")
        << 0 << int(Only) << QList<int>{2, 1} << QList<int>{1, 2, 3, 4};
    QTest::newRow("only logical rows")
        << 0 << int(Only) << QList<int>{5, 4} << QList<int>{0, 1, 2, 3, 4};
    QTest::newRow("empty list means all") << 0 << int(Except) << QList<int>{} << QList<int>{3, 4};
}

void TestEditableDataContainer::emptyColumns() {
    QFETCH(int, start);
    QFETCH(int, mode);
    QFETCH(QList<int>, list);
    QFETCH(QList<int>, expected);
    EditableDataContainer c;
    build(c, kRagged, QSize(5, 6));
    QCOMPARE(listOf(c.emptyColumns(start, SelectionMode(mode), indexes(list))), expected);
}

void TestEditableDataContainer::rowPermutation_data() {
    QTest::addColumn<Table>("start");
    QTest::addColumn<QSize>("logical");
    QTest::addColumn<bool>("rows");
    QTest::addColumn<QList<int>>("permutation");
    QTest::addColumn<bool>("result");
    QTest::addColumn<Table>("expected");
    QTest::newRow("rows: identity")
        << k3x3 << kAsBuilt << true << QList<int>{0, 1, 2} << true << k3x3;
    QTest::newRow("rows: reverse") << k3x3 << kAsBuilt << true << QList<int>{2, 1, 0} << true
                                   << Table{k3x3[2], k3x3[1], k3x3[0]};
    // The line at i goes to P[i]: 0 -> 1, 1 -> 2, 2 -> 0.
    QTest::newRow("rows: one cycle") << k3x3 << kAsBuilt << true << QList<int>{1, 2, 0} << true
                                     << Table{k3x3[2], k3x3[0], k3x3[1]};
    QTest::newRow("rows: logical rows move too")
        << Table{{"a"}, {"b"}} << QSize(1, 4) << true << QList<int>{3, 2, 1, 0} << true
        << Table{{}, {}, {"b"}, {"a"}};
    QTest::newRow("rows: shorter than the table")
        << k3x3 << kAsBuilt << true << QList<int>{1, 0} << true << Table{k3x3[1], k3x3[0], k3x3[2]};
    QTest::newRow("rows: duplicate refused")
        << k3x3 << kAsBuilt << true << QList<int>{0, 0, 2} << false << k3x3;
    QTest::newRow("rows: out of range refused")
        << k3x3 << kAsBuilt << true << QList<int>{0, 3, 1} << false << k3x3;
    QTest::newRow("columns: one cycle") << k3x3 << kAsBuilt << false << QList<int>{1, 2, 0} << true
                                        << Table{{"c", "a", "b"}, {"f", "d", "e"}, {"i", "g", "h"}};
    QTest::newRow("columns: ragged rows")
        << kRagged << QSize(4, -1) << false << QList<int>{3, 0, 1, 2} << true
        << Table{{"b", "c", "", "a"}, {"", "", "", "d"}, {}, {"h", "", "", "g"}};
    QTest::newRow("columns: invalid left alone")
        << k3x3 << kAsBuilt << false << QList<int>{2, 2, 0} << false << k3x3;
}

void TestEditableDataContainer::rowPermutation() {
    QFETCH(Table, start);
    QFETCH(QSize, logical);
    QFETCH(bool, rows);
    QFETCH(QList<int>, permutation);
    QFETCH(bool, result);
    QFETCH(Table, expected);
    EditableDataContainer c;
    build(c, start, logical);
    const int row_count = c.rowCount(), column_count = c.columnCount();
    const std::vector<int> p(permutation.begin(), permutation.end());
    if (rows) {
        QCOMPARE(c.applyRowPermutation(p), result);
    } else {
        c.applyColumnPermutation(p);
    }
    QCOMPARE(c.rowCount(), row_count);
    QCOMPARE(c.columnCount(), column_count);
    QCOMPARE(logicalCells(c), padded(expected, row_count, column_count));
    // No stored row ends in empty cells after a column move.
    if (!rows)
        for (int r = 0; r < c.storedRowCount(); ++r)
            QVERIFY(c.storedCellCount(r) == 0 ||
                    !c.cellView(r, c.storedCellCount(r) - 1).isEmpty());
}

// The moves by cycles must end in the same order as the plain way of
// applying a permutation: save a line before it is overwritten, otherwise
// copy it over.
void TestEditableDataContainer::permutationsMatchCopyingAlgorithm() {
    QRandomGenerator random(20240611);
    for (int round = 0; round < 300; ++round) {
        const bool by_rows = round % 2 == 0;
        Table t;
        const int rows = random.bounded(0, 12), columns = random.bounded(1, 6);
        for (int r = 0; r < rows; ++r) {
            QByteArrayList row;
            const int n = random.bounded(0, columns + 1);
            for (int col = 0; col < n; ++col)
                row.append(random.bounded(4) == 0 ? QByteArray()
                                                  : QByteArray::number(r * 10 + col) +
                                                        QByteArray(random.bounded(20), 'x'));
            t.append(row);
        }
        EditableDataContainer moved, copied;
        const QSize logical(columns + random.bounded(3), rows + random.bounded(3));
        build(moved, t, logical);
        build(copied, t, logical);

        const int n = by_rows ? random.bounded(0, logical.height() + 1)
                              : random.bounded(0, logical.width() + 1);
        std::vector<int> p(static_cast<size_t>(n));
        std::iota(p.begin(), p.end(), 0);
        std::shuffle(p.begin(), p.end(), random);

        std::map<int, CellList> saved;
        for (int i = 0; i < n; ++i) {
            const int to = p[size_t(i)];
            if (to == i) continue;
            if (to > i) {
                if (by_rows)
                    copied.getRow(saved[to], to, All, {});
                else
                    copied.getColumn(saved[to], to, All, {});
            }
            auto it = saved.find(i);
            if (it != saved.end()) {
                if (by_rows)
                    copied.setRow(to, std::move(it->second));
                else
                    copied.setColumn(to, std::move(it->second));
                saved.erase(it);
            } else if (by_rows) {
                copied.copyRow(i, to);
            } else {
                copied.copyColumn(i, to);
            }
        }
        if (by_rows)
            QVERIFY(moved.applyRowPermutation(p));
        else
            moved.applyColumnPermutation(p);
        QCOMPARE(moved.rowCount(), copied.rowCount());
        QCOMPARE(moved.columnCount(), copied.columnCount());
        QCOMPARE(logicalCells(moved), logicalCells(copied));
    }
}

// A stop asked for between cycles leaves every row in the store exactly once.
void TestEditableDataContainer::rowPermutationStopsBetweenCycles() {
    Table t;
    for (int r = 0; r < 40; ++r)
        t.append({QByteArray::number(r), QByteArray(r, 'z')});
    // Cycles of length 2: (0 1)(2 3)...
    std::vector<int> p(40);
    for (int i = 0; i < 40; ++i)
        p[size_t(i)] = i ^ 1;
    for (int allowed : {0, 1, 7, 19}) {
        EditableDataContainer c;
        build(c, t, kAsBuilt);
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

QTEST_GUILESS_MAIN(TestEditableDataContainer)
#include "tst_editabledatacontainer.moc"
