#pragma once

#include <QGroupBox>

// A group box with the style sheet's title but no frame, for groups that sit
// inside a frame already.
class FramelessGroupBox : public QGroupBox {
    Q_OBJECT
public:
    explicit FramelessGroupBox(const QString& title = {}, QWidget* parent = nullptr);
};
