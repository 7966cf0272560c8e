#pragma once

#include "data/dialect.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

class QTextCodec;

// Words for a file's dialect and the conversions between cell bytes and text.
// Everything here is a stateless free function; the only shared state is the
// process-wide codec cache behind codecForEncoding, which is safe to use from
// any thread.

// --- Quoting standard -------------------------------------------------------

QString parsingStandardName(ParsingStandard standard);
// Case, blanks and "-" are ignored; a text that names no standard gives
// InvalidStandard.
ParsingStandard parsingStandardFromText(const QString& text);
// Order of combo boxes and prompts.
QList<ParsingStandard> parsingStandardListOrder();
QStringList parsingStandardListNames();

// --- Line ending ------------------------------------------------------------

QString lineEndingLongName(LineEndingType line_ending);
// The compact form reads "CRLF" for Windows and "LF" for everything else.
QString lineEndingShortName(LineEndingType line_ending, bool compact = false);
// Never gives MacLineEnding or LinuxLineEnding; unknown text (including
// "(platform)") gives InvalidLineEnding.
LineEndingType lineEndingFromText(const QString& text);
// Texts of the line ending combo box, "(platform)" first.
QStringList lineEndingListNames();

constexpr LineEndingType platformLineEnding() {
#ifdef Q_OS_WIN
    return WindowsLineEnding;
#else
    return UnixLineEnding;
#endif
}

// --- Character encoding -----------------------------------------------------

QString encodingDisplayName(EncodingType encoding);
// The name that QTextCodec::codecForName knows the encoding by.
QByteArray encodingCodecName(EncodingType encoding);
// Case, blanks, "-" and "_" are ignored; unknown text gives UnknownEncoding.
EncodingType encodingFromText(const QString& text);
// Order of combo boxes: the values a user can choose, Big5 ahead of
// Big5-HKSCS.
QList<EncodingType> encodingListOrder();
QStringList encodingListNames();

// The byte order mark written for an encoding, empty for one without a mark.
// The undecided Utf16 and Utf32 use the little endian form, as their code
// unit patterns do.
QByteArrayView encodingBom(EncodingType encoding);
// Whether `bom` is exactly a mark of `encoding`; Utf16 and Utf32 accept both
// byte orders.
bool bomMatchesEncoding(QByteArrayView bom, EncodingType encoding);
// Length of the encoding's mark at the start of `buffer`, 0 when there is
// none. For Utf16 and Utf32 the longer of the two forms that match wins.
qsizetype bomLengthAtStart(QByteArrayView buffer, EncodingType encoding);

// The codec of an encoding, looked up once per process; null when this
// system lacks it. Codecs are owned by Qt and live until the process ends.
QTextCodec* codecForEncoding(EncodingType encoding);

// Cell bytes to text and back. `codec` may be null, in which case it is
// looked up; Utf8 and Iso8859_1 never use it. Without a codec the cell is
// treated as UTF-8. A leading U+FEFF is cell content and survives both ways.
QString decodeCell(QByteArrayView bytes, EncodingType encoding, const QTextCodec* codec = nullptr);
// The same into `out`, reusing its buffer: for loops over many cells. ASCII
// in the encodings that keep it as it is is widened in place.
void decodeCellInto(QString& out, QByteArrayView bytes, EncodingType encoding,
                    const QTextCodec* codec = nullptr);
QByteArray encodeCell(QStringView text, EncodingType encoding, const QTextCodec* codec = nullptr);

// --- Delimiter --------------------------------------------------------------

QString delimiterLongName(const QString& delimiter);
QString delimiterShortName(const QString& delimiter);
// Interprets what a user typed as a delimiter ("tab", "\t", "(none)", ...).
// "(auto)" leaves `delimiter` untouched. Returns false when the result is
// longer than one character; `delimiter` is assigned regardless.
bool delimiterFromUserText(const QString& text, QString& delimiter);
// Whether a delimiter from the preferences is usable as it stands.
bool delimiterTextIsValid(const QString& text);
// The form in which a combo box's delimiter is stored in the preferences.
QString delimiterForPreferences(const QString& text);
// The delimiter a well-known extension implies; "," for all others.
QString delimiterForExtension(const QString& extension);
// The one byte the data layer keeps: the first character as Latin-1, 0 (no
// delimiter) for an empty text or a character outside Latin-1.
char delimiterByte(const QString& delimiter);
