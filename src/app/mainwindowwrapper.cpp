#include "app/mainwindowwrapper.h"

#include "app/titlebarbutton.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>

namespace {

// A transparent strip along an edge that starts the system's resize from
// that edge. The band lies over the content, as the system's own resize
// border would.
class EdgeGrip : public QWidget {
public:
    EdgeGrip(Qt::Edges edges, QWidget* parent) : QWidget(parent), edges(edges) {
        // Plain widgets get the style sheet's background; the grip shows none.
        setStyleSheet(QStringLiteral("background-color: transparent;"));
        if (edges == (Qt::LeftEdge | Qt::BottomEdge)) {
            setCursor(Qt::SizeBDiagCursor);
        } else if (edges == (Qt::RightEdge | Qt::BottomEdge)) {
            setCursor(Qt::SizeFDiagCursor);
        } else if (edges & (Qt::LeftEdge | Qt::RightEdge)) {
            setCursor(Qt::SizeHorCursor);
        } else {
            setCursor(Qt::SizeVerCursor);
        }
    }

protected:
    void mousePressEvent(QMouseEvent* event) override {
        if (event->button() != Qt::LeftButton) {
            QWidget::mousePressEvent(event);
            return;
        }
        QWindow* handle = window()->windowHandle();
        if (handle && handle->startSystemResize(edges)) return;
        // Without a system resize the grip follows the pointer itself.
        following = true;
        start_geometry = window()->geometry();
        start_cursor = event->globalPosition().toPoint();
    }

    void mouseMoveEvent(QMouseEvent* event) override {
        if (!following) return;
        const QPoint d = event->globalPosition().toPoint() - start_cursor;
        const QSize min = window()->minimumSize().expandedTo(window()->minimumSizeHint());
        QRect g = start_geometry;
        if (edges & Qt::LeftEdge)
            g.setLeft(std::min(g.left() + d.x(), g.right() + 1 - min.width()));
        if (edges & Qt::RightEdge)
            g.setRight(std::max(g.right() + d.x(), g.left() - 1 + min.width()));
        if (edges & Qt::TopEdge) g.setTop(std::min(g.top() + d.y(), g.bottom() + 1 - min.height()));
        if (edges & Qt::BottomEdge)
            g.setBottom(std::max(g.bottom() + d.y(), g.top() - 1 + min.height()));
        window()->setGeometry(g);
    }

    void mouseReleaseEvent(QMouseEvent*) override { following = false; }

public:
    const Qt::Edges edges;

private:
    bool following = false;
    QRect start_geometry;
    QPoint start_cursor;
};

} // namespace

MainWindowWrapper::MainWindowWrapper(QWidget* content, QWidget* title_bar, QLabel* title_label,
                                     QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint), main_window(content),
      title_bar(title_bar), title_label(title_label) {
    setWindowTitle(QStringLiteral("Gridmere"));
    setWindowIcon(QIcon(QStringLiteral(":icon/Icon.png")));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(main_window);

    // Made after the content, so they stack above it.
    const std::array<Qt::Edges, 6> edges = {Qt::TopEdge,
                                            Qt::BottomEdge,
                                            Qt::LeftEdge,
                                            Qt::RightEdge,
                                            Qt::LeftEdge | Qt::BottomEdge,
                                            Qt::RightEdge | Qt::BottomEdge};
    for (size_t i = 0; i < grips.size(); ++i)
        grips[i] = new EdgeGrip(edges[i], this);

    if (title_bar) title_bar->installEventFilter(this);
    if (title_label) title_label->installEventFilter(this);

    system_menu = new QMenu(this);
    restore_action = system_menu->addAction(QStringLiteral("&Restore"), this, &QWidget::showNormal);
    move_action = system_menu->addAction(QStringLiteral("&Move"), this,
                                         &MainWindowWrapper::startKeyboardMove);
    size_action = system_menu->addAction(QStringLiteral("&Size"), this,
                                         &MainWindowWrapper::startKeyboardSize);
    minimize_action = system_menu->addAction(QStringLiteral("Mi&nimize"), this,
                                             &MainWindowWrapper::onMinimizeButtonClicked);
    maximize_action =
        system_menu->addAction(QStringLiteral("Ma&ximize"), this, &QWidget::showMaximized);
    system_menu->addSeparator();
    QAction* close_action = system_menu->addAction(QStringLiteral("&Close\tAlt+F4"), this,
                                                   &MainWindowWrapper::onCloseButtonClicked);
    system_menu->setDefaultAction(close_action);

    // The first native window is small; the caller sets the real geometry.
    resize((QSizeF(300, 50) * scaleFactor()).toSize());
}

void MainWindowWrapper::setMayClose(std::function<bool()> may_close_) {
    may_close = std::move(may_close_);
}

void MainWindowWrapper::setBorderWidth(int width) {
    border_width = std::max(0, width);
    layoutGrips();
}

qreal MainWindowWrapper::scaleFactor() {
    static const qreal factor = [] {
        const QScreen* screen = QGuiApplication::primaryScreen();
        return screen ? screen->logicalDotsPerInch() / 96.0 : 1.0;
    }();
    return factor;
}

void MainWindowWrapper::onMinimizeButtonClicked() {
    showMinimized();
}

void MainWindowWrapper::onMaximizeButtonClicked() {
    if (isMaximized())
        showNormal();
    else
        showMaximized();
}

void MainWindowWrapper::onCloseButtonClicked() {
    close();
}

void MainWindowWrapper::onSetWindowTitle(const QString& title) {
    setWindowTitle(title);
}

void MainWindowWrapper::showSystemMenu(const QPoint& global_pos) {
    const bool maximized = isMaximized();
    restore_action->setEnabled(maximized || isMinimized());
    move_action->setEnabled(!maximized);
    size_action->setEnabled(!maximized);
    minimize_action->setEnabled(true);
    maximize_action->setEnabled(!maximized);
    system_menu->popup(global_pos);
}

void MainWindowWrapper::startKeyboardMove() {
    startTracking(Tracking::Move);
}

void MainWindowWrapper::startKeyboardSize() {
    startTracking(Tracking::Size);
}

void MainWindowWrapper::startTracking(Tracking kind) {
    if (isMaximized() || isMinimized() || tracking != Tracking::None) return;
    tracking = kind;
    tracking_start_geometry = geometry();
    tracking_last_cursor = QCursor::pos();
    tracking_delta = {};
    grabKeyboard();
    grabMouse(kind == Tracking::Move ? Qt::SizeAllCursor : Qt::SizeFDiagCursor);
}

void MainWindowWrapper::applyTracking() {
    if (tracking == Tracking::Move) {
        move(tracking_start_geometry.topLeft() + tracking_delta);
    } else {
        resize(tracking_start_geometry.size() + QSize(tracking_delta.x(), tracking_delta.y()));
    }
}

void MainWindowWrapper::endTracking(bool keep) {
    releaseMouse();
    releaseKeyboard();
    if (!keep) setGeometry(tracking_start_geometry);
    tracking = Tracking::None;
}

void MainWindowWrapper::keyPressEvent(QKeyEvent* event) {
    if (tracking == Tracking::None) {
        QWidget::keyPressEvent(event);
        return;
    }
    const int step = event->modifiers() & Qt::ControlModifier ? 1 : 10;
    switch (event->key()) {
    case Qt::Key_Left:
        tracking_delta.rx() -= step;
        break;
    case Qt::Key_Right:
        tracking_delta.rx() += step;
        break;
    case Qt::Key_Up:
        tracking_delta.ry() -= step;
        break;
    case Qt::Key_Down:
        tracking_delta.ry() += step;
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        endTracking(true);
        return;
    case Qt::Key_Escape:
        endTracking(false);
        return;
    default:
        return;
    }
    applyTracking();
}

void MainWindowWrapper::mouseMoveEvent(QMouseEvent* event) {
    if (tracking == Tracking::None) {
        QWidget::mouseMoveEvent(event);
        return;
    }
    const QPoint global = event->globalPosition().toPoint();
    tracking_delta += global - tracking_last_cursor;
    tracking_last_cursor = global;
    applyTracking();
}

void MainWindowWrapper::mousePressEvent(QMouseEvent* event) {
    if (tracking == Tracking::None) {
        QWidget::mousePressEvent(event);
        return;
    }
    endTracking(true);
}

bool MainWindowWrapper::eventFilter(QObject* watched, QEvent* event) {
    if (watched != title_bar && watched != title_label) return QWidget::eventFilter(watched, event);

    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto* e = static_cast<QMouseEvent*>(event);
        if (e->button() != Qt::LeftButton) break;
        caption_pressed = true;
        caption_dragging = false;
        caption_press_global = e->globalPosition().toPoint();
        caption_press_offset = caption_press_global - pos();
        return true;
    }
    case QEvent::MouseMove: {
        auto* e = static_cast<QMouseEvent*>(event);
        if (!caption_pressed || !(e->buttons() & Qt::LeftButton)) break;
        const QPoint global = e->globalPosition().toPoint();
        if (!caption_dragging) {
            if ((global - caption_press_global).manhattanLength() <
                QApplication::startDragDistance())
                return true;
            caption_dragging = true;
        } else if (windowHandle() && windowHandle()->startSystemMove()) {
            // The system anchors the window to the pointer where it is now, so
            // it starts one event late, once the window has caught up. From
            // here it has the pointer and no release arrives.
            caption_pressed = false;
            return true;
        }
        if (!isMaximized() && !isFullScreen()) move(global - caption_press_offset);
        return true;
    }
    case QEvent::MouseButtonRelease: {
        auto* e = static_cast<QMouseEvent*>(event);
        if (e->button() != Qt::LeftButton || !caption_pressed) break;
        caption_pressed = false;
        caption_dragging = false;
        return true;
    }
    case QEvent::MouseButtonDblClick: {
        auto* e = static_cast<QMouseEvent*>(event);
        if (e->button() != Qt::LeftButton) break;
        caption_pressed = false;
        onMaximizeButtonClicked();
        return true;
    }
    case QEvent::ContextMenu:
        // The caption's menu, never the menu of whatever lies below the strip.
        showSystemMenu(static_cast<QContextMenuEvent*>(event)->globalPos());
        return true;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

bool MainWindowWrapper::event(QEvent* event) {
    // The pointer left the window: no button stays lit, whichever leave
    // events the buttons themselves got on the way out.
    if (event->type() == QEvent::Leave) clearButtonHover();
    return QWidget::event(event);
}

void MainWindowWrapper::closeEvent(QCloseEvent* event) {
    if (is_closing) {
        event->accept();
        return;
    }
    bool allowed;
    if (may_close) {
        allowed = may_close();
    } else {
        QCloseEvent ask;
        QCoreApplication::sendEvent(main_window, &ask);
        allowed = ask.isAccepted();
    }
    if (!allowed) {
        event->ignore();
        return;
    }
    is_closing = true;
    event->accept();
    emit mainWindowClosedSignal();
}

void MainWindowWrapper::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) {
        const bool maximized = isMaximized();
        for (TitleBarButton* button : titleBarButtons()) {
            if (button->kind() == TitleBarButton::Kind::Maximize)
                button->setWindowMaximized(maximized);
            // The window changed under a resting pointer, which sends no leave.
            button->setHovered(button->isVisible() &&
                               button->rect().contains(button->mapFromGlobal(QCursor::pos())));
        }
        layoutGrips();
        const auto* change = static_cast<QWindowStateChangeEvent*>(event);
        if (bool(change->oldState() & Qt::WindowMaximized) != maximized)
            emit windowMaximizedSignal(maximized);
    } else if (event->type() == QEvent::ActivationChange) {
        emit windowActivatedSignal(isActiveWindow());
    }
}

void MainWindowWrapper::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    if (windowState() == Qt::WindowNoState) emit normalGeometryChangedSignal(geometry());
}

void MainWindowWrapper::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutGrips();
    if (windowState() == Qt::WindowNoState) emit normalGeometryChangedSignal(geometry());
}

QList<TitleBarButton*> MainWindowWrapper::titleBarButtons() const {
    return title_bar ? title_bar->findChildren<TitleBarButton*>() : QList<TitleBarButton*>();
}

void MainWindowWrapper::clearButtonHover() {
    for (TitleBarButton* button : titleBarButtons())
        button->setHovered(false);
}

void MainWindowWrapper::layoutGrips() {
    const bool resizable = !(windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen));
    const int b = qRound(border_width * scaleFactor());
    const int w = width();
    const int h = height();
    for (QWidget* grip : grips) {
        const Qt::Edges edges = static_cast<EdgeGrip*>(grip)->edges;
        QRect r;
        if (edges == Qt::TopEdge)
            r = QRect(b, 0, w - 2 * b, b);
        else if (edges == Qt::BottomEdge)
            r = QRect(b, h - b, w - 2 * b, b);
        else if (edges == Qt::LeftEdge)
            r = QRect(0, b, b, h - 2 * b);
        else if (edges == Qt::RightEdge)
            r = QRect(w - b, b, b, h - 2 * b);
        else if (edges & Qt::LeftEdge)
            r = QRect(0, h - b, b, b);
        else
            r = QRect(w - b, h - b, b, b);
        grip->setGeometry(r);
        grip->setVisible(resizable && b > 0);
        grip->raise();
    }
}
