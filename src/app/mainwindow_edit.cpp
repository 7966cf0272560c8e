// The Edit menu, the cell movements and the Select and Go To commands: each
// slot hands its command to the current table.

#include "app/paneview.h"
#include "mainwindow.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

namespace {

// The current table when it can take a command that changes cells.
TableView* writable(TableView* view) {
    return view && !view->model()->isReadOnly() ? view : nullptr;
}

} // namespace

// A read-only table's stack holds only what leaves the file alone (sorts),
// so undo and redo serve every table.
void MainWindow::commandUndo() {
    if (TableView* v = currentView()) v->commandUndo();
}

void MainWindow::commandRedo() {
    if (TableView* v = currentView()) v->commandRedo();
}

void MainWindow::commandCutCells() {
    if (TableView* v = writable(currentView())) v->cutCells();
}

void MainWindow::commandCopyCells() {
    if (TableView* v = currentView()) v->copyCells(false);
}

void MainWindow::commandCopyCellsWithHeader() {
    if (TableView* v = currentView()) v->copyCells(true);
}

void MainWindow::commandPasteCells() {
    if (TableView* v = writable(currentView())) v->pasteCells();
}

void MainWindow::commandEditSelectedCell() {
    if (TableView* v = writable(currentView())) v->editSelectedCell();
}

void MainWindow::commandStopEditing() {
    if (TableView* v = currentView()) v->stopEditing(true);
}

void MainWindow::commandClearCellContentsNavigate() {
    if (TableView* v = writable(currentView())) v->deleteCells();
}

void MainWindow::commandMoveCellContentsUp() {
    if (TableView* v = writable(currentView())) v->moveCellContents(-1, 0);
}

void MainWindow::commandMoveCellContentsDown() {
    if (TableView* v = writable(currentView())) v->moveCellContents(1, 0);
}

void MainWindow::commandMoveCellContentsLeft() {
    if (TableView* v = writable(currentView())) v->moveCellContents(0, -1);
}

void MainWindow::commandMoveCellContentsRight() {
    if (TableView* v = writable(currentView())) v->moveCellContents(0, 1);
}

void MainWindow::commandDuplicateSelectedCellContentsUp() {
    if (TableView* v = writable(currentView())) v->duplicateCellContents(Up);
}

void MainWindow::commandDuplicateSelectedCellContentsDown() {
    if (TableView* v = writable(currentView())) v->duplicateCellContents(Down);
}

void MainWindow::commandDuplicateSelectedCellContentsLeft() {
    if (TableView* v = writable(currentView())) v->duplicateCellContents(Left);
}

void MainWindow::commandDuplicateSelectedCellContentsRight() {
    if (TableView* v = writable(currentView())) v->duplicateCellContents(Right);
}

void MainWindow::commandToggleShowEditorPane() {
    pane_view->showEditorPane(!pane_view->isEditorPaneShown(), true);
}

#define GRIDMERE_VIEW_COMMAND(slot, call)                                                          \
    void MainWindow::slot() {                                                                      \
        if (TableView* v = currentView()) v->call;                                                 \
    }

GRIDMERE_VIEW_COMMAND(commandSelectUp, extendSelection(Up, false))
GRIDMERE_VIEW_COMMAND(commandSelectDown, extendSelection(Down, false))
GRIDMERE_VIEW_COMMAND(commandSelectLeft, extendSelection(Left, false))
GRIDMERE_VIEW_COMMAND(commandSelectRight, extendSelection(Right, false))
GRIDMERE_VIEW_COMMAND(commandSelectUpByABlock, extendSelection(Up, true))
GRIDMERE_VIEW_COMMAND(commandSelectDownByABlock, extendSelection(Down, true))
GRIDMERE_VIEW_COMMAND(commandSelectLeftByABlock, extendSelection(Left, true))
GRIDMERE_VIEW_COMMAND(commandSelectRightByABlock, extendSelection(Right, true))
GRIDMERE_VIEW_COMMAND(commandMoveSelectionUp, moveSelectionRelative(-1, 0))
GRIDMERE_VIEW_COMMAND(commandMoveSelectionDown, moveSelectionRelative(1, 0))
GRIDMERE_VIEW_COMMAND(commandMoveSelectionLeft, moveSelectionRelative(0, -1))
GRIDMERE_VIEW_COMMAND(commandMoveSelectionRight, moveSelectionRelative(0, 1))
GRIDMERE_VIEW_COMMAND(commandMoveSelectionUpByABlock, moveSelectionByBlock(Up))
GRIDMERE_VIEW_COMMAND(commandMoveSelectionDownByABlock, moveSelectionByBlock(Down))
GRIDMERE_VIEW_COMMAND(commandMoveSelectionLeftByABlock, moveSelectionByBlock(Left))
GRIDMERE_VIEW_COMMAND(commandMoveSelectionRightByABlock, moveSelectionByBlock(Right))
GRIDMERE_VIEW_COMMAND(commandSelectEntireColumns, selectEntireColumns(false))
GRIDMERE_VIEW_COMMAND(commandSelectEntireColumnsHeaderExcluded, selectEntireColumns(true))
GRIDMERE_VIEW_COMMAND(commandSelectEntireRows, selectEntireRows(false))
GRIDMERE_VIEW_COMMAND(commandSelectEntireRowsHeaderExcluded, selectEntireRows(true))
GRIDMERE_VIEW_COMMAND(commandSelectEntireTable, selectEntireTable())
GRIDMERE_VIEW_COMMAND(commandSelectUpToTopOfColumnHeaderExcluded, selectToEdge(Up))
GRIDMERE_VIEW_COMMAND(commandSelectDownToBottomOfColumn, selectToEdge(Down))
GRIDMERE_VIEW_COMMAND(commandSelectLeftToStartOfRowHeaderExcluded, selectToEdge(Left))
GRIDMERE_VIEW_COMMAND(commandSelectRightToEndOfRow, selectToEdge(Right))
GRIDMERE_VIEW_COMMAND(commandGoUpOneScreen, goOneScreen(Up))
GRIDMERE_VIEW_COMMAND(commandGoDownOneScreen, goOneScreen(Down))
GRIDMERE_VIEW_COMMAND(commandGoLeftOneScreen, goOneScreen(Left))
GRIDMERE_VIEW_COMMAND(commandGoRightOneScreen, goOneScreen(Right))
GRIDMERE_VIEW_COMMAND(commandGoToTop, goToEdge(Up))
GRIDMERE_VIEW_COMMAND(commandGoToBottom, goToEdge(Down))
GRIDMERE_VIEW_COMMAND(commandGoToFarLeft, goToEdge(Left))
GRIDMERE_VIEW_COMMAND(commandGoToFarRight, goToEdge(Right))

#undef GRIDMERE_VIEW_COMMAND
