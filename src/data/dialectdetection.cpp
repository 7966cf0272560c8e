#include "dialectdetection.h"

#include "abstractdatacontainer.h"
#include "regularfile.h"

#include <QFile>

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
