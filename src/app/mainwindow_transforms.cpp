// The Data menu's cell transforms: the questions each asks, then one call on
// the current grid, which makes the undo step.

#include "app/launcher.h"
#include "app/mainwindow.h"
#include "app/paneview.h"
#include "commands/settings.h"
#include "edit/celltransforms.h"
#include "edit/commands/lines/splitcellscommand.h"
#include "edit/datetimeconversion.h"
#include "edit/numbertransforms.h"
#include "edit/uuidtext.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QDateTime>

namespace {

const QString kChooseError = QStringLiteral("Must select one of the options.");

const QStringList kDateKindNames{
    QStringLiteral("Custom Format"),
    QStringLiteral("ISO 8601 Format"),
    QStringLiteral("ISO 8601 Format (date only)"),
    QStringLiteral("Unix Epoch Time (seconds)"),
    QStringLiteral("Unix Epoch Time (milliseconds)"),
    QStringLiteral("Excel Format"),
};

// The moment every live example is printed from.
QDateTime sampleDateTime() {
    QDateTime sample = QDateTime::fromString(QStringLiteral("2020-04-10 8:57:43.578 AM"),
                                             QStringLiteral("yyyy-MM-dd h:mm:ss.zzz AP"));
    sample.setTimeSpec(Qt::UTC);
    return sample;
}

const QString kSeriesGuide = QStringLiteral(
    "For text, separate with spaces.<br>For text that includes spaces, enclose with double "
    "quotes.<br>For text that includes double quotes, use \\ as an escape character (i.e. "
    "\\\")<br>For numbers, the first number is the first value. The second number is the "
    "interval.");

QString seriesPreview(const QString& text) {
    const QString first = parseSeries(text, 1).value(0);
    return first.isEmpty() ? QStringLiteral("(Blank)") : first;
}

// The option of `options` an answer names, or -1.
int optionIndex(const std::vector<OptionData>& options, const QString& answer) {
    for (size_t i = 0; i < options.size(); ++i)
        if (options[i].answer() == answer) return int(i);
    return -1;
}

} // namespace

// ---- Helpers ----

TableView* MainWindow::transformTarget() {
    TableView* view = currentView();
    if (!view || view->model()->isReadOnly()) return nullptr;
    if (view->isEditing()) view->stopEditing();
    return view;
}

void MainWindow::runTransform(const std::function<void(TableView*)>& act) {
    pane_view->closeLauncher();
    if (TableView* view = transformTarget()) {
        act(view);
        updateTab(view);
    }
}

MainWindow::PromptStep MainWindow::optionStep(const QString& prompt_text, const QString& guide,
                                              std::vector<OptionData> options,
                                              std::function<void(int, const QString&)> take) {
    PromptStep step;
    step.prompt = prompt_text;
    step.guide = guide;
    step.options = std::move(options);
    const std::vector<OptionData> offered = step.options;
    step.accept = [offered, take](const QString& answer) {
        const int index = optionIndex(offered, answer);
        if (index < 0) return kChooseError;
        take(index, answer);
        return QString();
    };
    return step;
}

void MainWindow::promptForText(const QString& prompt_text, const QString& guide,
                               std::function<QString(const QString&)> accept) {
    PromptStep step;
    step.prompt = prompt_text;
    step.guide = guide;
    step.accept = std::move(accept);
    prompt(step);
}

// ---- Case ----

void MainWindow::commandUpperCase() {
    runTransform([](TableView* v) { v->upperCase(); });
}
void MainWindow::commandLowerCase() {
    runTransform([](TableView* v) { v->lowerCase(); });
}
void MainWindow::commandTitleCase() {
    runTransform([](TableView* v) { v->titleCase(); });
}
void MainWindow::commandUpperCamelCase() {
    runTransform([](TableView* v) { v->upperCamelCase(); });
}
void MainWindow::commandLowerCamelCase() {
    runTransform([](TableView* v) { v->lowerCamelCase(); });
}
void MainWindow::commandUpperSnakeCase() {
    runTransform([](TableView* v) { v->upperSnakeCase(); });
}
void MainWindow::commandLowerSnakeCase() {
    runTransform([](TableView* v) { v->lowerSnakeCase(); });
}
void MainWindow::commandConvertToAcronym() {
    runTransform([](TableView* v) { v->convertToAcronym(); });
}

// ---- Dates ----

// The six kinds as options; `examples` gives each one's note.
static std::vector<OptionData> dateKindOptions(const QStringList& examples) {
    std::vector<OptionData> options;
    for (int i = 0; i < kDateTimeFormatKindCount; ++i)
        options.push_back({kDateKindNames[i], {}, {}, examples.value(i), {}});
    return options;
}

void MainWindow::commandConvertDateTimeFormat() {
    if (!transformTarget()) return;
    const QString text = QStringLiteral("Select Format to Convert From:");
    PromptStep step = optionStep(
        text, QStringLiteral("Hit enter for custom format."),
        dateKindOptions({QStringLiteral("Example: MMM. d, yyyy h:m ap -> Apr. 10, 2020 8:57 AM"),
                         QStringLiteral("Example: 2020-04-10T08:57:02Z (T and Z optional, "
                                        "milliseconds allowed)"),
                         QStringLiteral("Example: 2020-04-10"),
                         QStringLiteral("Example: 1586509063"),
                         QStringLiteral("Example: 1586509063578"),
                         QStringLiteral("Example: 43931.3729166667")}),
        [this, text](int kind, const QString& answer) {
            promptNext(text, answer, [this] { commandConvertDateTimeFormat(); });
            if (kind == int(DateTimeFormatKind::Custom))
                onConvertDateTimeCustomFromPrompt();
            else
                onConvertDateTimeToPrompt(kind, QString());
        });
    prompt(step);
}

void MainWindow::onConvertDateTimeCustomFromPrompt() {
    const QString text = QStringLiteral("Custom Format to Convert From:");
    promptForText(text,
                  QStringLiteral(
                      "Example: <b>MMM. d, yyyy h:m ap</b> -> Apr. 10, 2020 8:57 AM<br>Put literal "
                      "text in double quotes."),
                  [this, text](const QString& answer) {
                      if (answer.isEmpty()) return QStringLiteral("Must not be blank.");
                      promptNext(text, answer, [this] { onConvertDateTimeCustomFromPrompt(); });
                      onConvertDateTimeToPrompt(int(DateTimeFormatKind::Custom), answer);
                      return QString();
                  });
}

void MainWindow::onConvertDateTimeToPrompt(int from_kind, const QString& from_format) {
    const QString text = QStringLiteral("Select Format to Convert To:");
    const QDateTime sample = sampleDateTime();
    PromptStep step = optionStep(
        text, QString(),
        dateKindOptions(
            {QStringLiteral("Example: MMM. d, yyyy h:m ap -> Apr. 10, 2020 8:57 AM"),
             QStringLiteral("Example: 2020-04-10T08:57:02Z"), QStringLiteral("Example: 2020-04-10"),
             QStringLiteral("Example: 1586509063"), QStringLiteral("Example: 1586509063578"),
             QStringLiteral("Example: 43931.3729166667")}),
        [this, text, from_kind, from_format](int kind, const QString& answer) {
            if (kind != int(DateTimeFormatKind::Custom)) {
                runTransform([=](TableView* v) {
                    v->convertDateTimeFormat(from_kind, kind, from_format, QString());
                });
                return;
            }
            promptNext(text, answer, [this, from_kind, from_format] {
                onConvertDateTimeToPrompt(from_kind, from_format);
            });
            onConvertDateTimeCustomToPrompt(from_kind, from_format);
        });
    Launcher* launcher = prompt(step);
    // The sample moment in the option under the cursor.
    launcher->addDescription(
        QStringLiteral("Sample: ") +
        printDateTime(sample, DateTimeFormatKind::Custom, QStringLiteral("MMM. d, yyyy h:m ap")));
    connect(launcher, &Launcher::selectionChangedSignal, launcher,
            [launcher, sample](const QString& response) {
                const int kind = int(kDateKindNames.indexOf(response));
                if (kind <= 0) {
                    launcher->setDescription(QStringLiteral("Sample: ") +
                                             printDateTime(sample, DateTimeFormatKind::Custom,
                                                           QStringLiteral("MMM. d, yyyy h:m ap")));
                    return;
                }
                launcher->setDescription(QStringLiteral("Sample: ") +
                                         printDateTime(sample, DateTimeFormatKind(kind), {}));
            });
    launcher->resizeWithExtra();
}

void MainWindow::onConvertDateTimeCustomToPrompt(int from_kind, const QString& from_format) {
    PromptStep step;
    step.prompt = QStringLiteral("Custom Format to Convert To:");
    step.guide = QStringLiteral("Example: <b>MMM. d, yyyy h:m ap</b> -> Apr. 10, 2020 8:57 AM<br>"
                                "Put literal text in double quotes.");
    step.accept = [this, from_kind, from_format](const QString& answer) {
        if (answer.isEmpty()) return QStringLiteral("Must not be blank.");
        runTransform([=](TableView* v) {
            v->convertDateTimeFormat(from_kind, int(DateTimeFormatKind::Custom), from_format,
                                     answer);
        });
        return QString();
    };
    Launcher* launcher = prompt(step);
    const QDateTime sample = sampleDateTime();
    launcher->addDescription(QStringLiteral("(Blank)"));
    connect(launcher, &Launcher::promptEditedSignal, launcher,
            [launcher, sample](const QString& format) {
                const QString shown = printDateTime(sample, DateTimeFormatKind::Custom, format);
                launcher->setDescription(shown.isEmpty() ? QStringLiteral("(Blank)") : shown);
            });
    launcher->resizeWithExtra();
}

void MainWindow::commandPlaceCurrentDateTimeStampNowInSelectedCells() {
    if (!transformTarget()) return;
    const QString text = QStringLiteral("Select Current Date/Time Format:");
    QDateTime now = QDateTime::currentDateTimeUtc();
    const QString custom = QStringLiteral("MM. d, yyyy h:m ap");
    QStringList examples{QStringLiteral("Example: %1 -> %2")
                             .arg(custom, printDateTime(now, DateTimeFormatKind::Custom, custom))};
    for (int kind = 1; kind < kDateTimeFormatKindCount; ++kind)
        examples << QStringLiteral("Example: %1")
                        .arg(printDateTime(now, DateTimeFormatKind(kind), QString()));
    prompt(optionStep(
        text, QStringLiteral("Hit enter for custom format."), dateKindOptions(examples),
        [this, text](int kind, const QString& answer) {
            if (kind != int(DateTimeFormatKind::Custom)) {
                const QString stamp =
                    printDateTime(QDateTime::currentDateTimeUtc(), DateTimeFormatKind(kind), {});
                runTransform([stamp](TableView* v) { v->fillSelectedCells(stamp); });
                return;
            }
            promptNext(text, answer,
                       [this] { commandPlaceCurrentDateTimeStampNowInSelectedCells(); });
            promptForText(QStringLiteral("Custom Format:"),
                          QStringLiteral("Example: <b>MM. d, yyyy h:m ap</b><br>Put literal "
                                         "text in double quotes."),
                          [this](const QString& format) {
                              if (format.isEmpty()) return QStringLiteral("Must not be blank.");
                              const QString stamp =
                                  printDateTime(QDateTime::currentDateTimeUtc(),
                                                DateTimeFormatKind::Custom, format);
                              runTransform([stamp](TableView* v) { v->fillSelectedCells(stamp); });
                              return QString();
                          });
        }));
}

// ---- Numbers ----

void MainWindow::commandConvertNumberFormat() {
    if (!transformTarget()) return;
    prompt(optionStep(QStringLiteral("Select Format to Convert To:"),
                      QStringLiteral("(Assumes numbers are currently in the opposite format.)"),
                      {{QStringLiteral("Dot Decimal"),
                        {},
                        {},
                        QStringLiteral("Example: 42137.24 or 42,137.24"),
                        {}},
                       {QStringLiteral("Comma Decimal"),
                        {},
                        {},
                        QStringLiteral("Example: 42137,24 or 42.137,24"),
                        {}}},
                      [this](int index, const QString&) {
                          runTransform(
                              [index](TableView* v) { v->convertNumberFormat(index == 1); });
                      }));
}

void MainWindow::commandZeroFillWholeNumbers() {
    promptForCount(QStringLiteral("Total Number of Digits:"), 0,
                   [](TableView* v, int n) { v->zeroFillWholeNumbers(n); });
}
void MainWindow::commandRemoveLeadingZeros() {
    runTransform([](TableView* v) { v->removeLeadingZeros(); });
}
void MainWindow::commandSetNumberOfDecimals() {
    promptForCount(QStringLiteral("Number of Decimals:"), 0,
                   [](TableView* v, int n) { v->setNumberOfDecimals(n); });
}

void MainWindow::commandRandomIntegersInSelectedCells() {
    if (!transformTarget()) return;
    promptForText(
        QStringLiteral("Enter the range or values to select from:"),
        QStringLiteral("Guide:<br>Press enter for 0 to 100.<br>Type a single number for the range "
                       "of 0 to that number.<br>Range: Separate min and max with <b>-</b>. "
                       "Example: <b>1-5</b><br>Individual Values: Separate with a comma or space. "
                       "Example: <b>1,3,5</b> or <b>1 3 5</b><br>You can mix ranges and individual "
                       "values. Example: <b>1-5,7,9,11</b><br>You can also have multiple ranges. "
                       "Example: <b>1-5, 15-20</b><br>The numbers are decided according to a "
                       "uniform distribution."),
        [this](const QString& answer) {
            const std::optional<RandomIntegerChoices> choices = parseRandomIntegerChoices(answer);
            if (!choices) return QStringLiteral("Must input a number, ranges or values.");
            const RandomIntegerChoices chosen = *choices;
            runTransform([chosen](TableView* v) { v->randomIntegersInSelectedCells(chosen); });
            return QString();
        });
}

void MainWindow::commandRandomDecimalsFloatsInSelectedCells() {
    if (!transformTarget()) return;
    promptForText(
        QStringLiteral("Enter the range or values to select from:"),
        QStringLiteral("Guide:<br>Press enter for 0.0 to 10.0.<br>Type a single number for the "
                       "range of 0.0 to that number.<br>Range: Separate min and max with <b>-</b>. "
                       "Example: <b>1.2-5</b><br>Individual Values: Separate with a comma or "
                       "space. Example: <b>1.2,3.6,5</b> or <b>1.2 3.6 5</b><br>You can have "
                       "multiple ranges. Example: <b>1.2-5, -15.754 - -20.4</b><br>You cannot mix "
                       "ranges and individual values. If you try, it will ignore the individual "
                       "values."),
        [this](const QString& answer) {
            const std::optional<RandomDecimalChoices> choices = parseRandomDecimalChoices(answer);
            if (!choices) return QStringLiteral("Must input a number, ranges or values.");
            const RandomDecimalChoices chosen = *choices;
            runTransform([chosen](TableView* v) { v->randomDecimalsInSelectedCells(chosen); });
            return QString();
        });
}

// ---- Multi-cell ----

void MainWindow::commandCopyMainCellContentsToAllSelectedCells() {
    runTransform([](TableView* v) { v->copyMainCellToSelectedCells(); });
}

void MainWindow::promptForSeries(const QString& prompt_text,
                                 const std::function<void(TableView*, const QString&)>& act) {
    PromptStep step;
    step.prompt = prompt_text;
    step.guide = kSeriesGuide;
    step.accept = [this, act](const QString& answer) {
        runTransform([act, answer](TableView* v) { act(v, answer); });
        return QString();
    };
    Launcher* launcher = prompt(step);
    launcher->addDescription(seriesPreview(QString()));
    connect(launcher, &Launcher::promptEditedSignal, launcher,
            [launcher](const QString& typed) { launcher->setDescription(seriesPreview(typed)); });
    launcher->resizeWithExtra();
}

void MainWindow::commandFillSelectedCellsWithSeries() {
    if (!transformTarget()) return;
    promptForSeries(QStringLiteral("Fill Selected Cells With Series:"),
                    [](TableView* v, const QString& s) { v->fillSelectedCellsWithSeries(s); });
}

void MainWindow::promptForReshape(bool row_wise) {
    TableView* view = transformTarget();
    if (!view) return;
    const qsizetype count = view->reshapeValueCount();
    PromptStep step;
    step.prompt = row_wise ? QStringLiteral("Number of Columns (or Rows - See Examples Below):")
                           : QStringLiteral("Number of Rows (or Columns - See Examples Below):");
    step.guide = row_wise ? QStringLiteral("Examples:<br><b>25</b> -> 25 columns<br><b>r8</b> or "
                                           "<b>8 rows</b> -> 8 rows")
                          : QStringLiteral("Examples:<br><b>25</b> -> 25 rows<br><b>c8</b> or "
                                           "<b>8 cols</b> -> 8 columns");
    step.accept = [this, row_wise, count](const QString& answer) {
        if (!reshapeShape(answer, count, row_wise).isValid())
            return QStringLiteral("(No shape defined)");
        runTransform(
            [answer, row_wise](TableView* v) { v->reshapeSelectedCells(answer, row_wise); });
        return QString();
    };
    Launcher* launcher = prompt(step);
    launcher->addDescription(reshapePreview({}, row_wise));
    connect(launcher, &Launcher::promptEditedSignal, launcher,
            [launcher, row_wise, count](const QString& typed) {
                launcher->setDescription(
                    reshapePreview(reshapeShape(typed, count, row_wise), row_wise));
            });
    launcher->resizeWithExtra();
}

void MainWindow::commandReshapeSelectedCellsRowWise() {
    promptForReshape(true);
}
void MainWindow::commandReshapeSelectedCellsColumnWise() {
    promptForReshape(false);
}

// ---- String manipulation ----

void MainWindow::promptForJoin(bool horizontally, bool move_rest) {
    if (!transformTarget()) return;
    promptForText(QStringLiteral("Type in a Separator:"),
                  QStringLiteral("For example, a comma or a space.<br>For no separator, press "
                                 "enter.<br>For newline, type <b>\\n</b>.<br>For tab, type "
                                 "<b>\\t</b>."),
                  [this, horizontally, move_rest](const QString& answer) {
                      const QString separator = decodeSeparator(answer);
                      runTransform([horizontally, move_rest, separator](TableView* v) {
                          if (move_rest)
                              v->joinSelectedCellsMoveRestLeft(separator);
                          else
                              v->joinSelectedCells(horizontally, separator);
                      });
                      return QString();
                  });
}

void MainWindow::commandJoinSelectedCellsHorizontally() {
    promptForJoin(true);
}
void MainWindow::commandJoinSelectedCellsVertically() {
    promptForJoin(false);
}
void MainWindow::commandJoinSelectedCellsHorizontallyMoveRestOfRowLeft() {
    promptForJoin(true, true);
}

void MainWindow::promptForSplit(bool horizontally, bool move_rest) {
    if (!transformTarget()) return;
    // Both answers end here: the parts over the neighbouring cells, or into
    // columns opened for them.
    auto split = [this, horizontally, move_rest](const SplitRule& rule) {
        runTransform([horizontally, move_rest, rule](TableView* v) {
            if (move_rest)
                v->splitCells(true, rule, true);
            else
                v->splitSelectedCells(horizontally, !rule.by_delimiter, rule.delimiter,
                                      rule.indexes);
        });
    };
    const QString text = QStringLiteral("Select a Split Option:");
    prompt(optionStep(
        text, QString(),
        {{QStringLiteral("Split by Delimiter"), {}, {}, {}, {}},
         {QStringLiteral("Split by Index"), {}, {}, {}, {}}},
        [this, text, horizontally, move_rest, split](int index, const QString& answer) {
            promptNext(text, answer, [this, horizontally, move_rest] {
                promptForSplit(horizontally, move_rest);
            });
            if (index == 0) {
                promptForText(QStringLiteral("Type in a Delimiter:"),
                              QStringLiteral("For example, a comma or a space. Hit enter for "
                                             "none.<br>If none, it will separate each character."),
                              [split](const QString& typed) {
                                  split(SplitRule{true, decodeSeparator(typed), {}});
                                  return QString();
                              });
                return;
            }
            promptForText(
                QStringLiteral("Type in Indexes:"),
                QStringLiteral("Separate numbers with spaces.<br>Positive numbers are indexes from "
                               "the left (first character's index is 0).<br>Negative numbers are "
                               "indexes from the right (last character's index is -1).<br>Example: "
                               "Input is <b>2 4 -3</b>:<br><b>Lorem Ipsum</b> -> <b>Lo</b> | "
                               "<b>re</b> | <b>m Ip</b> | <b>sum</b>"),
                [split](const QString& typed) {
                    const std::optional<QList<int>> indexes = parseSplitIndexes(typed);
                    if (!indexes) return QStringLiteral("Must input a valid index (or indexes).");
                    split(SplitRule{false, QString(), *indexes});
                    return QString();
                });
        }));
}

void MainWindow::commandSplitSelectedCellsHorizontally() {
    promptForSplit(true);
}
void MainWindow::commandSplitSelectedCellsVertically() {
    promptForSplit(false);
}
void MainWindow::commandSplitSelectedCellsHorizontallyMoveRestOfRowRight() {
    promptForSplit(true, true);
}

void MainWindow::promptForKeepPart(bool left) {
    if (!transformTarget()) return;
    const QString guide =
        left ? QStringLiteral("To keep the first 4 characters, type <b>4</b>.<br>Example: "
                              "<b>Lorem Ipsum</b> -> <b>Lore</b><br>To keep all but the last 4 "
                              "characters, type <b>-4</b>.<br>Example: <b>Lorem Ipsum</b> -> "
                              "<b>Lorem I</b>")
             : QStringLiteral("To keep the last 4 characters, type <b>4</b>.<br>Example: "
                              "<b>Lorem Ipsum</b> -> <b>psum</b><br>To keep all but the first 4 "
                              "characters, type <b>-4</b>.<br>Example: <b>Lorem Ipsum</b> -> "
                              "<b>m Ipsum</b>");
    promptForText(QStringLiteral("Type in Index:"), guide, [this, left](const QString& answer) {
        const std::optional<int> n = parseSingleIndex(answer);
        if (!n) return QStringLiteral("Must input a single valid index.");
        const int count = *n;
        runTransform([left, count](TableView* v) {
            if (left)
                v->keepOnlyLeftPart(count);
            else
                v->keepOnlyRightPart(count);
        });
        return QString();
    });
}

void MainWindow::commandKeepOnlyLeftPartOfSelectedCells() {
    promptForKeepPart(true);
}
void MainWindow::commandKeepOnlyRightPartOfSelectedCells() {
    promptForKeepPart(false);
}

void MainWindow::commandKeepOnlyMiddlePartOfSelectedCells() {
    if (!transformTarget()) return;
    promptForText(
        QStringLiteral("Type in Index and Number of Characters:"),
        QStringLiteral(
            "<b>Indexes:</b><br>Positive numbers are indexes from the left (first character's "
            "index is 0).<br>Negative numbers are indexes from the right (last character's index "
            "is -1).<br><b>Number of Characters:</b><br>Positive numbers keep characters to the "
            "right of index.<br>Negative numbers keep characters to the left of index.<br>Example: "
            "Input is <b>2 5</b>:<br><b>Lorem Ipsum</b> -> <b>rem I</b><br>Example: Input is <b>-5 "
            "3</b>:<br><b>Lorem Ipsum</b> -> <b>Ips</b><br>Example: Input is <b>7 "
            "-4</b>:<br><b>Lorem "
            "Ipsum</b> -> <b>em I</b>"),
        [this](const QString& answer) {
            const std::optional<std::pair<int, int>> parsed = parseIndexAndCount(answer);
            if (!parsed)
                return QStringLiteral(
                    "Must input two numbers - an index and number of characters.");
            const int index = parsed->first, count = parsed->second;
            runTransform([index, count](TableView* v) { v->keepOnlyMiddlePart(index, count); });
            return QString();
        });
}

void MainWindow::promptForAffix(bool prepend) {
    if (!transformTarget()) return;
    const QString text = prepend ? QStringLiteral("Select a Prepend Option:")
                                 : QStringLiteral("Select an Append Option:");
    prompt(optionStep(text, QString(),
                      {{QStringLiteral("Same text for all cells."), {}, {}, {}, {}},
                       {QStringLiteral("Different text for each cell."), {}, {}, {}, {}}},
                      [this, text, prepend](int index, const QString& answer) {
                          promptNext(text, answer, [this, prepend] { promptForAffix(prepend); });
                          if (index == 1) {
                              promptForSeries(prepend
                                                  ? QStringLiteral("Prepend the Following Series:")
                                                  : QStringLiteral("Append the Following Series:"),
                                              [prepend](TableView* v, const QString& series) {
                                                  if (prepend)
                                                      v->prependSeriesToCells(series);
                                                  else
                                                      v->appendSeriesToCells(series);
                                              });
                              return;
                          }
                          promptForText(prepend ? QStringLiteral("Prepend the Following Text:")
                                                : QStringLiteral("Append the Following Text:"),
                                        QString(), [this, prepend](const QString& typed) {
                                            runTransform([prepend, typed](TableView* v) {
                                                if (prepend)
                                                    v->prependToCells(typed);
                                                else
                                                    v->appendToCells(typed);
                                            });
                                            return QString();
                                        });
                      }));
}

void MainWindow::commandPrependCellContents() {
    promptForAffix(true);
}
void MainWindow::commandAppendCellContents() {
    promptForAffix(false);
}
void MainWindow::commandTrimSelectedCells() {
    runTransform([](TableView* v) { v->trimSelectedCells(); });
}

void MainWindow::commandFillSelectedCellsWithUuidGuid() {
    if (!transformTarget()) return;
    prompt(optionStep(QStringLiteral("Select Format:"), QString(),
                      {{QStringLiteral("Standard"),
                        {},
                        {},
                        QStringLiteral("Example: b1b5cb6b-346b-49f4-9843-f5116e039e5a"),
                        {}},
                       {QStringLiteral("Standard (Upper case)"),
                        {},
                        {},
                        QStringLiteral("Example: B1B5CB6B-346B-49F4-9843-F5116E039E5A"),
                        {}},
                       {QStringLiteral("Braced"),
                        {},
                        {},
                        QStringLiteral("Example: {b1b5cb6b-346b-49f4-9843-f5116e039e5a}"),
                        {}},
                       {QStringLiteral("Braced (Upper case)"),
                        {},
                        {},
                        QStringLiteral("Example: {B1B5CB6B-346B-49F4-9843-F5116E039E5A}"),
                        {}}},
                      [this](int index, const QString&) {
                          const UuidVersion version = settings->uuidType();
                          runTransform([version, index](TableView* v) {
                              v->fillSelectedCellsWithUuids(version, UuidForm(index));
                          });
                      }));
}

// An ID column already there only has its gaps numbered; a new one asks
// where its numbers start.
void MainWindow::commandAddOrUpdateIdColumn() {
    TableView* view = transformTarget();
    if (!view) return;
    if (const int col = view->idColumn(); col >= 0) {
        runTransform([col](TableView* v) { v->updateIdColumn(col); });
        return;
    }
    promptForText(QStringLiteral("First ID Number:"), QString(), [this](const QString& answer) {
        bool ok = false;
        const qint64 first = answer.trimmed().toLongLong(&ok);
        if (!ok) return QStringLiteral("Must be a whole number.");
        runTransform([first](TableView* v) { v->addIdColumn(first); });
        return QString();
    });
}
