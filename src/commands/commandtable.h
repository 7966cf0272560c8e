#pragma once

#include "commands/commandrecord.h"

#include <QHash>
#include <QList>
#include <QPointer>
#include <QString>

#include <memory>
#include <vector>

struct CommandGate;
class QMenu;
class QMenuBar;
class QWidget;

// Every command of the program, one row each, in registration order. Menus,
// shortcuts, the launcher and the shortcut file are all views of it.
//
// The table owns its actions: they are parented to the window only so that
// their shortcuts belong to it. Moving a table keeps every record where it
// is, so pointers into it stay good.
class CommandTable {
public:
    // Builds every row. Each action is connected to the parent's slot of its
    // row; a row whose slot the parent lacks stays disabled and is left out
    // of the launcher. With no parent nothing is connected: that form serves
    // the writer of the default shortcut file.
    explicit CommandTable(QWidget* parent = nullptr);
    ~CommandTable();
    CommandTable(CommandTable&& other) noexcept;
    CommandTable& operator=(CommandTable&& other) noexcept;
    CommandTable(const CommandTable&) = delete;
    CommandTable& operator=(const CommandTable&) = delete;

    // In registration order.
    const std::vector<CommandRecord>& records() const { return records_; }
    // By name, in code-unit order; the launcher, the context update and the
    // shortcut file walk this.
    const std::vector<CommandRecord*>& sorted() const { return sorted_; }
    // Null for an unknown name.
    CommandRecord* record(const QString& name) const;

    // The slot a row's name implies.
    static QByteArray slotName(const QString& name);

    // Enables each available row whose required contexts are all in `context`
    // and whose barred ones are not.
    void setContext(quint32 context);
    quint32 context() const { return context_; }

    // Rows the launcher offers at the moment: in the launcher, available and
    // enabled, in the sorted order.
    std::vector<const CommandRecord*> launcherRecords() const;

    // Clears the bar and fills it in its fixed order; the rows that no menu
    // holds are added to the parent so that their shortcuts work. Returns
    // the room the bar takes in the title bar.
    int buildMenus(QMenuBar* bar);
    // The submenu of "Open Recent File", made by buildMenus and kept across
    // rebuilds; its entries are the window's to fill.
    QMenu* recentFilesMenu() const { return recent_menu.get(); }

    // Sets a row's shortcut in force: the action gets what `text` parses to.
    void setShortcut(CommandRecord& record, const QString& text);
    // The user's shortcuts by command name: "(none)" clears a row, a blank or
    // invalid text leaves its default, a name not given leaves its default.
    void applyUserShortcuts(const QHash<QString, QString>& user_texts);

    // "Check for Updates" is shown and offered exactly when the update check
    // is on.
    void setCheckForUpdatesEnabled(bool on);

private:
    // Gives a key that enabled rows share to the row with the narrower gate.
    void shareKeys();
    void addRow(const CommandGate& gate, const QString& label, const QString& name,
                const QString& shortcut, int setting);
    void fillMenu(QMenu* menu, QStringView entries);
    void releaseMenu(QMenu* menu);
    void release();

    std::vector<CommandRecord> records_;
    std::vector<CommandRecord*> sorted_;
    QHash<QString, int> index_by_name; // into records_
    QPointer<QWidget> parent_;
    bool had_parent = false;
    std::unique_ptr<QMenu> recent_menu;
    quint32 context_ = TableOpen | TableFocus;
};
