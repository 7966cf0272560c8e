#pragma once

#include "widgets/codeeditor/stylesyntaxhighlighter.h"

// JSON: literals and keys as keywords, numbers, string values.
class JSONHighlighter : public StyleSyntaxHighlighter {
    Q_OBJECT
public:
    explicit JSONHighlighter(QTextDocument* document = nullptr);
};
