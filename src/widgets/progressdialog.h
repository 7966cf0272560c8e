#pragma once

#include <QDialog>
#include <QString>

#include <functional>

class QLabel;
class QProgressBar;
class QPushButton;

// Progress of a job that runs on while the dialog shows: a label, a bar and a
// "Cancel" button. It is window-modal and shown with show() or open(); the
// owner closes it when the job has stopped, canceled or not.
class ProgressDialog : public QDialog {
    Q_OBJECT
public:
    // Stands in for the user while it is set: asked at each new value whether
    // to press Cancel now.
    using AutoCancel = std::function<bool(const ProgressDialog& dialog)>;
    static void setAutoCancel(AutoCancel cancel);

    ProgressDialog(QWidget* parent, const QString& title, const QString& label_text,
                   bool cancelable = true);

    void setLabelText(const QString& text);
    QString labelText() const;
    void setRange(int minimum, int maximum);
    void setValue(int value);
    int value() const;

    bool wasCanceled() const { return canceled; }
    QPushButton* cancelButton() const { return cancel_button; }

signals:
    // Once, at the first press of Cancel (or Escape, or the window's close).
    void canceledSignal();

public slots:
    void cancel();
    // A fraction of the job, 0 to 1, as workers report it.
    void onProgress(float fraction);
    void reject() override;

private:
    QLabel* label;
    QProgressBar* bar;
    QPushButton* cancel_button;
    bool cancelable;
    bool canceled = false;
};
