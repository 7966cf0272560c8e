#include "widgets/togglebutton.h"

#include <QPainter>
#include <QVariantAnimation>

#include <algorithm>

namespace {

QColor blend(const QColor& a, const QColor& b, qreal t) {
    return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * t,
                            a.greenF() + (b.greenF() - a.greenF()) * t,
                            a.blueF() + (b.blueF() - a.blueF()) * t);
}

} // namespace

ToggleButton::ToggleButton(QWidget* parent) : QAbstractButton(parent) {
    setCheckable(true);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::StrongFocus);
    animation = new QVariantAnimation(this);
    animation->setDuration(125);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        position = value.toReal();
        update();
    });
}

void ToggleButton::setColors(const QColor& on, const QColor& off, const QColor& knob) {
    on_color = on;
    off_color = off;
    knob_color = knob;
    update();
}

QSize ToggleButton::sizeHint() const {
    return {38, 20};
}

bool ToggleButton::hitButton(const QPoint& pos) const {
    return rect().contains(pos);
}

void ToggleButton::checkStateSet() {
    // setChecked from code: no slide, the knob is simply there.
    animation->stop();
    position = isChecked() ? 1 : 0;
    update();
}

void ToggleButton::nextCheckState() {
    // The base goes through setChecked and so checkStateSet: start the slide
    // from where the knob was.
    const qreal from = position;
    QAbstractButton::nextCheckState();
    position = from;
    animateTo(isChecked());
}

void ToggleButton::animateTo(bool checked) {
    animation->stop();
    animation->setStartValue(position);
    animation->setEndValue(checked ? 1.0 : 0.0);
    animation->start();
}

void ToggleButton::paintEvent(QPaintEvent*) {
    const QPalette& pal = palette();
    const QColor on = on_color.isValid() ? on_color : pal.color(QPalette::Highlight);
    const QColor off = off_color.isValid() ? off_color
                                           : blend(pal.color(QPalette::Window),
                                                   pal.color(QPalette::WindowText), 0.4);
    const QColor knob = knob_color.isValid() ? knob_color : QColor(Qt::white);

    const QSizeF track_size = QSizeF(sizeHint()).scaled(QSizeF(size()), Qt::KeepAspectRatio);
    QRectF track(QPointF(0, 0), track_size);
    track.moveCenter(QRectF(rect()).center());
    const qreal radius = track.height() / 2;
    const qreal knob_margin = std::max<qreal>(2, track.height() / 8);
    const qreal knob_diameter = track.height() - 2 * knob_margin;
    const qreal travel = track.width() - 2 * knob_margin - knob_diameter;

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(isEnabled() ? 1.0 : 0.45);
    painter.setPen(Qt::NoPen);
    painter.setBrush(blend(off, on, position));
    painter.drawRoundedRect(track, radius, radius);
    painter.setBrush(knob);
    painter.drawEllipse(QRectF(track.left() + knob_margin + travel * position,
                               track.top() + knob_margin, knob_diameter, knob_diameter));
    if (hasFocus()) {
        QColor ring = on;
        ring.setAlphaF(0.6);
        painter.setPen(QPen(ring, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(track.adjusted(0.75, 0.75, -0.75, -0.75), radius, radius);
    }
}
