#include "app/launcher.h"
#include "app/mainwindow.h"
#include "app/paneview.h"
#include "commands/settings.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/msgbox.h"

#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <functional>

// The palette and the prompts, driven by key events on the launcher's editor
// over a real window and its real command table.
class TestLauncher : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    static Launcher* launcherOf(MainWindow& w) { return w.paneView()->currentLauncher(); }
    static void type(Launcher* l, const QString& text) { QTest::keyClicks(l->editor(), text); }
    static void key(Launcher* l, int k, Qt::KeyboardModifiers mods = Qt::NoModifier) {
        QTest::keyClick(l->editor(), Qt::Key(k), mods);
    }
    static QStringList shown(Launcher* l) {
        QStringList names;
        for (OptionWidget* row : l->optionList()->visibleOptions())
            names << row->data().name;
        return names;
    }
    static Launcher* palette(MainWindow& w) {
        w.commandCommandLauncher();
        return launcherOf(w);
    }
    // Answers the open question; the answered launcher goes on its next turn.
    static void answer(MainWindow& w, const QString& text) {
        Launcher* l = launcherOf(w);
        QVERIFY(l);
        l->editor()->clear();
        type(l, text);
        key(l, Qt::Key_Return);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    QString csv(const QByteArray& bytes, const QString& name = QStringLiteral("t.csv")) {
        const QString p = dir.filePath(name);
        QFile f(p);
        if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) f.write(bytes);
        return p;
    }

private slots:
    // Fuzzy order against the real table: the tightest match first, ties in
    // the table's order, highlights on the matched letters; blanks in the
    // query change nothing.
    void paletteOrdersAndHighlights() {
        MainWindow w;
        QVERIFY(w.openFile(csv("a,b\n1,2\n")));
        Launcher* l = palette(w);
        QVERIFY(l);
        QCOMPARE(l->promptText(), QStringLiteral("Command:"));
        const int all = l->optionList()->visibleCount();
        QVERIFY2(all > 60, qPrintable(QString::number(all)));

        type(l, QStringLiteral("go to cell"));
        QStringList names = shown(l);
        QCOMPARE(names.value(0), QStringLiteral("Go To: Go to Cell"));
        OptionWidget* first = l->optionList()->visibleOptions().front();
        // "go to cell" matches the category's "Go To" first, then ": Go"'s
        // "to"... the first-occurrence path; every letter is highlighted.
        QCOMPARE(int(first->highlights.size()), 8);
        QVERIFY(first->labelText().contains(QStringLiteral("</span>")));
        int previous = INT_MAX;
        for (OptionWidget* row : l->optionList()->visibleOptions()) {
            QVERIFY(row->score <= previous);
            previous = row->score;
        }
        const QStringList spaced = names;
        l->editor()->clear();
        QCOMPARE(l->optionList()->visibleCount(), all);
        type(l, QStringLiteral("gotocell"));
        QCOMPARE(shown(l), spaced);

        // Equal scores keep the table's (sorted) order.
        l->editor()->clear();
        type(l, QStringLiteral("Select Entire Row"));
        names = shown(l);
        QCOMPARE(names, (QStringList{QStringLiteral("Selection: Select Entire Row(s)"),
                                     QStringLiteral("Selection: Select Entire Row(s) (Header "
                                                    "Excluded)")}));
        QCOMPARE(l->optionList()->visibleOptions()[0]->score,
                 l->optionList()->visibleOptions()[1]->score);

        // A leading blank is no query; nothing matching hides every row.
        l->editor()->clear();
        type(l, QStringLiteral(" "));
        QCOMPARE(l->optionList()->visibleCount(), all);
        type(l, QStringLiteral("qqqqzz"));
        QCOMPARE(l->optionList()->visibleCount(), 0);
        QCOMPARE(l->optionList()->selectedIndex(), -1);
        QVERIFY(l->currentOptionResponse().isEmpty());
    }

    // Up and Down move by one and stop at the ends; the page keys by five.
    void paletteKeys() {
        MainWindow w;
        QVERIFY(w.openFile(csv("a,b\n1,2\n")));
        Launcher* l = palette(w);
        OptionListWidget* list = l->optionList();
        QCOMPARE(list->selectedIndex(), 0);
        key(l, Qt::Key_Up);
        QCOMPARE(list->selectedIndex(), 0);
        key(l, Qt::Key_Down);
        key(l, Qt::Key_PageDown);
        QCOMPARE(list->selectedIndex(), 6);
        key(l, Qt::Key_PageUp);
        QCOMPARE(list->selectedIndex(), 1);
        type(l, QStringLiteral("tab ba")); // a short list: the page stops at its end
        const int n = list->visibleCount();
        QVERIFY(n > 1 && n < 6);
        key(l, Qt::Key_PageDown);
        QCOMPARE(list->selectedIndex(), n - 1);
        key(l, Qt::Key_Down);
        QCOMPARE(list->selectedIndex(), n - 1);
    }

    // Enter fires the selected row's action; the palette closes.
    void enterFiresTheRow() {
        MainWindow w;
        QVERIFY(w.openFile(csv("a,b\n1,2\n3,4\n")));
        TableModel* m = w.currentView()->model();
        QCOMPARE(m->numSelectedCells(), qint64(1));
        Launcher* l = palette(w);
        type(l, QStringLiteral("Selection: Select Entire Table"));
        QCOMPARE(shown(l).value(0), QStringLiteral("Selection: Select Entire Table"));
        key(l, Qt::Key_Return);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(m->numSelectedCells() > 1);
        QVERIFY(!launcherOf(w));
        // Esc on the grid leaves the main cell alone selected.
        QTest::keyClick(w.currentView(), Qt::Key_Escape);
        QCOMPARE(m->numSelectedCells(), qint64(1));

        // A row that asks something opens its question in the palette's place.
        l = palette(w);
        type(l, QStringLiteral("Go To: Go to Cell"));
        key(l, Qt::Key_Return);
        QVERIFY(launcherOf(w));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Go to Cell:"));
        // Esc closes it; the table has its commands again.
        QTest::keyClick(launcherOf(w)->editor(), Qt::Key_Escape);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!launcherOf(w));
    }

    // Each prompt takes what its parser takes; a bad answer asks again with
    // the error in the guide and the answer kept for correcting.
    void promptsAcceptAndReject() {
        struct Case {
            const char* name;
            void (MainWindow::*command)();
            QString answer;
            QString error; // empty: accepted
            std::function<bool(MainWindow&)> check;
            std::function<void(MainWindow&)> setup = {};
        };
        auto model = [](MainWindow& w) { return w.currentView()->model(); };
        const std::vector<Case> cases = {
            {"cell, row and column",
             &MainWindow::commandGoToCell,
             "3 1",
             {},
             [&](MainWindow& w) {
                 return model(w)->mainCell().row == 3 && model(w)->mainCell().col == 1;
             }},
            {"cell, words",
             &MainWindow::commandGoToCell,
             "c1 r2",
             {},
             [&](MainWindow& w) {
                 return model(w)->mainCell().row == 2 && model(w)->mainCell().col == 1;
             }},
            {"cell, past the end",
             &MainWindow::commandGoToCell,
             "100000",
             {},
             [&](MainWindow& w) { return model(w)->mainCell().row == model(w)->rowCount() - 1; }},
            {"cell, no number",
             &MainWindow::commandGoToCell,
             "here",
             "Must input a cell address, a row or a column.",
             {}},
            {"text size",
             &MainWindow::commandSetTextSize,
             "15",
             {},
             [](MainWindow& w) { return w.currentSettings().integer(SettingId::TextSize) == 15; }},
            {"text size zero",
             &MainWindow::commandSetTextSize,
             "0",
             "Must be a whole number 1 or greater.",
             {}},
            {"read-only size zero",
             &MainWindow::commandSetMinFileSizeReadOnlyModeQueryMb,
             "0",
             {},
             [](MainWindow& w) { return w.read_only_query_mb == 0; }},
            {"read-only size negative",
             &MainWindow::commandSetMinFileSizeReadOnlyModeQueryMb,
             "-1",
             "Must be a whole number 0 or greater.",
             {}},
            {"first row index negative",
             &MainWindow::commandSetFirstRowIndex,
             "-2",
             {},
             [&](MainWindow& w) { return model(w)->firstRowIndex() == -2; }},
            {"header rows words",
             &MainWindow::commandSetNumberOfHeaderRows,
             "two",
             "Must be a whole number 0 or greater.",
             {}},
            {"behaviour",
             &MainWindow::commandSetBehaviorWhenFileIsChangedExternally,
             "Ign",
             {},
             [](MainWindow& w) { return w.refresh_behavior == IgnoreChange; }},
            {"save delimiter",
             &MainWindow::commandSetDelimiterForFileSave,
             "semi",
             {},
             [&](MainWindow& w) { return model(w)->delimiterSave() == u";"; }},
            {"save delimiter typed",
             &MainWindow::commandSetDelimiterForFileSave,
             "#",
             {},
             [&](MainWindow& w) { return model(w)->delimiterSave() == u"#"; }},
            {"save delimiter two characters",
             &MainWindow::commandSetDelimiterForFileSave,
             "##",
             "Must be a single character, \"tab\", \"space\" or \"(none)\".",
             {}},
            {"save encoding",
             &MainWindow::commandSetEncodingForFileSave,
             "UTF-16LE",
             {},
             [&](MainWindow& w) { return model(w)->encoding() == Utf16LE; }},
            {"save encoding unknown",
             &MainWindow::commandSetEncodingForFileSave,
             "klingon",
             "Unknown encoding.",
             {}},
            // The lines commands, from the top left cell of a 4 x 2 table.
            {"insert rows",
             &MainWindow::commandInsertRowsBeforeMultipleTimes,
             "3",
             {},
             [&](MainWindow& w) {
                 return model(w)->tableData().numRawRows() == 7 &&
                        model(w)->cellText(3, 0) == u"a" && model(w)->cellText(0, 0).isEmpty();
             }},
            {"insert rows zero",
             &MainWindow::commandInsertRowsBeforeMultipleTimes,
             "0",
             "Must be a whole number 1 or greater.",
             {}},
            {"insert columns past what a table holds",
             &MainWindow::commandInsertColumnsBeforeMultipleTimes,
             "2147483000",
             "Too many: that many new columns would not fit in the table or in free memory.",
             {}},
            {"duplicate columns",
             &MainWindow::commandDuplicateColumnsMultipleTimes,
             "2",
             {},
             [&](MainWindow& w) {
                 return model(w)->tableData().numRawColumns() == 4 &&
                        model(w)->cellText(3, 2) == u"5" && model(w)->cellText(3, 3) == u"6";
             }},
            {"duplicate rows, words",
             &MainWindow::commandDuplicateRowsMultipleTimes,
             "twice",
             "Must be a whole number 1 or greater.",
             {}},
            {"move above row",
             &MainWindow::commandMoveRowsJustAboveRow,
             "row 3",
             {},
             [&](MainWindow& w) {
                 return model(w)->cellText(1, 0) == u"3" && model(w)->cellText(2, 0) == u"a" &&
                        model(w)->cellText(3, 0) == u"5";
             }},
            {"move above row, a column",
             &MainWindow::commandMoveRowsJustAboveRow,
             "c2",
             "Must input a row.",
             {}},
            {"move left of column",
             &MainWindow::commandMoveColumnsToTheLeftOfColumn,
             "col 2",
             {},
             [&](MainWindow& w) {
                 return model(w)->cellText(0, 0) == u"b" && model(w)->cellText(0, 1) == u"a";
             }},
            {"move left of a lettered column",
             &MainWindow::commandMoveColumnsToTheLeftOfColumn,
             "c",
             {},
             [&](MainWindow& w) {
                 return model(w)->cellText(0, 0) == u"b" && model(w)->cellText(0, 1) == u"a";
             },
             [&](MainWindow& w) { model(w)->setColumnsAsLetters(true); }},
            {"move left of column, a row",
             &MainWindow::commandMoveColumnsToTheLeftOfColumn,
             "r2",
             "Must input a column.",
             {}},
        };
        for (const Case& c : cases) {
            MainWindow w;
            QVERIFY(w.openFile(csv("a,b\n1,2\n3,4\n5,6\n")));
            if (c.setup) c.setup(w);
            (w.*c.command)();
            Launcher* asked = launcherOf(w);
            QVERIFY2(asked, c.name);
            const QString prompt = asked->promptText();
            answer(w, c.answer);
            if (c.error.isEmpty()) {
                QVERIFY2(!launcherOf(w), c.name);
                QVERIFY2(c.check(w), c.name);
            } else {
                Launcher* again = launcherOf(w);
                QVERIFY2(again && again != asked, c.name);
                QCOMPARE(again->promptText(), prompt);
                QVERIFY2(again->guideText().contains(c.error.toHtmlEscaped()) ||
                             again->guideText().contains(c.error),
                         c.name);
                QCOMPARE(again->editor()->text(), c.answer);
            }
        }
    }

    // Go to File offers the open tabs by name; the tab keys cycle.
    void goToFileAndTabs() {
        MainWindow w;
        const QString a = csv("1\n");
        const QString b = dir.filePath(QStringLiteral("other.csv"));
        QFile f(b);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write("2\n");
        f.close();
        QVERIFY(w.openFiles({a, b}));
        w.setCurrentView(w.viewForPath(a));
        w.commandGoToFile();
        QCOMPARE(shown(launcherOf(w)), (QStringList{"t.csv", "other.csv"}));
        answer(w, QStringLiteral("oth"));
        QCOMPARE(w.currentView(), w.viewForPath(b));
        w.commandSwitchToTabOnTheRight();
        QCOMPARE(w.currentView(), w.viewForPath(a));
        w.commandSwitchToTabOnTheLeft();
        QCOMPARE(w.currentView(), w.viewForPath(b));
        w.commandSwitchToTab1();
        QCOMPARE(w.currentView(), w.viewForPath(a));
        w.commandSwitchToTab9(); // no ninth tab: nothing moves
        QCOMPARE(w.currentView(), w.viewForPath(a));
    }

    // A chain keeps its answered steps above the question; going back asks
    // the last one again, and the values reach the table at the end.
    void chainGoesBackAndFinishes() {
        MainWindow w;
        QVERIFY(w.openFile(csv("a,b\n1,2\n")));
        w.commandSetParametersForFileSave();
        answer(w, QStringLiteral("pipe"));
        answer(w, QStringLiteral("Windows"));
        PaneView* pane = w.paneView();
        QCOMPARE(pane->prevOptions().size(), size_t(2));
        QCOMPARE(pane->prevOptions()[1]->promptText(),
                 QStringLiteral("Line Ending for File Save:"));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Encoding for File Save:"));
        key(launcherOf(w), Qt::Key_Minus, Qt::ControlModifier);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(pane->prevOptions().size(), size_t(1));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Line Ending for File Save:"));
        answer(w, QStringLiteral("Unix"));
        answer(w, QStringLiteral("UTF-8"));
        answer(w, QStringLiteral("RFC 4180"));
        QVERIFY(!launcherOf(w));
        QVERIFY(pane->prevOptions().empty());
        TableModel* m = w.currentView()->model();
        QCOMPARE(m->delimiterSave(), QStringLiteral("|"));
        QCOMPARE(m->lineEnding(), UnixLineEnding);
    }

    // "Column Lookup" answered step by step, source and destination in two
    // files: a bad column asked again, typing highlights in the source, "*"
    // takes every column but the key, blanks take the current file, the
    // first column and "Insert new columns"; one step on the destination.
    // The filter chain: a line that names nothing keeps the question, the
    // text filters the table; the clear list removes it; a reload keeps the
    // filters when the setting says so.
    void filterChainAndReload() {
        MainWindow w;
        QVERIFY(w.openFile(csv("n,v\na,1\nb,2\na,3\nc,4\n")));
        TableModel* m = w.currentView()->model();
        w.commandAddFilter();
        answer(w, QStringLiteral("zz"));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Column or Row to Filter:"));
        answer(w, QStringLiteral("0"));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Edit Filter for Column 0:"));
        answer(w, QStringLiteral("A"));
        QCOMPARE(m->tableData().numModelRows(), 3);
        QCOMPARE(m->filterList().front().filter_string, QStringLiteral("A"));

        // The filter is an undo step: the reload asks before dropping it.
        QStringList asked;
        MsgBox::setAutoAnswer([&asked](MsgBox& box) {
            asked << box.text();
            box.clickButton(QStringLiteral("Do&n't Save"));
        });
        w.commandReloadFile();
        MsgBox::setAutoAnswer({});
        QCOMPARE(asked.size(), 1);
        QCOMPARE(m->filterList().size(), size_t(1));
        QCOMPARE(m->tableData().numModelRows(), 3);

        w.commandRemoveIndividualFilters();
        Launcher* l = launcherOf(w);
        QCOMPARE(l->promptText(), QStringLiteral("Clear Filter:"));
        QCOMPARE(shown(l), QStringList{QStringLiteral("Column 0: A")});
        key(l, Qt::Key_Return);
        QVERIFY(m->filterList().empty());
        QCOMPARE(m->tableData().numModelRows(), 5);
    }

    // An answer given after a switch to another tab goes to the table the
    // question was asked about.
    void answerGoesToTheTableAsked() {
        MainWindow w;
        QVERIFY(w.openFile(csv("n\na\nb\n")));
        TableView* asked = w.currentView();
        QVERIFY(w.openFile(csv("n\na\nb\n", QStringLiteral("other.csv"))));
        TableView* other = w.currentView();
        w.setCurrentView(asked);
        w.commandAddFilter();
        answer(w, QStringLiteral("0"));
        w.setCurrentView(other);
        answer(w, QStringLiteral("a"));
        QCOMPARE(w.currentView(), asked);
        QCOMPARE(asked->model()->filterList().size(), size_t(1));
        QVERIFY(other->model()->filterList().empty());
    }

    void columnLookupChain() {
        MainWindow w;
        auto write = [this](const char* name, const QByteArray& bytes) {
            const QString p = dir.filePath(QString::fromLatin1(name));
            QFile f(p);
            if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) f.write(bytes);
            return p;
        };
        const QString from = write("lookup_source.csv", "x,k,y\n1,a,2\n3,b,4\n");
        const QString to = write("lookup_destination.csv", "k\nb\na\nc\n");
        QVERIFY(w.openFiles({from, to}));
        TableView* source = w.viewForPath(from);
        TableView* destination = w.viewForPath(to);
        QVERIFY(source && destination);
        w.setCurrentView(destination);
        const QString second = QString::number(1 + source->model()->firstColIndex());

        w.commandColumnLookup();
        Launcher* l = launcherOf(w);
        QCOMPARE(l->promptText(), QStringLiteral("Select the File to Look Up Data From:"));
        QCOMPARE(shown(l).value(0), QStringLiteral("lookup_destination.csv (Current file)"));
        answer(w, QStringLiteral("lookup_source"));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Enter the Source Key Column:"));
        answer(w, QStringLiteral("zz"));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Enter the Source Key Column:"));
        QCOMPARE(launcherOf(w)->guideText(), QStringLiteral("Must input a column."));
        type(launcherOf(w), second);
        QCOMPARE(source->model()->mainCell().col, 1);
        answer(w, second);
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Enter the Source Value Column(s):"));
        answer(w, QStringLiteral("*"));
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Select the File to Write Data To:"));
        answer(w, QString());
        QCOMPARE(launcherOf(w)->promptText(), QStringLiteral("Enter the Destination Key Column:"));
        answer(w, QString());
        QCOMPARE(
            launcherOf(w)->promptText(),
            QStringLiteral("Do you want to insert new columns or overwrite existing columns?"));
        answer(w, QString());
        QCOMPARE(launcherOf(w)->promptText(),
                 QStringLiteral("Enter the value for cells with mismatched keys:"));
        answer(w, QStringLiteral("none"));
        QVERIFY(!launcherOf(w));

        QCOMPARE(destination->undoStack()->count(), 1);
        QCOMPARE(source->undoStack()->count(), 0);
        TableModel* m = destination->model();
        const QStringList rows{"k||", "b|3|4", "a|1|2", "c|none|none"};
        for (int r = 0; r < rows.size(); ++r)
            QCOMPARE(m->cellText(r, 0) + u'|' + m->cellText(r, 1) + u'|' + m->cellText(r, 2),
                     rows[r]);
        destination->commandUndo();
        QCOMPARE(m->tableData().numRawColumns(), 1);
        QCOMPARE(m->cellText(1, 0) + m->cellText(1, 1), QStringLiteral("b"));
    }
};

QTEST_MAIN(TestLauncher)
#include "tst_launcher.moc"
