#pragma once

#include <QList>
#include <QLocale>
#include <QPair>
#include <QString>

class QRegularExpression;

// Recognising numbers, dates and identifiers in cell text. Used per cell by
// column analysis, so everything here is built once and is safe to call from
// worker threads.

// Bits of classifyText's answer; callers OR them over a column.
namespace TextClass {
enum : int {
    Number = 1,
    DateTime = 2,
    Text = 4,
};
} // namespace TextClass

// 1 number, 2 date/time, 4 text; an empty text is text.
int classifyText(const QString& text);

// The QDateTime format whose shape the text has ("04/10/2020" gives
// "MM/dd/yyyy"), or an empty text. Shape only: the values are not checked.
QString deriveDateFormat(const QString& text);

// The (format, mask) rows deriveDateFormat looks a mask up in; earlier rows win.
QList<QPair<QString, QString>> dateFormatTable();

// Rewrites a number to `decimals` decimals in the locale's form, keeping its
// group separators, exponent and currency symbol. Text that is no such number
// comes back unchanged. The two-argument form uses the default locale.
QString normaliseNumberText(const QString& text, int decimals);
QString normaliseNumberText(const QString& text, int decimals, const QLocale& locale);

// "007" -> "7", "-00.5" -> "-0.5", "0" stays; text without such zeros is returned unchanged.
QString stripLeadingZeros(const QString& text);

// The shared patterns, unanchored, for callers that search with them.
const QRegularExpression& leadingZeroPattern();
const QRegularExpression& leadingZeroDecimalPattern();
const QRegularExpression& uuidPattern();
