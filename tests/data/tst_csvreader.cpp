#include "data/csvstatemachine.h"
#include "data/editabledatacontainer.h"
#include "data/fileparameters.h"
#include "testutilstore.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QStringEncoder>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace testutil;

namespace {

// The encodings a test loops over: one per code unit width and byte order.
constexpr EncodingType kUnitForms[] = {Utf8, Utf16LE, Utf16BE, Utf32LE, Utf32BE};

struct Dialect {
    char delimiter = ',';
    ParsingStandard standard = Rfc4180;
    EncodingType encoding = Utf8;
    qint64 chunk = 0; // 0: the reader's own limit
};

std::unique_ptr<EditableDataContainer> load(const QString& path, const Dialect& d, bool* ok) {
    auto c = std::make_unique<EditableDataContainer>();
    c->setFilepath(path);
    c->setDelimiters(d.delimiter, d.delimiter);
    c->setParsingStandard(d.standard);
    c->setEncoding(d.encoding);
    if (d.chunk > 0) c->setChunkLimit(d.chunk);
    *ok = c->loadCSV();
    return c;
}

// The reference: the unit-by-unit machine over the whole file in memory,
// after the mark the reader would take off.
template <int W, bool BigEndian>
void referenceLoad(EditableDataContainer& out, QByteArrayView bytes, char delimiter, bool quotes) {
    StoreHost host(out);
    if (delimiter) {
        CsvStateMachine<W, BigEndian, true, StoreHost> m(host, delimiter, quotes);
        m.feed(bytes.data(), bytes.size() / W, 0);
        m.finish();
    } else {
        CsvStateMachine<W, BigEndian, false, StoreHost> m(host, 0, false);
        m.feed(bytes.data(), bytes.size() / W, 0);
        m.finish();
    }
}

std::unique_ptr<EditableDataContainer> reference(QByteArrayView file, const Dialect& d) {
    auto c = std::make_unique<EditableDataContainer>();
    const QByteArrayView body = file.sliced(bomLengthAtStart(file, d.encoding));
    const bool quotes = d.standard != DelimiterOnly;
    const int w = encodingWidth(d.encoding);
    const bool be = encodingIsBigEndian(d.encoding);
    if (w == 1)
        referenceLoad<1, false>(*c, body, d.delimiter, quotes);
    else if (w == 2 && be)
        referenceLoad<2, true>(*c, body, d.delimiter, quotes);
    else if (w == 2)
        referenceLoad<2, false>(*c, body, d.delimiter, quotes);
    else if (be)
        referenceLoad<4, true>(*c, body, d.delimiter, quotes);
    else
        referenceLoad<4, false>(*c, body, d.delimiter, quotes);
    return c;
}

QString describe(const EditableDataContainer& c) {
    return QStringLiteral("%1x%2 stored %3: %4")
        .arg(c.rowCount())
        .arg(c.columnCount())
        .arg(c.storedRowCount())
        .arg(show(logicalCells(c)));
}

QStringEncoder::Encoding encoderFor(EncodingType e) {
    switch (e) {
    case Utf16:
    case Utf16LE:
        return QStringEncoder::Utf16LE;
    case Utf16BE:
        return QStringEncoder::Utf16BE;
    case Utf32:
    case Utf32LE:
        return QStringEncoder::Utf32LE;
    case Utf32BE:
        return QStringEncoder::Utf32BE;
    default:
        return QStringEncoder::Utf8;
    }
}

// Fixed-length lines for the large files: line i reads "i,text...\n" padded
// to `length` characters.
QByteArray bigLine(int i, int length) {
    QByteArray line = QByteArray::number(i) + ',';
    line.append(QByteArray(length - line.size() - 1, char('a' + i % 26)));
    line.append('\n');
    return line;
}

} // namespace

class TestCsvReader : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void read_data();
    void read();
    void noDelimiter_data();
    void noDelimiter();
    void recordSeparator_data();
    void recordSeparator();
    void byteOrderMark_data();
    void byteOrderMark();
    void partialUnitDropped_data();
    void partialUnitDropped();
    void chunkSeams_data();
    void chunkSeams();
    void readsWhatAPlainWriterWrites_data();
    void readsWhatAPlainWriterWrites();
    void fastReaderMatchesStateMachine();
    void unopenableFileLeavesStore_data();
    void unopenableFileLeavesStore();
    void emptyFile();
    void cancel_data();
    void cancel();
    void progress_data();
    void progress();

private:
    QString writeTemp(const QByteArray& bytes);
    QTemporaryDir dir_;
    int files_ = 0;
    QString at_threshold_, below_threshold_, wide_large_;
};

void TestCsvReader::initTestCase() {
    QVERIFY(dir_.isValid());
    // Exactly the progress threshold, in 100-byte lines with a short last one.
    QByteArray big;
    big.reserve(csv::kProgressThreshold);
    for (int i = 0; big.size() + 100 <= csv::kProgressThreshold; ++i)
        big.append(bigLine(i, 100));
    big.append(QByteArray(csv::kProgressThreshold - big.size() - 1, 'z')).append('\n');
    QCOMPARE(big.size(), csv::kProgressThreshold);
    at_threshold_ = dir_.filePath("threshold.csv");
    QVERIFY(writeFile(at_threshold_, big));
    big.chop(1);
    below_threshold_ = dir_.filePath("below.csv");
    QVERIFY(writeFile(below_threshold_, big));
    big.clear();
    big.squeeze();

    // The same kind of lines in UTF-16, 100 units each.
    QByteArray wide;
    for (int i = 0; i < 130000; ++i)
        wide.append(widen(bigLine(i, 100), 2, false));
    QVERIFY(wide.size() > csv::kProgressThreshold);
    wide_large_ = dir_.filePath("wide.csv");
    QVERIFY(writeFile(wide_large_, wide));
}

QString TestCsvReader::writeTemp(const QByteArray& bytes) {
    const QString path = dir_.filePath(QStringLiteral("f%1.csv").arg(files_++));
    if (!writeFile(path, bytes)) return {};
    return path;
}

// Each case runs through the narrow reader and, with every byte widened to a
// code unit, through the four wide forms; the cells must be the same units.
void TestCsvReader::read_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<char>("delimiter");
    QTest::addColumn<int>("standard");
    QTest::addColumn<Table>("cells");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QList<int>>("stored");

    auto add = [](const char* name, QByteArray in, Table cells, int rows, int columns,
                  QList<int> stored, char delimiter = ',', ParsingStandard s = Rfc4180) {
        QTest::newRow(name) << in << delimiter << int(s) << cells << rows << columns << stored;
    };
    add("CR LF lines", "a,b\r\nc,d\r\n", {{"a", "b"}, {"c", "d"}}, 2, 2, {2, 2});
    add("short last line without line end", "a,b\nc", {{"a", "b"}, {"c"}}, 2, 2, {2, 1});
    add("quoted delimiter", "\"a,b\",c", {{"a,b", "c"}}, 1, 2, {2});
    add("doubled quote", "\"a\"\"b\"", {{"a\"b"}}, 1, 1, {1});
    add("empty quotes", "\"\"", {{""}}, 1, 1, {0});
    add("two doubled quotes", "\"\"\"\"", {{"\""}}, 1, 1, {1});
    add("doubled quote before the closing one", "\"a\"\"\"", {{"a\""}}, 1, 1, {1});
    add("line break in quotes", "\"line1\nline2\",x", {{"line1\nline2", "x"}}, 1, 2, {2});
    add("text after the closing quote", "\"abc\"def,g", {{"\"abc\"def", "g"}}, 1, 2, {2});
    add("no collapse once out of quotes", "\"a\"\"b\"x,y", {{"\"a\"\"b\"x", "y"}}, 1, 2, {2});
    add("quote inside an unquoted field", "ab\"c,d", {{"ab\"c", "d"}}, 1, 2, {2});
    add("blanks around quotes are content", " \"a\" ,b", {{" \"a\" ", "b"}}, 1, 2, {2});
    add("lone CR ends a line", "a\rb", {{"a"}, {"b"}}, 2, 1, {1, 1});
    add("CR CR gives an empty line", "a\r\rb", {{"a"}, {}, {"b"}}, 3, 1, {1, 0, 1});
    add("LF CR gives an empty line", "a\n\rb", {{"a"}, {}, {"b"}}, 3, 1, {1, 0, 1});
    add("only a line end", "\n", {{}}, 1, 1, {0});
    add("final LF adds no row", "a\n", {{"a"}}, 1, 1, {1});
    add("final CR LF adds no row", "a\r\n", {{"a"}}, 1, 1, {1});
    add("empty line at the end", "a\n\n", {{"a"}, {}}, 2, 1, {1, 0});
    add("empty line in the middle", "a\n\nb\n", {{"a"}, {}, {"b"}}, 3, 1, {1, 0, 1});
    add("delimiter as the last byte", "a,", {{"a"}}, 1, 1, {1});
    add("delimiter before the final line end", "a,\n", {{"a"}}, 1, 2, {1});
    add("empty cells before the line end", "a,,,\n", {{"a"}}, 1, 4, {1});
    add("empty cells at the end of the file", "a,,,", {{"a"}}, 1, 3, {1});
    add("empty first cell", ",a\n", {{"", "a"}}, 1, 2, {2});
    add("ragged rows, widest wins", "a\nb,c,d\ne,f\n", {{"a"}, {"b", "c", "d"}, {"e", "f"}}, 3, 3,
        {1, 3, 2});
    add("unterminated quote runs to the end", "a,\"bc", {{"a", "\"bc"}}, 1, 2, {2});
    add("unterminated quote loses a final delimiter", "\"bc,", {{"\"bc"}}, 1, 1, {1});
    add("unterminated quote loses a final line end", "x\n\"b\nc\n", {{"x"}, {"\"b\nc"}}, 2, 1,
        {1, 1});
    add("lone quote at the end", "a,\"", {{"a", "\""}}, 1, 2, {2});
    add("quoted field before CR LF", "\"a\"\r\nb", {{"a"}, {"b"}}, 2, 1, {1, 1});
    add("quoted field before a final delimiter", "\"a\",", {{"a"}}, 1, 1, {1});
    add("quote right after a CR", "a\r\"b\"", {{"a"}, {"b"}}, 2, 1, {1, 1});
    add("NUL is content", QByteArray("a\0b,c", 5), {{QByteArray("a\0b", 3), "c"}}, 1, 2, {2});
    add("long fields", "abcdefghijklmnopqrstuvwxyz,\"ABCDEFGHIJKLMNOPQ\"\"RSTU\"",
        {{"abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQ\"RSTU"}}, 1, 2, {2});
    add("quoted RS is content",
        "\"a\x1E"
        "b\",c",
        {{"a\x1E"
          "b",
          "c"}},
        1, 2, {2});
    add("All Quotes reads quotes", "\"a\",\"b\"\n", {{"a", "b"}}, 1, 2, {2}, ',', AllQuotes);
    add("Sparse Quotes reads quotes", "\"a,b\",c\"d\n", {{"a,b", "c\"d"}}, 1, 2, {2}, ',',
        SparseQuotes);
    add("ASCII Separated Values reads quotes",
        "\"a\x1F\"\x1F"
        "b",
        {{"a\x1F", "b"}}, 1, 2, {2}, '\x1F', AsciiSeparatedValues);
    add("Delimiter Only: quotes are content", "\"a,b\"", {{"\"a", "b\""}}, 1, 2, {2}, ',',
        DelimiterOnly);
    add("Delimiter Only: no line break in quotes", "\"a\nb\"", {{"\"a"}, {"b\""}}, 2, 1, {1, 1},
        ',', DelimiterOnly);
    add("tab", "a,b\tc\n", {{"a,b", "c"}}, 1, 2, {2}, '\t');
    add("semicolon", "\"x;y\";z", {{"x;y", "z"}}, 1, 2, {2}, ';');
    add("Latin-1 delimiter",
        "a\xA7"
        "b\n",
        {{"a", "b"}}, 1, 2, {2}, '\xA7');
    add("quote as delimiter", "a\"b\nc\"\"d", {{"a", "b"}, {"c", "", "d"}}, 2, 3, {2, 3}, '"');
    add("CR as delimiter", "a\rb\r\nc", {{"a", "b", ""}, {"c"}}, 2, 3, {2, 1}, '\r');
}

void TestCsvReader::read() {
    QFETCH(QByteArray, input);
    QFETCH(char, delimiter);
    QFETCH(int, standard);
    QFETCH(Table, cells);
    QFETCH(int, rows);
    QFETCH(int, columns);
    QFETCH(QList<int>, stored);

    for (EncodingType e : kUnitForms) {
        const int w = encodingWidth(e);
        const bool be = encodingIsBigEndian(e);
        const QString path = writeTemp(widen(input, w, be));
        bool ok = false;
        auto c = load(path, {delimiter, ParsingStandard(standard), e, 0}, &ok);
        const QString where = QStringLiteral("width %1%2: ").arg(w).arg(be ? " BE" : "");
        QVERIFY2(ok, qPrintable(where));
        QVERIFY2(c->rowCount() == rows && c->columnCount() == columns &&
                     logicalCells(*c) == padded(widen(cells, w, be), rows, columns) &&
                     storedCounts(*c) == stored,
                 qPrintable(where + describe(*c)));
    }
}

void TestCsvReader::noDelimiter_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("standard");
    QTest::addColumn<QByteArrayList>("lines");
    QTest::newRow("each line one cell")
        << QByteArray("a,b\nc") << int(Rfc4180) << QByteArrayList{"a,b", "c"};
    QTest::newRow("quotes are plain, whatever the standard")
        << QByteArray("\"a\nb\"\n") << int(Rfc4180) << QByteArrayList{"\"a", "b\""};
    QTest::newRow("CR LF, lone CR, empty lines")
        << QByteArray("x\r\n\ry\r\r\n") << int(AllQuotes) << QByteArrayList{"x", "", "y", ""};
    QTest::newRow("final line end adds no row")
        << QByteArray("x\r") << int(Rfc4180) << QByteArrayList{"x"};
    QTest::newRow("only a line end") << QByteArray("\r\n") << int(Rfc4180) << QByteArrayList{""};
}

void TestCsvReader::noDelimiter() {
    QFETCH(QByteArray, input);
    QFETCH(int, standard);
    QFETCH(QByteArrayList, lines);
    Table expected;
    for (const QByteArray& l : lines)
        expected.append({l});
    for (EncodingType e : kUnitForms) {
        const int w = encodingWidth(e);
        const bool be = encodingIsBigEndian(e);
        bool ok = false;
        auto c = load(writeTemp(widen(input, w, be)), {0, ParsingStandard(standard), e, 0}, &ok);
        QVERIFY(ok);
        QCOMPARE(c->columnCount(), 1);
        QVERIFY2(logicalCells(*c) == padded(widen(expected, w, be), int(lines.size()), 1),
                 qPrintable(describe(*c)));
    }
}

// Outside quotes RS ends a line of a single-byte file in every standard; the
// wide readers keep it as content.
void TestCsvReader::recordSeparator_data() {
    QTest::addColumn<char>("delimiter");
    QTest::addColumn<int>("standard");
    for (int s : {Rfc4180, DelimiterOnly, AllQuotes, SparseQuotes, AsciiSeparatedValues})
        QTest::addRow("%s", qPrintable(parsingStandardName(ParsingStandard(s)))) << ',' << s;
    QTest::newRow("no delimiter") << char(0) << int(Rfc4180);
}

void TestCsvReader::recordSeparator() {
    QFETCH(char, delimiter);
    QFETCH(int, standard);
    const QByteArray input("a,b\x1E"
                           "c\x1E");
    bool ok = false;
    auto narrow = load(writeTemp(input), {delimiter, ParsingStandard(standard), Utf8, 0}, &ok);
    QVERIFY(ok);
    const Table two_rows = delimiter ? Table{{"a", "b"}, {"c"}} : Table{{"a,b"}, {"c"}};
    QCOMPARE(logicalCells(*narrow), padded(two_rows, 2, delimiter ? 2 : 1));

    for (EncodingType e : {Utf16LE, Utf16BE, Utf32LE, Utf32BE}) {
        const int w = encodingWidth(e);
        const bool be = encodingIsBigEndian(e);
        auto wide =
            load(writeTemp(widen(input, w, be)), {delimiter, ParsingStandard(standard), e, 0}, &ok);
        QVERIFY(ok);
        const Table one_row = delimiter ? Table{{"a", "b\x1E"
                                                      "c\x1E"}}
                                        : Table{{input}};
        QCOMPARE(logicalCells(*wide), widen(one_row, w, be));
    }
}

void TestCsvReader::byteOrderMark_data() {
    QTest::addColumn<int>("encoding");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<Table>("cells");
    QTest::addColumn<QByteArray>("bom"); // empty: none recorded

    const QByteArray le16 = widen("a,b\n", 2, false), be16 = widen("a,b\n", 2, true);
    const QByteArray le32 = widen("a,b\n", 4, false), be32 = widen("a,b\n", 4, true);
    const Table ab{{"a", "b"}};
    const Table ab16 = widen(ab, 2, false), ab16be = widen(ab, 2, true);
    const Table ab32 = widen(ab, 4, false), ab32be = widen(ab, 4, true);
    const QByteArray bom8("\xEF\xBB\xBF"), bom16le("\xFF\xFE"), bom16be("\xFE\xFF");
    const QByteArray bom32le("\xFF\xFE\0\0", 4), bom32be("\0\0\xFE\xFF", 4);

    QTest::newRow("UTF-8 mark left out") << int(Utf8) << bom8 + "a,b\n" << ab << bom8;
    QTest::newRow("ISO 8859-1 keeps the bytes") << int(Iso8859_1) << bom8 + "a,b\n"
                                                << Table{{bom8 + "a", "b"}} << QByteArray();
    QTest::newRow("the fallback encoding has no mark") << int(UnknownEncoding) << bom8 + "a,b\n"
                                                       << Table{{bom8 + "a", "b"}} << QByteArray();
    QTest::newRow("UTF-8 mark cut short is content")
        << int(Utf8) << QByteArray("\xEF\xBB") << Table{{"\xEF\xBB"}} << QByteArray();
    QTest::newRow("UTF-8 mark later in the file is content")
        << int(Utf8) << "a," + bom8 + "b" << Table{{"a", bom8 + "b"}} << QByteArray();
    QTest::newRow("only a mark: empty table") << int(Utf8) << bom8 << Table{} << bom8;
    QTest::newRow("UTF-16 undecided, FF FE") << int(Utf16) << bom16le + le16 << ab16 << bom16le;
    QTest::newRow("UTF-16 undecided, FE FF, still read little endian")
        << int(Utf16) << bom16be + le16 << ab16 << bom16be;
    QTest::newRow("UTF-16BE") << int(Utf16BE) << bom16be + be16 << ab16be << bom16be;
    QTest::newRow("UTF-16 detected little endian")
        << int(Utf16LEDetected) << bom16le + le16 << ab16 << bom16le;
    QTest::newRow("UTF-16LE: big endian mark is content")
        << int(Utf16LE) << bom16be + le16 << Table{{bom16be + ab16[0][0], ab16[0][1]}}
        << QByteArray();
    QTest::newRow("UTF-16BE: UTF-8 mark is content")
        << int(Utf16BE) << bom8 + '\0' + be16 << Table{{bom8 + '\0' + ab16be[0][0], ab16be[0][1]}}
        << QByteArray();
    QTest::newRow("UTF-16LE without a mark, from the first byte")
        << int(Utf16LE) << le16 << ab16 << QByteArray();
    QTest::newRow("UTF-32 undecided, little endian mark")
        << int(Utf32) << bom32le + le32 << ab32 << bom32le;
    QTest::newRow("UTF-32 undecided, big endian mark")
        << int(Utf32) << bom32be + le32 << ab32 << bom32be;
    QTest::newRow("UTF-32BE") << int(Utf32BE) << bom32be + be32 << ab32be << bom32be;
    QTest::newRow("UTF-32 detected big endian")
        << int(Utf32BEDetected) << bom32be + be32 << ab32be << bom32be;
    QTest::newRow("UTF-32LE: big endian mark is content")
        << int(Utf32LE) << bom32be + le32 << Table{{bom32be + ab32[0][0], ab32[0][1]}}
        << QByteArray();
}

void TestCsvReader::byteOrderMark() {
    QFETCH(int, encoding);
    QFETCH(QByteArray, file);
    QFETCH(Table, cells);
    QFETCH(QByteArray, bom);
    const QString path = writeTemp(file);
    // The mark is found whatever the chunk size.
    for (qint64 chunk : {0, 1, 2, 3, 5}) {
        bool ok = false;
        auto c = load(path, {',', Rfc4180, EncodingType(encoding), chunk}, &ok);
        QVERIFY(ok);
        const int columns = cells.isEmpty() ? 0 : int(cells[0].size());
        QVERIFY2(logicalCells(*c) == padded(cells, int(cells.size()), columns),
                 qPrintable(QStringLiteral("chunk %1: %2").arg(chunk).arg(describe(*c))));
        QCOMPARE(c->hasBom(), !bom.isEmpty());
        QCOMPARE(c->byteOrderMark(), bom);
    }
}

// A trailing part of a code unit is dropped, at every chunk size.
void TestCsvReader::partialUnitDropped_data() {
    QTest::addColumn<int>("encoding");
    QTest::addColumn<int>("extra");
    for (EncodingType e : {Utf16LE, Utf16BE, Utf32LE, Utf32BE})
        for (int extra = 1; extra < encodingWidth(e); ++extra)
            QTest::addRow("%s + %d", qPrintable(encodingDisplayName(e)), extra) << int(e) << extra;
}

void TestCsvReader::partialUnitDropped() {
    QFETCH(int, encoding);
    QFETCH(int, extra);
    const EncodingType e = EncodingType(encoding);
    const int w = encodingWidth(e);
    const bool be = encodingIsBigEndian(e);
    const QByteArray whole = widen("a,\"b\"\r\nc", w, be);
    const QString path = writeTemp(whole + QByteArray(extra, 'X'));
    for (qint64 chunk = 0; chunk <= whole.size() + extra; ++chunk) {
        bool ok = false;
        auto c = load(path, {',', Rfc4180, e, chunk}, &ok);
        QVERIFY(ok);
        QCOMPARE(logicalCells(*c), widen(Table{{"a", "b"}, {"c", ""}}, w, be));
    }
}

// Files whose states cross a seam: quotes, doubled quotes, CR LF, empty
// lines, unterminated quotes, long fields, a mark.
void TestCsvReader::chunkSeams_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("bom");
    QTest::newRow("quotes and CR LF") << QByteArray("\"a\"\"b\",\"c\r\nd\"\r\n\r\n\"\"\r") << false;
    QTest::newRow("empty lines and CR CR LF") << QByteArray("a,b\r\n\r\nc\r\r\n,") << false;
    QTest::newRow("text after quotes") << QByteArray("\"x\"y\"\",\"\"\"\"\n,,\n\"") << false;
    QTest::newRow("unterminated") << QByteArray("p,\"unterminated,\r\nstill\"\"\r") << false;
    QTest::newRow("long fields")
        << QByteArray("abcdefghijklmnopqrstuvwxyz0123456789,\"ABCDEFGHIJ\"\"KLMNOPQRSTUVWXYZ\"\n"
                      "0123456789abcdefghij\r")
        << false;
    QTest::newRow("record separators") << QByteArray("a\x1E\"b\x1E"
                                                     "c\"\x1E\r\n\x1E")
                                       << false;
    QTest::newRow("mark then quotes") << QByteArray("\"q\",r\r\n\"\"") << true;
    QTest::newRow("mark then CR LF") << QByteArray("\r\nx,\r") << true;
}

void TestCsvReader::chunkSeams() {
    QFETCH(QByteArray, input);
    QFETCH(bool, bom);
    for (EncodingType e : kUnitForms) {
        const int w = encodingWidth(e);
        const bool be = encodingIsBigEndian(e);
        QByteArray file = widen(input, w, be);
        if (bom) file.prepend(encodingBom(e).toByteArray());
        const QByteArray whole = file;
        file.append(QByteArray(w - 1, '\x7F')); // a part unit at the end is dropped
        const QString path = writeTemp(file);
        const Dialect dialects[] = {
            {',', Rfc4180, e, 0}, {',', DelimiterOnly, e, 0}, {0, Rfc4180, e, 0}};
        for (Dialect d : dialects) {
            const auto expected = reference(whole, d);
            for (qint64 chunk = 0; chunk <= file.size(); ++chunk) {
                d.chunk = chunk;
                bool ok = false;
                auto c = load(path, d, &ok);
                QVERIFY(ok);
                QCOMPARE(c->hasBom(), bom);
                if (!sameStore(*c, *expected))
                    QFAIL(qPrintable(QStringLiteral("width %1%2, delimiter %3, quotes %4, chunk "
                                                    "%5:\n got  %6\n want %7")
                                         .arg(w)
                                         .arg(be ? " BE" : "")
                                         .arg(int(d.delimiter))
                                         .arg(d.standard != DelimiterOnly)
                                         .arg(chunk)
                                         .arg(describe(*c), describe(*expected))));
            }
        }
    }
}

void TestCsvReader::readsWhatAPlainWriterWrites_data() {
    QTest::addColumn<int>("encoding");
    QTest::addColumn<bool>("bom");
    for (EncodingType e : {Utf8, Utf16LE, Utf16BE, Utf32LE, Utf32BE})
        for (bool bom : {false, true})
            QTest::addRow("%s%s", qPrintable(encodingCodecName(e)), bom ? " with mark" : "")
                << int(e) << bom;
    // Undecided byte order: the mark is taken off, the text read as little endian.
    QTest::newRow("UTF-16 undecided") << int(Utf16) << true;
    QTest::newRow("UTF-32 undecided") << int(Utf32) << true;
}

// Random tables of awkward texts, written the plain RFC 4180 way (quote what
// needs it, and sometimes what doesn't), come back cell for cell.
void TestCsvReader::readsWhatAPlainWriterWrites() {
    QFETCH(int, encoding);
    QFETCH(bool, bom);
    const EncodingType e = EncodingType(encoding);
    const bool wide = encodingWidth(e) > 1;
    QRandomGenerator random(uint(encoding * 2 + bom));
    static const QStringList pieces{
        "a",  "b",   "Zz",   "0",    ",", ";", "\t", "|", "\"",   "\"\"",
        "\r", "\n",  "\r\n", "\x1E", " ", "é", "€",  "ß", "中文", QString::fromUtf8("\U0001D11E"),
        "§",  "x y", "\x1F"};
    static const char delimiters[] = {',', ';', '\t', '|'};

    for (int round = 0; round < 60; ++round) {
        const QChar delimiter = QLatin1Char(delimiters[random.bounded(4)]);
        const ParsingStandard standard = QList<ParsingStandard>{
            Rfc4180, AllQuotes, SparseQuotes, AsciiSeparatedValues}[random.bounded(4)];
        QList<QStringList> table;
        const int rows = random.bounded(1, 12);
        int widest = 0;
        for (int r = 0; r < rows; ++r) {
            QStringList row;
            const int n = random.bounded(1, 6);
            for (int col = 0; col < n; ++col) {
                QString cell;
                const int parts = random.bounded(5) == 0 ? 0 : random.bounded(1, 6);
                for (int k = 0; k < parts; ++k)
                    cell += pieces[random.bounded(pieces.size())];
                row.append(cell);
            }
            widest = std::max(widest, n);
            table.append(row);
        }

        QString text;
        for (int r = 0; r < rows; ++r) {
            const QStringList& row = table[r];
            for (int col = 0; col < row.size(); ++col) {
                const QString& cell = row[col];
                if (col) text += delimiter;
                const bool needs = cell.contains(delimiter) || cell.contains(u'"') ||
                                   cell.contains(u'\r') || cell.contains(u'\n') ||
                                   cell.contains(u'\x1E');
                // A line of one empty cell is written as "" so that it cannot
                // merge with a CR before it into one CR LF.
                const bool lone_empty = row.size() == 1 && cell.isEmpty();
                if (needs || lone_empty || random.bounded(6) == 0) {
                    QString quoted = cell;
                    quoted.replace(u'"', QStringLiteral("\"\""));
                    text += u'"' + quoted + u'"';
                } else {
                    text += cell;
                }
            }
            const bool last = r == rows - 1;
            // The last line's end is optional, unless its last cell is empty
            // and unquoted: a final delimiter makes no column.
            if (last && random.bounded(2) == 0 && !text.endsWith(delimiter)) break;
            static const QStringList endings{"\r\n", "\n", "\r", "\x1E"};
            text += endings[random.bounded(wide ? 3 : 4)];
        }

        QStringEncoder encoder(encoderFor(e));
        QByteArray file = encoder.encode(text);
        if (bom) file.prepend(encodingBom(e).toByteArray());

        bool ok = false;
        const qint64 chunk = random.bounded(3) == 0 ? random.bounded(1, 40) : 0;
        auto c = load(writeTemp(file), {char(delimiter.unicode()), standard, e, chunk}, &ok);
        QVERIFY(ok);
        Table expected;
        for (const QStringList& row : table) {
            QByteArrayList bytes;
            for (const QString& cell : row) {
                QStringEncoder cell_encoder(encoderFor(e));
                bytes.append(cell_encoder.encode(cell));
            }
            expected.append(bytes);
        }
        QList<int> stored;
        for (const QByteArrayList& row : expected) {
            int n = int(row.size());
            while (n > 0 && row[n - 1].isEmpty())
                --n;
            stored.append(n);
        }
        if (c->rowCount() != rows || c->columnCount() != widest ||
            logicalCells(*c) != padded(expected, rows, widest) || storedCounts(*c) != stored)
            QFAIL(qPrintable(
                QStringLiteral("round %1, chunk %2, file %3\n got  %4\n want %5")
                    .arg(round)
                    .arg(chunk)
                    .arg(show(file), describe(*c), show(padded(expected, rows, widest)))));
    }
}

// The fast single-byte reader against the unit-by-unit machine, on byte
// soups rich in the bytes that matter, at random chunk sizes.
void TestCsvReader::fastReaderMatchesStateMachine() {
    QRandomGenerator random(4180);
    static const char alphabet[] = {'a',    'b',  ',',  ';',    '"', '"', '\r',  '\n',
                                    '\x1E', '\t', '\0', '\xE9', ' ', '|', '\xA7'};
    static const char delimiters[] = {',', ';', '\t', '|', '\xA7', 0};
    for (int round = 0; round < 3000; ++round) {
        QByteArray soup;
        const int n = random.bounded(0, round % 10 == 0 ? 400 : 60);
        for (int i = 0; i < n; ++i)
            soup.append(alphabet[random.bounded(int(sizeof alphabet))]);
        Dialect d;
        d.delimiter = delimiters[random.bounded(int(sizeof delimiters))];
        d.standard = random.bounded(4) == 0 ? DelimiterOnly : Rfc4180;
        d.chunk = random.bounded(2) ? random.bounded(1, 70) : 0;
        bool ok = false;
        const QString path = dir_.filePath(QStringLiteral("soup.csv"));
        // A fresh file each time: rewriting a truncated one makes the file
        // system flush it, which costs more than the whole test.
        QFile::remove(path);
        QVERIFY(writeFile(path, soup));
        auto c = load(path, d, &ok);
        QVERIFY(ok);
        const auto expected = reference(soup, d);
        if (!sameStore(*c, *expected))
            QFAIL(qPrintable(QStringLiteral("delimiter %1, quotes %2, chunk %3, input %4\n got  "
                                            "%5\n want %6")
                                 .arg(int(d.delimiter))
                                 .arg(d.standard != DelimiterOnly)
                                 .arg(d.chunk)
                                 .arg(show(soup), describe(*c), describe(*expected))));
    }
}

void TestCsvReader::unopenableFileLeavesStore_data() {
    QTest::addColumn<QString>("path");
    QTest::newRow("missing file") << QStringLiteral("/nonexistent-gridmere/none.csv");
    QTest::newRow("a folder") << QStringLiteral("/");
}

void TestCsvReader::unopenableFileLeavesStore() {
    QFETCH(QString, path);
    EditableDataContainer c;
    fill(c, {{"keep", "me"}, {"x"}});
    c.setRowCount(5);
    QSignalSpy started(&c, &AbstractDataContainer::startProgressUpdateSignal);
    QSignalSpy finished(&c, &AbstractDataContainer::loadFinishedSignal);
    c.setFilepath(path);
    QVERIFY(!c.loadCSV());
    QCOMPARE(c.rowCount(), 5);
    QCOMPARE(c.columnCount(), 2);
    QCOMPARE(logicalCells(c), padded({{"keep", "me"}, {"x"}}, 5, 2));
    QCOMPARE(started.count(), 0);
    QCOMPARE(finished.count(), 0);
}

void TestCsvReader::emptyFile() {
    for (EncodingType e : kUnitForms) {
        EditableDataContainer c;
        QSignalSpy finished(&c, &AbstractDataContainer::loadFinishedSignal);
        c.setFilepath(writeTemp({}));
        c.setEncoding(e);
        QVERIFY(c.loadCSV());
        QCOMPARE(finished.count(), 1);
        QCOMPARE(c.rowCount(), 0);
        QCOMPARE(c.columnCount(), 0);
        QCOMPARE(c.fileSize(), 0);
    }
}

void TestCsvReader::cancel_data() {
    QTest::addColumn<bool>("wide");
    QTest::addColumn<int>("at_report"); // 0: at the start signal
    QTest::newRow("at the start") << false << 0;
    QTest::newRow("at the first report") << false << 1;
    QTest::newRow("at the second report") << false << 2;
    QTest::newRow("UTF-16 at the start") << true << 0;
    QTest::newRow("UTF-16 at the second report") << true << 2;
}

// A cancel is seen at the next line start: the line that reported is the
// last one read, complete, and no finish is announced.
void TestCsvReader::cancel() {
    QFETCH(bool, wide);
    QFETCH(int, at_report);
    EditableDataContainer c;
    c.setFilepath(wide ? wide_large_ : at_threshold_);
    c.setEncoding(wide ? Utf16LE : Utf8);
    QSignalSpy finished(&c, &AbstractDataContainer::loadFinishedSignal);
    int reports = 0;
    connect(
        &c, &AbstractDataContainer::startProgressUpdateSignal, this,
        [&] {
            if (at_report == 0) c.setCanceled(true);
        },
        Qt::DirectConnection);
    connect(
        &c, &AbstractDataContainer::loadProgressUpdateSignal, this,
        [&](int, int, int) {
            if (++reports == at_report) c.setCanceled(true);
        },
        Qt::DirectConnection);
    QVERIFY(!c.loadCSV());
    QCOMPARE(finished.count(), 0);
    QVERIFY(c.isCanceled());

    // Reports go out at the first line start past each step; lines are 100
    // units long and the step is counted in units.
    const qint64 step = csv::kProgressStep / (wide ? 2 : 1);
    const int last_line = at_report == 0 ? -1 : at_report == 1 ? 0 : int((step - 1) / 100 + 1);
    QCOMPARE(reports, std::max(at_report, 0));
    QCOMPARE(c.rowCount(), last_line + 1);
    QCOMPARE(c.storedRowCount(), last_line + 1);
    for (int r : {0, last_line / 2, last_line}) {
        if (last_line < 0) break;
        const QByteArray line = bigLine(r, 100);
        const QByteArray second = line.sliced(line.indexOf(',') + 1).chopped(1);
        QCOMPARE(c.data(r, 0), widen(QByteArray::number(r), wide ? 2 : 1, false));
        QCOMPARE(c.data(r, 1), widen(second, wide ? 2 : 1, false));
    }
}

void TestCsvReader::progress_data() {
    QTest::addColumn<int>("file");
    QTest::newRow("at the threshold") << 0;
    QTest::newRow("one byte below") << 1;
    QTest::newRow("UTF-16") << 2;
}

void TestCsvReader::progress() {
    QFETCH(int, file);
    const QString path = file == 0 ? at_threshold_ : file == 1 ? below_threshold_ : wide_large_;
    const qint64 size = QFileInfo(path).size();
    EditableDataContainer c;
    c.setFilepath(path);
    c.setEncoding(file == 2 ? Utf16LE : Utf8);
    QSignalSpy started(&c, &AbstractDataContainer::startProgressUpdateSignal);
    QSignalSpy reports(&c, &AbstractDataContainer::loadProgressUpdateSignal);
    QSignalSpy finished(&c, &AbstractDataContainer::loadFinishedSignal);
    QVERIFY(c.loadCSV());
    QCOMPARE(finished.count(), 1);
    QCOMPARE(c.fileSize(), size);
    if (file == 1) {
        QCOMPARE(started.count(), 0);
        QCOMPARE(reports.count(), 0);
        return;
    }
    QCOMPARE(started.count(), 1);
    // One report per step of the file offset, counted in units for wide files.
    const int width = file == 2 ? 2 : 1;
    const qint64 units = size / width, step = csv::kProgressStep / width;
    QList<int> expected_curr;
    for (qint64 at = 0; at < units; at += step)
        expected_curr.append(int(at / step));
    QList<int> curr;
    for (const QList<QVariant>& args : reports) {
        curr.append(args[0].toInt());
        QCOMPARE(args[1].toInt(), int(size / csv::kProgressStep + 1));
        QCOMPARE(args[2].toInt(), int(size / csv::kMiB));
    }
    QCOMPARE(curr, expected_curr);
}

QTEST_GUILESS_MAIN(TestCsvReader)
#include "tst_csvreader.moc"
