#pragma once

// What the reader fuzz targets share: the dialect chosen by the first bytes
// of an input, and the file the rest is written to.

#include "data/dialect.h"

#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <unistd.h>

struct FuzzDialect {
    char delimiter;
    ParsingStandard standard;
    EncodingType encoding;
    qint64 chunk; // 0: the container's own size
};

// Odd delimiters (quote, CR, LF, RS, a high Latin-1 byte) on purpose: they
// take the state-machine paths. False when the input is too short.
inline bool readFuzzDialect(const uint8_t* data, size_t size, FuzzDialect& d) {
    static constexpr char kDelimiters[] = {',',  ';',  '\t', '|',  0,   '"',
                                           '\r', '\n', 0x1E, 0x1F, ' ', '\xA7'};
    static constexpr EncodingType kEncodings[] = {
        Utf8,  Utf16LE, Utf16BE,   Utf32LE,         Utf32BE,
        Utf16, Utf32,   Iso8859_1, Utf16BEDetected, Utf32LEDetected};
    if (size < 3) return false;
    d.delimiter = kDelimiters[data[0] % sizeof kDelimiters];
    d.standard = ParsingStandard(data[1] % 5);
    d.encoding = kEncodings[(data[1] / 5) % (sizeof kEncodings / sizeof *kEncodings)];
    d.chunk = data[2];
    return true;
}

// Replaces (never truncates) the file: a container under test may still hold
// the previous one open.
inline bool replaceFile(const char* path, const uint8_t* data, size_t size) {
    ::unlink(path);
    const int fd = ::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    size_t done = 0;
    while (done < size) {
        const ssize_t n = ::write(fd, data + done, size - done);
        if (n <= 0) break;
        done += size_t(n);
    }
    return ::close(fd) == 0 && done == size;
}
