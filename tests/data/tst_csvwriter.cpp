#include "data/editabledatacontainer.h"
#include "data/fileparameters.h"
#include "testutilstore.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace testutil;

namespace {

// One encoding per code unit width and byte order.
constexpr EncodingType kUnitForms[] = {Utf8, Utf16LE, Utf16BE, Utf32LE, Utf32BE};

struct SaveDialect {
    char delimiter = ',';
    ParsingStandard standard = Rfc4180;
    LineEndingType ending = UnixLineEnding;
    bool trailing = true;
    EncodingType encoding = Utf8;
};

void configure(EditableDataContainer& c, const SaveDialect& d) {
    c.setDelimiters(d.delimiter, d.delimiter);
    c.setParsingStandard(d.standard);
    c.setLineEnding(d.ending);
    c.setSaveTrailingDelimiters(d.trailing);
    c.setEncoding(d.encoding);
}

bool loadInto(EditableDataContainer& c, const QString& path, const SaveDialect& d) {
    c.setFilepath(path);
    configure(c, d);
    return c.loadCSV();
}

// A store of `t` widened to the encoding's code units, sized to at least
// `columns` and `rows`.
void build(EditableDataContainer& c, const Table& t, EncodingType e, int columns, int rows = 0) {
    fill(c, widen(t, encodingWidth(e), encodingIsBigEndian(e)));
    c.setColumnCount(std::max(columns, c.columnCount()));
    c.setRowCount(std::max(rows, c.rowCount()));
}

// A random table of cells in `e`. The wide pieces include characters whose
// code units, read at an odd byte offset, look like a quote or a delimiter.
// The cells avoid what the standard cannot bring back: RS unquoted in
// single-byte files, what ends a cell where nothing is quoted, and where
// quotes are read, a leading quote on a cell that is not quoted.
Table randomTable(QRandomGenerator& random, EncodingType e, ParsingStandard standard,
                  char delimiter) {
    QStringList pieces{"a",    "Bc", "0",  ",",    ";", "\t",  "|", "\"",
                       "\"\"", "\r", "\n", "\r\n", " ", "x y", "-"};
    if (e == ShiftJis)
        pieces += QStringList{"日本", "表", "ソ", "ｱ", "漢字", "円"};
    else if (e == Iso8859_15)
        pieces += QStringList{"é", "€", "ß", "Ÿ", "ö"};
    else
        pieces += QStringList{"é", "€", "中文", QString::fromUtf8("\U0001D11E"), "∀"};
    if (encodingWidth(e) > 1) pieces += QStringList{"Ā", "≠", "一", "⌀", "ȼ", "\x1E"};
    Table t;
    const int rows = random.bounded(1, 10), columns = random.bounded(1, 6);
    for (int r = 0; r < rows; ++r) {
        t.append(QByteArrayList());
        for (int n = random.bounded(0, columns + 1); n > 0; --n) {
            QString text;
            for (int k = random.bounded(4) ? random.bounded(1, 5) : 0; k > 0; --k)
                text += pieces[random.bounded(pieces.size())];
            if (standard == DelimiterOnly || standard == AsciiSeparatedValues)
                text.remove(QLatin1Char(delimiter)).remove(u'\r').remove(u'\n').remove(u'\x1E');
            if ((standard == SparseQuotes || standard == AsciiSeparatedValues) &&
                text.startsWith(u'"') && !text.contains(QLatin1Char(delimiter)) &&
                !text.contains(u'\r') && !text.contains(u'\n'))
                text.prepend(u'x');
            t.last().append(encodeCell(text, e));
        }
        // Under All Quotes a stored empty last cell is written as "" but
        // padding bare, and the reader stores neither: for a second save to
        // match the first, rows end as a reader stores them.
        while (standard == AllQuotes && !t.last().isEmpty() && t.last().last().isEmpty())
            t.last().removeLast();
    }
    // The last line holds something, so that the store has every row.
    if (t.last().isEmpty()) t.last().append(encodeCell(u"z", e));
    return t;
}

} // namespace

class TestCsvWriter : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(dir_.isValid()); }
    void line_data();
    void line();
    void wideQuotesDoubledOnlyOnUnits_data();
    void wideQuotesDoubledOnlyOnUnits();
    void save_data();
    void save();
    void failedSaveChangesNothing_data();
    void failedSaveChangesNothing();
    void roundTrip_data();
    void roundTrip();
    void unchangedFileSavesSameBytes_data();
    void unchangedFileSavesSameBytes();
    void saveQuotesLikeRowWriter();

private:
    QString freshPath(const QString& name) {
        QDir(dir_.path()).mkpath(QString::number(++files_));
        return dir_.filePath(QString::number(files_) + '/' + name);
    }
    // A path with no file behind it. A save there creates a new file instead
    // of truncating one, which the file system would flush on close.
    QString scratchPath(const QString& name) {
        QFile::remove(dir_.filePath(name));
        return dir_.filePath(name);
    }
    QTemporaryDir dir_;
    int files_ = 0;
};

// One line of a small table per case, a row or (transposed) a column, in
// every code unit form: each unit of the expected line widened.
void TestCsvWriter::line_data() {
    QTest::addColumn<Table>("table");
    QTest::addColumn<QSize>("logical"); // columns, rows
    QTest::addColumn<bool>("transposed");
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<SaveDialect>("dialect");
    QTest::addColumn<SelectionMode>("mode");
    QTest::addColumn<IndexList>("list");
    auto add = [](const char* name, Table t, int columns, int row, QByteArray expected,
                  SaveDialect d = {}, SelectionMode mode = All, IndexList list = {}) {
        QTest::newRow(name) << t << QSize(columns, 0) << false << row << expected << d << mode
                            << list;
    };
    // Columns of a b c / d "" f / g / (logical row) / (logical row).
    auto addColumn = [](const char* name, int column, QByteArray expected, SaveDialect d,
                        SelectionMode mode = All, IndexList list = {}) {
        QTest::newRow(name) << Table{{"a", "b", "c"}, {"d", "", "f"}, {"g"}} << QSize(4, 5) << true
                            << column << expected << d << mode << list;
    };
    const Table abc{{"a", "", "c"}};
    const SaveDialect all_quotes{',', AllQuotes}, bare{',', Rfc4180, UnixLineEnding, false};
    // clang-format off
    add("RFC 4180 quotes delimiter, quote, CR and LF, not RS",
        {{"a,b", "c\"d\"\"e", "x\ry", "p\nq", "\"", "r\x1Es", "plain"}}, 7, 0,
        "\"a,b\",\"c\"\"d\"\"\"\"e\",\"x\ry\",\"p\nq\",\"\"\"\",r\x1Es,plain\n");
    add("Sparse Quotes leaves a lone quote", {{"a,b", "c\"d", "x\ry", "p\nq\""}}, 4, 0,
        "\"a,b\",c\"d,\"x\ry\",\"p\nq\"\"\"\n", {',', SparseQuotes});
    add("only the save delimiter counts", {{"a,b", "c"}}, 2, 0, "a,b;c\n", {';'});
    add("Delimiter Only writes raw", {{"a,b", "\"q\"", "r\ns"}}, 3, 0, "a,b,\"q\",r\ns\n",
        {',', DelimiterOnly});
    add("ASCII Separated Values writes raw", {{"a\x1F", "\"q"}}, 2, 0, "a\x1F\x1F\"q\n",
        {'\x1F', AsciiSeparatedValues});
    add("no delimiter: cells run together as they are", {{"a,b\"c", "d"}}, 3, 0, "a,b\"cd\n",
        {0, AllQuotes});
    add("one cell padded", {{"a"}}, 3, 0, "a,,\n");
    add("row beyond the store padded", {{"x"}}, 2, 4, ",\n");
    add("no trailing delimiters: stored empty cells dropped", {{"a", "", ""}}, 3, 0, "a\n", bare);
    add("All Quotes, mode All: padding quoted", {{"a"}}, 3, 0, "\"a\",\"\",\"\"\n", all_quotes);
    add("All Quotes, mode Except: stored empty cells quoted, padding bare", {{"a", ""}}, 3, 0,
        "\"a\",\"\",\n", all_quotes, Except);
    add("Only: in list order, no unstored cells, no padding", {{"a", "b", "c"}}, 5, 0, "c,a\n", {},
        Only, {2, 3, 0});
    add("Except skips listed cells and padding", {{"a", "b"}}, 4, 0, "a,\n", {}, Except, {1, 3});
    add("Except with everything listed", {{"a", "b"}}, 2, 0, "\n", {}, Except, {0, 1});
    add("Windows line end", abc, 3, 0, "a,,c\r\n", {',', Rfc4180, WindowsLineEnding});
    add("Mac line end is LF", abc, 3, 0, "a,,c\n", {',', Rfc4180, MacLineEnding});
    add("record separator line end", abc, 3, 0, "a,,c\x1E",
        {',', Rfc4180, RecordSeparatorLineEnding});
    addColumn("column: an entry per shown logical row, in LF", 0, "a,g,\n",
              {',', Rfc4180, WindowsLineEnding}, Except, {1, 3});
    addColumn("column: All Quotes quotes every entry", 1, "\"b\",\"\",\"\",\"\",\"\"\n",
              {',', AllQuotes, RecordSeparatorLineEnding});
    addColumn("column: no trailing delimiters", 2, "c,f\n", bare);
    // clang-format on
}

void TestCsvWriter::line() {
    QFETCH(Table, table);
    QFETCH(QSize, logical);
    QFETCH(bool, transposed);
    QFETCH(int, index);
    QFETCH(QByteArray, expected);
    QFETCH(SaveDialect, dialect);
    QFETCH(SelectionMode, mode);
    QFETCH(IndexList, list);
    using Writer =
        void (EditableDataContainer::*)(QByteArray&, int, SelectionMode, const IndexList&) const;
    const Writer writers[2][2] = {
        {&EditableDataContainer::rowToBytes, &EditableDataContainer::rowToBytesWide},
        {&EditableDataContainer::columnToBytes, &EditableDataContainer::columnToBytesWide}};
    for (EncodingType e : kUnitForms) {
        EditableDataContainer c;
        build(c, table, e, logical.width(), logical.height());
        dialect.encoding = e;
        configure(c, dialect);
        for (Writer write : writers[transposed]) {
            QByteArray out("left over from before");
            (c.*write)(out, index, mode, list);
            QCOMPARE(show(out), show(widen(expected, encodingWidth(e), encodingIsBigEndian(e))));
        }
    }
}

// Wide cells are searched for a quote at every byte offset, so two
// neighbouring characters can get a cell quoted. The doubling of quotes must
// stay on unit boundaries, or the cell changes.
void TestCsvWriter::wideQuotesDoubledOnlyOnUnits_data() {
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<QString>("text");
    // U+0100 U+2260 in UTF-16BE is 01 00 22 60: a quote unit at offset 1.
    QTest::newRow("UTF-16BE") << Utf16BE << QStringLiteral("\u0100\u2260");
    QTest::newRow("UTF-16BE, a real quote as well") << Utf16BE << QStringLiteral("\u0100\u2260\"x");
    // U+2200 U+0100 in UTF-32LE is 00 22 00 00 00 01 00 00.
    QTest::newRow("UTF-32LE") << Utf32LE << QStringLiteral("\u2200\u0100");
}

void TestCsvWriter::wideQuotesDoubledOnlyOnUnits() {
    QFETCH(EncodingType, encoding);
    QFETCH(QString, text);
    const SaveDialect d{',', Rfc4180, UnixLineEnding, true, encoding};
    EditableDataContainer c, back;
    fill(c, {{encodeCell(text, encoding), encodeCell(u"z", encoding)}});
    configure(c, d);
    c.setFilepath(scratchPath("wide.csv"));
    QVERIFY(c.save(false, false, {}, {}));
    QVERIFY(loadInto(back, c.filepath(), d));
    QCOMPARE(show(logicalCells(back)), show(logicalCells(c)));
}

// Whole files, through ".bak" and in place: the stored rows only, hidden lines
// left out, transposition. A mark read from the file is written back while
// the encoding still fits it, and never added; which marks fit which encoding
// is the file parameters' concern.
void TestCsvWriter::save_data() {
    QTest::addColumn<QByteArray>("expected"); // widened to the encoding's units
    QTest::addColumn<SaveDialect>("dialect");
    QTest::addColumn<bool>("transposed");
    QTest::addColumn<IndexList>("hidden_rows");
    QTest::addColumn<IndexList>("hidden_columns");
    QTest::addColumn<EncodingType>("read_as");
    QTest::addColumn<QByteArray>("bom"); // read in `read_as`
    QTest::addColumn<bool>("kept");
    auto add = [](const char* name, QByteArray expected, SaveDialect d, bool transposed = false,
                  IndexList hidden_rows = {}, IndexList hidden_columns = {}) {
        QTest::newRow(name) << expected << d << transposed << hidden_rows << hidden_columns << Utf8
                            << QByteArray() << false;
    };
    auto addMark = [](const char* name, EncodingType read_as, QByteArray bom, EncodingType save_as,
                      bool kept, IndexList hidden_rows = {}) {
        QTest::newRow(name) << QByteArray(hidden_rows.empty() ? "a,b,c\nd,\"e,f\",\ng,,\nh,i,j\n"
                                                              : "")
                            << SaveDialect{',', Rfc4180, UnixLineEnding, true, save_as} << false
                            << hidden_rows << IndexList{} << read_as << bom << kept;
    };
    const QByteArray bom8("\xEF\xBB\xBF");
    // The table: a b c / d "e,f" / g / h i j, then two logical rows.
    // clang-format off
    add("All Quotes: stored rows only, short ones end in bare delimiters",
        "\"a\",\"b\",\"c\"\n\"d\",\"e,f\",\n\"g\",,\n\"h\",\"i\",\"j\"\n", {',', AllQuotes});
    add("hidden rows, also beyond the store, and hidden columns left out", "b\r\ni\r\n",
        {',', Rfc4180, WindowsLineEnding}, false, {1, 2, 5}, {0, 2});
    add("transposed: a line per shown column, hidden rows kept, in LF",
        "\"a\",\"d\",\"g\",\"h\",\"\",\"\"\n\"b\",\"e,f\",\"\",\"i\",\"\",\"\"\n",
        {',', AllQuotes, WindowsLineEnding}, true, {0, 1}, {2});
    addMark("UTF-8 keeps its mark", Utf8, bom8, Utf8, true);
    addMark("the mark also ahead of no line at all", Utf8, bom8, Utf8, true, {0, 1, 2, 3});
    addMark("Windows-1252 drops it", Utf8, bom8, Windows1252, false);
    addMark("detected UTF-16 without a mark gets none", Utf16LEDetected, "", Utf16LEDetected,
            false);
    addMark("UTF-16 turned little endian drops a big endian mark", Utf16BE, "\xFE\xFF", Utf16LE,
            false);
    addMark("undecided UTF-32 keeps a big endian mark", Utf32, QByteArray("\0\0\xFE\xFF", 4), Utf32,
            true);
    // clang-format on
}

void TestCsvWriter::save() {
    QFETCH(QByteArray, expected);
    QFETCH(SaveDialect, dialect);
    QFETCH(bool, transposed);
    QFETCH(IndexList, hidden_rows);
    QFETCH(IndexList, hidden_columns);
    QFETCH(EncodingType, read_as);
    QFETCH(QByteArray, bom);
    QFETCH(bool, kept);
    const EncodingType e = dialect.encoding;
    const QByteArray want =
        (kept ? bom : QByteArray()) + widen(expected, encodingWidth(e), encodingIsBigEndian(e));
    for (bool keep_backup : {true, false}) {
        EditableDataContainer c;
        c.setEncoding(read_as);
        c.detectBom(bom.constData(), bom.size(), true);
        build(c, {{"a", "b", "c"}, {"d", "e,f"}, {"g"}, {"h", "i", "j"}}, e, 3, 6);
        configure(c, dialect);
        // Over an old file. A ".bak" already there may be the user's own (or
        // left by a crash): the save goes round it and leaves it as it was.
        const QString path = freshPath("saved.csv");
        QVERIFY(writeFile(path, "old") && writeFile(path + ".bak", "stale"));
        c.setFilepath(path);
        QVERIFY(c.save(keep_backup, transposed, hidden_rows, hidden_columns));
        QCOMPARE(show(readFile(path)), show(want));
        QCOMPARE(readFile(path + ".bak"), QByteArray("stale"));
        QCOMPARE(QDir(QFileInfo(path).path()).entryList(QDir::Files),
                 (QStringList{"saved.csv", "saved.csv.bak"}));
    }
}

void TestCsvWriter::failedSaveChangesNothing_data() {
    QTest::addColumn<int>("cause");
    QTest::newRow("a named pipe where the file goes") << 0;
    QTest::newRow("a folder where the file goes, in place") << 1;
    QTest::newRow("the file size limit half-way through .bak") << 2;
    QTest::newRow("save as into a missing folder") << 3;
}

// A save that fails leaves the old file as it was (a pipe stays a pipe, and
// the save does not wait for a reader), says why, and leaves no ".bak" of its
// own: a truncated one would look like a backup. The file keeps its new path.
void TestCsvWriter::failedSaveChangesNothing() {
    QFETCH(int, cause);
    const QString path = freshPath("data.csv");
    const QString target = cause == 3 ? dir_.filePath("no such folder/new.csv") : path;
    const QByteArray old(5000, 'o');
    if (cause == 0)
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    else
        QVERIFY(cause == 1 ? QDir().mkdir(path) : writeFile(path, old));
    EditableDataContainer c;
    for (int r = 0; r < 200000; ++r)
        c.setCell(r, 0, "0123456789012345678901234567890123456789");
    c.setFilepath(path);
    rlimit saved{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
    rlimit limited = saved;
    if (cause == 2) limited.rlim_cur = 1024 * 1024;
    auto previous = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const bool ok = c.saveAs(target, cause != 1, false, {}, {});
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previous);
    QVERIFY(!ok);
    QCOMPARE(c.filepath(), target);
    QVERIFY(!c.errorString().isEmpty());
    struct stat st {};
    QCOMPARE(::lstat(QFile::encodeName(path).constData(), &st), 0);
    QVERIFY(cause == 0 ? S_ISFIFO(st.st_mode)
                       : (cause == 1 ? S_ISDIR(st.st_mode) : readFile(path) == old));
    QCOMPARE(QDir(QFileInfo(target).path())
                 .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
             cause == 3 ? QStringList() : QStringList{"data.csv"});
}

void TestCsvWriter::roundTrip_data() {
    QTest::addColumn<ParsingStandard>("standard");
    QTest::addColumn<LineEndingType>("ending");
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<bool>("trailing");
    static const char* const ending_names[] = {"CR LF", "LF (Unix)", "LF (Mac)", "LF (Linux)",
                                               "RS"};
    for (ParsingStandard s :
         {Rfc4180, DelimiterOnly, AllQuotes, SparseQuotes, AsciiSeparatedValues})
        for (LineEndingType ending : {WindowsLineEnding, UnixLineEnding, MacLineEnding,
                                      LinuxLineEnding, RecordSeparatorLineEnding})
            for (EncodingType e :
                 {Utf8, Utf16LE, Utf16BE, Utf32LE, Utf32BE, Iso8859_15, ShiftJis}) {
                // The wide readers don't end lines at RS.
                if (ending == RecordSeparatorLineEnding && encodingWidth(e) > 1) continue;
                for (bool trailing : {true, false})
                    QTest::addRow("%s, %s, %s%s", qPrintable(parsingStandardName(s)),
                                  ending_names[ending], encodingCodecName(e).constData(),
                                  trailing ? "" : ", no trailing delimiters")
                        << s << ending << e << trailing;
            }
}

// Random tables saved and loaded again give the same cells, and what was
// loaded saves to the same bytes. (In place, not through ".bak": thousands of
// fsync calls would cost more than the test.)
void TestCsvWriter::roundTrip() {
    QFETCH(ParsingStandard, standard);
    QFETCH(LineEndingType, ending);
    QFETCH(EncodingType, encoding);
    QFETCH(bool, trailing);
    QRandomGenerator random(uint(standard * 1000 + ending * 100 + encoding * 2 + trailing));
    const QByteArrayView bom = encodingBom(encoding);
    for (int round = 0; round < 25; ++round) {
        const SaveDialect d{",;\t|"[random.bounded(4)], standard, ending, trailing, encoding};
        EditableDataContainer c;
        fill(c, randomTable(random, encoding, standard, d.delimiter));
        c.setColumnCount(c.columnCount() + random.bounded(2));
        configure(c, d);
        if (random.bounded(2) && !bom.isEmpty()) c.detectBom(bom.data(), bom.size(), true);
        c.setFilepath(scratchPath("first.csv"));
        QVERIFY(c.save(false, false, {}, {}));
        const QByteArray first = readFile(c.filepath());

        EditableDataContainer back;
        QVERIFY(loadInto(back, c.filepath(), d));
        QCOMPARE(back.rowCount(), c.rowCount());
        QVERIFY(trailing ? back.columnCount() == c.columnCount()
                         : back.columnCount() <= c.columnCount());
        // The file on both sides, so that a failure shows it.
        QCOMPARE(show(first) + " -> " +
                     show(padded(logicalCells(back), c.rowCount(), c.columnCount())),
                 show(first) + " -> " + show(logicalCells(c)));
        const QString again = scratchPath("again.csv");
        QVERIFY(back.saveAs(again, false, false, {}, {}));
        QCOMPARE(show(readFile(again)), show(first));
    }
}

// Each row names a fixture.
void TestCsvWriter::unchangedFileSavesSameBytes_data() {
    QTest::addColumn<SaveDialect>("dialect");
    // clang-format off
    QTest::newRow("contacts.csv") << SaveDialect{',', Rfc4180, WindowsLineEnding, true, Utf8};
    QTest::newRow("stock_bom.csv") << SaveDialect{';', Rfc4180, UnixLineEnding, true, Utf8};
    QTest::newRow("readings.tsv") << SaveDialect{'\t', Rfc4180, UnixLineEnding, true, Utf8};
    QTest::newRow("quoted_everything.csv")
        << SaveDialect{',', AllQuotes, WindowsLineEnding, true, Utf8};
    QTest::newRow("sparse_notes.csv") << SaveDialect{'|', SparseQuotes, UnixLineEnding, true, Utf8};
    QTest::newRow("towns_latin1.csv")
        << SaveDialect{';', Rfc4180, WindowsLineEnding, true, Iso8859_1};
    QTest::newRow("names_utf16le.csv")
        << SaveDialect{',', Rfc4180, WindowsLineEnding, true, Utf16LEDetected};
    QTest::newRow("names_utf32be.csv") << SaveDialect{',', Rfc4180, UnixLineEnding, true, Utf32BE};
    QTest::newRow("units.asv")
        << SaveDialect{'\x1F', AsciiSeparatedValues, RecordSeparatorLineEnding, true, Utf8};
    QTest::newRow("words_sjis.csv") << SaveDialect{',', Rfc4180, WindowsLineEnding, true, ShiftJis};
    QTest::newRow("one_cell_lines.txt") << SaveDialect{0, Rfc4180, UnixLineEnding, true, Utf8};
    // clang-format on
}

// A file opened and saved without a change keeps every byte.
void TestCsvWriter::unchangedFileSavesSameBytes() {
    QFETCH(SaveDialect, dialect);
    const QString file = QString::fromLatin1(QTest::currentDataTag());
    const QByteArray original = readFile(QStringLiteral(GRIDMERE_FIXTURES "/") + file);
    QVERIFY2(!original.isEmpty(), qPrintable(file));
    const QString path = freshPath(file);
    QVERIFY(writeFile(path, original));
    EditableDataContainer c;
    QVERIFY(loadInto(c, path, dialect));
    QVERIFY(c.rowCount() > 1);
    QVERIFY(c.save(true, false, {}, {}));
    QCOMPARE(show(readFile(path)), show(original));
}

// The save tests cells by whole vector blocks; the row writer byte by byte.
// A byte that calls for quotes, at every position of cells around the block
// size, must be found by both.
void TestCsvWriter::saveQuotesLikeRowWriter() {
    for (ParsingStandard standard : {Rfc4180, SparseQuotes, DelimiterOnly}) {
        Table t;
        for (int n = 1; n <= 40; ++n)
            for (int k = 0; k < n; ++k)
                for (char special : {';', '"', '\r', '\n', 'z'}) {
                    QByteArray cell(n, 'x');
                    cell[k] = special;
                    t.append({cell, QByteArray(n % 17, 'y')});
                }
        EditableDataContainer c;
        fill(c, t);
        configure(c, SaveDialect{';', standard, UnixLineEnding, true, Utf8});
        c.setFilepath(scratchPath("quotes.csv"));
        QVERIFY(c.save(false, false, {}, {}));
        QByteArray expected, line;
        for (int r = 0; r < c.rowCount(); ++r) {
            c.rowToBytes(line, r, All, {});
            expected += line;
        }
        QCOMPARE(readFile(c.filepath()), expected);
    }
}

QTEST_GUILESS_MAIN(TestCsvWriter)
#include "tst_csvwriter.moc"
