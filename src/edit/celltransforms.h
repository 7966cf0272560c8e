#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

// Text rules of the Data menu's multi-cell and string commands, as pure
// functions. Case rules are in casetransforms.h, dates in
// datetimeconversion.h, numbers in numbertransforms.h, UUIDs in uuidtext.h.

// --- Series -----------------------------------------------------------------

// `count` values from the series field: "1 2" counts 1, 3, 5...; "0.5 0.25"
// steps in decimals; anything else is a word list ("a b", "\"New York\" Rome",
// \" for a quote mark) repeated to fill. An empty field gives empty values.
QStringList parseSeries(const QString& text, int count);

// --- Prepend, append, trim --------------------------------------------------

inline QString prependText(const QString& text, const QString& prefix) {
    return prefix + text;
}
inline QString appendText(const QString& text, const QString& suffix) {
    return text + suffix;
}
inline QString trimText(const QString& text) {
    return text.trimmed();
}

// --- Keep parts -------------------------------------------------------------

// n characters from the left; a negative n keeps all but the last -n.
QString keepLeft(const QString& text, int n);
// n characters from the right; a negative n keeps all but the first -n.
QString keepRight(const QString& text, int n);
// From `index` (negative counts from the right, -1 the last), `count`
// characters to the right including it, or -count to the left of it.
QString keepMiddle(const QString& text, int index, int count);

// Answers of the index prompts; nothing when the answer isn't valid.
std::optional<int> parseSingleIndex(const QString& text);
std::optional<std::pair<int, int>> parseIndexAndCount(const QString& text);
std::optional<QList<int>> parseSplitIndexes(const QString& text);

// --- Join and split ---------------------------------------------------------

// A typed separator: "\n" and "\t" stand for a newline and a tab.
QString decodeSeparator(const QString& typed);

// The line's texts joined into its first cell; the other cells emptied.
QStringList joinCells(const QStringList& cells, const QString& separator);

// Parts for the cells to the right (or below). An empty delimiter gives one
// character a part.
QStringList splitByDelimiter(const QString& text, const QString& delimiter);
// Cuts before each index (negative from the right), always indexes + 1 parts
// so that every cell of a column splits into the same number of cells.
QStringList splitByIndexes(const QString& text, const QList<int>& indexes);

// --- Reshape ----------------------------------------------------------------

struct ReshapeShape {
    int rows = 0;
    int cols = 0;
    bool isValid() const { return rows > 0 && cols > 0; }
};

// The shape `value_count` values take from the reshape prompt's answer.
// Row-wise a plain number is a number of columns ("25", "r8" or "8 rows" for
// rows); column-wise a plain number is a number of rows.
ReshapeShape reshapeShape(const QString& answer, qsizetype value_count, bool row_wise);

// "4 Columns, 25 Rows" (row-wise) or "25 Rows, 4 Columns", or "(No shape defined)".
QString reshapePreview(const ReshapeShape& shape, bool row_wise);

// The values, read in row order (row-wise) or column order, laid out in the
// new shape the same way; a grid of rows, padded with empty texts.
QList<QStringList> reshapeValues(const QStringList& values, const ReshapeShape& shape,
                                 bool row_wise);

// --- ID column --------------------------------------------------------------

// The column whose header reads "id" in any case, or -1.
int findIdColumn(const QStringList& header_labels);

// The ID column's data cells with every empty one numbered, top to bottom,
// after the largest non-negative integer already there (from 0 when none).
QStringList fillIdColumn(const QStringList& cells);

// `count` consecutive integers from `first`, for a new ID column.
QStringList idSequence(qint64 first, int count);
