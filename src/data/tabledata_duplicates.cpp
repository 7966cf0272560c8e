// Duplicate and empty lines of TableData, found on the stored bytes: a
// line's cells are hashed as they lie in the store, the hashes sorted, and
// only lines with equal hashes compared byte for byte. No cell becomes text,
// so five million rows take about a second.

#include "editabledatacontainer.h"
#include "tabledata.h"

#include <algorithm>
#include <cstring>

namespace {

inline uint64_t mix(uint64_t h, uint64_t v) {
    h ^= v + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2);
    h *= 0xff51afd7ed558ccdULL;
    return h ^ (h >> 33);
}

// A cell's bytes, eight at a time.
uint64_t hashBytes(QByteArrayView bytes) {
    const char* p = bytes.data();
    qsizetype n = bytes.size();
    uint64_t h = 0xcbf29ce484222325ULL ^ uint64_t(n);
    while (n >= 8) {
        uint64_t w;
        std::memcpy(&w, p, 8);
        h = (h ^ w) * 0x100000001b3ULL;
        h ^= h >> 29;
        p += 8;
        n -= 8;
    }
    uint64_t tail = 0;
    std::memcpy(&tail, p, size_t(n));
    h = (h ^ tail) * 0x9fb21c651e98df25ULL;
    return h ^ (h >> 32);
}

// What a line adds for the cell at compared position k: only cells with
// bytes count, so that a missing cell and an empty one are the same.
inline uint64_t cellTerm(int k, QByteArrayView bytes) {
    return mix(uint64_t(k) * 0x2545f4914f6cdd1dULL, hashBytes(bytes));
}

} // namespace

std::vector<int> TableData::duplicateLines(bool stored_rows, int first,
                                           const std::vector<int>& compared) const {
    std::vector<int> result;
    if (!container) return result;
    const int lines = stored_rows ? container->rowCount() : container->columnCount();
    first = std::max(first, 0);
    if (first >= lines) return result;
    const int n = lines - first;
    const auto* editable = container_kind == ReadOnlyKind
                               ? nullptr
                               : static_cast<const EditableDataContainer*>(container.get());
    // The cell of line `line` at position `at` across it.
    auto cell = [&](int line, int at, QByteArray& keep) -> QByteArrayView {
        const int r = stored_rows ? line : at, c = stored_rows ? at : line;
        if (editable) return editable->cellView(r, c);
        keep = container->data(r, c, true);
        return keep;
    };
    const int across = stored_rows ? container->columnCount() : container->rowCount();
    std::vector<int> positions = compared;
    if (positions.empty())
        for (int i = 0; i < across; ++i)
            positions.push_back(i);

    std::vector<uint64_t> hashes(static_cast<size_t>(n), 0x84222325cbf29ce4ULL);
    QByteArray keep;
    if (stored_rows || !editable) {
        for (int i = 0; i < n; ++i) {
            uint64_t h = hashes[size_t(i)];
            for (size_t k = 0; k < positions.size(); ++k) {
                const QByteArrayView bytes = cell(first + i, positions[k], keep);
                if (!bytes.isEmpty()) h = mix(h, cellTerm(int(k), bytes));
            }
            hashes[size_t(i)] = h;
        }
    } else {
        // Lines across the stored rows: one walk down the rows, each row
        // adding to the hash of every line.
        for (size_t k = 0; k < positions.size(); ++k) {
            const int r = positions[k];
            for (int i = 0; i < n && first + i < editable->storedCellCount(r); ++i) {
                const QByteArrayView bytes = editable->cellView(r, first + i);
                if (!bytes.isEmpty())
                    hashes[size_t(i)] = mix(hashes[size_t(i)], cellTerm(int(k), bytes));
            }
        }
    }
    auto equal = [&](int a, int b) {
        QByteArray keep_a, keep_b;
        for (int at : positions)
            if (cell(a, at, keep_a) != cell(b, at, keep_b)) return false;
        return true;
    };

    std::vector<std::pair<uint64_t, int>> order(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i)
        order[size_t(i)] = {hashes[size_t(i)], first + i};
    std::vector<uint64_t>().swap(hashes);
    std::sort(order.begin(), order.end());
    // Within a run of equal hashes, lines in ascending order: each is a
    // duplicate of the first earlier line it equals, or starts a group.
    std::vector<int> heads;
    for (size_t a = 0; a < order.size();) {
        size_t b = a + 1;
        while (b < order.size() && order[b].first == order[a].first)
            ++b;
        if (b - a > 1) {
            heads.clear();
            for (size_t i = a; i < b; ++i) {
                const int line = order[i].second;
                bool repeated = false;
                for (int head : heads)
                    if (equal(head, line)) {
                        repeated = true;
                        break;
                    }
                if (repeated)
                    result.push_back(line);
                else
                    heads.push_back(line);
            }
        }
        a = b;
    }
    std::sort(result.begin(), result.end());
    return result;
}

std::vector<int> TableData::duplicateRawRows(int first_row,
                                             const std::vector<int>& compared_columns) const {
    return duplicateLines(!transposed, first_row, compared_columns);
}

std::vector<int> TableData::duplicateRawColumns(int first_column,
                                                const std::vector<int>& compared_rows) const {
    return duplicateLines(transposed, first_column, compared_rows);
}

std::vector<int> TableData::emptyRawRows(int first_row,
                                         const std::vector<int>& compared_columns) const {
    if (!container) return {};
    const SelectionMode mode = compared_columns.empty() ? All : Only;
    IndexList lines = transposed ? container->emptyColumns(0, mode, compared_columns)
                                 : container->emptyRows(0, mode, compared_columns);
    lines.erase(lines.begin(), std::lower_bound(lines.begin(), lines.end(), first_row));
    return lines;
}

std::vector<int> TableData::emptyRawColumns(int first_column,
                                            const std::vector<int>& compared_rows) const {
    if (!container) return {};
    const SelectionMode mode = compared_rows.empty() ? All : Only;
    IndexList lines = transposed ? container->emptyRows(0, mode, compared_rows)
                                 : container->emptyColumns(0, mode, compared_rows);
    lines.erase(lines.begin(), std::lower_bound(lines.begin(), lines.end(), first_column));
    return lines;
}
