#pragma once

#include <QColor>
#include <QPushButton>

// One of the minimize, maximize and close buttons of the frameless window's
// title strip. It paints its glyph with lines, so it is sharp at any scale and
// takes the title bar's colours from the theme.
class TitleBarButton : public QPushButton {
    Q_OBJECT
public:
    enum class Kind { Close, Minimize, Maximize };

    explicit TitleBarButton(Kind kind, QWidget* parent = nullptr);

    Kind kind() const { return kind_; }

    bool hovered() const { return hovered_; }
    // The frame moves the highlight itself where the pointer leaves without
    // a leave event (a state change, the pointer leaving the window).
    void setHovered(bool hovered);

    // The maximize button shows the restore glyph while the window is maximized.
    void setWindowMaximized(bool maximized);
    bool windowMaximized() const { return window_maximized; }

    // Glyph on the strip, background under the pointer, glyph under the pointer.
    void setColors(const QColor& glyph, const QColor& hover_background, const QColor& hover_glyph);

    QSize sizeHint() const override;

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    Kind kind_;
    bool hovered_ = false;
    bool window_maximized = false;
    QColor glyph_color;
    QColor hover_background;
    QColor hover_glyph;
};
