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

    bool operator==(const ExtensionData&) const = default;
};
