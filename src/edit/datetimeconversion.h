#pragma once

#include <QDateTime>
#include <QString>

// Reading and writing date-times in the six forms a user can pick. Every
// date-time here is UTC; a text without a zone is taken as UTC wall time.

enum class DateTimeFormatKind : int {
    Custom = 0,          // "Custom Format", a QDateTime format with "quoted" literals
    Iso8601 = 1,         // "ISO 8601 Format"
    Iso8601DateOnly = 2, // "ISO 8601 Format (date only)"
    UnixSeconds = 3,     // "Unix Epoch Time (seconds)"
    UnixMilliseconds = 4,
    Excel = 5, // "Excel Format": days since 1899-12-30, with the 1900 leap-day quirk
};

inline constexpr int kDateTimeFormatKindCount = 6;

// An invalid QDateTime when the text doesn't read in that form. With a custom
// format that has no year, `fill_year` is read into the date (0: this year).
QDateTime parseDateTimeText(const QString& text, DateTimeFormatKind kind, const QString& format,
                            int fill_year = 0);

// Empty when the date-time can't be written in that form.
QString printDateTime(const QDateTime& date_time, DateTimeFormatKind kind, const QString& format);

// Parse then print. An empty result means the cell didn't read and stays as it was.
QString convertDateTime(const QString& text, DateTimeFormatKind from_kind,
                        DateTimeFormatKind to_kind, const QString& from_format,
                        const QString& to_format, int fill_year = 0);

// A custom format cut at its double quotes: odd positions are literal text,
// even positions go to QDateTime. A backslash before a quote makes it plain.
QStringList splitCustomFormat(const QString& format);
