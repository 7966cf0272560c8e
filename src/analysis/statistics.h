#pragma once

#include "edit/sortnumber.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>
#include <cstddef>
#include <vector>

// Reads a cell as a number for the statistics, or NaN. With `allow_currency`
// a leading currency sign, group separators and a trailing euro sign are
// accepted. Only "-" is a sign.
double parseNumber(QStringView text, bool allow_currency, const NumberSymbols& symbols);
double parseNumber(QStringView text, bool allow_currency);
double parseNumber(QByteArrayView utf8, bool allow_currency);

// The rows of the statistics grid, in display order.
enum class StatKind {
    Count,
    Sum,
    Mean,
    Variance,
    StandardDeviation,
    Median,
    Min,
    Max,
    Percentile20,
    Percentile40,
    Percentile60,
    Percentile80,
};
inline constexpr std::size_t kStatKindCount = 12;

QString statisticLabel(StatKind kind);

// One statistic of one column. `display` is left for the window to format.
struct StatParams {
    StatKind kind = StatKind::Count;
    QString display;
    double value = 0.0;
};

// The numbers of a column in table order, skipping text and blank cells.
std::vector<double> collectNumbers(const QStringList& cells);

// Percentile p (0 to 100) of ascending values, interpolating between
// neighbours.
double percentile(const std::vector<double>& sorted_values, double p);

// All statistics of one population of values, in StatKind order.
std::array<StatParams, kStatKindCount> computeStatistics(std::vector<double> values);
