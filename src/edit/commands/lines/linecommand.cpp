#include "linecommand.h"

LineCommand::LineCommand(TableModel* m, RangeVector selection, bool rows_axis, QUndoCommand* parent)
    : TableUndoCommand(m, std::move(selection), false, parent), rows(rows_axis) {
    set_selection = true;
    undo_selection = model->toRawSelection(cells);
}

int LineCommand::numRaw() const {
    const TableData& d = model->tableData();
    return rows ? d.numRawRows() : d.numRawColumns();
}

int LineCommand::numModel() const {
    const TableData& d = model->tableData();
    return rows ? d.numModelRows() : d.numModelColumns();
}

int LineCommand::rawFromModel(int m) const {
    const TableData& d = model->tableData();
    if (m < 0) return -1;
    return rows ? d.rawRowFromModel(m) : d.rawColumnFromModel(m);
}

int LineCommand::modelFromRaw(int raw) const {
    const TableData& d = model->tableData();
    if (raw >= numRaw()) return raw - (rows ? d.numHiddenRows() : d.numHiddenColumns());
    return rows ? d.modelRowFromRaw(raw) : d.modelColumnFromRaw(raw);
}

std::vector<int> LineCommand::selectedLines(const RangeVector& ranges, bool any_cell) const {
    return rows ? model->selectedRows(ranges, any_cell) : model->selectedCols(ranges, any_cell);
}

bool LineCommand::insertRaw(int raw, int count) {
    return rows ? model->insertRawRows(raw, count) : model->insertRawCols(raw, count);
}

RemovedLines LineCommand::takeRaw(const LineRuns& runs) {
    return rows ? model->takeRawRows(runs) : model->takeRawCols(runs);
}

void LineCommand::restore(const RemovedLines& lines) {
    model->restoreRawLines(lines);
}

void LineCommand::truncateRaw(int count) {
    if (rows)
        model->truncateRawRows(count);
    else
        model->truncateRawCols(count);
}

bool LineCommand::rotate(int first, int middle, int last) {
    return rows ? model->rotateModelRows(first, middle, last)
                : model->rotateModelCols(first, middle, last);
}

Range LineCommand::wholeLines(int first, int count, int cross) const {
    Range r = Range::wholeTable(Range::Model);
    cross = std::max(cross, 0);
    if (rows) {
        r.row = first;
        r.row_end = first + count - 1;
        r.main_offset_row = first;
        r.main_offset_col = cross;
    } else {
        r.col = first;
        r.col_end = first + count - 1;
        r.main_offset_row = cross;
        r.main_offset_col = first;
    }
    if (count == 1) {
        r.kind = rows ? Range::Row : Range::Column;
        r.row_end = r.col_end = Range::kToEnd;
        if (rows)
            r.row = first, r.col = 0;
        else
            r.col = first, r.row = 0;
        r.main_offset = cross;
    }
    r.is_main = true;
    return r;
}

int LineCommand::mainCross() const {
    const Range& main = model->mainCell();
    return rows ? main.col : main.row;
}

void LineCommand::fitLinesNearMain() {
    // Fitting every line of a table of millions costs seconds; the lines
    // around the main cell are the ones on screen.
    const int main = rows ? model->mainCell().row : model->mainCell().col;
    const int count = rows ? model->rowCount() : model->columnCount();
    std::vector<int> near;
    for (int i = std::max(main - 100, 0); i < std::min(main + 100, count); ++i)
        near.push_back(i);
    if (rows)
        emit model->enforceAutoFitRowHeightsSignal(near);
    else
        emit model->enforceAutoFitColWidthsSignal(near);
}

void LineCommand::finishRedo() {
    model->enforceTableSize();
    fitLinesNearMain();
    model->setColSort({2, 1, -1});
    model->setRowSort({2, 0, -1});
    emit model->refreshHeadersSignal();
    emit model->scrollToMainCellSignal(true, false);
    emit model->updateFindReplaceMatchesSignal();
    model->saveIfSaveAfterEachEdit();
}

void LineCommand::finishUndo() {
    model->enforceTableSize();
    fitLinesNearMain();
    model->setColSort(col_sort_state.record());
    emit model->refreshHeadersSignal();
    model->setRowSort(row_sort_state.record());
    emit model->refreshHeadersSignal();
    emit model->scrollToMainCellSignal(true, false);
    emit model->updateFindReplaceMatchesSignal();
    model->saveIfSaveAfterEachEdit();
}

void LineCommand::keepHidden() {
    kept_hidden = model->hiddenState();
}

void LineCommand::restoreHidden() {
    model->restoreHiddenState(kept_hidden);
}
