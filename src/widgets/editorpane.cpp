#include "widgets/editorpane.h"

#include <QKeyEvent>

EditorPane::EditorPane(QWidget* parent) : QPlainTextEdit(parent) {
    setFocusPolicy(Qt::WheelFocus);
}

bool EditorPane::event(QEvent* event) {
    // Tab and Backtab must be caught here: QWidget::event turns them into
    // focus moves before keyPressEvent would see them.
    if (event->type() == QEvent::KeyPress && !consume_navigation_keys) {
        auto* key_event = static_cast<QKeyEvent*>(event);
        const int key = key_event->key();
        const Qt::KeyboardModifiers mods = key_event->modifiers();
        if (key == Qt::Key_Tab && mods == Qt::NoModifier) {
            key_event->setAccepted(false);
            emit editingFinishedSignal();
            emit nextColumnWithColumnResetSignal();
            return true;
        }
        if (key == Qt::Key_Backtab) {
            key_event->setAccepted(false);
            emit editingFinishedSignal();
            emit previousColumnWithColumnResetSignal();
            return true;
        }
        if (key == Qt::Key_Tab && mods == Qt::ControlModifier) {
            // Plain Tab now leaves the pane, so this is how a tab gets in.
            insertPlainText(QStringLiteral("\t"));
            return true;
        }
    }
    return QPlainTextEdit::event(event);
}

void EditorPane::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const Qt::KeyboardModifiers mods = event->modifiers();
    const bool enter = key == Qt::Key_Enter || key == Qt::Key_Return;

    if (!consume_navigation_keys) {
        const bool plain_enter =
            (key == Qt::Key_Enter && (mods == Qt::NoModifier || mods == Qt::KeypadModifier)) ||
            (key == Qt::Key_Return && mods == Qt::NoModifier);
        if (plain_enter) {
            emit editingFinishedSignal();
            emit nextRowWithColumnResetSignal();
            return;
        }
        if (enter && (mods & ~Qt::KeypadModifier) == Qt::ControlModifier) {
            // Plain Enter now commits, so Ctrl+Enter is the line break.
            QKeyEvent plain(QEvent::KeyPress, Qt::Key_Enter, Qt::NoModifier, QStringLiteral("\n"));
            QPlainTextEdit::keyPressEvent(&plain);
            return;
        }
    }
    if (key == Qt::Key_Escape && mods == Qt::NoModifier) {
        // There is no cancel: what was typed stays, as in a cell.
        emit editingFinishedSignal();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
}

void EditorPane::focusInEvent(QFocusEvent* event) {
    // Shift+Tab out of the table lands here by the focus chain, not by the
    // user's choice: it ends the edit instead of starting one.
    if (event->reason() == Qt::BacktabFocusReason) {
        emit editingFinishedSignal();
        return;
    }
    if (event->reason() == Qt::MouseFocusReason) emit EditorPaneFocusInSignal();
    QPlainTextEdit::focusInEvent(event);
}

void EditorPane::focusOutEvent(QFocusEvent* event) {
    if (event->reason() == Qt::MouseFocusReason) {
        // A click elsewhere commits, as leaving a cell does.
        emit editingFinishedSignal();
        emit EditorPaneFocusOutSignal();
    }
    QPlainTextEdit::focusOutEvent(event);
}
