#include "tablemodel.h"

#include "data/fileparameters.h"
#include "edit/addressparsers.h"
#include "edit/sortnumber.h"
#include "view/tablemodelworker.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QLocale>
#include <QScreen>

#include <algorithm>
#include <cmath>

TableModel::TableModel(bool read_only_flag, QObject* parent)
    : QAbstractTableModel(parent), read_only(read_only_flag) {
    registerRangeMetaTypes();
    qRegisterMetaType<Context>("Context");
    // No main cell until the first load or selection sets one.
    main_cell.row = main_cell.col = -1;
    connect(&table_data, &TableData::startProgressUpdateSignal, this,
            &TableModel::startProgressUpdateSignal);
    connect(&table_data, &TableData::loadProgressUpdateSignal, this,
            &TableModel::loadProgressUpdateSignal);
    connect(&table_data, &TableData::tableSizeChangedSignal, this,
            &TableModel::tableSizeChangedSignal);
    connect(&table_data, &TableData::loadProgressUpdateSignal, this,
            [this](int curr, int total, int) { growDuringLoad(curr, total); });
    connect(&table_data, &TableData::loadFinishedSignal, this, &TableModel::onLoadFinished);
    connect(&table_data, &TableData::loadFailedSignal, this, &TableModel::loadFailedSignal);
    connect(&table_data, &TableData::saveStartedSignal, this, &TableModel::onSaveStarted);
    connect(&table_data, &TableData::saveFinishedSignal, this, &TableModel::onSaveFinished);
    connect(&table_data, &TableData::updateProgressSignal, this, &TableModel::updateProgress);

    double scale = 1.0;
    if (const QScreen* screen = QGuiApplication::primaryScreen())
        scale = screen->logicalDotsPerInchX() / 96.0;
    header_font_point_size = int(10.0 / (scale > 0 ? scale : 1.0));
    label_font = QFont(QStringLiteral("Lucida Sans Unicode"));
    label_font.setPointSize(std::max(header_font_point_size, 1));
    cell_font = QFont(QStringLiteral("Verdana"));
    setTextPixelSize(12);

    mutex = std::make_unique<QMutex>();
    wait_condition = std::make_unique<QWaitCondition>();
    table_data.setMutexAndCondition(mutex.get(), wait_condition.get());

    worker = new TableModelWorker;
    worker->moveToThread(&worker_thread);
    connect(&worker_thread, &QThread::finished, worker, &QObject::deleteLater);
    connect(this, &TableModel::getModelWithColModelSubsetSignal, worker,
            &TableModelWorker::getModelWithColModelSubset);
    connect(this, &TableModel::getEdgeIndexesOfSortedColumnsSignal, worker,
            &TableModelWorker::getEdgeIndexesOfSortedColumns);
    connect(this, &TableModel::isColumnAllNumbersSignal, worker,
            &TableModelWorker::isColumnAllNumbers);
    connect(worker, &TableModelWorker::getModelWithColSubsetFinishedSignal, this,
            &TableModel::onGetModelWithColSubsetFinished);
    connect(worker, &TableModelWorker::getEdgeIndexesOfSortedColumnsFinishedSignal, this,
            &TableModel::onGetEdgeIndexesOfSortedColumnsFinished);
    connect(worker, &TableModelWorker::isColumnAllNumbersFinishedSignal, this,
            &TableModel::onIsColumnAllNumbersFinished);
    connect(this, &TableModel::getSortPermutationSignal, worker,
            &TableModelWorker::getSortPermutation);
    connect(worker, &TableModelWorker::getSortPermutationFinishedSignal, this,
            &TableModel::onGetSortPermutationFinished);
    connect(worker, &Worker::updateProgressSignal, this, &TableModel::updateProgress);
    worker_thread.start(QThread::InheritPriority);
    setCancelInfo(std::make_shared<bool>(false), std::make_shared<QMutex>());

    setTheme(Theme());
}

TableModel::~TableModel() {
    worker_thread.quit();
    worker_thread.wait();
}

// ---- QAbstractTableModel ----

QModelIndex TableModel::index(int row, int col, const QModelIndex&) const {
    return createIndex(row, col);
}

int TableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : num_model_rows;
}

int TableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : num_model_cols;
}

Qt::ItemFlags TableModel::flags(const QModelIndex& index) const {
    // Deliberately not selectable: the selection is ours, not Qt's.
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsEditable;
}

const Range* TableModel::findMatchAt(int row, int col) const {
    for (const Range& m : find_matches) {
        const int r = table_data.modelRowFromRaw(m.row);
        const int c = table_data.modelColumnFromRaw(m.col);
        if (r == row && c == col) return &m;
    }
    return nullptr;
}

bool TableModel::inFindMatch(int row, int col) const {
    if (find_matches.empty()) return false;
    const int raw_row = table_data.rawRowFromModel(row);
    const int raw_col = table_data.rawColumnFromModel(col);
    for (const Range& m : find_matches)
        if (m.containsCell(raw_row, raw_col)) return true;
    return false;
}

QVariant TableModel::data(const QModelIndex& index, int role) const {
    const int row = index.row(), col = index.column();
    if (row < 0 || col < 0 || !index.model()) return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (find_query.highlight_matches)
            if (const Range* m = findMatchAt(row, col)) return m->value;
        ++display_reads;
        return table_data.data(row, col);
    case Qt::FontRole:
        return isHeaderCell(row, col) ? header_cell_font : cell_font;
    case Qt::ForegroundRole:
        if (find_query.highlight_matches && findMatchAt(row, col)) return highlighted_text_brush;
        return text_brush;
    case Qt::BackgroundRole:
        return backgroundColor(row, col);
    default:
        return {};
    }
}

QColor TableModel::backgroundColor(int row, int col) const {
    const bool row_odd = shade_rows && (row & 1);
    const bool col_odd = shade_cols && (col & 1);
    const bool pending = hasPendingRectangle();
    bool line_highlight = false;
    if (((highlight_main_row && row == main_cell.row) ||
         (highlight_main_col && col == main_cell.col)) &&
        selection.size() == 1 && selection.front().kind == Range::Cell) {
        line_highlight =
            !pending || (pending_corner_start == main_cell && pending_corner_end.row >= 0 &&
                         pending_corner_end == main_cell);
    }

    QColor color;
    if (row == main_cell.row && col == main_cell.col) {
        color = theme.color(Theme::MainCellColor);
    } else if (isCellSelected(row, col)) {
        color = theme.color(Theme::SelectedCellColor);
    } else if (pending) {
        const Range& s = pending_corner_start;
        const Range& e = pending_corner_end;
        if (row == s.row && col == s.col && s.is_main) {
            color = theme.color(Theme::MainCellColor);
        } else if (e.row >= 0) {
            if (row >= std::min(s.row, e.row) && row <= std::max(s.row, e.row) &&
                col >= std::min(s.col, e.col) && col <= std::max(s.col, e.col))
                color = theme.color(Theme::SelectedCellColor);
        } else if (row == s.row && col == s.col) {
            color = theme.color(Theme::SelectedCellColor);
        }
    }
    if (!color.isValid()) {
        const int shade = (row_odd != col_odd) ? 1 : (row_odd ? 2 : 0);
        if (inFindMatch(row, col)) {
            static constexpr Theme::Role kFound[] = {Theme::HighlightedCellColor,
                                                     Theme::HighlightedCellShade1Color,
                                                     Theme::HighlightedCellShade2Color};
            color = theme.color(kFound[shade]);
        } else if (isHeaderCell(row, col)) {
            static constexpr Theme::Role kHeader[] = {
                Theme::HeaderCellColor, Theme::HeaderCellShade1Color, Theme::HeaderCellShade2Color};
            color = theme.color(kHeader[shade]);
        } else {
            static constexpr Theme::Role kCell[] = {Theme::CellColor, Theme::CellShade1Color,
                                                    Theme::CellShade2Color};
            color = theme.color(kCell[shade]);
        }
    }
    if (line_highlight) {
        const QColor& line = theme.color(Theme::MainCellTranslucentColor);
        if (!color.isValid()) return line;
        const float f = theme.line_blend_factor;
        return QColor(int((1 - f) * color.red() + f * line.red()),
                      int((1 - f) * color.green() + f * line.green()),
                      int((1 - f) * color.blue() + f * line.blue()), 255);
    }
    return color;
}

bool TableModel::setData(const QModelIndex& index, const QVariant& value, int) {
    const bool ok = table_data.setData(index.row(), index.column(), value.toString());
    emit dataChanged(index, index, {});
    return ok;
}

bool TableModel::setDataSilent(int model_row, int model_col, const QString& text) {
    return table_data.setData(model_row, model_col, text);
}

bool TableModel::setRawData(int raw_row, int raw_col, const QString& text) {
    const bool ok = table_data.setRawData(raw_row, raw_col, text);
    if (suppress_raw_cell_signal) return true;
    // A hidden cell has no model position and nothing to repaint.
    const int model_row = table_data.modelRowFromRaw(raw_row);
    const int model_col = table_data.modelColumnFromRaw(raw_col);
    if (model_row >= 1 && model_col >= 1)
        emit dataChanged(index(model_row, model_col), index(model_row, model_col), {});
    return ok;
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (role == Qt::FontRole) return label_font;
    if (role != Qt::DisplayRole) return {};
    const bool vertical = orientation == Qt::Vertical;
    const SortRecord& sort = vertical ? row_sort : col_sort;
    const int raw =
        vertical ? table_data.rawRowFromModel(section) : table_data.rawColumnFromModel(section);
    QString text;
    if (vertical)
        text = QString::number(rowLabel(section));
    else
        text = columnLabelText(section);
    if (raw >= 0 && raw == sort.index && sort.order < 2)
        text = QStringLiteral("%1 %2").arg(text, sort.order == 0 ? QStringLiteral("\u2BC5")
                                                                 : QStringLiteral("\u2BC6"));
    return text;
}

int TableModel::rowLabel(int model_row) const {
    const int raw = table_data.rawRowFromModel(model_row);
    return raw < 0 ? kMissingLabel : first_row_index + raw;
}

QString TableModel::columnLabelText(int model_col) const {
    const int raw = table_data.rawColumnFromModel(model_col);
    if (raw < 0) return QString::number(kMissingLabel);
    if (columns_as_letters) return columnIndexToLetters(raw + 1);
    return QString::number(first_col_index + raw);
}

bool TableModel::setHeaderData(int section, Qt::Orientation orientation, const QVariant& value,
                               int role) {
    // The label is shown text; an edit-role value is compared with it.
    if (role == Qt::EditRole) role = Qt::DisplayRole;
    if (value == headerData(section, orientation, role)) return false;
    emit headerDataChanged(orientation, section, section);
    return true;
}

bool TableModel::insertRows(int row, int count, const QModelIndex& parent) {
    if (count < 1) return true;
    if (lock_row_insert) return false;
    if (!size_only && !table_data.insertRows(row, count)) return false;
    if (!suppress_layout_signals) emit layoutAboutToBeChanged();
    beginInsertRows(parent, row, row + count - 1);
    num_model_rows += count;
    endInsertRows();
    if (!suppress_layout_signals) emit layoutChanged();
    return true;
}

bool TableModel::insertColumns(int col, int count, const QModelIndex& parent) {
    if (count < 1) return true;
    if (!size_only && !table_data.insertColumns(col, count)) return false;
    if (!suppress_layout_signals) emit layoutAboutToBeChanged();
    beginInsertColumns(parent, col, col + count - 1);
    num_model_cols += count;
    endInsertColumns();
    if (!suppress_layout_signals) emit layoutChanged();
    return true;
}

bool TableModel::removeRows(int row, int count, const QModelIndex& parent) {
    if (row < 0 || count < 1) return true;
    count = std::min(count, num_model_rows - row);
    if (count < 1) return true;
    if (!size_only && !table_data.removeRows(row, count)) return false;
    beginRemoveRows(parent, row, row + count - 1);
    num_model_rows -= count;
    endRemoveRows();
    return true;
}

bool TableModel::removeColumns(int col, int count, const QModelIndex& parent) {
    if (col < 0 || count < 1) return true;
    count = std::min(count, num_model_cols - col);
    if (count < 1) return true;
    if (!size_only && !table_data.removeColumns(col, count)) return false;
    beginRemoveColumns(parent, col, col + count - 1);
    num_model_cols -= count;
    endRemoveColumns();
    return true;
}

// ---- Size ----

void TableModel::enforceTableSize(bool in_steps) {
    int max_sel_row = 0, max_sel_col = 0;
    for (const Range& r : selection) {
        if (r.kind == Range::Cell || r.kind == Range::Row)
            max_sel_row = std::max(max_sel_row, r.row);
        if (r.kind == Range::Cell || r.kind == Range::Column)
            max_sel_col = std::max(max_sel_col, r.col);
        // A column segment made by keyboard extension reaches to its end row.
        if (r.kind == Range::Column && r.row_end != Range::kToEnd)
            max_sel_row = std::max(max_sel_row, r.row_end);
    }
    const int visible_rows = table_data.numModelRows();
    const int visible_cols = table_data.numModelColumns();
    int rows, cols;
    if (read_only) {
        rows = visible_rows;
        cols = visible_cols;
    } else {
        const int wanted_rows_sel = buffer_rows + 1 + max_sel_row - table_data.numHiddenRows();
        const int wanted_cols_sel = buffer_cols + 1 + max_sel_col - table_data.numHiddenColumns();
        rows = std::max({buffer_rows + visible_rows, min_rows, wanted_rows_sel});
        cols = std::max({buffer_cols + visible_cols, min_cols, wanted_cols_sel});
    }
    int drow = rows - num_model_rows;
    const int dcol = cols - num_model_cols;
    if (drow == 0 && dcol == 0) return;
    // The grid's row labels cost time in proportion to the rows added at
    // once: millions at the end of a load would hold the window for most of
    // a tenth of a second. They go in steps, one per turn of the event loop,
    // so that the first screen paints after the first step.
    if (in_steps && drow > kRowGrowthStep) {
        drow = kRowGrowthStep;
        if (!growth_pending) {
            growth_pending = true;
            QMetaObject::invokeMethod(
                this,
                [this] {
                    growth_pending = false;
                    enforceTableSize(true);
                },
                Qt::QueuedConnection);
        }
    }
    emit layoutAboutToBeChanged();
    size_only = true;
    const bool layout_was_suppressed = suppress_layout_signals;
    suppress_layout_signals = true;
    if (drow > 0) insertRows(num_model_rows, drow);
    if (drow < 0) removeRows(num_model_rows + drow, -drow);
    if (dcol > 0) insertColumns(num_model_cols, dcol);
    if (dcol < 0) removeColumns(num_model_cols + dcol, -dcol);
    suppress_layout_signals = layout_was_suppressed;
    size_only = false;
    emit layoutChanged();

    // Strict on purpose: a main cell just past the end stays until the next change.
    bool moved = false;
    if (main_cell.row > num_model_rows) {
        main_cell.row = std::max(num_model_rows - 1, 0);
        moved = true;
    }
    if (main_cell.col > num_model_cols) {
        main_cell.col = std::max(num_model_cols - 1, 0);
        moved = true;
    }
    if (moved) setMainCell(main_cell);
}

void TableModel::clampSelectionTo(bool rows) {
    const int visible = rows ? table_data.numModelRows() : table_data.numModelColumns();
    const int hidden = rows ? table_data.numHiddenRows() : table_data.numHiddenColumns();
    const int buffer = rows ? buffer_rows : buffer_cols;
    const int minimum = rows ? min_rows : min_cols;
    const int limit = std::max(read_only ? visible : std::max(buffer + visible, minimum), 1);
    const int highest = std::max(std::min(limit, hidden + limit - buffer) - 1, 0);
    const int line_kind = rows ? Range::Row : Range::Column;
    for (Range& r : selection) {
        if (r.kind != Range::Cell && r.kind != line_kind) continue;
        int& v = rows ? r.row : r.col;
        v = std::min(v, highest);
    }
    int& main_v = rows ? main_cell.row : main_cell.col;
    main_v = std::min(main_v, highest);
    normalise();
    enforceTableSize();
    const int count = rows ? num_model_rows : num_model_cols;
    selection.erase(std::remove_if(selection.begin(), selection.end(),
                                   [&](const Range& r) {
                                       return (rows ? r.row : r.col) >= count && !r.is_main;
                                   }),
                    selection.end());
    if (selection.empty()) selection.push_back(main_cell);
    rebuildSelectionIndex();
    emitSelectionSignals();
}

void TableModel::clampSelectionToRows() {
    clampSelectionTo(true);
}

void TableModel::clampSelectionToColumns() {
    clampSelectionTo(false);
}

QStringList TableModel::headerLabelsOfData() const {
    QStringList labels;
    const int row = std::max(num_header_rows - 1, 0);
    if (row >= table_data.numModelRows()) return labels;
    const int cols = table_data.numModelColumns();
    labels.reserve(cols);
    for (int c = 0; c < cols; ++c)
        labels << table_data.data(row, c).toString();
    return labels;
}

void TableModel::load(const QString& filepath, bool asynchronous) {
    size_only = true;
    if (num_model_rows > 0) removeRows(0, num_model_rows);
    if (num_model_cols > 0) removeColumns(0, num_model_cols);
    size_only = false;
    row_sort = SortRecord();
    col_sort = SortRecord();
    emit refreshHeadersSignal();
    filters.clear();
    user_hidden_rows.clear();
    user_hidden_cols.clear();
    filtered_rows.clear();
    filtered_cols.clear();
    // A new file's lines are other lines: none of them is hidden.
    table_data.setHiddenRows({});
    table_data.setHiddenColumns({});
    emit removeContextSignal(FiltersPresent);
    emit removeContextSignal(HiddenPresent);
    file_.setFileName(filepath);
    table_data.setLineEnding(line_ending);
    table_data.setExtension(extension_);
    table_data.setSaveTrailingDelimiters(save_trailing_delimiters);
    load_row_estimate = asynchronous && !read_only ? estimateRowCount(filepath) : 0;
    table_data.load(filepath, asynchronous, read_only, delimiter_open, delimiter_save, encoding_,
                    parsing_standard);
}

qint64 TableModel::estimateRowCount(const QString& filepath) {
    QFile f(filepath);
    if (!f.open(QIODevice::ReadOnly)) return 0;
    const qint64 size = f.size();
    const QByteArray head = f.read(256 * 1024);
    const qint64 lines = head.count('\n');
    if (lines < 16 || head.isEmpty()) return 0;
    return qint64(double(size) * double(lines) / double(head.size()));
}

void TableModel::growDuringLoad(int curr_num_reports, int num_total_reports) {
    // The rows the load has probably read so far join the grid while it is
    // hidden, a little at each report, so that the end of the load has few
    // row labels left to add. Short of the estimate on purpose: rows the
    // data does not fill are taken back at the end.
    if (load_row_estimate <= 0 || num_total_reports <= 0 || !table_data.isLoading()) return;
    const qint64 target = load_row_estimate * 9 / 10 * curr_num_reports / num_total_reports;
    const qint64 add = std::min<qint64>(target - num_model_rows, kRowGrowthStep);
    if (add < 1024) return;
    size_only = true;
    const bool layout_was_suppressed = suppress_layout_signals;
    suppress_layout_signals = true;
    insertRows(num_model_rows, int(add));
    suppress_layout_signals = layout_was_suppressed;
    size_only = false;
}

void TableModel::onLoadFinished() {
    refreshAll();
}

void TableModel::refreshAll() {
    last_data_row = table_data.numModelRows() - 1;
    last_data_col = table_data.numModelColumns() - 1;
    enforceTableSize(true);
    if (last_data_row >= 0 && last_data_col >= 0)
        emit dataChanged(index(0, 0), index(last_data_row, last_data_col), {});
    if (main_cell.row < 0 || main_cell.col < 0) {
        selectSingleCell(Range(0, 0, Range::Model));
    } else {
        emit mainCellChangedSignal(main_cell);
    }
    emit loadFinishedSignal();
}

void TableModel::onSaveStarted(QString filepath) {
    emit saveStartedSignal(filepath);
}

void TableModel::onSaveFinished(QString filepath) {
    if (!filepath.isEmpty()) file_.setFileName(filepath);
    emit saveFinishedSignal(filepath);
}

void TableModel::updateProgress(float proportion) {
    emit updateProgressSignal(proportion);
}

// ---- Settings ----

void TableModel::refreshThemeCaches() {
    text_brush = QBrush(theme.color(Theme::TextColor));
    highlighted_text_brush = QBrush(theme.color(Theme::HighlightedCellTextColor));
}

void TableModel::setTheme(const Theme& value) {
    theme = value;
    refreshThemeCaches();
}

void TableModel::setShadeRows(bool on) {
    shade_rows = on;
}
void TableModel::setShadeCols(bool on) {
    shade_cols = on;
}
void TableModel::setHighlightMainRow(bool on) {
    highlight_main_row = on;
}
void TableModel::setHighlightMainCol(bool on) {
    highlight_main_col = on;
}
void TableModel::setHighlightHeaderRows(bool on) {
    highlight_header_rows = on;
}
void TableModel::setHighlightHeaderCols(bool on) {
    highlight_header_cols = on;
}
void TableModel::setNumHeaderRows(int n) {
    num_header_rows = std::max(n, 0);
}
void TableModel::setNumHeaderCols(int n) {
    num_header_cols = std::max(n, 0);
}

void TableModel::setMinRows(int n) {
    min_rows = n;
    enforceTableSize();
}
void TableModel::setMinCols(int n) {
    min_cols = n;
    enforceTableSize();
}
void TableModel::setBufferRows(int n) {
    buffer_rows = n;
    enforceTableSize();
}
void TableModel::setBufferCols(int n) {
    buffer_cols = n;
    enforceTableSize();
}

void TableModel::setFirstRowIndex(int n) {
    first_row_index = n;
    emit refreshHeadersSignal();
}
void TableModel::setFirstColIndex(int n) {
    first_col_index = n;
    emit refreshHeadersSignal();
}
void TableModel::setColumnsAsLetters(bool on) {
    columns_as_letters = on;
    emit refreshHeadersSignal();
}
void TableModel::setCaseSensitiveSorting(bool on) {
    case_sensitive_sorting = on;
}

void TableModel::setTextPixelSize(int pixels) {
    text_pixel_size = std::max(pixels, 1);
    cell_font.setPixelSize(text_pixel_size);
    header_cell_font = cell_font;
    header_cell_font.setBold(true);
}

void TableModel::setFontFamily(const QString& family) {
    cell_font.setFamily(family);
    setTextPixelSize(text_pixel_size);
}

void TableModel::setSaveTrailingDelimiters(bool on) {
    save_trailing_delimiters = on;
    table_data.setSaveTrailingDelimiters(on);
}

bool TableModel::setReadOnly(bool on) {
    if (read_only == on) return false;
    read_only = on;
    return true;
}

void TableModel::setExtension(const QString& value) {
    extension_ = value;
    table_data.setExtension(value);
}

void TableModel::setDelimiter(const QString& open, const QString& save) {
    delimiter_open = open;
    delimiter_save = save;
    table_data.setDelimiters(open, save);
    emit setDelimiterSignal(save);
}

void TableModel::setLineEnding(LineEndingType value) {
    line_ending = value;
    table_data.setLineEnding(value);
    emit setLineEndingSignal(value);
}

void TableModel::setEncoding(EncodingType value, bool convert_cells) {
    encoding_ = value;
    table_data.setEncoding(value, convert_cells);
    emit setEncodingSignal(value);
}

void TableModel::setParsingStandard(ParsingStandard value) {
    parsing_standard = value;
    table_data.setParsingStandard(value);
    emit setParsingStandardSignal(value);
}

void TableModel::setRowSort(SortRecord record) {
    row_sort = record;
    emit refreshHeadersSignal();
}

void TableModel::setColSort(SortRecord record) {
    col_sort = record;
    emit refreshHeadersSignal();
}

void TableModel::setFindMatches(RangeVector matches) {
    find_matches = std::move(matches);
}

// ---- Status ----

void TableModel::updateStatusBarStats() {
    double sum = 0;
    qint64 count = 0;
    // Selections beyond the data hold no numbers; each member is cut at the
    // data's end and walked by itself, so the cost follows the selection,
    // never the table. Past a few million cells the sums would hold the
    // interface thread too long, and the label says so by its dashes.
    const int rows = table_data.numModelRows();
    const int cols = table_data.numModelColumns();
    constexpr qint64 kMaxCells = 2000000;
    qint64 cells = 0;
    for (const Range& r : selection) {
        const qint64 h = std::max(0, std::min(r.kind == Range::Cell || r.kind == Range::Row
                                                  ? r.row
                                                  : std::min(r.row_end, rows - 1),
                                              rows - 1) -
                                         r.row + 1);
        const qint64 w = std::max(0, std::min(r.kind == Range::Cell || r.kind == Range::Column
                                                  ? r.col
                                                  : std::min(r.col_end, cols - 1),
                                              cols - 1) -
                                         r.col + 1);
        cells += h * w;
    }
    if (cells <= kMaxCells) {
        for (const Range& r : selection) {
            const int r_end = r.kind == Range::Cell || r.kind == Range::Row
                                  ? r.row
                                  : std::min(r.row_end, rows - 1);
            const int c_end = r.kind == Range::Cell || r.kind == Range::Column
                                  ? r.col
                                  : std::min(r.col_end, cols - 1);
            for (int row = r.row; row <= std::min(r_end, rows - 1); ++row)
                for (int col = r.col; col <= std::min(c_end, cols - 1); ++col) {
                    if (r.kind != Range::Cell && !r.containsCell(row, col)) continue;
                    const QString text = table_data.data(row, col).toString();
                    if (text.isEmpty()) continue;
                    if (const auto v = readNumber(QStringView(text), true)) {
                        sum += *v;
                        ++count;
                    }
                }
        }
    }
    if (count == 0) {
        emit updateStatsLabelSignal(QStringLiteral("Sum: -      Mean: -"));
        return;
    }
    const QLocale locale;
    emit updateStatsLabelSignal(
        QStringLiteral("Sum: %1      Mean: %2")
            .arg(locale.toString(sum, 'g', max_double_digits),
                 locale.toString(sum / double(count), 'g', max_double_digits)));
}

// ---- Worker jobs ----

void TableModel::setCancelInfo(std::shared_ptr<bool> flag, std::shared_ptr<QMutex> m) {
    cancel_flag = flag;
    cancel_mutex = m;
    worker->setCancelInfo(flag, m);
    table_data.setCancelInfo(std::move(flag), std::move(m));
}

bool TableModel::getModelWithColModelSubset(TableModel* new_model, std::vector<int>* col_model_list,
                                            int num_rows, int num_cols) {
    QEventLoop loop;
    connect(this, &TableModel::endGetModelWithColModelSubsetLoopSignal, &loop, &QEventLoop::quit);
    job_completed = false;
    emit getModelWithColModelSubsetSignal(new_model, &table_data, col_model_list, num_rows,
                                          num_cols);
    loop.exec();
    return job_completed;
}

bool TableModel::getEdgeIndexesOfSortedColumns(const std::vector<int>& col_model_list,
                                               bool include_end_index, std::vector<int>& edges) {
    QEventLoop loop;
    connect(this, &TableModel::endGetEdgeIndexesOfSortedColumnsLoopSignal, &loop,
            &QEventLoop::quit);
    job_completed = false;
    emit getEdgeIndexesOfSortedColumnsSignal(col_model_list, include_end_index, this);
    loop.exec();
    edges = worker->edge_indexes;
    return job_completed;
}

int TableModel::isColumnAllNumbers(int col_model) {
    QEventLoop loop;
    connect(this, &TableModel::endIsColumnAllNumbersSignal, &loop, &QEventLoop::quit);
    job_completed = false;
    emit isColumnAllNumbersSignal(col_model, this);
    loop.exec();
    if (!job_completed) return -1;
    return worker->column_all_numbers ? 1 : 0;
}

void TableModel::onGetModelWithColSubsetFinished(bool complete) {
    job_completed = complete;
    emit endGetModelWithColModelSubsetLoopSignal();
}

void TableModel::onGetEdgeIndexesOfSortedColumnsFinished(bool completed) {
    job_completed = completed;
    emit endGetEdgeIndexesOfSortedColumnsLoopSignal();
}

void TableModel::onIsColumnAllNumbersFinished(bool completed) {
    job_completed = completed;
    emit endIsColumnAllNumbersSignal();
}
