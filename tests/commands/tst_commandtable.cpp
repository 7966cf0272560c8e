#include "commands/commandtable.h"
#include "commands/shortcutnotation.h"

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>

namespace {

// A window with the slots of a few commands, spread over the gates.
class Receiver : public QWidget {
    Q_OBJECT

public:
    QStringList fired;

public slots:
    void commandNewFile() { fired << "New File"; }
    void commandExit() { fired << "Exit"; }
    void commandEditSelectedCell() { fired << "Edit Selected Cell"; }
    void commandStopEditing() { fired << "Stop Editing"; }
    void commandSaveVisibleDataAs() { fired << "Save Visible Data As"; }
    void commandFindAllMatches() { fired << "Find All Matches"; }
    void commandReplaceAllMatches() { fired << "Replace All Matches"; }
    void commandInsertRowsAfter() { fired << "Insert Row(s) After"; }
    void commandInsertCellsMoveRestOfRowRight() { fired << "Insert Cells, Move Rest of Row Right"; }
    void commandSelectUp() { fired << "Select Up"; }
    void commandToggleShowTabBar() { fired << "Toggle Show Tab Bar"; }
    void commandRemoveSelectedCellsAndTheRestOfTheirRows() { fired << "Remove Rest of Rows"; }
    void commandGoToFile() { fired << "Go to File"; }
    void commandSwitchToTab10() { fired << "Switch to Tab 10"; }
};

const QSet<QString> kReceiverRows = {"New File",
                                     "Exit",
                                     "Edit Selected Cell",
                                     "Stop Editing",
                                     "Save Visible Data As",
                                     "Find All Matches",
                                     "Replace All Matches",
                                     "Insert Row(s) After",
                                     "Insert Cells, Move Rest of Row Right",
                                     "Select Up",
                                     "Toggle Show Tab Bar",
                                     "Remove Selected Cells and the Rest of Their Rows",
                                     "Go to File",
                                     "Switch to Tab 10"};

quint32 build(std::initializer_list<quint32> added, std::initializer_list<quint32> removed = {}) {
    quint32 set = 0;
    for (quint32 value : added)
        set = contextAdded(set, value);
    for (quint32 value : removed)
        set = contextRemoved(set, value);
    return set;
}

// The smallest set the add rules reach with both rows' requirements in it.
quint32 jointContext(const CommandRecord& a, const CommandRecord& b) {
    auto need = [](quint32 c) { return c == kAnyContext ? 0u : c; };
    return contextAdded(contextAdded(0, need(a.requiredContexts)), need(b.requiredContexts));
}

// The path of menu titles down to an action, and its index there, with
// separators counted.
bool locate(QMenu* menu, QAction* action, QString path, QString* found_path, int* found_index) {
    const QList<QAction*> items = menu->actions();
    for (int i = 0; i < items.size(); ++i) {
        if (items[i] == action) {
            *found_path = path;
            *found_index = i;
            return true;
        }
        if (QMenu* sub = items[i]->menu())
            if (locate(sub, action, path + "/" + sub->title(), found_path, found_index))
                return true;
    }
    return false;
}

} // namespace

class TestCommandTable : public QObject {
    Q_OBJECT

private slots:
    void tableWalk();
    void slotNames_data();
    void slotNames();
    void parseShortcut_data();
    void parseShortcut();
    void noCollidingShortcuts();
    void contextRules_data();
    void contextRules();
    void enabledFollowsContext_data();
    void enabledFollowsContext();
    void menus_data();
    void menus();
    void keys_data();
    void keys();
};

void TestCommandTable::tableWalk() {
    const CommandTable table;
    const auto& rows = table.records();
    QCOMPARE(rows.size(), size_t(323));
    QCOMPARE(rows.front().name, QString("New File"));
    QCOMPARE(rows.back().name, QString("Toggle Detect Imported File Type Upon Opening File"));
    QCOMPARE(rows[322 - 58].name, QString("Switch to Tab 10")); // the last plain row

    QSet<QString> names;
    QSet<QByteArray> slot_names;
    int settings_rows = 0;
    for (const CommandRecord& row : rows) {
        QVERIFY2(!names.contains(row.name), qPrintable(row.name));
        names.insert(row.name);
        slot_names.insert(row.slot);
        QVERIFY(row.action);
        QCOMPARE(QString(row.label).remove('&'), row.name == "Fill Selected Cells with UUID/GUID"
                                                     ? QString("List Character Encodings")
                                                     : row.name);
        // Setting rows name a setting, plain rows none.
        QCOMPARE(row.kind == CommandRecord::Plain, row.setting == SettingId::Count);
        settings_rows += row.kind != CommandRecord::Plain;
        // Shortcuts parse, and write back as written.
        QCOMPARE(row.defaultShortcut, row.shortcut);
        if (!row.shortcut.isEmpty()) {
            const QList<QKeySequence> keys = ::parseShortcut(row.shortcut);
            QVERIFY2(!keys.isEmpty(), qPrintable(row.shortcut));
            QCOMPARE(shortcutText(keys), row.shortcut);
            QCOMPARE(row.action->shortcuts(), keys);
        }
    }
    QCOMPARE(slot_names.size(), names.size());
    QCOMPARE(settings_rows, 58);

    const auto& sorted = table.sorted();
    QCOMPARE(sorted.size(), rows.size());
    for (size_t i = 1; i < sorted.size(); ++i)
        QVERIFY(sorted[i - 1]->name < sorted[i]->name);
}

void TestCommandTable::slotNames_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("(s) and dots") << "Move Row(s) Just Above Row ..."
                                  << QByteArray("commandMoveRowsJustAboveRow");
    QTest::newRow("'s") << "Open Terminal to File's Directory"
                        << QByteArray("commandOpenTerminalToFilesDirectory");
    QTest::newRow("brackets, slash")
        << "Place Current Date/Time Stamp (Now) in Selected Cells"
        << QByteArray("commandPlaceCurrentDateTimeStampNowInSelectedCells");
    QTest::newRow("lower-case words") << "Select Left To Start of Row (Header Excluded)"
                                      << QByteArray("commandSelectLeftToStartOfRowHeaderExcluded");
    QTest::newRow("hyphen, comma")
        << "Split Selected Cells Horizontally, Move Rest of Row Right"
        << QByteArray("commandSplitSelectedCellsHorizontallyMoveRestOfRowRight");
    QTest::newRow("dash word") << "Sort Selected Column - Ascending"
                               << QByteArray("commandSortSelectedColumnAscending");
    QTest::newRow("exception find") << "Find" << QByteArray("commandFindPrompt");
    QTest::newRow("exception uuid") << "Set UUID Type" << QByteArray("commandSetUuidType");
    QTest::newRow("exception clear")
        << "Clear Cell Contents" << QByteArray("commandClearCellContentsNavigate");
    QTest::newRow("exception MB") << "Set Minimum File Size for Read-Only Mode Query (MB)"
                                  << QByteArray("commandSetMinFileSizeReadOnlyModeQueryMb");
}

void TestCommandTable::slotNames() {
    QFETCH(QString, name);
    QFETCH(QByteArray, slot);
    QCOMPARE(CommandTable::slotName(name), slot);
}

void TestCommandTable::parseShortcut_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("sequences");
    QTest::addColumn<QString>("written");
    QTest::newRow("chord") << "ctrl+k,ctrl+t" << QStringList{"Ctrl+K, Ctrl+T"} << "ctrl+k,ctrl+t";
    QTest::newRow("alternatives") << "ctrl+e|f2" << QStringList{"Ctrl+E", "F2"} << "ctrl+e|f2";
    QTest::newRow("enter binds return")
        << "ctrl+enter" << QStringList{"Ctrl+Enter", "Ctrl+Return"} << "ctrl+enter";
    QTest::newRow("return binds enter")
        << "alt+return" << QStringList{"Alt+Return", "Alt+Enter"} << "alt+return";
    QTest::newRow("both given") << "return|enter" << QStringList{"Return", "Enter"} << "return";
    QTest::newRow("case and blanks")
        << " Ctrl+Shift+N | F3" << QStringList{"Ctrl+Shift+N", "F3"} << "ctrl+shift+n|f3";
    QTest::newRow("invalid part skipped") << "ctrl+nokey|f2" << QStringList{"F2"} << "f2";
    QTest::newRow("delete spellings")
        << "del|alt+delete" << QStringList{"Del", "Alt+Del"} << "del|alt+delete";
    QTest::newRow("nothing") << "" << QStringList{} << "";
}

void TestCommandTable::parseShortcut() {
    QFETCH(QString, text);
    QFETCH(QStringList, sequences);
    QFETCH(QString, written);
    const QList<QKeySequence> keys = ::parseShortcut(text);
    QStringList got;
    for (const QKeySequence& key : keys)
        got << key.toString(QKeySequence::PortableText);
    QCOMPARE(got, sequences);
    QCOMPARE(shortcutText(keys), written);
}

void TestCommandTable::noCollidingShortcuts() {
    const CommandTable table;
    QHash<QKeySequence, QList<const CommandRecord*>> by_key;
    for (const CommandRecord& row : table.records())
        for (const QKeySequence& key : ::parseShortcut(row.shortcut))
            by_key[key].append(&row);
    // Alt+Return inserts cells on the grid and finds all matches with the
    // find panel open; with the panel open both hold it.
    const QSet<QString> deliberate = {"Insert Cells, Move Rest of Row Right", "Find All Matches"};
    int shared = 0;
    for (auto it = by_key.cbegin(); it != by_key.cend(); ++it) {
        const auto& rows = it.value();
        for (int i = 0; i < rows.size(); ++i) {
            for (int j = i + 1; j < rows.size(); ++j) {
                ++shared;
                const quint32 joint = jointContext(*rows[i], *rows[j]);
                const bool together = isEnabled(*rows[i], joint) && isEnabled(*rows[j], joint);
                if (deliberate.contains(rows[i]->name) && deliberate.contains(rows[j]->name))
                    continue;
                QVERIFY2(!together, qPrintable(it.key().toString() + ": " + rows[i]->name + " / " +
                                               rows[j]->name));
                QVERIFY(!contextsOverlap(rows[i]->requiredContexts, rows[j]->requiredContexts));
            }
        }
    }
    QCOMPARE(shared, 3); // ctrl+e, alt+return, alt+enter
}

void TestCommandTable::contextRules_data() {
    QTest::addColumn<quint32>("set");
    QTest::addColumn<quint32>("expected");
    QTest::newRow("table open focuses the grid")
        << build({TableOpen}) << quint32(TableOpen | TableFocus);
    QTest::newRow("editing takes focus")
        << build({TableOpen, CellEditing}) << quint32(TableOpen | CellEditing);
    QTest::newRow("focus ends editing")
        << build({CellEditing, TableFocus}) << quint32(TableOpen | TableFocus);
    QTest::newRow("losing focus flips to editing")
        << build({TableOpen}, {TableFocus}) << quint32(TableOpen | CellEditing);
    QTest::newRow("losing focus alone leaves nothing")
        << contextRemoved(TableFocus, TableFocus) << quint32(0);
    QTest::newRow("closing the table ends both")
        << build({MultiCellSelection}, {TableOpen}) << quint32(MultiCellSelection);
    QTest::newRow("folder opens a table")
        << build({FolderOpen}) << quint32(FolderOpen | TableOpen | TableFocus);
    QTest::newRow("find mode opens the panel")
        << build({FindMode}) << quint32(FindMode | FindPanelOpen | TableOpen | TableFocus);
    QTest::newRow("second reserved panel bit keeps focus off")
        << build({PanelReserved2}) << quint32(PanelReserved2 | FindPanelOpen | TableOpen);
    QTest::newRow("closing the panel drops its modes")
        << build({ReplaceMode}, {FindPanelOpen}) << quint32(TableOpen | TableFocus);
    QTest::newRow("filters hide data")
        << build({FiltersPresent}) << quint32(FiltersPresent | DataNotVisible | TableOpen);
    QTest::newRow("hidden lines keep data hidden")
        << build({FiltersPresent, HiddenPresent}, {FiltersPresent})
        << quint32(HiddenPresent | DataNotVisible | TableOpen);
    QTest::newRow("last hiding gone")
        << build({FiltersPresent, HiddenPresent}, {FiltersPresent, HiddenPresent})
        << quint32(TableOpen);
    QTest::newRow("any sets everything") << build({kAnyContext}) << kAnyContext;
    QTest::newRow("tab switch") << contextForTab(FolderOpen | TableFocus | ReadOnly | TableOpen,
                                                 FileOnDisk | FiltersPresent | FindMode)
                                << quint32(FolderOpen | TableFocus | FileOnDisk | FiltersPresent);
}

void TestCommandTable::contextRules() {
    QFETCH(quint32, set);
    QFETCH(quint32, expected);
    QCOMPARE(set, expected);
    QVERIFY(!contextsOverlap(TableFocus, CellEditing));
    QVERIFY(contextsOverlap(TableOpen, kAnyContext));
    QVERIFY(contextsOverlap(TableFocus, TableFocus | FindPanelOpen));
}

void TestCommandTable::enabledFollowsContext_data() {
    QTest::addColumn<quint32>("context");
    QTest::addColumn<QStringList>("enabled"); // of the receiver's rows
    const QStringList any = {"New File", "Exit", "Go to File", "Toggle Show Tab Bar"};
    QTest::newRow("no table") << quint32(0) << any;
    QTest::newRow("grid") << build({TableOpen})
                          << any + QStringList{"Edit Selected Cell",
                                               "Insert Row(s) After",
                                               "Insert Cells, Move Rest of Row Right",
                                               "Select Up",
                                               "Remove Selected Cells and the Rest of Their Rows",
                                               "Switch to Tab 10"};
    QTest::newRow("several cells")
        << build({TableOpen, MultiCellSelection})
        << any + QStringList{"Insert Row(s) After", "Insert Cells, Move Rest of Row Right",
                             "Select Up", "Remove Selected Cells and the Rest of Their Rows",
                             "Switch to Tab 10"};
    QTest::newRow("editing") << build({TableOpen, CellEditing})
                             << any + QStringList{"Stop Editing", "Switch to Tab 10"};
    QTest::newRow("read-only grid")
        << build({TableOpen, ReadOnly}) << any + QStringList{"Select Up", "Switch to Tab 10"};
    QTest::newRow("replace panel")
        << build({ReplaceMode})
        << any + QStringList{"Edit Selected Cell",
                             "Insert Row(s) After",
                             "Insert Cells, Move Rest of Row Right",
                             "Select Up",
                             "Remove Selected Cells and the Rest of Their Rows",
                             "Switch to Tab 10",
                             "Find All Matches",
                             "Replace All Matches"};
    QTest::newRow("hidden lines left")
        << build({TableOpen, ReadOnly, FiltersPresent, HiddenPresent}, {FiltersPresent})
        << any + QStringList{"Select Up", "Switch to Tab 10", "Save Visible Data As"};
}

void TestCommandTable::enabledFollowsContext() {
    QFETCH(quint32, context);
    QFETCH(QStringList, enabled);
    Receiver receiver;
    // The window move-assigns a table built for it over its first one.
    CommandTable table;
    table = CommandTable(&receiver);
    table.setContext(context);
    QStringList got;
    for (const CommandRecord* row : table.sorted()) {
        QCOMPARE(row->available, kReceiverRows.contains(row->name));
        if (row->action->isEnabled()) got << row->name;
    }
    got.sort();
    enabled.sort();
    QCOMPARE(got, enabled);
    // The launcher offers what is enabled, less the rows hidden from it.
    QStringList offered;
    for (const CommandRecord* row : table.launcherRecords())
        offered << row->name;
    enabled.removeAll("Find All Matches");
    enabled.removeAll("Replace All Matches");
    enabled.removeAll("Switch to Tab 10");
    QCOMPARE(offered, enabled);
}

void TestCommandTable::menus_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("index");
    QTest::newRow("first") << "New File"
                           << "&File" << 0;
    QTest::newRow("after the recent files") << "Save File"
                                            << "&File" << 6;
    QTest::newRow("last of file") << "Exit"
                                  << "&File" << 38;
    QTest::newRow("in a submenu") << "Toggle Save With Trailing Delimiters"
                                  << "&File/Save Options" << 6;
    QTest::newRow("submenu after submenus") << "Clear Cell Contents"
                                            << "&Data/&Delete" << 0;
    QTest::newRow("last of a submenu") << "Remove All Filtered Out and Hidden Data"
                                       << "&Data/&Delete" << 19;
    QTest::newRow("after the submenus") << "Prepend Cell Contents"
                                        << "&Data" << 14;
    QTest::newRow("uuid row") << "Fill Selected Cells with UUID/GUID"
                              << "&Data" << 18;
    QTest::newRow("last") << "View Changelog"
                          << "&Help" << 6;
}

void TestCommandTable::menus() {
    QFETCH(QString, name);
    QFETCH(QString, path);
    QFETCH(int, index);
    Receiver receiver;
    QMenuBar bar(&receiver);
    CommandTable table(&receiver);
    // A second build replaces the first rather than adding to it.
    table.buildMenus(&bar);
    QVERIFY(table.buildMenus(&bar) > 10);
    QCOMPARE(bar.actions().size(), 11);

    QAction* action = table.record(name)->action;
    QString found_path;
    int found_index = -1;
    for (QAction* top : bar.actions())
        if (locate(top->menu(), action, top->menu()->title(), &found_path, &found_index)) break;
    QCOMPARE(found_path, path);
    QCOMPARE(found_index, index);

    // Every row but the ones that live on the window is in a menu once.
    int placed = 0;
    for (const CommandRecord& row : table.records()) {
        int count = 0;
        for (QObject* holder : row.action->associatedObjects())
            count += qobject_cast<QMenu*>(holder) != nullptr;
        const bool on_window =
            row.action->associatedObjects().contains(static_cast<QObject*>(&receiver));
        QCOMPARE(count, on_window ? 0 : 1);
        placed += count;
    }
    QCOMPARE(placed, 323 - 13);
    QVERIFY(table.record("Open Recent File")->action->menu() == table.recentFilesMenu());
}

void TestCommandTable::keys_data() {
    QTest::addColumn<quint32>("context");
    QTest::addColumn<QList<QKeyCombination>>("keys");
    QTest::addColumn<QStringList>("fired");
    const quint32 grid = build({TableOpen});
    const QKeyCombination ctrl_k(Qt::ControlModifier, Qt::Key_K);
    const QKeyCombination ctrl_t(Qt::ControlModifier, Qt::Key_T);
    QTest::newRow("chord") << grid << QList{ctrl_k, ctrl_t} << QStringList{"Toggle Show Tab Bar"};
    QTest::newRow("first key waits") << grid << QList{ctrl_k} << QStringList{};
    QTest::newRow("chord of one key twice")
        << grid << QList{ctrl_k, ctrl_k} << QStringList{"Remove Rest of Rows"};
    QTest::newRow("escape cancels")
        << grid << QList{ctrl_k, QKeyCombination(Qt::Key_Escape), ctrl_t}
        << QStringList{"Go to File"};
    QTest::newRow("wrong key cancels")
        << grid << QList{ctrl_k, QKeyCombination(Qt::Key_X), ctrl_t} << QStringList{"Go to File"};
    QTest::newRow("ctrl+e on the grid")
        << grid << QList{QKeyCombination(Qt::ControlModifier, Qt::Key_E)}
        << QStringList{"Edit Selected Cell"};
    QTest::newRow("ctrl+e in an editor")
        << build({TableOpen, CellEditing}) << QList{QKeyCombination(Qt::ControlModifier, Qt::Key_E)}
        << QStringList{"Stop Editing"};
    QTest::newRow("ctrl+e with several cells")
        << build({TableOpen, MultiCellSelection})
        << QList{QKeyCombination(Qt::ControlModifier, Qt::Key_E)} << QStringList{};
    QTest::newRow("ctrl+return and ctrl+enter")
        << grid
        << QList{QKeyCombination(Qt::ControlModifier, Qt::Key_Return),
                 QKeyCombination(Qt::ControlModifier, Qt::Key_Enter)}
        << QStringList{"Insert Row(s) After", "Insert Row(s) After"};
    QTest::newRow("alt+0 is tab 10") << grid << QList{QKeyCombination(Qt::AltModifier, Qt::Key_0)}
                                     << QStringList{"Switch to Tab 10"};
    QTest::newRow("alt+return on the grid")
        << grid << QList{QKeyCombination(Qt::AltModifier, Qt::Key_Return)}
        << QStringList{"Insert Cells, Move Rest of Row Right"};
}

void TestCommandTable::keys() {
    QFETCH(quint32, context);
    QFETCH(QList<QKeyCombination>, keys);
    QFETCH(QStringList, fired);
    Receiver receiver;
    auto* layout = new QVBoxLayout(&receiver);
    auto* bar = new QMenuBar;
    auto* grid = new QWidget;
    grid->setFocusPolicy(Qt::StrongFocus);
    layout->addWidget(bar);
    layout->addWidget(grid);
    CommandTable table(&receiver);
    table.buildMenus(bar);
    table.setContext(context);
    receiver.show();
    QApplication::setActiveWindow(&receiver);
    QVERIFY(QTest::qWaitForWindowActive(&receiver));
    grid->setFocus();
    // A chord left waiting by the case before would take the first key.
    QTest::keyClick(grid, Qt::Key_Escape);
    for (const QKeyCombination& key : keys)
        QTest::keyClick(grid, key.key(), key.keyboardModifiers());
    QCOMPARE(receiver.fired.join(" / "), fired.join(" / "));
}

QTEST_MAIN(TestCommandTable)
#include "tst_commandtable.moc"
