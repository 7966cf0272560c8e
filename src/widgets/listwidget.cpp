#include "widgets/listwidget.h"

#include <QPainter>
#include <QStyleOption>

ListWidget::ListWidget(QWidget* parent) : QWidget(parent) {}

void ListWidget::paintEvent(QPaintEvent*) {
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}
