#include "widgets/codeeditor/codeeditor.h"

#include "widgets/codeeditor/linenumberarea.h"
#include "widgets/codeeditor/stylesyntaxhighlighter.h"
#include "widgets/codeeditor/syntaxstyle.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlock>

namespace {

const QString non_word_characters = QStringLiteral("~!@#$%^&*()_+{}|:\"<>?,./;'[]\\-=");

// Openers at even, their closers at odd positions.
const QString pairs = QStringLiteral("()[]{}\"\"''");

// The bracket matching looks this far and no further, so a cursor on the
// first brace of a huge document does not walk all of it at every move.
constexpr int bracket_search_limit = 200000;

bool isWordCharacter(QChar c) {
    return !c.isSpace() && !non_word_characters.contains(c);
}

bool isCompletionCharacter(QChar c) {
    return c.isLetterOrNumber() || c == u'_';
}

QChar characterAt(const QTextDocument* document, int position) {
    if (position < 0 || position >= document->characterCount()) return {};
    return document->characterAt(position);
}

int pairIndex(QChar c, int parity) {
    for (int i = parity; i < pairs.size(); i += 2)
        if (pairs[i] == c) return i;
    return -1;
}

// The word around `position` in the block, as [start, end).
std::pair<int, int> wordAround(const QString& text, int position) {
    int start = position;
    while (start > 0 && isWordCharacter(text[start - 1]))
        --start;
    int end = position;
    while (end < text.size() && isWordCharacter(text[end]))
        ++end;
    return {start, end};
}

// The position of the bracket matching the one at `position`, or -1.
int matchingBracket(const QTextDocument* document, int position) {
    const QChar bracket = characterAt(document, position);
    static const QString brackets = QStringLiteral("()[]{}");
    const int index = brackets.indexOf(bracket);
    if (index < 0) return -1;
    const bool forward = index % 2 == 0;
    const QChar partner = brackets[forward ? index + 1 : index - 1];

    int depth = 0;
    QTextBlock block = document->findBlock(position);
    int in_block = position - block.position();
    int walked = 0;
    while (block.isValid() && walked < bracket_search_limit) {
        const QString text = block.text();
        if (forward) {
            for (int i = in_block; i < text.size(); ++i, ++walked) {
                if (text[i] == bracket)
                    ++depth;
                else if (text[i] == partner && --depth == 0)
                    return block.position() + i;
            }
            block = block.next();
            in_block = 0;
        } else {
            for (int i = std::min<int>(in_block, text.size() - 1); i >= 0; --i, ++walked) {
                if (text[i] == bracket)
                    ++depth;
                else if (text[i] == partner && --depth == 0)
                    return block.position() + i;
            }
            block = block.previous();
            in_block = block.isValid() ? block.length() : 0;
        }
    }
    return -1;
}

QTextEdit::ExtraSelection selectionAt(QTextDocument* document, int start, int end,
                                      const QTextCharFormat& format) {
    QTextEdit::ExtraSelection selection;
    selection.cursor = QTextCursor(document);
    selection.cursor.setPosition(start);
    selection.cursor.setPosition(end, QTextCursor::KeepAnchor);
    selection.format = format;
    return selection;
}

} // namespace

CodeEditor::CodeEditor(QWidget* parent)
    : QTextEdit(parent), line_number_area(new LineNumberArea(this)),
      style(SyntaxStyle::defaultStyle()) {
    QFont code_font(QStringLiteral("Consolas"), font().pointSize());
    // Consolas is rarely there outside Windows; the hint picks the system's
    // monospace face instead of a proportional fallback.
    code_font.setStyleHint(QFont::Monospace);
    code_font.setFixedPitch(true);
    setFont(code_font);
    setAcceptRichText(false);
    setLineWrapMode(QTextEdit::NoWrap);

    connect(this, &QTextEdit::cursorPositionChanged, this, [this] {
        updateExtraSelections();
        line_number_area->update();
    });
    connect(this, &QTextEdit::textChanged, this, [this] {
        updateLineNumberArea();
        updateExtraSelections();
    });
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
        line_number_area->update();
        // Occurrences are looked for on screen only.
        updateExtraSelections();
    });

    applyStyle();
    updateLineNumberArea();
    updateExtraSelections();
}

void CodeEditor::setSyntaxStyle(SyntaxStyle* new_style) {
    style = new_style ? new_style : SyntaxStyle::defaultStyle();
    applyStyle();
}

void CodeEditor::applyStyle() {
    const QTextCharFormat text = style->format(QStringLiteral("Text"));
    const QTextCharFormat selection = style->format(QStringLiteral("Selection"));
    QString sheet;
    auto add = [&sheet](const char* property, const QTextCharFormat& format,
                        QTextFormat::Property brush) {
        if (format.hasProperty(brush))
            sheet += QStringLiteral("%1: %2;\n")
                         .arg(QLatin1String(property), format.brushProperty(brush).color().name());
    };
    add("background-color", text, QTextFormat::BackgroundBrush);
    add("color", text, QTextFormat::ForegroundBrush);
    add("selection-background-color", selection, QTextFormat::BackgroundBrush);
    add("selection-color", selection, QTextFormat::ForegroundBrush);
    // A style sheet of its own, because the program's sheet colours every
    // widget and would win over a palette.
    setStyleSheet(QStringLiteral("CodeEditor {\n%1}\n").arg(sheet));

    line_number_area->setSyntaxStyle(style);
    if (syntax_highlighter) syntax_highlighter->setSyntaxStyle(style);
    updateExtraSelections();
}

void CodeEditor::setHighlighter(StyleSyntaxHighlighter* highlighter) {
    if (syntax_highlighter && syntax_highlighter != highlighter)
        syntax_highlighter->setDocument(nullptr);
    syntax_highlighter = highlighter;
    if (!highlighter) return;
    if (!highlighter->parent()) highlighter->setParent(this);
    // The style first: with no document yet it costs nothing, whereas the
    // document brings a full pass of its own.
    highlighter->setDocument(nullptr);
    highlighter->setSyntaxStyle(style);
    highlighter->setDocument(document());
}

void CodeEditor::setCompleter(QCompleter* completer) {
    if (word_completer) {
        word_completer->popup()->hide();
        disconnect(word_completer, nullptr, this, nullptr);
    }
    word_completer = completer;
    if (!completer) return;
    if (!completer->parent()) completer->setParent(this);
    completer->setWidget(this);
    completer->setCompletionMode(QCompleter::PopupCompletion);
    connect(completer, qOverload<const QString&>(&QCompleter::activated), this,
            &CodeEditor::insertCompletion);
}

void CodeEditor::setHighlightCurrentLine(bool on) {
    highlight_current_line = on;
    updateExtraSelections();
}

void CodeEditor::setHighlightOccurrences(bool on) {
    highlight_occurrences = on;
    updateExtraSelections();
}

int CodeEditor::lineNumberAreaWidth() const {
    return line_number_area->sizeHint().width();
}

void CodeEditor::updateLineNumberArea() {
    const int width = lineNumberAreaWidth();
    if (viewportMargins().left() != width) setViewportMargins(width, 0, 0, 0);
    const QRect viewport_rect = viewport()->geometry();
    line_number_area->setGeometry(contentsRect().left(), viewport_rect.top(), width,
                                  viewport_rect.height());
    line_number_area->update();
}

void CodeEditor::resizeEvent(QResizeEvent* event) {
    QTextEdit::resizeEvent(event);
    updateLineNumberArea();
    updateExtraSelections();
}

void CodeEditor::changeEvent(QEvent* event) {
    QTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        setTabStopDistance(QFontMetricsF(font()).horizontalAdvance(QLatin1Char(' ')) * 4);
        updateLineNumberArea();
    }
}

void CodeEditor::focusInEvent(QFocusEvent* event) {
    // One completer may serve several editors; it completes in the one in use.
    if (word_completer) word_completer->setWidget(this);
    QTextEdit::focusInEvent(event);
}

void CodeEditor::updateExtraSelections() {
    QList<ExtraSelection> selections;
    QTextDocument* doc = document();
    const QTextCursor cursor = textCursor();

    if (highlight_current_line) {
        ExtraSelection line;
        line.format.setBackground(style->format(QStringLiteral("CurrentLine")).background());
        line.format.setProperty(QTextFormat::FullWidthSelection, true);
        line.cursor = cursor;
        line.cursor.clearSelection();
        selections.append(line);
    }

    if (highlight_occurrences && !cursor.hasSelection()) {
        const QTextBlock block = cursor.block();
        const QString text = block.text();
        const auto [start, end] = wordAround(text, cursor.positionInBlock());
        if (end > start) {
            const QString word = text.mid(start, end - start);
            const int word_position = block.position() + start;
            const QTextCharFormat format = style->format(QStringLiteral("Occurrences"));
            const QTextBlock first = cursorForPosition(QPoint(0, 0)).block();
            const QTextBlock last =
                cursorForPosition(QPoint(viewport()->width(), viewport()->height())).block();
            for (QTextBlock b = first; b.isValid(); b = b.next()) {
                const QString line = b.text();
                for (qsizetype at = line.indexOf(word); at >= 0;
                     at = line.indexOf(word, at + word.size())) {
                    const qsizetype after = at + word.size();
                    if ((at > 0 && isWordCharacter(line[at - 1])) ||
                        (after < line.size() && isWordCharacter(line[after])))
                        continue;
                    const int position = b.position() + int(at);
                    if (position == word_position) continue;
                    selections.append(
                        selectionAt(doc, position, position + int(word.size()), format));
                }
                if (b == last) break;
            }
        }
    }

    // The bracket after the cursor first, as the one the user is looking at.
    const QTextCharFormat bracket_format = style->format(QStringLiteral("Parentheses"));
    for (const int position : {cursor.position(), cursor.position() - 1}) {
        const int match = matchingBracket(doc, position);
        if (match < 0) continue;
        selections.append(selectionAt(doc, position, position + 1, bracket_format));
        selections.append(selectionAt(doc, match, match + 1, bracket_format));
        break;
    }

    setExtraSelections(selections);
}

void CodeEditor::keyPressEvent(QKeyEvent* event) {
    if (word_completer && word_completer->popup()->isVisible()) {
        // The completer forwards every key it does not use itself; these
        // choose or dismiss a completion and must not also edit the text.
        switch (event->key()) {
        case Qt::Key_Enter:
        case Qt::Key_Return:
        case Qt::Key_Escape:
        case Qt::Key_Tab:
        case Qt::Key_Backtab:
            event->ignore();
            return;
        default:
            break;
        }
    }
    if (isReadOnly()) {
        QTextEdit::keyPressEvent(event);
        return;
    }
    if (handleTab(event) || handleReturn(event) || handleParentheses(event)) {
        updateCompleter(event);
        return;
    }
    QTextEdit::keyPressEvent(event);
    updateCompleter(event);
}

bool CodeEditor::handleTab(QKeyEvent* event) {
    if (event->key() == Qt::Key_Backtab) {
        indentLines(true);
        return true;
    }
    if (event->key() != Qt::Key_Tab || event->modifiers() != Qt::NoModifier) return false;
    if (textCursor().hasSelection()) {
        indentLines(false);
        return true;
    }
    if (!tab_replace) return false;
    insertPlainText(tab_replacement);
    return true;
}

bool CodeEditor::handleReturn(QKeyEvent* event) {
    if (!auto_indentation) return false;
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) return false;
    if ((event->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) return false;

    QTextCursor cursor = textCursor();
    const QString line = cursor.block().text();
    // The line's indentation, but no more than what lies before the cursor.
    int indent = 0;
    const int limit = std::min<int>(cursor.positionInBlock(), line.size());
    while (indent < limit && (line[indent] == u' ' || line[indent] == u'\t'))
        ++indent;
    cursor.beginEditBlock();
    cursor.insertBlock();
    cursor.insertText(line.left(indent));
    cursor.endEditBlock();
    setTextCursor(cursor);
    return true;
}

bool CodeEditor::handleParentheses(QKeyEvent* event) {
    if (!auto_parentheses) return false;
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return false;
    QTextCursor cursor = textCursor();
    const QTextDocument* doc = document();
    const QChar before = characterAt(doc, cursor.position() - 1);
    const QChar after = characterAt(doc, cursor.position());

    if (event->key() == Qt::Key_Backspace) {
        // Taking back an opener takes back the closer that came with it.
        const int opener = pairIndex(before, 0);
        if (cursor.hasSelection() || opener < 0 || after != pairs[opener + 1] ||
            cursor.positionInBlock() == 0)
            return false;
        cursor.beginEditBlock();
        cursor.deletePreviousChar();
        cursor.deleteChar();
        cursor.endEditBlock();
        return true;
    }

    if (event->text().size() != 1) return false;
    const QChar typed = event->text().front();

    // Typing the closer that was put in ahead of the cursor steps over it.
    if (!cursor.hasSelection() && pairIndex(typed, 1) >= 0 && after == typed) {
        cursor.movePosition(QTextCursor::NextCharacter);
        setTextCursor(cursor);
        return true;
    }

    const int opener = pairIndex(typed, 0);
    if (opener < 0) return false;
    const QChar closer = pairs[opener + 1];
    if (cursor.hasSelection()) {
        // The selection is put in brackets and stays selected inside them.
        const int start = cursor.selectionStart();
        const QString selected = cursor.selectedText();
        cursor.beginEditBlock();
        cursor.insertText(typed + selected + closer);
        cursor.endEditBlock();
        cursor.setPosition(start + 1);
        cursor.setPosition(start + 1 + int(selected.size()), QTextCursor::KeepAnchor);
        setTextCursor(cursor);
        return true;
    }
    // An apostrophe in a word, or a quote closing a string, is no opener.
    if (typed == closer && (before.isLetterOrNumber() || before == typed)) return false;
    cursor.insertText(QString(typed) + closer);
    cursor.movePosition(QTextCursor::PreviousCharacter);
    setTextCursor(cursor);
    return true;
}

void CodeEditor::indentLines(bool unindent) {
    QTextCursor cursor = textCursor();
    QTextDocument* doc = document();
    const QTextBlock first = doc->findBlock(cursor.selectionStart());
    QTextBlock last = doc->findBlock(cursor.selectionEnd());
    // A selection that ends at the start of a line does not take that line.
    if (last != first && cursor.selectionEnd() == last.position()) last = last.previous();
    const QString unit = tab_replace ? tab_replacement : QStringLiteral("\t");
    const int width = tab_replace ? int(tab_replacement.size()) : 4;

    cursor.beginEditBlock();
    for (QTextBlock block = first; block.isValid(); block = block.next()) {
        QTextCursor line(block);
        if (!unindent) {
            line.insertText(unit);
        } else {
            const QString text = block.text();
            int remove = 0;
            if (text.startsWith(u'\t'))
                remove = 1;
            else
                while (remove < width && remove < text.size() && text[remove] == u' ')
                    ++remove;
            line.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor, remove);
            line.removeSelectedText();
        }
        if (block == last) break;
    }
    cursor.endEditBlock();

    if (textCursor().hasSelection()) {
        cursor.setPosition(first.position());
        cursor.setPosition(last.position() + last.length() - 1, QTextCursor::KeepAnchor);
        setTextCursor(cursor);
    }
}

void CodeEditor::updateCompleter(QKeyEvent* event) {
    if (!word_completer) return;
    QAbstractItemView* popup = word_completer->popup();
    const QString typed = event->text();
    QTextCursor cursor = textCursor();
    const QString line = cursor.block().text();
    int start = cursor.positionInBlock();
    while (start > 0 && isCompletionCharacter(line[start - 1]))
        --start;
    const QString prefix = line.mid(start, cursor.positionInBlock() - start);

    // Two letters before offering anything, and only while a word is typed:
    // moving the cursor or deleting closes the list.
    if (typed.isEmpty() || !isCompletionCharacter(typed.back()) || prefix.size() < 2) {
        popup->hide();
        return;
    }
    if (prefix != word_completer->completionPrefix()) {
        word_completer->setCompletionPrefix(prefix);
        popup->setCurrentIndex(word_completer->completionModel()->index(0, 0));
    }
    const int count = word_completer->completionCount();
    if (count == 0 || (count == 1 && word_completer->currentCompletion().compare(
                                         prefix, Qt::CaseSensitive) == 0)) {
        popup->hide();
        return;
    }
    QRect rect = cursorRect();
    rect.setWidth(popup->sizeHintForColumn(0) + popup->verticalScrollBar()->sizeHint().width());
    word_completer->complete(rect);
}

void CodeEditor::insertCompletion(const QString& completion) {
    if (word_completer->widget() != this) return;
    QTextCursor cursor = textCursor();
    const QString line = cursor.block().text();
    int start = cursor.positionInBlock();
    while (start > 0 && isCompletionCharacter(line[start - 1]))
        --start;
    cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor,
                        cursor.positionInBlock() - start);
    cursor.insertText(completion);
    setTextCursor(cursor);
}
