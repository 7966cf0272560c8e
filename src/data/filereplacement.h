#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <sys/stat.h>

// A save's way onto disk. The new content goes to a temporary file beside the
// file that the path names (through any symbolic links), and only once it is
// complete and synced does it become the file. So at every instant each name
// of the file holds either the complete old content or the complete new one.
//
// The file stays what it was: its permission bits, owner and group pass to
// the new file before the rename. Where a rename would change what the file
// is (other hard links would keep the old content, or the owner cannot be
// given to a new file), the new content is copied back over the old file in
// place instead, after it is durable in the temporary file.
//
// A file already at the temporary name belongs to the user (or is left from a
// save that was cut short): it is never written, and another free name is
// taken.
class FileReplacement {
    Q_DECLARE_TR_FUNCTIONS(FileReplacement)

public:
    explicit FileReplacement(const QString& path);
    // A temporary file that was not committed is removed.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    // Finds the file behind the path, decides how it will be replaced and
    // creates the temporary file. `direct` asks for transfers that bypass the
    // page cache where the file system has them.
    bool open(bool direct);
    // The temporary file's descriptor, open for writing, until commit().
    int handle() const { return temp_fd; }
    bool isDirect() const { return direct_io; }

    // Whether a file existed, and then what it was before the save.
    bool existed() const { return target_existed; }
    const struct stat& original() const { return target_stat; }
    // The new content will be copied over the old file instead of renamed.
    bool byCopy() const { return by_copy; }
    QString targetPath() const;
    QString temporaryPath() const;

    // Makes the written content the file's. The temporary file is synced
    // first; the folder is synced after the rename.
    bool commit();

    // Why the last step failed, for the user.
    QString errorString() const { return error_text; }

private:
    bool resolveTarget();
    bool createTemporary(bool direct);
    bool keepIdentity();
    bool replaceByRename();
    bool replaceByCopy();
    void discardTemporary();
    bool fail(const QString& what, int error);

    QByteArray path_name;   // as given
    QByteArray target_name; // the file itself, links followed
    QByteArray temp_name;
    struct stat target_stat {};
    bool target_existed = false;
    bool by_copy = false;
    bool direct_io = false;
    int temp_fd = -1;
    int target_fd = -1; // open for writing on the copy path
    QString error_text;
};
