// Editing on the grid: the live write of typed text into every selected
// cell, the undo step at its end, the clipboard and drags of cells.

#include "edit/commands/duplicatecellcontentscommand.h"
#include "edit/commands/movecellcontentscommand.h"
#include "edit/commands/pastecommand.h"
#include "edit/commands/setmodeldatacommand.h"
#include "view/headerview.h"
#include "view/tabledelegate.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QTableWidget>
#include <QUndoStack>

#include <algorithm>
#include <set>

void TableView::pushCommand(TableUndoCommand* command) {
    if (!command) return;
    // While a sort reads the table on the worker nothing may change it.
    if (!command->is_valid || model_busy || table_model->isSorting()) {
        delete command;
        return;
    }
    undo_stack->push(command);
    refreshView();
}

void TableView::commandUndo() {
    if (context & CellEditing) stopEditing(true);
    undo_stack->undo();
    refreshView();
}

void TableView::commandRedo() {
    if (context & CellEditing) stopEditing(true);
    undo_stack->redo();
    refreshView();
}

void TableView::onUndoStackCleanChanged(bool is_clean) {
    emit undoStackCleanChangedSignal(is_clean);
}

// ---- In-cell editing ----

bool TableView::beginEdit(bool blank) {
    if (table_model->isReadOnly() || (context & ReadOnly) || model_busy) return false;
    if (context & CellEditing) return false;
    scrollToMainCell(true, true);
    table_model->setPendingCorners(Range(-1, -1, Range::Model), Range(-1, -1, Range::Model));
    edit_ranges = table_model->selectionRanges();
    edit_main_cell = table_model->mainCell();
    table_model->captureRanges(edit_ranges, false, true);
    edit_is_blank = blank;
    edit_value = QVariant();
    edit_rows_before = table_model->tableData().numRawRows();
    edit_cols_before = table_model->tableData().numRawColumns();
    off_cell_editing = true;
    context |= CellEditing;
    emit addContextSignal(CellEditing);
    return true;
}

void TableView::openCellEditor(bool blank) {
    const QModelIndex index = table_model->index(edit_main_cell.row, edit_main_cell.col);
    setFocus(Qt::OtherFocusReason);
    delegate->start_select_all = blank;
    edit(index);
    delegate->start_select_all = true;
}

void TableView::startEditing(bool blank, bool move_cursor_to_end) {
    if (!beginEdit(blank)) return;
    if (context & EditorPaneShown) {
        emit startOffCellEditSignal(blank, move_cursor_to_end);
        return;
    }
    openCellEditor(blank);
}

void TableView::startEditing(bool blank, QKeyEvent* ke) {
    if (!beginEdit(blank)) return;
    if (context & EditorPaneShown) {
        emit startOffCellEditSignal(blank, ke);
        if (ke && !ke->text().isEmpty()) onCellTextEdited(ke->text());
        return;
    }
    openCellEditor(blank);
    // The key that began the edit is its first character.
    if (editor && ke) {
        QKeyEvent copy(ke->type(), ke->key(), ke->modifiers(), ke->text(), ke->isAutoRepeat(),
                       ushort(ke->count()));
        QApplication::sendEvent(editor, &copy);
    }
}

void TableView::editSelectedCell() {
    const Range main = table_model->mainCell();
    startEditing(table_model->data(table_model->index(main.row, main.col)).toString().isEmpty());
}

void TableView::onCellEditorCreated(QWidget* created) {
    editor = created;
}

void TableView::onCellTextEdited(QString text) {
    if (!(context & CellEditing)) return;
    emit mainCellLengthChangedSignal(int(text.size()));
    for (Range& r : edit_ranges) {
        r.value = text;
        r.values.clear();
        r.value_grid.clear();
    }
    if (!(context & EditorPaneShown)) {
        // The silent write: every selected cell, then one repaint.
        table_model->writeRanges(edit_ranges, false);
        refreshView();
    }
    if (auto_fit_cols) widenColumnsFor(text);
    edit_value = text;
    if (editor && auto_fit_cols && !(context & EditorPaneShown)) {
        // The editor follows its cell when a widened column pushes it out.
        const int right =
            columnViewportPosition(edit_main_cell.col) + columnWidth(edit_main_cell.col);
        if (right > viewport()->width()) {
            scrollToMainCell(true, true);
            updateEditorGeometries();
        }
    }
}

void TableView::widenColumnsFor(const QString& text) {
    measure_row->setItem(0, 0, new QTableWidgetItem(text));
    measure_row->resizeColumnToContents(0);
    const int w = measure_row->columnWidth(0);
    std::set<int> cols;
    const int last = table_model->columnCount() - 1;
    for (const Range& r : table_model->selectionRanges()) {
        if (r.kind == Range::Cell || r.kind == Range::Column) {
            cols.insert(r.col);
        } else {
            for (int c = r.col; c <= std::min(r.col_end, last); ++c)
                if (std::find(r.excluded_cols.begin(), r.excluded_cols.end(), c) ==
                    r.excluded_cols.end())
                    cols.insert(c);
        }
    }
    for (int c : cols)
        if (w > columnWidth(c)) setColumnWidth(c, std::min(w, max_col_width));
}

void TableView::onCellEditingFinished() {
    for (Range& r : edit_ranges) {
        r.value = edit_value.isValid() ? edit_value.toString() : QVariant(QString());
        r.values.clear();
        r.value_grid.clear();
    }
    if (edit_value.isValid()) {
        auto* command = new SetModelDataCommand(table_model, edit_ranges, false, false);
        command->set_selection = true;
        command->setSelection(table_model->selectionRanges());
        command->presetSizeBefore(edit_rows_before, edit_cols_before);
        pushCommand(command);
    }
    editor = nullptr;
    table_model->autoFitChangedLines(edit_ranges);
    edit_ranges.clear();
    edit_is_blank = false;
}

void TableView::stopEditing(bool make_undo_command) {
    off_cell_editing = false;
    if (!(context & CellEditing)) return;
    context &= ~CellEditing;
    if (editor) {
        QWidget* closing = editor;
        editor = nullptr;
        // Its focus-out would report the end a second time.
        QObject::disconnect(closing, nullptr, delegate, nullptr);
        QAbstractItemView::closeEditor(closing, QAbstractItemDelegate::NoHint);
    }
    setFocus(Qt::OtherFocusReason);
    if (make_undo_command) onCellEditingFinished();
    edit_ranges.clear();
    emit removeContextSignal(CellEditing);
}

void TableView::onDataChanged(RangeVector cells) {
    auto* command = new SetModelDataCommand(table_model, std::move(cells), false, true);
    command->set_selection = true;
    command->setSelection(table_model->selectionRanges());
    pushCommand(command);
}

// ---- Commands on the selection ----

void TableView::deleteCells() {
    if (table_model->isReadOnly()) return;
    RangeVector cells = table_model->selectionRanges();
    for (Range& r : cells) {
        r.value = QString();
        r.values.clear();
        r.value_grid.clear();
    }
    onDataChanged(std::move(cells));
}

void TableView::moveCellContents(int row_offset, int col_offset) {
    if (table_model->isReadOnly()) return;
    pushCommand(new MoveCellContentsCommand(table_model, table_model->selectionRanges(), row_offset,
                                            col_offset));
}

void TableView::duplicateCellContents(Direction direction) {
    if (table_model->isReadOnly()) return;
    pushCommand(new DuplicateCellContentsCommand(table_model, table_model->selectionRanges(),
                                                 int(direction)));
}

void TableView::duplicateCellContentsTo(int model_row, int model_col) {
    if (table_model->isReadOnly()) return;
    pushCommand(new DuplicateCellContentsCommand(table_model, table_model->selectionRanges(),
                                                 model_row, model_col));
}

void TableView::copyCells(bool with_header) {
    QApplication::clipboard()->setMimeData(table_model->makeMimeData(with_header));
}

void TableView::cutCells() {
    copyCells(false);
    deleteCells();
}

void TableView::pasteCells() {
    if (table_model->isReadOnly()) return;
    RangeVector cells;
    TableModel::readMimeData(QApplication::clipboard()->mimeData(), &cells);
    if (cells.empty()) return;
    pushCommand(new PasteCommand(table_model, table_model->selectionRanges(), cells, true));
}

void TableView::onMoveCellContentsAbsolute(RangeVector selection, Range main_cell, int row_model,
                                           int col_model) {
    const int dy = row_model - main_cell.row, dx = col_model - main_cell.col;
    if ((dy == 0 && dx == 0) || selection.empty() || table_model->isReadOnly()) return;
    // The sources are emptied and the targets take their cells, quotes and
    // all, in one step; parts pushed past the top or left fall away.
    RangeVector sources = table_model->toRawRanges(selection);
    table_model->captureRanges(sources, true, false);
    RangeVector targets;
    RangeVector moved_selection;
    for (const Range& source : sources) {
        Range t = source;
        if (t.row + dy < 0 || t.col + dx < 0) {
            if (t.kind == Range::Cell) continue;
        }
        t.shift(dy, dx, true);
        if (t.kind == Range::Invalid) continue;
        const StoredCells cells = source.value.value<StoredCells>();
        if (t.row != source.row + dy || t.col != source.col + dx) {
            // Clipped at the edge: keep the part that still lands inside.
            StoredCells kept(t.row, cells.lastRow() + dy, t.col, cells.lastColumn() + dx);
            StoredCells::Reader reader(cells);
            for (int r = cells.firstRow(); r <= cells.lastRow(); ++r)
                for (int c = cells.firstColumn(); c <= cells.lastColumn(); ++c) {
                    bool quoted = false;
                    const QByteArrayView bytes = reader.next(&quoted);
                    if (r + dy >= t.row && c + dx >= t.col) kept.append(bytes, quoted);
                }
            t.value = QVariant::fromValue(kept);
        } else if (!cells.isEmpty()) {
            t.value = QVariant::fromValue(cells.shifted(dy, dx));
        } else {
            t.value = QString();
        }
        targets.push_back(std::move(t));
    }
    for (Range r : selection) {
        r.shift(dy, dx, true);
        if (r.kind != Range::Invalid) moved_selection.push_back(std::move(r));
    }
    for (Range& s : sources)
        s.value = QString();
    auto* command = new SetModelDataCommand(table_model, targets, sources, true, false);
    command->set_selection = true;
    command->redo_selection = table_model->toRawSelection(moved_selection);
    command->undo_selection = table_model->toRawSelection(selection);
    pushCommand(command);
}

// ---- Keys that edit, until the window's command table answers them ----

bool TableView::handleEditingKey(QKeyEvent* e) {
    const int key = e->key();
    const Qt::KeyboardModifiers mods = e->modifiers() & ~Qt::KeypadModifier;
    const bool ctrl = mods == Qt::ControlModifier;
    const bool ctrl_shift = mods == (Qt::ControlModifier | Qt::ShiftModifier);
    const bool writable = !table_model->isReadOnly();
    // A read-only table's stack holds only sorts, which undo there too.
    if (ctrl && key == Qt::Key_Z) {
        commandUndo();
        return true;
    }
    if ((ctrl && key == Qt::Key_Y) || (ctrl_shift && key == Qt::Key_Z)) {
        commandRedo();
        return true;
    }
    if (ctrl && key == Qt::Key_C) {
        copyCells(false);
        return true;
    }
    if (ctrl && key == Qt::Key_X) {
        if (writable) cutCells();
        return true;
    }
    if (ctrl && key == Qt::Key_V) {
        if (writable) pasteCells();
        return true;
    }
    if (mods == Qt::NoModifier && (key == Qt::Key_Delete || key == Qt::Key_Backspace)) {
        if (writable) deleteCells();
        return true;
    }
    if ((mods == Qt::NoModifier && key == Qt::Key_F2) || (ctrl && key == Qt::Key_E)) {
        if (writable && !(context & MultiCellSelection)) editSelectedCell();
        return true;
    }
    return false;
}

// ---- Drags of cells ----

void TableView::startCellDrag() {
    dragging_cells = true;
    drag_cells = table_model->selectionRanges();
    drag_main_cell = table_model->mainCell();
    drag_current_cell = Range();
    auto* drag = new QDrag(this);
    drag->setMimeData(table_model->makeMimeData(false));
    drag->exec(Qt::MoveAction);
    // A release without a drop ends here as well.
    dragging_cells = false;
    clearHighlightedRanges();
    table_model->setFindMatches({});
    refreshView();
}

void TableView::dragEnterEvent(QDragEnterEvent* e) {
    const QMimeData* mime = e->mimeData();
    if (mime->hasUrls() || table_model->isReadOnly()) {
        e->ignore();
        return;
    }
    if (mime->hasFormat(QStringLiteral("text/csv")) || mime->hasText())
        e->acceptProposedAction();
    else
        e->ignore();
}

void TableView::dragMoveEvent(QDragMoveEvent* e) {
    const QMimeData* mime = e->mimeData();
    if (!mime->hasFormat(QStringLiteral("text/csv")) && !mime->hasText()) {
        e->ignore();
        return;
    }
    const auto [row, col] = cellAt(e->position().toPoint());
    if (dragging_cells && (row != drag_current_cell.row || col != drag_current_cell.col)) {
        drag_current_cell = Range(row, col, Range::Model);
        const int dy = row - drag_main_cell.row - drag_offset_row;
        const int dx = col - drag_main_cell.col - drag_offset_col;
        // A live outline of where the cells would land.
        RangeVector outline;
        for (Range r : drag_cells) {
            r.shift(dy, dx, true);
            if (r.kind != Range::Invalid && r.row >= 0 && r.col >= 0) outline.push_back(r);
        }
        setHighlightedRanges(outline);
        refreshView();
    }
    e->acceptProposedAction();
}

void TableView::dropEvent(QDropEvent* e) {
    clearHighlightedRanges();
    refreshView();
    const auto [row, col] = cellAt(e->position().toPoint());
    if (dragging_cells) {
        dragging_cells = false;
        onMoveCellContentsAbsolute(drag_cells, drag_main_cell, row - drag_offset_row,
                                   col - drag_offset_col);
        e->acceptProposedAction();
        return;
    }
    // Text from another program pastes at the drop cell.
    RangeVector cells;
    TableModel::readMimeData(e->mimeData(), &cells);
    if (cells.empty()) return;
    table_model->selectSingleCell(Range(row, col, Range::Model));
    pushCommand(new PasteCommand(table_model, table_model->selectionRanges(), cells, true));
    e->acceptProposedAction();
}
