#pragma once

#include <QList>
#include <QRegularExpression>
#include <QSyntaxHighlighter>

class SyntaxStyle;

// A highlighter driven by pattern rules whose colours come from a SyntaxStyle
// by role name, so one set of rules serves every scheme.
class StyleSyntaxHighlighter : public QSyntaxHighlighter {
    Q_OBJECT
public:
    explicit StyleSyntaxHighlighter(QTextDocument* document = nullptr);

    // Null stands for the default scheme.
    void setSyntaxStyle(SyntaxStyle* style);
    SyntaxStyle* syntaxStyle() const { return style; }

protected:
    // A pattern with a capture group formats only what group 1 took, which
    // lets the pattern look at text around the span without colouring it.
    struct HighlightRule {
        QRegularExpression pattern;
        QString format;
    };
    // A span from an opening to a closing marker, which may lie blocks apart;
    // while a block ends inside it, the block's state is its index plus one.
    struct BlockSpan {
        QString start;
        QString end;
        QString format;
    };

    void addRule(const QString& pattern, const QString& format);
    void addBlockSpan(const QString& start, const QString& end, const QString& format);
    QTextCharFormat styleFormat(const QString& name) const;

    // Rules in the order added, each over the whole block, then the spans.
    void highlightBlock(const QString& text) override;

private:
    struct SpanRange {
        int start;
        int length;
        int span;
    };
    // Where the spans lie in this block, given the state the previous block
    // ended in; sets this block's state.
    QList<SpanRange> findBlockSpans(const QString& text);

    SyntaxStyle* style;
    QList<HighlightRule> rules;
    QList<BlockSpan> spans;
};
