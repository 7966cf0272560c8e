#pragma once

#include <QLineEdit>

// The line edit that opens in a cell. Keys that move out of the cell are left
// to the delegate's filter and the view, and it tells while a key is down so
// that an Alt code typed on the keypad reaches it whole.
class QuickEdit : public QLineEdit {
    Q_OBJECT
public:
    explicit QuickEdit(QWidget* parent = nullptr);

    // False when the edit should keep the cell's text with the cursor at its
    // end instead of the whole text selected, so that typing appends.
    bool start_select_all = true;
    bool key_held = false;
    // A right click means a context menu on the text, whose selection must stay.
    bool opened_by_right_click = false;

signals:
    void unicodeTypingSignal(bool enabled);

protected:
    void focusInEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
};
