#include "project/tables.h"

#include <QSqlDatabase>
#include <QStringList>

bool hasTable(const QSqlDatabase &database, QLatin1StringView name)
{
    return database.tables(QSql::Tables).contains(name, Qt::CaseSensitive);
}
