#pragma once

#include <QString>
#include <QStringList>

#include <vector>

// One command's shortcut as the user is about to apply it.
struct ShortcutAssignment {
    QString name;
    QString text; // in the shortcut notation; "(none)" or blank binds nothing
    quint32 required_contexts = 0;
    QString default_text;
};

// A key sequence bound to several commands that can be enabled at the same
// moment, so that the key fires none of them.
struct ShortcutConflict {
    QString sequence; // as the first of the commands writes it
    QStringList names;
};

// Commands sharing a key sequence are listed when their required contexts
// overlap with those of at least one other command on that sequence: "ctrl+e"
// that starts an edit with the grid focused and stops it while editing is
// not a conflict. Nor is a clash among commands that all keep their
// default shortcuts: the built-in table shares a few keys on purpose, and
// the command gates tell those apart. Enter and Return count as one key, as
// they do when the shortcut is parsed. Conflicts come in the order of the first command that
// binds each sequence; names keep the order of `rows`.
std::vector<ShortcutConflict> findShortcutConflicts(const std::vector<ShortcutAssignment>& rows);

// The conflicts as rich text: per sequence "<b>%1</b>:", then "<br>%1" for
// each command, and "<br><br>" to close the block. Empty without conflicts.
QString shortcutConflictBlocks(const std::vector<ShortcutConflict>& conflicts);
