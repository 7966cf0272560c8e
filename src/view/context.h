#pragma once

#include <QMetaType>

// What the user can do at this moment, as one set of bits held by the main
// window and mirrored down into the current view and its model. Table bits
// belong to a tab, window bits to the main window.
enum Context : quint32 {
    NoContext = 0,
    TableOpen = 0x1,
    FolderOpen = 0x2,
    TableFocus = 0x4,
    CellEditing = 0x8,
    EditorPaneShown = 0x10,
    MultiCellSelection = 0x20,
    TableReserved = 0x40,
    FileOnDisk = 0x80,
    LauncherOpen = 0x100,
    FindPanelOpen = 0x200,
    FindMode = 0x400,
    ReplaceMode = 0x800,
    PanelReserved1 = 0x1000,
    PanelReserved2 = 0x2000,
    FiltersPresent = 0x4000,
    HiddenPresent = 0x8000,
    DataNotVisible = 0x10000,
    ReadOnly = 0x20000,
    WindowSpare = 0x100000,
};

constexpr quint32 kTableContextMask = 0x3C0E9;
constexpr quint32 kWindowContextMask = 0x103F16;

Q_DECLARE_METATYPE(Context)
