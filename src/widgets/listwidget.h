#pragma once

#include <QWidget>

// A plain container for rows of widgets, such as the content of a scroll area
// of options. Unlike a bare QWidget subclass it paints the background that
// the style sheet gives it.
class ListWidget : public QWidget {
    Q_OBJECT
public:
    explicit ListWidget(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
