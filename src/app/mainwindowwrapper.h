#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

#include <array>
#include <functional>

class QLabel;
class QMenu;
class QAction;
class TitleBarButton;

// The program's top-level window. It has no system frame: the content draws
// its own title strip, and this window gives that strip the behaviour of a
// caption (drag to move, double-click to maximize or restore, right-click
// for the window menu) and gives its edges resizing, through the system's
// own move and resize where the platform offers them.
class MainWindowWrapper : public QWidget {
    Q_OBJECT
public:
    // content: the window's one child, owned. title_bar: the strip along its
    // top, whose TitleBarButton children get their hover and glyph state from
    // here. title_label: the caption inside the strip.
    MainWindowWrapper(QWidget* content, QWidget* title_bar, QLabel* title_label,
                      QWidget* parent = nullptr);

    QWidget* content() const { return main_window; }

    // Asked before the window closes; false keeps it open. By default the
    // content is sent a QCloseEvent, and ignoring that event refuses.
    void setMayClose(std::function<bool()> may_close);

    // Thickness of the resize band along the edges, in unscaled pixels.
    void setBorderWidth(int width);
    int borderWidth() const { return border_width; }

    // The display's logical DPI over 96, read once per process.
    static qreal scaleFactor();

    QMenu* systemMenu() const { return system_menu; }

signals:
    void mainWindowClosedSignal();
    void windowMaximizedSignal(bool maximized);
    void windowActivatedSignal(bool active);
    // The geometry of the window when neither maximized nor minimized, which
    // is what is remembered between sessions.
    void normalGeometryChangedSignal(const QRect& geometry);

public slots:
    void onMinimizeButtonClicked();
    void onMaximizeButtonClicked();
    void onCloseButtonClicked();
    void onSetWindowTitle(const QString& title);
    void showSystemMenu(const QPoint& global_pos);
    // The menu's Move and Size: the window follows the pointer or the arrow
    // keys until a click or Enter, and Escape puts it back.
    void startKeyboardMove();
    void startKeyboardSize();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    enum class Tracking { None, Move, Size };

    QList<TitleBarButton*> titleBarButtons() const;
    void clearButtonHover();
    void layoutGrips();
    void startTracking(Tracking kind);
    void applyTracking();
    void endTracking(bool keep);

    QWidget* main_window;
    QWidget* title_bar;
    QLabel* title_label;
    std::function<bool()> may_close;
    int border_width = 5;
    bool is_closing = false;

    std::array<QWidget*, 6> grips{};
    QMenu* system_menu;
    QAction* restore_action;
    QAction* move_action;
    QAction* size_action;
    QAction* minimize_action;
    QAction* maximize_action;

    // Caption drag: the press is remembered and the move starts once the
    // pointer has gone past the drag distance, so that double-clicks arrive.
    bool caption_pressed = false;
    bool caption_dragging = false;
    QPoint caption_press_global;
    QPoint caption_press_offset;

    Tracking tracking = Tracking::None;
    QRect tracking_start_geometry;
    QPoint tracking_last_cursor;
    QPoint tracking_delta;
};
