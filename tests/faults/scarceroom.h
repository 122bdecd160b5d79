#pragma once

#include "tests/faults/ownmounts.h"
#include "tests/support/stage.h"

#include <QTemporaryDir>

#include <csignal>
#include <memory>
#include <sys/resource.h>

/// How room is made scarce: by a disk that is nearly full, or by a limit to the size of each file, which stands in for
/// it where no disk can be had.
enum class Scarcity { Disk, FileSize };

/// A row of data for each kind that can be had.
void addScarcities();

/// While it lives, no file of this process grows beyond this size, and none that tries ends it.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(qint64 size);
    ~FileSizeLimit();
    Q_DISABLE_COPY_MOVE(FileSizeLimit)

private:
    rlimit before{};
    void (*actionBefore)(int);
};

/// A folder with one earlier file, in which there is room for this many pages more, or for as many in each file.
class ScarceRoom
{
public:
    ScarceRoom(Scarcity scarcity, int freePages, const QByteArray &earlierFile);

    /// Calls a slot of the window that returns bool, with a path in the folder.
    bool result(Stage &stage, const char *slot, const QString &name) const;
    QString path(const QString &name) const { return folder.filePath(name); }
    /// What lies in the folder besides the earlier file.
    QStringList files() const;
    /// The bytes of the earlier file as they are now.
    QByteArray earlierFile() const;

private:
    QTemporaryDir folder; // goes when nothing is mounted on it any more
    Scarcity kind;
    int room;
    std::unique_ptr<SmallDisk> disk;
};
