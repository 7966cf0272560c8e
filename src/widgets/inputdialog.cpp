#include "widgets/inputdialog.h"

#include "widgets/lineedit.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

InputDialog::AutoAnswer& autoAnswer() {
    static InputDialog::AutoAnswer answer;
    return answer;
}

} // namespace

void InputDialog::setAutoAnswer(AutoAnswer answer) {
    autoAnswer() = std::move(answer);
}

InputDialog::InputDialog(QWidget* parent, const QString& title, const QString& prompt,
                         const QString& text)
    : QDialog(parent) {
    setWindowTitle(title);
    setModal(true);

    QFont font(QStringLiteral("Lucida Sans Unicode"));
    font.setPointSizeF(10);
    setFont(font);

    prompt_label = new QLabel(prompt, this);
    prompt_label->setWordWrap(true);

    line_edit = new LineEdit(this);
    line_edit->setMinimumWidth(320);
    line_edit->setText(text);
    line_edit->selectAll();

    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole)->setDefault(true);
    buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 14);
    layout->setSpacing(10);
    layout->addWidget(prompt_label);
    layout->addWidget(line_edit);
    layout->addSpacing(6);
    layout->addWidget(buttons);

    line_edit->setFocus();
}

std::optional<QString> InputDialog::run() {
    if (autoAnswer()) {
        QTimer::singleShot(0, this, [this] {
            const AutoAnswer hook = autoAnswer();
            if (hook) hook(*this);
            if (isVisible()) {
                qWarning("InputDialog: the automatic answer left \"%s\" open",
                         qPrintable(prompt_label->text()));
                reject();
            }
        });
    }
    if (exec() != QDialog::Accepted) return std::nullopt;
    return line_edit->text();
}

void InputDialog::answer(const std::optional<QString>& text) {
    if (!text) {
        reject();
        return;
    }
    line_edit->setText(*text);
    accept();
}

QString InputDialog::prompt() const {
    return prompt_label->text();
}

std::optional<QString> InputDialog::getText(QWidget* parent, const QString& title,
                                            const QString& prompt, const QString& text) {
    InputDialog dialog(parent, title, prompt, text);
    return dialog.run();
}
