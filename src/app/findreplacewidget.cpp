#include "app/findreplacewidget.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

struct ToggleInfo {
    const char* text;
    const char* tooltip;
    int key;
    Qt::KeyboardModifiers modifiers;
};

// Short marks stand for the switches; the tooltips name them and their keys.
const ToggleInfo kToggles[] = {
    {"Aa", "Case Sensitive (alt+a)", Qt::Key_A, Qt::AltModifier},
    {"W", "Match Whole Word (alt+shift+w)", Qt::Key_W, Qt::AltModifier | Qt::ShiftModifier},
    {"[ ]", "Match Whole Cell (alt+shift+l)", Qt::Key_L, Qt::AltModifier | Qt::ShiftModifier},
    {".*", "Regular Expressions (alt+/)", Qt::Key_Slash, Qt::AltModifier},
    {"Sel", "Match Only in Selected Cells (alt+shift+s)", Qt::Key_S,
     Qt::AltModifier | Qt::ShiftModifier},
    {"HL", "Highlight Matches (alt+shift+h)", Qt::Key_H, Qt::AltModifier | Qt::ShiftModifier},
    {"Prev", "Preview Replace (alt+shift+p)", Qt::Key_P, Qt::AltModifier | Qt::ShiftModifier},
};

QPushButton* button(const QString& text, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setFocusPolicy(Qt::NoFocus);
    return b;
}

} // namespace

FindReplaceWidget::FindReplaceWidget(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("FindReplaceWidget"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(6, 4, 6, 4);
    outer->setSpacing(4);

    auto* find_row = new QHBoxLayout;
    find_row->setSpacing(4);
    auto* find_label = new QLabel(QStringLiteral("Find"), this);
    find_label->setFixedWidth(55);
    find_edit = new QLineEdit(this);
    find_edit->setMinimumWidth(220);
    find_row->addWidget(find_label);
    find_row->addWidget(find_edit, 1);
    QPushButton* next = button(QStringLiteral("Find Next"), this);
    QPushButton* prev = button(QStringLiteral("Find Prev"), this);
    QPushButton* all = button(QStringLiteral("Find All"), this);
    find_row->addWidget(next);
    find_row->addWidget(prev);
    find_row->addWidget(all);
    for (size_t i = 0; i < toggles.size(); ++i) {
        auto* t = new QToolButton(this);
        t->setText(QString::fromLatin1(kToggles[i].text));
        t->setToolTip(QString::fromLatin1(kToggles[i].tooltip));
        t->setCheckable(true);
        t->setFocusPolicy(Qt::NoFocus);
        t->setMinimumWidth(30);
        connect(t, &QToolButton::toggled, this, &FindReplaceWidget::emitQuery);
        toggles[i] = t;
        find_row->addWidget(t);
    }
    auto* close = new QToolButton(this);
    close->setText(QStringLiteral("✕"));
    close->setToolTip(QStringLiteral("Close (esc)"));
    close->setFocusPolicy(Qt::NoFocus);
    find_row->addWidget(close);
    outer->addLayout(find_row);

    replace_row = new QWidget(this);
    auto* replace_layout = new QHBoxLayout(replace_row);
    replace_layout->setContentsMargins(0, 0, 0, 0);
    replace_layout->setSpacing(4);
    auto* replace_label = new QLabel(QStringLiteral("Replace"), replace_row);
    replace_label->setFixedWidth(55);
    replace_edit = new QLineEdit(replace_row);
    replace_layout->addWidget(replace_label);
    replace_layout->addWidget(replace_edit, 1);
    QPushButton* r_next = button(QStringLiteral("Replace Next"), replace_row);
    QPushButton* r_prev = button(QStringLiteral("Replace Prev"), replace_row);
    QPushButton* r_all = button(QStringLiteral("Replace All"), replace_row);
    replace_layout->addWidget(r_next);
    replace_layout->addWidget(r_prev);
    replace_layout->addWidget(r_all);
    outer->addWidget(replace_row);
    replace_row->hide();

    find_edit->installEventFilter(this);
    replace_edit->installEventFilter(this);
    connect(find_edit, &QLineEdit::textChanged, this, &FindReplaceWidget::emitQuery);
    connect(replace_edit, &QLineEdit::textChanged, this, &FindReplaceWidget::emitQuery);
    connect(find_edit, &QLineEdit::returnPressed, this, &FindReplaceWidget::findNextSignal);
    connect(replace_edit, &QLineEdit::returnPressed, this, &FindReplaceWidget::replaceNextSignal);
    connect(next, &QPushButton::clicked, this, &FindReplaceWidget::findNextSignal);
    connect(prev, &QPushButton::clicked, this, &FindReplaceWidget::findPrevSignal);
    connect(all, &QPushButton::clicked, this, &FindReplaceWidget::findAllSignal);
    connect(r_next, &QPushButton::clicked, this, &FindReplaceWidget::replaceNextSignal);
    connect(r_prev, &QPushButton::clicked, this, &FindReplaceWidget::replacePrevSignal);
    connect(r_all, &QPushButton::clicked, this, &FindReplaceWidget::replaceAllSignal);
    connect(close, &QToolButton::clicked, this, &FindReplaceWidget::closeButtonClickedSignal);
}

void FindReplaceWidget::setTheme(const Theme& theme) {
    setStyleSheet(QStringLiteral("QToolButton:checked {\nbackground-color: %1;\nborder: 1px solid "
                                 "%2;\n}\n")
                      .arg(theme.color(Theme::SelectedItemColor).name(),
                           theme.color(Theme::FocusBorderColor).name()));
}

void FindReplaceWidget::setReplaceMode(bool on) {
    replace_mode = on;
    replace_row->setVisible(on);
    toggles[6]->setVisible(on);
}

FindReplaceQuery FindReplaceWidget::query() const {
    FindReplaceQuery q;
    q.find_str = find_edit->text();
    q.replace_str = replace_edit->text();
    q.case_sensitive = toggles[0]->isChecked();
    q.whole_word = toggles[1]->isChecked();
    q.whole_cell = toggles[2]->isChecked();
    q.regex = toggles[3]->isChecked();
    q.in_selected_cells = toggles[4]->isChecked();
    q.highlight_matches = toggles[5]->isChecked();
    q.preview_replace = replace_mode && toggles[6]->isChecked();
    return q;
}

void FindReplaceWidget::setFindText(const QString& text) {
    find_edit->setText(text);
}

void FindReplaceWidget::focusFindField() {
    find_edit->setFocus(Qt::ShortcutFocusReason);
    find_edit->selectAll();
}

void FindReplaceWidget::emitQuery() {
    emit findReplaceEditedSignal(query());
}

bool FindReplaceWidget::handleKey(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        emit closeButtonClickedSignal();
        return true;
    }
    const Qt::KeyboardModifiers mods = event->modifiers() & ~Qt::KeypadModifier;
    for (size_t i = 0; i < toggles.size(); ++i) {
        if (event->key() == kToggles[i].key && mods == kToggles[i].modifiers &&
            toggles[i]->isVisible()) {
            toggles[i]->toggle();
            return true;
        }
    }
    return false;
}

void FindReplaceWidget::keyPressEvent(QKeyEvent* event) {
    if (!handleKey(event)) QWidget::keyPressEvent(event);
}

bool FindReplaceWidget::eventFilter(QObject* watched, QEvent* event) {
    // The fields would type Alt+Shift+H as "H": the switches' keys go first.
    if (event->type() == QEvent::KeyPress && handleKey(static_cast<QKeyEvent*>(event)))
        return true;
    return QWidget::eventFilter(watched, event);
}

FindResultsWidget::FindResultsWidget(QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 2, 6, 4);
    layout->setSpacing(2);
    auto* top = new QHBoxLayout;
    heading = new QLabel(this);
    auto* close = new QToolButton(this);
    close->setText(QStringLiteral("✕"));
    close->setToolTip(QStringLiteral("Close (esc)"));
    top->addWidget(heading, 1);
    top->addWidget(close);
    layout->addLayout(top);
    results = new QTableWidget(0, 2, this);
    results->horizontalHeader()->hide();
    results->verticalHeader()->hide();
    results->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    results->horizontalHeader()->setStretchLastSection(true);
    results->setEditTriggers(QAbstractItemView::NoEditTriggers);
    results->setSelectionBehavior(QAbstractItemView::SelectRows);
    results->setShowGrid(false);
    layout->addWidget(results, 1);
    connect(results, &QTableWidget::cellClicked, this,
            [this](int row, int) { emit resultSelectedSignal(row); });
    connect(close, &QToolButton::clicked, this, &FindResultsWidget::closeButtonClickedSignal);
}

void FindResultsWidget::setResults(int total, const QStringList& labels, const QStringList& texts) {
    heading->setText(total == 0   ? QStringLiteral("0 matches found.")
                     : total == 1 ? QStringLiteral("%L1 match found:").arg(total)
                                  : QStringLiteral("%L1 matches found:").arg(total));
    results->clearContents();
    results->setRowCount(int(labels.size()));
    for (int i = 0; i < labels.size(); ++i) {
        results->setItem(i, 0, new QTableWidgetItem(labels[i]));
        // Rich text needs a label: an item shows plain text only.
        auto* text = new QLabel(texts.value(i));
        text->setTextFormat(Qt::RichText);
        results->setCellWidget(i, 1, text);
    }
}

QString FindResultsWidget::headingText() const {
    return heading->text();
}
