// The command palette and every question a command asks through the launcher.

#include "app/launcher.h"
#include "app/mainwindow.h"
#include "app/paneview.h"
#include "commands/commandtable.h"
#include "commands/preferencefiles.h"
#include "commands/settings.h"
#include "data/fileparameters.h"
#include "edit/addressparsers.h"
#include "edit/commands/setdelimitercommand.h"
#include "edit/commands/setencodingcommand.h"
#include "edit/commands/setlineendingcommand.h"
#include "edit/commands/setparsingstandardcommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QAction>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>

namespace {

using namespace SettingId;

const QString kWholeNumberError = QStringLiteral("Must be a whole number.");
const QString kNonNegativeError = QStringLiteral("Must be a whole number 0 or greater.");
const QString kPositiveError = QStringLiteral("Must be a whole number 1 or greater.");

QString shortcutText(const QAction* action) {
    QStringList parts;
    for (const QKeySequence& sequence : action->shortcuts())
        parts << sequence.toString(QKeySequence::NativeText);
    return parts.join(QStringLiteral(" | "));
}

// What a typed number must be for a setting of `data_type`; empty when fine.
QString integerError(int data_type, const QString& text) {
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    switch (data_type) {
    case Setting::NonNegativeIntegerType:
        return ok && value >= 0 ? QString() : kNonNegativeError;
    case Setting::PositiveIntegerType:
        return ok && value >= 1 ? QString() : kPositiveError;
    default:
        return ok ? QString() : kWholeNumberError;
    }
}

std::vector<OptionData> namesAsOptions(const QStringList& names) {
    std::vector<OptionData> options;
    options.reserve(size_t(names.size()));
    for (const QString& name : names)
        options.push_back({name, {}, {}, {}, {}});
    return options;
}

std::vector<OptionData> delimiterOptions(bool with_auto) {
    std::vector<OptionData> options;
    if (with_auto) options.push_back({QStringLiteral("Auto-detect"), {}, {}, {}, "(auto)"});
    for (const char* d : {",", "\t", ";", "|", " ", ":"})
        options.push_back({delimiterLongName(QString::fromLatin1(d)),
                           {},
                           {},
                           {},
                           QString::fromLatin1(d) == u"\t"  ? QStringLiteral("tab")
                           : QString::fromLatin1(d) == u" " ? QStringLiteral("space")
                                                            : QString::fromLatin1(d)});
    options.push_back({QStringLiteral("No delimiter"), {}, {}, {}, "(none)"});
    return options;
}

const QString kDelimiterGuide =
    QStringLiteral("Choose one, or type a single character (<b>tab</b> and <b>space</b> by name).");
const QString kDelimiterError = QStringLiteral("Must be a single character, \"tab\", \"space\" or "
                                               "\"(none)\".");

} // namespace

Launcher* MainWindow::prompt(const PromptStep& step) {
    auto* launcher = new Launcher(pane_view->currentSettings(), pane_view);
    launcher->setPrompt(step.prompt);
    if (!step.guide.isEmpty()) launcher->setGuide(step.guide);
    launcher->setOptions(step.options);
    if (!step.preset.isEmpty()) launcher->setEditorText(step.preset, true);
    if (TableView* view = currentView()) launcher->setCurrentFile(view->model()->file().fileName());
    if (step.setup) step.setup(launcher);
    launcher->resizeWithExtra();
    // The answer is for the table the question was about, though the user
    // may have gone to another tab meanwhile; one closed meanwhile takes the
    // question with it.
    const QPointer<TableView> asked_of = currentView();
    const bool about_a_table = asked_of;
    connect(launcher, &Launcher::launcherResponseSignal, this,
            [this, step, asked_of, about_a_table](const QString& answer) {
        if (about_a_table && !asked_of) {
            pane_view->closeLauncher();
            return;
        }
        if (asked_of && asked_of != currentView()) setCurrentView(asked_of);
        const QString error = step.accept ? step.accept(answer) : QString();
        if (error.isEmpty()) return;
        // The same question again, the error in place of the guide and the
        // answer still there to correct.
        PromptStep again = step;
        again.guide = error;
        again.preset = answer;
        prompt(again);
    });
    pane_view->setLauncher(launcher);
    return launcher;
}

void MainWindow::promptNext(const QString& answered_prompt, const QString& answer,
                            std::function<void()> ask_again) {
    PrevOptionWidget* strip = pane_view->addPrevOption(answered_prompt, answer);
    connect(strip, &PrevOptionWidget::expandThisSignal, this, std::move(ask_again));
}

// ---- The command palette ----

void MainWindow::commandCommandLauncher() {
    TableView* view = currentView();
    if (view && view->isEditing()) view->stopEditing();
    const Settings table_settings =
        view ? Settings::tableSnapshot(*settings, *view->model()) : *settings;
    std::vector<OptionData> options;
    for (const CommandRecord* record : command_table->launcherRecords()) {
        OptionData option{displayName(*record), {}, shortcutText(record->action), {}, {}};
        if (record->setting < SettingId::Count) {
            const Settings& source =
                record->kind == CommandRecord::TableSetting ? table_settings : *settings;
            option.pill1 = source.record(record->setting).displayText();
        }
        options.push_back(std::move(option));
    }
    PromptStep step;
    step.prompt = QStringLiteral("Command:");
    step.options = std::move(options);
    step.accept = [this](const QString& answer) {
        onCommandLauncherResponseReceived(answer);
        return QString();
    };
    prompt(step);
}

void MainWindow::onCommandLauncherResponseReceived(QString response) {
    pane_view->closeLauncher();
    if (response.isEmpty()) return;
    for (const CommandRecord* record : command_table->sorted()) {
        if (displayName(*record) != response) continue;
        record->action->activate(QAction::Trigger);
        return;
    }
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && (context & LauncherOpen)) {
        pane_view->closeLauncher();
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_Escape && (context & FindPanelOpen)) {
        closeFindReplace();
        event->accept();
        return;
    }
    // With nothing else open, Esc leaves the main cell alone selected.
    if (event->key() == Qt::Key_Escape && (context & MultiCellSelection)) {
        if (TableView* v = currentView()) {
            v->model()->selectSingleCell(v->model()->mainCell());
            v->viewport()->update();
            event->accept();
            return;
        }
    }
    QWidget::keyPressEvent(event);
}

// ---- Addresses ----

QString MainWindow::cellAddressGuide() const {
    TableView* view = currentView();
    if (view && view->model()->columnsAsLetters())
        return QStringLiteral("Examples:<br><b>25</b> -> Row 25, Current Column<br><b>A8</b> or "
                              "<b>8a</b> -> Row 8, Column A<br><b>25 AB</b> or <b>ab25</b> or "
                              "<b>ab, 25</b> -> Row 25, Column AB");
    return QStringLiteral("Examples:<br><b>25</b> or <b>r25</b> or <b>row25</b> -> Row 25, Current "
                          "Column<br><b>c8</b> or <b>col8</b> -> Column 8, Current Row<br><b>25 "
                          "8</b> or <b>r25, c8</b> or <b>c8 25</b> -> Row 25, Column 8");
}

bool MainWindow::readCellAddress(const QString& text, int& row, int& col) const {
    TableView* view = currentView();
    if (!view) return false;
    TableModel* m = view->model();
    row = -1;
    col = -1;
    parseCellAddress(row, col, text, m->columnsAsLetters(), true);
    if (row == -1 && col == -1) return false;
    // Labels count from the first index; the model from 0. Anything beyond
    // the table is taken to its edge.
    const Range main = m->mainCell();
    row = row == -1 ? main.row : row - m->firstRowIndex();
    col = col == -1 ? main.col : col - (m->columnsAsLetters() ? 1 : m->firstColIndex());
    row = std::clamp(row, 0, std::max(0, m->rowCount() - 1));
    col = std::clamp(col, 0, std::max(0, m->columnCount() - 1));
    return true;
}

void MainWindow::promptForCell(const QString& prompt_text,
                               std::function<void(TableView*, int, int)> act) {
    PromptStep step;
    step.prompt = prompt_text;
    step.guide = cellAddressGuide();
    step.accept = [this, act](const QString& answer) {
        int row = -1, col = -1;
        if (!readCellAddress(answer, row, col))
            return QStringLiteral("Must input a cell address, a row or a column.");
        if (TableView* view = currentView()) act(view, row, col);
        return QString();
    };
    prompt(step);
}

bool MainWindow::readLineAddress(const QString& text, bool rows, int& line) const {
    TableView* view = currentView();
    if (!view) return false;
    TableModel* m = view->model();
    int row = -1, col = -1;
    if (rows) {
        parseRowFirst(row, col, text);
        if (row == -1) return false;
        line = row - m->firstRowIndex();
    } else {
        // Letters name a column only where the headers show letters; "A" is 1.
        const int lettered =
            m->columnsAsLetters() ? columnLettersToIndex(text.trimmed().toUpper()) : -1;
        if (lettered == -1)
            parseColumnFirst(row, col, text);
        else
            col = lettered;
        if (col == -1) return false;
        line = col - (m->columnsAsLetters() ? 1 : m->firstColIndex());
    }
    const int count = rows ? m->rowCount() : m->columnCount();
    line = std::clamp(line, 0, std::max(0, count - 1));
    return true;
}

void MainWindow::promptForLine(const QString& prompt_text, bool rows,
                               const std::function<void(TableView*, int)>& act) {
    if (!transformTarget()) return;
    promptForText(prompt_text, QString(), [this, rows, act](const QString& answer) {
        int line = -1;
        if (!readLineAddress(answer, rows, line))
            return rows ? QStringLiteral("Must input a row.")
                        : QStringLiteral("Must input a column.");
        runTransform([act, line](TableView* v) { act(v, line); });
        return QString();
    });
}

void MainWindow::promptForCount(const QString& prompt_text, int minimum,
                                const std::function<void(TableView*, int)>& act,
                                const std::function<QString(TableView*, int)>& refuse) {
    if (!transformTarget()) return;
    const int type = minimum > 0 ? Setting::PositiveIntegerType : Setting::NonNegativeIntegerType;
    promptForText(prompt_text, QString(), [this, act, refuse, type](const QString& answer) {
        QString error = integerError(type, answer);
        const int n = answer.trimmed().toInt();
        TableView* view = currentView();
        if (error.isEmpty() && refuse && view) error = refuse(view, n);
        if (!error.isEmpty()) return error;
        runTransform([act, n](TableView* v) { act(v, n); });
        return QString();
    });
}

void MainWindow::commandGoToCell() {
    promptForCell(QStringLiteral("Go to Cell:"), [](TableView* view, int row, int col) {
        view->model()->selectSingleCell(Range(row, col, Range::Model));
        view->scrollToMainCell(true, false);
    });
}

void MainWindow::commandSelectFromMainCellTo() {
    promptForCell(QStringLiteral("Select From Main Cell To:"),
                  [](TableView* view, int row, int col) {
                      TableModel* m = view->model();
                      const Range main = m->mainCell();
                      Range block = Range::wholeTable(Range::Model);
                      block.row = std::min(main.row, row);
                      block.row_end = std::max(main.row, row);
                      block.col = std::min(main.col, col);
                      block.col_end = std::max(main.col, col);
                      m->setMainAndSelection(main, RangeVector{block});
                      view->scrollToRow(row);
                      view->scrollToCol(col);
                  });
}

void MainWindow::commandMoveCellContentsTo() {
    promptForCell(QStringLiteral("Move to Cell:"), [](TableView* view, int row, int col) {
        TableModel* m = view->model();
        view->onMoveCellContentsAbsolute(m->selectionRanges(), m->mainCell(), row, col);
    });
}

void MainWindow::commandDuplicateCellContentsTo() {
    promptForCell(QStringLiteral("Duplicate Cell Contents To:"),
                  [](TableView* view, int row, int col) { view->duplicateCellContentsTo(row, col); });
}

// ---- Settings that take a value ----

void MainWindow::setGlobalSettingFromText(int id, const QString& text) {
    settings->setFromText(id, text);
    if (preference_files) preference_files->writeSetting(id, *settings);
    applySettings();
}

void MainWindow::promptForSetting(int id, std::vector<OptionData> options, QString guide) {
    const Setting& record = settings->record(id);
    const bool table_scope = record.scope == Setting::TableScope;
    TableView* view = currentView();
    if (table_scope && !view) return;
    const Settings source =
        table_scope ? Settings::tableSnapshot(*settings, *view->model()) : *settings;
    PromptStep step;
    step.prompt = record.name + u':';
    step.options = std::move(options);
    step.guide = guide.isEmpty() ? QStringLiteral("Current value: <b>%1</b>")
                                       .arg(source.record(id).displayText().toHtmlEscaped())
                                 : guide;
    if (step.options.empty()) step.preset = source.valueAsString(id);
    const int data_type = record.data_type;
    step.accept = [this, id, data_type, table_scope](const QString& answer) {
        if (data_type == Setting::NonNegativeIntegerType ||
            data_type == Setting::PositiveIntegerType || data_type == Setting::IntegerType) {
            const QString error = integerError(data_type, answer);
            if (!error.isEmpty()) return error;
        } else if (answer.trimmed().isEmpty()) {
            return QStringLiteral("Must not be blank.");
        }
        if (table_scope)
            applyTableSetting(id, answer.trimmed());
        else
            setGlobalSettingFromText(id, answer.trimmed());
        return QString();
    };
    prompt(step);
}

void MainWindow::applyTableSetting(int id, const QString& text) {
    TableView* view = currentView();
    if (!view) return;
    TableModel* m = view->model();
    const int value = text.toInt();
    switch (id) {
    case FirstRowIndex:
        m->setFirstRowIndex(value);
        break;
    case FirstColumnIndex:
        m->setFirstColIndex(value);
        break;
    case HeaderRows:
        m->setNumHeaderRows(value);
        break;
    case HeaderColumns:
        m->setNumHeaderCols(value);
        break;
    case MaxRowHeightForAutoFit:
        m->max_row_height_for_auto_fit = value;
        view->setMaxRowHeight(value);
        break;
    case MaxColumnWidthForAutoFit:
        m->max_col_width_for_auto_fit = value;
        view->setMaxColWidth(value);
        break;
    default:
        return;
    }
    view->refreshView();
}

void MainWindow::commandSetFont() {
    promptForSetting(Font, namesAsOptions(QFontDatabase::families()));
}
void MainWindow::commandSetTextSize() {
    promptForSetting(TextSize);
}
void MainWindow::commandSetTheme() {
    promptForSetting(SettingId::Theme, namesAsOptions(theme.names()));
}
void MainWindow::commandSetMinimumNumberOfTableRows() {
    promptForSetting(MinTableRows);
}
void MainWindow::commandSetMinimumNumberOfTableColumns() {
    promptForSetting(MinTableColumns);
}
void MainWindow::commandSetNumberOfBufferRows() {
    promptForSetting(BufferRows);
}
void MainWindow::commandSetNumberOfBufferColumns() {
    promptForSetting(BufferColumns);
}
void MainWindow::commandSetDefaultRowHeight() {
    promptForSetting(DefaultRowHeight);
}
void MainWindow::commandSetDefaultColumnWidth() {
    promptForSetting(DefaultColumnWidth);
}
void MainWindow::commandSetMinFileSizeReadOnlyModeQueryMb() {
    promptForSetting(MinFileSizeReadOnlyQueryMb);
}
void MainWindow::commandSetTextEditor() {
    promptForSetting(TextEditor);
}
void MainWindow::commandSetSearchEngine() {
    promptForSetting(SearchEngine);
}
void MainWindow::commandSetOnlineMap() {
    promptForSetting(OnlineMap);
}
void MainWindow::commandSetBehaviorWhenFileIsChangedExternally() {
    promptForSetting(ChangedExternally, {{QStringLiteral("Refresh"), {}, {}, {}, "refresh"},
                                         {QStringLiteral("Ask"), {}, {}, {}, "ask"},
                                         {QStringLiteral("Ignore"), {}, {}, {}, "ignore"}});
}
void MainWindow::commandSetUuidType() {
    promptForSetting(UuidType, {{QStringLiteral("Random (v4)"), {}, {}, {}, "v4"},
                                {QStringLiteral("Time-ordered (v7)"), {}, {}, {}, "v7"}});
}
void MainWindow::commandSetFirstRowIndex() {
    promptForSetting(FirstRowIndex);
}
void MainWindow::commandSetFirstColumnIndex() {
    promptForSetting(FirstColumnIndex);
}
void MainWindow::commandSetNumberOfHeaderRows() {
    promptForSetting(HeaderRows);
}
void MainWindow::commandSetNumberOfHeaderColumns() {
    promptForSetting(HeaderColumns);
}
void MainWindow::commandSetMaximumRowHeightForAutoFit() {
    promptForSetting(MaxRowHeightForAutoFit);
}
void MainWindow::commandSetMaximumColumnWidthForAutoFit() {
    promptForSetting(MaxColumnWidthForAutoFit);
}

// ---- The dialect of the next save and of a reload ----

MainWindow::PromptStep
MainWindow::delimiterStep(const QString& prompt_text, bool for_reload,
                          std::function<void(const QString&, const QString&)> take) {
    PromptStep step;
    step.prompt = prompt_text;
    step.guide = kDelimiterGuide;
    step.options = delimiterOptions(for_reload);
    step.accept = [take, for_reload](const QString& answer) {
        QString delimiter = QStringLiteral("(auto)");
        if (!delimiterFromUserText(answer, delimiter)) return kDelimiterError;
        if (!for_reload && delimiter == u"(auto)") return kDelimiterError;
        take(delimiter, answer);
        return QString();
    };
    return step;
}

MainWindow::PromptStep
MainWindow::encodingStep(const QString& prompt_text,
                         std::function<void(EncodingType, const QString&)> take) {
    PromptStep step;
    step.prompt = prompt_text;
    step.options = namesAsOptions(encodingListNames());
    step.accept = [take](const QString& answer) {
        const EncodingType encoding = encodingFromText(answer);
        if (encoding == UnknownEncoding) return QStringLiteral("Unknown encoding.");
        take(encoding, answer);
        return QString();
    };
    return step;
}

MainWindow::PromptStep
MainWindow::standardStep(const QString& prompt_text,
                         std::function<void(ParsingStandard, const QString&)> take) {
    PromptStep step;
    step.prompt = prompt_text;
    step.options = namesAsOptions(parsingStandardListNames());
    step.accept = [take](const QString& answer) {
        if (!parsingStandardListNames().contains(answer))
            return QStringLiteral("Unknown parsing standard.");
        take(parsingStandardFromText(answer), answer);
        return QString();
    };
    return step;
}

MainWindow::PromptStep
MainWindow::lineEndingStep(const QString& prompt_text,
                           std::function<void(LineEndingType, const QString&)> take) {
    PromptStep step;
    step.prompt = prompt_text;
    step.options = namesAsOptions(lineEndingListNames());
    step.accept = [take](const QString& answer) {
        LineEndingType ending = lineEndingFromText(answer);
        if (answer.compare(QStringLiteral("(platform)"), Qt::CaseInsensitive) == 0)
            ending = platformLineEnding();
        if (ending == InvalidLineEnding) return QStringLiteral("Unknown line ending.");
        take(ending, answer);
        return QString();
    };
    return step;
}

void MainWindow::reloadCurrent(const QString& delimiter, EncodingType encoding,
                               ParsingStandard standard) {
    if (TableView* view = currentView()) reloadWithParameters(view, delimiter, encoding, standard);
}

void MainWindow::commandReloadFileWithDelimiter() {
    TableView* view = currentView();
    if (!view) return;
    const EncodingType encoding = view->model()->encoding();
    const ParsingStandard standard = view->model()->parsingStandard();
    prompt(delimiterStep(QStringLiteral("Reload File with Delimiter:"), true,
                         [this, encoding, standard](const QString& delimiter, const QString&) {
                             reloadCurrent(delimiter, encoding, standard);
                         }));
}

void MainWindow::commandReloadFileWithEncoding() {
    TableView* view = currentView();
    if (!view) return;
    const QString delimiter = view->model()->delimiterOpen();
    const ParsingStandard standard = view->model()->parsingStandard();
    prompt(encodingStep(QStringLiteral("Reload File with Encoding:"),
                        [this, delimiter, standard](EncodingType encoding, const QString&) {
                            reloadCurrent(delimiter, encoding, standard);
                        }));
}

void MainWindow::commandReloadFileWithParsingStandard() {
    TableView* view = currentView();
    if (!view) return;
    const QString delimiter = view->model()->delimiterOpen();
    const EncodingType encoding = view->model()->encoding();
    prompt(standardStep(QStringLiteral("Reload File with Parsing Standard:"),
                        [this, delimiter, encoding](ParsingStandard standard, const QString&) {
                            reloadCurrent(delimiter, encoding, standard);
                        }));
}

// A chain of three questions; each answer travels in the steps after it.
void MainWindow::commandReloadFileWithDifferentParameters() {
    const QString text = QStringLiteral("Delimiter:");
    prompt(delimiterStep(text, true, [this, text](const QString& delimiter, const QString& answer) {
        promptNext(text, answer, [this] { commandReloadFileWithDifferentParameters(); });
        onReloadEncodingPrompt(delimiter);
    }));
}

void MainWindow::onReloadEncodingPrompt(const QString& delimiter) {
    const QString text = QStringLiteral("Encoding:");
    prompt(encodingStep(text, [this, text, delimiter](EncodingType encoding,
                                                      const QString& answer) {
        promptNext(text, answer, [this, delimiter] { onReloadEncodingPrompt(delimiter); });
        prompt(standardStep(QStringLiteral("Parsing Standard:"),
                            [this, delimiter, encoding](ParsingStandard standard, const QString&) {
                                reloadCurrent(delimiter, encoding, standard);
                            }));
    }));
}

void MainWindow::pushOnCurrent(const std::function<TableUndoCommand*(TableModel*)>& make) {
    if (TableView* view = currentView()) {
        view->pushCommand(make(view->model()));
        updateTab(view);
    }
}

void MainWindow::saveDialect(const QString& delimiter, LineEndingType ending, EncodingType encoding,
                             ParsingStandard standard) {
    pushOnCurrent([&](TableModel* m) { return new SetDelimiterCommand(m, delimiter); });
    pushOnCurrent([&](TableModel* m) { return new SetLineEndingCommand(m, ending); });
    pushOnCurrent([&](TableModel* m) { return new SetEncodingCommand(m, encoding); });
    pushOnCurrent([&](TableModel* m) { return new SetParsingStandardCommand(m, standard); });
}

void MainWindow::commandSetDelimiterForFileSave() {
    prompt(delimiterStep(QStringLiteral("Delimiter for File Save:"), false,
                         [this](const QString& delimiter, const QString&) {
                             pushOnCurrent([&](TableModel* m) {
                                 return new SetDelimiterCommand(m, delimiter);
                             });
                         }));
}

void MainWindow::commandSetLineEndingForFileSave() {
    prompt(lineEndingStep(QStringLiteral("Line Ending for File Save:"),
                          [this](LineEndingType ending, const QString&) {
                              pushOnCurrent([&](TableModel* m) {
                                  return new SetLineEndingCommand(m, ending);
                              });
                          }));
}

void MainWindow::commandSetEncodingForFileSave() {
    prompt(encodingStep(
        QStringLiteral("Encoding for File Save:"), [this](EncodingType encoding, const QString&) {
            pushOnCurrent([&](TableModel* m) { return new SetEncodingCommand(m, encoding); });
        }));
}

void MainWindow::commandSetParsingStandardForFileSave() {
    prompt(standardStep(QStringLiteral("Parsing Standard for File Save:"),
                        [this](ParsingStandard standard, const QString&) {
                            pushOnCurrent([&](TableModel* m) {
                                return new SetParsingStandardCommand(m, standard);
                            });
                        }));
}

// Four questions, then one undo step for each value that changes.
void MainWindow::commandSetParametersForFileSave() {
    const QString text = QStringLiteral("Delimiter for File Save:");
    prompt(
        delimiterStep(text, false, [this, text](const QString& delimiter, const QString& answer) {
            promptNext(text, answer, [this] { commandSetParametersForFileSave(); });
            onSaveLineEndingPrompt(delimiter);
        }));
}

void MainWindow::onSaveLineEndingPrompt(const QString& delimiter) {
    const QString text = QStringLiteral("Line Ending for File Save:");
    prompt(
        lineEndingStep(text, [this, text, delimiter](LineEndingType ending, const QString& answer) {
            promptNext(text, answer, [this, delimiter] { onSaveLineEndingPrompt(delimiter); });
            onSaveEncodingPrompt(delimiter, ending);
        }));
}

void MainWindow::onSaveEncodingPrompt(const QString& delimiter, LineEndingType ending) {
    const QString text = QStringLiteral("Encoding for File Save:");
    prompt(encodingStep(
        text, [this, text, delimiter, ending](EncodingType encoding, const QString& answer) {
            promptNext(text, answer,
                       [this, delimiter, ending] { onSaveEncodingPrompt(delimiter, ending); });
            prompt(standardStep(
                QStringLiteral("Parsing Standard for File Save:"),
                [this, delimiter, ending, encoding](ParsingStandard standard, const QString&) {
                    saveDialect(delimiter, ending, encoding, standard);
                }));
        }));
}
