#include "edit/commands/columnlookupcommand.h"
#include "testutilfiles.h"
#include "view/lookupmap.h"
#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QTest>
#include <QUndoStack>

#include <memory>
#include <vector>

// Column lookup through the model as the prompt chain runs it: the source's
// map, the destination's cells, one ColumnLookupCommand pushed on the
// destination's stack; the saved bytes after it, after its undo (the file as
// it was) and after its redo.
class TestColumnLookup : public QObject {
    Q_OBJECT

    ScratchFiles files;
    std::unique_ptr<TableView> makeView(const QByteArray& bytes) {
        auto view = std::make_unique<TableView>(false);
        view->model()->load(files.write(bytes), false);
        return view;
    }

    static constexpr int kInsert = -1;
    struct Case {
        const char* name;
        QByteArray source; // empty: the destination is its own source
        QByteArray destination;
        int source_key;
        std::vector<int> source_values; // raw; what "*" names is all but the key
        int destination_key;
        int destination_value; // kInsert: new columns after the key
        QString mismatch;
        QByteArray expected; // empty: no step
    };

    static std::vector<Case> cases() {
        return {
            {"two rows with one key: the last one's values",
             "k,v\na,1\nb,2\na,3\n",
             "k\na\nb\nc\n",
             0,
             {1},
             0,
             kInsert,
             {},
             "k,\na,3\nb,2\nc,\n"},
            {"\"A\" is not \"a\"",
             "k,v\nA,upper\n",
             "k\na\nA\n",
             0,
             {1},
             0,
             kInsert,
             {},
             "k,\na,\nA,upper\n"},
            {"overwrite with no mismatch text keeps the old values",
             "k,v\na,new\n",
             "k,v\na,old1\nz,\"old,2\"\n",
             0,
             {1},
             0,
             1,
             {},
             "k,v\na,new\nz,\"old,2\"\n"},
            {"insert leaves unmatched rows empty, the columns after move right",
             "k,v\na,new\n",
             "k,w\na,x\nz,y\n",
             0,
             {1},
             0,
             kInsert,
             {},
             "k,,w\na,new,x\nz,,y\n"},
            {"all but the key column, left to right",
             "x,k,y\n1,a,2\n3,b,4\n",
             "k\nb\na\n",
             1,
             {0, 2},
             0,
             kInsert,
             {},
             "k,,\nb,3,4\na,1,2\n"},
            {"mismatch text on insert",
             "k,v\na,1\n",
             "k\na\nq\n",
             0,
             {1},
             0,
             kInsert,
             QStringLiteral("N/A"),
             "k,\na,1\nq,N/A\n"},
            {"mismatch text on overwrite replaces the old value",
             "k,v\na,1\n",
             "k,v\na,x\nq,y\n",
             0,
             {1},
             0,
             1,
             QStringLiteral("-"),
             "k,v\na,1\nq,-\n"},
            {"values with delimiters and quotes keep them; keys beyond ASCII match",
             "k,v\n\xC3\xA9t\xC3\xA9,\"x,\"\"y\"\"\"\n",
             "k\n\xC3\xA9t\xC3\xA9\n",
             0,
             {1},
             0,
             kInsert,
             {},
             "k,\n\xC3\xA9t\xC3\xA9,\"x,\"\"y\"\"\"\n"},
            {"the destination key column elsewhere, values past the data",
             "id,n\n7,seven\n",
             "a,id\nx,7\ny,8\n",
             0,
             {1},
             1,
             2,
             {},
             "a,id,\nx,7,seven\ny,8,\n"},
            {"one file is source and destination",
             {},
             "k,v,w\na,1,\nb,2,\n",
             0,
             {1},
             0,
             2,
             {},
             "k,v,w\na,1,1\nb,2,2\n"},
            {"a value column out of range: no step",
             "k,v\na,1\n",
             "k\na\n",
             0,
             {5},
             0,
             kInsert,
             {},
             {}},
            {"a destination key column out of range: no step",
             "k,v\na,1\n",
             "k\na\n",
             0,
             {1},
             3,
             kInsert,
             {},
             {}},
        };
    }

private slots:
    void initTestCase() { QVERIFY(files.isValid()); }

    void lookup_data() {
        QTest::addColumn<int>("index");
        const std::vector<Case> all = cases();
        for (size_t i = 0; i < all.size(); ++i)
            QTest::newRow(all[i].name) << int(i);
    }
    void lookup() {
        QFETCH(int, index);
        const Case c = cases()[size_t(index)];
        auto destination = makeView(c.destination);
        auto source = c.source.isEmpty() ? nullptr : makeView(c.source);
        TableModel& to = *destination->model();
        TableModel& from = source ? *source->model() : to;
        const QByteArray before = files.saved(to);
        QCOMPARE(before, c.destination);

        const LookupMap map =
            from.buildLookupMap(c.source_key, c.source_values, from.numHeaderRows());
        const bool insert = c.destination_value == kInsert;
        RangeVector cells;
        to.lookupRanges(cells, map, c.destination_key,
                        insert ? c.destination_key + 1 : c.destination_value, c.mismatch,
                        to.numHeaderRows(), insert);
        destination->pushCommand(
            new ColumnLookupCommand(&to, cells, to.selectionRanges(), insert, false));
        if (c.expected.isEmpty()) {
            QCOMPARE(destination->undoStack()->count(), 0);
            QCOMPARE(files.saved(to), before);
            return;
        }
        // The step is the destination's; the source is only read.
        QCOMPARE(destination->undoStack()->count(), 1);
        QCOMPARE(destination->undoStack()->command(0)->text(),
                 QStringLiteral("ColumnLookupCommand"));
        if (source) {
            QCOMPARE(source->undoStack()->count(), 0);
            QCOMPARE(files.saved(from), c.source);
        }
        QCOMPARE(files.saved(to), c.expected);
        destination->commandUndo();
        QCOMPARE(files.saved(to), before);
        destination->commandRedo();
        QCOMPARE(files.saved(to), c.expected);
    }

    // The map itself: exact keys, the last row's values, an empty key is a key.
    void map() {
        auto view = makeView("k,v,w\na,1,x\nA,2,y\na,3,z\n,4,e\n");
        const LookupMap map = view->model()->buildLookupMap(0, {2, 1}, 1);
        QVERIFY(map.isValid());
        QCOMPARE(map.size(), qsizetype(3));
        QCOMPARE(map.values(u"a"), (QStringList{"z", "3"}));
        QCOMPARE(map.values(u"A"), (QStringList{"y", "2"}));
        QCOMPARE(map.values(u""), (QStringList{"e", "4"}));
        QVERIFY(!map.contains(u"b"));
        QVERIFY(!view->model()->buildLookupMap(0, {3}, 1).isValid());
        QVERIFY(!view->model()->buildLookupMap(-1, {1}, 1).isValid());
        QVERIFY(!view->model()->buildLookupMap(0, {1}, 9).isValid());
    }
};

QTEST_MAIN(TestColumnLookup)
#include "tst_columnlookup.moc"
