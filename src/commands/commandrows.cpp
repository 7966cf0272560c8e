#include "commandrows.h"

#include "commands/commandrecord.h"

namespace {

namespace S = SettingId;

constexpr int kPlain = CommandRecord::Plain;
constexpr int kGlobal = CommandRecord::GlobalSetting;
constexpr int kTable = CommandRecord::TableSetting;
constexpr int kShown = 1;
constexpr int kHidden = 0;

constexpr quint32 Any = kAnyContext;
constexpr quint32 TO = TableOpen;
constexpr quint32 TF = TableFocus;
constexpr quint32 CE = CellEditing;
constexpr quint32 MC = MultiCellSelection;
constexpr quint32 OD = FileOnDisk;
constexpr quint32 FP = FindPanelOpen;
constexpr quint32 FL = FiltersPresent;
constexpr quint32 RO = ReadOnly;

} // namespace

const std::vector<CommandRun>& commandRuns() {
    static const std::vector<CommandRun> runs = {
        {{"File", kPlain, kShown, Any, 0},
         {{"&New File", "ctrl+n"},
          {"New &Window", "ctrl+shift+n"},
          {"&Open File", "ctrl+o"},
          {"Open &Folder", "ctrl+alt+o"},
          {"Open &Recent File"}}},
        {{"File", kPlain, kShown, TO, RO}, {{"&Save File", "ctrl+s"}}},
        {{"File", kPlain, kShown, TO, 0}, {{"Save File &As", "ctrl+alt+s"}}},
        {{"File", kPlain, kShown, DataNotVisible, 0}, {{"Save &Visible Data As"}}},
        {{"File", kPlain, kShown, TO, 0},
         {{"Save All Files", "ctrl+shift+s"}, {"&Close File", "ctrl+w"}}},
        {{"File", kPlain, kShown, TF, 0}, {{"Close All Files"}}},
        {{"File", kPlain, kShown, FolderOpen, 0}, {{"Close Folder", "ctrl+alt+w"}}},
        {{"File", kPlain, kShown, TO, 0}, {{"&Print", "ctrl+alt+p"}}},
        {{"File", kPlain, kShown, Any, 0}, {{"&Import from JSON or XML"}}},
        {{"File", kPlain, kShown, TO, 0}, {{"E&xport to JSON or XML"}, {"Export to PDF"}}},
        {{"File/Reload", kPlain, kShown, OD, RO},
         {{"Reload File"}, {"Reload File with Different Parameters"}}},
        {{"File/Save Options", kPlain, kShown, OD, RO}, {{"Set Parameters for File Save"}}},
        {{"File/File Location Information", kPlain, kShown, Any, 0},
         {{"Copy File Path to Clipboard"},
          {"Copy Folder Path to Clipboard"},
          {"Copy File Name to Clipboard"}}},
        {{"File", kPlain, kShown, OD, 0},
         {{"Dup&licate File"},
          {"Move File"},
          {"Rename File"},
          {"&Delete File"},
          {"Sho&w File in File System"},
          {"Open &Terminal to File's Directory"}}},
        {{"File", kPlain, kShown, Any, 0}, {{"Open File in Text Editor"}, {"&Exit"}}},

        {{"Edit", kPlain, kShown, TO, 0}, {{"&Undo", "ctrl+z"}, {"&Redo", "ctrl+y"}}},
        {{"Edit", kPlain, kShown, TF, RO}, {{"Cu&t Cell(s)", "ctrl+x"}}},
        {{"Edit", kPlain, kShown, TF, 0},
         {{"&Copy Cell(s)", "ctrl+c"}, {"Copy Cell(s) with Header"}}},
        {{"Edit", kPlain, kShown, TF, RO}, {{"&Paste Cell(s)", "ctrl+v"}}},
        {{"Edit", kPlain, kShown, TF, MC | RO}, {{"&Edit Selected Cell", "ctrl+e|f2"}}},
        {{"Edit", kPlain, kShown, CE, RO}, {{"&Stop Editing", "ctrl+e"}}},

        {{"Data/Move", kPlain, kShown, TF, RO},
         {{"Move Cell Contents Up", "alt+up"},
          {"Move Cell Contents Down", "alt+down"},
          {"Move Cell Contents Left", "alt+left"},
          {"Move Cell Contents Right", "alt+right"}}},
        {{"Data/Move", kPlain, kShown, TO, RO},
         {{"Move Row(s) Up", "alt+shift+up"},
          {"Move Row(s) Down", "alt+shift+down"},
          {"Move Column(s) Left", "alt+shift+left"},
          {"Move Column(s) Right", "alt+shift+right"},
          {"Move Cell Contents To ..."},
          {"Move Row(s) Just Above Row ..."},
          {"Move Column(s) to the Left of Column ..."}}},
        {{"Data/Insert", kPlain, kShown, TF, RO},
         {{"Insert Row(s) Before", "alt+r"},
          {"Insert Column(s) Before", "alt+c"},
          {"Insert Row(s) After", "ctrl+enter"},
          {"Insert Column(s) After", "ctrl+shift+enter"},
          {"Insert Row(s) Before Multiple Times"},
          {"Insert Column(s) Before Multiple Times"},
          {"Insert Cells, Move Rest of Row Right", "alt+enter"},
          {"Insert Cells, Move Rest of Column Down"}}},
        {{"Data/Transpose", kPlain, kShown, TF, 0}, {{"Transpose Table", "ctrl+alt+t"}}},
        {{"Data/Transpose", kPlain, kShown, MC, RO}, {{"Transpose Selected Cells"}}},
        {{"Data/Case", kPlain, kShown, TO, RO},
         {{"Upper Case", "ctrl+k,ctrl+u"},
          {"Lower Case", "ctrl+k,ctrl+l"},
          {"Title Case"},
          {"Upper Camel Case"},
          {"Lower Camel Case"},
          {"Upper Snake Case"},
          {"Lower Snake Case"},
          {"Convert to Acronym"}}},
        {{"Data/Format", kPlain, kShown, TO, RO},
         {{"Convert Date/Time Format"},
          {"Convert Number Format"},
          {"Place Current Date/Time Stamp (Now) in Selected Cells"}}},
        {{"Data/Numbers", kPlain, kShown, TF, RO},
         {{"Zero-Fill Whole Numbers"},
          {"Remove Leading Zeros"},
          {"Random Integers in Selected Cells"},
          {"Random Decimals (Floats) in Selected Cells"},
          {"Set Number of Decimals"}}},
        {{"Data/Delete", kPlain, kShown, TF, RO}, {{"Clear Cell Contents", "del|backspace"}}},
        {{"Data/Delete", kPlain, kShown, TO, RO},
         {{"Remove Row(s)", "ctrl+shift+k"}, {"Remove Column(s)", "ctrl+shift+l"}}},
        {{"Data/Delete", kPlain, kShown, TF, RO},
         {{"Remove Duplicate Row(s)"},
          {"Remove Duplicate Column(s)"},
          {"Remove Duplicate Rows (Based on Selected Columns Only)"},
          {"Remove Duplicate Columns (Based on Selected Rows Only)"},
          {"Remove Empty Row(s)"},
          {"Remove Empty Column(s)"},
          {"Remove Empty Rows (Based on Selected Columns Only)"},
          {"Remove Empty Columns (Based on Selected Rows Only)"},
          {"Remove Selected Cells, Move Rest of Row Left", "alt+delete|alt+backspace"},
          {"Remove Selected Cells, Move Rest of Column Up"},
          {"Remove Selected Cells and the Rest of Their Rows", "ctrl+k,ctrl+k"},
          {"Remove Selected Cells and the Rest of Their Columns", "ctrl+k,ctrl+j"},
          {"Remove All Filtered Out and Hidden Data"}}},
        {{"Data/Sort", kPlain, kShown, TF, 0},
         {{"Sort Selected Column - Ascending"},
          {"Sort Selected Column - Descending"},
          {"Sort Selected Row - Ascending"},
          {"Sort Selected Row - Descending"}}},
        {{"Data/Sort", kPlain, kShown, TF | MC, 0},
         {{"Sort Selected Cells Horizontally - Ascending"},
          {"Sort Selected Cells Horizontally - Descending"},
          {"Sort Selected Cells Vertically - Ascending"},
          {"Sort Selected Cells Vertically - Descending"}}},
        {{"Data/Duplicate", kPlain, kShown, TO, RO},
         {{"Duplicate Cell Contents To ..."},
          {"Duplicate Selected Cell Contents Up", "ctrl+alt+up"},
          {"Duplicate Selected Cell Contents Down", "ctrl+alt+down"},
          {"Duplicate Selected Cell Contents Left", "ctrl+alt+left"},
          {"Duplicate Selected Cell Contents Right", "ctrl+alt+right"},
          {"Duplicate Row(s)", "ctrl+alt+r"},
          {"Duplicate Column(s)", "ctrl+alt+c"},
          {"Duplicate Row(s) Multiple Times"},
          {"Duplicate Column(s) Multiple Times"}}},
        {{"Data/Multi-cell", kPlain, kShown, TF | MC, RO},
         {{"Copy Main Cell Contents to All Selected Cells"}}},
        {{"Data/Multi-cell", kPlain, kShown, TF, RO},
         {{"Fill Selected Cells with Series", "ctrl+alt+n"},
          {"Reshape Selected Cells Row-Wise"},
          {"Reshape Selected Cells Column-Wise"}}},
        {{"Data/String Manipulation", kPlain, kShown, TF, RO},
         {{"Join Selected Cells Horizontally"},
          {"Join Selected Cells Vertically"},
          {"Join Selected Cells Horizontally, Move Rest of Row Left"},
          {"Split Selected Cells Horizontally"},
          {"Split Selected Cells Vertically"},
          {"Split Selected Cells Horizontally, Move Rest of Row Right", "ctrl+k,ctrl+s"},
          {"Keep Only Left Part of Selected Cells"},
          {"Keep Only Middle Part of Selected Cells"},
          {"Keep Only Right Part of Selected Cells"}}},
        {{"Data/Filter", kPlain, kShown, TF, 0},
         {{"Add Filter"}, {"Add Filter with Regular Expressions"}}},
        {{"Data/Filter", kPlain, kShown, TF | FL, 0}, {{"View/Edit Filter(s)"}}},
        {{"Data/Filter", kPlain, kShown, TF, 0},
         {{"Filter Selected Row"},
          {"Filter Selected Column"},
          {"Filter Selected Row with Regular Expressions"},
          {"Filter Selected Column with Regular Expressions"},
          {"Filter Selected Row(s) with Selected Cell Contents"},
          {"Filter Selected Column(s) with Selected Cell Contents"},
          {"Select Values in Selected Column to Filter"}}},
        {{"Data/Filter", kPlain, kShown, TF | FL, 0},
         {{"Remove Individual Filter(s)"}, {"Remove All Filters"}, {"Refresh Filters"}}},
        {{"Data/Hide/Show", kPlain, kShown, TF, 0},
         {{"Hide Selected Row(s)"},
          {"Hide Selected Column(s)"},
          {"Hide All But Selected Row(s)"},
          {"Hide All But Selected Column(s)"},
          {"Hide Empty Row(s)"},
          {"Hide Empty Column(s)"},
          {"Show All Hidden Row(s)"},
          {"Show All Hidden Column(s)"},
          {"Show Hidden Row(s) in Selection"},
          {"Show Hidden Column(s) in Selection"},
          {"Show Empty Row(s)"},
          {"Show Empty Column(s)"}}},
        {{"Data", kPlain, kShown, TF, RO},
         {{"&Prepend Cell Contents"}, {"&Append Cell Contents"}, {"&Trim Selected Cell(s)"}}},
        // The UUID row carries the label of the row after it, as it always has.
        {{"Data", kPlain, kShown, TO, RO},
         {{"List Character &Encodings", "", S::Count, "Fill Selected Cells with UUID/GUID"},
          {"&List Character Encodings"}}},
        {{"Data", kPlain, kShown, TF, RO}, {{"&Remove Extraneous Rows and Columns"}}},
        {{"Data", kPlain, kShown, TO, RO}, {{"Add or Update &ID Column"}}},

        {{"Selection", kPlain, kShown, TO, CE},
         {{"Select Up", "shift+up"},
          {"Select Down", "shift+down"},
          {"Select Left", "shift+left"},
          {"Select Right", "shift+right"}}},
        {{"Selection", kPlain, kShown, TF, CE},
         {{"Select Up by a Block", "ctrl+shift+up"},
          {"Select Down by a Block", "ctrl+shift+down"},
          {"Select Left by a Block", "ctrl+shift+left"},
          {"Select Right by a Block", "ctrl+shift+right"},
          {"Select Up to Top of Column (Header Excluded)", "ctrl+shift+home"},
          {"Select Down to Bottom of Column", "ctrl+shift+end"},
          {"Select Left To Start of Row (Header Excluded)", "shift+home"},
          {"Select Right to End of Row", "shift+end"},
          {"Select Entire Column(s)", "ctrl+shift+c"},
          {"Select Entire Column(s) (Header Excluded)", "alt+shift+c"},
          {"Select Entire Row(s)", "ctrl+shift+r"},
          {"Select Entire Row(s) (Header Excluded)", "alt+shift+r"},
          {"Select Entire Table", "ctrl+shift+t|ctrl+a"}}},
        {{"Selection", kPlain, kShown, TO, 0},
         {{"Move Selection Up", "alt+i"},
          {"Move Selection Down", "alt+k"},
          {"Move Selection Left", "alt+j"},
          {"Move Selection Right", "alt+l"}}},
        {{"Selection", kPlain, kShown, TF, CE},
         {{"Move Selection Up by a Block", "ctrl+up"},
          {"Move Selection Down by a Block", "ctrl+down"},
          {"Move Selection Left by a Block", "ctrl+left"},
          {"Move Selection Right by a Block", "ctrl+right"},
          {"Invert Selection by Rows (Header Excluded)"},
          {"Invert Selection by Columns (Header Excluded)"}}},
        {{"Selection", kPlain, kShown, TF, RO},
         {{"Select Duplicate Row(s)"}, {"Select Duplicate Column(s)"}}},
        {{"Selection", kPlain, kShown, TF, 0}, {{"Select From Main Cell To ..."}}},
        {{"Selection", kPlain, kShown, TF, RO},
         {{"Select Duplicate Rows (Based on Selected Columns Only)"},
          {"Select Duplicate Columns (Based on Selected Rows Only)"}}},
        {{"Selection", kPlain, kShown, TF, CE},
         {{"Add Next Match to Selection", "ctrl+d"},
          {"Select All Matches", "ctrl+shift+d|alt+f3"}}},

        {{"Find", kPlain, kShown, TO, 0}, {{"&Find", "ctrl+f"}}},
        {{"Find", kPlain, kShown, TF, 0},
         {{"Find &Next Match", "f3"}, {"Find &Previous Match", "shift+f3"}}},
        {{"Find", kPlain, kHidden, TF | FP, 0}, {{"Find &All Matches", "alt+return"}}},
        {{"Find", kPlain, kShown, TO, RO}, {{"&Replace", "ctrl+h"}}},
        {{"Find", kPlain, kShown, TF, RO}, {{"Replace Ne&xt Match"}, {"Replace Pre&vious Match"}}},
        {{"Find", kPlain, kHidden, TF | FP | ReplaceMode, RO},
         {{"Replace A&ll Matches", "ctrl+alt+return"}}},

        {{"View/Grid Size", kPlain, kShown, TO, 0},
         {{"Set Selected Row Height(s)"}, {"Set Selected Column Width(s)"}}},
        {{"View/Headers", kPlain, kShown, TF, 0},
         {{"Set Header Rows to Selected Row"},
          {"Set Header Columns to Selected Column"},
          {"Set Headers to Selected Cell"},
          {"Remove Header Rows"},
          {"Remove Header Columns"},
          {"Remove All Headers"},
          {"Toggle Freeze Header Rows and Columns"}}},

        {{"Tools", kPlain, kHidden, TO, 0}, {{"&Command Launcher", "ctrl+l|ctrl+shift+p"}}},
        {{"Tools", kPlain, kShown, Any, 0}, {{"Open File Analysis &Window"}}},
        {{"Tools", kPlain, kShown, TF, 0},
         {{"&Statistics - Selected Columns"},
          {"S&tatistics - All Columns"},
          {"Statistics - Se&lected Cells"},
          {"Statistics - Selected Cells &by Columns"},
          {"Column &Analysis - Selected Columns"},
          {"Column A&nalysis - All Columns"},
          {"&Unique Values - Selected Column"},
          {"&Pivot Table - Selected Columns"},
          {"Column Loo&kup"}}},

        {{"Go To", kPlain, kShown, Any, 0}, {{"Go to &File", "ctrl+p|ctrl+t"}}},
        {{"Go To", kPlain, kShown, TO, 0},
         {{"Go to &Cell", "ctrl+g"},
          {"Switch to Tab on the &Right", "ctrl+pgdown"},
          {"Switch to Tab on the &Left", "ctrl+pgup"},
          {"Scroll Up One Screen"},
          {"Scroll Down One Screen"},
          {"Scroll Left One Screen"},
          {"Scroll Right One Screen"},
          {"Scroll to Top"},
          {"Scroll to Bottom"},
          {"Scroll to Far Left"},
          {"Scroll to Far Right"},
          {"Go Up One Screen", "pgup"},
          {"Go Down One Screen", "pgdown"},
          {"Go Left One Screen", "alt+pgup|home"},
          {"Go Right One Screen", "alt+pgdown|end"},
          {"Go to Top", "ctrl+home"},
          {"Go to Bottom", "ctrl+end"},
          {"Go to Far Left", "ctrl+alt+home"},
          {"Go to Far Right", "ctrl+alt+end"}}},
        {{"Go To", kPlain, kShown, Any, 0},
         {{"Follow Selected &Hyperlink(s)", "ctrl+r"},
          {"&Email Selected Email Addresses"},
          {"Web &Search for Selected Terms"},
          {"Web Search for Selected Places in &Map"}}},

        {{"Preferences", kPlain, kShown, Any, 0},
         {{"&Preferences"},
          {"Edit &Settings"},
          {"Edit &Keyboard Shortcuts"},
          {"Edit &File Extension Options"},
          {"&Open Preference File Folder"}}},
        {{"Contact Us", kPlain, kShown, Any, 0},
         {{"Report a &Bug"},
          {"Request a &Feature"},
          {"Take a &Survey"},
          {"&General Feedback/Questions"}}},
        {{"Help", kPlain, kShown, Any, 0},
         {{"&Documentation"},
          {"Open &Tutorial"},
          {"&Restore Tutorial to Default"},
          {"&About"},
          {"Check for &Updates"},
          {"View &Changelog"}}},
        {{"-", kPlain, kShown, TF, 0}, {{"Close All Files Except Current"}}},
        {{"-", kPlain, kHidden, TO, 0},
         {{"Switch to Tab 1", "alt+1"},
          {"Switch to Tab 2", "alt+2"},
          {"Switch to Tab 3", "alt+3"},
          {"Switch to Tab 4", "alt+4"},
          {"Switch to Tab 5", "alt+5"},
          {"Switch to Tab 6", "alt+6"},
          {"Switch to Tab 7", "alt+7"},
          {"Switch to Tab 8", "alt+8"},
          {"Switch to Tab 9", "alt+9"},
          {"Switch to Tab 10", "alt+0"}}},

        {{"File/Reload", kTable, kShown, OD, 0},
         {{"Reload File with Delimiter", "", S::DelimiterReload},
          {"Reload File with Encoding", "", S::EncodingReload},
          {"Reload File with Parsing Standard", "", S::ParsingStandardReload}}},
        {{"File/Save Options", kTable, kShown, TO, RO},
         {{"Set Delimiter for File Save", "", S::DelimiterSave}}},
        {{"File/Save Options", kTable, kShown, TO, 0},
         {{"Set Line Ending for File Save", "", S::LineEndingSave}}},
        {{"File/Save Options", kTable, kShown, TO, RO},
         {{"Set Encoding for File Save", "", S::EncodingSave}}},
        {{"File/Save Options", kTable, kShown, TO, 0},
         {{"Set Parsing Standard for File Save", "", S::ParsingStandardSave}}},
        {{"File/Save Options", kGlobal, kShown, TO, 0},
         {{"Toggle Save With Trailing Delimiters", "", S::SaveTrailingDelimiters}}},
        {{"File", kGlobal, kShown, Any, 0},
         {{"Set Behavior When File Is Changed Externally", "", S::ChangedExternally},
          {"Set Text Editor", "", S::TextEditor},
          {"Toggle Save After Each Edit", "", S::SaveAfterEachEdit}}},
        {{"File", kGlobal, kShown, TO, 0},
         {{"Toggle Remove Extraneous Rows/Columns on File Save", "", S::RemoveExtraneousOnSave}}},
        {{"Edit", kTable, kShown, Any, 0}, {{"Toggle Read-Only", "", S::ReadOnly}}},
        {{"Edit", kGlobal, kShown, Any, 0},
         {{"Set Minimum File Size for Read-Only Mode Query (MB)", "",
           S::MinFileSizeReadOnlyQueryMb},
          {"Toggle Retain Sort and Filters Upon File Refresh", "", S::RetainSortAndFilters},
          {"Toggle Let Editor Pane Consume Navigation Keystrokes", "",
           S::EditorPaneConsumesNavigation}}},
        {{"Data/Sort", kGlobal, kShown, TO, 0},
         {{"Toggle Case Sensitive Sorting", "", S::CaseSensitiveSorting}}},
        {{"View", kGlobal, kShown, Any, 0},
         {{"Toggle Show Tab Bar", "ctrl+k,ctrl+t", S::ShowTabBar},
          {"Toggle Show Side Bar", "ctrl+k,ctrl+b", S::ShowSideBar},
          {"Toggle Show File Metadata", "ctrl+k,ctrl+d", S::ShowFileMetadata},
          {"Toggle Show Side Bar Open Files", "", S::ShowSideBarOpenFiles},
          {"Toggle Show Side Bar Folders", "", S::ShowSideBarFolders},
          {"Toggle Show Row Labels", "", S::ShowRowLabels},
          {"Toggle Show Column Labels", "", S::ShowColumnLabels},
          {"Toggle Show Editor Pane", "ctrl+k,ctrl+e", S::ShowEditorPane}}},
        {{"View", kTable, kShown, TF, 0},
         {{"Set First Row Index", "", S::FirstRowIndex},
          {"Set First Column Index", "", S::FirstColumnIndex}}},
        {{"View", kGlobal, kShown, Any, 0},
         {{"Toggle Represent Columns as Letters", "", S::ColumnsAsLetters},
          {"Set Font", "", S::Font},
          {"Set Text Size", "", S::TextSize},
          {"Set Theme", "", S::Theme},
          {"Toggle Shade Every Other Row", "", S::ShadeRows},
          {"Toggle Shade Every Other Column", "", S::ShadeColumns},
          {"Toggle Highlight Main Selected Cell's Row", "", S::HighlightMainRow},
          {"Toggle Highlight Main Selected Cell's Column", "", S::HighlightMainColumn},
          {"Toggle Snap to Row After Scrolling", "", S::SnapToRow},
          {"Toggle Snap to Column After Scrolling", "", S::SnapToColumn}}},
        {{"View/Table Size", kGlobal, kShown, Any, RO},
         {{"Set Minimum Number of Table Rows", "", S::MinTableRows},
          {"Set Minimum Number of Table Columns", "", S::MinTableColumns},
          {"Set Number of Buffer Rows", "", S::BufferRows},
          {"Set Number of Buffer Columns", "", S::BufferColumns}}},
        {{"View/Grid Size", kGlobal, kShown, TF, 0},
         {{"Set Default Row Height", "", S::DefaultRowHeight},
          {"Set Default Column Width", "", S::DefaultColumnWidth}}},
        {{"View/Grid Size", kTable, kShown, TF, 0},
         {{"Set Maximum Row Height for Auto-Fit", "", S::MaxRowHeightForAutoFit},
          {"Set Maximum Column Width for Auto-Fit", "", S::MaxColumnWidthForAutoFit},
          {"Toggle Auto-Fit Row Height", "", S::AutoFitRowHeight},
          {"Toggle Auto-Fit Column Width", "", S::AutoFitColumnWidth}}},
        {{"View/Headers", kTable, kShown, TF, 0},
         {{"Set Number of Header Rows", "", S::HeaderRows},
          {"Set Number of Header Columns", "", S::HeaderColumns},
          {"Toggle Highlight Header Rows", "", S::HighlightHeaderRows},
          {"Toggle Highlight Header Columns", "", S::HighlightHeaderColumns},
          {"Toggle Freeze Header Rows", "", S::FreezeHeaderRows},
          {"Toggle Freeze Header Columns", "", S::FreezeHeaderColumns}}},
        {{"Data", kGlobal, kShown, Any, 0}, {{"Set UUID Type", "", S::UuidType}}},
        {{"Go To", kGlobal, kShown, Any, 0},
         {{"Set Search Engine", "", S::SearchEngine}, {"Set Online Map", "", S::OnlineMap}}},
        {{"-", kGlobal, kShown, Any, 0},
         {{"Toggle Enable Check for Updates", "", S::EnableCheckForUpdates},
          {"Toggle Detect Imported File Type Upon Opening File", "", S::DetectImportedFileType}}},
    };
    return runs;
}

const std::vector<MenuLayout>& menuLayout() {
    static const std::vector<MenuLayout> menus = {
        {"&File",
         "New File; New Window; Open File; Open Folder; [Open &Recent File: ] — Save File; Save "
         "File As; Save Visible Data As; Save All Files — Close File; Close All Files; Close "
         "Folder — Print — Import from JSON or XML; Export to JSON or XML; Export to PDF; [Reload: "
         "Reload File; Reload File with Different Parameters; Reload File with Delimiter; Reload "
         "File with Encoding; Reload File with Parsing Standard]; [Save Options: Set Parameters "
         "for File Save; Set Delimiter for File Save; Set Line Ending for File Save; Set Encoding "
         "for File Save; Set Parsing Standard for File Save — Toggle Save With Trailing "
         "Delimiters]; [File Location Information: Copy File Path to Clipboard; Copy Folder Path "
         "to Clipboard; Copy File Name to Clipboard] — Duplicate File; Move File; Rename File; "
         "Delete File — Show File in File System; Open Terminal to File's Directory; Open File "
         "in Text Editor — Set Behavior When File Is Changed Externally; Set Text Editor; Toggle "
         "Save After Each Edit; Toggle Remove Extraneous Rows/Columns on File Save — Exit"},
        {"&Edit",
         "Undo; Redo — Cut Cell(s); Copy Cell(s); Copy Cell(s) with Header; Paste Cell(s) — Edit "
         "Selected Cell; Stop Editing — Toggle Read-Only; Set Minimum File Size for Read-Only "
         "Mode Query (MB); Toggle Retain Sort and Filters Upon File Refresh; Toggle Let Editor "
         "Pane Consume Navigation Keystrokes"},
        {"&Data",
         "[&Move: Move Cell Contents Up; Move Cell Contents Down; Move Cell Contents Left; Move "
         "Cell Contents Right — Move Row(s) Up; Move Row(s) Down; Move Column(s) Left; Move "
         "Column(s) Right — Move Cell Contents To ...; Move Row(s) Just Above Row ...; Move "
         "Column(s) to the Left of Column ...]; [&Insert: Insert Row(s) Before; Insert Column(s) "
         "Before; Insert Row(s) After; Insert Column(s) After; Insert Row(s) Before Multiple "
         "Times; Insert Column(s) Before Multiple Times — Insert Cells, Move Rest of Row Right; "
         "Insert Cells, Move Rest of Column Down]; [&Transpose: Transpose Table; Transpose "
         "Selected Cells]; [&Case: Upper Case; Lower Case; Title Case; Upper Camel Case; Lower "
         "Camel Case; Upper Snake Case; Lower Snake Case; Convert to Acronym]; [&Format: Convert "
         "Date/Time Format; Convert Number Format; Place Current Date/Time Stamp (Now) in Selected "
         "Cells]; [&Numbers: Zero-Fill Whole Numbers; Remove Leading Zeros; Random Integers in "
         "Selected Cells; Random Decimals (Floats) in Selected Cells; Set Number of Decimals]; "
         "[&Delete: Clear Cell Contents; Remove Row(s); Remove Column(s) — Remove Duplicate "
         "Row(s); Remove Duplicate Column(s); Remove Duplicate Rows (Based on Selected Columns "
         "Only); Remove Duplicate Columns (Based on Selected Rows Only) — Remove Empty Row(s); "
         "Remove Empty Column(s); Remove Empty Rows (Based on Selected Columns Only); Remove Empty "
         "Columns (Based on Selected Rows Only); Remove Selected Cells, Move Rest of Row Left — "
         "Remove Selected Cells, Move Rest of Column Up; Remove Selected Cells and the Rest of "
         "Their Rows; Remove Selected Cells and the Rest of Their Columns — Remove All Filtered "
         "Out and Hidden Data]; [&Sort: Sort Selected Column - Ascending; Sort Selected Column - "
         "Descending — Sort Selected Row - Ascending; Sort Selected Row - Descending; Sort "
         "Selected Cells Horizontally - Ascending; Sort Selected Cells Horizontally - Descending "
         "— Sort Selected Cells Vertically - Ascending; Sort Selected Cells Vertically - "
         "Descending — Toggle Case Sensitive Sorting]; [Du&plicate: Duplicate Cell Contents To "
         "...; Duplicate Selected Cell Contents Up; Duplicate Selected Cell Contents Down; "
         "Duplicate Selected Cell Contents Left; Duplicate Selected Cell Contents Right; "
         "Duplicate Row(s); Duplicate Column(s); Duplicate Row(s) Multiple Times; Duplicate "
         "Column(s) Multiple Times]; [&Multi-cell: Copy Main Cell Contents to All Selected Cells; "
         "Fill Selected Cells with Series — Reshape Selected Cells Row-Wise; Reshape Selected "
         "Cells Column-Wise]; [St&ring Manipulation: Join Selected Cells Horizontally; Join "
         "Selected Cells Vertically; Join Selected Cells Horizontally, Move Rest of Row Left — "
         "Split Selected Cells Horizontally; Split Selected Cells Vertically; Split Selected "
         "Cells Horizontally, Move Rest of Row Right — Keep Only Left Part of Selected Cells; "
         "Keep Only Middle Part of Selected Cells; Keep Only Right Part of Selected Cells]; "
         "[Fi&lter: Add Filter; Add Filter with Regular Expressions; View/Edit Filter(s) — "
         "Filter Selected Row; Filter Selected Column; Filter Selected Row with Regular "
         "Expressions; Filter Selected Column with Regular Expressions — Filter Selected Row(s) "
         "with Selected Cell Contents; Filter Selected Column(s) with Selected Cell Contents; "
         "Select Values in Selected Column to Filter — Remove Individual Filter(s); Remove All "
         "Filters — Refresh Filters]; [&Hide/Show: Hide Selected Row(s); Hide Selected "
         "Column(s); Hide All But Selected Row(s); Hide All But Selected Column(s); Hide Empty "
         "Row(s); Hide Empty Column(s) — Show All Hidden Row(s); Show All Hidden Column(s); Show "
         "Hidden Row(s) in Selection; Show Hidden Column(s) in Selection; Show Empty Row(s); Show "
         "Empty Column(s)] — Prepend Cell Contents; Append Cell Contents; Trim Selected Cell(s) — "
         "Fill Selected Cells with UUID/GUID; Set UUID Type; List Character Encodings; Remove "
         "Extraneous Rows and Columns; Add or Update ID Column"},
        {"&Selection",
         "Select Up; Select Down; Select Left; Select Right — Select Up by a Block; Select Down "
         "by a Block; Select Left by a Block; Select Right by a Block — Select Up to Top of Column "
         "(Header Excluded); Select Down to Bottom of Column; Select Left To Start of Row (Header "
         "Excluded); Select Right to End of Row — Select Entire Column(s); Select Entire "
         "Column(s) (Header Excluded); Select Entire Row(s); Select Entire Row(s) (Header "
         "Excluded); Select Entire Table — Move Selection Up; Move Selection Down; Move Selection "
         "Left; Move Selection Right — Move Selection Up by a Block; Move Selection Down by a "
         "Block; Move Selection Left by a Block; Move Selection Right by a Block — Invert "
         "Selection by Rows (Header Excluded); Invert Selection by Columns (Header Excluded) — "
         "Select Duplicate Row(s); Select Duplicate Column(s); Select From Main Cell To ...; "
         "Select Duplicate Rows (Based on Selected Columns Only); Select Duplicate Columns (Based "
         "on Selected Rows Only) — Add Next Match to Selection; Select All Matches"},
        {"Fi&nd",
         "Find; Find Next Match; Find Previous Match; Find All Matches — Replace; Replace Next "
         "Match; Replace Previous Match; Replace All Matches"},
        {"&View",
         "Toggle Show Tab Bar; Toggle Show Side Bar; Toggle Show File Metadata; Toggle Show Side "
         "Bar Open Files; Toggle Show Side Bar Folders; Toggle Show Row Labels; Toggle Show "
         "Column Labels; Toggle Show Editor Pane — Set First Row Index; Set First Column Index; "
         "Toggle Represent Columns as Letters; Set Font; Set Text Size; Set Theme; Toggle Shade "
         "Every Other Row; Toggle Shade Every Other Column; Toggle Highlight Main Selected Cell's "
         "Row; Toggle Highlight Main Selected Cell's Column; Toggle Snap to Row After Scrolling; "
         "Toggle Snap to Column After Scrolling — [&Table Size: Set Minimum Number of Table Rows; "
         "Set Minimum Number of Table Columns; Set Number of Buffer Rows; Set Number of Buffer "
         "Columns]; [&Grid Size: Set Selected Row Height(s); Set Selected Column Width(s); Set "
         "Default Row Height; Set Default Column Width; Set Maximum Row Height for Auto-Fit; Set "
         "Maximum Column Width for Auto-Fit; Toggle Auto-Fit Row Height; Toggle Auto-Fit Column "
         "Width]; [&Headers: Set Header Rows to Selected Row; Set Header Columns to Selected "
         "Column; Set Headers to Selected Cell; Set Number of Header Rows; Set Number of Header "
         "Columns — Remove Header Rows; Remove Header Columns; Remove All Headers — Toggle "
         "Highlight Header Rows; Toggle Highlight Header Columns — Toggle Freeze Header Rows; "
         "Toggle Freeze Header Columns; Toggle Freeze Header Rows and Columns]"},
        {"&Tools",
         "Command Launcher — Open File Analysis Window; Statistics - Selected Columns; Statistics "
         "- All Columns; Statistics - Selected Cells; Statistics - Selected Cells by Columns; "
         "Column Analysis - Selected Columns; Column Analysis - All Columns; Unique Values - "
         "Selected Column; Pivot Table - Selected Columns — Column Lookup"},
        {"&Go To",
         "Go to File; Go to Cell — Switch to Tab on the Right; Switch to Tab on the Left — Scroll "
         "Up One Screen; Scroll Down One Screen; Scroll Left One Screen; Scroll Right One Screen; "
         "Scroll to Top; Scroll to Bottom; Scroll to Far Left; Scroll to Far Right — Go Up One "
         "Screen; Go Down One Screen; Go Left One Screen; Go Right One Screen; Go to Top; Go to "
         "Bottom; Go to Far Left; Go to Far Right — Follow Selected Hyperlink(s); Email Selected "
         "Email Addresses; Web Search for Selected Terms; Web Search for Selected Places in Map; "
         "Set Search Engine; Set Online Map"},
        {"&Preferences",
         "Preferences — Edit Settings; Edit Keyboard Shortcuts; Edit File Extension Options — "
         "Open Preference File Folder"},
        {"Contact &Us",
         "Report a Bug; Request a Feature; Take a Survey; General Feedback/Questions"},
        {"&Help",
         "Documentation; Open Tutorial; Restore Tutorial to Default — About; Check for Updates; "
         "View Changelog"},
    };
    return menus;
}

const std::vector<const char*>& offMenuCommands() {
    static const std::vector<const char*> names = {
        "Close All Files Except Current",
        "Switch to Tab 1",
        "Switch to Tab 2",
        "Switch to Tab 3",
        "Switch to Tab 4",
        "Switch to Tab 5",
        "Switch to Tab 6",
        "Switch to Tab 7",
        "Switch to Tab 8",
        "Switch to Tab 9",
        "Switch to Tab 10",
        "Toggle Enable Check for Updates",
        "Toggle Detect Imported File Type Upon Opening File",
    };
    return names;
}
