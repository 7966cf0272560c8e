#pragma once

#include "commands/shortcutconflicts.h"

#include <QWidget>

#include <vector>

class CommandTable;
struct CommandRecord;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QTableWidgetItem;
class SearchEdit;

// The preferences' form over the command table's shortcuts: one row per
// command, in the table's sorted order, with the shortcut in force and a
// "Default" button. Edits stay here until the window applies them.
class ShortcutsWidget : public QWidget {
    Q_OBJECT

public:
    // The table outlives the widget: the window that owns both closes this
    // one first.
    explicit ShortcutsWidget(CommandTable& commands, QWidget* parent = nullptr);

    // The table's shortcuts changed (the user's file was read again): rows
    // the user has not touched follow.
    void refresh();
    bool isModified() const;
    // Every row as it stands in the form.
    std::vector<ShortcutAssignment> assignments() const;
    // The conflicts among the rows as they stand, as rich text blocks; empty
    // when there are none.
    QString conflictBlocks() const;
    // Puts the edited rows into the table: a blank text where the command
    // has a default binds nothing and is written "(none)"; any other text is
    // stored as given and binds what it parses to.
    void apply();

    QTableWidget* table() const { return table_; }
    SearchEdit* searchEdit() const { return search_edit; }
    QLineEdit* shortcutEdit(const QString& name) const;
    QPushButton* defaultButton(const QString& name) const;
    QPushButton* restoreDefaultsButton() const { return restore_button; }

signals:
    void updateSignal();

public slots:
    void onSearchTextChanged(const QString& text);
    void onRestoreDefaultsClicked();

private:
    // One command's row. Rows move when a search ranks them, so everything
    // about a command is reached through its line, not its row number.
    struct Line {
        CommandRecord* record = nullptr;
        QString origin; // the table's shortcut the row last showed
        QTableWidgetItem* item = nullptr;
        QLineEdit* edit = nullptr;
        QPushButton* default_button = nullptr;
    };

    Line* lineOf(const QString& name);
    const Line* lineOf(const QString& name) const;
    // The user changed the row since it last showed the table's shortcut.
    static bool isEdited(const Line& line);
    void setText(Line& line, const QString& text);
    static void updateRowState(Line& line);

    CommandTable& commands;
    std::vector<Line> lines; // in the table's sorted order
    SearchEdit* search_edit = nullptr;
    QTableWidget* table_ = nullptr;
    QPushButton* restore_button = nullptr;
    bool filling = false;
};
