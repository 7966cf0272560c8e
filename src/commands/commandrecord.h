#pragma once

#include "commands/contextrules.h"
#include "commands/settingid.h"

#include <QByteArray>
#include <QKeySequence>
#include <QList>
#include <QString>

class QAction;

// One row of the command table: what a command is called, where it is shown,
// which keys fire it, and when it may fire.
struct CommandRecord {
    enum Kind : int {
        Plain = 0,
        GlobalSetting = 1, // changes a Global scope setting
        TableSetting = 2,  // changes a Table scope setting
    };

    QString name;     // unique; the key of the shortcut file
    QString category; // levels joined by "/"; "-" for none
    int kind = Plain;
    int inLauncher = 1;
    quint32 requiredContexts = kAnyContext; // all must be set; kAnyContext: none needed
    quint32 barredContexts = 0;             // none may be set
    QString shortcut;                       // in force, in the shortcut notation
    QString defaultShortcut;
    // Every sequence `shortcut` binds. The action holds them all unless an
    // enabled row with a narrower gate shares one (CommandTable::setContext).
    QList<QKeySequence> keys;
    QAction* action = nullptr;
    int setting = SettingId::Count;

    QString label;   // menu text with its "&" access key
    QByteArray slot; // the receiver's slot, without its parentheses
    // The receiver has the slot. A row without it stays disabled and out of
    // the launcher until the command is built.
    bool available = false;
};

inline bool isEnabled(const CommandRecord& record, quint32 context) {
    return (record.requiredContexts == kAnyContext ||
            (context & record.requiredContexts) == record.requiredContexts) &&
           (context & record.barredContexts) == 0;
}

// The text the launcher shows for a row.
inline QString displayName(const CommandRecord& record) {
    if (record.category == u"-") return record.name;
    return QStringLiteral("%1: %2").arg(record.category, record.name);
}
