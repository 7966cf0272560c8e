// The read-only store on arbitrary bytes. The first three bytes choose the
// dialect (delimiter; quoting standard and encoding; chunk size), the rest is
// the file. After the two passes the index must describe the rectangle of the
// editable reader's counts; cells picked by the input are read and compared
// with the editable reading, which they equal up to the quote rules of this
// mode; a few lines are read whole and written. For width 1 the fast scanner
// must report exactly the boundaries of the unit machine.
#include "data/csvboundarymachine.h"
#include "data/editabledatacontainer.h"
#include "data/fileparameters.h"
#include "data/narrowboundaryscanner.h"
#include "data/readonlydatacontainer.h"
#include "fuzzinput.h"

#include <QByteArrayView>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_readonly: %s\n", what);
        std::abort();
    }
}

// One file per process, replaced (not truncated) for every input: the
// container under test holds the previous one open until it is destroyed.
const QByteArray& filePath() {
    static const QByteArray path =
        QByteArray("/tmp/fuzz_readonly.") + QByteArray::number(qint64(getpid())) + ".csv";
    return path;
}

struct Recorder {
    std::vector<qint64> events;
    bool lineStart(qint64 u) { return events.insert(events.end(), {1, u}), true; }
    bool fieldStart(qint64 u, qint64 c) { return events.insert(events.end(), {2, u, c}), true; }
    bool fieldEnd(qint64 u) { return events.insert(events.end(), {3, u}), true; }
    bool lineEnd(qint64 u, qint64 n) { return events.insert(events.end(), {4, u, n}), true; }
};

template <bool Delimited>
void compareScanners(QByteArrayView body, char delimiter, bool quotes, qint64 piece) {
    Recorder slow, fast;
    CsvBoundaryMachine<1, false, Delimited, Recorder> machine(slow, delimiter, quotes);
    machine.feed(body.data(), body.size(), 0);
    machine.finish(body.size());
    NarrowBoundaryScanner<Delimited, Recorder> scanner(fast, delimiter, quotes);
    for (qint64 at = 0; at < body.size(); at += piece)
        scanner.feed(body.data() + at, std::min(piece, body.size() - at), at);
    scanner.finish(body.size());
    check(fast.events == slow.events, "fast scanner differs from the unit machine");
}

QByteArray quoteUnit(int w, bool be) {
    QByteArray q(w, '\0');
    q[be ? w - 1 : 0] = '"';
    return q;
}

// The field without its first and last unit, doubled quotes collapsed.
QByteArray stripped(QByteArrayView field, int w, bool be) {
    const QByteArray quote = quoteUnit(w, be);
    const qsizetype n = field.size() / w;
    auto isQuote = [&](qsizetype k) { return field.sliced(k * w, w) == quote; };
    QByteArray out;
    for (qsizetype k = 1; k < n - 1; ++k) {
        out.append(field.sliced(k * w, w));
        if (isQuote(k) && k + 1 < n - 1 && isQuote(k + 1)) ++k;
    }
    return out;
}

bool enclosedInQuotes(QByteArrayView field, int w, bool be) {
    const QByteArray quote = quoteUnit(w, be);
    return field.size() / w >= 2 && field.first(w) == quote && field.last(w) == quote;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzDialect d;
    if (!readFuzzDialect(data, size, d)) return 0;
    const auto [delimiter, standard, encoding, chunk] = d;
    const QByteArrayView file(reinterpret_cast<const char*>(data + 3), qsizetype(size - 3));
    if (!replaceFile(filePath().constData(), data + 3, size - 3)) return 0;
    const int w = encodingWidth(encoding);
    const bool be = encodingIsBigEndian(encoding);
    const bool quotes = standard != DelimiterOnly;

    if (w == 1) {
        const QByteArrayView body = file.sliced(bomLengthAtStart(file, encoding));
        const qint64 piece = 1 + chunk % 97;
        if (delimiter == 0)
            compareScanners<false>(body, 0, false, piece);
        else if (NarrowBoundaryScanner<true, Recorder>::supportsDelimiter(delimiter))
            compareScanners<true>(body, delimiter, quotes, piece);
    }

    ReadOnlyDataContainer ro;
    EditableDataContainer ed;
    for (AbstractDataContainer* c :
         {static_cast<AbstractDataContainer*>(&ro), static_cast<AbstractDataContainer*>(&ed)}) {
        c->setFilepath(QString::fromLocal8Bit(filePath()));
        c->setDelimiters(delimiter, delimiter);
        c->setParsingStandard(standard);
        c->setEncoding(encoding);
        c->setLineEnding(LineEndingType(data[0] % 5));
        check(c->loadCSV(), "load of an existing file failed");
    }
    if (chunk > 0) ro.setChunkLimit(chunk);
    check(ro.loadCSV(), "second load failed");
    check(ro.rowCount() == ed.rowCount(), "row count differs from the editable reader");
    check(ro.columnCount() == ed.columnCount(), "column count differs from the editable reader");

    // Entry k stands for cell 25k of the rectangle, in file order.
    const auto& index = ro.cellIndex();
    const qint64 rows = ro.rowCount(), columns = ro.columnCount();
    check(qint64(index.size()) == (rows * columns + 24) / 25, "index size");
    for (size_t k = 0; k < index.size(); ++k) {
        const qint64 cell = qint64(k) * 25;
        check(index[k].row == cell / columns && index[k].column == cell % columns,
              "entry position");
        check(index[k].offset >= 0 && index[k].offset <= file.size() / w, "entry offset");
        check(k == 0 || index[k].offset >= index[k - 1].offset, "entries out of order");
    }
    if (rows == 0) return 0;

    CellList line;
    QByteArray bytes;
    for (size_t i = 0; i + 1 < size && i < 96; i += 2) {
        const int r = int((data[i] * 131u + data[i + 1] + i) % quint64(rows));
        const int c = int((data[i + 1] * 31u + i) % quint64(columns + 1));
        if (i < 8) {
            ro.getRow(line, r, All, {});
            check(line.size() == size_t(columns), "row length");
            for (int k = 0; k < int(columns); ++k)
                check(line[size_t(k)] == ro.data(r, k, true), "getRow differs from data");
            ro.rowToBytes(bytes, r, Except, {c});
            ro.columnToBytes(bytes, c, All, {});
        }
        const QByteArray got = ro.data(r, c);
        const QByteArray ref = ed.data(r, c);
        check(got == ro.data(r, c, true), "maps are off, yet raw reads differ");
        if (got == ref) continue;
        check(delimiter != 0 && quotes, "cells differ where quotes mean nothing");
        bool explained = false;
        if (standard == AllQuotes)
            explained = got == stripped(ref, w, be);
        else if (standard == Rfc4180)
            explained = enclosedInQuotes(ref, w, be) && got == stripped(ref, w, be);
        else
            explained = enclosedInQuotes(got, w, be) && ref == stripped(got, w, be);
        check(explained, "cell differs from the editable reading beyond the quote rules");
    }
    return 0;
}
