// gridmere-bench sortview FILE [--column C] [--runs N] [--descending] [--read-only]:
// a sort as a user makes it. The file loads into a grid as the program loads
// it (on its thread), the main cell goes to column C, and "Sort Selected
// Column" runs through the view, the command and the model's worker, with
// the progress dialog the window shows; then its undo. Each is timed to its
// end; the order is checked once against the comparator and the undo against
// cells noted before.

#include "benchgui.h"

#include "edit/sortcompare.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/progressdialog.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QRandomGenerator>
#include <QUndoStack>

#include <algorithm>
#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

namespace {

long long peakRss() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<long long>(usage.ru_maxrss) * 1024;
}

long long currentRss() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly)) return -1;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toLongLong() * sysconf(_SC_PAGESIZE) : -1;
}

} // namespace

int benchSortView(const QStringList& args) {
    QStringList rest = args;
    int column = 0;
    int runs = 5;
    auto take = [&rest](const QString& name, int& value) {
        const qsizetype at = rest.indexOf(name);
        if (at < 0 || at + 1 >= rest.size()) return;
        value = rest[at + 1].toInt();
        rest.remove(at, 2);
    };
    take(QStringLiteral("--column"), column);
    take(QStringLiteral("--runs"), runs);
    const bool read_only = rest.removeAll(QStringLiteral("--read-only")) > 0;
    const int order = rest.removeAll(QStringLiteral("--descending")) > 0 ? 1 : 0;
    if (rest.size() != 1 || runs < 1) {
        std::fprintf(stderr, "usage: gridmere-bench sortview FILE [--column C] [--runs N] "
                             "[--descending] [--read-only]\n");
        return 2;
    }

    TableView view(read_only);
    view.resize(1600, 1000);
    view.show();
    TableModel* model = view.model();
    QElapsedTimer t;
    t.start();
    {
        QEventLoop loop;
        QObject::connect(model, &TableModel::loadFinishedSignal, &loop, &QEventLoop::quit);
        QObject::connect(model, &TableModel::loadFailedSignal, &loop, &QEventLoop::quit);
        model->load(rest[0], true);
        if (model->tableData().isLoading()) loop.exec();
    }
    const TableData& data = model->tableData();
    // The grid takes its rows in steps after the load; the sort waits for
    // them, as a user would, and the memory before it counts them.
    while (model->rowCount() < data.numModelRows())
        QApplication::processEvents();
    QApplication::processEvents();
    const double load_s = seconds(t);
    const int rows = data.numRawRows();
    if (rows == 0 || column >= data.numRawColumns()) {
        std::fprintf(stderr, "no column %d in %s\n", column, qPrintable(rest[0]));
        return 1;
    }
    const int first = std::min(model->numHeaderRows(), rows);
    model->selectSingleCell(Range(first, column, Range::Model));

    // Rows noted before the first sort, to find them again after its undo.
    QRandomGenerator random(7);
    std::vector<std::pair<int, QStringList>> noted;
    for (int k = 0; k < 200; ++k) {
        const int r = random.bounded(rows);
        QStringList line;
        for (int c = 0; c < data.numRawColumns(); ++c)
            line << data.rawData(r, c).toString();
        noted.emplace_back(r, line);
    }

    int reports = 0;
    int shown_values = 0;
    QObject::connect(model, &TableModel::updateProgressSignal, model, [&reports] { ++reports; });
    ProgressDialog::setAutoCancel([&shown_values](const ProgressDialog& dialog) {
        if (dialog.isVisible()) ++shown_values;
        return false;
    });

    const long long rss_before = currentRss();
    std::vector<double> sort_s, undo_s;
    bool in_order = true, restored = true;
    for (int run = 0; run < runs; ++run) {
        const int steps = view.undoStack()->index();
        t.restart();
        view.sortSelectedColumn(order);
        QApplication::processEvents();
        sort_s.push_back(seconds(t));
        if (view.undoStack()->index() != steps + 1) {
            std::fprintf(stderr, "the sort made no undo step\n");
            return 1;
        }
        if (run == 0) {
            QString previous = data.rawData(first, column).toString();
            for (int r = first + 1; r < rows && in_order; ++r) {
                const QString key = data.rawData(r, column).toString();
                in_order = !compareForSort(key, previous, order == 1);
                previous = key;
            }
        }
        t.restart();
        view.commandUndo();
        QApplication::processEvents();
        undo_s.push_back(seconds(t));
        if (run == 0) {
            for (const auto& entry : noted) {
                QStringList line;
                for (int c = 0; c < data.numRawColumns(); ++c)
                    line << data.rawData(entry.first, c).toString();
                restored = restored && line == entry.second;
            }
        }
    }
    ProgressDialog::setAutoCancel({});

    const Spread sort = spread(sort_s);
    const Spread undo = spread(undo_s);
    std::printf("op=sortview rows=%d cols=%d column=%d read_only=%d runs=%d load_seconds=%.2f "
                "sort_median_s=%.3f sort_min_s=%.3f sort_max_s=%.3f undo_median_s=%.3f "
                "undo_min_s=%.3f undo_max_s=%.3f progress_reports=%d dialog_values=%d "
                "in_order=%d restored=%d rss_before_sort=%lld peak_rss_bytes=%lld\n",
                rows, data.numRawColumns(), column, read_only ? 1 : 0, runs, load_s, sort.median,
                sort.min, sort.max, undo.median, undo.min, undo.max, reports, shown_values,
                in_order ? 1 : 0, restored ? 1 : 0, rss_before, peakRss());
    return in_order && restored ? 0 : 1;
}
