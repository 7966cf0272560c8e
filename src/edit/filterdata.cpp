#include "edit/filterdata.h"

#include <array>

namespace {

constexpr const char* kNumber1 = R"((?<num1>(\+|-)?(\d+\.|\d*\.\d+|\d+)((e|E)(\+|-)?\d+)?))";
constexpr const char* kNumber2 = R"((?<num2>(\+|-)?(\d+\.|\d*\.\d+|\d+)((e|E)(\+|-)?\d+)?))";

struct ComparisonTemplate {
    const char* pattern;
    uint32_t comparison;
};

// First match wins, so "5-" (less or equal) is tried before "0-10" (between).
constexpr std::array<ComparisonTemplate, 11> kComparisonTemplates{{
    {R"(^\s*<\s*%1\s*$)", FilterTerm::LessThan},
    {R"(^\s*%1\s*>\s*$)", FilterTerm::LessThan},
    {R"(^\s*<=\s*%1\s*$)", FilterTerm::LessOrEqual},
    {R"(^\s*%1\s*>=\s*$)", FilterTerm::LessOrEqual},
    {R"(^\s*%1\s*-\s*$)", FilterTerm::LessOrEqual},
    {R"(^\s*>\s*%1\s*$)", FilterTerm::GreaterThan},
    {R"(^\s*%1\s*<\s*$)", FilterTerm::GreaterThan},
    {R"(^\s*>=\s*%1\s*$)", FilterTerm::GreaterOrEqual},
    {R"(^\s*%1\s*<=\s*$)", FilterTerm::GreaterOrEqual},
    {R"(^\s*%1\s*\+\s*$)", FilterTerm::GreaterOrEqual},
    {R"(^\s*%1\s*-\s*%2\s*$)", FilterTerm::Between},
}};

// QRegularExpression objects are not meant to be shared between threads while
// matching, and filters may be evaluated off the GUI thread: one set per thread.
const std::array<QRegularExpression, 11>& comparisonPatterns() {
    thread_local const std::array<QRegularExpression, 11> patterns = [] {
        std::array<QRegularExpression, 11> built;
        for (std::size_t i = 0; i < kComparisonTemplates.size(); ++i) {
            QString pattern = QString::fromLatin1(kComparisonTemplates[i].pattern);
            pattern.replace(QLatin1String("%1"), QLatin1String(kNumber1));
            pattern.replace(QLatin1String("%2"), QLatin1String(kNumber2));
            built[i].setPattern(pattern);
        }
        return built;
    }();
    return patterns;
}

const QRegularExpression& numberInTextPattern() {
    thread_local const QRegularExpression pattern(QStringLiteral(
        R"((?<num>(((\+|-)?((\d+|\d*(\.\d+)?))(e|E)(\+|-)?\d+)|(\+|-)?\d*(\.\d+)?)))"));
    return pattern;
}

// Escaped characters are hidden behind placeholders before the text is cut at
// "|", "&" and "*". Every "/" of the user's text is doubled first, so a single
// "/" occurs only inside a placeholder and no typed text can pose as one.
struct Placeholder {
    QLatin1String escaped;    // as typed: backslash and character
    QLatin1String protected_; // after protection, before the final doubling
    QLatin1String stored;     // after the final doubling of every backslash
    char16_t literal;
};

const std::array<Placeholder, 9> kPlaceholders{{
    {QLatin1String("\\|"), QLatin1String("\\vb/vb"), QLatin1String("\\\\vb/vb"), u'|'},
    {QLatin1String("\\&"), QLatin1String("\\and/and"), QLatin1String("\\\\and/and"), u'&'},
    {QLatin1String("\\*"), QLatin1String("\\ast/ast"), QLatin1String("\\\\ast/ast"), u'*'},
    {QLatin1String("\\>"), QLatin1String("\\gt/gt"), QLatin1String("\\\\gt/gt"), u'>'},
    {QLatin1String("\\<"), QLatin1String("\\lt/lt"), QLatin1String("\\\\lt/lt"), u'<'},
    {QLatin1String("\\+"), QLatin1String("\\pls/pls"), QLatin1String("\\\\pls/pls"), u'+'},
    {QLatin1String("\\-"), QLatin1String("\\min/min"), QLatin1String("\\\\min/min"), u'-'},
    {QLatin1String("\\!"), QLatin1String("\\not/not"), QLatin1String("\\\\not/not"), u'!'},
    {QLatin1String("\\#"), QLatin1String("\\lb/lb"), QLatin1String("\\\\lb/lb"), u'#'},
}};

const QLatin1String kEscapedBackslashStored("\\\\/\\\\/");

QString protectEscapes(QString text) {
    text.replace(u'/', QLatin1String("//"));
    text.replace(QLatin1String("\\\\"), QLatin1String("\\/\\/"));
    for (const Placeholder& p : kPlaceholders)
        text.replace(p.escaped, p.protected_);
    text.replace(u'\\', QLatin1String("\\\\"));
    return text;
}

// The inverse of protectEscapes for a text piece. One left-to-right pass: the
// encoding is unambiguous, so reading token by token restores every escaped
// character, and a backslash that escaped nothing (doubled by the protection)
// comes back as the single literal backslash the user typed.
QString unescapePiece(QStringView piece) {
    QString out;
    out.reserve(piece.size());
    qsizetype i = 0;
    const qsizetype n = piece.size();
    while (i < n) {
        const QStringView rest = piece.sliced(i);
        if (rest.startsWith(u'\\') && rest.size() >= 2 && rest[1] == u'\\') {
            if (rest.startsWith(kEscapedBackslashStored)) {
                out.append(u'\\');
                i += kEscapedBackslashStored.size();
                continue;
            }
            bool replaced = false;
            for (const Placeholder& p : kPlaceholders) {
                if (rest.startsWith(p.stored)) {
                    out.append(QChar(p.literal));
                    i += p.stored.size();
                    replaced = true;
                    break;
                }
            }
            if (!replaced) {
                out.append(u'\\');
                i += 2;
            }
        } else if (rest.startsWith(QLatin1String("//"))) {
            out.append(u'/');
            i += 2;
        } else {
            out.append(piece[i]);
            ++i;
        }
    }
    return out;
}

bool readComparison(const QString& piece, FilterTerm& term) {
    const std::array<QRegularExpression, 11>& patterns = comparisonPatterns();
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        const QRegularExpressionMatch match = patterns[i].match(piece);
        const QString num1 = match.captured(QStringLiteral("num1"));
        if (num1.isNull()) continue;
        term.comparison = kComparisonTemplates[i].comparison;
        term.text1 = num1.trimmed();
        term.text2 = match.captured(QStringLiteral("num2")).trimmed();
        return true;
    }
    return false;
}

// The pieces of an entry are matched in order, each at its first occurrence
// after the previous one, without backtracking: "*ab" fails on "abab".
bool walkPieces(const FilterAndEntry& pieces, const QString& text, Qt::CaseSensitivity cs,
                bool negated) {
    const std::size_t n = pieces.size();
    qsizetype position = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const FilterTerm& piece = pieces[i];
        if (piece.comparison == FilterTerm::Text) {
            if (piece.text1.isEmpty() && n > 1) continue;
            const qsizetype found = text.indexOf(piece.text1, position, cs);
            if (found < 0 || (i == 0 && found != 0)) return false;
            position = found + piece.text1.size();
        } else {
            const QRegularExpressionMatch match = numberInTextPattern().match(text, position);
            const QString number = match.captured(QStringLiteral("num"));
            const qsizetype end = match.capturedEnd(QStringLiteral("num"));
            if (!number.isNull() && compareNumberToTerm(number, piece)) {
                if (i == 0 && match.capturedStart(QStringLiteral("num")) != 0) return false;
                position = end;
            } else if (!negated) {
                return false;
            } else if (end >= 0) {
                position = end;
            }
        }
        if (i + 1 == n && position != text.size()) return false;
    }
    return true;
}

bool entryHolds(const FilterAndEntry& entry, const QString& text, Qt::CaseSensitivity cs) {
    if (entry.empty()) return false;
    const bool negated = entry.front().negated;
    if (entry.size() == 1 && entry.front().comparison != FilterTerm::Text)
        return compareNumberToTerm(text, entry.front()) != negated;
    return walkPieces(entry, text, cs, negated) != negated;
}

} // namespace

void FilterData::parse() {
    or_groups.clear();
    use_regex = false;
    if (filter_string.startsWith(u'#')) {
        use_regex = true;
        regex.setPattern(filter_string.mid(1));
        return;
    }
    regex = QRegularExpression();

    const QString working = protectEscapes(filter_string);
    const QStringList groups = working.split(u'|', Qt::KeepEmptyParts);
    or_groups.reserve(groups.size());
    for (const QString& group : groups) {
        FilterOrGroup or_group;
        const QStringList entries = group.split(u'&', Qt::KeepEmptyParts);
        or_group.reserve(entries.size());
        for (QString entry : entries) {
            const bool negated = entry.startsWith(u'!');
            if (negated) entry.remove(0, 1);
            // Only after the "!" test, so that an escaped "!" is a plain character.
            entry.replace(QLatin1String("\\\\not/not"), QLatin1String("!"));
            FilterAndEntry and_entry;
            const QStringList pieces = entry.split(u'*', Qt::KeepEmptyParts);
            and_entry.reserve(pieces.size());
            for (const QString& piece : pieces) {
                FilterTerm term;
                term.negated = negated;
                if (!readComparison(piece, term)) term.text1 = unescapePiece(piece).trimmed();
                and_entry.push_back(std::move(term));
            }
            or_group.push_back(std::move(and_entry));
        }
        or_groups.push_back(std::move(or_group));
    }
}

bool cellMatchesFilter(const FilterData& filter, const QString& cell_text) {
    if (filter.use_regex) {
        // An invalid pattern matches nothing; asking it would warn once per cell.
        return filter.regex.isValid() && filter.regex.match(cell_text).hasMatch();
    }
    const Qt::CaseSensitivity cs = filter.case_sensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (const FilterOrGroup& group : filter.or_groups) {
        bool all = true;
        for (const FilterAndEntry& entry : group) {
            if (!entryHolds(entry, cell_text, cs)) {
                all = false;
                break;
            }
        }
        if (all) return true;
    }
    return false;
}

QString escapeFilterString(const QString& text) {
    QString out;
    out.reserve(text.size() + text.size() / 4 + 1);
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'\\':
        case u'|':
        case u'&':
        case u'*':
        case u'>':
        case u'<':
        case u'+':
        case u'-':
        case u'!':
        case u'#':
            out.append(u'\\');
            break;
        default:
            break;
        }
        out.append(c);
    }
    return out;
}
