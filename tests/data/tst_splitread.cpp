#include "data/csvstatemachine.h"
#include "data/editabledatacontainer.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <random>

// Large chunks are read on two threads from a guessed line start. Whatever
// the guess, the cells must be those of a single-threaded read.
class TestSplitRead : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    static QByteArray randomCsv(std::mt19937& rng, bool crlf) {
        static const char* const pieces[] = {"a",    "b,c", "\"q\"", "\n",
                                             "\r\n", "x y", "",      "\xc3\xa9"};
        QByteArray out;
        const int rows = 1 + int(rng() % 300);
        for (int r = 0; r < rows; ++r) {
            const int cols = 1 + int(rng() % 6);
            for (int c = 0; c < cols; ++c) {
                QByteArray cell;
                for (int k = int(rng() % 4); k > 0; --k)
                    cell += pieces[rng() % 8];
                const bool quote = cell.contains(',') || cell.contains('"') ||
                                   cell.contains('\n') || cell.contains('\r') || rng() % 5 == 0;
                if (quote) cell = '"' + cell.replace("\"", "\"\"") + '"';
                out += cell;
                if (c + 1 < cols) out += ',';
            }
            out += crlf ? "\r\n" : "\n";
        }
        if (rng() % 3 == 0) out += "\"unterminated\nfield";
        return out;
    }

    struct Snapshot {
        int rows = 0, cols = 0;
        QList<QByteArray> cells;
        bool operator==(const Snapshot&) const = default;
    };

    Snapshot load(const QString& path, qint64 threshold, qint64 chunk) {
        EditableDataContainer c;
        c.setFilepath(path);
        c.setParallelThreshold(threshold);
        c.setChunkLimit(chunk);
        Snapshot s;
        if (!c.loadCSV()) return s;
        s.rows = c.rowCount();
        s.cols = c.columnCount();
        for (int r = 0; r < s.rows; ++r) {
            s.cells << QByteArray::number(c.storedCellCount(r));
            for (int col = 0; col < c.storedCellCount(r); ++col)
                s.cells << c.data(r, col);
        }
        return s;
    }

private slots:
    void sameCellsAsOneThread() {
        std::mt19937 rng(11);
        const QString path = dir.filePath("t.csv");
        for (int round = 0; round < 300; ++round) {
            const QByteArray bytes = randomCsv(rng, round % 2 == 0);
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(bytes);
            f.close();
            const Snapshot single = load(path, qint64(1) << 40, qint64(1) << 30);
            // Split points anywhere, in one chunk and across several.
            const qint64 threshold = 1 + qint64(rng() % 64);
            const qint64 chunk = round % 3 == 0 ? 64 + qint64(rng() % 512) : qint64(1) << 30;
            const Snapshot split = load(path, threshold, chunk);
            if (!(split == single))
                QFAIL(qPrintable(QString("round %1, threshold %2, chunk %3")
                                     .arg(round)
                                     .arg(threshold)
                                     .arg(chunk)));
        }
    }

    // A file of several read windows: the halves of a split chunk cross
    // window seams, and the chunk seams fall inside lines.
    void windowSeamsInsideSplitChunks() {
        std::mt19937 rng(5);
        QByteArray bytes;
        while (bytes.size() < 3 * 1024 * 1024 + 17)
            bytes += randomCsv(rng, rng() % 2 == 0).replace("\"unterminated", "\"closed\"");
        const QString path = dir.filePath("big.csv");
        QFile f(path);
        QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(bytes);
        f.close();
        // The reference reads the whole file in one piece, without windows.
        struct Grid {
            Snapshot s;
            QList<QList<QByteArray>> lines;
            bool lineStart(qint64) { return lines.append(QList<QByteArray>()), true; }
            void setCell(qint64 row, qint64 column, const char* b, size_t n) {
                s.rows = int(row + 1);
                s.cols = std::max(s.cols, int(column + 1));
                auto& line = lines[row];
                while (line.size() <= column)
                    line.append(QByteArray());
                line[column] = QByteArray(b, qsizetype(n));
            }
        } grid;
        CsvStateMachine<1, false, true, Grid> machine(grid, ',', true);
        QVERIFY(machine.feed(bytes.constData(), bytes.size(), 0));
        machine.finish();
        for (const auto& line : grid.lines) {
            int stored = int(line.size());
            while (stored > 0 && line[stored - 1].isEmpty())
                --stored;
            grid.s.cells << QByteArray::number(stored);
            grid.s.cells.append(line.mid(0, stored));
        }
        const Snapshot& single = grid.s;
        QVERIFY(single.rows > 1000);
        QVERIFY(load(path, qint64(1) << 40, qint64(1) << 30) == single);
        QVERIFY(load(path, 1024, qint64(1) << 30) == single);
        QVERIFY(load(path, 1024, 1536 * 1024 + 3) == single);
    }

    // The loader notes which cells hold bytes while it stores the rows, the
    // halves of a split chunk joined at their row offsets: the bits must
    // match the cells, whichever path (whole line or field by field) and
    // wherever the seams fell.
    void fillBitsMatchCells() {
        std::mt19937 rng(23);
        QByteArray big;
        while (big.size() < 3 * 1024 * 1024)
            big += randomCsv(rng, rng() % 2 == 0).replace("\"unterminated", "\"closed\"");
        const QString path = dir.filePath("fill.csv");
        for (int round = 0; round < 80; ++round) {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
            f.write(round < 2 ? big : randomCsv(rng, round % 2 == 0));
            f.close();
            EditableDataContainer c;
            c.setFilepath(path);
            c.setParallelThreshold(round < 2 ? 1024 : 1 + qint64(rng() % 64));
            c.setChunkLimit(round % 3 == 0 ? 1536 * 1024 + 3 : qint64(1) << 30);
            QVERIFY(c.loadCSV());
            const std::vector<FillBits> bits = c.takeFillBits();
            QVERIFY(int(bits.size()) <= c.columnCount());
            qint64 filled = 0, noted = 0;
            for (const FillBits& column : bits)
                for (uint64_t word : column)
                    noted += __builtin_popcountll(word);
            for (int col = 0; col < c.columnCount(); ++col)
                for (int r = 0; r < c.rowCount(); ++r) {
                    const bool has = !c.cellView(r, col).isEmpty();
                    filled += has;
                    if (has != (col < int(bits.size()) && fillbits::test(bits[size_t(col)], r)))
                        QFAIL(qPrintable(
                            QString("round %1, row %2, column %3").arg(round).arg(r).arg(col)));
                }
            QCOMPARE(noted, filled); // nothing noted past the rows
            QVERIFY(c.takeFillBits().empty());
        }
    }

    // The second half of a split chunk is read on another thread; the bar
    // must still pass through every step of the file in order, not stall at
    // each middle and jump at each chunk's end.
    void progressThroughSplitChunks() {
        const QString path = dir.filePath("progress.csv");
        {
            QFile f(path);
            QVERIFY(f.open(QIODevice::WriteOnly));
            const QByteArray line = QByteArray(118, 'x') + ",abcdefgh\n"; // 128 bytes
            for (qint64 written = 0; written < 64 * csv::kMiB; written += line.size())
                f.write(line);
        }
        const qint64 size = QFileInfo(path).size();
        EditableDataContainer c;
        c.setFilepath(path);
        c.setParallelThreshold(csv::kMiB);
        c.setChunkLimit(32 * csv::kMiB);
        QList<int> got;
        QList<qint64> rows_at_report;
        connect(&c, &AbstractDataContainer::loadProgressUpdateSignal, [&](int curr, int, int) {
            got << curr;
            rows_at_report << c.storedRowCount();
        });
        QVERIFY(c.loadCSV());
        QList<int> want;
        for (qint64 at = 0; at < size; at += csv::kProgressStep)
            want << int(at / csv::kProgressStep);
        QCOMPARE(got, want);
        // Report 3 stands for 24 MiB, in the second half of the first chunk:
        // it comes while that chunk's first half is still being read.
        QVERIFY(rows_at_report[3] * 128 < 16 * csv::kMiB);
    }
};

QTEST_GUILESS_MAIN(TestSplitRead)
#include "tst_splitread.moc"
