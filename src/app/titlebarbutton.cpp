#include "app/titlebarbutton.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

TitleBarButton::TitleBarButton(Kind kind, QWidget* parent) : QPushButton(parent), kind_(kind) {
    setFocusPolicy(Qt::NoFocus);
    setFlat(true);
    switch (kind_) {
    case Kind::Close:
        // Red under the pointer marks the one button that ends something.
        setColors(QColor(0xd6, 0xd6, 0xd6), QColor(0xc4, 0x2b, 0x1c), Qt::white);
        break;
    case Kind::Minimize:
    case Kind::Maximize:
        setColors(QColor(0xd6, 0xd6, 0xd6), QColor(0x4a, 0x4a, 0x4a), QColor(0xff, 0xff, 0xff));
        break;
    }
}

void TitleBarButton::setHovered(bool hovered) {
    if (hovered_ == hovered) return;
    hovered_ = hovered;
    update();
}

void TitleBarButton::setWindowMaximized(bool maximized) {
    if (window_maximized == maximized) return;
    window_maximized = maximized;
    update();
}

void TitleBarButton::setColors(const QColor& glyph, const QColor& hover_background_color,
                               const QColor& hover_glyph_color) {
    glyph_color = glyph;
    hover_background = hover_background_color;
    hover_glyph = hover_glyph_color;
    update();
}

QSize TitleBarButton::sizeHint() const {
    return {46, 30};
}

void TitleBarButton::enterEvent(QEnterEvent* event) {
    QPushButton::enterEvent(event);
    setHovered(true);
}

void TitleBarButton::leaveEvent(QEvent* event) {
    QPushButton::leaveEvent(event);
    setHovered(false);
}

void TitleBarButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (hovered_) {
        QColor background = hover_background;
        if (isDown()) background = background.darker(120);
        painter.fillRect(rect(), background);
    }

    // A 10 px glyph, scaled with the button's height against the usual 30.
    const qreal side = std::round(10.0 * std::max(1.0, height() / 30.0));
    const QRectF box(std::round((width() - side) / 2) + 0.5,
                     std::round((height() - side) / 2) + 0.5, side - 1, side - 1);
    QPen pen(hovered_ ? hover_glyph : glyph_color, 1.0);
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::MiterJoin);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);

    switch (kind_) {
    case Kind::Minimize: {
        const qreal y = box.center().y();
        painter.drawLine(QPointF(box.left(), y), QPointF(box.right(), y));
        break;
    }
    case Kind::Maximize:
        if (!window_maximized) {
            painter.drawRect(box);
        } else {
            // Two windows, the back one peeking out above and to the right.
            const qreal shift = std::round(side / 5);
            const QRectF front = box.adjusted(0, shift, -shift, 0);
            painter.drawRect(front);
            painter.drawPolyline(QVector<QPointF>{QPointF(front.left() + shift, front.top()),
                                                  QPointF(front.left() + shift, box.top()),
                                                  QPointF(box.right(), box.top()),
                                                  QPointF(box.right(), front.bottom() - shift),
                                                  QPointF(front.right(), front.bottom() - shift)});
        }
        break;
    case Kind::Close:
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawLine(box.topLeft(), box.bottomRight());
        painter.drawLine(box.topRight(), box.bottomLeft());
        break;
    }
}
