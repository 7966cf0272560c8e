#include "data/editabledatacontainer.h"
#include "data/fileparameters.h"
#include "testutilstore.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>

using namespace testutil;

namespace {

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

const char* const kEndingNames[] = {"CR LF", "LF (Unix)", "LF (Mac)", "LF (Linux)", "RS"};

IndexList indexes(const QList<int>& v) {
    return IndexList(v.begin(), v.end());
}

// Rows are given as stored; `columns` and `rows` raise the logical sizes.
void build(EditableDataContainer& c, const Table& t, int columns, int rows) {
    fill(c, t);
    if (columns > c.columnCount()) c.setColumnCount(columns);
    if (rows > c.rowCount()) c.setRowCount(rows);
}

// Cell texts that each family of encodings can hold. The UTF ones include
// characters whose code units, read at an odd byte offset, look like a quote
// or a delimiter unit.
QStringList piecesFor(EncodingType e) {
    QStringList common{"a",    "Bc", "0",  ",",    ";", "\t",  "|", "\"",
                       "\"\"", "\r", "\n", "\r\n", " ", "x y", "-"};
    switch (encodingWidth(e)) {
    case 1:
        if (e == ShiftJis) return common + QStringList{"日本", "表", "ソ", "ｱ", "漢字", "円"};
        if (e == Utf8)
            return common + QStringList{"é", "€", "中文", QString::fromUtf8("\U0001D11E"), "∀"};
        return common + QStringList{"é", "€", "ß", "Ÿ", "ö"}; // ISO 8859-15
    default:
        return common + QStringList{"é", "€", "中文", QString::fromUtf8("\U0001D11E"),
                                    "∀", "Ā", "≠",    "一",
                                    "⌀", "ȼ", "\x1E"};
    }
}

// A random table of cells in `e`; the cells avoid what the standard cannot
// bring back: RS unquoted in single-byte files, and under Sparse Quotes a
// leading quote on a cell that is not quoted.
Table randomTable(QRandomGenerator& random, EncodingType e, ParsingStandard standard,
                  char delimiter) {
    const QStringList pieces = piecesFor(e);
    Table t;
    const int rows = random.bounded(1, 10), columns = random.bounded(1, 6);
    for (int r = 0; r < rows; ++r) {
        QByteArrayList row;
        const int n = random.bounded(0, columns + 1);
        for (int col = 0; col < n; ++col) {
            QString text;
            const int parts = random.bounded(4) == 0 ? 0 : random.bounded(1, 5);
            for (int k = 0; k < parts; ++k)
                text += pieces[random.bounded(pieces.size())];
            if (standard == SparseQuotes && text.startsWith(u'"') &&
                !text.contains(QLatin1Char(delimiter)) && !text.contains(u'\r') &&
                !text.contains(u'\n'))
                text.prepend(u'x');
            row.append(encodeCell(text, e));
        }
        t.append(row);
    }
    // The last line holds something, so that the store has every row.
    if (t.last().isEmpty()) t.last().append(encodeCell(u"z", e));
    return t;
}

bool loadInto(EditableDataContainer& c, const QString& path, const SaveDialect& d) {
    c.setFilepath(path);
    configure(c, d);
    return c.loadCSV();
}

} // namespace

class TestCsvWriter : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(dir_.isValid()); }
    void rowToBytes_data();
    void rowToBytes();
    void rowToBytesWide_data() { rowToBytes_data(); }
    void rowToBytesWide();
    void wideQuotingAtAnyByteOffset_data();
    void wideQuotingAtAnyByteOffset();
    void columnToBytes_data();
    void columnToBytes();
    void save_data();
    void save();
    void saveReplacesThroughBackup_data();
    void saveReplacesThroughBackup();
    void saveThatCannotOpenChangesNothing_data();
    void saveThatCannotOpenChangesNothing();
    void saveAsMissingFolderKeepsNewPath();
    void writeErrorRemovesHalfWrittenBackup();
    void roundTrip_data();
    void roundTrip();
    void unchangedFileSavesSameBytes_data();
    void unchangedFileSavesSameBytes();
    void savedFileSavesSameBytes_data();
    void savedFileSavesSameBytes();

private:
    QString freshPath(const QString& name) {
        QDir(dir_.path()).mkpath(QString::number(++files_));
        return dir_.filePath(QString::number(files_) + '/' + name);
    }
    // A path in the test folder with no file behind it. Saves there create
    // a new file instead of truncating one, which the file system would
    // flush on close.
    QString scratchPath(const QString& name) {
        const QString path = dir_.filePath(name);
        QFile::remove(path);
        return path;
    }
    QTemporaryDir dir_;
    int files_ = 0;
};

// The row writer, one row of a small table per case.
void TestCsvWriter::rowToBytes_data() {
    QTest::addColumn<Table>("table");
    QTest::addColumn<int>("columns"); // logical column count
    QTest::addColumn<int>("row");
    QTest::addColumn<char>("delimiter");
    QTest::addColumn<int>("standard");
    QTest::addColumn<int>("ending");
    QTest::addColumn<bool>("trailing");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<int>>("list");
    QTest::addColumn<QByteArray>("expected");

    auto add = [](const char* name, Table t, int columns, int row, QByteArray expected,
                  ParsingStandard s = Rfc4180, bool trailing = true, SelectionMode mode = All,
                  QList<int> list = {}, char d = ',', LineEndingType e = UnixLineEnding) {
        QTest::newRow(name) << t << columns << row << d << int(s) << int(e) << trailing << int(mode)
                            << list << expected;
    };
    const Table abc{{"a", "", "c"}};
    add("empty cell between two", abc, 3, 0, "a,,c\n");
    add("RFC 4180 quotes delimiter and quote", {{"a,b", "c\"d"}}, 2, 0, "\"a,b\",\"c\"\"d\"\n");
    add("Sparse Quotes leaves a lone quote", {{"a,b", "c\"d"}}, 2, 0, "\"a,b\",c\"d\n",
        SparseQuotes);
    add("RFC 4180 quotes CR and LF", {{"x\ry", "p\nq", "plain"}}, 3, 0,
        "\"x\ry\",\"p\nq\",plain\n");
    add("Sparse Quotes quotes CR and LF", {{"x\ry", "p\nq\""}}, 2, 0, "\"x\ry\",\"p\nq\"\"\"\n",
        SparseQuotes);
    add("a lone quote", {{"\""}}, 1, 0, "\"\"\"\"\n");
    add("a long cell with quotes", {{"0123456789\"abcdef\"\"ghij"}}, 1, 0,
        "\"0123456789\"\"abcdef\"\"\"\"ghij\"\n");
    add("RS is never a reason to quote",
        {{"a\x1E"
          "b"}},
        1, 0,
        "a\x1E"
        "b\n");
    add("only the save delimiter counts", {{"a,b", "c"}}, 2, 0, "a,b;c\n", Rfc4180, true, All, {},
        ';');
    add("one cell padded", {{"a"}}, 3, 0, "a,,\n");
    add("one cell, no trailing delimiters", {{"a"}}, 3, 0, "a\n", Rfc4180, false);
    add("stored empty cells dropped without trailing delimiters", {{"a", "", ""}}, 3, 0, "a\n",
        Rfc4180, false);
    add("stored empty cells kept with trailing delimiters", {{"a", "", ""}}, 3, 0, "a,,\n");
    add("empty row padded", {{"x"}, {}}, 3, 1, ",,\n");
    add("empty row, no trailing delimiters", {{"x"}, {}}, 3, 1, "\n", Rfc4180, false);
    add("row beyond the store", {{"x"}}, 2, 4, ",\n");
    add("All Quotes, mode All pads with quotes", {{"x"}, {}}, 3, 1, "\"\",\"\",\"\"\n", AllQuotes);
    add("All Quotes, mode Except pads bare", {{"x"}, {}}, 3, 1, ",,\n", AllQuotes, true, Except);
    add("All Quotes quotes stored empty cells", {{"a", ""}}, 3, 0, "\"a\",\"\",\n", AllQuotes, true,
        Except);
    add("All Quotes, mode All after a cell", {{"a"}}, 3, 0, "\"a\",\"\",\"\"\n", AllQuotes);
    add("Delimiter Only writes raw", {{"a,b", "\"q\"", "r\ns"}}, 3, 0, "a,b,\"q\",r\ns\n",
        DelimiterOnly);
    add("ASCII Separated Values writes raw", {{"a\x1F", "\"q"}}, 2, 0, "a\x1F\x1F\"q\n",
        AsciiSeparatedValues, true, All, {}, '\x1F');
    add("no delimiter: cell as it is", {{"a,b\"c"}}, 3, 0, "a,b\"c\n", AllQuotes, true, All, {}, 0);
    add("no delimiter: cells run together", {{"a", "b"}}, 3, 0, "ab\n", Rfc4180, true, All, {}, 0);
    add("Only, in list order", {{"a", "b", "c"}}, 3, 0, "c,a\n", Rfc4180, true, Only, {2, 0});
    add("Only skips what the row doesn't store", {{"a", "b"}}, 4, 0, "a\n", Rfc4180, true, Only,
        {3, 0});
    add("Only writes no padding", {{"a", "b"}}, 4, 0, "b\n", Rfc4180, true, Only, {1});
    add("Except skips listed cells", {{"a", "b", "c"}}, 3, 0, "a,c\n", Rfc4180, true, Except, {1});
    add("Except skips listed padding", {{"a"}}, 4, 0, "a,,\n", Rfc4180, true, Except, {2});
    add("Except with everything listed", {{"a", "b"}}, 2, 0, "\n", Rfc4180, true, Except, {0, 1});
    add("Windows line end", abc, 3, 0, "a,,c\r\n", Rfc4180, true, All, {}, ',', WindowsLineEnding);
    add("Mac line end is LF", abc, 3, 0, "a,,c\n", Rfc4180, true, All, {}, ',', MacLineEnding);
    add("Linux line end is LF", abc, 3, 0, "a,,c\n", Rfc4180, true, All, {}, ',', LinuxLineEnding);
    add("record separator line end", abc, 3, 0, "a,,c\x1E", Rfc4180, true, All, {}, ',',
        RecordSeparatorLineEnding);
    add("invalid line end is LF", abc, 3, 0, "a,,c\n", Rfc4180, true, All, {}, ',',
        InvalidLineEnding);
}

void TestCsvWriter::rowToBytes() {
    QFETCH(Table, table);
    QFETCH(int, columns);
    QFETCH(int, row);
    QFETCH(char, delimiter);
    QFETCH(int, standard);
    QFETCH(int, ending);
    QFETCH(bool, trailing);
    QFETCH(int, mode);
    QFETCH(QList<int>, list);
    QFETCH(QByteArray, expected);
    EditableDataContainer c;
    build(c, table, columns, 0);
    configure(c, {delimiter, ParsingStandard(standard), LineEndingType(ending), trailing, Utf8});
    QByteArray out("left over from before");
    c.rowToBytes(out, row, SelectionMode(mode), indexes(list));
    QCOMPARE(show(out), show(expected));
}

// The same rows in UTF-16 and UTF-32 of both byte orders: every unit of the
// narrow result widened.
void TestCsvWriter::rowToBytesWide() {
    QFETCH(Table, table);
    QFETCH(int, columns);
    QFETCH(int, row);
    QFETCH(char, delimiter);
    QFETCH(int, standard);
    QFETCH(int, ending);
    QFETCH(bool, trailing);
    QFETCH(int, mode);
    QFETCH(QList<int>, list);
    QFETCH(QByteArray, expected);
    for (EncodingType e : {Utf16LE, Utf16BE, Utf32LE, Utf32BE, Utf16, Utf32BEDetected}) {
        const int w = encodingWidth(e);
        const bool be = encodingIsBigEndian(e);
        EditableDataContainer c;
        build(c, widen(table, w, be), columns, 0);
        configure(c, {delimiter, ParsingStandard(standard), LineEndingType(ending), trailing, e});
        QByteArray out("left over");
        c.rowToBytes(out, row, SelectionMode(mode), indexes(list));
        QCOMPARE(show(out), show(widen(expected, w, be)));
        c.rowToBytesWide(out, row, SelectionMode(mode), indexes(list));
        QCOMPARE(show(out), show(widen(expected, w, be)));
    }
}

// Wide cells are searched for the patterns at every byte offset: two
// neighbouring characters can look like a delimiter or a quote unit and get
// the cell quoted. The quoting is harmless, but the doubling of quotes must
// stay on unit boundaries or the cell changes.
void TestCsvWriter::wideQuotingAtAnyByteOffset_data() {
    QTest::addColumn<int>("encoding");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("quoted");
    // U+2C41 U+0100 in UTF-16LE is 41 2C 00 01: a comma unit at offset 1.
    QTest::newRow("UTF-16LE, a comma across two units")
        << int(Utf16LE) << QStringLiteral("\u2C41\u0100") << true;
    // U+2200 U+4E00 in UTF-16LE is 00 22 00 4E: a quote unit at offset 1.
    QTest::newRow("UTF-16LE, a quote across two units")
        << int(Utf16LE) << QStringLiteral("\u2200\u4E00") << true;
    // U+0100 U+2260 in UTF-16BE is 01 00 22 60: a quote unit at offset 1.
    QTest::newRow("UTF-16BE, a quote across two units")
        << int(Utf16BE) << QStringLiteral("\u0100\u2260") << true;
    QTest::newRow("UTF-16BE, a real quote as well")
        << int(Utf16BE) << QStringLiteral("\u0100\u2260\"x") << true;
    // U+2200 U+0100 in UTF-32LE is 00 22 00 00 00 01 00 00.
    QTest::newRow("UTF-32LE, a quote across two units")
        << int(Utf32LE) << QStringLiteral("\u2200\u0100") << true;
    QTest::newRow("UTF-32BE, a quote across two units")
        << int(Utf32BE) << QStringLiteral("\u0100\u2200\u0100") << true;
    QTest::newRow("UTF-16LE, nothing to find")
        << int(Utf16LE) << QStringLiteral("\u4E2D\u6587") << false;
}

void TestCsvWriter::wideQuotingAtAnyByteOffset() {
    QFETCH(int, encoding);
    QFETCH(QString, text);
    QFETCH(bool, quoted);
    const EncodingType e = EncodingType(encoding);
    const int w = encodingWidth(e);
    const bool be = encodingIsBigEndian(e);
    EditableDataContainer c;
    const QByteArray cell = encodeCell(text, e);
    c.setCell(0, 0, cell);
    c.setCell(0, 1, widen("z", w, be));
    configure(c, {',', Rfc4180, UnixLineEnding, true, e});
    QByteArray out;
    c.rowToBytes(out, 0, All, {});
    QCOMPARE(out.startsWith(widen("\"", w, be)), quoted);

    // Whatever the quoting, the file reads back as the same cells.
    const QString path = freshPath("wide.csv");
    c.setFilepath(path);
    QVERIFY(c.save(true, false, {}, {}));
    EditableDataContainer back;
    QVERIFY(loadInto(back, path, {',', Rfc4180, UnixLineEnding, true, e}));
    QCOMPARE(show(back.data(0, 0)), show(cell));
    QCOMPARE(back.columnCount(), 2);
}

void TestCsvWriter::columnToBytes_data() {
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("standard");
    QTest::addColumn<bool>("trailing");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<int>>("list");
    QTest::addColumn<char>("delimiter");
    QTest::addColumn<QByteArray>("expected");
    // The table: a b c / d "" f / g / (logical row) / (logical row)
    QTest::newRow("one entry per logical row")
        << 0 << int(Rfc4180) << true << int(All) << QList<int>{} << ',' << QByteArray("a,d,g,,\n");
    QTest::newRow("empty cells quoted under All Quotes")
        << 1 << int(AllQuotes) << true << int(All) << QList<int>{} << ','
        << QByteArray("\"b\",\"\",\"\",\"\",\"\"\n");
    QTest::newRow("no trailing delimiters")
        << 2 << int(Rfc4180) << false << int(All) << QList<int>{} << ',' << QByteArray("c,f\n");
    QTest::newRow("a column with nothing, no trailing delimiters")
        << 3 << int(Rfc4180) << false << int(All) << QList<int>{} << ',' << QByteArray("\n");
    QTest::newRow("only, in list order")
        << 0 << int(Rfc4180) << true << int(Only) << QList<int>{2, 0} << ',' << QByteArray("g,a\n");
    QTest::newRow("except") << 0 << int(Rfc4180) << true << int(Except) << QList<int>{1, 3} << ','
                            << QByteArray("a,g,\n");
    QTest::newRow("quoting as in rows")
        << 1 << int(Rfc4180) << true << int(Only) << QList<int>{0} << 'b' << QByteArray("\"b\"\n");
    QTest::newRow("no delimiter") << 0 << int(Rfc4180) << true << int(All) << QList<int>{}
                                  << char(0) << QByteArray("adg\n");
}

// A column is one line of a transposed save; it always ends in LF.
void TestCsvWriter::columnToBytes() {
    QFETCH(int, column);
    QFETCH(int, standard);
    QFETCH(bool, trailing);
    QFETCH(int, mode);
    QFETCH(QList<int>, list);
    QFETCH(char, delimiter);
    QFETCH(QByteArray, expected);
    const Table t{{"a", "b", "c"}, {"d", "", "f"}, {"g"}};
    for (LineEndingType ending : {WindowsLineEnding, RecordSeparatorLineEnding}) {
        for (EncodingType e : {Utf8, Utf16BE, Utf32LE}) {
            const int w = encodingWidth(e);
            const bool be = encodingIsBigEndian(e);
            EditableDataContainer c;
            build(c, widen(t, w, be), 4, 5);
            configure(c, {delimiter, ParsingStandard(standard), ending, trailing, e});
            QByteArray out("left over");
            c.columnToBytes(out, column, SelectionMode(mode), indexes(list));
            QCOMPARE(show(out), show(widen(expected, w, be)));
            if (w > 1) {
                c.columnToBytesWide(out, column, SelectionMode(mode), indexes(list));
                QCOMPARE(show(out), show(widen(expected, w, be)));
            }
        }
    }
}

// Whole files: hidden lines, transposition, logical rows, marks.
void TestCsvWriter::save_data() {
    QTest::addColumn<Table>("table");
    QTest::addColumn<QSize>("logical");
    QTest::addColumn<int>("standard");
    QTest::addColumn<int>("ending");
    QTest::addColumn<int>("load_encoding"); // the encoding the mark was read in
    QTest::addColumn<QByteArray>("bom");
    QTest::addColumn<int>("encoding");
    QTest::addColumn<bool>("transposed");
    QTest::addColumn<QList<int>>("hidden_rows");
    QTest::addColumn<QList<int>>("hidden_columns");
    QTest::addColumn<QByteArray>("expected");

    const Table t{{"a", "b", "c"}, {"d", "e,f"}, {"g"}, {"h", "i", "j"}};
    const QSize sized(3, 6); // two logical rows after the stored ones
    const QByteArray bom8("\xEF\xBB\xBF");
    auto add = [&](const char* name, QByteArray expected, ParsingStandard s = Rfc4180,
                   LineEndingType ending = WindowsLineEnding, bool transposed = false,
                   QList<int> hidden_rows = {}, QList<int> hidden_columns = {}) {
        QTest::newRow(name) << t << sized << int(s) << int(ending) << int(Utf8) << QByteArray()
                            << int(Utf8) << transposed << hidden_rows << hidden_columns << expected;
    };
    add("stored rows only", "a,b,c\r\nd,\"e,f\",\r\ng,,\r\nh,i,j\r\n");
    add("hidden row left out", "a,b,c\r\nd,\"e,f\",\r\nh,i,j\r\n", Rfc4180, WindowsLineEnding,
        false, {2});
    add("hidden columns left out", "b\r\n\"e,f\"\r\n\r\ni\r\n", Rfc4180, WindowsLineEnding, false,
        {}, {0, 2});
    add("hidden rows beyond the store", "a,b,c\r\nh,i,j\r\n", Rfc4180, WindowsLineEnding, false,
        {1, 2, 5});
    add("All Quotes: short rows end in bare delimiters",
        "\"a\",\"b\",\"c\"\n\"d\",\"e,f\",\n\"g\",,\n\"h\",\"i\",\"j\"\n", AllQuotes,
        UnixLineEnding);
    add("record separators",
        "a,b,c\x1E"
        "d,\"e,f\",\x1Eg,,\x1Eh,i,j\x1E",
        Rfc4180, RecordSeparatorLineEnding);
    add("transposed: one line per column, in LF",
        "\"a\",\"d\",\"g\",\"h\",\"\",\"\"\n\"b\",\"e,f\",\"\",\"i\",\"\",\"\"\n", AllQuotes,
        WindowsLineEnding, true, {}, {2});
    add("transposed keeps hidden rows", "a,d,g,h,,\nb,\"e,f\",,i,,\nc,,,j,,\n", Rfc4180,
        RecordSeparatorLineEnding, true, {0, 1});

    auto addBom = [&](const char* name, EncodingType load, QByteArray bom, EncodingType save,
                      QByteArray expected) {
        const int w = encodingWidth(save);
        const bool be = encodingIsBigEndian(save);
        QTest::newRow(name) << widen(Table{{"x"}}, w, be) << QSize(-1, -1) << int(Rfc4180)
                            << int(UnixLineEnding) << int(load) << bom << int(save) << false
                            << QList<int>{} << QList<int>{} << expected + widen("x\n", w, be);
    };
    addBom("UTF-8 keeps its mark", Utf8, bom8, Utf8, bom8);
    addBom("Windows-1252 drops it", Utf8, bom8, Windows1252, "");
    addBom("no mark, none added", Utf8, "", Utf8, "");
    addBom("detected UTF-16 without a mark gets none", Utf16LEDetected, "", Utf16LEDetected, "");
    addBom("undecided UTF-16 keeps a big endian mark", Utf16, "\xFE\xFF", Utf16, "\xFE\xFF");
    addBom("UTF-16BE keeps its mark", Utf16BE, "\xFE\xFF", Utf16BE, "\xFE\xFF");
    addBom("UTF-16 turned little endian drops a big endian mark", Utf16BE, "\xFE\xFF", Utf16LE, "");
    addBom("UTF-16 turned UTF-32 drops its mark", Utf16LE, "\xFF\xFE", Utf32LE, "");
    addBom("undecided UTF-32 keeps either mark", Utf32, QByteArray("\0\0\xFE\xFF", 4), Utf32,
           QByteArray("\0\0\xFE\xFF", 4));
    addBom("UTF-32LE detected keeps its mark", Utf32LE, QByteArray("\xFF\xFE\0\0", 4),
           Utf32LEDetected, QByteArray("\xFF\xFE\0\0", 4));

    QTest::newRow("empty store, empty file")
        << Table{} << QSize(3, 4) << int(Rfc4180) << int(UnixLineEnding) << int(Utf8)
        << QByteArray() << int(Utf8) << false << QList<int>{} << QList<int>{} << QByteArray();
    QTest::newRow("empty store keeps the mark")
        << Table{} << QSize(-1, -1) << int(Rfc4180) << int(UnixLineEnding) << int(Utf8) << bom8
        << int(Utf8) << false << QList<int>{} << QList<int>{} << bom8;
}

void TestCsvWriter::save() {
    QFETCH(Table, table);
    QFETCH(QSize, logical);
    QFETCH(int, standard);
    QFETCH(int, ending);
    QFETCH(int, load_encoding);
    QFETCH(QByteArray, bom);
    QFETCH(int, encoding);
    QFETCH(bool, transposed);
    QFETCH(QList<int>, hidden_rows);
    QFETCH(QList<int>, hidden_columns);
    QFETCH(QByteArray, expected);

    for (bool keep_backup : {true, false}) {
        EditableDataContainer c;
        build(c, table, logical.width(), logical.height());
        c.setEncoding(EncodingType(load_encoding));
        if (!bom.isEmpty()) QCOMPARE(c.detectBom(bom.constData(), bom.size(), true), bom.size());
        configure(c, {',', ParsingStandard(standard), LineEndingType(ending), true,
                      EncodingType(encoding)});
        const QString path = freshPath("saved.csv");
        QVERIFY(writeFile(path, "old contents"));
        c.setFilepath(path);
        QVERIFY(c.save(keep_backup, transposed, indexes(hidden_rows), indexes(hidden_columns)));
        QCOMPARE(show(readFile(path)), show(expected));
        QCOMPARE(QDir(QFileInfo(path).path()).entryList(QDir::Files), QStringList{"saved.csv"});
    }
}

// The save goes to "<name>.bak" and replaces the file by renaming: nothing
// but the file remains, also for a file that did not exist yet.
void TestCsvWriter::saveReplacesThroughBackup_data() {
    QTest::addColumn<bool>("existing");
    QTest::addColumn<bool>("keep_backup");
    QTest::newRow("over an existing file, through .bak") << true << true;
    QTest::newRow("new file, through .bak") << false << true;
    QTest::newRow("over an existing file, in place") << true << false;
    QTest::newRow("stale .bak from a crash") << true << true;
}

void TestCsvWriter::saveReplacesThroughBackup() {
    QFETCH(bool, existing);
    QFETCH(bool, keep_backup);
    const QString path = freshPath("data.csv");
    if (existing) QVERIFY(writeFile(path, QByteArray(100000, 'o')));
    if (QByteArray(QTest::currentDataTag()).startsWith("stale"))
        QVERIFY(writeFile(path + ".bak", "half a file"));
    EditableDataContainer c;
    fill(c, {{"new", "data"}, {"second", "row"}});
    c.setFilepath(path);
    QVERIFY(c.save(keep_backup, false, {}, {}));
    QCOMPARE(readFile(path), QByteArray("new,data\r\nsecond,row\r\n"));
    QCOMPARE(QDir(QFileInfo(path).path()).entryList(QDir::Files), QStringList{"data.csv"});
}

void TestCsvWriter::saveThatCannotOpenChangesNothing_data() {
    QTest::addColumn<bool>("keep_backup");
    QTest::newRow("through .bak") << true;
    QTest::newRow("in place") << false;
}

// A target that can't be opened (a folder stands in its way) fails the save
// and leaves the disk as it was.
void TestCsvWriter::saveThatCannotOpenChangesNothing() {
    QFETCH(bool, keep_backup);
    const QString path = freshPath("data.csv");
    if (keep_backup) {
        QVERIFY(writeFile(path, "old"));
        QVERIFY(QDir().mkdir(path + ".bak"));
    } else {
        QVERIFY(QDir().mkdir(path));
    }
    EditableDataContainer c;
    fill(c, {{"new"}});
    c.setFilepath(path);
    QVERIFY(!c.save(keep_backup, false, {}, {}));
    if (keep_backup) {
        QCOMPARE(readFile(path), QByteArray("old"));
        QVERIFY(QFileInfo(path + ".bak").isDir());
    } else {
        QVERIFY(QFileInfo(path).isDir());
    }
}

void TestCsvWriter::saveAsMissingFolderKeepsNewPath() {
    const QString old_path = freshPath("old.csv");
    QVERIFY(writeFile(old_path, "old\n"));
    EditableDataContainer c;
    fill(c, {{"x"}});
    c.setFilepath(old_path);
    const QString missing = dir_.filePath("no such folder/new.csv");
    QVERIFY(!c.saveAs(missing, true, false, {}, {}));
    QCOMPARE(c.filepath(), missing);
    QVERIFY(!QFileInfo::exists(missing));
    QVERIFY(!QFileInfo::exists(missing + ".bak"));
    QCOMPARE(readFile(old_path), QByteArray("old\n"));

    const QString other = freshPath("other.csv");
    QVERIFY(c.saveAs(other, true, false, {}, {}));
    QCOMPARE(c.filepath(), other);
    QCOMPARE(readFile(other), QByteArray("x\r\n"));
}

// A write that fails half-way (here: the file size limit) must not leave a
// truncated ".bak" behind or touch the old file.
void TestCsvWriter::writeErrorRemovesHalfWrittenBackup() {
    const QString path = freshPath("limited.csv");
    const QByteArray old(5000, 'o');
    QVERIFY(writeFile(path, old));
    EditableDataContainer c;
    for (int r = 0; r < 200000; ++r)
        c.setCell(r, 0, "0123456789012345678901234567890123456789");
    c.setFilepath(path);

    rlimit saved{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &saved), 0);
    auto previous = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = saved;
    limited.rlim_cur = 1024 * 1024;
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const bool ok = c.save(true, false, {}, {});
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, previous);

    QVERIFY(!ok);
    QCOMPARE(readFile(path), old);
    QVERIFY(!QFileInfo::exists(path + ".bak"));
}

void TestCsvWriter::roundTrip_data() {
    QTest::addColumn<int>("standard");
    QTest::addColumn<int>("ending");
    QTest::addColumn<int>("encoding");
    QTest::addColumn<bool>("trailing");
    const EncodingType encodings[] = {Utf8,    Utf16LE,    Utf16BE, Utf32LE,
                                      Utf32BE, Iso8859_15, ShiftJis};
    for (ParsingStandard s : {Rfc4180, SparseQuotes, AllQuotes})
        for (LineEndingType ending : {WindowsLineEnding, UnixLineEnding, MacLineEnding,
                                      LinuxLineEnding, RecordSeparatorLineEnding})
            for (EncodingType e : encodings) {
                // The wide readers don't end lines at RS.
                if (ending == RecordSeparatorLineEnding && encodingWidth(e) > 1) continue;
                for (bool trailing : {true, false})
                    QTest::addRow("%s, %s, %s%s", qPrintable(parsingStandardName(s)),
                                  kEndingNames[ending], qPrintable(encodingCodecName(e)),
                                  trailing ? "" : ", no trailing delimiters")
                        << int(s) << int(ending) << int(e) << trailing;
            }
}

// Random tables saved and loaded again give the same cells. (In place, not
// through ".bak": thousands of fsync calls would cost more than the test.)
void TestCsvWriter::roundTrip() {
    QFETCH(int, standard);
    QFETCH(int, ending);
    QFETCH(int, encoding);
    QFETCH(bool, trailing);
    const EncodingType e = EncodingType(encoding);
    QRandomGenerator random(uint(standard * 1000 + ending * 100 + encoding * 2 + trailing));
    static const char delimiters[] = {',', ';', '\t', '|'};
    for (int round = 0; round < 25; ++round) {
        const char d = delimiters[random.bounded(4)];
        const SaveDialect dialect{d, ParsingStandard(standard), LineEndingType(ending), trailing,
                                  e};
        const Table t = randomTable(random, e, dialect.standard, d);
        EditableDataContainer c;
        fill(c, t);
        c.setColumnCount(c.columnCount() + random.bounded(2));
        configure(c, dialect);
        const QString path = scratchPath("round.csv");
        c.setFilepath(path);
        QVERIFY(c.save(false, false, {}, {}));

        EditableDataContainer back;
        QVERIFY(loadInto(back, path, dialect));
        QCOMPARE(back.rowCount(), c.rowCount());
        if (trailing)
            QCOMPARE(back.columnCount(), c.columnCount());
        else
            QVERIFY(back.columnCount() <= c.columnCount());
        const Table want = logicalCells(c);
        const Table got = padded(logicalCells(back), c.rowCount(), c.columnCount());
        if (got != want)
            QFAIL(qPrintable(QStringLiteral("round %1, delimiter %2\n file %3\n got  %4\n want %5")
                                 .arg(round)
                                 .arg(int(d))
                                 .arg(show(readFile(path)), show(got), show(want))));
    }
}

void TestCsvWriter::unchangedFileSavesSameBytes_data() {
    QTest::addColumn<QString>("file");
    QTest::addColumn<char>("delimiter");
    QTest::addColumn<int>("standard");
    QTest::addColumn<int>("ending");
    QTest::addColumn<int>("encoding");
    auto add = [](const char* file, char d, ParsingStandard s, LineEndingType ending,
                  EncodingType e) {
        QTest::newRow(file) << QString::fromLatin1(file) << d << int(s) << int(ending) << int(e);
    };
    add("contacts.csv", ',', Rfc4180, WindowsLineEnding, Utf8);
    add("stock_bom.csv", ';', Rfc4180, UnixLineEnding, Utf8);
    add("readings.tsv", '\t', Rfc4180, UnixLineEnding, Utf8);
    add("quoted_everything.csv", ',', AllQuotes, WindowsLineEnding, Utf8);
    add("sparse_notes.csv", '|', SparseQuotes, UnixLineEnding, Utf8);
    add("towns_latin1.csv", ';', Rfc4180, WindowsLineEnding, Iso8859_1);
    add("names_utf16le.csv", ',', Rfc4180, WindowsLineEnding, Utf16LEDetected);
    add("names_utf32be.csv", ',', Rfc4180, UnixLineEnding, Utf32BE);
    add("units.asv", '\x1F', AsciiSeparatedValues, RecordSeparatorLineEnding, Utf8);
    add("words_sjis.csv", ',', Rfc4180, WindowsLineEnding, ShiftJis);
    add("one_cell_lines.txt", 0, Rfc4180, UnixLineEnding, Utf8);
}

// A file opened and saved without a change keeps every byte.
void TestCsvWriter::unchangedFileSavesSameBytes() {
    QFETCH(QString, file);
    QFETCH(char, delimiter);
    QFETCH(int, standard);
    QFETCH(int, ending);
    QFETCH(int, encoding);
    const QByteArray original = readFile(QStringLiteral(GRIDMERE_FIXTURES "/") + file);
    QVERIFY2(!original.isEmpty(), qPrintable(file));
    const QString path = freshPath(file);
    QVERIFY(writeFile(path, original));
    const SaveDialect d{delimiter, ParsingStandard(standard), LineEndingType(ending), true,
                        EncodingType(encoding)};
    EditableDataContainer c;
    QVERIFY(loadInto(c, path, d));
    QVERIFY(c.rowCount() > 1);
    QVERIFY(c.save(true, false, {}, {}));
    QCOMPARE(show(readFile(path)), show(original));
}

void TestCsvWriter::savedFileSavesSameBytes_data() {
    roundTrip_data();
}

// What the writer wrote, loaded and saved again, is the same file: the
// generated counterpart of the fixtures.
void TestCsvWriter::savedFileSavesSameBytes() {
    QFETCH(int, standard);
    QFETCH(int, ending);
    QFETCH(int, encoding);
    QFETCH(bool, trailing);
    const EncodingType e = EncodingType(encoding);
    QRandomGenerator random(uint(standard * 7 + ending * 3 + encoding));
    for (int round = 0; round < 10; ++round) {
        const char d = ",;\t|"[random.bounded(4)];
        const SaveDialect dialect{d, ParsingStandard(standard), LineEndingType(ending), trailing,
                                  e};
        // Rows stored as a reader stores them, without empty cells at their
        // ends: under All Quotes a stored empty last cell is written as "",
        // but padding is written bare.
        Table t = randomTable(random, e, dialect.standard, d);
        for (QByteArrayList& row : t)
            while (!row.isEmpty() && row.last().isEmpty())
                row.removeLast();
        EditableDataContainer c;
        fill(c, t);
        configure(c, dialect);
        if (random.bounded(2) && encodingBom(e).size())
            c.detectBom(encodingBom(e).data(), encodingBom(e).size(), true);
        const QString path = scratchPath("first.csv");
        c.setFilepath(path);
        QVERIFY(c.save(false, false, {}, {}));
        const QByteArray first = readFile(path);

        EditableDataContainer back;
        QVERIFY(loadInto(back, path, dialect));
        const QString again = scratchPath("again.csv");
        QVERIFY(back.saveAs(again, false, false, {}, {}));
        QCOMPARE(show(readFile(again)), show(first));
    }
}

QTEST_GUILESS_MAIN(TestCsvWriter)
#include "tst_csvwriter.moc"
