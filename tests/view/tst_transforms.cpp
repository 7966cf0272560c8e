#include "edit/casetransforms.h"
#include "edit/datetimeconversion.h"
#include "testutilfiles.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QFile>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <functional>
#include <memory>

// The Data menu's transforms on a grid: what the selected cells become, that
// hidden and unselected cells don't move, that quotes of untouched cells
// survive, and that one undo gives back the file byte for byte.
class TestTransforms : public QObject {
    Q_OBJECT

    ScratchFiles files;
    std::unique_ptr<TableView> makeView(const QByteArray& bytes) {
        auto view = std::make_unique<TableView>(false);
        view->model()->load(files.write(bytes), false);
        view->resize(400, 300);
        return view;
    }
    QByteArray saved(TableView& v) { return files.saved(*v.model()); }
    static Range column(int col) {
        Range r = Range::line(col, Range::Column, Range::Model);
        r.is_main = true;
        r.main_offset = 0;
        return r;
    }
    static Range block(int r0, int r1, int c0, int c1) {
        Range r = Range::wholeTable(Range::Model);
        r.row = r0, r.row_end = r1, r.col = c0, r.col_end = c1;
        r.is_main = true;
        r.main_offset_row = r0;
        r.main_offset_col = c0;
        return r;
    }

    using Action = std::function<void(TableView&)>;
    struct Case {
        const char* name;
        QByteArray input;
        RangeVector selection;
        std::vector<int> hidden_rows;
        Action act;
        QByteArray expected;
    };

    static std::vector<Case> cases() {
        const QByteArray lorem = "h\nLorem Ipsum\n";
        return {
            {"upper case of a column keeps quotes of what doesn't change",
             "a,b\n\"x\",\"Y\"\nz,\"w,v\"\n",
             {column(1)},
             {},
             [](TableView& v) { v.upperCase(); },
             "a,B\n\"x\",\"Y\"\nz,\"W,V\"\n"},
            {"several members, and a hidden row left alone",
             "a,b\nc,d\ne,f\ng,h\n",
             {Range(0, 0, Range::Model), block(1, 2, 1, 1)},
             {2},
             [](TableView& v) { v.upperCase(); },
             "A,b\nc,D\ne,f\ng,H\n"},
            {"lower snake case",
             "h\nhelloWorld foo-bar\nthe  end\n",
             {column(0)},
             {},
             [](TableView& v) { v.lowerSnakeCase(); },
             "h\nhello_world_foo_bar\nthe__end\n"},
            {"title case keeps stop words inside",
             "the end of it\n",
             {column(0)},
             {},
             [](TableView& v) { v.titleCase(); },
             "The End of It\n"},
            {"acronym",
             "Bank of America\n",
             {column(0)},
             {},
             [](TableView& v) { v.convertToAcronym(); },
             "BOA\n"},
            {"date reformat leaves what doesn't read",
             "d\n2020-04-10\nsoon\n\n",
             {column(0)},
             {},
             [](TableView& v) { v.convertDateTimeFormat(2, 0, {}, QStringLiteral("dd/MM/yyyy")); },
             "d\n10/04/2020\nsoon\n\n"},
            {"date from a custom format with literals to Unix seconds",
             "\"on 10.04.2020\"\n",
             {column(0)},
             {},
             [](TableView& v) {
                 v.convertDateTimeFormat(0, 3, QStringLiteral("\"on \"dd.MM.yyyy"), {});
             },
             "1586476800\n"},
            {"number format to comma decimal",
             "\"1,234.5\"\n7\nx\n",
             {column(0)},
             {},
             [](TableView& v) { v.convertNumberFormat(true); },
             "\"1.234,5\"\n7\nx\n"},
            {"zero fill",
             "0012\n12a\n\n1234567\n",
             {column(0)},
             {},
             [](TableView& v) { v.zeroFillWholeNumbers(6); },
             "000012\n12a\n\n1234567\n"},
            {"remove leading zeros",
             "0\n000\n-007\nab0012\n",
             {column(0)},
             {},
             [](TableView& v) { v.removeLeadingZeros(); },
             "0\n0\n-7\nab12\n"},
            {"number of decimals",
             "$5\n1.239\nabc\n",
             {column(0)},
             {},
             [](TableView& v) { v.setNumberOfDecimals(2); },
             "$5.00\n1.24\nabc\n"},
            {"keep left",
             "h\nLorem Ipsum\n",
             {block(1, 1, 0, 0)},
             {},
             [](TableView& v) { v.keepOnlyLeftPart(-4); },
             "h\nLorem I\n"},
            {"keep left beyond the length empties",
             lorem,
             {block(1, 1, 0, 0)},
             {},
             [](TableView& v) { v.keepOnlyLeftPart(-100); },
             "h\n\n"},
            {"keep middle",
             lorem,
             {block(1, 1, 0, 0)},
             {},
             [](TableView& v) { v.keepOnlyMiddlePart(7, -4); },
             "h\nem I\n"},
            {"keep right",
             lorem,
             {block(1, 1, 0, 0)},
             {},
             [](TableView& v) { v.keepOnlyRightPart(4); },
             "h\npsum\n"},
            {"prepend also into empty cells",
             "a,b\n,c\n",
             {block(0, 1, 0, 0)},
             {},
             [](TableView& v) { v.prependToCells(QStringLiteral("#")); },
             "#a,b\n#,c\n"},
            {"append a series one to a cell",
             "a\nb\nc\n",
             {column(0)},
             {},
             [](TableView& v) { v.appendSeriesToCells(QStringLiteral("1 1")); },
             "a1\nb2\nc3\n"},
            {"trim",
             "\" a \",b\n",
             {block(0, 0, 0, 1)},
             {},
             [](TableView& v) { v.trimSelectedCells(); },
             "a,b\n"},
            {"copy the main cell everywhere",
             "a,b\nc,d\n",
             {block(0, 1, 0, 1)},
             {},
             [](TableView& v) { v.copyMainCellToSelectedCells(); },
             "a,a\na,a\n"},
            {"series down a column skips a hidden row",
             "h\nx\nx\nx\nx\n",
             {block(1, 3, 0, 0)},
             {2},
             [](TableView& v) { v.fillSelectedCellsWithSeries(QStringLiteral("1 2")); },
             "h\n1\nx\n3\n5\n"},
            {"series along a row of words",
             "a,b,c\n",
             {block(0, 0, 0, 2)},
             {},
             [](TableView& v) { v.fillSelectedCellsWithSeries(QStringLiteral("x \"y z\"")); },
             "x,y z,x\n"},
            {"series from an empty field empties",
             "a,b\n",
             {block(0, 0, 0, 1)},
             {},
             [](TableView& v) { v.fillSelectedCellsWithSeries(QString()); },
             ",\n"},
            {"random integers from a one-value range",
             "a,b\nc,d\n",
             {block(0, 1, 1, 1)},
             {},
             [](TableView& v) {
                 v.randomIntegersInSelectedCells({{{7, 7}}});
             },
             "a,7\nc,7\n"},
            {"join each row",
             "a,b,c\nd,e,f\n",
             {block(0, 1, 0, 1)},
             {},
             [](TableView& v) { v.joinSelectedCells(true, QStringLiteral("-")); },
             "a-b,,c\nd-e,,f\n"},
            {"join a column",
             "a,b\nc,d\n",
             {block(0, 1, 0, 0)},
             {},
             [](TableView& v) { v.joinSelectedCells(false, QStringLiteral("\n")); },
             "\"a\nc\",b\n,d\n"},
            {"split to the right, growing the table",
             "a-b-c,x\n",
             {block(0, 0, 0, 0)},
             {},
             [](TableView& v) { v.splitSelectedCells(true, false, QStringLiteral("-"), {}); },
             "a,b,c\n"},
            {"split below by index",
             "Lorem Ipsum\n",
             {block(0, 0, 0, 0)},
             {},
             [](TableView& v) {
                 v.splitSelectedCells(false, true, {}, {2, 4, -3});
             },
             "Lo\nre\nm Ip\nsum\n"},
            {"reshape row-wise",
             "1,2,3,4\n",
             {block(0, 0, 0, 3)},
             {},
             [](TableView& v) { QVERIFY(v.reshapeSelectedCells(QStringLiteral("2"), true)); },
             "1,2,,\n3,4,,\n"},
        };
    }

private slots:
    void initTestCase() { QVERIFY(files.isValid()); }

    void commands_data() {
        QTest::addColumn<int>("index");
        const std::vector<Case> all = cases();
        for (size_t i = 0; i < all.size(); ++i)
            QTest::newRow(all[i].name) << int(i);
    }
    void commands() {
        QFETCH(int, index);
        const Case c = cases()[size_t(index)];
        for (const qint64 bulk : {qint64(1) << 40, qint64(1)}) {
            auto view = makeView(c.input);
            view->bulk_transform_cells = bulk;
            TableModel& m = *view->model();
            if (!c.hidden_rows.empty()) m.tableData().setHiddenRows(c.hidden_rows);
            const QByteArray before = saved(*view);
            m.setMainAndSelection(
                Range(c.selection.front().row, c.selection.front().col, Range::Model), c.selection);
            c.act(*view);
            QCOMPARE(view->undoStack()->count(), 1);
            m.tableData().setHiddenRows({});
            QCOMPARE(saved(*view), c.expected);
            m.tableData().setHiddenRows(c.hidden_rows);
            view->commandUndo();
            QCOMPARE(saved(*view), before);
            view->commandRedo();
            m.tableData().setHiddenRows({});
            QCOMPARE(saved(*view), c.expected);
        }
    }

    // A transform that changes nothing is no undo step.
    void noChangeNoStep() {
        auto view = makeView("ABC,1\n\"Q\",2\n");
        view->model()->setMainAndSelection(Range(0, 0, Range::Model), {block(0, 1, 0, 1)});
        view->upperCase();
        view->convertDateTimeFormat(1, 3, {}, {});
        QCOMPARE(view->undoStack()->count(), 0);
    }

    // UUIDs: the form asked for, every cell its own, v7 marked as such.
    void uuids() {
        auto view = makeView("a\nb\nc\n");
        view->model()->setMainAndSelection(Range(0, 0, Range::Model), {column(0)});
        view->fillSelectedCellsWithUuids(UuidVersion::V7, UuidForm::BracedUpper);
        const QRegularExpression braced(QStringLiteral(
            "^\\{[0-9A-F]{8}-[0-9A-F]{4}-7[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}\\}$"));
        QSet<QString> seen;
        for (int r = 0; r < 3; ++r) {
            const QString text = view->model()->cellText(r, 0);
            QVERIFY2(braced.match(text).hasMatch(), qPrintable(text));
            seen.insert(text);
        }
        QCOMPARE(seen.size(), 3);
    }

    // The stored-bytes path (whole columns, two threads) against the cell by
    // cell one and against the function itself, on a column of mixed cells
    // with quotes, hidden rows and columns, and a hole in the selection.
    void bulkMatchesPerCell_data() {
        QTest::addColumn<int>("which");
        QTest::newRow("upper") << 0;
        QTest::newRow("date") << 1;
        QTest::newRow("keep left") << 2;
        QTest::newRow("title") << 3;
    }
    void bulkMatchesPerCell() {
        QFETCH(int, which);
        const std::vector<std::pair<TableView::TextFunction, bool>> functions{
            {[](const QString& t) { return t.toUpper(); }, false},
            {[](const QString& t) {
                 return convertDateTime(t, DateTimeFormatKind::Iso8601DateOnly,
                                        DateTimeFormatKind::Custom, {},
                                        QStringLiteral("MMM d, yyyy"));
             },
             true},
            {[](const QString& t) { return t.left(2); }, false},
            {toTitleCase, false},
        };
        const auto [f, empty_keeps] = functions[size_t(which)];
        QRandomGenerator rng(21);
        const QStringList words{"alpha",           "Ünïcode ß", "2021-03-04", "x,y",
                                "say \"hi\"",      "",          "1999-12-31", "not-a-date",
                                "bank of america", "ÿ"};
        QByteArray bytes;
        const int rows = 3000;
        for (int r = 0; r < rows; ++r) {
            QStringList cells;
            for (int c = 0; c < 3; ++c) {
                QString w = words[int(rng.bounded(words.size()))];
                if (w.contains(u',') || w.contains(u'"') || rng.bounded(5) == 0)
                    w = u'"' + QString(w).replace(u'"', QStringLiteral("\"\"")) + u'"';
                cells << w;
            }
            bytes += cells.join(u',').toUtf8() + '\n';
        }
        const std::vector<int> hidden_rows{0, 5, 6, 1200, rows - 1};
        QByteArray results[2];
        for (int pass = 0; pass < 2; ++pass) {
            auto view = makeView(bytes);
            view->bulk_transform_cells = pass == 0 ? qint64(1) << 40 : 100;
            TableModel& m = *view->model();
            m.tableData().setHiddenRows(hidden_rows);
            m.tableData().setHiddenColumns({1});
            const QByteArray before = saved(*view);
            // Model column 1 is raw column 2; a hole at model row 7.
            std::vector<std::vector<QString>> expected(size_t(m.tableData().numModelRows()));
            for (int r = 0; r < m.tableData().numModelRows(); ++r)
                for (int c = 0; c < 2; ++c) {
                    const QString text = m.cellText(r, c);
                    const QString out = f(text);
                    expected[size_t(r)].push_back(
                        (r == 7 && c == 1) || (empty_keeps && out.isEmpty()) ? text : out);
                }
            Range col = column(1);
            col.excluded_rows = {7};
            m.setMainAndSelection(Range(0, 0, Range::Model), {column(0), col});
            view->transformSelectedCells(f, empty_keeps);
            QCOMPARE(view->undoStack()->count(), 1);
            for (int r = 0; r < m.tableData().numModelRows(); ++r)
                for (int c = 0; c < 2; ++c)
                    QCOMPARE(m.cellText(r, c), expected[size_t(r)][size_t(c)]);
            m.tableData().setHiddenRows({});
            m.tableData().setHiddenColumns({});
            results[pass] = saved(*view);
            m.tableData().setHiddenRows(hidden_rows);
            m.tableData().setHiddenColumns({1});
            view->commandUndo();
            QCOMPARE(saved(*view), before);
        }
        const QList<QByteArray> bulk = results[1].split('\n'), per_cell = results[0].split('\n');
        QCOMPARE(bulk.size(), per_cell.size());
        for (qsizetype i = 0; i < bulk.size(); ++i)
            QCOMPARE(bulk[i], per_cell[i]);
    }
};

QTEST_MAIN(TestTransforms)
#include "tst_transforms.moc"
