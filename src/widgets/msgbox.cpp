#include "widgets/msgbox.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextDocument>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace {

MsgBox::AutoAnswer& autoAnswer() {
    static MsgBox::AutoAnswer answer;
    return answer;
}

int idealWidth(const QString& text, const QFont& font) {
    QTextDocument document;
    document.setDocumentMargin(0);
    document.setDefaultFont(font);
    if (Qt::mightBeRichText(text))
        document.setHtml(text);
    else
        document.setPlainText(text);
    return int(std::ceil(document.idealWidth()));
}

QString withoutMnemonic(QString text) {
    return text.remove(QLatin1Char('&'));
}

} // namespace

void MsgBox::setAutoAnswer(AutoAnswer answer) {
    autoAnswer() = std::move(answer);
}

MsgBox::MsgBox(QWidget* parent, const QString& title, const QString& text,
               const QString& informative_text, const QStringList& buttons, int default_button)
    : QDialog(parent) {
    setWindowTitle(title);
    setModal(true);

    QFont font(QStringLiteral("Lucida Sans Unicode"));
    font.setPointSizeF(10);
    setFont(font);

    text_label = new QLabel(text, this);
    QFont text_font = font;
    text_font.setPointSizeF(11);
    text_label->setFont(text_font);
    text_label->setWordWrap(true);
    text_label->setTextInteractionFlags(Qt::TextSelectableByMouse);

    informative_label = new QLabel(informative_text, this);
    informative_label->setWordWrap(true);
    informative_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    informative_label->setVisible(!informative_text.isEmpty());

    // A wrapping label asks for little width; give the texts their longest
    // line, so that only long texts wrap.
    const int width = std::max(idealWidth(text, text_font), idealWidth(informative_text, font));
    text_label->setMinimumWidth(std::clamp(width, 260, 520));

    auto* button_row = new QHBoxLayout;
    button_row->addStretch(1);
    for (const QString& button_text : buttons) {
        auto* button = new QPushButton(button_text, this);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, button_text] {
            answer_ = button_text;
            accept();
        });
        button_row->addWidget(button);
        buttons_.push_back(button);
    }
    if (default_button >= 0 && default_button < int(buttons_.size())) {
        buttons_[default_button]->setDefault(true);
        buttons_[default_button]->setFocus();
    }

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 18, 20, 14);
    layout->setSpacing(10);
    layout->addWidget(text_label);
    layout->addWidget(informative_label);
    layout->addSpacing(6);
    layout->addLayout(button_row);
}

QString MsgBox::run() {
    answer_.clear();
    if (autoAnswer()) {
        // Queued so that it runs inside exec(), on a shown box.
        QTimer::singleShot(0, this, [this] {
            const AutoAnswer hook = autoAnswer(); // the hook may replace itself
            if (hook) hook(*this);
            if (isVisible()) {
                qWarning("MsgBox: the automatic answer left \"%s\" open",
                         qPrintable(text_label->text()));
                reject();
            }
        });
    }
    exec();
    return answer_;
}

void MsgBox::setButtonWidth(const QString& button, int width) {
    for (QPushButton* b : buttons_) {
        if (b->text() == button) b->setMinimumWidth(width);
    }
}

bool MsgBox::clickButton(const QString& button) {
    for (QPushButton* b : buttons_) {
        if (b->text() == button) {
            b->click();
            return true;
        }
    }
    return false;
}

QString MsgBox::text() const {
    return text_label->text();
}

QString MsgBox::informativeText() const {
    return informative_label->text();
}

QStringList MsgBox::buttonTexts() const {
    QStringList texts;
    for (const QPushButton* b : buttons_)
        texts.append(b->text());
    return texts;
}

QString MsgBox::escapeAnswer() const {
    for (const QPushButton* b : buttons_) {
        if (withoutMnemonic(b->text()).compare(QLatin1String("Cancel"), Qt::CaseInsensitive) == 0)
            return b->text();
    }
    return buttons_.size() == 1 ? buttons_.front()->text() : QString();
}

void MsgBox::reject() {
    answer_ = escapeAnswer();
    QDialog::reject();
}

QString MsgBox::ask(QWidget* parent, const QString& title, const QString& text,
                    const QString& informative_text, const QStringList& buttons,
                    int default_button) {
    MsgBox box(parent, title, text, informative_text, buttons, default_button);
    return box.run();
}

void MsgBox::inform(QWidget* parent, const QString& title, const QString& text,
                    const QString& informative_text) {
    MsgBox box(parent, title, text, informative_text, {QStringLiteral("OK")});
    box.run();
}
