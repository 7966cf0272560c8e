// gridmere-bench sort KEYFILE: the sort of one column's keys, as a column sort
// runs it (ascending, no header lines), timed apart from reading the file.
#include "edit/sortpermutation.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdio>
#include <sys/resource.h>

namespace {

QStringList readKeys(const QString& path, bool* ok) {
    QStringList keys;
    QFile file(path);
    *ok = file.open(QIODevice::ReadOnly);
    if (!*ok) return keys;
    const QByteArray bytes = file.readAll();
    qsizetype start = 0;
    while (start < bytes.size()) {
        qsizetype end = bytes.indexOf('\n', start);
        if (end < 0) end = bytes.size();
        qsizetype stop = end;
        if (stop > start && bytes[stop - 1] == '\r') --stop;
        keys.append(QString::fromUtf8(bytes.constData() + start, stop - start));
        start = end + 1;
    }
    return keys;
}

} // namespace

int benchSortKeys(const QStringList& args) {
    QStringList rest = args;
    if (!rest.isEmpty() && rest.front() == QLatin1String("sort")) rest.removeFirst();
    if (rest.isEmpty()) {
        std::fprintf(stderr, "usage: gridmere-bench sort KEYFILE\n");
        return 2;
    }
    bool ok = false;
    const QStringList keys = readKeys(rest.front(), &ok);
    if (!ok) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(rest.front()));
        return 1;
    }

    SortOptions options;
    const auto start = std::chrono::steady_clock::now();
    const std::vector<int> permutation = sortPermutation(keys, options);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const long long peak = static_cast<long long>(usage.ru_maxrss) * 1024;
    std::printf("op=sort keys=%lld seconds=%.3f keys_per_second=%.0f peak_rss_bytes=%lld\n",
                static_cast<long long>(permutation.size()), seconds,
                seconds > 0 ? static_cast<double>(permutation.size()) / seconds : 0.0, peak);
    return 0;
}
