#pragma once

#include "data/dialect.h"

#include <QMetaObject>
#include <QString>
#include <QWidget>

#include <vector>

class QComboBox;
class QFormLayout;
class QGroupBox;
class QLabel;
class QPushButton;
class TableView;
class ToggleButton;

// The panel of facts about the current file, and the place to change the
// dialect it is loaded and saved with. Save parameters apply at once through
// the view's model. Everything that needs the window's flows (reloading with
// its save question, saving, renaming, switching read-only mode) goes out as
// a signal, and the panel shows the outcome when the model tells it.
class FileMetadataWidget : public QWidget {
    Q_OBJECT

public:
    explicit FileMetadataWidget(QWidget* parent = nullptr);

    // Null empties the panel.
    void setTableView(TableView* view);
    TableView* tableView() const { return view; }
    // The window's context bits: the panel is enabled by TableOpen and its
    // file-bound controls by FileOnDisk.
    void setContext(int context);

    // "%L1 bytes" up to 1023 bytes, then KB, MB, GB and TB by steps of 1024,
    // each with the exact byte count behind it.
    static QString fileSizeText(qint64 bytes);

    QComboBox* delimiterCombo() const { return delimiter_combo; }
    QComboBox* encodingCombo() const { return encoding_combo; }
    QComboBox* parsingStandardCombo() const { return standard_combo; }
    QComboBox* delimiterSaveCombo() const { return delimiter_save_combo; }
    QComboBox* lineEndingSaveCombo() const { return line_ending_save_combo; }
    QComboBox* encodingSaveCombo() const { return encoding_save_combo; }
    QComboBox* parsingStandardSaveCombo() const { return standard_save_combo; }
    ToggleButton* asciiToggle() const { return ascii_toggle; }

signals:
    void delimiterSaveChangedSignal(QString delimiter);
    void lineEndingSaveChangedSignal(LineEndingType line_ending);
    void encodingSaveChangedSignal(EncodingType encoding);
    void parsingStandardSaveChangedSignal(ParsingStandard parsing_standard);
    // A load parameter changed: the window reloads through its flow, which
    // may ask to save first. The delimiter may be "(auto)".
    void reloadFileWithParametersSignal(QString delimiter, EncodingType encoding,
                                        ParsingStandard parsing_standard);
    void reloadFileSignal();
    void saveFileSignal();
    void renameFileSignal();
    void readOnlyToggledSignal(bool read_only);

public slots:
    // Reads everything again from the view; the window calls it when one of
    // its flows was declined, so that the combos show the values in force.
    void refresh();
    void onDelimiterSaveComboChanged(QString text);
    void onEncodingSaveComboChanged(int index);
    void onLineEndingSaveComboChanged(int index);
    void onParsingStandardSaveComboChanged(int index);
    void onSaveFileButtonClicked();
    void onAsciiToggled(bool on);

private:
    void onLoadParameterChanged();
    // What a delimiter combo holds, as a delimiter: an item's own value, or
    // typed text through delimiterFromUserText. False with the error shown.
    bool readDelimiter(const QComboBox* combo, const QString& text, const QString& current,
                       QString& delimiter);
    void showDelimiterError(bool shown);
    void applySaveDelimiter(const QString& delimiter);
    void applyLineEnding(LineEndingType line_ending);
    void applyParsingStandard(ParsingStandard standard);
    static void showDelimiter(QComboBox* combo, const QString& delimiter);
    static void showEncoding(QComboBox* combo, EncodingType encoding);
    static void showData(QComboBox* combo, int value);

    TableView* view = nullptr; // cleared when the view is destroyed
    std::vector<QMetaObject::Connection> connections;
    int context = -1; // none given yet: judged by the view alone

    QFormLayout* file_form = nullptr;
    QLabel* name_label = nullptr;
    QLabel* folder_label = nullptr;
    QPushButton* rename_button = nullptr;
    QLabel* size_label = nullptr;
    QLabel* modified_label = nullptr;
    QLabel* created_label = nullptr;
    QLabel* dimensions_label = nullptr;
    ToggleButton* read_only_toggle = nullptr;
    QGroupBox* load_group = nullptr;
    QComboBox* delimiter_combo = nullptr;
    QComboBox* encoding_combo = nullptr;
    QComboBox* standard_combo = nullptr;
    QPushButton* reload_button = nullptr;
    QGroupBox* save_group = nullptr;
    QComboBox* delimiter_save_combo = nullptr;
    QComboBox* line_ending_save_combo = nullptr;
    QComboBox* encoding_save_combo = nullptr;
    QComboBox* standard_save_combo = nullptr;
    ToggleButton* ascii_toggle = nullptr;
    QLabel* delimiter_error_label = nullptr;
    QPushButton* save_button = nullptr;
};
