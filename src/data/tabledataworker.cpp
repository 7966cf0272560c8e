#include "tabledataworker.h"

#include "editabledatacontainer.h"

void TableDataWorker::sortRowsEditable(std::vector<int>* indexes,
                                       EditableDataContainer* data_container) {
    startTimer();
    const bool completed =
        data_container->applyRowPermutation(*indexes, [this](int done, int total) {
            return reportProgress(float(done) / float(total));
        });
    emit finishedSignal(completed);
}
