#pragma once

#include "edit/filterterm.h"

#include <QRegularExpression>
#include <QString>

#include <cstdint>
#include <vector>

// The line a filter applies to, in raw coordinates: kind 1 is a whole row,
// kind 2 a whole column. The index across the line is the no-index value.
struct FilterLine {
    static constexpr int32_t kNoIndex = INT32_MIN; // 0x80000000
    static constexpr int kRow = 1;
    static constexpr int kColumn = 2;
    static constexpr int kInvalid = 4;

    int kind = kInvalid;
    int32_t row = kNoIndex;
    int32_t col = kNoIndex;

    static FilterLine forRow(int32_t row) { return {kRow, row, kNoIndex}; }
    static FilterLine forColumn(int32_t col) { return {kColumn, kNoIndex, col}; }
    // The same line once rows and columns trade places.
    FilterLine transposed() const {
        if (kind != kRow && kind != kColumn) return *this;
        return {kind == kRow ? kColumn : kRow, col, row};
    }

    bool operator==(const FilterLine&) const = default;
};

// AND entry: the wildcard pieces of one "&"-separated part.
using FilterAndEntry = std::vector<FilterTerm>;
// OR group: the AND entries of one "|"-separated part.
using FilterOrGroup = std::vector<FilterAndEntry>;

// One filter of a table: its line, the text the user typed and the parsed form
// of that text. Only the line, the text and the case flags make two filters
// the same; the parsed form follows from the text.
class FilterData {
public:
    FilterLine range;
    QString filter_string;
    std::vector<FilterOrGroup> or_groups;
    QRegularExpression regex;
    // Raw lines across the filter that stay visible although they do not match.
    std::vector<int> exceptions;
    bool case_sensitive = false;
    bool reserved_flag1 = false;
    bool reserved_flag2 = false;
    bool use_regex = false;

    FilterData() = default;
    FilterData(FilterLine line, const QString& text) : range(line), filter_string(text) {}

    // Fills or_groups, or regex and use_regex, from filter_string.
    void parse();

    bool operator==(const FilterData& other) const {
        return range == other.range && filter_string == other.filter_string &&
               case_sensitive == other.case_sensitive && reserved_flag1 == other.reserved_flag1 &&
               reserved_flag2 == other.reserved_flag2;
    }
};

// Whether one cell's text passes a parsed filter.
bool cellMatchesFilter(const FilterData& filter, const QString& cell_text);

// Escapes every character of the filter language, so that `text` becomes a
// filter matching exactly that text.
QString escapeFilterString(const QString& text);
