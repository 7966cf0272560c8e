#pragma once

#include "data/worker.h"

#include <vector>

class TableData;
class TableModel;

// One sort's question: the line whose values order the others, and how.
struct SortJob {
    const TableData* data = nullptr;
    bool rows_move = true; // a sort by a column; false: by a row
    int index = -1;        // raw index of the key line
    bool descending = false;
    bool case_sensitive = true;
    int first_index = 0; // header lines before it keep their place
    bool low_memory = false;
};

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
    // Set before a sort is asked for; its permutation comes back here.
    SortJob sort_job;
    std::vector<int> sort_permutation;

    // The sort on the calling thread: keys read and decoded, then sorted,
    // with progress; false when cancelled, with nothing kept.
    bool runSortJob();

signals:
    void getModelWithColSubsetFinishedSignal(bool completed);
    void getEdgeIndexesOfSortedColumnsFinishedSignal(bool completed);
    void isColumnAllNumbersFinishedSignal(bool completed);
    void getSortPermutationFinishedSignal(bool completed);

public slots:
    void getModelWithColModelSubset(TableModel* new_model, TableData* table_data,
                                    std::vector<int>* col_model_list, int num_rows, int num_cols);
    void getEdgeIndexesOfSortedColumns(std::vector<int> col_model_list, bool include_end_index,
                                       TableModel* model);
    void isColumnAllNumbers(int col_model, TableModel* model);
    void getSortPermutation();
};
