#include "view/headerview.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>

// The grid driven by real key, mouse and wheel events, as a user drives it.
class TestTableView : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    QString writeFile(const QByteArray& bytes) {
        static int n = 0;
        const QString path = dir.filePath(QStringLiteral("v%1.csv").arg(++n));
        QFile f(path);
        if (f.open(QIODevice::WriteOnly)) f.write(bytes);
        return path;
    }
    // Rows of "r.c" cells; in column 1, rows listed in `gaps` are empty.
    QByteArray grid(int rows, int cols, const QList<int>& gaps = {}) {
        QByteArray out;
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < cols; ++c) {
                if (c) out += ',';
                if (!(c == 1 && gaps.contains(r)))
                    out += QByteArray::number(r) + "." + QByteArray::number(c);
            }
            out += '\n';
        }
        return out;
    }
    std::unique_ptr<TableView> makeView(const QByteArray& bytes, QSize size = {500, 300}) {
        auto view = std::make_unique<TableView>();
        view->model()->load(writeFile(bytes), false);
        view->resize(size);
        view->show();
        if (!QTest::qWaitForWindowExposed(view.get())) return nullptr;
        view->model()->selectSingleCell(Range(0, 0, Range::Model));
        return view;
    }
    static QString cells(const TableModel& m, int rows, int cols) {
        QStringList out;
        for (int r = 0; r < rows; ++r)
            for (int c = 0; c < cols; ++c)
                if (m.isCellSelected(r, c)) out << QStringLiteral("%1,%2").arg(r).arg(c);
        return out.join(' ');
    }
    static QString mainOf(const TableModel& m) {
        return QStringLiteral("%1,%2").arg(m.mainCell().row).arg(m.mainCell().col);
    }
    QPoint centre(TableView& v, int row, int col) {
        return v.visualRect(v.model()->index(row, col)).center();
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void keys_data() {
        QTest::addColumn<QString>("start");  // main cell "r,c"
        QTest::addColumn<QString>("keys");   // space-separated key names
        QTest::addColumn<QString>("main");   // expected main cell
        QTest::addColumn<QString>("select"); // expected cells in rows 0-11, cols 0-3
        QTest::newRow("tab tab enter") << "3,1"
                                       << "Tab Tab Enter"
                                       << "4,1"
                                       << "4,1";
        QTest::newRow("enter alone") << "3,2"
                                     << "Enter"
                                     << "4,2"
                                     << "4,2";
        QTest::newRow("backtab") << "3,2"
                                 << "Backtab"
                                 << "3,1"
                                 << "3,1";
        QTest::newRow("arrows") << "3,1"
                                << "Down Down Right Up"
                                << "4,2"
                                << "4,2";
        QTest::newRow("up at the top stays") << "0,1"
                                             << "Up"
                                             << "0,1"
                                             << "0,1";
        QTest::newRow("shift extends") << "3,1"
                                       << "S-Down S-Down S-Right"
                                       << "3,1"
                                       << "3,1 3,2 4,1 4,2 5,1 5,2";
        QTest::newRow("ctrl down stops before a gap") << "0,1"
                                                      << "C-Down"
                                                      << "3,1"
                                                      << "3,1";
        QTest::newRow("ctrl down jumps the gap") << "3,1"
                                                 << "C-Down"
                                                 << "6,1"
                                                 << "6,1";
        QTest::newRow("ctrl down to the last row") << "6,1"
                                                   << "C-Down"
                                                   << "11,1"
                                                   << "11,1";
        QTest::newRow("ctrl shift down selects the run") << "0,1"
                                                         << "CS-Down"
                                                         << "0,1"
                                                         << "0,1 1,1 2,1 3,1";
        QTest::newRow("ctrl end and home") << "5,2"
                                           << "C-End"
                                           << "11,2"
                                           << "11,2";
        QTest::newRow("go to top") << "5,2"
                                   << "C-Home"
                                   << "0,2"
                                   << "0,2";
        QTest::newRow("select to bottom") << "9,0"
                                          << "CS-End"
                                          << "9,0"
                                          << "9,0 10,0 11,0";
        QTest::newRow("whole table") << "2,2"
                                     << "C-A"
                                     << "2,2" << [] {
                                            QStringList all;
                                            for (int r = 0; r < 12; ++r)
                                                for (int c = 0; c < 4; ++c)
                                                    all << QStringLiteral("%1,%2").arg(r).arg(c);
                                            return all.join(' ');
                                        }();
        QTest::newRow("move every cursor") << "1,1"
                                           << "A-K"
                                           << "2,1"
                                           << "2,1";
    }
    void keys() {
        QFETCH(QString, start);
        QFETCH(QString, keys);
        QFETCH(QString, main);
        QFETCH(QString, select);
        auto view = makeView(grid(12, 4, {4, 5}));
        QVERIFY(view);
        const QStringList rc = start.split(',');
        view->model()->selectSingleCell(Range(rc[0].toInt(), rc[1].toInt(), Range::Model));
        for (const QString& k : keys.split(' ')) {
            Qt::KeyboardModifiers mods;
            QString name = k;
            if (k.contains('-')) {
                const QString m = k.section('-', 0, 0);
                name = k.section('-', 1);
                if (m.contains('C')) mods |= Qt::ControlModifier;
                if (m.contains('S')) mods |= Qt::ShiftModifier;
                if (m.contains('A')) mods |= Qt::AltModifier;
            }
            const QKeySequence seq = QKeySequence::fromString(name);
            const int key = name == "Backtab" ? int(Qt::Key_Backtab) : int(seq[0].key());
            QTest::keyClick(view.get(), Qt::Key(key), mods);
        }
        QCOMPARE(mainOf(*view->model()), main);
        QCOMPARE(cells(*view->model(), 12, 4), select);
    }

    // Selecting to an edge adds, for each member, the cells up to the first
    // data line after the headers, or down to the last data line.
    void selectToEdges() {
        auto v = makeView(grid(6, 4));
        TableModel& m = *v->model();
        m.setNumHeaderRows(1);
        m.selectSingleCell(Range(3, 1, Range::Model));
        v->selectToEdge(Up);
        QCOMPARE(cells(m, 6, 4), QStringLiteral("1,1 2,1 3,1"));
        m.selectSingleCell(Range(3, 1, Range::Model));
        v->selectToEdge(Down);
        QCOMPARE(cells(m, 6, 4), QStringLiteral("3,1 4,1 5,1"));
        m.selectSingleCell(Range(2, 2, Range::Model));
        v->selectToEdge(Right);
        QCOMPARE(cells(m, 6, 4), QStringLiteral("2,2 2,3"));
        QCOMPARE(mainOf(m), QStringLiteral("2,2"));
    }

    void enterOnTheLastRowGrowsTheTable() {
        auto view = makeView(grid(3, 2));
        QVERIFY(view);
        view->model()->setMinRows(1);
        QCOMPARE(view->model()->rowCount(), 5); // 3 data rows and 2 buffer rows
        view->model()->selectSingleCell(Range(2, 0, Range::Model));
        // Each Enter keeps the buffer below the main cell.
        for (int i = 1; i <= 4; ++i) {
            QTest::keyClick(view.get(), Qt::Key_Return);
            QCOMPARE(view->model()->mainCell().row, 2 + i);
            QCOMPARE(view->model()->rowCount(), 2 + i + 1 + 2);
        }
    }

    void pageDownKeepsTheMainCellInView() {
        auto view = makeView(grid(500, 3), {400, 300});
        QVERIFY(view);
        for (int i = 0; i < 5; ++i) {
            const int before = view->model()->mainCell().row;
            QTest::keyClick(view.get(), Qt::Key_PageDown);
            const int row = view->model()->mainCell().row;
            QVERIFY(row > before);
            const QRect cell = view->visualRect(view->model()->index(row, 0));
            QVERIFY(view->viewport()->rect().contains(cell));
        }
        QTest::keyClick(view.get(), Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(view->model()->mainCell().row, 499);
        QVERIFY(view->viewport()->rect().contains(view->visualRect(view->model()->index(499, 0))));
    }

    void mouse() {
        auto view = makeView(grid(12, 4));
        QVERIFY(view);
        TableModel& m = *view->model();
        QWidget* vp = view->viewport();
        QTest::mouseClick(vp, Qt::LeftButton, {}, centre(*view, 2, 1));
        QCOMPARE(cells(m, 12, 4), QStringLiteral("2,1"));
        QTest::mouseClick(vp, Qt::LeftButton, Qt::ControlModifier, centre(*view, 5, 3));
        QCOMPARE(cells(m, 12, 4), QStringLiteral("2,1 5,3"));
        QCOMPARE(mainOf(m), QStringLiteral("5,3"));
        QTest::mouseClick(vp, Qt::LeftButton, Qt::ShiftModifier, centre(*view, 6, 2));
        QCOMPARE(cells(m, 12, 4), QStringLiteral("5,2 5,3 6,2 6,3"));
        QTest::mouseClick(vp, Qt::LeftButton, Qt::AltModifier, centre(*view, 6, 2));
        QCOMPARE(cells(m, 12, 4), QStringLiteral("5,2 5,3 6,3"));

        // A drag paints its rectangle while held and commits it on release.
        QTest::mousePress(vp, Qt::LeftButton, {}, centre(*view, 1, 0));
        QMouseEvent move(QEvent::MouseMove, centre(*view, 3, 1),
                         vp->mapToGlobal(centre(*view, 3, 1)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(vp, &move);
        QVERIFY(m.hasPendingRectangle());
        QCOMPARE(m.data(m.index(3, 1), Qt::BackgroundRole).value<QColor>(),
                 m.currentTheme().color(Theme::SelectedCellColor));
        QTest::mouseRelease(vp, Qt::LeftButton, {}, centre(*view, 3, 1));
        QCOMPARE(cells(m, 12, 4), QStringLiteral("1,0 1,1 2,0 2,1 3,0 3,1"));
        QVERIFY(!m.hasPendingRectangle());
    }

    void dragBelowTheViewWalksOneRowPerEvent() {
        auto view = makeView(grid(200, 3), {400, 240});
        QVERIFY(view);
        QWidget* vp = view->viewport();
        QTest::mousePress(vp, Qt::LeftButton, {}, centre(*view, 2, 0));
        const QPoint below(20, vp->height() + 30);
        int last = -1;
        for (int i = 0; i < 5; ++i) {
            QMouseEvent move(QEvent::MouseMove, below, vp->mapToGlobal(below), Qt::NoButton,
                             Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(vp, &move);
            const int row = view->model()->pendingCornerEnd().row;
            if (last >= 0) QCOMPARE(row, last + 1);
            last = row;
        }
        QTest::mouseRelease(vp, Qt::LeftButton, {}, below);
    }

    void labelsSelectLines() {
        auto view = makeView(grid(12, 4));
        QVERIFY(view);
        TableModel& m = *view->model();
        HeaderView* top = view->horizontalLabels();
        const int y = top->height() / 2;
        auto labelX = [&](int col) {
            return top->sectionViewportPosition(col) + top->sectionSize(col) / 2;
        };
        QTest::mouseClick(top->viewport(), Qt::LeftButton, {}, QPoint(labelX(2), y));
        QVERIFY(m.isCellSelected(11, 2) && m.isCellSelected(0, 2) && !m.isCellSelected(0, 1));
        QCOMPARE(m.selectionRanges().size(), size_t(1));
        QTest::mouseClick(top->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          QPoint(labelX(0), y));
        QVERIFY(m.isCellSelected(7, 0) && m.isCellSelected(7, 2) && !m.isCellSelected(7, 1));
        // Within three pixels of an edge the press belongs to resizing.
        const int edge = top->sectionViewportPosition(1) + top->sectionSize(1) - 1;
        QTest::mouseClick(top->viewport(), Qt::LeftButton, {}, QPoint(edge, y));
        QVERIFY(!m.isCellSelected(5, 1));
        if (auto* corner = view->findChild<QAbstractButton*>()) {
            QTest::mouseClick(corner, Qt::LeftButton);
            QVERIFY(m.isCellSelected(11, 3) && m.isCellSelected(4, 1));
        }
    }

    void wheel() {
        auto view = makeView(grid(500, 60), {400, 300});
        QVERIFY(view);
        QScrollBar* v = view->verticalScrollBar();
        QScrollBar* h = view->horizontalScrollBar();
        auto spin = [&](QPoint delta, Qt::KeyboardModifiers mods) {
            QWheelEvent e(QPointF(50, 50), view->viewport()->mapToGlobal(QPointF(50, 50)), QPoint(),
                          delta, Qt::NoButton, mods, Qt::NoScrollPhase, false);
            QApplication::sendEvent(view->viewport(), &e);
        };
        spin({0, -120}, {});
        QVERIFY(v->value() > 0);
        QCOMPARE(v->value() % view->defaultRowHeight(), 0); // snapped to a row
        const int one_notch = v->value();
        spin({0, -120}, Qt::ControlModifier); // a screen at a time
        QVERIFY(v->value() - one_notch > view->viewport()->height() / 2);
        spin({0, -120}, Qt::ShiftModifier); // sideways
        QVERIFY(h->value() > 0);
    }

    void autoFitReadsASampleAndRespectsLimits() {
        QByteArray bytes = "a,b,c\n";
        for (int r = 0; r < 200000; ++r)
            bytes += "x," + QByteArray(r == 150000 ? 400 : 3, 'y') + ",\n";
        auto view = makeView(bytes);
        QVERIFY(view);
        view->setMaxColWidth(300);
        const qint64 before = view->model()->displayReads();
        view->enforceAutoFitColWidth(false);
        const qint64 reads = view->model()->displayReads() - before;
        const int precision = view->horizontalLabels()->resizeContentsPrecision();
        QVERIFY2(reads <= qint64(view->model()->columnCount()) * (100 + precision + 2),
                 qPrintable(QString::number(reads)));
        QCOMPARE(view->columnWidth(2), view->defaultColWidth()); // an empty column
        // A single long text far down the file is sampled only by chance; a
        // column of long texts hits the limit.
        QByteArray wide = "h\n";
        for (int r = 0; r < 300; ++r)
            wide += QByteArray(r == 120 ? 400 : 2, 'w') + "\n";
        auto second = makeView(wide);
        QVERIFY(second);
        second->setMaxColWidth(300);
        second->enforceAutoFitColWidth(false);
        QCOMPARE(second->columnWidth(0), 300);
    }

    // A picture of a selection of several members, left in the build folder.
    void screenshotOfAMultiMemberSelection() {
        auto view = makeView(grid(30, 8, {4, 5}), {700, 420});
        QVERIFY(view);
        TableModel& m = *view->model();
        m.setMainAndSelection(Range(2, 1, Range::Model),
                              {Range::line(5, Range::Column, Range::Model),
                               Range(7, 3, Range::Model), Range(9, 0, Range::Model)});
        m.addRange(Range(3, 3, Range::Model));
        m.deselectCell(6, 5);
        view->refreshView();
        const QImage image = view->grab().toImage();
        QVERIFY(image.save(
            QDir(QCoreApplication::applicationDirPath()).filePath("view-selection.png")));
        const QRect hole = view->visualRect(m.index(6, 5));
        const QPoint at = view->viewport()->mapTo(view.get(), hole.topLeft() + QPoint(2, 2));
        QVERIFY(image.pixelColor(at) != m.currentTheme().color(Theme::SelectedCellColor));
    }
};

QTEST_MAIN(TestTableView)
#include "tst_tableview.moc"
