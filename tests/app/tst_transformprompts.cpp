#include "app/launcher.h"
#include "app/mainwindow.h"
#include "app/paneview.h"
#include "commands/commandtable.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

// The Data menu's transforms asked through the launcher of a real window:
// the chain of questions, a bad answer asked again, and the grid changed in
// one undo step at the end.
class TestTransformPrompts : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    static Launcher* launcherOf(MainWindow& w) { return w.paneView()->currentLauncher(); }
    static void answer(MainWindow& w, const QString& text) {
        Launcher* l = launcherOf(w);
        QVERIFY(l);
        l->editor()->clear();
        QTest::keyClicks(l->editor(), text);
        QTest::keyClick(l->editor(), Qt::Key_Return);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QString csv(const QByteArray& bytes) {
        const QString p = dir.filePath(QStringLiteral("t.csv"));
        QFile f(p);
        if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) f.write(bytes);
        return p;
    }
    static void selectColumn(TableView* v, int col) {
        Range r = Range::line(col, Range::Column, Range::Model);
        r.is_main = true;
        r.main_offset = 0;
        v->model()->setMainAndSelection(Range(0, col, Range::Model), RangeVector{r});
    }
    // Rows r0..r1 by columns c0..c1, the main cell at the top left.
    static void selectBlock(TableView* v, int r0, int r1, int c0, int c1) {
        Range block = Range::wholeTable(Range::Model);
        block.row = r0, block.row_end = r1, block.col = c0, block.col_end = c1;
        block.is_main = true;
        block.main_offset_row = r0, block.main_offset_col = c0;
        v->model()->setMainAndSelection(Range(r0, c0, Range::Model), RangeVector{block});
    }
    static QString cell(TableView* v, int r, int c) { return v->model()->cellText(r, c); }

private slots:
    // The rows built here find their slots.
    void commandRowsFindTheirSlots() {
        MainWindow w;
        const QStringList built{"Upper Case",
                                "Lower Case",
                                "Title Case",
                                "Upper Camel Case",
                                "Lower Camel Case",
                                "Upper Snake Case",
                                "Lower Snake Case",
                                "Convert to Acronym",
                                "Convert Date/Time Format",
                                "Convert Number Format",
                                "Place Current Date/Time Stamp (Now) in Selected Cells",
                                "Zero-Fill Whole Numbers",
                                "Remove Leading Zeros",
                                "Random Integers in Selected Cells",
                                "Random Decimals (Floats) in Selected Cells",
                                "Set Number of Decimals",
                                "Copy Main Cell Contents to All Selected Cells",
                                "Fill Selected Cells with Series",
                                "Reshape Selected Cells Row-Wise",
                                "Reshape Selected Cells Column-Wise",
                                "Join Selected Cells Horizontally",
                                "Join Selected Cells Vertically",
                                "Split Selected Cells Horizontally",
                                "Split Selected Cells Vertically",
                                "Keep Only Left Part of Selected Cells",
                                "Keep Only Middle Part of Selected Cells",
                                "Keep Only Right Part of Selected Cells",
                                "Prepend Cell Contents",
                                "Append Cell Contents",
                                "Trim Selected Cell(s)",
                                "Fill Selected Cells with UUID/GUID",
                                "Split Selected Cells Horizontally, Move Rest of Row Right",
                                "Add or Update ID Column",
                                "Join Selected Cells Horizontally, Move Rest of Row Left"};
        auto has = [&w](const QString& name) {
            const QByteArray slot = CommandTable::slotName(name) + "()";
            return w.metaObject()->indexOfSlot(QMetaObject::normalizedSignature(slot)) >= 0;
        };
        for (const QString& name : built)
            QVERIFY2(has(name), qPrintable(name));
    }

    void badAnswerAskedAgain() {
        MainWindow w;
        QVERIFY(w.openFile(csv("n\n0012\n12a\n")));
        TableView* v = w.currentView();
        selectColumn(v, 0);
        w.commandZeroFillWholeNumbers();
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Total Number of Digits:"));
        answer(w, QStringLiteral("-1"));
        QVERIFY(launcherOf(w));
        QCOMPARE(launcherOf(w)->guideText(),
                 QStringLiteral("Must be a whole number 0 or greater."));
        QCOMPARE(v->undoStack()->count(), 0);
        answer(w, QStringLiteral("6"));
        QCOMPARE(cell(v, 1, 0), QStringLiteral("000012"));
        QCOMPARE(cell(v, 2, 0), QStringLiteral("12a"));
        QCOMPARE(v->undoStack()->count(), 1);
    }

    // The join that closes the gap: the joined cell first, the rest of the
    // row moved left over the emptied cells, one step back.
    void joinMovesRestLeft() {
        MainWindow w;
        QVERIFY(w.openFile(csv("a,b,c,d\n1,2,3,4\n5,6,7,8\n")));
        TableView* v = w.currentView();
        selectBlock(v, 1, 2, 0, 1);
        w.commandJoinSelectedCellsHorizontallyMoveRestOfRowLeft();
        answer(w, QStringLiteral("-"));
        const QStringList row1{cell(v, 1, 0), cell(v, 1, 1), cell(v, 1, 2), cell(v, 1, 3)};
        QCOMPARE(row1, (QStringList{"1-2", "3", "4", ""}));
        QCOMPARE(cell(v, 2, 0), QStringLiteral("5-6"));
        QCOMPARE(cell(v, 0, 1), QStringLiteral("b"));
        QCOMPARE(v->undoStack()->count(), 1);
        v->undoStack()->undo();
        QCOMPARE(cell(v, 1, 1), QStringLiteral("2"));
        QCOMPARE(cell(v, 2, 3), QStringLiteral("8"));
    }

    // A block copied to a cell named at the prompt, growing the table; the
    // undo takes the growth back.
    void duplicateTo() {
        MainWindow w;
        QVERIFY(w.openFile(csv("a,b\n1,2\n3,4\n")));
        TableView* v = w.currentView();
        selectBlock(v, 1, 2, 0, 0);
        w.commandDuplicateCellContentsTo();
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Duplicate Cell Contents To:"));
        answer(w, QStringLiteral("r2, c1"));
        QCOMPARE(cell(v, 2, 1), QStringLiteral("1"));
        QCOMPARE(cell(v, 3, 1), QStringLiteral("3"));
        QCOMPARE(cell(v, 1, 0), QStringLiteral("1"));
        QCOMPARE(v->model()->tableData().numRawRows(), 4);
        v->undoStack()->undo();
        QCOMPARE(cell(v, 2, 1), QStringLiteral("4"));
        QCOMPARE(v->model()->tableData().numRawRows(), 3);
    }

    // Two lists and a field: each answered step goes on the strip, and the
    // field shows the sample date in the format as it is typed.
    void dateChain() {
        MainWindow w;
        QVERIFY(w.openFile(csv("d\n2020-04-10\nlater\n")));
        TableView* v = w.currentView();
        selectColumn(v, 0);
        w.commandConvertDateTimeFormat();
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Select Format to Convert From:"));
        answer(w, QStringLiteral("ISO 8601 Format (date only)"));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Select Format to Convert To:"));
        QCOMPARE(w.paneView()->prevOptions().size(), size_t(1));
        answer(w, QStringLiteral("Custom Format"));
        Launcher* field = launcherOf(w);
        QCOMPARE(field->promptText(), QStringLiteral("Custom Format to Convert To:"));
        QCOMPARE(w.paneView()->prevOptions().size(), size_t(2));
        QTest::keyClicks(field->editor(), QStringLiteral("d MMM yyyy"));
        QVERIFY(field->findChildren<QLabel*>().size() > 0);
        bool shown = false;
        for (QLabel* label : field->findChildren<QLabel*>())
            shown = shown || label->text() == QStringLiteral("10 Apr 2020");
        QVERIFY(shown);
        answer(w, QStringLiteral("d MMM yyyy"));
        QVERIFY(w.paneView()->prevOptions().empty());
        QCOMPARE(cell(v, 1, 0), QStringLiteral("10 Apr 2020"));
        QCOMPARE(cell(v, 2, 0), QStringLiteral("later"));
        QCOMPARE(v->undoStack()->count(), 1);
    }

    // The split that moves the rest of the row keeps every cell: the parts
    // go into new columns, in one undo step.
    void splitMovingRestOfRow() {
        MainWindow w;
        QVERIFY(w.openFile(csv("h,g\na b c,z\n")));
        TableView* v = w.currentView();
        v->model()->selectSingleCell(Range(1, 0, Range::Model));
        w.commandSplitSelectedCellsHorizontallyMoveRestOfRowRight();
        answer(w, QStringLiteral("Split by Index"));
        answer(w, QStringLiteral("x"));
        QCOMPARE(launcherOf(w)->guideText(),
                 QStringLiteral("Must input a valid index (or indexes)."));
        answer(w, QStringLiteral("2 4"));
        QVERIFY(!launcherOf(w));
        const QStringList row{cell(v, 1, 0), cell(v, 1, 1), cell(v, 1, 2), cell(v, 1, 3)};
        QCOMPARE(row, (QStringList{"a ", "b ", "c", "z"}));
        QCOMPARE(cell(v, 0, 3), QStringLiteral("g"));
        QCOMPARE(v->undoStack()->count(), 1);
        v->undoStack()->undo();
        QCOMPARE(cell(v, 1, 0), QStringLiteral("a b c"));
        QCOMPARE(cell(v, 1, 1), QStringLiteral("z"));
    }

    // A table without an ID column asks where to start and gets one in a
    // single step; one with it only has its gaps numbered, asking nothing.
    void idColumn() {
        MainWindow w;
        QVERIFY(w.openFile(csv("name\nx\ny\n")));
        TableView* v = w.currentView();
        w.commandAddOrUpdateIdColumn();
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("First ID Number:"));
        answer(w, QStringLiteral("one"));
        QCOMPARE(launcherOf(w)->guideText(), QStringLiteral("Must be a whole number."));
        answer(w, QStringLiteral("10"));
        QVERIFY(!launcherOf(w));
        QCOMPARE((QStringList{cell(v, 0, 0), cell(v, 1, 0), cell(v, 2, 0), cell(v, 2, 1)}),
                 (QStringList{"ID", "10", "11", "y"}));
        QCOMPARE(v->undoStack()->count(), 1);
        v->undoStack()->undo();
        QCOMPARE(v->model()->tableData().numRawColumns(), 1);
        QCOMPARE(cell(v, 0, 0), QStringLiteral("name"));

        MainWindow again;
        QVERIFY(again.openFile(csv("n,Id\na,3\nb,\nc,x\nd,\n")));
        v = again.currentView();
        again.commandAddOrUpdateIdColumn();
        QVERIFY(!launcherOf(again));
        QCOMPARE((QStringList{cell(v, 1, 1), cell(v, 2, 1), cell(v, 3, 1), cell(v, 4, 1)}),
                 (QStringList{"3", "4", "x", "5"}));
        QCOMPARE(v->undoStack()->count(), 1);
    }

    void prependChainAndReadOnly() {
        MainWindow w;
        QVERIFY(w.openFile(csv("a\nb\n")));
        TableView* v = w.currentView();
        // A read-only grid asks nothing.
        QVERIFY(w.setReadOnly(v, true));
        v = w.currentView();
        w.commandPrependCellContents();
        QVERIFY(!launcherOf(w));
        QVERIFY(w.setReadOnly(v, false));
        v = w.currentView();
        selectColumn(v, 0);
        w.commandPrependCellContents();
        answer(w, QStringLiteral("Different text for each cell."));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Prepend the Following Series:"));
        answer(w, QStringLiteral("1 1"));
        QCOMPARE(cell(v, 0, 0), QStringLiteral("1a"));
        QCOMPARE(cell(v, 1, 0), QStringLiteral("2b"));
        QCOMPARE(v->undoStack()->count(), 1);
    }
};

QTEST_MAIN(TestTransformPrompts)
#include "tst_transformprompts.moc"
