#pragma once

#include "tests/packs/packfile.h"

#include <QtEndian>

/// Which of the pages that hold a pack's personas is unreadable.
enum class Damage : quint8 { FirstPage, LastPage };

inline constexpr int damagedPackSize = 60;

/// The uuids of the damaged pack in their order.
inline QStringList damagedPackUuids()
{
    QStringList uuids;
    for (int index = 1; index <= damagedPackSize; ++index)
        uuids.append(QStringLiteral("u%1").arg(index, 2, 10, QLatin1Char('0')));
    return uuids;
}

/// Makes a pack that opens and whose tables are there, but of whose personas one page is overwritten.
inline QString writeDamagedPack(const QString &path, Damage damage)
{
    writePack(path, {tag(1, QStringLiteral("rural")), link(QStringLiteral("u01"), 1),
                     QStringLiteral("WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers "
                                    "WHERE n < %1) INSERT INTO personas SELECT printf('u%02d', n), 'Number ' || n, "
                                    "printf('%.1000c', 'x'), NULL, NULL, NULL, NULL FROM numbers")
                         .arg(damagedPackSize)});
    int root = 0;
    {
        FileDatabase pack(path);
        root = pack.column(QStringLiteral("SELECT rootpage FROM sqlite_master WHERE name = 'personas'"))
                   .constFirst()
                   .toInt();
    }
    QByteArray bytes = bytesOf(path);
    // A page of the tree holds the number of its last child in its head, and that of its first one in its first cell.
    const qsizetype pageSize = qFromBigEndian<quint16>(bytes.constData() + 16);
    const char *page = bytes.constData() + ((root - 1) * pageSize);
    const char *child = damage == Damage::LastPage ? page + 8 : page + qFromBigEndian<quint16>(page + 12);
    const qsizetype number = qFromBigEndian<quint32>(child);
    bytes.replace((number - 1) * pageSize, pageSize, QByteArray(pageSize, '\0'));
    return writeFile(path, bytes);
}
