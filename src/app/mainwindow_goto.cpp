// The Go To menu's moves between tabs and screens, and the file's location
// put on the clipboard.

#include "app/mainwindow.h"
#include "app/paneview.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QScrollBar>

namespace {

QString tabName(TableView* view) {
    const QString path = view->model()->tableData().filepath();
    return path.isEmpty() ? QStringLiteral("untitled") : QFileInfo(path).fileName();
}

} // namespace

void MainWindow::commandGoToFile() {
    if (table_views.empty()) return;
    std::vector<OptionData> options;
    for (size_t i = 0; i < table_views.size(); ++i) {
        const QString path = table_views[i]->model()->tableData().filepath();
        options.push_back(
            {tabName(table_views[i]), {}, {}, QDir::toNativeSeparators(path), QString::number(i)});
    }
    PromptStep step;
    step.prompt = QStringLiteral("Go to File:");
    step.options = std::move(options);
    step.accept = [this](const QString& answer) {
        bool ok = false;
        const int index = answer.toInt(&ok);
        if (!ok || index < 0 || size_t(index) >= table_views.size())
            return QStringLiteral("Choose one of the open files.");
        setCurrentView(table_views[size_t(index)]);
        return QString();
    };
    prompt(step);
}

void MainWindow::switchToTab(int index) {
    if (index >= 0 && size_t(index) < table_views.size())
        setCurrentView(table_views[size_t(index)]);
}

void MainWindow::commandSwitchToTabOnTheRight() {
    if (table_views.empty()) return;
    switchToTab((indexOf(currentView()) + 1) % int(table_views.size()));
}

void MainWindow::commandSwitchToTabOnTheLeft() {
    if (table_views.empty()) return;
    const int n = int(table_views.size());
    switchToTab((indexOf(currentView()) - 1 + n) % n);
}

void MainWindow::commandSwitchToTab1() {
    switchToTab(0);
}
void MainWindow::commandSwitchToTab2() {
    switchToTab(1);
}
void MainWindow::commandSwitchToTab3() {
    switchToTab(2);
}
void MainWindow::commandSwitchToTab4() {
    switchToTab(3);
}
void MainWindow::commandSwitchToTab5() {
    switchToTab(4);
}
void MainWindow::commandSwitchToTab6() {
    switchToTab(5);
}
void MainWindow::commandSwitchToTab7() {
    switchToTab(6);
}
void MainWindow::commandSwitchToTab8() {
    switchToTab(7);
}
void MainWindow::commandSwitchToTab9() {
    switchToTab(8);
}
void MainWindow::commandSwitchToTab10() {
    switchToTab(9);
}

// Scrolling leaves the selection where it is.
#define GRIDMERE_SCROLL_COMMAND(slot, call)                                                        \
    void MainWindow::slot() {                                                                      \
        if (TableView* v = currentView()) v->call;                                                 \
    }

GRIDMERE_SCROLL_COMMAND(commandScrollUpOneScreen, scroll(Up, true))
GRIDMERE_SCROLL_COMMAND(commandScrollDownOneScreen, scroll(Down, true))
GRIDMERE_SCROLL_COMMAND(commandScrollLeftOneScreen, scroll(Left, true))
GRIDMERE_SCROLL_COMMAND(commandScrollRightOneScreen, scroll(Right, true))
GRIDMERE_SCROLL_COMMAND(commandScrollToTop, verticalScrollBar()->setValue(0))
GRIDMERE_SCROLL_COMMAND(commandScrollToBottom,
                        verticalScrollBar()->setValue(v->verticalScrollBar()->maximum()))
GRIDMERE_SCROLL_COMMAND(commandScrollToFarLeft, horizontalScrollBar()->setValue(0))
GRIDMERE_SCROLL_COMMAND(commandScrollToFarRight,
                        horizontalScrollBar()->setValue(v->horizontalScrollBar()->maximum()))

void MainWindow::commandCloseAllFilesExceptCurrent() {
    TableView* current = currentView();
    std::vector<TableView*> others;
    for (TableView* v : table_views)
        if (v != current) others.push_back(v);
    closeFiles(others);
}

void MainWindow::copyFileLocation(int part) {
    TableView* v = currentView();
    if (!v) return;
    const QString path = v->model()->tableData().filepath();
    if (path.isEmpty()) return;
    const QFileInfo info(path);
    const QString text = part == 0   ? QDir::toNativeSeparators(info.absoluteFilePath())
                         : part == 1 ? QDir::toNativeSeparators(info.absolutePath())
                                     : info.fileName();
    QGuiApplication::clipboard()->setText(text);
}

void MainWindow::commandCopyFilePathToClipboard() {
    copyFileLocation(0);
}
void MainWindow::commandCopyFolderPathToClipboard() {
    copyFileLocation(1);
}
void MainWindow::commandCopyFileNameToClipboard() {
    copyFileLocation(2);
}
