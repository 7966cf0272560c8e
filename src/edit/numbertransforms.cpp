#include "edit/numbertransforms.h"

#include "edit/compiledpattern.h"

#include <QLocale>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

// Comma-decimal numbers are read the German way.
static_assert(QLocale::German == 94);

QString swapPointAndComma(const QString& text) {
    QString out = text;
    for (QChar& c : out) {
        if (c == u'.')
            c = u',';
        else if (c == u',')
            c = u'.';
    }
    return out;
}

bool isAsciiDigit(QChar c) {
    return c >= u'0' && c <= u'9';
}

// The answer cut into its parts. " - " becomes "-" first, so "1 - 5" is one
// range; blanks and commas then separate values.
QStringList choiceParts(const QString& text) {
    static const QRegularExpression spaced_dash = compiledPattern(QStringLiteral(" *- *"));
    static const QRegularExpression separators = compiledPattern(QStringLiteral("[,\\s]+"));
    QString tightened = text;
    tightened.replace(spaced_dash, QStringLiteral("-"));
    return tightened.split(separators, Qt::SkipEmptyParts);
}

template <typename T> std::pair<T, T> ordered(T a, T b) {
    return a <= b ? std::pair<T, T>{a, b} : std::pair<T, T>{b, a};
}

bool readDecimal(const QString& text, double& out) {
    bool ok = false;
    out = text.toDouble(&ok);
    return ok && std::isfinite(out);
}

std::size_t pickWeighted(const std::vector<double>& weights, RandomEngine& engine) {
    double total = 0;
    for (double w : weights)
        total += w;
    if (!(total > 0) || !std::isfinite(total))
        return std::uniform_int_distribution<std::size_t>(0, weights.size() - 1)(engine);
    double point = std::uniform_real_distribution<double>(0, total)(engine);
    for (std::size_t i = 0; i < weights.size(); ++i) {
        if (point < weights[i]) return i;
        point -= weights[i];
    }
    return weights.size() - 1;
}

} // namespace

QString convertNumberFormat(const QString& text, bool to_comma_decimal) {
    static const QLocale dot_decimal = QLocale::c();
    static const QLocale comma_decimal(QLocale::German);
    const QLocale& source = to_comma_decimal ? dot_decimal : comma_decimal;
    bool ok = false;
    source.toInt(text, &ok);
    if (ok) {
        // A whole number without grouping reads the same in both forms.
        if (!text.contains(source.groupSeparator())) return {};
        return swapPointAndComma(text);
    }
    source.toDouble(text, &ok);
    if (!ok) return {};
    const QString out = swapPointAndComma(text);
    return out == text ? QString() : out;
}

QString zeroFill(const QString& text, int total_digits) {
    if (text.isEmpty() || text.size() >= total_digits) return text;
    qsizetype first = 0;
    while (first < text.size() && text.at(first) == u'0')
        ++first;
    const QString digits = text.mid(first);
    if (!std::all_of(digits.cbegin(), digits.cend(), isAsciiDigit)) return text;
    return QString(total_digits - digits.size(), u'0') + digits;
}

std::optional<RandomIntegerChoices> parseRandomIntegerChoices(const QString& text) {
    static const QRegularExpression range =
        compiledPattern(QStringLiteral("^(?<val1>-?\\d+)-(?<val2>-?\\d+)$"));
    const QStringList parts = choiceParts(text);
    if (parts.isEmpty()) return RandomIntegerChoices{{{0, 100}}};

    RandomIntegerChoices choices;
    for (const QString& part : parts) {
        bool ok_low = false;
        bool ok_high = false;
        const QRegularExpressionMatch m = range.match(part);
        if (m.hasMatch()) {
            const qint64 low = m.capturedView(u"val1").toLongLong(&ok_low);
            const qint64 high = m.capturedView(u"val2").toLongLong(&ok_high);
            if (!ok_low || !ok_high) return std::nullopt;
            choices.ranges.push_back(ordered(low, high));
        } else {
            const qint64 value = part.toLongLong(&ok_low);
            if (!ok_low) return std::nullopt;
            choices.ranges.push_back({value, value});
        }
    }
    if (parts.size() == 1 && !range.match(parts.front()).hasMatch())
        choices.ranges.front() = ordered<qint64>(0, choices.ranges.front().first);
    return choices;
}

qint64 drawRandomInteger(const RandomIntegerChoices& choices, RandomEngine& engine) {
    if (choices.ranges.empty()) return 0;
    std::vector<double> sizes;
    sizes.reserve(choices.ranges.size());
    for (const auto& [low, high] : choices.ranges)
        sizes.push_back(double(high) - double(low) + 1);
    const auto& [low, high] = choices.ranges[pickWeighted(sizes, engine)];
    return std::uniform_int_distribution<qint64>(low, high)(engine);
}

std::optional<RandomDecimalChoices> parseRandomDecimalChoices(const QString& text) {
    static const QRegularExpression range =
        compiledPattern(QStringLiteral("^(?<val1>-?\\d+(\\.\\d*)?)-(?<val2>-?\\d+(\\.\\d*)?)$"));
    const QStringList parts = choiceParts(text);
    if (parts.isEmpty()) return RandomDecimalChoices{{{0.0, 10.0}}, {}};

    RandomDecimalChoices choices;
    for (const QString& part : parts) {
        const QRegularExpressionMatch m = range.match(part);
        if (m.hasMatch()) {
            double low = 0;
            double high = 0;
            if (!readDecimal(m.captured(u"val1"), low) || !readDecimal(m.captured(u"val2"), high))
                return std::nullopt;
            choices.ranges.push_back(ordered(low, high));
        } else {
            double value = 0;
            if (!readDecimal(part, value)) return std::nullopt;
            choices.values.push_back(value);
        }
    }
    if (choices.ranges.empty() && choices.values.size() == 1) {
        choices.ranges.push_back(ordered(0.0, choices.values.front()));
        choices.values.clear();
    }
    if (!choices.ranges.empty()) choices.values.clear();
    return choices;
}

double drawRandomDecimal(const RandomDecimalChoices& choices, RandomEngine& engine) {
    if (!choices.ranges.empty()) {
        std::vector<double> widths;
        widths.reserve(choices.ranges.size());
        // Halves first, so that even the widest pair of doubles has a finite width.
        for (const auto& [low, high] : choices.ranges)
            widths.push_back(high / 2 - low / 2);
        const auto& [low, high] = choices.ranges[pickWeighted(widths, engine)];
        const double u = std::generate_canonical<double, 53>(engine);
        return std::clamp(low * (1 - u) + high * u, low, high);
    }
    if (!choices.values.empty())
        return choices.values[std::uniform_int_distribution<std::size_t>(0, choices.values.size() -
                                                                                1)(engine)];
    return 0;
}

QString randomDecimalText(double value) {
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}
