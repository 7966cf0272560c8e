#include "edit/commands/sortcommand.h"
#include "edit/sortcompare.h"
#include "testutilfiles.h"
#include "view/headerview.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/progressdialog.h"

#include <QFile>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <algorithm>
#include <map>
#include <numeric>

namespace {

using Grid = std::vector<QStringList>; // raw rows of raw cells

// Keys the comparator orders consistently (no leading zeros, no decimals
// beside digit runs), so that std::stable_sort gives a reference: ties,
// case pairs, numbers, digit runs inside words, a leading blank, empties.
const QStringList kKeys = {"b",  "B",     "a10", "a2", "10",   "2",     "",       "apple",
                           " b", "Apple", "9",   "a2", "zeta", "item7", "item12", "Zeta"};

Grid makeGrid(int rows, int cols) {
    Grid grid;
    for (int r = 0; r < rows; ++r) {
        QStringList line;
        for (int c = 0; c < cols; ++c)
            line << kKeys[(r * 7 + c * 3) % kKeys.size()];
        grid.push_back(line);
    }
    return grid;
}

QByteArray csvOf(const Grid& grid) {
    QByteArray bytes;
    for (const QStringList& line : grid)
        bytes += line.join(',').toUtf8() + '\n';
    return bytes;
}

// The grid after a sort by one line, as the stable sort with the one
// comparator makes it: `order` comes back as the permutation.
Grid sorted(const Grid& grid, int axis, int key, int descending, int first, bool case_sensitive,
            std::vector<int>& order) {
    const int n = axis == 0 ? int(grid.size()) : int(grid[0].size());
    QStringList keys;
    for (int i = 0; i < n; ++i) {
        const QString k = axis == 0 ? grid[size_t(i)][key] : grid[size_t(key)][i];
        keys << (case_sensitive ? k : k.toLower());
    }
    order.resize(size_t(n));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin() + first, order.end(), [&](int a, int b) {
        return compareForSort(keys[a], keys[b], descending == 1);
    });
    Grid out = grid;
    for (int i = 0; i < n; ++i) {
        if (axis == 0)
            out[size_t(i)] = grid[size_t(order[size_t(i)])];
        else
            for (size_t r = 0; r < grid.size(); ++r)
                out[r][i] = grid[r][order[size_t(i)]];
    }
    return out;
}

std::vector<int> movedHidden(const std::vector<int>& hidden, const std::vector<int>& order) {
    std::vector<int> out;
    for (int i = 0; i < int(order.size()); ++i)
        if (std::count(hidden.begin(), hidden.end(), order[size_t(i)])) out.push_back(i);
    return out;
}

} // namespace

// Sorts by a column or a row through SortCommand, on both stores, against a
// reference made here; undo puts back every cell, the hidden lines, the
// arrows and the file.
class TestSortCommand : public QObject {
    Q_OBJECT

    ScratchFiles files;
    QByteArray savedBytes(TableModel& m) { return files.saved(m); }
    static Grid rawGrid(const TableModel& m) {
        const TableData& d = m.tableData();
        Grid grid;
        for (int r = 0; r < d.numRawRows(); ++r) {
            QStringList line;
            for (int c = 0; c < d.numRawColumns(); ++c)
                line << d.rawData(r, c).toString();
            grid.push_back(line);
        }
        return grid;
    }
    static QString show(const Grid& grid) {
        QStringList lines;
        for (const QStringList& line : grid)
            lines << line.join('|');
        return lines.join(" / ");
    }
    static std::vector<int> hiddenOf(const TableModel& m, int axis) {
        return axis == 0 ? m.tableData().hiddenRows() : m.tableData().hiddenColumns();
    }

private slots:
    void initTestCase() { QVERIFY(files.isValid()); }

    void sortAndUndo_data() {
        QTest::addColumn<bool>("read_only");
        QTest::addColumn<int>("axis");      // 0: rows by a column, 1: columns by a row
        QTest::addColumn<int>("first_key"); // raw index of the first sort's key line
        QTest::addColumn<int>("second_key");
        QTest::addColumn<int>("order"); // of the first sort; the second runs the other way
        QTest::addColumn<int>("headers");
        QTest::addColumn<std::vector<int>>("hidden");
        QTest::addColumn<bool>("case_sensitive");
        QTest::newRow("rows, ascending")
            << false << 0 << 1 << 2 << 0 << 1 << std::vector<int>{} << true;
        QTest::newRow("rows, descending, hidden rows")
            << false << 0 << 2 << 4 << 1 << 1 << std::vector<int>{3, 7} << true;
        QTest::newRow("rows, two headers, case-insensitive")
            << false << 0 << 3 << 1 << 0 << 2 << std::vector<int>{9} << false;
        QTest::newRow("rows, a hidden row among the headers")
            << false << 0 << 0 << 5 << 0 << 1 << std::vector<int>{0, 6} << true;
        QTest::newRow("columns, hidden column")
            << false << 1 << 4 << 9 << 0 << 1 << std::vector<int>{2} << true;
        QTest::newRow("columns, no header, case-insensitive")
            << false << 1 << 0 << 3 << 1 << 0 << std::vector<int>{} << false;
        QTest::newRow("read-only rows, hidden rows")
            << true << 0 << 1 << 3 << 1 << 1 << std::vector<int>{2, 8} << true;
        QTest::newRow("read-only columns")
            << true << 1 << 5 << 2 << 0 << 1 << std::vector<int>{4} << false;
    }
    void sortAndUndo() {
        QFETCH(bool, read_only);
        QFETCH(int, axis);
        QFETCH(int, first_key);
        QFETCH(int, second_key);
        QFETCH(int, order);
        QFETCH(int, headers);
        QFETCH(std::vector<int>, hidden);
        QFETCH(bool, case_sensitive);

        const Grid original = makeGrid(12, 7);
        const QString path = files.write(csvOf(original));
        TableModel model(read_only);
        model.load(path, false);
        QCOMPARE(rawGrid(model), original);
        if (axis == 0) {
            model.setNumHeaderRows(headers);
            model.tableData().setHiddenRows(hidden);
        } else {
            model.setNumHeaderCols(headers);
            model.tableData().setHiddenColumns(hidden);
        }
        model.setCaseSensitiveSorting(case_sensitive);
        if (!read_only) model.setSaveAfterEachEdit(true);
        const SortRecord before_col{1, 0, 6}, before_row = model.rowSort();
        model.setColSort(before_col);

        // Two sorts stacked: the second reads the first's order (for a file
        // on disk, through its index map).
        QUndoStack stack;
        Grid expected = original;
        std::vector<int> expected_hidden = hidden;
        const int keys[2] = {first_key, second_key};
        const int orders[2] = {order, 1 - order};
        for (int step = 0; step < 2; ++step) {
            const int first = model.firstSortedLine(axis);
            // Header lines and hidden lines among them keep their place.
            int wanted_first = 0;
            for (int shown = 0; wanted_first < 12 && shown < headers; ++wanted_first)
                if (!std::count(expected_hidden.begin(), expected_hidden.end(), wanted_first))
                    ++shown;
            QCOMPARE(first, wanted_first);
            std::vector<int> permutation;
            expected = sorted(expected, axis, keys[step], orders[step], first, case_sensitive,
                              permutation);
            expected_hidden = movedHidden(expected_hidden, permutation);
            // The first sort as the Sort menu makes it, from the main cell.
            SortCommand* command = nullptr;
            const int key_model = axis == 0 ? model.tableData().modelColumnFromRaw(keys[step])
                                            : model.tableData().modelRowFromRaw(keys[step]);
            if (step == 0 && key_model >= 0) {
                model.selectSingleCell(axis == 0 ? Range(0, key_model, Range::Model)
                                                 : Range(key_model, 0, Range::Model));
                command =
                    new SortCommand(&model, model.selectionRanges(), true, orders[step], axis);
            } else {
                command = new SortCommand(&model, SortState{orders[step], axis, keys[step]});
            }
            QVERIFY(command->is_valid);
            QCOMPARE(command->permutation, permutation);
            stack.push(command);
            QCOMPARE(show(rawGrid(model)), show(expected));
            QCOMPARE(hiddenOf(model, axis), expected_hidden);
            const SortRecord record = axis == 0 ? model.colSort() : model.rowSort();
            QCOMPARE(record.order, orders[step]);
            QCOMPARE(record.kind, axis);
            QCOMPARE(record.index, keys[step]);
            const SortRecord other = axis == 0 ? model.rowSort() : model.colSort();
            QCOMPARE(other.order, 2);
            // The arrow sits in the key line's label, unless that line is hidden.
            const Qt::Orientation labels = axis == 0 ? Qt::Horizontal : Qt::Vertical;
            const int section = axis == 0 ? model.tableData().modelColumnFromRaw(keys[step])
                                          : model.tableData().modelRowFromRaw(keys[step]);
            if (section >= 0) {
                const QString label = model.headerData(section, labels).toString();
                QVERIFY2(label.endsWith(orders[step] == 0 ? QChar(0x2BC5) : QChar(0x2BC6)),
                         qPrintable(label));
            }
            if (!read_only) QCOMPARE(ScratchFiles::read(path), csvOf(expected));
        }

        stack.undo();
        stack.undo();
        QCOMPARE(show(rawGrid(model)), show(original));
        QCOMPARE(hiddenOf(model, axis), hidden);
        QCOMPARE(model.colSort().index, before_col.index);
        QCOMPARE(model.colSort().order, before_col.order);
        QCOMPARE(model.rowSort().order, before_row.order);
        if (!read_only) QCOMPARE(ScratchFiles::read(path), csvOf(original));
        stack.redo();
        stack.redo();
        QCOMPARE(show(rawGrid(model)), show(expected));
        QCOMPARE(hiddenOf(model, axis), expected_hidden);
    }

    // A cancel at the first report leaves the table, the file, the arrows
    // and the undo stack as they were.
    void cancelledSortChangesNothing_data() {
        QTest::addColumn<bool>("read_only");
        QTest::newRow("editable") << false;
        QTest::newRow("read-only") << true;
    }
    void cancelledSortChangesNothing() {
        QFETCH(bool, read_only);
        const Grid original = makeGrid(40, 5);
        const QString path = files.write(csvOf(original));
        TableModel model(read_only);
        model.load(path, false);
        if (!read_only) model.setSaveAfterEachEdit(true);
        QUndoStack stack;
        stack.push(new SortCommand(&model, SortState{0, 0, 1}));
        const Grid after_first = rawGrid(model);
        const QByteArray file_bytes = ScratchFiles::read(path);
        const QByteArray saved = savedBytes(model);

        QSignalSpy reports(&model, &TableModel::updateProgressSignal);
        connect(&model, &TableModel::updateProgressSignal, &model, &TableModel::cancelJob);
        auto* command = new SortCommand(&model, SortState{1, 0, 3}, nullptr, false);
        QVERIFY(reports.count() >= 1);
        QVERIFY(!command->is_valid);
        QVERIFY(command->permutation.empty());
        delete command;
        disconnect(&model, &TableModel::updateProgressSignal, &model, &TableModel::cancelJob);

        QCOMPARE(stack.count(), 1);
        QCOMPARE(rawGrid(model), after_first);
        QCOMPARE(model.colSort().index, 1);
        QCOMPARE(model.colSort().order, 0);
        QCOMPARE(ScratchFiles::read(path), file_bytes);
        QCOMPARE(savedBytes(model), saved);
        // The next sort is not cancelled by the last one's flag.
        auto* next = new SortCommand(&model, SortState{1, 0, 3}, nullptr, false);
        QVERIFY(next->is_valid);
        delete next;
    }

    // Each selected row (or column) sorts in itself, and the text at the
    // group's own number is lower-cased when case is ignored.
    void selectedCells_data() {
        QTest::addColumn<bool>("horizontally");
        QTest::addColumn<int>("order");
        QTest::addColumn<bool>("case_sensitive");
        QTest::newRow("horizontally, ascending") << true << 0 << true;
        QTest::newRow("vertically, descending") << false << 1 << true;
        QTest::newRow("horizontally, case-insensitive") << true << 0 << false;
        QTest::newRow("vertically, case-insensitive") << false << 0 << false;
    }
    void selectedCells() {
        QFETCH(bool, horizontally);
        QFETCH(int, order);
        QFETCH(bool, case_sensitive);
        const Grid original = makeGrid(8, 6);
        TableView view;
        view.model()->load(files.write(csvOf(original)), false);
        TableModel& m = *view.model();
        m.setCaseSensitiveSorting(case_sensitive);
        // A block and two cells apart, one of them on a line of the block.
        Range block(1, 1, Range::Model);
        block.kind = Range::Block;
        block.row_end = 4;
        block.col_end = 3;
        m.setMainAndSelection(Range(1, 1, Range::Model),
                              {block, Range(6, 5, Range::Model), Range(2, 5, Range::Model)});
        // Reference: the cells by line, in order along it.
        std::map<int, std::vector<std::pair<int, int>>> groups; // line -> cells (row, col)
        auto take = [&](int r, int c) { groups[horizontally ? r : c].push_back({r, c}); };
        for (int r = 1; r <= 4; ++r)
            for (int c = 1; c <= 3; ++c)
                take(r, c);
        take(2, 5);
        take(6, 5);
        Grid expected = original;
        int g = 0;
        for (auto& entry : groups) {
            std::vector<std::pair<int, int>>& cells = entry.second;
            std::sort(cells.begin(), cells.end(), [&](auto a, auto b) {
                return horizontally ? a.second < b.second : a.first < b.first;
            });
            QStringList texts;
            for (const auto& cell : cells)
                texts << original[size_t(cell.first)][cell.second];
            if (!case_sensitive && g < texts.size()) texts[g] = texts[g].toLower();
            QStringList by = texts;
            std::stable_sort(by.begin(), by.end(), [&](const QString& a, const QString& b) {
                return compareForSort(a, b, order == 1);
            });
            for (size_t k = 0; k < cells.size(); ++k)
                expected[size_t(cells[k].first)][cells[k].second] = by[qsizetype(k)];
            ++g;
        }
        view.sortSelectedCells(horizontally, order);
        QCOMPARE(show(rawGrid(m)), show(expected));
        QCOMPARE(view.undoStack()->count(), 1);
        view.commandUndo();
        QCOMPARE(show(rawGrid(m)), show(original));
    }

    // A long sort runs behind the progress dialog: its Cancel leaves the
    // table as it was and no undo step; without it the sort goes through.
    void cancelFromTheDialog() {
        QRandomGenerator random(3);
        QByteArray csv = "key,n\n";
        for (int r = 0; r < 500000; ++r)
            csv += "w" + QByteArray::number(random.bounded(1000000)) + ',' + QByteArray::number(r) +
                   '\n';
        TableView view;
        view.model()->load(files.write(csv), false);
        TableModel& m = *view.model();
        m.selectSingleCell(Range(1, 0, Range::Model));
        auto column = [&m](int c) {
            QStringList cells;
            for (int r = 0; r < m.tableData().numRawRows(); r += 997)
                cells << m.tableData().rawData(r, c).toString();
            return cells;
        };
        const QStringList before = column(1);
        int shown = 0;
        ProgressDialog::setAutoCancel([&shown](const ProgressDialog& dialog) {
            shown += dialog.isVisible();
            return dialog.isVisible();
        });
        view.sortSelectedColumn(0);
        ProgressDialog::setAutoCancel({});
        QVERIFY(shown > 0);
        QCOMPARE(view.undoStack()->count(), 0);
        QCOMPARE(column(1), before);
        QCOMPARE(m.colSort().order, 2);

        view.sortSelectedColumn(1);
        QCOMPARE(view.undoStack()->count(), 1);
        QCOMPARE(m.colSort().order, 1);
        QVERIFY(column(1) != before);
        view.commandUndo();
        QCOMPARE(column(1), before);
    }

    // Double-clicks on a label sort by its line, ascending then descending,
    // through the worker; each is one undo step.
    void labelDoubleClicks() {
        const Grid original = makeGrid(10, 4);
        TableView view;
        view.resize(600, 400);
        view.model()->load(files.write(csvOf(original)), false);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        TableModel& m = *view.model();
        HeaderView* labels = view.horizontalLabels();
        const QPoint at(labels->sectionViewportPosition(2) + labels->sectionSize(2) / 2,
                        labels->height() / 2);
        Grid expected = original;
        for (const int order : {0, 1}) {
            QTest::mouseDClick(labels->viewport(), Qt::LeftButton, Qt::NoModifier, at);
            std::vector<int> permutation;
            expected = sorted(expected, 0, 2, order, m.firstSortedLine(0), true, permutation);
            QCOMPARE(show(rawGrid(m)), show(expected));
            QCOMPARE(m.colSort().order, order);
            QCOMPARE(m.colSort().index, 2);
        }
        QCOMPARE(view.undoStack()->count(), 2);
        view.commandUndo();
        view.commandUndo();
        QCOMPARE(show(rawGrid(m)), show(original));
        QCOMPARE(m.colSort().order, 2);
    }
};

QTEST_MAIN(TestSortCommand)
#include "tst_sortcommand.moc"
