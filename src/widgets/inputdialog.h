#pragma once

#include <QDialog>
#include <QString>

#include <functional>
#include <optional>

class LineEdit;
class QLabel;

// A modal question for one line of text: a prompt, the text, "OK" and "Cancel".
class InputDialog : public QDialog {
    Q_OBJECT
public:
    // Stands in for the user while it is set: called on each dialog once it is
    // open, it answers with answer() or real key events on lineEdit(). A
    // dialog that the hook leaves open is canceled.
    using AutoAnswer = std::function<void(InputDialog& dialog)>;
    static void setAutoAnswer(AutoAnswer answer);

    InputDialog(QWidget* parent, const QString& title, const QString& prompt,
                const QString& text = {});

    // Shows the dialog modally; the text on OK, nothing on Cancel.
    std::optional<QString> run();

    // Accepts with this text, or cancels when there is none.
    void answer(const std::optional<QString>& text);

    QString prompt() const;
    LineEdit* lineEdit() const { return line_edit; }

    static std::optional<QString> getText(QWidget* parent, const QString& title,
                                          const QString& prompt, const QString& text = {});

private:
    QLabel* prompt_label;
    LineEdit* line_edit;
};
