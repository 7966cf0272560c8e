#include "worker.h"

bool Worker::isCanceled() const {
    if (!cancel_flag) return false;
    if (!cancel_mutex) return *cancel_flag;
    QMutexLocker lock(cancel_mutex.get());
    return *cancel_flag;
}

bool Worker::reportProgress(float proportion) {
    if (!timer.isValid()) timer.start();
    if (timer.elapsed() <= kReportIntervalMs) return true;
    if (isCanceled()) return false;
    const float value = progress_low + (progress_high - progress_low) * proportion;
    emit updateProgressSignal(value / 100.0f);
    timer.restart();
    return true;
}

void Worker::reportStep(float proportion) {
    if (!timer.isValid()) timer.start();
    if (timer.elapsed() <= kReportIntervalMs) return;
    const float value = progress_low + (progress_high - progress_low) * proportion;
    emit updateProgressSignal(value / 100.0f);
    timer.restart();
}
