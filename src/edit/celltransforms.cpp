#include "edit/celltransforms.h"

#include "edit/compiledpattern.h"

#include "edit/addressparsers.h"

#include <QRegularExpression>
#include <QtNumeric>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// The word list of a series: cut at blanks outside double quotes, quotes
// dropped. A quoted part may be empty; runs of blanks make no empty words.
QStringList seriesWords(const QString& text) {
    // Escaped quotes are hidden first so that they don't open or close a quoted part.
    const QString placeholder = QStringLiteral("\\dq/dq");
    QString hidden = text;
    hidden.replace(QStringLiteral("\\\""), placeholder);

    QStringList words;
    QString word;
    bool in_quotes = false;
    bool has_word = false;
    for (const QChar c : hidden) {
        if (c == u'"') {
            in_quotes = !in_quotes;
            has_word = true;
        } else if (c == u' ' && !in_quotes) {
            if (has_word) words.append(word);
            word.clear();
            has_word = false;
        } else {
            word.append(c);
            has_word = true;
        }
    }
    if (has_word) words.append(word);
    for (QString& w : words)
        w.replace(placeholder, QStringLiteral("\""));
    return words;
}

QStringList arithmeticSeries(const QStringList& tokens, int count) {
    bool ok_first = false;
    bool ok_step = false;
    const qint64 first = tokens[0].toLongLong(&ok_first);
    const qint64 step = tokens[1].toLongLong(&ok_step);
    qint64 span = 0;
    qint64 last = 0;
    QStringList out;
    out.reserve(count);
    // The ends decide whether every value fits: the series is linear.
    if (ok_first && ok_step && !qMulOverflow(step, qint64(count - 1), &span) &&
        !qAddOverflow(first, span, &last)) {
        for (qint64 i = 0; i < count; ++i)
            out.append(QString::number(first + i * step));
        return out;
    }
    const double first_value = tokens[0].toDouble(&ok_first);
    const double step_value = tokens[1].toDouble(&ok_step);
    if (!ok_first || !ok_step || !std::isfinite(first_value) || !std::isfinite(step_value))
        return {};
    for (int i = 0; i < count; ++i)
        out.append(QString::number(i * step_value + first_value, 'g', 6));
    return out;
}

QStringList integerParts(const QString& text) {
    static const QRegularExpression separators = compiledPattern(QStringLiteral("[\\s,]+"));
    return text.split(separators, Qt::SkipEmptyParts);
}

} // namespace

QStringList parseSeries(const QString& text, int count) {
    if (count <= 0) return {};
    const QStringList tokens = text.split(u' ');
    if (tokens.size() == 2) {
        QStringList numbers = arithmeticSeries(tokens, count);
        if (!numbers.isEmpty()) return numbers;
    }
    QStringList words = seriesWords(text);
    if (words.isEmpty()) words.append(QString());
    QStringList out;
    out.reserve(count);
    for (int i = 0; i < count; ++i)
        out.append(words.at(i % words.size()));
    return out;
}

QString keepLeft(const QString& text, int n) {
    const qint64 length = text.size();
    if (n >= length) return text;
    if (n <= -length) return {};
    return text.left(n >= 0 ? n : length + n);
}

QString keepRight(const QString& text, int n) {
    const qint64 length = text.size();
    if (n >= length) return text;
    if (n <= -length) return {};
    return n >= 0 ? text.right(n) : text.mid(-qint64(n));
}

QString keepMiddle(const QString& text, int index, int count) {
    const qint64 length = text.size();
    const qint64 at = index < 0 ? length + index : index;
    // A positive count runs right from the index, including it; a negative
    // count takes the characters just before it.
    qint64 start = count >= 0 ? at : at + count;
    qint64 end = count >= 0 ? at + count : at;
    start = std::clamp<qint64>(start, 0, length);
    end = std::clamp<qint64>(end, 0, length);
    if (start >= end) return {};
    return text.mid(start, end - start);
}

std::optional<int> parseSingleIndex(const QString& text) {
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    if (!ok) return std::nullopt;
    return value;
}

std::optional<std::pair<int, int>> parseIndexAndCount(const QString& text) {
    const QStringList parts = integerParts(text);
    if (parts.size() != 2) return std::nullopt;
    bool ok_index = false;
    bool ok_count = false;
    const int index = parts[0].toInt(&ok_index);
    const int count = parts[1].toInt(&ok_count);
    if (!ok_index || !ok_count) return std::nullopt;
    return std::pair{index, count};
}

std::optional<QList<int>> parseSplitIndexes(const QString& text) {
    const QStringList parts = integerParts(text);
    if (parts.isEmpty()) return std::nullopt;
    QList<int> indexes;
    indexes.reserve(parts.size());
    for (const QString& part : parts) {
        bool ok = false;
        indexes.append(part.toInt(&ok));
        if (!ok) return std::nullopt;
    }
    return indexes;
}

QString decodeSeparator(const QString& typed) {
    QString out = typed;
    out.replace(QStringLiteral("\\n"), QStringLiteral("\n"));
    out.replace(QStringLiteral("\\t"), QStringLiteral("\t"));
    return out;
}

QStringList joinCells(const QStringList& cells, const QString& separator) {
    if (cells.isEmpty()) return {};
    QStringList out(cells.size());
    out[0] = cells.join(separator);
    return out;
}

QStringList splitByDelimiter(const QString& text, const QString& delimiter) {
    if (!delimiter.isEmpty()) return text.split(delimiter);
    QStringList out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        // A character outside the BMP is two code units; keep them together.
        const qsizetype width =
            (text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
                ? 2
                : 1;
        out.append(text.mid(i, width));
        i += width;
    }
    return out;
}

QStringList splitByIndexes(const QString& text, const QList<int>& indexes) {
    const qint64 length = text.size();
    QList<qint64> cuts;
    cuts.reserve(indexes.size());
    for (int index : indexes)
        cuts.append(std::clamp<qint64>(index < 0 ? length + index : index, 0, length));
    std::sort(cuts.begin(), cuts.end());
    QStringList out;
    out.reserve(cuts.size() + 1);
    qint64 from = 0;
    for (qint64 cut : cuts) {
        out.append(text.mid(from, cut - from));
        from = cut;
    }
    out.append(text.mid(from));
    return out;
}

ReshapeShape reshapeShape(const QString& answer, qsizetype value_count, bool row_wise) {
    if (value_count <= 0 || value_count > std::numeric_limits<int>::max()) return {};
    int rows = -1;
    int cols = -1;
    if (row_wise)
        parseColumnFirst(rows, cols, answer);
    else
        parseRowFirst(rows, cols, answer);
    // A side longer than there are values would only lay out empty cells,
    // and a stray large number must not become a huge grid.
    const auto other_side = [value_count](int side) {
        return int((value_count + side - 1) / side);
    };
    if (cols > 0 && cols <= value_count) return {other_side(cols), cols};
    if (rows > 0 && rows <= value_count) return {rows, other_side(rows)};
    return {};
}

QString reshapePreview(const ReshapeShape& shape, bool row_wise) {
    if (!shape.isValid()) return QStringLiteral("(No shape defined)");
    const auto plural = [](int n) { return n == 1 ? QString() : QStringLiteral("s"); };
    if (row_wise)
        return QStringLiteral("%1 Column%2, %3 Row%4")
            .arg(QString::number(shape.cols), plural(shape.cols), QString::number(shape.rows),
                 plural(shape.rows));
    return QStringLiteral("%1 Row%2, %3 Column%4")
        .arg(QString::number(shape.rows), plural(shape.rows), QString::number(shape.cols),
             plural(shape.cols));
}

QList<QStringList> reshapeValues(const QStringList& values, const ReshapeShape& shape,
                                 bool row_wise) {
    if (!shape.isValid()) return {};
    QList<QStringList> grid(shape.rows, QStringList(shape.cols));
    const qint64 capacity = qint64(shape.rows) * shape.cols;
    for (qsizetype k = 0; k < values.size() && k < capacity; ++k) {
        const qint64 row = row_wise ? k / shape.cols : k % shape.rows;
        const qint64 col = row_wise ? k % shape.cols : k / shape.rows;
        grid[row][col] = values.at(k);
    }
    return grid;
}

int findIdColumn(const QStringList& header_labels) {
    static const QRegularExpression id =
        compiledPattern(QStringLiteral("^id$"), QRegularExpression::CaseInsensitiveOption);
    return int(header_labels.indexOf(id));
}

QStringList fillIdColumn(const QStringList& cells) {
    qint64 last = -1;
    for (const QString& cell : cells) {
        bool ok = false;
        const qint64 value = cell.toLongLong(&ok);
        if (ok && value > last) last = value;
    }
    QStringList out = cells;
    for (QString& cell : out) {
        if (!cell.isEmpty()) continue;
        if (last == std::numeric_limits<qint64>::max()) break;
        cell = QString::number(++last);
    }
    return out;
}

QStringList idSequence(qint64 first, int count) {
    QStringList out;
    if (count <= 0) return out;
    out.reserve(count);
    for (qint64 value = first; out.size() < count; ++value) {
        out.append(QString::number(value));
        if (value == std::numeric_limits<qint64>::max()) break;
    }
    return out;
}
