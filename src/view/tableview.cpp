#include "tableview.h"

#include "view/headerview.h"
#include "view/tabledelegate.h"
#include "view/tablemodel.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTableWidget>
#include <QUndoStack>
#include <QVariantAnimation>
#include <QWheelEvent>

#include <algorithm>
#include <set>

TableView::TableView(bool read_only, QWidget* parent) : AbstractTableView(parent) {
    frozen_kind = 0;
    horizontal_header = new HeaderView(Qt::Horizontal, this);
    vertical_header = new HeaderView(Qt::Vertical, this);
    setHorizontalHeader(horizontal_header);
    setVerticalHeader(vertical_header);
    vertical_header->setMinimumSectionSize(1);
    horizontal_header->setMinimumSectionSize(1);
    vertical_header->setDefaultSectionSize(default_row_height);
    horizontal_header->setDefaultSectionSize(default_col_width);
    vertical_header->setDefaultAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto* m = new TableModel(read_only, this);
    setModel(m);
    delegate = new TableDelegate(this);
    setItemDelegate(delegate);
    undo_stack = new QUndoStack(this);
    connect(undo_stack, &QUndoStack::cleanChanged, this, &TableView::onUndoStackCleanChanged);
    // Highlighted matches follow what is in view and every change of data.
    auto refresh_matches = [this] {
        if (table_model && table_model->findQuery().highlight_matches) refreshFindMatches();
    };
    connect(undo_stack, &QUndoStack::indexChanged, this, refresh_matches);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, refresh_matches);
    connect(horizontalScrollBar(), &QScrollBar::valueChanged, this, refresh_matches);
    connect(delegate, &TableDelegate::editorCreatedSignal, this, &TableView::onCellEditorCreated);
    connect(delegate, &TableDelegate::textEditedSignal, this, &TableView::onCellTextEdited);
    connect(delegate, &TableDelegate::stopEditingSignal, this,
            qOverload<>(&TableView::stopEditing));
    connect(delegate, &TableDelegate::nextColumnWithColumnResetSignal, this,
            &TableView::nextColumnWithColumnReset);
    connect(delegate, &TableDelegate::previousColumnWithColumnResetSignal, this,
            &TableView::previousColumnWithColumnReset);
    connect(delegate, &TableDelegate::nextRowWithColumnResetSignal, this,
            &TableView::nextRowWithColumnReset);
    // An editor closed by Qt (focus lost) ends the edit as Escape does.
    connect(delegate, &QAbstractItemDelegate::closeEditor, this, [this] {
        if (context & CellEditing) stopEditing(true);
    });
    connect(this, qOverload<bool>(&AbstractTableView::startEditingSignal), this,
            qOverload<bool>(&TableView::startEditing));
    connect(this, qOverload<bool, QKeyEvent*>(&AbstractTableView::startEditingSignal), this,
            qOverload<bool, QKeyEvent*>(&TableView::startEditing), Qt::DirectConnection);
    connect(this, &AbstractTableView::dataChangedSignal, this, &TableView::onDataChanged);
    connect(this, &AbstractTableView::moveCellContentsAbsoluteSignal, this,
            &TableView::onMoveCellContentsAbsolute);
    setAcceptDrops(true);

    measure_row = new QTableWidget(1, 1, this);
    measure_col = new QTableWidget(5, 1, this);
    for (QTableWidget* t : {measure_row, measure_col}) {
        t->hide();
        t->horizontalHeader()->hide();
        t->verticalHeader()->hide();
    }
    measureFonts();

    row_animation = new QVariantAnimation(this);
    col_animation = new QVariantAnimation(this);
    for (QVariantAnimation* a : {row_animation, col_animation}) {
        a->setDuration(125);
        a->setEasingCurve(QEasingCurve::Linear);
    }
    connect(row_animation, &QVariantAnimation::valueChanged, this, &TableView::setRowHeightsSlot);
    connect(col_animation, &QVariantAnimation::valueChanged, this, &TableView::setColWidthsSlot);

    wheel_snap_timer = new QTimer(this);
    wheel_snap_timer->setInterval(100);
    wheel_snap_timer->setTimerType(Qt::PreciseTimer);
    wheel_snap_timer->setSingleShot(true);
    connect(wheel_snap_timer, &QTimer::timeout, this, &TableView::onWheelSnapTimerStopped);

    // Relays for the window.
    connect(m, &TableModel::startProgressUpdateSignal, this, &TableView::startProgressUpdateSignal);
    connect(m, &TableModel::loadProgressUpdateSignal, this, &TableView::loadProgressUpdateSignal);
    connect(m, &TableModel::loadFinishedSignal, this, &TableView::onLoadFinished);
    connect(m, &TableModel::saveStartedSignal, this, &TableView::saveStartedSignal);
    connect(m, &TableModel::saveFinishedSignal, this, &TableView::saveFinishedSignal);
    connect(m, &TableModel::tableSizeChangedSignal, this, &TableView::tableSizeChangedSignal);
    connect(m, &TableModel::mainCellChangedSignal, this, &TableView::mainCellChangedSignal);
    connect(m, &TableModel::selectionSizeChangedSignal, this,
            &TableView::selectionSizeChangedSignal);
    connect(m, &TableModel::selectionChangedSignal, this, &TableView::onSelectionChanged);
    connect(m, &TableModel::updateStatusBarSignal, this, &TableView::updateStatusBarSignal);
    connect(m, &TableModel::addContextSignal, this, &TableView::addContextSignal);
    connect(m, &TableModel::removeContextSignal, this, &TableView::removeContextSignal);
    connect(m, &TableModel::enforceTableSizeSignal, this, &TableView::enforceTableSize);
    connect(m, &TableModel::scrollToMainCellSignal, this, &TableView::scrollToMainCell);
    connect(m, &TableModel::scrollToRowSignal, this, &TableView::scrollToRow);
    connect(m, &TableModel::scrollToColSignal, this, &TableView::scrollToCol);
    connect(m, &TableModel::refreshHeadersSignal, this, [this] {
        horizontal_header->viewport()->update();
        vertical_header->viewport()->update();
    });
    connect(m, &TableModel::resizeRowSignal, this, &TableView::resizeRow);
    connect(m, &TableModel::resizeColSignal, this, &TableView::resizeCol);
    connect(m, &TableModel::resizeRowsSignal, this, &TableView::resizeRows);
    connect(m, &TableModel::resizeColsSignal, this, &TableView::resizeCols);
    connect(m, qOverload<>(&TableModel::enforceAutoFitColWidthsAllSignal), this,
            [this] { enforceAutoFitColWidth(false); });
    connect(m, qOverload<>(&TableModel::enforceAutoFitRowHeightsAllSignal), this,
            [this] { enforceAutoFitRowHeight(false); });
    connect(m, &TableModel::enforceAutoFitColWidthsSignal, this,
            &TableView::enforceAutoFitColWidths);
    connect(m, &TableModel::enforceAutoFitRowHeightsSignal, this,
            &TableView::enforceAutoFitRowHeights);
    connect(m, qOverload<int, int>(&TableModel::insertRowsGuiSignal), this,
            &TableView::insertRowsSlot);
    connect(m, qOverload<int, int>(&TableModel::removeRowsGuiSignal), this,
            &TableView::removeRowsSlot);
    connect(m, qOverload<int, int>(&TableModel::insertColsGuiSignal), this,
            &TableView::insertColsSlot);
    connect(m, qOverload<int, int>(&TableModel::removeColsGuiSignal), this,
            &TableView::removeColsSlot);

    connect(horizontal_header, &QHeaderView::sectionClicked, this,
            &TableView::onHorizontalSectionClicked);
    connect(horizontal_header, &HeaderView::sectionCtrlClicked, this,
            &TableView::onHorizontalSectionCtrlClicked);
    connect(horizontal_header, &HeaderView::sectionShiftClicked, this,
            &TableView::onHorizontalSectionShiftClicked);
    connect(horizontal_header, &QHeaderView::sectionEntered, this,
            &TableView::onHorizontalSectionEntered);
    connect(horizontal_header, &HeaderView::mouseReleased, this,
            &TableView::onHorizontalMouseReleased);
    connect(vertical_header, &QHeaderView::sectionClicked, this,
            &TableView::onVerticalSectionClicked);
    connect(vertical_header, &HeaderView::sectionCtrlClicked, this,
            &TableView::onVerticalSectionCtrlClicked);
    connect(vertical_header, &HeaderView::sectionShiftClicked, this,
            &TableView::onVerticalSectionShiftClicked);
    connect(vertical_header, &QHeaderView::sectionEntered, this,
            &TableView::onVerticalSectionEntered);
    connect(vertical_header, &HeaderView::mouseReleased, this, &TableView::onVerticalMouseReleased);
    connect(horizontal_header, &QHeaderView::sectionDoubleClicked, this,
            &TableView::onHorizontalSectionDoubleClicked);
    connect(vertical_header, &QHeaderView::sectionDoubleClicked, this,
            &TableView::onVerticalSectionDoubleClicked);

    connect(verticalScrollBar(), &QScrollBar::sliderReleased, this,
            &TableView::onScrollBarReleased);
    connect(horizontalScrollBar(), &QScrollBar::sliderReleased, this,
            &TableView::onScrollBarReleased);

    if (auto* corner = findChild<QAbstractButton*>()) corner->installEventFilter(this);
    horizontal_header->installEventFilter(this);
    vertical_header->installEventFilter(this);
    viewport()->installEventFilter(this);

    setTheme(Theme());
    emit addContextSignal(TableOpen);
}

TableView::~TableView() {
    emit tableViewDestroyedSignal();
}

void TableView::measureFonts() {
    const QFontMetrics cell(table_model->cellFont());
    const QFontMetrics header(table_model->headerCellFont());
    char_width = int(cell.averageCharWidth() * 1.1);
    header_char_width = int(header.averageCharWidth() * 1.1);
    measure_row->setFont(table_model->cellFont());
    measure_col->setFont(table_model->cellFont());
}

void TableView::setTheme(const Theme& theme) {
    table_model->setTheme(theme);
    setStyleSheet(theme.tableViewStyleSheet(0));
    setGridColor(theme.color(Theme::Background3Color));
    setHighlightedLineColor(theme.color(Theme::HighlightedLineColor));
    setCellBorderColor(theme.color(Theme::CellBorderColor));
    if (delegate) {
        delegate->editor_background = theme.color(Theme::MainCellColor);
        delegate->editor_text_color = theme.color(Theme::TextColor);
    }
    viewport()->update();
}

void TableView::setTextPixelSize(int pixels) {
    table_model->setTextPixelSize(pixels);
    measureFonts();
    enforceAutoFitColWidth(false);
    enforceAutoFitRowHeight(false);
    viewport()->update();
}

// ---- Navigation ----

void TableView::moveSelectionRelative(int vertical, int horizontal) {
    const RangeVector& sel = table_model->selectionRanges();
    if (TableModel::selectionMinRow(sel) + vertical < 0 ||
        TableModel::selectionMinCol(sel) + horizontal < 0)
        return;
    table_model->moveSelection(vertical, horizontal);
    const Range& main = table_model->mainCell();
    updateGeometries();
    if (vertical != 0) {
        QScrollBar* bar = verticalScrollBar();
        const int pos = vertical_header->sectionPosition(main.row);
        const int bottom = pos + rowHeight(main.row) - viewport()->height();
        const int top_limit = std::max(pos, 0);
        if (bar->value() < bottom) bar->setValue(bottom);
        if (bar->value() > top_limit) bar->setValue(top_limit);
    }
    if (horizontal != 0) {
        QScrollBar* bar = horizontalScrollBar();
        const int pos = horizontal_header->sectionPosition(main.col);
        const int right = pos + columnWidth(main.col) - viewport()->width();
        const int left_limit = std::max(pos, 0);
        if (bar->value() < right) bar->setValue(right);
        if (bar->value() > left_limit) bar->setValue(left_limit);
    }
    refreshView();
}

void TableView::moveSelectionByBlock(Direction direction) {
    table_model->moveSelectionByBlock(int(direction));
    scrollToMainCell(true, false);
}

void TableView::extendSelection(Direction direction, bool by_block) {
    const bool vertical = direction == Up || direction == Down;
    const Range& main = table_model->mainCell();
    bool popped = false;
    const bool at_edge = vertical ? main.row == 0 : main.col == 0;
    const bool moved =
        vertical ? table_model->expandVertical(int(direction), at_edge, by_block, &popped)
                 : table_model->expandHorizontal(int(direction), at_edge, by_block, &popped);
    if (!moved) return;
    table_model->enforceTableSize();
    const RangeVector& sel = table_model->selectionRanges();
    if (vertical) {
        const int row = popped || direction == Down ? table_model->selectionMaxRow(sel, true)
                                                    : TableModel::selectionMinRow(sel);
        scrollToRow(row, true, true);
    } else {
        const int col = popped || direction == Right ? table_model->selectionMaxCol(sel, true)
                                                     : TableModel::selectionMinCol(sel);
        scrollToCol(col, true, true);
    }
    refreshView();
}

void TableView::goOneScreen(Direction direction) {
    const Range main = table_model->mainCell();
    const bool vertical = direction == Up || direction == Down;
    const bool forward = direction == Down || direction == Right;
    QHeaderView* header = vertical ? static_cast<QHeaderView*>(vertical_header) : horizontal_header;
    const int extent = vertical ? viewport()->height() : viewport()->width();
    const int target = forward ? extent * 3 / 2 : -extent / 2;
    int line = header->logicalIndexAt(target);
    const int count = vertical ? model()->rowCount() : model()->columnCount();
    if (line < 0) line = forward ? count - 1 : 0;
    if (vertical)
        moveSelectionRelative(line - main.row, 0);
    else
        moveSelectionRelative(0, line - main.col);
}

void TableView::goToEdge(Direction direction) {
    Range main = table_model->mainCell();
    const TableData& data = table_model->tableData();
    switch (direction) {
    case Up:
        main.row = 0;
        break;
    case Down:
        main.row = std::max(data.numModelRows() - 1, 0);
        break;
    case Left:
        main.col = 0;
        break;
    case Right:
        main.col = std::max(data.numModelColumns() - 1, 0);
        break;
    }
    table_model->selectSingleCell(Range(main.row, main.col, Range::Model));
    scrollToMainCell(true, false);
}

void TableView::selectEntireRows(bool header_excluded) {
    const int from = header_excluded ? table_model->numHeaderCols() : 0;
    RangeVector lines;
    std::set<int> rows;
    for (const Range& r : table_model->selectionRanges()) {
        if (r.kind == Range::Cell || r.kind == Range::Row) {
            rows.insert(r.row);
        } else {
            // A column or block spans many rows: one block of whole rows.
            Range block = Range::wholeTable(Range::Model);
            block.row = r.row;
            block.row_end = r.row_end;
            block.col = from;
            lines.push_back(block);
        }
    }
    for (int row : rows) {
        Range line = Range::line(row, Range::Row, Range::Model);
        line.col = from;
        lines.push_back(line);
    }
    table_model->setMainAndSelection(table_model->mainCell(), lines);
    refreshView();
}

void TableView::selectEntireColumns(bool header_excluded) {
    const int from = header_excluded ? table_model->numHeaderRows() : 0;
    RangeVector lines;
    std::set<int> cols;
    for (const Range& r : table_model->selectionRanges()) {
        if (r.kind == Range::Cell || r.kind == Range::Column) {
            cols.insert(r.col);
        } else {
            Range block = Range::wholeTable(Range::Model);
            block.col = r.col;
            block.col_end = r.col_end;
            block.row = from;
            lines.push_back(block);
        }
    }
    for (int col : cols) {
        Range line = Range::line(col, Range::Column, Range::Model);
        line.row = from;
        lines.push_back(line);
    }
    table_model->setMainAndSelection(table_model->mainCell(), lines);
    refreshView();
}

void TableView::selectEntireTable() {
    table_model->setMainAndSelection(table_model->mainCell(), {Range::wholeTable(Range::Model)});
    refreshView();
}

void TableView::selectToEdge(Direction direction) {
    const TableData& data = table_model->tableData();
    const bool vertical = direction == Up || direction == Down;
    const int first = vertical ? table_model->numHeaderRows() : table_model->numHeaderCols();
    const int last = vertical ? data.numModelRows() - 1 : data.numModelColumns() - 1;
    RangeVector result = table_model->selectionRanges();
    for (const Range& r : table_model->selectionRanges()) {
        const int pos = vertical ? r.row : r.col;
        const int lo = direction == Up || direction == Left ? first : pos + 1;
        const int hi = direction == Up || direction == Left ? pos - 1 : last;
        if (lo > hi) continue;
        if (r.kind == Range::Cell) {
            Range seg = Range::line(vertical ? r.col : r.row, vertical ? Range::Column : Range::Row,
                                    Range::Model);
            (vertical ? seg.row : seg.col) = lo;
            (vertical ? seg.row_end : seg.col_end) = hi;
            result.push_back(seg);
        } else if ((vertical && r.kind == Range::Row) || (!vertical && r.kind == Range::Column)) {
            Range block = Range::wholeTable(Range::Model);
            if (vertical) {
                block.row = lo;
                block.row_end = hi;
                block.col = r.col;
            } else {
                block.col = lo;
                block.col_end = hi;
                block.row = r.row;
            }
            result.push_back(block);
        }
    }
    table_model->setMainAndSelection(table_model->mainCell(), result);
    refreshView();
}

bool TableView::handleNavigationKey(QKeyEvent* e) {
    if (handleEditingKey(e)) return true;
    const int key = e->key();
    const Qt::KeyboardModifiers mods = e->modifiers() & ~Qt::KeypadModifier;
    const bool ctrl = mods == Qt::ControlModifier, shift = mods == Qt::ShiftModifier;
    const bool ctrl_shift = mods == (Qt::ControlModifier | Qt::ShiftModifier);
    const bool alt = mods == Qt::AltModifier,
               alt_shift = mods == (Qt::AltModifier | Qt::ShiftModifier);
    const bool ctrl_alt = mods == (Qt::ControlModifier | Qt::AltModifier);
    Direction d = Up;
    const bool arrow =
        key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_Left || key == Qt::Key_Right;
    if (arrow)
        d = key == Qt::Key_Up     ? Up
            : key == Qt::Key_Down ? Down
            : key == Qt::Key_Left ? Left
                                  : Right;
    if (arrow && shift) {
        extendSelection(d, false);
    } else if (arrow && ctrl_shift) {
        extendSelection(d, true);
    } else if (arrow && ctrl) {
        moveSelectionByBlock(d);
    } else if (key == Qt::Key_PageUp && mods == Qt::NoModifier) {
        goOneScreen(Up);
    } else if (key == Qt::Key_PageDown && mods == Qt::NoModifier) {
        goOneScreen(Down);
    } else if ((key == Qt::Key_PageUp && alt) || (key == Qt::Key_Home && mods == Qt::NoModifier)) {
        goOneScreen(Left);
    } else if ((key == Qt::Key_PageDown && alt) || (key == Qt::Key_End && mods == Qt::NoModifier)) {
        goOneScreen(Right);
    } else if ((key == Qt::Key_Home || key == Qt::Key_End) && ctrl) {
        goToEdge(key == Qt::Key_Home ? Up : Down);
    } else if ((key == Qt::Key_Home || key == Qt::Key_End) && ctrl_alt) {
        goToEdge(key == Qt::Key_Home ? Left : Right);
    } else if ((key == Qt::Key_Home || key == Qt::Key_End) && ctrl_shift) {
        selectToEdge(key == Qt::Key_Home ? Up : Down);
    } else if ((key == Qt::Key_Home || key == Qt::Key_End) && shift) {
        selectToEdge(key == Qt::Key_Home ? Left : Right);
    } else if ((key == Qt::Key_A && ctrl) || (key == Qt::Key_T && ctrl_shift)) {
        selectEntireTable();
    } else if (key == Qt::Key_C && (ctrl_shift || alt_shift)) {
        selectEntireColumns(alt_shift);
    } else if (key == Qt::Key_R && (ctrl_shift || alt_shift)) {
        selectEntireRows(alt_shift);
    } else if (alt &&
               (key == Qt::Key_I || key == Qt::Key_K || key == Qt::Key_J || key == Qt::Key_L)) {
        moveSelectionRelative(key == Qt::Key_I   ? -1
                              : key == Qt::Key_K ? 1
                                                 : 0,
                              key == Qt::Key_J   ? -1
                              : key == Qt::Key_L ? 1
                                                 : 0);
    } else {
        return false;
    }
    return true;
}

// ---- Scrolling ----

void TableView::scrollToMainCell(bool only_if_outside_view, bool keep_cell_on_edge) {
    const Range& main = table_model->mainCell();
    scrollToPosition(main.row, main.col, only_if_outside_view, keep_cell_on_edge, 2);
}

void TableView::scrollToRow(int row, bool only_if_outside_view, bool keep_cell_on_edge) {
    scrollToPosition(row, 0, only_if_outside_view, keep_cell_on_edge, 0);
}

void TableView::scrollToCol(int col, bool only_if_outside_view, bool keep_cell_on_edge) {
    scrollToPosition(0, col, only_if_outside_view, keep_cell_on_edge, 1);
}

void TableView::scrollAxisTo(bool rows, int index, bool only_if_outside_view,
                             bool keep_cell_on_edge) {
    QHeaderView* header = rows ? static_cast<QHeaderView*>(vertical_header) : horizontal_header;
    QScrollBar* bar = rows ? verticalScrollBar() : horizontalScrollBar();
    const int count = header->count();
    if (count == 0 || index < 0) return;
    index = std::min(index, count - 1);
    const int extent = rows ? viewport()->height() : viewport()->width();
    const int pos = header->sectionPosition(index);
    const int size = header->sectionSize(index);
    const int last = count - 1;
    const int max_pos =
        std::max(header->sectionPosition(last) + header->sectionSize(last) - extent, 0);
    const int strip = 0; // no frozen strip over this grid yet
    auto set = [&](int v) {
        if (bar->maximum() < v) bar->setMaximum(v);
        bar->setValue(v);
    };
    if (only_if_outside_view) {
        const int low = std::max(pos + size - extent, 0);
        const int high = std::min(std::max(low, pos - strip), max_pos);
        if (keep_cell_on_edge) {
            if (bar->value() < low)
                set(std::min(high, low));
            else if (bar->value() > high)
                set(high);
        } else if (bar->value() < low || bar->value() > high) {
            set(std::min(high, std::max(pos + size / 2 - extent / 2 + strip / 2, low)));
        }
    } else {
        set(std::min(std::max(pos - extent / 2 + strip / 2, 0), max_pos));
    }
}

void TableView::scrollToPosition(int row, int col, bool only_if_outside_view,
                                 bool keep_cell_on_edge, int what) {
    updateGeometries();
    if (what == 0 || what == 2) scrollAxisTo(true, row, only_if_outside_view, keep_cell_on_edge);
    if (what == 1 || what == 2) scrollAxisTo(false, col, only_if_outside_view, keep_cell_on_edge);
    refreshView();
}

void TableView::scroll(Direction direction, bool full_screen, int num_ver_pixels,
                       int num_hor_pixels) {
    const bool vertical = direction == Up || direction == Down;
    QScrollBar* bar = vertical ? verticalScrollBar() : horizontalScrollBar();
    QHeaderView* header = vertical ? static_cast<QHeaderView*>(vertical_header) : horizontal_header;
    const int extent = vertical ? viewport()->height() : viewport()->width();
    const int pixels =
        full_screen ? int(extent * 0.9) : (vertical ? num_ver_pixels : num_hor_pixels);
    const bool back = direction == Up || direction == Left;
    const bool snap = vertical ? snap_rows : snap_cols;
    if (!full_screen && !snap) {
        bar->setValue(bar->value() + (back ? -pixels : pixels));
        return;
    }
    // Snap: walk whole lines while they fit in the step, land on a line's start.
    const int first = header->logicalIndexAt(0);
    if (first < 0) return;
    const int count = header->count();
    if (back) {
        if (bar->value() == 0) return;
        int line = first, sum = 0;
        // A partly shown first line counts as the first step.
        if (header->sectionPosition(first) < bar->value()) {
            bar->setValue(header->sectionPosition(first));
            return;
        }
        while (line > 0 && sum + header->sectionSize(line - 1) < pixels) {
            sum += header->sectionSize(line - 1);
            --line;
        }
        if (line == first && line > 0) --line;
        bar->setValue(std::max(header->sectionPosition(line), 0));
    } else {
        int line = first, sum = 0;
        while (line + 1 < count && sum + header->sectionSize(line) < pixels) {
            sum += header->sectionSize(line);
            ++line;
        }
        if (line == first && line + 1 < count) ++line;
        bar->setValue(header->sectionPosition(line));
    }
}

void TableView::wheelScroll(Axis axis, int num_pixels) {
    QScrollBar* bar = axis == RowAxis ? verticalScrollBar() : horizontalScrollBar();
    bar->setValue(std::max(bar->value() + num_pixels, 0));
}

void TableView::wheelEvent(QWheelEvent* e) {
    const QPoint delta = e->angleDelta();
    const bool notched =
        (delta.y() != 0 && delta.y() % 120 == 0) || (delta.x() != 0 && delta.x() % 120 == 0);
    const Qt::KeyboardModifiers mods = e->modifiers();
    if (mods & Qt::ControlModifier) {
        if (delta.y() != 0) scroll(delta.y() > 0 ? Up : Down, true, 75, 250);
    } else if (mods & ~Qt::ShiftModifier) {
        if (delta.x() != 0) scroll(delta.x() > 0 ? Left : Right, true, 75, 250);
    } else if (mods & Qt::ShiftModifier) {
        // Shift turns the vertical wheel sideways; some systems already did.
        const int d = delta.x() != 0 ? delta.x() : delta.y();
        if (notched) {
            if (d != 0) scroll(d > 0 ? Left : Right, false, 75, 250);
        } else {
            const QPoint px = e->pixelDelta();
            const int p = px.x() != 0 ? px.x() : px.y();
            horizontalScrollBar()->setValue(std::max(horizontalScrollBar()->value() - p, 0));
            wheel_snap_timer->start();
        }
    } else if (notched) {
        if (delta.y() != 0)
            scroll(delta.y() > 0 ? Up : Down, false, 75, 250);
        else if (delta.x() != 0)
            scroll(delta.x() > 0 ? Left : Right, false, 75, 250);
    } else {
        const QPoint px = e->pixelDelta().isNull() ? delta : e->pixelDelta();
        if (std::abs(px.y()) >= std::abs(px.x()))
            verticalScrollBar()->setValue(std::max(verticalScrollBar()->value() - px.y(), 0));
        else
            horizontalScrollBar()->setValue(std::max(horizontalScrollBar()->value() - px.x(), 0));
        wheel_snap_timer->start();
    }
    e->accept();
}

void TableView::snapAxis(bool rows) {
    if (rows ? !snap_rows : !snap_cols) return;
    QHeaderView* header = rows ? static_cast<QHeaderView*>(vertical_header) : horizontal_header;
    QScrollBar* bar = rows ? verticalScrollBar() : horizontalScrollBar();
    const int first = header->logicalIndexAt(0);
    if (first < 0) return;
    const int pos = header->sectionPosition(first);
    // Land on the nearer edge of the line cut by the top of the view.
    if (bar->value() - pos > header->sectionSize(first) / 2 && first + 1 < header->count())
        bar->setValue(header->sectionPosition(first + 1));
    else
        bar->setValue(pos);
}

void TableView::onScrollBarReleased() {
    snapAxis(sender() == verticalScrollBar());
}

void TableView::onWheelSnapTimerStopped() {
    wheel_snap_timer->stop();
    snapAxis(true);
    snapAxis(false);
}

// ---- Sizes ----

void TableView::setDefaultRowHeight(int pixels) {
    default_row_height = pixels;
    vertical_header->blockSignals(true);
    vertical_header->setDefaultSectionSize(pixels);
    vertical_header->blockSignals(false);
    enforceAutoFitRowHeight(false);
}

void TableView::setDefaultColWidth(int pixels) {
    default_col_width = pixels;
    horizontal_header->blockSignals(true);
    horizontal_header->setDefaultSectionSize(pixels);
    horizontal_header->blockSignals(false);
    enforceAutoFitColWidth(false);
}

void TableView::setAutoFitRows(bool on) {
    auto_fit_rows = on;
    table_model->auto_fit_rows = on;
    enforceAutoFitRowHeight(false);
}

void TableView::setAutoFitCols(bool on) {
    auto_fit_cols = on;
    table_model->auto_fit_cols = on;
    enforceAutoFitColWidth(false);
}

int TableView::autoFitWidth(int col, int eval_precision) const {
    const int rows = table_model->tableData().numModelRows();
    const int step = std::max(rows / std::max(eval_precision, 1), 1);
    // The five longest distinct texts, longest first.
    std::vector<QString> longest;
    auto consider = [&](QString text) {
        if (text.isEmpty()) return true;
        if (qsizetype(text.size()) * char_width > max_col_width) return false;
        if (std::find(longest.begin(), longest.end(), text) != longest.end()) return true;
        auto at = std::find_if(longest.begin(), longest.end(),
                               [&](const QString& t) { return t.size() < text.size(); });
        longest.insert(at, std::move(text));
        if (longest.size() > 5) longest.pop_back();
        return true;
    };
    for (int r = table_model->numHeaderRows(); r < rows; r += (r < 100 ? 1 : step))
        if (!consider(table_model->data(table_model->index(r, col)).toString()))
            return max_col_width;
    int width = default_col_width;
    if (!longest.empty()) {
        for (int i = 0; i < 5; ++i) {
            auto* item = measure_col->item(i, 0);
            if (!item) measure_col->setItem(i, 0, item = new QTableWidgetItem);
            item->setText(i < int(longest.size()) ? longest[size_t(i)] : QString());
        }
        measure_col->resizeColumnToContents(0);
        width = std::max(width, measure_col->columnWidth(0));
    }
    // Header rows are painted bold; they are measured with that font.
    const int header_rows = std::min(table_model->numHeaderRows(), rows);
    if (header_rows > 0) {
        const QFontMetrics bold(table_model->headerCellFont());
        for (int r = 0; r < header_rows; ++r) {
            const QString text = table_model->data(table_model->index(r, col)).toString();
            width = std::max(width, bold.horizontalAdvance(text) + 2 * header_char_width);
        }
    }
    return std::min(width, max_col_width);
}

void TableView::resizeColumnToContents(int col, int num_eval_rows) {
    const int width = col < table_model->tableData().numModelColumns()
                          ? autoFitWidth(col, num_eval_rows)
                          : default_col_width;
    horizontal_header->resizeSection(col, std::min(width, max_col_width));
}

void TableView::resizeColumnsToContents() {
    const int cols = model()->columnCount();
    for (int c = 0; c < cols; ++c)
        resizeColumnToContents(c, horizontal_header->resizeContentsPrecision());
}

void TableView::enforceAutoFitColWidth(bool scroll) {
    if (auto_fit_skip_count == 0) return;
    if (auto_fit_skip_count > 0) --auto_fit_skip_count;
    if (!auto_fit_cols) return;
    resizeColumnsToContents();
    if (scroll) scrollToMainCell(true, false);
}

void TableView::enforceAutoFitColWidths(std::vector<int> cols) {
    if (!auto_fit_cols) return;
    for (int c : cols)
        resizeColumnToContents(c, 50);
}

void TableView::enforceAutoFitRowHeight(bool scroll) {
    if (!auto_fit_rows) return;
    const int data_rows = table_model->tableData().numModelRows();
    // Fitting every row of a huge file would stall the window; past this many
    // rows only the rows in view are fitted, and others as they come.
    constexpr int kFitAllLimit = 100000;
    if (data_rows <= kFitAllLimit) {
        for (int r = 0; r < model()->rowCount(); ++r)
            enforceAutoFitRowHeight(r);
    } else {
        const int top = std::max(rowAt(0), 0);
        int bottom = rowAt(viewport()->height() - 1);
        if (bottom < 0) bottom = model()->rowCount() - 1;
        for (int r = top; r <= bottom; ++r)
            enforceAutoFitRowHeight(r);
    }
    if (scroll) scrollToMainCell(true, false);
}

void TableView::enforceAutoFitRowHeight(int row) {
    if (!auto_fit_rows || row < 0 || row >= model()->rowCount()) return;
    if (row >= table_model->tableData().numModelRows()) {
        vertical_header->resizeSection(row, default_row_height);
        return;
    }
    const int hint = sizeHintForRow(row);
    const bool empty = hint <= vertical_header->minimumSectionSize();
    vertical_header->resizeSection(
        row, empty ? default_row_height : std::clamp(hint, default_row_height, max_row_height));
}

void TableView::enforceAutoFitRowHeights(std::vector<int> rows) {
    for (int r : rows)
        enforceAutoFitRowHeight(r);
}

void TableView::resizeRow(int row, int size) {
    vertical_header->resizeSection(row, size);
}

void TableView::resizeRows(std::vector<int> rows, std::vector<int> sizes) {
    for (size_t i = 0; i < rows.size() && i < sizes.size(); ++i)
        vertical_header->resizeSection(rows[i], sizes[i]);
}

void TableView::resizeCol(int col, int size) {
    horizontal_header->resizeSection(col, size);
}

void TableView::resizeCols(std::vector<int> cols, std::vector<int> sizes) {
    for (size_t i = 0; i < cols.size() && i < sizes.size(); ++i)
        horizontal_header->resizeSection(cols[i], sizes[i]);
}

// ---- Line surgery ----

void TableView::insertRowsSlot(int row, int count) {
    if (!table_model->insertRows(row, count)) return;
    animated_rows.clear();
    animated_row_heights.clear();
    for (int r = row; r < row + count; ++r) {
        animated_rows.push_back(r);
        animated_row_heights.push_back(default_row_height);
    }
    row_animation->stop();
    row_animation->setStartValue(0);
    row_animation->setEndValue(100);
    row_animation->start();
}

void TableView::removeRowsSlot(int row, int count) {
    animated_rows.clear();
    animated_row_heights.clear();
    for (int r = row; r < row + count; ++r) {
        animated_rows.push_back(r);
        animated_row_heights.push_back(rowHeight(r));
    }
    row_animation->stop();
    row_animation->setStartValue(100);
    row_animation->setEndValue(0);
    connect(row_animation, &QVariantAnimation::finished, this, &TableView::performRemoveRows,
            Qt::UniqueConnection);
    row_animation->start();
}

void TableView::insertColsSlot(int col, int count) {
    if (!table_model->insertColumns(col, count)) return;
    animated_cols.clear();
    animated_col_widths.clear();
    for (int c = col; c < col + count; ++c) {
        animated_cols.push_back(c);
        animated_col_widths.push_back(default_col_width);
    }
    col_animation->stop();
    col_animation->setStartValue(0);
    col_animation->setEndValue(100);
    col_animation->start();
}

void TableView::removeColsSlot(int col, int count) {
    animated_cols.clear();
    animated_col_widths.clear();
    for (int c = col; c < col + count; ++c) {
        animated_cols.push_back(c);
        animated_col_widths.push_back(columnWidth(c));
    }
    col_animation->stop();
    col_animation->setStartValue(100);
    col_animation->setEndValue(0);
    connect(col_animation, &QVariantAnimation::finished, this, &TableView::performRemoveCols,
            Qt::UniqueConnection);
    col_animation->start();
}

void TableView::setRowHeightsSlot(QVariant normalized_row_height) {
    const double f = normalized_row_height.toDouble() / 100.0;
    for (size_t i = 0; i < animated_rows.size(); ++i)
        vertical_header->resizeSection(animated_rows[i], int(animated_row_heights[i] * f));
}

void TableView::setColWidthsSlot(QVariant normalized_col_width) {
    const double f = normalized_col_width.toDouble() / 100.0;
    for (size_t i = 0; i < animated_cols.size(); ++i)
        horizontal_header->resizeSection(animated_cols[i], int(animated_col_widths[i] * f));
}

void TableView::performRemoveRows() {
    disconnect(row_animation, &QVariantAnimation::finished, this, &TableView::performRemoveRows);
    for (auto it = animated_rows.rbegin(); it != animated_rows.rend(); ++it)
        table_model->removeRows(*it, 1);
    animated_rows.clear();
    table_model->clampSelectionToRows();
    updateGeometries();
}

void TableView::performRemoveCols() {
    disconnect(col_animation, &QVariantAnimation::finished, this, &TableView::performRemoveCols);
    for (auto it = animated_cols.rbegin(); it != animated_cols.rend(); ++it)
        table_model->removeColumns(*it, 1);
    animated_cols.clear();
    table_model->clampSelectionToColumns();
    updateGeometries();
}

void TableView::enforceTableSize() {
    table_model->enforceTableSize();
}

void TableView::onLoadFinished() {
    const int rows = table_model->rowCount();
    horizontal_header->setResizeContentsPrecision(rows < 100000 ? 500 : rows >= 1000000 ? 50 : 100);
    enforceAutoFitColWidth(false);
    enforceAutoFitRowHeight(false);
    emit loadFinishedSignal();
}

void TableView::onSelectionChanged() {
    emit selectionChangedSignal(this);
    emit updateStatusBarSignal();
}

// ---- Labels ----

void TableView::selectLines(bool rows, int line, bool add) {
    if (line < 0) return;
    const Range lineRange = Range::line(line, rows ? Range::Row : Range::Column, Range::Model);
    if (add) {
        table_model->addRange(lineRange);
    } else {
        Range main = rows ? Range(line, 0, Range::Model) : Range(0, line, Range::Model);
        main.is_main = true;
        table_model->setSelection({lineRange, main}, true);
    }
    header_drag_base = table_model->selectionRanges();
    refreshView();
}

void TableView::extendLinesTo(bool rows, int line) {
    const int anchor = rows ? row_click_anchor : col_click_anchor;
    if (anchor < 0 || line < 0) return;
    RangeVector ranges = header_drag_base;
    for (int i = std::min(anchor, line); i <= std::max(anchor, line); ++i)
        ranges.push_back(Range::line(i, rows ? Range::Row : Range::Column, Range::Model));
    table_model->setMainAndSelection(table_model->mainCell(), ranges);
    refreshView();
}

void TableView::onHorizontalSectionClicked(int col) {
    col_click_anchor = col;
    selectLines(false, col, false);
}

void TableView::onHorizontalSectionCtrlClicked(int col) {
    if (col_click_anchor == -1) col_click_anchor = col;
    selectLines(false, col, true);
}

void TableView::onHorizontalSectionShiftClicked(int col) {
    const int main_col = table_model->mainCell().col;
    if (col < 0) return;
    // Dragging whole columns to a new place comes with the column commands.
    RangeVector ranges = table_model->selectionRanges();
    for (int c = std::min(main_col, col); c <= std::max(main_col, col); ++c)
        ranges.push_back(Range::line(c, Range::Column, Range::Model));
    table_model->setMainAndSelection(table_model->mainCell(), ranges);
    refreshView();
}

void TableView::onHorizontalSectionEntered(int col) {
    extendLinesTo(false, col);
}

void TableView::onHorizontalMouseReleased() {
    col_click_anchor = -1;
    header_drag_base.clear();
}

void TableView::onVerticalSectionClicked(int row) {
    row_click_anchor = row;
    selectLines(true, row, false);
}

void TableView::onVerticalSectionCtrlClicked(int row) {
    if (row_click_anchor == -1) row_click_anchor = row;
    selectLines(true, row, true);
}

void TableView::onVerticalSectionShiftClicked(int row) {
    const int main_row = table_model->mainCell().row;
    if (row < 0) return;
    RangeVector ranges = table_model->selectionRanges();
    for (int r = std::min(main_row, row); r <= std::max(main_row, row); ++r)
        ranges.push_back(Range::line(r, Range::Row, Range::Model));
    table_model->setMainAndSelection(table_model->mainCell(), ranges);
    refreshView();
}

void TableView::onVerticalSectionEntered(int row) {
    extendLinesTo(true, row);
}

void TableView::onVerticalMouseReleased() {
    row_click_anchor = -1;
    header_drag_base.clear();
}

void TableView::onTopLeftCornerButtonClicked() {
    selectEntireTable();
}

void TableView::onTopLeftCornerButtonCtrlClicked() {
    table_model->addRange(Range::wholeTable(Range::Model));
    refreshView();
}

void TableView::selectRow(int row) {
    selectLines(true, row, false);
}

void TableView::selectCol(int col) {
    selectLines(false, col, false);
}

bool TableView::eventFilter(QObject* watched, QEvent* e) {
    if (e->type() == QEvent::MouseButtonPress && qobject_cast<QAbstractButton*>(watched)) {
        auto* me = static_cast<QMouseEvent*>(e);
        if (me->button() == Qt::LeftButton) {
            if (me->modifiers() & Qt::ControlModifier)
                onTopLeftCornerButtonCtrlClicked();
            else
                onTopLeftCornerButtonClicked();
            return true;
        }
    }
    if (e->type() == QEvent::MouseButtonPress && watched == viewport()) {
        // Shift and the left button on a selected cell drag the cells.
        auto* me = static_cast<QMouseEvent*>(e);
        const auto [row, col] = cellAt(me->position().toPoint());
        if (me->button() == Qt::LeftButton && me->modifiers() == Qt::ShiftModifier &&
            !table_model->isReadOnly() && table_model->isCellSelected(row, col) &&
            !(context & CellEditing)) {
            const Range main = table_model->mainCell();
            drag_offset_row = row - main.row;
            drag_offset_col = col - main.col;
            startCellDrag();
            return true;
        }
    }
    if (e->type() == QEvent::KeyRelease &&
        (watched == horizontal_header || watched == vertical_header || watched == viewport()))
        return true;
    return AbstractTableView::eventFilter(watched, e);
}
