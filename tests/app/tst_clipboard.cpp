#include "view/tablemodel.h"
#include "view/tableview.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUndoStack>

#include <memory>

// Copy and paste with other programs through the real X clipboard: this
// test starts its own Xvfb and talks to xclip, as another program would.
class TestClipboard : public QObject {
    Q_OBJECT

    QTemporaryDir dir;

    // Runs xclip while the event loop keeps serving our side of the
    // clipboard; returns what it printed.
    static QByteArray xclip(const QStringList& args, const QByteArray& input = {}) {
        QProcess p;
        p.start(QStringLiteral("xclip"), args);
        if (!p.waitForStarted(5000)) return "<no xclip>";
        if (!input.isNull()) {
            p.write(input);
            p.closeWriteChannel();
        }
        QElapsedTimer t;
        t.start();
        while (p.state() != QProcess::NotRunning && t.elapsed() < 10000) {
            QApplication::processEvents(QEventLoop::AllEvents, 20);
            p.waitForFinished(20);
        }
        return p.readAllStandardOutput();
    }

    std::unique_ptr<TableView> makeView() {
        const QString path = dir.filePath(QStringLiteral("c.csv"));
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly)) return nullptr;
        f.write("a,b,c\n1,\"x,y\",3\n");
        f.close();
        auto view = std::make_unique<TableView>();
        view->model()->load(path, false);
        view->resize(500, 300);
        view->show();
        if (!QTest::qWaitForWindowExposed(view.get())) return nullptr;
        return view;
    }

private slots:
    void copyIsReadByAnotherProgram() {
        auto view = makeView();
        QVERIFY(view);
        Range block = Range::wholeTable(Range::Model);
        block.row = 0, block.row_end = 1, block.col = 1, block.col_end = 2;
        block.is_main = true, block.main_offset_row = 0, block.main_offset_col = 1;
        view->model()->setSelection({block}, true);
        view->copyCells(false);
        QCOMPARE(xclip({"-o", "-selection", "clipboard", "-t", "text/csv"}),
                 QByteArray("b,c\r\n\"x,y\",3\r\n"));
        QCOMPARE(xclip({"-o", "-selection", "clipboard", "-t", "UTF8_STRING"}),
                 QByteArray("b\tc\r\nx,y\t3"));
    }

    void anotherProgramsTextPastesCellForCell() {
        auto view = makeView();
        QVERIFY(view);
        // xclip keeps serving the text from the background until replaced.
        xclip({"-i", "-selection", "clipboard"}, "p\tq\nr\ts\n");
        QTRY_VERIFY_WITH_TIMEOUT(QApplication::clipboard()->text().startsWith("p"), 5000);
        view->model()->selectSingleCell(Range(1, 1, Range::Model));
        view->pasteCells();
        TableModel& m = *view->model();
        QCOMPARE(m.data(m.index(1, 1)).toString(), QStringLiteral("p"));
        QCOMPARE(m.data(m.index(1, 2)).toString(), QStringLiteral("q"));
        QCOMPARE(m.data(m.index(2, 1)).toString(), QStringLiteral("r"));
        QCOMPARE(m.data(m.index(2, 2)).toString(), QStringLiteral("s"));
        QCOMPARE(m.tableData().numRawRows(), 3);
        QCOMPARE(view->undoStack()->count(), 1);
    }
};

int main(int argc, char** argv) {
    // A display of our own, so that the test needs no desktop and leaves
    // none behind.
    const int display = 70 + int(QCoreApplication::applicationPid() % 400);
    QProcess xvfb;
    xvfb.start(QStringLiteral("Xvfb"),
               {QStringLiteral(":%1").arg(display), QStringLiteral("-screen"), QStringLiteral("0"),
                QStringLiteral("1024x768x24")});
    if (!xvfb.waitForStarted(5000)) {
        std::fprintf(stderr, "Xvfb did not start\n");
        return 1;
    }
    const QString socket = QStringLiteral("/tmp/.X11-unix/X%1").arg(display);
    for (int i = 0; i < 100 && !QFileInfo::exists(socket); ++i)
        QTest::qSleep(50);
    qputenv("DISPLAY", QByteArray(":") + QByteArray::number(display));
    qputenv("QT_QPA_PLATFORM", "xcb");
    int rc = 1;
    {
        QApplication app(argc, argv);
        TestClipboard test;
        rc = QTest::qExec(&test, argc, argv);
    }
    QProcess::execute(QStringLiteral("pkill"), {QStringLiteral("-f"), QStringLiteral("xclip -i")});
    xvfb.terminate();
    xvfb.waitForFinished(5000);
    return rc;
}

#include "tst_clipboard.moc"
