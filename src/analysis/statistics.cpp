#include "analysis/statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Four partial sums combined at the end: independent additions the compiler
// can keep in flight together. Used for both the sum and the squared
// differences, so their rounding matches.
template <class Term> double unrolledSum(const std::vector<double>& values, Term term) {
    double s0 = 0.0;
    double s1 = 0.0;
    double s2 = 0.0;
    double s3 = 0.0;
    const std::size_t n = values.size();
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        s0 += term(values[i]);
        s1 += term(values[i + 1]);
        s2 += term(values[i + 2]);
        s3 += term(values[i + 3]);
    }
    for (; i < n; ++i)
        s0 += term(values[i]);
    return (s0 + s1) + (s2 + s3);
}

} // namespace

double parseNumber(QStringView text, bool allow_currency, const NumberSymbols& symbols) {
    NumberGrammar grammar;
    grammar.plus_sign = false;
    grammar.currency = allow_currency;
    grammar.group_separators = allow_currency;
    grammar.exponent_plus_sign = true;
    const std::optional<double> value = scanNumber(text, grammar, symbols);
    return value ? *value : std::numeric_limits<double>::quiet_NaN();
}

double parseNumber(QStringView text, bool allow_currency) {
    return parseNumber(text, allow_currency, NumberSymbols::system());
}

double parseNumber(QByteArrayView utf8, bool allow_currency) {
    return parseNumber(QString::fromUtf8(utf8), allow_currency);
}

QString statisticLabel(StatKind kind) {
    switch (kind) {
    case StatKind::Count:
        return QStringLiteral("Number Of Data Points");
    case StatKind::Sum:
        return QStringLiteral("Sum");
    case StatKind::Mean:
        return QStringLiteral("Mean");
    case StatKind::Variance:
        return QStringLiteral("Variance");
    case StatKind::StandardDeviation:
        return QStringLiteral("Standard Deviation");
    case StatKind::Median:
        return QStringLiteral("Median");
    case StatKind::Min:
        return QStringLiteral("Min");
    case StatKind::Max:
        return QStringLiteral("Max");
    case StatKind::Percentile20:
        return QStringLiteral("20th Percentile");
    case StatKind::Percentile40:
        return QStringLiteral("40th Percentile");
    case StatKind::Percentile60:
        return QStringLiteral("60th Percentile");
    case StatKind::Percentile80:
        return QStringLiteral("80th Percentile");
    }
    return QString();
}

std::vector<double> collectNumbers(const QStringList& cells) {
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(cells.size()));
    for (const QString& cell : cells) {
        const double value = parseNumber(cell, true);
        if (!std::isnan(value)) values.push_back(value);
    }
    return values;
}

double percentile(const std::vector<double>& sorted_values, double p) {
    const std::size_t n = sorted_values.size();
    if (n == 0) return 0.0;
    if (n == 1) return sorted_values[0];
    const double t = static_cast<double>(n - 1) * (p / 100.0);
    const double whole = std::floor(t);
    const double f = t - whole;
    // Clamped so that a p outside 0..100 cannot index outside the values.
    const std::size_t i = whole <= 0.0 ? 0 : static_cast<std::size_t>(whole);
    if (i + 1 >= n) return sorted_values[n - 1];
    if (f < 1e-9) return sorted_values[i];
    if (1.0 - f < 1e-9) return sorted_values[i + 1];
    const double low = sorted_values[i];
    const double high = sorted_values[i + 1];
    if (low == high) return low;
    return low + f * (high - low);
}

std::array<StatParams, kStatKindCount> computeStatistics(std::vector<double> values) {
    const std::size_t n = values.size();
    const double sum = unrolledSum(values, [](double v) { return v; });
    const double mean = n == 0 ? 0.0 : sum / static_cast<double>(n);
    const double squares = unrolledSum(values, [mean](double v) {
        const double d = v - mean;
        return d * d;
    });
    const double variance = n == 0 ? 0.0 : squares / static_cast<double>(n);
    std::sort(values.begin(), values.end());

    const std::array<double, kStatKindCount> numbers{
        static_cast<double>(n),
        sum,
        mean,
        variance,
        std::sqrt(variance),
        percentile(values, 50),
        percentile(values, 0),
        percentile(values, 100),
        percentile(values, 20),
        percentile(values, 40),
        percentile(values, 60),
        percentile(values, 80),
    };
    std::array<StatParams, kStatKindCount> rows;
    for (std::size_t k = 0; k < kStatKindCount; ++k) {
        rows[k].kind = static_cast<StatKind>(k);
        rows[k].value = numbers[k];
    }
    return rows;
}
