#include "tablemodelworker.h"

#include "data/sortcanceledexception.h"
#include "data/sortkeys.h"
#include "edit/sortnumber.h"
#include "edit/sortpermutation.h"
#include "view/tablemodel.h"

void TableModelWorker::getModelWithColModelSubset(TableModel* new_model, TableData* table_data,
                                                  std::vector<int>* col_model_list, int num_rows,
                                                  int num_cols) {
    startTimer();
    TableData& target = new_model->tableData();
    const int rows = std::min(num_rows, table_data->numModelRows());
    const int cols = std::min<int>(num_cols, int(col_model_list->size()));
    for (int r = 0; r < rows; ++r) {
        if (!reportProgress(float(r) / float(std::max(rows, 1)))) {
            emit getModelWithColSubsetFinishedSignal(false);
            return;
        }
        for (int c = 0; c < cols; ++c) {
            const QString text = table_data->data(r, (*col_model_list)[size_t(c)]).toString();
            if (!text.isEmpty()) target.setData(r, c, text);
        }
    }
    emit getModelWithColSubsetFinishedSignal(true);
}

void TableModelWorker::getEdgeIndexesOfSortedColumns(std::vector<int> col_model_list,
                                                     bool include_end_index, TableModel* model) {
    startTimer();
    edge_indexes.clear();
    const TableData& data = model->tableData();
    const int rows = data.numModelRows();
    const int first = std::min(model->numHeaderRows(), rows);
    // A row starts a new group when any listed column differs from the row above.
    for (int r = first + 1; r < rows; ++r) {
        if (!reportProgress(float(r) / float(rows))) {
            emit getEdgeIndexesOfSortedColumnsFinishedSignal(false);
            return;
        }
        for (int c : col_model_list) {
            if (data.data(r, c) != data.data(r - 1, c)) {
                edge_indexes.push_back(r);
                break;
            }
        }
    }
    if (include_end_index) edge_indexes.push_back(rows);
    emit getEdgeIndexesOfSortedColumnsFinishedSignal(true);
}

void TableModelWorker::isColumnAllNumbers(int col_model, TableModel* model) {
    startTimer();
    column_all_numbers = true;
    const TableData& data = model->tableData();
    const int rows = data.numModelRows();
    for (int r = model->numHeaderRows(); r < rows; ++r) {
        if (!reportProgress(float(r) / float(rows))) {
            emit isColumnAllNumbersFinishedSignal(false);
            return;
        }
        const QString text = data.data(r, col_model).toString();
        if (!readNumber(QStringView(text), true)) {
            column_all_numbers = false;
            break;
        }
    }
    emit isColumnAllNumbersFinishedSignal(true);
}

bool TableModelWorker::runSortJob() {
    sort_permutation = std::vector<int>();
    const SortJob job = sort_job;
    if (!job.data) return false;
    // Reading a file kept on disk is most of its sort; in memory the
    // comparisons are.
    const float read_share = job.low_memory ? 0.6f : 0.25f;
    startTimer();
    // Each phase starts with a report, whatever the clock says, so that a
    // cancel given at the first report ends the job at the next.
    auto checkpoint = [this](float proportion) {
        if (isCanceled()) return false;
        emit updateProgressSignal(proportion);
        timer.restart();
        return true;
    };
    if (!checkpoint(0)) return false;
    SortKeys keys;
    const bool read = job.data->readSortKeys(
        job.rows_move, job.index, job.case_sensitive, keys, [&](qint64 done, qint64 total) {
            if (timer.elapsed() < kReportIntervalMs) return true;
            return checkpoint(read_share * float(done) / float(std::max<qint64>(total, 1)));
        });
    if (!read || !checkpoint(read_share)) return false;

    SortOptions options;
    options.descending = job.descending;
    options.first_index = job.first_index;
    options.low_memory = job.low_memory;
    options.progress_interval = std::chrono::milliseconds(kReportIntervalMs);
    options.progress = [&](float proportion) {
        if (isCanceled()) throw SortCanceledException();
        emit updateProgressSignal(read_share + (1.0f - read_share) * proportion);
    };
    try {
        sort_permutation = sortPermutation(keys, job.data->sortKeyMap(job.rows_move), options);
    } catch (const SortCanceledException&) {
        return false;
    }
    return true;
}

void TableModelWorker::getSortPermutation() {
    emit getSortPermutationFinishedSignal(runSortJob());
}
