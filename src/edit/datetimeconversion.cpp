#include "edit/datetimeconversion.h"

#include <QStringList>
#include <QtNumeric>

#include <cmath>
#include <limits>

namespace {

constexpr double kMsecsPerDay = 8.64e7;

// Day 0 of the spreadsheet calendar.
QDateTime excelBase() {
    return QDateTime(QDate(1899, 12, 30), QTime(0, 0), Qt::UTC);
}

// fromString gives local time for a text without a zone. Its fields are kept
// and called UTC, even when they fall in a daylight-saving gap of the machine's
// zone, which makes the local result invalid although the fields are fine.
QDateTime asUtc(const QDateTime& parsed) {
    if (!parsed.date().isValid() || !parsed.time().isValid()) return {};
    QDateTime out = parsed;
    if (out.timeSpec() == Qt::LocalTime)
        out.setTimeSpec(Qt::UTC);
    else
        out = out.toUTC();
    return out.isValid() ? out : QDateTime();
}

// Whether a QDateTime format reads a year, skipping its 'quoted' literals.
bool formatHasYear(const QString& format) {
    bool quoted = false;
    for (const QChar c : format) {
        if (c == u'\'')
            quoted = !quoted;
        else if (!quoted && c == u'y')
            return true;
    }
    return false;
}

QDateTime parseCustom(const QString& text, const QString& format, int fill_year) {
    const QStringList parts = splitCustomFormat(format);
    QString rest = text;
    QString qt_format;
    qsizetype from = 0;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString& part = parts.at(i);
        if (i % 2 == 0) {
            qt_format += part;
            continue;
        }
        if (part.isEmpty()) continue;
        // Literals are looked for in order, each after the one before it.
        const qsizetype at = rest.indexOf(part, from);
        if (at < 0) return {};
        rest.remove(at, part.size());
        from = at;
    }
    if (qt_format.trimmed().isEmpty()) return {};
    if (!formatHasYear(qt_format)) {
        // Without a year QDateTime reads 1900, where 29 February doesn't exist.
        const int year = fill_year != 0 ? fill_year : QDateTime::currentDateTimeUtc().date().year();
        qt_format += QStringLiteral(" yyyy");
        rest += QStringLiteral(" %1").arg(year, 4, 10, QLatin1Char('0'));
    }
    return asUtc(QDateTime::fromString(rest, qt_format));
}

// A whole number, or a decimal truncated toward zero; false when it doesn't
// fit in 64 bits.
bool readEpochNumber(const QString& text, qint64& out) {
    bool ok = false;
    out = text.toLongLong(&ok);
    if (ok) return true;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value) || std::abs(value) >= 9.2e18) return false;
    out = qint64(value);
    return true;
}

QDateTime parseExcel(const QString& text) {
    bool ok = false;
    qint64 days = text.toInt(&ok);
    qint64 seconds = 0;
    if (!ok) {
        const double value = text.toDouble(&ok);
        // A billion days is millions of years: beyond that nothing is a date.
        if (!ok || !std::isfinite(value) || std::abs(value) > 1e9) return {};
        const double whole = std::floor(value);
        days = qint64(whole);
        // To the nearest second: spreadsheets store times as binary fractions
        // that seldom land on the exact millisecond.
        seconds = qint64(((value - whole) * kMsecsPerDay + 500) / 1000);
    }
    // Spreadsheets count a 29 February 1900 that never was; days before it are one short.
    if (days < 61) ++days;
    const QDateTime out = excelBase().addDays(days).addSecs(seconds);
    return out.isValid() ? out : QDateTime();
}

QString printExcel(const QDateTime& utc) {
    const qint64 ms = utc.toMSecsSinceEpoch();
    const qint64 base = excelBase().toMSecsSinceEpoch();
    qint64 diff = 0;
    const double span = qSubOverflow(ms, base, &diff) ? double(ms) - double(base) : double(diff);
    double value = span / kMsecsPerDay;
    // The same quirk seen from this side: it shifts the other way, on purpose.
    if (value < 61.0) value += 1.0;
    return QString::number(value, 'g', 14);
}

} // namespace

QStringList splitCustomFormat(const QString& format) {
    QStringList parts{QString()};
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar c = format.at(i);
        if (c == u'\\' && i + 1 < format.size() && format.at(i + 1) == u'"') {
            parts.last().append(u'"');
            ++i;
        } else if (c == u'"') {
            parts.append(QString());
        } else {
            parts.last().append(c);
        }
    }
    return parts;
}

QDateTime parseDateTimeText(const QString& text, DateTimeFormatKind kind, const QString& format,
                            int fill_year) {
    switch (kind) {
    case DateTimeFormatKind::Custom:
        return parseCustom(text, format, fill_year);
    case DateTimeFormatKind::Iso8601:
        return asUtc(
            QDateTime::fromString(text, text.contains(u'.') ? Qt::ISODateWithMs : Qt::ISODate));
    case DateTimeFormatKind::Iso8601DateOnly:
        return asUtc(QDateTime::fromString(text, Qt::ISODate));
    case DateTimeFormatKind::UnixSeconds: {
        qint64 seconds = 0;
        constexpr qint64 limit = std::numeric_limits<qint64>::max() / 1000;
        if (!readEpochNumber(text, seconds) || seconds > limit || seconds < -limit) return {};
        const QDateTime out = QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
        return out.isValid() ? out : QDateTime();
    }
    case DateTimeFormatKind::UnixMilliseconds: {
        qint64 ms = 0;
        if (!readEpochNumber(text, ms)) return {};
        const QDateTime out = QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC);
        return out.isValid() ? out : QDateTime();
    }
    case DateTimeFormatKind::Excel:
        return parseExcel(text);
    }
    return {};
}

QString printDateTime(const QDateTime& date_time, DateTimeFormatKind kind, const QString& format) {
    if (!date_time.isValid()) return {};
    const QDateTime utc = date_time.toUTC();
    switch (kind) {
    case DateTimeFormatKind::Custom: {
        const QStringList parts = splitCustomFormat(format);
        QString out;
        for (qsizetype i = 0; i < parts.size(); ++i)
            out += i % 2 == 0 ? utc.toString(parts.at(i)) : parts.at(i);
        return out;
    }
    case DateTimeFormatKind::Iso8601:
        return utc.toString(Qt::ISODate);
    case DateTimeFormatKind::Iso8601DateOnly:
        return utc.toString(Qt::ISODate).left(10);
    case DateTimeFormatKind::UnixSeconds:
        return QString::number(utc.toSecsSinceEpoch());
    case DateTimeFormatKind::UnixMilliseconds:
        return QString::number(utc.toMSecsSinceEpoch());
    case DateTimeFormatKind::Excel:
        return printExcel(utc);
    }
    return {};
}

QString convertDateTime(const QString& text, DateTimeFormatKind from_kind,
                        DateTimeFormatKind to_kind, const QString& from_format,
                        const QString& to_format, int fill_year) {
    const QDateTime parsed = parseDateTimeText(text, from_kind, from_format, fill_year);
    if (!parsed.isValid()) return {};
    return printDateTime(parsed, to_kind, to_format);
}
