// The Data menu's row and column commands, hiding and showing, empties and
// duplicates: each slot hands its command to the current table. Commands
// that ask for a number or a line first are started by their prompts.

#include "mainwindow.h"
#include "view/tableview.h"

void MainWindow::commandInsertRowsBefore() {
    if (TableView* v = currentView()) v->insertRows(0, true);
}

void MainWindow::commandInsertColumnsBefore() {
    if (TableView* v = currentView()) v->insertCols(0, true);
}

void MainWindow::commandInsertRowsAfter() {
    if (TableView* v = currentView()) v->insertRows(0, false);
}

void MainWindow::commandInsertColumnsAfter() {
    if (TableView* v = currentView()) v->insertCols(0, false);
}

void MainWindow::promptForLineCount(const QString& prompt_text, bool rows, bool each_line,
                                    const std::function<void(TableView*, int)>& act) {
    promptForCount(prompt_text, 1, act, [rows, each_line](TableView* v, int n) {
        return v->roomForLines(rows, n, each_line)
                   ? QString()
                   : QStringLiteral("Too many: that many new %1 would not fit in the table or "
                                    "in free memory.")
                         .arg(rows ? QStringLiteral("rows") : QStringLiteral("columns"));
    });
}

void MainWindow::commandInsertRowsBeforeMultipleTimes() {
    promptForLineCount(QStringLiteral("Number of Rows:"), true, false,
                       [](TableView* v, int n) { v->insertRows(n, true); });
}

void MainWindow::commandInsertColumnsBeforeMultipleTimes() {
    promptForLineCount(QStringLiteral("Number of Cols:"), false, false,
                       [](TableView* v, int n) { v->insertCols(n, true); });
}

void MainWindow::commandInsertCellsMoveRestOfRowRight() {
    if (TableView* v = currentView()) v->insertCellsMoveRest(true);
}

void MainWindow::commandInsertCellsMoveRestOfColumnDown() {
    if (TableView* v = currentView()) v->insertCellsMoveRest(false);
}

void MainWindow::commandRemoveRows() {
    if (TableView* v = currentView()) v->removeRows();
}

void MainWindow::commandRemoveColumns() {
    if (TableView* v = currentView()) v->removeCols();
}

void MainWindow::commandRemoveSelectedCellsMoveRestOfRowLeft() {
    if (TableView* v = currentView()) v->removeSelectedCellsMoveRest(true);
}

void MainWindow::commandRemoveSelectedCellsMoveRestOfColumnUp() {
    if (TableView* v = currentView()) v->removeSelectedCellsMoveRest(false);
}

void MainWindow::commandRemoveSelectedCellsAndTheRestOfTheirRows() {
    if (TableView* v = currentView()) v->removeSelectedCellsAndRestOfLines(true);
}

void MainWindow::commandRemoveSelectedCellsAndTheRestOfTheirColumns() {
    if (TableView* v = currentView()) v->removeSelectedCellsAndRestOfLines(false);
}

void MainWindow::commandMoveRowsUp() {
    if (TableView* v = currentView()) v->moveRowsRelative(-1);
}

void MainWindow::commandMoveRowsDown() {
    if (TableView* v = currentView()) v->moveRowsRelative(1);
}

void MainWindow::commandMoveColumnsLeft() {
    if (TableView* v = currentView()) v->moveColsRelative(-1);
}

void MainWindow::commandMoveColumnsRight() {
    if (TableView* v = currentView()) v->moveColsRelative(1);
}

void MainWindow::commandMoveRowsJustAboveRow() {
    promptForLine(QStringLiteral("Move Above Row:"), true,
                  [](TableView* v, int row) { v->moveRowsAbove(row); });
}

void MainWindow::commandMoveColumnsToTheLeftOfColumn() {
    promptForLine(QStringLiteral("Move to the Left of Column:"), false,
                  [](TableView* v, int col) { v->moveColsLeftOf(col); });
}

void MainWindow::commandDuplicateRows() {
    if (TableView* v = currentView()) v->duplicateRows(1);
}

void MainWindow::commandDuplicateColumns() {
    if (TableView* v = currentView()) v->duplicateCols(1);
}

void MainWindow::commandDuplicateRowsMultipleTimes() {
    promptForLineCount(QStringLiteral("Number of Rows:"), true, true,
                       [](TableView* v, int n) { v->duplicateRows(n); });
}

void MainWindow::commandDuplicateColumnsMultipleTimes() {
    promptForLineCount(QStringLiteral("Number of Columns:"), false, true,
                       [](TableView* v, int n) { v->duplicateCols(n); });
}

void MainWindow::commandTransposeTable() {
    if (TableView* v = currentView()) v->transposeTable();
}

void MainWindow::commandTransposeSelectedCells() {
    if (TableView* v = currentView()) v->transposeSelectedCells();
}

void MainWindow::commandHideSelectedRows() {
    if (TableView* v = currentView()) v->hideSelected(true);
}

void MainWindow::commandHideSelectedColumns() {
    if (TableView* v = currentView()) v->hideSelected(false);
}

void MainWindow::commandHideAllButSelectedRows() {
    if (TableView* v = currentView()) v->hideAllButSelected(true);
}

void MainWindow::commandHideAllButSelectedColumns() {
    if (TableView* v = currentView()) v->hideAllButSelected(false);
}

void MainWindow::commandHideEmptyRows() {
    if (TableView* v = currentView()) v->hideEmpty(true);
}

void MainWindow::commandHideEmptyColumns() {
    if (TableView* v = currentView()) v->hideEmpty(false);
}

void MainWindow::commandShowAllHiddenRows() {
    if (TableView* v = currentView()) v->showAllHidden(true);
}

void MainWindow::commandShowAllHiddenColumns() {
    if (TableView* v = currentView()) v->showAllHidden(false);
}

void MainWindow::commandShowHiddenRowsInSelection() {
    if (TableView* v = currentView()) v->showHiddenInSelection(true);
}

void MainWindow::commandShowHiddenColumnsInSelection() {
    if (TableView* v = currentView()) v->showHiddenInSelection(false);
}

void MainWindow::commandShowEmptyRows() {
    if (TableView* v = currentView()) v->showEmpty(true);
}

void MainWindow::commandShowEmptyColumns() {
    if (TableView* v = currentView()) v->showEmpty(false);
}

void MainWindow::commandRemoveEmptyRows() {
    if (TableView* v = currentView()) v->removeEmpty(true, false);
}

void MainWindow::commandRemoveEmptyColumns() {
    if (TableView* v = currentView()) v->removeEmpty(false, false);
}

void MainWindow::commandRemoveEmptyRowsBasedOnSelectedColumnsOnly() {
    if (TableView* v = currentView()) v->removeEmpty(true, true);
}

void MainWindow::commandRemoveEmptyColumnsBasedOnSelectedRowsOnly() {
    if (TableView* v = currentView()) v->removeEmpty(false, true);
}

void MainWindow::commandRemoveDuplicateRows() {
    if (TableView* v = currentView()) v->removeDuplicates(true, false);
}

void MainWindow::commandRemoveDuplicateColumns() {
    if (TableView* v = currentView()) v->removeDuplicates(false, false);
}

void MainWindow::commandRemoveDuplicateRowsBasedOnSelectedColumnsOnly() {
    if (TableView* v = currentView()) v->removeDuplicates(true, true);
}

void MainWindow::commandRemoveDuplicateColumnsBasedOnSelectedRowsOnly() {
    if (TableView* v = currentView()) v->removeDuplicates(false, true);
}

void MainWindow::commandSelectDuplicateRows() {
    if (TableView* v = currentView()) v->selectDuplicates(true, false);
}

void MainWindow::commandSelectDuplicateColumns() {
    if (TableView* v = currentView()) v->selectDuplicates(false, false);
}

void MainWindow::commandSelectDuplicateRowsBasedOnSelectedColumnsOnly() {
    if (TableView* v = currentView()) v->selectDuplicates(true, true);
}

void MainWindow::commandSelectDuplicateColumnsBasedOnSelectedRowsOnly() {
    if (TableView* v = currentView()) v->selectDuplicates(false, true);
}

void MainWindow::commandRemoveAllFilteredOutAndHiddenData() {
    if (TableView* v = currentView()) v->removeAllFilteredOutAndHiddenData();
}

void MainWindow::commandRemoveExtraneousRowsAndColumns() {
    if (TableView* v = currentView()) v->removeExtraneousRowsAndColumns();
}
