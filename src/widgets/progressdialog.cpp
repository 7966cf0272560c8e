#include "widgets/progressdialog.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

ProgressDialog::AutoCancel& autoCancel() {
    static ProgressDialog::AutoCancel cancel;
    return cancel;
}

} // namespace

void ProgressDialog::setAutoCancel(AutoCancel cancel) {
    autoCancel() = std::move(cancel);
}

ProgressDialog::ProgressDialog(QWidget* parent, const QString& title, const QString& label_text,
                               bool cancelable)
    : QDialog(parent), cancelable(cancelable) {
    setWindowTitle(title);
    setWindowModality(Qt::WindowModal);

    QFont font(QStringLiteral("Lucida Sans Unicode"));
    font.setPointSizeF(10);
    setFont(font);

    label = new QLabel(label_text, this);
    label->setWordWrap(true);

    bar = new QProgressBar(this);
    bar->setMinimumWidth(320);
    bar->setRange(0, 100);
    bar->setValue(0);
    bar->setTextVisible(false);
    bar->setFixedHeight(14);

    cancel_button = new QPushButton(QStringLiteral("Cancel"), this);
    cancel_button->setAutoDefault(false);
    cancel_button->setVisible(cancelable);
    connect(cancel_button, &QPushButton::clicked, this, &ProgressDialog::cancel);

    auto* button_row = new QHBoxLayout;
    button_row->addStretch(1);
    button_row->addWidget(cancel_button);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 14);
    layout->setSpacing(10);
    layout->addWidget(label);
    layout->addWidget(bar);
    layout->addLayout(button_row);
}

void ProgressDialog::setLabelText(const QString& text) {
    label->setText(text);
}

QString ProgressDialog::labelText() const {
    return label->text();
}

void ProgressDialog::setRange(int minimum, int maximum) {
    bar->setRange(minimum, maximum);
}

void ProgressDialog::setValue(int value) {
    bar->setValue(value);
    if (cancelable && !canceled && autoCancel() && autoCancel()(*this)) cancel_button->click();
}

int ProgressDialog::value() const {
    return bar->value();
}

void ProgressDialog::onProgress(float fraction) {
    const float clamped = std::clamp(fraction, 0.0f, 1.0f);
    setValue(bar->minimum() + int(std::lround(clamped * float(bar->maximum() - bar->minimum()))));
}

void ProgressDialog::cancel() {
    if (!cancelable || canceled) return;
    canceled = true;
    cancel_button->setEnabled(false);
    emit canceledSignal();
}

void ProgressDialog::reject() {
    // Escape or the window's close only ask the job to stop; the owner closes
    // the dialog when it has.
    cancel();
}
