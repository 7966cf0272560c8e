// Sorting through the model: the permutation made on the worker while the
// window stays alive, and its application to the table, forward and back.

#include "tablemodel.h"
#include "tablemodelworker.h"

#include "data/linetracking.h"

#include <QEventLoop>

#include <algorithm>

bool TableModel::getSortPermutation(std::vector<int>& permutation, SortRecord state,
                                    int first_index, bool use_event_loop) {
    permutation.clear();
    if (sorting || table_data.isLoading() || (state.kind != 0 && state.kind != 1)) return false;
    if (cancel_flag) {
        QMutexLocker lock(cancel_mutex.get());
        *cancel_flag = false;
    }
    SortJob& job = worker->sort_job;
    job.data = &table_data;
    job.rows_move = state.kind == 0;
    job.index = state.index;
    job.descending = state.order == 1;
    job.case_sensitive = case_sensitive_sorting;
    job.first_index = first_index;
    // A file kept on disk sorts in the memory of its keys and their order.
    job.low_memory = read_only;
    sorting = true;
    if (use_event_loop) {
        QEventLoop loop;
        connect(this, &TableModel::endGetSortPermutationLoopSignal, &loop, &QEventLoop::quit);
        job_completed = false;
        emit getSortPermutationSignal();
        // File notices wait for the end: a reload now would pull the table
        // away from under the worker reading it.
        loop.exec(sort_takes_input
                      ? QEventLoop::ExcludeSocketNotifiers
                      : QEventLoop::ExcludeSocketNotifiers | QEventLoop::ExcludeUserInputEvents);
    } else {
        job_completed = worker->runSortJob();
    }
    sorting = false;
    job.data = nullptr;
    if (job_completed) permutation = std::move(worker->sort_permutation);
    worker->sort_permutation = std::vector<int>();
    return job_completed;
}

void TableModel::onGetSortPermutationFinished(bool completed) {
    job_completed = completed;
    emit endGetSortPermutationLoopSignal();
}

void TableModel::cancelJob() {
    if (!cancel_flag) return;
    QMutexLocker lock(cancel_mutex.get());
    *cancel_flag = true;
}

int TableModel::firstSortedLine(int axis) const {
    const bool rows = axis == 0;
    const int headers = rows ? num_header_rows : num_header_cols;
    const int lines = rows ? table_data.numRawRows() : table_data.numRawColumns();
    if (headers <= 0) return 0;
    // The raw line behind the last header shown: hidden lines among the
    // headers stay with them.
    const int last =
        rows ? table_data.rawRowFromModel(headers - 1) : table_data.rawColumnFromModel(headers - 1);
    return std::clamp(last + 1, 0, lines);
}

bool TableModel::applyLineOrder(bool rows, const std::vector<int>& permutation, bool inverse) {
    // Hidden lines are raw indexes; TableData moves them with their data,
    // and the model's own raw indexes (filters, the user's hiding) follow.
    const bool ok = rows ? table_data.applyRowOrder(permutation, inverse, true)
                         : table_data.applyColumnOrder(permutation, inverse);
    if (!ok) return false;
    trackLines(rows, [&permutation, inverse](std::vector<int>& l) {
        linetracking::remap(l, permutation, inverse);
    });
    last_data_row = table_data.numModelRows() - 1;
    last_data_col = table_data.numModelColumns() - 1;
    if (num_model_rows > 0 && num_model_cols > 0)
        emit dataChanged(index(0, 0), index(num_model_rows - 1, num_model_cols - 1), {});
    if (rows)
        emit enforceAutoFitRowHeightsAllSignal();
    else
        emit enforceAutoFitColWidthsAllSignal();
    return true;
}

bool TableModel::sortRowsByColumn(const std::vector<int>& permutation, int order, int column) {
    if (!applyLineOrder(true, permutation, false)) return false;
    setColSort({order, 0, column});
    setRowSort({2, 0, -1});
    return true;
}

bool TableModel::sortColsByRow(const std::vector<int>& permutation, int order, int row) {
    if (!applyLineOrder(false, permutation, false)) return false;
    setRowSort({order, 1, row});
    setColSort({2, 1, -1});
    return true;
}

bool TableModel::unsortRows(const std::vector<int>& permutation) {
    return applyLineOrder(true, permutation, true);
}

bool TableModel::unsortCols(const std::vector<int>& permutation) {
    return applyLineOrder(false, permutation, true);
}
