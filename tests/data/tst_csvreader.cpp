#include "data/csvstatemachine.h"
#include "data/editabledatacontainer.h"
#include "data/fileparameters.h"
#include "testutilstore.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cstdio>
#include <memory>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace testutil;

namespace {

// One encoding per code unit width and byte order.
constexpr EncodingType kUnitForms[] = {Utf8, Utf16LE, Utf16BE, Utf32LE, Utf32BE};

struct Dialect {
    char delimiter = ',';
    ParsingStandard standard = Rfc4180;
    EncodingType encoding = Utf8;
    qint64 chunk = 0; // 0: the reader's own limit
};

// Null unless the load succeeded and announced its end exactly once.
std::unique_ptr<EditableDataContainer> load(const QString& path, const Dialect& d) {
    auto c = std::make_unique<EditableDataContainer>();
    QSignalSpy finished(c.get(), &AbstractDataContainer::loadFinishedSignal);
    c->setFilepath(path);
    c->setDelimiters(d.delimiter, d.delimiter);
    c->setParsingStandard(d.standard);
    c->setEncoding(d.encoding);
    if (d.chunk > 0) c->setChunkLimit(d.chunk);
    const bool ok = c->loadCSV() && finished.count() == 1;
    return ok ? std::move(c) : nullptr;
}

// Stands for the loader's sink: every field goes through setCell.
struct StoreHost {
    EditableDataContainer& c;
    bool lineStart(qint64) { return true; }
    void setCell(qint64 row, qint64 column, const char* bytes, size_t size) {
        c.setCell(int(row), int(column), QByteArrayView(bytes, qsizetype(size)));
    }
};

// The reference for one unit form; false when `d` is of another.
template <int W, bool BigEndian>
bool referenceLoad(EditableDataContainer& out, QByteArrayView bytes, const Dialect& d) {
    if (encodingWidth(d.encoding) != W || encodingIsBigEndian(d.encoding) != BigEndian)
        return false;
    StoreHost host{out};
    auto run = [&](auto&& machine) {
        machine.feed(bytes.data(), bytes.size() / W, 0);
        machine.finish();
    };
    if (d.delimiter)
        run(CsvStateMachine<W, BigEndian, true, StoreHost>(host, d.delimiter,
                                                           d.standard != DelimiterOnly));
    else
        run(CsvStateMachine<W, BigEndian, false, StoreHost>(host, 0, false));
    return true;
}

// Sizes, stored layout and cells: equal descriptions, equal stores.
QString describe(const EditableDataContainer& c) {
    QStringList counts;
    for (int n : storedCounts(c))
        counts.append(QString::number(n));
    return QStringLiteral("%1x%2 stored [%3]: %4")
        .arg(c.rowCount())
        .arg(c.columnCount())
        .arg(counts.join(u' '), show(logicalCells(c)));
}

// The store a reader must make of `t`: what setting each cell in turn makes,
// so that a row stores up to its last non-empty cell.
QString describe(const Table& t) {
    EditableDataContainer c;
    for (int r = 0; r < t.size(); ++r)
        for (int col = 0; col < t[r].size(); ++col)
            c.setCell(r, col, t[r][col]);
    return describe(c);
}

// Empty when loading `path`, which holds `file`, makes the store that the
// unit-by-unit machine makes of the whole file in memory.
QString differenceFromReference(const QString& path, QByteArrayView file, const Dialect& d) {
    auto c = load(path, d);
    if (!c) return QStringLiteral("%1 failed to load").arg(path);
    EditableDataContainer want;
    const QByteArrayView body = file.sliced(bomLengthAtStart(file, d.encoding));
    referenceLoad<1, false>(want, body, d) || referenceLoad<2, false>(want, body, d) ||
        referenceLoad<2, true>(want, body, d) || referenceLoad<4, false>(want, body, d) ||
        referenceLoad<4, true>(want, body, d);
    const bool marked = body.size() < file.size();
    if (c->hasBom() == marked && describe(*c) == describe(want)) return {};
    return QStringLiteral("%1, delimiter %2, quotes %3, chunk %4, input %5\n got  %6\n want %7")
        .arg(QString::fromLatin1(encodingCodecName(d.encoding)))
        .arg(int(d.delimiter))
        .arg(d.standard != DelimiterOnly)
        .arg(d.chunk)
        .arg(show(file), describe(*c), describe(want));
}

// Line i reads "i,text...\n", `length` characters in all.
QByteArray bigLine(int i, int length) {
    QByteArray line = QByteArray::number(i) + ',';
    return line + QByteArray(length - line.size() - 1, char('a' + i % 26)) + '\n';
}

} // namespace

class TestCsvReader : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void read_data();
    void read();
    void byteOrderMark_data();
    void byteOrderMark();
    void chunkSeams_data();
    void chunkSeams();
    void readsWhatAPlainWriterWrites_data();
    void readsWhatAPlainWriterWrites();
    void fastReaderMatchesStateMachine();
    void unopenableFileLeavesStore();
    void loadBeyondMemoryFails();
    void progress_data();
    void progress();

private:
    QString writeTemp(const QByteArray& bytes) {
        const QString path = dir_.filePath(QStringLiteral("f%1.csv").arg(files_++));
        return writeFile(path, bytes) ? path : QString();
    }
    QTemporaryDir dir_;
    int files_ = 0;
    QString at_threshold_, below_threshold_, wide_large_;
};

void TestCsvReader::initTestCase() {
    QVERIFY(dir_.isValid());
    // Exactly the progress threshold, in 100-byte lines with a short last one.
    QByteArray big;
    for (int i = 0; big.size() + 100 <= csv::kProgressThreshold; ++i)
        big.append(bigLine(i, 100));
    big.append(QByteArray(csv::kProgressThreshold - big.size() - 1, 'z')).append('\n');
    at_threshold_ = writeTemp(big);
    big.chop(1);
    below_threshold_ = writeTemp(big);
    // The same kind of lines in UTF-16, 100 units each.
    QByteArray wide;
    for (int i = 0; i < 130000; ++i)
        wide.append(widen(bigLine(i, 100), 2, false));
    wide_large_ = writeTemp(wide);
    QVERIFY(!below_threshold_.isEmpty() && !wide_large_.isEmpty());
    QCOMPARE(QFileInfo(at_threshold_).size(), csv::kProgressThreshold);
}

// Each case runs through the narrow reader and, with every byte widened to a
// code unit, through the wide ones. The table also fixes the logical sizes
// (rows, widest row) and the stored layout (up to each row's last non-empty
// cell).
void TestCsvReader::read_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<char>("delimiter");
    QTest::addColumn<ParsingStandard>("standard");
    QTest::addColumn<Table>("cells");
    QTest::addColumn<Table>("wide"); // what the wide readers make, where it differs
    auto add = [](const char* name, QByteArray in, Table cells, char delimiter = ',',
                  ParsingStandard s = Rfc4180, Table wide = {}) {
        QTest::newRow(name) << in << delimiter << s << cells << wide;
    };
    // clang-format off
    add("CR LF lines", "a,b\r\nc\r\n", {{"a", "b"}, {"c"}});
    add("only a line end: one empty cell", "\n", {{""}});
    add("empty line at the end, the final LF adds none", "a\n\n", {{"a"}, {""}});
    add("CR CR gives an empty line", "a\r\rb", {{"a"}, {""}, {"b"}});
    add("LF CR gives an empty line", "a\n\rb", {{"a"}, {""}, {"b"}});
    add("quote right after a lone CR", "a\r\"b\"", {{"a"}, {"b"}});
    add("empty file", "", {});
    add("delimiters before a line end all make columns", "a,,,\n", {{"a", "", "", ""}});
    add("a delimiter as the last byte makes none", "a,,,", {{"a", "", ""}});
    add("ragged rows, widest wins", "a\nb,c,d\ne,f\n", {{"a"}, {"b", "c", "d"}, {"e", "f"}});
    add("quoted delimiter", "\"a,b\",c", {{"a,b", "c"}});
    add("empty quotes", "\"\"", {{""}});
    add("two doubled quotes", "\"\"\"\"", {{"\""}});
    add("doubled quote before the closing one", "\"a\"\"\"", {{"a\""}});
    add("line break in quotes", "\"line1\nline2\",x", {{"line1\nline2", "x"}});
    add("text after the closing quote, no collapse", "\"a\"\"b\"x,y", {{"\"a\"\"b\"x", "y"}});
    add("quote inside an unquoted field", "ab\"c,d", {{"ab\"c", "d"}});
    add("quoted field before CR LF", "\"a\"\r\nb", {{"a"}, {"b"}});
    add("unterminated quote runs to the end", "a,\"bc", {{"a", "\"bc"}});
    add("unterminated quote loses a final delimiter", "\"bc,", {{"\"bc"}});
    add("unterminated quote loses a final line end", "x\n\"b\nc\n", {{"x"}, {"\"b\nc"}});
    add("NUL is content", QByteArray("a\0b,c", 5), {{QByteArray("a\0b", 3), "c"}});
    add("long fields", "abcdefghijklmnopqrstuvwxyz,\"ABCDEFGHIJKLMNOPQ\"\"RSTU\"",
        {{"abcdefghijklmnopqrstuvwxyz", "ABCDEFGHIJKLMNOPQ\"RSTU"}});
    add("quoted RS is content", "\"a\x1E" "b\",c", {{"a\x1E" "b", "c"}});
    add("All Quotes reads quotes", "\"a\",\"b\"\n", {{"a", "b"}}, ',', AllQuotes);
    add("Sparse Quotes reads quotes", "\"a,b\",c\"d\n", {{"a,b", "c\"d"}}, ',', SparseQuotes);
    add("ASCII Separated Values reads quotes", "\"a\x1F\"\x1F" "b", {{"a\x1F", "b"}}, '\x1F',
        AsciiSeparatedValues);
    add("Delimiter Only: quotes are content", "\"a,b\nc\"", {{"\"a", "b"}, {"c\""}}, ',',
        DelimiterOnly);
    add("tab: a comma is content", "a,b\t\"c\td\"\n", {{"a,b", "c\td"}}, '\t');
    add("Latin-1 delimiter", "a\xA7" "b\n", {{"a", "b"}}, '\xA7');
    add("quote as delimiter", "a\"b\nc\"\"d", {{"a", "b"}, {"c", "", "d"}}, '"');
    add("CR as delimiter", "a\rb\r\nc", {{"a", "b", ""}, {"c"}}, '\r');
    add("no delimiter: a line is a cell, quotes plain", "a,\"b\nc\"\n", {{"a,\"b"}, {"c\""}}, 0);
    add("no delimiter: CR LF, lone CR, empty lines", "x\r\n\ry\r\r\n", {{"x"}, {""}, {"y"}, {""}},
        0, AllQuotes);
    add("no delimiter: only a line end, then a final CR", "\r\nx\r", {{""}, {"x"}}, 0);
    // Outside quotes RS ends a line of a single-byte file in every standard.
    const QByteArray rs("a,b\x1E" "c\x1E");
    for (ParsingStandard s :
         {Rfc4180, DelimiterOnly, AllQuotes, SparseQuotes, AsciiSeparatedValues})
        QTest::addRow("RS ends a single-byte line, %s", qPrintable(parsingStandardName(s)))
            << rs << ',' << s << Table{{"a", "b"}, {"c"}} << Table{{"a", "b\x1E" "c\x1E"}};
    add("no delimiter: RS ends a single-byte line", rs, {{"a,b"}, {"c"}}, 0, Rfc4180, {{rs}});
    // clang-format on
}

void TestCsvReader::read() {
    QFETCH(QByteArray, input);
    QFETCH(char, delimiter);
    QFETCH(ParsingStandard, standard);
    QFETCH(Table, cells);
    QFETCH(Table, wide);
    for (EncodingType e : kUnitForms) {
        const int w = encodingWidth(e);
        const bool be = encodingIsBigEndian(e);
        auto c = load(writeTemp(widen(input, w, be)), {delimiter, standard, e});
        QVERIFY(c);
        QCOMPARE(describe(*c), describe(widen(w > 1 && !wide.isEmpty() ? wide : cells, w, be)));
    }
}

// The mark is taken off and remembered only where it is the encoding's own,
// and only at the very start. Which marks each encoding accepts is the file
// parameters' concern.
void TestCsvReader::byteOrderMark_data() {
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<Table>("cells");
    QTest::addColumn<QByteArray>("bom"); // empty: none recorded
    const QByteArray bom8("\xEF\xBB\xBF"), bom16be("\xFE\xFF"), bom32be("\0\0\xFE\xFF", 4);
    const QByteArray ab("a,b\n"), none;
    const Table cells{{"a", "b"}};
    // clang-format off
    QTest::newRow("UTF-8 mark left out") << Utf8 << bom8 + ab << cells << bom8;
    QTest::newRow("only a mark: empty table") << Utf8 << bom8 << Table{} << bom8;
    QTest::newRow("UTF-8 mark cut short is content")
        << Utf8 << QByteArray("\xEF\xBB") << Table{{"\xEF\xBB"}} << none;
    QTest::newRow("UTF-8 mark at the start of a later chunk is content")
        << Utf8 << "a,b," + bom8 + "c" << Table{{"a", "b", bom8 + "c"}} << none;
    QTest::newRow("single-byte encodings have no mark")
        << Iso8859_1 << bom8 + ab << Table{{bom8 + "a", "b"}} << none;
    QTest::newRow("UTF-16 undecided, FE FF, still read little endian")
        << Utf16 << bom16be + widen(ab, 2, false) << widen(cells, 2, false) << bom16be;
    QTest::newRow("UTF-32 undecided, big endian mark")
        << Utf32 << bom32be + widen(ab, 4, false) << widen(cells, 4, false) << bom32be;
    // clang-format on
}

void TestCsvReader::byteOrderMark() {
    QFETCH(EncodingType, encoding);
    QFETCH(QByteArray, file);
    QFETCH(Table, cells);
    QFETCH(QByteArray, bom);
    const QString path = writeTemp(file);
    for (qint64 chunk : {0, 1, 4}) { // 1: seams inside the mark, 4: right after the longest
        auto c = load(path, {',', Rfc4180, encoding, chunk});
        QVERIFY(c);
        QCOMPARE(describe(*c), describe(cells));
        QCOMPARE(c->hasBom(), !bom.isEmpty());
        QCOMPARE(c->byteOrderMark(), bom);
    }
}

// Files whose states cross a seam at every byte offset, against the reference
// reading the whole file at once.
void TestCsvReader::chunkSeams_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("bom");
    // clang-format off
    QTest::newRow("quotes and CR LF") << QByteArray("\"a\"\"b\",\"c\r\nd\"\r\n\r\n\"\"\r") << false;
    QTest::newRow("empty lines and CR CR LF") << QByteArray("a,b\r\n\r\nc\r\r\n,") << false;
    QTest::newRow("text after quotes") << QByteArray("\"x\"y\"\",\"\"\"\"\n,,\n\"") << false;
    QTest::newRow("unterminated") << QByteArray("p,\"unterminated,\r\nstill\"\"\r") << false;
    QTest::newRow("long fields")
        << QByteArray("abcdefghijklmnopqrstuvwxyz0123456789,\"ABCDEFGHIJ\"\"KLMNOPQRSTUVWXYZ\"\n"
                      "0123456789abcdefghij\r") << false;
    QTest::newRow("record separators") << QByteArray("a\x1E\"b\x1E" "c\"\x1E\r\n\x1E") << false;
    QTest::newRow("mark, CR LF, quotes") << QByteArray("\r\n\"q\",r\r\n\"\"") << true;
    // clang-format on
}

void TestCsvReader::chunkSeams() {
    QFETCH(QByteArray, input);
    QFETCH(bool, bom);
    for (EncodingType e : kUnitForms) {
        const int w = encodingWidth(e);
        const QByteArray whole = (bom ? encodingBom(e).toByteArray() : QByteArray()) +
                                 widen(input, w, encodingIsBigEndian(e));
        // A part of a unit at the end is dropped.
        const QString path = writeTemp(whole + QByteArray(w - 1, '\x7F'));
        for (Dialect d :
             {Dialect{',', Rfc4180, e}, Dialect{',', DelimiterOnly, e}, Dialect{0, Rfc4180, e}}) {
            for (d.chunk = 0; d.chunk < whole.size() + w; ++d.chunk) {
                const QString difference = differenceFromReference(path, whole, d);
                if (!difference.isEmpty()) QFAIL(qPrintable(difference));
            }
        }
    }
}

void TestCsvReader::readsWhatAPlainWriterWrites_data() {
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<bool>("bom");
    for (EncodingType e : kUnitForms)
        for (bool bom : {false, true})
            QTest::addRow("%s%s", encodingCodecName(e).constData(), bom ? " with mark" : "")
                << e << bom;
    QTest::newRow("UTF-16 undecided") << Utf16 << true;
    QTest::newRow("UTF-32 undecided") << Utf32 << true;
}

// Random tables of awkward texts, written the plain RFC 4180 way (quote what
// needs it, and sometimes what doesn't), come back cell for cell.
void TestCsvReader::readsWhatAPlainWriterWrites() {
    QFETCH(EncodingType, encoding);
    QFETCH(bool, bom);
    // After its mark, text of undecided byte order is read as little endian.
    const EncodingType form = encoding == Utf16 ? Utf16LE : encoding == Utf32 ? Utf32LE : encoding;
    QRandomGenerator random(uint(encoding * 2 + bom));
    static const QStringList pieces{
        "a",  "b",   "Zz",   "0",    ",", ";", "\t", "|", "\"",   "\"\"",
        "\r", "\n",  "\r\n", "\x1E", " ", "é", "€",  "ß", "中文", QString::fromUtf8("\U0001D11E"),
        "§",  "x y", "\x1F"};
    static const QStringList endings{"\r\n", "\n", "\r", "\x1E"};
    for (int round = 0; round < 60; ++round) {
        const QChar delimiter = QLatin1Char(",;\t|"[random.bounded(4)]);
        const ParsingStandard standard =
            std::array{Rfc4180, AllQuotes, SparseQuotes, AsciiSeparatedValues}[random.bounded(4)];
        Table expected;
        QString text;
        const int rows = random.bounded(1, 12);
        for (int r = 0; r < rows; ++r) {
            const int n = random.bounded(1, 6);
            expected.append(QByteArrayList());
            for (int col = 0; col < n; ++col) {
                QString cell;
                for (int k = random.bounded(5) ? random.bounded(1, 6) : 0; k > 0; --k)
                    cell += pieces[random.bounded(pieces.size())];
                expected.last().append(encodeCell(cell, form));
                if (col) text += delimiter;
                const bool needs = cell.contains(delimiter) || cell.contains(u'"') ||
                                   cell.contains(u'\r') || cell.contains(u'\n') ||
                                   cell.contains(u'\x1E');
                // A line of one empty cell is written as "" so that it cannot
                // merge with a CR before it into one CR LF.
                if (needs || (n == 1 && cell.isEmpty()) || random.bounded(6) == 0)
                    text += u'"' + QString(cell).replace(u'"', QStringLiteral("\"\"")) + u'"';
                else
                    text += cell;
            }
            // The last line's end is optional, unless its last cell is empty
            // and unquoted: a final delimiter makes no column.
            if (r == rows - 1 && random.bounded(2) == 0 && !text.endsWith(delimiter)) break;
            text += endings[random.bounded(encodingWidth(encoding) > 1 ? 3 : 4)];
        }
        const QByteArray file =
            (bom ? encodingBom(encoding).toByteArray() : QByteArray()) + encodeCell(text, form);
        const qint64 chunk = random.bounded(3) == 0 ? random.bounded(1, 40) : 0;
        auto c = load(writeTemp(file), {char(delimiter.unicode()), standard, encoding, chunk});
        QVERIFY(c);
        // The file on both sides, so that a failure shows it.
        QCOMPARE(show(file) + '\n' + describe(*c), show(file) + '\n' + describe(expected));
    }
}

// The fast single-byte reader against the unit-by-unit machine, on byte
// soups rich in the bytes that matter, at random chunk sizes.
void TestCsvReader::fastReaderMatchesStateMachine() {
    QRandomGenerator random(4180);
    static const char alphabet[] = {'a',    'b',  ',',  ';',    '"', '"', '\r',  '\n',
                                    '\x1E', '\t', '\0', '\xE9', ' ', '|', '\xA7'};
    static const char delimiters[] = {',', ';', '\t', '|', '\xA7', 0};
    const QString path = dir_.filePath(QStringLiteral("soup.csv"));
    for (int round = 0; round < 3000; ++round) {
        QByteArray soup;
        for (int n = random.bounded(0, round % 10 == 0 ? 400 : 60); n > 0; --n)
            soup.append(alphabet[random.bounded(int(sizeof alphabet))]);
        const Dialect d{delimiters[random.bounded(int(sizeof delimiters))],
                        random.bounded(4) == 0 ? DelimiterOnly : Rfc4180, Utf8,
                        random.bounded(2) ? random.bounded(1, 70) : 0};
        // A fresh file each time: rewriting a truncated one makes the file
        // system flush it, which costs more than the whole test.
        QFile::remove(path);
        QVERIFY(writeFile(path, soup));
        const QString difference = differenceFromReference(path, soup, d);
        if (!difference.isEmpty()) QFAIL(qPrintable(difference));
    }
}

void TestCsvReader::unopenableFileLeavesStore() {
    EditableDataContainer c;
    fill(c, {{"keep", "me"}, {"x"}});
    c.setRowCount(5);
    const QString before = describe(c);
    QSignalSpy started(&c, &AbstractDataContainer::startProgressUpdateSignal);
    QSignalSpy finished(&c, &AbstractDataContainer::loadFinishedSignal);
    c.setFilepath(dir_.filePath("missing.csv"));
    QVERIFY(!c.loadCSV());
    QCOMPARE(describe(c), before);
    QCOMPARE(started.count() + finished.count(), 0);
}

// Under an address-space limit the load runs out of memory halfway: it must
// fail and give back what it read, not end the process.
void TestCsvReader::loadBeyondMemoryFails() {
#if defined(__SANITIZE_ADDRESS__)
    QSKIP("the address sanitizer reserves more than any limit left to the load");
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
    QSKIP("the address sanitizer reserves more than any limit left to the load");
#endif
#endif
    const QString path = dir_.filePath("huge.csv");
    {
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly));
        const QByteArray line = "a,b,c,d,e,f,g,h,i,j,k,l,m,n,o,p\n";
        QByteArray block;
        while (block.size() < 1024 * 1024)
            block += line;
        for (int i = 0; i < 48; ++i)
            f.write(block);
    }
    const pid_t child = fork();
    QVERIFY(child >= 0);
    if (child == 0) {
        long pages = 0;
        if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
            if (std::fscanf(statm, "%ld", &pages) != 1) pages = 0;
            std::fclose(statm);
        }
        // Well below what the 48 MiB file takes once stored.
        const rlim_t limit = rlim_t(pages) * 4096 + 40 * 1024 * 1024;
        const rlimit r{limit, limit};
        setrlimit(RLIMIT_AS, &r);
        // QTest would catch an escaping exception and go on as the parent.
        try {
            EditableDataContainer c;
            c.setFilepath(path);
            const bool loaded = c.loadCSV();
            _exit(loaded ? 1 : c.rowCount() == 0 && c.storedRowCount() == 0 ? 0 : 2);
        } catch (...) {
            _exit(3);
        }
    }
    int status = 0;
    QElapsedTimer clock;
    clock.start();
    while (waitpid(child, &status, WNOHANG) == 0) {
        if (clock.elapsed() > 60000) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            QFAIL("the load hung");
        }
        QTest::qSleep(20);
    }
    QVERIFY2(WIFEXITED(status), "the load ended the process");
    QCOMPARE(WEXITSTATUS(status), 0);
}

void TestCsvReader::progress_data() {
    QTest::addColumn<int>("file");      // 0: at the threshold, 1: a byte below, 2: UTF-16
    QTest::addColumn<int>("cancel_at"); // -1: never, 0: at the start signal, n: at report n
    QTest::newRow("at the threshold") << 0 << -1;
    QTest::newRow("one byte below: no reports") << 1 << -1;
    QTest::newRow("UTF-16") << 2 << -1;
    QTest::newRow("canceled at the start") << 0 << 0;
    QTest::newRow("canceled at the first report") << 0 << 1;
    QTest::newRow("canceled at the second report") << 0 << 2;
    QTest::newRow("UTF-16 canceled at the second report") << 2 << 2;
}

// One report per step of the file offset, counted in units, at the first line
// start past it. A cancel is seen at the next line start: the line that
// reported is the last one read, complete, and no finish is announced.
void TestCsvReader::progress() {
    QFETCH(int, file);
    QFETCH(int, cancel_at);
    const QString path = file == 0 ? at_threshold_ : file == 1 ? below_threshold_ : wide_large_;
    const qint64 size = QFileInfo(path).size();
    const int w = file == 2 ? 2 : 1;
    EditableDataContainer c;
    c.setFilepath(path);
    c.setEncoding(w == 2 ? Utf16LE : Utf8);
    QSignalSpy started(&c, &AbstractDataContainer::startProgressUpdateSignal);
    QSignalSpy reports(&c, &AbstractDataContainer::loadProgressUpdateSignal);
    QSignalSpy finished(&c, &AbstractDataContainer::loadFinishedSignal);
    connect(&c, &AbstractDataContainer::startProgressUpdateSignal,
            [&] { c.setCanceled(cancel_at == 0); });
    connect(&c, &AbstractDataContainer::loadProgressUpdateSignal,
            [&] { c.setCanceled(reports.count() == cancel_at); });
    QCOMPARE(c.loadCSV(), cancel_at < 0);
    QCOMPARE(finished.count(), cancel_at < 0 ? 1 : 0);
    QCOMPARE(c.fileSize(), size);
    QCOMPARE(started.count(), file == 1 ? 0 : 1);
    const qint64 step = csv::kProgressStep / w;
    QList<int> want, got;
    for (qint64 at = 0; file != 1 && at < size / w && want.size() != cancel_at; at += step)
        want.append(int(at / step));
    for (const QList<QVariant>& args : reports) {
        got.append(args[0].toInt());
        QCOMPARE(args[1].toInt(), int(size / csv::kProgressStep + 1));
        QCOMPARE(args[2].toInt(), int(size / csv::kMiB));
    }
    QCOMPARE(got, want);
    if (cancel_at < 0) return;
    // Lines are 100 units long.
    const int lines = cancel_at == 0 ? 0 : cancel_at == 1 ? 1 : int((step - 1) / 100 + 2);
    QCOMPARE(c.rowCount(), lines);
    QCOMPARE(c.storedRowCount(), lines);
    if (lines > 0)
        QCOMPARE(c.data(lines - 1, 0) + widen(",", w, false) + c.data(lines - 1, 1) +
                     widen("\n", w, false),
                 widen(bigLine(lines - 1, 100), w, false));
}

QTEST_GUILESS_MAIN(TestCsvReader)
#include "tst_csvreader.moc"
