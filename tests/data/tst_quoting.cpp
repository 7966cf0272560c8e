#include "data/editabledatacontainer.h"
#include "testutilstore.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace testutil;

namespace {

// How a writer of another tool quotes, after Python's csv module: only where
// needed, every field, or every field but the numbers (where an empty number,
// a missing value, stays bare and an empty text is written "").
enum class Writer { Minimal, All, NonNumeric };

struct Value {
    QByteArray text;
    bool number = false;
};
using Grid = QList<QList<Value>>;

Grid randomGrid(QRandomGenerator& random) {
    static const char* const texts[] = {"",           "alpha",      "two words", "a,b",
                                        "say \"hi\"", "line\nnext", "cr\rhere",  " padded ",
                                        "\"",         "x\r\ny",     "0042",      "-"};
    Grid g;
    const int columns = 1 + random.bounded(6);
    const int rows = 1 + random.bounded(30);
    for (int r = 0; r < rows; ++r) {
        g.append(QList<Value>());
        for (int c = 0; c < columns; ++c) {
            Value v;
            switch (random.bounded(3)) {
            case 0:
                v.number = true;
                if (random.bounded(5)) v.text = QByteArray::number(random.bounded(-500, 5000));
                break;
            case 1:
                v.number = true;
                v.text = QByteArray::number(random.bounded(100000) / 100.0, 'f', 2);
                break;
            default:
                v.text = texts[random.bounded(int(std::size(texts)))];
            }
            g.back().append(v);
        }
    }
    return g;
}

bool needsQuotes(const QByteArray& s) {
    return s.contains(',') || s.contains('"') || s.contains('\r') || s.contains('\n');
}

QByteArray quoted(QByteArray s) {
    return '"' + s.replace("\"", "\"\"") + '"';
}

// Whether that writer quotes the value. A one-field line holding an empty
// text is written "" by every writer, so that it is not read as a blank line.
bool writerQuotes(const Value& v, qsizetype fields, Writer w) {
    return w == Writer::All || (w == Writer::NonNumeric && !v.number) || needsQuotes(v.text) ||
           (fields == 1 && v.text.isEmpty() && !v.number);
}

// The line as that writer makes it; `rule` decides the quoting of one field.
template <class Rule> QByteArray line(const QList<Value>& row, const char* ending, Rule&& rule) {
    QByteArray out;
    for (int c = 0; c < row.size(); ++c)
        out += (rule(c) ? quoted(row[c].text) : row[c].text) + (c + 1 < row.size() ? "," : "");
    return out + ending;
}

QByteArray write(const Grid& g, Writer w, const char* ending) {
    QByteArray out;
    for (const QList<Value>& row : g)
        out += line(row, ending, [&](int c) { return writerQuotes(row[c], row.size(), w); });
    return out;
}

} // namespace

class TestQuoting : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;

    QByteArray saved(EditableDataContainer& c) {
        const QString path = dir_.filePath("saved.csv");
        return c.saveAs(path, false, false, {}, {}) ? readFile(path) : QByteArray("refused");
    }

private slots:
    void initTestCase() { QVERIFY(dir_.isValid()); }

    void roundTrip_data() {
        QTest::addColumn<int>("writer");
        QTest::addColumn<bool>("crlf");
        for (bool crlf : {true, false}) {
            const char* e = crlf ? " CR LF" : " LF";
            QTest::addRow("minimal%s", e) << int(Writer::Minimal) << crlf;
            QTest::addRow("all%s", e) << int(Writer::All) << crlf;
            QTest::addRow("non-numeric%s", e) << int(Writer::NonNumeric) << crlf;
        }
    }

    // Loaded and saved unchanged, a file keeps its bytes; after one cell is
    // changed only that cell's line differs, written by the standard's own
    // rule; saved in another standard, that standard's rule alone decides.
    void roundTrip() {
        QFETCH(int, writer);
        QFETCH(bool, crlf);
        const Writer w = Writer(writer);
        const char* ending = crlf ? "\r\n" : "\n";
        QRandomGenerator random(uint(writer * 2 + crlf + 7));
        for (int round = 0; round < 40; ++round) {
            Grid g = randomGrid(random);
            const QByteArray file = write(g, w, ending);
            const QString path = dir_.filePath("in.csv");
            QVERIFY(writeFile(path, file));
            EditableDataContainer c;
            c.setFilepath(path);
            c.setDelimiters(',', ',');
            c.setLineEnding(crlf ? WindowsLineEnding : UnixLineEnding);
            QVERIFY(c.loadCSV());
            QCOMPARE(show(saved(c)), show(file));

            const int r = random.bounded(g.size());
            const int col = random.bounded(g[r].size());
            const QByteArray text = random.bounded(2) ? "new, text" : "7";
            QVERIFY(c.setCell(r, col, text));
            // The edited cell by the standard's rule, the others as they came.
            QByteArray expected;
            for (int k = 0; k < g.size(); ++k) {
                const QList<Value>& row = g[k];
                QList<Value> now = row;
                if (k == r) now[col] = Value{text, false};
                expected += line(now, ending, [&](int i) {
                    return k == r && i == col ? needsQuotes(text)
                                              : writerQuotes(row[i], row.size(), w);
                });
            }
            QCOMPARE(show(saved(c)), show(expected));

            // Sparse quoting: only a delimiter or a line break calls for quotes.
            c.setParsingStandard(SparseQuotes);
            g[r][col] = Value{text, false};
            QByteArray sparse;
            for (const QList<Value>& row : g)
                sparse += line(row, ending, [&](int i) {
                    const QByteArray& t = row[i].text;
                    return t.contains(',') || t.contains('\r') || t.contains('\n');
                });
            QCOMPARE(show(saved(c)), show(sparse));
        }
    }
};

QTEST_GUILESS_MAIN(TestQuoting)
#include "tst_quoting.moc"
