// "Column Lookup": a chain of prompts (source file, its key and value
// columns, destination file, its key column, insert or overwrite, where to
// write, the text for rows without a match) that ends in one
// ColumnLookupCommand on the destination's undo stack.

#include "app/launcher.h"
#include "app/mainwindow.h"
#include "app/paneview.h"
#include "edit/addressparsers.h"
#include "edit/commands/columnlookupcommand.h"
#include "view/lookupmap.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>

#include <algorithm>

namespace {

const QString kFromFileText = QStringLiteral("Select the File to Look Up Data From:");
const QString kFromKeyText = QStringLiteral("Enter the Source Key Column:");
const QString kFromValuesText = QStringLiteral("Enter the Source Value Column(s):");
const QString kToFileText = QStringLiteral("Select the File to Write Data To:");
const QString kToKeyText = QStringLiteral("Enter the Destination Key Column:");
const QString kInsertText =
    QStringLiteral("Do you want to insert new columns or overwrite existing columns?");
const QString kToValueText = QStringLiteral("Enter the Destination Value Column:");
const QString kMismatchText = QStringLiteral("Enter the value for cells with mismatched keys:");

const QString kFileGuide = QStringLiteral("Press enter for current file.");
const QString kSelectedColumnGuide =
    QStringLiteral("For selected column, leave blank and hit enter.");

const QString kChooseFileError = QStringLiteral("Choose one of the open files.");
const QString kColumnError = QStringLiteral("Must input a column.");
const QString kOneColumnError = QStringLiteral("Must input a single column.");

QString fileName(TableView* view) {
    const QString path = view->model()->tableData().filepath();
    return path.isEmpty() ? QStringLiteral("untitled") : QFileInfo(path).fileName();
}

} // namespace

// ---- Helpers ----

std::vector<OptionData> MainWindow::lookupFileOptions() const {
    std::vector<OptionData> options;
    TableView* current = currentView();
    auto add = [&](size_t i) {
        TableView* view = table_views[i];
        QString name = fileName(view);
        if (view == current) name += QStringLiteral(" (Current file)");
        options.push_back({name,
                           {},
                           {},
                           QDir::toNativeSeparators(view->model()->tableData().filepath()),
                           QString::number(i)});
    };
    for (size_t i = 0; i < table_views.size(); ++i)
        if (table_views[i] == current) add(i);
    for (size_t i = 0; i < table_views.size(); ++i)
        if (table_views[i] != current) add(i);
    return options;
}

TableView* MainWindow::lookupFileFromAnswer(const QString& answer) const {
    if (answer.trimmed().isEmpty()) return currentView();
    bool ok = false;
    const int index = answer.trimmed().toInt(&ok);
    if (!ok || index < 0 || size_t(index) >= table_views.size()) return nullptr;
    return table_views[size_t(index)];
}

std::vector<int> MainWindow::lookupColumns(TableView* view, const QString& text,
                                           int all_but) const {
    std::vector<int> out;
    if (!view) return out;
    const TableModel* m = view->model();
    if (all_but != -2 && text.trimmed() == u"*") {
        // Every column of the data as shown, left to right, but the key.
        for (int c = 0; c < m->tableData().numModelColumns(); ++c) {
            const int raw = m->tableData().rawColumnFromModel(c);
            if (raw != all_but) out.push_back(raw);
        }
        return out;
    }
    QList<int> labels;
    QString label;
    parseColumnList(labels, label, text, m->columnsAsLetters());
    const int base = m->columnsAsLetters() ? 1 : m->firstColIndex();
    for (int n : labels) {
        // A column before the first is out of range: it stays, as -1, so
        // that the lookup finds nothing to do rather than another column.
        out.push_back(m->tableData().rawColumnFromModel(n - base));
    }
    return out;
}

QString MainWindow::readOneLookupColumn(TableView* view, const QString& answer, int& col) const {
    if (answer.trimmed().isEmpty()) return QString();
    const std::vector<int> cols = lookupColumns(view, answer, -2);
    if (cols.empty()) return kColumnError;
    if (cols.size() > 1) return kOneColumnError;
    col = cols.front();
    return QString();
}

void MainWindow::highlightLookupColumns(TableView* view, const QString& text, int all_but) {
    if (!view) return;
    TableModel* m = view->model();
    std::vector<int> shown;
    for (int raw : lookupColumns(view, text, all_but)) {
        const int c = m->tableData().modelColumnFromRaw(raw);
        if (c >= 0 && c < m->columnCount()) shown.push_back(c);
    }
    if (shown.empty()) {
        if (column_lookup.kept_main.kind != Range::Invalid)
            m->setMainAndSelection(column_lookup.kept_main, column_lookup.kept_selection);
        view->viewport()->update();
        return;
    }
    RangeVector ranges;
    for (int c : shown) {
        Range r = Range::line(c, Range::Column, Range::Model);
        ranges.push_back(r);
    }
    const int row = std::max(m->mainCell().row, 0);
    ranges.front().is_main = true;
    ranges.front().main_offset = row;
    m->setMainAndSelection(Range(row, shown.front(), Range::Model), ranges);
    // A tab not on screen has no width to scroll by yet.
    if (view->isVisible()) view->scrollToCol(shown.front());
    view->viewport()->update();
}

void MainWindow::promptForLookupColumn(const QString& prompt_text, const QString& guide,
                                       TableView* view, void (MainWindow::*edited)(QString),
                                       QString (MainWindow::*received)(QString)) {
    if (view) {
        column_lookup.kept_selection = view->model()->selectionRanges();
        column_lookup.kept_main = view->model()->mainCell();
    }
    PromptStep step;
    step.prompt = prompt_text;
    step.guide = guide;
    step.accept = [this, shown = QPointer<TableView>(view), received](const QString& answer) {
        // The highlight goes: a blank answer means the column selected
        // before the step, and the next step starts from that selection.
        if (shown && column_lookup.kept_main.kind != Range::Invalid) {
            shown->model()->setMainAndSelection(column_lookup.kept_main,
                                                column_lookup.kept_selection);
            shown->viewport()->update();
        }
        return (this->*received)(answer);
    };
    step.setup = [this, edited](Launcher* launcher) {
        connect(launcher->editor(), &QLineEdit::textEdited, this,
                [this, edited](const QString& text) { (this->*edited)(text); });
    };
    prompt(step);
}

// ---- The chain ----

void MainWindow::commandColumnLookup() {
    if (table_views.empty()) return;
    if (TableView* view = currentView(); view && view->isEditing()) view->stopEditing();
    column_lookup = ColumnLookupAnswers();
    // The answers live as long as the chain's launcher: closing it at any
    // step, or its end, drops them.
    connect(
        pane_view, &PaneView::launcherDestroyedSignal, this,
        [this] { column_lookup = ColumnLookupAnswers(); }, Qt::SingleShotConnection);
    onColumnLookupFromFilePrompt();
}

void MainWindow::promptForLookupFile(const QString& prompt_text,
                                     QString (MainWindow::*received)(QString)) {
    PromptStep step;
    step.prompt = prompt_text;
    step.guide = kFileGuide;
    step.options = lookupFileOptions();
    step.accept = [this, received](const QString& answer) { return (this->*received)(answer); };
    prompt(step);
}

void MainWindow::onColumnLookupFromFilePrompt() {
    promptForLookupFile(kFromFileText, &MainWindow::onColumnLookupFromFilePromptReceived);
}

QString MainWindow::onColumnLookupFromFilePromptReceived(QString answer) {
    TableView* source = lookupFileFromAnswer(answer);
    if (!source) return kChooseFileError;
    column_lookup.source = source;
    promptNext(kFromFileText, fileName(source), [this] { onColumnLookupFromFilePrompt(); });
    onColumnLookupFromKeyColPrompt();
    return QString();
}

void MainWindow::onColumnLookupFromKeyColPrompt() {
    promptForLookupColumn(kFromKeyText, kSelectedColumnGuide, column_lookup.source,
                          &MainWindow::onColumnLookupFromKeyColPromptEdited,
                          &MainWindow::onColumnLookupFromKeyColPromptReceived);
}

void MainWindow::onColumnLookupFromKeyColPromptEdited(QString text) {
    highlightLookupColumns(column_lookup.source, text, -2);
}

QString MainWindow::onColumnLookupFromKeyColPromptReceived(QString answer) {
    TableView* source = column_lookup.source;
    if (!source) return kChooseFileError;
    int col = source->model()->tableData().rawColumnFromModel(source->model()->mainCell().col);
    if (const QString error = readOneLookupColumn(source, answer, col); !error.isEmpty())
        return error;
    column_lookup.source_key_col = col;
    promptNext(kFromKeyText, answer, [this] { onColumnLookupFromKeyColPrompt(); });
    onColumnLookupFromValueColsPrompt();
    return QString();
}

void MainWindow::onColumnLookupFromValueColsPrompt() {
    promptForLookupColumn(
        kFromValuesText,
        kSelectedColumnGuide + QStringLiteral("<br>For all columns except the key column, type *."),
        column_lookup.source, &MainWindow::onColumnLookupFromValueColsPromptEdited,
        &MainWindow::onColumnLookupFromValueColsPromptReceived);
}

void MainWindow::onColumnLookupFromValueColsPromptEdited(QString text) {
    highlightLookupColumns(column_lookup.source, text, column_lookup.source_key_col);
}

QString MainWindow::onColumnLookupFromValueColsPromptReceived(QString answer) {
    TableView* source = column_lookup.source;
    if (!source) return kChooseFileError;
    std::vector<int> cols;
    if (answer.trimmed().isEmpty()) {
        cols.push_back(
            source->model()->tableData().rawColumnFromModel(source->model()->mainCell().col));
    } else {
        cols = lookupColumns(source, answer, column_lookup.source_key_col);
        if (cols.empty()) return kColumnError;
    }
    column_lookup.source_value_cols = cols;
    promptNext(kFromValuesText, answer, [this] { onColumnLookupFromValueColsPrompt(); });
    onColumnLookupToFilePrompt();
    return QString();
}

void MainWindow::onColumnLookupToFilePrompt() {
    promptForLookupFile(kToFileText, &MainWindow::onColumnLookupToFilePromptReceived);
}

QString MainWindow::onColumnLookupToFilePromptReceived(QString answer) {
    TableView* destination = lookupFileFromAnswer(answer);
    if (!destination) return kChooseFileError;
    if (destination->model()->isReadOnly())
        return QStringLiteral("The file is read-only: choose another one.");
    column_lookup.destination = destination;
    promptNext(kToFileText, fileName(destination), [this] { onColumnLookupToFilePrompt(); });
    onColumnLookupToKeyColPrompt();
    return QString();
}

void MainWindow::onColumnLookupToKeyColPrompt() {
    promptForLookupColumn(
        kToKeyText, QStringLiteral("For the first column, leave blank and hit enter."),
        column_lookup.destination, &MainWindow::onColumnLookupToKeyColPromptEdited,
        &MainWindow::onColumnLookupToKeyColPromptReceived);
}

void MainWindow::onColumnLookupToKeyColPromptEdited(QString text) {
    highlightLookupColumns(column_lookup.destination, text, -2);
}

QString MainWindow::onColumnLookupToKeyColPromptReceived(QString answer) {
    TableView* destination = column_lookup.destination;
    if (!destination) return kChooseFileError;
    int col = destination->model()->tableData().rawColumnFromModel(0);
    if (const QString error = readOneLookupColumn(destination, answer, col); !error.isEmpty())
        return error;
    column_lookup.destination_key_col = col;
    promptNext(kToKeyText, answer, [this] { onColumnLookupToKeyColPrompt(); });
    onColumnLookupInsertNewColsPrompt();
    return QString();
}

void MainWindow::onColumnLookupInsertNewColsPrompt() {
    prompt(optionStep(kInsertText, QString(),
                      {{QStringLiteral("Insert new columns"), {}, {}, {}, {}},
                       {QStringLiteral("Overwrite existing columns"), {}, {}, {}, {}}},
                      [this](int index, const QString& answer) {
                          onColumnLookupInsertNewColsPromptReceived(index, answer);
                      }));
}

void MainWindow::onColumnLookupInsertNewColsPromptReceived(int index, QString answer) {
    column_lookup.insert_new_cols = index == 0;
    promptNext(kInsertText, answer, [this] { onColumnLookupInsertNewColsPrompt(); });
    if (column_lookup.insert_new_cols)
        onColumnLookupHandleMismatchesPrompt();
    else
        onColumnLookupToValueColPrompt();
}

void MainWindow::onColumnLookupToValueColPrompt() {
    promptForLookupColumn(
        kToValueText,
        QStringLiteral("For the first column after the key column, leave blank and hit enter."),
        column_lookup.destination, &MainWindow::onColumnLookupToValueColPromptEdited,
        &MainWindow::onColumnLookupToValueColPromptReceived);
}

void MainWindow::onColumnLookupToValueColPromptEdited(QString text) {
    highlightLookupColumns(column_lookup.destination, text, -2);
}

QString MainWindow::onColumnLookupToValueColPromptReceived(QString answer) {
    TableView* destination = column_lookup.destination;
    if (!destination) return kChooseFileError;
    // A blank answer: the column shown after the key column.
    const TableModel* m = destination->model();
    const int key = m->tableData().modelColumnFromRaw(column_lookup.destination_key_col);
    int col = key < 0 ? column_lookup.destination_key_col + 1
                      : m->tableData().rawColumnFromModel(key + 1);
    if (const QString error = readOneLookupColumn(destination, answer, col); !error.isEmpty())
        return error;
    column_lookup.destination_value_col = col;
    promptNext(kToValueText, answer, [this] { onColumnLookupToValueColPrompt(); });
    onColumnLookupHandleMismatchesPrompt();
    return QString();
}

void MainWindow::onColumnLookupHandleMismatchesPrompt() {
    promptForText(kMismatchText, QStringLiteral("To leave them empty, leave blank and hit enter."),
                  [this](const QString& answer) {
                      return onColumnLookupHandleMismatchesPromptReceived(answer);
                  });
}

QString MainWindow::onColumnLookupHandleMismatchesPromptReceived(QString answer) {
    ColumnLookupAnswers answers = column_lookup;
    answers.mismatch = answer;
    pane_view->closeLauncher();
    runColumnLookup(answers);
    return QString();
}

// ---- The lookup ----

void MainWindow::runColumnLookup(const ColumnLookupAnswers& answers) {
    TableView* source = answers.source;
    TableView* destination = answers.destination;
    if (!source || !destination || destination->model()->isReadOnly()) return;
    if (destination->isEditing()) destination->stopEditing();
    if (source->isEditing()) source->stopEditing();
    TableModel* from = source->model();
    TableModel* to = destination->model();
    const LookupMap map = from->buildLookupMap(answers.source_key_col, answers.source_value_cols,
                                               from->numHeaderRows());
    if (!map.isValid()) return;
    const int first_value_col =
        answers.insert_new_cols ? answers.destination_key_col + 1 : answers.destination_value_col;
    RangeVector cells;
    to->lookupRanges(cells, map, answers.destination_key_col, first_value_col, answers.mismatch,
                     to->numHeaderRows(), answers.insert_new_cols);
    if (cells.empty()) return;
    // The step shows where it lands: a destination in another tab comes to
    // the front first, so that the grid scrolls to the new cells as it
    // would for any edit.
    if (destination != currentView()) setCurrentView(destination);
    destination->pushCommand(new ColumnLookupCommand(to, std::move(cells), to->selectionRanges(),
                                                     answers.insert_new_cols, false));
    updateTab(destination);
}
