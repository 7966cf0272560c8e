#include "edit/addressparsers.h"

#include "edit/compiledpattern.h"

#include <QRegularExpression>
#include <QStringList>

#include <limits>

namespace {

struct NumberAddressPatterns {
    QRegularExpression row_word = compiledPattern(QStringLiteral("ro?w?\\s*(?<row>-?\\d+)"));
    QRegularExpression col_word = compiledPattern(QStringLiteral("co?l?u?m?n?\\s*(?<col>-?\\d+)"));
    QRegularExpression pair = compiledPattern(QStringLiteral("(?<row>-?\\d+)\\s+(?<col>-?\\d+)"));
    QRegularExpression row_any = compiledPattern(QStringLiteral("(?<row>-?\\d+).*"));
    QRegularExpression row_after = compiledPattern(QStringLiteral(".*\\D(?<row>-?\\d+)"));
    QRegularExpression col_any = compiledPattern(QStringLiteral("(?<col>-?\\d+).*"));
    QRegularExpression col_after = compiledPattern(QStringLiteral("\\s+(?<col>-?\\d+)"));
    QRegularExpression bare_row = compiledPattern(QStringLiteral("^(?<row>-?\\d+)"));
    QRegularExpression bare_col = compiledPattern(QStringLiteral("^(?<col>-?\\d+)"));
};

const NumberAddressPatterns& numberAddressPatterns() {
    static const NumberAddressPatterns patterns;
    return patterns;
}

constexpr QStringView kRowGroup = u"row";
constexpr QStringView kColGroup = u"col";

// Runs a pattern and reads its named group as an integer. A number too large
// for int is no match. With `rest`, the matched text is blanked out of it so
// that the other coordinate is not read from the same digits.
bool readInt(const QRegularExpression& re, const QString& text, QStringView group, int& out,
             QString* rest = nullptr) {
    const QRegularExpressionMatch m = re.match(text);
    if (!m.hasMatch()) return false;
    bool ok = false;
    const int value = m.capturedView(group).toInt(&ok);
    if (!ok) return false;
    out = value;
    if (rest) {
        *rest = text;
        rest->replace(m.capturedStart(0), m.capturedLength(0), QStringLiteral(" "));
    }
    return true;
}

// " - " between bounds becomes "-"; "1 - -3" keeps its second sign as "1--3".
QString tightenDashes(const QString& text) {
    static const QRegularExpression spaced_dash = compiledPattern(QStringLiteral(" *- *"));
    QString out = text;
    out.replace(spaced_dash, QStringLiteral("-"));
    return out;
}

void fillLabel(QString& label, const QStringList& parts, qsizetype count) {
    label = (count == 1 ? QStringLiteral("Column ") : QStringLiteral("Columns ")) +
            parts.join(QStringLiteral(", "));
}

// Appends first..last in the direction given; false when the list would grow
// beyond what any table can hold.
bool appendSpan(QList<int>& out, int first, int last) {
    const qint64 span = qint64(last) - qint64(first);
    const qint64 count = (span < 0 ? -span : span) + 1;
    if (out.size() + count > kMaxListedIndexes) return false;
    // One resize and a plain fill: a long range costs a memset's worth.
    const qsizetype old_size = out.size();
    out.resize(old_size + count);
    int* p = out.data() + old_size;
    const int step = first <= last ? 1 : -1;
    for (qint64 k = 0; k < count; ++k)
        p[k] = int(first + k * step);
    return true;
}

} // namespace

void parseCellAddress(int& row, int& col, const QString& text, bool columns_as_letters,
                      bool bare_number_is_row) {
    if (columns_as_letters) {
        parseLetterAddress(row, col, text);
        return;
    }
    const NumberAddressPatterns& p = numberAddressPatterns();

    // Whatever a row or column word claimed is taken out of the text the
    // fallbacks look at: "c8 25" must find its row in " 25", not in "8".
    QString rest_after_row;
    QString rest_after_col;
    const bool row_word = readInt(p.row_word, text, kRowGroup, row, &rest_after_row);
    const bool col_word = readInt(p.col_word, text, kColGroup, col, &rest_after_col);

    if (!row_word && !col_word) {
        const QRegularExpressionMatch m = p.pair.match(text);
        bool row_ok = false;
        bool col_ok = false;
        const int pair_row = m.capturedView(kRowGroup).toInt(&row_ok);
        const int pair_col = m.capturedView(kColGroup).toInt(&col_ok);
        if (row_ok && col_ok) {
            row = pair_row;
            col = pair_col;
            return;
        }
        if (bare_number_is_row)
            readInt(p.bare_row, text, kRowGroup, row);
        else
            readInt(p.bare_col, text, kColGroup, col);
        return;
    }

    if (!row_word) {
        if (!readInt(p.row_any, rest_after_col, kRowGroup, row))
            readInt(p.row_after, rest_after_col, kRowGroup, row);
        return;
    }
    if (!col_word) {
        if (!readInt(p.col_any, rest_after_row, kColGroup, col))
            readInt(p.col_after, rest_after_row, kColGroup, col);
    }
}

void parseLetterAddress(int& row, int& col, const QString& text) {
    static const QRegularExpression patterns[] = {
        compiledPattern(QStringLiteral("(?<col>[a-z]+)[^0-9a-z]*(?<row>\\d+)")),
        compiledPattern(QStringLiteral("(?<row>\\d+)[^0-9a-z]*(?<col>[a-z]+)")),
        compiledPattern(QStringLiteral("(?<col>[a-z]+)")),
        compiledPattern(QStringLiteral("(?<row>\\d+)")),
    };
    const QString lower = text.toLower();
    for (const QRegularExpression& re : patterns) {
        const QRegularExpressionMatch m = re.match(lower);
        if (!m.hasMatch()) continue;
        if (m.capturedStart(kRowGroup) >= 0) {
            bool ok = false;
            const int value = m.capturedView(kRowGroup).toInt(&ok);
            if (ok) row = value;
        }
        if (m.capturedStart(kColGroup) >= 0) {
            const int value = columnLettersToIndex(m.captured(kColGroup).toUpper());
            if (value > 0) col = value;
        }
        return;
    }
}

void parseRowFirst(int& row, int& col, const QString& text) {
    static const QRegularExpression plain_row =
        compiledPattern(QStringLiteral("^r?o?w?\\s*(?<row>\\d+)\\s*r?o?w?s?$"),
                        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression col_word = compiledPattern(
        QStringLiteral("^co?l?u?m?n?\\s*(?<col>\\d+)"), QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression col_after =
        compiledPattern(QStringLiteral("^(?<col>\\d+)\\s*co?l?u?m?n?s?"),
                        QRegularExpression::CaseInsensitiveOption);
    const QString trimmed = text.trimmed();
    if (readInt(plain_row, trimmed, kRowGroup, row)) return;
    if (readInt(col_word, trimmed, kColGroup, col)) return;
    readInt(col_after, trimmed, kColGroup, col);
}

void parseColumnFirst(int& row, int& col, const QString& text) {
    static const QRegularExpression plain_col =
        compiledPattern(QStringLiteral("^c?o?l?u?m?n?\\s*(?<col>\\d+)\\s*c?o?l?u?m?n?s?$"),
                        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression row_word = compiledPattern(
        QStringLiteral("^ro?w?\\s*(?<row>\\d+)"), QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression row_after = compiledPattern(
        QStringLiteral("^(?<row>\\d+)\\s*ro?w?s?"), QRegularExpression::CaseInsensitiveOption);
    const QString trimmed = text.trimmed();
    if (readInt(plain_col, trimmed, kColGroup, col)) return;
    if (readInt(row_word, trimmed, kRowGroup, row)) return;
    readInt(row_after, trimmed, kRowGroup, row);
}

void parseColumnList(QList<int>& indexes, QString& label, const QString& text,
                     bool columns_as_letters) {
    if (columns_as_letters) {
        parseLetterColumnList(indexes, label, text);
        return;
    }
    static const QRegularExpression column_words = compiledPattern(
        QStringLiteral("columns|column|cols|col"), QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression range = compiledPattern(QStringLiteral("^(-?\\d+)-(-?\\d+)$"));

    QString normalised = text;
    normalised.remove(column_words);
    normalised = tightenDashes(normalised);

    QList<int> out;
    QStringList parts;
    for (const QString& raw : normalised.split(u',', Qt::SkipEmptyParts)) {
        const QString part = raw.trimmed();
        if (part.isEmpty()) continue;
        bool ok_first = false;
        bool ok_last = false;
        const QRegularExpressionMatch m = range.match(part);
        if (m.hasMatch()) {
            const int first = m.capturedView(1).toInt(&ok_first);
            const int last = m.capturedView(2).toInt(&ok_last);
            if (!ok_first || !ok_last || !appendSpan(out, first, last)) return;
            parts.append(QStringLiteral("%1-%2").arg(first).arg(last));
        } else {
            const int value = part.toInt(&ok_first);
            if (!ok_first || out.size() >= kMaxListedIndexes) return;
            out.append(value);
            parts.append(QString::number(value));
        }
    }
    if (out.isEmpty()) return;
    fillLabel(label, parts, out.size());
    indexes = std::move(out);
}

void parseLetterColumnList(QList<int>& indexes, QString& label, const QString& text) {
    // Only a column word followed by a blank is a word here: "COL" alone is a
    // column name in its own right.
    static const QRegularExpression column_words =
        compiledPattern(QStringLiteral("\\b(columns|column|cols|col)\\s+"),
                        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression range = compiledPattern(QStringLiteral("^([A-Z]+)-([A-Z]+)$"));

    QString normalised = text;
    normalised.remove(column_words);
    normalised = tightenDashes(normalised).toUpper();

    QList<int> out;
    QStringList parts;
    for (const QString& raw : normalised.split(u',', Qt::SkipEmptyParts)) {
        const QString part = raw.trimmed();
        if (part.isEmpty()) continue;
        const QRegularExpressionMatch m = range.match(part);
        if (m.hasMatch()) {
            const int first = columnLettersToIndex(m.captured(1));
            const int last = columnLettersToIndex(m.captured(2));
            if (first < 1 || last < 1 || !appendSpan(out, first, last)) return;
            parts.append(part);
        } else {
            const int value = columnLettersToIndex(part);
            if (value < 1 || out.size() >= kMaxListedIndexes) return;
            out.append(value);
            parts.append(part);
        }
    }
    if (out.isEmpty()) return;
    fillLabel(label, parts, out.size());
    indexes = std::move(out);
}

namespace {

template <typename T, typename ReadFn>
void parseValueRanges(QList<QPair<T, T>>& ranges, QString& label, const QString& text,
                      const QRegularExpression& range, ReadFn read) {
    QList<QPair<T, T>> out;
    QStringList parts;
    for (const QString& raw : tightenDashes(text).split(u',', Qt::SkipEmptyParts)) {
        const QString part = raw.trimmed();
        if (part.isEmpty()) continue;
        T first{};
        T second{};
        const QRegularExpressionMatch m = range.match(part);
        if (m.hasMatch()) {
            const QString v1 = m.captured(QStringLiteral("val1"));
            const QString v2 = m.captured(QStringLiteral("val2"));
            if (!read(v1, first) || !read(v2, second)) return;
            parts.append(QStringLiteral("%1 - %2").arg(v1, v2));
        } else {
            if (!read(part, first)) return;
            second = first;
            parts.append(part);
        }
        out.append({first, second});
    }
    if (out.isEmpty()) return;
    label = parts.join(QStringLiteral(", "));
    ranges = std::move(out);
}

} // namespace

void parseDoubleRanges(QList<QPair<double, double>>& ranges, QString& label, const QString& text) {
    static const QRegularExpression range =
        compiledPattern(QStringLiteral("^(?<val1>-?\\d+(\\.\\d*)?)-(?<val2>-?\\d+(\\.\\d*)?)$"));
    parseValueRanges<double>(ranges, label, text, range, [](const QString& s, double& out) {
        bool ok = false;
        out = s.toDouble(&ok);
        return ok && qIsFinite(out);
    });
}

void parseIntegerRanges(QList<QPair<qint64, qint64>>& ranges, QString& label, const QString& text) {
    static const QRegularExpression range =
        compiledPattern(QStringLiteral("^(?<val1>-?\\d+)-(?<val2>-?\\d+)$"));
    parseValueRanges<qint64>(ranges, label, text, range, [](const QString& s, qint64& out) {
        bool ok = false;
        out = s.toLongLong(&ok);
        return ok;
    });
}

int columnLettersToIndex(const QString& letters) {
    if (letters.isEmpty()) return -1;
    qint64 value = 0;
    for (const QChar c : letters) {
        if (c < u'A' || c > u'Z') return -1;
        value = value * 26 + (c.unicode() - u'A' + 1);
        if (value > std::numeric_limits<int>::max()) return -1;
    }
    return int(value);
}

QString columnIndexToLetters(int index) {
    QString out;
    // Bijective base 26: there is no zero digit, so borrow one before each division.
    for (qint64 n = index; n > 0; n = (n - 1) / 26)
        out.prepend(QChar(u'A' + int((n - 1) % 26)));
    return out;
}

QString columnLabel(int index, bool columns_as_letters, bool with_prefix) {
    const QString name = columns_as_letters ? columnIndexToLetters(index) : QString::number(index);
    return with_prefix ? QStringLiteral("Column ") + name : name;
}
