#include "app/mainwindow.h"
#include "app/tabbar.h"
#include "edit/commands/setmodeldatacommand.h"
#include "view/tablemodel.h"
#include "view/tableview.h"
#include "widgets/msgbox.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <memory>

// The window's file flows on real files in a temporary folder, with each
// question answered as a user would.
class TestMainWindow : public QObject {
    Q_OBJECT

    QTemporaryDir dir;
    QStringList asked;

    QString path(const QString& name) { return dir.filePath(name); }
    QString write(const QString& name, const QByteArray& bytes) {
        QFile f(path(name));
        if (f.open(QIODevice::WriteOnly | QIODevice::Truncate)) f.write(bytes);
        return QFileInfo(path(name)).absoluteFilePath();
    }
    static QByteArray read(const QString& p) {
        QFile f(p);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
    }
    // Every question is recorded and answered with the next of `answers`.
    void answer(const QStringList& answers) {
        auto left = std::make_shared<QStringList>(answers);
        MsgBox::setAutoAnswer([this, left](MsgBox& box) {
            asked << box.text();
            if (!left->isEmpty()) box.clickButton(left->takeFirst());
        });
    }
    // One cell changed as a typed edit changes it: one undo step.
    static void edit(TableView* v, int row, int col, const QString& text) {
        Range cell(row, col, Range::Model);
        cell.value = text;
        v->pushCommand(new SetModelDataCommand(v->model(), {cell}, false, true));
    }
    static QString cell(TableView* v, int row, int col) {
        return v->model()->data(v->model()->index(row, col)).toString();
    }
    // Another process changes the file, as a user's other program would.
    static void writeFromOutside(const QString& p, const QByteArray& bytes) {
        QProcess sh;
        sh.start("sh", {"-c", QStringLiteral("printf '%s' \"$1\" > \"$2\""), "sh",
                        QString::fromUtf8(bytes), p});
        sh.waitForFinished();
    }

private slots:
    // A setting changed in the user's file by another program reaches the
    // open tables through the watcher; a bad value falls back to its default.
    // (Table settings are the defaults of files opened later.)
    void settingsFileReachesOpenTables() {
        QTemporaryDir prefs;
        MainWindow w;
        w.usePreferenceFolder(prefs.path());
        QVERIFY(w.openFile(write("prefs.csv", "a,b\n1,2\n")));
        TableModel* m = w.currentView()->model();
        QCOMPARE(m->minRows(), 50);
        const QString file = QDir(prefs.path()).filePath(QStringLiteral("Settings (User).csv"));
        auto setTo = [&](const QString& value) {
            QProcess::execute(
                QStringLiteral("sed"),
                {QStringLiteral("-i"),
                 QStringLiteral("s/^\\(Minimum Number of Table Rows,Global,[^,]*,50,\\).*$/\\1%1/")
                     .arg(value),
                 file});
        };
        setTo(QStringLiteral("70"));
        QTRY_COMPARE(m->minRows(), 70);
        setTo(QStringLiteral("many"));
        QTRY_COMPARE(m->minRows(), 50);
        // A toggle writes its value into the file and reaches the tables.
        w.commandToggleShowRowLabels();
        QVERIFY(w.currentView()->verticalHeader()->isHidden());
        QVERIFY(read(file).contains("Show Row Labels,Global,true|false,true,false"));
        // A table switch changes the current table only, not the defaults.
        const QByteArray before = read(file);
        w.commandToggleHighlightHeaderRows();
        QVERIFY(!m->highlightHeaderRows());
        QCOMPARE(read(file), before);
    }

    void init() {
        asked.clear();
        MsgBox::setAutoAnswer({});
    }
    void cleanup() { MsgBox::setAutoAnswer({}); }

    void unchangedSaveKeepsTheBytes_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("LF") << QByteArray("a,b\n1,2\n");
        QTest::newRow("CR LF from Windows") << QByteArray("a,b\r\n1,\"x,y\"\r\n");
        QTest::newRow("semicolons") << QByteArray("a;b;c\n1;2;3\n");
        QTest::newRow("tabs") << QByteArray("a\tb\n1\t2\n");
    }
    void unchangedSaveKeepsTheBytes() {
        QFETCH(QByteArray, bytes);
        MainWindow w;
        const QString p = write("same.csv", bytes);
        QVERIFY(w.openFile(p));
        QCOMPARE(w.views().size(), size_t(1)); // the start-up table gave way
        QVERIFY(w.saveTable(w.currentView()));
        QCOMPARE(read(p), bytes);
    }

    void openingAgainTakesTheOpenTab() {
        MainWindow w;
        const QString a = write("a.csv", "1\n"), b = write("b.csv", "2\n");
        QVERIFY(w.openFiles({a, b}));
        QCOMPARE(w.views().size(), size_t(2));
        QCOMPARE(w.currentView(), w.viewForPath(a));
        w.setCurrentView(w.viewForPath(b));
        QVERIFY(w.openFile(a));
        QCOMPARE(w.views().size(), size_t(2));
        QCOMPARE(w.currentView(), w.viewForPath(a));
        QCOMPARE(w.recentFiles(), (QStringList{b, a})); // opening an open file adds nothing
    }

    void saveAsMovesTheTab() {
        MainWindow w;
        const QString a = write("src.csv", "x,y\n");
        QVERIFY(w.openFile(a));
        TableView* v = w.currentView();
        edit(v, 0, 0, "z");
        const QString b = path("copy.csv");
        QVERIFY(w.saveTableAs(v, b, false));
        QCOMPARE(read(b), QByteArray("z,y\n"));
        QCOMPARE(read(a), QByteArray("x,y\n"));
        QCOMPARE(v->model()->tableData().filepath(), QFileInfo(b).absoluteFilePath());
        QVERIFY(w.watchedFiles().contains(QFileInfo(b).absoluteFilePath()));
        QVERIFY(!w.watchedFiles().contains(a));
        QVERIFY(v->undoStack()->isClean());
        QCOMPARE(w.tabBar()->tabText(0), QStringLiteral("copy.csv"));
    }

    void closeAsksAboutChanges_data() {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("closed");
        QTest::addColumn<QByteArray>("on_disk");
        QTest::newRow("cancel") << "&Cancel" << false << QByteArray("1,2\n");
        QTest::newRow("don't save") << "Do&n't Save" << true << QByteArray("1,2\n");
        QTest::newRow("save") << "&Save" << true << QByteArray("9,2\n");
    }
    void closeAsksAboutChanges() {
        QFETCH(QString, button);
        QFETCH(bool, closed);
        QFETCH(QByteArray, on_disk);
        MainWindow w;
        const QString p = write("close.csv", "1,2\n");
        QVERIFY(w.openFile(p));
        edit(w.currentView(), 0, 0, "9");
        answer({button});
        QCOMPARE(w.closeFile(w.currentView()), closed);
        QCOMPARE(asked, QStringList{"Do you want to save changes to close.csv?"});
        QCOMPARE(w.viewForPath(p) == nullptr, closed);
        QCOMPARE(read(p), on_disk);
        if (closed) QCOMPARE(w.views().size(), size_t(1)); // an untitled table replaces it
    }

    void reloadWithAnotherDelimiter() {
        MainWindow w;
        const QString p = write("semi.txt", "a;b\n1;2\n");
        ExtensionData comma;
        comma.delimiter_open = comma.delimiter_save = ",";
        QVERIFY(w.openFiles({p}, &comma));
        TableView* v = w.currentView();
        QCOMPARE(cell(v, 0, 0), QStringLiteral("a;b"));
        edit(v, 1, 0, "changed");
        answer({"Do&n't Save"});
        QVERIFY(w.reloadWithParameters(v, ";", Utf8, Rfc4180));
        QCOMPARE(cell(v, 1, 1), QStringLiteral("2"));
        QCOMPARE(v->model()->tableData().numRawColumns(), 2);
        QCOMPARE(read(p), QByteArray("a;b\n1;2\n"));
    }

    void renameMoveDuplicateDelete() {
        MainWindow w;
        const QString p = write("one.csv", "k\n");
        QVERIFY(w.openFile(p));
        TableView* v = w.currentView();
        const QString renamed = path("two.csv");
        QVERIFY(w.renameFile(p, renamed));
        QVERIFY(!QFile::exists(p));
        QCOMPARE(v->model()->tableData().filepath(), QFileInfo(renamed).absoluteFilePath());

        QVERIFY(QDir(dir.path()).mkdir("sub"));
        const QString sub = path("sub");
        write("sub/two.csv", "old\n");
        answer({"&Overwrite"});
        QVERIFY(w.moveFileTo(renamed, sub));
        QCOMPARE(read(QDir(sub).filePath("two.csv")), QByteArray("k\n"));
        QVERIFY(!QFile::exists(renamed));

        const QString copy = path("three.csv");
        QVERIFY(w.duplicateFileTo(v, copy));
        QCOMPARE(read(copy), QByteArray("k\n"));
        QCOMPARE(w.views().size(), size_t(2));
        QCOMPARE(v->model()->tableData().filepath(), QDir(sub).absoluteFilePath("two.csv"));

        answer({"Do&n't Delete", "&Delete"});
        QVERIFY(!w.deleteFile(w.viewForPath(copy)));
        QVERIFY(QFile::exists(copy));
        QVERIFY2(w.deleteFile(w.viewForPath(copy)), qPrintable(asked.join('|')));
        QVERIFY(!QFile::exists(copy));
        QVERIFY(!w.recentFiles().contains(QFileInfo(copy).absoluteFilePath()));
    }

    void outsideChanges_data() {
        QTest::addColumn<int>("behavior");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("expected");
        QTest::newRow("refresh") << int(RefreshOnChange) << ""
                                 << "new";
        QTest::newRow("ask, reload") << int(AskOnChange) << "&Reload"
                                     << "new";
        QTest::newRow("ask, keep") << int(AskOnChange) << "Do&n't Reload"
                                   << "old";
        QTest::newRow("ignore") << int(IgnoreChange) << ""
                                << "old";
    }
    void outsideChanges() {
        QFETCH(int, behavior);
        QFETCH(QString, button);
        QFETCH(QString, expected);
        MainWindow w;
        w.refresh_behavior = RefreshBehavior(behavior);
        const QString p = write(QStringLiteral("watched%1.csv").arg(behavior), "old\n");
        QVERIFY(w.openFile(p));
        TableView* v = w.currentView();
        answer({button});
        writeFromOutside(p, "new\n");
        if (expected == "new")
            QTRY_COMPARE(cell(v, 0, 0), expected);
        else
            QTest::qWait(300);
        QCOMPARE(cell(v, 0, 0), expected);
        QCOMPARE(asked.size(), behavior == AskOnChange ? 1 : 0);
    }

    // A change from outside keeps the table's sort and filters on the new
    // content. A table with unsaved steps is asked about even when changes
    // reload on their own, and keeps its edits when the user declines.
    void outsideChangeKeepsSortFiltersAndEdits() {
        MainWindow w;
        w.refresh_behavior = RefreshOnChange;
        w.retain_sort_and_filters = true;
        const QString p = write("kept.csv", "k,n\nb,1\na,7\nc,2\n");
        QVERIFY(w.openFile(p));
        TableView* v = w.currentView();
        TableModel* m = v->model();
        // The filter first: a filter after the sort would reset its record.
        v->addFilter(FilterData(FilterLine::forColumn(1), QStringLiteral("<5")));
        m->selectSingleCell(Range(0, 0, Range::Model));
        v->sortSelectedColumn(1);
        QCOMPARE(cell(v, 1, 0), QStringLiteral("c"));
        QCOMPARE(m->tableData().numModelRows(), 3);

        answer({"&Reload"});
        writeFromOutside(p, "k,n\nx,1\nz,3\ny,9\nw,4\n");
        QTRY_COMPARE(m->tableData().numRawRows(), 5);
        QCOMPARE(asked.size(), 1);
        QVERIFY(v->undoStack()->isClean());
        QCOMPARE(m->colSort().order, 1);
        QCOMPARE(m->tableData().numModelRows(), 4);
        QCOMPARE((QStringList{cell(v, 1, 0), cell(v, 2, 0), cell(v, 3, 0)}),
                 (QStringList{"z", "x", "w"}));

        edit(v, 1, 1, "0");
        answer({"Do&n't Reload"});
        writeFromOutside(p, "q\n");
        QTRY_COMPARE(asked.size(), 2);
        QTest::qWait(200);
        QCOMPARE(cell(v, 1, 1), QStringLiteral("0"));
        QCOMPARE(m->tableData().numRawRows(), 5);
    }

    void ownSavesAreNotReported() {
        MainWindow w;
        w.refresh_behavior = AskOnChange;
        const QString p = write("own.csv", "a\n");
        QVERIFY(w.openFile(p));
        answer({"Do&n't Reload"});
        for (int i = 0; i < 3; ++i) {
            edit(w.currentView(), 0, 0, QString::number(i));
            QVERIFY(w.saveTable(w.currentView()));
            QTest::qWait(100);
        }
        QTest::qWait(300);
        QCOMPARE(asked, QStringList());
        // A change from outside after the grace second is noticed again.
        QTest::qWait(1000);
        writeFromOutside(p, "b\n");
        QTRY_COMPARE(asked.size(), 1);
    }

    void unreadableFilesOpenNothing() {
        MainWindow w;
        const QString fifo = path("pipe.csv");
        QVERIFY(QProcess::execute("mkfifo", {fifo}) == 0);
        const QString plain = write("plain.csv", "a\n");
        answer({"OK", "OK"});
        QElapsedTimer t;
        t.start();
        QVERIFY(!w.openFiles({fifo}));
        QVERIFY(t.elapsed() < 1000); // no read that waits for a writer
        QCOMPARE(asked.size(), 1);
        QVERIFY(asked[0].startsWith("This file could not be opened:"));
        QCOMPARE(w.views().size(), size_t(1)); // the start-up table stays
        QVERIFY(w.openFile(plain));            // and the window goes on working
    }

    void failedSaveLosesNothing() {
        MainWindow w;
        w.refresh_behavior = IgnoreChange; // the folder goes away under the open file
        QVERIFY(QDir(dir.path()).mkdir("gone"));
        const QString p = write("gone/f.csv", "1\n");
        QVERIFY(w.openFile(p));
        TableView* v = w.currentView();
        edit(v, 0, 0, "2");
        QVERIFY(QDir(path("gone")).removeRecursively());
        answer({"OK"});
        QVERIFY(!w.saveTable(v));
        QCOMPARE(asked, QStringList{"File failed to save."});
        QCOMPARE(cell(v, 0, 0), QStringLiteral("2"));
        QVERIFY(!v->undoStack()->isClean());
        QVERIFY(w.viewForPath(p));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
