#include "edit/filterterm.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace {

// QString::toDouble for the texts a column of numbers holds, without its
// locale machinery: a plain decimal ("-12.5", "3e4", "+.5"), spaces around
// allowed. Anything else, and any number out of range, goes to toDouble, so
// the result is always what toDouble says.
double readDouble(const QString& text, bool* ok) {
    QStringView v = QStringView(text).trimmed();
    char buf[64];
    qsizetype n = 0;
    bool plain = v.size() > 0 && v.size() < qsizetype(sizeof buf);
    for (qsizetype i = 0; plain && i < v.size(); ++i) {
        const char16_t c = v[i].unicode();
        plain = (c >= '0' && c <= '9') || c == '.' || c == 'e' || c == 'E' || c == '-' ||
                c == '+';
        buf[n++] = char(c);
    }
    if (plain) {
        // from_chars takes no leading "+"; one before a digit or point is fine.
        const char* begin = buf;
        if (buf[0] == '+' && n > 1 && (buf[1] == '.' || (buf[1] >= '0' && buf[1] <= '9')))
            ++begin;
        double value = 0;
        const auto [end, error] = std::from_chars(begin, buf + n, value);
        if (error == std::errc() && end == buf + n) {
            *ok = true;
            return value;
        }
    }
    return text.toDouble(ok);
}

// Exponents are clamped to this: no comparison between two numbers beyond it
// can be told apart by a user anyway. Clamping the result, not the exponent
// as written, keeps the canonical form a fixed point of itself.
constexpr int64_t kExponentLimit = int64_t(1) << 52;
// Reading a written exponent stops growing here, far from overflow.
constexpr int64_t kWrittenExponentCap = int64_t(1) << 56;

struct Decimal {
    bool negative = false;
    QString digits;       // significant digits: no leading or trailing zeros; empty for zero
    int64_t exponent = 0; // power of ten of the first significant digit
};

bool isAsciiDigit(QChar c) {
    return c.unicode() >= '0' && c.unicode() <= '9';
}

std::optional<Decimal> parseDecimal(QStringView text) {
    text = text.trimmed();
    const qsizetype n = text.size();
    qsizetype i = 0;
    Decimal d;
    if (i < n && (text[i] == u'+' || text[i] == u'-')) {
        d.negative = text[i] == u'-';
        ++i;
    }
    bool any_digit = false;
    bool seen_point = false;
    int64_t integer_digits = 0;
    int64_t mantissa_position = 0;
    int64_t first_significant = 0;
    for (; i < n; ++i) {
        const QChar c = text[i];
        if (isAsciiDigit(c)) {
            any_digit = true;
            if (!seen_point) ++integer_digits;
            if (d.digits.isEmpty()) {
                if (c == u'0') {
                    ++mantissa_position;
                    continue;
                }
                first_significant = mantissa_position;
            }
            d.digits.append(c);
            ++mantissa_position;
        } else if (c == u'.' && !seen_point) {
            seen_point = true;
        } else {
            break;
        }
    }
    if (!any_digit) return std::nullopt;

    int64_t written_exponent = 0;
    if (i < n) {
        if (text[i] != u'e' && text[i] != u'E') return std::nullopt;
        ++i;
        bool exponent_negative = false;
        if (i < n && (text[i] == u'+' || text[i] == u'-')) {
            exponent_negative = text[i] == u'-';
            ++i;
        }
        if (i == n) return std::nullopt;
        for (; i < n; ++i) {
            if (!isAsciiDigit(text[i])) return std::nullopt;
            if (written_exponent < kWrittenExponentCap)
                written_exponent = written_exponent * 10 + (text[i].unicode() - '0');
        }
        if (exponent_negative) written_exponent = -written_exponent;
    }

    qsizetype kept = d.digits.size();
    while (kept > 0 && d.digits[kept - 1] == u'0')
        --kept;
    d.digits.truncate(kept);
    if (d.digits.isEmpty()) {
        // Zero has one spelling, without sign, so "-0" and "0.000" meet it.
        d.negative = false;
        return d;
    }
    d.exponent = std::clamp(written_exponent + (integer_digits - first_significant - 1),
                            -kExponentLimit, kExponentLimit);
    return d;
}

// 0 equal, 1 a less, 2 a greater.
int compareDecimals(const Decimal& a, const Decimal& b) {
    const bool a_zero = a.digits.isEmpty();
    const bool b_zero = b.digits.isEmpty();
    if (a_zero && b_zero) return 0;
    if (a.negative != b.negative) return a.negative ? 1 : 2;
    // Zero's exponent says nothing about its size, so it must not enter the
    // exponent comparison: 0 would otherwise rank above 0.001.
    if (a_zero) return 1;
    if (b_zero) return 2;
    int result = 0;
    if (a.exponent != b.exponent) {
        result = a.exponent < b.exponent ? 1 : 2;
    } else {
        const qsizetype length = std::max(a.digits.size(), b.digits.size());
        for (qsizetype i = 0; i < length && result == 0; ++i) {
            const char16_t da = i < a.digits.size() ? a.digits[i].unicode() : u'0';
            const char16_t db = i < b.digits.size() ? b.digits[i].unicode() : u'0';
            if (da != db) result = da < db ? 1 : 2;
        }
    }
    if (result != 0 && a.negative) result = 3 - result;
    return result;
}

QString formatCanonical(const Decimal& d) {
    if (d.digits.isEmpty()) return QStringLiteral("+0.0E+0");
    QString out;
    out.reserve(d.digits.size() + 24);
    out.append(d.negative ? u'-' : u'+');
    out.append(d.digits[0]);
    out.append(u'.');
    if (d.digits.size() > 1)
        out.append(QStringView(d.digits).sliced(1));
    else
        out.append(u'0');
    out.append(u'E');
    out.append(d.exponent < 0 ? u'-' : u'+');
    out.append(QString::number(d.exponent < 0 ? -d.exponent : d.exponent));
    return out;
}

int compareDoubles(double a, double b) {
    return a < b ? 1 : (a > b ? 2 : 0);
}

bool relationHolds(uint32_t comparison, int relation) {
    switch (comparison) {
    case FilterTerm::LessThan:
        return relation == 1;
    case FilterTerm::LessOrEqual:
        return relation != 2;
    case FilterTerm::GreaterThan:
        return relation == 2;
    case FilterTerm::GreaterOrEqual:
        return relation != 1;
    default:
        return false;
    }
}

} // namespace

QString toCanonicalScientific(QStringView number) {
    const std::optional<Decimal> d = parseDecimal(number);
    return d ? formatCanonical(*d) : QString();
}

int compareBigNumbers(const QString& a, const QString& b) {
    if (a == b) return 0;
    const std::optional<Decimal> da = parseDecimal(a);
    const std::optional<Decimal> db = parseDecimal(b);
    if (!da || !db) return 0;
    return compareDecimals(*da, *db);
}

bool compareNumberToTerm(const QString& cell_text, const FilterTerm& term) {
    if (term.comparison == FilterTerm::Text || term.comparison > FilterTerm::Between) return false;
    bool ok = false;
    const double value = readDouble(cell_text, &ok);
    // toDouble reads "nan", which orders against nothing.
    if (!ok || std::isnan(value)) return false;

    const bool between = term.comparison == FilterTerm::Between;
    bool ok1 = false;
    bool ok2 = true;
    const double bound1 = readDouble(term.text1, &ok1);
    const double bound2 = between ? readDouble(term.text2, &ok2) : 0.0;
    int relation1 = 0;
    int relation2 = 0;
    // A bound beyond the double range ("1e999") also takes the exact path.
    bool exact = cell_text.size() > kMaxDoubleNumberLength ||
                 term.text1.size() > kMaxDoubleNumberLength ||
                 (between && term.text2.size() > kMaxDoubleNumberLength) || !ok1 || !ok2;
    if (exact) {
        // "inf" and the like read as doubles but have no digits to compare:
        // those stay on the double path.
        const std::optional<Decimal> cell = parseDecimal(cell_text);
        const std::optional<Decimal> decimal1 = parseDecimal(term.text1);
        const std::optional<Decimal> decimal2 =
            between ? parseDecimal(term.text2) : std::optional<Decimal>(Decimal{});
        if (cell && decimal1 && decimal2) {
            relation1 = compareDecimals(*cell, *decimal1);
            if (between) relation2 = compareDecimals(*cell, *decimal2);
        } else {
            exact = false;
        }
    }
    if (!exact) {
        if (!ok1 || !ok2) return false;
        relation1 = compareDoubles(value, bound1);
        if (between) relation2 = compareDoubles(value, bound2);
    }

    if (!between) return relationHolds(term.comparison, relation1);
    // The bounds may come in either order: "10-0" is "0-10".
    return (relation1 != 1 && relation2 != 2) || (relation2 != 1 && relation1 != 2);
}
