#include "data/editabledatacontainer.h"
#include "testutilstore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

using namespace testutil;

// A save killed at any moment must leave the file's path holding either the
// complete old file or the complete new one, and nothing but a ".bak" beside
// it. The save runs in a forked child that is killed with SIGKILL.
class TestSaveCrash : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void killedSaveLeavesOldOrNewFile();

private:
    // Forks a child that saves table `which` over the path; returns its pid.
    pid_t startSave(int which);
    QStringList entries() const {
        return QDir(dir_.path()).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    }

    QTemporaryDir dir_;
    QString path_;
    std::unique_ptr<EditableDataContainer> tables_[2];
    QByteArray bytes_[2];
};

void TestSaveCrash::initTestCase() {
    QVERIFY(dir_.isValid());
    path_ = dir_.filePath("table.csv");
    // Two different tables of about 20 MB, loaded from files so that the
    // stores look like those of a real file.
    QTemporaryDir source;
    for (int t = 0; t < 2; ++t) {
        QByteArray csv;
        csv.reserve(21 * 1024 * 1024);
        for (int r = 0; csv.size() < 20 * 1024 * 1024; ++r) {
            csv.append(QByteArray::number(r * (t + 1))).append(',');
            csv.append(t ? "\"second, version\"" : "first version").append(',');
            csv.append(QByteArray(40 + r % 17, char('a' + (r + t) % 26))).append("\r\n");
        }
        const QString file = source.filePath(QString::number(t));
        QVERIFY(writeFile(file, csv));
        tables_[t] = std::make_unique<EditableDataContainer>();
        tables_[t]->setFilepath(file);
        QVERIFY(tables_[t]->loadCSV());
        bytes_[t] = csv;
    }
}

pid_t TestSaveCrash::startSave(int which) {
    const pid_t pid = fork();
    if (pid == 0) {
        // Only the save runs here, then the child leaves without running any
        // of the parent's clean-up.
        EditableDataContainer& c = *tables_[which];
        c.setFilepath(path_);
        _exit(c.save(true, false, {}, {}) ? 0 : 1);
    }
    return pid;
}

void TestSaveCrash::killedSaveLeavesOldOrNewFile() {
    QVERIFY(writeFile(path_, bytes_[0]));

    // One undisturbed save, to learn how long a save takes here.
    QElapsedTimer timer;
    timer.start();
    pid_t pid = startSave(1);
    QVERIFY(pid > 0);
    int status = 0;
    QCOMPARE(waitpid(pid, &status, 0), pid);
    const qint64 duration_us = std::max<qint64>(timer.nsecsElapsed() / 1000, 1000);
    QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    QVERIFY(readFile(path_) == bytes_[1]);
    QCOMPARE(entries(), QStringList{"table.csv"});

    int on_disk = 1;
    int replaced = 0, kept = 0, finished = 0;
    QRandomGenerator random(20261121);
    for (int round = 0; round < 30; ++round) {
        const int next = 1 - on_disk;
        pid = startSave(next);
        QVERIFY(pid > 0);
        // Anywhere from right after the start to a little past the usual end.
        usleep(useconds_t(random.bounded(qint64(duration_us * 11 / 10))));
        kill(pid, SIGKILL);
        QCOMPARE(waitpid(pid, &status, 0), pid);
        if (WIFEXITED(status)) {
            QCOMPARE(WEXITSTATUS(status), 0);
            ++finished;
        }

        const QByteArray now = readFile(path_);
        if (now == bytes_[next]) {
            on_disk = next;
            ++replaced;
        } else if (now == bytes_[1 - next]) {
            ++kept;
        } else {
            QFAIL(qPrintable(QStringLiteral("round %1: the file holds %2 bytes of neither version")
                                 .arg(round)
                                 .arg(now.size())));
        }
        // A cut save leaves its ".bak" (the next save would go round it, as
        // round anything it did not create); removed here.
        const QStringList left = entries();
        QVERIFY2(left == QStringList{"table.csv"} ||
                     left == (QStringList{"table.csv", "table.csv.bak"}),
                 qPrintable(left.join(u' ')));
        QFile::remove(path_ + ".bak");
    }
    qInfo("30 killed saves: %d left the old file, %d the new one (%d had finished)", kept, replaced,
          finished);
}

QTEST_GUILESS_MAIN(TestSaveCrash)
#include "tst_savecrash.moc"
