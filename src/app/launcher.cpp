#include "app/launcher.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

QString rgba(const QColor& color, int alpha) {
    return QStringLiteral("rgba(%1, %2, %3, %4)")
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(alpha);
}

} // namespace

Launcher::Launcher(const Settings& settings, QWidget* parent)
    : QWidget(parent), settings(settings) {
    setObjectName(QStringLiteral("Launcher"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_StyledBackground);
    setWindowFlags(windowFlags() | Qt::FramelessWindowHint);
    resize(1, 350);

    layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 8, 10, 8);
    layout->setSpacing(4);
    prompt_label = new QLabel(this);
    prompt_label->setFixedHeight(20);
    prompt_label->setFont(launcherFont(13));
    prompt_label->setTextFormat(Qt::PlainText);
    layout->addWidget(prompt_label);
    line_edit = new QLineEdit(this);
    line_edit->setFixedHeight(25);
    line_edit->setFont(launcherFont(13));
    line_edit->installEventFilter(this);
    layout->addWidget(line_edit);
    layout->addStretch(1);
    setFocusProxy(line_edit);
    applyStyle();
}

Launcher::~Launcher() {
    if (option_list) option_list->stopBuilding();
}

void Launcher::applyStyle() {
    const Theme theme = settings.theme();
    setStyleSheet(
        QStringLiteral("#Launcher {\nbackground-color: %1;\nborder: 1px solid %2;\n"
                       "border-radius: 4px;\n}\n")
            .arg(rgba(theme.color(Theme::Background2Color), theme.launcher_background_alpha),
                 theme.color(Theme::SeparatorColor).name()));
}

void Launcher::setSettings(const Settings& new_settings) {
    settings = new_settings;
    applyStyle();
}

void Launcher::setPrompt(const QString& text) {
    prompt_label->setText(text);
}

QString Launcher::promptText() const {
    return prompt_label->text();
}

void Launcher::setGuide(const QString& text) {
    if (!guide_label) {
        guide_label = new QLabel(this);
        guide_label->setFont(launcherFont(10));
        guide_label->setTextFormat(Qt::RichText);
        guide_label->setWordWrap(true);
        layout->insertWidget(1, guide_label);
    }
    QString coloured = text;
    coloured.replace(QStringLiteral("<b>"),
                     QStringLiteral("<b style=\"color:%1;\">")
                         .arg(settings.theme().color(Theme::TextColor).name()));
    guide_label->setText(coloured);
    resizeWithExtra(extra_height);
}

QString Launcher::guideText() const {
    return guide_label ? guide_label->text() : QString();
}

void Launcher::setOptions(const std::vector<OptionData>& options, int row_height) {
    if (options.empty()) return; // an empty list is a free-text prompt
    delete option_list;
    option_list = new OptionListWidget(options, settings, row_height, this);
    layout->insertWidget(layout->indexOf(line_edit) + 1, option_list);
    connect(line_edit, &QLineEdit::textChanged, option_list, [this](const QString& text) {
        option_list->updateOptionList(text);
        resizeWithExtra();
    });
    connect(option_list, &OptionListWidget::itemClicked, this,
            &Launcher::returnOptionResponseString);
    connect(option_list, &OptionListWidget::selectionChangedSignal, this,
            &Launcher::selectionChangedSignal);
    connect(option_list, &OptionListWidget::scrolledSignal, this,
            &Launcher::putFocusInPromptEditor);
    resizeWithExtra();
}

void Launcher::addDescription(const QString& text) {
    if (!description_label) {
        description_label = new QLabel(this);
        description_label->setFont(launcherFont(12));
        description_label->setTextFormat(Qt::RichText);
        description_label->setWordWrap(true);
        layout->insertWidget(layout->indexOf(line_edit) + 1, description_label);
        connect(line_edit, &QLineEdit::textEdited, this, &Launcher::promptEditedSignal);
    }
    setDescription(text);
}

void Launcher::setDescription(const QString& text) {
    if (!description_label) return;
    description_label->setText(text);
    resizeWithExtra();
}

void Launcher::setEditorText(const QString& text, bool select_all) {
    line_edit->setText(text);
    if (select_all) line_edit->selectAll();
}

QString Launcher::currentOptionResponse() const {
    if (!option_list || !option_list->selectedOption()) return {};
    return option_list->selectedOption()->data().answer();
}

void Launcher::resizeWithExtra(int extra) {
    extra_height = extra;
    // Wrapped labels are as tall as the width they are given; until the pane
    // places the launcher, its width is a guess.
    const int text_width = std::max(width(), 400) - 20;
    auto wrapped = [text_width](QLabel* label) {
        if (!label) return 0;
        const int h = label->heightForWidth(text_width);
        return h > 0 ? h : label->sizeHint().height();
    };
    int sum = prompt_label->sizeHint().height() + line_edit->sizeHint().height();
    sum += wrapped(guide_label) + wrapped(description_label);
    if (option_list) {
        option_list->setFixedHeight(option_list->sizeHint().height());
        sum += option_list->sizeHint().height();
    }
    resize(width(), int(sum * 0.85) + 70 + extra);
}

void Launcher::returnOptionResponseString(QString option_response_string) {
    if (answered) return;
    answered = true;
    deleteLater();
    emit launcherResponseSignal(option_response_string);
}

void Launcher::putFocusInPromptEditor() {
    line_edit->setFocus(Qt::OtherFocusReason);
}

bool Launcher::eventFilter(QObject* watched, QEvent* event) {
    if (watched != line_edit || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    const Qt::KeyboardModifiers mods = key->modifiers() & ~Qt::KeypadModifier;
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter: {
        const bool from_list =
            option_list && option_list->visibleCount() > 0 && option_list->selectedOption();
        returnOptionResponseString(from_list ? currentOptionResponse() : line_edit->text());
        return true;
    }
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (option_list) option_list->moveSelection(key->key() == Qt::Key_Up ? -1 : 1);
        return true;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        if (option_list) option_list->moveSelection(key->key() == Qt::Key_PageUp ? -5 : 5);
        return true;
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (mods == Qt::NoModifier && line_edit->hasSelectedText()) {
            const int start = line_edit->selectionStart();
            const int end = start + int(line_edit->selectedText().size());
            line_edit->deselect();
            line_edit->setCursorPosition(key->key() == Qt::Key_Left ? start : end);
            return true;
        }
        break;
    case Qt::Key_Minus:
        if (mods == Qt::ControlModifier || mods == Qt::MetaModifier) {
            emit goBackSignal();
            return true;
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void Launcher::closeEvent(QCloseEvent* event) {
    if (option_list) option_list->stopBuilding();
    emit launcherClosedSignal();
    QWidget::closeEvent(event);
}

PrevOptionWidget::PrevOptionWidget(const QString& prompt, const QString& answer,
                                   const Settings& settings, QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("PrevOptionWidget"));
    setAttribute(Qt::WA_StyledBackground);
    setCursor(Qt::PointingHandCursor);
    auto* box = new QVBoxLayout(this);
    box->setContentsMargins(10, 4, 10, 4);
    box->setSpacing(0);
    prompt_label = new QLabel(prompt, this);
    prompt_label->setFont(launcherFont(13));
    prompt_label->setFixedHeight(20);
    prompt_label->setTextFormat(Qt::PlainText);
    answer_label = new QLabel(answer.isEmpty() ? QStringLiteral("(blank)") : answer, this);
    answer_label->setFont(launcherFont(10));
    answer_label->setTextFormat(Qt::PlainText);
    answer_label->setFixedHeight(answer_label->sizeHint().height());
    box->addWidget(prompt_label);
    box->addWidget(answer_label);
    setSettings(settings);
    resize(1, sizeHint().height());
}

QString PrevOptionWidget::promptText() const {
    return prompt_label->text();
}

QString PrevOptionWidget::answerText() const {
    return answer_label->text();
}

void PrevOptionWidget::setSettings(const Settings& settings) {
    const Theme theme = settings.theme();
    setStyleSheet(
        QStringLiteral("#PrevOptionWidget {\nbackground-color: %1;\nborder: 1px solid "
                       "%2;\nborder-radius: 4px;\n}\n")
            .arg(rgba(theme.color(Theme::Background3Color), theme.launcher_background_alpha),
                 theme.color(Theme::SeparatorColor).name()));
}

void PrevOptionWidget::mousePressEvent(QMouseEvent* event) {
    QWidget::mousePressEvent(event);
    emit goHereSignal();
}
