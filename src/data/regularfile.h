#pragma once

#include <QString>

#include <sys/types.h>

// Opens a file for reading only when it is a regular file, the descriptor set
// for ordinary blocking reads. Anything else is refused at once with the
// reason: a named pipe that nobody writes to would block the open (and then
// every read) for ever, and a device or a socket is no table. Returns -1 when
// refused or when the file cannot be opened.
int openRegularFile(const QString& path, QString& reason);

// Why a file of this type cannot be read or written as a table; empty for a
// regular file. `mode` is st_mode.
QString notRegularFileReason(const QString& path, mode_t mode);
