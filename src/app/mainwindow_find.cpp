// The find bar and its commands: find, replace, find all, and the matches as
// a selection.

#include "app/findreplacewidget.h"
#include "app/mainwindow.h"
#include "app/paneview.h"
#include "edit/findmatcher.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/msgbox.h"

#include <QLayout>
#include <QLineEdit>

void MainWindow::buildFindBar(QLayout* under_tables) {
    find_bar = new FindReplaceWidget(this);
    find_bar->setTheme(theme);
    find_bar->hide();
    find_results = new FindResultsWidget(this);
    find_results->setMaximumHeight(220);
    find_results->hide();
    under_tables->addWidget(find_bar);
    under_tables->addWidget(find_results);
    connect(find_bar, &FindReplaceWidget::findReplaceEditedSignal, this,
            &MainWindow::onFindReplaceEdited);
    connect(find_bar, &FindReplaceWidget::closeButtonClickedSignal, this,
            &MainWindow::closeFindReplace);
    connect(find_bar, &FindReplaceWidget::findNextSignal, this, &MainWindow::commandFindNextMatch);
    connect(find_bar, &FindReplaceWidget::findPrevSignal, this, &MainWindow::commandFindPrevMatch);
    connect(find_bar, &FindReplaceWidget::findAllSignal, this, &MainWindow::commandFindAllMatches);
    connect(find_bar, &FindReplaceWidget::replaceNextSignal, this,
            &MainWindow::commandReplaceNextMatch);
    connect(find_bar, &FindReplaceWidget::replacePrevSignal, this,
            &MainWindow::commandReplacePreviousMatch);
    connect(find_bar, &FindReplaceWidget::replaceAllSignal, this,
            &MainWindow::commandReplaceAllMatches);
    connect(find_results, &FindResultsWidget::closeButtonClickedSignal, find_results,
            &QWidget::hide);
    connect(find_results, &FindResultsWidget::resultSelectedSignal, this, [this](int index) {
        if (index >= 0 && size_t(index) < find_all_cells.size())
            onFindAllResultSelected(find_all_cells[size_t(index)]);
    });
}

void MainWindow::openFindBar(bool replace) {
    TableView* view = currentView();
    if (!view) return;
    if (view->isEditing()) view->stopEditing();
    // A fresh bar starts from the main cell's text.
    if (find_bar->isHidden() && find_bar->findField()->text().isEmpty())
        find_bar->setFindText(
            view->model()->cellText(view->model()->mainCell().row, view->model()->mainCell().col));
    find_bar->setReplaceMode(replace);
    find_bar->show();
    removeContext(replace ? FindMode : ReplaceMode);
    addContext(Context(FindPanelOpen | (replace ? ReplaceMode : FindMode)));
    find_bar->focusFindField();
    onFindReplaceEdited(find_bar->query());
}

void MainWindow::commandFindPrompt() {
    openFindBar(false);
}
void MainWindow::commandReplacePrompt() {
    openFindBar(true);
}

void MainWindow::closeFindReplace() {
    find_bar->hide();
    find_results->hide();
    removeContext(FindPanelOpen);
    // The highlight goes with the bar.
    for (TableView* v : table_views)
        v->setFindQuery({});
    if (TableView* v = currentView()) v->setFocus(Qt::OtherFocusReason);
}

void MainWindow::onFindReplaceEdited(FindReplaceQuery query) {
    if (TableView* v = currentView()) v->setFindQuery(query);
}

FindReplaceQuery MainWindow::barQuery() const {
    return find_bar ? find_bar->query() : FindReplaceQuery();
}

void MainWindow::onNoMatch(const QString& find_str) {
    MsgBox::inform(this, QStringLiteral("Gridmere"),
                   QStringLiteral("No matches found for \"%1\".").arg(find_str));
}

void MainWindow::commandFindNextMatch() {
    if (TableView* v = currentView()) v->findMatch(barQuery(), false);
}

void MainWindow::commandFindPrevMatch() {
    if (TableView* v = currentView()) v->findMatch(barQuery(), true);
}

void MainWindow::commandReplaceNextMatch() {
    if (TableView* v = currentView()) v->replaceMatch(barQuery(), false);
}

void MainWindow::commandReplacePreviousMatch() {
    if (TableView* v = currentView()) v->replaceMatch(barQuery(), true);
}

void MainWindow::commandReplaceAllMatches() {
    if (TableView* v = currentView()) v->replaceAllMatches(barQuery());
}

void MainWindow::commandSelectAllMatches() {
    if (TableView* v = currentView()) v->selectAllMatches(barQuery());
}

void MainWindow::commandAddNextMatchToSelection() {
    TableView* v = currentView();
    if (!v) return;
    // With the bar closed the main cell's own text is looked for.
    const FindReplaceQuery query = barQuery();
    const bool open = find_bar && find_bar->isVisible();
    // The bar takes the text for the next time it opens.
    if (!open)
        find_bar->setFindText(
            v->model()->cellText(v->model()->mainCell().row, v->model()->mainCell().col));
    if (v->model()->addNextMatch(open ? &query : nullptr)) v->scrollToMainCell(true, false);
    v->viewport()->update();
}

void MainWindow::commandFindAllMatches() {
    TableView* v = currentView();
    if (!v) return;
    const FindReplaceQuery query = barQuery();
    find_all_cells = v->findAllMatches(query);
    TableModel* m = v->model();
    const FindMatcher matcher(query);
    const QString open = QStringLiteral("<b style=\"color:%1;\">")
                             .arg(theme.color(Theme::FuzzySearchHighlightedTextColor).name());
    QStringList labels, texts;
    const int listed = std::min<int>(int(find_all_cells.size()), FindResultsWidget::kMaxListed);
    for (int i = 0; i < listed; ++i) {
        const Range& cell = find_all_cells[size_t(i)];
        labels << QStringLiteral("r%1 c%2:")
                      .arg(m->rowLabel(cell.row))
                      .arg(m->columnLabelText(cell.col));
        const QString text = m->cellText(cell.row, cell.col);
        std::vector<FindMatcher::Span> spans;
        matcher.findInText(text, &spans);
        QString marked;
        int at = 0;
        for (const auto& span : spans) {
            if (span.first < at || span.second == 0) continue;
            marked += text.mid(at, span.first - at).toHtmlEscaped() + open +
                      text.mid(span.first, span.second).toHtmlEscaped() + QStringLiteral("</b>");
            at = span.first + span.second;
        }
        texts << marked + text.mid(at).toHtmlEscaped();
    }
    find_results->setResults(int(find_all_cells.size()), labels, texts);
    find_results->show();
}

void MainWindow::onFindAllResultSelected(Range cell) {
    TableView* v = currentView();
    if (!v || cell.row >= v->model()->rowCount() || cell.col >= v->model()->columnCount()) return;
    v->model()->selectSingleCell(cell);
    v->scrollToMainCell(true, false);
}
