#include "data/dialectdetection.h"
#include "data/editabledatacontainer.h"
#include "data/readonlydatacontainer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <chrono>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

// Both containers open only regular files, and anything else fails at once
// with a reason that names the path.
class TestOpenFile : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(dir_.isValid()); }
    void openingNonRegularFailsAtOnce_data();
    void openingNonRegularFailsAtOnce();

private:
    QString freshFolder() {
        const QString folder = dir_.filePath(QString::number(++folders_));
        QDir().mkpath(folder);
        return folder;
    }

    QTemporaryDir dir_;
    int folders_ = 0;
};

namespace {

bool isCharacterDevice(const QString& path) {
    struct stat st {};
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 && S_ISCHR(st.st_mode);
}

} // namespace

void TestOpenFile::openingNonRegularFailsAtOnce_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("read_only");
    for (const char* kind :
         {"named pipe", "link to a named pipe", "folder", "device", "missing file"})
        for (bool read_only : {false, true})
            QTest::addRow("%s, %s", kind, read_only ? "read-only" : "editable")
                << kind << read_only;
}

// A pipe that nobody writes to would block an open for ever. Should the open
// block all the same, a writer comes after two seconds, so that the test
// fails on time instead of hanging.
void TestOpenFile::openingNonRegularFailsAtOnce() {
    QFETCH(QString, kind);
    QFETCH(bool, read_only);
    QString path = freshFolder() + "/thing";
    const QByteArray name = QFile::encodeName(path);
    if (kind == "named pipe") QCOMPARE(::mkfifo(name.constData(), 0600), 0);
    if (kind == "link to a named pipe") {
        QCOMPARE(::mkfifo((name + ".fifo").constData(), 0600), 0);
        QCOMPARE(::symlink((name + ".fifo").constData(), name.constData()), 0);
    }
    if (kind == "folder") QVERIFY(QDir().mkdir(path));
    if (kind == "device") {
        path = QStringLiteral("/dev/null");
        if (!isCharacterDevice(path)) QSKIP("no /dev/null here");
    }
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int i = 0; i < 200 && !done; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (done || !kind.contains("named pipe")) return;
        const int fd = ::open(name.constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (fd >= 0) ::close(fd);
    });

    std::unique_ptr<AbstractDataContainer> c;
    if (read_only)
        c = std::make_unique<ReadOnlyDataContainer>();
    else
        c = std::make_unique<EditableDataContainer>();
    c->setFilepath(path);
    QElapsedTimer timer;
    timer.start();
    const bool loaded = c->loadCSV();
    const QString delimiter = detectDelimiter(path);
    const qint64 ms = timer.elapsed();
    done = true;
    writer.join();

    QVERIFY(!loaded);
    QVERIFY2(ms < 100, qPrintable(QString::number(ms) + " ms"));
    QVERIFY2(c->errorString().contains(QDir::toNativeSeparators(path)),
             qPrintable(c->errorString()));
    QCOMPARE(delimiter, QStringLiteral(","));
    QCOMPARE(c->rowCount(), 0);
}

QTEST_GUILESS_MAIN(TestOpenFile)
#include "tst_openfile.moc"
