#pragma once

#include "view/context.h"

#include <QtGlobal>

// The rules by which the window's Context set changes. A bit is never set or
// cleared alone: each one drags the bits it implies along, so that the set
// always describes a state the user can actually be in.

// Marks a row that is enabled whatever the set holds.
constexpr quint32 kAnyContext = 0xFFFFFFFF;

// The set after `value` is added. Adding kAnyContext sets every bit and
// implies nothing further.
quint32 contextAdded(quint32 set, quint32 value);

// The set after `value` is removed. Removing TableFocus from a set that still
// holds something turns on CellEditing, and the other way round: one of the
// two is on whenever anything else is.
quint32 contextRemoved(quint32 set, quint32 value);

// Whether two required sets can hold at once: both are expanded by the add
// rules from an empty set and must share more than TableOpen alone.
bool contextsOverlap(quint32 a, quint32 b);

// The set when another tab becomes current: the window keeps its own bits
// and takes the table bits the new tab stored.
constexpr quint32 contextForTab(quint32 window_set, quint32 table_set) {
    return (window_set & kWindowContextMask) | (table_set & kTableContextMask);
}
