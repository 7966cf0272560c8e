#pragma once

#include "commands/settings.h"

#include <QWidget>

#include <vector>

class FramelessGroupBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class SearchEdit;
class ToggleButton;

// The preferences' form over "Settings (User).csv": one row per setting of
// the file, Global ones apart from the Table defaults, each with an editor
// that suits its data type and a "Default" button. Edits stay here until the
// window applies them.
class SettingsWidget : public QWidget {
    Q_OBJECT

public:
    explicit SettingsWidget(const Settings& settings, QWidget* parent = nullptr);

    // The window's settings changed (another program edited the file, or a
    // command toggled a value): rows the user has not touched follow.
    void setSettings(const Settings& settings);
    // After an apply: every row shows `settings` again, none is edited.
    void resetTo(const Settings& settings);
    // The window's settings with the edits made here.
    Settings editedSettings() const;
    bool isModified() const;

    // The editor's value in the notation of the settings file: what
    // Settings::setFromText reads.
    QString editorText(int id) const;
    void setEditorText(int id, const QString& text);
    QWidget* editor(int id) const;
    QPushButton* defaultButton(int id) const;
    QLabel* nameLabel(int id) const;
    bool isRowShown(int id) const;
    SearchEdit* searchEdit() const { return search_edit; }
    QPushButton* restoreDefaultsButton() const { return restore_button; }

signals:
    void updateSignal();
    void openFileMetadataSignal();

public slots:
    // Sends the row of the clicked button back to its default.
    void onDefaultButtonClicked();
    void onRestoreDefaultsClicked();
    void onSearchTextChanged(const QString& text);

private:
    struct Row {
        int id = 0;
        QWidget* widget = nullptr;
        QLabel* label = nullptr;
        ToggleButton* toggle = nullptr;
        QLabel* state_label = nullptr; // what the toggle's state means
        QComboBox* combo = nullptr;
        QSpinBox* spin = nullptr;
        QLineEdit* line = nullptr;
        QPushButton* default_button = nullptr;
    };

    QWidget* makeRow(Row& row, QWidget* parent);
    Row* rowFor(int id);
    const Row* rowFor(int id) const;
    // The text an editor shows for a setting's value, default or current.
    QString valueText(int id, const QVariant& value) const;
    QString baseText(int id) const;
    QString defaultText(int id) const;
    void setRowText(Row& row, const QString& text);
    QString rowText(const Row& row) const;
    void onRowEdited(Row& row);
    void updateRowState(Row& row);

    Settings base;
    std::vector<Row> rows;
    SearchEdit* search_edit = nullptr;
    FramelessGroupBox* global_group = nullptr;
    FramelessGroupBox* table_group = nullptr;
    QPushButton* restore_button = nullptr;
    bool filling = false; // editors are being set by the program, not the user
};
