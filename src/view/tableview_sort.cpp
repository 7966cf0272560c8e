// Sorting on the grid: by the main cell's column or row, by a label's
// double-click, and the selected cells within their own lines.

#include "data/sortcanceledexception.h"
#include "edit/commands/sortcommand.h"
#include "edit/sortpermutation.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/progressdialog.h"

#include <QPushButton>

#include <algorithm>
#include <cstdint>

namespace {

// Up to this many lines a sort takes a few tens of milliseconds: nothing to
// show and nothing to cancel, so keys and clicks wait for its end. Longer
// ones show the dialog, modal from the first moment, so that nothing but its
// Cancel reaches the window while the worker reads the table.
constexpr int kQuickLines = 100000;
// The share of the bar for making the permutation; moving the lines takes
// the rest.
constexpr float kOrderShare = 0.9f;

} // namespace

void TableView::sortByLine(int axis, int index, int order) {
    runSort(axis, index, order, [this](SortCommand* command) { pushCommand(command); });
}

bool TableView::restoreSort(SortRecord record) {
    if ((record.order != 0 && record.order != 1) || (record.kind != 0 && record.kind != 1))
        return false;
    bool applied = false;
    // Not an undo step: the sort belongs to the way the table was shown
    // before the reload, and undoing it would leave a freshly loaded file
    // marked as changed.
    runSort(record.kind, record.index, record.order, [this, &applied](SortCommand* command) {
        if (command->is_valid) {
            applied = command->axis == 0 ? table_model->sortRowsByColumn(
                                               command->permutation, command->order, command->index)
                                         : table_model->sortColsByRow(
                                               command->permutation, command->order, command->index);
            emit table_model->refreshHeadersSignal();
            emit table_model->updateFindReplaceMatchesSignal();
            refreshView();
        }
        delete command;
    });
    return applied;
}

void TableView::runSort(int axis, int index, int order,
                        const std::function<void(SortCommand*)>& finish) {
    if (model_busy || table_model->tableData().isLoading() || table_model->isSorting()) return;
    if (context & CellEditing) stopEditing(true);
    const bool rows_move = axis == 0;
    const TableData& data = table_model->tableData();
    if ((rows_move ? data.numRawRows() : data.numRawColumns()) <= kQuickLines) {
        model_busy = true;
        table_model->sort_takes_input = false;
        auto* command = new SortCommand(table_model, SortState{order, axis, index});
        table_model->sort_takes_input = true;
        model_busy = false;
        finish(command);
        return;
    }
    ProgressDialog dialog(this, QStringLiteral("Sort"),
                          rows_move ? QStringLiteral("Sorting rows...")
                                    : QStringLiteral("Sorting columns..."));
    float base = 0.0f;
    float span = kOrderShare;
    connect(
        table_model, &TableModel::updateProgressSignal, &dialog,
        [&dialog, &base, &span](float proportion) { dialog.onProgress(base + span * proportion); });
    connect(&dialog, &ProgressDialog::canceledSignal, &dialog, [this, &dialog] {
        dialog.setLabelText(QString::fromLatin1(SortCanceledException().what()));
        table_model->cancelJob();
    });
    dialog.show();

    model_busy = true;
    auto* command = new SortCommand(table_model, SortState{order, axis, index});
    model_busy = false;
    if (command->is_valid) {
        // The lines move all or not at all: past here there is nothing to cancel.
        dialog.cancelButton()->setEnabled(false);
        base = kOrderShare;
        span = 1.0f - kOrderShare;
    }
    finish(command);
}

void TableView::sortSelectedColumn(int order) {
    const int col = table_model->mainCell().col;
    if (col < 0) return;
    sortByLine(0, table_model->tableData().rawColumnFromModel(col), order);
}

void TableView::sortSelectedRow(int order) {
    const int row = table_model->mainCell().row;
    if (row < 0) return;
    sortByLine(1, table_model->tableData().rawRowFromModel(row), order);
}

void TableView::onHorizontalSectionDoubleClicked(int col) {
    const int raw = table_model->tableData().rawColumnFromModel(col);
    const SortRecord record = table_model->colSort();
    const bool again = record.order == 0 && record.kind == 0 && record.index == raw;
    sortByLine(0, raw, again ? 1 : 0);
}

void TableView::onVerticalSectionDoubleClicked(int row) {
    const int raw = table_model->tableData().rawRowFromModel(row);
    const SortRecord record = table_model->rowSort();
    const bool again = record.order == 0 && record.kind == 1 && record.index == raw;
    sortByLine(1, raw, again ? 1 : 0);
}

void TableView::sortSelectedCells(bool horizontally, int order) {
    if (table_model->isReadOnly() || model_busy || table_model->isSorting()) return;
    if (context & CellEditing) stopEditing(true);
    const TableData& data = table_model->tableData();
    const int rows = data.numModelRows();
    const int cols = data.numModelColumns();
    // Every selected cell once, as its line (row for a horizontal sort) in
    // the high half and its place along the line in the low half, so that
    // sorting the numbers groups the lines. Open ends stop at the data.
    std::vector<uint64_t> cells;
    for (const Range& r : table_model->selectionRanges()) {
        if (r.kind == Range::Invalid || r.row < 0 || r.col < 0) continue;
        const bool one_row = r.kind == Range::Cell || r.kind == Range::Row;
        const bool one_col = r.kind == Range::Cell || r.kind == Range::Column;
        const int r1 = one_row ? r.row : r.row_end == Range::kToEnd ? rows - 1 : r.row_end;
        const int c1 = one_col ? r.col : r.col_end == Range::kToEnd ? cols - 1 : r.col_end;
        for (int row = r.row; row <= r1; ++row)
            for (int col = r.col; col <= c1; ++col) {
                if (!r.containsCell(row, col)) continue;
                const int line = horizontally ? row : col;
                const int place = horizontally ? col : row;
                cells.push_back(uint64_t(uint32_t(line)) << 32 | uint32_t(place));
            }
    }
    std::sort(cells.begin(), cells.end());
    cells.erase(std::unique(cells.begin(), cells.end()), cells.end());

    RangeVector ranges;
    int group = 0;
    for (size_t start = 0; start < cells.size(); ++group) {
        const uint32_t line = uint32_t(cells[start] >> 32);
        size_t end = start;
        QStringList texts;
        while (end < cells.size() && uint32_t(cells[end] >> 32) == line) {
            const int place = int(uint32_t(cells[end]));
            texts << (horizontally ? data.data(int(line), place) : data.data(place, int(line)))
                         .toString();
            ++end;
        }
        const QStringList sorted =
            sortCellGroup(texts, group, order == 1, table_model->caseSensitiveSorting());
        // Runs of neighbouring cells go back as one line range each.
        for (size_t k = start; k < end;) {
            size_t run_end = k + 1;
            while (run_end < end && uint32_t(cells[run_end]) == uint32_t(cells[run_end - 1]) + 1)
                ++run_end;
            const int first = int(uint32_t(cells[k]));
            Range range = Range(horizontally ? int(line) : first, horizontally ? first : int(line),
                                Range::Model);
            if (run_end - k == 1) {
                range.value = sorted.at(qsizetype(k - start));
            } else {
                range.kind = horizontally ? Range::Row : Range::Column;
                (horizontally ? range.col_end : range.row_end) = first + int(run_end - k) - 1;
                for (size_t v = k; v < run_end; ++v)
                    range.values.emplace_back(sorted.at(qsizetype(v - start)));
            }
            ranges.push_back(std::move(range));
            k = run_end;
        }
        start = end;
    }
    if (!ranges.empty()) onDataChanged(std::move(ranges));
}
