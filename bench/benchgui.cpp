#include "benchgui.h"

#include "view/tablemodel.h"

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

bool isGuiCommand(const char* command) {
    return std::strcmp(command, "model") == 0 || std::strcmp(command, "view") == 0 ||
           std::strcmp(command, "type") == 0 || std::strcmp(command, "launcher") == 0 ||
           std::strcmp(command, "find") == 0 || std::strcmp(command, "transform") == 0 ||
           std::strcmp(command, "rows") == 0 || std::strcmp(command, "sortview") == 0 ||
           std::strcmp(command, "filter") == 0 || std::strcmp(command, "lookup") == 0;
}

int benchGui(int argc, char** argv) {
    if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    const QString command = args.takeFirst();
    if (command == "model") return benchModel(args);
    if (command == "view") return benchView(args);
    if (command == "type") return benchType(args);
    if (command == "launcher") return benchLauncher(args);
    if (command == "find") return benchFind(args);
    if (command == "transform") return benchTransform(args);
    if (command == "rows") return benchRows(args);
    if (command == "sortview") return benchSortView(args);
    if (command == "filter") return benchFilter(args);
    if (command == "lookup") return benchLookup(args);
    return 2;
}

double loadBenchTable(TableModel& model, const QString& path) {
    QElapsedTimer timer;
    timer.start();
    model.load(path, false);
    const double load_s = seconds(timer);
    if (model.tableData().numRawRows() > 0) return load_s;
    std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
    return -1;
}

double seconds(const QElapsedTimer& timer) {
    return double(timer.nsecsElapsed()) / 1e9;
}

double milliseconds(const QElapsedTimer& timer) {
    return double(timer.nsecsElapsed()) / 1e6;
}

Spread spread(std::vector<double> v) {
    if (v.empty()) return {};
    std::sort(v.begin(), v.end());
    return {v[v.size() / 2], v.front(), v.back(),
            v[std::min(v.size() - 1, size_t(double(v.size()) * 0.99))]};
}
