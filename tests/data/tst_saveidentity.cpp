#include "data/editabledatacontainer.h"
#include "testutilstore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace testutil;

// A save keeps what the file is: its mode and owner, its links and other
// names, and any file of the user's at the name the save writes to first.
class TestSaveIdentity : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void keepsModeAndOwner_data();
    void keepsModeAndOwner();
    void savesThroughLinks_data();
    void savesThroughLinks();
    void ownerThatCannotBeKept_data();
    void ownerThatCannotBeKept();
    void usersBakSurvives_data();
    void usersBakSurvives();

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

const QByteArray kOld = "old,content,longer than the new one\nsecond,line,here\n";
const QByteArray kNew = "new,1\nx,y\n";

bool saveNew(const QString& path, bool keep_backup, QString* error = nullptr,
             bool empty_table = false) {
    EditableDataContainer c;
    if (!empty_table) fill(c, {{"new", "1"}, {"x", "y"}});
    c.setLineEnding(UnixLineEnding);
    c.setFilepath(path);
    const bool ok = c.save(keep_backup, false, {}, {});
    if (error)
        *error = c.errorString();
    else if (!ok)
        qWarning("%s", qPrintable(c.errorString()));
    return ok;
}

struct stat statOf(const QString& path) {
    struct stat st {};
    ::lstat(QFile::encodeName(path).constData(), &st);
    return st;
}

QByteArray linkText(const QString& path) {
    char buffer[4096];
    const ssize_t n = ::readlink(QFile::encodeName(path).constData(), buffer, sizeof buffer);
    return n < 0 ? QByteArray() : QByteArray(buffer, n);
}

QStringList entries(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace

void TestSaveIdentity::initTestCase() {
    QVERIFY(dir_.isValid());
    // Another user must be able to reach the folders of the owner test.
    QVERIFY(QFile::setPermissions(dir_.path(), QFile::ReadOwner | QFile::WriteOwner |
                                                   QFile::ExeOwner | QFile::ExeGroup |
                                                   QFile::ExeOther));
}

void TestSaveIdentity::keepsModeAndOwner_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("owner"); // -1: the test's own
    QTest::addColumn<bool>("keep_backup");
    QTest::newRow("0600") << 0600 << -1 << true;
    QTest::newRow("0640") << 0640 << -1 << true;
    QTest::newRow("0640, quick save") << 0640 << -1 << false;
    QTest::newRow("0444, write-protected") << 0444 << -1 << true;
    QTest::newRow("02750, set-group-id") << 02750 << -1 << true;
    QTest::newRow("0640, another user's") << 0640 << 65534 << true;
    QTest::newRow("0640, another user's, quick save") << 0640 << 65534 << false;
}

// The file is replaced by a rename (a new inode), never written over.
void TestSaveIdentity::keepsModeAndOwner() {
    QFETCH(int, mode);
    QFETCH(int, owner);
    QFETCH(bool, keep_backup);
    if (owner >= 0 && ::geteuid() != 0) QSKIP("only root may give a file to another user");
    const QString folder = freshFolder();
    const QString path = folder + "/table.csv";
    QVERIFY(writeFile(path, kOld));
    const QByteArray name = QFile::encodeName(path);
    if (owner >= 0) QCOMPARE(::chown(name.constData(), uid_t(owner), gid_t(owner)), 0);
    QCOMPARE(::chmod(name.constData(), mode_t(mode)), 0);
    const struct stat before = statOf(path);

    QVERIFY(saveNew(path, keep_backup));
    const struct stat after = statOf(path);
    QCOMPARE(readFile(path), kNew);
    QCOMPARE(QString::number(after.st_mode & 07777, 8), QString::number(mode, 8));
    QCOMPARE(after.st_uid, before.st_uid);
    QCOMPARE(after.st_gid, before.st_gid);
    QVERIFY(after.st_ino != before.st_ino);
    QCOMPARE(entries(folder), QStringList{"table.csv"});
}

void TestSaveIdentity::savesThroughLinks_data() {
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<bool>("keep_backup");
    QTest::newRow("relative symbolic link") << "relative" << kOld << true;
    QTest::newRow("absolute symbolic link, quick save") << "absolute" << kOld << false;
    QTest::newRow("chain of two links") << "chain" << kOld << true;
    QTest::newRow("link to a file not there yet") << "dangling" << QByteArray() << true;
    QTest::newRow("second hard link, new content shorter") << "hard" << kOld << true;
    QTest::newRow("second hard link, new content longer") << "hard" << QByteArray("a\n") << true;
    QTest::newRow("second hard link, quick save") << "hard" << kOld << false;
    QTest::newRow("second hard link, empty table") << "hard" << kOld << true;
}

// Saved through the name "link.csv" in one folder, the file itself being
// real/table.csv: links stay links, every name reads the new content, and
// nothing is left beside either name.
void TestSaveIdentity::savesThroughLinks() {
    QFETCH(QString, layout);
    QFETCH(QByteArray, old);
    QFETCH(bool, keep_backup);
    const QString folder = freshFolder();
    const QString real = folder + "/real/table.csv";
    const QString link = folder + "/link.csv";
    QVERIFY(QDir().mkpath(folder + "/real"));
    if (layout != "dangling") QVERIFY(writeFile(real, old));
    const QByteArray link_name = QFile::encodeName(link);
    QByteArray target = "real/table.csv";
    if (layout == "absolute") target = QFile::encodeName(real);
    if (layout == "chain") {
        target = "hop.csv";
        QCOMPARE(::symlink("real/table.csv", QFile::encodeName(folder + "/hop.csv").constData()),
                 0);
    }
    if (layout == "hard")
        QCOMPARE(::link(QFile::encodeName(real).constData(), link_name.constData()), 0);
    else
        QCOMPARE(::symlink(target.constData(), link_name.constData()), 0);
    const QStringList before_outer = entries(folder);
    const ino_t inode = statOf(real).st_ino;

    const bool empty = QByteArray(QTest::currentDataTag()).contains("empty");
    QVERIFY(saveNew(link, keep_backup, nullptr, empty));
    const QByteArray fresh = empty ? QByteArray() : kNew;
    QCOMPARE(readFile(real), fresh);
    QCOMPARE(readFile(link), fresh);
    if (layout == "hard") {
        // Written over in place: the same file under both names.
        QCOMPARE(statOf(real).st_ino, inode);
        QCOMPARE(statOf(link).st_ino, inode);
        QCOMPARE(statOf(real).st_nlink, nlink_t(2));
    } else {
        QVERIFY(S_ISLNK(statOf(link).st_mode));
        QCOMPARE(linkText(link), target);
        if (layout == "chain")
            QCOMPARE(linkText(folder + "/hop.csv"), QByteArray("real/table.csv"));
    }
    QCOMPARE(entries(folder), before_outer);
    QCOMPARE(entries(folder + "/real"), QStringList{"table.csv"});
}

void TestSaveIdentity::ownerThatCannotBeKept_data() {
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("saved");
    QTest::newRow("root's file that the saver may write") << 0666 << true;
    QTest::newRow("root's file that the saver may not write") << 0644 << false;
}

// A user who may write a file of root's cannot hand a new file to root: the
// content is copied over the old file, which stays root's. One who may not
// write it gets a failure with a reason, and the file is untouched.
void TestSaveIdentity::ownerThatCannotBeKept() {
    QFETCH(int, mode);
    QFETCH(bool, saved);
    if (::geteuid() != 0) QSKIP("needs root, to save as another user");
    const QString folder = freshFolder();
    QCOMPARE(::chmod(QFile::encodeName(folder).constData(), 0777), 0);
    const QString path = folder + "/table.csv";
    QVERIFY(writeFile(path, kOld));
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode_t(mode)), 0);
    const struct stat before = statOf(path);

    const pid_t pid = ::fork();
    if (pid == 0) {
        if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0)
            ::_exit(3);
        QString error;
        const bool ok = saveNew(path, true, &error);
        ::_exit(ok ? 0 : error.isEmpty() ? 2 : 1);
    }
    QVERIFY(pid > 0);
    int status = 0;
    QCOMPARE(::waitpid(pid, &status, 0), pid);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), saved ? 0 : 1);

    const struct stat after = statOf(path);
    QCOMPARE(readFile(path), saved ? kNew : kOld);
    QCOMPARE(after.st_ino, before.st_ino);
    QCOMPARE(after.st_uid, uid_t(0));
    QCOMPARE(after.st_gid, gid_t(0));
    QCOMPARE(after.st_mode & 07777, mode_t(mode));
    QCOMPARE(entries(folder), QStringList{"table.csv"});
}

// A file at ".bak" alone is the writer test's case; here several names are
// taken, by things that are not plain files, or beside a file saved by copy.
void TestSaveIdentity::usersBakSurvives_data() {
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("taken"); // table.csv.bak, then table.csv.1.bak, ...
    QTest::addColumn<bool>("hard_linked");
    QTest::newRow("files at .bak and .1.bak") << "file" << 2 << false;
    QTest::newRow("a folder at .bak") << "folder" << 1 << false;
    QTest::newRow("a link at .bak to another file") << "link" << 1 << false;
    QTest::newRow("a file at .bak, hard-linked file") << "file" << 1 << true;
}

void TestSaveIdentity::usersBakSurvives() {
    QFETCH(QString, kind);
    QFETCH(int, taken);
    QFETCH(bool, hard_linked);
    const QString folder = freshFolder();
    const QString path = folder + "/table.csv";
    QVERIFY(writeFile(path, kOld));
    if (hard_linked)
        QCOMPARE(::link(QFile::encodeName(path).constData(),
                        QFile::encodeName(folder + "/second.csv").constData()),
                 0);
    const QString elsewhere = freshFolder() + "/mine.txt";
    QVERIFY(writeFile(elsewhere, "the user's own"));
    QStringList names;
    for (int i = 0; i < taken; ++i) {
        names << (i == 0 ? path + ".bak" : path + '.' + QString::number(i) + ".bak");
        const QByteArray name = QFile::encodeName(names.back());
        if (kind == "folder")
            QVERIFY(QDir().mkdir(names.back()));
        else if (kind == "link")
            QCOMPARE(::symlink(QFile::encodeName(elsewhere).constData(), name.constData()), 0);
        else
            QVERIFY(writeFile(names.back(), "mine " + QByteArray::number(i)));
    }
    const QStringList before = entries(folder);

    QVERIFY(saveNew(path, true));
    QCOMPARE(readFile(path), kNew);
    QCOMPARE(entries(folder), before);
    for (int i = 0; i < taken; ++i) {
        if (kind == "folder") QVERIFY(QFileInfo(names[i]).isDir());
        if (kind == "link") QCOMPARE(linkText(names[i]), QFile::encodeName(elsewhere));
        if (kind == "file") QCOMPARE(readFile(names[i]), "mine " + QByteArray::number(i));
    }
    QCOMPARE(readFile(elsewhere), QByteArray("the user's own"));
}

QTEST_GUILESS_MAIN(TestSaveIdentity)
#include "tst_saveidentity.moc"
