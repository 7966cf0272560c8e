#include "app/sidebar.h"

#include "app/tabbar.h"
#include "widgets/msgbox.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHeaderView>
#include <QMenu>
#include <QSet>
#include <QSplitter>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace {

constexpr int kPathRole = Qt::UserRole;
constexpr int kIsDirRole = Qt::UserRole + 1;

QString cleanAbsolute(const QString& path) {
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

QTreeWidget* makeTree(const QString& title, QWidget* parent) {
    auto* tree = new QTreeWidget(parent);
    tree->setHeaderLabel(title);
    tree->header()->setSectionsClickable(false);
    tree->setContextMenuPolicy(Qt::CustomContextMenu);
    tree->setUniformRowHeights(true);
    tree->setFont(QFont(QStringLiteral("Lucida Sans Unicode")));
    tree->header()->setFont(QFont(QStringLiteral("Lucida Sans Unicode")));
    tree->header()->setStyleSheet(QStringLiteral("QHeaderView::section {\n"
                                                 "padding-left: 6px;\n"
                                                 "}\n"));
    return tree;
}

} // namespace

SideBar::SideBar(TabBar* tab_bar, QWidget* parent) : QWidget(parent), tab_bar(tab_bar) {
    open_files_tree = makeTree(QStringLiteral("Open Files"), this);
    open_files_tree->setRootIsDecorated(false);
    folders_tree = makeTree(QStringLiteral("Folders"), this);

    splitter = new QSplitter(Qt::Vertical, this);
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(3);
    splitter->addWidget(open_files_tree);
    splitter->addWidget(folders_tree);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 2);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);

    watcher = new QFileSystemWatcher(this);
    connect(watcher, &QFileSystemWatcher::directoryChanged, this, &SideBar::onDirectoryChanged);

    connect(open_files_tree, &QTreeWidget::currentItemChanged, this,
            &SideBar::onOpenFilesSelectionChanged);
    connect(open_files_tree, &QWidget::customContextMenuRequested, this,
            &SideBar::onCustomContextMenu);
    connect(folders_tree, &QWidget::customContextMenuRequested, this,
            &SideBar::onCustomContextMenu);
    connect(folders_tree, &QTreeWidget::itemExpanded, this, &SideBar::onFolderItemExpanded);
    connect(folders_tree, &QTreeWidget::itemCollapsed, this, &SideBar::onFolderItemCollapsed);
    connect(folders_tree, &QTreeWidget::itemActivated, this, &SideBar::onFolderItemActivated);

    if (tab_bar) {
        connect(tab_bar, &TabBar::tabListChangedSignal, this, &SideBar::refreshOpenFiles);
        connect(tab_bar, &QTabBar::currentChanged, this, [this](int index) {
            const QSignalBlocker blocker(open_files_tree);
            open_files_tree->setCurrentItem(open_files_tree->topLevelItem(index));
        });
        connect(tab_bar, &QTabBar::tabMoved, this, &SideBar::refreshOpenFiles);
    }

    width_animation = new QVariantAnimation(this);
    width_animation->setDuration(125);
    connect(width_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { setSidebarWidthSlot(value.toInt()); });
    connect(width_animation, &QVariantAnimation::finished, this, [this] {
        if (width_animation->endValue().toInt() == 0) hide();
    });
    setSidebarWidthSlot(sidebar_width);
    refreshOpenFiles();
}

void SideBar::setIconVariant(const QString& variant) {
    icon_variant = variant;
    const QIcon file_icon(QStringLiteral(":images/File - %1.png").arg(icon_variant));
    for (int i = 0; i < open_files_tree->topLevelItemCount(); ++i)
        open_files_tree->topLevelItem(i)->setIcon(0, file_icon);
    for (QTreeWidgetItemIterator it(folders_tree); *it; ++it) {
        if ((*it)->data(0, kIsDirRole).toBool())
            updateFolderIcon(*it);
        else
            (*it)->setIcon(0, file_icon);
    }
}

void SideBar::refreshOpenFiles() {
    if (!tab_bar) return;
    const QIcon file_icon(QStringLiteral(":images/File - %1.png").arg(icon_variant));
    const QSignalBlocker blocker(open_files_tree);
    open_files_tree->clear();
    for (int i = 0; i < tab_bar->count(); ++i) {
        auto* item = new QTreeWidgetItem(open_files_tree, {tab_bar->tabText(i)});
        item->setIcon(0, file_icon);
        item->setToolTip(0, QDir::toNativeSeparators(tab_bar->tabFilePath(i)));
    }
    if (QTreeWidgetItem* current = open_files_tree->topLevelItem(tab_bar->currentIndex()))
        open_files_tree->setCurrentItem(current);
}

void SideBar::onOpenFilesSelectionChanged(QTreeWidgetItem* item) {
    if (!item || !tab_bar) return;
    tab_bar->setCurrentIndex(open_files_tree->indexOfTopLevelItem(item));
}

bool SideBar::isLargeFolder(const QString& path) const {
    int entries = 0;
    QDirIterator it(path, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        if (++entries > large_folder_entries) return true;
    }
    return false;
}

bool SideBar::addFolder(const QString& path) {
    const QString folder = cleanAbsolute(path);
    if (!QFileInfo(folder).isDir()) return false;
    if (folderPaths().contains(folder)) return true;

    if (isLargeFolder(folder)) {
        const QString text = QStringLiteral("The following folder:<br><br>") +
                             QStringLiteral("<strong>%1</strong><br><br>")
                                 .arg(QDir::toNativeSeparators(folder).toHtmlEscaped()) +
                             QStringLiteral("contains a lot of files and folders.<br>") +
                             QStringLiteral("It may bog down the program.<br>") +
                             QStringLiteral("<br>Would you like to open it anyway?");
        const QString answer =
            MsgBox::ask(this, QStringLiteral("Large Folder"), text, {},
                        {QStringLiteral("&Open"), QStringLiteral("Do&n't Open")});
        if (answer != QStringLiteral("&Open")) return false;
    }

    QString name = QDir(folder).dirName();
    if (name.isEmpty()) name = QDir::toNativeSeparators(folder);
    QTreeWidgetItem* item = makeFolderItem(folder, name);
    folders_tree->addTopLevelItem(item);
    watcher->addPath(folder);
    item->setExpanded(true);
    emit folderListChangedSignal(folderPaths());
    return true;
}

void SideBar::removeFolder(const QString& path) {
    const QString folder = cleanAbsolute(path);
    for (int i = 0; i < folders_tree->topLevelItemCount(); ++i) {
        QTreeWidgetItem* item = folders_tree->topLevelItem(i);
        if (item->data(0, kPathRole).toString() != folder) continue;
        // Stop watching the folder and every open subfolder of it.
        QStringList watched;
        for (QTreeWidgetItemIterator it(item); *it; ++it) {
            if ((*it) != item && (*it)->parent() == nullptr) break;
            if ((*it)->isExpanded()) watched.append((*it)->data(0, kPathRole).toString());
        }
        watched.append(folder);
        watcher->removePaths(watched);
        delete item;
        emit folderListChangedSignal(folderPaths());
        return;
    }
}

QStringList SideBar::folderPaths() const {
    QStringList paths;
    for (int i = 0; i < folders_tree->topLevelItemCount(); ++i)
        paths.append(folders_tree->topLevelItem(i)->data(0, kPathRole).toString());
    return paths;
}

QTreeWidgetItem* SideBar::makeFolderItem(const QString& path, const QString& name) const {
    auto* item = new QTreeWidgetItem({name});
    item->setData(0, kPathRole, path);
    item->setData(0, kIsDirRole, true);
    item->setToolTip(0, QDir::toNativeSeparators(path));
    // Children are listed when the folder opens, so a deep tree costs nothing.
    item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    updateFolderIcon(item);
    return item;
}

void SideBar::updateFolderIcon(QTreeWidgetItem* item) const {
    const QString pattern = item->isExpanded() ? QStringLiteral(":images/Folder Opened - %1.png")
                                               : QStringLiteral(":images/Folder - %1.png");
    item->setIcon(0, QIcon(pattern.arg(icon_variant)));
}

void SideBar::populate(QTreeWidgetItem* folder_item) {
    const QString folder = folder_item->data(0, kPathRole).toString();

    // Open subfolders stay open across a refresh.
    QSet<QString> expanded;
    for (int i = 0; i < folder_item->childCount(); ++i) {
        QTreeWidgetItem* child = folder_item->child(i);
        if (child->isExpanded()) expanded.insert(child->data(0, kPathRole).toString());
    }
    const QString current_path = folders_tree->currentItem()
                                     ? folders_tree->currentItem()->data(0, kPathRole).toString()
                                     : QString();
    qDeleteAll(folder_item->takeChildren());

    const QIcon file_icon(QStringLiteral(":images/File - %1.png").arg(icon_variant));
    const QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::NoDotAndDotDot, QDir::DirsFirst | QDir::Name | QDir::IgnoreCase);
    QList<QTreeWidgetItem*> reopen;
    for (const QFileInfo& info : entries) {
        const QString path = cleanAbsolute(info.filePath());
        QTreeWidgetItem* child;
        if (info.isDir()) {
            child = makeFolderItem(path, info.fileName());
            if (expanded.contains(path)) reopen.append(child);
        } else {
            child = new QTreeWidgetItem({info.fileName()});
            child->setData(0, kPathRole, path);
            child->setData(0, kIsDirRole, false);
            child->setToolTip(0, QDir::toNativeSeparators(path));
            child->setIcon(0, file_icon);
        }
        folder_item->addChild(child);
        if (path == current_path) folders_tree->setCurrentItem(child);
    }
    folder_item->setChildIndicatorPolicy(entries.isEmpty()
                                             ? QTreeWidgetItem::DontShowIndicatorWhenChildless
                                             : QTreeWidgetItem::ShowIndicator);
    for (QTreeWidgetItem* child : reopen)
        child->setExpanded(true);
}

void SideBar::onFolderItemExpanded(QTreeWidgetItem* item) {
    populate(item);
    updateFolderIcon(item);
    watcher->addPath(item->data(0, kPathRole).toString());
}

void SideBar::onFolderItemCollapsed(QTreeWidgetItem* item) {
    updateFolderIcon(item);
    // A pinned folder is watched while it is pinned, open or not.
    if (item->parent()) watcher->removePath(item->data(0, kPathRole).toString());
}

void SideBar::onDirectoryChanged(const QString& path) {
    const QString folder = cleanAbsolute(path);
    // Collected first: populate() replaces items below the changed folder.
    QList<QTreeWidgetItem*> changed;
    for (QTreeWidgetItemIterator it(folders_tree); *it; ++it) {
        if ((*it)->isExpanded() && (*it)->data(0, kPathRole).toString() == folder)
            changed.append(*it);
    }
    for (QTreeWidgetItem* item : changed)
        populate(item);
}

void SideBar::onFolderItemActivated(QTreeWidgetItem* item) {
    if (!item || item->data(0, kIsDirRole).toBool()) return;
    const QString path = item->data(0, kPathRole).toString();
    if (!QFileInfo::exists(path)) {
        MsgBox::inform(
            this, QStringLiteral("File Not Found"),
            QStringLiteral("This file no longer exists:\n%1").arg(QDir::toNativeSeparators(path)));
        if (QTreeWidgetItem* parent = item->parent()) populate(parent);
        return;
    }
    emit openFileSignal(path);
}

void SideBar::onCustomContextMenu(const QPoint& pos) {
    auto* tree = qobject_cast<QTreeWidget*>(sender());
    if (!tree) return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QTreeWidgetItem* item = tree->itemAt(pos);
    menu_path.clear();
    if (item && tree == open_files_tree && tab_bar) {
        tab_bar->addFileCommands(menu, open_files_tree->indexOfTopLevelItem(item));
        menu->addSeparator();
    } else if (item && tree == folders_tree) {
        menu_path = item->data(0, kPathRole).toString();
        addPathCommands(menu, menu_path, item->data(0, kIsDirRole).toBool());
        if (!item->parent()) {
            menu->addAction(QStringLiteral("Close Folder"), this, &SideBar::onCloseFolderCommand);
        }
        menu->addSeparator();
    }
    addSectionCommands(menu);
    menu->popup(tree->viewport()->mapToGlobal(pos));
}

void SideBar::addPathCommands(QMenu* menu, const QString& path, bool is_dir) {
    auto copy = [](const QString& text) { QGuiApplication::clipboard()->setText(text); };
    const QString native = QDir::toNativeSeparators(path);
    const QString folder = is_dir ? path : QFileInfo(path).absolutePath();
    if (!is_dir) {
        menu->addAction(QStringLiteral("&Open File"), this, &SideBar::onOpenFileCommand);
        menu->addSeparator();
        menu->addAction(QStringLiteral("Copy File Name to Clipboard"), this,
                        [copy, path] { copy(QFileInfo(path).fileName()); });
        menu->addAction(QStringLiteral("Copy File Path to Clipboard"), this,
                        [copy, native] { copy(native); });
    }
    menu->addAction(QStringLiteral("Copy Folder Path to Clipboard"), this,
                    [copy, folder] { copy(QDir::toNativeSeparators(folder)); });
    menu->addSeparator();
    menu->addAction(QStringLiteral("Sho&w File in File System"), this,
                    [this, path] { emit showFileInFileSystemSignal(path); });
    menu->addAction(QStringLiteral("Open &Terminal to File's Directory"), this,
                    [this, folder] { emit openTerminalToFilesDirectorySignal(folder); });
}

void SideBar::addSectionCommands(QMenu* menu) {
    menu->addAction(openFilesShown() ? QStringLiteral("Hide Open Files")
                                     : QStringLiteral("Show Open Files"),
                    this, &SideBar::onToggleOpenFilesCommand);
    menu->addAction(foldersShown() ? QStringLiteral("Hide Folders")
                                   : QStringLiteral("Show Folders"),
                    this, &SideBar::onToggleFoldersCommand);
    menu->addAction(QStringLiteral("Hide Side Bar"), this, &SideBar::onHideSideBarCommand);
}

void SideBar::onOpenFileCommand() {
    if (!menu_path.isEmpty()) emit openFileSignal(menu_path);
}

void SideBar::onCloseFolderCommand() {
    if (!menu_path.isEmpty()) removeFolder(menu_path);
}

void SideBar::onToggleOpenFilesCommand() {
    emit toggleOpenFilesSignal();
}

void SideBar::onToggleFoldersCommand() {
    emit toggleFoldersSignal();
}

void SideBar::onHideSideBarCommand() {
    emit hideSideBarSignal();
}

void SideBar::setOpenFilesShown(bool shown) {
    open_files_tree->setVisible(shown);
}

bool SideBar::openFilesShown() const {
    return !open_files_tree->isHidden();
}

void SideBar::setFoldersShown(bool shown) {
    folders_tree->setVisible(shown);
}

bool SideBar::foldersShown() const {
    return !folders_tree->isHidden();
}

void SideBar::animateShown(bool shown) {
    const int target = shown ? sidebar_width : 0;
    if (shown && isHidden()) {
        setSidebarWidthSlot(0);
        show();
    }
    width_animation->stop();
    width_animation->setStartValue(width());
    width_animation->setEndValue(target);
    width_animation->start();
}

void SideBar::setSidebarWidthSlot(int width) {
    setFixedWidth(width);
}
