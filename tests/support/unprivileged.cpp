#include "tests/support/unprivileged.h"

#include <QFile>

#include <sys/prctl.h>
#include <unistd.h>

static constexpr uid_t nobody = 65534;

void Unprivileged::give(const QString &path)
{
    if (::chown(QFile::encodeName(path).constData(), nobody, gid_t(-1)) != 0)
        QTest::qFail(qPrintable(path), __FILE__, __LINE__);
}

Unprivileged::Unprivileged(const Stage &stage)
    : before(::geteuid())
{
    if (before != 0)
        return;
    give(stage.path(QString()));
    if (::seteuid(nobody) != 0)
        QTest::qFail("root has not become another user", __FILE__, __LINE__);
}

Unprivileged::~Unprivileged()
{
    if (::seteuid(before) != 0)
        QTest::qFail("the user is not back", __FILE__, __LINE__);
    // Who has changed users is closed to debuggers, and to what looks for leaks at the end of a process.
    ::prctl(PR_SET_DUMPABLE, 1);
}
