#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

// The shortcut notation of the command table and the shortcut file: lower
// case, "+" between modifiers and key ("ctrl+shift+n"), "," between the two
// steps of a chord ("ctrl+k,ctrl+t"), "|" between alternatives
// ("ctrl+e|f2").

// The key sequences a text binds, in order. Parts that name no key are
// skipped silently. Enter and Return are one key to the user, so a part with
// either also binds its twin, unless the text lists the twin itself.
QList<QKeySequence> parseShortcut(const QString& text);

// The notation of a list of sequences; the twin that parseShortcut adds for
// Enter or Return is left out, so that parsing a table's text and writing it
// back gives that text again.
QString shortcutText(const QList<QKeySequence>& sequences);
