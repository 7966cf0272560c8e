#pragma once

#include <QElapsedTimer>
#include <QStringList>

#include <vector>

// Sub-commands that need a GUI application (the offscreen platform unless
// another is set): they measure the table model and the grid.
int benchGui(int argc, char** argv);
bool isGuiCommand(const char* command);
int benchModel(const QStringList& args);
int benchView(const QStringList& args);
int benchType(const QStringList& args);
int benchLauncher(const QStringList& args);
int benchFind(const QStringList& args);
int benchTransform(const QStringList& args);
int benchRows(const QStringList& args);
int benchSortView(const QStringList& args);
int benchFilter(const QStringList& args);
int benchLookup(const QStringList& args);

// Loads FILE into the model on this thread, as the benches on a grid start;
// the seconds it took, or a negative value (after a message) when nothing
// could be read.
class TableModel;
double loadBenchTable(TableModel& model, const QString& path);

// A timer's reading in seconds and in milliseconds.
double seconds(const QElapsedTimer& timer);
double milliseconds(const QElapsedTimer& timer);

// Median and range of repeated timings (p99 for long series); zeros when
// there are none.
struct Spread {
    double median = 0, min = 0, max = 0, p99 = 0;
};
Spread spread(std::vector<double> values);
