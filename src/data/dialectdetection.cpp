#include "dialectdetection.h"

#include "abstractdatacontainer.h"
#include "regularfile.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>

QString detectDelimiter(const QString& filepath) {
    const QString fallback = QStringLiteral(",");
    if (filepath.isEmpty()) return fallback;
    QString reason;
    const int fd = openRegularFile(filepath, reason);
    if (fd < 0) return fallback;
    QFile file;
    file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    const QByteArray sample = file.read(csv::kDelimiterSample);

    static constexpr std::array<char, 6> candidates = {',', '\t', '|', ';', '^', '\x1F'};
    std::array<qsizetype, 6> counts{};
    for (size_t i = 0; i < candidates.size(); ++i)
        counts[i] = sample.count(candidates[i]);
    std::array<int, 6> order = {0, 1, 2, 3, 4, 5};
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return counts[size_t(a)] > counts[size_t(b)]; });
    return QString(QLatin1Char(candidates[size_t(order[0])]));
}

EncodingType detectByteOrder(EncodingType encoding, const QString& filepath) {
    if (encoding != Utf16 && encoding != Utf32) return encoding;
    QString reason;
    const int fd = openRegularFile(filepath, reason);
    if (fd < 0) return encoding;
    QFile file;
    file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    qint64 n = std::min(file.size(), csv::kByteOrderSample);
    n -= n % 4;
    const QByteArray sample = file.read(n);
    const char* p = sample.constData();
    qint64 leading = 0, trailing = 0;
    if (encoding == Utf16) {
        for (qsizetype i = 0; i + 1 < sample.size(); i += 2) {
            leading += p[i] == 0;
            trailing += p[i + 1] == 0;
        }
        return leading > trailing ? Utf16BEDetected : Utf16LEDetected;
    }
    for (qsizetype i = 0; i + 3 < sample.size(); i += 4) {
        leading += p[i] == 0 && p[i + 1] == 0;
        trailing += p[i + 2] == 0 && p[i + 3] == 0;
    }
    return leading > trailing ? Utf32BEDetected : Utf32LEDetected;
}

std::optional<LineEndingType> detectLineEnding(const QString& filepath, EncodingType encoding) {
    // Only regular files: a pipe or device would block the read.
    if (filepath.isEmpty() || !QFileInfo(filepath).isFile()) return std::nullopt;
    QFile file(filepath);
    if (!file.open(QIODevice::ReadOnly)) return std::nullopt;
    const int width = encodingWidth(encoding);
    const bool big_endian = encodingIsBigEndian(encoding);
    // The code unit at index i, in the file's byte order.
    auto unit = [&](const QByteArray& bytes, qsizetype i) -> uint32_t {
        uint32_t v = 0;
        for (int k = 0; k < width; ++k) {
            const uint32_t b = uint8_t(bytes[i * width + k]);
            v |= big_endian ? b << (8 * (width - 1 - k)) : b << (8 * k);
        }
        return v;
    };
    // Reads in blocks until the first line feed; a CR just before it makes CR LF.
    constexpr qint64 kBlock = 1 << 16;
    constexpr qint64 kLimit = 1 << 24;
    uint32_t previous = 0;
    for (qint64 read = 0; read < kLimit;) {
        QByteArray block = file.read(kBlock);
        if (block.isEmpty()) break;
        read += block.size();
        const qsizetype units = block.size() / width;
        for (qsizetype i = 0; i < units; ++i) {
            const uint32_t u = unit(block, i);
            if (u == '\n') return previous == '\r' ? WindowsLineEnding : UnixLineEnding;
            previous = u;
        }
    }
    return std::nullopt;
}
