// Whole rows and columns on the grid: each command is built from the
// selection of the moment and pushed as one undo step.

#include "edit/celltransforms.h"
#include "edit/commands/lines/applyhiddencolscommand.h"
#include "edit/commands/lines/applyhiddenrowscommand.h"
#include "edit/commands/lines/duplicatecolscommand.h"
#include "edit/commands/lines/duplicaterowscommand.h"
#include "edit/commands/lines/insertcolscommand.h"
#include "edit/commands/lines/insertrowscommand.h"
#include "edit/commands/lines/movecolsabsolutecommand.h"
#include "edit/commands/lines/movecolsrelativecommand.h"
#include "edit/commands/lines/moverowsabsolutecommand.h"
#include "edit/commands/lines/moverowsrelativecommand.h"
#include "edit/commands/lines/removeallfilteredoutandhiddendatacommand.h"
#include "edit/commands/lines/removecolscommand.h"
#include "edit/commands/lines/removeemptyrowscolsatendcommand.h"
#include "edit/commands/lines/removerowscommand.h"
#include "edit/commands/lines/splitcellscommand.h"
#include "edit/commands/lines/transposetablecommand.h"
#include "edit/commands/setmodeldatacommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QUndoStack>

#include <algorithm>
#include <climits>

#include <unistd.h>

bool TableView::readyToChange(bool writes) {
    if (writes && table_model->isReadOnly()) return false;
    if (model_busy) return false;
    if (context & CellEditing) stopEditing(true);
    return true;
}

void TableView::insertRows(int count, bool before) {
    if (!readyToChange(true)) return;
    pushCommand(new InsertRowsCommand(table_model, table_model->selectionRanges(), count, before));
}

void TableView::insertCols(int count, bool before) {
    if (!readyToChange(true)) return;
    pushCommand(new InsertColsCommand(table_model, table_model->selectionRanges(), count, before));
}

void TableView::removeRows() {
    if (!readyToChange(true)) return;
    pushCommand(new RemoveRowsCommand(table_model, table_model->selectionRanges()));
}

void TableView::removeCols() {
    if (!readyToChange(true)) return;
    pushCommand(new RemoveColsCommand(table_model, table_model->selectionRanges()));
}

void TableView::moveRowsRelative(int offset) {
    if (!readyToChange(true)) return;
    pushCommand(new MoveRowsRelativeCommand(table_model, table_model->selectionRanges(), offset));
}

void TableView::moveColsRelative(int offset) {
    if (!readyToChange(true)) return;
    pushCommand(new MoveColsRelativeCommand(table_model, table_model->selectionRanges(), offset));
}

void TableView::moveRowsAbove(int target) {
    if (!readyToChange(true)) return;
    pushCommand(new MoveRowsAbsoluteCommand(table_model, table_model->selectionRanges(), target));
}

void TableView::moveColsLeftOf(int target) {
    if (!readyToChange(true)) return;
    pushCommand(new MoveColsAbsoluteCommand(table_model, table_model->selectionRanges(), target));
}

void TableView::duplicateRows(int count) {
    if (!readyToChange(true)) return;
    pushCommand(new DuplicateRowsCommand(table_model, table_model->selectionRanges(), count));
}

void TableView::duplicateCols(int count) {
    if (!readyToChange(true)) return;
    pushCommand(new DuplicateColsCommand(table_model, table_model->selectionRanges(), count));
}

bool TableView::roomForLines(bool rows, int count, bool each_line) const {
    const TableModel& m = *table_model;
    const RangeVector& sel = m.selectionRanges();
    const std::vector<int> selected = rows ? m.selectedRows(sel, true) : m.selectedCols(sel, true);
    const qint64 points = each_line ? qint64(selected.size()) : qint64(runsOf(selected).size());
    const qint64 added = points * count;
    const TableData& d = m.tableData();
    const qint64 along = rows ? d.numRawRows() : d.numRawColumns();
    const qint64 across = rows ? d.numRawColumns() : d.numRawRows();
    if (along + added > INT_MAX - 1) return false;
    // A new line costs its handle or header entry; a new column an offset
    // in each row, wide once a row holds many; copies their bytes too. A
    // typo of a few zeros is refused here rather than ending the program
    // half way through.
    const qint64 per_cell = each_line ? 8 : rows ? 0 : 4;
    const qint64 per_line = 16 + across * per_cell;
    const long pages = sysconf(_SC_AVPHYS_PAGES), page = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || page <= 0) return true;
    return added <= qint64(pages) * page / std::max<qint64>(per_line, 1);
}

void TableView::transposeTable() {
    if (!readyToChange(false)) return;
    pushCommand(new TransposeTableCommand(table_model, table_model->selectionRanges()));
}

void TableView::splitCells(bool horizontal, const SplitRule& rule, bool insert_lines) {
    if (!readyToChange(true)) return;
    pushCommand(new SplitCellsCommand(table_model, table_model->selectionRanges(), horizontal, rule,
                                      insert_lines));
}

void TableView::removeAllFilteredOutAndHiddenData() {
    if (!readyToChange(true)) return;
    pushCommand(
        new RemoveAllFilteredOutAndHiddenDataCommand(table_model, table_model->selectionRanges()));
}

void TableView::removeExtraneousRowsAndColumns() {
    if (!readyToChange(true)) return;
    pushCommand(new RemoveEmptyRowsColsAtEndCommand(table_model, table_model->selectionRanges()));
}

// ---- Cells that move along their line ----

namespace {

// The texts of model cells [first, last] of one line.
std::vector<QString> lineTexts(const TableModel& m, bool rows, int line, int first, int last) {
    std::vector<QString> out;
    for (int i = first; i <= last; ++i)
        out.push_back(rows ? m.tableData().data(line, i).toString()
                           : m.tableData().data(i, line).toString());
    return out;
}

// One line's cells [first, first + values.size()) as a model range.
Range lineRange(bool rows, int line, int first, std::vector<QString> texts) {
    Range r = Range::line(line, rows ? Range::Row : Range::Column, Range::Model);
    const int last = first + int(texts.size()) - 1;
    if (rows)
        r.col = first, r.col_end = last;
    else
        r.row = first, r.row_end = last;
    for (QString& t : texts)
        r.values.push_back(std::move(t));
    return r;
}

} // namespace

void TableView::insertCellsMoveRest(bool rows) {
    if (!readyToChange(true)) return;
    const TableModel& m = *table_model;
    const RangeVector& sel = m.selectionRanges();
    const auto groups = rows ? m.groupByRow(sel) : m.groupByColumn(sel);
    const int data_end = rows ? m.tableData().numModelColumns() : m.tableData().numModelRows();
    RangeVector ranges;
    for (const auto& group : groups) {
        const int first = group.second.front();
        const int width = group.second.back() - first + 1;
        if (first >= data_end) continue; // nothing there to move, nothing to empty
        std::vector<QString> texts(static_cast<size_t>(width));
        const std::vector<QString> tail = lineTexts(m, rows, group.first, first, data_end - 1);
        texts.insert(texts.end(), tail.begin(), tail.end());
        ranges.push_back(lineRange(rows, group.first, first, std::move(texts)));
    }
    if (ranges.empty()) return;
    auto* command = new SetModelDataCommand(table_model, ranges, false, true);
    command->set_selection = true;
    command->setSelection(sel);
    pushCommand(command);
}

void TableView::removeSelectedCellsMoveRest(bool rows) {
    if (!readyToChange(true)) return;
    const TableModel& m = *table_model;
    const RangeVector& sel = m.selectionRanges();
    const auto groups = rows ? m.groupByRow(sel) : m.groupByColumn(sel);
    const int data_end = rows ? m.tableData().numModelColumns() : m.tableData().numModelRows();
    RangeVector ranges;
    for (const auto& group : groups) {
        const int first = group.second.front();
        if (first >= data_end) continue;
        const std::vector<QString> tail = lineTexts(m, rows, group.first, first, data_end - 1);
        std::vector<QString> kept;
        for (int i = first; i < data_end; ++i)
            if (!std::binary_search(group.second.begin(), group.second.end(), i))
                kept.push_back(tail[size_t(i - first)]);
        kept.resize(tail.size());
        ranges.push_back(lineRange(rows, group.first, first, std::move(kept)));
    }
    if (ranges.empty()) return;
    auto* command = new SetModelDataCommand(table_model, ranges, false, true);
    command->set_selection = true;
    command->setSelection(sel);
    pushCommand(command);
}

void TableView::joinSelectedCellsMoveRestLeft(const QString& separator) {
    if (!readyToChange(true)) return;
    const RangeVector before = table_model->selectionRanges();
    // What the join empties: every selected cell of a member's rows but
    // the first.
    RangeVector emptied;
    for (const Range& r : before) {
        if (r.kind == Range::Cell || r.kind == Range::Column || r.kind == Range::Invalid) continue;
        Range rest = Range::wholeTable(Range::Model);
        rest.row = r.row;
        rest.row_end = r.kind == Range::Row ? r.row : r.row_end;
        rest.col = (r.kind == Range::Row ? 0 : r.col) + 1;
        rest.col_end = r.kind == Range::Row ? Range::kToEnd : r.col_end;
        if (rest.col_end != Range::kToEnd && rest.col_end < rest.col) continue;
        emptied.push_back(rest);
    }
    undo_stack->beginMacro(QStringLiteral("Join Selected Cells Horizontally, Move Rest of Row Left"));
    joinSelectedCells(true, separator);
    if (!emptied.empty()) {
        emptied.front().is_main = true;
        emptied.front().main_offset_row = emptied.front().row;
        emptied.front().main_offset_col = emptied.front().col;
        table_model->setSelection(emptied, true);
        removeSelectedCellsMoveRest(true);
        table_model->setSelection(before, true);
    }
    undo_stack->endMacro();
}

void TableView::removeSelectedCellsAndRestOfLines(bool rows) {
    if (!readyToChange(true)) return;
    const RangeVector& sel = table_model->selectionRanges();
    RangeVector ranges;
    for (int line :
         rows ? table_model->selectedRows(sel, true) : table_model->selectedCols(sel, true)) {
        Range r = Range::line(line, rows ? Range::Row : Range::Column, Range::Model);
        r.value = QString();
        ranges.push_back(r);
    }
    if (ranges.empty()) return;
    auto* command = new SetModelDataCommand(table_model, ranges, false, true);
    command->set_selection = true;
    command->setSelection(sel);
    pushCommand(command);
}

// ---- The ID column ----

int TableView::idColumn() const {
    const TableModel& m = *table_model;
    const int header = m.numHeaderRows();
    if (header == 0 || m.tableData().numModelRows() < header) return -1;
    QStringList labels;
    for (int c = 0; c < m.tableData().numModelColumns(); ++c)
        labels << m.cellText(header - 1, c);
    return findIdColumn(labels);
}

void TableView::updateIdColumn(int col) {
    if (!readyToChange(true) || col < 0) return;
    const TableModel& m = *table_model;
    const int first = m.numHeaderRows(), end = m.tableData().numModelRows();
    if (first >= end) return;
    QStringList cells;
    for (const QString& text : lineTexts(m, false, col, first, end - 1))
        cells << text;
    const QStringList filled = fillIdColumn(cells);
    if (filled == cells) return;
    auto* command = new SetModelDataCommand(
        table_model, {lineRange(false, col, first, {filled.begin(), filled.end()})}, false, true);
    command->set_selection = true;
    command->setSelection(m.selectionRanges());
    pushCommand(command);
}

void TableView::addIdColumn(qint64 first) {
    if (!readyToChange(true)) return;
    const TableModel& m = *table_model;
    const int header = m.numHeaderRows(), rows = m.tableData().numModelRows();
    // A table with neither header nor rows still gets one numbered row;
    // one too short for its header grows to it as "ID" is written.
    const int numbered = std::max(rows - header, header == 0 && rows == 0 ? 1 : 0);
    std::vector<QString> texts;
    if (header > 0) texts.push_back(QStringLiteral("ID"));
    for (const QString& id : idSequence(first, numbered))
        texts.push_back(id);
    Range at(0, 0, Range::Model);
    at.is_main = true;
    undo_stack->beginMacro(QStringLiteral("Add ID Column"));
    pushCommand(new InsertColsCommand(table_model, {at}, 1, true));
    Range column = Range::line(0, Range::Column, Range::Model);
    column.is_main = true;
    column.main_offset = std::max(header - 1, 0);
    auto* command = new SetModelDataCommand(
        table_model, {lineRange(false, 0, std::max(header - 1, 0), std::move(texts))}, false, true);
    command->set_selection = true;
    command->setSelection({column});
    pushCommand(command);
    undo_stack->endMacro();
}

void TableView::transposeSelectedCells() {
    if (!readyToChange(true)) return;
    const TableModel& m = *table_model;
    const RangeVector& sel = m.selectionRanges();
    const std::vector<int> rows = m.selectedRows(sel, true), cols = m.selectedCols(sel, true);
    if (rows.empty() || cols.empty()) return;
    const int r0 = rows.front(), r1 = rows.back(), c0 = cols.front(), c1 = cols.back();
    if (r0 == r1 && c0 == c1) return;
    // The block across its diagonal: the old area is emptied and the new one
    // written from the same top left cell, as one step.
    Range old_area = Range::wholeTable(Range::Model);
    old_area.row = r0, old_area.row_end = r1, old_area.col = c0, old_area.col_end = c1;
    Range new_area = Range::wholeTable(Range::Model);
    new_area.row = r0, new_area.row_end = r0 + (c1 - c0);
    new_area.col = c0, new_area.col_end = c0 + (r1 - r0);
    new_area.value_grid.assign(size_t(c1 - c0 + 1), std::vector<QVariant>(size_t(r1 - r0 + 1)));
    for (int r = r0; r <= r1; ++r)
        for (int c = c0; c <= c1; ++c)
            new_area.value_grid[size_t(c - c0)][size_t(r - r0)] = m.tableData().data(r, c);
    old_area.value = QString();
    auto* command = new SetModelDataCommand(table_model, {new_area}, {old_area}, true, false);
    Range selected = new_area;
    selected.value_grid.clear();
    selected.is_main = true;
    selected.main_offset_row = r0;
    selected.main_offset_col = c0;
    command->set_selection = true;
    command->redo_selection = table_model->toRawSelection({selected});
    command->undo_selection = table_model->toRawSelection(sel);
    pushCommand(command);
}

// ---- Hide and show ----

namespace {

std::vector<int> merged(std::vector<int> a, const std::vector<int>& b) {
    a.insert(a.end(), b.begin(), b.end());
    std::sort(a.begin(), a.end());
    a.erase(std::unique(a.begin(), a.end()), a.end());
    return a;
}

std::vector<int> without(std::vector<int> a, std::vector<int> b) {
    std::sort(b.begin(), b.end());
    a.erase(std::remove_if(a.begin(), a.end(),
                           [&b](int x) { return std::binary_search(b.begin(), b.end(), x); }),
            a.end());
    return a;
}

} // namespace

void TableView::applyHidden(bool rows, std::vector<int> hidden) {
    if (!readyToChange(false)) return;
    const RangeVector& sel = table_model->selectionRanges();
    if (rows)
        pushCommand(new ApplyHiddenRowsCommand(table_model, sel, std::move(hidden)));
    else
        pushCommand(new ApplyHiddenColsCommand(table_model, sel, std::move(hidden)));
}

namespace {

// The raw data lines of the selection on one axis.
std::vector<int> selectedRaw(const TableModel& m, bool rows) {
    const TableData& d = m.tableData();
    std::vector<int> out;
    const int size = rows ? d.numRawRows() : d.numRawColumns();
    for (int line : rows ? m.selectedRows(m.selectionRanges(), true)
                         : m.selectedCols(m.selectionRanges(), true)) {
        const int raw = rows ? d.rawRowFromModel(line) : d.rawColumnFromModel(line);
        if (raw >= 0 && raw < size) out.push_back(raw);
    }
    return out;
}

} // namespace

void TableView::hideSelected(bool rows) {
    const TableModel& m = *table_model;
    applyHidden(rows, merged(rows ? m.userHiddenRows() : m.userHiddenCols(), selectedRaw(m, rows)));
}

void TableView::hideAllButSelected(bool rows) {
    const TableModel& m = *table_model;
    const TableData& d = m.tableData();
    std::vector<int> all;
    const int first = rows ? m.numHeaderRows() : m.numHeaderCols();
    const int size = rows ? d.numRawRows() : d.numRawColumns();
    for (int i = std::max(first, 0); i < size; ++i)
        all.push_back(i);
    applyHidden(rows, merged(without(std::move(all), selectedRaw(m, rows)),
                             rows ? m.userHiddenRows() : m.userHiddenCols()));
}

void TableView::hideEmpty(bool rows) {
    const TableModel& m = *table_model;
    applyHidden(rows, merged(rows ? m.userHiddenRows() : m.userHiddenCols(),
                             rows ? m.emptyRows(false) : m.emptyCols(false)));
}

void TableView::showAllHidden(bool rows) {
    applyHidden(rows, {});
}

void TableView::showHiddenInSelection(bool rows) {
    const TableModel& m = *table_model;
    const TableData& d = m.tableData();
    const std::vector<int> lines = rows ? m.selectedRows(m.selectionRanges(), true)
                                        : m.selectedCols(m.selectionRanges(), true);
    if (lines.empty()) return;
    const int first = rows ? d.rawRowFromModel(lines.front()) : d.rawColumnFromModel(lines.front());
    const int last = rows ? d.rawRowFromModel(lines.back()) : d.rawColumnFromModel(lines.back());
    std::vector<int> hidden = rows ? m.userHiddenRows() : m.userHiddenCols();
    hidden.erase(std::remove_if(hidden.begin(), hidden.end(),
                                [first, last](int h) { return h >= first && h <= last; }),
                 hidden.end());
    applyHidden(rows, std::move(hidden));
}

void TableView::showEmpty(bool rows) {
    const TableModel& m = *table_model;
    applyHidden(rows, without(rows ? m.userHiddenRows() : m.userHiddenCols(),
                              rows ? m.emptyRows(false) : m.emptyCols(false)));
}

// ---- Empties and duplicates ----

void TableView::removeEmpty(bool rows, bool based_on_selected) {
    if (!readyToChange(true)) return;
    std::vector<int> lines = rows ? table_model->emptyRows(based_on_selected)
                                  : table_model->emptyCols(based_on_selected);
    const RangeVector& sel = table_model->selectionRanges();
    if (rows)
        pushCommand(new RemoveRowsCommand(table_model, sel, std::move(lines)));
    else
        pushCommand(new RemoveColsCommand(table_model, sel, std::move(lines)));
}

void TableView::removeDuplicates(bool rows, bool based_on_selected) {
    if (!readyToChange(true)) return;
    std::vector<int> lines = table_model->findDuplicates(rows ? 0 : 1, based_on_selected);
    const RangeVector& sel = table_model->selectionRanges();
    if (rows)
        pushCommand(new RemoveRowsCommand(table_model, sel, std::move(lines)));
    else
        pushCommand(new RemoveColsCommand(table_model, sel, std::move(lines)));
}

void TableView::selectDuplicates(bool rows, bool based_on_selected) {
    if (!readyToChange(false)) return;
    const TableData& d = table_model->tableData();
    std::vector<int> model_lines;
    for (int raw : table_model->findDuplicates(rows ? 0 : 1, based_on_selected)) {
        const int m = rows ? d.modelRowFromRaw(raw) : d.modelColumnFromRaw(raw);
        if (m >= 0) model_lines.push_back(m); // hidden ones cannot be selected
    }
    if (model_lines.empty()) return;
    RangeVector selection;
    for (const LineRun& run : runsOf(model_lines)) {
        Range r = Range::wholeTable(Range::Model);
        if (rows)
            r.row = run.start, r.row_end = run.end() - 1;
        else
            r.col = run.start, r.col_end = run.end() - 1;
        selection.push_back(r);
    }
    Range& first = selection.front();
    first.is_main = true;
    first.main_offset_row = rows ? first.row : std::max(table_model->mainCell().row, 0);
    first.main_offset_col = rows ? std::max(table_model->mainCell().col, 0) : first.col;
    table_model->setSelection(selection, true);
    scrollToMainCell(true, false);
    refreshView();
}
