// Block reads and writes of cells for undo steps and multi-cell edits. They
// go to the store by raw position in one pass, never through a QString per
// cell where bytes will do: typing into a selected column of millions of
// rows writes the same bytes into every row at each keystroke.

#include "editabledatacontainer.h"
#include "fileparameters.h"
#include "tabledata.h"

#include <QTextCodec>

#include <algorithm>
#include <climits>
#include <cstring>
#include <thread>

namespace {

// Inclusive bounds clipped to [0, size).
bool clip(int& first, int& last, int size) {
    first = std::max(first, 0);
    last = std::min(last, size - 1);
    return first <= last;
}

} // namespace

StoredCells TableData::captureRaw(int r0, int r1, int c0, int c1) const {
    if (!container || !clip(r0, r1, numRawRows()) || !clip(c0, c1, numRawColumns()))
        return StoredCells();
    StoredCells out(r0, r1, c0, c1);
    const auto* editable = container_kind == ReadOnlyKind
                               ? nullptr
                               : static_cast<const EditableDataContainer*>(container.get());
    auto stored = [&](int r, int c, bool* quoted) -> QByteArray {
        if (transposed) std::swap(r, c);
        *quoted = editable && editable->isQuoted(r, c);
        return editable ? editable->cellView(r, c).toByteArray() : container->data(r, c);
    };
    if (editable && !transposed && c0 == c1) {
        // A column: the common big case, read straight from the rows.
        out.reserve(qsizetype(r1 - r0 + 1) * 8);
        for (int r = r0; r <= r1; ++r)
            out.append(editable->cellView(r, c0), editable->isQuoted(r, c0));
    } else {
        for (int r = r0; r <= r1; ++r)
            for (int c = c0; c <= c1; ++c) {
                bool quoted = false;
                const QByteArray bytes = stored(r, c, &quoted);
                out.append(bytes, quoted);
            }
    }
    out.squeeze();
    return out;
}

bool TableData::restoreRaw(const StoredCells& cells) {
    if (!container || container_kind == ReadOnlyKind || cells.isEmpty()) return false;
    auto* editable = static_cast<EditableDataContainer*>(container.get());
    const int width = cells.lastColumn() - cells.firstColumn() + 1;
    // Puts back the rows [from, to] of the capture, reading from `reader`
    // placed at the first cell of row `from`. The store must already hold
    // every row written, so that two of these can run at once.
    auto restoreRows = [&](int from, int to, StoredCells::Reader reader) {
        bool changed = false;
        for (int r = from; r <= to; ++r)
            for (int c = cells.firstColumn(); c <= cells.lastColumn(); ++c) {
                bool quoted = false;
                const QByteArrayView bytes = reader.next(&quoted);
                int sr = r, sc = c;
                if (transposed) std::swap(sr, sc);
                if (editable->cellView(sr, sc) == bytes && editable->isQuoted(sr, sc) == quoted)
                    continue;
                if (bytes.isEmpty() && !quoted && sr >= editable->storedRowCount()) continue;
                editable->setCell(sr, sc, bytes, quoted);
                changed = true;
            }
        return changed;
    };
    const int first = cells.firstRow(), last = cells.lastRow();
    bool changed = false;
    // Undo of an edit over a column of millions of rows: two threads, each
    // over its half of the rows, once the store reaches the last row.
    constexpr int kSplitRows = 200000;
    if (!transposed && last - first + 1 >= kSplitRows && last < editable->storedRowCount() &&
        cells.lastColumn() < editable->columnCount()) {
        const int middle = first + (last - first + 1) / 2;
        StoredCells::Reader second_reader(cells);
        second_reader.skip(qint64(middle - first) * width);
        bool second = false;
        std::thread helper([&] { second = restoreRows(middle, last, second_reader); });
        changed = restoreRows(first, middle - 1, StoredCells::Reader(cells));
        helper.join();
        changed = changed || second;
    } else {
        changed = restoreRows(first, last, StoredCells::Reader(cells));
    }
    // Cells put back past the table's end (quoted empty ones, a move's
    // targets) grow it as the store grew.
    bool grew = false;
    if (changed && editable->rowCount() > num_raw_rows)
        num_raw_rows = editable->rowCount(), grew = true;
    if (changed && editable->columnCount() > num_raw_cols)
        num_raw_cols = editable->columnCount(), grew = true;
    if (changed) refreshFillBits(first, last, cells.firstColumn(), cells.lastColumn());
    if (grew) emitTableSize();
    return changed;
}

bool TableData::fillRaw(int r0, int r1, int c0, int c1, const QString& text) {
    if (!container || container_kind == ReadOnlyKind) return false;
    // Open ends stop at the table's end; a closed bound past it grows the
    // table, but an empty text has nothing to grow it for.
    const bool grow = !text.isEmpty();
    const int rows = numRawRows(), cols = numRawColumns();
    if (r1 == INT_MAX || !grow) r1 = std::min(r1, rows - 1);
    if (c1 == INT_MAX || !grow) c1 = std::min(c1, cols - 1);
    r0 = std::max(r0, 0);
    c0 = std::max(c0, 0);
    if (r0 > r1 || c0 > c1) return false;

    auto* editable = static_cast<EditableDataContainer*>(container.get());
    const QByteArray bytes = encodeCell(text, encoding, codec);
    qint64 changed = 0;
    if (!transposed) {
        for (int c = c0; c <= c1; ++c)
            changed += editable->fillColumn(c, r0, r1, bytes);
    } else {
        // Stored rows are the raw columns here: each is one row's run.
        for (int c = c0; c <= c1; ++c)
            for (int r = r0; r <= r1; ++r) {
                if (editable->cellView(c, r) == bytes && !editable->isQuoted(c, r)) continue;
                if (bytes.isEmpty() && c >= editable->storedRowCount()) continue;
                editable->setCell(c, r, bytes, false);
                ++changed;
            }
    }
    if (!changed) return false;
    if (transposed) {
        forgetFillBits();
    } else {
        // Every cell of the block now holds the text or nothing: the bits
        // follow a word at a time.
        for (int c = c0; c <= c1; ++c)
            if (const auto bits = fill_bits.find(c); bits != fill_bits.end())
                fillbits::setRange(bits->second, r0, r1, !bytes.isEmpty());
    }
    if (grow && (r1 >= rows || c1 >= cols)) {
        const int new_rows = std::max(rows, r1 + 1), new_cols = std::max(cols, c1 + 1);
        num_raw_rows = transposed ? new_cols : new_rows;
        num_raw_cols = transposed ? new_rows : new_cols;
        emitTableSize();
    }
    return true;
}

QByteArray TableData::encodeText(const QString& text) const {
    return encodeCell(text, encoding, codec);
}

bool TableData::encodingKeepsText(EncodingType to) const {
    if (to <= Utf32LEDetected || !container || container_kind == ReadOnlyKind) return true;
    const QTextCodec* target = codecForEncoding(to);
    if (!target) return true;
    const auto* editable = static_cast<const EditableDataContainer*>(container.get());
    for (int r = 0; r < editable->storedRowCount(); ++r)
        for (int c = 0; c < editable->storedCellCount(r); ++c) {
            const QByteArrayView bytes = editable->cellView(r, c);
            if (!bytes.isEmpty() && !target->canEncode(decodeCell(bytes, encoding, codec)))
                return false;
        }
    return true;
}

void TableData::refreshFillBits(int r0, int r1, int c0, int c1) {
    if (transposed) {
        forgetFillBits();
        return;
    }
    const auto* editable = static_cast<const EditableDataContainer*>(container.get());
    for (int c = c0; c <= c1; ++c) {
        const auto bits = fill_bits.find(c);
        if (bits == fill_bits.end()) continue;
        for (int r = r0; r <= r1; ++r)
            fillbits::set(bits->second, r, !editable->cellView(r, c).isEmpty());
    }
}

namespace {

bool bytesContain(QByteArrayView hay, QByteArrayView needle, bool fold_case) {
    if (hay.size() < needle.size()) return false;
    if (!fold_case)
        return memmem(hay.data(), size_t(hay.size()), needle.data(), size_t(needle.size())) !=
               nullptr;
    thread_local QByteArray lowered;
    if (lowered.size() < hay.size()) lowered.resize(hay.size());
    char* out = lowered.data();
    for (qsizetype i = 0; i < hay.size(); ++i) {
        const char c = hay[i];
        out[i] = (c >= 'A' && c <= 'Z') ? char(c + 32) : c;
    }
    return memmem(out, size_t(hay.size()), needle.data(), size_t(needle.size())) != nullptr;
}

} // namespace

bool TableData::bytesSearchable(QByteArrayView needle) const {
    if (needle.isEmpty() || transposed || loading || container_kind == ReadOnlyKind) return false;
    // Latin-1 bytes equal the text only for ASCII; UTF-8 bytes always do.
    if (encoding == Utf8) return true;
    if (encoding != Iso8859_1) return false;
    for (char c : needle)
        if (uchar(c) >= 128) return false;
    return true;
}

bool TableData::rawRowMayContain(int raw_row, QByteArrayView needle, bool fold_case) const {
    if (!bytesSearchable(needle)) return true;
    const auto* editable = static_cast<const EditableDataContainer*>(container.get());
    return bytesContain(editable->rowData(raw_row), needle, fold_case);
}

bool TableData::rawCellMayContain(int raw_row, int raw_column, QByteArrayView needle,
                                  bool fold_case) const {
    if (!bytesSearchable(needle)) return true;
    const auto* editable = static_cast<const EditableDataContainer*>(container.get());
    return bytesContain(editable->cellView(raw_row, raw_column), needle, fold_case);
}
