#include "edit/sortcompare.h"

#include "edit/sortnumber.h"

#include <algorithm>
#include <bit>
#include <optional>

namespace {

bool isDigit(char16_t c) {
    return c >= u'0' && c <= u'9';
}

bool textBefore(QStringView a, QStringView b, bool descending) {
    // Code-unit order; the strings differ wherever this is reached.
    return descending ? b.compare(a) < 0 : a.compare(b) < 0;
}

qsizetype chunkEnd(QStringView s, qsizetype start) {
    const bool digits = isDigit(s[start].unicode());
    qsizetype end = start + 1;
    while (end < s.size() && isDigit(s[end].unicode()) == digits)
        ++end;
    return end;
}

// Order of two digit runs by value, without a width limit: negative, zero or
// positive. "01" and "1" are equal.
int compareDigitRuns(QStringView a, QStringView b) {
    qsizetype ia = 0;
    qsizetype ib = 0;
    while (ia + 1 < a.size() && a[ia] == u'0')
        ++ia;
    while (ib + 1 < b.size() && b[ib] == u'0')
        ++ib;
    const qsizetype la = a.size() - ia;
    const qsizetype lb = b.size() - ib;
    if (la != lb) return la < lb ? -1 : 1;
    for (; ia < a.size(); ++ia, ++ib) {
        if (a[ia] != b[ib]) return a[ia].unicode() < b[ib].unicode() ? -1 : 1;
    }
    return 0;
}

// The end of the digit run at `start` when it has at most 15 digits, so that
// its value is exact in a double and within the 64-bit chunk comparison;
// -1 for a longer run.
qsizetype shortDigitRunEnd(QStringView key, qsizetype start) {
    constexpr qsizetype kMaxRunDigits = 15;
    qsizetype end = start;
    while (end < key.size() && isDigit(key[end].unicode())) {
        if (end - start == kMaxRunDigits) return -1;
        ++end;
    }
    return end;
}

double runValue(QStringView key, qsizetype start, qsizetype end) {
    uint64_t value = 0;
    for (qsizetype j = start; j < end; ++j)
        value = value * 10 + (key[j].unicode() - u'0');
    return static_cast<double>(value);
}

} // namespace

SortKeyTraits SortKeyTraits::of(QStringView key) {
    SortKeyTraits traits;
    if (key.isEmpty()) {
        traits.flags = Empty;
        return traits;
    }
    qsizetype i = 0;
    while (i < key.size() && key[i] == u' ')
        ++i;
    traits.leading_spaces = static_cast<int32_t>(i);
    if (i < key.size() && key[i] == u'0' && (i + 1 == key.size() || key[i + 1] != u'.'))
        traits.flags |= ZeroRule;
    if (!(traits.flags & ZeroRule) && i < key.size()) traits.flags |= PrefixOrdered;
    if (!key.contains(u'_')) {
        if (const std::optional<double> value = readNumber(key, false)) {
            traits.flags |= Number;
            traits.number = *value;
        }
    }

    const qsizetype narrow_length = std::min<qsizetype>(key.size(), 8);
    bool narrow = true;
    for (qsizetype k = 0; k < narrow_length && narrow; ++k)
        narrow = key[k].unicode() < 256;
    const int capacity = narrow ? 8 : 4;
    const int unit_bits = narrow ? 8 : 16;
    if (narrow) traits.flags |= Narrow;
    if (key.size() <= capacity) traits.flags |= Whole;
    bool in_run = true;
    for (int k = 0; k < capacity; ++k) {
        const bool inside = k < key.size();
        const char16_t c = inside ? key[k].unicode() : u'\0';
        traits.prefix = (traits.prefix << unit_bits) | c;
        if (inside) ++traits.prefix_length;
        if (in_run && inside && isDigit(c)) in_run = false;
        if (in_run) ++traits.prefix_non_digits;
    }

    if (!(traits.flags & PrefixOrdered)) return traits;
    if (isDigit(key[i].unicode())) {
        const qsizetype end = shortDigitRunEnd(key, i);
        if (end >= 0 && !(traits.flags & Number)) {
            traits.number = runValue(key, i, end);
            traits.flags |= LeadRun;
        } else if (end == key.size() && i == 0) {
            traits.flags |= LeadRun; // a plain integer: its number is the run
        }
    } else if (!(traits.flags & Number) && traits.prefix_non_digits < traits.prefix_length) {
        const qsizetype start = traits.prefix_non_digits;
        const qsizetype end = shortDigitRunEnd(key, start);
        if (end >= 0) {
            traits.number = runValue(key, start, end);
            traits.flags |= SecondRun;
        }
    }
    return traits;
}

int compareSortTraits(const SortKeyTraits& ta, const SortKeyTraits& tb, bool descending) {
    // Two numbers outside the zero rule are decided by value alone. Equal
    // strings are equal numbers, so the equality test of the full rules is
    // not needed first.
    const uint8_t either_zero = (ta.flags | tb.flags) & SortKeyTraits::ZeroRule;
    if (!either_zero && (ta.flags & tb.flags & SortKeyTraits::Number))
        return descending ? ta.number > tb.number : ta.number < tb.number;

    if ((ta.flags | tb.flags) & SortKeyTraits::Empty) {
        if (ta.flags & tb.flags & SortKeyTraits::Empty) return 0;
        return (ta.flags & SortKeyTraits::Empty) ? descending : !descending;
    }

    // Prefixes of one width compare as their code units do.
    const bool same_width = !((ta.flags ^ tb.flags) & SortKeyTraits::Narrow);
    const bool prefixes_differ = same_width && ta.prefix != tb.prefix;
    if (same_width && !prefixes_differ && (ta.flags & tb.flags & SortKeyTraits::Whole) &&
        ta.prefix_length == tb.prefix_length)
        return 0; // short keys held whole, and equal
    if (either_zero) {
        // Plain text order, which differing prefixes decide.
        if (prefixes_differ) return descending ? ta.prefix > tb.prefix : ta.prefix < tb.prefix;
        return -1;
    }
    // With empties, the zero rule and two numbers out of the way, fewer
    // leading spaces go first; below, the spaces are equal.
    if (ta.leading_spaces != tb.leading_spaces)
        return descending ? ta.leading_spaces > tb.leading_spaces
                          : ta.leading_spaces < tb.leading_spaces;

    if (prefixes_differ && (ta.flags & tb.flags & SortKeyTraits::PrefixOrdered)) {
        // Neither key empty after its spaces, and the first difference inside
        // both leading non-digit runs: the full rules end in the text compare
        // of the first chunks, which the first difference decides. A key that
        // ends there is a proper prefix of the other's chunk, and its zero
        // padding orders it first just the same.
        const int unit_bits = (ta.flags & SortKeyTraits::Narrow) ? 8 : 16;
        const int k = std::countl_zero(ta.prefix ^ tb.prefix) / unit_bits;
        if (k < ta.prefix_non_digits && k < tb.prefix_non_digits)
            return descending ? ta.prefix > tb.prefix : ta.prefix < tb.prefix;
    }
    // Leading non-digit runs of one length that the test above found equal,
    // then digit runs of different values: the second chunk pair decides, by
    // value.
    constexpr uint8_t kSecondRun = SortKeyTraits::PrefixOrdered | SortKeyTraits::SecondRun;
    if (same_width && (ta.flags & tb.flags & kSecondRun) == kSecondRun &&
        ta.prefix_non_digits == tb.prefix_non_digits && ta.number != tb.number)
        return descending ? ta.number > tb.number : ta.number < tb.number;

    // Both start, after the spaces, with digit runs of different values: the
    // first chunk pair decides, by value.
    constexpr uint8_t kLeadRun = SortKeyTraits::PrefixOrdered | SortKeyTraits::LeadRun;
    if ((ta.flags & tb.flags & kLeadRun) == kLeadRun && ta.number != tb.number)
        return descending ? ta.number > tb.number : ta.number < tb.number;
    return -1;
}

bool compareSortKeys(QStringView a, const SortKeyTraits& ta, QStringView b, const SortKeyTraits& tb,
                     bool descending) {
    const int quick = compareSortTraits(ta, tb, descending);
    if (quick >= 0) return quick == 1;
    return compareSortKeysInFull(a, ta, b, tb, descending);
}

bool compareSortKeysInFull(QStringView a, const SortKeyTraits& ta, QStringView b,
                           const SortKeyTraits& tb, bool descending) {
    if (a.size() == b.size() && a == b) return false;
    if (a.isEmpty()) return descending;
    if (b.isEmpty()) return !descending;
    const uint8_t either_zero = (ta.flags | tb.flags) & SortKeyTraits::ZeroRule;
    if (either_zero) return textBefore(a, b, descending);
    if (ta.flags & tb.flags & SortKeyTraits::Number)
        return descending ? ta.number > tb.number : ta.number < tb.number;

    if (ta.leading_spaces != tb.leading_spaces)
        return descending ? ta.leading_spaces > tb.leading_spaces
                          : ta.leading_spaces < tb.leading_spaces;
    const QStringView sa = a.sliced(ta.leading_spaces);
    const QStringView sb = b.sliced(tb.leading_spaces);
    if (sa.isEmpty()) return descending;
    if (sb.isEmpty()) return !descending;

    if (isDigit(sa[0].unicode()) != isDigit(sb[0].unicode())) return textBefore(sa, sb, descending);

    qsizetype pa = 0;
    qsizetype pb = 0;
    while (pa < sa.size() && pb < sb.size()) {
        const qsizetype ea = chunkEnd(sa, pa);
        const qsizetype eb = chunkEnd(sb, pb);
        const QStringView ca = sa.sliced(pa, ea - pa);
        const QStringView cb = sb.sliced(pb, eb - pb);
        pa = ea;
        pb = eb;
        if (ca == cb) continue;
        // Chunks alternate in kind from the same first kind, so a pair is
        // always of one kind.
        if (isDigit(ca[0].unicode())) {
            const int order = compareDigitRuns(ca, cb);
            if (order != 0) return descending ? order > 0 : order < 0;
            continue;
        }
        return textBefore(ca, cb, descending);
    }
    const bool a_has_more = pa < sa.size();
    const bool b_has_more = pb < sb.size();
    if (a_has_more == b_has_more) return false;
    // Fewer chunks go first.
    return descending ? a_has_more : b_has_more;
}

bool compareForSort(const QString& a, const QString& b, bool descending) {
    return compareSortKeys(a, SortKeyTraits::of(a), b, SortKeyTraits::of(b), descending);
}

namespace {

template <class Char> bool isDigitUnit(Char c) {
    return c >= Char('0') && c <= Char('9');
}

// compareDigitRuns on raw units.
template <class Char> int compareRuns(const Char* a, qsizetype na, const Char* b, qsizetype nb) {
    qsizetype ia = 0;
    qsizetype ib = 0;
    while (ia + 1 < na && a[ia] == Char('0'))
        ++ia;
    while (ib + 1 < nb && b[ib] == Char('0'))
        ++ib;
    if (na - ia != nb - ib) return na - ia < nb - ib ? -1 : 1;
    for (; ia < na; ++ia, ++ib)
        if (a[ia] != b[ib]) return a[ia] < b[ib] ? -1 : 1;
    return 0;
}

template <class Char>
int atDifference(const Char* a, qsizetype na, const SortKeyTraits& ta, const Char* b, qsizetype nb,
                 const SortKeyTraits& tb, bool descending) {
    // The answer when `a` goes first in ascending order.
    auto first = [descending](bool a_first) { return int(a_first != descending); };
    qsizetype m = 0;
    const qsizetype shorter = std::min(na, nb);
    while (m < shorter && a[m] == b[m])
        ++m;
    if (m == na && m == nb) return 0;
    if (na == 0) return int(descending);
    if (nb == 0) return int(!descending);
    // Plain code-unit order: decided at the difference.
    if ((ta.flags | tb.flags) & SortKeyTraits::ZeroRule)
        return first(m == na || (m < nb && a[m] < b[m]));
    if (ta.flags & tb.flags & SortKeyTraits::Number)
        return descending ? ta.number > tb.number : ta.number < tb.number;
    if (ta.leading_spaces != tb.leading_spaces) return first(ta.leading_spaces < tb.leading_spaces);
    // Past the spaces, which the two share.
    const qsizetype s = ta.leading_spaces;
    if (na == s) return int(descending);
    if (nb == s) return int(!descending);
    const bool a_ends = m == na;
    const bool b_ends = m == nb;
    const bool a_digit = !a_ends && isDigitUnit(a[m]);
    const bool b_digit = !b_ends && isDigitUnit(b[m]);
    // The first chunks of different kinds: text order.
    if (m == s && (a_ends || b_ends || a_digit != b_digit))
        return first(a_ends || (!b_ends && a[m] < b[m]));
    const bool in_run = m > s && isDigitUnit(a[m - 1]);
    // A digit run differs here (it goes on in one or both): by value, unless
    // the values are equal.
    if ((in_run && (a_digit || b_digit)) || (a_digit && b_digit)) {
        qsizetype start = m;
        while (start > s && isDigitUnit(a[start - 1]))
            --start;
        qsizetype ea = m, eb = m;
        while (ea < na && isDigitUnit(a[ea]))
            ++ea;
        while (eb < nb && isDigitUnit(b[eb]))
            ++eb;
        const int order = compareRuns(a + start, ea - start, b + start, eb - start);
        return order == 0 ? -1 : first(order < 0);
    }
    // The same chunks up to here. A key that ends, or whose text chunk ends
    // where the other's goes on, has the smaller chunk or fewer chunks; two
    // text units decide their chunks.
    if (a_ends || b_ends) return first(a_ends);
    if (a_digit != b_digit) return first(a_digit);
    return first(a[m] < b[m]);
}

} // namespace

int compareSortKeysAtDifference(QStringView a, const SortKeyTraits& ta, QStringView b,
                                const SortKeyTraits& tb, bool descending) {
    return atDifference(a.utf16(), a.size(), ta, b.utf16(), b.size(), tb, descending);
}

int compareSortKeysAtDifference(QLatin1String a, const SortKeyTraits& ta, QLatin1String b,
                                const SortKeyTraits& tb, bool descending) {
    return atDifference(reinterpret_cast<const uchar*>(a.data()), a.size(), ta,
                        reinterpret_cast<const uchar*>(b.data()), b.size(), tb, descending);
}
