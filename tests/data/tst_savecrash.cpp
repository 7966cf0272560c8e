#include "data/editabledatacontainer.h"
#include "testutilstore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <memory>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace testutil;

// A save killed at any moment must leave every name of the file holding either
// the complete old content or the complete new one, a link still a link, and
// nothing beside it but ".bak" files of the save. The save runs in a forked
// child that is killed with SIGKILL; a copy back over a hard-linked file runs
// in a grandchild that outlives it, so the test adopts orphans (a subreaper)
// and waits for them before it looks.
//
// GRIDMERE_SAVE_KILLS sets the kills per case (default 30, for CTest).
class TestSaveCrash : public QObject {
    Q_OBJECT

public:
    enum Layout { Plain, SymbolicLink, HardLink, QuickSave };
    Q_ENUM(Layout)

private slots:
    void initTestCase();
    void killedSaveLeavesOldOrNewFile_data();
    void killedSaveLeavesOldOrNewFile();

private:
    // Forks a child that saves table `which` through `name`; returns its pid.
    pid_t startSave(int which, const QString& name, bool keep_backup);
    // Waits for the save's child and for any process it left behind.
    static void reapAll(pid_t pid, int& status);

    std::unique_ptr<EditableDataContainer> tables_[2];
    QByteArray bytes_[2];
};

void TestSaveCrash::initTestCase() {
    QCOMPARE(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
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

pid_t TestSaveCrash::startSave(int which, const QString& name, bool keep_backup) {
    const pid_t pid = fork();
    if (pid == 0) {
        // Only the save runs here, then the child leaves without running any
        // of the parent's clean-up.
        EditableDataContainer& c = *tables_[which];
        c.setFilepath(name);
        _exit(c.save(keep_backup, false, {}, {}) ? 0 : 1);
    }
    return pid;
}

void TestSaveCrash::reapAll(pid_t pid, int& status) {
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    int other = 0;
    while (waitpid(-1, &other, 0) > 0 || errno == EINTR) {
    }
}

void TestSaveCrash::killedSaveLeavesOldOrNewFile_data() {
    QTest::addColumn<Layout>("layout");
    QTest::newRow("plain file") << Plain;
    QTest::newRow("symbolic link into another folder") << SymbolicLink;
    QTest::newRow("file with a second hard link") << HardLink;
    QTest::newRow("quick save without keep_backup") << QuickSave;
}

void TestSaveCrash::killedSaveLeavesOldOrNewFile() {
    QFETCH(Layout, layout);
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString file =
        layout == SymbolicLink ? dir.filePath("real/table.csv") : dir.filePath("table.csv");
    QVERIFY(QDir().mkpath(QFileInfo(file).path()));
    QVERIFY(writeFile(file, bytes_[0]));
    QString saved_through = file;
    QStringList names{file}; // every name that must hold one version
    if (layout == SymbolicLink) {
        saved_through = dir.filePath("link.csv");
        QCOMPARE(::symlink("real/table.csv", QFile::encodeName(saved_through).constData()), 0);
    } else if (layout == HardLink) {
        names << dir.filePath("other name.csv");
        QCOMPARE(::link(QFile::encodeName(file).constData(),
                        QFile::encodeName(names.back()).constData()),
                 0);
    }
    const bool keep_backup = layout != QuickSave;
    auto entries = [&] {
        QStringList all;
        for (const QString& folder : {dir.path(), QFileInfo(file).path()})
            for (const QString& e :
                 QDir(folder).entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot))
                all << QDir(folder).filePath(e);
        all.removeDuplicates();
        all.sort();
        return all;
    };
    const QStringList expected_entries = [&] {
        QStringList e = names;
        if (layout == SymbolicLink) e << saved_through;
        e.sort();
        return e;
    }();

    // One undisturbed save, to learn how long a save takes here.
    QElapsedTimer timer;
    timer.start();
    pid_t pid = startSave(1, saved_through, keep_backup);
    QVERIFY(pid > 0);
    int status = 0;
    reapAll(pid, status);
    const qint64 duration_us = std::max<qint64>(timer.nsecsElapsed() / 1000, 1000);
    QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    for (const QString& name : names)
        QVERIFY(readFile(name) == bytes_[1]);
    QCOMPARE(entries(), expected_entries);

    const int kills = qEnvironmentVariableIsSet("GRIDMERE_SAVE_KILLS")
                          ? qEnvironmentVariableIntValue("GRIDMERE_SAVE_KILLS")
                          : 30;
    int on_disk = 1;
    int replaced = 0, kept = 0, finished = 0, left_behind = 0;
    QRandomGenerator random(20261121);
    for (int round = 0; round < kills; ++round) {
        const int next = 1 - on_disk;
        pid = startSave(next, saved_through, keep_backup);
        QVERIFY(pid > 0);
        // Anywhere from right after the start to a little past the usual end.
        usleep(useconds_t(random.bounded(qint64(duration_us * 11 / 10))));
        kill(pid, SIGKILL);
        reapAll(pid, status);
        if (WIFEXITED(status)) {
            QCOMPARE(WEXITSTATUS(status), 0);
            ++finished;
        }

        const QByteArray now = readFile(names.front());
        const int version = now == bytes_[next] ? next : now == bytes_[1 - next] ? 1 - next : -1;
        QVERIFY2(version >= 0, qPrintable(QStringLiteral("round %1: %2 bytes of neither version")
                                              .arg(round)
                                              .arg(now.size())));
        for (const QString& name : names)
            QVERIFY2(readFile(name) == bytes_[version], qPrintable(name));
        if (layout == SymbolicLink) {
            struct stat st {};
            QCOMPARE(::lstat(QFile::encodeName(saved_through).constData(), &st), 0);
            QVERIFY(S_ISLNK(st.st_mode));
        }
        (version == next ? replaced : kept) += 1;
        on_disk = version;

        // What a cut save leaves is a ".bak" of its own beside the real file;
        // removed here, so that the next save takes the usual name again.
        for (const QString& e : entries()) {
            if (expected_entries.contains(e)) continue;
            QVERIFY2(e.startsWith(file) && e.endsWith(".bak"), qPrintable(e));
            QVERIFY(QFile::remove(e));
            ++left_behind;
        }
    }
    // Killed yet leaving the new content: the kill came after the rename, or
    // during a copy back, which its own process finished.
    // Killed yet leaving the new content: the kill came after the rename, or
    // during a copy back, which its own process finished.
    qInfo("%d killed saves: %d left the old file, %d the new one (%d had finished, %d were "
          "killed after the new content was committed), %d left a .bak behind",
          kills, kept, replaced, finished, replaced - finished, left_behind);
}

QTEST_GUILESS_MAIN(TestSaveCrash)
#include "tst_savecrash.moc"
