#include "widgets/quickedit.h"

#include <QCoreApplication>
#include <QKeyEvent>

QuickEdit::QuickEdit(QWidget* parent) : QLineEdit(parent) {
    setAttribute(Qt::WA_MacShowFocusRect, false);
}

void QuickEdit::focusInEvent(QFocusEvent* event) {
    if (!start_select_all && !opened_by_right_click) {
        deselect();
        end(false);
        // The base selects everything when the focus comes by Tab or a
        // shortcut. Right arrives after that and drops the selection at its
        // end, where the cursor already is.
        QCoreApplication::postEvent(this,
                                    new QKeyEvent(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier));
        QCoreApplication::postEvent(
            this, new QKeyEvent(QEvent::KeyRelease, Qt::Key_Right, Qt::NoModifier));
    }
    QLineEdit::focusInEvent(event);
}

void QuickEdit::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const Qt::KeyboardModifiers mods = event->modifiers();
    const bool leaves =
        (key == Qt::Key_Enter && (mods == Qt::NoModifier || mods == Qt::KeypadModifier)) ||
        (key == Qt::Key_Return && mods == Qt::NoModifier) || key == Qt::Key_Up ||
        key == Qt::Key_Down;
    if (leaves) {
        // Not even the base may see these: it would send editingFinished on
        // Return, closing the editor before the view has moved.
        event->ignore();
        return;
    }
    key_held = true;
    emit unicodeTypingSignal(true);
    QLineEdit::keyPressEvent(event);
}

void QuickEdit::keyReleaseEvent(QKeyEvent* event) {
    key_held = false;
    emit unicodeTypingSignal(false);
    QLineEdit::keyReleaseEvent(event);
}

void QuickEdit::mousePressEvent(QMouseEvent* event) {
    opened_by_right_click = event->button() == Qt::RightButton;
    QLineEdit::mousePressEvent(event);
}

void QuickEdit::closeEvent(QCloseEvent* event) {
    // Closing between the press and release of an Alt code would lose the
    // character the system is about to send.
    if (key_held) {
        event->ignore();
        return;
    }
    QLineEdit::closeEvent(event);
}
