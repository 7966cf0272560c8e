#include "data/extensiondata.h"
#include "data/fileparameters.h"

#include <QRandomGenerator>
#include <QSet>
#include <QTest>
#include <QTextCodec>

namespace {

struct EncodingRow {
    EncodingType value;
    const char* shown;
    const char* spelling; // nullptr: not reachable from text
    const char* codec;
};

// The names as users and codecs know them, written out independently of the
// implementation's tables.
constexpr EncodingRow kEncodings[] = {
    {Utf8, "UTF-8", "utf8", "UTF-8"},
    {Utf16, "UTF-16", "utf16", "UTF-16"},
    {Utf16BE, "UTF-16BE", "utf16be", "UTF-16BE"},
    {Utf16LE, "UTF-16LE", "utf16le", "UTF-16LE"},
    {Utf16BEDetected, "UTF-16", nullptr, "UTF-16BE"},
    {Utf16LEDetected, "UTF-16", nullptr, "UTF-16LE"},
    {Utf32, "UTF-32", "utf32", "UTF-32"},
    {Utf32LE, "UTF-32LE", "utf32le", "UTF-32LE"},
    {Utf32BE, "UTF-32BE", "utf32be", "UTF-32BE"},
    {Utf32BEDetected, "UTF-32", nullptr, "UTF-32BE"},
    {Utf32LEDetected, "UTF-32", nullptr, "UTF-32LE"},
    {Iso8859_1, "ISO 8859-1 (Western European)", "iso88591", "ISO 8859-1"},
    {Iso8859_2, "ISO 8859-2 (Central European)", "iso88592", "ISO 8859-2"},
    {Iso8859_3, "ISO 8859-3 (South European)", "iso88593", "ISO 8859-3"},
    {Iso8859_4, "ISO 8859-4 (North European)", "iso88594", "ISO 8859-4"},
    {Iso8859_5, "ISO 8859-5 (Latin/Cyrillic)", "iso88595", "ISO 8859-5"},
    {Iso8859_6, "ISO 8859-6 (Latin/Arabic)", "iso88596", "ISO 8859-6"},
    {Iso8859_7, "ISO 8859-7 (Latin/Green)", "iso88597", "ISO 8859-7"},
    {Iso8859_8, "ISO 8859-8 (Latin/Hebrew)", "iso88598", "ISO 8859-8"},
    {Iso8859_9, "ISO 8859-9 (Turkish)", "iso88599", "ISO 8859-9"},
    {Iso8859_10, "ISO 8859-10 (Nordic)", "iso885910", "ISO 8859-10"},
    {Iso8859_13, "ISO 8859-13 (Baltic Rim)", "iso885913", "ISO 8859-13"},
    {Iso8859_14, "ISO 8859-14 (Celtic)", "iso885914", "ISO 8859-14"},
    {Iso8859_15, "ISO 8859-15 (Latin-9)", "iso885915", "ISO 8859-15"},
    {Iso8859_16, "ISO 8859-16 (South-Eastern European)", "iso885916", "ISO 8859-16"},
    {Windows1250, "Windows-1250 (Central European)", "windows1250", "Windows-1250"},
    {Windows1251, "Windows-1251 (Cyrillic)", "windows1251", "Windows-1251"},
    {Windows1252, "Windows-1252 (Western European, ANSI)", "windows1252", "Windows-1252"},
    {Windows1253, "Windows-1253 (Greek)", "windows1253", "Windows-1253"},
    {Windows1254, "Windows-1254 (Turkish)", "windows1254", "Windows-1254"},
    {Windows1255, "Windows-1255 (Hebrew)", "windows1255", "Windows-1255"},
    {Windows1256, "Windows-1256 (Arabic)", "windows1256", "Windows-1256"},
    {Windows1257, "Windows-1257 (Baltic)", "windows1257", "Windows-1257"},
    {Windows1258, "Windows-1258 (Vietnamese)", "windows1258", "Windows-1258"},
    {Cp949, "Windows-949 (Korean)", "windows949", "CP949"},
    {EucKr, "EUC-KR (Korean)", "euckr", "EUC_KR"},
    {EucJp, "EUC-JP (Japanese)", "eucjp", "EUC_JP"},
    {Iso2022Jp, "ISO 2022-JP (Japanese)", "iso2022jp", "ISO 2022-JP"},
    {ShiftJis, "Shift-JIS (Japanese)", "shiftjis", "Shift-JIS"},
    {Big5Hkscs, "Big5-HKSCS (Chinese)", "big5hkscs", "Big5-HKSCS"},
    {Big5, "Big5 (Chinese)", "big5", "Big5"},
    {Gb18030, "GB 18030 (Chinese)", "gb18030", "GB 18030"},
    {Koi8U, "KOI8-U (Ukrainian)", "koi8u", "KOI8-U"},
    {Koi8R, "KOI8-R (Russian)", "koi8r", "KOI8-R"},
    {UnknownEncoding, "", nullptr, "UTF-8"},
};

// A text of ASCII plus characters of the script each encoding exists for.
QString sampleText(EncodingType encoding) {
    switch (encoding) {
    case Iso8859_1:
        return QStringLiteral("Grüße, café ÿ ×");
    case Iso8859_2:
        return QStringLiteral("Łódź, Żółć ű");
    case Iso8859_3:
        return QStringLiteral("Ħal Ġ ĉ ŝ");
    case Iso8859_4:
        return QStringLiteral("ā ē ķ ŗ ū");
    case Iso8859_5:
    case Koi8R:
        return QStringLiteral("Привет, мир");
    case Iso8859_6:
        return QStringLiteral("مرحبا، 1");
    case Iso8859_7:
        return QStringLiteral("Καλημέρα κόσμε");
    case Iso8859_8:
    case Windows1255:
        return QStringLiteral("שלום עולם");
    case Iso8859_9:
        return QStringLiteral("İstanbul ğüşç");
    case Iso8859_10:
        return QStringLiteral("Þórður ŋ ŧ");
    case Iso8859_13:
    case Windows1257:
        return QStringLiteral("Ąžuolas ė ų");
    case Iso8859_14:
        return QStringLiteral("Ŵ ŷ ḃ ẁ");
    case Iso8859_15:
        return QStringLiteral("€ œ Ÿ š");
    case Iso8859_16:
        return QStringLiteral("Șțș ăî €");
    case Windows1250:
        return QStringLiteral("Čeština, Łódź ő €");
    case Windows1251:
        return QStringLiteral("Привет ЁЇ €");
    case Windows1252:
        return QStringLiteral("café “quoted” € ‰");
    case Windows1253:
        return QStringLiteral("Καλημέρα €");
    case Windows1254:
        return QStringLiteral("İstanbul ğş €");
    case Windows1256:
        return QStringLiteral("مرحبا پ");
    case Windows1258:
        return QStringLiteral("Đ đ ư ơ ₫");
    case Cp949:
    case EucKr:
        return QStringLiteral("안녕하세요, 세계");
    case EucJp:
    case Iso2022Jp:
    case ShiftJis:
        return QStringLiteral("日本語のテキスト, かな");
    case Big5Hkscs:
    case Big5:
        return QStringLiteral("中文字體, 台灣");
    case Gb18030:
        return QStringLiteral("中文简体 😀");
    case Koi8U:
        return QStringLiteral("Привіт, Ґ є ї");
    default: // the Unicode encodings
        return QStringLiteral("Grüße, 日本語 😀 ∑");
    }
}

QByteArray hex(const char* digits) {
    return QByteArray::fromHex(digits);
}

} // namespace

class TestFileParameters : public QObject {
    Q_OBJECT

private slots:
    void standardFromText_data();
    void standardFromText();
    void standardListOrder();

    void lineEndingNames_data();
    void lineEndingNames();
    void lineEndingFromText_data();
    void lineEndingFromText();
    void lineEndingListNames();

    void encodingTable_data();
    void encodingTable();
    void encodingFromText_data();
    void encodingFromText();
    void encodingListOrder();
    void codecsResolve();

    void boms_data();
    void boms();

    void cellRoundTrip_data();
    void cellRoundTrip();
    void cellBytes_data();
    void cellBytes();
    void truncatedCodeUnit_data();
    void truncatedCodeUnit();
    void fastPathsMatchCodec_data();
    void fastPathsMatchCodec();
    void iso2022JpCellsJoinIntoValidText();

    void delimiterNames_data();
    void delimiterNames();
    void delimiterFromUserText_data();
    void delimiterFromUserText();
    void delimiterTextIsValid_data();
    void delimiterTextIsValid();
    void delimiterForPreferences_data();
    void delimiterForPreferences();
    void delimiterForExtension_data();
    void delimiterForExtension();
    void delimiterByte_data();
    void delimiterByte();

    void extensionDataDefaults();
};

// clang-format off
void TestFileParameters::standardFromText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<ParsingStandard>("expected");
    QTest::newRow("RFC 4180") << "RFC 4180" << Rfc4180;
    QTest::newRow("rfc-4180") << "rfc-4180" << Rfc4180;
    QTest::newRow("Delimiter Only") << "Delimiter Only" << DelimiterOnly;
    QTest::newRow("delimiter-only") << "delimiter-only" << DelimiterOnly;
    QTest::newRow("my delimiter") << "my delimiter" << DelimiterOnly;
    QTest::newRow("All Quotes") << "All Quotes" << AllQuotes;
    QTest::newRow("all-quotes") << "all-quotes" << AllQuotes;
    QTest::newRow("Sparse Quotes") << "Sparse Quotes" << SparseQuotes;
    QTest::newRow("ASCII Separated Values") << "ASCII Separated Values" << AsciiSeparatedValues;
    QTest::newRow("ascii-separated") << "ascii-separated" << AsciiSeparatedValues;
    QTest::newRow("earlier row wins") << "rfc4180 or delimiter" << Rfc4180;
    QTest::newRow("quotes alone") << "quotes" << InvalidStandard;
    QTest::newRow("empty") << "" << InvalidStandard;
    QTest::newRow("Invalid standard") << "Invalid standard" << InvalidStandard;
}
// clang-format on

void TestFileParameters::standardFromText() {
    QFETCH(QString, text);
    QFETCH(ParsingStandard, expected);
    QCOMPARE(parsingStandardFromText(text), expected);
}

void TestFileParameters::standardListOrder() {
    const QStringList expected{"RFC 4180", "ASCII Separated Values", "Delimiter Only", "All Quotes",
                               "Sparse Quotes"};
    QCOMPARE(parsingStandardListNames(), expected);
    const QList<ParsingStandard> order = parsingStandardListOrder();
    QCOMPARE(order.size(), expected.size());
    for (const ParsingStandard standard : order)
        QCOMPARE(parsingStandardFromText(parsingStandardName(standard)), standard);
    QCOMPARE(parsingStandardName(InvalidStandard), QStringLiteral("Invalid standard"));
}

// clang-format off
void TestFileParameters::lineEndingNames_data() {
    QTest::addColumn<LineEndingType>("value");
    QTest::addColumn<QString>("long_name");
    QTest::addColumn<QString>("short_name");
    QTest::addColumn<QString>("compact_name");
    QTest::newRow("0") << WindowsLineEnding << "Windows (CR LF)" << "Windows" << "CRLF";
    QTest::newRow("1") << UnixLineEnding << "Mac/Linux (LF)" << "Unix" << "LF";
    QTest::newRow("2") << MacLineEnding << "Mac/Linux (LF)" << "Unix" << "LF";
    QTest::newRow("3") << LinuxLineEnding << "Mac/Linux (LF)" << "Unix" << "LF";
    QTest::newRow("4") << RecordSeparatorLineEnding << "" << "Record Separator" << "LF";
    QTest::newRow("5") << InvalidLineEnding << "" << "" << "LF";
}
// clang-format on

void TestFileParameters::lineEndingNames() {
    QFETCH(LineEndingType, value);
    QFETCH(QString, long_name);
    QFETCH(QString, short_name);
    QFETCH(QString, compact_name);
    QCOMPARE(lineEndingLongName(value), long_name);
    QCOMPARE(lineEndingShortName(value), short_name);
    QCOMPARE(lineEndingShortName(value, true), compact_name);
}

// clang-format off
void TestFileParameters::lineEndingFromText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<LineEndingType>("expected");
    QTest::newRow("long 0") << "Windows (CR LF)" << WindowsLineEnding;
    QTest::newRow("long 1") << "Mac/Linux (LF)" << UnixLineEnding;
    QTest::newRow("Unix") << "Unix" << UnixLineEnding;
    QTest::newRow("mac") << "mac" << UnixLineEnding;
    QTest::newRow("LINUX") << "LINUX" << UnixLineEnding;
    QTest::newRow("Record Separator") << "Record Separator" << RecordSeparatorLineEnding;
    QTest::newRow("CRLF") << "CRLF" << WindowsLineEnding;
    QTest::newRow("cr lf") << "cr lf" << WindowsLineEnding;
    QTest::newRow("LF") << "LF" << UnixLineEnding;
    QTest::newRow("windows before lf") << "windows lf" << WindowsLineEnding;
    QTest::newRow("record before lf") << "record lf" << RecordSeparatorLineEnding;
    QTest::newRow("(platform)") << "(platform)" << InvalidLineEnding;
    QTest::newRow("CR alone") << "CR" << InvalidLineEnding;
    QTest::newRow("empty") << "" << InvalidLineEnding;
}
// clang-format on

void TestFileParameters::lineEndingFromText() {
    QFETCH(QString, text);
    QFETCH(LineEndingType, expected);
    QCOMPARE(::lineEndingFromText(text), expected);
}

void TestFileParameters::lineEndingListNames() {
    const QStringList expected{"(platform)", "Windows (CR LF)", "Mac/Linux (LF)",
                               "Record Separator"};
    QCOMPARE(::lineEndingListNames(), expected);
    QCOMPARE(platformLineEnding(), UnixLineEnding);
}

void TestFileParameters::encodingTable_data() {
    QTest::addColumn<EncodingType>("value");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("spelling");
    QTest::addColumn<QByteArray>("codec");
    for (const EncodingRow& row : kEncodings) {
        QTest::addRow("%d", int(row.value))
            << row.value << QString::fromLatin1(row.shown) << QString::fromLatin1(row.spelling)
            << QByteArray(row.codec);
    }
}

void TestFileParameters::encodingTable() {
    QFETCH(EncodingType, value);
    QFETCH(QString, shown);
    QFETCH(QString, spelling);
    QFETCH(QByteArray, codec);
    QCOMPARE(encodingDisplayName(value), shown);
    QCOMPARE(encodingCodecName(value), codec);
    if (!spelling.isEmpty()) {
        QCOMPARE(::encodingFromText(spelling), value);
        QCOMPARE(::encodingFromText(shown), value);
    }
}

// clang-format off
void TestFileParameters::encodingFromText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<EncodingType>("expected");
    QTest::newRow("ISO 8859-15") << "ISO 8859-15" << Iso8859_15;
    QTest::newRow("iso-8859-10") << "iso-8859-10" << Iso8859_10;
    QTest::newRow("ISO_8859_1") << "ISO_8859_1" << Iso8859_1;
    QTest::newRow("utf-16 le") << "utf-16 le" << Utf16LE;
    QTest::newRow("UTF_16LE") << "UTF_16LE" << Utf16LE;
    QTest::newRow("utf16le") << "utf16le" << Utf16LE;
    QTest::newRow("UTF-16") << "UTF-16" << Utf16;
    QTest::newRow("UTF-16 BE") << "UTF-16 BE" << Utf16BE;
    QTest::newRow("utf 32") << "utf 32" << Utf32;
    QTest::newRow("UTF-32LE") << "UTF-32LE" << Utf32LE;
    QTest::newRow("big5-hkscs") << "big5-hkscs" << Big5Hkscs;
    QTest::newRow("big5") << "big5" << Big5;
    QTest::newRow("utf-8") << "utf-8" << Utf8;
    QTest::newRow("UTF-8 with BOM") << "UTF-8 with BOM" << Utf8;
    QTest::newRow("Windows 1252") << "Windows 1252" << Windows1252;
    QTest::newRow("windows-949") << "windows-949" << Cp949;
    QTest::newRow("EUC_KR") << "EUC_KR" << EucKr;
    QTest::newRow("Shift_JIS") << "Shift_JIS" << ShiftJis;
    QTest::newRow("KOI8-U") << "KOI8-U" << Koi8U;
    // Only the listed spellings count, not the codecs' own aliases.
    QTest::newRow("CP949") << "CP949" << UnknownEncoding;
    QTest::newRow("latin1") << "latin1" << UnknownEncoding;
    QTest::newRow("empty") << "" << UnknownEncoding;
}
// clang-format on

void TestFileParameters::encodingFromText() {
    QFETCH(QString, text);
    QFETCH(EncodingType, expected);
    QCOMPARE(::encodingFromText(text), expected);
}

void TestFileParameters::encodingListOrder() {
    QList<EncodingType> expected{Utf8, Utf16, Utf16BE, Utf16LE, Utf32, Utf32LE, Utf32BE};
    for (int value = Iso8859_1; value <= ShiftJis; ++value)
        expected.append(EncodingType(value));
    expected << Big5 << Big5Hkscs << Gb18030 << Koi8U << Koi8R;
    QCOMPARE(::encodingListOrder(), expected);

    const QStringList names = encodingListNames();
    QCOMPARE(names.size(), expected.size());
    QCOMPARE(names.indexOf("Big5 (Chinese)") + 1, names.indexOf("Big5-HKSCS (Chinese)"));
    for (const QString& name : names)
        QCOMPARE(encodingDisplayName(::encodingFromText(name)), name);
}

void TestFileParameters::codecsResolve() {
    QSet<QByteArray> names;
    for (int value = 0; value < kEncodingCount; ++value) {
        const auto encoding = EncodingType(value);
        const QByteArray name = encodingCodecName(encoding);
        names.insert(name);
        QTextCodec* codec = QTextCodec::codecForName(name);
        QVERIFY2(codec, name.constData());
        QCOMPARE(codecForEncoding(encoding), codec);
    }
    QCOMPARE(names.size(), 40);
    QVERIFY(codecForEncoding(Utf16BEDetected) != codecForEncoding(Utf16LEDetected));
}

// clang-format off
void TestFileParameters::boms_data() {
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QByteArray>("accepted");
    QTest::addColumn<QByteArray>("refused");
    QTest::newRow("0") << Utf8 << hex("efbbbf") << hex("efbbbf") << hex("fffe");
    QTest::newRow("1 little") << Utf16 << hex("fffe") << hex("fffe") << hex("fe");
    QTest::newRow("1 big") << Utf16 << hex("fffe") << hex("feff") << hex("efbbbf");
    QTest::newRow("2") << Utf16BE << hex("feff") << hex("feff") << hex("fffe");
    QTest::newRow("3") << Utf16LE << hex("fffe") << hex("fffe") << hex("feff");
    QTest::newRow("4") << Utf16BEDetected << hex("feff") << hex("feff") << hex("fffe");
    QTest::newRow("5") << Utf16LEDetected << hex("fffe") << hex("fffe") << hex("feff");
    QTest::newRow("6 little") << Utf32 << hex("fffe0000") << hex("fffe0000") << hex("fffe");
    QTest::newRow("6 big") << Utf32 << hex("fffe0000") << hex("0000feff") << hex("feff");
    QTest::newRow("7") << Utf32LE << hex("fffe0000") << hex("fffe0000") << hex("0000feff");
    QTest::newRow("8") << Utf32BE << hex("0000feff") << hex("0000feff") << hex("fffe0000");
    QTest::newRow("9") << Utf32BEDetected << hex("0000feff") << hex("0000feff") << hex("fffe0000");
    QTest::newRow("10") << Utf32LEDetected << hex("fffe0000") << hex("fffe0000") << hex("0000feff");
    QTest::newRow("11") << Iso8859_1 << QByteArray() << QByteArray() << hex("efbbbf");
    QTest::newRow("44") << UnknownEncoding << QByteArray() << QByteArray() << hex("efbbbf");
}
// clang-format on

void TestFileParameters::boms() {
    QFETCH(EncodingType, encoding);
    QFETCH(QByteArray, written);
    QFETCH(QByteArray, accepted);
    QFETCH(QByteArray, refused);
    QCOMPARE(encodingBom(encoding).toByteArray(), written);
    QVERIFY(!bomMatchesEncoding(refused, encoding));
    QCOMPARE(bomLengthAtStart(refused + "abc", encoding), 0);
    QVERIFY(!bomMatchesEncoding({}, encoding));
    if (accepted.isEmpty()) return;
    QVERIFY(bomMatchesEncoding(accepted, encoding));
    QCOMPARE(bomLengthAtStart(accepted + "abcd", encoding), accepted.size());
    QCOMPARE(bomLengthAtStart(accepted.left(accepted.size() - 1), encoding), 0);
}

void TestFileParameters::cellRoundTrip_data() {
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<QString>("text");
    for (int value = 0; value < kEncodingCount; ++value) {
        const auto encoding = EncodingType(value);
        QTest::addRow("%d", value) << encoding << "id 7, " + sampleText(encoding);
        // Only a Unicode encoding can hold U+FEFF, and there it is content.
        if (encodingWidth(encoding) > 1 || encoding == Utf8 || encoding == UnknownEncoding) {
            QTest::addRow("%d leading U+FEFF", value)
                << encoding << QChar(0xFEFF) + sampleText(encoding);
        }
    }
}

void TestFileParameters::cellRoundTrip() {
    QFETCH(EncodingType, encoding);
    QFETCH(QString, text);
    const QByteArray bytes = encodeCell(text, encoding);
    QVERIFY(!bytes.isEmpty());
    QCOMPARE(decodeCell(bytes, encoding), text);
    const QTextCodec* codec = codecForEncoding(encoding);
    QCOMPARE(encodeCell(text, encoding, codec), bytes);
    QCOMPARE(decodeCell(bytes, encoding, codec), text);
}

// clang-format off
void TestFileParameters::cellBytes_data() {
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    // The undecided byte orders read and write as little endian, without a mark.
    QTest::newRow("1") << Utf16 << "a" << hex("6100");
    QTest::newRow("4") << Utf16BEDetected << "a" << hex("0061");
    QTest::newRow("6") << Utf32 << "a" << hex("61000000");
    QTest::newRow("9") << Utf32BEDetected << "a" << hex("00000061");
    QTest::newRow("0") << Utf8 << "é" << hex("c3a9");
    QTest::newRow("11") << Iso8859_1 << "é" << hex("e9");
    QTest::newRow("27") << Windows1252 << "€" << hex("80");
    QTest::newRow("37") << Iso2022Jp << "日本" << hex("1b2442467c4b5c1b2842");
    QTest::newRow("0 U+FEFF") << Utf8 << QStringLiteral("\uFEFFa") << hex("efbbbf61");
    QTest::newRow("44 U+FEFF") << UnknownEncoding << QStringLiteral("\uFEFFa") << hex("efbbbf61");
    QTest::newRow("3 U+FEFF") << Utf16LE << QStringLiteral("\uFEFFa") << hex("fffe6100");
    QTest::newRow("1 U+FEFF") << Utf16 << QStringLiteral("\uFEFFa") << hex("fffe6100");
    QTest::newRow("8 U+FEFF") << Utf32BE << QStringLiteral("\uFEFFa") << hex("0000feff00000061");
    QTest::newRow("out of range is UTF-8") << EncodingType(99) << "é" << hex("c3a9");
    for (int value = 0; value < kEncodingCount; ++value)
        QTest::addRow("%d empty", value) << EncodingType(value) << "" << QByteArray();
}
// clang-format on

void TestFileParameters::cellBytes() {
    QFETCH(EncodingType, encoding);
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    QCOMPARE(encodeCell(text, encoding), bytes);
    QCOMPARE(decodeCell(bytes, encoding), text);
}

// clang-format off
void TestFileParameters::truncatedCodeUnit_data() {
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("0") << Utf8 << hex("61c3");
    QTest::newRow("44") << UnknownEncoding << hex("61c3");
    QTest::newRow("1") << Utf16 << hex("610062");
    QTest::newRow("2") << Utf16BE << hex("006100");
    QTest::newRow("7") << Utf32LE << hex("61000000620000");
    QTest::newRow("9") << Utf32BEDetected << hex("0000006100");
}
// clang-format on

void TestFileParameters::truncatedCodeUnit() {
    // A broken last unit must show, not vanish into a converter state.
    QFETCH(EncodingType, encoding);
    QFETCH(QByteArray, bytes);
    QCOMPARE(decodeCell(bytes, encoding), QStringLiteral("a\uFFFD"));
}

void TestFileParameters::fastPathsMatchCodec_data() {
    QTest::addColumn<EncodingType>("encoding");
    QTest::addColumn<QList<QByteArray>>("inputs");
    QRandomGenerator random(20240611);

    // Valid UTF-8 from across the planes, some of it starting with U+FEFF.
    QList<QByteArray> utf8{hex("efbbbf"), hex("efbbbfefbbbf41"), hex("41efbbbf")};
    constexpr char32_t kRanges[][2] = {{0x20, 0x7E},      {0xA0, 0x24F},    {0x400, 0x4FF},
                                       {0x4E00, 0x9FFF},  {0xE000, 0xFFFD}, {0x1F300, 0x1F64F},
                                       {0x20000, 0x2A6DF}};
    for (int i = 0; i < 300; ++i) {
        QString text;
        if (i % 10 == 0) text += QChar(0xFEFF);
        const int length = random.bounded(1, 12);
        for (int k = 0; k < length; ++k) {
            const auto& range = kRanges[random.bounded(int(std::size(kRanges)))];
            const char32_t code_point = range[0] + random.bounded(range[1] - range[0] + 1);
            text += QString::fromUcs4(&code_point, 1);
        }
        utf8.append(text.toUtf8());
    }
    QTest::newRow("UTF-8") << Utf8 << utf8;

    QList<QByteArray> latin1;
    for (int byte = 0; byte < 256; ++byte)
        latin1.append(QByteArray(1, char(byte)));
    for (int i = 0; i < 100; ++i) {
        QByteArray bytes(random.bounded(1, 20), Qt::Uninitialized);
        for (char& c : bytes)
            c = char(random.bounded(256));
        latin1.append(bytes);
    }
    QTest::newRow("ISO 8859-1") << Iso8859_1 << latin1;
}

void TestFileParameters::fastPathsMatchCodec() {
    QFETCH(EncodingType, encoding);
    QFETCH(QList<QByteArray>, inputs);
    const QTextCodec* codec = QTextCodec::codecForName(encodingCodecName(encoding));
    QVERIFY(codec);
    for (const QByteArray& bytes : inputs) {
        // The codec drops a leading mark unless the state says it's content.
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        const QString by_codec = codec->toUnicode(bytes.constData(), int(bytes.size()), &state);
        const QString text = decodeCell(bytes, encoding);
        QCOMPARE(text, by_codec);
        if (!bytes.startsWith("\xEF\xBB\xBF")) QCOMPARE(text, codec->toUnicode(bytes));
        QCOMPARE(encodeCell(text, encoding), codec->fromUnicode(text));
        QCOMPARE(encodeCell(text, encoding), bytes);
    }
    // Characters the encoding lacks become the same substitute.
    const QString foreign = QStringLiteral("a€日😀");
    QCOMPARE(encodeCell(foreign, encoding), codec->fromUnicode(foreign));
}

void TestFileParameters::iso2022JpCellsJoinIntoValidText() {
    // Cells are encoded one by one but the file is one text: a cell ending in
    // kanji must not leave the next delimiter in the two-byte set.
    const QStringList cells{"日本", "語", "abc", "東京"};
    QByteArray file;
    for (const QString& cell : cells) {
        if (!file.isEmpty()) file += ',';
        file += encodeCell(cell, Iso2022Jp);
    }
    QCOMPARE(QTextCodec::codecForName("ISO 2022-JP")->toUnicode(file), cells.join(','));
}

// clang-format off
void TestFileParameters::delimiterNames_data() {
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<QString>("long_name");
    QTest::addColumn<QString>("short_name");
    QTest::newRow("empty") << "" << "(none)" << "(none)";
    QTest::newRow("space") << " " << "space" << "space";
    QTest::newRow("tab") << "\t" << "tab" << "tab";
    QTest::newRow("comma") << "," << "comma (,)" << ",";
    QTest::newRow("semi-colon") << ";" << "semi-colon (;)" << ";";
    QTest::newRow("colon") << ":" << "colon (:)" << ":";
    QTest::newRow("pipe") << "|" << "pipe (|)" << "|";
    QTest::newRow("period") << "." << "period (.)" << ".";
    QTest::newRow("dash") << "-" << "dash (-)" << "-";
    QTest::newRow("forward slash") << "/" << "forward slash (/)" << "/";
    QTest::newRow("back slash") << "\\" << "back slash (\\)" << "\\";
    QTest::newRow("unit separator") << "\x1F" << "Unit Separator" << "Unit Separator";
    QTest::newRow("other") << "#" << "#" << "#";
    QTest::newRow("comma twice") << ",," << ",," << ",,";
}
// clang-format on

void TestFileParameters::delimiterNames() {
    QFETCH(QString, delimiter);
    QFETCH(QString, long_name);
    QFETCH(QString, short_name);
    QCOMPARE(delimiterLongName(delimiter), long_name);
    QCOMPARE(delimiterShortName(delimiter), short_name);
}

// clang-format off
void TestFileParameters::delimiterFromUserText_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("ok");
    QTest::newRow("\\t") << "\\t" << "\t" << true;
    QTest::newRow("TAB") << "TAB" << "\t" << true;
    QTest::newRow("\\s") << "\\s" << " " << true;
    QTest::newRow("space") << " space " << " " << true;
    QTest::newRow("unit separator") << "Unit Separator" << "\x1F" << true;
    QTest::newRow("(none)") << "(none)" << "" << true;
    QTest::newRow("none") << "None" << "" << true;
    QTest::newRow("(auto) leaves it") << "(auto)" << "old" << true;
    QTest::newRow("padded") << "  ;  " << ";" << true;
    QTest::newRow("lone blank") << " " << " " << true;
    QTest::newRow("lone tab") << "\t" << "\t" << true;
    QTest::newRow("keeps case") << "X" << "X" << true;
    QTest::newRow("empty") << "" << "" << true;
    QTest::newRow("abc") << "abc" << "abc" << false;
    QTest::newRow("two blanks inside") << "a b" << "a b" << false;
}
// clang-format on

void TestFileParameters::delimiterFromUserText() {
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QFETCH(bool, ok);
    QString delimiter = QStringLiteral("old");
    QCOMPARE(::delimiterFromUserText(text, delimiter), ok);
    QCOMPARE(delimiter, expected);
}

// clang-format off
void TestFileParameters::delimiterTextIsValid_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::newRow(",") << "," << true;
    QTest::newRow("blank") << " " << true;
    QTest::newRow("(none)") << "(None)" << true;
    QTest::newRow("(auto)") << "(auto)" << true;
    QTest::newRow("tab") << "Tab" << true;
    QTest::newRow("space") << "space" << true;
    QTest::newRow("\\t") << "\\t" << true;
    QTest::newRow("\\s") << "\\S" << true;
    QTest::newRow("unit separator") << "unit separator" << true;
    QTest::newRow("U+001F") << "\x1F" << true;
    QTest::newRow("empty") << "" << false;
    QTest::newRow("none") << "none" << false;
    QTest::newRow("untrimmed") << " ; " << false;
    QTest::newRow("two") << ";;" << false;
}
// clang-format on

void TestFileParameters::delimiterTextIsValid() {
    QFETCH(QString, text);
    QFETCH(bool, valid);
    QCOMPARE(::delimiterTextIsValid(text), valid);
}

// clang-format off
void TestFileParameters::delimiterForPreferences_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored");
    QTest::newRow("\\t") << "\\t" << "tab";
    QTest::newRow("TAB") << "\t" << "tab";
    QTest::newRow("\\s") << "\\s" << "space";
    QTest::newRow("blank") << " " << "space";
    QTest::newRow("double quote") << "\"" << ",";
    QTest::newRow("U+001F") << "\x1F" << "";
    QTest::newRow("empty") << "" << "(none)";
    QTest::newRow(";") << ";" << ";";
    QTest::newRow("(auto)") << "(auto)" << "(auto)";
}
// clang-format on

void TestFileParameters::delimiterForPreferences() {
    QFETCH(QString, text);
    QFETCH(QString, stored);
    QCOMPARE(::delimiterForPreferences(text), stored);
}

// clang-format off
void TestFileParameters::delimiterForExtension_data() {
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("delimiter");
    QTest::newRow("csv") << "csv" << ",";
    QTest::newRow("tsv") << "tsv" << "\t";
    QTest::newRow("tab") << "tab" << "\t";
    QTest::newRow("dsv") << "dsv" << ";";
    QTest::newRow("psv") << "psv" << "|";
    QTest::newRow("TSV") << "TSV" << "\t";
    QTest::newRow("txt") << "txt" << ",";
    QTest::newRow("(none)") << "(none)" << ",";
}
// clang-format on

void TestFileParameters::delimiterForExtension() {
    QFETCH(QString, extension);
    QFETCH(QString, delimiter);
    QCOMPARE(::delimiterForExtension(extension), delimiter);
}

// clang-format off
void TestFileParameters::delimiterByte_data() {
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<int>("byte");
    QTest::newRow("comma") << "," << int(',');
    QTest::newRow("tab") << "\t" << 9;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("first of two") << ";," << int(';');
    QTest::newRow("Latin-1") << "§" << 0xA7;
    QTest::newRow("beyond Latin-1") << "€" << 0;
}
// clang-format on

void TestFileParameters::delimiterByte() {
    QFETCH(QString, delimiter);
    QFETCH(int, byte);
    QCOMPARE(int(uchar(::delimiterByte(delimiter))), byte);
}

void TestFileParameters::extensionDataDefaults() {
    const ExtensionData data;
    QVERIFY(data.extension.isEmpty());
    QVERIFY(data.delimiter_open.isEmpty());
    QVERIFY(data.delimiter_save.isEmpty());
    QCOMPARE(data.line_ending, UnixLineEnding);
    QCOMPARE(data.encoding, Utf8);
    QCOMPARE(data.parsing_standard, Rfc4180);
}

QTEST_GUILESS_MAIN(TestFileParameters)
#include "tst_fileparameters.moc"
