#include "app/shortcutswidget.h"

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

namespace {

constexpr int kNameColumn = 0;
constexpr int kShortcutColumn = 1;
constexpr int kDefaultColumn = 2;

bool meansNone(const QString& text) {
    return text.isEmpty() || text.compare(u"(none)", Qt::CaseInsensitive) == 0;
}

} // namespace

ShortcutsWidget::ShortcutsWidget(CommandTable& commands, QWidget* parent)
    : QWidget(parent), commands(commands), records(commands.sorted()) {
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

    table_ = new QTableWidget(int(records.size()), 3, this);
    table_->horizontalHeader()->hide();
    table_->verticalHeader()->hide();
    table_->setSelectionMode(QAbstractItemView::NoSelection);
    table_->setFocusPolicy(Qt::NoFocus);
    table_->setShowGrid(false);
    table_->setWordWrap(false);
    table_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    table_->horizontalHeader()->setSectionResizeMode(kNameColumn, QHeaderView::Stretch);
    table_->horizontalHeader()->setSectionResizeMode(kShortcutColumn, QHeaderView::Fixed);
    table_->horizontalHeader()->setSectionResizeMode(kDefaultColumn, QHeaderView::ResizeToContents);
    table_->setColumnWidth(kShortcutColumn, 260);
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(32);

    filling = true;
    for (int row = 0; row < int(records.size()); ++row) {
        const CommandRecord& record = *records[size_t(row)];
        auto* item = new QTableWidgetItem(record.name);
        item->setFlags(Qt::ItemIsEnabled);
        if (record.category != u"-") item->setToolTip(displayName(record));
        table_->setItem(row, kNameColumn, item);

        auto* edit = new LineEdit(table_);
        edit->setText(record.shortcut);
        origins.push_back(record.shortcut);
        connect(edit, &QLineEdit::textChanged, this, [this, row] {
            updateRowState(row);
            if (!filling) emit updateSignal();
        });
        table_->setCellWidget(row, kShortcutColumn, edit);

        auto* button = new QPushButton(QStringLiteral("Default"), table_);
        button->setProperty("row", row);
        connect(button, &QPushButton::clicked, this, &ShortcutsWidget::onDefaultButtonClicked);
        table_->setCellWidget(row, kDefaultColumn, button);
        updateRowState(row);
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

QLineEdit* ShortcutsWidget::editAt(int row) const {
    return qobject_cast<QLineEdit*>(table_->cellWidget(row, kShortcutColumn));
}

int ShortcutsWidget::rowOf(const QString& name) const {
    for (int row = 0; row < int(records.size()); ++row)
        if (records[size_t(row)]->name == name) return row;
    return -1;
}

QLineEdit* ShortcutsWidget::shortcutEdit(const QString& name) const {
    const int row = rowOf(name);
    return row < 0 ? nullptr : editAt(row);
}

QPushButton* ShortcutsWidget::defaultButton(const QString& name) const {
    const int row = rowOf(name);
    return row < 0 ? nullptr : qobject_cast<QPushButton*>(table_->cellWidget(row, kDefaultColumn));
}

void ShortcutsWidget::setText(int row, const QString& text) {
    const bool was_filling = filling;
    filling = true;
    editAt(row)->setText(text);
    filling = was_filling;
}

void ShortcutsWidget::updateRowState(int row) {
    auto* button = qobject_cast<QPushButton*>(table_->cellWidget(row, kDefaultColumn));
    if (!button) return; // still being built
    button->setEnabled(editAt(row)->text().trimmed() != records[size_t(row)]->defaultShortcut);
}

void ShortcutsWidget::refresh() {
    for (int row = 0; row < int(records.size()); ++row) {
        const QString& shortcut = records[size_t(row)]->shortcut;
        if (!isEdited(row)) setText(row, shortcut);
        origins[size_t(row)] = shortcut;
        updateRowState(row);
    }
}

bool ShortcutsWidget::isEdited(int row) const {
    return editAt(row)->text().trimmed() != origins[size_t(row)];
}

bool ShortcutsWidget::isModified() const {
    for (int row = 0; row < int(records.size()); ++row)
        if (isEdited(row)) return true;
    return false;
}

std::vector<ShortcutAssignment> ShortcutsWidget::assignments() const {
    std::vector<ShortcutAssignment> result;
    result.reserve(records.size());
    for (int row = 0; row < int(records.size()); ++row) {
        const CommandRecord& record = *records[size_t(row)];
        result.push_back({record.name, editAt(row)->text().trimmed(), record.requiredContexts,
                          record.defaultShortcut});
    }
    return result;
}

QString ShortcutsWidget::conflictBlocks() const {
    return shortcutConflictBlocks(findShortcutConflicts(assignments()));
}

void ShortcutsWidget::apply() {
    for (int row = 0; row < int(records.size()); ++row) {
        CommandRecord& record = *records[size_t(row)];
        const QString text = editAt(row)->text().trimmed();
        if (text != record.shortcut)
            commands.setShortcut(record, meansNone(text) ? QString() : text);
        setText(row, record.shortcut);
        origins[size_t(row)] = record.shortcut;
        updateRowState(row);
    }
}

void ShortcutsWidget::onSearchTextChanged(const QString& text) {
    const QString query = text.trimmed();
    for (int row = 0; row < int(records.size()); ++row) {
        // A key typed as the notation writes it finds its commands too.
        const bool shown = query.isEmpty() ||
                           fuzzyMatch(query, records[size_t(row)]->name).matches() ||
                           editAt(row)->text().contains(query, Qt::CaseInsensitive);
        table_->setRowHidden(row, !shown);
    }
}

void ShortcutsWidget::onDefaultButtonClicked() {
    const auto* button = qobject_cast<const QPushButton*>(sender());
    if (!button) return;
    const int row = button->property("row").toInt();
    if (row < 0 || row >= int(records.size())) return;
    setText(row, records[size_t(row)]->defaultShortcut);
    updateRowState(row);
    emit updateSignal();
}

void ShortcutsWidget::onRestoreDefaultsClicked() {
    for (int row = 0; row < int(records.size()); ++row) {
        setText(row, records[size_t(row)]->defaultShortcut);
        updateRowState(row);
    }
    emit updateSignal();
}
