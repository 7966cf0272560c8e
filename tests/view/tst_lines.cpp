#include "edit/commands/lines/splitcellscommand.h"
#include "testutilfiles.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <algorithm>
#include <memory>

// The row and column commands on a grid: undo and redo byte for byte, the
// hidden lines and the model's size after each, duplicates and empties.
class TestLines : public QObject {
    Q_OBJECT

    ScratchFiles files;
    std::unique_ptr<TableView> makeView(const QByteArray& bytes) {
        auto view = std::make_unique<TableView>(false);
        view->model()->load(files.write(bytes), false);
        view->resize(600, 400);
        view->show();
        if (!QTest::qWaitForWindowExposed(view.get())) return nullptr;
        view->model()->selectSingleCell(Range(0, 0, Range::Model));
        return view;
    }
    QByteArray saved(TableView& v) { return files.saved(*v.model()); }
    // Whole model lines [first, last] on one axis, the main cell on the first.
    static Range lines(bool rows, int first, int last) {
        Range r = Range::wholeTable(Range::Model);
        (rows ? r.row : r.col) = first;
        (rows ? r.row_end : r.col_end) = last;
        r.is_main = true;
        r.main_offset_row = rows ? first : 0;
        r.main_offset_col = rows ? 0 : first;
        return r;
    }

private slots:
    void initTestCase() { QVERIFY(files.isValid()); }

    // Random sequences of the commands, of hiding and of filters on random tables: undo
    // of all gives back the file's bytes and hidden lines, redo of all the
    // bytes the sequence made.
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
        const char* const kTexts[] = {"a", "A", "", "x y", "q\"t", "c,d", "1", "line\nbreak"};
        const bool crlf = pick(2);
        QByteArray file;
        const int rows = 1 + pick(7), cols = 1 + pick(5);
        QByteArray line;
        for (int r = 0; r < rows; ++r) {
            // Now and then a row the same as the one above.
            if (r == 0 || pick(5)) {
                line.clear();
                for (int c = 0; c < cols; ++c) {
                    if (c) line += ',';
                    QByteArray t = kTexts[pick(8)];
                    const bool needs = t.contains(',') || t.contains('"') || t.contains('\n');
                    if (pick(4) == 0 || needs) t = '"' + t.replace("\"", "\"\"") + '"';
                    line += t;
                }
            }
            file += line + (crlf ? "\r\n" : "\n");
        }
        auto view = makeView(file);
        QVERIFY(view);
        TableModel& m = *view->model();
        m.setLineEnding(crlf ? WindowsLineEnding : UnixLineEnding);
        const QByteArray before = saved(*view);
        QCOMPARE(before, file);
        const std::vector<int> hidden_rows = m.rawHiddenRows(), hidden_cols = m.rawHiddenCols();

        auto randomSelection = [&] {
            RangeVector sel;
            const int n = 1 + pick(2);
            const int rows_now = m.tableData().numModelRows() + 2;
            const int cols_now = m.tableData().numModelColumns() + 2;
            for (int i = 0; i < n; ++i) {
                const int kind = pick(4);
                const int r = pick(rows_now), c = pick(cols_now);
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
        QStringList done;
        for (int step = 0; step < 14; ++step) {
            const QByteArray step_before = saved(*view);
            const std::vector<int> hidden_before_rows = m.rawHiddenRows();
            const std::vector<int> hidden_before_cols = m.rawHiddenCols();
            const int depth = view->undoStack()->count();
            randomSelection();
            const bool on_rows = pick(2);
            const int op = pick(22);
            done << QString::number(op) + (on_rows ? "r" : "c");
            switch (op) {
            case 0:
                on_rows ? view->insertRows(pick(3), pick(2)) : view->insertCols(pick(3), pick(2));
                break;
            case 1:
                on_rows ? view->removeRows() : view->removeCols();
                break;
            case 2:
                on_rows ? view->moveRowsRelative(pick(2) ? 1 : -1)
                        : view->moveColsRelative(pick(2) ? 1 : -1);
                break;
            case 3:
                on_rows ? view->moveRowsAbove(pick(rows + 3))
                        : view->moveColsLeftOf(pick(cols + 3));
                break;
            case 4:
                on_rows ? view->duplicateRows(1 + pick(2)) : view->duplicateCols(1 + pick(2));
                break;
            case 5:
                view->transposeTable();
                break;
            case 6:
                view->insertCellsMoveRest(on_rows);
                break;
            case 7:
                view->removeSelectedCellsMoveRest(on_rows);
                break;
            case 8:
                view->removeSelectedCellsAndRestOfLines(on_rows);
                break;
            case 9:
                view->transposeSelectedCells();
                break;
            case 10:
                view->hideSelected(on_rows);
                break;
            case 11:
                pick(2) ? view->hideAllButSelected(on_rows) : view->hideEmpty(on_rows);
                break;
            case 12:
                pick(2) ? view->showHiddenInSelection(on_rows) : view->showEmpty(on_rows);
                break;
            case 13:
                view->removeEmpty(on_rows, pick(2));
                break;
            case 14:
                view->removeDuplicates(on_rows, pick(2));
                break;
            case 15:
                view->removeAllFilteredOutAndHiddenData();
                break;
            case 16:
                view->removeExtraneousRowsAndColumns();
                break;
            case 17: {
                SplitRule rule;
                rule.by_delimiter = pick(2);
                rule.delimiter = pick(2) ? QStringLiteral(" ") : QString();
                rule.indexes = {1, -1};
                view->splitCells(on_rows, rule, pick(2));
                break;
            }
            case 18:
                view->showAllHidden(on_rows);
                break;
            case 19: {
                const char* const kFilters[] = {"a", "!a", "*", "", "#a|1", "<5"};
                const int index = pick(on_rows ? rows + 2 : cols + 2);
                FilterData f(on_rows ? FilterLine::forRow(index) : FilterLine::forColumn(index),
                             kFilters[pick(6)]);
                view->addFilter(f);
                break;
            }
            case 20:
                pick(2) ? view->removeAllFilters() : view->refreshFilters();
                break;
            default:
                view->hideSelected(!on_rows);
                break;
            }
            // Each step alone undoes and redoes exactly, too.
            if (view->undoStack()->count() > depth) {
                const QByteArray after = saved(*view);
                view->commandUndo();
                QVERIFY2(saved(*view) == step_before, qPrintable(done.join(' ')));
                QVERIFY2(m.rawHiddenRows() == hidden_before_rows &&
                             m.rawHiddenCols() == hidden_before_cols,
                         qPrintable(done.join(' ')));
                view->commandRedo();
                QVERIFY2(saved(*view) == after, qPrintable(done.join(' ')));
            }
        }
        const QByteArray edited = saved(*view);
        const std::vector<int> edited_rows = m.rawHiddenRows(), edited_cols = m.rawHiddenCols();
        const std::vector<FilterData> edited_filters = m.filterList();
        while (view->undoStack()->canUndo())
            view->commandUndo();
        QVERIFY2(saved(*view) == before, qPrintable(done.join(' ')));
        QVERIFY2(m.rawHiddenRows() == hidden_rows && m.rawHiddenCols() == hidden_cols,
                 qPrintable(done.join(' ')));
        QVERIFY(m.filterList().empty());
        QVERIFY(!m.tableData().isTransposed());
        while (view->undoStack()->canRedo())
            view->commandRedo();
        QVERIFY2(saved(*view) == edited, qPrintable(done.join(' ')));
        QVERIFY2(m.rawHiddenRows() == edited_rows && m.rawHiddenCols() == edited_cols,
                 qPrintable(done.join(' ')));
        QVERIFY2(m.filterList() == edited_filters, qPrintable(done.join(' ')));
    }

    // With lines hidden across both axes, each command leaves the right
    // lines hidden, the right data in the others and the model's count at
    // the visible lines plus the buffer. The reference is a list of the
    // lines' ids, each marked hidden or not, changed as the user means.
    void hiddenLinesFollowCommands_data() {
        QTest::addColumn<bool>("rows");
        QTest::addColumn<QString>("op");
        QTest::addColumn<int>("first"); // selected model lines
        QTest::addColumn<int>("last");
        QTest::addColumn<int>("arg");
        const char* const ops[] = {"insert before", "insert after", "remove",    "up",
                                   "down",          "above",        "duplicate", "hide",
                                   "show between",  "remove hidden"};
        for (bool rows : {true, false})
            for (const char* op : ops)
                for (const auto& sel : {std::pair{1, 2}, std::pair{3, 3}, std::pair{0, 4}}) {
                    for (int arg : {0, 6}) {
                        if (arg && QByteArray(op) != "above") continue;
                        QTest::newRow(qPrintable(QString("%1 %2 %3-%4 %5")
                                                     .arg(rows ? "rows" : "cols", op)
                                                     .arg(sel.first)
                                                     .arg(sel.second)
                                                     .arg(arg)))
                            << rows << QString(op) << sel.first << sel.second << arg;
                    }
                }
    }
    void hiddenLinesFollowCommands() {
        QFETCH(bool, rows);
        QFETCH(QString, op);
        QFETCH(int, first);
        QFETCH(int, last);
        QFETCH(int, arg);
        // 8 x 8, cell (r, c) "r.c"; on each axis lines 2 and 5 hidden.
        QByteArray csv;
        for (int r = 0; r < 8; ++r) {
            for (int c = 0; c < 8; ++c)
                csv += (c ? "," : "") + QByteArray::number(r) + '.' + QByteArray::number(c);
            csv += '\n';
        }
        auto view = makeView(csv);
        QVERIFY(view);
        TableModel& m = *view->model();
        m.setMinRows(1);
        m.setMinCols(1);
        m.setHiddenRows({2, 5});
        m.setHiddenCols({2, 5});
        struct Line {
            QString id;
            bool hidden;
        };
        std::vector<Line> ref;
        for (int i = 0; i < 8; ++i)
            ref.push_back({QString::number(i), i == 2 || i == 5});
        auto visible = [&] {
            std::vector<int> v;
            for (int i = 0; i < int(ref.size()); ++i)
                if (!ref[size_t(i)].hidden) v.push_back(i);
            return v;
        };
        // The line's id: its text at cross line 0, which stays shown.
        auto idOf = [&](int raw) {
            const QString text = rows ? m.tableData().rawData(raw, 0).toString()
                                      : m.tableData().rawData(0, raw).toString();
            return text.isEmpty() ? QString() : text.section('.', rows ? 0 : 1, rows ? 0 : 1);
        };
        m.setSelection({lines(rows, first, last)}, true);
        std::vector<int> vis = visible();
        std::vector<int> sel_raw;
        for (int i = first; i <= last; ++i)
            sel_raw.push_back(vis[size_t(i)]);

        if (op == "insert before" || op == "insert after") {
            const bool before = op == "insert before";
            rows ? view->insertRows(0, before) : view->insertCols(0, before);
            // One block of as many lines as the run, before or after it.
            const int at = before ? sel_raw.front() : sel_raw.back() + 1;
            ref.insert(ref.begin() + at, sel_raw.size(), Line{QString(), false});
        } else if (op == "remove") {
            rows ? view->removeRows() : view->removeCols();
            for (auto it = sel_raw.rbegin(); it != sel_raw.rend(); ++it)
                ref.erase(ref.begin() + *it);
        } else if (op == "up" || op == "down") {
            const int d = op == "up" ? -1 : 1;
            rows ? view->moveRowsRelative(d) : view->moveColsRelative(d);
            // In the visible order the neighbour crosses the block.
            if (first + d >= 0) {
                std::vector<Line> shown;
                for (int v : vis)
                    shown.push_back(ref[size_t(v)]);
                if (last + d >= int(shown.size())) shown.push_back({QString(), false});
                auto b = shown.begin();
                if (d < 0)
                    std::rotate(b + first - 1, b + first, b + last + 1);
                else
                    std::rotate(b + first, b + last + 1, b + last + 2);
                if (shown.size() > vis.size()) {
                    vis.push_back(int(ref.size()));
                    ref.push_back({QString(), false});
                }
                for (size_t i = 0; i < vis.size(); ++i)
                    ref[size_t(vis[i])] = shown[i];
            }
        } else if (op == "above") {
            rows ? view->moveRowsAbove(arg) : view->moveColsLeftOf(arg);
            std::vector<Line> shown, moved, before, after;
            for (int i = 0; i < int(vis.size()); ++i) {
                const Line& l = ref[size_t(vis[size_t(i)])];
                if (i >= first && i <= last)
                    moved.push_back(l);
                else
                    (i < arg ? before : after).push_back(l);
            }
            shown = before;
            shown.insert(shown.end(), moved.begin(), moved.end());
            shown.insert(shown.end(), after.begin(), after.end());
            for (size_t i = 0; i < vis.size(); ++i)
                ref[size_t(vis[i])] = shown[i];
        } else if (op == "duplicate") {
            rows ? view->duplicateRows(1) : view->duplicateCols(1);
            for (auto it = sel_raw.rbegin(); it != sel_raw.rend(); ++it)
                ref.insert(ref.begin() + *it + 1, Line{ref[size_t(*it)].id, false});
        } else if (op == "hide") {
            view->hideSelected(rows);
            for (int r : sel_raw)
                ref[size_t(r)].hidden = true;
        } else if (op == "show between") {
            view->showHiddenInSelection(rows);
            for (int r = sel_raw.front(); r <= sel_raw.back(); ++r)
                ref[size_t(r)].hidden = false;
        } else if (op == "remove hidden") {
            view->removeAllFilteredOutAndHiddenData();
            ref.erase(
                std::remove_if(ref.begin(), ref.end(), [](const Line& l) { return l.hidden; }),
                ref.end());
        }

        const TableData& d = m.tableData();
        QStringList got, want;
        for (int i = 0; i < (rows ? d.numRawRows() : d.numRawColumns()); ++i)
            got << idOf(i);
        for (const Line& l : ref)
            want << l.id;
        QCOMPARE(got, want);
        std::vector<int> hidden;
        for (int i = 0; i < int(ref.size()); ++i)
            if (ref[size_t(i)].hidden) hidden.push_back(i);
        QCOMPARE(rows ? m.rawHiddenRows() : m.rawHiddenCols(), hidden);
        // The other axis is untouched.
        QCOMPARE(rows ? m.rawHiddenCols() : m.rawHiddenRows(),
                 op == "remove hidden" ? std::vector<int>{} : std::vector<int>({2, 5}));
        const int shown = int(ref.size() - hidden.size());
        const int count = rows ? m.rowCount() : m.columnCount();
        const int main = rows ? m.mainCell().row : m.mainCell().col;
        QVERIFY(main < shown);
        QCOMPARE(count, shown + m.bufferRows());
        QCOMPARE(rows ? d.numModelRows() : d.numModelColumns(), shown);
    }

    // Duplicates and empties as the menu commands find them: header lines
    // excluded, hidden lines taking part, the selected-only forms comparing
    // the selected cross lines. The reference compares texts.
    void duplicatesAndEmpties_data() {
        QTest::addColumn<bool>("based_on_selected");
        QTest::addColumn<int>("selected_col");
        QTest::newRow("whole rows") << false << 0;
        QTest::newRow("first column") << true << 0;
        QTest::newRow("second column") << true << 1;
    }
    void duplicatesAndEmpties() {
        QFETCH(bool, based_on_selected);
        QFETCH(int, selected_col);
        const QStringList table = {"h,h", "a,1", "A,1", "a,2", ",", "a,1", "b,", ",", "a,2"};
        auto view = makeView(table.join('\n').toUtf8() + '\n');
        QVERIFY(view);
        TableModel& m = *view->model();
        m.setHiddenRows({5});
        Range col = Range::line(selected_col, Range::Column, Range::Model);
        col.is_main = true;
        col.main_offset = 0;
        m.setSelection({col}, true);
        std::vector<int> dups, empties;
        auto key = [&](int r) {
            const QStringList cells = table[r].split(',');
            return based_on_selected ? cells[selected_col] : table[r];
        };
        for (int r = 1; r < int(table.size()); ++r) {
            if (key(r).remove(',').isEmpty()) empties.push_back(r);
            for (int e = 1; e < r; ++e)
                if (key(e) == key(r)) {
                    dups.push_back(r);
                    break;
                }
        }
        QCOMPARE(m.findDuplicates(0, based_on_selected), dups);
        QCOMPARE(m.emptyRows(based_on_selected), empties);
        // Select Duplicate selects the later lines that are shown.
        view->selectDuplicates(true, based_on_selected);
        for (int raw : dups) {
            const int model_row = m.tableData().modelRowFromRaw(raw);
            if (model_row >= 0) QVERIFY(m.isCellSelected(model_row, 1));
        }
        // Remove Duplicate takes exactly them, and undo puts them back.
        const QByteArray before = saved(*view);
        m.setSelection({col}, true);
        view->removeDuplicates(true, based_on_selected);
        QCOMPARE(m.tableData().numRawRows(), int(table.size() - dups.size()));
        view->commandUndo();
        QCOMPARE(saved(*view), before);
        QCOMPARE(m.rawHiddenRows(), std::vector<int>{5});
    }

    void invalidCommandsMakeNoStep() {
        auto view = makeView("a,b\nc,d\n");
        QVERIFY(view);
        TableModel& m = *view->model();
        m.setSelection({lines(true, 0, 0)}, true);
        view->moveRowsRelative(-1); // the top row up
        m.setSelection({lines(false, 0, 0)}, true);
        view->moveColsRelative(-1);
        view->hideSelected(false);
        view->hideEmpty(true); // nothing empty to hide
        view->showEmpty(true); // nor to show
        view->removeDuplicates(true, false);
        view->removeEmpty(false, false);
        view->removeExtraneousRowsAndColumns();
        QCOMPARE(view->undoStack()->count(), 1);
    }

    // Transposing twice gives the table back; the hidden lines turn with it.
    void transposeTurnsHiddenLines() {
        auto view = makeView("a,b,c\nd,e,f\n");
        QVERIFY(view);
        TableModel& m = *view->model();
        m.setHiddenCols({1});
        view->transposeTable();
        QCOMPARE(m.rawHiddenRows(), std::vector<int>{1});
        QCOMPARE(m.data(m.index(1, 1)).toString(), QStringLiteral("f"));
        QCOMPARE(m.rowCount(), std::max(2 + m.bufferRows(), m.minRows()));
        view->transposeTable();
        QCOMPARE(m.rawHiddenCols(), std::vector<int>{1});
        QCOMPARE(saved(*view), QByteArray("a,b,c\nd,e,f\n"));
        view->commandUndo();
        view->commandUndo();
        QCOMPARE(m.rawHiddenCols(), std::vector<int>{1});
    }

    // Cells moved along their rows, and a split opening columns.
    void cellShifts_data() {
        QTest::addColumn<QString>("op");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("insert cells") << "insert" << QByteArray("1,,,2 x y,3\n4,5,6,,\n");
        QTest::newRow("remove cells") << "remove" << QByteArray("1,,\n4,5,6\n");
        QTest::newRow("rest of rows") << "rest" << QByteArray(",,\n4,5,6\n");
        QTest::newRow("split, opening columns") << "split" << QByteArray("1,2,x,y,3\n4,5,,,6\n");
    }
    void cellShifts() {
        QFETCH(QString, op);
        QFETCH(QByteArray, expected);
        auto view = makeView("1,2 x y,3\n4,5,6\n");
        QVERIFY(view);
        TableModel& m = *view->model();
        Range block = Range::wholeTable(Range::Model);
        block.row = block.row_end = 0;
        block.col = 1, block.col_end = 2;
        block.is_main = true, block.main_offset_row = 0, block.main_offset_col = 1;
        m.setSelection({block}, true);
        if (op == "insert") view->insertCellsMoveRest(true);
        if (op == "remove") view->removeSelectedCellsMoveRest(true);
        if (op == "rest") view->removeSelectedCellsAndRestOfLines(true);
        if (op == "split") {
            m.selectSingleCell(Range(0, 1, Range::Model));
            SplitRule rule;
            rule.delimiter = QStringLiteral(" ");
            view->splitCells(true, rule, true);
        }
        QCOMPARE(saved(*view), expected);
        view->commandUndo();
        QCOMPARE(saved(*view), QByteArray("1,2 x y,3\n4,5,6\n"));
    }
};

QTEST_MAIN(TestLines)
#include "tst_lines.moc"
