#include "packs/copyrows.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

QSqlQuery insertRow(const QSqlDatabase &target, QStringView insert, const QSqlQuery &row)
{
    QSqlQuery query(target);
    query.prepare(insert.toString());
    const int columns = row.record().count();
    for (int column = 0; column < columns; ++column)
        query.addBindValue(row.value(column));
    query.exec();
    return query;
}

void copyRows(const QSqlDatabase &source, QStringView select, const QSqlDatabase &target, QStringView insert)
{
    QSqlQuery row(source);
    row.exec(select.toString());
    while (row.next())
        insertRow(target, insert, row);
}
