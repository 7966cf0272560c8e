#include "headerview.h"

#include <QMouseEvent>

HeaderView::HeaderView(Qt::Orientation orientation, QWidget* parent)
    : QHeaderView(orientation, parent) {
    axis = orientation == Qt::Horizontal ? ColumnAxis : RowAxis;
    setSectionResizeMode(QHeaderView::Interactive);
    setResizeContentsPrecision(50);
    setSortIndicatorShown(false);
    setSectionsClickable(true);
    setHighlightSections(false);
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
