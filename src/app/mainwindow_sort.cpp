// The Sort menu: each slot hands its sort to the current table. Rows and
// columns sort in read-only tables too, since that changes only the order
// in which the file is shown; selected cells sort only where they can be
// written.

#include "mainwindow.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

namespace {

TableView* writable(TableView* view) {
    return view && !view->model()->isReadOnly() ? view : nullptr;
}

} // namespace

void MainWindow::commandSortSelectedColumnAscending() {
    if (TableView* v = currentView()) v->sortSelectedColumn(0);
}

void MainWindow::commandSortSelectedColumnDescending() {
    if (TableView* v = currentView()) v->sortSelectedColumn(1);
}

void MainWindow::commandSortSelectedRowAscending() {
    if (TableView* v = currentView()) v->sortSelectedRow(0);
}

void MainWindow::commandSortSelectedRowDescending() {
    if (TableView* v = currentView()) v->sortSelectedRow(1);
}

void MainWindow::commandSortSelectedCellsHorizontallyAscending() {
    if (TableView* v = writable(currentView())) v->sortSelectedCells(true, 0);
}

void MainWindow::commandSortSelectedCellsHorizontallyDescending() {
    if (TableView* v = writable(currentView())) v->sortSelectedCells(true, 1);
}

void MainWindow::commandSortSelectedCellsVerticallyAscending() {
    if (TableView* v = writable(currentView())) v->sortSelectedCells(false, 0);
}

void MainWindow::commandSortSelectedCellsVerticallyDescending() {
    if (TableView* v = writable(currentView())) v->sortSelectedCells(false, 1);
}
