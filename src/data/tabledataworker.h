#pragma once

#include "worker.h"

#include <vector>

class EditableDataContainer;

// The long jobs of TableData. One instance lives on TableData's worker thread
// (asked by queued signals while the GUI waits in a nested event loop), one on
// the caller's thread for the synchronous path.
class TableDataWorker : public Worker {
    Q_OBJECT

public:
    using Worker::Worker;

signals:
    void finishedSignal(bool completed);
    void getSortIndexesFinishedSignal(bool completed);

public slots:
    void sortRowsEditable(std::vector<int>* indexes, EditableDataContainer* data_container);
};
