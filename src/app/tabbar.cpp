#include "app/tabbar.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QToolButton>
#include <QVariantAnimation>

namespace {

const char* const kFilePathProperty = "filepath";
const char* const kModifiedProperty = "modified";

} // namespace

TabBar::TabBar(QWidget* parent) : QTabBar(parent) {
    setFont(QFont(QStringLiteral("Lucida Sans Unicode")));
    setDrawBase(false);
    setExpanding(false);
    setElideMode(Qt::ElideRight);
    setUsesScrollButtons(true);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QWidget::customContextMenuRequested, this, &TabBar::onCustomContextMenu);

    height_animation = new QVariantAnimation(this);
    height_animation->setDuration(125);
    connect(height_animation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { setTabbarHeightSlot(value.toInt()); });
    connect(height_animation, &QVariantAnimation::finished, this, [this] {
        if (height_animation->endValue().toInt() == 0) hide();
    });
    setTabbarHeightSlot(kHeight);
}

void TabBar::setIconVariant(const QString& variant) {
    icon_variant = variant;
    for (int i = 0; i < count(); ++i) {
        if (QWidget* button = closeButton(i)) updateCloseButton(button);
    }
}

void TabBar::setTabFile(int index, const QString& name, const QString& filepath) {
    QWidget* button = closeButton(index);
    if (!button) return;
    setTabText(index, name);
    setTabToolTip(index, QDir::toNativeSeparators(filepath));
    button->setProperty(kFilePathProperty, filepath);
    emit tabListChangedSignal();
}

QString TabBar::tabFilePath(int index) const {
    const QWidget* button = closeButton(index);
    return button ? button->property(kFilePathProperty).toString() : QString();
}

void TabBar::setTabModified(int index, bool modified) {
    QWidget* button = closeButton(index);
    if (!button || button->property(kModifiedProperty).toBool() == modified) return;
    button->setProperty(kModifiedProperty, modified);
    updateCloseButton(button);
    emit tabListChangedSignal();
}

bool TabBar::isTabModified(int index) const {
    const QWidget* button = closeButton(index);
    return button && button->property(kModifiedProperty).toBool();
}

QSize TabBar::tabSizeHint(int index) const {
    QSize size = QTabBar::tabSizeHint(index);
    size.setHeight(kHeight);
    return size;
}

void TabBar::tabInserted(int index) {
    QTabBar::tabInserted(index);
    // The tab's own data lives on its button, which moves with the tab.
    auto* button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setCursor(Qt::ArrowCursor);
    button->setFixedSize(20, 20);
    button->setIconSize(QSize(16, 16));
    button->setToolTip(QStringLiteral("Close File"));
    button->setStyleSheet(QStringLiteral("QToolButton {\n"
                                         "background-color: transparent;\n"
                                         "border: none;\n"
                                         "border-radius: 3px;\n"
                                         "}\n"
                                         "QToolButton:hover {\n"
                                         "background-color: rgba(128, 128, 128, 70);\n"
                                         "}\n"));
    button->setProperty(kFilePathProperty, QString());
    button->setProperty(kModifiedProperty, false);
    updateCloseButton(button);
    connect(button, &QToolButton::clicked, this, &TabBar::onCloseButtonClicked);
    setTabButton(index, QTabBar::RightSide, button);
    emit tabListChangedSignal();
}

void TabBar::tabRemoved(int index) {
    QTabBar::tabRemoved(index);
    emit tabListChangedSignal();
}

void TabBar::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::MiddleButton) {
        const int index = tabAt(event->position().toPoint());
        if (index >= 0) {
            emit tabCloseRequested(index);
            event->accept();
            return;
        }
    }
    QTabBar::mouseReleaseEvent(event);
}

void TabBar::onCloseButtonClicked() {
    const int index = indexOfCloseButton(qobject_cast<QWidget*>(sender()));
    if (index >= 0) emit tabCloseRequested(index);
}

void TabBar::onCustomContextMenu(const QPoint& pos) {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const int index = tabAt(pos);
    if (index >= 0) {
        addFileCommands(menu, index);
    } else {
        menu->addAction(QStringLiteral("&New File"), this, &TabBar::newFileSignal);
    }
    menu->addSeparator();
    menu->addAction(QStringLiteral("Hide Tab Bar"), this, &TabBar::hideTabBarSignal);
    menu->popup(mapToGlobal(pos));
}

void TabBar::addFileCommands(QMenu* menu, int index) {
    const QString path = tabFilePath(index);
    const bool has_path = !path.isEmpty();
    // Tabs may come and go while the menu is open: find the tab again when a
    // command runs, by its button.
    const QPointer<QWidget> button = closeButton(index);
    auto command = [&](const QString& text, bool enabled, auto run) {
        QAction* action = menu->addAction(text, this, [this, button, run] {
            const int i = indexOfCloseButton(button);
            if (i >= 0) run(i);
        });
        action->setEnabled(enabled);
    };
    auto copy = [](const QString& text) { QGuiApplication::clipboard()->setText(text); };

    menu->addAction(QStringLiteral("&New File"), this, &TabBar::newFileSignal);
    menu->addSeparator();
    command(QStringLiteral("&Close File"), true, [this](int i) { emit tabCloseRequested(i); });
    command(QStringLiteral("Close All Files to the Left"), index > 0,
            [this](int i) { emit closeFilesLeftSignal(i); });
    command(QStringLiteral("Close All Files to the Right"), index < count() - 1,
            [this](int i) { emit closeFilesRightSignal(i); });
    menu->addAction(QStringLiteral("Close All Files"), this, &TabBar::closeAllFilesSignal);
    menu->addSeparator();
    command(QStringLiteral("Rename File"), has_path, [this](int i) { emit renameFileSignal(i); });
    command(QStringLiteral("Dup&licate File"), has_path,
            [this](int i) { emit duplicateFileSignal(i); });
    command(QStringLiteral("Move File"), has_path, [this](int i) { emit moveFileSignal(i); });
    command(QStringLiteral("&Delete File"), has_path, [this](int i) { emit deleteFileSignal(i); });
    menu->addSeparator();
    command(QStringLiteral("Copy File Name to Clipboard"), has_path,
            [this, copy](int i) { copy(QFileInfo(tabFilePath(i)).fileName()); });
    command(QStringLiteral("Copy File Path to Clipboard"), has_path,
            [this, copy](int i) { copy(QDir::toNativeSeparators(tabFilePath(i))); });
    command(QStringLiteral("Copy Folder Path to Clipboard"), has_path, [this, copy](int i) {
        copy(QDir::toNativeSeparators(QFileInfo(tabFilePath(i)).absolutePath()));
    });
    menu->addSeparator();
    command(QStringLiteral("Sho&w File in File System"), has_path,
            [this](int i) { emit showFileInFileSystemSignal(i); });
    command(QStringLiteral("Open &Terminal to File's Directory"), has_path,
            [this](int i) { emit openTerminalToFilesDirectorySignal(i); });
    command(QStringLiteral("Open File in Text Editor"), has_path,
            [this](int i) { emit openFileInTextEditorSignal(i); });
}

void TabBar::animateShown(bool shown) {
    const int target = shown ? kHeight : 0;
    if (shown && isHidden()) {
        setTabbarHeightSlot(0);
        show();
    }
    height_animation->stop();
    height_animation->setStartValue(height());
    height_animation->setEndValue(target);
    height_animation->start();
}

void TabBar::setTabbarHeightSlot(int height) {
    setFixedHeight(height);
}

QWidget* TabBar::closeButton(int index) const {
    return tabButton(index, QTabBar::RightSide);
}

int TabBar::indexOfCloseButton(const QWidget* button) const {
    if (!button) return -1;
    for (int i = 0; i < count(); ++i) {
        if (closeButton(i) == button) return i;
    }
    return -1;
}

void TabBar::updateCloseButton(QWidget* button) const {
    const QString x = QStringLiteral(":images/Close File X- Windows- %1.png").arg(icon_variant);
    QIcon icon;
    if (button->property(kModifiedProperty).toBool()) {
        // The unsaved mark turns into the close mark under the pointer.
        icon.addFile(QStringLiteral(":images/Close File O- %1.png").arg(icon_variant), {},
                     QIcon::Normal);
        icon.addFile(x, {}, QIcon::Active);
    } else {
        icon.addFile(x);
    }
    static_cast<QToolButton*>(button)->setIcon(icon);
}
