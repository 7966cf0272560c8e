// gridmere-bench rows FILE [--runs N]: the row and column commands on a
// loaded file, each pushed on the grid's undo stack as a menu command does
// and then undone, N times: one row and 1,000 rows inserted in the middle,
// 1,000 rows removed there, a 1,000-row block moved up one and to the top,
// a column inserted and removed, the first 100,000 rows transposed, and the
// duplicates removed from the file with every tenth row repeated. One line
// per operation with the median and range of the command and of its undo.

#include "benchgui.h"

#include "data/editabledatacontainer.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QUndoStack>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>
#include <sys/resource.h>
#include <vector>

namespace {

long long peakRss() {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return (long long)usage.ru_maxrss * 1024;
}

struct Figures {
    std::vector<double> ms;
    std::vector<double> undo_ms;
};

void printStats(const char* op, const TableModel& m, const Figures& f, const char* check) {
    const Spread run = spread(f.ms), undo = spread(f.undo_ms);
    std::printf("op=rows-%s rows=%d cols=%d runs=%d median_ms=%.1f min_ms=%.1f max_ms=%.1f "
                "undo_median_ms=%.1f undo_min_ms=%.1f undo_max_ms=%.1f check=%s "
                "peak_rss_bytes=%lld\n",
                op, m.tableData().numRawRows(), m.tableData().numRawColumns(), int(f.ms.size()),
                run.median, run.min, run.max, undo.median, undo.min, undo.max, check, peakRss());
    std::fflush(stdout);
}

// Runs `select` then `command` (timed, with the events it posts), checks,
// undoes (timed), checks again; `runs` times.
Figures measure(TableView& view, int runs, const std::function<void()>& select,
                const std::function<void()>& command, const std::function<bool()>& done,
                const std::function<bool()>& undone, bool* ok) {
    Figures f;
    for (int i = 0; i < runs; ++i) {
        select();
        QApplication::processEvents();
        const int depth = view.undoStack()->index();
        QElapsedTimer t;
        t.start();
        command();
        QApplication::processEvents();
        f.ms.push_back(milliseconds(t));
        *ok = *ok && view.undoStack()->index() == depth + 1 && done();
        t.restart();
        view.commandUndo();
        QApplication::processEvents();
        f.undo_ms.push_back(milliseconds(t));
        *ok = *ok && undone();
    }
    return f;
}

Range block(int first_row, int last_row) {
    Range r = Range::wholeTable(Range::Model);
    r.row = first_row;
    r.row_end = last_row;
    r.is_main = true;
    r.main_offset_row = first_row;
    r.main_offset_col = 0;
    return r;
}

std::unique_ptr<TableView> openView(const QString& path) {
    auto view = std::make_unique<TableView>();
    view->model()->setLineEnding(UnixLineEnding);
    view->resize(1600, 1000);
    view->show();
    view->model()->load(path, false);
    QApplication::processEvents();
    return view;
}

// The table's rows as the file would hold them, every `every`-th one twice.
bool writeWithRepeats(const TableModel& m, const QString& path, int every, int* repeats) {
    const auto* store = static_cast<const EditableDataContainer*>(m.tableData().dataContainer());
    QFile out(path);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
    QByteArray line;
    *repeats = 0;
    for (int r = 0; r < store->rowCount(); ++r) {
        store->rowToBytes(line, r, All, {}); // ends in the store's line ending
        out.write(line);
        if (r > 0 && r % every == 0) {
            out.write(line);
            ++*repeats;
        }
    }
    return true;
}

} // namespace

int benchRows(const QStringList& args) {
    QStringList rest = args;
    int runs = 5;
    if (const qsizetype at = rest.indexOf("--runs"); at >= 0 && at + 1 < rest.size()) {
        runs = std::max(1, rest[at + 1].toInt());
        rest.remove(at, 2);
    }
    QString only;
    if (const qsizetype at = rest.indexOf("--only"); at >= 0 && at + 1 < rest.size()) {
        only = rest[at + 1];
        rest.remove(at, 2);
    }
    auto want = [&only](const char* name) { return only.isEmpty() || only == QLatin1String(name); };
    if (rest.size() != 1) {
        std::fprintf(stderr, "usage: gridmere-bench rows FILE [--runs N] [--only NAME]\n");
        return 2;
    }
    const QString file = rest[0];
    bool all_ok = true;
    {
        auto view = openView(file);
        TableModel& m = *view->model();
        const TableData& d = m.tableData();
        const int rows = d.numRawRows(), cols = d.numRawColumns();
        if (rows < 4000) {
            std::fprintf(stderr, "rows: %s has too few rows\n", qPrintable(file));
            return 1;
        }
        const int mid = rows / 2;
        const QString marker = d.rawData(mid, 0).toString();
        auto same = [&] {
            return d.numRawRows() == rows && d.rawData(mid, 0).toString() == marker;
        };
        auto cell = [&](int r, int c) { m.selectSingleCell(Range(r, c, Range::Model)); };
        bool ok = true;

        Figures f;
        if (want("insert-1")) {
            f = measure(
                *view, runs, [&] { cell(mid, 0); }, [&] { view->insertRows(1, true); },
                [&] { return d.numRawRows() == rows + 1 && d.rawData(mid + 1, 0) == marker; }, same,
                &ok);
            printStats("insert-1", m, f, ok ? "ok" : "FAILED");
        }
        all_ok = all_ok && ok;

        ok = true;
        if (want("insert-1000")) {
            f = measure(
                *view, runs, [&] { cell(mid, 0); }, [&] { view->insertRows(1000, true); },
                [&] { return d.numRawRows() == rows + 1000 && d.rawData(mid + 1000, 0) == marker; },
                same, &ok);
            printStats("insert-1000", m, f, ok ? "ok" : "FAILED");
        }
        all_ok = all_ok && ok;

        ok = true;
        const QString after_block = d.rawData(mid + 1000, 0).toString();
        if (want("remove-1000")) {
            f = measure(
                *view, runs, [&] { m.setSelection({block(mid, mid + 999)}, true); },
                [&] { view->removeRows(); },
                [&] { return d.numRawRows() == rows - 1000 && d.rawData(mid, 0) == after_block; },
                same, &ok);
            printStats("remove-1000", m, f, ok ? "ok" : "FAILED");
        }
        all_ok = all_ok && ok;

        ok = true;
        if (want("move-1000-up-1")) {
            f = measure(
                *view, runs, [&] { m.setSelection({block(mid, mid + 999)}, true); },
                [&] { view->moveRowsRelative(-1); },
                [&] { return d.rawData(mid - 1, 0) == marker; }, same, &ok);
            printStats("move-1000-up-1", m, f, ok ? "ok" : "FAILED");
        }
        all_ok = all_ok && ok;

        ok = true;
        if (want("move-1000-to-top")) {
            f = measure(
                *view, runs, [&] { m.setSelection({block(mid, mid + 999)}, true); },
                [&] { view->moveRowsAbove(1); }, [&] { return d.rawData(1, 0) == marker; }, same,
                &ok);
            printStats("move-1000-to-top", m, f, ok ? "ok" : "FAILED");
        }
        all_ok = all_ok && ok;

        ok = true;
        const QString c5 = d.rawData(mid, 5).toString();
        auto columns_same = [&] {
            return d.numRawColumns() == cols && d.rawData(mid, 5).toString() == c5;
        };
        if (want("insert-column")) {
            f = measure(
                *view, runs, [&] { cell(0, 5); }, [&] { view->insertCols(1, true); },
                [&] { return d.numRawColumns() == cols + 1 && d.rawData(mid, 6) == c5; },
                columns_same, &ok);
            printStats("insert-column", m, f, ok ? "ok" : "FAILED");
        }
        all_ok = all_ok && ok;

        ok = true;
        const QString c6 = d.rawData(mid, 6).toString();
        if (want("remove-column")) {
            f = measure(
                *view, runs,
                [&] {
                    Range c = Range::line(5, Range::Column, Range::Model);
                    c.is_main = true;
                    c.main_offset = 0;
                    m.setSelection({c}, true);
                },
                [&] { view->removeCols(); },
                [&] { return d.numRawColumns() == cols - 1 && d.rawData(mid, 5) == c6; },
                columns_same, &ok);
            printStats("remove-column", m, f, ok ? "ok" : "FAILED");
        }
        all_ok = all_ok && ok;

        // A file of the first 100,000 rows, and one with every tenth row
        // repeated, made from this table so that their quoting is right.
        if (!want("transpose-100k") && !want("remove-duplicates")) return all_ok ? 0 : 1;
        int repeats = 0;
        const QString dup_file = file + ".repeats.csv";
        const bool written = writeWithRepeats(m, dup_file, 10, &repeats);
        QFile small(file + ".100k.csv");
        if (written && small.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            const auto* store = static_cast<const EditableDataContainer*>(d.dataContainer());
            QByteArray line;
            for (int r = 0; r < std::min(rows, 100000); ++r) {
                store->rowToBytes(line, r, All, {});
                small.write(line);
            }
            small.close();
        }
        view.reset();

        if (want("transpose-100k")) {
            auto tview = openView(small.fileName());
            TableModel& tm = *tview->model();
            const int trows = tm.tableData().numRawRows();
            ok = true;
            f = measure(
                *tview, runs, [&] { tm.selectSingleCell(Range(0, 0, Range::Model)); },
                [&] { tview->transposeTable(); },
                [&] { return tm.tableData().numRawColumns() == trows; },
                [&] { return tm.tableData().numRawRows() == trows; }, &ok);
            printStats("transpose-100k", tm, f, ok ? "ok" : "FAILED");
            all_ok = all_ok && ok;
        }
        QFile::remove(small.fileName());

        if (want("remove-duplicates")) {
            auto dview = openView(dup_file);
            TableModel& dm = *dview->model();
            const int drows = dm.tableData().numRawRows();
            ok = true;
            f = measure(
                *dview, std::min(runs, 3), [&] { dm.selectSingleCell(Range(0, 0, Range::Model)); },
                [&] { dview->removeDuplicates(true, false); },
                [&] { return dm.tableData().numRawRows() == drows - repeats; },
                [&] { return dm.tableData().numRawRows() == drows; }, &ok);
            printStats("remove-duplicates", dm, f, ok ? "ok" : "FAILED");
            all_ok = all_ok && ok;
        }
        QFile::remove(dup_file);
    }
    return all_ok ? 0 : 1;
}
