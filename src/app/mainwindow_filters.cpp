// The Data menu's filter commands: which line to filter, the filter's text,
// the lists of filters to edit or clear, each ending in one change of the
// current table's filter list.

#include "edit/addressparsers.h"
#include "launcher.h"
#include "mainwindow.h"
#include "paneview.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/msgbox.h"

#include <algorithm>

namespace {

// The language's help, shown under the edit prompt; "%1" names what the
// filter shows ("columns" for a row filter, "rows" for a column filter).
QString filterHelp(bool row_filter) {
    const QStringList lines = {
        QStringLiteral("Will show only %1 that match one of the filter strings."),
        QStringLiteral("<br><b>*</b> is the wildcard character. Example: <b>abc*</b> matches "
                       "<b>abcdef</b>."),
        QStringLiteral("<br><b>|</b> and <b>&</b> are OR and AND operators. Example: "
                       "<b>*abc*&*def*|*ghi</b> matches <b>def123abc</b> or <b>ghi</b> but not "
                       "<b>abc</b> or <b>def</b>."),
        QStringLiteral("<br><b>!</b> (NOT) matches only phrases that don't meet the conditional. "
                       "Example: <b>!*abc*</b> matches <b>def</b> but not <b>abcdef</b>."),
        QStringLiteral("<br><b>&lt;</b> and <b>&gt;</b> are LESS THAN and GREATER THAN. Example: "
                       "<b>&lt;50</b> matches <b>30</b>, but not <b>70</b>."),
        QStringLiteral("<br><b>&lt;=</b> and <b>&gt;=</b> are LESS THAN OR EQUAL and GREATER "
                       "THAN OR EQUAL."),
        QStringLiteral("<br><tab>Example: <b>&lt;=50</b> matches <b>50</b> and <b>30</b>, but not "
                       "<b>70</b>."),
        QStringLiteral("<br><b>+</b> and <b>-</b> after a number are also LESS THAN OR EQUAL and "
                       "GREATER THAN OR EQUAL."),
        QStringLiteral("<br><tab>Example: <b>50+</b> matches <b>50</b> and <b>70</b>, but not "
                       "<b>30</b>."),
        QStringLiteral("<br><b>-</b> between two numbers matches numbers BETWEEN the two "
                       "(inclusive)."),
        QStringLiteral("<br><tab>Example: <b>0-10</b> matches <b>0</b>, <b>4.2</b>, and "
                       "<b>10</b>, but not <b>12</b>."),
        QStringLiteral("<br><b>#</b> as the first character uses regular expressions and ignores "
                       "all of the above syntax."),
        QStringLiteral("<br><b>\\</b> is the escape character. Use it to match the above "
                       "characters (i.e. <b>\\\\</b>, <b>\\*</b>, <b>\\|</b>, <b>\\&</b>, "
                       "<b>\\&lt;</b>, <b>\\&gt;</b>, <b>\\+</b>, <b>\\-</b>, or <b>\\#</b>)."),

        QStringLiteral("<br>Note: <b>#</b> only needs to be escaped if it's the first character."),
        QStringLiteral("<br>Except for regex, matching is case insensitive. Spaces before and after "
                       "filter strings are ignored."),
    };
    return lines.join(QString())
        .arg(row_filter ? QStringLiteral("columns") : QStringLiteral("rows"))
        .replace(QStringLiteral("<tab>"), QStringLiteral("&nbsp;&nbsp;&nbsp;&nbsp;"));
}

// A filter's line as an option's response carries it: "r12" or "c3", raw.
QString lineKey(FilterLine line) {
    return line.kind == FilterLine::kRow ? QStringLiteral("r%1").arg(line.row)
                                         : QStringLiteral("c%1").arg(line.col);
}

FilterLine lineFromKey(const QString& key) {
    bool ok = false;
    const int index = key.mid(1).toInt(&ok);
    if (!ok || index < 0) return {};
    if (key.startsWith(u'r')) return FilterLine::forRow(index);
    if (key.startsWith(u'c')) return FilterLine::forColumn(index);
    return {};
}

} // namespace

// Lines are named as the grid labels them: by their place in the data.
QString MainWindow::filterLineName(TableView* view, FilterLine line) const {
    const TableModel& m = *view->model();
    if (line.kind == FilterLine::kRow)
        return QStringLiteral("Row %1").arg(line.row + m.firstRowIndex());
    return QStringLiteral("Column %1")
        .arg(m.columnsAsLetters() ? columnIndexToLetters(line.col + 1)
                                  : QString::number(line.col + m.firstColIndex()));
}

FilterLine MainWindow::readFilterLine(TableView* view, const QString& text) const {
    const TableModel& m = *view->model();
    int row = -1, col = -1;
    const QString answer = text.trimmed();
    if (answer.isEmpty()) return {};
    if (m.columnsAsLetters())
        parseLetterAddress(row, col, answer);
    else
        parseColumnFirst(row, col, answer);
    // A cell names no single line.
    if ((row < 0) == (col < 0)) return {};
    if (row >= 0) {
        const int raw = row - m.firstRowIndex();
        return raw < 0 ? FilterLine() : FilterLine::forRow(raw);
    }
    const int raw = col - (m.columnsAsLetters() ? 1 : m.firstColIndex());
    return raw < 0 ? FilterLine() : FilterLine::forColumn(raw);
}

void MainWindow::highlightFilterLine(TableView* view, FilterLine line) {
    const TableData& d = view->model()->tableData();
    // A frame around the whole line.
    view->clearHighlightedRanges();
    if (line.kind == FilterLine::kRow)
        view->highlightRange(
            Range::line(d.modelRowFromRaw(line.row, true), Range::Row, Range::Model));
    if (line.kind == FilterLine::kColumn)
        view->highlightRange(
            Range::line(d.modelColumnFromRaw(line.col, true), Range::Column, Range::Model));
}

void MainWindow::clearFilterHighlight(TableView* view) {
    if (view) view->clearHighlightedRanges();
}

void MainWindow::promptForFilterLine(bool with_regex, const QString& preset) {
    TableView* view = currentView();
    if (!view) return;
    const bool letters = view->model()->columnsAsLetters();
    PromptStep step;
    step.prompt = QStringLiteral("Column or Row to Filter:");
    step.guide = letters ? QStringLiteral("Examples:<br><b>25</b> -> Row 25<br><b>g</b> or "
                                          "<b>G</b> -> Column G")
                         : QStringLiteral("Examples:<br><b>8</b> or <b>c8</b> or <b>col8</b> -> "
                                          "Column 8<br><b>r25</b> or <b>row25</b> -> Row 25");
    step.preset = preset;
    step.accept = [this, with_regex](const QString& answer) {
        TableView* v = currentView();
        if (!v) return QString();
        const FilterLine line = readFilterLine(v, answer);
        if (line.kind == FilterLine::kInvalid) {
            // Nothing named: the same question, nothing highlighted.
            clearFilterHighlight(v);
            promptForFilterLine(with_regex, answer);
            return QString();
        }
        promptNext(QStringLiteral("Column or Row to Filter:"), filterLineName(v, line),
                   [this, with_regex, answer] { promptForFilterLine(with_regex, answer); });
        promptForFilterText(line, with_regex);
        return QString();
    };
    Launcher* launcher = prompt(step);
    launcher->addDescription(QStringLiteral("(No row or column selected)"));
    connect(launcher, &Launcher::promptEditedSignal, this, [this, launcher](const QString& text) {
        TableView* v = currentView();
        if (!v) return;
        const FilterLine line = readFilterLine(v, text);
        if (line.kind == FilterLine::kInvalid) {
            clearFilterHighlight(v);
            launcher->setDescription(QStringLiteral("(No row or column selected)"));
            return;
        }
        highlightFilterLine(v, line);
        launcher->setDescription(filterLineName(v, line));
    });
    connect(launcher, &Launcher::launcherClosedSignal, this,
            [this] { clearFilterHighlight(currentView()); });
}

void MainWindow::promptForFilterText(FilterLine line, bool with_regex) {
    TableView* view = currentView();
    if (!view) return;
    QString text;
    for (const FilterData& f : view->model()->filterList())
        if (f.range == line) text = f.filter_string;
    // Asked for a pattern: the field starts as one, unless the line's filter is one already.
    if (with_regex && !text.startsWith(u'#')) text = QStringLiteral("#");
    PromptStep step;
    step.prompt = QStringLiteral("Edit Filter for %1:").arg(filterLineName(view, line));
    step.guide = filterHelp(line.kind == FilterLine::kRow);
    step.preset = text;
    step.accept = [this, line](const QString& answer) {
        TableView* v = currentView();
        pane_view->closeLauncher();
        if (!v) return QString();
        clearFilterHighlight(v);
        FilterData filter(line, answer);
        filter.parse();
        v->addFilter(filter);
        updateTab(v);
        return QString();
    };
    Launcher* launcher = prompt(step);
    // After the question replaced the one before, whose closing clears.
    highlightFilterLine(view, line);
    connect(launcher, &Launcher::launcherClosedSignal, this,
            [this] { clearFilterHighlight(currentView()); });
}

void MainWindow::promptForFilterList(bool to_clear) {
    TableView* view = currentView();
    if (!view) return;
    std::vector<FilterData> list = view->model()->filterList();
    // Stably by column, then by row: column filters (which have no row)
    // come first in column order, then row filters in row order.
    std::stable_sort(list.begin(), list.end(), [](const FilterData& a, const FilterData& b) {
        return a.range.col < b.range.col;
    });
    std::stable_sort(list.begin(), list.end(), [](const FilterData& a, const FilterData& b) {
        return a.range.row < b.range.row;
    });
    std::vector<OptionData> options;
    for (const FilterData& f : list) {
        OptionData option;
        option.name = QStringLiteral("%1: %2").arg(filterLineName(view, f.range),
                                                   f.filter_string.toHtmlEscaped());
        option.response = lineKey(f.range) + u'|' + f.filter_string;
        options.push_back(std::move(option));
    }
    if (!to_clear) options.push_back({QStringLiteral("Add new filter"), {}, {}, {}, {}});
    PromptStep step;
    step.prompt = to_clear ? QStringLiteral("Clear Filter:") : QStringLiteral("Edit Filter:");
    step.options = std::move(options);
    step.accept = [this, to_clear](const QString& answer) {
        TableView* v = currentView();
        if (!v) return QString();
        clearFilterHighlight(v);
        if (answer == QStringLiteral("Add new filter")) {
            promptForFilterLine(false, QString());
            return QString();
        }
        QStringList parts = answer.split(u'|');
        const FilterLine line = lineFromKey(parts.takeFirst());
        if (line.kind == FilterLine::kInvalid) {
            pane_view->closeLauncher();
            return QString();
        }
        if (to_clear) {
            pane_view->closeLauncher();
            v->removeFilter(line);
            updateTab(v);
            return QString();
        }
        promptNext(QStringLiteral("Edit Filter:"), filterLineName(v, line),
                   [this] { promptForFilterList(false); });
        promptForFilterText(line, false);
        return QString();
    };
    Launcher* launcher = prompt(step);
    connect(launcher, &Launcher::selectionChangedSignal, this, [this](const QString& response) {
        if (TableView* v = currentView()) {
            const FilterLine line = lineFromKey(response.section(u'|', 0, 0));
            if (line.kind == FilterLine::kInvalid)
                clearFilterHighlight(v);
            else
                highlightFilterLine(v, line);
        }
    });
    connect(launcher, &Launcher::launcherClosedSignal, this,
            [this] { clearFilterHighlight(currentView()); });
}

void MainWindow::commandAddFilter() {
    promptForFilterLine(false, QString());
}

void MainWindow::commandAddFilterWithRegularExpressions() {
    promptForFilterLine(true, QString());
}

void MainWindow::commandViewEditFilters() {
    promptForFilterList(false);
}

void MainWindow::filterMainCellLine(bool row, bool with_regex) {
    TableView* view = currentView();
    if (!view) return;
    if (view->isEditing()) view->stopEditing();
    const TableModel& m = *view->model();
    const Range main = m.mainCell();
    const FilterLine line =
        row ? FilterLine::forRow(m.tableData().rawRowFromModel(std::max(main.row, 0)))
            : FilterLine::forColumn(m.tableData().rawColumnFromModel(std::max(main.col, 0)));
    promptForFilterText(line, with_regex);
}

void MainWindow::commandFilterSelectedRow() {
    filterMainCellLine(true, false);
}

void MainWindow::commandFilterSelectedColumn() {
    filterMainCellLine(false, false);
}

void MainWindow::commandFilterSelectedRowWithRegularExpressions() {
    filterMainCellLine(true, true);
}

void MainWindow::commandFilterSelectedColumnWithRegularExpressions() {
    filterMainCellLine(false, true);
}

void MainWindow::filterWithCellContents(bool rows) {
    if (TableView* view = currentView()) {
        const QString refused = view->filterSelectedWithCellContents(rows);
        if (!refused.isEmpty()) MsgBox::inform(this, QStringLiteral("Gridmere"), refused);
        updateTab(view);
    }
}

void MainWindow::commandFilterSelectedRowsWithSelectedCellContents() {
    filterWithCellContents(true);
}

void MainWindow::commandFilterSelectedColumnsWithSelectedCellContents() {
    filterWithCellContents(false);
}

void MainWindow::commandRemoveIndividualFilters() {
    promptForFilterList(true);
}

void MainWindow::commandRemoveAllFilters() {
    if (TableView* view = currentView()) {
        view->removeAllFilters();
        updateTab(view);
    }
}

void MainWindow::commandRefreshFilters() {
    if (TableView* view = currentView()) {
        view->refreshFilters();
        updateTab(view);
    }
}
