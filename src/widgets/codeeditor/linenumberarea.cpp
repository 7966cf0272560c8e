#include "widgets/codeeditor/linenumberarea.h"

#include "widgets/codeeditor/codeeditor.h"
#include "widgets/codeeditor/syntaxstyle.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QScrollBar>
#include <QTextBlock>

LineNumberArea::LineNumberArea(CodeEditor* editor)
    : QWidget(editor), editor(editor), style(SyntaxStyle::defaultStyle()) {}

void LineNumberArea::setSyntaxStyle(SyntaxStyle* new_style) {
    style = new_style ? new_style : SyntaxStyle::defaultStyle();
    update();
}

QSize LineNumberArea::sizeHint() const {
    int digits = 1;
    for (int count = std::max(1, editor->document()->blockCount()); count >= 10; count /= 10)
        ++digits;
    // Room for two digits at least, so the text does not jump at line ten.
    digits = std::max(digits, 2);
    const QFontMetrics metrics(editor->font());
    return {metrics.horizontalAdvance(QLatin1Char('9')) * digits + 16, 0};
}

void LineNumberArea::paintEvent(QPaintEvent* event) {
    const QTextCharFormat text_format = style->format(QStringLiteral("Text"));
    const QTextCharFormat number_format = style->format(QStringLiteral("LineNumber"));
    const QTextCharFormat current_format = style->format(QStringLiteral("CurrentLineNumber"));

    QPainter painter(this);
    const QBrush background = number_format.hasProperty(QTextFormat::BackgroundBrush)
                                  ? number_format.background()
                                  : text_format.background();
    painter.fillRect(event->rect(), background);

    QTextDocument* document = editor->document();
    QAbstractTextDocumentLayout* layout = document->documentLayout();
    const int scroll = editor->verticalScrollBar()->value();
    const int current = editor->textCursor().blockNumber();
    const QFontMetrics metrics(editor->font());

    // Blocks are laid out top to bottom, so start at the first one on screen.
    QTextBlock block = editor->cursorForPosition(QPoint(0, 0)).block();
    while (block.isValid()) {
        const QRectF rect = layout->blockBoundingRect(block).translated(0, -scroll);
        if (rect.top() > event->rect().bottom()) break;
        if (block.isVisible() && rect.bottom() >= event->rect().top()) {
            const bool is_current = block.blockNumber() == current;
            const QTextCharFormat& format = is_current ? current_format : number_format;
            QFont font = editor->font();
            font.setBold(format.fontWeight() >= QFont::Bold);
            font.setItalic(format.fontItalic());
            painter.setFont(font);
            if (is_current && format.hasProperty(QTextFormat::BackgroundBrush))
                painter.fillRect(QRectF(0, rect.top(), width(), rect.height()),
                                 format.background());
            painter.setPen(format.hasProperty(QTextFormat::ForegroundBrush)
                               ? format.foreground().color()
                               : palette().color(QPalette::Text));
            // The first line of the block, which is where the number belongs
            // when the block wraps.
            const QTextLayout* text_layout = block.layout();
            const qreal top =
                rect.top() +
                (text_layout && text_layout->lineCount() > 0 ? text_layout->lineAt(0).y() : 0);
            const qreal line_height = text_layout && text_layout->lineCount() > 0
                                          ? text_layout->lineAt(0).height()
                                          : metrics.height();
            painter.drawText(QRectF(0, top, width() - 8, line_height),
                             Qt::AlignRight | Qt::AlignVCenter,
                             QString::number(block.blockNumber() + 1));
        }
        block = block.next();
    }
}
