#include "fuzz/promises.h"

#include <utility>

using namespace Qt::StringLiterals;

static QStringList &broken()
{
    static QStringList all;
    return all;
}

void promise(bool holds, const char *what)
{
    if (!holds)
        broken().append(QString::fromUtf8(what));
}

void promise(bool holds, const char *what, const QString &found)
{
    if (!holds)
        broken().append(QString::fromUtf8(what) + ": "_L1 + found);
}

QStringList takeBrokenPromises()
{
    return std::exchange(broken(), {});
}
