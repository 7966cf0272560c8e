#pragma once

#include <QAbstractButton>
#include <QColor>

class QVariantAnimation;

// An on/off switch: a rounded track with a knob that slides to the side of its
// state. It is a checkable button, so toggled(bool) and setChecked work as on
// a check box.
class ToggleButton : public QAbstractButton {
    Q_OBJECT
public:
    explicit ToggleButton(QWidget* parent = nullptr);

    // Invalid colours fall back to the palette (which the style sheet sets):
    // the selection colour when on, a blend of text and background when off,
    // and a white knob.
    void setColors(const QColor& on, const QColor& off, const QColor& knob);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& pos) const override;
    void checkStateSet() override;
    void nextCheckState() override;

private:
    void animateTo(bool checked);

    QVariantAnimation* animation;
    qreal position = 0; // of the knob, 0 at the off side, 1 at the on side
    QColor on_color;
    QColor off_color;
    QColor knob_color;
};
