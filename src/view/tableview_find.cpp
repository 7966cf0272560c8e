// Find and replace as the grid's commands: moving to matches, replacing them
// as undoable steps, and the highlight of the matches in view.

#include "edit/commands/setmodeldatacommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QHeaderView>
#include <QScrollBar>

bool TableView::findMatch(const FindReplaceQuery& query, bool backwards) {
    Range found;
    if (!table_model->findNext(query, table_model->mainCell(), backwards, found)) {
        emit noMatchSignal(query.find_str);
        return false;
    }
    table_model->selectSingleCell(found);
    scrollToMainCell(true, false);
    return true;
}

RangeVector TableView::findAllMatches(const FindReplaceQuery& query) {
    RangeVector found = table_model->findAll(query);
    if (found.empty()) emit noMatchSignal(query.find_str);
    return found;
}

bool TableView::replaceMatch(const FindReplaceQuery& query, bool backwards) {
    if (table_model->isReadOnly()) return false;
    const Range main = table_model->mainCell();
    const RangeVector changed = table_model->replacedCells(query, {main});
    if (!changed.empty()) {
        // The selection stays as it was: replacing inside it goes on there.
        pushCommand(new SetModelDataCommand(table_model, changed, false, true));
    }
    return findMatch(query, backwards);
}

int TableView::replaceAllMatches(const FindReplaceQuery& query) {
    if (table_model->isReadOnly()) return 0;
    const RangeVector found = table_model->findAll(query);
    RangeVector changed = table_model->replacedCells(query, found);
    if (changed.empty()) {
        emit noMatchSignal(query.find_str);
        return 0;
    }
    const int n = int(changed.size());
    // One undo step for all of them.
    pushCommand(new SetModelDataCommand(table_model, std::move(changed), false, true));
    return n;
}

bool TableView::selectAllMatches(const FindReplaceQuery& query) {
    RangeVector found = table_model->findAll(query);
    if (found.empty()) {
        emit noMatchSignal(query.find_str);
        return false;
    }
    const Range first = found.front();
    table_model->setMainAndSelection(first, std::move(found));
    scrollToMainCell(true, false);
    return true;
}

void TableView::setFindQuery(const FindReplaceQuery& query) {
    table_model->setFindQuery(query);
    refreshFindMatches();
}

void TableView::refreshFindMatches() {
    const QRect area = viewport()->rect();
    int first_row = rowAt(area.top()), last_row = rowAt(area.bottom());
    int first_col = columnAt(area.left()), last_col = columnAt(area.right());
    if (last_row < 0) last_row = table_model->rowCount() - 1;
    if (last_col < 0) last_col = table_model->columnCount() - 1;
    table_model->updateFindMatches(std::max(0, first_row), last_row, std::max(0, first_col),
                                   last_col);
    viewport()->update();
}
