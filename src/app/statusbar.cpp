#include "app/statusbar.h"

#include "data/fileparameters.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QLabel>
#include <QLocale>
#include <QTimer>

#include <set>

namespace {

QString plural(qint64 n) {
    return n == 1 ? QString() : QStringLiteral("s");
}

} // namespace

namespace {

QString cellLengthText(int length) {
    return QStringLiteral("Cell Length: %1").arg(QLocale().toString(length));
}

} // namespace

StatusBar::StatusBar(QWidget* parent) : QStatusBar(parent) {
    setSizeGripEnabled(false);
    // Items are told apart by spacing, not by the style's boxes.
    setStyleSheet(QStringLiteral("QStatusBar::item { border: none; }"));
    selection_label = addItem(false);
    cell_length_label = addItem(false);
    stats_label = addItem(false);
    size_label = addItem(true);
    delimiter_label = addItem(true);
    filters_label = addItem(true);
    mode_label = addItem(true);

    stats_timer = new QTimer(this);
    stats_timer->setSingleShot(true);
    stats_timer->setInterval(60);
    connect(stats_timer, &QTimer::timeout, this, [this] {
        if (view && !view->model()->tableData().isLoading()) view->model()->updateStatusBarStats();
    });
}

QLabel* StatusBar::addItem(bool permanent) {
    auto* label = new QLabel(this);
    label->setFont(QFont(QStringLiteral("Lucida Sans Unicode")));
    label->setContentsMargins(8, 0, 8, 0);
    label->setTextFormat(Qt::PlainText);
    if (permanent)
        addPermanentWidget(label);
    else
        addWidget(label);
    return label;
}

void StatusBar::setTableView(TableView* new_view) {
    for (const QMetaObject::Connection& c : connections)
        disconnect(c);
    connections.clear();
    stats_timer->stop();
    view = new_view;
    if (!view) {
        for (QLabel* label : {selection_label, cell_length_label, stats_label, size_label,
                              delimiter_label, filters_label, mode_label})
            label->clear();
        return;
    }
    TableModel* model = view->model();
    connections = {
        connect(view, &TableView::updateStatusBarSignal, this, &StatusBar::refresh),
        connect(view, &TableView::tableSizeChangedSignal, this, &StatusBar::refresh),
        connect(view, &TableView::loadFinishedSignal, this,
                [this] {
                    refresh();
                    onSelectionChanged();
                }),
        connect(view, &TableView::selectionChangedSignal, this, &StatusBar::onSelectionChanged),
        connect(view, &TableView::selectionSizeChangedSignal, this, &StatusBar::refreshSelection),
        connect(view, &TableView::mainCellChangedSignal, this, &StatusBar::refreshCellLength),
        // While an edit runs, the length follows the text typed.
        connect(view, &TableView::mainCellLengthChangedSignal, this,
                [this](int length) { cell_length_label->setText(cellLengthText(length)); }),
        connect(model, &TableModel::updateStatsLabelSignal, this, &StatusBar::onStatsLabelUpdate),
        connect(model, &TableModel::setDelimiterSignal, this, &StatusBar::refresh),
        connect(view, &QObject::destroyed, this, [this] { setTableView(nullptr); }),
    };
    refresh();
    onSelectionChanged();
}

void StatusBar::refresh() {
    if (!view) return;
    mode_label->setText(modeItemText());
    size_label->setText(sizeItemText());
    delimiter_label->setText(delimiterItemText());
    filters_label->setText(filtersItemText());
    refreshSelection();
    refreshCellLength();
}

void StatusBar::refreshSelection() {
    if (view) selection_label->setText(selectionItemText());
}

void StatusBar::refreshCellLength() {
    if (view) cell_length_label->setText(cellLengthItemText());
}

void StatusBar::onSelectionChanged() {
    if (!view) return;
    refreshSelection();
    stats_label->setText(QStringLiteral("Sum: ...    Mean: ..."));
    stats_timer->start();
}

void StatusBar::onStatsLabelUpdate(QString stats_str) {
    // A figure that arrives after the selection moved on is stale.
    if (!stats_timer->isActive()) stats_label->setText(stats_str);
}

// ---- Item texts ----

QString StatusBar::modeItemText() const {
    if (!view) return {};
    return view->model()->isReadOnly() ? QStringLiteral("Read-Only") : QStringLiteral("Editable");
}

QString StatusBar::sizeItemText() const {
    if (!view) return {};
    const TableData& data = view->model()->tableData();
    return sizeText(data.numRawRows(), data.numRawColumns(), data.numModelRows(),
                    data.numModelColumns());
}

QString StatusBar::selectionItemText() const {
    return view ? selectionText(*view->model()) : QString();
}

QString StatusBar::cellLengthItemText() const {
    if (!view) return {};
    const TableModel& model = *view->model();
    const Range& main = model.mainCell();
    int length = 0;
    // Cells past the data are virtual and empty; a running load owns the store.
    if (!model.tableData().isLoading() && main.row >= 0 && main.col >= 0 &&
        main.row <= model.lastDataRow() && main.col <= model.lastDataCol())
        length = int(model.tableData().data(main.row, main.col).toString().size());
    return cellLengthText(length);
}

QString StatusBar::delimiterItemText() const {
    if (!view) return {};
    return delimiterText(view->model()->delimiterOpen(), view->model()->delimiterSave());
}

QString StatusBar::filtersItemText() const {
    return view ? filtersText(*view->model()) : QString();
}

QString StatusBar::statsItemText() const {
    return stats_label->text();
}

QString StatusBar::sizeText(int num_raw_rows, int num_raw_cols, int num_model_rows,
                            int num_model_cols) {
    auto size = [](int rows, int cols) {
        return QStringLiteral("%L1 row%2 x %L3 column%4")
            .arg(rows)
            .arg(plural(rows))
            .arg(cols)
            .arg(plural(cols));
    };
    if (num_raw_rows == num_model_rows && num_raw_cols == num_model_cols)
        return size(num_raw_rows, num_raw_cols);
    return size(num_model_rows, num_model_cols) +
           QStringLiteral(" (%1)").arg(size(num_raw_rows, num_raw_cols));
}

QString StatusBar::selectionText(const TableModel& model) {
    const QLocale locale;
    auto block = [&](int rows, int cols) {
        return QStringLiteral("Selected: %1 x %2")
            .arg(locale.toString(rows), locale.toString(cols));
    };
    if (model.hasPendingRectangle()) {
        const RangeSize size = model.selectionSize();
        if (size.block_rows > 0) return block(size.block_rows, size.block_cols);
    }

    std::set<int> rows;
    std::set<int> cols;
    bool only_lines = !model.selectionRanges().empty();
    for (const Range& r : model.selectionRanges()) {
        if (r.kind == Range::Row)
            rows.insert(r.row);
        else if (r.kind == Range::Column)
            cols.insert(r.col);
        else
            only_lines = false;
    }
    if (only_lines) {
        const qint64 nr = qint64(rows.size());
        const qint64 nc = qint64(cols.size());
        if (nc == 0)
            return QStringLiteral("Selected: %1 row%2").arg(locale.toString(nr), plural(nr));
        if (nr == 0)
            return QStringLiteral("Selected: %1 column%2").arg(locale.toString(nc), plural(nc));
        return QStringLiteral("Selected: %1 row%2, %3 column%4")
            .arg(locale.toString(nr), plural(nr), locale.toString(nc), plural(nc));
    }

    const qint64 cells = model.numSelectedCells();
    if (cells > 1) {
        // Several cells that fill their bounding rectangle read as one block,
        // however they were selected.
        const RangeSize size = model.selectionSize();
        if (qint64(size.block_rows) * size.block_cols == cells)
            return block(size.block_rows, size.block_cols);
    }
    return QStringLiteral("Selected: %1 cell%2").arg(locale.toString(cells), plural(cells));
}

QString StatusBar::filtersText(const TableModel& model) {
    QStringList lines;
    for (const FilterData& filter : model.filterList()) {
        if (filter.range.kind == FilterLine::kColumn)
            lines << QStringLiteral("C%1").arg(model.firstColIndex() + filter.range.col);
        else if (filter.range.kind == FilterLine::kRow)
            lines << QStringLiteral("R%1").arg(model.firstRowIndex() + filter.range.row);
    }
    lines.removeDuplicates();
    return QStringLiteral("Filters: ") +
           (lines.isEmpty() ? QStringLiteral("none") : lines.join(QStringLiteral(", ")));
}

QString StatusBar::delimiterText(const QString& delimiter_open, const QString& delimiter_save) {
    if (delimiter_open == delimiter_save)
        return QStringLiteral("Delimiter: %1").arg(delimiterShortName(delimiter_open));
    return QStringLiteral("Delimiters (Load, Save): %1, %2")
        .arg(delimiterShortName(delimiter_open), delimiterShortName(delimiter_save));
}
