#include "tests/packs/samplepacks.h"

#include <QTableWidget>
#include <QtEndian>

using namespace Qt::StringLiterals;

static constexpr int damagedPackSize = 60;

QStringList columnIn(const QString &path, const QString &query)
{
    return SideDatabase(path).column(query);
}

QStringList namesIn(const QString &path)
{
    return columnIn(path, u"SELECT name FROM personas ORDER BY name"_s);
}

QString writeCoastalPack(const QString &path)
{
    return packOf(
        path, TagEntered{1, u"urban"_s}, TagEntered{2, u"coastal"_s}, TagEntered{3, u"remote"_s},
        PersonaEntered{.uuid = u"11111111-aaaa"_s, .name = u"Number One"_s, .tags = {u"urban"_s, u"coastal"_s}},
        PersonaEntered{.uuid = u"22222222-bbbb"_s, .name = u"Number Two"_s, .tags = {u"coastal"_s}},
        PersonaEntered{.uuid = u"33333333-cccc"_s, .name = u"Number Three"_s, .tags = {u"urban"_s}},
        PersonaEntered{.uuid = u"4444"_s, .name = u"Number Four"_s}, LinkEntered{u"elsewhere"_s, 1});
}

QStringList coastalNames()
{
    return {u"Number Four"_s, u"Number One"_s, u"Number Three"_s, u"Number Two"_s};
}

QStringList shownTags(Stage &stage)
{
    QStringList rows;
    const auto all = cells(personaTable(stage));
    for (const QStringList &row : all) {
        QStringList tags = row.at(2).split(u',');
        tags.sort();
        rows.append(row.first() + u": "_s + tags.join(u','));
    }
    rows.sort();
    return rows;
}

bool showProject(Stage &stage)
{
    const bool entered = enter(stage, PersonaEntered{u"11111111-aaaa"_s, u"Mine"_s, u"Mine in full"_s},
                               PersonaEntered{u"99999999-dddd"_s, u"Mine, too"_s}, TagEntered{5, u"rural"_s},
                               TagEntered{6, u"coastal"_s}, LinkEntered{u"11111111-aaaa"_s, 5});
    refreshQuietly(stage);
    return entered;
}

QStringList damagedPackUuids()
{
    QStringList uuids;
    for (int index = 1; index <= damagedPackSize; ++index)
        uuids.append(u"u%1"_s.arg(index, 2, 10, QLatin1Char('0')));
    return uuids;
}

QString writeDamagedPack(const QString &path, Damage damage)
{
    packOf(path, TagEntered{1, u"rural"_s}, LinkEntered{u"u01"_s, 1});
    qsizetype root = 0;
    {
        SideDatabase pack(path);
        pack.exec(u"WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < ?) "
                  "INSERT INTO personas SELECT printf('u%02d', n), 'Number ' || n, printf('%.1000c', 'x'), NULL, NULL, "
                  "NULL, NULL FROM numbers"_s,
                  {damagedPackSize});
        root = pack.value(u"SELECT rootpage FROM sqlite_master WHERE name = 'personas'"_s).toInt();
    }
    QByteArray bytes = readBytes(path);
    // A page of the tree holds the number of its last child in its head, and that of its first one in its first cell.
    const qsizetype pageSize = qFromBigEndian<quint16>(bytes.constData() + 16);
    const char *page = bytes.constData() + ((root - 1) * pageSize);
    const char *child = damage == Damage::LastPage ? page + 8 : page + qFromBigEndian<quint16>(page + 12);
    const qsizetype number = qFromBigEndian<quint32>(child);
    bytes.replace((number - 1) * pageSize, pageSize, QByteArray(pageSize, '\0'));
    return writeBytes(path, bytes);
}
