#pragma once

#include <QStringList>

// Sub-commands that need a GUI application (the offscreen platform unless
// another is set): they measure the table model and the grid.
int benchGui(int argc, char** argv);
bool isGuiCommand(const char* command);
int benchModel(const QStringList& args);
int benchView(const QStringList& args);
int benchType(const QStringList& args);
int benchLauncher(const QStringList& args);
int benchFind(const QStringList& args);
int benchTransform(const QStringList& args);
int benchRows(const QStringList& args);
int benchSortView(const QStringList& args);
