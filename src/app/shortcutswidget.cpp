#include "app/shortcutswidget.h"

#include "app/tablecell.h"
#include "commands/commandtable.h"
#include "commands/matching/fuzzymatch.h"
#include "widgets/lineedit.h"
#include "widgets/searchedit.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int kNameColumn = 0;
constexpr int kShortcutColumn = 1;
constexpr int kDefaultColumn = 2;

constexpr int kRankRole = Qt::UserRole + 1;

// Sorts by the rank a search gives, not by text.
class RankedItem : public QTableWidgetItem {
public:
    using QTableWidgetItem::QTableWidgetItem;
    bool operator<(const QTableWidgetItem& other) const override {
        return data(kRankRole).toInt() < other.data(kRankRole).toInt();
    }
};

bool meansNone(const QString& text) {
    return text.isEmpty() || text.compare(u"(none)", Qt::CaseInsensitive) == 0;
}

} // namespace

ShortcutsWidget::ShortcutsWidget(CommandTable& commands, QWidget* parent)
    : QWidget(parent), commands(commands) {
    auto* title = new QLabel(QStringLiteral("Shortcuts"), this);
    QFont title_font = title->font();
    title_font.setPointSizeF(title_font.pointSizeF() * 1.3);
    title_font.setBold(true);
    title->setFont(title_font);
    auto* note = new QLabel(
        QStringLiteral(
            "You may apply several shortcuts to a command by separating with the | character."),
        this);
    note->setWordWrap(true);
    search_edit = new SearchEdit(this);
    search_edit->setPlaceholderText(QStringLiteral("Search"));

    const std::vector<CommandRecord*>& records = commands.sorted();
    table_ = new QTableWidget(int(records.size()), 3, this);
    table_->horizontalHeader()->hide();
    table_->verticalHeader()->hide();
    table_->setSelectionMode(QAbstractItemView::NoSelection);
    table_->setFocusPolicy(Qt::NoFocus);
    table_->setShowGrid(false);
    table_->setWordWrap(false);
    table_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    table_->horizontalHeader()->setSectionResizeMode(kNameColumn, QHeaderView::Stretch);
    table_->horizontalHeader()->setSectionResizeMode(kShortcutColumn, QHeaderView::Fixed);
    table_->horizontalHeader()->setSectionResizeMode(kDefaultColumn, QHeaderView::ResizeToContents);
    table_->setColumnWidth(kShortcutColumn, 260);
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(34);

    lines.resize(records.size());
    filling = true;
    for (int row = 0; row < int(records.size()); ++row) {
        Line& line = lines[size_t(row)];
        line.record = records[size_t(row)];
        line.origin = line.record->shortcut;
        line.item = new RankedItem(line.record->name);
        line.item->setFlags(Qt::ItemIsEnabled);
        line.item->setData(kRankRole, row);
        if (line.record->category != u"-") line.item->setToolTip(displayName(*line.record));
        table_->setItem(row, kNameColumn, line.item);

        line.edit = new LineEdit(table_);
        line.edit->setText(line.origin);
        connect(line.edit, &QLineEdit::textChanged, this, [this, &line] {
            updateRowState(line);
            if (!filling) emit updateSignal();
        });
        table_->setCellWidget(row, kShortcutColumn, paddedCell(line.edit, table_));

        line.default_button = new QPushButton(QStringLiteral("Default"), table_);
        connect(line.default_button, &QPushButton::clicked, this, [this, &line] {
            setText(line, line.record->defaultShortcut);
            emit updateSignal();
        });
        table_->setCellWidget(row, kDefaultColumn, paddedCell(line.default_button, table_));
        updateRowState(line);
    }
    filling = false;

    restore_button = new QPushButton(QStringLiteral("Restore Default Shortcuts"), this);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(restore_button);
    bottom->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addWidget(title);
    layout->addWidget(note);
    layout->addWidget(search_edit);
    layout->addWidget(table_, 1);
    layout->addLayout(bottom);

    connect(search_edit, &QLineEdit::textChanged, this, &ShortcutsWidget::onSearchTextChanged);
    connect(restore_button, &QPushButton::clicked, this,
            &ShortcutsWidget::onRestoreDefaultsClicked);
}

ShortcutsWidget::Line* ShortcutsWidget::lineOf(const QString& name) {
    for (Line& line : lines)
        if (line.record->name == name) return &line;
    return nullptr;
}

const ShortcutsWidget::Line* ShortcutsWidget::lineOf(const QString& name) const {
    return const_cast<ShortcutsWidget*>(this)->lineOf(name);
}

QLineEdit* ShortcutsWidget::shortcutEdit(const QString& name) const {
    const Line* line = lineOf(name);
    return line ? line->edit : nullptr;
}

QPushButton* ShortcutsWidget::defaultButton(const QString& name) const {
    const Line* line = lineOf(name);
    return line ? line->default_button : nullptr;
}

void ShortcutsWidget::setText(Line& line, const QString& text) {
    const bool was_filling = filling;
    filling = true;
    line.edit->setText(text);
    filling = was_filling;
}

void ShortcutsWidget::updateRowState(Line& line) {
    line.default_button->setEnabled(line.edit->text().trimmed() != line.record->defaultShortcut);
}

bool ShortcutsWidget::isEdited(const Line& line) {
    return line.edit->text().trimmed() != line.origin;
}

void ShortcutsWidget::refresh() {
    for (Line& line : lines) {
        if (!isEdited(line)) setText(line, line.record->shortcut);
        line.origin = line.record->shortcut;
    }
}

bool ShortcutsWidget::isModified() const {
    return std::any_of(lines.begin(), lines.end(), [](const Line& line) { return isEdited(line); });
}

std::vector<ShortcutAssignment> ShortcutsWidget::assignments() const {
    std::vector<ShortcutAssignment> result;
    result.reserve(lines.size());
    for (const Line& line : lines)
        result.push_back({line.record->name, line.edit->text().trimmed(),
                          line.record->requiredContexts, line.record->defaultShortcut});
    return result;
}

QString ShortcutsWidget::conflictBlocks() const {
    return shortcutConflictBlocks(findShortcutConflicts(assignments()));
}

void ShortcutsWidget::apply() {
    for (Line& line : lines) {
        CommandRecord& record = *line.record;
        const QString text = line.edit->text().trimmed();
        if (text != record.shortcut)
            commands.setShortcut(record, meansNone(text) ? QString() : text);
        setText(line, record.shortcut);
        line.origin = record.shortcut;
    }
}

void ShortcutsWidget::onSearchTextChanged(const QString& text) {
    const QString query = text.trimmed();
    QStringList names;
    names.reserve(qsizetype(lines.size()));
    for (const Line& line : lines)
        names.append(line.record->name);
    // Best matches first, as the launcher lists them; then the commands
    // whose key the query spells ("ctrl+s"); the rest are hidden.
    const FuzzyRanking ranking = rankOptions(query, names);
    std::vector<int> rank(lines.size(), -1);
    int next = 0;
    for (int i = 0; i < ranking.visible; ++i)
        rank[size_t(ranking.order[size_t(i)])] = next++;
    for (size_t i = 0; i < lines.size(); ++i)
        if (rank[i] < 0 && !query.isEmpty() &&
            lines[i].edit->text().contains(query, Qt::CaseInsensitive))
            rank[i] = next++;
    const int shown = next;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (rank[i] < 0) rank[i] = next++;
        lines[i].item->setData(kRankRole, rank[i]);
    }
    // One sort moves the rows and their editors together.
    table_->sortItems(kNameColumn);
    for (const Line& line : lines)
        table_->setRowHidden(line.item->row(), line.item->data(kRankRole).toInt() >= shown);
    table_->scrollToTop();
}

void ShortcutsWidget::onRestoreDefaultsClicked() {
    for (Line& line : lines)
        setText(line, line.record->defaultShortcut);
    emit updateSignal();
}
