// gridmere-bench type FILE [--column C]: typing into a whole selected
// column, as a user fixes a column with one keystroke. Ten characters go to
// the grid as key events; each keystroke is timed to its repaint. Then the
// finished edit is undone and redone, and the memory its undo step holds is
// counted.

#include "benchgui.h"

#include "data/storedcells.h"
#include "edit/commands/setmodeldatacommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QUndoStack>

#include <algorithm>
#include <cstdio>

namespace {

void press(QWidget* w, int key, const QString& text) {
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(w, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(w, &up);
}

// What an undo step's ranges hold: their captured cells and values.
qint64 heldBytes(const RangeVector& ranges) {
    qint64 total = 0;
    for (const Range& r : ranges) {
        total += qint64(sizeof(Range));
        for (const QVariant* v : {&r.value, &r.old_value}) {
            if (v->userType() == qMetaTypeId<StoredCells>())
                total += v->value<StoredCells>().byteSize();
            else
                total += v->toString().capacity() * 2;
        }
        total += qint64((r.values.size() + r.old_values.size()) * sizeof(QVariant));
    }
    return total;
}

} // namespace

int benchType(const QStringList& args) {
    QStringList rest = args;
    int column = 0;
    if (const qsizetype at = rest.indexOf("--column"); at >= 0 && at + 1 < rest.size()) {
        column = rest[at + 1].toInt();
        rest.remove(at, 2);
    }
    if (rest.size() != 1) {
        std::fprintf(stderr, "usage: gridmere-bench type FILE [--column C]\n");
        return 2;
    }
    TableView view;
    view.resize(1600, 1000);
    view.show();
    TableModel* model = view.model();
    model->load(rest[0], false);
    QApplication::processEvents();
    const int rows = model->tableData().numRawRows();
    Range col = Range::line(column, Range::Column, Range::Model);
    col.is_main = true;
    col.main_offset = 0;
    model->setSelection({col}, true);
    view.setFocus();
    QApplication::processEvents();

    const QString typed = QStringLiteral("abcdefghij");
    std::vector<double> ms;
    for (QChar ch : typed) {
        QWidget* target = view.cellEditor() ? view.cellEditor() : static_cast<QWidget*>(&view);
        QElapsedTimer t;
        t.start();
        press(target, ch.toUpper().unicode(), QString(ch));
        QApplication::processEvents();
        ms.push_back(milliseconds(t));
    }
    QElapsedTimer t;
    t.start();
    view.stopEditing(true);
    const double commit_ms = milliseconds(t);
    const auto* step = dynamic_cast<const SetModelDataCommand*>(
        view.undoStack()->command(view.undoStack()->count() - 1));
    const qint64 held = step ? heldBytes(step->cells) : -1;

    t.restart();
    view.commandUndo();
    QApplication::processEvents();
    const double undo_ms = milliseconds(t);
    const QString after_undo = model->tableData().rawData(1, column).toString();
    t.restart();
    view.commandRedo();
    QApplication::processEvents();
    const double redo_ms = milliseconds(t);
    const bool redone = model->tableData().rawData(rows - 1, column).toString() == typed;

    std::vector<double> sorted = ms;
    std::sort(sorted.begin(), sorted.end());
    std::printf("op=type rows=%d column=%d cells=%d keystrokes=%d key_median_ms=%.1f "
                "key_max_ms=%.1f key_first_ms=%.1f commit_ms=%.1f undo_ms=%.1f redo_ms=%.1f "
                "undo_step_bytes=%lld bytes_per_cell=%.2f undone_cell=%s redone=%d\n",
                rows, column, rows, int(ms.size()), sorted[sorted.size() / 2], sorted.back(),
                ms.front(), commit_ms, undo_ms, redo_ms, static_cast<long long>(held),
                rows ? double(held) / rows : 0.0, qPrintable(after_undo), redone ? 1 : 0);
    return step && redone ? 0 : 1;
}
