// gridmere-bench: drives the engine headless, one sub-command per measured
// operation, each printing one line of figures. See bench/README.md.

#include "benchgui.h"
#include "data/editabledatacontainer.h"
#include "data/fileparameters.h"
#include "data/readonlydatacontainer.h"
#include "data/tabledata.h"
#include "generator.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <sys/resource.h>
#include <vector>

int benchSortKeys(const QStringList& args) __attribute__((weak));

namespace {

long long peakRssBytes() {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return (long long)usage.ru_maxrss * 1024;
}

struct Options {
    QString file;
    QString out;
    char delimiter = ',';
    bool delimiter_given = false;
    EncodingType encoding = Utf8;
    ParsingStandard standard = Rfc4180;
    bool read_only = false;
};

int usage() {
    std::fprintf(stderr, "usage: gridmere-bench generate OUT --bytes N [--seed S] "
                         "[--shape mixed|numeric] [--quote minimal|all|nonnumeric] [--crlf]\n"
                         "       gridmere-bench load FILE [--delimiter D] [--encoding NAME] "
                         "[--standard NAME] [--read-only]\n"
                         "       gridmere-bench cells FILE [same options]\n"
                         "       gridmere-bench save FILE OUT [same options]\n"
                         "       gridmere-bench asyncload FILE [same options] "
                         "[--close-after-ms N]\n"
                         "       gridmere-bench readcells FILE [same options] [--count N]\n"
                         "       gridmere-bench rewrite FILE [same options] [--column C] "
                         "[--longer]\n"
                         "       gridmere-bench churn [--rows N] [--cycles K] [--columns C]\n"
                         "       gridmere-bench sort KEYFILE\n"
                         "       gridmere-bench model FILE\n"
                         "       gridmere-bench view FILE [--frames N]\n"
                         "       gridmere-bench type FILE [--column C]\n"
                         "       gridmere-bench launcher [--runs N]\n"
                         "       gridmere-bench find FILE [--word W] [--runs N]\n"
                         "       gridmere-bench transform FILE [--column C] [--date-column D] "
                         "[--runs N]\n"
                         "       gridmere-bench rows FILE [--runs N]\n"
                         "       gridmere-bench sortview FILE [--column C] [--runs N] "
                         "[--descending] [--read-only]\n"
                         "       gridmere-bench lookup [SOURCE DESTINATION] [--rows N] [--runs N] "
                         "[--dir D]\n");
    return 2;
}

bool parseOptions(const QStringList& args, int positional, Options& o) {
    QStringList pos;
    for (int i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        auto value = [&]() { return i + 1 < args.size() ? args[++i] : QString(); };
        if (a == "--delimiter") {
            QString d;
            if (!delimiterFromUserText(value(), d)) return false;
            o.delimiter = delimiterByte(d);
            o.delimiter_given = true;
        } else if (a == "--encoding") {
            o.encoding = encodingFromText(value());
            if (o.encoding == UnknownEncoding) return false;
        } else if (a == "--standard") {
            o.standard = parsingStandardFromText(value());
            if (o.standard == InvalidStandard) return false;
        } else if (a == "--read-only") {
            o.read_only = true;
        } else {
            pos << a;
        }
    }
    if (pos.size() != positional) return false;
    o.file = pos[0];
    if (positional > 1) o.out = pos[1];
    return true;
}

std::unique_ptr<AbstractDataContainer> makeContainer(const Options& o) {
    std::unique_ptr<AbstractDataContainer> c;
    if (o.read_only)
        c = std::make_unique<ReadOnlyDataContainer>();
    else
        c = std::make_unique<EditableDataContainer>();
    c->setFilepath(o.file);
    c->setEncoding(o.encoding);
    const char d = o.delimiter_given
                       ? o.delimiter
                       : delimiterByte(delimiterForExtension(QFileInfo(o.file).suffix()));
    c->setDelimiters(d, d);
    c->setParsingStandard(o.standard);
    c->setLineEnding(UnixLineEnding);
    return c;
}

void printFigures(const char* op, qint64 bytes, int rows, int cols, double seconds) {
    std::printf("op=%s bytes=%lld rows=%d cols=%d seconds=%.3f mbps=%.1f peak_rss_bytes=%lld\n", op,
                (long long)bytes, rows, cols, seconds,
                seconds > 0 ? double(bytes) / 1e6 / seconds : 0.0, peakRssBytes());
}

int commandLoad(const Options& o) {
    auto c = makeContainer(o);
    QElapsedTimer t;
    t.start();
    if (!c->loadCSV()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(o.file));
        return 1;
    }
    const double seconds = double(t.nsecsElapsed()) / 1e9;
    const auto* ro = qobject_cast<const ReadOnlyDataContainer*>(c.get());
    if (!ro) {
        printFigures("load", QFileInfo(o.file).size(), c->rowCount(), c->columnCount(), seconds);
        return 0;
    }
    // The same line, with what the index holds: both passes are in the time.
    const qint64 bytes = QFileInfo(o.file).size();
    std::printf("op=load bytes=%lld rows=%d cols=%d seconds=%.3f mbps=%.1f peak_rss_bytes=%lld "
                "index_bytes=%lld\n",
                (long long)bytes, c->rowCount(), c->columnCount(), seconds,
                seconds > 0 ? double(bytes) / 1e6 / seconds : 0.0, peakRssBytes(),
                (long long)ro->indexBytes());
    return 0;
}

// Random single-cell reads on an opened file, each timed on its own: what a
// view pays per visible cell.
int commandReadCells(QStringList args) {
    int count = 10000;
    const int at = int(args.indexOf("--count"));
    if (at >= 0) {
        if (at + 1 >= args.size()) return usage();
        count = args[at + 1].toInt();
        args.remove(at, 2);
    }
    Options o;
    if (count <= 0 || !parseOptions(args, 1, o)) return usage();
    auto c = makeContainer(o);
    if (!c->loadCSV()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(o.file));
        return 1;
    }
    const int rows = c->rowCount(), cols = c->columnCount();
    if (rows == 0 || cols == 0) return 1;
    std::vector<double> micros;
    micros.reserve(size_t(count));
    quint64 state = 0x243F6A8885A308D3ull; // fixed: the same cells on every run
    auto next = [&](quint64 n) {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return (state >> 33) % n;
    };
    QElapsedTimer t;
    for (int i = 0; i < count; ++i) {
        const int r = int(next(quint64(rows))), col = int(next(quint64(cols)));
        t.start();
        c->data(r, col);
        micros.push_back(double(t.nsecsElapsed()) / 1e3);
    }
    std::sort(micros.begin(), micros.end());
    const double median = micros[micros.size() / 2];
    const double p99 = micros[std::min(micros.size() - 1, micros.size() * 99 / 100)];
    std::printf("op=readcells reads=%d median_us=%.2f p99_us=%.2f\n", count, median, p99);
    return 0;
}

int commandCells(const Options& o) {
    auto c = makeContainer(o);
    if (!c->loadCSV()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(o.file));
        return 1;
    }
    QTextCodec* codec = codecForEncoding(o.encoding);
    QJsonArray table;
    for (int r = 0; r < c->rowCount(); ++r) {
        QJsonArray row;
        const int n = c->columnCountOfRow(r);
        for (int col = 0; col < n; ++col)
            row.append(decodeCell(c->data(r, col), o.encoding, codec));
        table.append(row);
    }
    const QByteArray json = QJsonDocument(table).toJson(QJsonDocument::Indented);
    std::fwrite(json.constData(), 1, size_t(json.size()), stdout);
    return 0;
}

int commandSave(const Options& o) {
    auto c = makeContainer(o);
    if (!c->loadCSV()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(o.file));
        return 1;
    }
    QElapsedTimer t;
    t.start();
    if (!c->saveAs(o.out, true, false, {}, {})) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(o.out));
        return 1;
    }
    const double seconds = double(t.nsecsElapsed()) / 1e9;
    printFigures("save", QFileInfo(o.out).size(), c->rowCount(), c->columnCount(), seconds);
    return 0;
}

// The threaded load a window starts: the progress reports that reach the
// event loop, or with --close-after-ms how long closing the table mid-load
// takes (the destructor cancels the loader and waits for it).
int commandAsyncLoad(QStringList args) {
    int close_after = -1;
    const int at = int(args.indexOf("--close-after-ms"));
    if (at >= 0) {
        if (at + 1 >= args.size()) return usage();
        close_after = args[at + 1].toInt();
        args.remove(at, 2);
    }
    Options o;
    if (!parseOptions(args, 1, o) || o.read_only) return usage();
    const QString delimiter = o.delimiter_given ? QString(QChar(o.delimiter))
                                                : delimiterForExtension(QFileInfo(o.file).suffix());
    const qint64 bytes = QFileInfo(o.file).size();
    auto* table = new TableData;
    int reports = 0;
    bool failed = false;
    QEventLoop loop;
    QObject::connect(table, &TableData::loadProgressUpdateSignal, [&] { ++reports; });
    QObject::connect(table, &TableData::loadFinishedSignal, &loop, &QEventLoop::quit);
    QObject::connect(table, &TableData::loadFailedSignal, [&] {
        failed = true;
        loop.quit();
    });
    QElapsedTimer t;
    t.start();
    table->load(o.file, true, false, delimiter, delimiter, o.encoding, o.standard);
    if (close_after >= 0) QTimer::singleShot(close_after, &loop, &QEventLoop::quit);
    loop.exec();
    if (failed) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(o.file));
        delete table;
        return 1;
    }
    if (close_after >= 0) {
        const bool was_loading = table->isLoading();
        QElapsedTimer close;
        close.start();
        delete table;
        std::printf("op=asyncload-close bytes=%lld after_ms=%d was_loading=%d reports=%d "
                    "close_ms=%.1f\n",
                    (long long)bytes, close_after, int(was_loading), reports,
                    double(close.nsecsElapsed()) / 1e6);
        return 0;
    }
    const double seconds = double(t.nsecsElapsed()) / 1e9;
    std::printf("op=asyncload bytes=%lld rows=%d cols=%d seconds=%.3f mbps=%.1f reports=%d "
                "peak_rss_bytes=%lld\n",
                (long long)bytes, table->numRawRows(), table->numRawColumns(), seconds,
                seconds > 0 ? double(bytes) / 1e6 / seconds : 0.0, reports, peakRssBytes());
    delete table;
    return 0;
}

int commandGenerate(const QStringList& args) {
    QString out;
    qint64 bytes = 0;
    quint64 seed = 1;
    CsvShape shape = CsvShape::Mixed;
    CsvQuoting quoting = CsvQuoting::Minimal;
    bool crlf = false;
    for (int i = 0; i < args.size(); ++i) {
        const QString next = i + 1 < args.size() ? args[i + 1] : QString();
        if (args[i] == "--bytes" && i + 1 < args.size()) {
            bytes = args[++i].toLongLong();
        } else if (args[i] == "--seed" && i + 1 < args.size()) {
            seed = args[++i].toULongLong();
        } else if (args[i] == "--shape" && (next == "mixed" || next == "numeric")) {
            shape = next == "numeric" ? CsvShape::Numeric : CsvShape::Mixed;
            ++i;
        } else if (args[i] == "--quote" &&
                   (next == "minimal" || next == "all" || next == "nonnumeric")) {
            quoting = next == "all"          ? CsvQuoting::All
                      : next == "nonnumeric" ? CsvQuoting::NonNumeric
                                             : CsvQuoting::Minimal;
            ++i;
        } else if (args[i] == "--crlf") {
            crlf = true;
        } else if (args[i].startsWith("--")) {
            return usage();
        } else {
            out = args[i];
        }
    }
    if (out.isEmpty() || bytes <= 0) return usage();
    std::FILE* f = std::fopen(QFile::encodeName(out).constData(), "wb");
    if (!f) return 1;
    const bool ok = generateCsv(f, bytes, seed, shape, quoting, crlf);
    return (std::fclose(f) == 0 && ok) ? 0 : 1;
}

long long currentRssBytes() {
    long pages = 0, resident = 0;
    if (std::FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
        std::fclose(f);
    }
    return (long long)resident * 4096;
}

// Loads the file, then rewrites one cell in every row of a column, as a
// transform or a replace over a whole column does. Same length by default
// (the cell's bytes reversed), or two bytes longer with --longer.
int commandRewrite(QStringList args) {
    int column = 0;
    bool longer = false;
    const int at = int(args.indexOf("--column"));
    if (at >= 0 && at + 1 < args.size()) {
        column = args[at + 1].toInt();
        args.remove(at, 2);
    }
    if (args.removeAll("--longer") > 0) longer = true;
    Options o;
    if (!parseOptions(args, 1, o)) return usage();
    auto c = makeContainer(o);
    auto* ed = qobject_cast<EditableDataContainer*>(c.get());
    if (!ed || !ed->loadCSV()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(o.file));
        return 1;
    }
    const long long before = currentRssBytes();
    const int rows = ed->rowCount();
    QByteArray value;
    QElapsedTimer t;
    t.start();
    for (int r = 0; r < rows; ++r) {
        const QByteArrayView old = ed->cellView(r, column);
        value.resize(old.size());
        for (qsizetype k = 0; k < old.size(); ++k)
            value[k] = old[old.size() - 1 - k];
        if (longer) value.append("+1");
        ed->setCell(r, column, value);
    }
    const double seconds = double(t.nsecsElapsed()) / 1e9;
    std::printf("op=rewrite rows=%d column=%d longer=%d seconds=%.3f ns_per_cell=%.1f "
                "rss_before=%lld rss_after=%lld peak_rss_bytes=%lld\n",
                rows, column, int(longer), seconds, rows ? seconds * 1e9 / rows : 0.0, before,
                currentRssBytes(), peakRssBytes());
    return 0;
}

// Inserts N rows of C short cells in the middle of a table and removes them
// again, K times: the peak after the last cycle should be that of the first.
int commandChurn(QStringList args) {
    int rows = 1000000, cycles = 20, columns = 10;
    for (int i = 0; i + 1 < args.size(); i += 2) {
        if (args[i] == "--rows")
            rows = args[i + 1].toInt();
        else if (args[i] == "--cycles")
            cycles = args[i + 1].toInt();
        else if (args[i] == "--columns")
            columns = args[i + 1].toInt();
        else
            return usage();
    }
    EditableDataContainer c;
    // A table to insert into: a tenth of the churned rows, kept throughout.
    const int base = std::max(rows / 10, 1);
    auto fill = [&](int from, int count) {
        for (int r = from; r < from + count; ++r) {
            CellList cells;
            for (int k = 0; k < columns; ++k)
                cells.emplace_back(QByteArrayView(QByteArray::number(r * 7 + k * 13 % 100000)));
            c.setRow(r, std::move(cells));
        }
    };
    fill(0, base);
    long long first_peak = 0;
    QElapsedTimer t;
    t.start();
    for (int k = 1; k <= cycles; ++k) {
        const int at = base / 2;
        c.insertRows(at, rows);
        fill(at, rows);
        c.removeRows(at, rows);
        if (k == 1) first_peak = peakRssBytes();
        std::printf("op=churn cycle=%d rows=%d table_rows=%d rss=%lld peak_rss_bytes=%lld\n", k,
                    rows, c.rowCount(), currentRssBytes(), peakRssBytes());
    }
    std::printf("op=churn cycles=%d seconds=%.3f first_peak=%lld last_peak=%lld growth=%.3f\n",
                cycles, double(t.nsecsElapsed()) / 1e9, first_peak, peakRssBytes(),
                first_peak ? double(peakRssBytes()) / double(first_peak) : 0.0);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && isGuiCommand(argv[1])) return benchGui(argc, argv);
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    if (args.isEmpty()) return usage();
    const QString command = args.takeFirst();
    if (command == "generate") return commandGenerate(args);
    if (command == "sort") return benchSortKeys ? benchSortKeys(args) : usage();
    Options o;
    if (command == "load" && parseOptions(args, 1, o)) return commandLoad(o);
    if (command == "cells" && parseOptions(args, 1, o)) return commandCells(o);
    if (command == "save" && parseOptions(args, 2, o)) return commandSave(o);
    if (command == "readcells") return commandReadCells(args);
    if (command == "asyncload") return commandAsyncLoad(args);
    if (command == "rewrite") return commandRewrite(args);
    if (command == "churn") return commandChurn(args);
    return usage();
}
