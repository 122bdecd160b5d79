#include "tests/faults/ownmounts.h"

#include "tests/support/sidedatabase.h"

#include <QFile>
#include <QTest>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

/// In a user namespace of its own, where any user may mount, a process is to be root.
static bool becomeRoot(const char *users, const char *groups)
{
    const auto write = [](const char *file, const char *text) {
        const int descriptor = ::open(file, O_WRONLY | O_CLOEXEC);
        const auto length = qstrlen(text);
        const bool written = descriptor >= 0 && ::write(descriptor, text, length) == ssize_t(length);
        ::close(descriptor);
        return written;
    };
    return write("/proc/self/setgroups", "deny") && write("/proc/self/uid_map", users) &&
           write("/proc/self/gid_map", groups);
}

static bool unshareMounts()
{
    if (::unshare(CLONE_NEWNS) != 0) {
        char users[32];
        char groups[32];
        std::snprintf(users, sizeof users, "0 %u 1", ::getuid());
        std::snprintf(groups, sizeof groups, "0 %u 1", ::getgid());
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 || !becomeRoot(users, groups))
            return false;
    }
    // Nothing mounted here is to be seen outside. A changed root is no mount that can be told so, its own mounts are.
    return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 ||
           ::mount(nullptr, "/tmp", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool canMount()
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(unshareMounts() && ::mount("none", "/tmp", "tmpfs", 0, nullptr) == 0 ? 0 : 1);
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void enterOwnMounts(QProcess &child)
{
    if (!unshareMounts())
        child.failChildProcessModifier("mounts of its own", errno);
}

SmallDisk::SmallDisk(const QString &folder, const QString &name, const QByteArray &content, int freePages)
    : place(QFile::encodeName(folder))
{
    const QByteArray size = "size=" + QByteArray::number(content.size() + freePages * pageSize);
    if (content.isEmpty() || ::mount("none", place.constData(), "tmpfs", 0, size.constData()) != 0)
        QTest::qFail("no disk was mounted", __FILE__, __LINE__);
    writeBytes(folder + u'/' + name, content);
}

SmallDisk::~SmallDisk()
{
    if (::umount(place.constData()) != 0)
        QTest::qFail("the disk is still in use", __FILE__, __LINE__);
}

void SmallDisk::makeReadOnly()
{
    if (::mount(nullptr, place.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
        QTest::qFail("the disk was not made read-only", __FILE__, __LINE__);
}
