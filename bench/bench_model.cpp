// gridmere-bench model FILE: what one painted frame asks of TableModel::data,
// per cell, with and without a selection to look through.

#include "benchgui.h"
#include "mallochook.h"

#include "view/tablemodel.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <cstdio>
#include <random>
#include <sys/resource.h>

namespace {

// The roles a styled delegate reads for one cell.
constexpr int kAllRoles[] = {Qt::DisplayRole,    Qt::FontRole,       Qt::TextAlignmentRole,
                             Qt::ForegroundRole, Qt::CheckStateRole, Qt::DecorationRole,
                             Qt::BackgroundRole};
constexpr int kStyleRoles[] = {Qt::FontRole, Qt::ForegroundRole, Qt::BackgroundRole};

struct Pass {
    double us_all = 0;
    double us_style = 0;
    double allocs_style = 0;
    double allocs_all = 0;
    size_t members = 0;
};

Pass measure(const TableModel& m, int positions, int window_rows, int window_cols) {
    std::mt19937 rng(7);
    window_cols = std::min(window_cols, m.columnCount());
    window_rows = std::min(window_rows, m.rowCount());
    const int rows = std::max(m.rowCount() - window_rows, 1);
    const int cols = std::max(m.columnCount() - window_cols, 1);
    std::vector<std::pair<int, int>> origins;
    for (int i = 0; i < positions; ++i)
        origins.emplace_back(int(rng() % unsigned(rows)), int(rng() % unsigned(cols)));
    const double cells = double(positions) * window_rows * window_cols;
    Pass pass;
    pass.members = m.selectionRanges().size();
    volatile qsizetype sink = 0;

    auto run = [&](const int* roles, int n_roles, double& us, double& allocs) {
        QElapsedTimer t;
        const long long before = allocationCount();
        setAllocationCounting(true);
        t.start();
        for (const auto& [r0, c0] : origins)
            for (int r = r0; r < r0 + window_rows; ++r)
                for (int c = c0; c < c0 + window_cols; ++c) {
                    const QModelIndex index = m.index(r, c);
                    for (int k = 0; k < n_roles; ++k)
                        sink = sink + m.data(index, roles[k]).isValid();
                }
        const qint64 ns = t.nsecsElapsed();
        setAllocationCounting(false);
        us = double(ns) / 1000.0 / cells;
        allocs = double(allocationCount() - before) / cells;
    };
    run(kStyleRoles, 3, pass.us_style, pass.allocs_style);
    run(kAllRoles, 7, pass.us_all, pass.allocs_all);
    return pass;
}

} // namespace

int benchModel(const QStringList& args) {
    if (args.size() != 1) {
        std::fprintf(stderr, "usage: gridmere-bench model FILE\n");
        return 2;
    }
    const QString path = args[0];
    TableModel model;
    model.setShadeRows(true);
    model.setHighlightMainRow(true);
    QElapsedTimer load_timer;
    load_timer.start();
    model.load(path, false);
    const double load_s = double(load_timer.nsecsElapsed()) / 1e9;
    if (model.tableData().numRawRows() == 0) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return 1;
    }
    const int positions = 1000, window_rows = 60, window_cols = 25;
    model.selectSingleCell(Range(0, 0, Range::Model));
    const Pass plain = measure(model, positions, window_rows, window_cols);

    // A whole column plus a dragged rectangle of 100 by 100 single cells.
    model.setMainAndSelection(Range(10, 3, Range::Model),
                              {Range::line(3, Range::Column, Range::Model)});
    const int r0 = model.rowCount() / 2, c0 = 0;
    model.setPendingCorner(Range(r0, c0, Range::Model), true);
    model.setPendingCorner(Range(r0 + 99, c0 + 99, Range::Model), false);
    model.commitPendingRectangle(true);
    const Pass selected = measure(model, positions, window_rows, window_cols);

    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    for (const auto& [name, p] : {std::pair{"none", plain}, std::pair{"column+block", selected}})
        std::printf("op=model selection=%s bytes=%lld rows=%d cols=%d load_seconds=%.3f "
                    "members=%zu us_per_cell_style=%.4f allocs_per_cell_style=%.4f "
                    "us_per_cell_all_roles=%.4f allocs_per_cell_all_roles=%.3f "
                    "peak_rss_bytes=%lld\n",
                    name, (long long)QFileInfo(path).size(), model.tableData().numRawRows(),
                    model.tableData().numRawColumns(), load_s, p.members, p.us_style,
                    p.allocs_style, p.us_all, p.allocs_all, (long long)usage.ru_maxrss * 1024);
    return 0;
}
