#pragma once

#include "data/tabledata.h"
#include "edit/findreplacequery.h"

#include <QByteArray>
#include <QRegularExpression>
#include <QString>

#include <array>
#include <utility>
#include <vector>

// One find query made ready to test cell texts: the pattern compiled once,
// the word separators as a table. A copy is independent, so each thread of
// a search can hold its own.
class FindMatcher {
public:
    // Start and length of one match in a text.
    using Span = std::pair<int, int>;

    explicit FindMatcher(const FindReplaceQuery& query,
                         const QString& word_separators = TableData::kDefaultWordSeparators);

    const FindReplaceQuery& query() const { return query_; }
    // False for a pattern that does not compile: it matches nothing.
    bool isValid() const { return valid; }
    // An empty find text matches only an empty cell, at 0.
    bool findInText(const QString& text, std::vector<Span>* spans = nullptr) const;
    // The text with every match replaced; regular expressions take "\1" and
    // the like in the replacement.
    QString replaceInText(const QString& text) const;
    bool isWordSeparator(QChar c) const;

    // Bytes that a UTF-8 (or Latin-1, for ASCII) line must contain for any of
    // its cells to match, so whole lines can be passed over without
    // decoding; with foldsCase() the line is to be compared ASCII-lower-cased.
    // Empty when no such test applies (patterns, non-ASCII text without case).
    const QByteArray& prefilter() const { return prefilter_bytes; }
    bool foldsCase() const { return prefilter_folds; }

private:
    FindReplaceQuery query_;
    QRegularExpression regex;
    bool valid = true;
    QString separators;
    std::array<bool, 256> separator_table{};
    QByteArray prefilter_bytes;
    bool prefilter_folds = false;
};
