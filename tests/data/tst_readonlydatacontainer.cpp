#include "data/csvboundarymachine.h"
#include "data/editabledatacontainer.h"
#include "data/narrowboundaryscanner.h"
#include "data/readonlydatacontainer.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <unistd.h>

using Table = QList<QByteArrayList>;

namespace {

struct Dialect {
    char delimiter = ',';
    ParsingStandard standard = Rfc4180;
    EncodingType encoding = Utf8;
};

template <class C> std::unique_ptr<C> configured(const QString& path, const Dialect& d) {
    auto c = std::make_unique<C>();
    c->setFilepath(path);
    c->setDelimiters(d.delimiter, d.delimiter);
    c->setParsingStandard(d.standard);
    c->setEncoding(d.encoding);
    c->setLineEnding(UnixLineEnding);
    return c;
}

// Qt's own encoders, so that the expected bytes do not share code with the store.
QByteArray encode(const QString& text, EncodingType encoding) {
    const bool be = encodingIsBigEndian(encoding);
    if (encodingWidth(encoding) == 2)
        return QStringEncoder(be ? QStringConverter::Utf16BE : QStringConverter::Utf16LE)(text);
    if (encodingWidth(encoding) == 4)
        return QStringEncoder(be ? QStringConverter::Utf32BE : QStringConverter::Utf32LE)(text);
    return encoding == Iso8859_1 ? text.toLatin1() : text.toUtf8();
}

// A random table as a writer of the dialect would put it, with each field's
// raw text and what the editable reader makes of it: ragged lines, every line
// end, quoted fields holding delimiters, quotes and line breaks, quotes inside
// unquoted fields, and characters outside the BMP (two units in UTF-16).
struct RandomFile {
    QByteArray bytes;
    QList<QStringList> raw, content;
    int columns = 0;
};

RandomFile randomFile(QRandomGenerator& rng, const Dialect& d) {
    const QString delimiter = QChar::fromLatin1(d.delimiter ? d.delimiter : ',');
    const bool quoting = d.delimiter && d.standard != DelimiterOnly && d.delimiter != '"';
    QStringList letters = {"a", "b", "z", "0", "é", " "};
    if (d.encoding != Iso8859_1)
        letters << "中"
                << "😀";
    const QStringList tricky = {delimiter, "\"", "\n", "\r\n", "\r", "\x1E"};
    QStringList ends = {"\n", "\r\n", "\r"};
    if (encodingWidth(d.encoding) == 1) ends << "\x1E";
    auto pick = [&](const QStringList& from) { return from[int(rng.bounded(from.size()))]; };
    // Whole characters as tokens, so that nothing lands inside a surrogate pair.
    auto tokens = [&](int max) {
        QStringList s;
        for (int n = int(rng.bounded(max + 1)); n > 0; --n)
            s << pick(letters);
        return s;
    };
    RandomFile f;
    QString file, previous_end;
    const int rows = int(rng.bounded(1, 30)), width = d.delimiter ? int(rng.bounded(1, 9)) : 1;
    for (int r = 0; r < rows; ++r) {
        QStringList raw, content;
        for (int n = rng.bounded(4) ? width : int(rng.bounded(1, width + 1)); n > 0; --n) {
            const int form = int(rng.bounded(6));
            if (quoting && (form < 2 || d.standard == AllQuotes)) {
                QStringList t = tokens(4);
                for (int k = int(rng.bounded(3)); k > 0; --k)
                    t.insert(int(rng.bounded(t.size() + 1)), pick(tricky));
                content << t.join(QString());
                raw << "\"" + QString(content.back()).replace("\"", "\"\"") + "\"";
                continue;
            }
            // A quote never comes first where it would open a quoted field.
            QStringList t = form == 2 ? QStringList() : tokens(6);
            if (form == 3 && !t.isEmpty()) t.insert(int(rng.bounded(1, t.size() + 1)), "\"");
            if (!quoting && form == 4) t.prepend("\"");
            QString s = t.join(QString());
            if (d.delimiter == '"') s.remove('"');
            raw << s;
            content << s;
        }
        const QString line = raw.join(delimiter);
        QString end = pick(ends);
        // An empty line after a lone CR would merge into CR LF; a last line
        // without an end must not end in an empty field, which nothing marks.
        if (previous_end == "\r" && line.isEmpty() && end == "\n") end = "\r\n";
        if (r == rows - 1 && !raw.back().isEmpty() && rng.bounded(2)) end.clear();
        file += line + end;
        previous_end = end;
        f.raw << raw;
        f.content << content;
        f.columns = std::max(f.columns, int(raw.size()));
    }
    f.bytes = encode(file, d.encoding);
    return f;
}

// Quotes, delimiters and line ends in any order, most of it malformed.
QByteArray soup(QRandomGenerator& rng, int max) {
    static const char alphabet[] = "ab ,,\"\"\"\r\n\n\x1E;";
    QByteArray s;
    for (int n = int(rng.bounded(max + 1)); n > 0; --n)
        s += alphabet[rng.bounded(int(sizeof alphabet) - 1)];
    return s;
}

// Whether two readings of a malformed field differ only as this mode's quote
// rules allow: under "RFC 4180" it strips an enclosing pair that the editable
// reader kept, under the quote-keeping standards it keeps one that was stripped.
bool differByEnclosingQuotes(const QByteArray& ro, const QByteArray& ed, const Dialect& d) {
    const bool rfc = d.standard == Rfc4180;
    const QString quoted = QString::fromLatin1(rfc ? ed : ro).remove(QChar(0));
    const QString inner = quoted.mid(1, quoted.size() - 2).replace("\"\"", "\"");
    return d.delimiter && d.standard != DelimiterOnly && quoted.size() > 1 &&
           quoted.startsWith('"') && quoted.endsWith('"') &&
           inner == QString::fromLatin1(rfc ? ro : ed).remove(QChar(0));
}

struct Recorder {
    QList<qint64> events;
    bool lineStart(qint64 u) { return events << 1 << u, true; }
    bool fieldStart(qint64 u, qint64 c) { return events << 2 << u << c, true; }
    bool fieldEnd(qint64 u) { return events << 3 << u, true; }
    bool lineEnd(qint64 u, qint64 n) { return events << 4 << u << n, true; }
};

// The fast single-byte scanner, fed in pieces, against the unit machine.
template <bool Delimited>
bool scannersAgree(const QByteArray& text, const Dialect& d, qint64 piece) {
    const bool quotes = Delimited && d.standard != DelimiterOnly;
    Recorder slow, fast;
    CsvBoundaryMachine<1, false, Delimited, Recorder> machine(slow, d.delimiter, quotes);
    machine.feed(text.constData(), text.size(), 0);
    machine.finish(text.size());
    NarrowBoundaryScanner<Delimited, Recorder> scanner(fast, d.delimiter, quotes);
    for (qint64 at = 0; at < text.size(); at += piece)
        scanner.feed(text.constData() + at, std::min(piece, text.size() - at), at);
    scanner.finish(text.size());
    return fast.events == slow.events;
}

QByteArrayList texts(const CellList& cells) {
    QByteArrayList out;
    for (const Cell& cell : cells)
        out << cell.toByteArray();
    return out;
}

QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

Q_DECLARE_METATYPE(Dialect)

class TestReadOnlyDataContainer : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    // A fresh file each time: rewriting one in place makes ext4 flush it on close.
    QString write(const QByteArray& bytes, const QString& name = QStringLiteral("in.csv")) {
        QFile f(dir.filePath(name));
        f.remove();
        return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size() ? f.fileName()
                                                                              : QString();
    }
    std::unique_ptr<ReadOnlyDataContainer> open(const QByteArray& bytes, const Dialect& d = {}) {
        auto c = configured<ReadOnlyDataContainer>(write(bytes), d);
        return c->loadCSV() ? std::move(c) : nullptr;
    }
    static Table cells(const AbstractDataContainer& c) {
        Table t;
        for (int r = 0; r < c.rowCount(); ++r) {
            t << QByteArrayList();
            for (int col = 0; col < c.columnCount(); ++col)
                t.back() << c.data(r, col);
        }
        return t;
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    // Quotes are judged on the raw field alone, where the editable reader
    // follows the quoting state; and the shapes that random files never take.
    void cells_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<Dialect>("dialect");
        QTest::addColumn<Table>("expected");
        auto add = [](const char* name, const char* file, Dialect d, Table t) {
            QTest::newRow(name) << QByteArray(file) << d << t;
        };
        add("rfc strips any enclosing pair", "\"ab\"c\"", {}, {{"ab\"c"}});
        add("rfc keeps a lone quote", "x,\"", {}, {{"x", "\""}});
        add("all quotes strips always", "abc,a,\"x\"\"y\"", {',', AllQuotes}, {{"b", "", "x\"y"}});
        add("sparse keeps quotes", "\"a,b\",\"c\"\"d\"", {',', SparseQuotes},
            {{"\"a,b\"", "\"c\"\"d\""}});
        add("ascii separated keeps quotes", "\"a\"\037b", {'\x1F', AsciiSeparatedValues},
            {{"\"a\"", "b"}});
        add("no delimiter keeps quotes", "\"a,b\"\nc", {'\0'}, {{"\"a,b\""}, {"c"}});
        add("delimiter last", "a,", {}, {{"a"}});
        add("only a line end", "\n", {}, {{""}});
        add("empty file", "", {}, {});
    }
    void cells() {
        QFETCH(QByteArray, file);
        QFETCH(Dialect, dialect);
        const auto c = open(file, dialect);
        QVERIFY(c);
        QTEST(cells(*c), "expected");
        QCOMPARE(c->data(c->rowCount(), 0), QByteArray());
        QCOMPARE(c->data(0, c->columnCount()), QByteArray());
        for (int r = 0; r < c->rowCount(); ++r)
            QCOMPARE(c->columnCountOfRow(r), c->columnCount());
    }

    // The editable store is the reference: on random files across dialects,
    // encodings and chunk seams, well formed or not, every cell, row and
    // column reads alike and every save writes alike. Where they differ on
    // purpose (quoted fields keep their quotes under "Sparse Quotes" and
    // "ASCII Separated Values"; quotes are judged on the raw field alone),
    // the difference is exactly that. On single-byte files the fast scanner
    // reports the unit machine's boundaries.
    void differential_data() {
        QTest::addColumn<Dialect>("dialect");
        QTest::addColumn<bool>("bom");
        QTest::addColumn<int>("chunk"); // 0: the default
        QTest::addColumn<bool>("malformed_too");
        auto add = [](const char* name, Dialect d, bool bom, int chunk, bool malformed_too) {
            QTest::newRow(name) << d << bom << chunk << malformed_too;
        };
        add("rfc utf8 bom", {';', Rfc4180, Utf8}, true, 7, true);
        add("rfc latin1 byte chunks", {',', Rfc4180, Iso8859_1}, false, 1, true);
        add("all quotes tab", {'\t', AllQuotes, Utf8}, false, 64, false);
        add("sparse", {',', SparseQuotes, Utf8}, false, 17, true);
        add("ascii separated", {'\x1F', AsciiSeparatedValues, Utf8}, false, 13, false);
        add("delimiter only", {',', DelimiterOnly, Utf8}, false, 5, true);
        add("quote as delimiter", {'"', Rfc4180, Utf8}, false, 3, false);
        add("no delimiter", {'\0', Rfc4180, Utf8}, false, 9, true);
        add("rfc utf16le bom", {',', Rfc4180, Utf16LEDetected}, true, 0, true);
        add("rfc utf16be", {',', Rfc4180, Utf16BE}, false, 6, false);
        add("sparse utf16le", {';', SparseQuotes, Utf16LE}, false, 10, false);
        add("no delimiter utf16be", {'\0', Rfc4180, Utf16BE}, false, 4, false);
        add("rfc utf32le bom", {',', Rfc4180, Utf32LEDetected}, true, 12, false);
        add("all quotes utf32be", {',', AllQuotes, Utf32BE}, false, 0, false);
    }
    void differential() {
        QFETCH(Dialect, dialect);
        QFETCH(bool, bom);
        QFETCH(int, chunk);
        QFETCH(bool, malformed_too);
        const EncodingType e = dialect.encoding;
        const bool keeps_quotes =
            dialect.standard == SparseQuotes || dialect.standard == AsciiSeparatedValues;
        const bool scannable = encodingWidth(e) == 1 && dialect.delimiter != '"';
        const QString out = dir.filePath(QStringLiteral("saved.csv"));
        QRandomGenerator rng(uint(qHash(QTest::currentDataTag())));
        for (int round = 0; round < 200; ++round) {
            const bool malformed = malformed_too && round % 2;
            RandomFile f = malformed
                               ? RandomFile{encode(QString::fromLatin1(soup(rng, 400)), e), {}, {}}
                               : randomFile(rng, dialect);
            if (bom) f.bytes.prepend(encode(QChar(0xFEFF), e));
            const qint64 piece = 1 + rng.bounded(100);
            if (scannable)
                QVERIFY(dialect.delimiter ? scannersAgree<true>(f.bytes, dialect, piece)
                                          : scannersAgree<false>(f.bytes, dialect, piece));
            const QString path = write(f.bytes);
            auto ro = configured<ReadOnlyDataContainer>(path, dialect);
            auto ed = configured<EditableDataContainer>(path, dialect);
            if (chunk) ro->setChunkLimit(chunk);
            QVERIFY(ro->loadCSV() && ed->loadCSV());
            const int rows = ro->rowCount(), columns = ro->columnCount();
            QCOMPARE(rows, ed->rowCount());
            QCOMPARE(columns, ed->columnCount());
            QCOMPARE(ro->hasBom(), bom);
            QCOMPARE(qint64(ro->cellIndex().size()), (qint64(rows) * columns + 24) / 25);
            if (!malformed)
                QCOMPARE(QList<int>({rows, columns}), QList<int>({int(f.raw.size()), f.columns}));
            bool alike = true;
            for (int r = 0; r < rows; ++r) {
                for (int c = 0; c <= columns; ++c) {
                    const QByteArray got = ro->data(r, c), ref = ed->data(r, c);
                    alike = alike && got == ref;
                    if (malformed) {
                        QVERIFY2(got == ref || differByEnclosingQuotes(got, ref, dialect),
                                 f.bytes.toPercentEncoding().constData());
                        continue;
                    }
                    const bool present = c < f.raw[r].size();
                    // The generator's account keeps the reference honest.
                    QCOMPARE(ref, present ? encode(f.content[r][c], e) : QByteArray());
                    const bool quoted = present && f.raw[r][c] != f.content[r][c];
                    QCOMPARE(got, keeps_quotes && quoted ? encode(f.raw[r][c], e) : ref);
                }
            }
            // Lines and saves are compared where every cell reads alike.
            if (!alike) continue;
            for (const bool by_row : {true, false}) {
                IndexList list;
                for (int k = -1; k <= (by_row ? columns : rows); ++k)
                    if (rng.bounded(3) == 0) list.push_back(k);
                const auto mode = SelectionMode(rng.bounded(3));
                const int at = int(rng.bounded(-1, (by_row ? rows : columns) + 1));
                CellList a, b;
                by_row ? ro->getRow(a, at, mode, list) : ro->getColumn(a, at, mode, list);
                by_row ? ed->getRow(b, at, mode, list) : ed->getColumn(b, at, mode, list);
                QCOMPARE(texts(a), texts(b));
            }
            const char save_delimiters[] = {',', ';', '\t', '\0'};
            const Dialect save{save_delimiters[rng.bounded(4)], ParsingStandard(rng.bounded(5))};
            const auto ending = LineEndingType(rng.bounded(5));
            const bool trailing = rng.bounded(2);
            // Plain, transposed, and with lines and a column hidden.
            const auto saves = [&](AbstractDataContainer& c) {
                c.setDelimiters(dialect.delimiter, save.delimiter);
                c.setParsingStandard(save.standard);
                c.setLineEnding(ending);
                c.setSaveTrailingDelimiters(trailing);
                QByteArrayList s;
                for (int form = 0; form < 3; ++form) {
                    QFile::remove(out);
                    s << (c.saveAs(out, false, form == 1, form == 2 ? IndexList{0, 2} : IndexList(),
                                   form == 2 ? IndexList{1} : IndexList())
                              ? readFile(out)
                              : QByteArray("refused"));
                }
                return s;
            };
            QCOMPARE(saves(*ro), saves(*ed));
        }
    }

    // A column that its line lacks has its cell number all the same: the entry
    // points at the line's end (a CR here, or the end of the file), and the
    // cell reads empty rather than as the CR.
    void indexEntriesOfShortLines() {
        const QByteArray file = QByteArray("x,").repeated(29) + "x\r\ny\r\nz";
        auto c = open(file);
        QVERIFY(c);
        QCOMPARE(c->columnCount(), 30);
        QStringList entries;
        for (const CellIndexEntry& e : c->cellIndex())
            entries << QStringLiteral("%1:%2@%3").arg(e.row).arg(e.column).arg(e.offset);
        QCOMPARE(entries, (QStringList{"0:0@0", "0:25@50", "1:20@62", "2:15@65"}));
        QCOMPARE(c->indexBytes(), qint64(4 * sizeof(CellIndexEntry)));
        QCOMPARE((QByteArrayList{c->data(1, 0), c->data(1, 20), c->data(2, 0), c->data(2, 29)}),
                 (QByteArrayList{"y", "", "z", ""}));
    }

    // Nothing is edited and moved-in cells are dropped. A save over the open
    // source replaces it by a rename, quick save or not, and the cells stay
    // readable from the old file. A source with a second hard link would have
    // to be written over in place, under the index: that save is refused, and
    // neither name changes.
    void refusals() {
        const QByteArray file = "a,b\n\"c,d\",e\n";
        auto c = open(file);
        QVERIFY(c);
        QVERIFY(!c->setCell(0, 0, "x") && !c->setRowCount(9) && !c->setColumnCount(9) &&
                !c->clear() && !c->insertRows(0, 1) && !c->insertColumns(0, 1) &&
                !c->removeRows(0, 1) && !c->removeColumns(0, 1));
        CellList moved{Cell("x", 1)};
        c->setRow(0, std::move(moved));
        QVERIFY(moved.empty());
        c->insertColumn(0, CellList{Cell("y", 1)});
        const QString source = dir.filePath("in.csv");
        c->setDelimiters(',', ';');
        for (bool keep_backup : {false, true}) {
            QVERIFY(c->saveAs(source, keep_backup, false, {}, {}));
            // The file quoted "c,d" and the standard stays: the quotes stay too.
            QCOMPARE(readFile(source), QByteArray("a;b\n\"c,d\";e\n"));
            QCOMPARE(cells(*c), (Table{{"a", "b"}, {"c,d", "e"}}));
        }

        auto linked = open(file);
        QVERIFY(linked);
        const QString other = dir.filePath("other name.csv");
        QFile::remove(other);
        QCOMPARE(
            ::link(QFile::encodeName(source).constData(), QFile::encodeName(other).constData()), 0);
        linked->setDelimiters(',', ';');
        QVERIFY(!linked->save(true, false, {}, {}));
        QVERIFY(!linked->errorString().isEmpty());
        QCOMPARE(readFile(source), file);
        QCOMPARE(readFile(other), file);
        QCOMPARE(cells(*linked), (Table{{"a", "b"}, {"c,d", "e"}}));
        QVERIFY(!QFileInfo::exists(source + ".bak"));
        QFile::remove(other);
    }

    // Shown positions and saves go through the maps; raw reads, getRow and
    // getColumn (a sort reads its keys so) do not. An empty map returns to
    // file order, and an entry out of range reads empty.
    void sortMaps() {
        auto c = open("h1,h2\n3,c\n1,a\n2,b\n");
        QVERIFY(c);
        c->setRowMap({0, 2, 3, 1});
        c->setColumnMap({1, 0});
        QCOMPARE(c->data(1, 0), QByteArray("a"));
        QCOMPARE(c->data(1, 0, true), QByteArray("3"));
        const QString out = dir.filePath("sorted.csv");
        QVERIFY(c->saveAs(out, false, false, {}, {}));
        QCOMPARE(readFile(out), QByteArray("h2,h1\na,1\nb,2\nc,3\n"));
        QVERIFY(c->saveAs(out, false, true, {}, {}));
        QCOMPARE(readFile(out), QByteArray("h2,a,b,c\nh1,1,2,3\n"));
        CellList line;
        c->getRow(line, 1, All, {});
        QCOMPARE(texts(line), (QByteArrayList{"3", "c"}));
        c->getColumn(line, 1, All, {});
        QCOMPARE(texts(line), (QByteArrayList{"h2", "c", "a", "b"}));
        c->setRowMap({});
        QVERIFY(!c->rowMapActive());
        QCOMPARE(c->data(1, 0), QByteArray("c"));
        c->setColumnMap({0, 7});
        QCOMPARE(c->data(1, 1), QByteArray());
    }

    // An empty file loads at once, a missing one fails. From 24 MiB on: a start
    // signal, then reports in thirds of t = size / 24 MiB + 1, the first pass
    // counting one unit per 24 MiB and the second two. A cancel ends the scan
    // without a finished signal and leaves an empty table.
    void loadReportsAndCancel() {
        auto c = configured<ReadOnlyDataContainer>(write({}, "empty.csv"), {});
        QSignalSpy empty_finished(c.get(), &AbstractDataContainer::loadFinishedSignal);
        QVERIFY(c->loadCSV());
        QCOMPARE(empty_finished.count(), 1);
        c->setFilepath(dir.filePath("missing.csv"));
        QVERIFY(!c->loadCSV());
        QCOMPARE(empty_finished.count(), 1);

        const QByteArray line = "12345,some words here,\"quoted, text\",2024-01-01,3.14\n";
        const QByteArray file = line.repeated(int(25 * csv::kMiB / line.size()) + 1);
        c = configured<ReadOnlyDataContainer>(write(file, "large.csv"), {});
        QSignalSpy start(c.get(), &AbstractDataContainer::startProgressUpdateSignal);
        QSignalSpy progress(c.get(), &AbstractDataContainer::loadProgressUpdateSignal);
        QSignalSpy finished(c.get(), &AbstractDataContainer::loadFinishedSignal);
        QVERIFY(c->loadCSV());
        QCOMPARE(start.count(), 1);
        const int mb = int(file.size() / csv::kMiB);
        QCOMPARE(QList<QVariantList>(progress),
                 (QList<QVariantList>{{0, 6, mb}, {1, 6, mb}, {2, 6, mb}, {4, 6, mb}}));
        QCOMPARE(c->rowCount(), file.count('\n'));

        ReadOnlyDataContainer* raw = c.get();
        connect(
            raw, &AbstractDataContainer::loadProgressUpdateSignal, raw,
            [raw](int curr) { raw->setCanceled(curr >= 2); }, Qt::DirectConnection);
        QVERIFY(!c->loadCSV());
        QCOMPARE(finished.count(), 1);
        QCOMPARE(c->rowCount(), 0);
        QCOMPARE(c->data(0, 0), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestReadOnlyDataContainer)
#include "tst_readonlydatacontainer.moc"