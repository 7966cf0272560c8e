// Sorting in TableData: the keys of one line, read and decoded once, and the
// line orders a sort applies and its undo takes back.

#include "editabledatacontainer.h"
#include "fileparameters.h"
#include "linetracking.h"
#include "readonlydatacontainer.h"
#include "sortkeys.h"
#include "tabledata.h"
#include "tabledataworker.h"

#include <QEventLoop>

#include <algorithm>

namespace {

// Progress is asked for once per this many keys: often enough for a tenth
// of a second, rarely enough to cost nothing.
constexpr int kKeysPerStep = 4096;

bool isPermutation(const std::vector<int>& order) {
    const int n = int(order.size());
    std::vector<bool> seen(size_t(n), false);
    for (const int p : order) {
        if (p < 0 || p >= n || seen[size_t(p)]) return false;
        seen[size_t(p)] = true;
    }
    return true;
}

// The line now at order[i] goes to i: the same order as "where each line goes".
std::vector<int> destinations(const std::vector<int>& order) {
    std::vector<int> to(order.size());
    for (size_t i = 0; i < order.size(); ++i)
        to[size_t(order[i])] = int(i);
    return to;
}

} // namespace

bool TableData::readSortKeys(bool rows_move, int index, bool case_sensitive, SortKeys& keys,
                             const std::function<bool(qint64, qint64)>& step) const {
    keys = SortKeys();
    if (!container || loading || reordering) return false;
    // The lines that move are stored rows, or stored columns; the key line
    // lies across them.
    const bool stored_rows = rows_move != transposed;
    const int count = stored_rows ? num_raw_rows : num_raw_cols;
    keys.reserve(size_t(std::max(count, 0)));
    const bool plain_bytes = encoding == Utf8 || encoding == Iso8859_1;
    QString decoded;
    bool full = false;
    auto add = [&](QByteArrayView bytes) {
        // Most cells are ASCII, which UTF-8 and Latin-1 share: no decoder,
        // no string.
        if (plain_bytes &&
            std::all_of(bytes.begin(), bytes.end(), [](char c) { return uchar(c) < 0x80; })) {
            full = full || !keys.appendAscii(bytes, !case_sensitive);
            return;
        }
        decoded = decodeCell(bytes, encoding, codec);
        if (!case_sensitive) decoded = std::move(decoded).toLower();
        full = full || !keys.append(decoded);
    };
    auto report = [&](qint64 done) {
        return (done % kKeysPerStep != 0 || !step || step(done, count)) && !full;
    };

    if (container_kind == ReadOnlyKind) {
        const auto* c = static_cast<const ReadOnlyDataContainer*>(container.get());
        // The file is read in its own order, once, however it is shown; the
        // positions then find their keys through the index map.
        const bool read = stored_rows
                              ? c->readFileColumn(c->fileColumn(index),
                                                  [&](int i, QByteArrayView bytes) {
                                                      add(bytes);
                                                      return report(i + 1);
                                                  })
                              : c->readFileRow(c->fileRow(index), [&](int i, QByteArrayView bytes) {
                                    add(bytes);
                                    return report(i + 1);
                                });
        if (!read) keys = SortKeys();
        return read;
    }

    const auto* c = static_cast<const EditableDataContainer*>(container.get());
    for (int i = 0; i < count; ++i) {
        add(stored_rows ? c->cellView(i, index) : c->cellView(index, i));
        if (!report(i + 1)) {
            keys = SortKeys();
            return false;
        }
    }
    return true;
}

const std::vector<int>& TableData::sortKeyMap(bool rows_move) const {
    static const std::vector<int> none;
    if (container_kind != ReadOnlyKind) return none;
    const auto* c = static_cast<const ReadOnlyDataContainer*>(container.get());
    const bool stored_rows = rows_move != transposed;
    const std::vector<int>& map = stored_rows ? c->rowMap() : c->columnMap();
    const int count = stored_rows ? num_raw_rows : num_raw_cols;
    // The maps that sorts install hold every line once; anything else reads
    // in file order rather than past the keys.
    const bool active = stored_rows ? c->rowMapActive() : c->columnMapActive();
    if (!active || int(map.size()) != count ||
        !std::all_of(map.begin(), map.end(), [count](int f) { return f >= 0 && f < count; }))
        return none;
    return map;
}

bool TableData::reorderLines(bool stored_rows, const std::vector<int>& order, bool inverse,
                             bool asynchronous) {
    const int n = int(order.size());
    if (n != (stored_rows ? num_raw_rows : num_raw_cols) || !isPermutation(order)) return false;
    linetracking::remap(stored_rows ? hidden_rows : hidden_columns, order, inverse);

    if (container_kind == ReadOnlyKind) {
        // The map says which file line each position shows; the new one is
        // the old one read in the sorted order, and back.
        auto* c = static_cast<ReadOnlyDataContainer*>(container.get());
        std::vector<int> map(static_cast<size_t>(n));
        for (int i = 0; i < n; ++i) {
            const int o = order[size_t(i)];
            if (inverse)
                map[size_t(o)] = stored_rows ? c->fileRow(i) : c->fileColumn(i);
            else
                map[size_t(i)] = stored_rows ? c->fileRow(o) : c->fileColumn(o);
        }
        // File order again (an undo back to it): no map, nothing to look up.
        bool identity = true;
        for (int i = 0; i < n && identity; ++i)
            identity = map[size_t(i)] == i;
        if (identity) map = std::vector<int>();
        if (stored_rows) {
            forgetFillBits();
            c->setRowMap(std::move(map));
        } else {
            c->setColumnMap(std::move(map));
        }
        return true;
    }

    auto* editable = static_cast<EditableDataContainer*>(container.get());
    if (!stored_rows) {
        // The columns' form takes "where each column goes": the inverse of a
        // sort's order, and the order itself for its undo.
        std::vector<int> computed;
        if (!inverse) computed = destinations(order);
        const std::vector<int>& to = inverse ? order : computed;
        editable->applyColumnPermutation(to);
        moveFillColumns([&](int c) { return c < n ? to[size_t(c)] : c; });
        return true;
    }
    // A sort moves every row. Permuting every column's bits would cost a
    // scattered access per cell, while a column's bits made again on the
    // first block move along it cost one walk down that column alone, and
    // only for the columns the user moves in. A sort is rare next to moves.
    forgetFillBits();
    if (!asynchronous) {
        workers[1]->startTimer();
        editable->reorderRows(order, inverse, [this](int done, int total) {
            workers[1]->reportStep(float(done) / float(total));
        });
        return true;
    }
    QEventLoop loop;
    connect(this, &TableData::endLoopSignal, &loop, &QEventLoop::quit);
    sort_completed = false;
    reordering = true;
    emit sortRowsEditableSignal(&order, inverse, editable);
    // Keys, clicks and file notices wait for the end: an edit or a reload now
    // would reach rows that the worker is moving.
    loop.exec(QEventLoop::ExcludeUserInputEvents | QEventLoop::ExcludeSocketNotifiers);
    reordering = false;
    return sort_completed;
}

bool TableData::applyRowOrder(const std::vector<int>& order, bool inverse, bool asynchronous) {
    return reorderLines(!transposed, order, inverse, asynchronous);
}

bool TableData::applyColumnOrder(const std::vector<int>& order, bool inverse) {
    return reorderLines(transposed, order, inverse, false);
}
