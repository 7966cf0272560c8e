#pragma once

#include <QString>
#include <QTabBar>

class QMenu;
class QVariantAnimation;

// The open files of a window as tabs. Each tab knows its file's path (empty
// for an untitled table) and whether it has unsaved changes, which its close
// button shows. Closing a tab, by its button, a middle click or the menu,
// is asked for through tabCloseRequested(index); every other menu command is
// a signal with the tab's index that the window carries out.
class TabBar : public QTabBar {
    Q_OBJECT
public:
    static constexpr int kHeight = 33;

    explicit TabBar(QWidget* parent = nullptr);

    // The theme's icon variant, "Dark" or "Light", for the close buttons.
    void setIconVariant(const QString& variant);

    // Name shown on the tab and path behind it; the path is the tab's tooltip.
    void setTabFile(int index, const QString& name, const QString& filepath);
    QString tabFilePath(int index) const;
    void setTabModified(int index, bool modified);
    bool isTabModified(int index) const;

    // Adds the file commands for the tab to a menu, so that the side bar's
    // menu of the same tab offers the same commands with the same signals.
    void addFileCommands(QMenu* menu, int index);

    QSize tabSizeHint(int index) const override;

signals:
    // Tabs were added, removed or renamed, or a path or a modified mark changed.
    void tabListChangedSignal();

    void newFileSignal();
    void closeFilesLeftSignal(int index);
    void closeFilesRightSignal(int index);
    void closeAllFilesSignal();
    void renameFileSignal(int index);
    void duplicateFileSignal(int index);
    void moveFileSignal(int index);
    void deleteFileSignal(int index);
    void openFileInTextEditorSignal(int index);
    void openTerminalToFilesDirectorySignal(int index);
    void showFileInFileSystemSignal(int index);
    void hideTabBarSignal();

public slots:
    void onCloseButtonClicked();
    void onCustomContextMenu(const QPoint& pos);
    // Slides the bar open or shut over 125 ms; shut, it is hidden.
    void animateShown(bool shown);
    void setTabbarHeightSlot(int height);

protected:
    void tabInserted(int index) override;
    void tabRemoved(int index) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QWidget* closeButton(int index) const;
    int indexOfCloseButton(const QWidget* button) const;
    void updateCloseButton(QWidget* button) const;

    QString icon_variant = QStringLiteral("Dark");
    QVariantAnimation* height_animation;
};
