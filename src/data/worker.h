#pragma once

#include <QElapsedTimer>
#include <QMutex>
#include <QObject>

#include <memory>

// Base of background jobs: paced progress reports and a cancel flag that the
// GUI thread sets under a shared mutex.
class Worker : public QObject {
    Q_OBJECT

public:
    explicit Worker(QObject* parent = nullptr) : QObject(parent) {}

    void setCancelInfo(std::shared_ptr<bool> cancel_flag, std::shared_ptr<QMutex> cancel_mutex) {
        this->cancel_flag = std::move(cancel_flag);
        this->cancel_mutex = std::move(cancel_mutex);
    }
    // The span of the overall progress bar that this job covers, in percent.
    void setProgressRange(float low, float high) {
        progress_low = low;
        progress_high = high;
    }
    void startTimer() { timer.start(); }

    // Reads the cancel flag; true when the job must stop.
    bool isCanceled() const;
    // Once more than the report interval has passed: false when cancelled,
    // otherwise reports `proportion` (0..1) mapped onto the range and
    // restarts the clock. Cheap to call on every step of a loop.
    bool reportProgress(float proportion);
    // The same without asking about a cancel: for work that must run to its
    // end once begun.
    void reportStep(float proportion);

    static constexpr qint64 kReportIntervalMs = 100;

signals:
    void updateProgressSignal(float proportion);

protected:
    QElapsedTimer timer;
    std::shared_ptr<bool> cancel_flag;
    std::shared_ptr<QMutex> cancel_mutex;
    float progress_low = 0;
    float progress_high = 100;
};
