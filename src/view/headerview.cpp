#include "headerview.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyleOptionHeader>

#include <algorithm>

HeaderView::HeaderView(Qt::Orientation orientation, QWidget* parent)
    : QHeaderView(orientation, parent) {
    axis = orientation == Qt::Horizontal ? ColumnAxis : RowAxis;
    setSectionResizeMode(QHeaderView::Interactive);
    setResizeContentsPrecision(50);
    setSortIndicatorShown(false);
    setSectionsClickable(true);
    setHighlightSections(false);
}

void HeaderView::paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const {
    constexpr char16_t kUp = 0x2BC5;
    constexpr char16_t kDown = 0x2BC6;
    QStyleOptionHeader option;
    initStyleOption(&option);
    initStyleOptionForIndex(&option, logicalIndex);
    const QChar last = option.text.isEmpty() ? QChar() : option.text.back();
    if (last != kUp && last != kDown) {
        QHeaderView::paintSection(painter, rect, logicalIndex);
        return;
    }
    painter->save();
    const QVariant font = model()->headerData(logicalIndex, orientation(), Qt::FontRole);
    if (font.canConvert<QFont>()) painter->setFont(font.value<QFont>());
    option.fontMetrics = painter->fontMetrics();
    option.rect = rect;
    style()->drawControl(QStyle::CE_HeaderSection, &option, painter, this);
    // The label without its arrow where the style puts labels, less the
    // arrow's room; then the arrow just after the text, in its colour.
    option.text = option.text.chopped(1).trimmed();
    const int size = std::max(8, option.fontMetrics.height() / 2);
    const QRect label = style()->subElementRect(QStyle::SE_HeaderLabel, &option, this);
    option.rect = (label.isValid() ? label : rect).adjusted(0, 0, -3 * size / 2, 0);
    style()->drawControl(QStyle::CE_HeaderLabel, &option, painter, this);
    const QRect text = QStyle::alignedRect(
        layoutDirection(), option.textAlignment,
        QSize(option.fontMetrics.horizontalAdvance(option.text), option.fontMetrics.height()),
        option.rect);
    const double x = std::min(text.right() + double(size), rect.right() - size / 2.0 - 1);
    const double y = rect.center().y() + 0.5;
    const double w = size / 2.0, h = size * 0.4;
    const double up = last == kUp ? 1.0 : -1.0;
    const QPointF arrow[3] = {{x - w, y + up * h}, {x + w, y + up * h}, {x, y - up * h}};
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(option.palette.color(QPalette::ButtonText));
    painter->drawPolygon(arrow, 3);
    painter->restore();
}

int HeaderView::sectionAwayFromGrips(const QPoint& pos) const {
    const int along = orientation() == Qt::Horizontal ? pos.x() : pos.y();
    const int section = logicalIndexAt(along);
    if (section < 0) return -1;
    const int start = sectionViewportPosition(section);
    const int end = start + sectionSize(section);
    if (along - start <= left_margin || end - along <= right_margin) return -1;
    return section;
}

void HeaderView::mousePressEvent(QMouseEvent* e) {
    const int along =
        orientation() == Qt::Horizontal ? e->position().toPoint().x() : e->position().toPoint().y();
    if (e->button() == Qt::RightButton) {
        emit sectionRightClicked(logicalIndexAt(along));
        return;
    }
    if (e->button() == Qt::LeftButton) {
        const Qt::KeyboardModifiers mods = e->modifiers();
        if (mods & Qt::ShiftModifier) {
            shift_dragging = true;
            pressed_section = logicalIndexAt(along);
            emit sectionShiftClicked(pressed_section);
            return;
        }
        const int section = sectionAwayFromGrips(e->position().toPoint());
        if (section >= 0) {
            pressed_section = section;
            if (mods & Qt::ControlModifier)
                emit sectionCtrlClicked(section);
            else
                emit sectionClicked(section);
            // The base class would start its own selection; the grid's is ours.
            return;
        }
    }
    QHeaderView::mousePressEvent(e);
}

void HeaderView::mouseMoveEvent(QMouseEvent* e) {
    const int along =
        orientation() == Qt::Horizontal ? e->position().toPoint().x() : e->position().toPoint().y();
    const int section = logicalIndexAt(along);
    if (section_limit >= 0 && section >= section_limit) return;
    if (pressed_section >= 0) {
        if (section >= 0 && section != pressed_section) {
            pressed_section = section;
            emit sectionEntered(section);
        }
        return;
    }
    QHeaderView::mouseMoveEvent(e);
}

void HeaderView::mouseReleaseEvent(QMouseEvent* e) {
    const int along =
        orientation() == Qt::Horizontal ? e->position().toPoint().x() : e->position().toPoint().y();
    const int section = logicalIndexAt(along);
    const bool was_pressed = pressed_section >= 0;
    pressed_section = -1;
    emit mouseReleased(section);
    if (shift_dragging) {
        shift_dragging = false;
        emit arrayDragStopSignal(axis, section);
    }
    if (!was_pressed) QHeaderView::mouseReleaseEvent(e);
}

void HeaderView::mouseDoubleClickEvent(QMouseEvent* e) {
    const int section = sectionAwayFromGrips(e->position().toPoint());
    if (section >= 0) {
        if (e->button() == Qt::LeftButton && e->modifiers() == Qt::NoModifier &&
            (section_limit < 0 || section < section_limit))
            emit sectionDoubleClicked(section);
        return;
    }
    QHeaderView::mouseDoubleClickEvent(e);
}
