#pragma once

#include "app/optionlistwidget.h"
#include "commands/settings.h"

#include <QString>
#include <QWidget>

#include <vector>

class QLabel;
class QLineEdit;
class QVBoxLayout;

// One question: the command palette, or any prompt of a command. It is made
// by a window slot, installed on the pane view, answers once through
// launcherResponseSignal and goes away. With options it offers a filtered
// list; without, it reads free text.
class Launcher : public QWidget {
    Q_OBJECT

public:
    explicit Launcher(const Settings& settings, QWidget* parent = nullptr);
    ~Launcher() override;

    void setPrompt(const QString& text);
    QString promptText() const;
    // "<b>" in the text takes the theme's text colour.
    void setGuide(const QString& text);
    QString guideText() const;
    void setOptions(const std::vector<OptionData>& options, int row_height = 0);
    // A label under the editor that the caller fills while the user types
    // (promptEditedSignal).
    void addDescription(const QString& text = {});
    void setDescription(const QString& text);
    void setEditorText(const QString& text, bool select_all = false);
    void setCurrentFile(const QString& filepath) { current_file = filepath; }
    QString currentFile() const { return current_file; }

    QLineEdit* editor() const { return line_edit; }
    OptionListWidget* optionList() const { return option_list; }
    // Empty without a list or without a selection.
    QString currentOptionResponse() const;
    // Height from the parts' size hints, plus `extra`; kept for later
    // resizes (the pane calls it again once the width is known).
    void resizeWithExtra(int extra);
    void resizeWithExtra() { resizeWithExtra(extra_height); }

    void setSettings(const Settings& settings);

signals:
    void launcherResponseSignal(QString response);
    void promptEditedSignal(QString text);
    void selectionChangedSignal(QString response_str);
    void launcherClosedSignal();
    void goBackSignal();

public slots:
    void returnOptionResponseString(QString option_response_string);
    void putFocusInPromptEditor();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void applyStyle();

    Settings settings;
    QVBoxLayout* layout = nullptr;
    QLabel* prompt_label = nullptr;
    QLabel* guide_label = nullptr;
    QLineEdit* line_edit = nullptr;
    QLabel* description_label = nullptr;
    OptionListWidget* option_list = nullptr;
    QString current_file;
    bool answered = false;
    int extra_height = 0;
};

// An answered step of a chain of prompts: the question above the answer.
// Clicking it asks that question again.
class PrevOptionWidget : public QWidget {
    Q_OBJECT

public:
    PrevOptionWidget(const QString& prompt, const QString& answer, const Settings& settings,
                     QWidget* parent = nullptr);

    QString promptText() const;
    QString answerText() const;
    void setSettings(const Settings& settings);

signals:
    void goHereSignal();
    // Opens this step's question again; connected by whoever asked it.
    void expandThisSignal();

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    QLabel* prompt_label = nullptr;
    QLabel* answer_label = nullptr;
};
