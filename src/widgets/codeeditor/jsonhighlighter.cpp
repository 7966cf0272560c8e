#include "widgets/codeeditor/jsonhighlighter.h"

namespace {
// One string with its escapes, so that \" inside it does not end it.
const QString string_pattern = QStringLiteral(R"("(?:[^"\\\r\n]|\\.)*")");
} // namespace

JSONHighlighter::JSONHighlighter(QTextDocument* document) : StyleSyntaxHighlighter(document) {
    for (const QString& keyword :
         {QStringLiteral("true"), QStringLiteral("false"), QStringLiteral("null")})
        addRule(QStringLiteral(R"(\b%1\b)").arg(keyword), QStringLiteral("Keyword"));
    // A digit first, so that the dots of `os.path` are no number.
    addRule(QStringLiteral(R"(\b(?:0b|0x){0,1}\d[\d.']*\b)"), QStringLiteral("Number"));
    // A key is a whole string followed by a colon; matching from one string's
    // closing quote to the next one's would take `, "` for a key.
    addRule(QStringLiteral(R"((%1)\s*:)").arg(string_pattern), QStringLiteral("Keyword"));
    // Keys are consumed uncoloured by the first alternative, so they keep
    // their colour; values are taken by the group.
    addRule(QStringLiteral(R"(%1\s*:|(%1))").arg(string_pattern), QStringLiteral("String"));
}
