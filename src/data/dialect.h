#pragma once

#include <cstdint>

// The three enumerations that describe a delimited file's dialect. Their
// numeric values are persisted in preference files and must never change.

enum ParsingStandard : int32_t {
    Rfc4180 = 0,
    DelimiterOnly = 1,
    AllQuotes = 2,
    SparseQuotes = 3,
    AsciiSeparatedValues = 4,
    InvalidStandard = 5,
};

// Affects saving only; reading accepts every line ending.
enum LineEndingType : int32_t {
    WindowsLineEnding = 0,
    UnixLineEnding = 1,
    MacLineEnding = 2,
    LinuxLineEnding = 3,
    RecordSeparatorLineEnding = 4,
    InvalidLineEnding = 5,
};

// Utf16/Utf32 have an undecided byte order; the *Detected values are what
// byte order detection produces and they write a byte order mark.
enum EncodingType : int32_t {
    Utf8 = 0,
    Utf16 = 1,
    Utf16BE = 2,
    Utf16LE = 3,
    Utf16BEDetected = 4,
    Utf16LEDetected = 5,
    Utf32 = 6,
    Utf32LE = 7,
    Utf32BE = 8,
    Utf32BEDetected = 9,
    Utf32LEDetected = 10,
    Iso8859_1 = 11,
    Iso8859_2 = 12,
    Iso8859_3 = 13,
    Iso8859_4 = 14,
    Iso8859_5 = 15,
    Iso8859_6 = 16,
    Iso8859_7 = 17,
    Iso8859_8 = 18,
    Iso8859_9 = 19,
    Iso8859_10 = 20,
    Iso8859_13 = 21,
    Iso8859_14 = 22,
    Iso8859_15 = 23,
    Iso8859_16 = 24,
    Windows1250 = 25,
    Windows1251 = 26,
    Windows1252 = 27,
    Windows1253 = 28,
    Windows1254 = 29,
    Windows1255 = 30,
    Windows1256 = 31,
    Windows1257 = 32,
    Windows1258 = 33,
    Cp949 = 34,
    EucKr = 35,
    EucJp = 36,
    Iso2022Jp = 37,
    ShiftJis = 38,
    Big5Hkscs = 39,
    Big5 = 40,
    Gb18030 = 41,
    Koi8U = 42,
    Koi8R = 43,
    UnknownEncoding = 44,
};

constexpr int kEncodingCount = 45;

// Selection mode of index lists handed to container operations.
enum SelectionMode : int32_t {
    Only = 0,
    Except = 1,
    All = 2,
};

// Bytes of one code unit as the parsers and writers handle it.
constexpr int encodingWidth(int encoding) {
    if (encoding >= 1 && encoding <= 5) return 2;
    if (encoding >= 6 && encoding <= 10) return 4;
    return 1;
}

// Byte order of the code unit patterns; the undecided Utf16/Utf32 count as
// little endian.
constexpr bool encodingIsBigEndian(int encoding) {
    return encoding == Utf16BE || encoding == Utf16BEDetected || encoding == Utf32BE ||
           encoding == Utf32BEDetected;
}
