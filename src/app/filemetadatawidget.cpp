#include "app/filemetadatawidget.h"

#include "data/fileparameters.h"
#include "view/context.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/togglebutton.h"

#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

const QString kAuto = QStringLiteral("(auto)");
const QChar kUnitSeparator(0x1F);

QFont panelFont() {
    return QFont(QStringLiteral("Lucida Sans Unicode"));
}

QComboBox* makeCombo(QWidget* parent) {
    auto* combo = new QComboBox(parent);
    combo->setFont(panelFont());
    // Encoding names are long; the panel is narrow and the list pops out wide.
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(10);
    return combo;
}

// "(auto)" first, then the delimiters people use, each shown by its long
// name and carrying its own text. Any other character can be typed.
QComboBox* makeDelimiterCombo(QWidget* parent) {
    auto* combo = makeCombo(parent);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->addItem(kAuto, kAuto);
    for (const QString& d :
         {QStringLiteral(","), QStringLiteral("\t"), QStringLiteral(";"), QStringLiteral("|"),
          QStringLiteral(":"), QStringLiteral(" "), QString(kUnitSeparator), QString()})
        combo->addItem(delimiterLongName(d), d);
    return combo;
}

QComboBox* makeEncodingCombo(QWidget* parent) {
    auto* combo = makeCombo(parent);
    for (EncodingType e : encodingListOrder())
        combo->addItem(encodingDisplayName(e), int(e));
    return combo;
}

QComboBox* makeStandardCombo(QWidget* parent) {
    auto* combo = makeCombo(parent);
    for (ParsingStandard s : parsingStandardListOrder())
        combo->addItem(parsingStandardName(s), int(s));
    return combo;
}

QLabel* makeValueLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setFont(panelFont());
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}

// Names and paths seldom have blanks, and a label wraps only at breaks: a
// zero-width space after each separator lets a long one fold in the narrow
// panel instead of widening it. The exact text stays in the tooltip.
void setFoldingText(QLabel* label, const QString& text) {
    QString folded;
    folded.reserve(text.size() + text.size() / 4);
    for (QChar ch : text) {
        folded += ch;
        if (ch == u'/' || ch == u'\\' || ch == u'_' || ch == u'-' || ch == u'.')
            folded += QChar(0x200B);
    }
    label->setText(folded);
    label->setToolTip(text);
}

QFormLayout* makeForm(QGroupBox* group) {
    auto* form = new QFormLayout(group);
    form->setRowWrapPolicy(QFormLayout::WrapAllRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setVerticalSpacing(4);
    form->setContentsMargins(6, 8, 6, 6);
    return form;
}

QLabel* caption(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setFont(panelFont());
    return label;
}

} // namespace

FileMetadataWidget::FileMetadataWidget(QWidget* parent) : QWidget(parent) {
    setFont(panelFont());
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    outer->addWidget(scroll);
    auto* body = new QWidget(scroll);
    scroll->setWidget(body);
    auto* column = new QVBoxLayout(body);
    column->setContentsMargins(8, 4, 8, 8);
    column->setSpacing(6);

    auto* file_group = new QGroupBox(QStringLiteral("File Metadata"), body);
    file_form = makeForm(file_group);
    // Facts are short: caption and value share a line. The dialect rows
    // below put captions above their combos, which need the width.
    file_form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    name_label = makeValueLabel(file_group);
    QFont name_font = panelFont();
    name_font.setBold(true);
    name_label->setFont(name_font);
    folder_label = makeValueLabel(file_group);
    rename_button = new QPushButton(QStringLiteral("Rename File"), file_group);
    size_label = makeValueLabel(file_group);
    modified_label = makeValueLabel(file_group);
    created_label = makeValueLabel(file_group);
    dimensions_label = makeValueLabel(file_group);
    read_only_toggle = new ToggleButton(file_group);
    file_form->addRow(name_label);
    file_form->addRow(folder_label);
    file_form->addRow(rename_button);
    file_form->addRow(caption(QStringLiteral("Size:"), file_group), size_label);
    file_form->addRow(caption(QStringLiteral("Modified:"), file_group), modified_label);
    file_form->addRow(caption(QStringLiteral("Created:"), file_group), created_label);
    file_form->addRow(caption(QStringLiteral("Dimensions:"), file_group), dimensions_label);
    auto* read_only_row = new QHBoxLayout;
    read_only_row->addWidget(caption(QStringLiteral("Read-Only:"), file_group));
    read_only_row->addStretch(1);
    read_only_row->addWidget(read_only_toggle);
    file_form->addRow(read_only_row);
    column->addWidget(file_group);

    load_group = new QGroupBox(QStringLiteral("Load Parameters"), body);
    auto* load_form = makeForm(load_group);
    delimiter_combo = makeDelimiterCombo(load_group);
    encoding_combo = makeEncodingCombo(load_group);
    standard_combo = makeStandardCombo(load_group);
    reload_button = new QPushButton(QStringLiteral("Reload File"), load_group);
    load_form->addRow(caption(QStringLiteral("Delimiter:"), load_group), delimiter_combo);
    load_form->addRow(caption(QStringLiteral("Encoding:"), load_group), encoding_combo);
    load_form->addRow(caption(QStringLiteral("Parsing Standard:"), load_group), standard_combo);
    load_form->addRow(reload_button);
    column->addWidget(load_group);

    save_group = new QGroupBox(QStringLiteral("Save Parameters"), body);
    auto* save_form = makeForm(save_group);
    delimiter_save_combo = makeDelimiterCombo(save_group);
    delimiter_error_label =
        caption(QStringLiteral("The delimiter is limited to one ASCII character."), save_group);
    delimiter_error_label->setWordWrap(true);
    delimiter_error_label->hide();
    line_ending_save_combo = makeCombo(save_group);
    // "(platform)" stands first and is resolved when chosen; the others name
    // their value.
    const QStringList line_ending_names = lineEndingListNames();
    const LineEndingType line_ending_values[] = {platformLineEnding(), WindowsLineEnding,
                                                 UnixLineEnding, RecordSeparatorLineEnding};
    for (int i = 0; i < line_ending_names.size() && i < 4; ++i)
        line_ending_save_combo->addItem(line_ending_names[i], int(line_ending_values[i]));
    encoding_save_combo = makeEncodingCombo(save_group);
    standard_save_combo = makeStandardCombo(save_group);
    ascii_toggle = new ToggleButton(save_group);
    save_button = new QPushButton(QStringLiteral("Save File"), save_group);
    save_form->addRow(caption(QStringLiteral("Delimiter (Save):"), save_group),
                      delimiter_save_combo);
    save_form->addRow(delimiter_error_label);
    save_form->addRow(caption(QStringLiteral("Line Ending (Save):"), save_group),
                      line_ending_save_combo);
    save_form->addRow(caption(QStringLiteral("Encoding (Save):"), save_group), encoding_save_combo);
    save_form->addRow(caption(QStringLiteral("Parsing Standard (Save):"), save_group),
                      standard_save_combo);
    auto* ascii_row = new QHBoxLayout;
    ascii_row->addWidget(caption(QStringLiteral("ASCII Separated Values:"), save_group));
    ascii_row->addStretch(1);
    ascii_row->addWidget(ascii_toggle);
    save_form->addRow(ascii_row);
    save_form->addRow(save_button);
    column->addWidget(save_group);
    column->addStretch(1);

    // A pick from the list comes by activated; typed text when editing ends.
    // Both compare with the value in force, so a pick followed by a focus
    // change does not apply twice.
    connect(delimiter_combo, &QComboBox::activated, this, [this] { onLoadParameterChanged(); });
    connect(delimiter_combo->lineEdit(), &QLineEdit::editingFinished, this,
            [this] { onLoadParameterChanged(); });
    connect(encoding_combo, &QComboBox::activated, this, [this] { onLoadParameterChanged(); });
    connect(standard_combo, &QComboBox::activated, this, [this] { onLoadParameterChanged(); });
    connect(reload_button, &QPushButton::clicked, this, &FileMetadataWidget::reloadFileSignal);

    connect(delimiter_save_combo, &QComboBox::textActivated, this,
            &FileMetadataWidget::onDelimiterSaveComboChanged);
    connect(delimiter_save_combo->lineEdit(), &QLineEdit::editingFinished, this,
            [this] { onDelimiterSaveComboChanged(delimiter_save_combo->currentText()); });
    connect(line_ending_save_combo, &QComboBox::activated, this,
            &FileMetadataWidget::onLineEndingSaveComboChanged);
    connect(encoding_save_combo, &QComboBox::activated, this,
            &FileMetadataWidget::onEncodingSaveComboChanged);
    connect(standard_save_combo, &QComboBox::activated, this,
            &FileMetadataWidget::onParsingStandardSaveComboChanged);
    connect(ascii_toggle, &QAbstractButton::clicked, this, &FileMetadataWidget::onAsciiToggled);
    connect(save_button, &QPushButton::clicked, this, &FileMetadataWidget::onSaveFileButtonClicked);
    connect(rename_button, &QPushButton::clicked, this, &FileMetadataWidget::renameFileSignal);
    connect(read_only_toggle, &QAbstractButton::clicked, this, [this](bool on) {
        emit readOnlyToggledSignal(on);
        // The window switches the mode, or declines; either way the toggle
        // shows what the model holds now.
        refresh();
    });

    setTableView(nullptr);
}

void FileMetadataWidget::setTableView(TableView* new_view) {
    for (const QMetaObject::Connection& c : connections)
        disconnect(c);
    connections.clear();
    view = new_view;
    if (view) {
        TableModel* model = view->model();
        auto r = [this] { refresh(); };
        connections = {
            connect(model, &TableModel::setDelimiterSignal, this, r),
            connect(model, &TableModel::setLineEndingSignal, this, r),
            connect(model, &TableModel::setEncodingSignal, this, r),
            connect(model, &TableModel::setParsingStandardSignal, this, r),
            connect(view, &TableView::startProgressUpdateSignal, this, r),
            connect(view, &TableView::loadFinishedSignal, this, r),
            connect(view, &TableView::saveFinishedSignal, this, r),
            connect(view, &TableView::tableSizeChangedSignal, this, r),
            connect(view, &QObject::destroyed, this, [this] { setTableView(nullptr); }),
        };
    }
    refresh();
}

void FileMetadataWidget::setContext(int new_context) {
    context = new_context;
    refresh();
}

QString FileMetadataWidget::fileSizeText(qint64 bytes) {
    if (bytes < 1024) return QStringLiteral("%L1 bytes").arg(bytes);
    const char* units[] = {"KB", "MB", "GB", "TB"};
    double value = double(bytes) / 1024.0;
    int unit = 0;
    while (value >= 1024.0 && unit < 3) {
        value /= 1024.0;
        ++unit;
    }
    // One decimal, dropped when it is zero, so that 1,024 bytes read "1 KB".
    const QLocale locale;
    QString figure = locale.toString(value, 'f', 1);
    const QString zero_tail = locale.decimalPoint() + locale.zeroDigit();
    if (figure.endsWith(zero_tail)) figure.chop(zero_tail.size());
    return QStringLiteral("%1 %2 (%L3 bytes)").arg(figure, QLatin1String(units[unit])).arg(bytes);
}

void FileMetadataWidget::refresh() {
    const bool has_view = view != nullptr;
    const bool loading = has_view && view->model()->tableData().isLoading();
    setEnabled(has_view && !loading && (context < 0 || (context & TableOpen)));
    if (!has_view) {
        for (QLabel* l : {name_label, folder_label, size_label, modified_label, created_label,
                          dimensions_label})
            l->clear();
        return;
    }
    const TableModel& model = *view->model();
    const QString path = view->model()->file().fileName();
    const QFileInfo info(path);
    const bool on_disk = !path.isEmpty() && info.exists();
    const QLocale locale;

    if (path.isEmpty()) {
        name_label->setText(QStringLiteral("(unsaved)"));
        name_label->setToolTip(QString());
        folder_label->clear();
    } else {
        setFoldingText(name_label, info.fileName());
        setFoldingText(folder_label, QDir::toNativeSeparators(info.absolutePath()));
    }
    folder_label->setVisible(!path.isEmpty());
    file_form->setRowVisible(size_label, on_disk);
    file_form->setRowVisible(modified_label, on_disk);
    if (on_disk) {
        size_label->setText(fileSizeText(info.size()));
        modified_label->setText(locale.toString(info.lastModified(), QLocale::ShortFormat));
    }
    // Not every file system records a birth time.
    const QDateTime created = on_disk ? info.birthTime() : QDateTime();
    file_form->setRowVisible(created_label, created.isValid());
    if (created.isValid()) created_label->setText(locale.toString(created, QLocale::ShortFormat));
    if (loading) {
        dimensions_label->setText(QStringLiteral("-"));
    } else {
        const TableData& data = model.tableData();
        dimensions_label->setText(
            QStringLiteral("%1 rows x %2 columns")
                .arg(locale.toString(data.numRawRows()), locale.toString(data.numRawColumns())));
    }

    // Whatever was mistyped is replaced by the value in force below.
    showDelimiterError(false);

    const bool file_bound = on_disk && (context < 0 || (context & FileOnDisk));
    rename_button->setEnabled(file_bound);
    reload_button->setEnabled(file_bound);
    load_group->setEnabled(file_bound);

    for (QWidget* w : std::initializer_list<QWidget*>{
             read_only_toggle, delimiter_combo, encoding_combo, standard_combo,
             delimiter_save_combo, line_ending_save_combo, encoding_save_combo, standard_save_combo,
             ascii_toggle})
        w->blockSignals(true);
    read_only_toggle->setChecked(model.isReadOnly());
    showDelimiter(delimiter_combo, model.delimiterOpen());
    showEncoding(encoding_combo, model.encoding());
    showData(standard_combo, int(model.parsingStandard()));
    showDelimiter(delimiter_save_combo, model.delimiterSave());
    const LineEndingType le = model.lineEnding();
    // Found from the second item on, so the value shows by its own name
    // rather than as "(platform)".
    const int le_value = int(le == MacLineEnding || le == LinuxLineEnding ? UnixLineEnding : le);
    int le_index = -1;
    for (int i = 1; i < line_ending_save_combo->count() && le_index < 0; ++i)
        if (line_ending_save_combo->itemData(i).toInt() == le_value) le_index = i;
    line_ending_save_combo->setCurrentIndex(le_index);
    showEncoding(encoding_save_combo, model.encoding());
    showData(standard_save_combo, int(model.parsingStandard()));
    ascii_toggle->setChecked(model.parsingStandard() == AsciiSeparatedValues);
    for (QWidget* w : std::initializer_list<QWidget*>{
             read_only_toggle, delimiter_combo, encoding_combo, standard_combo,
             delimiter_save_combo, line_ending_save_combo, encoding_save_combo, standard_save_combo,
             ascii_toggle})
        w->blockSignals(false);
}

// ---- Showing values ----

void FileMetadataWidget::showDelimiter(QComboBox* combo, const QString& delimiter) {
    // The first item is "(auto)", whose data is longer than any delimiter.
    for (int i = 1; i < combo->count(); ++i) {
        if (combo->itemData(i).toString() == delimiter) {
            combo->setCurrentIndex(i);
            return;
        }
    }
    combo->setCurrentIndex(-1);
    combo->setEditText(delimiterLongName(delimiter));
}

void FileMetadataWidget::showEncoding(QComboBox* combo, EncodingType encoding) {
    // The detected byte orders have no item of their own; they show as their
    // family, as the names say.
    const int i = combo->findText(encodingDisplayName(encoding));
    combo->setCurrentIndex(i);
}

void FileMetadataWidget::showData(QComboBox* combo, int value) {
    combo->setCurrentIndex(combo->findData(value));
}

void FileMetadataWidget::showDelimiterError(bool shown) {
    delimiter_error_label->setVisible(shown);
}

bool FileMetadataWidget::readDelimiter(const QComboBox* combo, const QString& text,
                                       const QString& current, QString& delimiter) {
    const int item = combo->findText(text, Qt::MatchExactly);
    if (item >= 0) {
        delimiter = combo->itemData(item).toString();
        showDelimiterError(false);
        return true;
    }
    delimiter = current;
    bool ok = delimiterFromUserText(text, delimiter);
    // The data layer keeps one byte, and a character past ASCII is more than
    // one byte in most encodings.
    if (ok && delimiter.size() == 1 && delimiter.at(0).unicode() > 0x7F) ok = false;
    showDelimiterError(!ok);
    return ok;
}

// ---- Load parameters ----

void FileMetadataWidget::onLoadParameterChanged() {
    if (!view) return;
    const TableModel& model = *view->model();
    QString delimiter;
    if (!readDelimiter(delimiter_combo, delimiter_combo->currentText(), model.delimiterOpen(),
                       delimiter))
        return;
    const auto encoding = EncodingType(encoding_combo->currentData().toInt());
    const auto standard = ParsingStandard(standard_combo->currentData().toInt());
    const bool same_encoding =
        encodingDisplayName(encoding) == encodingDisplayName(model.encoding());
    if (delimiter == model.delimiterOpen() && same_encoding && standard == model.parsingStandard())
        return;
    emit reloadFileWithParametersSignal(delimiter, same_encoding ? model.encoding() : encoding,
                                        standard);
    // A declined reload leaves the model as it was; the combos follow it.
    refresh();
}

// ---- Save parameters ----

void FileMetadataWidget::onDelimiterSaveComboChanged(QString text) {
    if (!view) return;
    const TableModel& model = *view->model();
    QString delimiter;
    if (!readDelimiter(delimiter_save_combo, text, model.delimiterSave(), delimiter)) return;
    // "(auto)" for saving means what detection would find: the delimiter the
    // file was read with.
    if (delimiter == kAuto) delimiter = model.delimiterOpen();
    applySaveDelimiter(delimiter);
    refresh();
}

void FileMetadataWidget::onLineEndingSaveComboChanged(int index) {
    if (!view || index < 0) return;
    applyLineEnding(LineEndingType(line_ending_save_combo->itemData(index).toInt()));
    refresh();
}

void FileMetadataWidget::onEncodingSaveComboChanged(int index) {
    if (!view || index < 0) return;
    TableModel& model = *view->model();
    const auto encoding = EncodingType(encoding_save_combo->itemData(index).toInt());
    // A detected byte order shows as its family; picking that same entry
    // must not rewrite the cells.
    if (encodingDisplayName(encoding) == encodingDisplayName(model.encoding())) return;
    model.setEncoding(encoding, true);
    emit encodingSaveChangedSignal(encoding);
}

void FileMetadataWidget::onParsingStandardSaveComboChanged(int index) {
    if (!view || index < 0) return;
    applyParsingStandard(ParsingStandard(standard_save_combo->itemData(index).toInt()));
    refresh();
}

void FileMetadataWidget::onAsciiToggled(bool on) {
    if (!view) return;
    const TableModel& model = *view->model();
    if (on) {
        applySaveDelimiter(QString(kUnitSeparator));
        applyLineEnding(RecordSeparatorLineEnding);
        applyParsingStandard(AsciiSeparatedValues);
    } else {
        if (model.delimiterSave() == QString(kUnitSeparator))
            applySaveDelimiter(QStringLiteral(","));
        if (model.lineEnding() == RecordSeparatorLineEnding) applyLineEnding(platformLineEnding());
        applyParsingStandard(Rfc4180);
    }
    refresh();
}

void FileMetadataWidget::onSaveFileButtonClicked() {
    emit saveFileSignal();
}

void FileMetadataWidget::applySaveDelimiter(const QString& delimiter) {
    TableModel& model = *view->model();
    if (delimiter == model.delimiterSave()) return;
    model.setDelimiter(model.delimiterOpen(), delimiter);
    emit delimiterSaveChangedSignal(delimiter);
}

void FileMetadataWidget::applyLineEnding(LineEndingType line_ending) {
    TableModel& model = *view->model();
    if (line_ending == model.lineEnding()) return;
    model.setLineEnding(line_ending);
    emit lineEndingSaveChangedSignal(line_ending);
}

void FileMetadataWidget::applyParsingStandard(ParsingStandard standard) {
    TableModel& model = *view->model();
    if (standard == model.parsingStandard()) return;
    model.setParsingStandard(standard);
    emit parsingStandardSaveChangedSignal(standard);
}
