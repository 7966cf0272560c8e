#pragma once

#include "view/range.h"

#include <QHeaderView>

// The label strip of a grid. Clicks select whole rows or columns; presses
// within a few pixels of a section's edge stay with Qt so that resizing works.
class HeaderView : public QHeaderView {
    Q_OBJECT

public:
    explicit HeaderView(Qt::Orientation orientation, QWidget* parent = nullptr);

    int frozen_kind = 4;
    Axis axis = RowAxis;
    int pressed_section = -1;
    int left_margin = 3;
    int right_margin = 3;
    int section_limit = -1;
    bool shift_dragging = false;

signals:
    void sectionCtrlClicked(int section);
    void sectionShiftClicked(int section);
    void sectionRightClicked(int section);
    void mouseReleased(int section);
    void selectRowSignal(int row);
    void selectColSignal(int col);
    void headerShiftClickSignal(Axis axis, int section);
    void arrayDragStopSignal(Axis axis, int section);

protected:
    // A label the model marks with a sort arrow (its last character) gets
    // the arrow drawn as a triangle: few fonts hold those characters.
    void paintSection(QPainter* painter, const QRect& rect, int logicalIndex) const override;
    void mousePressEvent(QMouseEvent* e) override;
    void mouseMoveEvent(QMouseEvent* e) override;
    void mouseReleaseEvent(QMouseEvent* e) override;
    // Away from the grips a double-click is the section's (a sort); on a
    // grip it stays with Qt.
    void mouseDoubleClickEvent(QMouseEvent* e) override;

private:
    // The section under the point when the point is clear of both grips.
    int sectionAwayFromGrips(const QPoint& pos) const;
};
