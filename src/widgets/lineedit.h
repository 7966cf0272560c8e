#pragma once

#include <QLineEdit>

// A line edit in the program's look that also tells when it gains and loses
// the focus, which panels use to commit or close.
class LineEdit : public QLineEdit {
    Q_OBJECT
public:
    explicit LineEdit(QWidget* parent = nullptr);

signals:
    void focusInSignal();
    void focusOutSignal();

protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
};
