#include "data/fileparameters.h"

#include <QRandomGenerator>
#include <QSet>
#include <QTest>
#include <QTextCodec>

#include <tuple>
#include <utility>

namespace {

QByteArray hex(const char* digits) {
    return QByteArray::fromHex(digits);
}

// One row per {text, expected} pair; control characters would make the row
// names unreadable in a report.
template <class T, size_t N> void textRows(const std::pair<const char*, T> (&cases)[N]) {
    QTest::addColumn<QString>("text");
    QTest::addColumn<T>("expected");
    for (size_t i = 0; i < N; ++i) {
        QByteArray tag = QByteArray::number(qulonglong(i)) + ": " + cases[i].first;
        for (char& c : tag)
            if (uchar(c) < 0x20) c = '^';
        QTest::newRow(tag.constData()) << QString::fromUtf8(cases[i].first) << cases[i].second;
    }
}

template <class T, class F> void checkText(F convert) {
    QFETCH(QString, text);
    QFETCH(T, expected);
    QCOMPARE(convert(text), expected);
}

// Text of the script each non-Unicode encoding exists for; a text the
// encoding cannot hold would only test the substitute character.
// clang-format off
const std::pair<EncodingType, const char*> kSamples[] = {
    {Iso8859_1, "Grüße, café ÿ ×"}, {Iso8859_2, "Łódź, Żółć ű"}, {Iso8859_3, "Ħal Ġ ĉ ŝ"},
    {Iso8859_4, "ā ē ķ ŗ ū"}, {Iso8859_5, "Привет, мир"}, {Iso8859_6, "مرحبا، 1"},
    {Iso8859_7, "Καλημέρα κόσμε"}, {Iso8859_8, "שלום עולם"}, {Iso8859_9, "İstanbul ğüşç"},
    {Iso8859_10, "Þórður ŋ ŧ"}, {Iso8859_13, "Ąžuolas ė ų"}, {Iso8859_14, "Ŵ ŷ ḃ ẁ"},
    {Iso8859_15, "€ œ Ÿ š"}, {Iso8859_16, "Șțș ăî €"}, {Windows1250, "Čeština, Łódź ő €"},
    {Windows1251, "Привет ЁЇ €"}, {Windows1252, "café “quoted” € ‰"}, {Windows1253, "Καλημέρα €"},
    {Windows1254, "İstanbul ğş €"}, {Windows1255, "שלום עולם"}, {Windows1256, "مرحبا پ"},
    {Windows1257, "Ąžuolas ė ų"}, {Windows1258, "Đ đ ư ơ ₫"}, {Cp949, "안녕하세요, 세계"},
    {EucKr, "안녕하세요, 세계"}, {EucJp, "日本語のテキスト, かな"}, {Iso2022Jp, "日本語のテキスト, かな"},
    {ShiftJis, "日本語のテキスト, かな"}, {Big5Hkscs, "中文字體, 台灣"}, {Big5, "中文字體, 台灣"},
    {Gb18030, "中文简体 😀"}, {Koi8U, "Привіт, Ґ є ї"}, {Koi8R, "Привет, мир"}};
// clang-format on

} // namespace

class TestFileParameters : public QObject {
    Q_OBJECT

private slots:
    void standardFromText_data() {
        // By substring, in a fixed order: any text holding "delimiter" is one.
        // clang-format off
        textRows<ParsingStandard>({
            {"RFC 4180", Rfc4180}, {"rfc-4180", Rfc4180}, {"Delimiter Only", DelimiterOnly},
            {"my delimiter", DelimiterOnly}, {"all-quotes", AllQuotes},
            {"Sparse Quotes", SparseQuotes}, {"ascii-separated", AsciiSeparatedValues},
            {"rfc4180 or delimiter", Rfc4180}, {"quotes", InvalidStandard},
            {"", InvalidStandard}, {"Invalid standard", InvalidStandard}});
        // clang-format on
    }
    void standardFromText() { checkText<ParsingStandard>(parsingStandardFromText); }

    void lineEndingNames_data() {
        QTest::addColumn<LineEndingType>("value");
        QTest::addColumn<QStringList>("names"); // long, short, compact
        // clang-format off
        const QStringList names[] = {
            {"Windows (CR LF)", "Windows", "CRLF"}, {"Mac/Linux (LF)", "Unix", "LF"},
            {"Mac/Linux (LF)", "Unix", "LF"}, {"Mac/Linux (LF)", "Unix", "LF"},
            {"", "Record Separator", "LF"}, {"", "", "LF"}};
        // clang-format on
        for (int value = 0; value <= InvalidLineEnding; ++value)
            QTest::addRow("%d", value) << LineEndingType(value) << names[value];
    }
    void lineEndingNames() {
        QFETCH(LineEndingType, value);
        QFETCH(QStringList, names);
        QCOMPARE((QStringList{lineEndingLongName(value), lineEndingShortName(value),
                              lineEndingShortName(value, true)}),
                 names);
    }

    void lineEndingFromText_data() {
        // "windows" outranks the "lf" in "(CR LF)", "crlf" the "lf" it holds.
        // clang-format off
        textRows<LineEndingType>({
            {"Windows (CR LF)", WindowsLineEnding}, {"Mac/Linux (LF)", UnixLineEnding},
            {"Unix", UnixLineEnding}, {"mac", UnixLineEnding}, {"LINUX", UnixLineEnding},
            {"Record Separator", RecordSeparatorLineEnding},
            {"record lf", RecordSeparatorLineEnding}, {"CRLF", WindowsLineEnding},
            {"cr lf", WindowsLineEnding}, {"LF", UnixLineEnding},
            {"(platform)", InvalidLineEnding}, {"CR", InvalidLineEnding}, {"", InvalidLineEnding}});
        // clang-format on
    }
    void lineEndingFromText() { checkText<LineEndingType>(::lineEndingFromText); }

    // The combo box lists, each name leading back to its value.
    void choiceLists() {
        QCOMPARE(parsingStandardListNames(),
                 QStringList({"RFC 4180", "ASCII Separated Values", "Delimiter Only", "All Quotes",
                              "Sparse Quotes"}));
        for (const ParsingStandard standard : parsingStandardListOrder())
            QCOMPARE(parsingStandardFromText(parsingStandardName(standard)), standard);

        QCOMPARE(::lineEndingListNames(), QStringList({"(platform)", "Windows (CR LF)",
                                                       "Mac/Linux (LF)", "Record Separator"}));
        QCOMPARE(platformLineEnding(), UnixLineEnding);

        QList<EncodingType> expected{Utf8, Utf16, Utf16BE, Utf16LE, Utf32, Utf32LE, Utf32BE};
        for (int value = Iso8859_1; value <= ShiftJis; ++value)
            expected.append(EncodingType(value));
        expected << Big5 << Big5Hkscs << Gb18030 << Koi8U << Koi8R;
        QCOMPARE(encodingListOrder(), expected);
        // Each shown name holds the shorter spellings that must not win.
        const QStringList names = encodingListNames();
        QCOMPARE(names.size(), expected.size());
        QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), names.size());
        for (int i = 0; i < names.size(); ++i)
            QCOMPARE(::encodingFromText(names[i]), expected[i]);
    }

    void encodingNames_data() {
        QTest::addColumn<EncodingType>("value");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QByteArray>("codec");
        // clang-format off
        const std::tuple<EncodingType, const char*, const char*> rows[] = {
            {Utf16LEDetected, "UTF-16", "UTF-16LE"}, {Utf32BEDetected, "UTF-32", "UTF-32BE"},
            {Windows1252, "Windows-1252 (Western European, ANSI)", "Windows-1252"},
            {Cp949, "Windows-949 (Korean)", "CP949"}, {UnknownEncoding, "", "UTF-8"},
            {EncodingType(99), "", "UTF-8"}}; // 99: a corrupt preference
        // clang-format on
        for (const auto& [value, shown, codec] : rows)
            QTest::addRow("%d", int(value)) << value << QString(shown) << QByteArray(codec);
    }
    void encodingNames() {
        QFETCH(EncodingType, value);
        QFETCH(QString, shown);
        QFETCH(QByteArray, codec);
        QCOMPARE(encodingDisplayName(value), shown);
        QCOMPARE(encodingCodecName(value), codec);
    }

    void encodingFromText_data() {
        // A spelling must be tried before every shorter one it contains.
        // clang-format off
        textRows<EncodingType>({
            {"ISO 8859-15", Iso8859_15}, {"iso-8859-10", Iso8859_10}, {"ISO_8859_1", Iso8859_1},
            {"utf-16 le", Utf16LE}, {"UTF_16LE", Utf16LE}, {"UTF-16", Utf16},
            {"UTF-16 BE", Utf16BE}, {"utf 32", Utf32}, {"UTF-32LE", Utf32LE},
            {"big5-hkscs", Big5Hkscs}, {"big5", Big5}, {"UTF-8 with BOM", Utf8},
            {"Windows 1252", Windows1252}, {"windows-949", Cp949}, {"Shift_JIS", ShiftJis},
            // Only the listed spellings count, not the codecs' own aliases.
            {"CP949", UnknownEncoding}, {"latin1", UnknownEncoding}, {"", UnknownEncoding}});
        // clang-format on
    }
    void encodingFromText() { checkText<EncodingType>(::encodingFromText); }

    void codecsResolve() {
        QSet<QByteArray> names;
        for (int value = 0; value < kEncodingCount; ++value) {
            const QByteArray name = encodingCodecName(EncodingType(value));
            names.insert(name);
            QTextCodec* codec = QTextCodec::codecForName(name);
            QVERIFY2(codec, name.constData());
            QCOMPARE(codecForEncoding(EncodingType(value)), codec);
        }
        QCOMPARE(names.size(), 40);
    }

    void boms_data() {
        QTest::addColumn<EncodingType>("encoding");
        QTest::addColumn<QByteArray>("written");
        QTest::addColumn<QByteArray>("alternate"); // the other order, while undecided
        // clang-format off
        const std::tuple<EncodingType, const char*, const char*> marks[] = {
            {Utf8, "efbbbf", ""}, {Utf16, "fffe", "feff"}, {Utf16BE, "feff", ""},
            {Utf16LE, "fffe", ""}, {Utf16BEDetected, "feff", ""}, {Utf16LEDetected, "fffe", ""},
            {Utf32, "fffe0000", "0000feff"}, {Utf32LE, "fffe0000", ""}, {Utf32BE, "0000feff", ""},
            {Utf32BEDetected, "0000feff", ""}, {Utf32LEDetected, "fffe0000", ""}};
        // clang-format on
        for (int value = 0; value < kEncodingCount; ++value) {
            QByteArray written, alternate;
            for (const auto& [encoding, w, a] : marks)
                if (encoding == value) std::tie(written, alternate) = std::pair(hex(w), hex(a));
            QTest::addRow("%d", value) << EncodingType(value) << written << alternate;
        }
    }
    void boms() {
        QFETCH(EncodingType, encoding);
        QFETCH(QByteArray, written);
        QFETCH(QByteArray, alternate);
        QCOMPARE(encodingBom(encoding).toByteArray(), written);
        QVERIFY(!bomMatchesEncoding({}, encoding));
        QCOMPARE(bomLengthAtStart("abcd", encoding), 0);
        for (const char* digits : {"efbbbf", "feff", "fffe", "0000feff", "fffe0000"}) {
            const QByteArray mark = hex(digits);
            const bool own = mark == written || mark == alternate;
            QCOMPARE(bomMatchesEncoding(mark, encoding), own);
            if (own) {
                QCOMPARE(bomLengthAtStart(mark + "abcd", encoding), mark.size());
                QCOMPARE(bomLengthAtStart(mark.chopped(1), encoding), 0);
            } else {
                // The UTF-32LE mark begins with the UTF-16LE one: only taking
                // a foreign mark whole is wrong.
                QVERIFY(bomLengthAtStart(mark, encoding) < mark.size());
            }
        }
    }

    void cellRoundTrip_data() {
        QTest::addColumn<EncodingType>("encoding");
        QTest::addColumn<QString>("text");
        for (int value = 0; value < kEncodingCount; ++value) {
            const auto encoding = EncodingType(value);
            QString text = QStringLiteral("Grüße, 日本語 😀 ∑"); // for the Unicode encodings
            for (const auto& [sampled, sample] : kSamples)
                if (sampled == encoding) text = QString::fromUtf8(sample);
            QTest::addRow("%d", value) << encoding << "id 7, " + text;
            // Only a Unicode encoding can hold U+FEFF, and in a cell it is content.
            if (encodingWidth(encoding) > 1 || encoding == Utf8 || encoding == UnknownEncoding)
                QTest::addRow("%d U+FEFF", value) << encoding << QChar(0xFEFF) + text;
        }
    }
    void cellRoundTrip() {
        QFETCH(EncodingType, encoding);
        QFETCH(QString, text);
        QCOMPARE(decodeCell(encodeCell(text, encoding), encoding), text);
        QCOMPARE(encodeCell(u"", encoding), QByteArray());
        QCOMPARE(decodeCell({}, encoding), QString());
    }

    void cellBytes_data() {
        QTest::addColumn<EncodingType>("encoding");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("bytes");
        // The undecided byte orders are little endian; no cell gets a mark.
        // clang-format off
        const std::tuple<EncodingType, const char16_t*, const char*> rows[] = {
            {Utf16, u"a", "6100"}, {Utf16BEDetected, u"a", "0061"}, {Utf32, u"a", "61000000"},
            {Utf32BEDetected, u"a", "00000061"}, {Utf8, u"é", "c3a9"}, {Iso8859_1, u"é", "e9"},
            {Windows1252, u"€", "80"}, {Iso2022Jp, u"日本", "1b2442467c4b5c1b2842"},
            {Utf8, u"\uFEFFa", "efbbbf61"}, {UnknownEncoding, u"\uFEFFa", "efbbbf61"},
            {Utf16, u"\uFEFFa", "fffe6100"}, {Utf32BE, u"\uFEFFa", "0000feff00000061"},
            {EncodingType(99), u"é", "c3a9"}};
        // clang-format on
        for (const auto& [encoding, text, digits] : rows)
            QTest::addRow("%d %s", int(encoding), digits)
                << encoding << QStringView(text).toString() << hex(digits);
    }
    void cellBytes() {
        QFETCH(EncodingType, encoding);
        QFETCH(QString, text);
        QFETCH(QByteArray, bytes);
        QCOMPARE(encodeCell(text, encoding), bytes);
        QCOMPARE(decodeCell(bytes, encoding), text);
    }

    void truncatedCodeUnit() {
        // A broken last unit must show, not vanish into a converter state.
        const std::pair<EncodingType, const char*> cases[] = {{Utf8, "61c3"},
                                                              {UnknownEncoding, "61c3"},
                                                              {Utf16BE, "006100"},
                                                              {Utf32LE, "61000000620000"}};
        for (const auto& [encoding, digits] : cases)
            QCOMPARE(decodeCell(hex(digits), encoding), QStringLiteral("a\uFFFD"));
    }

    void fastPathsMatchCodec() {
        // Valid UTF-8 from across the planes, some of it starting with U+FEFF.
        QRandomGenerator random(20240611);
        QByteArrayList utf8{hex("efbbbf"), hex("efbbbfefbbbf41"), hex("41efbbbf")};
        constexpr char32_t kRanges[][2] = {{0x20, 0x7E},      {0xA0, 0x24F},    {0x400, 0x4FF},
                                           {0x4E00, 0x9FFF},  {0xE000, 0xFFFD}, {0x1F300, 0x1F64F},
                                           {0x20000, 0x2A6DF}};
        for (int i = 0; i < 300; ++i) {
            QString text = i % 10 == 0 ? QString(QChar(0xFEFF)) : QString();
            for (int k = random.bounded(1, 12); k > 0; --k) {
                const auto& range = kRanges[random.bounded(int(std::size(kRanges)))];
                const char32_t code_point = range[0] + random.bounded(range[1] - range[0] + 1);
                text += QString::fromUcs4(&code_point, 1);
            }
            utf8.append(text.toUtf8());
        }
        QByteArrayList latin1;
        for (int byte = 0; byte < 256; ++byte)
            latin1.append(QByteArray(1, char(byte)));
        latin1.append(latin1.join());

        for (const auto& [encoding, inputs] :
             {std::pair(Utf8, utf8), std::pair(Iso8859_1, latin1)}) {
            const QTextCodec* codec = QTextCodec::codecForName(encodingCodecName(encoding));
            for (const QByteArray& bytes : inputs) {
                // The codec drops a leading mark unless the state says it's content.
                QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
                const QString text = decodeCell(bytes, encoding);
                QCOMPARE(text, codec->toUnicode(bytes.constData(), int(bytes.size()), &state));
                QCOMPARE(encodeCell(text, encoding), bytes);
            }
            // Characters the encoding lacks become the same substitute.
            const QString foreign = QStringLiteral("a€日😀");
            QCOMPARE(encodeCell(foreign, encoding), codec->fromUnicode(foreign));
        }
    }

    void iso2022JpCellsJoinIntoValidText() {
        // Cells are encoded one by one but the file is one text: a cell ending
        // in kanji must not leave the next delimiter in the two-byte set.
        const QStringList cells{"日本", "語", "abc", "東京"};
        QByteArray file;
        for (const QString& cell : cells)
            file += (file.isEmpty() ? "" : ",") + encodeCell(cell, Iso2022Jp);
        QCOMPARE(QTextCodec::codecForName("ISO 2022-JP")->toUnicode(file), cells.join(','));
    }

    void delimiterNames_data() {
        // clang-format off
        textRows<std::pair<QString, QString>>({ // long, short
            {"", {"(none)", "(none)"}}, {" ", {"space", "space"}}, {"\t", {"tab", "tab"}},
            {"\x1F", {"Unit Separator", "Unit Separator"}}, {",", {"comma (,)", ","}},
            {";", {"semi-colon (;)", ";"}}, {":", {"colon (:)", ":"}}, {"|", {"pipe (|)", "|"}},
            {".", {"period (.)", "."}}, {"-", {"dash (-)", "-"}},
            {"/", {"forward slash (/)", "/"}}, {"\\", {"back slash (\\)", "\\"}},
            {"#", {"#", "#"}}, {",,", {",,", ",,"}}});
        // clang-format on
    }
    void delimiterNames() {
        checkText<std::pair<QString, QString>>([](const QString& text) {
            return std::pair(delimiterLongName(text), delimiterShortName(text));
        });
    }

    void delimiterFromUserText_data() {
        // "(auto)" keeps what was there; a lone character is never trimmed.
        // clang-format off
        textRows<std::pair<QString, bool>>({
            {"\\t", {"\t", true}}, {"TAB", {"\t", true}}, {"\\s", {" ", true}},
            {" space ", {" ", true}}, {"Unit Separator", {"\x1F", true}}, {"(none)", {"", true}},
            {"None", {"", true}}, {"(auto)", {"old", true}}, {"  ;  ", {";", true}},
            {" ", {" ", true}}, {"X", {"X", true}}, {"", {"", true}}, {"a b", {"a b", false}}});
        // clang-format on
    }
    void delimiterFromUserText() {
        checkText<std::pair<QString, bool>>([](const QString& text) {
            QString delimiter = QStringLiteral("old");
            const bool ok = ::delimiterFromUserText(text, delimiter);
            return std::pair(delimiter, ok);
        });
    }

    void delimiterTextIsValid_data() {
        // clang-format off
        textRows<bool>({
            {",", true}, {" ", true}, {"(None)", true}, {"(auto)", true}, {"Tab", true},
            {"space", true}, {"\\t", true}, {"\\S", true}, {"unit separator", true},
            {"\x1F", true}, {"", false}, {"none", false}, {" ; ", false}, {";;", false}});
        // clang-format on
    }
    void delimiterTextIsValid() { checkText<bool>(::delimiterTextIsValid); }

    void delimiterForPreferences_data() {
        // clang-format off
        textRows<QString>({
            {"\\t", "tab"}, {"\t", "tab"}, {"\\s", "space"}, {" ", "space"}, {"\"", ","},
            {"\x1F", ""}, {"", "(none)"}, {";", ";"}, {"(auto)", "(auto)"}});
        // clang-format on
    }
    void delimiterForPreferences() { checkText<QString>(::delimiterForPreferences); }

    void delimiterForExtension_data() {
        // clang-format off
        textRows<QString>({{"csv", ","}, {"tsv", "\t"}, {"TSV", "\t"}, {"tab", "\t"},
                           {"dsv", ";"}, {"psv", "|"}, {"txt", ","}, {"(none)", ","}});
        // clang-format on
    }
    void delimiterForExtension() { checkText<QString>(::delimiterForExtension); }

    void delimiterByte_data() {
        // The first character as Latin-1; none outside it.
        textRows<int>({{",", ','}, {"\t", 9}, {"", 0}, {";,", ';'}, {"§", 0xA7}, {"€", 0}});
    }
    void delimiterByte() {
        checkText<int>([](const QString& text) { return int(uchar(::delimiterByte(text))); });
    }
};

QTEST_GUILESS_MAIN(TestFileParameters)
#include "tst_fileparameters.moc"
