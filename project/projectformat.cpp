#include "project/projectformat.h"

#include "project/schemascript.h"
#include "project/temporaryconnection.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

static QStringList columnsOf(const QSqlDatabase &database, const QString &table)
{
    QSqlQuery query(database);
    query.prepare(u"SELECT name FROM pragma_table_info(?)"_s);
    query.addBindValue(table);
    query.exec();
    QStringList names;
    while (query.next())
        names << query.value(0).toString();
    return names;
}

QString projectFlaw(const QSqlDatabase &file)
{
    QSqlQuery query(file);
    // What a project holds is data: nothing in it is to act.
    if (!query.exec(u"SELECT type, name FROM sqlite_schema WHERE type NOT IN ('table', 'index')"_s))
        return query.lastError().databaseText();
    if (query.next())
        return u"it holds a %1, \"%2\", which the program never makes"_s.arg(query.value(0).toString(),
                                                                             query.value(1).toString());
    const TemporaryConnection model(u"projectflaw"_s, u":memory:"_s);
    runSchemaScript(model.database());
    for (const QString &table : {u"personas"_s, u"questions"_s, u"responses"_s, u"boilerplate"_s}) {
        const QStringList columns = columnsOf(file, table);
        if (columns.isEmpty())
            return u"it has no table \"%1\""_s.arg(table);
        if (columns != columnsOf(model.database(), table))
            return u"its table \"%1\" has other columns"_s.arg(table);
    }
    return {};
}
