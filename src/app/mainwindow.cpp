#include "mainwindow.h"

#include "app/filemetadatawidget.h"
#include "app/findreplacewidget.h"
#include "app/paneview.h"
#include "app/sidebar.h"
#include "app/statusbar.h"
#include "app/tabbar.h"
#include "app/titlebarbutton.h"
#include "commands/commandtable.h"
#include "commands/contextrules.h"
#include "commands/preferencefiles.h"
#include "commands/settings.h"
#include "data/fileparameters.h"
#include "edit/commands/setdelimitercommand.h"
#include "edit/commands/setencodingcommand.h"
#include "edit/commands/setlineendingcommand.h"
#include "edit/commands/setparsingstandardcommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/msgbox.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QSplitter>
#include <QUndoStack>
#include <QVBoxLayout>

MainWindow::MainWindow(QWidget* parent) : QWidget(parent) {
    setAcceptDrops(true);
    buildLayout();
    // Every command is a row of one table: its menu entry, its shortcut and
    // its slot here. Rows whose feature is not built stay disabled.
    settings = std::make_unique<Settings>();
    command_table = std::make_unique<CommandTable>(this);
    command_table->buildMenus(menu_bar);
    command_table->setContext(context);
    connect(&file_watcher, &QFileSystemWatcher::fileChanged, this, &MainWindow::onFileChanged);
    newUntitledTable();
}

MainWindow::~MainWindow() {
    // Views go first: they hold loads and watchers that report to this window.
    closing = true;
    for (TableView* v : std::vector<TableView*>(table_views))
        removeView(v);
}

void MainWindow::buildLayout() {
    title_bar = new QWidget(this);
    title_bar->setObjectName(QStringLiteral("TitleBar"));
    title_bar->setFixedHeight(32);
    title_label = new QLabel(QStringLiteral("Gridmere"), title_bar);
    title_label->setObjectName(QStringLiteral("TitleLabel"));
    minimize_button = new TitleBarButton(TitleBarButton::Kind::Minimize, title_bar);
    maximize_button = new TitleBarButton(TitleBarButton::Kind::Maximize, title_bar);
    close_button = new TitleBarButton(TitleBarButton::Kind::Close, title_bar);
    auto* title_layout = new QHBoxLayout(title_bar);
    title_layout->setContentsMargins(10, 0, 0, 0);
    title_layout->setSpacing(0);
    menu_bar = new QMenuBar(title_bar);
    menu_bar->setObjectName(QStringLiteral("MenuBar"));
    title_layout->addWidget(menu_bar);
    title_layout->addSpacing(10);
    title_layout->addWidget(title_label, 1);
    title_layout->addWidget(minimize_button);
    title_layout->addWidget(maximize_button);
    title_layout->addWidget(close_button);
    connect(minimize_button, &QPushButton::clicked, this, &MainWindow::minimizeButtonClickedSignal);
    connect(maximize_button, &QPushButton::clicked, this, &MainWindow::maximizeButtonClickedSignal);
    connect(close_button, &QPushButton::clicked, this, &MainWindow::closeButtonClickedSignal);

    tab_bar = new TabBar(this);
    side_bar = new SideBar(tab_bar, this);
    pane_view = new PaneView(this);

    auto* right = new QWidget(this);
    auto* right_layout = new QVBoxLayout(right);
    right_layout->setContentsMargins(0, 0, 0, 0);
    right_layout->setSpacing(0);
    right_layout->addWidget(tab_bar);
    right_layout->addWidget(pane_view, 1);
    buildFindBar(right_layout);

    metadata = new FileMetadataWidget(this);
    status_bar = new StatusBar(this);

    auto* splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(side_bar);
    splitter->addWidget(right);
    splitter->addWidget(metadata);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({SideBar::kDefaultWidth, 1000, 260});

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(title_bar);
    layout->addWidget(splitter, 1);
    layout->addWidget(status_bar);

    connect(pane_view, &PaneView::currentTableViewChangedSignal, status_bar,
            &StatusBar::setTableView);
    connect(pane_view, &PaneView::currentTableViewChangedSignal, metadata,
            &FileMetadataWidget::setTableView);
    // Another tab has other cells: the find bar closes.
    connect(pane_view, &PaneView::currentTableViewChangedSignal, this, [this] {
        if (find_bar && find_bar->isVisible()) closeFindReplace();
    });
    connect(pane_view, &PaneView::loadFinishedSignal, this, [this](TableView* v) {
        if (v == currentView()) {
            status_bar->refresh();
            metadata->refresh();
        }
    });
    connect(pane_view, &PaneView::undoStackCleanChangedSignal, this,
            [this](TableView* v, bool) { updateTab(v); });
    connect(metadata, &FileMetadataWidget::reloadFileWithParametersSignal, this,
            [this](const QString& delimiter, EncodingType encoding, ParsingStandard standard) {
                reloadWithParameters(currentView(), delimiter, encoding, standard);
                metadata->refresh();
            });
    // The save side of the panel changes what the next save writes, one undo
    // step each, as the commands of the File menu do.
    connect(metadata, &FileMetadataWidget::delimiterSaveChangedSignal, this,
            [this](const QString& d) {
                pushOnCurrent([&](TableModel* m) { return new SetDelimiterCommand(m, d); });
            });
    connect(metadata, &FileMetadataWidget::lineEndingSaveChangedSignal, this,
            [this](LineEndingType e) {
                pushOnCurrent([&](TableModel* m) { return new SetLineEndingCommand(m, e); });
            });
    connect(metadata, &FileMetadataWidget::encodingSaveChangedSignal, this, [this](EncodingType e) {
        pushOnCurrent([&](TableModel* m) { return new SetEncodingCommand(m, e); });
    });
    connect(metadata, &FileMetadataWidget::parsingStandardSaveChangedSignal, this,
            [this](ParsingStandard p) {
                pushOnCurrent([&](TableModel* m) { return new SetParsingStandardCommand(m, p); });
            });
    connect(metadata, &FileMetadataWidget::readOnlyToggledSignal, this, [this](bool on) {
        setReadOnly(currentView(), on);
        metadata->refresh();
    });
    connect(metadata, &FileMetadataWidget::reloadFileSignal, this, &MainWindow::commandReloadFile);
    connect(metadata, &FileMetadataWidget::saveFileSignal, this, &MainWindow::commandSaveFile);
    connect(metadata, &FileMetadataWidget::renameFileSignal, this, &MainWindow::commandRenameFile);

    connect(tab_bar, &QTabBar::currentChanged, this, [this](int index) {
        if (index >= 0 && size_t(index) < table_views.size())
            setCurrentView(table_views[size_t(index)]);
    });
    connect(tab_bar, &QTabBar::tabCloseRequested, this, [this](int index) {
        if (index >= 0 && size_t(index) < table_views.size()) closeFile(table_views[size_t(index)]);
    });
    connect(tab_bar, &QTabBar::tabMoved, this, [this](int from, int to) {
        TableView* v = table_views[size_t(from)];
        table_views.erase(table_views.begin() + from);
        table_views.insert(table_views.begin() + to, v);
    });
    auto view_at = [this](int index) {
        return index >= 0 && size_t(index) < table_views.size() ? table_views[size_t(index)]
                                                                : nullptr;
    };
    connect(tab_bar, &TabBar::newFileSignal, this, &MainWindow::commandNewFile);
    connect(tab_bar, &TabBar::closeAllFilesSignal, this, &MainWindow::commandCloseAllFiles);
    connect(tab_bar, &TabBar::closeFilesLeftSignal, this, [this](int index) {
        closeFiles(std::vector<TableView*>(table_views.begin(), table_views.begin() + index));
    });
    connect(tab_bar, &TabBar::closeFilesRightSignal, this, [this](int index) {
        closeFiles(std::vector<TableView*>(table_views.begin() + index + 1, table_views.end()));
    });
    connect(tab_bar, &TabBar::deleteFileSignal, this, [this, view_at](int index) {
        if (TableView* v = view_at(index)) deleteFile(v);
    });
    connect(tab_bar, &TabBar::moveFileSignal, this, [this, view_at](int index) {
        setCurrentView(view_at(index));
        commandMoveFile();
    });
    connect(tab_bar, &TabBar::duplicateFileSignal, this, [this, view_at](int index) {
        setCurrentView(view_at(index));
        commandDuplicateFile();
    });
    connect(tab_bar, &TabBar::renameFileSignal, this, [this, view_at](int index) {
        setCurrentView(view_at(index));
        commandRenameFile();
    });
    connect(tab_bar, &TabBar::showFileInFileSystemSignal, this, [this, view_at](int index) {
        if (TableView* v = view_at(index))
            emit showFileInFileSystemSignal(v->model()->tableData().filepath());
    });
    connect(tab_bar, &TabBar::openTerminalToFilesDirectorySignal, this, [this, view_at](int index) {
        if (TableView* v = view_at(index))
            emit openTerminalToFilesDirectorySignal(
                QFileInfo(v->model()->tableData().filepath()).absolutePath());
    });
    connect(side_bar, &SideBar::openFileSignal, this, &MainWindow::openFile);
    connect(side_bar, &SideBar::showFileInFileSystemSignal, this,
            &MainWindow::showFileInFileSystemSignal);
    connect(side_bar, &SideBar::openTerminalToFilesDirectorySignal, this,
            &MainWindow::openTerminalToFilesDirectorySignal);
    connect(pane_view, &PaneView::addContextSignal, this, [this](Context c) { addContext(c); });
    connect(pane_view, &PaneView::removeContextSignal, this,
            [this](Context c) { removeContext(c); });
    connect(pane_view, &PaneView::cancelLoadSignal, this, [this](TableView* v) {
        // Closing the tab stops its loader at the next line start.
        removeView(v);
        if (table_views.empty() && !closing) newUntitledTable();
    });
    applyTheme(theme);
}

void MainWindow::applyTheme(const Theme& value) {
    theme = value;
    tab_bar->setIconVariant(theme.iconVariant());
    side_bar->setIconVariant(theme.iconVariant());
    const QColor glyph = theme.color(Theme::TextColor);
    for (TitleBarButton* b : {minimize_button, maximize_button})
        b->setColors(glyph, theme.color(Theme::Background3Color), glyph);
    close_button->setColors(glyph, QColor(0xe8, 0x11, 0x23), Qt::white);
    for (TableView* v : table_views)
        v->setTheme(theme);
    if (find_bar) find_bar->setTheme(theme);
}

TableView* MainWindow::currentView() const {
    return pane_view->currentTableView();
}

int MainWindow::indexOf(TableView* view) const {
    const auto it = std::find(table_views.begin(), table_views.end(), view);
    return it == table_views.end() ? -1 : int(it - table_views.begin());
}

TableView* MainWindow::viewForPath(const QString& filepath) const {
    if (filepath.isEmpty()) return nullptr;
    const QString wanted = QFileInfo(filepath).absoluteFilePath();
    for (TableView* v : table_views) {
        const QString path = v->model()->tableData().filepath();
        if (!path.isEmpty() && QFileInfo(path).absoluteFilePath() == wanted) return v;
    }
    return nullptr;
}

void MainWindow::setCurrentView(TableView* view) {
    const int index = indexOf(view);
    if (index < 0) return;
    pane_view->setCurrentTableView(view);
    if (tab_bar->currentIndex() != index) tab_bar->setCurrentIndex(index);
    status_bar->refresh();
    metadata->refresh();
    updateTitle();
    view->setFocus();
}

void MainWindow::updateTitle() {
    TableView* v = currentView();
    QString name = QStringLiteral("untitled");
    if (v && !v->model()->tableData().filepath().isEmpty())
        name = QFileInfo(v->model()->tableData().filepath()).fileName();
    const QString title = name + QStringLiteral(" - Gridmere");
    title_label->setText(title);
    setWindowTitle(title);
    emit setWindowTitleSignal(title);
}

void MainWindow::updateTab(TableView* view) {
    const int index = indexOf(view);
    if (index < 0) return;
    const QString path = view->model()->tableData().filepath();
    tab_bar->setTabFile(
        index, path.isEmpty() ? QStringLiteral("untitled") : QFileInfo(path).fileName(), path);
    tab_bar->setTabModified(index, !view->undoStack()->isClean());
    if (view == currentView()) updateTitle();
}

void MainWindow::connectView(TableView* view) {
    view->setTheme(theme);
    applySettingsTo(view, true);
    connect(view, &TableView::saveStartedSignal, this, &MainWindow::onSaveStarted);
    connect(view, &TableView::noMatchSignal, this, &MainWindow::onNoMatch);
    connect(view, &TableView::saveFinishedSignal, this, &MainWindow::onSaveFinished);
    connect(view->model(), &TableModel::loadFailedSignal, this, [this, view] {
        const QString path = view->model()->file().fileName();
        MsgBox::inform(this, QStringLiteral("Gridmere"),
                       QStringLiteral("This file could not be opened:\n%1").arg(path));
        removeView(view);
        if (table_views.empty() && !closing) newUntitledTable();
    });
}

TableView* MainWindow::newUntitledTable() {
    auto* view = new TableView(false, pane_view);
    connectView(view);
    view->model()->setLineEnding(platformLineEnding());
    view->model()->refreshAll();
    table_views.push_back(view);
    pane_view->addTableView(view);
    const int index = tab_bar->addTab(QStringLiteral("untitled"));
    tab_bar->setTabFile(index, QStringLiteral("untitled"), QString());
    setCurrentView(view);
    return view;
}

void MainWindow::removeView(TableView* view) {
    const int index = indexOf(view);
    if (index < 0) return;
    const QString path = view->model()->tableData().filepath();
    if (!path.isEmpty()) file_watcher.removePath(path);
    table_views.erase(table_views.begin() + index);
    pane_view->removeTableView(view);
    tab_bar->removeTab(index);
    delete view;
    if (TableView* v = currentView()) setCurrentView(v);
}

QString MainWindow::ask(const QString& text, const QStringList& buttons) {
    return MsgBox::ask(this, QStringLiteral("Gridmere"), text, QString(), buttons);
}

// The current view mirrors the window's bits: what it may do (edit in the
// pane, take keys) depends on the window as much as on itself.
void MainWindow::addContext(Context c, bool) {
    context = contextAdded(context, c);
    if (pane_view) pane_view->setContext(int(context));
    if (command_table) command_table->setContext(context);
}

void MainWindow::removeContext(Context c, bool) {
    context = contextRemoved(context, c);
    if (pane_view) pane_view->setContext(int(context));
    if (command_table) command_table->setContext(context);
}

void MainWindow::closeEvent(QCloseEvent* e) {
    closing = true;
    if (!closeAll()) {
        closing = false;
        e->ignore();
        return;
    }
    e->accept();
    emit mainWindowClosedSignal();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* e) {
    if (e->mimeData()->hasUrls()) e->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* e) {
    QStringList files;
    for (const QUrl& url : e->mimeData()->urls()) {
        const QString path = url.toLocalFile();
        if (QFileInfo(path).isDir())
            side_bar->addFolder(path);
        else if (!path.isEmpty())
            files << path;
    }
    if (!files.isEmpty()) openFiles(files);
}
