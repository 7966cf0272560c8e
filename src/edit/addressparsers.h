#pragma once

#include <QList>
#include <QPair>
#include <QString>

// Turn what a user types at a prompt into rows, columns and value ranges.
//
// All numbers are user-facing labels: the caller subtracts the first row or
// column index. A parser that fails leaves its outputs untouched (-1 for an
// address, empty for a list); callers set row and col to -1 before the call.
// Every function is safe to call from any thread.

// Cell address such as "25 8", "r25, c8" or, with letters, "ab25".
// A lone number is a row when bare_number_is_row, else a column.
void parseCellAddress(int& row, int& col, const QString& text, bool columns_as_letters,
                      bool bare_number_is_row);
void parseLetterAddress(int& row, int& col, const QString& text);

// For prompts whose plain number means a row ("8", "r8", "8 rows"; "c8",
// "8 cols" give a column), and the mirror for prompts that default to a column.
void parseRowFirst(int& row, int& col, const QString& text);
void parseColumnFirst(int& row, int& col, const QString& text);

// "1, 3-5, 9--2" style lists, in the typed order, ranges expanded either way.
// The label reads "Column 3" or "Columns 1, 3-5".
void parseColumnList(QList<int>& indexes, QString& label, const QString& text,
                     bool columns_as_letters);
void parseLetterColumnList(QList<int>& indexes, QString& label, const QString& text);

// "1.5-2, 4" style value ranges; a plain number is a range of itself.
void parseDoubleRanges(QList<QPair<double, double>>& ranges, QString& label, const QString& text);
void parseIntegerRanges(QList<QPair<qint64, qint64>>& ranges, QString& label, const QString& text);

// Spreadsheet letters, "A" = 1, "Z" = 26, "AA" = 27. Upper case only; anything
// else, or a value beyond int, gives -1. Indexes below 1 give an empty text.
int columnLettersToIndex(const QString& letters);
QString columnIndexToLetters(int index);

// A column label as shown to the user: letters or decimal, optionally behind "Column ".
QString columnLabel(int index, bool columns_as_letters, bool with_prefix);

// More indexes than this in one list is treated as a mistake rather than
// allocated: it keeps a stray "1-2000000000" from eating the machine.
inline constexpr qsizetype kMaxListedIndexes = qsizetype(1) << 20;
