// Line surgery and the block rule of TableData: the operations that keep the
// hidden lists in step with the container when lines come and go.

#include "tabledata.h"

#include "editabledatacontainer.h"
#include "indexmapping.h"
#include "linetracking.h"

#include <algorithm>
#include <climits>

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
    linetracking::shiftForInsert(hidden, raw, count);
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
    linetracking::dropForRemoval(hidden, runs);
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

// ---------------------------------------------------------------------------
// Whole lines for the row and column commands

namespace {

// Above this many lines a change drops the fill bits rather than walk them:
// they are made again on the next block move that needs them.
constexpr int kFillBitsWalkLimit = 65536;

} // namespace

bool TableData::insertRawLines(bool stored_rows, int raw, int count) {
    if (count < 1 || raw < 0 || !container || container_kind == ReadOnlyKind) return false;
    std::vector<int>& hidden = stored_rows ? hidden_rows : hidden_columns;
    int& num_raw = stored_rows ? num_raw_rows : num_raw_cols;
    linetracking::shiftForInsert(hidden, raw, count);
    if (raw > num_raw) return false;
    const bool ok =
        stored_rows ? container->insertRows(raw, count) : container->insertColumns(raw, count);
    if (!ok) {
        forgetFillBits();
        return false;
    }
    if (stored_rows) {
        for (auto& entry : fill_bits)
            fillbits::insert(entry.second, raw, count);
    } else {
        moveFillColumns([raw, count](int c) { return c >= raw ? c + count : c; });
        for (int c = raw; c < raw + count; ++c)
            fill_bits.try_emplace(c);
    }
    num_raw = stored_rows ? container->rowCount() : container->columnCount();
    emitTableSize();
    return true;
}

bool TableData::insertRawRows(int raw_row, int count) {
    return insertRawLines(!transposed, raw_row, count);
}

bool TableData::insertRawColumns(int raw_column, int count) {
    return insertRawLines(transposed, raw_column, count);
}

RemovedLines TableData::takeLines(bool stored_rows, const LineRuns& asked) {
    RemovedLines out;
    out.stored_rows = stored_rows;
    if (!container || container_kind == ReadOnlyKind) return out;
    auto* editable = static_cast<EditableDataContainer*>(container.get());
    int& num_raw = stored_rows ? num_raw_rows : num_raw_cols;
    for (const LineRun& run : asked) {
        const int start = std::max(run.start, 0), end = std::min(run.end(), num_raw);
        if (start >= end) continue;
        if (!out.runs.empty() && out.runs.back().end() >= start) {
            out.runs.back().length = std::max(out.runs.back().end(), end) - out.runs.back().start;
            continue;
        }
        out.runs.push_back({start, end - start});
    }
    if (out.runs.empty()) return out;
    out.stored_rows_before = editable->storedRowCount();
    if (stored_rows) {
        out.cells = editable->captureRowRuns(out.runs);
        editable->removeRowRuns(out.runs);
        for (auto& entry : fill_bits)
            fillbits::remove(entry.second, out.runs);
    } else {
        out.cells = editable->captureColumnRuns(out.runs);
        editable->removeColumnRuns(out.runs);
        const LineRuns& runs = out.runs;
        moveFillColumns([&runs](int c) {
            int before = 0;
            for (const LineRun& run : runs) {
                if (c < run.start) break;
                if (c < run.end()) return -1;
                before += run.length;
            }
            return c - before;
        });
    }
    linetracking::dropForRemoval(stored_rows ? hidden_rows : hidden_columns, out.runs);
    num_raw = stored_rows ? editable->rowCount() : editable->columnCount();
    emitTableSize();
    return out;
}

RemovedLines TableData::takeRawRows(const LineRuns& runs) {
    return takeLines(!transposed, runs);
}

RemovedLines TableData::takeRawColumns(const LineRuns& runs) {
    return takeLines(transposed, runs);
}

bool TableData::restoreRawLines(const RemovedLines& lines) {
    if (lines.runs.empty() || !container || container_kind == ReadOnlyKind) return false;
    auto* editable = static_cast<EditableDataContainer*>(container.get());
    const bool stored_rows = lines.stored_rows;
    linetracking::shiftForRuns(stored_rows ? hidden_rows : hidden_columns, lines.runs);
    const int total = lines.count();
    if (stored_rows) {
        editable->insertRowRuns(lines.runs, lines.cells, lines.stored_rows_before);
        if (lines.runs.size() > 64 || total > kFillBitsWalkLimit) {
            forgetFillBits();
        } else {
            for (auto& entry : fill_bits)
                for (const LineRun& run : lines.runs) {
                    fillbits::insert(entry.second, run.start, run.length);
                    for (int r = run.start; r < run.end(); ++r)
                        if (!editable->cellView(r, entry.first).isEmpty())
                            fillbits::set(entry.second, r, true);
                }
        }
    } else {
        editable->insertColumnRuns(lines.runs, lines.cells);
        const LineRuns& runs = lines.runs;
        // Old columns move up past the runs; the put-back ones have no bits
        // until a block move asks for them.
        moveFillColumns([&runs](int c) {
            int pos = c;
            for (const LineRun& run : runs) {
                if (run.start > pos) break;
                pos += run.length;
            }
            return pos;
        });
    }
    num_raw_rows = editable->rowCount();
    num_raw_cols = editable->columnCount();
    emitTableSize();
    return true;
}

bool TableData::rotateLines(bool stored_rows, int first, int middle, int last) {
    if (first < 0 || middle <= first || last <= middle || !container ||
        container_kind == ReadOnlyKind)
        return false;
    auto* editable = static_cast<EditableDataContainer*>(container.get());
    const std::vector<int>& hidden = stored_rows ? hidden_rows : hidden_columns;
    std::vector<int> positions;
    positions.reserve(size_t(last - first));
    for (int m = first; m < last; ++m)
        positions.push_back(indexmapping::rawFromModel(hidden, m));
    const int n = int(positions.size());
    const int shift = middle - first;
    // The line at positions[j] goes to positions[(j - shift) mod n].
    auto destination = [&](int j) { return positions[size_t((j - shift + n) % n)]; };
    if (stored_rows) {
        if (n > kFillBitsWalkLimit) {
            forgetFillBits();
        } else {
            std::vector<char> was(static_cast<size_t>(n));
            for (auto& entry : fill_bits) {
                for (int j = 0; j < n; ++j)
                    was[size_t(j)] = fillbits::test(entry.second, positions[size_t(j)]);
                for (int j = 0; j < n; ++j)
                    fillbits::set(entry.second, destination(j), was[size_t(j)]);
            }
        }
        editable->rotateRows(positions, shift);
    } else {
        std::vector<int> P(size_t(positions.back() + 1));
        for (int c = 0; c < int(P.size()); ++c)
            P[size_t(c)] = c;
        for (int j = 0; j < n; ++j)
            P[size_t(positions[size_t(j)])] = destination(j);
        editable->applyColumnPermutation(P);
        moveFillColumns([&P](int c) { return c < int(P.size()) ? P[size_t(c)] : c; });
    }
    // The counts are kept as stored, whatever the transposition.
    const int rows = editable->rowCount(), cols = editable->columnCount();
    if (rows != num_raw_rows || cols != num_raw_cols) {
        num_raw_rows = rows;
        num_raw_cols = cols;
        emitTableSize();
    }
    return true;
}

bool TableData::rotateModelRows(int first, int middle, int last) {
    return rotateLines(!transposed, first, middle, last);
}

bool TableData::rotateModelColumns(int first, int middle, int last) {
    return rotateLines(transposed, first, middle, last);
}

bool TableData::moveRow(int p, int d) {
    if (d == 0 || p < 0 || p + d < 0) return false;
    return d < 0 ? rotateModelRows(p + d, p, p + 1) : rotateModelRows(p, p + 1, p + d + 1);
}

bool TableData::moveColumn(int p, int d) {
    if (d == 0 || p < 0 || p + d < 0) return false;
    return d < 0 ? rotateModelColumns(p + d, p, p + 1) : rotateModelColumns(p, p + 1, p + d + 1);
}

int TableData::storedRowMark() const {
    if (!container || container_kind == ReadOnlyKind) return 0;
    return static_cast<const EditableDataContainer*>(container.get())->storedRowCount();
}

void TableData::restoreStoredRowMark(int mark) {
    if (!container || container_kind == ReadOnlyKind) return;
    static_cast<EditableDataContainer*>(container.get())->dropEmptyStoredRowsFrom(mark);
}
