#include "data/fileparameters.h"

#include <QStringDecoder>
#include <QTextCodec>

#include <algorithm>
#include <array>

namespace {

// Lower-cases, then drops whitespace and every character of `drop`, so that
// "UTF-16 LE", "utf_16le" and "Utf16LE" all compare alike.
QString normalised(const QString& text, QStringView drop) {
    const QString lower = text.toLower();
    QString out;
    out.reserve(lower.size());
    for (const QChar c : lower) {
        if (!c.isSpace() && !drop.contains(c)) out.append(c);
    }
    return out;
}

// --- Quoting standard ---

struct StandardSpelling {
    QStringView spelling;
    ParsingStandard standard;
};

// Tried in this order, by substring.
constexpr std::array kStandardSpellings{
    StandardSpelling{u"rfc4180", Rfc4180},
    StandardSpelling{u"delimiter", DelimiterOnly},
    StandardSpelling{u"allquotes", AllQuotes},
    StandardSpelling{u"sparsequotes", SparseQuotes},
    StandardSpelling{u"asciiseparated", AsciiSeparatedValues},
};

// --- Encoding ---

struct EncodingNames {
    const char* shown;
    const char* codec;
};

// Indexed by EncodingType.
constexpr std::array<EncodingNames, kEncodingCount> kEncodingNames{{
    {"UTF-8", "UTF-8"},
    {"UTF-16", "UTF-16"},
    {"UTF-16BE", "UTF-16BE"},
    {"UTF-16LE", "UTF-16LE"},
    {"UTF-16", "UTF-16BE"},
    {"UTF-16", "UTF-16LE"},
    {"UTF-32", "UTF-32"},
    {"UTF-32LE", "UTF-32LE"},
    {"UTF-32BE", "UTF-32BE"},
    {"UTF-32", "UTF-32BE"},
    {"UTF-32", "UTF-32LE"},
    {"ISO 8859-1 (Western European)", "ISO 8859-1"},
    {"ISO 8859-2 (Central European)", "ISO 8859-2"},
    {"ISO 8859-3 (South European)", "ISO 8859-3"},
    {"ISO 8859-4 (North European)", "ISO 8859-4"},
    {"ISO 8859-5 (Latin/Cyrillic)", "ISO 8859-5"},
    {"ISO 8859-6 (Latin/Arabic)", "ISO 8859-6"},
    {"ISO 8859-7 (Latin/Green)", "ISO 8859-7"},
    {"ISO 8859-8 (Latin/Hebrew)", "ISO 8859-8"},
    {"ISO 8859-9 (Turkish)", "ISO 8859-9"},
    {"ISO 8859-10 (Nordic)", "ISO 8859-10"},
    {"ISO 8859-13 (Baltic Rim)", "ISO 8859-13"},
    {"ISO 8859-14 (Celtic)", "ISO 8859-14"},
    {"ISO 8859-15 (Latin-9)", "ISO 8859-15"},
    {"ISO 8859-16 (South-Eastern European)", "ISO 8859-16"},
    {"Windows-1250 (Central European)", "Windows-1250"},
    {"Windows-1251 (Cyrillic)", "Windows-1251"},
    {"Windows-1252 (Western European, ANSI)", "Windows-1252"},
    {"Windows-1253 (Greek)", "Windows-1253"},
    {"Windows-1254 (Turkish)", "Windows-1254"},
    {"Windows-1255 (Hebrew)", "Windows-1255"},
    {"Windows-1256 (Arabic)", "Windows-1256"},
    {"Windows-1257 (Baltic)", "Windows-1257"},
    {"Windows-1258 (Vietnamese)", "Windows-1258"},
    {"Windows-949 (Korean)", "CP949"},
    {"EUC-KR (Korean)", "EUC_KR"},
    {"EUC-JP (Japanese)", "EUC_JP"},
    {"ISO 2022-JP (Japanese)", "ISO 2022-JP"},
    {"Shift-JIS (Japanese)", "Shift-JIS"},
    {"Big5-HKSCS (Chinese)", "Big5-HKSCS"},
    {"Big5 (Chinese)", "Big5"},
    {"GB 18030 (Chinese)", "GB 18030"},
    {"KOI8-U (Ukrainian)", "KOI8-U"},
    {"KOI8-R (Russian)", "KOI8-R"},
    {"", "UTF-8"},
}};

struct EncodingSpelling {
    QStringView spelling;
    EncodingType encoding;
};

// Tried in this order, by substring. A spelling must come before every
// shorter one it contains: "utf16be" before "utf16", "big5hkscs" before
// "big5", and "iso88591" after the six ISO spellings that begin with it.
constexpr std::array kEncodingSpellings{
    EncodingSpelling{u"utf8", Utf8},
    EncodingSpelling{u"utf16be", Utf16BE},
    EncodingSpelling{u"utf16le", Utf16LE},
    EncodingSpelling{u"utf16", Utf16},
    EncodingSpelling{u"utf32le", Utf32LE},
    EncodingSpelling{u"utf32be", Utf32BE},
    EncodingSpelling{u"utf32", Utf32},
    EncodingSpelling{u"iso88592", Iso8859_2},
    EncodingSpelling{u"iso88593", Iso8859_3},
    EncodingSpelling{u"iso88594", Iso8859_4},
    EncodingSpelling{u"iso88595", Iso8859_5},
    EncodingSpelling{u"iso88596", Iso8859_6},
    EncodingSpelling{u"iso88597", Iso8859_7},
    EncodingSpelling{u"iso88598", Iso8859_8},
    EncodingSpelling{u"iso88599", Iso8859_9},
    EncodingSpelling{u"iso885910", Iso8859_10},
    EncodingSpelling{u"iso885913", Iso8859_13},
    EncodingSpelling{u"iso885914", Iso8859_14},
    EncodingSpelling{u"iso885915", Iso8859_15},
    EncodingSpelling{u"iso885916", Iso8859_16},
    EncodingSpelling{u"iso88591", Iso8859_1},
    EncodingSpelling{u"windows1250", Windows1250},
    EncodingSpelling{u"windows1251", Windows1251},
    EncodingSpelling{u"windows1252", Windows1252},
    EncodingSpelling{u"windows1253", Windows1253},
    EncodingSpelling{u"windows1254", Windows1254},
    EncodingSpelling{u"windows1255", Windows1255},
    EncodingSpelling{u"windows1256", Windows1256},
    EncodingSpelling{u"windows1257", Windows1257},
    EncodingSpelling{u"windows1258", Windows1258},
    EncodingSpelling{u"windows949", Cp949},
    EncodingSpelling{u"euckr", EucKr},
    EncodingSpelling{u"eucjp", EucJp},
    EncodingSpelling{u"iso2022jp", Iso2022Jp},
    EncodingSpelling{u"shiftjis", ShiftJis},
    EncodingSpelling{u"big5hkscs", Big5Hkscs},
    EncodingSpelling{u"big5", Big5},
    EncodingSpelling{u"gb18030", Gb18030},
    EncodingSpelling{u"koi8u", Koi8U},
    EncodingSpelling{u"koi8r", Koi8R},
};

// Values outside the enumeration (a corrupt preference, a bad cast) behave
// like UnknownEncoding instead of indexing past the tables.
int encodingIndex(EncodingType encoding) {
    return encoding >= 0 && encoding < kEncodingCount ? int(encoding) : int(UnknownEncoding);
}

constexpr QByteArrayView kUtf8Bom("\xEF\xBB\xBF", 3);
constexpr QByteArrayView kUtf16BeBom("\xFE\xFF", 2);
constexpr QByteArrayView kUtf16LeBom("\xFF\xFE", 2);
constexpr QByteArrayView kUtf32BeBom("\x00\x00\xFE\xFF", 4);
constexpr QByteArrayView kUtf32LeBom("\xFF\xFE\x00\x00", 4);

struct BomForms {
    QByteArrayView written;   // empty: the encoding has no mark
    QByteArrayView alternate; // the other byte order, only while it is undecided
};

BomForms bomForms(EncodingType encoding) {
    switch (encoding) {
    case Utf8:
        return {kUtf8Bom, {}};
    case Utf16:
        return {kUtf16LeBom, kUtf16BeBom};
    case Utf16BE:
    case Utf16BEDetected:
        return {kUtf16BeBom, {}};
    case Utf16LE:
    case Utf16LEDetected:
        return {kUtf16LeBom, {}};
    case Utf32:
        return {kUtf32LeBom, kUtf32BeBom};
    case Utf32LE:
    case Utf32LEDetected:
        return {kUtf32LeBom, {}};
    case Utf32BE:
    case Utf32BEDetected:
        return {kUtf32BeBom, {}};
    default:
        return {};
    }
}

// --- Cell conversion ---

// Qt's Unicode decoders swallow a leading byte order mark unless told
// otherwise. A cell never holds the file's own mark (the reader takes it
// off), so a leading U+FEFF in a cell is content and must survive. Stateless
// makes a truncated last code unit come out as U+FFFD, as it does without a
// state, instead of vanishing into the state.
constexpr QStringConverter::Flags kCellDecodeFlags =
    QStringConverter::Flag::ConvertInitialBom | QStringConverter::Flag::Stateless;

constexpr int kMibUtf8 = 106;
constexpr int kMibIso2022Jp = 39;

bool isUnicodeCodec(const QTextCodec* codec) {
    const int mib = codec->mibEnum();
    return mib == kMibUtf8 || (mib >= 1013 && mib <= 1015) // UTF-16 family
           || (mib >= 1017 && mib <= 1019);                // UTF-32 family
}

QString decodeUtf8(QByteArrayView bytes) {
    if (bytes.startsWith(kUtf8Bom)) {
        QStringDecoder decoder(QStringConverter::Utf8, kCellDecodeFlags);
        return decoder.decode(bytes);
    }
    return QString::fromUtf8(bytes);
}

// The ICU converters behind QTextCodec encode without a final flush, so a
// cell that ends inside a JIS run leaves the shift state open. Cells are
// joined by ASCII delimiters and line endings in the file, which a reader of
// the whole file would then take as half a kanji: return to ASCII as a flush
// would. (ISO-2022-JP encodes a literal ESC in the text as "?", so every ESC
// in the output starts an escape sequence.)
void closeIso2022JpRun(QByteArray& bytes) {
    static constexpr QByteArrayView kToAscii("\x1B(B", 3);
    const qsizetype last_escape = bytes.lastIndexOf('\x1B');
    if (last_escape >= 0 && !QByteArrayView(bytes).sliced(last_escape).startsWith(kToAscii))
        bytes.append(kToAscii);
}

} // namespace

// --- Quoting standard ---

QString parsingStandardName(ParsingStandard standard) {
    switch (standard) {
    case Rfc4180:
        return QStringLiteral("RFC 4180");
    case DelimiterOnly:
        return QStringLiteral("Delimiter Only");
    case AllQuotes:
        return QStringLiteral("All Quotes");
    case SparseQuotes:
        return QStringLiteral("Sparse Quotes");
    case AsciiSeparatedValues:
        return QStringLiteral("ASCII Separated Values");
    default:
        return QStringLiteral("Invalid standard");
    }
}

ParsingStandard parsingStandardFromText(const QString& text) {
    const QString key = normalised(text, u"-");
    for (const auto& [spelling, standard] : kStandardSpellings) {
        if (key.contains(spelling)) return standard;
    }
    return InvalidStandard;
}

QList<ParsingStandard> parsingStandardListOrder() {
    return {Rfc4180, AsciiSeparatedValues, DelimiterOnly, AllQuotes, SparseQuotes};
}

QStringList parsingStandardListNames() {
    QStringList names;
    for (const ParsingStandard standard : parsingStandardListOrder())
        names.append(parsingStandardName(standard));
    return names;
}

// --- Line ending ---

QString lineEndingLongName(LineEndingType line_ending) {
    switch (line_ending) {
    case WindowsLineEnding:
        return QStringLiteral("Windows (CR LF)");
    case UnixLineEnding:
    case MacLineEnding:
    case LinuxLineEnding:
        return QStringLiteral("Mac/Linux (LF)");
    default:
        return {};
    }
}

QString lineEndingShortName(LineEndingType line_ending, bool compact) {
    // The compact form knows only two words, so even the record separator
    // reads "LF" there.
    if (compact)
        return line_ending == WindowsLineEnding ? QStringLiteral("CRLF") : QStringLiteral("LF");
    switch (line_ending) {
    case WindowsLineEnding:
        return QStringLiteral("Windows");
    case UnixLineEnding:
    case MacLineEnding:
    case LinuxLineEnding:
        return QStringLiteral("Unix");
    case RecordSeparatorLineEnding:
        return QStringLiteral("Record Separator");
    default:
        return {};
    }
}

LineEndingType lineEndingFromText(const QString& text) {
    const QString key = normalised(text, {});
    // Order matters: "windows" outranks the "lf" inside "Windows (CR LF)", and
    // "crlf" must be seen before the "lf" it contains.
    if (key.contains(u"windows")) return WindowsLineEnding;
    if (key.contains(u"unix") || key.contains(u"mac") || key.contains(u"linux"))
        return UnixLineEnding;
    if (key.contains(u"record")) return RecordSeparatorLineEnding;
    if (key.contains(u"crlf")) return WindowsLineEnding;
    if (key.contains(u"lf")) return UnixLineEnding;
    return InvalidLineEnding;
}

QStringList lineEndingListNames() {
    return {QStringLiteral("(platform)"), lineEndingLongName(WindowsLineEnding),
            lineEndingLongName(UnixLineEnding), lineEndingShortName(RecordSeparatorLineEnding)};
}

// --- Encoding ---

QString encodingDisplayName(EncodingType encoding) {
    return QString::fromLatin1(kEncodingNames[encodingIndex(encoding)].shown);
}

QByteArray encodingCodecName(EncodingType encoding) {
    return QByteArray(kEncodingNames[encodingIndex(encoding)].codec);
}

EncodingType encodingFromText(const QString& text) {
    const QString key = normalised(text, u"-_");
    for (const auto& [spelling, encoding] : kEncodingSpellings) {
        if (key.contains(spelling)) return encoding;
    }
    return UnknownEncoding;
}

QList<EncodingType> encodingListOrder() {
    QList<EncodingType> order;
    for (int value = 0; value < UnknownEncoding; ++value) {
        const auto encoding = EncodingType(value);
        switch (encoding) {
        case Utf16BEDetected:
        case Utf16LEDetected:
        case Utf32BEDetected:
        case Utf32LEDetected:
            break;
        case Big5Hkscs: // shown after Big5
            break;
        case Big5:
            order.append(Big5);
            order.append(Big5Hkscs);
            break;
        default:
            order.append(encoding);
        }
    }
    return order;
}

QStringList encodingListNames() {
    QStringList names;
    for (const EncodingType encoding : encodingListOrder())
        names.append(encodingDisplayName(encoding));
    return names;
}

QByteArrayView encodingBom(EncodingType encoding) {
    return bomForms(encoding).written;
}

bool bomMatchesEncoding(QByteArrayView bom, EncodingType encoding) {
    const BomForms forms = bomForms(encoding);
    if (bom.isEmpty()) return false;
    return bom == forms.written || bom == forms.alternate;
}

qsizetype bomLengthAtStart(QByteArrayView buffer, EncodingType encoding) {
    const BomForms forms = bomForms(encoding);
    qsizetype length = 0;
    for (const QByteArrayView form : {forms.written, forms.alternate}) {
        if (!form.isEmpty() && buffer.startsWith(form)) length = std::max(length, form.size());
    }
    return length;
}

QTextCodec* codecForEncoding(EncodingType encoding) {
    // codecForName costs tens of microseconds a call; decoding a visible cell
    // must not. Resolved all at once so that the table is immutable after its
    // thread-safe initialisation.
    static const std::array<QTextCodec*, kEncodingCount> codecs = [] {
        std::array<QTextCodec*, kEncodingCount> result{};
        for (int value = 0; value < kEncodingCount; ++value)
            result[value] = QTextCodec::codecForName(kEncodingNames[value].codec);
        return result;
    }();
    return codecs[encodingIndex(encoding)];
}

QString decodeCell(QByteArrayView bytes, EncodingType encoding, const QTextCodec* codec) {
    if (bytes.isEmpty()) return {};
    if (encoding == Utf8) return decodeUtf8(bytes);
    if (encoding == Iso8859_1) return QString::fromLatin1(bytes);
    if (!codec) codec = codecForEncoding(encoding);
    if (!codec) return decodeUtf8(bytes);
    const int length = int(bytes.size());
    if (isUnicodeCodec(codec)) {
        QTextCodec::ConverterState state(kCellDecodeFlags);
        return codec->toUnicode(bytes.data(), length, &state);
    }
    // No state for the ICU codecs: with one they keep a converter open and
    // would carry a multi-byte remainder or a shift state into the next cell.
    return codec->toUnicode(bytes.data(), length);
}

void decodeCellInto(QString& out, QByteArrayView bytes, EncodingType encoding,
                    const QTextCodec* codec) {
    if ((encoding == Utf8 || encoding == Iso8859_1) &&
        std::all_of(bytes.begin(), bytes.end(), [](char c) { return uchar(c) < 0x80; })) {
        out.resize(bytes.size());
        QChar* to = out.data();
        for (qsizetype i = 0; i < bytes.size(); ++i)
            to[i] = QChar(uchar(bytes[i]));
        return;
    }
    out = decodeCell(bytes, encoding, codec);
}

QByteArray encodeCell(QStringView text, EncodingType encoding, const QTextCodec* codec) {
    if (text.isEmpty()) return {};
    if (encoding == Utf8) return text.toUtf8();
    if (encoding == Iso8859_1) return text.toLatin1();
    if (!codec) codec = codecForEncoding(encoding);
    if (!codec) return text.toUtf8();
    // Without a state the Unicode codecs write no byte order mark.
    QByteArray bytes = codec->fromUnicode(text.data(), int(text.size()));
    if (codec->mibEnum() == kMibIso2022Jp) closeIso2022JpRun(bytes);
    return bytes;
}

// --- Delimiter ---

QString delimiterLongName(const QString& delimiter) {
    // Printable delimiters get their name beside the character; the rest are
    // named as in the short form.
    if (delimiter.size() == 1) {
        switch (delimiter.front().unicode()) {
        case ',':
            return QStringLiteral("comma (,)");
        case ';':
            return QStringLiteral("semi-colon (;)");
        case ':':
            return QStringLiteral("colon (:)");
        case '|':
            return QStringLiteral("pipe (|)");
        case '.':
            return QStringLiteral("period (.)");
        case '-':
            return QStringLiteral("dash (-)");
        case '/':
            return QStringLiteral("forward slash (/)");
        case '\\':
            return QStringLiteral("back slash (\\)");
        }
    }
    return delimiterShortName(delimiter);
}

QString delimiterShortName(const QString& delimiter) {
    if (delimiter.isEmpty()) return QStringLiteral("(none)");
    if (delimiter.size() == 1) {
        switch (delimiter.front().unicode()) {
        case ' ':
            return QStringLiteral("space");
        case '\t':
            return QStringLiteral("tab");
        case 0x1F:
            return QStringLiteral("Unit Separator");
        }
    }
    return delimiter;
}

bool delimiterFromUserText(const QString& text, QString& delimiter) {
    // A single character is taken literally, so a lone blank stays a blank.
    const QString given = text.size() > 1 ? text.trimmed() : text;
    // Keywords are matched in any case; a literal delimiter keeps its case.
    const QString word = given.toLower();
    if (word == u"\\t" || word == u"tab")
        delimiter = QStringLiteral("\t");
    else if (word == u"\\s" || word == u"space")
        delimiter = QStringLiteral(" ");
    else if (word == u"unit separator")
        delimiter = QString(QChar(0x1F));
    else if (word == u"(none)" || word == u"none")
        delimiter.clear();
    else if (word == u"(auto)")
        return true;
    else
        delimiter = given;
    return delimiter.size() <= 1;
}

bool delimiterTextIsValid(const QString& text) {
    const QString word = text.toLower();
    return word.size() == 1 || word == u"(none)" || word == u"(auto)" || word == u"tab" ||
           word == u"space" || word == u"\\t" || word == u"\\s" || word == u"unit separator";
}

QString delimiterForPreferences(const QString& text) {
    if (text == u"\\t" || text == u"\t") return QStringLiteral("tab");
    if (text == u"\\s" || text == u" ") return QStringLiteral("space");
    if (text == u"\"") return QStringLiteral(",");
    if (text == QChar(0x1F)) return {};
    if (text.isEmpty()) return QStringLiteral("(none)");
    return text;
}

QString delimiterForExtension(const QString& extension) {
    const QString ext = extension.toLower();
    if (ext == u"tsv" || ext == u"tab") return QStringLiteral("\t");
    if (ext == u"dsv") return QStringLiteral(";");
    if (ext == u"psv") return QStringLiteral("|");
    return QStringLiteral(",");
}

char delimiterByte(const QString& delimiter) {
    return delimiter.isEmpty() ? '\0' : delimiter.front().toLatin1();
}
