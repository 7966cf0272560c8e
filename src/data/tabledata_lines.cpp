// Line surgery and the block rule of TableData: the operations that keep the
// hidden lists in step with the container when lines come and go.

#include "tabledata.h"

#include "editabledatacontainer.h"
#include "indexmapping.h"

#include <algorithm>
#include <climits>

namespace {

// Shifts the hidden raw indexes at or above `raw` by `count`.
void shiftHiddenForInsert(std::vector<int>& hidden, int raw, int count) {
    for (int& h : hidden)
        if (h >= raw) h += count;
}

} // namespace

bool TableData::isRawCellEmpty(int raw_row, int raw_column) const {
    if (!container || reordering || raw_row < 0 || raw_column < 0) return true;
    if (transposed) std::swap(raw_row, raw_column);
    if (container_kind != ReadOnlyKind)
        return static_cast<const EditableDataContainer*>(container.get())
            ->cellView(raw_row, raw_column)
            .isEmpty();
    return container->data(raw_row, raw_column).isEmpty();
}

// With the table transposed a model row is a stored column; each line form
// works on the stored axis it stands for.
bool TableData::insertLines(bool stored_rows, int model_pos, int count) {
    if (count < 1 || model_pos < 0) return false;
    std::vector<int>& hidden = stored_rows ? hidden_rows : hidden_columns;
    int& num_raw = stored_rows ? num_raw_rows : num_raw_cols;
    const int raw = indexmapping::rawFromModel(hidden, model_pos);
    shiftHiddenForInsert(hidden, raw, count);
    if (raw >= num_raw) return true; // past the data: nothing is stored there
    const bool ok =
        stored_rows ? container->insertRows(raw, count) : container->insertColumns(raw, count);
    if (!ok) {
        forgetFillBits();
        return false;
    }
    // The bits move with the lines: one pass over each column's words.
    if (stored_rows) {
        for (auto& [column, bits] : fill_bits)
            fillbits::insert(bits, raw, count);
    } else {
        moveFillColumns([&](int c) { return c >= raw ? c + count : c; });
        // New columns hold nothing: no walk is needed to know it.
        if (container_kind != ReadOnlyKind)
            for (int c = raw; c < raw + count; ++c)
                fill_bits.try_emplace(c);
    }
    num_raw += count;
    emitTableSize();
    return true;
}

bool TableData::insertRows(int model_row, int count) {
    return insertLines(!transposed, model_row, count);
}

bool TableData::insertColumns(int model_column, int count) {
    return insertLines(transposed, model_column, count);
}

namespace {

struct Run {
    int start;
    int length;
};

// The raw runs behind the model positions [model_pos, model_pos + count),
// without the part past the stored data.
std::vector<Run> rawRuns(const std::vector<int>& hidden, int model_pos, int count, int num_raw) {
    std::vector<Run> runs;
    for (int m = model_pos; m < model_pos + count; ++m) {
        const int raw = indexmapping::rawFromModel(hidden, m);
        if (raw >= num_raw) break;
        if (!runs.empty() && runs.back().start + runs.back().length == raw)
            ++runs.back().length;
        else
            runs.push_back({raw, 1});
    }
    return runs;
}

void dropHiddenForRemoval(std::vector<int>& hidden, const std::vector<Run>& runs) {
    std::vector<int> kept;
    kept.reserve(hidden.size());
    size_t k = 0;
    int removed_before = 0;
    for (int h : hidden) {
        while (k < runs.size() && runs[k].start + runs[k].length <= h)
            removed_before += runs[k++].length;
        if (k < runs.size() && h >= runs[k].start) continue; // inside a removed run
        kept.push_back(h - removed_before);
    }
    hidden.swap(kept);
}

// The first position from p, stepping by step up to and including limit,
// whose bit is `want`; limit + step when none. Rows past the bits are empty.
int seekBits(const std::vector<uint64_t>& bits, int p, int step, int limit, bool want) {
    const int stored = int(bits.size() * 64);
    auto word = [&](int w) { return want ? bits[size_t(w)] : ~bits[size_t(w)]; };
    if (step > 0) {
        while (p <= limit) {
            if (p >= stored) return want ? limit + 1 : p;
            const uint64_t hits = word(p / 64) >> (p % 64);
            if (hits) {
                const int at = p + __builtin_ctzll(hits);
                return at <= limit ? at : limit + 1;
            }
            p = (p / 64 + 1) * 64;
        }
        return limit + 1;
    }
    while (p >= limit) {
        if (p >= stored) {
            if (!want) return p;
            p = stored - 1;
            continue;
        }
        const int shift = 63 - p % 64;
        const uint64_t hits = word(p / 64) << shift;
        if (hits) {
            const int at = p - __builtin_clzll(hits);
            return at >= limit ? at : limit - 1;
        }
        p = (p / 64) * 64 - 1;
    }
    return limit - 1;
}

} // namespace

bool TableData::removeLines(bool stored_rows, int model_pos, int count) {
    if (count < 1 || model_pos < 0) return false;
    std::vector<int>& hidden = stored_rows ? hidden_rows : hidden_columns;
    int& num_raw = stored_rows ? num_raw_rows : num_raw_cols;
    const std::vector<Run> runs = rawRuns(hidden, model_pos, count, num_raw);
    if (runs.empty()) return true;
    for (auto it = runs.rbegin(); it != runs.rend(); ++it) {
        const bool ok = stored_rows ? container->removeRows(it->start, it->length)
                                    : container->removeColumns(it->start, it->length);
        if (!ok) {
            forgetFillBits();
            return false;
        }
    }
    if (stored_rows) {
        for (auto& [column, bits] : fill_bits)
            fillbits::remove(bits, runs);
    } else {
        // Runs are in order: a column keeps its bits, moved down by the
        // columns removed before it, unless a run took it.
        moveFillColumns([&](int c) {
            int before = 0;
            for (const Run& run : runs) {
                if (c < run.start) break;
                if (c < run.start + run.length) return -1;
                before += run.length;
            }
            return c - before;
        });
    }
    dropHiddenForRemoval(hidden, runs);
    num_raw = stored_rows ? container->rowCount() : container->columnCount();
    emitTableSize();
    return true;
}

bool TableData::removeRows(int model_row, int count) {
    return removeLines(!transposed, model_row, count);
}

bool TableData::removeColumns(int model_column, int count) {
    return removeLines(transposed, model_column, count);
}

int TableData::blockTarget(int raw_row, int raw_column, int direction) const {
    const bool vertical = direction < 2;
    const int step = (direction == 0 || direction == 2) ? -1 : 1;
    const int size = vertical ? numRawRows() : numRawColumns();
    const int pos = vertical ? raw_row : raw_column;
    auto filled = [&](int p) {
        return vertical ? !isRawCellEmpty(p, raw_column) : !isRawCellEmpty(raw_row, p);
    };
    const int next = pos + step;
    if (next < 0 || (step > 0 && next >= size)) return pos;
    const int limit = step > 0 ? size - 1 : INT_MAX;
    auto in_range = [&](int p) { return p >= 0 && p <= limit; };
    // The first position from p on whose fill is `want`, or the first past
    // the range. Along a stored column of the editable store (down a column,
    // or across a row when transposed) this reads the column's fill bits.
    auto seek = [&](int p, bool want) {
        if (vertical != transposed && container_kind != ReadOnlyKind && in_range(p))
            return seekBits(fillBits(vertical ? raw_column : raw_row), p, step,
                            step > 0 ? limit : 0, want);
        while (in_range(p) && filled(p) != want)
            p += step;
        return p;
    };
    const bool cell_filled = filled(pos);
    const bool next_filled = filled(next);
    if (cell_filled != next_filled) {
        // From a gap onto data: one step.
        if (!cell_filled || next_filled) return next;
        // From the end of data across a gap to the next data, or to the edge.
        const int p = seek(pos + 2 * step, true);
        return step > 0 ? std::min(p, limit) : p;
    }
    int p = seek(pos + 2 * step, !cell_filled);
    if (in_range(p)) {
        // A run of data ends on its last filled cell; a run of blanks on the
        // first filled one.
        if (cell_filled) p -= step;
        return std::min(std::max(p, 0), limit);
    }
    return step > 0 ? limit : 0;
}
