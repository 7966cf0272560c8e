#include "edit/findmatcher.h"
#include "testutilfiles.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <memory>

// Find and replace through the model and the view, against references worked
// out cell by cell here.
class TestFind : public QObject {
    Q_OBJECT

    ScratchFiles files;

    std::unique_ptr<TableView> makeView(const QByteArray& bytes) {
        auto view = std::make_unique<TableView>(false);
        view->model()->load(files.write(bytes), false);
        view->model()->selectSingleCell(Range(0, 0, Range::Model));
        return view;
    }
    static FindReplaceQuery query(const QString& text, bool case_sensitive = false) {
        FindReplaceQuery q;
        q.find_str = text;
        q.case_sensitive = case_sensitive;
        return q;
    }
    static QString dump(TableView& v) {
        TableModel* m = v.model();
        QStringList rows;
        for (int r = 0; r < m->tableData().numModelRows(); ++r) {
            QStringList cells;
            for (int c = 0; c < m->tableData().numModelColumns(); ++c)
                cells << m->cellText(r, c);
            rows << cells.join(u',');
        }
        return rows.join(u'\n');
    }

private slots:
    void matchText_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("find");
        QTest::addColumn<int>("flags"); // 1 case, 2 word, 4 cell, 8 regex
        QTest::addColumn<QString>("replace");
        QTest::addColumn<QString>("expected"); // replaced text, or "-" for no match
        QTest::newRow("plain, every occurrence") << "abcabc"
                                                 << "b" << 0 << "X"
                                                 << "aXcaXc";
        QTest::newRow("case folds") << "Cat cat"
                                    << "CAT" << 0 << "dog"
                                    << "dog dog";
        QTest::newRow("case kept") << "Cat cat"
                                   << "cat" << 1 << "dog"
                                   << "Cat dog";
        QTest::newRow("word between separators") << "cat,dog"
                                                 << "cat" << 2 << "x"
                                                 << "x,dog";
        QTest::newRow("word inside another") << "concat"
                                             << "cat" << 2 << "x"
                                             << "-";
        QTest::newRow("underscore joins words") << "a_cat"
                                                << "cat" << 2 << "x"
                                                << "-";
        QTest::newRow("word after a rejected one") << "catcat cat"
                                                   << "cat" << 2 << "x"
                                                   << "catcat x";
        QTest::newRow("whole cell") << "abc"
                                    << "ABC" << 4 << "z"
                                    << "z";
        QTest::newRow("whole cell, part") << "abcd"
                                          << "abc" << 4 << "z"
                                          << "-";
        QTest::newRow("pattern with captures") << "2020-04-10"
                                               << "(\\d+)-(\\d+)-(\\d+)" << 8 << "\\3/\\2/\\1"
                                               << "10/04/2020";
        QTest::newRow("whole cell wraps an alternation as written") << "ax"
                                                                    << "a|b" << (4 | 8) << "z"
                                                                    << "zx";
        QTest::newRow("bad pattern matches nothing") << "a(b"
                                                     << "(" << 8 << "z"
                                                     << "-";
        QTest::newRow("empty finds an empty cell") << ""
                                                   << "" << 4 << "z"
                                                   << "";
        QTest::newRow("empty finds nothing in a full cell") << "a"
                                                            << "" << 0 << "z"
                                                            << "-";
    }
    void matchText() {
        QFETCH(QString, text);
        QFETCH(QString, find);
        QFETCH(int, flags);
        QFETCH(QString, replace);
        QFETCH(QString, expected);
        FindReplaceQuery q = query(find, flags & 1);
        q.whole_word = flags & 2;
        q.whole_cell = flags & 4;
        q.regex = flags & 8;
        q.replace_str = replace;
        const FindMatcher matcher(q);
        QCOMPARE(matcher.findInText(text), expected != u"-");
        if (expected != u"-" && !text.isEmpty()) QCOMPARE(matcher.replaceInText(text), expected);
    }

    // Find All over a random table equals a scan of every cell, through the
    // row pass-over and both threads; hidden rows and columns are left out.
    void findAllMatchesEveryCell() {
        QRandomGenerator rng(7);
        const QStringList words = {"alpha", "Beta", "gamma", "ALPHABET", "ünïcode", "", "x,y"};
        QByteArray bytes;
        const int rows = 50000, cols = 4;
        for (int r = 0; r < rows; ++r) {
            QStringList cells;
            for (int c = 0; c < cols; ++c) {
                QString w = words[int(rng.bounded(words.size()))];
                cells << (w.contains(u',') ? u'"' + w + u'"' : w);
            }
            bytes += cells.join(u',').toUtf8() + '\n';
        }
        auto view = makeView(bytes);
        TableModel* m = view->model();
        m->tableData().setHiddenRows({3, 4, 40000});
        m->tableData().setHiddenColumns({2});
        for (const FindReplaceQuery& q :
             {query("alpha"), query("ALPHA", true), query("ünï"), query("Ü"), query("x,y")}) {
            const FindMatcher matcher(q);
            RangeVector expected;
            for (int r = 0; r < m->tableData().numModelRows(); ++r)
                for (int c = 0; c < m->tableData().numModelColumns(); ++c)
                    if (matcher.findInText(m->cellText(r, c)))
                        expected.emplace_back(r, c, Range::Model);
            const RangeVector found = m->findAll(q);
            QCOMPARE(found.size(), expected.size());
            for (size_t i = 0; i < found.size(); ++i) {
                QCOMPARE(found[i].row, expected[i].row);
                QCOMPARE(found[i].col, expected[i].col);
            }
        }
    }

    // Next and previous walk the table as shown and wrap; one match is found
    // again from itself.
    void findNextWraps() {
        auto view = makeView("a,b,c\nd,hit,f\ng,h,hit\n");
        TableModel* m = view->model();
        Range found;
        QVERIFY(m->findNext(query("hit"), Range(0, 0, Range::Model), false, found));
        QCOMPARE(std::make_pair(found.row, found.col), std::make_pair(1, 1));
        QVERIFY(m->findNext(query("hit"), found, false, found));
        QCOMPARE(std::make_pair(found.row, found.col), std::make_pair(2, 2));
        QVERIFY(m->findNext(query("hit"), found, false, found));
        QCOMPARE(std::make_pair(found.row, found.col), std::make_pair(1, 1));
        QVERIFY(m->findNext(query("hit"), found, true, found));
        QCOMPARE(std::make_pair(found.row, found.col), std::make_pair(2, 2));
        QVERIFY(m->findNext(query("f"), Range(1, 2, Range::Model), false, found));
        QCOMPARE(std::make_pair(found.row, found.col), std::make_pair(1, 2));
        QVERIFY(!m->findNext(query("zzz"), Range(0, 0, Range::Model), false, found));
        // A hidden row is passed over.
        m->tableData().setHiddenRows({1});
        QVERIFY(m->findNext(query("hit"), Range(0, 0, Range::Model), false, found));
        QCOMPARE(std::make_pair(found.row, found.col), std::make_pair(1, 2)); // raw row 2
    }

    // Replace All is one undo step; Replace Next changes the main cell only
    // and moves on.
    void replaceUndoes() {
        auto view = makeView("cat,concat\nCat,dog\n");
        const QString before = dump(*view);
        FindReplaceQuery q = query("cat");
        q.replace_str = "cow";
        QCOMPARE(view->replaceAllMatches(q), 3);
        QCOMPARE(dump(*view), QStringLiteral("cow,concow\ncow,dog"));
        QCOMPARE(view->undoStack()->count(), 1);
        view->undoStack()->undo();
        QCOMPARE(dump(*view), before);
        // A hidden row keeps its text.
        view->model()->tableData().setHiddenRows({1});
        QCOMPARE(view->replaceAllMatches(q), 2);
        QCOMPARE(view->model()->tableData().rawData(1, 0).toString(), QStringLiteral("Cat"));
        view->undoStack()->undo();
        view->model()->tableData().setHiddenRows({});

        q.whole_word = true;
        view->model()->selectSingleCell(Range(0, 1, Range::Model));
        QVERIFY(view->replaceMatch(q, false)); // "concat" is no word: only a move
        QCOMPARE(dump(*view), before);
        QCOMPARE(view->model()->mainCell().row, 1);
        QVERIFY(view->replaceMatch(q, false));
        QCOMPARE(dump(*view), QStringLiteral("cat,concat\ncow,dog"));
    }
};

QTEST_MAIN(TestFind)
#include "tst_find.moc"
