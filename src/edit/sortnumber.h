#pragma once

#include <QByteArrayView>
#include <QChar>
#include <QStringView>

#include <optional>

// The locale characters that number reading honours.
struct NumberSymbols {
    QChar decimal_point = u'.';
    QChar group_separator = u',';

    // The system locale's characters, read once per process.
    static const NumberSymbols& system();
};

// The variations between the places that read numbers out of cells.
struct NumberGrammar {
    bool plus_sign = true;           // "+" is a sign as well as "-"
    bool currency = false;           // "$", "£", "¥", "€" after the sign; a trailing "€"
    bool group_separators = true;    // the group separator is skipped in the mantissa
    bool exponent_plus_sign = false; // the exponent may carry "+" as well as "-"
};

// Reads a whole cell as a number by `grammar`: an optional sign, an optional
// currency sign, at least one digit with the locale's point and separators, an
// optional exponent ("1e" is 1), and with currency a trailing "€" or " €".
// Anything else, or no digit at all, is no number.
std::optional<double> scanNumber(QStringView text, const NumberGrammar& grammar,
                                 const NumberSymbols& symbols);

// The sort's reading of a number: a sign of either kind, group separators
// skipped, an exponent with "-" only; currency signs only with `allow_currency`.
std::optional<double> readNumber(QStringView text, bool allow_currency,
                                 const NumberSymbols& symbols);
std::optional<double> readNumber(QStringView text, bool allow_currency);
std::optional<double> readNumber(QByteArrayView utf8, bool allow_currency);
