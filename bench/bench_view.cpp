// gridmere-bench view FILE: the grid as a user drives it on a big file. The
// time from the end of the load to the first painted frame, then frame times
// at random scroll positions, after Page Down and after block jumps.

#include "benchgui.h"

#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>
#include <sys/resource.h>

namespace {

struct Stats {
    double median = 0, p99 = 0, max = 0;
};

Stats stats(std::vector<double> ms) {
    std::sort(ms.begin(), ms.end());
    Stats s;
    if (ms.empty()) return s;
    s.median = ms[ms.size() / 2];
    s.p99 = ms[std::min(ms.size() - 1, size_t(double(ms.size()) * 0.99))];
    s.max = ms.back();
    return s;
}

double elapsedMs(const QElapsedTimer& t) {
    return double(t.nsecsElapsed()) / 1e6;
}

void press(QWidget* w, int key, Qt::KeyboardModifiers mods = Qt::NoModifier) {
    QKeyEvent down(QEvent::KeyPress, key, mods);
    QApplication::sendEvent(w, &down);
    QKeyEvent up(QEvent::KeyRelease, key, mods);
    QApplication::sendEvent(w, &up);
}

// Counts the grid's paints, so that a frame is measured until exactly one
// paint has happened.
class PaintCounter : public QObject {
public:
    int paints = 0;
    bool eventFilter(QObject*, QEvent* e) override {
        if (e->type() == QEvent::Paint) ++paints;
        return false;
    }
};

// One frame as the window makes it: the action, then the posted layout and
// update events, which paint; a synchronous paint only when none came.
double frame(TableView& view, PaintCounter& counter, const std::function<void()>& action) {
    QElapsedTimer t;
    t.start();
    const int before = counter.paints;
    action();
    QApplication::processEvents();
    if (counter.paints == before) view.viewport()->repaint();
    return elapsedMs(t);
}

} // namespace

int benchView(const QStringList& args) {
    QStringList rest = args;
    int frames = 300;
    if (const qsizetype at = rest.indexOf("--frames"); at >= 0 && at + 1 < rest.size()) {
        frames = std::max(rest[at + 1].toInt(), 2);
        rest.remove(at, 2);
    }
    if (rest.size() != 1) {
        std::fprintf(stderr, "usage: gridmere-bench view FILE [--frames N]\n");
        return 2;
    }
    const QString path = rest[0];
    TableView view;
    view.resize(1600, 1000);
    view.show();
    TableModel* model = view.model();
    PaintCounter counter;
    view.viewport()->installEventFilter(&counter);
    TableData& data = model->tableData();

    // Time from the data's own end of load (before the model reacts) to the
    // first frame painted.
    QElapsedTimer load_timer, first_frame;
    double first_frame_ms = -1;
    QEventLoop loop;
    QObject::disconnect(&data, &TableData::loadFinishedSignal, model, &TableModel::onLoadFinished);
    QObject::connect(&data, &TableData::loadFinishedSignal, &loop, [&] {
        first_frame.start();
        model->onLoadFinished();
        QApplication::processEvents();
        view.viewport()->repaint();
        first_frame_ms = elapsedMs(first_frame);
        loop.quit();
    });
    QObject::connect(&data, &TableData::loadFailedSignal, &loop, [&] { loop.quit(); });
    // The interface thread's longest stall while the file loads: a timer that
    // should tick every 5 ms notes the longest gap between its ticks.
    QElapsedTimer tick_clock;
    double max_gap_ms = 0;
    QTimer ticker;
    ticker.setInterval(5);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        max_gap_ms = std::max(max_gap_ms, elapsedMs(tick_clock));
        tick_clock.restart();
    });
    tick_clock.start();
    ticker.start();
    load_timer.start();
    model->load(path, true);
    loop.exec();
    const double load_gap_ms = max_gap_ms; // the first frame is measured on its own
    ticker.stop();
    const double load_s = double(load_timer.nsecsElapsed()) / 1e9;
    if (first_frame_ms < 0) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
        return 1;
    }

    std::mt19937 rng(11);
    std::vector<double> scroll_ms, page_ms, block_ms, block_paint_ms;
    QScrollBar* vbar = view.verticalScrollBar();
    QScrollBar* hbar = view.horizontalScrollBar();
    for (int i = 0; i < frames; ++i) {
        const int v = int(rng() % unsigned(std::max(vbar->maximum(), 1)));
        const int h = int(rng() % unsigned(std::max(hbar->maximum(), 1) + 1));
        scroll_ms.push_back(frame(view, counter, [&] {
            vbar->setValue(v);
            hbar->setValue(h);
        }));
    }
    model->selectSingleCell(Range(0, 2, Range::Model));
    view.scrollToMainCell(false, false);
    for (int i = 0; i < frames; ++i)
        page_ms.push_back(frame(view, counter, [&] { press(&view, Qt::Key_PageDown); }));
    const int rows = data.numModelRows(), cols = data.numModelColumns();
    for (int i = 0; i < frames / 2; ++i) {
        const Range start(int(rng() % unsigned(rows)), int(rng() % unsigned(cols)), Range::Model);
        model->selectSingleCell(start);
        for (const int key : {int(Qt::Key_Down), int(Qt::Key_Up)}) {
            block_ms.push_back(
                frame(view, counter, [&] { press(&view, key, Qt::ControlModifier); }));
            // The paint alone at the place the jump reached, apart from the
            // walk down the column that found it.
            QElapsedTimer paint;
            paint.start();
            view.viewport()->repaint();
            block_paint_ms.push_back(elapsedMs(paint));
        }
    }

    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    const Stats s = stats(scroll_ms), p = stats(page_ms), b = stats(block_ms),
                bp = stats(block_paint_ms);
    std::printf("op=view bytes=%lld rows=%d cols=%d load_seconds=%.3f load_max_gui_gap_ms=%.1f "
                "first_frame_ms=%.1f "
                "scroll_median_ms=%.2f scroll_p99_ms=%.2f pagedown_median_ms=%.2f "
                "pagedown_p99_ms=%.2f block_median_ms=%.2f block_p99_ms=%.2f block_max_ms=%.2f "
                "block_paint_median_ms=%.2f block_paint_p99_ms=%.2f peak_rss_bytes=%lld\n",
                (long long)QFileInfo(path).size(), rows, cols, load_s, load_gap_ms, first_frame_ms,
                s.median, s.p99, p.median, p.p99, b.median, b.p99, b.max, bp.median, bp.p99,
                (long long)usage.ru_maxrss * 1024);
    return 0;
}
