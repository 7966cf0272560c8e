// gridmere-bench transform FILE [--column C] [--date-column D] [--runs N]:
// "Upper Case" of one whole column and a date reformat (ISO 8601 date only to
// "dd/MM/yyyy") of another, each through the grid as a user runs them (the
// column selected, the command, one undo step), then its undo. Every run
// checks that the undo gave back the column's bytes.

#include "benchgui.h"

#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QUndoStack>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

QByteArray columnDigest(const TableModel& m, int col) {
    QCryptographicHash hash(QCryptographicHash::Sha1);
    const StoredCells cells = m.tableData().captureRaw(0, Range::kToEnd, col, col);
    StoredCells::Reader reader(cells);
    while (!reader.atEnd()) {
        bool quoted = false;
        const QByteArrayView bytes = reader.next(&quoted);
        hash.addData(bytes);
        hash.addData(quoted ? QByteArrayView("\1\0", 2) : QByteArrayView("\0\0", 2));
    }
    return hash.result();
}

} // namespace

int benchTransform(const QStringList& args) {
    QStringList rest = args;
    int column = 5, date_column = 3, runs = 5;
    auto take = [&rest](const char* name, int& value) {
        if (const qsizetype at = rest.indexOf(name); at >= 0 && at + 1 < rest.size()) {
            value = rest[at + 1].toInt();
            rest.remove(at, 2);
        }
    };
    take("--column", column);
    take("--date-column", date_column);
    take("--runs", runs);
    runs = std::max(runs, 1);
    if (rest.size() != 1) {
        std::fprintf(stderr, "usage: gridmere-bench transform FILE [--column C] [--date-column D] "
                             "[--runs N]\n");
        return 2;
    }
    TableView view(false);
    TableModel* model = view.model();
    const double load_s = loadBenchTable(*model, rest[0]);
    if (load_s < 0) return 1;
    const int rows = model->tableData().numRawRows();
    struct Case {
        const char* name;
        int col;
        std::function<void(TableView&)> act;
    };
    const std::vector<Case> cases{
        {"upper_case", column, [](TableView& v) { v.upperCase(); }},
        {"date_iso_to_custom", date_column,
         [](TableView& v) {
             v.convertDateTimeFormat(2, 0, QString(), QStringLiteral("dd/MM/yyyy"));
         }},
    };
    for (const Case& c : cases) {
        std::vector<double> times, undo_times;
        bool exact = true;
        const QByteArray before = columnDigest(*model, c.col);
        for (int i = 0; i < runs; ++i) {
            Range whole = Range::line(c.col, Range::Column, Range::Model);
            whole.is_main = true;
            whole.main_offset = 0;
            model->setMainAndSelection(Range(0, c.col, Range::Model), RangeVector{whole});
            QElapsedTimer t;
            t.start();
            c.act(view);
            times.push_back(seconds(t));
            const bool changed = view.undoStack()->count() == 1;
            t.restart();
            view.undoStack()->undo();
            undo_times.push_back(seconds(t));
            view.undoStack()->clear();
            exact = exact && changed && columnDigest(*model, c.col) == before;
        }
        const Spread s = spread(times), u = spread(undo_times);
        std::printf("op=transform kind=%s column=%d bytes=%lld rows=%d load_seconds=%.2f "
                    "seconds_median=%.3f seconds_min=%.3f seconds_max=%.3f "
                    "undo_seconds_median=%.3f undo_seconds_min=%.3f undo_seconds_max=%.3f "
                    "undo_exact=%s\n",
                    c.name, c.col, (long long)QFileInfo(rest[0]).size(), rows, load_s, s.median,
                    s.min, s.max, u.median, u.min, u.max, exact ? "yes" : "NO");
        std::fflush(stdout);
    }
    return 0;
}
