// Filters from the grid's side: the list edited as the user asks, each
// change one ApplyFiltersCommand.

#include "edit/commands/applyfilterscommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QSet>

#include <algorithm>

namespace {

void pushFilters(TableView* view, TableModel* model, std::vector<FilterData> after,
                 std::vector<FilterData> before) {
    view->pushCommand(new ApplyFiltersCommand(model, model->selectionRanges(), std::move(after),
                                              std::move(before)));
}

// The list as it stands, with the lines edited out of each filter's match
// noted, so that applying it again keeps them in view.
std::vector<FilterData> filtersKeepingEdits(TableModel* model) {
    model->collectFilterExceptions();
    return model->filterList();
}

} // namespace

// A table still loading has no cells to filter by yet.
bool TableView::readyToFilter() {
    return !table_model->tableData().isLoading() && readyToChange(false);
}

void TableView::addFilters(const std::vector<FilterData>& new_filters) {
    if (!readyToFilter() || new_filters.empty()) return;
    const std::vector<FilterData> before = filtersKeepingEdits(table_model);
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
    if (!readyToFilter()) return;
    // The other filters apply again: lines edited out of them stay in view.
    const std::vector<FilterData> before = filtersKeepingEdits(table_model);
    std::vector<FilterData> after = before;
    std::erase_if(after, [line](const FilterData& f) { return f.range == line; });
    if (after.size() == before.size()) return;
    pushFilters(this, table_model, std::move(after), before);
}

void TableView::removeAllFilters() {
    if (!readyToFilter() || table_model->filterList().empty()) return;
    pushFilters(this, table_model, {}, table_model->filterList());
}

void TableView::refreshFilters() {
    if (!readyToFilter() || table_model->filterList().empty()) return;
    const std::vector<FilterData> before = filtersKeepingEdits(table_model);
    std::vector<FilterData> after = before;
    for (FilterData& f : after)
        f.exceptions.clear();
    pushFilters(this, table_model, std::move(after), before);
}

// Each alternative is a text piece every cell is compared with: past these
// many, filtering would take minutes on a big table.
constexpr int kMaxContentFilters = 1000;
constexpr int kMaxContentAlternatives = 1000;

QString TableView::filterSelectedWithCellContents(bool rows) {
    if (!readyToFilter()) return QString();
    const TableModel& m = *table_model;
    const TableData& d = m.tableData();
    const RangeVector& sel = m.selectionRanges();
    const QString too_many =
        QStringLiteral("Too many different values to filter by: at most %L1 %2, with at most "
                       "%L3 different values each.")
            .arg(kMaxContentFilters)
            .arg(rows ? QStringLiteral("rows") : QStringLiteral("columns"))
            .arg(kMaxContentAlternatives);
    if ((rows ? m.selectedRows(sel, true) : m.selectedCols(sel, true)).size() >
        size_t(kMaxContentFilters))
        return too_many;
    const std::map<int, std::vector<int>> groups = rows ? m.groupByRow(sel) : m.groupByColumn(sel);
    std::vector<FilterData> made;
    for (const auto& [line, across] : groups) {
        const int raw = rows ? d.rawRowFromModel(line) : d.rawColumnFromModel(line);
        if (raw < 0) continue;
        QStringList alternatives;
        QSet<QString> seen;
        for (const int other : across) {
            const QString text = rows ? m.cellText(line, other) : m.cellText(other, line);
            QString alternative = escapeFilterString(text).toLower();
            if (seen.contains(alternative)) continue;
            if (seen.size() == kMaxContentAlternatives) return too_many;
            seen.insert(alternative);
            alternatives << std::move(alternative);
        }
        FilterData f(rows ? FilterLine::forRow(raw) : FilterLine::forColumn(raw),
                     alternatives.join(u'|'));
        f.parse();
        made.push_back(std::move(f));
    }
    addFilters(made);
    return QString();
}
