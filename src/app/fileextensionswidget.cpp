#include "app/fileextensionswidget.h"

#include "app/tablecell.h"
#include "commands/preferencefiles.h"
#include "data/fileparameters.h"
#include "widgets/lineedit.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

enum Column : int {
    ExtensionColumn,
    DelimiterColumn,
    LineEndingColumn,
    EncodingColumn,
    StandardColumn,
    DefaultColumn,
    ClearColumn,
    ColumnCount
};

const QString kAuto = QStringLiteral("(auto)");
const QString kNone = QStringLiteral("(none)");
const QString kTab = QStringLiteral("\\t");
const QString kSpace = QStringLiteral("\\s");
const QString kRecordSeparator = QString(QChar(0x1E));
const QString kUnitSeparator = QString(QChar(0x1F));
constexpr int kAsciiRole = Qt::UserRole + 1; // the item that stands for the whole dialect
constexpr int kPlatformLineEnding = -1;

// A delimiter in the one form the file and the combo items use, whichever
// way it was written; empty for a text that is no delimiter.
QString canonicalDelimiter(const QString& text) {
    if (text.size() == 1) {
        if (text == u"\t") return kTab;
        if (text == u" ") return kSpace;
        // The quote character can't delimit: it would open every cell.
        return text.front().unicode() < 128 && text != u"\"" ? text : QString();
    }
    const QString word = text.trimmed().toLower();
    if (word.isEmpty() || word == kAuto) return kAuto;
    if (word == kTab || word == u"tab") return kTab;
    if (word == kSpace || word == u"space") return kSpace;
    if (word == kNone || word == u"none") return kNone;
    if (word == u"record separator") return kRecordSeparator;
    if (word == u"unit separator") return kUnitSeparator;
    if (word.size() == 1) return canonicalDelimiter(word);
    return {};
}

bool isAuto(const QString& delimiter) {
    return delimiter.isEmpty() || delimiter == kAuto;
}

ExtensionData genericRow(const QString& extension) {
    ExtensionData e;
    e.extension = extension;
    e.delimiter_open = kAuto;
    e.line_ending = platformLineEnding();
    e.line_ending_from_platform = true;
    return e;
}

QComboBox* makeCombo(QWidget* parent) {
    auto* combo = new QComboBox(parent);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->setMinimumContentsLength(6);
    return combo;
}

QComboBox* makeDelimiterCombo(QWidget* parent) {
    auto* combo = makeCombo(parent);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->addItem(kAuto, kAuto);
    for (const QString& d : {QStringLiteral(","), QStringLiteral("\t"), QStringLiteral(";"),
                             QStringLiteral("|"), QStringLiteral(":"), QStringLiteral(" ")})
        combo->addItem(delimiterLongName(d), canonicalDelimiter(d));
    combo->addItem(kNone, kNone);
    combo->addItem(QStringLiteral("Record Separator"), kRecordSeparator);
    combo->addItem(QStringLiteral("Unit Separator"), kUnitSeparator);
    combo->addItem(QStringLiteral("ASCII Separated Values"), kUnitSeparator);
    combo->setItemData(combo->count() - 1, true, kAsciiRole);
    // The whole list at once, each name in full.
    combo->setMaxVisibleItems(combo->count());
    combo->view()->setMinimumWidth(combo->view()->sizeHintForColumn(0) + 12);
    return combo;
}

void showDelimiter(QComboBox* combo, const QString& delimiter, bool ascii) {
    const QString canonical = canonicalDelimiter(delimiter);
    int index = -1;
    for (int i = 0; i < combo->count() && index < 0; ++i)
        if (combo->itemData(i).toString() == canonical &&
            combo->itemData(i, kAsciiRole).toBool() == ascii)
            index = i;
    if (index < 0) index = combo->findData(canonical.isEmpty() ? kAuto : canonical);
    if (index >= 0) {
        combo->setCurrentIndex(index);
        combo->setEditText(combo->itemText(index));
    } else {
        combo->setCurrentIndex(-1);
        combo->setEditText(canonical);
    }
    combo->lineEdit()->setCursorPosition(0);
    combo->setProperty("valid", combo->currentText());
}

} // namespace

FileExtensionsWidget::FileExtensionsWidget(const std::vector<ExtensionData>& extensions,
                                           QWidget* parent)
    : QWidget(parent) {
    auto* title = new QLabel(QStringLiteral("File Extension Parameters"), this);
    QFont title_font = title->font();
    title_font.setPointSizeF(title_font.pointSizeF() * 1.3);
    title_font.setBold(true);
    title->setFont(title_font);
    auto* note =
        new QLabel(QStringLiteral("Set the parameters for various file extensions below."), this);
    note->setWordWrap(true);

    table_ = new QTableWidget(0, ColumnCount, this);
    table_->setHorizontalHeaderLabels({QStringLiteral("Extension"), QStringLiteral("Delimiter"),
                                       QStringLiteral("Line Ending"), QStringLiteral("Encoding"),
                                       QStringLiteral("Parsing Standard"), QString(), QString()});
    table_->verticalHeader()->hide();
    table_->setSelectionMode(QAbstractItemView::NoSelection);
    table_->setFocusPolicy(Qt::NoFocus);
    table_->setShowGrid(false);
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(36);
    QHeaderView* header = table_->horizontalHeader();
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setSectionResizeMode(EncodingColumn, QHeaderView::Stretch);
    // Encoding takes what is left: its names are long, and its list pops
    // out as wide as they need.
    table_->setColumnWidth(ExtensionColumn, 76);
    table_->setColumnWidth(DelimiterColumn, 168);
    table_->setColumnWidth(LineEndingColumn, 138);
    table_->setColumnWidth(StandardColumn, 172);
    table_->setColumnWidth(DefaultColumn, 72);
    table_->setColumnWidth(ClearColumn, 60);

    delimiter_error_label =
        new QLabel(QStringLiteral("The delimiter is limited to one ASCII character."), this);
    delimiter_error_label->hide();

    restore_button = new QPushButton(QStringLiteral("Restore Default Parameters"), this);
    auto* bottom = new QHBoxLayout;
    bottom->addWidget(restore_button);
    bottom->addStretch(1);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addWidget(title);
    layout->addWidget(note);
    layout->addWidget(table_, 1);
    layout->addWidget(delimiter_error_label);
    layout->addLayout(bottom);

    connect(restore_button, &QPushButton::clicked, this,
            &FileExtensionsWidget::onRestoreDefaultsClicked);
    setExtensions(extensions);
}

void FileExtensionsWidget::appendRow(const ExtensionData& data) {
    const int row = table_->rowCount();
    table_->insertRow(row);

    auto* extension = new LineEdit(table_);
    connect(extension, &QLineEdit::textChanged, this, [this] {
        if (filling) return;
        keepBlankRowAtEnd();
        edited();
    });
    table_->setCellWidget(row, ExtensionColumn, paddedCell(extension, table_));

    QComboBox* delimiter = makeDelimiterCombo(table_);
    connect(delimiter, &QComboBox::editTextChanged, this, &FileExtensionsWidget::edited);
    connect(delimiter, &QComboBox::activated, this, [this, delimiter](int index) {
        if (!delimiter->itemData(index, kAsciiRole).toBool()) return;
        // The ASCII dialect separates records as well as units.
        const int row = rowOfSender();
        lineEndingCombo(row)->setCurrentIndex(
            lineEndingCombo(row)->findData(int(RecordSeparatorLineEnding)));
        parsingStandardCombo(row)->setCurrentIndex(
            parsingStandardCombo(row)->findData(int(AsciiSeparatedValues)));
    });
    // Typed text that is no delimiter is refused when the user leaves it.
    // (Return reports the end of an edit twice, so only typing again or a
    // pick from the list takes the notice away.)
    connect(delimiter->lineEdit(), &QLineEdit::editingFinished, this, [this, delimiter] {
        QString text;
        const int row = rowOfSender();
        if (row < 0) return;
        if (rowDelimiter(row, text)) {
            delimiter->setProperty("valid", delimiter->currentText());
        } else {
            delimiter_error_label->show();
            delimiter->setEditText(delimiter->property("valid").toString());
        }
    });
    connect(delimiter->lineEdit(), &QLineEdit::textEdited, delimiter_error_label, &QWidget::hide);
    connect(delimiter, &QComboBox::activated, this, [this, delimiter] {
        delimiter_error_label->hide();
        delimiter->lineEdit()->setCursorPosition(0); // a long name shows its start
    });
    table_->setCellWidget(row, DelimiterColumn, paddedCell(delimiter, table_));

    QComboBox* line_ending = makeCombo(table_);
    const QStringList line_ending_names = lineEndingListNames();
    const int line_ending_values[] = {kPlatformLineEnding, WindowsLineEnding, UnixLineEnding,
                                      RecordSeparatorLineEnding};
    for (int i = 0; i < line_ending_names.size() && i < 4; ++i)
        line_ending->addItem(line_ending_names[i], line_ending_values[i]);
    table_->setCellWidget(row, LineEndingColumn, paddedCell(line_ending, table_));

    QComboBox* encoding = makeCombo(table_);
    for (EncodingType e : encodingListOrder())
        encoding->addItem(encodingDisplayName(e), int(e));
    table_->setCellWidget(row, EncodingColumn, paddedCell(encoding, table_));

    QComboBox* standard = makeCombo(table_);
    for (ParsingStandard s : parsingStandardListOrder())
        standard->addItem(parsingStandardName(s), int(s));
    table_->setCellWidget(row, StandardColumn, paddedCell(standard, table_));

    for (QComboBox* combo : {line_ending, encoding, standard})
        connect(combo, &QComboBox::currentIndexChanged, this, &FileExtensionsWidget::edited);

    auto* default_button = new QPushButton(QStringLiteral("Default"), table_);
    connect(default_button, &QPushButton::clicked, this,
            &FileExtensionsWidget::onDefaultButtonClicked);
    table_->setCellWidget(row, DefaultColumn, paddedCell(default_button, table_));
    auto* clear_button = new QPushButton(QStringLiteral("Clear"), table_);
    connect(clear_button, &QPushButton::clicked, this, &FileExtensionsWidget::onClearButtonClicked);
    table_->setCellWidget(row, ClearColumn, paddedCell(clear_button, table_));

    showRow(row, data);
}

void FileExtensionsWidget::showRow(int row, const ExtensionData& data) {
    const bool was_filling = filling;
    filling = true;
    extensionEdit(row)->setText(data.extension);
    showDelimiter(delimiterCombo(row), data.delimiter_open,
                  data.parsing_standard == AsciiSeparatedValues);
    const int line_ending =
        data.line_ending_from_platform ? kPlatformLineEnding
        : data.line_ending == MacLineEnding || data.line_ending == LinuxLineEnding
            ? int(UnixLineEnding)
            : int(data.line_ending);
    lineEndingCombo(row)->setCurrentIndex(std::max(0, lineEndingCombo(row)->findData(line_ending)));
    // The byte order found in a file is no choice of the user's.
    EncodingType encoding = data.encoding;
    if (encoding == Utf16BEDetected || encoding == Utf16LEDetected) encoding = Utf16;
    if (encoding == Utf32BEDetected || encoding == Utf32LEDetected) encoding = Utf32;
    encodingCombo(row)->setCurrentIndex(std::max(0, encodingCombo(row)->findData(int(encoding))));
    parsingStandardCombo(row)->setCurrentIndex(
        std::max(0, parsingStandardCombo(row)->findData(int(data.parsing_standard))));
    filling = was_filling;
}

void FileExtensionsWidget::setExtensions(const std::vector<ExtensionData>& extensions) {
    filling = true;
    table_->setRowCount(0);
    for (const ExtensionData& e : extensions)
        appendRow(e);
    appendRow(genericRow(QString()));
    filling = false;
    modified = false;
    delimiter_error_label->hide();
}

bool FileExtensionsWidget::rowDelimiter(int row, QString& delimiter) const {
    const QComboBox* combo = delimiterCombo(row);
    const QString text = combo->currentText();
    // A pick from the list, whose text may also be typed.
    const int index = combo->findText(text, Qt::MatchFixedString);
    if (index >= 0) {
        delimiter = combo->itemData(index).toString();
        return true;
    }
    delimiter = canonicalDelimiter(text);
    return !delimiter.isEmpty();
}

ExtensionData FileExtensionsWidget::rowData(int row) const {
    ExtensionData e;
    QString extension = extensionEdit(row)->text().trimmed().toLower();
    while (extension.startsWith(u'.'))
        extension.remove(0, 1);
    e.extension = extension;
    if (!rowDelimiter(row, e.delimiter_open)) e.delimiter_open = kAuto;
    // Saved with the delimiter it opens with, unless that is detected anew.
    e.delimiter_save = isAuto(e.delimiter_open) ? QString() : e.delimiter_open;
    const int line_ending = lineEndingCombo(row)->currentData().toInt();
    e.line_ending_from_platform = line_ending == kPlatformLineEnding;
    e.line_ending =
        e.line_ending_from_platform ? platformLineEnding() : LineEndingType(line_ending);
    e.encoding = EncodingType(encodingCombo(row)->currentData().toInt());
    e.parsing_standard = ParsingStandard(parsingStandardCombo(row)->currentData().toInt());
    return e;
}

std::vector<ExtensionData> FileExtensionsWidget::extensions() const {
    std::vector<ExtensionData> result;
    for (int row = 0; row < table_->rowCount(); ++row) {
        ExtensionData e = rowData(row);
        if (!e.extension.isEmpty()) result.push_back(e);
    }
    return result;
}

int FileExtensionsWidget::rowCount() const {
    return table_->rowCount();
}

QLineEdit* FileExtensionsWidget::extensionEdit(int row) const {
    return cellContent<QLineEdit>(table_, row, ExtensionColumn);
}

QComboBox* FileExtensionsWidget::delimiterCombo(int row) const {
    return cellContent<QComboBox>(table_, row, DelimiterColumn);
}

QComboBox* FileExtensionsWidget::lineEndingCombo(int row) const {
    return cellContent<QComboBox>(table_, row, LineEndingColumn);
}

QComboBox* FileExtensionsWidget::encodingCombo(int row) const {
    return cellContent<QComboBox>(table_, row, EncodingColumn);
}

QComboBox* FileExtensionsWidget::parsingStandardCombo(int row) const {
    return cellContent<QComboBox>(table_, row, StandardColumn);
}

QPushButton* FileExtensionsWidget::defaultButton(int row) const {
    return cellContent<QPushButton>(table_, row, DefaultColumn);
}

QPushButton* FileExtensionsWidget::clearButton(int row) const {
    return cellContent<QPushButton>(table_, row, ClearColumn);
}

int FileExtensionsWidget::rowOfSender() const {
    // Also the line edit inside the delimiter's combo.
    const auto* origin = qobject_cast<const QWidget*>(sender());
    if (!origin) return -1;
    for (int row = 0; row < table_->rowCount(); ++row)
        for (int col = 0; col < ColumnCount; ++col)
            if (const QWidget* cell = table_->cellWidget(row, col);
                cell && cell->isAncestorOf(origin))
                return row;
    return -1;
}

void FileExtensionsWidget::keepBlankRowAtEnd() {
    const int last = table_->rowCount() - 1;
    if (last < 0 || !extensionEdit(last)->text().trimmed().isEmpty()) {
        const bool was_filling = filling;
        filling = true;
        appendRow(genericRow(QString()));
        filling = was_filling;
    }
}

void FileExtensionsWidget::edited() {
    if (filling) return;
    modified = true;
    emit updateSignal();
}

void FileExtensionsWidget::onDefaultButtonClicked() {
    const int row = rowOfSender();
    if (row < 0) return;
    const QString extension = rowData(row).extension;
    ExtensionData wanted = genericRow(extension);
    for (const ExtensionData& e : PreferenceFiles::defaultFileExtensions())
        if (e.extension == extension) wanted = e;
    showRow(row, wanted);
    delimiter_error_label->hide();
    modified = true;
    emit updateSignal();
}

void FileExtensionsWidget::onClearButtonClicked() {
    const int row = rowOfSender();
    if (row < 0) return;
    showRow(row, genericRow(QString()));
    delimiter_error_label->hide();
    modified = true;
    emit updateSignal();
}

void FileExtensionsWidget::onRestoreDefaultsClicked() {
    setExtensions(PreferenceFiles::defaultFileExtensions());
    modified = true;
    emit updateSignal();
}
