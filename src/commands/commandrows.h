#pragma once

#include "commands/settingid.h"

#include <QtGlobal>

#include <vector>

// The rows of the command table and the layout of the menu bar, as data.

struct CommandEntry {
    const char* label;         // menu text; the name is this without its "&"
    const char* shortcut = ""; // in the shortcut notation
    int setting = SettingId::Count;
    const char* name = nullptr; // only where the name is not the label's text
};

// What a run of rows shares.
struct CommandGate {
    const char* category;
    int kind;
    int in_launcher;
    quint32 required;
    quint32 barred;
};

// Rows that share a category and a gate, in registration order.
struct CommandRun {
    CommandGate gate;
    std::vector<CommandEntry> entries;
};

const std::vector<CommandRun>& commandRuns();

// One menu of the bar. Entries are row names separated by ";", "—" stands
// for a separator and "[Title: a; b]" for a submenu.
struct MenuLayout {
    const char* title;
    const char* entries;
};

const std::vector<MenuLayout>& menuLayout();

// Rows in no menu whose shortcuts must still work: their actions go straight
// onto the window.
const std::vector<const char*>& offMenuCommands();
