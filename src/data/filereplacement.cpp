#include "filereplacement.h"

#include "regularfile.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int kMaxLinkHops = 40; // as the kernel's own limit
constexpr int kMaxTemporaryNames = 1000;
constexpr size_t kCopyBlock = 1024 * 1024;

QByteArray folderOf(const QByteArray& name) {
    const qsizetype slash = name.lastIndexOf('/');
    if (slash < 0) return QByteArrayLiteral(".");
    if (slash == 0) return QByteArrayLiteral("/");
    return name.left(slash);
}

// A rename or an unlink is durable only once the folder that holds the name
// is synced. File systems that cannot sync a folder say EINVAL: nothing to do.
int syncFolder(const QByteArray& file_name) {
    const int fd = ::open(folderOf(file_name).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return errno;
    const int result = ::fsync(fd) == 0 || errno == EINVAL ? 0 : errno;
    ::close(fd);
    return result;
}

bool readLink(const QByteArray& name, QByteArray& target) {
    QByteArray buffer(256, Qt::Uninitialized);
    for (;;) {
        const ssize_t n = ::readlink(name.constData(), buffer.data(), size_t(buffer.size()));
        if (n < 0) return false;
        if (n < buffer.size()) {
            target = buffer.left(n);
            return true;
        }
        buffer.resize(buffer.size() * 2);
    }
}

// The copy back over the old file, with system calls only: it runs in a
// forked child of a process that has threads, where a lock held by another
// thread at the fork would never be released. Returns 0 or an errno value.
int copyAndSync(int from, int to, off_t size, char* buffer) {
    bool by_range = true;
    off_t done = 0;
    while (done < size) {
        if (by_range) {
            loff_t in = done, out = done;
            const ssize_t n = ::copy_file_range(from, &in, to, &out, size_t(size - done), 0);
            if (n > 0) {
                done += n;
                continue;
            }
            if (n < 0 && errno == EINTR) continue;
            if (n == 0 || errno == EXDEV || errno == EINVAL || errno == ENOSYS ||
                errno == EOPNOTSUPP) {
                by_range = false; // the same bytes by hand
                continue;
            }
            return errno;
        }
        const ssize_t n =
            ::pread(from, buffer, size_t(std::min<off_t>(size - done, kCopyBlock)), done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return n == 0 ? EIO : errno; // the temporary file is shorter than it was
        for (ssize_t put = 0; put < n;) {
            const ssize_t m = ::pwrite(to, buffer + put, size_t(n - put), done + put);
            if (m < 0 && errno == EINTR) continue;
            if (m < 0) return errno;
            put += m;
        }
        done += n;
    }
    // Only now, when every new byte is in place: a shorter new content must
    // not cut the old one earlier.
    if (::ftruncate(to, size) != 0) return errno;
    if (::fsync(to) != 0) return errno;
    return 0;
}

} // namespace

FileReplacement::FileReplacement(const QString& path) : path_name(QFile::encodeName(path)) {}

FileReplacement::~FileReplacement() {
    discardTemporary();
    if (target_fd >= 0) ::close(target_fd);
}

QString FileReplacement::targetPath() const {
    return QFile::decodeName(target_name);
}

QString FileReplacement::temporaryPath() const {
    return QFile::decodeName(temp_name);
}

bool FileReplacement::fail(const QString& what, int error) {
    error_text = error ? what + QStringLiteral(": ") + qt_error_string(error) : what;
    return false;
}

bool FileReplacement::open(bool direct) {
    if (path_name.isEmpty()) return fail(tr("The file has no name"), 0);
    return resolveTarget() && createTemporary(direct) && keepIdentity();
}

// Follows a chain of symbolic links to the file itself, which may not exist
// yet (a new file, or a link that points nowhere).
bool FileReplacement::resolveTarget() {
    QByteArray name = path_name;
    for (int hops = 0;; ++hops) {
        struct stat st {};
        if (::lstat(name.constData(), &st) != 0) {
            if (errno != ENOENT)
                return fail(tr("Cannot look at %1").arg(QFile::decodeName(name)), errno);
            target_name = name;
            return true;
        }
        if (!S_ISLNK(st.st_mode)) {
            if (!S_ISREG(st.st_mode))
                return fail(notRegularFileReason(QFile::decodeName(name), st.st_mode), 0);
            target_name = name;
            target_stat = st;
            target_existed = true;
            return true;
        }
        QByteArray link;
        if (hops == kMaxLinkHops || !readLink(name, link))
            return fail(tr("Cannot follow the link %1").arg(QFile::decodeName(name)),
                        hops == kMaxLinkHops ? ELOOP : errno);
        name = link.startsWith('/') ? link : folderOf(name) + '/' + link;
    }
}

bool FileReplacement::createTemporary(bool direct) {
    // Until it is known whose file this becomes, nobody else may read it: the
    // old file may have been private.
    const mode_t mode = target_existed ? 0600 : 0666;
    // Readable too: the copy path reads the content back.
    const int flags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC;
    const QByteArray base = target_name;
    for (int n = 0; n < kMaxTemporaryNames; ++n) {
        temp_name = n == 0 ? base + ".bak" : base + '.' + QByteArray::number(n) + ".bak";
        const int fd = ::open(temp_name.constData(), flags, mode);
#if defined(O_DIRECT)
        // Asked for after the open: a file system without direct transfer
        // refuses an open with O_DIRECT only once it has created the file.
        if (fd >= 0 && direct) {
            const int now = ::fcntl(fd, F_GETFL);
            direct_io = now >= 0 && ::fcntl(fd, F_SETFL, now | O_DIRECT) == 0;
        }
#endif
        if (fd >= 0) {
            temp_fd = fd;
            return true;
        }
        if (errno != EEXIST) {
            const int error = errno;
            const QString name = QFile::decodeName(temp_name);
            temp_name.clear();
            return fail(tr("Cannot create %1").arg(name), error);
        }
        // Someone's file, or one left by a save that was cut short: not ours
        // to overwrite either way.
    }
    temp_name.clear();
    return fail(tr("No free name beside %1 for the new content").arg(QFile::decodeName(base)), 0);
}

// The new file takes the old one's owner, group and permission bits; the
// owner first, since a change of owner clears the set-id bits. Where that is
// not enough to keep the file what it is, the content is copied back instead.
bool FileReplacement::keepIdentity() {
    if (!target_existed) return true;
    struct stat now {};
    if (::fstat(temp_fd, &now) != 0)
        return fail(tr("Cannot look at %1").arg(temporaryPath()), errno);
    const uid_t uid = now.st_uid == target_stat.st_uid ? uid_t(-1) : target_stat.st_uid;
    const gid_t gid = now.st_gid == target_stat.st_gid ? gid_t(-1) : target_stat.st_gid;
    // Another name of the file would keep the old content after a rename.
    by_copy = target_stat.st_nlink > 1;
    if (!by_copy && (uid != uid_t(-1) || gid != gid_t(-1)) && ::fchown(temp_fd, uid, gid) != 0)
        by_copy = true; // not ours to give away
    if (!by_copy && ::fchmod(temp_fd, target_stat.st_mode & 07777) != 0) by_copy = true;
    if (!by_copy) return true;

    // Opened now, so that a file the user may not write is found before any
    // work is done, and checked to be the file that was looked at.
    target_fd = ::open(target_name.constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (target_fd < 0) return fail(tr("Cannot write %1").arg(targetPath()), errno);
    if (::fstat(target_fd, &now) != 0 || now.st_dev != target_stat.st_dev ||
        now.st_ino != target_stat.st_ino)
        return fail(tr("%1 was replaced during the save").arg(targetPath()), 0);
    return true;
}

bool FileReplacement::commit() {
    if (temp_fd < 0) return fail(tr("Nothing was written"), 0);
    // The content must be on disk before it becomes the file: otherwise a
    // crash after the rename could leave an empty file under the real name.
    if (::fsync(temp_fd) != 0) return fail(tr("Cannot write %1").arg(temporaryPath()), errno);
    return by_copy ? replaceByCopy() : replaceByRename();
}

bool FileReplacement::replaceByRename() {
    const int fd = temp_fd;
    temp_fd = -1;
    if (::close(fd) != 0) return fail(tr("Cannot write %1").arg(temporaryPath()), errno);
    // rename() replaces the old file atomically, so at every instant the name
    // holds either the complete old file or the complete new one.
    if (::rename(temp_name.constData(), target_name.constData()) != 0)
        return fail(tr("Cannot replace %1").arg(targetPath()), errno);
    temp_name.clear();
    // The new content is in place, but a crash could still bring the old name
    // back: said as a failure, so that the table is not taken as saved.
    if (const int error = syncFolder(target_name))
        return fail(tr("Cannot sync the folder of %1").arg(targetPath()), error);
    return true;
}

// The old bytes stay until the new ones are durable in the temporary file
// (commit synced it); then they are overwritten in place and synced, and only
// then is the temporary file removed. If the copy fails, the complete new
// content stays in the temporary file and the error names it.
bool FileReplacement::replaceByCopy() {
    struct stat st {};
    if (::fstat(temp_fd, &st) != 0)
        return fail(tr("Cannot look at %1").arg(temporaryPath()), errno);
    const off_t size = st.st_size;
    // Room for a longer content is taken before the first byte is changed, so
    // that a full disk stops the save while the old file is still whole. The
    // size stays, so a crash here leaves the old content exactly.
    if (size > 0 && ::fallocate(target_fd, FALLOC_FL_KEEP_SIZE, 0, size) != 0 &&
        errno != EOPNOTSUPP && errno != ENOSYS && errno != EINVAL)
        return fail(tr("Cannot write %1").arg(targetPath()), errno);
#if defined(O_DIRECT)
    // The copy reads through the page cache; direct reads would need aligned
    // buffers and lengths.
    const int flags = ::fcntl(temp_fd, F_GETFL);
    if (flags >= 0 && (flags & O_DIRECT)) ::fcntl(temp_fd, F_SETFL, flags & ~O_DIRECT);
#endif
    char* buffer = static_cast<char*>(std::malloc(kCopyBlock));
    if (!buffer) return fail(tr("Not enough memory to save"), 0);

    // Between the first byte written and the last, the file is half old and
    // half new. That stretch runs in a child process of its own: if the editor
    // dies in it (a crash, a kill), the child still finishes the copy and
    // removes the temporary file. Only a power cut can stop it, and then the
    // complete new content is in the temporary file.
    const QByteArray temp = temp_name;
    int error = 0;
    const pid_t child = ::fork();
    if (child == 0) {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        for (int sig : {SIGHUP, SIGINT, SIGTERM, SIGPIPE})
            ::sigaction(sig, &ignore, nullptr);
        int result = copyAndSync(temp_fd, target_fd, size, buffer);
        if (result == 0 && ::unlink(temp.constData()) != 0) result = errno;
        ::_exit(result > 0 && result < 256 ? result : (result ? EIO : 0));
    }
    if (child > 0) {
        int status = 0;
        pid_t reaped;
        while ((reaped = ::waitpid(child, &status, 0)) < 0 && errno == EINTR) {
        }
        if (reaped == child)
            error = WIFEXITED(status) ? WEXITSTATUS(status) : EIO;
        else // reaped elsewhere (SIGCHLD ignored): the temporary file tells
            error = ::access(temp.constData(), F_OK) == 0 ? EIO : 0;
        // The child removed the temporary file once the copy was durable.
        if (error == 0) temp_name.clear();
    } else {
        // No child to be had (no memory for one): the same steps here.
        error = copyAndSync(temp_fd, target_fd, size, buffer);
    }
    std::free(buffer);
    ::close(target_fd);
    target_fd = -1;
    if (error) {
        // The old file may now be part new: keep the only complete copy.
        const QString kept = temporaryPath();
        ::close(temp_fd);
        temp_fd = -1;
        temp_name.clear();
        error_text = tr("Cannot write %1 in place (%2); the new content is kept in %3")
                         .arg(targetPath(), qt_error_string(error), kept);
        return false;
    }
    discardTemporary();
    syncFolder(target_name); // only a leftover name would come back
    return true;
}

void FileReplacement::discardTemporary() {
    if (temp_fd >= 0) {
        ::close(temp_fd);
        temp_fd = -1;
    }
    if (!temp_name.isEmpty()) {
        ::unlink(temp_name.constData());
        temp_name.clear();
    }
}
