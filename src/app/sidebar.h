#pragma once

#include <QString>
#include <QStringList>
#include <QWidget>

class QFileSystemWatcher;
class QMenu;
class QSplitter;
class QTreeWidget;
class QTreeWidgetItem;
class QVariantAnimation;
class TabBar;

// The side bar: "Open Files", a row per tab of the tab bar in tab order, and
// "Folders", the pinned folders as trees kept up to date by a file system
// watcher. The open files follow the tab bar given at construction, and
// picking a row makes its tab current there.
class SideBar : public QWidget {
    Q_OBJECT
public:
    static constexpr int kDefaultWidth = 250;
    // A folder with more entries than this, counted through its subfolders,
    // is only pinned after a question.
    static constexpr int kDefaultLargeFolderEntries = 10000;

    explicit SideBar(TabBar* tab_bar, QWidget* parent = nullptr);

    // The theme's icon variant, "Dark" or "Light", for the tree icons.
    void setIconVariant(const QString& variant);

    // Pins a folder, asking first when it is large. False when the path is
    // not a folder or the user declined; a folder pinned already is kept.
    bool addFolder(const QString& path);
    void removeFolder(const QString& path);
    // Absolute and clean, in the order they were pinned.
    QStringList folderPaths() const;
    void setLargeFolderThreshold(int entries) { large_folder_entries = entries; }

    void setOpenFilesShown(bool shown);
    bool openFilesShown() const;
    void setFoldersShown(bool shown);
    bool foldersShown() const;

    // The width the side bar opens to.
    void setSidebarWidth(int width) { sidebar_width = width; }
    int sidebarWidth() const { return sidebar_width; }

    QTreeWidget* openFilesTree() const { return open_files_tree; }
    QTreeWidget* foldersTree() const { return folders_tree; }

signals:
    // A file of a pinned folder was activated or opened from the menu.
    void openFileSignal(const QString& filepath);
    void folderListChangedSignal(const QStringList& folderpaths);
    void showFileInFileSystemSignal(const QString& path);
    void openTerminalToFilesDirectorySignal(const QString& folderpath);
    // The menu's "Hide/Show Open Files", "Hide/Show Folders" and "Hide Side
    // Bar": the window runs its commands, which keep the settings in step.
    void toggleOpenFilesSignal();
    void toggleFoldersSignal();
    void hideSideBarSignal();

public slots:
    void refreshOpenFiles();
    void onOpenFilesSelectionChanged(QTreeWidgetItem* item);
    void onCustomContextMenu(const QPoint& pos);
    void onOpenFileCommand();
    void onCloseFolderCommand();
    void onToggleOpenFilesCommand();
    void onToggleFoldersCommand();
    void onHideSideBarCommand();
    // Slides the side bar open or shut over 125 ms; shut, it is hidden.
    void animateShown(bool shown);
    void setSidebarWidthSlot(int width);

private slots:
    void onDirectoryChanged(const QString& path);
    void onFolderItemExpanded(QTreeWidgetItem* item);
    void onFolderItemCollapsed(QTreeWidgetItem* item);
    void onFolderItemActivated(QTreeWidgetItem* item);

private:
    bool isLargeFolder(const QString& path) const;
    QTreeWidgetItem* makeFolderItem(const QString& path, const QString& name) const;
    void populate(QTreeWidgetItem* folder_item);
    void updateFolderIcon(QTreeWidgetItem* item) const;
    void addPathCommands(QMenu* menu, const QString& path, bool is_dir);
    void addSectionCommands(QMenu* menu);

    TabBar* tab_bar;
    QSplitter* splitter;
    QTreeWidget* open_files_tree;
    QTreeWidget* folders_tree;
    QFileSystemWatcher* watcher;
    QVariantAnimation* width_animation;
    QString icon_variant = QStringLiteral("Dark");
    QString menu_path; // the entry the context menu was opened on
    int large_folder_entries = kDefaultLargeFolderEntries;
    int sidebar_width = kDefaultWidth;
};
