#include "widgets/searchedit.h"

#include <QAction>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

SearchEdit::SearchEdit(QWidget* parent) : LineEdit(parent) {
    setClearButtonEnabled(true);
    glyph_action = addAction(QIcon(), QLineEdit::LeadingPosition);
    updateGlyph();
}

void SearchEdit::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier &&
        !text().isEmpty()) {
        clear();
        return;
    }
    LineEdit::keyPressEvent(event);
}

void SearchEdit::changeEvent(QEvent* event) {
    LineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        updateGlyph();
}

void SearchEdit::updateGlyph() {
    const qreal ratio = devicePixelRatioF();
    const int side = 16;
    QPixmap pixmap(QSize(side, side) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);

    QColor colour = palette().color(QPalette::Text);
    colour.setAlphaF(0.75);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(3, 3, 7.5, 7.5));
    painter.drawLine(QPointF(9.6, 9.6), QPointF(13, 13));
    painter.end();

    glyph_action->setIcon(QIcon(pixmap));
}
