#include "app/findreplacewidget.h"
#include "app/launcher.h"
#include "app/mainwindow.h"
#include "app/paneview.h"
#include "commands/commandtable.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "view/testutilfiles.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QTableWidget>
#include <QTest>
#include <QUndoStack>

// The row and column commands reach a table from the window's command
// rows, those that ask a number or a line first among them.
class TestLineCommands : public QObject {
    Q_OBJECT

    ScratchFiles files;

private slots:
    void rowsFindTheirSlots_data() {
        QTest::addColumn<QString>("name");
        for (const char* name : {"Insert Row(s) Before",
                                 "Insert Column(s) Before",
                                 "Insert Row(s) After",
                                 "Insert Column(s) After",
                                 "Insert Cells, Move Rest of Row Right",
                                 "Insert Cells, Move Rest of Column Down",
                                 "Transpose Table",
                                 "Transpose Selected Cells",
                                 "Remove Row(s)",
                                 "Remove Column(s)",
                                 "Remove Duplicate Row(s)",
                                 "Remove Duplicate Column(s)",
                                 "Remove Duplicate Rows (Based on Selected Columns Only)",
                                 "Remove Duplicate Columns (Based on Selected Rows Only)",
                                 "Remove Empty Row(s)",
                                 "Remove Empty Column(s)",
                                 "Remove Empty Rows (Based on Selected Columns Only)",
                                 "Remove Empty Columns (Based on Selected Rows Only)",
                                 "Remove Selected Cells, Move Rest of Row Left",
                                 "Remove Selected Cells, Move Rest of Column Up",
                                 "Remove Selected Cells and the Rest of Their Rows",
                                 "Remove Selected Cells and the Rest of Their Columns",
                                 "Remove All Filtered Out and Hidden Data",
                                 "Move Row(s) Up",
                                 "Move Row(s) Down",
                                 "Move Column(s) Left",
                                 "Move Column(s) Right",
                                 "Duplicate Row(s)",
                                 "Duplicate Column(s)",
                                 "Hide Selected Row(s)",
                                 "Hide Selected Column(s)",
                                 "Hide All But Selected Row(s)",
                                 "Hide All But Selected Column(s)",
                                 "Hide Empty Row(s)",
                                 "Hide Empty Column(s)",
                                 "Show All Hidden Row(s)",
                                 "Show All Hidden Column(s)",
                                 "Show Hidden Row(s) in Selection",
                                 "Show Hidden Column(s) in Selection",
                                 "Show Empty Row(s)",
                                 "Show Empty Column(s)",
                                 "Select Duplicate Row(s)",
                                 "Select Duplicate Column(s)",
                                 "Select Duplicate Rows (Based on Selected Columns Only)",
                                 "Select Duplicate Columns (Based on Selected Rows Only)",
                                 "Remove Extraneous Rows and Columns",
                                 "Insert Row(s) Before Multiple Times",
                                 "Insert Column(s) Before Multiple Times",
                                 "Duplicate Row(s) Multiple Times",
                                 "Duplicate Column(s) Multiple Times",
                                 "Move Row(s) Just Above Row ...",
                                 "Move Column(s) to the Left of Column ..."})
            QTest::newRow(name) << QString(name);
    }
    void rowsFindTheirSlots() {
        QFETCH(QString, name);
        MainWindow window;
        CommandTable table(&window);
        const CommandRecord* record = table.record(name);
        QVERIFY2(record, qPrintable(name));
        QVERIFY(record->available);
    }

    // The menu rows on a real table: hide a row, insert one before the
    // selection, and undo both.
    void menuRowsActOnTheTable() {
        MainWindow window;
        QVERIFY(window.openFile(files.write("h\n1\n2\n3\n")));
        TableView* view = window.currentView();
        QVERIFY(view);
        TableModel& m = *view->model();
        CommandTable table(&window);
        m.selectSingleCell(Range(2, 0, Range::Model));
        table.record("Hide Selected Row(s)")->action->trigger();
        QCOMPARE(m.rawHiddenRows(), std::vector<int>{2});
        QCOMPARE(m.headerData(2, Qt::Vertical).toString(), QStringLiteral("3"));
        m.selectSingleCell(Range(1, 0, Range::Model));
        table.record("Insert Row(s) Before")->action->trigger();
        QCOMPARE(m.tableData().numRawRows(), 5);
        QCOMPARE(m.rawHiddenRows(), std::vector<int>{3});
        table.record("Undo")->action->trigger();
        table.record("Undo")->action->trigger();
        QCOMPARE(m.tableData().numRawRows(), 4);
        QVERIFY(m.rawHiddenRows().empty());
    }

    // Keys on the grid of a real window: Alt+Return inserts cells until the
    // find bar is open, where it finds all matches instead; the chord of
    // the split that moves the rest of the row opens its question.
    void sharedKeysOnTheGrid() {
        MainWindow window;
        QVERIFY(window.openFile(files.write("h,g\n1,2\n3,4\n")));
        window.show();
        QApplication::setActiveWindow(&window);
        QVERIFY(QTest::qWaitForWindowActive(&window));
        TableView* view = window.currentView();
        TableModel& m = *view->model();
        view->setFocus();
        m.selectSingleCell(Range(1, 0, Range::Model));
        QTest::keyClick(view, Qt::Key_Return, Qt::AltModifier);
        QCOMPARE(view->undoStack()->count(), 1);
        QCOMPARE(m.cellText(1, 0), QString());
        QCOMPARE(m.cellText(1, 1), QStringLiteral("1"));

        QTest::keyClick(view, Qt::Key_K, Qt::ControlModifier);
        QTest::keyClick(view, Qt::Key_S, Qt::ControlModifier);
        Launcher* asked = window.paneView()->currentLauncher();
        QVERIFY(asked);
        QCOMPARE(asked->promptText(), QStringLiteral("Select a Split Option:"));
        QTest::keyClick(asked->editor(), Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

        window.commandFindPrompt();
        auto* bar = window.findChild<FindReplaceWidget*>();
        QVERIFY(bar);
        bar->setFindText(QStringLiteral("3"));
        view->setFocus();
        QTest::keyClick(view, Qt::Key_Return, Qt::AltModifier);
        QCOMPARE(view->undoStack()->count(), 1);
        auto* results = window.findChild<FindResultsWidget*>();
        QVERIFY(results && results->isVisible());
        QCOMPARE(results->table()->rowCount(), 1);
    }
};

QTEST_MAIN(TestLineCommands)
#include "tst_linecommands.moc"
