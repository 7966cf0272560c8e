#pragma once

#include "data/extensiondata.h"

#include <QWidget>

#include <vector>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

// The preferences' form over "File Extensions (User).csv": one row per
// extension with the dialect a file of that extension opens with. A blank row
// always waits at the bottom for a new extension; a row without an extension
// is left out of the file, which is how "Clear" removes one.
class FileExtensionsWidget : public QWidget {
    Q_OBJECT

public:
    explicit FileExtensionsWidget(const std::vector<ExtensionData>& extensions,
                                  QWidget* parent = nullptr);

    // Replaces every row; not an edit.
    void setExtensions(const std::vector<ExtensionData>& extensions);
    // The rows that name an extension, as the file will hold them.
    std::vector<ExtensionData> extensions() const;
    bool isModified() const { return modified; }
    void setModified(bool on) { modified = on; }

    QTableWidget* table() const { return table_; }
    int rowCount() const;
    QLineEdit* extensionEdit(int row) const;
    QComboBox* delimiterCombo(int row) const;
    QComboBox* lineEndingCombo(int row) const;
    QComboBox* encodingCombo(int row) const;
    QComboBox* parsingStandardCombo(int row) const;
    QPushButton* defaultButton(int row) const;
    QPushButton* clearButton(int row) const;
    QPushButton* restoreDefaultsButton() const { return restore_button; }
    QLabel* delimiterErrorLabel() const { return delimiter_error_label; }

signals:
    void updateSignal();

public slots:
    void onDefaultButtonClicked();
    void onClearButtonClicked();
    void onRestoreDefaultsClicked();

private:
    void appendRow(const ExtensionData& data);
    void showRow(int row, const ExtensionData& data);
    ExtensionData rowData(int row) const;
    // The delimiter of the row's combo in the notation of the file; false
    // for a text that is no delimiter.
    bool rowDelimiter(int row, QString& delimiter) const;
    int rowOfSender() const;
    void keepBlankRowAtEnd();
    void edited();

    QTableWidget* table_ = nullptr;
    QPushButton* restore_button = nullptr;
    QLabel* delimiter_error_label = nullptr;
    bool filling = false;
    bool modified = false;
};
