// One line of the table read against a test, for filters: every cell of a
// column (or a row) decoded once and asked, on two threads where the store
// allows it.

#include "editabledatacontainer.h"
#include "fileparameters.h"
#include "readonlydatacontainer.h"
#include "tabledata.h"

#include <algorithm>
#include <thread>

namespace {

// Lines per thread below which a second thread costs more than it saves.
constexpr int kThreadedLines = 20000;

} // namespace

std::vector<char> TableData::matchLine(bool rows_move, int index, int first,
                                       const std::function<CellTest()>& make_test) const {
    if (!container || loading || reordering || index < 0) return {};
    const bool stored_rows = rows_move != transposed;
    const int count = stored_rows ? num_raw_rows : num_raw_cols;
    const int across = stored_rows ? num_raw_cols : num_raw_rows;
    std::vector<char> out(size_t(std::max(count, 0)), char(1));
    if (index >= across) {
        // A line past the data holds only empty cells.
        const bool empty_passes = make_test()(QString());
        std::fill(out.begin() + std::clamp(first, 0, count), out.end(), char(empty_passes));
        return out;
    }
    first = std::clamp(first, 0, count);

    if (container_kind == ReadOnlyKind) {
        const auto* c = static_cast<const ReadOnlyDataContainer*>(container.get());
        // The file is read in its own order; positions find their line
        // through the index map.
        std::vector<char> by_file(out.size(), char(1));
        const CellTest test = make_test();
        auto take = [&](int i, QByteArrayView bytes) {
            if (i >= 0 && size_t(i) < by_file.size())
                by_file[size_t(i)] = char(test(decodeCell(bytes, encoding, codec)));
            return true;
        };
        const bool read = stored_rows ? c->readFileColumn(c->fileColumn(index), take)
                                      : c->readFileRow(c->fileRow(index), take);
        if (!read) return {};
        const std::vector<int>& map = sortKeyMap(rows_move);
        for (int p = first; p < count; ++p)
            out[size_t(p)] = map.empty() ? by_file[size_t(p)] : by_file[size_t(map[size_t(p)])];
        return out;
    }

    const auto* c = static_cast<const EditableDataContainer*>(container.get());
    auto run = [&](int from, int to) {
        const CellTest test = make_test();
        QString text;
        for (int p = from; p < to; ++p) {
            decodeCellInto(text, stored_rows ? c->cellView(p, index) : c->cellView(index, p),
                           encoding, codec);
            out[size_t(p)] = char(test(text));
        }
    };
    const int lines = count - first;
    if (lines >= 2 * kThreadedLines && decodesWithoutCodec() &&
        std::thread::hardware_concurrency() > 1) {
        const int half = first + lines / 2;
        std::thread second([&run, half, count] { run(half, count); });
        run(first, half);
        second.join();
    } else {
        run(first, count);
    }
    return out;
}
