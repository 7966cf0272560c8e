// gridmere-bench filter FILE [--runs N] [--read-only]: filters added on the
// grid as the Data menu adds them (one undo step each, through the model),
// and their undo: a regular expression on the "word" column and a numeric
// comparison on the "price" column of the generator's files.

#include "benchgui.h"

#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QUndoStack>

#include <algorithm>
#include <cstdio>
#include <vector>

int benchFilter(const QStringList& args) {
    QStringList rest = args;
    int runs = 5;
    bool read_only = false;
    if (const qsizetype at = rest.indexOf("--runs"); at >= 0 && at + 1 < rest.size()) {
        runs = std::max(1, rest[at + 1].toInt());
        rest.remove(at, 2);
    }
    if (const qsizetype at = rest.indexOf("--read-only"); at >= 0) {
        read_only = true;
        rest.remove(at, 1);
    }
    if (rest.size() != 1) {
        std::fprintf(stderr, "usage: gridmere-bench filter FILE [--runs N] [--read-only]\n");
        return 2;
    }
    TableView view(read_only);
    TableModel* model = view.model();
    const double load_s = loadBenchTable(*model, rest[0]);
    if (load_s < 0) return 1;
    const int rows = model->tableData().numRawRows();
    const qint64 bytes = QFileInfo(rest[0]).size();
    struct Case {
        const char* name;
        int column;
        const char* text;
    };
    const Case cases[] = {{"regex", 4, "#^(qu|ve)"}, {"numeric", 2, "<500"}};
    for (const Case& c : cases) {
        std::vector<double> times, undo_times;
        int shown = 0;
        for (int i = 0; i < runs; ++i) {
            QElapsedTimer t;
            t.start();
            view.addFilter(FilterData(FilterLine::forColumn(c.column), QString::fromLatin1(c.text)));
            times.push_back(seconds(t));
            shown = model->tableData().numModelRows();
            t.restart();
            view.undoStack()->undo();
            undo_times.push_back(seconds(t));
        }
        const Spread s = spread(times), u = spread(undo_times);
        std::printf("op=filter case=%s column=%d filter=%s read_only=%d bytes=%lld rows=%d "
                    "load_seconds=%.2f rows_shown=%d seconds_median=%.3f "
                    "seconds_min=%.3f seconds_max=%.3f undo_median=%.3f undo_min=%.3f "
                    "undo_max=%.3f\n",
                    c.name, c.column, c.text, int(read_only), (long long)bytes, rows, load_s,
                    shown, s.median, s.min, s.max, u.median, u.min,
                    u.max);
        std::fflush(stdout);
    }
    return 0;
}
