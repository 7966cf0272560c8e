#pragma once

#include "widgets/lineedit.h"

class QAction;

// A line edit for search terms: a magnifier glyph in front, a clear button
// behind, and Escape empties it before it goes to the parent.
class SearchEdit : public LineEdit {
    Q_OBJECT
public:
    explicit SearchEdit(QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // Drawn in the text colour, so it follows the style sheet's theme.
    void updateGlyph();

    QAction* glyph_action;
};
