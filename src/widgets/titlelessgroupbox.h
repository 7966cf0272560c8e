#pragma once

#include <QGroupBox>

// A group box with the style sheet's frame but no title, and without the
// room the style sheet keeps above the frame for one.
class TitlelessGroupBox : public QGroupBox {
    Q_OBJECT
public:
    explicit TitlelessGroupBox(QWidget* parent = nullptr);
};
