// The Data menu's rewrites of cell text: each a function of a cell's text
// (or of its place in the selection) applied to every selected cell, as one
// undo step.
//
// Two ways to the same result. A small member goes cell by cell through the
// model's coordinates, which makes hidden lines drop out for free. A large
// one (a whole column of millions of cells) is rewritten on its stored
// bytes: each raw run is captured as StoredCells, decoded, transformed,
// encoded into a second StoredCells, and both are handed to the undo command
// as they are, so neither the step nor its undo ever holds a QString per
// cell. Unchanged cells keep their bytes and their quotes.

#include "tableview.h"

#include "data/fileparameters.h"
#include "edit/casetransforms.h"
#include "edit/celltransforms.h"
#include "edit/commands/setmodeldatacommand.h"
#include "edit/datetimeconversion.h"
#include "edit/valueparsers.h"
#include "view/tablemodel.h"

#include <QRandomGenerator64>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <unordered_map>

namespace {

struct Extent {
    int r0, r1, c0, c1;
    qint64 cells() const { return qint64(r1 - r0 + 1) * (c1 - c0 + 1); }
};

// A member's extent with open ends stopped at the last line of `rows` x
// `cols`; false when nothing of it is left.
bool closedExtent(const Range& r, int rows, int cols, Extent& e) {
    switch (r.kind) {
    case Range::Cell:
        e = {r.row, r.row, r.col, r.col};
        break;
    case Range::Row:
        e = {r.row, r.row, r.col, r.col_end};
        break;
    case Range::Column:
        e = {r.row, r.row_end, r.col, r.col};
        break;
    case Range::Block:
        e = {r.row, r.row_end, r.col, r.col_end};
        break;
    default:
        return false;
    }
    if (e.r1 == Range::kToEnd) e.r1 = rows - 1;
    if (e.c1 == Range::kToEnd) e.c1 = cols - 1;
    return e.r0 >= 0 && e.c0 >= 0 && e.r0 <= e.r1 && e.c0 <= e.c1;
}

bool hasExclusions(const Range& r) {
    return !r.excluded_rows.empty() || !r.excluded_cols.empty() || !r.excluded_cells.empty();
}

bool isUnicode(EncodingType encoding) {
    return encoding <= Utf32LEDetected;
}

// The rewrite of one run of stored cells.
struct BulkJob {
    const TableData* data;
    const TableView::TextFunction* f;
    bool empty_keeps;
    Range piece; // raw, closed, for the holes of a member with exclusions
    Extent e;
    StoredCells old_cells;
    StoredCells new_cells;
    bool changed = false;

    void run() {
        old_cells = data->captureRaw(e.r0, e.r1, e.c0, e.c1);
        new_cells = StoredCells(e.r0, e.r1, e.c0, e.c1);
        new_cells.reserve(old_cells.byteSize());
        const EncodingType encoding = data->encodingType();
        const bool check_round_trip = !isUnicode(encoding);
        const bool holes = hasExclusions(piece);
        // Columns repeat their values (dates, categories): the rewrite of a
        // short text is kept by its bytes. Keys are copies short enough to
        // sit inside the table's nodes, so a lookup never reaches back into
        // the capture; the table is bounded, so a column of unique texts
        // costs a lookup a cell and no more memory.
        struct Result {
            bool keep;
            QByteArray bytes;
        };
        std::unordered_map<std::string, Result> seen;
        constexpr size_t kMaxSeen = 1 << 16;
        constexpr qsizetype kMaxKey = 15; // std::string's inline capacity
        auto rewrite = [&](QByteArrayView bytes) {
            const QString text = decodeCell(bytes, encoding);
            const QString out = (*f)(text);
            Result result{true, {}};
            if (out != text && !(empty_keeps && out.isEmpty())) {
                result.bytes = encodeCell(out, encoding);
                // A character the file's encoding can't hold would be lost on
                // the way in: such a cell stays.
                result.keep = check_round_trip && decodeCell(result.bytes, encoding) != out;
            }
            return result;
        };
        StoredCells::Reader reader(old_cells);
        const bool any_captured = !old_cells.isEmpty();
        for (int r = e.r0; r <= e.r1; ++r)
            for (int c = e.c0; c <= e.c1; ++c) {
                QByteArrayView bytes;
                bool quoted = false;
                if (any_captured && r <= old_cells.lastRow() && c <= old_cells.lastColumn())
                    bytes = reader.next(&quoted);
                if (holes && !piece.containsCell(r, c)) {
                    new_cells.append(bytes, quoted);
                    continue;
                }
                const Result* result = nullptr;
                Result fresh;
                if (bytes.size() <= kMaxKey) {
                    std::string key(bytes.data(), size_t(bytes.size()));
                    auto found = seen.find(key);
                    if (found == seen.end() && seen.size() < kMaxSeen)
                        found = seen.emplace(std::move(key), rewrite(bytes)).first;
                    if (found != seen.end()) result = &found->second;
                }
                if (!result) {
                    fresh = rewrite(bytes);
                    result = &fresh;
                }
                if (result->keep) {
                    new_cells.append(bytes, quoted);
                } else {
                    new_cells.append(result->bytes, false);
                    changed = true;
                }
            }
        new_cells.squeeze();
    }
};

// The values for a member's selected cells, given their texts in row-major
// order and their places (row, column offsets from the extent's corner).
using Offsets = std::vector<std::pair<int, int>>;
using ValueMaker =
    std::function<QStringList(const Extent& e, const Offsets& places, const QStringList& texts)>;

} // namespace

// ---- The two pipelines ----

namespace {

// Cell by cell in model coordinates; `make` gives each selected cell its
// text. Members where nothing changes are left out of the step.
void perCellRanges(TableModel& m, const Range& member, const Extent& e, const ValueMaker& make,
                   RangeVector& out) {
    Offsets places;
    QStringList texts;
    places.reserve(size_t(e.cells()));
    texts.reserve(e.cells());
    for (int r = e.r0; r <= e.r1; ++r)
        for (int c = e.c0; c <= e.c1; ++c) {
            if (member.kind != Range::Cell && !member.containsCell(r, c)) continue;
            places.emplace_back(r - e.r0, c - e.c0);
            texts.append(m.cellText(r, c));
        }
    const QStringList values = make(e, places, texts);
    if (values.size() != texts.size() || values == texts) return;
    Range block = Range::wholeTable(Range::Model);
    block.row = e.r0, block.row_end = e.r1, block.col = e.c0, block.col_end = e.c1;
    block.value_grid.assign(size_t(e.r1 - e.r0 + 1),
                            std::vector<QVariant>(size_t(e.c1 - e.c0 + 1)));
    // Cells outside the member are holes the write steps over, and so are
    // those that keep their text: their bytes and quotes stay as they are.
    for (int r = e.r0; r <= e.r1; ++r)
        for (int c = e.c0; c <= e.c1; ++c)
            if (member.kind != Range::Cell && !member.containsCell(r, c))
                block.excluded_cells.emplace_back(r, c);
    for (qsizetype i = 0; i < values.size(); ++i) {
        const auto [dr, dc] = places[size_t(i)];
        if (values.at(i) == texts.at(i))
            block.excluded_cells.emplace_back(e.r0 + dr, e.c0 + dc);
        else
            block.value_grid[size_t(dr)][size_t(dc)] = values.at(i);
    }
    out.push_back(std::move(block));
}

} // namespace

void TableView::transformSelectedCells(const TextFunction& f, bool empty_keeps) {
    if (table_model->isReadOnly()) return;
    TableModel& m = *table_model;
    TableData& data = m.tableData();
    RangeVector ranges;
    std::vector<BulkJob> jobs;
    for (const Range& member : m.selectionRanges()) {
        Extent e{};
        // Open ends stop at the data: the endless grid beyond holds nothing.
        if (!closedExtent(member, data.numModelRows(), data.numModelColumns(), e)) continue;
        if (e.cells() < bulk_transform_cells) {
            perCellRanges(
                m, member, e,
                [&f, empty_keeps](const Extent&, const Offsets&, const QStringList& texts) {
                    QStringList out = texts;
                    for (QString& text : out) {
                        QString value = f(text);
                        if (!(empty_keeps && value.isEmpty())) text = std::move(value);
                    }
                    return out;
                },
                ranges);
            continue;
        }
        // Raw runs, split at hidden lines. The member is closed first: an
        // open end would run on over hidden lines after the last shown one.
        Range closed_member = member;
        if (closed_member.kind == Range::Row || closed_member.kind == Range::Block)
            closed_member.col_end = e.c1;
        if (closed_member.kind == Range::Column || closed_member.kind == Range::Block)
            closed_member.row_end = e.r1;
        for (const Range& piece : m.toRawRanges(RangeVector{closed_member})) {
            Extent pe{};
            if (!closedExtent(piece, data.numRawRows(), data.numRawColumns(), pe)) continue;
            Range closed = piece;
            closed.row = pe.r0, closed.row_end = pe.r1, closed.col = pe.c0, closed.col_end = pe.c1;
            if (closed.kind == Range::Cell) closed.kind = Range::Block;
            // Two halves for two threads; holes keep a run whole.
            const bool split = !hasExclusions(piece) && data.decodesWithoutCodec() &&
                               pe.cells() >= 2 * bulk_transform_cells && pe.r1 > pe.r0;
            const int middle = split ? pe.r0 + (pe.r1 - pe.r0 + 1) / 2 : pe.r1 + 1;
            for (const auto& [from, to] : {std::pair{pe.r0, middle - 1}, {middle, pe.r1}}) {
                if (from > to) continue;
                BulkJob job{&data, &f, empty_keeps, closed, {from, to, pe.c0, pe.c1}, {}, {}};
                job.piece.row = from;
                job.piece.row_end = to;
                jobs.push_back(std::move(job));
            }
        }
    }
    if (jobs.size() > 1 && data.decodesWithoutCodec()) {
        // Jobs only read the store, which nothing writes meanwhile.
        std::thread helper([&jobs] {
            for (size_t i = 1; i < jobs.size(); i += 2)
                jobs[i].run();
        });
        for (size_t i = 0; i < jobs.size(); i += 2)
            jobs[i].run();
        helper.join();
    } else {
        for (BulkJob& job : jobs)
            job.run();
    }
    for (BulkJob& job : jobs) {
        if (!job.changed) continue;
        Range r = job.piece;
        if (!hasExclusions(r)) r.kind = Range::Block;
        r.value = QVariant::fromValue(std::move(job.new_cells));
        r.old_value = QVariant::fromValue(std::move(job.old_cells));
        ranges.push_back(std::move(r));
    }
    if (ranges.empty()) return;
    // Per-cell members still carry model coordinates and no old values; the
    // command maps them and captures what they overwrite.
    RangeVector captured, fresh;
    for (Range& r : ranges)
        (r.coordinates == Range::Raw ? captured : fresh).push_back(std::move(r));
    if (!fresh.empty()) {
        fresh = m.toRawRanges(fresh);
        RangeVector old = fresh;
        m.captureRanges(old, false, true);
        for (size_t i = 0; i < fresh.size(); ++i)
            fresh[i].old_value = std::move(old[i].old_value);
        captured.insert(captured.end(), std::make_move_iterator(fresh.begin()),
                        std::make_move_iterator(fresh.end()));
    }
    auto* command = new SetModelDataCommand(table_model, std::move(captured), true, false);
    command->setSelection(m.selectionRanges());
    pushCommand(command);
}

// ---- Functions of the text alone ----

void TableView::upperCase() {
    transformSelectedCells([](const QString& t) { return t.toUpper(); });
}
void TableView::lowerCase() {
    transformSelectedCells([](const QString& t) { return t.toLower(); });
}
void TableView::titleCase() {
    transformSelectedCells(toTitleCase);
}
void TableView::upperCamelCase() {
    transformSelectedCells(toUpperCamelCase);
}
void TableView::lowerCamelCase() {
    transformSelectedCells(toLowerCamelCase);
}
void TableView::upperSnakeCase() {
    transformSelectedCells(toUpperSnakeCase);
}
void TableView::lowerSnakeCase() {
    transformSelectedCells(toLowerSnakeCase);
}
void TableView::convertToAcronym() {
    transformSelectedCells(toAcronym);
}

void TableView::convertDateTimeFormat(int from_kind, int to_kind, const QString& from_format,
                                      const QString& to_format) {
    const auto from = DateTimeFormatKind(std::clamp(from_kind, 0, kDateTimeFormatKindCount - 1));
    const auto to = DateTimeFormatKind(std::clamp(to_kind, 0, kDateTimeFormatKindCount - 1));
    // A format without a year reads this year, fixed once for the whole step.
    const int year = QDate::currentDate().year();
    transformSelectedCells(
        [=](const QString& t) {
            return convertDateTime(t, from, to, from_format, to_format, year);
        },
        true);
}

void TableView::convertNumberFormat(bool to_comma_decimal) {
    transformSelectedCells(
        [to_comma_decimal](const QString& t) { return ::convertNumberFormat(t, to_comma_decimal); },
        true);
}

void TableView::zeroFillWholeNumbers(int total_digits) {
    transformSelectedCells([total_digits](const QString& t) { return zeroFill(t, total_digits); });
}
void TableView::removeLeadingZeros() {
    transformSelectedCells(stripLeadingZeros);
}
void TableView::setNumberOfDecimals(int decimals) {
    const QLocale locale;
    transformSelectedCells(
        [decimals, locale](const QString& t) { return normaliseNumberText(t, decimals, locale); });
}
void TableView::trimSelectedCells() {
    transformSelectedCells(trimText);
}
void TableView::keepOnlyLeftPart(int n) {
    transformSelectedCells([n](const QString& t) { return keepLeft(t, n); });
}
void TableView::keepOnlyMiddlePart(int index, int count) {
    transformSelectedCells(
        [index, count](const QString& t) { return keepMiddle(t, index, count); });
}
void TableView::keepOnlyRightPart(int n) {
    transformSelectedCells([n](const QString& t) { return keepRight(t, n); });
}
void TableView::prependToCells(const QString& text) {
    transformSelectedCells([text](const QString& t) { return prependText(t, text); });
}
void TableView::appendToCells(const QString& text) {
    transformSelectedCells([text](const QString& t) { return appendText(t, text); });
}

// ---- Values by place ----

namespace {

// Every member of the selection through `make`, cell by cell, one step.
void pushPerCell(TableView& view, const ValueMaker& make) {
    TableModel& m = *view.model();
    if (m.isReadOnly()) return;
    const TableData& data = m.tableData();
    RangeVector ranges;
    for (const Range& member : m.selectionRanges()) {
        Extent e{};
        if (!closedExtent(member, data.numModelRows(), data.numModelColumns(), e)) continue;
        perCellRanges(m, member, e, make, ranges);
    }
    if (ranges.empty()) return;
    auto* command = new SetModelDataCommand(&m, std::move(ranges), true, true);
    command->setSelection(m.selectionRanges());
    view.pushCommand(command);
}

// `count` values laid out along each line of a member from its start: down
// the columns when the member is taller than wide, else along its rows.
QStringList alongLines(const Extent& e, const Offsets& places,
                       const std::function<QStringList(int count)>& values_for) {
    const bool down = e.r1 - e.r0 > e.c1 - e.c0;
    const int length = down ? e.r1 - e.r0 + 1 : e.c1 - e.c0 + 1;
    const QStringList values = values_for(length);
    QStringList out;
    out.reserve(qsizetype(places.size()));
    for (const auto& [dr, dc] : places)
        out.append(values.value(down ? dr : dc));
    return out;
}

} // namespace

void TableView::fillSelectedCells(const QString& text) {
    pushPerCell(*this, [text](const Extent&, const Offsets& places, const QStringList&) {
        return QStringList(qsizetype(places.size()), text);
    });
}

void TableView::copyMainCellToSelectedCells() {
    fillSelectedCells(
        table_model->cellText(table_model->mainCell().row, table_model->mainCell().col));
}

void TableView::fillSelectedCellsWithSeries(const QString& series) {
    pushPerCell(*this, [series](const Extent& e, const Offsets& places, const QStringList&) {
        return alongLines(e, places, [&series](int count) { return parseSeries(series, count); });
    });
}

void TableView::prependSeriesToCells(const QString& series) {
    pushPerCell(*this, [series](const Extent&, const Offsets&, const QStringList& texts) {
        QStringList out = parseSeries(series, int(texts.size()));
        for (qsizetype i = 0; i < out.size(); ++i)
            out[i] += texts.at(i);
        return out;
    });
}

void TableView::appendSeriesToCells(const QString& series) {
    pushPerCell(*this, [series](const Extent&, const Offsets&, const QStringList& texts) {
        const QStringList parts = parseSeries(series, int(texts.size()));
        QStringList out = texts;
        for (qsizetype i = 0; i < out.size(); ++i)
            out[i] += parts.value(i);
        return out;
    });
}

void TableView::randomIntegersInSelectedCells(const RandomIntegerChoices& choices) {
    std::random_device device;
    RandomEngine engine(device());
    pushPerCell(*this, [&](const Extent&, const Offsets& places, const QStringList&) {
        QStringList out;
        out.reserve(qsizetype(places.size()));
        for (size_t i = 0; i < places.size(); ++i)
            out.append(QString::number(drawRandomInteger(choices, engine)));
        return out;
    });
}

void TableView::randomDecimalsInSelectedCells(const RandomDecimalChoices& choices) {
    std::random_device device;
    RandomEngine engine(device());
    pushPerCell(*this, [&](const Extent&, const Offsets& places, const QStringList&) {
        QStringList out;
        out.reserve(qsizetype(places.size()));
        for (size_t i = 0; i < places.size(); ++i)
            out.append(randomDecimalText(drawRandomDecimal(choices, engine)));
        return out;
    });
}

void TableView::fillSelectedCellsWithUuids(UuidVersion version, UuidForm form) {
    pushPerCell(*this, [=](const Extent&, const Offsets& places, const QStringList&) {
        QStringList out;
        out.reserve(qsizetype(places.size()));
        for (size_t i = 0; i < places.size(); ++i)
            out.append(newUuidText(version, form, *QRandomGenerator64::system()));
        return out;
    });
}

void TableView::joinSelectedCells(bool horizontally, const QString& separator) {
    pushPerCell(*this, [=](const Extent&, const Offsets& places, const QStringList& texts) {
        // Lines of the member's selected cells, in order.
        QStringList out(texts.size());
        std::vector<std::vector<qsizetype>> lines;
        std::vector<int> line_of;
        for (qsizetype i = 0; i < texts.size(); ++i) {
            const int line = horizontally ? places[size_t(i)].first : places[size_t(i)].second;
            auto at = std::find(line_of.begin(), line_of.end(), line);
            if (at == line_of.end()) {
                line_of.push_back(line);
                lines.emplace_back();
                at = line_of.end() - 1;
            }
            lines[size_t(at - line_of.begin())].push_back(i);
        }
        for (const auto& line : lines) {
            QStringList cells;
            for (qsizetype i : line)
                cells.append(texts.at(i));
            const QStringList joined = joinCells(cells, separator);
            for (size_t k = 0; k < line.size(); ++k)
                out[line[k]] = joined.value(qsizetype(k));
        }
        return out;
    });
}

void TableView::splitSelectedCells(bool horizontally, bool by_index, const QString& delimiter,
                                   const QList<int>& indexes) {
    if (table_model->isReadOnly()) return;
    TableModel& m = *table_model;
    const TableData& data = m.tableData();
    // Each selected cell's parts from the cell on, in reading order; a later
    // cell's parts win where two overlap.
    std::map<std::pair<int, int>, QString> writes;
    for (const Range& member : m.selectionRanges()) {
        Extent e{};
        if (!closedExtent(member, data.numModelRows(), data.numModelColumns(), e)) continue;
        for (int r = e.r0; r <= e.r1; ++r)
            for (int c = e.c0; c <= e.c1; ++c) {
                if (member.kind != Range::Cell && !member.containsCell(r, c)) continue;
                const QString text = m.cellText(r, c);
                const QStringList parts =
                    by_index ? splitByIndexes(text, indexes) : splitByDelimiter(text, delimiter);
                for (qsizetype k = 0; k < parts.size(); ++k)
                    writes[horizontally ? std::pair{r, c + int(k)} : std::pair{r + int(k), c}] =
                        parts.at(k);
            }
    }
    RangeVector ranges;
    for (const auto& [place, text] : writes) {
        if (m.cellText(place.first, place.second) == text) continue;
        Range cell(place.first, place.second, Range::Model);
        cell.value = text;
        ranges.push_back(std::move(cell));
    }
    if (ranges.empty()) return;
    auto* command = new SetModelDataCommand(&m, std::move(ranges), true, true);
    command->setSelection(m.selectionRanges());
    pushCommand(command);
}

// ---- Reshape ----

namespace {

// The member reshaping reads: the one holding the main cell, else the first.
const Range* reshapeMember(const TableModel& m) {
    const RangeVector& selection = m.selectionRanges();
    for (const Range& r : selection)
        if (r.is_main) return &r;
    return selection.empty() ? nullptr : &selection.front();
}

} // namespace

qsizetype TableView::reshapeValueCount() const {
    const Range* member = reshapeMember(*table_model);
    Extent e{};
    if (!member || !closedExtent(*member, table_model->tableData().numModelRows(),
                                 table_model->tableData().numModelColumns(), e))
        return 0;
    return qsizetype(e.cells());
}

bool TableView::reshapeSelectedCells(const QString& answer, bool row_wise) {
    if (table_model->isReadOnly()) return false;
    TableModel& m = *table_model;
    const Range* member = reshapeMember(m);
    Extent e{};
    if (!member ||
        !closedExtent(*member, m.tableData().numModelRows(), m.tableData().numModelColumns(), e))
        return false;
    QStringList values;
    if (row_wise) {
        for (int r = e.r0; r <= e.r1; ++r)
            for (int c = e.c0; c <= e.c1; ++c)
                values.append(m.cellText(r, c));
    } else {
        for (int c = e.c0; c <= e.c1; ++c)
            for (int r = e.r0; r <= e.r1; ++r)
                values.append(m.cellText(r, c));
    }
    const ReshapeShape shape = reshapeShape(answer, values.size(), row_wise);
    if (!shape.isValid()) return false;
    const QList<QStringList> grid = reshapeValues(values, shape, row_wise);
    Range target = Range::wholeTable(Range::Model);
    target.row = e.r0, target.row_end = e.r0 + shape.rows - 1;
    target.col = e.c0, target.col_end = e.c0 + shape.cols - 1;
    for (const QStringList& line : grid) {
        std::vector<QVariant> row;
        for (const QString& text : line)
            row.emplace_back(text);
        target.value_grid.push_back(std::move(row));
    }
    Range old_area = Range::wholeTable(Range::Model);
    old_area.row = e.r0, old_area.row_end = e.r1, old_area.col = e.c0, old_area.col_end = e.c1;
    target.is_main = true;
    target.main_offset_row = e.r0;
    target.main_offset_col = e.c0;
    auto* command =
        new SetModelDataCommand(&m, RangeVector{target}, RangeVector{old_area}, true, true);
    command->redo_selection = m.toRawSelection(RangeVector{target});
    command->undo_selection = m.toRawSelection(m.selectionRanges());
    pushCommand(command);
    return true;
}
