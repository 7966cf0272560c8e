#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class QLabel;
class QPushButton;

// A modal question with a title, a text, an informative text and buttons named
// by the caller. The answer is the text of the pressed button exactly as given
// ("Do&n't Save"), so callers compare against the same literal they passed.
class MsgBox : public QDialog {
    Q_OBJECT
public:
    // Stands in for the user while it is set: called on each box once it is
    // open, it answers with clickButton() or real key events. A box that the
    // hook leaves open is dismissed as by Escape, so a test cannot hang on it.
    using AutoAnswer = std::function<void(MsgBox& box)>;
    static void setAutoAnswer(AutoAnswer answer);

    MsgBox(QWidget* parent, const QString& title, const QString& text,
           const QString& informative_text, const QStringList& buttons, int default_button = 0);

    // Shows the box modally and returns the pressed button's text. Escape and
    // the window's close answer the button named "Cancel" (ignoring "&") when
    // there is one, the only button when there is one, else an empty string.
    QString run();

    // Minimum width of the button with this text.
    void setButtonWidth(const QString& button, int width);
    // Clicks the button with this text; false when there is none.
    bool clickButton(const QString& button);

    QString text() const;
    QString informativeText() const;
    QStringList buttonTexts() const;
    QString answer() const { return answer_; }

    static QString ask(QWidget* parent, const QString& title, const QString& text,
                       const QString& informative_text, const QStringList& buttons,
                       int default_button = 0);
    // A notice with one "OK" button.
    static void inform(QWidget* parent, const QString& title, const QString& text,
                       const QString& informative_text = {});

public slots:
    void reject() override;

private:
    QString escapeAnswer() const;

    QLabel* text_label;
    QLabel* informative_label;
    std::vector<QPushButton*> buttons_;
    QString answer_;
};
