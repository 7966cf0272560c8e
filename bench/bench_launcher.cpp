// gridmere-bench launcher [--runs N]: the command palette over a window with
// the full command table. Per run: the time from the shortcut's action to the
// first painted row, the time until every row is built, and the time of each
// keystroke of a few queries from the key event to the repainted list.

#include "benchgui.h"

#include "app/launcher.h"
#include "app/mainwindow.h"
#include "app/paneview.h"
#include "commands/commandtable.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

// Notes when a watched widget first paints.
class PaintWatch : public QObject {
public:
    QElapsedTimer* clock = nullptr;
    double painted_ms = -1;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint && painted_ms < 0) painted_ms = milliseconds(*clock);
        return QObject::eventFilter(watched, event);
    }
};

// Opens a palette by `open`, then times it as described at the top.
void measure(MainWindow& window, const char* op, int runs, const std::function<void()>& open) {
    const QStringList queries = {QStringLiteral("ins"), QStringLiteral("select entire"),
                                 QStringLiteral("go to cell"), QStringLiteral("tgl hdr"),
                                 QStringLiteral("save")};
    std::vector<double> first_rows, all_built, keystrokes;
    int offered = 0;
    for (int run = 0; run < runs; ++run) {
        QElapsedTimer clock;
        PaintWatch watch;
        watch.clock = &clock;
        clock.start();
        open();
        Launcher* launcher = window.paneView()->currentLauncher();
        if (!launcher || !launcher->optionList()) {
            std::fprintf(stderr, "no palette\n");
            return;
        }
        OptionListWidget* list = launcher->optionList();
        offered = list->count();
        list->visibleOptions().front()->installEventFilter(&watch);
        while (watch.painted_ms < 0 && clock.elapsed() < 5000)
            QApplication::processEvents(QEventLoop::AllEvents, 1);
        first_rows.push_back(watch.painted_ms);
        while (!list->isFullyBuilt() && clock.elapsed() < 10000)
            QApplication::processEvents(QEventLoop::AllEvents, 1);
        all_built.push_back(milliseconds(clock));

        QLineEdit* editor = launcher->editor();
        for (const QString& query : queries) {
            editor->clear();
            QApplication::processEvents();
            for (QChar c : query) {
                QElapsedTimer key_clock;
                key_clock.start();
                QKeyEvent down(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
                QApplication::sendEvent(editor, &down);
                QKeyEvent up(QEvent::KeyRelease, 0, Qt::NoModifier, QString(c));
                QApplication::sendEvent(editor, &up);
                // The layout and the repaint the keystroke asked for.
                QApplication::processEvents();
                launcher->repaint();
                keystrokes.push_back(milliseconds(key_clock));
            }
        }
        window.paneView()->closeLauncher();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
    }
    const Spread first = spread(first_rows), built = spread(all_built), keys = spread(keystrokes);
    std::printf("op=%s runs=%d options=%d first_rows_ms_median=%.2f first_rows_ms_min=%.2f "
                "first_rows_ms_max=%.2f all_built_ms_median=%.1f all_built_ms_min=%.1f "
                "all_built_ms_max=%.1f keystrokes=%zu refilter_ms_median=%.2f refilter_ms_min=%.2f "
                "refilter_ms_p99=%.2f refilter_ms_max=%.2f\n",
                op, runs, offered, first.median, first.min, first.max, built.median, built.min,
                built.max, keystrokes.size(), keys.median, keys.min, keys.p99, keys.max);
    std::fflush(stdout);
}

} // namespace

int benchLauncher(const QStringList& args) {
    int runs = 10;
    if (const qsizetype at = args.indexOf("--runs"); at >= 0 && at + 1 < args.size())
        runs = std::max(1, args[at + 1].toInt());
    MainWindow window;
    window.resize(1400, 800);
    window.show();
    QApplication::processEvents();
    QAction* shortcut = nullptr;
    for (QAction* action : window.findChildren<QAction*>())
        if (action->text().remove(u'&') == u"Command Launcher") shortcut = action;
    // The palette as a user gets it: the rows enabled now.
    measure(window, "launcher", runs, [&] {
        if (shortcut)
            shortcut->trigger();
        else
            window.commandCommandLauncher();
    });
    // Every row of the table, as the palette will offer once all commands
    // are built.
    const CommandTable table;
    std::vector<OptionData> every;
    for (const CommandRecord& record : table.records())
        every.push_back({displayName(record), {}, record.shortcut, {}, {}});
    measure(window, "launcher_all_rows", runs, [&] {
        auto* launcher = new Launcher(window.paneView()->currentSettings());
        launcher->setPrompt(QStringLiteral("Command:"));
        launcher->setOptions(every);
        window.paneView()->setLauncher(launcher);
    });
    return 0;
}
