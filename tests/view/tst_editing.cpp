#include "edit/commands/duplicatecellcontentscommand.h"
#include "edit/commands/movecellcontentscommand.h"
#include "edit/commands/pastecommand.h"
#include "edit/commands/setdelimitercommand.h"
#include "edit/commands/setencodingcommand.h"
#include "edit/commands/setlineendingcommand.h"
#include "edit/commands/setmodeldatacommand.h"
#include "edit/commands/setparsingstandardcommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QMimeData>
#include <QMouseEvent>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <memory>

// Typing, undo and the clipboard on a grid, through real keys where a
// user would press them.
class TestEditing : public QObject {
    Q_OBJECT

    QTemporaryDir dir;
    int files = 0;

    QString writeFile(const QByteArray& bytes) {
        const QString path = dir.filePath(QStringLiteral("e%1.csv").arg(++files));
        QFile f(path);
        if (f.open(QIODevice::WriteOnly)) f.write(bytes);
        return path;
    }
    static QByteArray readFile(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<unreadable>");
    }
    std::unique_ptr<TableView> makeView(const QByteArray& bytes, bool read_only = false) {
        auto view = std::make_unique<TableView>(read_only);
        view->model()->load(writeFile(bytes), false);
        view->resize(600, 400);
        view->show();
        if (!QTest::qWaitForWindowExposed(view.get())) return nullptr;
        view->model()->selectSingleCell(Range(0, 0, Range::Model));
        return view;
    }
    static Range mainColumn(int col) {
        Range r = Range::line(col, Range::Column, Range::Model);
        r.is_main = true;
        r.main_offset = 0;
        return r;
    }
    static QString cell(const TableView& v, int r, int c) {
        return v.model()->data(v.model()->index(r, c)).toString();
    }
    static QString saved(TableView& v, const QString& path) {
        return v.model()->tableData().saveAs(path, false, false)
                   ? QString::fromLatin1(readFile(path).toHex())
                   : QStringLiteral("<failed>");
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void typingWritesEverySelectedCellLive() {
        auto view = makeView("a,b,c\n1,2,3\n");
        QVERIFY(view);
        TableModel& m = *view->model();
        m.setMainAndSelection(
            Range(0, 0, Range::Model),
            {Range(0, 0, Range::Model), Range(1, 1, Range::Model), Range(1, 2, Range::Model)});
        const QStringList typed{"x", "xy", "xyz"};
        for (int i = 0; i < 3; ++i) {
            QTest::keyClick(view->focusWidget() ? view->focusWidget() : view.get(),
                            char(typed.back()[i].unicode()));
            for (auto [r, c] : {std::pair{0, 0}, {1, 1}, {1, 2}})
                QCOMPARE(cell(*view, r, c), typed[i]);
        }
        QVERIFY(view->isEditing());
        QTest::keyClick(view->focusWidget(), Qt::Key_Return);
        QVERIFY(!view->isEditing());
        QCOMPARE(view->undoStack()->count(), 1);
        QCOMPARE(m.mainCell().row, 1); // Enter went down

        view->commandUndo();
        QCOMPARE(cell(*view, 0, 0), QStringLiteral("a"));
        QCOMPARE(cell(*view, 1, 1), QStringLiteral("2"));
        QCOMPARE(cell(*view, 1, 2), QStringLiteral("3"));
        view->commandRedo();
        QCOMPARE(cell(*view, 1, 2), QStringLiteral("xyz"));
    }

    void editorKeys() {
        auto view = makeView("a,b\n1,2\n");
        QVERIFY(view);
        // Escape keeps what was typed; an unchanged edit leaves no step.
        QTest::keyClick(view.get(), Qt::Key_F2);
        QVERIFY(view->isEditing());
        QTest::keyClick(view->focusWidget(), Qt::Key_Escape);
        QVERIFY(!view->isEditing());
        QCOMPARE(view->undoStack()->count(), 0);
        // F2 keeps the text with the cursor at its end; Ctrl+Return stays.
        QTest::keyClick(view.get(), Qt::Key_F2);
        QTest::keyClick(view->focusWidget(), 'z');
        QTest::keyClick(view->focusWidget(), Qt::Key_Return, Qt::ControlModifier);
        QVERIFY(view->isEditing());
        QTest::keyClick(view->focusWidget(), Qt::Key_Escape);
        QCOMPARE(cell(*view, 0, 0), QStringLiteral("az"));
        // Tab, Tab, Enter: under the cell where the run began.
        view->model()->selectSingleCell(Range(0, 0, Range::Model));
        QTest::keyClick(view.get(), 'q');
        QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(view.get(), 'r');
        QTest::keyClick(view->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(view.get(), Qt::Key_Enter, Qt::KeypadModifier);
        QCOMPARE(view->model()->mainCell().row, 1);
        QCOMPARE(view->model()->mainCell().col, 0);
        QCOMPARE(cell(*view, 0, 1), QStringLiteral("r"));
        QCOMPARE(view->undoStack()->count(), 3);
    }

    void typingPastTheDataGrowsAndUndoShrinks() {
        auto view = makeView("a,b\n1,2\n");
        QVERIFY(view);
        TableData& data = view->model()->tableData();
        view->model()->selectSingleCell(Range(5, 3, Range::Model));
        QTest::keyClick(view.get(), 'n');
        QTest::keyClick(view->focusWidget(), Qt::Key_Escape);
        QCOMPARE(data.numRawRows(), 6);
        QCOMPARE(data.numRawColumns(), 4);
        view->commandUndo();
        QCOMPARE(data.numRawRows(), 2);
        QCOMPARE(data.numRawColumns(), 2);
    }

    // Block moves read kept bits of each column's fill; a typed column and
    // its undo must leave them true to the cells.
    void blockMovesSeeEditsAndUndo() {
        auto view = makeView("a,1\n,2\n,3\n,4\nb,5\n,6\n");
        QVERIFY(view);
        TableModel& m = *view->model();
        QCOMPARE(m.blockTarget(0, 0, Down).first, 4); // builds the bits
        m.setSelection({mainColumn(0)}, true);
        QTest::keyClick(view.get(), 'x');
        QTest::keyClick(view->focusWidget(), Qt::Key_Escape);
        QCOMPARE(m.blockTarget(0, 0, Down).first, 5);
        view->commandUndo();
        QCOMPARE(m.blockTarget(0, 0, Down).first, 4);
        QCOMPARE(m.blockTarget(4, 0, Down).first, 5);
    }

    // The middle button drags the start cell's text down a column, live,
    // and the release makes one undo step; "+" steps a number as it goes.
    void middleButtonFill_data() {
        QTest::addColumn<QString>("key"); // pressed while dragging, or empty
        QTest::addColumn<QString>("cells");
        QTest::newRow("copies") << ""
                                << "7 7 7";
        QTest::newRow("steps up") << "+"
                                  << "8 9 10";
        QTest::newRow("steps by 2") << "2"
                                    << "9 11 13";
    }
    void middleButtonFill() {
        QFETCH(QString, key);
        QFETCH(QString, cells);
        auto view = makeView("7,a\n,b\n,c\n,d\n");
        QVERIFY(view);
        QWidget* port = view->viewport();
        auto at = [&](int r) { return view->visualRect(view->model()->index(r, 0)).center(); };
        QTest::mousePress(port, Qt::MiddleButton, Qt::NoModifier, at(0));
        QMouseEvent move(QEvent::MouseMove, QPointF(at(3)), port->mapToGlobal(QPointF(at(3))),
                         Qt::NoButton, Qt::MiddleButton, Qt::NoModifier);
        QApplication::sendEvent(port, &move);
        if (!key.isEmpty()) QTest::keyClick(view.get(), key[0].toLatin1());
        QStringList live;
        for (int r = 1; r <= 3; ++r)
            live << cell(*view, r, 0);
        QCOMPARE(live.join(' '), cells);
        QTest::mouseRelease(port, Qt::MiddleButton, Qt::NoModifier, at(3));
        QCOMPARE(view->undoStack()->count(), 1);
        view->commandUndo();
        QCOMPARE(cell(*view, 2, 0), QString());
        view->commandRedo();
        QCOMPARE(cell(*view, 3, 0), cells.split(' ').last());
    }

    // "Save After Each Edit": every redo and every undo writes the file.
    void saveAfterEachEdit() {
        auto view = makeView("a,b\n");
        QVERIFY(view);
        const QString path = view->model()->tableData().filepath();
        view->model()->setSaveAfterEachEdit(true);
        QTest::keyClick(view.get(), 'z');
        QTest::keyClick(view->focusWidget(), Qt::Key_Escape);
        QCOMPARE(readFile(path), QByteArray("z,b\n"));
        view->commandUndo();
        QCOMPARE(readFile(path), QByteArray("a,b\n"));
        view->commandRedo();
        QCOMPARE(readFile(path), QByteArray("z,b\n"));
    }

    void readOnlyOpensNoEditor() {
        auto view = makeView("a,b\n", true);
        QVERIFY(view);
        QTest::keyClick(view.get(), 'x');
        QTest::keyClick(view.get(), Qt::Key_F2);
        QVERIFY(!view->isEditing());
        QCOMPARE(cell(*view, 0, 0), QStringLiteral("a"));
    }

    void copyFormats_data() {
        QTest::addColumn<QList<QPoint>>("cells"); // (col, row) of selected cells
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("csv"); // empty: no text/csv
        QTest::newRow("one cell") << QList<QPoint>{{0, 1}} << "1"
                                  << "";
        QTest::newRow("gap in a row") << QList<QPoint>{{0, 1}, {2, 1}} << "1\t\t3"
                                      << "1,,3\r\n";
        QTest::newRow("A and C3") << QList<QPoint>{{0, 0}, {2, 2}} << "a\t\t\r\n\t\t\r\n\t\tq\"t"
                                  << "a,,\r\n,,\r\n,,\"q\"\"t\"\r\n";
    }
    void copyFormats() {
        QFETCH(QList<QPoint>, cells);
        QFETCH(QString, plain);
        QFETCH(QString, csv);
        auto view = makeView("a,b,c\n1,2,3\nx,y,\"q\"\"t\"\n");
        QVERIFY(view);
        RangeVector sel;
        for (QPoint p : cells)
            sel.push_back(Range(p.y(), p.x(), Range::Model));
        view->model()->setMainAndSelection(sel.front(), sel);
        std::unique_ptr<QMimeData> mime(view->model()->makeMimeData(false));
        QCOMPARE(mime->text(), plain);
        QCOMPARE(QString::fromUtf8(mime->data(QStringLiteral("text/csv"))), csv);
        QCOMPARE(mime->hasHtml(), !csv.isEmpty());
    }

    void wholeColumnCopiesToTheDataEnd() {
        auto view = makeView("h\n1\n2\n3\n4\n");
        QVERIFY(view);
        view->model()->setSelection({mainColumn(0)}, true);
        std::unique_ptr<QMimeData> mime(view->model()->makeMimeData(false));
        QCOMPARE(mime->text(), QStringLiteral("h\r\n1\r\n2\r\n3\r\n4"));
    }

    void pasteThroughTheClipboard() {
        auto view = makeView("a,b\n1,2\n");
        QVERIFY(view);
        TableData& data = view->model()->tableData();
        // A block on the last row grows the table; undo takes it back.
        view->model()->selectSingleCell(Range(1, 0, Range::Model));
        QApplication::clipboard()->setText(QStringLiteral("p\tq\r\nr\ts\r\n"));
        QTest::keyClick(view.get(), Qt::Key_V, Qt::ControlModifier);
        QCOMPARE(cell(*view, 2, 1), QStringLiteral("s"));
        QCOMPARE(data.numRawRows(), 3);
        view->commandUndo();
        QCOMPARE(data.numRawRows(), 2);
        QCOMPARE(cell(*view, 1, 0), QStringLiteral("1"));
        // One value fills a whole column to the data's end.
        view->model()->setSelection({mainColumn(1)}, true);
        QApplication::clipboard()->setText(QStringLiteral("v"));
        view->pasteCells();
        QCOMPARE(cell(*view, 0, 1), QStringLiteral("v"));
        QCOMPARE(cell(*view, 1, 1), QStringLiteral("v"));
        QCOMPARE(data.numRawRows(), 2);
        // Nothing to paste, nothing pushed.
        const int steps = view->undoStack()->count();
        QApplication::clipboard()->clear();
        view->pasteCells();
        QCOMPARE(view->undoStack()->count(), steps);
    }

    void moveAndDuplicate() {
        auto view = makeView("1,a\n2,b\n3,c\n");
        QVERIFY(view);
        TableModel& m = *view->model();
        // Moving the top row up is no command at all.
        m.selectSingleCell(Range(0, 0, Range::Model));
        view->moveCellContents(-1, 0);
        QCOMPARE(view->undoStack()->count(), 0);
        // A block moved up one exchanges with the row above.
        Range block = Range::wholeTable(Range::Model);
        block.row = 1, block.row_end = 2, block.col = 0, block.col_end = 0;
        block.is_main = true, block.main_offset_row = 1, block.main_offset_col = 0;
        m.setSelection({block}, true);
        view->moveCellContents(-1, 0);
        QCOMPARE(cell(*view, 0, 0) + cell(*view, 1, 0) + cell(*view, 2, 0), QStringLiteral("231"));
        QCOMPARE(m.mainCell().row, 0);
        view->commandUndo();
        QCOMPARE(cell(*view, 0, 0) + cell(*view, 1, 0) + cell(*view, 2, 0), QStringLiteral("123"));
        // Duplicate down copies the block below it and selects both.
        m.selectSingleCell(Range(2, 1, Range::Model));
        view->duplicateCellContents(Down);
        QCOMPARE(cell(*view, 3, 1), QStringLiteral("c"));
        QVERIFY(m.isCellSelected(2, 1) && m.isCellSelected(3, 1));
        view->commandUndo();
        QCOMPARE(m.tableData().numRawRows(), 3);
    }

    // Random edits, pastes, moves and dialect changes, then undo of all of
    // them, give back the first cells and bytes; redo of all gives the
    // edited bytes again.
    void undoAllRestoresEveryByte_data() {
        QTest::addColumn<quint32>("seed");
        // GRIDMERE_UNDO_SEEDS=N runs N seeds, for a longer soak than CI's.
        const quint32 seeds = qEnvironmentVariableIntValue("GRIDMERE_UNDO_SEEDS");
        for (quint32 seed = 1; seed <= (seeds ? seeds : 40); ++seed)
            QTest::newRow(qPrintable(QString::number(seed))) << seed;
    }
    void undoAllRestoresEveryByte() {
        QFETCH(quint32, seed);
        QRandomGenerator rng(seed);
        auto pick = [&](int n) { return int(rng.bounded(n)); };
        // A table with quoting of every kind, CR LF or LF.
        const char* const kTexts[] = {"a", "bb", "", "x y", "q\"t", "c,d", "1.5", "line\nbreak"};
        const bool crlf = pick(2);
        const bool quote_all = pick(2);
        QByteArray file;
        const int rows = 1 + pick(6), cols = 1 + pick(4);
        for (int r = 0; r < rows; ++r) {
            for (int c = 0; c < cols; ++c) {
                if (c) file += ',';
                QByteArray t = kTexts[pick(8)];
                const bool needs = t.contains(',') || t.contains('"') || t.contains('\n');
                if (quote_all || needs) t = '"' + t.replace("\"", "\"\"") + '"';
                file += t;
            }
            file += crlf ? "\r\n" : "\n";
        }
        auto view = makeView(file);
        QVERIFY(view);
        TableModel& m = *view->model();
        m.setLineEnding(crlf ? WindowsLineEnding : UnixLineEnding);
        const QString original_path = writeFile(file);
        const QString before = saved(*view, dir.filePath(QStringLiteral("before%1").arg(seed)));
        QCOMPARE(before, QString::fromLatin1(file.toHex()));

        auto randomSelection = [&] {
            RangeVector sel;
            const int n = 1 + pick(2);
            for (int i = 0; i < n; ++i) {
                const int kind = pick(4);
                const int r = pick(rows + 2), c = pick(cols + 2);
                Range range = kind == 0   ? Range(r, c, Range::Model)
                              : kind == 1 ? Range::line(r, Range::Row, Range::Model)
                              : kind == 2 ? Range::line(c, Range::Column, Range::Model)
                                          : Range::wholeTable(Range::Model);
                if (kind == 3) {
                    range.row = r, range.col = c;
                    range.row_end = r + pick(3), range.col_end = c + pick(3);
                }
                sel.push_back(range);
            }
            sel.front().is_main = true;
            sel.front().main_offset =
                sel.front().kind == Range::Row ? sel.front().col : sel.front().row;
            sel.front().main_offset_row = sel.front().row;
            sel.front().main_offset_col = sel.front().col;
            m.setSelection(sel, true);
        };
        for (int step = 0; step < 12; ++step) {
            randomSelection();
            switch (pick(7)) {
            case 0: { // typing into the selection
                QTest::keyClick(view.get(), char('k' + pick(5)));
                QTest::keyClick(view->focusWidget(), char('k' + pick(5)));
                QTest::keyClick(view->focusWidget(), Qt::Key_Escape);
                break;
            }
            case 1:
                QApplication::clipboard()->setText(pick(2) ? QStringLiteral("p\t\"q\"\r\nr")
                                                           : QStringLiteral("solo"));
                view->pasteCells();
                break;
            case 2:
                view->moveCellContents(pick(3) - 1, pick(3) - 1);
                break;
            case 3:
                view->duplicateCellContents(Direction(pick(4)));
                break;
            case 4:
                view->deleteCells();
                break;
            case 5: {
                const int which = pick(4);
                if (which == 0)
                    view->pushCommand(new SetDelimiterCommand(&m, pick(2) ? ";" : "\t"));
                if (which == 1)
                    view->pushCommand(
                        new SetLineEndingCommand(&m, pick(2) ? WindowsLineEnding : UnixLineEnding));
                if (which == 2)
                    view->pushCommand(new SetEncodingCommand(
                        &m, pick(3) == 0 ? Iso8859_1 : (pick(2) ? Utf16LE : Utf8)));
                if (which == 3) view->pushCommand(new SetParsingStandardCommand(&m, AllQuotes));
                break;
            }
            default:
                view->onMoveCellContentsAbsolute(m.selectionRanges(), m.mainCell(),
                                                 m.mainCell().row + pick(3),
                                                 m.mainCell().col + pick(3) - 1);
                break;
            }
        }
        const QString edited = saved(*view, dir.filePath(QStringLiteral("edited%1").arg(seed)));
        while (view->undoStack()->canUndo())
            view->commandUndo();
        QCOMPARE(saved(*view, dir.filePath(QStringLiteral("undone%1").arg(seed))), before);
        while (view->undoStack()->canRedo())
            view->commandRedo();
        QCOMPARE(saved(*view, dir.filePath(QStringLiteral("redone%1").arg(seed))), edited);
        Q_UNUSED(original_path);
    }
};

QTEST_MAIN(TestEditing)
#include "tst_editing.moc"
