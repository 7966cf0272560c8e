#pragma once

#include <QString>

#include <optional>
#include <random>
#include <utility>
#include <vector>

// Number rewrites of the Data menu. "Set Number of Decimals" is
// normaliseNumberText (valueparsers.h) and "Remove Leading Zeros" is
// stripLeadingZeros there.

// Dot decimal ("42,137.24") to comma decimal ("42.137,24") or back. Empty when
// the text is no number in the source form or has nothing to swap.
QString convertNumberFormat(const QString& text, bool to_comma_decimal);

// "0012" with 6 digits -> "000012". Text that isn't a whole number of digits,
// or is already long enough, comes back unchanged.
QString zeroFill(const QString& text, int total_digits);

// The engine the random commands draw from, seeded once per command.
using RandomEngine = std::mt19937_64;

// What "Random Integers in Selected Cells" may draw: inclusive ranges, a
// single value being a range of itself. Every integer of the union is equally
// likely.
struct RandomIntegerChoices {
    std::vector<std::pair<qint64, qint64>> ranges; // low <= high
};

// "" is 0 to 100, "n" is 0 to n, else ranges ("1-5") and values separated by
// commas or blanks. Nothing when a part is neither.
std::optional<RandomIntegerChoices> parseRandomIntegerChoices(const QString& text);
qint64 drawRandomInteger(const RandomIntegerChoices& choices, RandomEngine& engine);

// What "Random Decimals (Floats) in Selected Cells" may draw: uniformly over
// the ranges when there are any (single values are then ignored), else one of
// the values.
struct RandomDecimalChoices {
    std::vector<std::pair<double, double>> ranges; // low <= high
    std::vector<double> values;
};

// "" is 0.0 to 10.0, "x" is 0.0 to x.
std::optional<RandomDecimalChoices> parseRandomDecimalChoices(const QString& text);
double drawRandomDecimal(const RandomDecimalChoices& choices, RandomEngine& engine);
// The shortest text that reads back as the same double.
QString randomDecimalText(double value);
