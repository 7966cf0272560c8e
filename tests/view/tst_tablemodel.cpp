#include "view/tablemodel.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include <random>
#include <set>

// A table model as the grid sees it: sizes, labels, colours and the
// selection rules, on small files written to a temporary folder.
class TestTableModel : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    QString writeFile(const QByteArray& bytes) {
        static int n = 0;
        const QString path = dir.filePath(QStringLiteral("t%1.csv").arg(++n));
        QFile f(path);
        if (f.open(QIODevice::WriteOnly)) f.write(bytes);
        return path;
    }
    // A grid of r rows and c columns whose cells read "r.c".
    QByteArray grid(int rows, int cols) {
        QByteArray out;
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < cols; ++c)
                out += (c ? "," : "") + QByteArray::number(r) + "." + QByteArray::number(c);
            out += "\n";
        }
        return out;
    }
    void load(TableModel& m, const QByteArray& bytes) { m.load(writeFile(bytes), false); }

    static QString selectedCells(const TableModel& m, int rows, int cols) {
        QStringList out;
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < cols; ++c)
                if (m.isCellSelected(r, c)) out << QStringLiteral("%1,%2").arg(r).arg(c);
        return out.join(' ');
    }

    // Runs a selection script: words of one letter and a position or a key.
    //   cRC click, kRC ctrl-click, aRC alt-click, gRC-RC drag from/to,
    //   D U L R shift+arrow, bD bU block extension, mD mU mL mR move,
    //   colC whole column, rowR whole row.
    static void run(TableModel& m, const QString& script) {
        for (const QString& w : script.split(' ', Qt::SkipEmptyParts)) {
            auto cell = [&](const QString& s) {
                const QStringList p = s.split(',');
                return Range(p[0].toInt(), p[1].toInt(), Range::Model);
            };
            bool popped = false;
            const bool at_top = m.mainCell().row == 0, at_left = m.mainCell().col == 0;
            if (w.startsWith("col")) {
                m.setMainAndSelection(m.mainCell(),
                                      {Range::line(w.mid(3).toInt(), Range::Column, Range::Model)});
            } else if (w.startsWith("row")) {
                m.setMainAndSelection(m.mainCell(),
                                      {Range::line(w.mid(3).toInt(), Range::Row, Range::Model)});
            } else if (w[0] == 'c') {
                const Range c = cell(w.mid(1));
                m.selectSingleCell(c);
                m.setPendingCorner(c, true);
                m.commitPendingRectangle(false);
            } else if (w[0] == 'k') {
                Range c = cell(w.mid(1));
                m.setMainAndSelection(c, m.selectionRanges());
                c.is_main = true;
                m.setPendingCorner(c, true);
                m.commitPendingRectangle(true);
            } else if (w[0] == 'g') {
                const QStringList ends = w.mid(1).split('-');
                const Range a = cell(ends[0]);
                m.selectSingleCell(a);
                m.setPendingCorner(a, true);
                m.setPendingCorner(cell(ends[1]), false);
                m.commitPendingRectangle(false);
            } else if (w[0] == 'a') {
                const Range c = cell(w.mid(1));
                m.deselectCell(c.row, c.col);
            } else if (w == "D" || w == "U") {
                m.expandVertical(w == "U" ? 0 : 1, at_top, false, &popped);
            } else if (w == "L" || w == "R") {
                m.expandHorizontal(w == "L" ? 2 : 3, at_left, false, &popped);
            } else if (w == "bD" || w == "bU") {
                m.expandVertical(w == "bU" ? 0 : 1, at_top, true, &popped);
            } else if (w[0] == 'm') {
                const QChar k = w[1];
                m.moveSelection(k == 'D' ? 1 : k == 'U' ? -1 : 0, k == 'R' ? 1 : k == 'L' ? -1 : 0);
            }
        }
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void sizeFollowsDataAndSelection() {
        TableModel m;
        load(m, ""); // an empty file shows the minimum size
        QCOMPARE(m.rowCount(), 50);
        QCOMPARE(m.columnCount(), 50);
        m.setMinRows(1);
        m.setMinCols(1);
        load(m, grid(100, 3));
        QCOMPARE(m.rowCount(), 102); // two buffer rows
        QCOMPARE(m.columnCount(), 5);
        m.setMainAndSelection(Range(200, 0, Range::Model),
                              {Range::line(200, Range::Row, Range::Model)});
        m.enforceTableSize();
        QCOMPARE(m.rowCount(), 203);

        // The right size sends nothing.
        QSignalSpy layout(&m, &QAbstractItemModel::layoutChanged);
        m.enforceTableSize();
        QCOMPARE(layout.count(), 0);

        TableModel ro(true);
        load(ro, grid(4, 10));
        ro.setSelection({Range(30, 30, Range::Model)}, true);
        ro.enforceTableSize();
        QCOMPARE(ro.rowCount(), 4);
        QCOMPARE(ro.columnCount(), 10);
    }

    void labels() {
        TableModel m;
        load(m, grid(6, 30));
        QCOMPARE(m.headerData(0, Qt::Vertical).toString(), QStringLiteral("0"));
        m.setFirstRowIndex(5);
        QCOMPARE(m.headerData(0, Qt::Vertical).toString(), QStringLiteral("5"));
        m.setFirstColIndex(1);
        QCOMPARE(m.headerData(2, Qt::Horizontal).toString(), QStringLiteral("3"));
        m.setColumnsAsLetters(true); // letters ignore the first column index
        QCOMPARE(m.headerData(0, Qt::Horizontal).toString(), QStringLiteral("A"));
        QCOMPARE(m.headerData(26, Qt::Horizontal).toString(), QStringLiteral("AA"));
        m.tableData().setHiddenRows({3});
        m.setFirstRowIndex(0);
        QCOMPARE(m.headerData(3, Qt::Vertical).toString(), QStringLiteral("4")); // a gap
        m.setRowSort({1, 3, 4});
        QCOMPARE(m.headerData(3, Qt::Vertical).toString(), QStringLiteral("4 \u2BC6"));
        QCOMPARE(m.rowLabel(-1), TableModel::kMissingLabel);
        QCOMPARE(m.setHeaderData(0, Qt::Vertical, m.headerData(0, Qt::Vertical)), false);
        QVERIFY(m.setHeaderData(0, Qt::Vertical, QStringLiteral("x")));
    }

    void background_data() {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("col");
        QTest::addColumn<int>("role");
        // shading: s = rows and columns shaded; h = highlight main row;
        // f = a find match at raw (1, 1) and (0, 2), shown
        QTest::newRow("plain") << "" << 3 << 3 << int(Theme::CellColor);
        QTest::newRow("header row") << "" << 0 << 3 << int(Theme::HeaderCellColor);
        QTest::newRow("odd row even col") << "s" << 3 << 2 << int(Theme::CellShade1Color);
        QTest::newRow("odd row odd col") << "s" << 3 << 3 << int(Theme::CellShade2Color);
        QTest::newRow("odd header col") << "s" << 0 << 3 << int(Theme::HeaderCellShade1Color);
        QTest::newRow("main cell") << "s" << 2 << 2 << int(Theme::MainCellColor);
        QTest::newRow("selected") << "k" << 4 << 4 << int(Theme::SelectedCellColor);
        QTest::newRow("find match") << "f" << 1 << 1 << int(Theme::HighlightedCellColor);
        QTest::newRow("match in header keeps its colour")
            << "f" << 0 << 2 << int(Theme::HighlightedCellColor);
        QTest::newRow("shaded match") << "fs" << 1 << 1 << int(Theme::HighlightedCellShade2Color);
    }
    void background() {
        QFETCH(QString, setup);
        QFETCH(int, row);
        QFETCH(int, col);
        QFETCH(int, role);
        TableModel m;
        load(m, grid(8, 8));
        m.selectSingleCell(Range(2, 2, Range::Model));
        m.setShadeRows(setup.contains('s'));
        m.setShadeCols(setup.contains('s'));
        if (setup.contains('k')) m.addRange(Range(4, 4, Range::Model));
        if (setup.contains('f')) {
            RangeVector found;
            found.emplace_back(1, 1, Range::Raw);
            found.emplace_back(0, 2, Range::Raw);
            m.setFindMatches(found);
        }
        const QColor got = m.data(m.index(row, col), Qt::BackgroundRole).value<QColor>();
        QCOMPARE(got, m.currentTheme().color(Theme::Role(role)));
    }

    void mainLineTint() {
        TableModel m;
        load(m, grid(8, 8));
        m.setHighlightMainRow(true);
        m.selectSingleCell(Range(3, 3, Range::Model));
        const Theme& t = m.currentTheme();
        const QColor tinted = m.data(m.index(3, 6), Qt::BackgroundRole).value<QColor>();
        const QColor base = t.color(Theme::CellColor),
                     line = t.color(Theme::MainCellTranslucentColor);
        const float f = t.line_blend_factor;
        QCOMPARE(tinted, QColor(int((1 - f) * base.red() + f * line.red()),
                                int((1 - f) * base.green() + f * line.green()),
                                int((1 - f) * base.blue() + f * line.blue())));
        m.addRange(Range(6, 6, Range::Model)); // a second member removes all tint at once
        QCOMPARE(m.data(m.index(3, 6), Qt::BackgroundRole).value<QColor>(), base);
    }

    void selection_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("selected");
        QTest::addColumn<QString>("main");
        QTest::newRow("click") << "c2,2"
                               << "2,2"
                               << "2,2";
        QTest::newRow("ctrl-click adds, main moves") << "c1,1 k3,3"
                                                     << "1,1 3,3"
                                                     << "3,3";
        QTest::newRow("both cursors grow down") << "c1,1 k3,3 D"
                                                << "1,1 2,1 3,3 4,3"
                                                << "3,3";
        QTest::newRow("and shrink back") << "c1,1 k3,3 D U"
                                         << "1,1 3,3"
                                         << "3,3";
        // Up after the axis change grows the baked block; it does not undo Down.
        QTest::newRow("axis change bakes in") << "c1,1 D R U"
                                              << "0,1 0,2 1,1 1,2 2,1 2,2"
                                              << "1,1";
        QTest::newRow("reversing pops one step") << "c1,1 D D U"
                                                 << "1,1 2,1"
                                                 << "1,1";
        QTest::newRow("up at row 0 does nothing") << "c0,1 U"
                                                  << "0,1"
                                                  << "0,1";
        QTest::newRow("drag commits the rectangle") << "g1,1-2,3"
                                                    << "1,1 1,2 1,3 2,1 2,2 2,3"
                                                    << "1,1";
        QTest::newRow("alt cuts a hole in a column") << "c1,2 col2 a4,2"
                                                     << "0,2 1,2 2,2 3,2 5,2"
                                                     << "1,2";
        QTest::newRow("ctrl-click fills the hole") << "c1,2 col2 a4,2 k4,2"
                                                   << "0,2 1,2 2,2 3,2 4,2 5,2"
                                                   << "4,2";
        QTest::newRow("alt on the main cell does nothing") << "c1,1 k2,2 a2,2"
                                                           << "1,1 2,2"
                                                           << "2,2";
        QTest::newRow("move moves every cursor") << "c1,1 k3,2 mD"
                                                 << "2,1 4,2"
                                                 << "4,2";
        QTest::newRow("move clamps at the edge") << "c0,0 k2,2 mU"
                                                 << "1,2"
                                                 << "1,2";
        QTest::newRow("cell inside a row collapses") << "c1,1 row1 k1,4"
                                                     << "1,0 1,1 1,2 1,3 1,4 1,5"
                                                     << "1,4";
        QTest::newRow("block extension to the end of data") << "c2,0 bD"
                                                            << "2,0 3,0 4,0 5,0"
                                                            << "2,0";
    }
    void selection() {
        QFETCH(QString, script);
        QFETCH(QString, selected);
        QFETCH(QString, main);
        TableModel m;
        load(m, grid(6, 6));
        run(m, script);
        QCOMPARE(selectedCells(m, 6, 6), selected);
        QCOMPARE(QStringLiteral("%1,%2").arg(m.mainCell().row).arg(m.mainCell().col), main);
        // Invariants: exactly one member carries the main cell.
        int marked = 0;
        for (const Range& r : m.selectionRanges())
            marked += r.is_main;
        QCOMPARE(marked, 1);
    }

    // A threaded load of many rows: the grid's rows arrive during the load
    // and in steps after it, and end exactly at the data plus its buffer.
    void rowsOfAThreadedLoadArriveInSteps() {
        QByteArray bytes;
        const int rows = TableModel::kRowGrowthStep * 2 + 1000;
        bytes.reserve(rows * 4);
        for (int r = 0; r < rows; ++r)
            bytes += QByteArray::number(r % 100) + '\n';
        TableModel m;
        QSignalSpy finished(&m, &TableModel::loadFinishedSignal);
        m.load(writeFile(bytes), true);
        QVERIFY(finished.wait(20000));
        QVERIFY(m.rowCount() < rows); // the rest follows on the next turns
        QTRY_COMPARE(m.rowCount(), rows + m.bufferRows());
        QCOMPARE(m.data(m.index(rows - 1, 0)).toString(), QString::number((rows - 1) % 100));
    }

    void wholeColumnOfMillionsIsOneRange() {
        TableModel m;
        m.setMinRows(5'000'000);
        m.selectSingleCell(Range(0, 0, Range::Model));
        m.setMainAndSelection(Range(0, 3, Range::Model),
                              {Range::line(3, Range::Column, Range::Model)});
        QCOMPARE(m.selectionRanges().size(), size_t(1));
        QCOMPARE(m.numSelectedCells(), qint64(5'000'000));
        QVERIFY(m.isCellSelected(4'999'999, 3));
        // Extending a cell over millions of rows stays a single segment too.
        m.selectSingleCell(Range(0, 1, Range::Model));
        for (int i = 0; i < 3; ++i)
            m.expandVertical(1, false, true, nullptr);
        QVERIFY(m.selectionRanges().size() <= 2);
    }

    void blockRule_data() {
        QTest::addColumn<QByteArray>("column"); // one character a row: x filled, . empty
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("direction");
        QTest::addColumn<int>("to");
        QTest::newRow("filled then gap: first filled below") << QByteArray("xx..x.") << 1 << 1 << 4;
        QTest::newRow("run of data: its last cell") << QByteArray("xxxx..") << 0 << 1 << 3;
        QTest::newRow("nothing below: last raw row") << QByteArray("x.....") << 0 << 1 << 5;
        QTest::newRow("last raw row: no move") << QByteArray("xxxxxx") << 5 << 1 << 5;
        QTest::newRow("gap onto data: one step") << QByteArray(".x....") << 0 << 1 << 1;
        QTest::newRow("blank run: first filled") << QByteArray("....xx") << 0 << 1 << 4;
        QTest::newRow("up from row 1 with row 0 filled") << QByteArray("xx....") << 1 << 0 << 0;
        QTest::newRow("up over a gap") << QByteArray("x...x.") << 4 << 0 << 0;
        QTest::newRow("up through blanks") << QByteArray("....x.") << 3 << 0 << 0;
    }
    void blockRule() {
        QFETCH(QByteArray, column);
        QFETCH(int, from);
        QFETCH(int, direction);
        QFETCH(int, to);
        QByteArray file;
        for (char ch : column)
            file += (ch == 'x' ? "v," : ",") + QByteArray("z\n"); // a second column keeps rows
        TableModel m;
        load(m, file);
        QCOMPARE(m.tableData().blockTarget(from, 0, direction), to);
        // The transposed table answers the same along the other axis.
        m.tableData().setTransposed(true);
        QCOMPARE(m.tableData().blockTarget(0, from, direction + 2), to);
    }

    // The block rule keeps what it learnt of a column between moves; edits,
    // inserted and removed rows must show in the next move at once.
    void blockRuleFollowsEdits() {
        TableModel m;
        QByteArray file;
        for (int r = 0; r < 300; ++r)
            file += (r < 100 || r >= 250 ? "v" : "") + QByteArray(",z\n");
        load(m, file);
        TableData& d = m.tableData();
        QCOMPARE(d.blockTarget(0, 0, 1), 99);
        QCOMPARE(d.blockTarget(99, 0, 1), 250);
        QCOMPARE(d.blockTarget(299, 0, 0), 250);
        QVERIFY(m.setDataSilent(180, 0, "x"));
        QCOMPARE(d.blockTarget(99, 0, 1), 180);
        QCOMPARE(d.blockTarget(250, 0, 0), 180);
        QVERIFY(m.setDataSilent(180, 0, ""));
        QCOMPARE(d.blockTarget(99, 0, 1), 250);
        QVERIFY(m.insertRows(0, 10)); // everything moves down by ten
        QCOMPARE(d.blockTarget(9, 0, 1), 10);
        QCOMPARE(d.blockTarget(10, 0, 1), 109);
        QCOMPARE(d.blockTarget(109, 0, 1), 260);
        QVERIFY(m.removeRows(0, 200));
        QCOMPARE(d.blockTarget(0, 0, 1), 60);
    }

    // Random columns against the rule written out plainly, cell by cell.
    void blockRuleMatchesThePlainWalk() {
        std::mt19937 rng(5);
        for (int round = 0; round < 20; ++round) {
            const int rows = 1 + int(rng() % 400);
            std::vector<bool> f(static_cast<size_t>(rows));
            QByteArray file;
            const int density = 1 + int(rng() % 9);
            for (int r = 0; r < rows; ++r) {
                f[size_t(r)] = int(rng() % 10) < density;
                file += (f[size_t(r)] ? "v" : "") + QByteArray(",z\n");
            }
            TableModel m;
            load(m, file);
            auto filled = [&](int r) { return r >= 0 && r < rows && f[size_t(r)]; };
            auto plain = [&](int pos, int dir) {
                const int step = dir == 0 ? -1 : 1, next = pos + step;
                if (next < 0 || next >= rows) return pos;
                const int limit = step > 0 ? rows - 1 : INT_MAX;
                auto in = [&](int p) { return p >= 0 && p <= limit; };
                if (filled(pos) != filled(next)) {
                    if (!filled(pos) || filled(next)) return next;
                    int p = pos + 2 * step;
                    while (in(p) && !filled(p))
                        p += step;
                    return step > 0 ? std::min(p, limit) : p;
                }
                for (int p = pos + 2 * step; in(p); p += step)
                    if (filled(p) != filled(pos))
                        return std::clamp(filled(p) ? p : p - step, 0, limit);
                return step > 0 ? limit : 0;
            };
            for (int q = 0; q < 40; ++q) {
                const int pos = int(rng() % unsigned(rows)), dir = int(rng() % 2);
                QCOMPARE(m.tableData().blockTarget(pos, 0, dir), plain(pos, dir));
            }
        }
    }

    // Raw writes reach hidden cells; row and column 0 are left to the wider
    // repaint that follows such writes.
    void rawWrites() {
        TableModel m;
        load(m, grid(5, 5));
        m.tableData().setHiddenRows({2});
        QSignalSpy changed(&m, &QAbstractItemModel::dataChanged);
        QVERIFY(m.setRawData(2, 3, "hidden"));
        QVERIFY(m.setRawData(0, 3, "top"));
        QCOMPARE(changed.count(), 0);
        QVERIFY(m.setRawData(3, 3, "shown"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.last().at(0).toModelIndex().row(), 2); // raw 3 is model 2
        QCOMPARE(m.tableData().rawData(2, 3).toString(), QStringLiteral("hidden"));
    }

    void settersReachTheData() {
        TableModel m;
        QSignalSpy delim(&m, &TableModel::setDelimiterSignal);
        QSignalSpy ending(&m, &TableModel::setLineEndingSignal);
        m.setDelimiter(";", "\t");
        m.setLineEnding(WindowsLineEnding);
        m.setParsingStandard(DelimiterOnly);
        m.setEncoding(Windows1252);
        const AbstractDataContainer* c = m.tableData().dataContainer();
        QCOMPARE(c->delimiterLoad(), ';');
        QCOMPARE(c->delimiterSave(), '\t');
        QCOMPARE(c->lineEnding(), WindowsLineEnding);
        QCOMPARE(c->parsingStandard(), DelimiterOnly);
        QCOMPARE(m.tableData().encodingType(), Windows1252);
        QCOMPARE(delim.count(), 1);
        QCOMPARE(ending.count(), 1);
        QVERIFY(!m.setReadOnly(false));
    }

    void statusStatsAndWorkerJobs() {
        TableModel m;
        load(m, "h,k\n1,a\n2,a\nx,b\n3,b\n");
        QSignalSpy stats(&m, &TableModel::updateStatsLabelSignal);
        m.setMainAndSelection(Range(1, 0, Range::Model),
                              {Range::line(0, Range::Column, Range::Model)});
        m.updateStatusBarStats();
        QCOMPARE(stats.last().at(0).toString(), QStringLiteral("Sum: 6      Mean: 2"));
        m.selectSingleCell(Range(0, 1, Range::Model));
        m.updateStatusBarStats();
        QCOMPARE(stats.last().at(0).toString(), QStringLiteral("Sum: -      Mean: -"));

        QCOMPARE(m.isColumnAllNumbers(0), 0);
        m.setData(m.index(3, 0), QStringLiteral("4"));
        QCOMPARE(m.isColumnAllNumbers(0), 1);
        std::vector<int> edges;
        QVERIFY(m.getEdgeIndexesOfSortedColumns({1}, true, edges));
        QCOMPARE(edges, (std::vector<int>{3, 5}));
    }

    void rowAndColumnSurgeryKeepsHiddenLines() {
        TableModel m;
        load(m, grid(6, 2));
        m.tableData().setHiddenRows({1, 4});
        QVERIFY(m.insertRows(1, 2)); // model row 1 is raw row 2
        QCOMPARE(m.tableData().hiddenRows(), (std::vector<int>{1, 6}));
        QCOMPARE(m.data(m.index(3, 0)).toString(), QStringLiteral("2.0"));
        QVERIFY(m.removeRows(0, 4)); // raw 0, 2, 3 and 5; raw 1 stays hidden
        QCOMPARE(m.tableData().hiddenRows(), (std::vector<int>{0, 2}));
        QCOMPARE(m.tableData().numRawRows(), 4);
        QCOMPARE(m.data(m.index(0, 0)).toString(), QStringLiteral("3.0"));
    }

    // Each built-in theme painted by a plain QTableView; pictures are left in
    // the build folder to be looked at.
    void themesOnAPlainView() {
        for (const QString& name : Theme().names().mid(0, 5)) {
            TableModel m;
            Theme theme;
            theme.apply(name);
            m.setTheme(theme);
            m.setShadeRows(true);
            load(m, "id,name,amount\n1,Ada,10.5\n2,Grace,7\n3,Linus,\n");
            m.setMainAndSelection(Range(1, 1, Range::Model),
                                  {Range(2, 2, Range::Model), Range(3, 0, Range::Model)});
            QTableView view;
            view.setModel(&m);
            view.resize(420, 260);
            view.show();
            const QImage image = view.grab().toImage();
            image.save(QDir(QCoreApplication::applicationDirPath())
                           .filePath("model-theme-" + name + ".png"));
            const QRect cell = view.visualRect(m.index(4, 1)); // plain row 4 is even
            const QPoint at =
                view.viewport()->mapTo(&view, cell.center() + QPoint(cell.width() / 3, 0));
            QCOMPARE(image.pixelColor(at), theme.color(Theme::CellColor));
            const QRect main = view.visualRect(m.index(1, 1));
            const QPoint main_at = view.viewport()->mapTo(&view, main.topLeft() + QPoint(3, 3));
            QCOMPARE(image.pixelColor(main_at), theme.color(Theme::MainCellColor));
        }
    }
};

QTEST_MAIN(TestTableModel)
#include "tst_tablemodel.moc"
