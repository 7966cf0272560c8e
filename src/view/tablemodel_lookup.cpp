// Column lookup on the model: the source's keys and values read into a
// LookupMap, and the destination's cells to write built from it, as stored
// bytes, one raw column at a time, so that a million rows cost a few passes
// over bytes and no string per cell.

#include "tablemodel.h"

#include "data/fileparameters.h"
#include "view/lookupmap.h"

#include <QHashFunctions>

#include <algorithm>
#include <cstring>

namespace {

// Keys decoded and hashed a batch at a time, each batch's buckets and
// entries asked for before the first probe.
constexpr int kBatch = 16;

// The cells of a raw column [first_row, last_row] as views into `cells`
// (captured by the caller); rows the capture did not reach are empty.
std::vector<QByteArrayView> cellViews(const StoredCells& cells, int count,
                                      std::vector<bool>* quoted = nullptr) {
    std::vector<QByteArrayView> views;
    views.resize(size_t(count));
    if (quoted) quoted->assign(size_t(count), false);
    StoredCells::Reader reader(cells);
    for (int i = 0; i < count && !reader.atEnd(); ++i) {
        bool q = false;
        views[size_t(i)] = reader.next(&q);
        if (quoted && q) (*quoted)[size_t(i)] = true;
    }
    return views;
}

} // namespace

// ---- LookupMap ----

void LookupMap::eachKey(const StoredCells& keys, int count, EncodingType encoding,
                        const std::function<void(int, const QString&, size_t)>& take) const {
    QString batch[kBatch];
    size_t hashes[kBatch];
    StoredCells::Reader reader(keys);
    for (int base = 0; base < count; base += kBatch) {
        const int n = std::min(kBatch, count - base);
        for (int k = 0; k < n; ++k) {
            decodeCellInto(batch[k], reader.atEnd() ? QByteArrayView() : reader.next(nullptr),
                       encoding);
            hashes[k] = hashOf(batch[k]);
            prefetchBucket(hashes[k]);
        }
        for (int k = 0; k < n; ++k)
            prefetchEntry(hashes[k]);
        for (int k = 0; k < n; ++k)
            take(base + k, batch[k], hashes[k]);
    }
}

bool LookupMap::sameKey(const Entry& e, QStringView key) const {
    return e.length == key.size() &&
           std::memcmp(keyData(e), key.data(), size_t(e.length) * sizeof(char16_t)) == 0;
}

size_t LookupMap::hashOf(QStringView key) {
    return qHash(key, size_t(0));
}

int LookupMap::find(QStringView key) const {
    return find(key, hashOf(key));
}

int LookupMap::find(QStringView key, size_t h) const {
    if (buckets.empty()) return -1;
    const quint32 tag = quint32(h >> 32);
    for (size_t i = h & mask;; i = (i + 1) & mask) {
        const Bucket& b = buckets[i];
        if (b.entry < 0) return -1;
        if (b.tag == tag && sameKey(entries[size_t(b.entry)], key)) return b.entry;
    }
}

QStringList LookupMap::values(QStringView key) const {
    const int e = find(key);
    if (e < 0) return {};
    QStringList out;
    for (int j = 0; j < valueCount(); ++j)
        out << decodeCell(valueBytes(e, j), encoding_);
    return out;
}

void LookupMap::reserve(int keys) {
    size_t capacity = 16;
    while (capacity < size_t(keys) * 2)
        capacity <<= 1;
    buckets.assign(capacity, Bucket());
    mask = capacity - 1;
    entries.clear();
    entries.reserve(size_t(keys));
}

void LookupMap::insert(QStringView key, size_t h, int row) {
    const quint32 tag = quint32(h >> 32);
    size_t i = h & mask;
    for (;; i = (i + 1) & mask) {
        const Bucket& b = buckets[i];
        if (b.entry < 0) break;
        if (b.tag == tag && sameKey(entries[size_t(b.entry)], key)) {
            entries[size_t(b.entry)].row = row; // the later row wins
            return;
        }
    }
    buckets[i] = {tag, qint32(entries.size())};
    Entry e;
    e.row = row;
    e.length = qint32(key.size());
    if (key.size() <= kInlineChars) {
        std::memcpy(e.chars, key.data(), size_t(key.size()) * sizeof(char16_t));
    } else {
        e.start = arena.size();
        arena.append(key);
    }
    entries.push_back(e);
}

// ---- The model's side ----

LookupMap TableModel::buildLookupMap(int key_col, const std::vector<int>& value_cols,
                                     int first_row) const {
    LookupMap map;
    map.encoding_ = table_data.encodingType();
    const int rows = table_data.numRawRows(), cols = table_data.numRawColumns();
    auto inside = [cols](int c) { return c >= 0 && c < cols; };
    if (!inside(key_col) || value_cols.empty() || first_row < 0 || first_row >= rows ||
        !std::all_of(value_cols.begin(), value_cols.end(), inside) || table_data.isLoading())
        return map;
    const int count = rows - first_row;
    const int last_row = rows - 1;

    map.reserve(count);
    // In row order, so that the last row of a key wins.
    map.eachKey(table_data.captureRaw(first_row, last_row, key_col, key_col), count, map.encoding_,
                [&map](int row, const QString& key, size_t hash) { map.insert(key, hash, row); });
    map.arena.squeeze();

    // The value columns, each captured once (a column named twice shares it).
    for (int c : value_cols) {
        const auto same = std::find(value_cols.begin(), value_cols.end(), c);
        const size_t earlier = size_t(same - value_cols.begin());
        if (earlier < map.value_cells.size()) {
            map.value_cells.push_back(map.value_cells[earlier]);
            continue;
        }
        map.value_columns.push_back(table_data.captureRaw(first_row, last_row, c, c));
        map.value_cells.push_back(cellViews(map.value_columns.back(), count));
    }
    map.valid = true;
    return map;
}

void TableModel::lookupRanges(RangeVector& out, const LookupMap& map, int key_col,
                              int first_value_col, const QString& mismatch, int first_row,
                              bool insert) const {
    out.clear();
    const int rows = table_data.numRawRows(), cols = table_data.numRawColumns();
    if (!map.isValid() || read_only || table_data.isLoading() || key_col < 0 || key_col >= cols ||
        first_row < 0 || first_row >= rows || first_value_col < 0)
        return;
    const int count = rows - first_row;
    const int last_row = rows - 1;
    const int width = map.valueCount();

    // Each destination row's source row (from the map's first row), or -1.
    std::vector<int> found(size_t(count), -1);
    map.eachKey(table_data.captureRaw(first_row, last_row, key_col, key_col), count,
                table_data.encodingType(),
                [&map, &found](int row, const QString& key, size_t hash) {
                    const int e = map.find(key, hash);
                    found[size_t(row)] = e < 0 ? -1 : map.entries[size_t(e)].row;
                });

    // Values cross over as bytes when both tables store text alike, and
    // through their text otherwise.
    const bool same_encoding = map.encoding() == table_data.encodingType();
    auto valueBytes = [&](int row, int j) -> QByteArray {
        const QByteArrayView bytes = map.value_cells[size_t(j)][size_t(row)];
        if (same_encoding || bytes.isEmpty()) return bytes.toByteArray();
        return table_data.encodeText(decodeCell(bytes, map.encoding()));
    };
    const QByteArray mismatch_bytes = table_data.encodeText(mismatch);
    // Overwriting, a row without a match and without a mismatch text keeps
    // its cell: its own bytes and quotes go back into the new column.
    const bool keep_unmatched = !insert && mismatch.isEmpty();

    for (int j = 0; j < width; ++j) {
        const int col = first_value_col + j;
        StoredCells old_cells;
        std::vector<QByteArrayView> old_views;
        std::vector<bool> old_quoted;
        if (keep_unmatched && col < cols) {
            old_cells = table_data.captureRaw(first_row, last_row, col, col);
            old_views = cellViews(old_cells, count, &old_quoted);
        }
        StoredCells cells(first_row, last_row, col, col);
        cells.reserve(qsizetype(count) * 8);
        const std::vector<QByteArrayView>& values = map.value_cells[size_t(j)];
        // The values lie in the source's order: each is asked for a few
        // rows ahead, its place first and then its bytes.
        constexpr int kAhead = 16;
        for (int i = 0; i < std::min(count, kAhead); ++i)
            if (found[size_t(i)] >= 0) __builtin_prefetch(&values[size_t(found[size_t(i)])]);
        for (int i = 0; i < count; ++i) {
            if (i + kAhead < count && found[size_t(i + kAhead)] >= 0)
                __builtin_prefetch(&values[size_t(found[size_t(i + kAhead)])]);
            if (i + kAhead / 2 < count && found[size_t(i + kAhead / 2)] >= 0)
                __builtin_prefetch(values[size_t(found[size_t(i + kAhead / 2)])].data());
            const int row = found[size_t(i)];
            if (row >= 0) {
                if (same_encoding)
                    cells.append(values[size_t(row)], false);
                else
                    cells.append(valueBytes(row, j), false);
            } else if (!mismatch.isEmpty()) {
                cells.append(mismatch_bytes, false);
            } else if (!old_views.empty()) {
                cells.append(old_views[size_t(i)], old_quoted[size_t(i)]);
            } else {
                cells.append(QByteArrayView(), false);
            }
        }
        cells.squeeze();
        Range r = Range::wholeTable(Range::Raw);
        r.row = first_row;
        r.row_end = last_row;
        r.col = col;
        r.col_end = col;
        r.value = QVariant::fromValue(std::move(cells));
        out.push_back(std::move(r));
    }
}
