#include "bench/memory.h"

#include <QDir>
#include <QFile>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

using namespace Qt::StringLiterals;

double allocated()
{
#if defined(__GLIBC__)
    const struct mallinfo2 all = mallinfo2();
    return double(all.uordblks) + double(all.hblkhd);
#else
    return 0;
#endif
}

double statusBytes(QByteArrayView name, qint64 process)
{
    QFile status(process == 0 ? u"/proc/self/status"_s : u"/proc/%1/status"_s.arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name))
            return line.sliced(name.size()).simplified().split(' ').first().toDouble() * 1024;
    }
    return 0;
}

int openDescriptors()
{
    // The one that reads the folder is among them.
    return int(
        qMax(0, QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size() - 1));
}
