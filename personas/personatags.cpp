#include "personas/personatags.h"

#include "app/mainwindow.h"
#include "personas/tagtext.h"
#include "project/tables.h"

#include <QSqlQuery>

using namespace Qt::StringLiterals;

QString personaTagText(const QSqlDatabase &database, const QString &uuid)
{
    if (!hasTable(database, "tags"_L1))
        return {};
    QSqlQuery query(database);
    query.prepare(u"SELECT t.name FROM tags t JOIN persona_tags pt ON t.id=pt.tag_id WHERE pt.persona_uuid=? "
                  "ORDER BY t.name"_s);
    query.addBindValue(uuid);
    query.exec();
    QStringList names;
    while (query.next())
        names.append(query.value(0).toString());
    return joinTags(names);
}

/// The id of the tag of this name, which is made where there is none yet; -1 if that fails.
static int tagId(const QSqlDatabase &database, const QString &name)
{
    QSqlQuery query(database);
    query.prepare(u"SELECT id FROM tags WHERE name=?"_s);
    query.addBindValue(name);
    if (query.exec() && query.next())
        return query.value(0).toInt();

    query.prepare(u"INSERT INTO tags (name) VALUES (?)"_s);
    query.addBindValue(name);
    return query.exec() ? query.lastInsertId().toInt() : -1;
}

void MainWindow::syncPersonaTags(const QString &uuid, const QStringList &tags)
{
    QSqlQuery query(db);
    if (!hasTable(db, "tags"_L1)) {
        query.exec(u"CREATE TABLE tags (id INTEGER PRIMARY KEY, name TEXT UNIQUE)"_s);
        query.exec(
            u"CREATE TABLE persona_tags (persona_uuid TEXT, tag_id INTEGER, PRIMARY KEY(persona_uuid, tag_id))"_s);
    }
    query.prepare(u"DELETE FROM persona_tags WHERE persona_uuid=?"_s);
    query.addBindValue(uuid);
    query.exec();

    for (const QString &tag : tags) {
        const QString name = tag.trimmed();
        if (name.isEmpty())
            continue;
        const int id = tagId(db, name);
        if (id < 0)
            continue;
        // A name that the list repeats fails here on the primary key, which keeps a persona's tags distinct.
        query.prepare(u"INSERT INTO persona_tags (persona_uuid, tag_id) VALUES (?,?)"_s);
        query.addBindValue(uuid);
        query.addBindValue(id);
        query.exec();
    }
}
