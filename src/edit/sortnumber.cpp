#include "edit/sortnumber.h"

#include <QLocale>
#include <QString>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace {

// Up to this many significant digits are kept. Beyond it the digits cannot
// change which double is nearest for any text a cell realistically holds,
// and they only move the exponent.
constexpr int kMaxKeptDigits = 64;
constexpr int64_t kExponentLimit = 100000;

constexpr std::array<double, 23> kExactPowersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Gathers the significant digits of a decimal and turns them into the nearest
// double: one exact division or multiplication when the digits and the power
// are both exactly representable (correctly rounded), from_chars otherwise.
class DecimalDigits {
public:
    void addDigit(int digit, bool in_fraction) {
        if (kept_count == 0 && digit == 0) {
            if (in_fraction) --exponent_shift;
            return;
        }
        if (kept_count < kMaxKeptDigits) {
            kept[kept_count++] = static_cast<char>('0' + digit);
            if (in_fraction) --exponent_shift;
        } else if (!in_fraction) {
            ++exponent_shift;
        }
    }

    double value(bool negative, int64_t written_exponent) const {
        if (kept_count == 0) return negative ? -0.0 : 0.0;
        const int64_t exponent = exponent_shift + written_exponent;
        double result;
        if (kept_count <= 15 && exponent >= -22 && exponent <= 22) {
            uint64_t mantissa = 0;
            for (int i = 0; i < kept_count; ++i)
                mantissa = mantissa * 10 + static_cast<uint64_t>(kept[i] - '0');
            result = static_cast<double>(mantissa);
            if (exponent < 0)
                result /= kExactPowersOfTen[static_cast<std::size_t>(-exponent)];
            else
                result *= kExactPowersOfTen[static_cast<std::size_t>(exponent)];
        } else {
            std::array<char, kMaxKeptDigits + 24> buffer{};
            char* out = buffer.data();
            for (int i = 0; i < kept_count; ++i)
                *out++ = kept[i];
            *out++ = 'e';
            out = std::to_chars(out, buffer.data() + buffer.size(), exponent).ptr;
            result = 0.0;
            const std::from_chars_result parsed = std::from_chars(buffer.data(), out, result);
            // Out of range: from_chars leaves the value alone, so give the limit.
            if (parsed.ec == std::errc::result_out_of_range) result = exponent > 0 ? HUGE_VAL : 0.0;
        }
        return negative ? -result : result;
    }

private:
    std::array<char, kMaxKeptDigits> kept{};
    int kept_count = 0;
    int64_t exponent_shift = 0;
};

bool isCurrencySign(char16_t c) {
    return c == u'$' || c == u'\u00A3' || c == u'\u00A5' || c == u'\u20AC';
}

bool isTrailingEuro(QStringView text, qsizetype i) {
    const qsizetype rest = text.size() - i;
    if (rest == 1) return text[i] == u'\u20AC';
    return rest == 2 && text[i] == u' ' && text[i + 1] == u'\u20AC';
}

} // namespace

const NumberSymbols& NumberSymbols::system() {
    static const NumberSymbols symbols = [] {
        const QLocale locale = QLocale::system();
        NumberSymbols s;
        const QString point = locale.decimalPoint();
        const QString group = locale.groupSeparator();
        s.decimal_point = point.isEmpty() ? QChar(u'.') : point.front();
        // A noncharacter: a locale without grouping skips nothing.
        s.group_separator = group.isEmpty() ? QChar(u'\uFFFF') : group.front();
        return s;
    }();
    return symbols;
}

std::optional<double> scanNumber(QStringView text, const NumberGrammar& grammar,
                                 const NumberSymbols& symbols) {
    const qsizetype n = text.size();
    if (n == 0) return std::nullopt;
    qsizetype i = 0;
    bool negative = false;
    if (text[0] == u'-' || (grammar.plus_sign && text[0] == u'+')) {
        negative = text[0] == u'-';
        ++i;
    }
    if (grammar.currency && i < n && isCurrencySign(text[i].unicode())) ++i;

    DecimalDigits digits;
    bool any_digit = false;
    bool in_fraction = false;
    int64_t written_exponent = 0;
    for (; i < n; ++i) {
        const QChar c = text[i];
        const char16_t u = c.unicode();
        if (u >= u'0' && u <= u'9') {
            digits.addDigit(u - u'0', in_fraction);
            any_digit = true;
        } else if (c == symbols.decimal_point && !in_fraction) {
            in_fraction = true;
        } else if (grammar.group_separators && c == symbols.group_separator) {
            continue;
        } else if (u == u'e' || u == u'E') {
            ++i;
            bool exponent_negative = false;
            if (i < n && (text[i] == u'-' || (grammar.exponent_plus_sign && text[i] == u'+'))) {
                exponent_negative = text[i] == u'-';
                ++i;
            }
            for (; i < n; ++i) {
                const char16_t e = text[i].unicode();
                if (e < u'0' || e > u'9') break;
                if (written_exponent < kExponentLimit)
                    written_exponent = written_exponent * 10 + (e - u'0');
            }
            if (exponent_negative) written_exponent = -written_exponent;
            if (i < n && !(grammar.currency && isTrailingEuro(text, i))) return std::nullopt;
            break;
        } else if (grammar.currency && isTrailingEuro(text, i)) {
            break;
        } else {
            return std::nullopt;
        }
    }
    if (!any_digit) return std::nullopt;
    return digits.value(negative, written_exponent);
}

std::optional<double> readNumber(QStringView text, bool allow_currency,
                                 const NumberSymbols& symbols) {
    NumberGrammar grammar;
    grammar.currency = allow_currency;
    return scanNumber(text, grammar, symbols);
}

std::optional<double> readNumber(QStringView text, bool allow_currency) {
    return readNumber(text, allow_currency, NumberSymbols::system());
}

std::optional<double> readNumber(QByteArrayView utf8, bool allow_currency) {
    return readNumber(QString::fromUtf8(utf8), allow_currency);
}
