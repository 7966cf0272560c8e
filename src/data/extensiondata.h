#pragma once

#include "data/dialect.h"

#include <QString>

// The dialect a file is opened with, as one row of the file extension
// preferences states it. Default-constructed, it is the dialect of an
// extension that the preferences don't list.
struct ExtensionData {
    QString extension; // lower case, no dot; "(none)" for a file without one
    QString delimiter_open;
    QString delimiter_save;
    LineEndingType line_ending = UnixLineEnding;
    EncodingType encoding = Utf8;
    ParsingStandard parsing_standard = Rfc4180;
    // The row leaves the line ending to the platform: a file opened under it
    // keeps the line ending it came with, and only a new file takes the
    // platform's.
    bool line_ending_from_platform = true;

    bool operator==(const ExtensionData&) const = default;
};
