#include "widgets/codeeditor/stylesyntaxhighlighter.h"

#include "widgets/codeeditor/syntaxstyle.h"

StyleSyntaxHighlighter::StyleSyntaxHighlighter(QTextDocument* document)
    : QSyntaxHighlighter(document), style(SyntaxStyle::defaultStyle()) {}

void StyleSyntaxHighlighter::setSyntaxStyle(SyntaxStyle* new_style) {
    style = new_style ? new_style : SyntaxStyle::defaultStyle();
    rehighlight();
}

void StyleSyntaxHighlighter::addRule(const QString& pattern, const QString& format) {
    QRegularExpression expression(pattern);
    expression.optimize();
    rules.append({expression, format});
}

void StyleSyntaxHighlighter::addBlockSpan(const QString& start, const QString& end,
                                          const QString& format) {
    spans.append({start, end, format});
}

QTextCharFormat StyleSyntaxHighlighter::styleFormat(const QString& name) const {
    return style->format(name);
}

void StyleSyntaxHighlighter::highlightBlock(const QString& text) {
    const QList<SpanRange> span_ranges = findBlockSpans(text);
    // The rules do not see into the spans: a quote that closes a triple-quoted
    // string must not open a string for them.
    QString outside = text;
    for (const SpanRange& range : span_ranges)
        outside.replace(range.start, range.length, QString(range.length, u' '));

    for (const HighlightRule& rule : std::as_const(rules)) {
        const int group = rule.pattern.captureCount() > 0 ? 1 : 0;
        const QTextCharFormat format = styleFormat(rule.format);
        QRegularExpressionMatchIterator matches = rule.pattern.globalMatch(outside);
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            // An alternative without the group matched: that text is only
            // consumed so that no other match starts inside it.
            if (match.capturedStart(group) < 0 || match.capturedLength(group) == 0) continue;
            setFormat(int(match.capturedStart(group)), int(match.capturedLength(group)), format);
        }
    }
    for (const SpanRange& range : span_ranges)
        setFormat(range.start, range.length, styleFormat(spans[range.span].format));
}

QList<StyleSyntaxHighlighter::SpanRange>
StyleSyntaxHighlighter::findBlockSpans(const QString& text) {
    setCurrentBlockState(0);
    QList<SpanRange> found;
    if (spans.isEmpty()) return found;

    int state = previousBlockState();
    if (state < 0 || state > spans.size()) state = 0;
    qsizetype pos = 0;
    while (pos <= text.size()) {
        qsizetype span_start = pos;
        qsizetype search_from = pos;
        if (state == 0) {
            qsizetype first = -1;
            for (int i = 0; i < spans.size(); ++i) {
                const qsizetype at = text.indexOf(spans[i].start, pos);
                if (at >= 0 && (first < 0 || at < first)) {
                    first = at;
                    state = i + 1;
                }
            }
            if (first < 0) break;
            span_start = first;
            search_from = first + spans[state - 1].start.size();
        }
        const BlockSpan& span = spans[state - 1];
        const qsizetype end = text.indexOf(span.end, search_from);
        if (end < 0) {
            found.append({int(span_start), int(text.size() - span_start), state - 1});
            setCurrentBlockState(state);
            break;
        }
        const qsizetype stop = end + span.end.size();
        found.append({int(span_start), int(stop - span_start), state - 1});
        pos = stop;
        state = 0;
    }
    return found;
}
