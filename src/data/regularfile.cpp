#include "regularfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QString tr(const char* text) {
    return QCoreApplication::translate("RegularFile", text);
}

QString cannotOpen(const QString& path, int error) {
    return tr("Cannot open %1: %2").arg(QDir::toNativeSeparators(path), qt_error_string(error));
}

} // namespace

QString notRegularFileReason(const QString& path, mode_t mode) {
    const QString name = QDir::toNativeSeparators(path);
    if (S_ISREG(mode)) return {};
    if (S_ISDIR(mode)) return tr("%1 is a folder, not a file.").arg(name);
    if (S_ISFIFO(mode)) return tr("%1 is a named pipe, not a file.").arg(name);
    if (S_ISSOCK(mode)) return tr("%1 is a socket, not a file.").arg(name);
    if (S_ISCHR(mode) || S_ISBLK(mode)) return tr("%1 is a device, not a file.").arg(name);
    return tr("%1 is not a regular file.").arg(name);
}

int openRegularFile(const QString& path, QString& reason) {
    const QByteArray name = QFile::encodeName(path);
    // Looked at before the open: opening a device can act on it (a tape
    // rewinds, a terminal becomes ours).
    struct stat st {};
    if (::stat(name.constData(), &st) != 0) {
        reason = cannotOpen(path, errno);
        return -1;
    }
    if (!S_ISREG(st.st_mode)) {
        reason = notRegularFileReason(path, st.st_mode);
        return -1;
    }
    // Without waiting, in case the name was swapped for a pipe in between;
    // the descriptor is then checked for what it really is.
    const int fd = ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        reason = cannotOpen(path, errno);
        return -1;
    }
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        reason =
            S_ISREG(st.st_mode) ? cannotOpen(path, errno) : notRegularFileReason(path, st.st_mode);
        ::close(fd);
        return -1;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0) ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    return fd;
}
