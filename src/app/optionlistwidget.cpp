#include "app/optionlistwidget.h"

#include "widgets/listwidget.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QScrollBar>
#include <QStyleOption>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QString kFontFamily = QStringLiteral("Lucida Sans Unicode");

QFont rowFont(qreal point_size) {
    QFont font(kFontFamily);
    font.setPointSizeF(point_size);
    return font;
}

bool isBlank(const QString& text) {
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.isSpace(); });
}

} // namespace

PillLabel::PillLabel(const QString& text, qreal point_size, QWidget* parent)
    : QLabel(text, parent) {
    setFont(rowFont(point_size));
    setTextFormat(Qt::PlainText);
    setContentsMargins(5, 1, 5, 1);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Maximum);
}

OptionWidget::OptionWidget(int index, const OptionData& data, QWidget* parent)
    : QWidget(parent), index(index), data_(data) {}

void OptionWidget::build(const LabelMarkup& markup) {
    if (built) return;
    built = true;
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(10, 2, 6, 2);
    row->setSpacing(0);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->setContentsMargins(0, 0, 0, 0);
    name_label = new QLabel(this);
    name_label->setFont(rowFont(11));
    name_label->setTextFormat(Qt::RichText);
    name_label->setAttribute(Qt::WA_TransparentForMouseEvents);
    // A long name gives way to the pills rather than pushing them out.
    name_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    texts->addWidget(name_label);
    if (!data_.sub_text.isEmpty()) {
        auto* sub = new QLabel(data_.sub_text, this);
        sub->setFont(rowFont(8));
        sub->setTextFormat(Qt::PlainText);
        sub->setAttribute(Qt::WA_TransparentForMouseEvents);
        texts->addWidget(sub);
    }
    row->addLayout(texts, 1);
    if (!data_.pill1.isEmpty()) row->addWidget(new PillLabel(data_.pill1, 9, this));
    if (!data_.pill2.isEmpty()) row->addWidget(new PillLabel(data_.pill2, 8, this));
    render(markup);
    updateOptionLabel();
}

void OptionWidget::setHighlights(std::vector<int> positions, const LabelMarkup& markup) {
    highlights = std::move(positions);
    render(markup);
}

void OptionWidget::render(const LabelMarkup& markup) {
    label_text = renderOptionLabel(data_.name, highlights, markup);
    if (!built || render_pending) return;
    // Fast typing re-renders a row many times; only the last one is drawn.
    render_pending = true;
    QTimer::singleShot(20, this, &OptionWidget::updateOptionLabel);
}

void OptionWidget::updateOptionLabel() {
    render_pending = false;
    if (name_label) name_label->setText(label_text);
}

void OptionWidget::setSelected(bool on, const QString& selected_style) {
    if (selected == on) return;
    selected = on;
    setStyleSheet(on ? selected_style : QString());
    if (on) emit selectedSignal(data_.answer());
}

void OptionWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit clickedSignal(data_.answer());
        event->accept();
        return;
    }
    QWidget::mousePressEvent(event);
}

void OptionWidget::paintEvent(QPaintEvent*) {
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}

OptionListWidget::OptionListWidget(const std::vector<OptionData>& options, const Settings& settings,
                                   int row_height, QWidget* parent)
    : QScrollArea(parent) {
    const Theme theme = settings.theme();
    markup = LabelMarkup::fromColors(theme.color(Theme::FuzzySearchHighlightedTextColor),
                                     theme.color(Theme::TextColor));
    const QString pill = QStringLiteral("PillLabel {\nbackground-color: %1;\nborder-radius: "
                                        "3px;\nmargin: 0px 3px 0px 3px;\n}\n")
                             .arg(theme.color(Theme::Background4Color).name());
    const QColor selection = theme.color(Theme::SelectedItemColor);
    selected_style = QStringLiteral("OptionWidget {background-color: #%1%2;}\n")
                         .arg(140, 2, 16, QLatin1Char('0'))
                         .arg(selection.name().mid(1)) +
                     pill;

    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    content = new ListWidget;
    content->setObjectName(QStringLiteral("OptionListContent"));
    // The plain style goes on the content once rather than on every row.
    content->setStyleSheet(QStringLiteral("OptionWidget {background-color: transparent;}\n") +
                           pill);
    layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    // Every row takes the height a row with the first option's fields has.
    if (row_height > 0) {
        row_height_ = row_height;
    } else if (!options.empty()) {
        const OptionData& first = options.front();
        OptionData sample{QStringLiteral("A"),
                          first.pill1.isEmpty() ? QString() : "A",
                          first.pill2.isEmpty() ? QString() : "A",
                          first.sub_text.isEmpty() ? QString() : "A",
                          {}};
        OptionWidget measuring(0, sample);
        measuring.build(markup);
        row_height_ = std::max(measuring.sizeHint().height(), first.sub_text.isEmpty() ? 30 : 45);
    }

    rows.reserve(options.size());
    names.reserve(qsizetype(options.size()));
    for (size_t i = 0; i < options.size(); ++i) {
        auto* row = new OptionWidget(int(i), options[i], content);
        row->setFixedHeight(row_height_);
        connect(row, &OptionWidget::clickedSignal, this, &OptionListWidget::itemClicked);
        connect(row, &OptionWidget::selectedSignal, this,
                &OptionListWidget::selectionChangedSignal);
        rows.push_back(row);
        names.append(options[i].name);
        order.push_back(int(i));
        layout->addWidget(row);
    }
    layout->addStretch(1);
    visible_count = count();
    for (int i = 0; i < std::min(kEagerRows, count()); ++i)
        buildRow(rows[size_t(i)]);
    fully_built = count() <= kEagerRows;
    setWidget(content);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
            &OptionListWidget::scrolledSignal);
    select(0);
    if (!fully_built) QTimer::singleShot(1, this, &OptionListWidget::fillListWidgets);
}

OptionListWidget::~OptionListWidget() {
    closing = true;
}

void OptionListWidget::buildRow(OptionWidget* row) {
    row->build(markup);
}

void OptionListWidget::fillListWidgets() {
    QPointer<OptionListWidget> guard(this);
    for (int i = 0; i < count(); ++i) {
        if (!guard || closing) return;
        buildRow(rows[size_t(order[size_t(i)])]);
        // Keys typed while the rest builds reach the editor at once.
        if (i % 5 == 4) QCoreApplication::processEvents();
    }
    if (guard) fully_built = true;
}

std::vector<OptionWidget*> OptionListWidget::visibleOptions() const {
    std::vector<OptionWidget*> result;
    result.reserve(size_t(visible_count));
    for (int i = 0; i < visible_count; ++i)
        result.push_back(rows[size_t(order[size_t(i)])]);
    return result;
}

void OptionListWidget::updateOptionList(const QString& prompt_string) {
    // Blanks are not part of a query, so a text of blanks is no query.
    const QString query = isBlank(prompt_string) ? QString() : prompt_string;
    FuzzyRanking ranking = rankOptions(query, names);
    for (int i = 0; i < count(); ++i) {
        OptionWidget* row = rows[size_t(i)];
        FuzzyMatch& match = ranking.matches[size_t(i)];
        row->score = query.isEmpty() ? 0 : match.score;
        if (query.isEmpty() || match.matches())
            row->setHighlights(std::move(match.highlights), markup);
    }
    order = std::move(ranking.order);
    visible_count = ranking.visible;
    relayout();
    if (selected_option) selected_option->setSelected(false, selected_style);
    selected_option = nullptr;
    selected_index = -1;
    if (visible_count > 0) {
        select(0);
        verticalScrollBar()->setValue(0);
    }
    if (!fully_built)
        for (int i = 0; i < std::min(kEagerRows, visible_count); ++i)
            buildRow(rows[size_t(order[size_t(i)])]);
    updateGeometry();
}

void OptionListWidget::relayout() {
    // Moving items keeps the rows: nothing is built again.
    for (int i = 0; i < count(); ++i) {
        OptionWidget* row = rows[size_t(order[size_t(i)])];
        QLayoutItem* at = layout->itemAt(i);
        if (at && at->widget() == row) {
            row->setVisible(i < visible_count);
            continue;
        }
        layout->removeWidget(row);
        layout->insertWidget(i, row);
        row->setVisible(i < visible_count);
    }
}

void OptionListWidget::select(int index) {
    if (index < 0 || index >= visible_count || index == selected_index) return;
    if (selected_option) selected_option->setSelected(false, selected_style);
    selected_index = index;
    selected_option = rows[size_t(order[size_t(index)])];
    buildRow(selected_option);
    selected_option->setSelected(true, selected_style);
    // Only as far as needed to show the whole row.
    const int top = index * row_height_;
    QScrollBar* bar = verticalScrollBar();
    const int view_height = viewport()->height();
    if (top < bar->value())
        bar->setValue(top);
    else if (top + row_height_ > bar->value() + view_height)
        bar->setValue(top + row_height_ - view_height);
}

void OptionListWidget::moveSelection(int by) {
    if (visible_count == 0) return;
    select(std::clamp(selected_index + by, 0, visible_count - 1));
}

QSize OptionListWidget::sizeHint() const {
    return {QScrollArea::sizeHint().width(), std::min(visible_count * row_height_, 300)};
}
