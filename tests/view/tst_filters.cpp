#include "testutilfiles.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QTest>
#include <QUndoStack>

#include <memory>

namespace {

// A header, then rows whose first cells are their ids (r1, r2, ...).
const QByteArray kTable = "id,name,qty\n"
                          "r1,apple,3\n"
                          "r2,Banana,12\n"
                          "r3,cherry,\n"
                          "r4,apple pie,40\n"
                          "r5,a*b,7.5\n"
                          "r6,C,-2\n";

// The ids of the rows in view, in the order shown.
QStringList shownIds(const TableModel& m) {
    QStringList ids;
    for (int r = 1; r < m.tableData().numModelRows(); ++r)
        ids << m.tableData().data(r, 0).toString();
    return ids;
}

} // namespace

// Filters through the model and the grid: what each leaves in view, their
// undo, edits that stay in view until a refresh, and filters that follow
// their lines when lines move.
class TestFilters : public QObject {
    Q_OBJECT

    ScratchFiles files;
    std::unique_ptr<TableView> makeView(bool read_only = false) {
        auto view = std::make_unique<TableView>(read_only);
        view->model()->load(files.write(kTable), false);
        view->model()->selectSingleCell(Range(1, 0, Range::Model));
        return view;
    }
    static FilterData columnFilter(int col, const QString& text) {
        return FilterData(FilterLine::forColumn(col), text);
    }

private slots:
    void initTestCase() { QVERIFY(files.isValid()); }

    void filterShowsMatchingRows_data() {
        QTest::addColumn<bool>("read_only");
        QTest::addColumn<int>("col");
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("whole text, any case") << false << 1 << "APPLE" << QStringList{"r1"};
        QTest::newRow("wildcard") << false << 1 << "a*" << QStringList{"r1", "r4", "r5"};
        QTest::newRow("numbers below") << false << 2 << "<10" << QStringList{"r1", "r5", "r6"};
        QTest::newRow("between, either way") << false << 2 << "40-3"
                                             << QStringList{"r1", "r2", "r4", "r5"};
        QTest::newRow("regex keeps case") << false << 1 << "#an" << QStringList{"r2"};
        QTest::newRow("empty shows the empty") << false << 2 << "" << QStringList{"r3"};
        QTest::newRow("or, and, not") << false << 1 << "c|*e*&!*pie"
                                      << QStringList{"r1", "r3", "r6"};
        QTest::newRow("escaped wildcard") << false << 1 << "a\\*b" << QStringList{"r5"};
        QTest::newRow("past the data: all empty") << false << 7 << "x" << QStringList{};
        QTest::newRow("file on disk") << true << 1 << "*an*" << QStringList{"r2"};
    }
    void filterShowsMatchingRows() {
        QFETCH(bool, read_only);
        QFETCH(int, col);
        QFETCH(QString, filter);
        QFETCH(QStringList, shown);
        auto view = makeView(read_only);
        TableModel& m = *view->model();
        const QStringList all = shownIds(m);
        view->addFilter(columnFilter(col, filter));
        QCOMPARE(shownIds(m), shown);
        QCOMPARE(m.tableData().data(0, 0).toString(), QStringLiteral("id")); // header stays
        view->undoStack()->undo();
        QCOMPARE(shownIds(m), all);
        QVERIFY(m.filterList().empty());
        view->undoStack()->redo();
        QCOMPARE(shownIds(m), shown);
    }

    void editedRowStaysUntilRefresh() {
        auto view = makeView();
        TableModel& m = *view->model();
        view->addFilter(columnFilter(1, "a*"));
        QCOMPARE(shownIds(m), (QStringList{"r1", "r4", "r5"}));
        // An edit out of the match: the row stays in view, also when
        // another filter comes.
        m.tableData().fillRaw(1, 1, 1, 1, QStringLiteral("pear"));
        view->addFilter(columnFilter(2, ">0"));
        QCOMPARE(shownIds(m), (QStringList{"r1", "r4", "r5"}));
        view->refreshFilters();
        QCOMPARE(shownIds(m), (QStringList{"r4", "r5"}));
        view->undoStack()->undo();
        QCOMPARE(shownIds(m), (QStringList{"r1", "r4", "r5"}));
        view->removeFilter(FilterLine::forColumn(2));
        QCOMPARE(m.filterList().size(), size_t(1));
        QCOMPARE(shownIds(m), (QStringList{"r1", "r4", "r5"})); // the edit still in view
        view->removeAllFilters();
        QCOMPARE(shownIds(m).size(), 6);
        // Undo walks back through every list.
        view->undoStack()->undo();
        view->undoStack()->undo();
        QCOMPARE(m.filterList().size(), size_t(2));
        QCOMPARE(shownIds(m), (QStringList{"r1", "r4", "r5"}));
    }

    // Taking filters away and back: a row edited out of the match stays in
    // view, so that the undo of a later row move moves the same rows.
    void removalUndoKeepsRowsInView_data() {
        QTest::addColumn<bool>("all");
        QTest::newRow("one filter") << false;
        QTest::newRow("all filters") << true;
    }
    void removalUndoKeepsRowsInView() {
        QFETCH(bool, all);
        auto view = makeView();
        TableModel& m = *view->model();
        view->addFilter(columnFilter(1, "a*"));
        m.tableData().fillRaw(1, 1, 1, 1, QStringLiteral("pear"));
        const QByteArray edited = files.saved(m);
        Range row = Range::wholeTable(Range::Model);
        row.row = row.row_end = row.main_offset_row = 1;
        row.main_offset_col = 0;
        row.is_main = true;
        m.setSelection({row}, true);
        view->moveRowsRelative(1);
        QCOMPARE(shownIds(m), (QStringList{"r4", "r1", "r5"}));
        all ? view->removeAllFilters() : view->removeFilter(FilterLine::forColumn(1));
        QVERIFY(m.filterList().empty());
        view->undoStack()->undo();
        QCOMPARE(shownIds(m), (QStringList{"r4", "r1", "r5"}));
        view->undoStack()->undo();
        QCOMPARE(files.saved(m), edited);
        QCOMPARE(shownIds(m), (QStringList{"r1", "r4", "r5"}));
    }

    void filtersFollowTheirLines() {
        auto view = makeView();
        TableModel& m = *view->model();
        view->addFilter(columnFilter(1, "*a*"));
        m.setHiddenRows({4}); // r4, by hand
        QCOMPARE(shownIds(m), (QStringList{"r1", "r2", "r5"}));
        QCOMPARE(m.userHiddenRows(), std::vector<int>{4});

        // A column inserted before: the filter moves with its column.
        view->insertCols(1, true);
        QCOMPARE(m.filterList().front().range, FilterLine::forColumn(2));
        QCOMPARE(m.rawHiddenRows(), (std::vector<int>{3, 4, 6}));
        // Removing the filter's column drops the filter: its rows come
        // back, the row hidden by hand stays hidden; undo brings all back.
        m.selectSingleCell(Range(1, 2, Range::Model));
        view->removeCols();
        QVERIFY(m.filterList().empty());
        QCOMPARE(m.rawHiddenRows(), std::vector<int>{4});
        view->undoStack()->undo();
        QCOMPARE(m.filterList().front().range, FilterLine::forColumn(2));
        QCOMPARE(m.rawHiddenRows(), (std::vector<int>{3, 4, 6}));

        // Rows sorted: hidden rows go with their data.
        view->undoStack()->undo(); // the inserted column
        m.selectSingleCell(Range(1, 0, Range::Model));
        view->sortSelectedColumn(1);
        QCOMPARE(shownIds(m), (QStringList{"r5", "r2", "r1"}));
        QCOMPARE(m.userHiddenRows().size(), size_t(1));
        QCOMPARE(m.tableData().rawData(m.userHiddenRows().front(), 0).toString(),
                 QStringLiteral("r4"));

        // Transposed, the column filter is a row filter on the same data,
        // and showing the columns hidden by hand leaves its own hidden.
        view->transposeTable();
        QCOMPARE(m.filterList().front().range.kind, FilterLine::kRow);
        const std::vector<int> filtered = m.rawHiddenCols();
        m.setHiddenCols({});
        QCOMPARE(m.rawHiddenCols().size(), filtered.size() - 1);
        m.setHiddenCols(filtered);
        view->transposeTable();
        QCOMPARE(shownIds(m), (QStringList{"r5", "r2", "r1"}));
    }

    // A long column is read on two threads: the result is the same as the
    // filter asked of each cell here.
    void longColumnOnTwoThreads() {
        QByteArray bytes = "n,v\n";
        int expected_regex = 0, expected_below = 0;
        for (int i = 0; i < 60000; ++i) {
            const QByteArray v = QByteArray::number(i % 997);
            bytes += "r" + QByteArray::number(i) + "," + v + "\n";
            expected_regex += v.startsWith('1');
            expected_below += i % 997 < 100;
        }
        TableView view(false);
        TableModel& m = *view.model();
        m.load(files.write(bytes), false);
        view.addFilter(columnFilter(1, "#^1"));
        QCOMPARE(m.tableData().numModelRows() - 1, expected_regex);
        view.addFilter(columnFilter(1, "<100"));
        QCOMPARE(m.tableData().numModelRows() - 1, expected_below);
    }

    void cellContentsBecomeFilter() {
        auto view = makeView();
        TableModel& m = *view->model();
        Range a(5, 1, Range::Model), c(6, 1, Range::Model);
        a.is_main = true;
        m.setSelection({a, c}, true);
        QVERIFY(view->filterSelectedWithCellContents(false).isEmpty());
        QCOMPARE(m.filterList().front().filter_string, QStringLiteral("a\\*b|c"));
        QCOMPARE(shownIds(m), (QStringList{"r5", "r6"}));
        // A whole column of distinct values is refused, not ground through.
        QByteArray many = "v\n";
        for (int i = 0; i < 1500; ++i)
            many += QByteArray::number(i) + "\n";
        TableView big(false);
        big.model()->load(files.write(many), false);
        Range column = Range::line(0, Range::Column, Range::Model);
        column.is_main = true;
        column.main_offset = 0;
        big.model()->setMainAndSelection(Range(0, 0, Range::Model), RangeVector{column});
        QVERIFY(!big.filterSelectedWithCellContents(false).isEmpty());
        QVERIFY(big.model()->filterList().empty());
    }
};

QTEST_MAIN(TestFilters)
#include "tst_filters.moc"
