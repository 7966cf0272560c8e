#include "data/editabledatacontainer.h"
#include "testutilstore.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <numeric>

using namespace testutil;

namespace {

// The store as the operations define it, cell by cell, with the quote mark of
// every position: what the packed rows must reproduce through every edit.
struct Mark {
    QByteArray bytes;
    bool quoted = false;
    bool operator==(const Mark&) const = default;
};

struct Model {
    QList<QList<Mark>> rows; // rows.size() is the row count
    int columns = 0;

    void fit() {
        for (auto& r : rows)
            r.resize(columns);
    }
    void setRows(int n) {
        rows.resize(n);
        fit();
    }
    void setColumns(int n) {
        columns = n;
        fit();
    }
};

QString describe(const EditableDataContainer& c) {
    QStringList rows;
    for (int r = 0; r < c.rowCount(); ++r) {
        QStringList cells;
        for (int col = 0; col < c.columnCount(); ++col)
            cells << (c.isQuoted(r, col) ? "q:" : "") + show(c.cellView(r, col));
        rows << cells.join(u'|');
    }
    return QStringLiteral("%1x%2 ").arg(c.rowCount()).arg(c.columnCount()) + rows.join(" / ");
}

QString describe(const Model& m) {
    QStringList rows;
    for (const auto& row : m.rows) {
        QStringList cells;
        for (const Mark& cell : row)
            cells << (cell.quoted ? "q:" : "") + show(cell.bytes);
        rows << cells.join(u'|');
    }
    return QStringLiteral("%1x%2 ").arg(m.rows.size()).arg(m.columns) + rows.join(" / ");
}

// Lengths around the offset widths: a row's bytes pass 255 and 65535 as it
// grows, and shrink back under them.
QByteArray randomBytes(QRandomGenerator& random) {
    static const int lengths[] = {0, 0, 1, 3, 15, 16, 17, 120, 255, 256};
    const int n =
        random.bounded(50) == 0 ? 66000 : lengths[random.bounded(int(std::size(lengths)))];
    return QByteArray(n, char('a' + random.bounded(26)));
}

} // namespace

class TestPackedRow : public QObject {
    Q_OBJECT

private slots:
    void layout_data() {
        QTest::addColumn<QList<int>>("lengths");
        QTest::addColumn<QList<int>>("marked");
        QTest::newRow("empty row, marks only") << QList<int>{} << QList<int>{0, 3};
        QTest::newRow("one byte offsets, full") << QList<int>{100, 100, 55} << QList<int>{};
        QTest::newRow("two byte offsets from 256") << QList<int>{100, 100, 56} << QList<int>{2};
        QTest::newRow("two byte offsets, full") << QList<int>{65535} << QList<int>{0};
        QTest::newRow("four byte offsets") << QList<int>{65535, 1} << QList<int>{1, 5};
        QTest::newRow("many empty cells, few bytes")
            << (QList<int>(300, 0) << 1) << QList<int>{299, 300, 301};
        QTest::newRow("marks past 255 on a short row") << QList<int>{2, 0, 3} << QList<int>{700};
    }

    // Every cell and mark reads back whatever width the row's offsets take,
    // and the row saves with its marked cells in quotes.
    void layout() {
        QFETCH(QList<int>, lengths);
        QFETCH(QList<int>, marked);
        CellList cells;
        QByteArray expected;
        const int columns =
            std::max<int>(int(lengths.size()), marked.isEmpty() ? 0 : marked.back() + 1);
        for (int i = 0; i < columns; ++i) {
            const QByteArray bytes(i < lengths.size() ? lengths[i] : 0, char('a' + i % 26));
            Cell cell{QByteArrayView(bytes)};
            cell.setQuoted(marked.contains(i));
            if (i < lengths.size()) cells.push_back(cell);
            expected += (marked.contains(i) ? '"' + bytes + '"' : bytes) + ',';
        }
        expected.chop(1);
        EditableDataContainer c;
        c.setRow(0, std::move(cells));
        for (int i : marked)
            if (i >= lengths.size()) QVERIFY(c.setCell(0, i, "", true));
        c.setLineEnding(UnixLineEnding);
        QCOMPARE(c.storedCellCount(0), lengths.size());
        QCOMPARE(c.columnCount(), columns);
        for (int i = 0; i < columns; ++i) {
            QCOMPARE(c.cellView(0, i).size(), i < lengths.size() ? lengths[i] : 0);
            QCOMPARE(c.isQuoted(0, i), marked.contains(i));
        }
        QByteArray line;
        c.rowToBytes(line, 0, All, {});
        QCOMPARE(line, expected + '\n');
    }

    // Random edits on a store and on the model give the same cells and marks.
    // A line's fields made into a row in one go (the loader's path) give the
    // very block that appending them one by one gives, marks, widths and
    // the trimming of empty fields at the end included.
    // A cell rewritten in its block, longer or shorter, leaves the row as a
    // row built afresh with the new cell would be; marks of other cells stay.
    void replaceCellMatchesRebuilding() {
        QRandomGenerator rng(47);
        for (int round = 0; round < 3000; ++round) {
            const int n = 1 + int(rng.bounded(round % 5 == 0 ? 40 : 12));
            std::vector<QByteArray> cells;
            PackedRowBuilder b;
            for (int k = 0; k < n; ++k) {
                cells.emplace_back(int(rng.bounded(round % 9 == 0 ? 90 : 12)), char('a' + k % 26));
                b.append(cells.back());
                if (rng.bounded(4) == 0) b.mark(k);
            }
            PackedRow row = b.build();
            const int i = int(rng.bounded(n));
            const QByteArray now(int(rng.bounded(round % 9 == 0 ? 120 : 16)), 'Q');
            if (!row.replaceCell(i, now)) continue; // offsets would widen
            cells[size_t(i)] = now;
            QCOMPARE(row.size(), n);
            QVERIFY(!row.isQuoted(i));
            for (int k = 0; k < n; ++k)
                QCOMPARE(row.cell(k).toByteArray(), cells[size_t(k)]);
        }
    }

    // Positions taken out of a row in its block, and put back, leave it as
    // rows built afresh would be: cells, marks (past the cells too), and no
    // marks field once the last mark is gone.
    void eraseAndInsertInPlace() {
        QRandomGenerator rng(23);
        int put_back = 0;
        for (int round = 0; round < 4000; ++round) {
            const int n = int(rng.bounded(round % 7 == 0 ? 40 : 10));
            const int positions = n + int(rng.bounded(4)); // marks may pass the cells
            std::vector<QByteArray> cells;
            std::vector<char> marks(size_t(positions), 0);
            PackedRowBuilder b;
            for (int k = 0; k < n; ++k) {
                cells.emplace_back(int(rng.bounded(round % 11 == 0 ? 70 : 6)), char('a' + k % 26));
                b.append(cells.back());
            }
            for (int k = 0; k < positions; ++k)
                if (rng.bounded(round % 3 == 0 ? 2 : 6) == 0) {
                    marks[size_t(k)] = 1;
                    b.mark(k);
                }
            PackedRow row = b.build();
            const int from = int(rng.bounded(positions + 1));
            const int to = from + 1 + int(rng.bounded(3));
            auto rebuilt = [&](const std::vector<QByteArray>& c, const std::vector<char>& m) {
                PackedRowBuilder e;
                for (const QByteArray& bytes : c)
                    e.append(bytes);
                for (size_t k = 0; k < m.size(); ++k)
                    if (m[k]) e.mark(int(k));
                return e.build();
            };
            auto same = [&](const PackedRow& got, const PackedRow& want, const char* step) {
                const QByteArray where = QByteArray(step) + " round " + QByteArray::number(round);
                QVERIFY2(got.size() == want.size(), where);
                QVERIFY2(got.markedSize() == want.markedSize(), where);
                QVERIFY2(got.hasMarks() == want.hasMarks(), where);
                for (int k = 0; k < want.size(); ++k)
                    QVERIFY2(got.cell(k) == want.cell(k), where);
                for (int k = 0; k < want.markedSize() + 2; ++k)
                    QVERIFY2(got.isQuoted(k) == want.isQuoted(k), where);
            };
            // What the erase leaves, position by position.
            std::vector<QByteArray> kept_cells = cells;
            std::vector<char> kept_marks = marks;
            std::vector<QByteArrayView> taken;
            std::vector<char> taken_marks;
            for (int k = from; k < to; ++k) {
                taken_marks.push_back(k < positions && marks[size_t(k)]);
                if (k < n) taken.emplace_back(cells[size_t(k)]);
            }
            if (from < n)
                kept_cells.erase(kept_cells.begin() + from, kept_cells.begin() + std::min(to, n));
            if (from < positions)
                kept_marks.erase(kept_marks.begin() + from,
                                 kept_marks.begin() + std::min(to, positions));
            row.eraseCells(from, to);
            same(row, rebuilt(kept_cells, kept_marks), "erase");
            // Put back where the row still reaches, as an undo does.
            if (from > row.size() || taken.size() != size_t(to - from)) continue;
            if (row.insertCells(from, taken.data(), int(taken.size()), taken_marks.data())) {
                same(row, rebuilt(cells, marks), "insert");
                ++put_back;
            } else {
                same(row, rebuilt(kept_cells, kept_marks), "refused insert");
            }
        }
        QVERIFY(put_back > 1000);
    }

    void wholeLineMatchesAppending() {
        QRandomGenerator rng(31);
        for (int round = 0; round < 2000; ++round) {
            QByteArray line;
            std::vector<uint32_t> stops;
            uint64_t quoted = 0;
            PackedRowBuilder b;
            const int fields = 1 + int(rng.bounded(round % 10 == 0 ? 120 : 12));
            for (int k = 0; k < fields; ++k) {
                const int len =
                    rng.bounded(4) == 0 ? 0 : int(rng.bounded(round % 7 == 0 ? 300 : 20));
                const QByteArray cell(len, char('a' + k % 26));
                const bool q = k < 64 && rng.bounded(3) == 0;
                line += q ? '"' + cell + '"' : cell;
                stops.push_back(uint32_t(line.size()));
                line += k + 1 < fields ? ',' : '\n';
                if (q) quoted |= uint64_t(1) << k;
                if (q) b.mark(k);
                if (!cell.isEmpty()) {
                    while (b.size() < k)
                        b.append(QByteArrayView());
                    b.append(cell);
                }
            }
            const size_t readable = rng.bounded(2) ? line.size() + 16 : line.size();
            line.append(16, 'z');
            std::vector<uint64_t> fill(size_t(fields), 0);
            const PackedRow made = PackedRowBuilder::fromQuotedLine(
                line.constData(), stops.data(), fields, quoted, readable, fill.data(), 5);
            const PackedRow appended = b.build();
            QCOMPARE(made.blockBytes(), appended.blockBytes());
            QCOMPARE(made.size(), appended.size());
            QCOMPARE(made.markedSize(), appended.markedSize());
            for (int k = 0; k < fields; ++k) {
                QCOMPARE(made.cellCopy(k).view(), appended.cellCopy(k).view());
                QCOMPARE(made.isQuoted(k), appended.isQuoted(k));
                QCOMPARE(fill[size_t(k)], uint64_t(!appended.isEmptyAt(k)) << 5);
            }
        }
    }

    void editsMatchModel() {
        QRandomGenerator random(5);
        for (int round = 0; round < 40; ++round) {
            EditableDataContainer c;
            Model m;
            for (int step = 0; step < 60; ++step) {
                const int rows = int(m.rows.size()), columns = m.columns;
                const int r = random.bounded(rows + 2), col = random.bounded(columns + 2);
                QString what;
                switch (random.bounded(12)) {
                case 0:
                case 1:
                case 2: {
                    const bool quoted = random.bounded(3) == 0;
                    // Half the time the new bytes are another cell of the row,
                    // passed as a view into the row itself.
                    const int other = random.bounded(columns + 1);
                    const bool alias = random.bounded(2);
                    const QByteArray bytes = alias ? c.data(r, other) : randomBytes(random);
                    what = QStringLiteral("setCell(%1, %2, %3 bytes, %4)")
                               .arg(r)
                               .arg(col)
                               .arg(bytes.size())
                               .arg(quoted);
                    QVERIFY(c.setCell(r, col, alias ? c.cellView(r, other) : QByteArrayView(bytes),
                                      quoted));
                    if (r >= m.rows.size()) m.setRows(r + 1);
                    if (col >= m.columns) m.setColumns(col + 1);
                    m.rows[r][col] = {bytes, quoted};
                    break;
                }
                case 3: {
                    const int k = 1 + random.bounded(3);
                    what = QStringLiteral("insertColumns(%1, %2)").arg(col).arg(k);
                    c.insertColumns(col, k);
                    if (col >= columns) {
                        m.setColumns(col + k);
                    } else {
                        for (auto& row : m.rows)
                            row.insert(col, k, Mark());
                        m.columns += k;
                    }
                    break;
                }
                case 4: {
                    const int k = 1 + random.bounded(3);
                    what = QStringLiteral("removeColumns(%1, %2)").arg(col).arg(k);
                    c.removeColumns(col, k);
                    if (col < columns) {
                        const int n = std::min(k, columns - col);
                        for (auto& row : m.rows)
                            row.remove(col, n);
                        m.columns -= n;
                    }
                    break;
                }
                case 5: {
                    const int n = random.bounded(columns + 3);
                    what = QStringLiteral("setColumnCount(%1)").arg(n);
                    c.setColumnCount(n);
                    m.setColumns(n);
                    break;
                }
                case 6: {
                    const int from = random.bounded(columns + 1);
                    what = QStringLiteral("copyColumn(%1, %2)").arg(from).arg(col);
                    c.copyColumn(from, col);
                    if (from == col) break;
                    m.setColumns(std::max(columns, col + 1));
                    for (auto& row : m.rows)
                        row[col] = from < columns ? row[from] : Mark();
                    break;
                }
                case 7: {
                    std::vector<int> P(size_t(random.bounded(columns + 1)));
                    std::iota(P.begin(), P.end(), 0);
                    std::shuffle(P.begin(), P.end(), random);
                    what = QStringLiteral("applyColumnPermutation of %1").arg(P.size());
                    c.applyColumnPermutation(P);
                    m.setColumns(std::max(columns, int(P.size())));
                    for (auto& row : m.rows) {
                        const QList<Mark> old = row;
                        for (size_t i = 0; i < P.size(); ++i)
                            row[P[i]] = old[int(i)];
                    }
                    break;
                }
                case 8: {
                    if (c.storedRowCount() == 0) break;
                    const int k = 1 + random.bounded(2);
                    what = QStringLiteral("insertColumnList(%1, %2)").arg(col).arg(k);
                    auto list = std::vector<CellList>(size_t(k));
                    QList<QList<Mark>> given(k);
                    for (int j = 0; j < k; ++j)
                        for (int i = random.bounded(rows + 2); i > 0; --i) {
                            Mark cell{randomBytes(random), random.bounded(2) == 0};
                            list[size_t(j)].emplace_back(QByteArrayView(cell.bytes));
                            list[size_t(j)].back().setQuoted(cell.quoted);
                            given[j].append(cell);
                        }
                    c.insertColumnList(col, std::move(list));
                    if (col >= columns) {
                        m.setColumns(col + k);
                    } else {
                        for (auto& row : m.rows)
                            row.insert(col, k, Mark());
                        m.columns += k;
                    }
                    for (int j = 0; j < k; ++j) {
                        if (given[j].size() > m.rows.size()) m.setRows(int(given[j].size()));
                        for (int i = 0; i < given[j].size(); ++i)
                            m.rows[i][col + j] = given[j][i];
                    }
                    break;
                }
                case 9: {
                    const int k = 1 + random.bounded(2);
                    what = QStringLiteral("insertRows(%1, %2) / removeRows").arg(r).arg(k);
                    if (random.bounded(2)) {
                        c.insertRows(r, k);
                        if (r >= rows)
                            m.setRows(r + k);
                        else
                            m.rows.insert(r, k, QList<Mark>(m.columns));
                    } else {
                        c.removeRows(r, k);
                        if (r < rows) m.rows.remove(r, std::min(k, rows - r));
                    }
                    break;
                }
                default: {
                    // A row taken out and put back elsewhere keeps its marks, as
                    // an undone removal does.
                    const int to = random.bounded(rows + 2);
                    what = QStringLiteral("getRow(%1) / setRow(%2)").arg(r).arg(to);
                    CellList cells;
                    c.getRow(cells, r, All, {});
                    c.setRow(to, std::move(cells));
                    const QList<Mark> row = r < rows ? m.rows[r] : QList<Mark>(m.columns);
                    if (to >= m.rows.size()) m.setRows(to + 1);
                    m.rows[to] = row;
                }
                }
                QVERIFY2(
                    describe(c) == describe(m),
                    qPrintable(QStringLiteral("round %1 step %2: %3\n got  %4\n want %5")
                                   .arg(round)
                                   .arg(step)
                                   .arg(what, describe(c).left(2000), describe(m).left(2000))));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestPackedRow)
#include "tst_packedrow.moc"
