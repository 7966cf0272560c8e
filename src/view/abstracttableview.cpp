#include "abstracttableview.h"

#include "edit/celltransforms.h"

#include "view/tablemodel.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>

AbstractTableView::AbstractTableView(QWidget* parent) : QTableView(parent) {
    setSelectionMode(QAbstractItemView::NoSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setAutoScroll(false);
    setTabKeyNavigation(false);
    // Qt strokes two grid lines per cell; one line per visible row and column
    // boundary, drawn after the cells, is the same picture at a fraction of
    // the cost.
    setShowGrid(false);
}

void AbstractTableView::setGridColor(const QColor& color) {
    grid_color = color;
    viewport()->update();
}

AbstractTableView::~AbstractTableView() = default;

void AbstractTableView::setModel(QAbstractItemModel* model) {
    table_model = qobject_cast<TableModel*>(model);
    QTableView::setModel(model);
}

bool AbstractTableView::editorPaneTakesNavigation() const {
    return off_cell_editing && (context & EditorPaneShown) &&
           let_editor_pane_consume_navigation_keys;
}

std::pair<int, int> AbstractTableView::cellAt(const QPoint& pos) const {
    const int last_row = std::max(model() ? model()->rowCount() - 1 : 0, 0);
    const int last_col = std::max(model() ? model()->columnCount() - 1 : 0, 0);
    const int height = viewport()->height(), width = viewport()->width();
    int row, col;
    // Past an edge, the line after the last one (partly) shown: a drag held
    // there walks out one line per event as the view follows it.
    if (pos.y() >= height) {
        row = rowAt(height - 1) + 1;
        if (row < 1) row = last_row;
    } else if (pos.y() < 0) {
        row = std::max(rowAt(0) - 1, 0);
    } else {
        row = rowAt(pos.y());
        if (row < 0) row = last_row;
    }
    if (pos.x() >= width) {
        col = columnAt(width - 1) + 1;
        if (col < 1) col = last_col;
    } else if (pos.x() < 0) {
        col = std::max(columnAt(0) - 1, 0);
    } else {
        col = columnAt(pos.x());
        if (col < 0) col = last_col;
    }
    return {std::min(row, last_row), std::min(col, last_col)};
}

void AbstractTableView::moveSelectionRelative(int vertical, int horizontal) {
    if (!table_model) return;
    const RangeVector& sel = table_model->selectionRanges();
    if (TableModel::selectionMinRow(sel) + vertical < 0 ||
        TableModel::selectionMinCol(sel) + horizontal < 0)
        return;
    table_model->moveSelection(vertical, horizontal);
    scrollTo(model()->index(table_model->mainCell().row, table_model->mainCell().col));
    refreshView();
}

void AbstractTableView::moveMainCellAbsolute(int row, int col) {
    if (!table_model) return;
    table_model->selectSingleCell(Range(row, col, Range::Model));
    refreshView();
}

void AbstractTableView::setContext(int value) {
    context = value;
}

void AbstractTableView::highlightRow(int row) {
    highlighted_rows.push_back(row);
    viewport()->update();
}

void AbstractTableView::highlightColumn(int col) {
    highlighted_cols.push_back(col);
    viewport()->update();
}

void AbstractTableView::setHighlightedRows(const std::vector<int>& rows) {
    highlighted_rows = rows;
    viewport()->update();
}

void AbstractTableView::setHighlightedColumns(const std::vector<int>& cols) {
    highlighted_cols = cols;
    viewport()->update();
}

void AbstractTableView::clearHighlightedRows() {
    highlighted_rows.clear();
    viewport()->update();
}

void AbstractTableView::clearHighlightedColumns() {
    highlighted_cols.clear();
    viewport()->update();
}

void AbstractTableView::setHighlightedRanges(const RangeVector& ranges) {
    highlighted_ranges = ranges;
    viewport()->update();
}

void AbstractTableView::highlightRange(const Range& range) {
    highlighted_ranges.push_back(range);
    viewport()->update();
}

void AbstractTableView::clearHighlightedRanges() {
    highlighted_ranges.clear();
    viewport()->update();
}

void AbstractTableView::setLetEditorPaneConsumeNavigationKeys(bool on) {
    let_editor_pane_consume_navigation_keys = on;
}

void AbstractTableView::setUuidType(int type) {
    uuid_type = type;
}

void AbstractTableView::setHighlightedLineColor(const QColor& color) {
    if (color == highlighted_line_color) return;
    highlighted_line_color = color;
    emit highlightedLineColorChanged();
}

void AbstractTableView::setCellBorderColor(const QColor& color) {
    if (color == cell_border_color) return;
    cell_border_color = color;
    emit cellBorderColorChanged();
}

void AbstractTableView::refreshView() {
    if (!model() || model()->rowCount() == 0 || model()->columnCount() == 0) return;
    const int last_row = model()->rowCount() - 1, last_col = model()->columnCount() - 1;
    int top = rowAt(0), left = columnAt(0);
    int bottom = rowAt(viewport()->height() - 1), right = columnAt(viewport()->width() - 1);
    if (top < 0) top = 0;
    if (left < 0) left = 0;
    if (bottom < 0) bottom = last_row;
    if (right < 0) right = last_col;
    emit model()->dataChanged(model()->index(top, left), model()->index(bottom, right));
}

// Tab, Tab, Enter out of an editor works like a typist's carriage return:
// the row below the cell where the run of Tabs began.
void AbstractTableView::nextColumnWithColumnReset() {
    if (!table_model) return;
    if (tab_start_col == -1) tab_start_col = table_model->mainCell().col;
    moveSelectionRelative(0, 1);
    table_model->enforceTableSize();
}

void AbstractTableView::previousColumnWithColumnReset() {
    if (!table_model) return;
    moveSelectionRelative(0, -1);
    table_model->enforceTableSize();
}

void AbstractTableView::nextRowWithColumnReset() {
    if (!table_model) return;
    if (tab_start_col >= 0) {
        const int step = tab_start_col - table_model->mainCell().col;
        tab_start_col = -1;
        moveSelectionRelative(1, step);
    } else {
        moveSelectionRelative(1, 0);
    }
    table_model->enforceTableSize();
}

bool AbstractTableView::event(QEvent* e) {
    if (e->type() == QEvent::KeyPress && table_model) {
        auto* ke = static_cast<QKeyEvent*>(e);
        const bool tab = ke->key() == Qt::Key_Tab && ke->modifiers() == Qt::NoModifier;
        const bool backtab = ke->key() == Qt::Key_Backtab;
        if ((tab || backtab) && !model_busy) {
            if (editorPaneTakesNavigation()) {
                e->ignore();
                return false;
            }
            if (tab) {
                if (tab_start_col == -1) tab_start_col = table_model->mainCell().col;
                moveSelectionRelative(0, 1);
            } else {
                moveSelectionRelative(0, -1);
            }
            return true;
        }
    }
    return QTableView::event(e);
}

void AbstractTableView::keyPressEvent(QKeyEvent* e) {
    if (!table_model) return QTableView::keyPressEvent(e);
    if (filling) {
        fillKey(e);
        return;
    }
    if (table_model->hasPendingRectangle() || model_busy) return;
    const int key = e->key();
    const Qt::KeyboardModifiers mods = e->modifiers();

    if ((key == Qt::Key_Return || key == Qt::Key_Enter) && (mods & ~Qt::KeypadModifier) == 0) {
        if (editorPaneTakesNavigation()) {
            e->ignore();
            return;
        }
        if (tab_start_col < 0) {
            moveSelectionRelative(1, 0);
        } else {
            // Enter after a run of Tabs goes under the cell where the run began.
            const int step = tab_start_col - table_model->mainCell().col;
            tab_start_col = -1;
            moveSelectionRelative(1, step);
        }
        table_model->enforceTableSize();
        return;
    }

    const bool arrow =
        key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down;
    if (arrow && mods == Qt::NoModifier) {
        if (off_cell_editing) {
            e->ignore();
            return;
        }
        tab_start_col = -1;
        moveSelectionRelative(key == Qt::Key_Up     ? -1
                              : key == Qt::Key_Down ? 1
                                                    : 0,
                              key == Qt::Key_Left    ? -1
                              : key == Qt::Key_Right ? 1
                                                     : 0);
        return;
    }
    if (arrow && mods == Qt::KeypadModifier) {
        const Direction d = key == Qt::Key_Up     ? Up
                            : key == Qt::Key_Down ? Down
                            : key == Qt::Key_Left ? Left
                                                  : Right;
        emit scrollSignal(d, false);
        return;
    }

    if (handleNavigationKey(e)) return;

    // A key that produces text starts an edit; special keys (0x01000000 and
    // above: function, navigation, lock, modifier and media keys) never do.
    const bool plain = (mods & ~(Qt::KeypadModifier | Qt::ShiftModifier)) == 0;
    if (plain && key < 0x01000000 && !e->text().isEmpty() && e->text()[0].isPrint()) {
        emit startEditingSignal(true, e);
        return;
    }
    if ((mods & Qt::AltModifier) && key >= Qt::Key_0 && key <= Qt::Key_9) {
        if (!(context & CellEditing)) emit startEditingSignal(true, e);
        return;
    }
    if (key >= 0x1000030 && key < 0x1000030 + 35) return;
    if (mods & (Qt::ControlModifier | Qt::AltModifier)) {
        e->ignore();
        return;
    }
    // Qt's own handling would move its current index, which the grid does not use.
    e->ignore();
}

bool AbstractTableView::handleNavigationKey(QKeyEvent*) {
    return false;
}

void AbstractTableView::mousePressEvent(QMouseEvent* e) {
    pressed_event.reset(e->clone());
    if (table_model && e->button() == Qt::MiddleButton && e->modifiers() == Qt::NoModifier &&
        !table_model->isReadOnly() && !(context & CellEditing)) {
        const auto [row, col] = cellAt(e->position().toPoint());
        fill_start = fill_end = Range(row, col, Range::Model);
        fill_value = table_model->data(table_model->index(row, col)).toString();
        table_model->setMainCell(fill_start);
        fill_direction = 3;
        fill_step = 0;
        fill_text.clear();
        held_keys.clear();
        last_fill_key = QChar();
        fill_records.clear();
        filling = true;
        refreshView();
        return;
    }
    if (!table_model || e->button() != Qt::LeftButton) return;
    setFocus(Qt::MouseFocusReason);
    const auto [row, col] = cellAt(e->position().toPoint());
    Range cell(row, col, Range::Model);
    const Qt::KeyboardModifiers mods = e->modifiers();
    if (mods & Qt::AltModifier) {
        table_model->deselectCell(row, col);
        refreshView();
        return;
    }
    tab_start_col = -1;
    if (mods & Qt::ControlModifier) {
        table_model->setMainAndSelection(cell, table_model->selectionRanges());
        cell.is_main = true;
        table_model->setPendingCorner(cell, true);
        ctrl_selecting = true;
    } else if (mods & Qt::ShiftModifier) {
        Range main = table_model->mainCell();
        table_model->setMainAndSelection(main, {main});
        main.is_main = true;
        table_model->setPendingCorner(main, true);
        table_model->setPendingCorner(cell, false);
    } else {
        table_model->selectSingleCell(cell);
        cell.is_main = true;
        table_model->setPendingCorner(cell, true);
    }
    mouse_selecting = true;
    refreshView();
}

void AbstractTableView::mouseMoveEvent(QMouseEvent* e) {
    if (filling && (e->buttons() & Qt::MiddleButton)) {
        auto [row, col] = cellAt(e->position().toPoint());
        row = std::max(row, 0);
        col = std::max(col, 0);
        if (row == fill_end.row && col == fill_end.col) return;
        // The axis locks on the first move off the start cell.
        if (fill_direction == 3) {
            if (col == fill_start.col && row != fill_start.row)
                fill_direction = 0;
            else if (row == fill_start.row && col != fill_start.col)
                fill_direction = 1;
            else
                return;
        }
        fill_end = fill_direction == 0 ? Range(row, fill_start.col, Range::Model)
                                       : Range(fill_start.row, col, Range::Model);
        recomputeFill();
        return;
    }
    if (!table_model || !mouse_selecting || !(e->buttons() & Qt::LeftButton)) return;
    auto [row, col] = cellAt(e->position().toPoint());
    if (row < 0 && col >= 0) row = 0;
    if (col < 0 && row >= 0) col = 0;
    if ((row < 0 && col < 0) || (row < 1 && col < 1 && (row < 0 || col < 0))) row = col = 0;
    if (table_model->setPendingCorner(Range(row, col, Range::Model), false)) {
        emit selectionExpandingSignal(this);
        scrollTo(model()->index(row, col));
        refreshView();
    }
}

void AbstractTableView::mouseReleaseEvent(QMouseEvent* e) {
    if (filling && e->button() == Qt::MiddleButton) {
        filling = false;
        // The cells go back as they were; the undo step writes the fill.
        RangeVector records = std::move(fill_records);
        table_model->writeRanges(records, true);
        fill_records.clear();
        for (Range& r : records)
            r.old_value = QVariant();
        if (!records.empty()) emit dataChangedSignal(records);
        fill_direction = 3;
        fill_step = 0;
        refreshView();
        return;
    }
    if (!table_model || e->button() != Qt::LeftButton || !mouse_selecting) return;
    mouse_selecting = false;
    table_model->commitPendingRectangle(ctrl_selecting);
    ctrl_selecting = false;
    refreshView();
}

void AbstractTableView::mouseDoubleClickEvent(QMouseEvent* e) {
    if (!table_model || e->button() != Qt::LeftButton) return;
    const auto [row, col] = cellAt(e->position().toPoint());
    table_model->setMainCell(Range(row, col, Range::Model));
    const bool blank = table_model->data(model()->index(row, col)).toString().isEmpty();
    emit startEditingSignal(blank);
}

void AbstractTableView::paintEvent(QPaintEvent* e) {
    QTableView::paintEvent(e);
    QPainter painter(viewport());
    if (model() && model()->rowCount() > 0 && model()->columnCount() > 0) {
        // One-pixel rectangles take the raster engine's solid fill, several
        // times cheaper per pixel than stroking lines.
        const QRect area = e->rect();
        const int first_row = std::max(rowAt(area.top()), 0);
        int last_row = rowAt(area.bottom());
        if (last_row < 0) last_row = model()->rowCount() - 1;
        const int first_col = std::max(columnAt(area.left()), 0);
        int last_col = columnAt(area.right());
        if (last_col < 0) last_col = model()->columnCount() - 1;
        const int right =
            std::min(area.right(), columnViewportPosition(last_col) + columnWidth(last_col) - 1);
        const int bottom =
            std::min(area.bottom(), rowViewportPosition(last_row) + rowHeight(last_row) - 1);
        for (int r = first_row; r <= last_row; ++r) {
            const int y = rowViewportPosition(r) + rowHeight(r) - 1;
            painter.fillRect(QRect(area.left(), y, right - area.left() + 1, 1), grid_color);
        }
        for (int c = first_col; c <= last_col; ++c) {
            const int x = columnViewportPosition(c) + columnWidth(c) - 1;
            painter.fillRect(QRect(x, area.top(), 1, bottom - area.top() + 1), grid_color);
        }
    }
    if (highlighted_rows.empty() && highlighted_cols.empty() && highlighted_ranges.empty()) return;
    painter.setPen(QPen(highlighted_line_color, 4));
    const int w = viewport()->width(), h = viewport()->height();
    for (int row : highlighted_rows) {
        const int y = rowViewportPosition(row) + rowHeight(row);
        painter.drawLine(0, y, w, y);
    }
    for (int col : highlighted_cols) {
        const int x = columnViewportPosition(col) + columnWidth(col);
        painter.drawLine(x, 0, x, h);
    }
    for (const Range& r : highlighted_ranges) {
        const int last_row = model()->rowCount() - 1, last_col = model()->columnCount() - 1;
        const int r1 =
            std::min(r.kind == Range::Cell || r.kind == Range::Row ? r.row : r.row_end, last_row);
        const int c1 = std::min(
            r.kind == Range::Cell || r.kind == Range::Column ? r.col : r.col_end, last_col);
        const int x0 = columnViewportPosition(r.col), y0 = rowViewportPosition(r.row);
        const int x1 = columnViewportPosition(c1) + columnWidth(c1);
        const int y1 = rowViewportPosition(r1) + rowHeight(r1);
        painter.drawRect(QRect(QPoint(x0, y0), QPoint(x1, y1)));
    }
}

// ---- Middle-button fill ----

void AbstractTableView::restoreFill() {
    if (!fill_records.empty()) table_model->writeRanges(fill_records, true);
    fill_records.clear();
}

void AbstractTableView::recomputeFill() {
    restoreFill();
    const int n =
        fill_direction == 0 ? fill_end.row - fill_start.row : fill_end.col - fill_start.col;
    const int dir = n < 0 ? -1 : 1;
    QStringList stepped;
    if (fill_step != 0 && fill_text.isEmpty()) {
        // The stepper reads numbers; any other text fills as it is.
        stepped =
            parseSeries(QStringLiteral("%1 %2").arg(fill_value).arg(fill_step), std::abs(n) + 1);
        bool number = false;
        fill_value.toDouble(&number);
        if (!number) stepped.clear();
    }
    for (int k = 1; k <= std::abs(n); ++k) {
        Range cell = fill_direction == 0
                         ? Range(fill_start.row + dir * k, fill_start.col, Range::Model)
                         : Range(fill_start.row, fill_start.col + dir * k, Range::Model);
        cell.value = !fill_text.isEmpty() ? fill_text
                     : k < stepped.size() ? stepped[k]
                                          : fill_value;
        fill_records.push_back(std::move(cell));
    }
    table_model->captureRanges(fill_records, false, true);
    table_model->writeRanges(fill_records, false);
    table_model->enforceTableSize();
    refreshView();
}

bool AbstractTableView::fillKey(QKeyEvent* e) {
    const QString t = e->text();
    if (t.isEmpty()) return false;
    const QChar ch = t.front();
    const bool fresh = !e->isAutoRepeat();
    if (fresh && ch == last_fill_key && (ch.isDigit() || ch == u'-' || ch == u'+')) {
        // The same key a second time types its text over every cell.
        fill_text = QString(ch);
        fill_step = 0;
    } else if (ch == u'+' || ch == u'=') {
        fill_step = 1;
        fill_text.clear();
    } else if (ch == u'-') {
        fill_step = -1;
        fill_text.clear();
    } else if (ch.isDigit()) {
        const int d = ch.digitValue() == 0 ? 10 : ch.digitValue();
        fill_step = held_keys.contains(u'-') ? -d : d;
        fill_text.clear();
    } else {
        fill_step = 0;
        fill_text.clear();
    }
    if (fresh) {
        last_fill_key = ch;
        if (!held_keys.contains(ch)) held_keys += ch;
    }
    if (fill_direction != 3) recomputeFill();
    return true;
}

void AbstractTableView::keyReleaseEvent(QKeyEvent* e) {
    if (filling && !e->isAutoRepeat() && !e->text().isEmpty()) held_keys.remove(e->text().front());
    QTableView::keyReleaseEvent(e);
}
