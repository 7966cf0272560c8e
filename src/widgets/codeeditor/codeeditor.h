#pragma once

#include "widgets/codeeditor/stylesyntaxhighlighter.h"

#include <QCompleter>
#include <QPointer>
#include <QTextEdit>

class LineNumberArea;
class SyntaxStyle;

// A source text box with line numbers, syntax colours from a SyntaxStyle,
// the current line, other uses of the word under the cursor and the matching
// bracket marked, and the small helps of a code editor: brackets and quotes
// closed as they open, indentation kept, Tab and Backtab on selected lines.
class CodeEditor : public QTextEdit {
    Q_OBJECT
public:
    explicit CodeEditor(QWidget* parent = nullptr);

    // Null stands for the default scheme. The style must outlive the editor;
    // SyntaxStyle::forTheme gives ones that do.
    void setSyntaxStyle(SyntaxStyle* style);
    SyntaxStyle* syntaxStyle() const { return style; }

    // Runs on this editor's document with this editor's style. One without a
    // parent becomes the editor's child; null removes the highlighting.
    void setHighlighter(StyleSyntaxHighlighter* highlighter);
    StyleSyntaxHighlighter* highlighter() const { return syntax_highlighter; }

    // Pops up while a word is typed. One without a parent becomes the
    // editor's child; null turns completion off.
    void setCompleter(QCompleter* completer);
    QCompleter* completer() const { return word_completer; }

    void setAutoIndentation(bool on) { auto_indentation = on; }
    bool autoIndentation() const { return auto_indentation; }
    void setAutoParentheses(bool on) { auto_parentheses = on; }
    bool autoParentheses() const { return auto_parentheses; }
    // Tab writes the replacement text instead of a tab character.
    void setTabReplace(bool on) { tab_replace = on; }
    bool tabReplace() const { return tab_replace; }
    void setTabReplacement(const QString& text) { tab_replacement = text; }
    QString tabReplacement() const { return tab_replacement; }
    void setHighlightCurrentLine(bool on);
    bool highlightCurrentLine() const { return highlight_current_line; }
    void setHighlightOccurrences(bool on);
    bool highlightOccurrences() const { return highlight_occurrences; }

    int lineNumberAreaWidth() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    bool handleTab(QKeyEvent* event);
    bool handleReturn(QKeyEvent* event);
    bool handleParentheses(QKeyEvent* event);
    // Adds or removes one indentation at the start of every line the
    // selection touches, and selects those lines whole.
    void indentLines(bool unindent);
    void updateCompleter(QKeyEvent* event);
    void insertCompletion(const QString& completion);

    void updateExtraSelections();
    void updateLineNumberArea();
    void applyStyle();

    LineNumberArea* line_number_area;
    SyntaxStyle* style;
    QPointer<StyleSyntaxHighlighter> syntax_highlighter;
    QPointer<QCompleter> word_completer;

    bool auto_indentation = true;
    bool auto_parentheses = true;
    bool tab_replace = true;
    QString tab_replacement = QStringLiteral("    ");
    bool highlight_current_line = true;
    bool highlight_occurrences = true;
};
