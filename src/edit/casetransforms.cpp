#include "edit/casetransforms.h"

namespace {

bool isStopWord(const QString& word) {
    static const QStringList stop_words = {
        QStringLiteral("a"),  QStringLiteral("an"),  QStringLiteral("and"), QStringLiteral("as"),
        QStringLiteral("at"), QStringLiteral("but"), QStringLiteral("by"),  QStringLiteral("from"),
        QStringLiteral("in"), QStringLiteral("nor"), QStringLiteral("not"), QStringLiteral("of"),
        QStringLiteral("on"), QStringLiteral("or"),  QStringLiteral("the"), QStringLiteral("to"),
    };
    return stop_words.contains(word);
}

bool isWordSeparator(QChar c) {
    return c == u' ' || c == u'-' || c == u',' || c == u'/';
}

bool isCaseStep(const QString& text, qsizetype i) {
    return i > 0 && text.at(i - 1).isLower() && text.at(i).isUpper();
}

} // namespace

QStringList splitIntoTitleWords(const QString& text) {
    QString marked;
    marked.reserve(text.size() + text.size() / 4);
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isCaseStep(text, i)) marked.append(u'_');
        const QChar c = text.at(i);
        marked.append(isWordSeparator(c) ? QChar(u'_') : c);
    }
    QStringList words = marked.split(u'_');
    const qsizetype last = words.size() - 1;
    for (qsizetype i = 0; i <= last; ++i) {
        QString& word = words[i];
        word = word.toLower();
        if (word.isEmpty() || (i != 0 && i != last && isStopWord(word))) continue;
        word[0] = word.at(0).toUpper();
    }
    return words;
}

QString toTitleCase(const QString& text) {
    if (text.isEmpty()) return text;
    QString joined = splitIntoTitleWords(text).join(u' ');

    // Put "-", "/" and "," back where the text had them. The joined text has
    // one extra blank at each case step; when lower-casing changed a length
    // (a few letters outside ASCII do) the texts no longer line up and the
    // blanks stay.
    qsizetype steps = 0;
    for (qsizetype i = 0; i < text.size(); ++i)
        steps += isCaseStep(text, i);
    if (joined.size() != text.size() + steps) return joined;
    for (qsizetype i = 0, j = 0; i < text.size(); ++i, ++j) {
        if (isCaseStep(text, i)) ++j;
        const QChar c = text.at(i);
        if (c == u'-' || c == u'/' || c == u',') joined[j] = c;
    }
    return joined;
}

QString toUpperCamelCase(const QString& text) {
    return splitIntoTitleWords(text).join(QString());
}

QString toLowerCamelCase(const QString& text) {
    QString out = toUpperCamelCase(text);
    if (!out.isEmpty()) out[0] = out.at(0).toLower();
    return out;
}

QString toUpperSnakeCase(const QString& text) {
    return splitIntoTitleWords(text).join(u'_').toUpper();
}

QString toLowerSnakeCase(const QString& text) {
    return splitIntoTitleWords(text).join(u'_').toLower();
}

QString toAcronym(const QString& text) {
    QString out;
    for (const QString& word : splitIntoTitleWords(text)) {
        if (word.isEmpty() || word.startsWith(u'(')) continue;
        bool is_number = false;
        word.toFloat(&is_number);
        if (is_number)
            out += word;
        else
            out += word.at(0);
    }
    return out.toUpper();
}
