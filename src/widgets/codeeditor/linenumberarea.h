#pragma once

#include <QWidget>

class CodeEditor;
class SyntaxStyle;

// The strip left of a CodeEditor's text with the number of each line, the
// cursor's line in its own format.
class LineNumberArea : public QWidget {
    Q_OBJECT
public:
    explicit LineNumberArea(CodeEditor* editor);

    void setSyntaxStyle(SyntaxStyle* style);
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    CodeEditor* editor;
    SyntaxStyle* style;
};
