#pragma once

#include "dialect.h"

#include <QString>

#include <optional>

// Guesses made on small samples before a file is read. Neither ever fails:
// an unreadable file gives the defaults.

// The most frequent of , TAB | ; ^ U+001F in the first 10,000 bytes, earlier
// candidates winning ties; "," when none occurs. Quotes are not considered.
QString detectDelimiter(const QString& filepath);

// Refines the undecided Utf16 / Utf32 to a byte order by counting zero bytes
// in the first 1,000 bytes; any other encoding comes back unchanged.
EncodingType detectByteOrder(EncodingType encoding, const QString& filepath);

// The line ending a file itself uses: that of its first line feed, CR LF when
// a carriage return stands just before it. Nothing when the file has no line
// feed in its first 16 MB, or is not a readable regular file.
std::optional<LineEndingType> detectLineEnding(const QString& filepath, EncodingType encoding);
