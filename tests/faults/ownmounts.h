#pragma once

#include "tests/faults/childrun.h"

// Mounts that only one child process sees, and which are gone with it.

/// True where this user may have mounts of his own.
bool canMount();

/// Gives a child mounts of its own, and the right to mount.
void enterOwnMounts(QProcess &child);

/// A file system in memory over a folder, for a process that was given mounts of its own. It holds one file, a whole
/// number of pages, and has room for that many more; without room, files can still be made.
class SmallDisk
{
public:
    SmallDisk(const QString &folder, const QString &name, const QByteArray &content, int freePages);
    ~SmallDisk();
    Q_DISABLE_COPY_MOVE(SmallDisk)

    /// Nothing can be changed on it from here on.
    void makeReadOnly();

    static constexpr int pageSize = 4096;

private:
    QByteArray place;
};
