#include "widgets/lineedit.h"

LineEdit::LineEdit(QWidget* parent) : QLineEdit(parent) {
    setAttribute(Qt::WA_MacShowFocusRect, false);
}

void LineEdit::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    emit focusInSignal();
}

void LineEdit::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    emit focusOutSignal();
}
