// Filters from the grid's side: the list edited as the user asks, each
// change one ApplyFiltersCommand.

#include "edit/commands/applyfilterscommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <algorithm>

namespace {

void pushFilters(TableView* view, TableModel* model, std::vector<FilterData> after,
                 std::vector<FilterData> before) {
    view->pushCommand(new ApplyFiltersCommand(model, model->selectionRanges(), std::move(after),
                                              std::move(before)));
}

} // namespace

void TableView::addFilters(const std::vector<FilterData>& new_filters) {
    if (!readyToChange(false) || new_filters.empty()) return;
    table_model->collectFilterExceptions();
    const std::vector<FilterData> before = table_model->filterList();
    std::vector<FilterData> after = before;
    for (FilterData f : new_filters) {
        f.parse();
        f.exceptions.clear();
        auto same_line = std::find_if(after.begin(), after.end(),
                                      [&f](const FilterData& a) { return a.range == f.range; });
        if (same_line != after.end())
            *same_line = std::move(f);
        else
            after.push_back(std::move(f));
    }
    pushFilters(this, table_model, std::move(after), before);
}

void TableView::addFilter(const FilterData& filter) {
    addFilters({filter});
}

void TableView::removeFilter(FilterLine line) {
    if (!readyToChange(false)) return;
    // The undo applies the old list again: lines in view now that it would
    // hide (added or edited since it ran) must stay in view, or the lines
    // later steps counted in view positions are no longer the same ones.
    table_model->collectFilterExceptions();
    const std::vector<FilterData> before = table_model->filterList();
    std::vector<FilterData> after = before;
    std::erase_if(after, [line](const FilterData& f) { return f.range == line; });
    if (after.size() == before.size()) return;
    pushFilters(this, table_model, std::move(after), before);
}

void TableView::removeAllFilters() {
    if (!readyToChange(false) || table_model->filterList().empty()) return;
    // As in removeFilter: the undo must show what is in view now.
    table_model->collectFilterExceptions();
    pushFilters(this, table_model, {}, table_model->filterList());
}

void TableView::refreshFilters() {
    if (!readyToChange(false) || table_model->filterList().empty()) return;
    table_model->collectFilterExceptions();
    const std::vector<FilterData> before = table_model->filterList();
    std::vector<FilterData> after = before;
    for (FilterData& f : after)
        f.exceptions.clear();
    pushFilters(this, table_model, std::move(after), before);
}

void TableView::filterSelectedWithCellContents(bool rows) {
    if (!readyToChange(false)) return;
    const TableModel& m = *table_model;
    const TableData& d = m.tableData();
    const RangeVector& sel = m.selectionRanges();
    const std::map<int, std::vector<int>> groups = rows ? m.groupByRow(sel) : m.groupByColumn(sel);
    std::vector<FilterData> made;
    for (const auto& [line, across] : groups) {
        const int raw = rows ? d.rawRowFromModel(line) : d.rawColumnFromModel(line);
        if (raw < 0) continue;
        QStringList alternatives;
        for (const int other : across) {
            const QString text = rows ? m.cellText(line, other) : m.cellText(other, line);
            const QString alternative = escapeFilterString(text).toLower();
            if (!alternatives.contains(alternative)) alternatives << alternative;
        }
        FilterData f(rows ? FilterLine::forRow(raw) : FilterLine::forColumn(raw),
                     alternatives.join(u'|'));
        f.parse();
        made.push_back(std::move(f));
    }
    addFilters(made);
}
