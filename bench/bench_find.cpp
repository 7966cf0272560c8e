// gridmere-bench find FILE [--word W] [--runs N]: "Find All" of a word
// through the model, as the find bar runs it (case-insensitive, then
// case-sensitive and as a whole word), and "Replace All" of it with its undo
// on the grid.

#include "benchgui.h"

#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QUndoStack>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {} // namespace

int benchFind(const QStringList& args) {
    QStringList rest = args;
    QString word = QStringLiteral("lorem");
    int runs = 5;
    if (const qsizetype at = rest.indexOf("--word"); at >= 0 && at + 1 < rest.size()) {
        word = rest[at + 1];
        rest.remove(at, 2);
    }
    if (const qsizetype at = rest.indexOf("--runs"); at >= 0 && at + 1 < rest.size()) {
        runs = std::max(1, rest[at + 1].toInt());
        rest.remove(at, 2);
    }
    if (rest.size() != 1) {
        std::fprintf(stderr, "usage: gridmere-bench find FILE [--word W] [--runs N]\n");
        return 2;
    }
    TableView view(false);
    TableModel* model = view.model();
    const double load_s = loadBenchTable(*model, rest[0]);
    if (load_s < 0) return 1;
    struct Case {
        const char* name;
        FindReplaceQuery query;
    };
    std::vector<Case> cases(3);
    cases[0].name = "any_case";
    cases[1].name = "case_sensitive";
    cases[1].query.case_sensitive = true;
    cases[2].name = "whole_word";
    cases[2].query.whole_word = true;
    for (Case& c : cases) {
        c.query.find_str = word;
        std::vector<double> times;
        size_t found = 0;
        for (int i = 0; i < runs; ++i) {
            QElapsedTimer t;
            t.start();
            found = model->findAll(c.query).size();
            times.push_back(seconds(t));
        }
        const Spread s = spread(times);
        std::printf("op=find_all query=%s word=%s bytes=%lld rows=%d load_seconds=%.2f "
                    "matches=%zu seconds_median=%.3f seconds_min=%.3f seconds_max=%.3f\n",
                    c.name, qPrintable(word), (long long)QFileInfo(rest[0]).size(),
                    model->tableData().numRawRows(), load_s, found, s.median, s.min, s.max);
        std::fflush(stdout);
    }
    // Replace All as one undo step, and its undo.
    FindReplaceQuery replace = cases[1].query;
    replace.replace_str = word.toUpper();
    QElapsedTimer t;
    t.start();
    const int changed = view.replaceAllMatches(replace);
    const double replace_s = seconds(t);
    t.restart();
    view.undoStack()->undo();
    const double undo_s = seconds(t);
    std::printf("op=replace_all word=%s cells=%d seconds=%.3f undo_seconds=%.3f\n",
                qPrintable(word), changed, replace_s, undo_s);
    return 0;
}
