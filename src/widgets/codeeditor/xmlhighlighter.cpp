#include "widgets/codeeditor/xmlhighlighter.h"

XMLHighlighter::XMLHighlighter(QTextDocument* document) : StyleSyntaxHighlighter(document) {
    addRule(QStringLiteral(R"(<[\s]*[/]?[\s]*([^\n][a-zA-Z-_:]*)(?=[\s/>]))"),
            QStringLiteral("Keyword"));
    addRule(QStringLiteral(R"(\w+(?=\=))"), QStringLiteral("Text"));
    addRule(QStringLiteral(R"("[^\n"]+"(?=\??[\s/>]))"), QStringLiteral("String"));
    addBlockSpan(QStringLiteral("<!--"), QStringLiteral("-->"), QStringLiteral("Comment"));
}
