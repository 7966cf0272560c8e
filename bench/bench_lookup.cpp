// gridmere-bench lookup [SOURCE DESTINATION] [--rows N] [--runs N] [--dir D]:
// "Column Lookup" of one value column from a source table into a destination
// table, each of N rows (default 1,000,000), as the prompt chain runs it:
// the source's map (TableModel::buildLookupMap), the destination's cells
// (TableModel::lookupRanges), one ColumnLookupCommand pushed on the
// destination grid's stack (its redo), the grid's events handled; then its
// undo. Once with "Insert new columns" and once with "Overwrite existing
// columns" (unmatched rows keep their cells). Without files it writes the
// pair into D (default /tmp): source "key,name,amount" with N unique keys in
// shuffled order, destination "id,key,city" whose keys are 90% source keys
// drawn at random and 10% keys the source lacks. Every run checks a sample of
// rows after the lookup and the destination's bytes after the undo.

#include "benchgui.h"

#include "edit/commands/columnlookupcommand.h"
#include "view/lookupmap.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QUndoStack>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <numeric>
#include <random>
#include <sys/resource.h>
#include <vector>

namespace {

long long peakRss() {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return (long long)usage.ru_maxrss * 1024;
}

QByteArray sourceKey(quint32 i) {
    return "K" + QByteArray::number(i).rightJustified(8, '0');
}

// The pair of files described above; deterministic.
bool writeFiles(const QString& source, const QString& destination, int rows) {
    std::mt19937_64 rng(7);
    std::vector<quint32> order(static_cast<size_t>(rows), 0u);
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), rng);
    QFile s(source);
    if (!s.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
    QByteArray buffer = "key,name,amount\n";
    for (int i = 0; i < rows; ++i) {
        const quint32 k = order[size_t(i)];
        buffer += sourceKey(k) + ",name" + QByteArray::number(k) + "," +
                  QByteArray::number(k % 100000) + "." + QByteArray::number(10 + k % 90) + "\n";
        if (buffer.size() > (1 << 20)) {
            s.write(buffer);
            buffer.clear();
        }
    }
    s.write(buffer);
    s.close();
    QFile d(destination);
    if (!d.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
    buffer = "id,key,city\n";
    std::uniform_int_distribution<quint32> pick(0, quint32(rows) - 1);
    for (int i = 0; i < rows; ++i) {
        const quint32 k = pick(rng);
        const QByteArray key = i % 10 == 9 ? "X" + QByteArray::number(k) : sourceKey(k);
        buffer += QByteArray::number(i) + "," + key + ",city" + QByteArray::number(i % 100) + "\n";
        if (buffer.size() > (1 << 20)) {
            d.write(buffer);
            buffer.clear();
        }
    }
    d.write(buffer);
    return true;
}

// Every raw cell's bytes and quote mark, and the table's shape.
QByteArray tableDigest(const TableModel& m) {
    QCryptographicHash hash(QCryptographicHash::Sha1);
    const TableData& d = m.tableData();
    hash.addData(QByteArray::number(d.numRawRows()) + "x" + QByteArray::number(d.numRawColumns()));
    for (int c = 0; c < d.numRawColumns(); ++c) {
        const StoredCells cells = d.captureRaw(0, Range::kToEnd, c, c);
        StoredCells::Reader reader(cells);
        while (!reader.atEnd()) {
            bool quoted = false;
            hash.addData(reader.next(&quoted));
            hash.addData(quoted ? QByteArrayView("\1\0", 2) : QByteArrayView("\0\0", 2));
        }
    }
    return hash.result();
}

std::unique_ptr<TableView> openView(const QString& path, bool shown) {
    auto view = std::make_unique<TableView>();
    view->resize(1600, 1000);
    if (shown) view->show();
    view->model()->load(path, false);
    QApplication::processEvents();
    return view;
}

} // namespace

int benchLookup(const QStringList& args) {
    QStringList rest = args;
    int rows = 1000000, runs = 5;
    QString dir = QStringLiteral("/tmp");
    auto take = [&rest](const char* name, QString& value) {
        if (const qsizetype at = rest.indexOf(name); at >= 0 && at + 1 < rest.size()) {
            value = rest[at + 1];
            rest.remove(at, 2);
        }
    };
    QString rows_text, runs_text;
    take("--rows", rows_text);
    take("--runs", runs_text);
    take("--dir", dir);
    if (!rows_text.isEmpty()) rows = std::max(rows_text.toInt(), 1);
    if (!runs_text.isEmpty()) runs = std::max(runs_text.toInt(), 1);
    QString source_path, destination_path;
    if (rest.size() == 2) {
        source_path = rest[0];
        destination_path = rest[1];
    } else if (rest.isEmpty()) {
        source_path = dir + QStringLiteral("/lookup_source_%1.csv").arg(rows);
        destination_path = dir + QStringLiteral("/lookup_destination_%1.csv").arg(rows);
        if (!QFileInfo::exists(source_path) || !QFileInfo::exists(destination_path)) {
            if (!writeFiles(source_path, destination_path, rows)) {
                std::fprintf(stderr, "cannot write into %s\n", qPrintable(dir));
                return 1;
            }
        }
    } else {
        std::fprintf(stderr, "usage: gridmere-bench lookup [SOURCE DESTINATION] [--rows N] "
                             "[--runs N] [--dir D]\n");
        return 2;
    }
    // The files' layout: the key in source column 0, the value ("name") in
    // column 1; the destination's key in column 1.
    const int source_key = 0, source_value = 1, destination_key = 1;

    QElapsedTimer load_timer;
    load_timer.start();
    auto source = openView(source_path, false);
    auto destination = openView(destination_path, true);
    const double load_s = seconds(load_timer);
    TableModel& from = *source->model();
    TableModel& to = *destination->model();
    if (from.tableData().numRawRows() < 2 || to.tableData().numRawRows() < 2) {
        std::fprintf(stderr, "cannot read the files\n");
        return 1;
    }
    const QByteArray before = tableDigest(to);
    // The expected value of a few destination rows, read the slow way.
    std::vector<std::pair<int, QString>> sample;
    {
        QHash<QString, QString> names;
        for (int r = 1; r < from.tableData().numRawRows(); ++r)
            names.insert(from.tableData().rawData(r, source_key).toString(),
                         from.tableData().rawData(r, source_value).toString());
        std::mt19937 rng(3);
        std::uniform_int_distribution<int> pick(1, to.tableData().numRawRows() - 1);
        for (int i = 0; i < 1000; ++i) {
            const int r = pick(rng);
            sample.emplace_back(r,
                                names.value(to.tableData().rawData(r, destination_key).toString()));
        }
    }

    for (const bool insert : {true, false}) {
        std::vector<double> times, undo_times, map_times, range_times, push_times;
        bool ok = true;
        for (int i = 0; i < runs; ++i) {
            QElapsedTimer t;
            t.start();
            const LookupMap map =
                from.buildLookupMap(source_key, {source_value}, from.numHeaderRows());
            map_times.push_back(seconds(t));
            QElapsedTimer part;
            part.start();
            // Overwriting, the values go into the column after the key.
            RangeVector cells;
            to.lookupRanges(cells, map, destination_key, destination_key + 1, QString(),
                            to.numHeaderRows(), insert);
            range_times.push_back(seconds(part));
            part.restart();
            destination->pushCommand(new ColumnLookupCommand(&to, std::move(cells),
                                                             to.selectionRanges(), insert, false));
            QApplication::processEvents();
            push_times.push_back(seconds(part));
            times.push_back(seconds(t));
            ok = ok && destination->undoStack()->count() == 1;
            for (const auto& [r, expected] : sample) {
                const QString got = to.tableData().rawData(r, destination_key + 1).toString();
                // Overwriting, an unmatched row keeps its city.
                const QString want = expected.isEmpty() && !insert
                                         ? QStringLiteral("city%1").arg((r - 1) % 100)
                                         : expected;
                ok = ok && got == want;
            }
            t.restart();
            destination->commandUndo();
            QApplication::processEvents();
            undo_times.push_back(seconds(t));
            destination->undoStack()->clear();
            ok = ok && tableDigest(to) == before;
        }
        const Spread s = spread(times), u = spread(undo_times), mp = spread(map_times),
                     rg = spread(range_times), ps = spread(push_times);
        std::printf("op=lookup kind=%s source_rows=%d destination_rows=%d runs=%d "
                    "load_seconds=%.2f seconds_median=%.3f seconds_min=%.3f seconds_max=%.3f "
                    "map_median=%.3f ranges_median=%.3f command_median=%.3f "
                    "undo_seconds_median=%.3f undo_seconds_min=%.3f undo_seconds_max=%.3f "
                    "check=%s peak_rss_bytes=%lld\n",
                    insert ? "insert" : "overwrite", from.tableData().numRawRows() - 1,
                    to.tableData().numRawRows() - 1, runs, load_s, s.median, s.min, s.max,
                    mp.median, rg.median, ps.median, u.median, u.min, u.max, ok ? "ok" : "FAILED",
                    peakRss());
        std::fflush(stdout);
    }
    return 0;
}
