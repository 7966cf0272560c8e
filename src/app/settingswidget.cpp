#include "app/settingswidget.h"

#include "commands/matching/fuzzymatch.h"
#include "widgets/framelessgroupbox.h"
#include "widgets/listwidget.h"
#include "widgets/searchedit.h"
#include "widgets/togglebutton.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>
#include <climits>

namespace {

constexpr int kEditorWidth = 230;
const QString kMetadataLink = QStringLiteral("metadata");

bool isInteger(int data_type) {
    return data_type == Setting::IntegerType || data_type == Setting::NonNegativeIntegerType ||
           data_type == Setting::PositiveIntegerType;
}

int leastOf(int data_type) {
    if (data_type == Setting::PositiveIntegerType) return 1;
    if (data_type == Setting::NonNegativeIntegerType) return 0;
    return INT_MIN;
}

// The highlight of the launcher without its bold: here every visible row
// matches, and a list of bold names reads as one block.
LabelMarkup highlightMarkup(const Settings& settings) {
    const Theme theme = settings.theme();
    LabelMarkup markup = LabelMarkup::fromColors(
        theme.color(Theme::FuzzySearchHighlightedTextColor), theme.color(Theme::StaticTextColor));
    markup.bold_open.clear();
    markup.bold_close.clear();
    return markup;
}

QLabel* noteLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

} // namespace

SettingsWidget::SettingsWidget(const Settings& settings, QWidget* parent)
    : QWidget(parent), base(settings) {
    search_edit = new SearchEdit(this);
    search_edit->setPlaceholderText(QStringLiteral("Search"));

    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // A search that leaves few rows must not shift the editors sideways.
    scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    auto* body = new ListWidget(scroll);
    scroll->setWidget(body);
    auto* body_layout = new QVBoxLayout(body);
    body_layout->setContentsMargins(4, 0, 12, 8);
    body_layout->setSpacing(12);

    global_group = new FramelessGroupBox(QStringLiteral("Global Settings"), body);
    table_group = new FramelessGroupBox(QStringLiteral("Default Table Settings"), body);
    auto* global_layout = new QVBoxLayout(global_group);
    auto* table_layout = new QVBoxLayout(table_group);
    for (QVBoxLayout* layout : {global_layout, table_layout}) {
        layout->setContentsMargins(0, 4, 0, 0);
        layout->setSpacing(4);
    }
    global_layout->addWidget(
        noteLabel(QStringLiteral("Global settings apply immediately to all files."), global_group));
    // The link keeps the sentence as it reads, with the pane's name as the
    // place to click.
    const QColor link_colour = base.theme().color(Theme::FocusBorderColor);
    auto* table_note =
        noteLabel(QStringLiteral("Default table settings apply only to newly opened files.") +
                      QStringLiteral("<br>To change settings in the current file, use the "
                                     "<a href=\"%1\" style=\"color:%2;\">File Metadata pane</a>.")
                          .arg(kMetadataLink, link_colour.name()),
                  table_group);
    table_note->setTextFormat(Qt::RichText);
    table_note->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    connect(table_note, &QLabel::linkActivated, this, [this](const QString& link) {
        if (link == kMetadataLink) emit openFileMetadataSignal();
    });
    table_layout->addWidget(table_note);
    for (QVBoxLayout* layout : {global_layout, table_layout})
        layout->addSpacing(6);

    for (int id : base.sortedIds())
        if (base.record(id).in_user_file) rows.push_back(Row{id});
    filling = true;
    for (Row& row : rows) {
        const bool global = base.record(row.id).scope == Setting::GlobalScope;
        FramelessGroupBox* group = global ? global_group : table_group;
        (global ? global_layout : table_layout)->addWidget(makeRow(row, group));
        setRowText(row, baseText(row.id));
        updateRowState(row);
    }
    filling = false;

    body_layout->addWidget(global_group);
    body_layout->addWidget(table_group);
    body_layout->addStretch(1);

    restore_button = new QPushButton(QStringLiteral("Restore Default Settings"), this);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(restore_button);
    bottom->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addWidget(search_edit);
    layout->addWidget(scroll, 1);
    layout->addLayout(bottom);

    connect(search_edit, &QLineEdit::textChanged, this, &SettingsWidget::onSearchTextChanged);
    connect(restore_button, &QPushButton::clicked, this, &SettingsWidget::onRestoreDefaultsClicked);
    onSearchTextChanged(QString());
}

QWidget* SettingsWidget::makeRow(Row& row, QWidget* parent) {
    const Setting& s = base.record(row.id);
    row.widget = new QWidget(parent);
    row.label = new QLabel(row.widget);
    row.label->setTextFormat(Qt::RichText);
    row.label->setWordWrap(true);

    auto* editor_box = new QWidget(row.widget);
    editor_box->setFixedWidth(kEditorWidth);
    auto* editor_layout = new QHBoxLayout(editor_box);
    editor_layout->setContentsMargins(0, 0, 0, 0);
    auto edited = [this, &row] { onRowEdited(row); };

    if (s.data_type == Setting::BooleanType) {
        row.toggle = new ToggleButton(editor_box);
        row.state_label = new QLabel(editor_box);
        editor_layout->addWidget(row.toggle);
        editor_layout->addWidget(row.state_label, 1);
        connect(row.toggle, &QAbstractButton::toggled, this, edited);
    } else if (s.data_type == Setting::ThemeType || s.data_type == Setting::RefreshType ||
               s.data_type == Setting::UuidVersionType) {
        row.combo = new QComboBox(editor_box);
        if (s.data_type == Setting::ThemeType) {
            for (const QString& name : base.theme().names())
                row.combo->addItem(name, name);
        } else if (s.data_type == Setting::RefreshType) {
            // Shown as the launcher shows them, stored as the file spells them.
            row.combo->addItem(QStringLiteral("Refresh"), QStringLiteral("refresh"));
            row.combo->addItem(QStringLiteral("Ask"), QStringLiteral("ask"));
            row.combo->addItem(QStringLiteral("Ignore"), QStringLiteral("ignore"));
        } else {
            for (UuidVersion v : {UuidVersion::V4, UuidVersion::V7}) {
                const QString text = Settings::textFromValue(s.data_type, QVariant::fromValue(v));
                row.combo->addItem(text, text);
            }
        }
        editor_layout->addWidget(row.combo);
        connect(row.combo, &QComboBox::currentIndexChanged, this, edited);
    } else if (isInteger(s.data_type)) {
        row.spin = new QSpinBox(editor_box);
        row.spin->setRange(leastOf(s.data_type), INT_MAX);
        editor_layout->addWidget(row.spin);
        connect(row.spin, &QSpinBox::valueChanged, this, edited);
    } else {
        row.line = new QLineEdit(editor_box);
        editor_layout->addWidget(row.line);
        connect(row.line, &QLineEdit::textChanged, this, edited);
    }

    row.default_button = new QPushButton(QStringLiteral("Default"), row.widget);
    row.default_button->setProperty("setting", row.id);
    connect(row.default_button, &QPushButton::clicked, this,
            &SettingsWidget::onDefaultButtonClicked);

    auto* layout = new QHBoxLayout(row.widget);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(row.label, 1);
    layout->addWidget(editor_box);
    layout->addWidget(row.default_button);
    return row.widget;
}

SettingsWidget::Row* SettingsWidget::rowFor(int id) {
    for (Row& row : rows)
        if (row.id == id) return &row;
    return nullptr;
}

const SettingsWidget::Row* SettingsWidget::rowFor(int id) const {
    return const_cast<SettingsWidget*>(this)->rowFor(id);
}

QString SettingsWidget::valueText(int id, const QVariant& value) const {
    const int data_type = base.record(id).data_type;
    const QString text = Settings::textFromValue(data_type, value);
    // Only the family of a font is a setting; its size is "Text Size".
    return data_type == Setting::FontType ? text.section(u',', 0, 0) : text;
}

QString SettingsWidget::baseText(int id) const {
    return valueText(id, base.record(id).value);
}

QString SettingsWidget::defaultText(int id) const {
    return valueText(id, base.record(id).default_value);
}

void SettingsWidget::setRowText(Row& row, const QString& text) {
    const bool was_filling = filling;
    filling = true;
    if (row.toggle) {
        row.toggle->setChecked(text == u"true");
    } else if (row.combo) {
        int index = row.combo->findData(text, Qt::UserRole, Qt::MatchFixedString);
        if (index < 0) {
            // A value the list lacks (a user theme gone missing) still shows.
            row.combo->addItem(text, text);
            index = row.combo->count() - 1;
        }
        row.combo->setCurrentIndex(index);
    } else if (row.spin) {
        const int value = text.toInt();
        // The file may hold what the type's range refuses; show it as it is.
        if (value < row.spin->minimum()) row.spin->setMinimum(value);
        row.spin->setValue(value);
    } else {
        row.line->setText(text);
    }
    filling = was_filling;
    updateRowState(row);
}

QString SettingsWidget::rowText(const Row& row) const {
    if (row.toggle)
        return row.toggle->isChecked() ? QStringLiteral("true") : QStringLiteral("false");
    if (row.combo) return row.combo->currentData().toString();
    if (row.spin) return QString::number(row.spin->value());
    return row.line->text();
}

void SettingsWidget::updateRowState(Row& row) {
    if (row.state_label) {
        const Setting& s = base.record(row.id);
        row.state_label->setText(
            QString::fromUtf8(row.toggle->isChecked() ? s.true_text : s.false_text));
    }
    row.default_button->setEnabled(rowText(row) != defaultText(row.id));
}

void SettingsWidget::onRowEdited(Row& row) {
    updateRowState(row);
    if (!filling) emit updateSignal();
}

void SettingsWidget::setSettings(const Settings& settings) {
    std::vector<bool> edited;
    edited.reserve(rows.size());
    for (const Row& row : rows)
        edited.push_back(rowText(row) != baseText(row.id));
    base = settings;
    for (size_t i = 0; i < rows.size(); ++i)
        if (!edited[i]) setRowText(rows[i], baseText(rows[i].id));
}

void SettingsWidget::resetTo(const Settings& settings) {
    base = settings;
    for (Row& row : rows)
        setRowText(row, baseText(row.id));
}

Settings SettingsWidget::editedSettings() const {
    Settings edited = base;
    for (const Row& row : rows) {
        const QString text = rowText(row);
        // Untouched rows keep their value exactly, not as read back from text.
        if (text != baseText(row.id)) edited.setFromText(row.id, text);
    }
    return edited;
}

bool SettingsWidget::isModified() const {
    return std::any_of(rows.begin(), rows.end(),
                       [this](const Row& row) { return rowText(row) != baseText(row.id); });
}

QString SettingsWidget::editorText(int id) const {
    const Row* row = rowFor(id);
    return row ? rowText(*row) : QString();
}

void SettingsWidget::setEditorText(int id, const QString& text) {
    if (Row* row = rowFor(id)) {
        setRowText(*row, text);
        emit updateSignal();
    }
}

QWidget* SettingsWidget::editor(int id) const {
    const Row* row = rowFor(id);
    if (!row) return nullptr;
    if (row->toggle) return row->toggle;
    if (row->combo) return row->combo;
    if (row->spin) return row->spin;
    return row->line;
}

QPushButton* SettingsWidget::defaultButton(int id) const {
    const Row* row = rowFor(id);
    return row ? row->default_button : nullptr;
}

QLabel* SettingsWidget::nameLabel(int id) const {
    const Row* row = rowFor(id);
    return row ? row->label : nullptr;
}

bool SettingsWidget::isRowShown(int id) const {
    const Row* row = rowFor(id);
    return row && !row->widget->isHidden();
}

void SettingsWidget::onDefaultButtonClicked() {
    const auto* button = qobject_cast<const QPushButton*>(sender());
    if (!button) return;
    if (Row* row = rowFor(button->property("setting").toInt())) {
        setRowText(*row, defaultText(row->id));
        emit updateSignal();
    }
}

void SettingsWidget::onRestoreDefaultsClicked() {
    for (Row& row : rows)
        setRowText(row, defaultText(row.id));
    emit updateSignal();
}

void SettingsWidget::onSearchTextChanged(const QString& text) {
    const QString query = text.trimmed();
    const LabelMarkup markup = highlightMarkup(base);
    QStringList names;
    for (const Row& row : rows)
        names.append(base.record(row.id).name);
    // Best matches first within each list, as the launcher orders them.
    const FuzzyRanking ranking = rankOptions(query, names);
    bool global_shown = false;
    bool table_shown = false;
    for (int place = 0; place < int(ranking.order.size()); ++place) {
        const int index = ranking.order[size_t(place)];
        Row& row = rows[size_t(index)];
        const bool shown = place < ranking.visible;
        const bool global = base.record(row.id).scope == Setting::GlobalScope;
        auto* layout = static_cast<QVBoxLayout*>((global ? global_group : table_group)->layout());
        layout->removeWidget(row.widget);
        layout->addWidget(row.widget);
        row.widget->setHidden(!shown);
        const QString& name = names[index];
        row.label->setText(
            query.isEmpty() || !shown
                ? name.toHtmlEscaped()
                : renderOptionLabel(name, ranking.matches[size_t(index)].highlights, markup));
        if (shown) (global ? global_shown : table_shown) = true;
    }
    global_group->setHidden(!global_shown);
    table_group->setHidden(!table_shown);
}
