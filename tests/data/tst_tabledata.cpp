#include "data/editabledatacontainer.h"
#include "data/indexmapping.h"
#include "data/tabledata.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <numeric>
#include <random>

class TestTableData : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    QString writeFile(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly)) return {};
        f.write(bytes);
        return path;
    }
    QByteArray readFile(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    void loadText(TableData& t, const QByteArray& bytes, EncodingType e = Utf8) {
        t.load(writeFile("in.csv", bytes), false, false, ",", ",", e, Rfc4180);
    }

private slots:
    void modelToRaw_data() {
        QTest::addColumn<std::vector<int>>("hidden");
        QTest::addColumn<int>("model");
        QTest::addColumn<int>("raw");
        const std::vector<int> h = {2, 3, 7};
        QTest::newRow("before any hidden") << h << 1 << 1;
        QTest::newRow("first after a block") << h << 2 << 4;
        QTest::newRow("after the last hidden") << h << 5 << 8;
        QTest::newRow("negative") << h << -1 << -1;
        QTest::newRow("leading block") << std::vector<int>{0, 1} << 0 << 2;
        QTest::newRow("no hidden") << std::vector<int>{} << 9 << 9;
    }
    void modelToRaw() {
        QFETCH(std::vector<int>, hidden);
        QFETCH(int, model);
        QFETCH(int, raw);
        QCOMPARE(indexmapping::rawFromModel(hidden, model), raw);
    }

    void rawToModel_data() {
        QTest::addColumn<std::vector<int>>("hidden");
        QTest::addColumn<int>("raw");
        QTest::addColumn<bool>("nearest");
        QTest::addColumn<int>("model");
        const std::vector<int> h = {2, 3, 7};
        QTest::newRow("visible") << h << 4 << false << 2;
        QTest::newRow("hidden") << h << 3 << false << -1;
        QTest::newRow("hidden, nearest, block at list start") << h << 3 << true << 1;
        QTest::newRow("hidden, nearest, later block") << h << 7 << true << 4;
        QTest::newRow("leading hidden clamps to 0") << std::vector<int>{0, 1} << 1 << true << 0;
        QTest::newRow("beyond the table, nearest") << h << 50 << true << 10 - 3 - 1;
    }
    void rawToModel() {
        QFETCH(std::vector<int>, hidden);
        QFETCH(int, raw);
        QFETCH(bool, nearest);
        QFETCH(int, model);
        QCOMPARE(indexmapping::modelFromRaw(hidden, raw, nearest, 10), model);
    }

    // Both mappings invert each other on every visible position.
    void mappingRoundTrip() {
        std::mt19937 rng(7);
        for (int round = 0; round < 200; ++round) {
            const int n = 1 + int(rng() % 60);
            std::vector<int> hidden;
            for (int i = 0; i < n; ++i)
                if (rng() % 3 == 0) hidden.push_back(i);
            for (int m = 0; m < n - int(hidden.size()); ++m) {
                const int raw = indexmapping::rawFromModel(hidden, m);
                QVERIFY(!std::binary_search(hidden.begin(), hidden.end(), raw));
                QCOMPARE(indexmapping::modelFromRaw(hidden, raw, false, n), m);
            }
        }
    }

    void transposedSwapsCountsAndCells() {
        TableData t;
        loadText(t, "a,b,c\nd,e,f\n");
        t.setHiddenColumns({1});
        QCOMPARE(t.numModelRows(), 2);
        QCOMPARE(t.numModelColumns(), 2);
        t.setTransposed(true);
        QCOMPARE(t.numModelRows(), 2); // 3 raw columns less 1 hidden
        QCOMPARE(t.numModelColumns(), 2);
        QCOMPARE(t.data(1, 0).toString(), QString("c")); // model row 1 = raw column 2
        QCOMPARE(t.data(0, 1).toString(), QString("d"));
    }

    void setDataReportsChangeOnly() {
        TableData t;
        loadText(t, "a,b\n");
        QVERIFY(!t.setData(0, 0, "a"));
        QVERIFY(t.setData(0, 0, "x"));
        QSignalSpy size(&t, &TableData::tableSizeChangedSignal);
        QVERIFY(!t.setData(5, 5, QString()));
        QCOMPARE(size.count(), 0);
        QCOMPARE(t.numRawRows(), 1);
        QVERIFY(t.setData(3, 4, "z"));
        QCOMPARE(size.count(), 1);
        QCOMPARE(t.numRawRows(), 4);
        QCOMPARE(t.numRawColumns(), 5);
        QVERIFY(t.data(2, 2).isValid());
        QVERIFY(t.data(2, 2).toString().isEmpty());
    }

    void encodingConversionRewritesCells() {
        TableData t;
        loadText(t, "ab,,\xc3\xa9\n");
        auto* c = static_cast<EditableDataContainer*>(t.dataContainer());
        t.setEncoding(Utf16LE, true);
        QCOMPARE(c->data(0, 0), QByteArray("a\0b\0", 4));
        QVERIFY(c->data(0, 1).isEmpty());
        QCOMPARE(c->data(0, 2), QByteArray("\xe9\0", 2));
        QCOMPARE(t.data(0, 2).toString(), QString::fromUtf8("\xc3\xa9"));
    }

    // Re-encoded, a cell is the same text: the file's quotes stay with it,
    // while an edited cell loses them.
    void encodingConversionKeepsQuotes() {
        TableData t;
        loadText(t, "\"ab\",\"\",x,\"y\"\n");
        auto* c = static_cast<EditableDataContainer*>(t.dataContainer());
        QVERIFY(t.setData(0, 3, "z"));
        t.setEncoding(Utf16LE, true);
        QCOMPARE(QList<bool>(
                     {c->isQuoted(0, 0), c->isQuoted(0, 1), c->isQuoted(0, 2), c->isQuoted(0, 3)}),
                 QList<bool>({true, true, false, false}));
    }

    void saveWritesHiddenRowsUnlessVisibleOnly() {
        TableData t;
        loadText(t, "a\nb\nc\n");
        t.setHiddenRows({1});
        QSignalSpy started(&t, &TableData::saveStartedSignal);
        QSignalSpy finished(&t, &TableData::saveFinishedSignal);
        QVERIFY(t.save(true, false));
        QCOMPARE(readFile(t.filepath()), QByteArray("a\nb\nc\n"));
        const QString visible = dir.filePath("visible.csv");
        QVERIFY(t.saveAs(visible, true, true));
        QCOMPARE(readFile(visible), QByteArray("a\nc\n"));
        QVERIFY(!QFile::exists(visible + ".bak"));
        QCOMPARE(started.count(), 2);
        QCOMPARE(finished.count(), 2);
        QCOMPARE(finished.last().at(0).toString(), visible);
    }

    void rowOrderOnBothPaths_data() {
        QTest::addColumn<bool>("asynchronous");
        QTest::newRow("caller's thread") << false;
        QTest::newRow("worker thread") << true;
    }
    void rowOrderOnBothPaths() {
        QFETCH(bool, asynchronous);
        TableData t;
        loadText(t, "r0\nr1\nr2\nr3\n");
        const std::vector<int> order = {3, 0, 1, 2}; // position i takes the row at order[i]
        auto rows = [&t] {
            QStringList got;
            for (int r = 0; r < 4; ++r)
                got << t.data(r, 0).toString();
            return got;
        };
        QVERIFY(t.applyRowOrder(order, false, asynchronous));
        QCOMPARE(rows(), QStringList({"r3", "r0", "r1", "r2"}));
        QVERIFY(t.applyRowOrder(order, true, asynchronous));
        QCOMPARE(rows(), QStringList({"r0", "r1", "r2", "r3"}));
        // An order that is no permutation of the rows changes nothing.
        QVERIFY(!t.applyRowOrder({0, 1, 2}, false, asynchronous));
        QVERIFY(!t.applyRowOrder({0, 1, 1, 2}, false, asynchronous));
        QCOMPARE(rows(), QStringList({"r0", "r1", "r2", "r3"}));
    }

    // A large file loads on its own thread with progress, and closing the
    // tab mid-load stops the loader quickly instead of letting it finish.
    void asynchronousLoadReportsAndCancels() {
        QByteArray line = "12345,some words here,\"quoted, text\",2024-01-01\n";
        QByteArray big;
        while (big.size() < 40 * 1024 * 1024)
            big += line;
        const QString path = writeFile("big.csv", big);
        {
            TableData t;
            QSignalSpy progress(&t, &TableData::loadProgressUpdateSignal);
            QSignalSpy finished(&t, &TableData::loadFinishedSignal);
            t.load(path, true, false, ",", ",", Utf8, Rfc4180);
            QVERIFY(t.isLoading());
            QVERIFY(finished.wait(30000));
            QVERIFY(progress.count() >= 3);
            QCOMPARE(t.numRawRows(), int(big.size() / line.size()));
            QCOMPARE(t.numRawColumns(), 4);
        }
        auto* t = new TableData;
        QSignalSpy progress(t, &TableData::loadProgressUpdateSignal);
        t->load(path, true, false, ",", ",", Utf8, Rfc4180);
        QVERIFY(progress.wait(10000));
        QElapsedTimer clock;
        clock.start();
        delete t;
        QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
    }

    // Read-only tables sort through an index map; the file never changes.
    void readOnlySortInstallsMap() {
        TableData t;
        const QString path = writeFile("ro.csv", "r0\nr1\nr2\n");
        t.load(path, false, true, ",", ",", Utf8, Rfc4180);
        QCOMPARE(t.containerKind(), TableData::ReadOnlyKind);
        std::vector<int> shown = {2, 0, 1}; // position i shows raw row shown[i]
        QVERIFY(t.applyRowOrder(shown, false, true));
        QCOMPARE(t.data(0, 0).toString(), QString("r2"));
        QVERIFY(!t.setData(0, 0, "x"));
        QCOMPARE(readFile(path), QByteArray("r0\nr1\nr2\n"));
    }

    // Block moves read fill bits that the load makes and that line surgery,
    // reorders and edits shift, move or drop. After each change every move
    // from every cell must land where a plain walk over the cells does.
    void blockTargetsFollowChanges() {
        std::mt19937 rng(7);
        for (int round = 0; round < 6; ++round) {
            // cells[r][c] for stored row r and column c
            std::vector<std::vector<bool>> cells(size_t(100 + rng() % 200));
            const int cols = 2 + int(rng() % 4);
            QByteArray csv;
            for (auto& row : cells) {
                for (int c = 0; c < cols; ++c) {
                    // Columns of differing density, runs included.
                    row.push_back(rng() % 8 < unsigned(c * 2 + 1) || (rng() % 4 && c == 0));
                    csv += (c ? "," : "") + QByteArray(row.back() ? "x" : "");
                }
                csv += '\n';
            }
            TableData t;
            QSignalSpy finished(&t, &TableData::loadFinishedSignal);
            t.load(writeFile("fill.csv", csv), round % 2 == 1, false, ",", ",", Utf8, Rfc4180);
            if (round % 2 == 1) QVERIFY(finished.wait(5000));
            auto rows = [&] { return int(cells.size()); };
            auto columns = [&] { return cells.empty() ? 0 : int(cells[0].size()); };
            for (int step = 0; step < 40; ++step) {
                const bool tr = t.isTransposed();
                auto filled = [&](int vr, int vc) {
                    return tr ? cells[size_t(vc)][size_t(vr)] : cells[size_t(vr)][size_t(vc)];
                };
                const int vrows = tr ? columns() : rows(), vcols = tr ? rows() : columns();
                QCOMPARE(t.numRawRows(), vrows);
                QCOMPARE(t.numRawColumns(), vcols);
                for (int r = 0; r < vrows; ++r)
                    for (int c = 0; c < vcols; ++c) {
                        QCOMPARE(t.isRawCellEmpty(r, c), !filled(r, c));
                        for (int dir = 0; dir < 4; ++dir) {
                            const bool vertical = dir < 2;
                            const int stride = (dir == 1 || dir == 3) ? 1 : -1;
                            const int size = vertical ? vrows : vcols;
                            auto at = [&](int p) { return vertical ? filled(p, c) : filled(r, p); };
                            auto inside = [&](int p) { return p >= 0 && p < size; };
                            int p = vertical ? r : c;
                            if (!inside(p + stride)) {
                                // at the edge: no move
                            } else if (at(p) && at(p + stride)) {
                                while (inside(p + stride) && at(p + stride))
                                    p += stride;
                            } else {
                                p += stride;
                                while (inside(p) && !at(p))
                                    p += stride;
                                p = std::clamp(p, 0, size - 1);
                            }
                            const int got = std::clamp(t.blockTarget(r, c, dir), 0, size - 1);
                            if (got != p)
                                QFAIL(qPrintable(QString::asprintf(
                                    "round %d step %d: (%d,%d) dir %d: %d, want %d", round, step, r,
                                    c, dir, got, p)));
                        }
                    }
                // One change, made through the view's axes, mirrored on the cells.
                const int op = int(rng() % 8);
                const int vr = int(rng() % unsigned(vrows + 1)),
                          vc = int(rng() % unsigned(vcols + 1));
                const int count = 1 + int(rng() % 70);
                const int sr = tr ? vc : vr, sc = tr ? vr : vc;  // stored position
                const bool on_rows = (op == 1 || op == 2) != tr; // stored axis of a line op
                if (op == 0 || op == 7) {
                    const bool text = rng() % 2;
                    t.setData(vr, vc, text ? "y" : "");
                    if (text && sr == rows()) cells.emplace_back(size_t(columns()), false);
                    if (text && sc == columns())
                        for (auto& row : cells)
                            row.push_back(false);
                    if (sr < rows() && sc < columns()) cells[size_t(sr)][size_t(sc)] = text;
                } else if (op == 1 || op == 3) {
                    (op == 1 ? t.insertRows(vr, count) : t.insertColumns(vc, count));
                    const int at = on_rows ? sr : sc;
                    if (on_rows && at < rows())
                        cells.insert(cells.begin() + at, size_t(count),
                                     std::vector<bool>(size_t(columns()), false));
                    if (!on_rows && at < columns())
                        for (auto& row : cells)
                            row.insert(row.begin() + at, size_t(count), false);
                } else if (op == 2 || op == 4) {
                    (op == 2 ? t.removeRows(vr, count) : t.removeColumns(vc, count));
                    const int at = on_rows ? sr : sc;
                    const int end = std::min(at + count, on_rows ? rows() : columns());
                    if (on_rows && at < rows())
                        cells.erase(cells.begin() + at, cells.begin() + end);
                    if (!on_rows && at < columns())
                        for (auto& row : cells)
                            row.erase(row.begin() + at, row.begin() + end);
                } else if (op == 5) {
                    std::vector<int> order(cells.size());
                    std::iota(order.begin(), order.end(), 0);
                    std::shuffle(order.begin(), order.end(), rng);
                    // Position i takes the line at order[i]; undone every
                    // other time, as undo applies it.
                    const bool inverse = rng() % 2;
                    auto moved = cells;
                    for (int i = 0; i < rows(); ++i) {
                        if (inverse)
                            moved[size_t(order[size_t(i)])] = cells[size_t(i)];
                        else
                            moved[size_t(i)] = cells[size_t(order[size_t(i)])];
                    }
                    // The model's rows are the stored columns of a
                    // transposed table.
                    QVERIFY(tr ? t.applyColumnOrder(order, inverse)
                               : t.applyRowOrder(order, inverse, false));
                    cells.swap(moved);
                    std::vector<int> column_order(cells[0].size());
                    std::iota(column_order.begin(), column_order.end(), 0);
                    std::shuffle(column_order.begin(), column_order.end(), rng);
                    for (auto& row : cells) {
                        auto was = row;
                        for (int c = 0; c < columns(); ++c) {
                            if (inverse)
                                row[size_t(column_order[size_t(c)])] = was[size_t(c)];
                            else
                                row[size_t(c)] = was[size_t(column_order[size_t(c)])];
                        }
                    }
                    QVERIFY(tr ? t.applyRowOrder(column_order, inverse, false)
                               : t.applyColumnOrder(column_order, inverse));
                } else {
                    t.setTransposed(!tr);
                }
                if (rows() == 0 || columns() == 0) break;
            }
        }
    }

    // The line operations of the commands against a plain reference: a
    // grid of texts in the model's raw frame and the two hidden lists.
    // Random inserts at raw positions, rotations of model positions across
    // hidden lines and takes of runs, on either axis and transposed or not;
    // every take is put back at once too and must give back the same bytes.
    void lineOperationsFollowReference() {
        std::mt19937 rng(11);
        for (int round = 0; round < 60; ++round) {
            using Grid = std::vector<std::vector<QString>>;
            const int rows0 = 1 + int(rng() % 9), cols0 = 1 + int(rng() % 5);
            Grid grid(static_cast<size_t>(rows0), std::vector<QString>(static_cast<size_t>(cols0)));
            QByteArray csv;
            for (int r = 0; r < rows0; ++r) {
                for (int c = 0; c < cols0; ++c) {
                    const int kind = int(rng() % 4);
                    const QString text = kind == 0 ? QString() : QString("%1.%2").arg(r).arg(c);
                    grid[size_t(r)][size_t(c)] = text;
                    csv += (c ? "," : "") + (kind == 3 ? '"' + text.toUtf8() + '"' : text.toUtf8());
                }
                csv += '\n';
            }
            TableData t;
            loadText(t, csv);
            std::vector<int> hidden[2];
            auto setHidden = [&](int axis, std::vector<int> h) {
                hidden[axis] = h;
                const bool stored_rows = (axis == 0) != t.isTransposed();
                if (stored_rows)
                    t.setHiddenRows(std::move(h));
                else
                    t.setHiddenColumns(std::move(h));
            };
            auto hiddenOf = [&](int axis) {
                return (axis == 0) != t.isTransposed() ? t.hiddenRows() : t.hiddenColumns();
            };
            auto size = [&](int axis) {
                return axis == 0 ? int(grid.size()) : grid.empty() ? 0 : int(grid[0].size());
            };
            auto randomHidden = [&](int axis) {
                std::vector<int> h;
                for (int i = 0; i < size(axis); ++i)
                    if (rng() % 4 == 0) h.push_back(i);
                setHidden(axis, h);
            };
            randomHidden(0);
            randomHidden(1);
            auto saved = [&] {
                const QString path = dir.filePath("lines.csv");
                return t.saveAs(path, false, false) ? readFile(path) : QByteArray("<failed>");
            };
            for (int step = 0; step < 12; ++step) {
                const int axis = int(rng() % 2);
                const int n = size(axis);
                // Lines of the grid along `axis`: get, insert, erase.
                auto line = [&](int i) {
                    std::vector<QString> out;
                    if (axis == 0) return grid[size_t(i)];
                    for (auto& row : grid)
                        out.push_back(row[size_t(i)]);
                    return out;
                };
                auto putLine = [&](int i, const std::vector<QString>& v) {
                    if (axis == 0) {
                        grid[size_t(i)] = v;
                        return;
                    }
                    for (size_t r = 0; r < grid.size(); ++r)
                        grid[r][size_t(i)] = v[r];
                };
                auto insertLines = [&](int at, int count) {
                    if (axis == 0)
                        grid.insert(grid.begin() + at, size_t(count),
                                    std::vector<QString>(size_t(size(1))));
                    else
                        for (auto& row : grid)
                            row.insert(row.begin() + at, size_t(count), QString());
                };
                auto eraseLine = [&](int at) {
                    if (axis == 0)
                        grid.erase(grid.begin() + at);
                    else
                        for (auto& row : grid)
                            row.erase(row.begin() + at);
                };
                const int op = int(rng() % 4);
                if (op == 0) {
                    const int at = int(rng() % unsigned(n + 1)), count = 1 + int(rng() % 3);
                    QVERIFY(axis == 0 ? t.insertRawRows(at, count) : t.insertRawColumns(at, count));
                    insertLines(at, count);
                    for (int& h : hidden[axis])
                        if (h >= at) h += count;
                } else if (op == 1 && n > 0) {
                    std::vector<int> picked;
                    for (int i = 0; i < n; ++i)
                        if (rng() % 3 == 0) picked.push_back(i);
                    const LineRuns runs = runsOf(picked);
                    const QByteArray before = saved();
                    const std::vector<int> hidden_before = hiddenOf(axis);
                    RemovedLines taken = axis == 0 ? t.takeRawRows(runs) : t.takeRawColumns(runs);
                    QCOMPARE(taken.count(), int(picked.size()));
                    if (rng() % 2) {
                        // Put back: the same bytes once the hidden list is back.
                        QVERIFY(picked.empty() || t.restoreRawLines(taken));
                        std::vector<int> expect_shown;
                        for (int h : hidden_before)
                            if (!std::binary_search(picked.begin(), picked.end(), h))
                                expect_shown.push_back(h);
                        QCOMPARE(hiddenOf(axis), expect_shown);
                        setHidden(axis, hidden_before);
                        QCOMPARE(saved(), before);
                    } else {
                        for (auto it = picked.rbegin(); it != picked.rend(); ++it)
                            eraseLine(*it);
                        std::vector<int> kept;
                        for (int h : hidden[axis]) {
                            if (std::binary_search(picked.begin(), picked.end(), h)) continue;
                            kept.push_back(h -
                                           int(std::lower_bound(picked.begin(), picked.end(), h) -
                                               picked.begin()));
                        }
                        hidden[axis] = kept;
                    }
                } else if (op == 2) {
                    // A rotation of model positions, reaching past the data
                    // now and then.
                    const int visible = n - int(hidden[axis].size());
                    const int last = 2 + int(rng() % unsigned(visible + 2));
                    const int first = int(rng() % unsigned(last - 1));
                    const int middle = first + 1 + int(rng() % unsigned(last - first - 1));
                    std::vector<int> positions;
                    for (int m = first; m < last; ++m)
                        positions.push_back(indexmapping::rawFromModel(hidden[axis], m));
                    QVERIFY(axis == 0 ? t.rotateModelRows(first, middle, last)
                                      : t.rotateModelColumns(first, middle, last));
                    if (positions.back() >= n) insertLines(n, positions.back() + 1 - n);
                    std::vector<std::vector<QString>> lines;
                    for (int p : positions)
                        lines.push_back(line(p));
                    std::rotate(lines.begin(), lines.begin() + (middle - first), lines.end());
                    for (size_t i = 0; i < positions.size(); ++i)
                        putLine(positions[i], lines[i]);
                } else {
                    t.setTransposed(!t.isTransposed());
                    Grid turned(static_cast<size_t>(size(1)),
                                std::vector<QString>(static_cast<size_t>(size(0))));
                    for (int r = 0; r < size(0); ++r)
                        for (int c = 0; c < size(1); ++c)
                            turned[size_t(c)][size_t(r)] = grid[size_t(r)][size_t(c)];
                    grid.swap(turned);
                    std::swap(hidden[0], hidden[1]);
                }
                const QString where = QString("round %1 step %2 op %3 axis %4")
                                          .arg(round)
                                          .arg(step)
                                          .arg(op)
                                          .arg(axis);
                QVERIFY2(t.numRawRows() == size(0), qPrintable(where));
                QVERIFY2(t.numRawColumns() == (size(0) ? size(1) : t.numRawColumns()),
                         qPrintable(where));
                QCOMPARE(hiddenOf(0), hidden[0]);
                QCOMPARE(hiddenOf(1), hidden[1]);
                for (int r = 0; r < size(0); ++r)
                    for (int c = 0; c < size(1); ++c)
                        if (t.rawData(r, c).toString() != grid[size_t(r)][size_t(c)])
                            QFAIL(qPrintable(
                                QString("round %1 step %2 op %3 axis %4: (%5,%6) %7, "
                                        "want %8")
                                    .arg(round)
                                    .arg(step)
                                    .arg(op)
                                    .arg(axis)
                                    .arg(r)
                                    .arg(c)
                                    .arg(t.rawData(r, c).toString(), grid[size_t(r)][size_t(c)])));
                if (size(0) == 0 || size(1) == 0) break;
            }
        }
    }

    // One row moved across hidden ones: they keep their places.
    void moveRowAcrossHidden() {
        TableData t;
        loadText(t, "a\nb\nc\nd\ne\n");
        t.setHiddenRows({1, 2});
        QVERIFY(t.moveRow(0, 2)); // model 0 (a) to model 2, past b and c
        QStringList got;
        for (int r = 0; r < 5; ++r)
            got << t.rawData(r, 0).toString();
        QCOMPARE(got, QStringList({"d", "b", "c", "e", "a"}));
        QCOMPARE(t.hiddenRows(), (std::vector<int>{1, 2}));
        QSignalSpy size(&t, &TableData::tableSizeChangedSignal);
        QVERIFY(t.moveRow(2, 3)); // past the end: the table grows to hold it
        QCOMPARE(t.numRawRows(), 8);
        QCOMPARE(t.rawData(7, 0).toString(), QString("a"));
        QCOMPARE(size.count(), 1);
    }

    // Duplicates and empties on raw bytes, against a reference made by
    // comparing texts: case counts, missing and empty cells are the same.
    void duplicatesAndEmpties() {
        std::mt19937 rng(5);
        const char* const kTexts[] = {"", "a", "A", "ab", "a,b", "1"};
        for (int round = 0; round < 100; ++round) {
            const int rows = 1 + int(rng() % 12), cols = 1 + int(rng() % 4);
            std::vector<std::vector<QString>> grid(static_cast<size_t>(rows));
            QByteArray csv;
            for (int r = 0; r < rows; ++r) {
                for (int c = 0; c < cols; ++c) {
                    const QByteArray text = kTexts[rng() % 6];
                    grid[size_t(r)].push_back(QString::fromUtf8(text));
                    csv += (c ? "," : "") + (text.contains(',') ? '"' + text + '"' : text);
                }
                csv += '\n';
            }
            TableData t;
            loadText(t, csv);
            const bool transposed = rng() % 2;
            t.setTransposed(transposed);
            auto cell = [&](int line, int at, bool lines_are_rows) {
                const bool grid_rows = lines_are_rows != transposed;
                return grid_rows ? grid[size_t(line)][size_t(at)] : grid[size_t(at)][size_t(line)];
            };
            for (int axis = 0; axis < 2; ++axis) {
                const bool lines_are_rows = axis == 0;
                const int n = lines_are_rows ? t.numRawRows() : t.numRawColumns();
                const int across = lines_are_rows ? t.numRawColumns() : t.numRawRows();
                std::vector<int> compared;
                if (rng() % 2)
                    for (int i = 0; i < across; ++i)
                        if (rng() % 2) compared.push_back(i);
                std::vector<int> at = compared;
                if (at.empty())
                    for (int i = 0; i < across; ++i)
                        at.push_back(i);
                const int first = int(rng() % 2);
                std::vector<int> dups, empties;
                for (int a = first; a < n; ++a) {
                    bool empty = true;
                    for (int i : at)
                        empty = empty && cell(a, i, lines_are_rows).isEmpty();
                    if (empty) empties.push_back(a);
                    for (int b = first; b < a; ++b) {
                        bool same = true;
                        for (int i : at)
                            same = same && cell(a, i, lines_are_rows) == cell(b, i, lines_are_rows);
                        if (same) {
                            dups.push_back(a);
                            break;
                        }
                    }
                }
                QCOMPARE(lines_are_rows ? t.duplicateRawRows(first, compared)
                                        : t.duplicateRawColumns(first, compared),
                         dups);
                QCOMPARE(lines_are_rows ? t.emptyRawRows(first, compared)
                                        : t.emptyRawColumns(first, compared),
                         empties);
            }
        }
    }

    void failedAsynchronousLoadIsReported() {
        TableData t;
        QSignalSpy failed(&t, &TableData::loadFailedSignal);
        t.load(dir.filePath("missing.csv"), true, false, ",", ",", Utf8, Rfc4180);
        QVERIFY(failed.wait(5000));
    }
};

QTEST_GUILESS_MAIN(TestTableData)
#include "tst_tabledata.moc"
