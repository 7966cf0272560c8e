#pragma once

#include "widgets/codeeditor/stylesyntaxhighlighter.h"

// XML: tag names, attribute values and comments that may span lines.
class XMLHighlighter : public StyleSyntaxHighlighter {
    Q_OBJECT
public:
    explicit XMLHighlighter(QTextDocument* document = nullptr);
};
