#include "tabledataworker.h"

#include "editabledatacontainer.h"

void TableDataWorker::sortRowsEditable(const std::vector<int>* indexes, bool inverse,
                                       EditableDataContainer* data_container) {
    startTimer();
    data_container->reorderRows(
        *indexes, inverse, [this](int done, int total) { reportStep(float(done) / float(total)); });
    emit finishedSignal(true);
}
