#include "applyfilterscommand.h"

#include <algorithm>

ApplyFiltersCommand::ApplyFiltersCommand(TableModel* m, RangeVector sel,
                                         std::vector<FilterData> after,
                                         std::vector<FilterData> before, QUndoCommand* parent)
    : TableUndoCommand(m, std::move(sel), false, parent), filters_after(std::move(after)),
      filters_before(std::move(before)) {
    setText(QStringLiteral("ApplyFiltersCommand"));
    selection = model->toRawSelection(cells);
    // A list equal to the present one, exceptions and all, changes nothing.
    auto same = [](const FilterData& a, const FilterData& b) {
        return a == b && a.exceptions == b.exceptions;
    };
    is_valid = !std::equal(filters_after.begin(), filters_after.end(), filters_before.begin(),
                           filters_before.end(), same);
}

void ApplyFiltersCommand::showSelection(const RangeVector& raw_selection) {
    // Members on lines now hidden drop; with none left the top left cell.
    model->setSelectedRanges(raw_selection, true);
    emit model->scrollToMainCellSignal(true, false);
    emit model->refreshHeadersSignal();
}

void ApplyFiltersCommand::redo() {
    // Redo runs where the first one ran, so the state before is the same.
    if (!state_kept) before_state = model->hiddenState();
    state_kept = true;
    model->applyFilters(filters_after);
    showSelection(selection);
    model->setColSort({2, 1, -1});
    model->setRowSort({2, 0, -1});
    emit model->updateFindReplaceMatchesSignal();
}

void ApplyFiltersCommand::undo() {
    model->restoreHiddenState(before_state);
    showSelection(selection);
    model->setColSort(col_sort_state.record());
    emit model->refreshHeadersSignal();
    model->setRowSort(row_sort_state.record());
    emit model->refreshHeadersSignal();
    emit model->updateFindReplaceMatchesSignal();
}
