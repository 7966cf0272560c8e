#include "contextrules.h"

namespace {

// Any bit that needs a table in front of the user and lands on the grid
// unless an editor already holds the keyboard.
quint32 focusTable(quint32 set) {
    set |= TableOpen;
    if (!(set & (TableFocus | CellEditing))) set |= TableFocus;
    return set;
}

} // namespace

quint32 contextAdded(quint32 set, quint32 value) {
    set |= value;
    if (value == kAnyContext) return set;
    // The rules run in a fixed order, and a later one may undo part of an
    // earlier one (TableOpen sets TableFocus, CellEditing then clears it).
    if (value & TableOpen)
        if (!(set & CellEditing)) set |= TableFocus;
    if (value & FolderOpen) set = focusTable(set);
    if (value & TableFocus) set = (set | TableOpen) & ~quint32(CellEditing);
    if (value & CellEditing) set = (set | TableOpen) & ~quint32(TableFocus);
    if (value & (MultiCellSelection | TableReserved | FileOnDisk | LauncherOpen))
        set = focusTable(set);
    if (value & (FindMode | ReplaceMode | PanelReserved1)) set = focusTable(set | FindPanelOpen);
    if (value & PanelReserved2) set |= FindPanelOpen | TableOpen;
    if (value & (FiltersPresent | HiddenPresent)) set |= DataNotVisible | TableOpen;
    return set;
}

quint32 contextRemoved(quint32 set, quint32 value) {
    set &= ~value;
    if (value & TableOpen) set &= ~quint32(TableFocus | CellEditing);
    if ((value & TableFocus) && set != 0) set |= CellEditing;
    if ((value & CellEditing) && set != 0) set |= TableFocus;
    if (value & FindPanelOpen)
        set &= ~quint32(FindMode | ReplaceMode | PanelReserved1 | PanelReserved2);
    if (((value & FiltersPresent) && !(set & HiddenPresent)) ||
        ((value & HiddenPresent) && !(set & FiltersPresent)))
        set &= ~quint32(DataNotVisible);
    return set;
}

bool contextsOverlap(quint32 a, quint32 b) {
    return (contextAdded(0, a) & contextAdded(0, b)) >= 2;
}
