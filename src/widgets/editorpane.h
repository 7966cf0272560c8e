#pragma once

#include <QPlainTextEdit>

// The multi-line box below the grid that edits the main cell away from the
// grid. Unless it is told to keep them as a plain text box, Tab, Backtab,
// Enter and Escape commit the edit and move in the table as they do in a cell.
class EditorPane : public QPlainTextEdit {
    Q_OBJECT
public:
    explicit EditorPane(QWidget* parent = nullptr);

    // Set by the owner while the pane shows a cell of a read-only table.
    bool read_only_mode = false;
    // True: Tab writes a tab and Enter a line break, nothing leaves the pane.
    bool consume_navigation_keys = true;

signals:
    void editingFinishedSignal();
    void nextRowWithColumnResetSignal();
    void nextColumnWithColumnResetSignal();
    void previousColumnWithColumnResetSignal();
    void EditorPaneFocusInSignal();
    void EditorPaneFocusOutSignal();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
};
