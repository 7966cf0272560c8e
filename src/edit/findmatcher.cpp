#include "edit/findmatcher.h"

namespace {

bool isAscii(const QString& text) {
    for (QChar c : text)
        if (c.unicode() >= 128) return false;
    return true;
}

} // namespace

FindMatcher::FindMatcher(const FindReplaceQuery& query, const QString& word_separators)
    : query_(query), separators(word_separators) {
    for (QChar c : separators)
        if (c.unicode() < 256) separator_table[c.unicode()] = true;
    if (query.regex) {
        QString pattern = query.find_str;
        // Wrapped as written: "a|b" in a whole cell reads "^a|b$".
        if (query.whole_cell)
            pattern = u'^' + pattern + u'$';
        else if (query.whole_word)
            pattern = QStringLiteral("\\b") + pattern + QStringLiteral("\\b");
        regex.setPattern(pattern);
        if (!query.case_sensitive)
            regex.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
        valid = regex.isValid();
        if (valid) regex.optimize();
        return;
    }
    // A plain text is a run of bytes in any line that holds it; without case
    // only ASCII folds byte by byte.
    if (!query.find_str.isEmpty() && (query.case_sensitive || isAscii(query.find_str))) {
        prefilter_folds = !query.case_sensitive;
        prefilter_bytes = (prefilter_folds ? query.find_str.toLower() : query.find_str).toUtf8();
    }
}

bool FindMatcher::isWordSeparator(QChar c) const {
    return c.unicode() < 256 ? separator_table[c.unicode()] : separators.contains(c);
}

bool FindMatcher::findInText(const QString& text, std::vector<Span>* spans) const {
    if (spans) spans->clear();
    const QString& needle = query_.find_str;
    if (needle.isEmpty()) {
        if (!text.isEmpty()) return false;
        if (spans) spans->emplace_back(0, 0);
        return true;
    }
    if (query_.regex) {
        if (!valid) return false;
        const QRegularExpressionMatch match = regex.match(text);
        if (!match.hasMatch()) return false;
        if (spans) {
            for (int i = 0; i <= match.lastCapturedIndex(); ++i) {
                int start = int(match.capturedStart(i));
                if (start < 0 || (i > 0 && match.capturedLength(i) == 0)) continue;
                if (query_.whole_word && start < text.size() && text[start] == u' ') ++start;
                spans->emplace_back(start, int(match.capturedLength(i)));
            }
        }
        return true;
    }
    const Qt::CaseSensitivity cs = query_.case_sensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    if (query_.whole_cell) {
        if (text.size() != needle.size() || text.compare(needle, cs) != 0) return false;
        if (spans) spans->emplace_back(0, int(text.size()));
        return true;
    }
    bool found = false;
    for (qsizetype at = text.indexOf(needle, 0, cs); at >= 0;) {
        const qsizetype end = at + needle.size();
        const bool counts =
            !query_.whole_word || ((at == 0 || isWordSeparator(text[at - 1])) &&
                                   (end == text.size() || isWordSeparator(text[end])));
        if (counts) {
            found = true;
            if (!spans) return true;
            spans->emplace_back(int(at), int(needle.size()));
        }
        // Occurrences don't overlap; a rejected whole word may hide one
        // that starts inside it.
        at = text.indexOf(needle, counts ? end : at + 1, cs);
    }
    return found;
}

QString FindMatcher::replaceInText(const QString& text) const {
    if (query_.regex) {
        if (!valid) return text;
        QString result = text;
        return result.replace(regex, query_.replace_str);
    }
    std::vector<Span> spans;
    if (!findInText(text, &spans)) return text;
    QString result = text;
    for (auto it = spans.rbegin(); it != spans.rend(); ++it)
        result.replace(it->first, it->second, query_.replace_str);
    return result;
}
