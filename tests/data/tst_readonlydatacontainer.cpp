#include "data/csvboundarymachine.h"
#include "data/editabledatacontainer.h"
#include "data/narrowboundaryscanner.h"
#include "data/readonlydatacontainer.h"

#include <QFile>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

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

QByteArray encode(const QString& text, EncodingType encoding) {
    QByteArray out;
    const int w = encodingWidth(encoding);
    const bool be = encodingIsBigEndian(encoding);
    auto unit = [&](uint32_t code) {
        for (int k = 0; k < w; ++k)
            out.append(char(code >> (8 * (be ? w - 1 - k : k))));
    };
    if (w == 2)
        for (QChar c : text)
            unit(c.unicode());
    else if (w == 4)
        for (char32_t c : text.toUcs4())
            unit(c);
    else if (encoding == Iso8859_1)
        out = text.toLatin1();
    else
        out = text.toUtf8();
    return out;
}

// The read-only rules, stated on the text of a raw field.
QString unquoted(const QString& raw) {
    QString inner = raw.mid(1, raw.size() - 2);
    return inner.replace(QStringLiteral("\"\""), QStringLiteral("\""));
}

// A random table written the way a writer of each standard would, with the
// raw text of every field kept: ragged lines, every line ending, quoted
// fields holding delimiters, quotes and line breaks, and text in several
// scripts (including characters outside the BMP, two units in UTF-16).
struct RandomFile {
    QByteArray bytes;
    QList<QStringList> raw;
    QList<QStringList> content; // what the editable reader makes of each field
    int columns = 0;
};

RandomFile randomFile(QRandomGenerator& rng, const Dialect& d) {
    const bool delimited = d.delimiter != 0;
    const bool latin1 = d.encoding == Iso8859_1;
    const QStringList letters =
        QString(latin1 ? QStringLiteral("a b z 0 é '") : QStringLiteral("a b z 0 é 中 😀"))
            .split(' ')
        << QStringLiteral(" ");
    const bool quoting = delimited && d.standard != DelimiterOnly && d.delimiter != '"';
    QStringList line_ends = {"\n", "\r\n", "\r"};
    if (encodingWidth(d.encoding) == 1) line_ends << "\x1E";
    // Characters as whole tokens, so that nothing is inserted inside a
    // surrogate pair.
    auto text = [&](int max) {
        QStringList s;
        for (int n = int(rng.bounded(max + 1)); n > 0; --n)
            s << letters[int(rng.bounded(letters.size()))];
        return s;
    };
    RandomFile f;
    QString file;
    QString previous_end;
    const int rows = int(rng.bounded(1, 30));
    const int width = delimited ? int(rng.bounded(1, 9)) : 1;
    for (int r = 0; r < rows; ++r) {
        const int n = rng.bounded(4) == 0 ? int(rng.bounded(1, width + 1)) : width;
        QStringList raw, content;
        for (int c = 0; c < n; ++c) {
            const int form = int(rng.bounded(6));
            if (quoting && (form < 2 || d.standard == AllQuotes)) {
                QStringList tokens = text(4);
                const QString specials[] = {
                    QString(QChar::fromLatin1(d.delimiter)), "\"", "\n", "\r\n", "\r", "\x1E"};
                for (int k = int(rng.bounded(3)); k > 0; --k)
                    tokens.insert(int(rng.bounded(tokens.size() + 1)), specials[rng.bounded(6)]);
                const QString inside = tokens.join(QString());
                content << inside;
                raw << "\"" + QString(inside).replace("\"", "\"\"") + "\"";
            } else {
                // Unquoted: a quote may appear, but not first where it would
                // open a quoted field.
                QStringList tokens = form == 2 ? QStringList() : text(6);
                if (form == 3 && !tokens.isEmpty())
                    tokens.insert(int(rng.bounded(1, tokens.size() + 1)), "\"");
                if (!quoting && form == 4) tokens.prepend("\"");
                QString s = tokens.join(QString());
                if (d.delimiter == '"') s.remove('"');
                raw << s;
                content << s;
            }
        }
        const QString line = raw.join(QChar::fromLatin1(d.delimiter ? d.delimiter : ','));
        QString end = line_ends[int(rng.bounded(line_ends.size()))];
        // An empty line after a lone CR would merge into CR LF; a last line
        // without an end must not end in an empty field (nothing then marks
        // that field) or be empty itself.
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

QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

// Lines and fields as reported to a boundary host, for comparing scanners.
struct Recorder {
    QList<qint64> events;
    bool lineStart(qint64 u) { return events << 1 << u, true; }
    bool fieldStart(qint64 u, qint64 c) { return events << 2 << u << c, true; }
    bool fieldEnd(qint64 u) { return events << 3 << u, true; }
    bool lineEnd(qint64 u, qint64 n) { return events << 4 << u << n, true; }
};

QByteArray soup(QRandomGenerator& rng, int max) {
    static const char alphabet[] = "ab ,,\"\"\"\r\n\n\x1E;";
    QByteArray s;
    for (int n = int(rng.bounded(max + 1)); n > 0; --n)
        s += alphabet[rng.bounded(int(sizeof alphabet) - 1)];
    return s;
}

} // namespace

class TestReadOnlyDataContainer : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    QString write(const QByteArray& bytes, const QString& name = QStringLiteral("in.csv")) {
        const QString path = dir.filePath(name);
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return {};
        f.write(bytes);
        return path;
    }
    std::unique_ptr<ReadOnlyDataContainer> open(const QByteArray& bytes, const Dialect& d = {}) {
        auto c = configured<ReadOnlyDataContainer>(write(bytes), d);
        if (!c->loadCSV()) return nullptr;
        return c;
    }
    static Table cells(const AbstractDataContainer& c) {
        Table t;
        for (int r = 0; r < c.rowCount(); ++r) {
            QByteArrayList row;
            for (int col = 0; col < c.columnCount(); ++col)
                row << c.data(r, col);
            t << row;
        }
        return t;
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    // Small files whose every cell is known, the rectangle read in full.
    void cells_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("standard");
        QTest::addColumn<char>("delimiter");
        QTest::addColumn<Table>("expected");
        auto row = [](const char* name, const char* file, ParsingStandard s, char d, Table t) {
            QTest::newRow(name) << QByteArray(file) << int(s) << d << t;
        };
        row("CR LF", "a,b\r\nc,d\r\n", Rfc4180, ',', {{"a", "b"}, {"c", "d"}});
        row("ragged last line", "a,b,c\nd", Rfc4180, ',', {{"a", "b", "c"}, {"d", "", ""}});
        row("ragged middle", "a\nb,c,d\ne,f", Rfc4180, ',',
            {{"a", "", ""}, {"b", "c", "d"}, {"e", "f", ""}});
        row("quoted", "\"a\",\"b,c\",\"d\"\"e\",\"\"", Rfc4180, ',', {{"a", "b,c", "d\"e", ""}});
        row("lone quote", "x,\"", Rfc4180, ',', {{"x", "\""}});
        row("line break in quotes", "\"1\n2\",x\ny,z", Rfc4180, ',', {{"1\n2", "x"}, {"y", "z"}});
        row("quote in unquoted field", "ab\"c,d", Rfc4180, ',', {{"ab\"c", "d"}});
        row("lone CR lines", "a\r\rb", Rfc4180, ',', {{"a"}, {""}, {"b"}});
        row("only a line end", "\n", Rfc4180, ',', {{""}});
        row("record separators",
            "a,b\x1E"
            "c",
            Rfc4180, ',', {{"a", "b"}, {"c", ""}});
        row("delimiter last", "a,", Rfc4180, ',', {{"a"}});
        row("delimiter before line end", "a,\n", Rfc4180, ',', {{"a", ""}});
        row("unterminated quote loses final delimiter", "x\n\"ab,", Rfc4180, ',',
            {{"x"}, {"\"ab"}});
        row("delimiter only", "\"a,b\"", DelimiterOnly, ',', {{"\"a", "b\""}});
        row("semicolon", "a;\"b;c\"", Rfc4180, ';', {{"a", "b;c"}});
        row("quote as delimiter", "a\"b\"c\nd", Rfc4180, '"', {{"a", "b", "c"}, {"d", "", ""}});
        row("no delimiter", "\"a,b\"\nc", Rfc4180, '\0', {{"\"a,b\""}, {"c"}});
        row("empty file", "", Rfc4180, ',', {});
        // Where this mode reads differently from the editable store on purpose.
        row("rfc strips any enclosing quotes", "\"ab\"c\"", Rfc4180, ',', {{"ab\"c"}});
        row("sparse keeps quotes", "\"a,b\",\"c\"\"d\"", SparseQuotes, ',',
            {{"\"a,b\"", "\"c\"\"d\""}});
        row("ascii separated keeps quotes",
            "\"a\"\x1F"
            "b",
            AsciiSeparatedValues, '\x1F', {{"\"a\"", "b"}});
        row("all quotes strips always", "abc,a,\"x\"\"y\"", AllQuotes, ',', {{"b", "", "x\"y"}});
    }
    void cells() {
        QFETCH(QByteArray, file);
        QFETCH(int, standard);
        QFETCH(char, delimiter);
        QFETCH(Table, expected);
        const auto c = open(file, {delimiter, ParsingStandard(standard), Utf8});
        QVERIFY(c);
        QCOMPARE(cells(*c), expected);
        QCOMPARE(c->data(c->rowCount(), 0), QByteArray());
        QCOMPARE(c->data(0, c->columnCount()), QByteArray());
        for (int r = 0; r < c->rowCount(); ++r)
            QCOMPARE(c->columnCountOfRow(r), c->columnCount());
    }

    // Every cell read here equals the editable store's reading of the same
    // file, across dialects, encodings and chunk seams; where the rules of
    // this mode differ on purpose (quoted fields under "Sparse Quotes" and
    // "ASCII Separated Values"), the cell is the raw field.
    void differential_data() {
        QTest::addColumn<char>("delimiter");
        QTest::addColumn<int>("standard");
        QTest::addColumn<int>("encoding");
        QTest::addColumn<bool>("bom");
        QTest::addColumn<int>("chunk");
        auto row = [](const char* name, char d, ParsingStandard s, EncodingType e, bool bom,
                      int chunk) { QTest::newRow(name) << d << int(s) << int(e) << bom << chunk; };
        row("rfc utf8", ',', Rfc4180, Utf8, false, 0);
        row("rfc utf8 bom small chunks", ';', Rfc4180, Utf8, true, 7);
        row("rfc latin1 byte chunks", ',', Rfc4180, Iso8859_1, false, 1);
        row("all quotes tab", '\t', AllQuotes, Utf8, false, 64);
        row("sparse pipe", '|', SparseQuotes, Utf8, false, 0);
        row("ascii separated", '\x1F', AsciiSeparatedValues, Utf8, false, 13);
        row("delimiter only", ',', DelimiterOnly, Utf8, false, 5);
        row("quote as delimiter", '"', Rfc4180, Utf8, false, 3);
        row("no delimiter", '\0', Rfc4180, Utf8, false, 9);
        row("rfc utf16le bom", ',', Rfc4180, Utf16LEDetected, true, 0);
        row("rfc utf16be small chunks", ',', Rfc4180, Utf16BE, false, 6);
        row("sparse utf16le", ';', SparseQuotes, Utf16LE, false, 10);
        row("no delimiter utf16be", '\0', Rfc4180, Utf16BE, false, 4);
        row("rfc utf32le bom", ',', Rfc4180, Utf32LEDetected, true, 12);
        row("all quotes utf32be", ',', AllQuotes, Utf32BE, false, 0);
    }
    void differential() {
        QFETCH(char, delimiter);
        QFETCH(int, standard);
        QFETCH(int, encoding);
        QFETCH(bool, bom);
        QFETCH(int, chunk);
        const Dialect d{delimiter, ParsingStandard(standard), EncodingType(encoding)};
        const bool keeps_quotes = standard == SparseQuotes || standard == AsciiSeparatedValues;
        QRandomGenerator rng(uint(qHash(QTest::currentDataTag())));
        for (int round = 0; round < 40; ++round) {
            RandomFile f = randomFile(rng, d);
            if (bom) f.bytes.prepend(encode(QString(QChar(0xFEFF)), d.encoding));
            const QString path = write(f.bytes);
            auto ro = configured<ReadOnlyDataContainer>(path, d);
            auto ed = configured<EditableDataContainer>(path, d);
            if (chunk) ro->setChunkLimit(chunk);
            QVERIFY(ro->loadCSV());
            QVERIFY(ed->loadCSV());
            QCOMPARE(ro->rowCount(), ed->rowCount());
            QCOMPARE(ro->columnCount(), ed->columnCount());
            QCOMPARE(ro->rowCount(), f.raw.size());
            QCOMPARE(ro->columnCount(), f.columns);
            QCOMPARE(ro->hasBom(), bom);
            const qint64 cells = qint64(ro->rowCount()) * ro->columnCount();
            QCOMPARE(qint64(ro->cellIndex().size()), (cells + 24) / 25);
            for (int r = 0; r < ro->rowCount(); ++r) {
                for (int c = 0; c <= ro->columnCount(); ++c) {
                    const QByteArray got = ro->data(r, c);
                    const bool present = c < f.raw[r].size();
                    const bool quoted = present && f.raw[r][c] != f.content[r][c];
                    if (keeps_quotes && quoted)
                        QCOMPARE(got, encode(f.raw[r][c], d.encoding));
                    else
                        QCOMPARE(got, ed->data(r, c));
                    // The generator's own account, to keep the comparison honest.
                    QCOMPARE(ed->data(r, c),
                             present ? encode(f.content[r][c], d.encoding) : QByteArray());
                }
            }
        }
    }

    // Malformed quoting everywhere: the two stores split lines and fields
    // alike, and each cell differs at most by the quote rules of this mode.
    void malformedQuoting_data() {
        QTest::addColumn<int>("standard");
        QTest::addColumn<int>("encoding");
        QTest::addColumn<int>("chunk");
        QTest::newRow("rfc") << int(Rfc4180) << int(Utf8) << 0;
        QTest::newRow("rfc small chunks") << int(Rfc4180) << int(Utf8) << 3;
        QTest::newRow("sparse") << int(SparseQuotes) << int(Utf8) << 17;
        QTest::newRow("delimiter only") << int(DelimiterOnly) << int(Utf8) << 2;
        QTest::newRow("rfc utf16le") << int(Rfc4180) << int(Utf16LE) << 6;
    }
    void malformedQuoting() {
        QFETCH(int, standard);
        QFETCH(int, encoding);
        QFETCH(int, chunk);
        const Dialect d{',', ParsingStandard(standard), EncodingType(encoding)};
        QRandomGenerator rng(uint(qHash(QTest::currentDataTag())));
        for (int round = 0; round < 300; ++round) {
            const QByteArray text = soup(rng, 200);
            const QString path = write(encode(QString::fromLatin1(text), d.encoding));
            auto ro = configured<ReadOnlyDataContainer>(path, d);
            auto ed = configured<EditableDataContainer>(path, d);
            if (chunk) ro->setChunkLimit(chunk);
            QVERIFY(ro->loadCSV() && ed->loadCSV());
            QCOMPARE(ro->rowCount(), ed->rowCount());
            QCOMPARE(ro->columnCount(), ed->columnCount());
            for (int r = 0; r < ro->rowCount(); ++r) {
                for (int c = 0; c < ro->columnCount(); ++c) {
                    const QString got = QString::fromLatin1(ro->data(r, c, true)).remove(QChar(0));
                    const QString ref = QString::fromLatin1(ed->data(r, c)).remove(QChar(0));
                    if (got == ref) continue;
                    // One of the two stripped an enclosing pair of quotes.
                    const QString& quoted = standard == Rfc4180 ? ref : got;
                    const QString& stripped = standard == Rfc4180 ? got : ref;
                    QVERIFY2(standard != DelimiterOnly && quoted.size() > 1 &&
                                 quoted.startsWith('"') && quoted.endsWith('"') &&
                                 unquoted(quoted) == stripped,
                             qPrintable(QStringLiteral("%1,%2 of %3")
                                            .arg(r)
                                            .arg(c)
                                            .arg(QString::fromLatin1(text.toPercentEncoding()))));
                }
            }
        }
    }

    // The fast single-byte scanner reports exactly the boundaries of the unit
    // machine, whatever the chunking.
    void scannerAgreement_data() {
        QTest::addColumn<bool>("delimited");
        QTest::addColumn<bool>("quotes");
        QTest::newRow("quotes") << true << true;
        QTest::newRow("delimiter only") << true << false;
        QTest::newRow("no delimiter") << false << false;
    }
    void scannerAgreement() {
        QFETCH(bool, delimited);
        QFETCH(bool, quotes);
        QRandomGenerator rng(uint(qHash(QTest::currentDataTag())));
        for (int round = 0; round < 2000; ++round) {
            const QByteArray text = soup(rng, round < 1000 ? 40 : 400);
            Recorder slow, fast;
            auto run = [&](auto& scanner, int piece) {
                qint64 at = 0;
                while (at < text.size()) {
                    const qint64 n = std::min<qint64>(piece, text.size() - at);
                    scanner.feed(text.constData() + at, n, at);
                    at += n;
                }
                scanner.finish(text.size());
            };
            const int piece = 1 + int(rng.bounded(100));
            if (delimited) {
                CsvBoundaryMachine<1, false, true, Recorder> m(slow, ',', quotes);
                NarrowBoundaryScanner<true, Recorder> s(fast, ',', quotes);
                run(m, int(text.size()) + 1);
                run(s, piece);
            } else {
                CsvBoundaryMachine<1, false, false, Recorder> m(slow, 0, false);
                NarrowBoundaryScanner<false, Recorder> s(fast, 0, false);
                run(m, int(text.size()) + 1);
                run(s, piece);
            }
            QVERIFY2(fast.events == slow.events, text.toPercentEncoding().constData());
        }
    }

    void indexEntries() {
        // Five columns: cell 25 is the first field of line 5.
        QByteArray file;
        for (int r = 0; r < 7; ++r)
            file += "a" + QByteArray::number(r) + ",b,c,d,e\n";
        auto c = open(file);
        QVERIFY(c);
        const auto& index = c->cellIndex();
        QCOMPARE(index.size(), size_t(2)); // 35 cells
        QCOMPARE(index[1].row, 5);
        QCOMPARE(index[1].column, 0);
        QCOMPARE(index[1].offset, qint64(file.indexOf("a5")));
        QCOMPARE(c->indexBytes(), qint64(2 * sizeof(CellIndexEntry)));
        QCOMPARE(c->data(5, 0), QByteArray("a5"));

        // A column that its line lacks: the entry points at the line's end,
        // here a CR, and the cell reads as empty rather than as the CR.
        QByteArray ragged = QByteArray("x,").repeated(29) + "x\r\ny\r\nz";
        c = open(ragged);
        QVERIFY(c);
        QCOMPARE(c->columnCount(), 30);
        const CellIndexEntry& e = c->cellIndex()[2]; // cell 50: line 1, column 20
        QCOMPARE(e.row, 1);
        QCOMPARE(e.column, 20);
        QCOMPARE(e.offset, qint64(ragged.indexOf("y\r") + 1));
        QCOMPARE(c->data(1, 20), QByteArray());
        QCOMPARE(c->data(1, 0), QByteArray("y"));
        QCOMPARE(c->data(2, 0), QByteArray("z"));
        QCOMPARE(c->data(2, 29), QByteArray());
        QCOMPARE(c->cellIndex().size(), size_t(90 / 25 + 1));
    }

    void refusals() {
        auto c = open("a,b\nc,d\n");
        QVERIFY(c);
        const Table before = cells(*c);
        QVERIFY(!c->setCell(0, 0, "x"));
        QVERIFY(!c->setCell(5, 5, "x"));
        QVERIFY(!c->setRowCount(10));
        QVERIFY(!c->setColumnCount(10));
        QVERIFY(!c->clear());
        QVERIFY(!c->insertRows(0, 1));
        QVERIFY(!c->insertColumns(0, 1));
        QVERIFY(!c->removeRows(0, 1));
        QVERIFY(!c->removeColumns(0, 1));
        CellList row{Cell("x", 1)};
        c->setRow(0, std::move(row));
        QVERIFY(row.empty());
        c->insertColumn(0, CellList{Cell("y", 1)});
        c->copyRow(0, 1);
        QCOMPARE(cells(*c), before);
        QCOMPARE(c->trailingEmptyRows(), 0);
        QVERIFY(c->emptyRows(0, All, {}).empty());
    }

    void getRowAndColumn_data() {
        QTest::addColumn<bool>("row");
        QTest::addColumn<int>("at");
        QTest::addColumn<int>("mode");
        QTest::addColumn<QList<int>>("list");
        QTest::addColumn<QByteArrayList>("expected");
        QTest::newRow("row all") << true << 1 << int(All) << QList<int>{}
                                 << QByteArrayList{"d", "e,f", ""};
        QTest::newRow("row only") << true << 0 << int(Only) << QList<int>{2, 0, 7}
                                  << QByteArrayList{"c", "a", ""};
        QTest::newRow("row except")
            << true << 2 << int(Except) << QList<int>{1} << QByteArrayList{"g", ""};
        QTest::newRow("row empty list")
            << true << 2 << int(Only) << QList<int>{} << QByteArrayList{"g", "", ""};
        QTest::newRow("row beyond")
            << true << 3 << int(All) << QList<int>{} << QByteArrayList{"", "", ""};
        QTest::newRow("column all")
            << false << 1 << int(All) << QList<int>{} << QByteArrayList{"b", "e,f", ""};
        QTest::newRow("column only")
            << false << 0 << int(Only) << QList<int>{2, 0} << QByteArrayList{"g", "a"};
        QTest::newRow("column except")
            << false << 2 << int(Except) << QList<int>{0, 2} << QByteArrayList{""};
    }
    void getRowAndColumn() {
        QFETCH(bool, row);
        QFETCH(int, at);
        QFETCH(int, mode);
        QFETCH(QList<int>, list);
        QFETCH(QByteArrayList, expected);
        auto c = open("a,b,c\nd,\"e,f\"\r\ng");
        QVERIFY(c);
        // Lines are read in file order: a sort reads its keys this way.
        c->setRowMap({2, 1, 0});
        c->setColumnMap({2, 1, 0});
        CellList out;
        const IndexList indexes(list.begin(), list.end());
        if (row)
            c->getRow(out, at, SelectionMode(mode), indexes);
        else
            c->getColumn(out, at, SelectionMode(mode), indexes);
        QByteArrayList got;
        for (const Cell& cell : out)
            got << cell.toByteArray();
        QCOMPARE(got, expected);
    }

    void sortMaps() {
        const QByteArray file = "h1,h2\n3,c\n1,a\n2,b\n";
        auto c = open(file);
        QVERIFY(c);
        c->setRowMap({0, 2, 3, 1});
        QVERIFY(c->rowMapActive());
        QCOMPARE(c->data(1, 1), QByteArray("a"));
        QCOMPARE(c->data(1, 1, true), QByteArray("c"));
        c->setColumnMap({1, 0});
        QCOMPARE(c->data(3, 0), QByteArray("c"));
        // A save writes what is shown.
        const QString out = dir.filePath("sorted.csv");
        QVERIFY(c->saveAs(out, false, false, {}, {}));
        QCOMPARE(readFile(out), QByteArray("h2,h1\na,1\nb,2\nc,3\n"));
        QVERIFY(c->saveAs(out, false, true, {}, {}));
        QCOMPARE(readFile(out), QByteArray("h2,a,b,c\nh1,1,2,3\n"));
        // An empty map returns to file order; a position out of range reads empty.
        c->setRowMap({});
        QVERIFY(!c->rowMapActive());
        QCOMPARE(c->data(1, 1), QByteArray("3"));
        c->setColumnMap({0, 7});
        QCOMPARE(c->data(1, 1), QByteArray());
    }

    void saveAsByTheSaveDialect() {
        auto c = open("\xEF\xBB\xBF"
                      "a,b\n\"c,d\",e\nf\n");
        QVERIFY(c);
        c->setDelimiters(',', ';');
        c->setLineEnding(WindowsLineEnding);
        const QString out = dir.filePath("out.csv");
        QVERIFY(c->saveAs(out, true, false, {}, {}));
        QCOMPARE(readFile(out), QByteArray("\xEF\xBB\xBF"
                                           "a;b\r\nc,d;e\r\nf;\r\n"));
        QVERIFY(!QFile::exists(out + ".bak"));
        // The source stays open and readable.
        QCOMPARE(c->data(1, 0), QByteArray("c,d"));
        // Over itself only by a rename: truncating it would lose the data
        // that the index still points into.
        const QString source = dir.filePath("in.csv");
        const QByteArray before = readFile(source);
        QVERIFY(!c->saveAs(source, false, false, {}, {}));
        QCOMPARE(readFile(source), before);
        QVERIFY(c->saveAs(source, true, false, {}, {}));
        QCOMPARE(readFile(source), readFile(out));
        QCOMPARE(c->data(2, 0), QByteArray("f"));
    }

    // "Save File As" gives the editable store's bytes for the same file, in
    // every save dialect, transposed or not, with hidden lines.
    void saveMatchesEditable_data() {
        QTest::addColumn<int>("encoding");
        QTest::addColumn<bool>("bom");
        QTest::addColumn<char>("save_delimiter");
        QTest::addColumn<int>("save_standard");
        QTest::addColumn<int>("line_ending");
        QTest::addColumn<bool>("trailing");
        QTest::newRow("same dialect")
            << int(Utf8) << true << ',' << int(Rfc4180) << int(UnixLineEnding) << true;
        QTest::newRow("all quotes crlf")
            << int(Utf8) << false << ';' << int(AllQuotes) << int(WindowsLineEnding) << true;
        QTest::newRow("sparse no trailing")
            << int(Utf8) << false << '\t' << int(SparseQuotes) << int(UnixLineEnding) << false;
        QTest::newRow("record separator")
            << int(Utf8) << false << ',' << int(Rfc4180) << int(RecordSeparatorLineEnding) << true;
        QTest::newRow("no delimiter")
            << int(Utf8) << false << '\0' << int(Rfc4180) << int(UnixLineEnding) << true;
        QTest::newRow("utf16be") << int(Utf16BEDetected) << true << ',' << int(Rfc4180)
                                 << int(WindowsLineEnding) << true;
        QTest::newRow("utf32le all quotes")
            << int(Utf32LE) << false << '|' << int(AllQuotes) << int(UnixLineEnding) << false;
    }
    void saveMatchesEditable() {
        QFETCH(int, encoding);
        QFETCH(bool, bom);
        QFETCH(char, save_delimiter);
        QFETCH(int, save_standard);
        QFETCH(int, line_ending);
        QFETCH(bool, trailing);
        const Dialect d{',', Rfc4180, EncodingType(encoding)};
        QRandomGenerator rng(uint(qHash(QTest::currentDataTag())));
        for (int round = 0; round < 15; ++round) {
            RandomFile f = randomFile(rng, d);
            if (bom) f.bytes.prepend(encode(QString(QChar(0xFEFF)), d.encoding));
            const QString path = write(f.bytes);
            std::unique_ptr<AbstractDataContainer> stores[] = {
                configured<ReadOnlyDataContainer>(path, d),
                configured<EditableDataContainer>(path, d)};
            QByteArray saved[2][3];
            for (int k = 0; k < 2; ++k) {
                AbstractDataContainer& c = *stores[k];
                QVERIFY(c.loadCSV());
                c.setDelimiters(',', save_delimiter);
                c.setParsingStandard(ParsingStandard(save_standard));
                c.setLineEnding(LineEndingType(line_ending));
                c.setSaveTrailingDelimiters(trailing);
                const QString out = dir.filePath(QStringLiteral("saved%1.csv").arg(k));
                const IndexList hidden_rows{0, 2}, hidden_columns{1};
                QVERIFY(c.saveAs(out, false, false, {}, {}));
                saved[k][0] = readFile(out);
                QVERIFY(c.saveAs(out, false, true, {}, {}));
                saved[k][1] = readFile(out);
                QVERIFY(c.saveAs(out, true, false, hidden_rows, hidden_columns));
                saved[k][2] = readFile(out);
            }
            QCOMPARE(saved[0][0], saved[1][0]);
            QCOMPARE(saved[0][1], saved[1][1]);
            QCOMPARE(saved[0][2], saved[1][2]);
        }
    }

    void emptyAndMissingFiles() {
        auto c = configured<ReadOnlyDataContainer>(write(QByteArray(), "empty.csv"), {});
        QSignalSpy finished(c.get(), &AbstractDataContainer::loadFinishedSignal);
        QVERIFY(c->loadCSV());
        QCOMPARE(finished.count(), 1);
        QCOMPARE(c->rowCount(), 0);
        QCOMPARE(c->data(0, 0), QByteArray());

        c = configured<ReadOnlyDataContainer>(dir.filePath("missing.csv"), {});
        QSignalSpy none(c.get(), &AbstractDataContainer::loadFinishedSignal);
        QVERIFY(!c->loadCSV());
        QCOMPARE(none.count(), 0);
        QCOMPARE(c->rowCount(), 0);
        QCOMPARE(c->data(0, 0), QByteArray());
    }

    // Above 24 MiB: a start signal, then reports in thirds of t = size / 24 MiB
    // + 1, the first pass counting one unit per 24 MiB and the second two; a
    // cancel ends the scan without a finished signal.
    void progressAndCancel() {
        const QByteArray line = "12345,some words here,\"quoted, text\",2024-01-01,3.14\n";
        const qint64 size = 25 * csv::kMiB;
        QByteArray file = line.repeated(int(size / line.size()) + 1);
        const QString path = write(file, "large.csv");
        auto c = configured<ReadOnlyDataContainer>(path, {});
        QSignalSpy start(c.get(), &AbstractDataContainer::startProgressUpdateSignal);
        QSignalSpy progress(c.get(), &AbstractDataContainer::loadProgressUpdateSignal);
        QVERIFY(c->loadCSV());
        QCOMPARE(start.count(), 1);
        QList<int> reports;
        for (const QList<QVariant>& args : progress) {
            reports << args[0].toInt();
            QCOMPARE(args[1].toInt(), 6);
            QCOMPARE(args[2].toInt(), int(file.size() / csv::kMiB));
        }
        QCOMPARE(reports, (QList<int>{0, 1, 2, 4}));
        QCOMPARE(c->rowCount(), file.count('\n'));

        c = configured<ReadOnlyDataContainer>(path, {});
        QSignalSpy finished(c.get(), &AbstractDataContainer::loadFinishedSignal);
        ReadOnlyDataContainer* raw = c.get();
        connect(
            raw, &AbstractDataContainer::loadProgressUpdateSignal, raw,
            [raw](int curr) { raw->setCanceled(curr >= 2); }, Qt::DirectConnection);
        QVERIFY(!c->loadCSV());
        QCOMPARE(finished.count(), 0);
        QCOMPARE(c->rowCount(), 0);
        QCOMPARE(c->data(0, 0), QByteArray());
    }
};

QTEST_GUILESS_MAIN(TestReadOnlyDataContainer)
#include "tst_readonlydatacontainer.moc"
