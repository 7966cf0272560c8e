#pragma once

#include "data/worker.h"

#include <vector>

class TableData;
class TableModel;

// The model's long jobs, on the model's worker thread. The model waits in a
// local event loop for the reply signal, so the table does not change under
// a running job.
class TableModelWorker : public Worker {
    Q_OBJECT

public:
    using Worker::Worker;

    // Answers, read by the model after the reply.
    std::vector<int> edge_indexes;
    bool column_all_numbers = false;

signals:
    void getModelWithColSubsetFinishedSignal(bool completed);
    void getEdgeIndexesOfSortedColumnsFinishedSignal(bool completed);
    void isColumnAllNumbersFinishedSignal(bool completed);

public slots:
    void getModelWithColModelSubset(TableModel* new_model, TableData* table_data,
                                    std::vector<int>* col_model_list, int num_rows, int num_cols);
    void getEdgeIndexesOfSortedColumns(std::vector<int> col_model_list, bool include_end_index,
                                       TableModel* model);
    void isColumnAllNumbers(int col_model, TableModel* model);
};
