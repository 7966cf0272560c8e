#pragma once

#include "widgets/codeeditor/stylesyntaxhighlighter.h"

// Python: keywords and builtins from ":/languages/python.xml", numbers,
// strings, imports, calls, comments and triple-quoted strings over lines.
class PythonHighlighter : public StyleSyntaxHighlighter {
    Q_OBJECT
public:
    explicit PythonHighlighter(QTextDocument* document = nullptr);
};
