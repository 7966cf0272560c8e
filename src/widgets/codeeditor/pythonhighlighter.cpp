#include "widgets/codeeditor/pythonhighlighter.h"

#include "widgets/codeeditor/language.h"

PythonHighlighter::PythonHighlighter(QTextDocument* document) : StyleSyntaxHighlighter(document) {
    Language language;
    language.loadFile(QStringLiteral(":/languages/python.xml"));
    for (const QString& section : language.sections()) {
        QStringList words = language.names(section);
        if (words.isEmpty()) continue;
        for (QString& word : words)
            word = QRegularExpression::escape(word);
        // One alternation per section scans a line once instead of once per word.
        const QString format =
            section == u"Builtins" ? QStringLiteral("Type") : QStringLiteral("Keyword");
        addRule(QStringLiteral(R"(\b(?:%1)\b)").arg(words.join(u'|')), format);
    }
    // A digit first, so that the dots of `os.path` are no number.
    addRule(QStringLiteral(R"(\b(?:0b|0x){0,1}\d[\d.']*\b)"), QStringLiteral("Number"));
    addRule(QStringLiteral(R"("[^\n"]*")"), QStringLiteral("String"));
    addRule(QStringLiteral(R"('[^\n"]*')"), QStringLiteral("String"));
    addRule(QStringLiteral(R"(import \w+)"), QStringLiteral("Import"));
    // The call's name, not the objects it is reached through.
    addRule(QStringLiteral(R"(\b(?:[A-Za-z0-9_]+\.)*([A-Za-z0-9_]+)(?=\())"),
            QStringLiteral("Function"));
    // `name name =` but not a comparison such as `if count == 0`.
    addRule(QStringLiteral(R"(\b([A-Za-z0-9_]+)\s+[A-Za-z]{1}[A-Za-z0-9_]+\s*[;=](?!=))"),
            QStringLiteral("Type"));
    // A hash inside a quoted string does not start a comment.
    addRule(QStringLiteral(R"(^(?:[^"'#\n]|"[^"\n]*"|'[^'\n]*')*(#[^\n]*))"),
            QStringLiteral("Comment"));
    addBlockSpan(QStringLiteral(R"(""")"), QStringLiteral(R"(""")"), QStringLiteral("String"));
    addBlockSpan(QStringLiteral("'''"), QStringLiteral("'''"), QStringLiteral("String"));
}
