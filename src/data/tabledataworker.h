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

public slots:
    // Reorders the rows by a sort's order (see reorderRows), with progress;
    // a sort's rows are never left half moved, so a cancel is not asked.
    void sortRowsEditable(const std::vector<int>* indexes, bool inverse,
                          EditableDataContainer* data_container);
};
