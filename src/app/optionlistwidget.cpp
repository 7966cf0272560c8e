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

QFont launcherFont(qreal point_size) {
    QFont font(QStringLiteral("Lucida Sans Unicode"));
    font.setPointSizeF(point_size);
    return font;
}

namespace {

bool isBlank(const QString& text) {
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.isSpace(); });
}

} // namespace

PillLabel::PillLabel(const QString& text, qreal point_size, QWidget* parent)
    : QLabel(text, parent) {
    setFont(launcherFont(point_size));
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
    name_label->setFont(launcherFont(11));
    name_label->setTextFormat(Qt::RichText);
    name_label->setAttribute(Qt::WA_TransparentForMouseEvents);
    // A long name gives way to the pills rather than pushing them out.
    name_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    texts->addWidget(name_label);
    if (!data_.sub_text.isEmpty()) {
        auto* sub = new QLabel(data_.sub_text, this);
        sub->setFont(launcherFont(8));
        sub->setTextFormat(Qt::PlainText);
        sub->setAttribute(Qt::WA_TransparentForMouseEvents);
        texts->addWidget(sub);
    }
    row->addLayout(texts, 1);
    if (!data_.pill1.isEmpty()) row->addWidget(new PillLabel(data_.pill1, 9, this));
    if (!data_.pill2.isEmpty()) row->addWidget(new PillLabel(data_.pill2, 8, this));
    render(markup);
}

void OptionWidget::setHighlights(std::vector<int> positions, const LabelMarkup& markup) {
    highlights = std::move(positions);
    render(markup);
}

void OptionWidget::render(const LabelMarkup& markup) {
    label_text = renderOptionLabel(data_.name, highlights, markup);
    label_dirty = true;
}

void OptionWidget::updateOptionLabel() {
    if (!name_label || !label_dirty) return;
    label_dirty = false;
    name_label->setText(label_text);
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

    setWidgetResizable(false);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    content = new ListWidget;
    content->setObjectName(QStringLiteral("OptionListContent"));
    // The plain style goes on the content once rather than on every row. The
    // list is opaque, so a keystroke repaints the list and not the table
    // under the translucent launcher.
    content->setStyleSheet(QStringLiteral("#OptionListContent {background-color: %1;}\n"
                                          "OptionWidget {background-color: transparent;}\n")
                               .arg(theme.color(Theme::Background2Color).name()) +
                           pill);
    content->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);

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

    // Rows start without a parent: a widget under the window's style sheet
    // costs a polish when it joins, which only the rows near the top pay at
    // once; the others join while the list is already shown.
    rows.reserve(options.size());
    names.reserve(qsizetype(options.size()));
    for (size_t i = 0; i < options.size(); ++i) {
        rows.push_back(new OptionWidget(int(i), options[i]));
        names.append(options[i].name);
        order.push_back(int(i));
    }
    visible_count = count();
    for (int i = 0; i < std::min(kEagerRows, count()); ++i)
        buildRow(rows[size_t(i)]);
    fully_built = count() <= kEagerRows;
    setWidget(content);
    relayout();
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
            &OptionListWidget::scrolledSignal);
    // Rows scrolled into view get their label before they are painted.
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
            &OptionListWidget::updateExposedLabels);
    label_timer.setSingleShot(true);
    label_timer.setInterval(20);
    connect(&label_timer, &QTimer::timeout, this, &OptionListWidget::updateExposedLabels);
    select(0);
    updateExposedLabels();
    if (!fully_built) QTimer::singleShot(1, this, &OptionListWidget::fillListWidgets);
}

OptionListWidget::~OptionListWidget() {
    closing = true;
    for (OptionWidget* row : rows)
        if (!row->parent()) delete row;
}

void OptionListWidget::updateExposedLabels() {
    // Rich text is costly to lay out: only the rows in view (and the next
    // page) are rendered; the rest wait until they are scrolled to.
    const int top = verticalScrollBar()->value() / std::max(1, row_height_);
    const int page = std::max(viewport()->height(), 300) / std::max(1, row_height_) + 1;
    for (int i = top; i < std::min(visible_count, top + 2 * page); ++i) {
        OptionWidget* row = rows[size_t(order[size_t(i)])];
        if (row->isBuilt()) row->updateOptionLabel();
    }
}

void OptionListWidget::buildRow(OptionWidget* row) {
    if (!row->parent()) {
        row->setParent(content);
        connect(row, &OptionWidget::clickedSignal, this, &OptionListWidget::itemClicked);
        connect(row, &OptionWidget::selectedSignal, this,
                &OptionListWidget::selectionChangedSignal);
    }
    row->build(markup);
}

void OptionListWidget::fillListWidgets() {
    QPointer<OptionListWidget> guard(this);
    for (int i = 0; i < count(); ++i) {
        if (!guard || closing) return;
        OptionWidget* row = rows[size_t(order[size_t(i)])];
        if (row->isBuilt()) continue;
        buildRow(row);
        if (i < visible_count) place(row, i);
        // Keys typed while the rest builds reach the editor at once.
        if (i % 5 == 4) QCoreApplication::processEvents();
    }
    if (!guard) return;
    fully_built = true;
    updateExposedLabels();
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
    if (!fully_built)
        for (int i = 0; i < std::min(kEagerRows, visible_count); ++i)
            buildRow(rows[size_t(order[size_t(i)])]);
    relayout();
    if (selected_option) selected_option->setSelected(false, selected_style);
    selected_option = nullptr;
    selected_index = -1;
    if (visible_count > 0) {
        select(0);
        verticalScrollBar()->setValue(0);
    }
    // Fast typing renders the labels once, when it pauses.
    label_timer.start();
    updateGeometry();
}

void OptionListWidget::place(OptionWidget* row, int position) {
    const QRect target(0, position * row_height_, content->width(), row_height_);
    if (row->geometry() != target) row->setGeometry(target);
    if (row->isHidden()) row->show();
}

void OptionListWidget::relayout() {
    // Rows are placed by hand: a filter moves and hides rows, and never makes
    // one again. Rows not yet built join when the build reaches them.
    content->resize(viewport()->width(), std::max(1, visible_count * row_height_));
    for (int i = 0; i < count(); ++i) {
        OptionWidget* row = rows[size_t(order[size_t(i)])];
        if (!row->isBuilt()) continue;
        if (i < visible_count)
            place(row, i);
        else if (!row->isHidden())
            row->hide();
    }
}

void OptionListWidget::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    relayout();
}
void OptionListWidget::select(int index) {
    if (index < 0 || index >= visible_count || index == selected_index) return;
    if (selected_option) selected_option->setSelected(false, selected_style);
    selected_index = index;
    selected_option = rows[size_t(order[size_t(index)])];
    if (!selected_option->isBuilt()) {
        buildRow(selected_option);
        place(selected_option, index);
    }
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

QString OptionWidget::shownLabel() const {
    return name_label ? name_label->text() : QString();
}
