#include "tests/support/sql.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

static void failWith(const QString &statement, const QString &reason)
{
    QTest::qFail(qUtf8Printable(statement + ": "_L1 + reason), __FILE__, __LINE__);
}

/// False, and the reason in the query, where the statement fails.
static bool run(QSqlQuery &query, const QString &statement, const QVariantList &values)
{
    if (!query.prepare(statement))
        return false;
    for (const QVariant &value : values)
        query.addBindValue(value);
    return query.exec();
}

bool Sql::exec(const QString &statement, const QVariantList &values)
{
    QSqlQuery query(database());
    const bool done = run(query, statement, values);
    if (!done)
        failWith(statement, query.lastError().text());
    return done;
}

bool Sql::exec(const QStringList &statements)
{
    return std::ranges::all_of(statements, [this](const QString &statement) { return exec(statement); });
}

QString Sql::refusal(const QString &statement, const QVariantList &values)
{
    QSqlQuery query(database());
    if (run(query, statement, values))
        failWith(statement, u"it did not fail"_s);
    return query.lastError().text();
}

static QVariantList rowOf(const QSqlQuery &query)
{
    QVariantList row;
    for (int column = 0; column < query.record().count(); ++column)
        row.append(query.value(column));
    return row;
}

Rows Sql::rows(const QString &statement, const QVariantList &values)
{
    Rows all;
    QSqlQuery query(database());
    if (!run(query, statement, values))
        failWith(statement, query.lastError().text());
    while (query.next())
        all.append(rowOf(query));
    return all;
}

QVariant Sql::value(const QString &query, const QVariantList &values)
{
    const Rows all = rows(query, values);
    return all.isEmpty() ? QVariant() : all.first().first();
}

QStringList Sql::column(const QString &query, const QVariantList &values)
{
    QStringList texts;
    const Rows all = rows(query, values);
    for (const QVariantList &row : all)
        texts.append(row.first().toString());
    return texts;
}

int Sql::count(const QString &table)
{
    const QString query = u"SELECT COUNT(*) FROM "_s + table;
    return value(query).toInt();
}

static QString literal(const QVariant &value)
{
    if (value.isNull())
        return u"NULL"_s;
    const bool isBlob = value.typeId() == QMetaType::QByteArray;
    return QString::fromLatin1(value.typeName()) + u' ' +
           (isBlob ? QString::fromLatin1(value.toByteArray().toHex()) : value.toString());
}

QStringList literals(const QSqlDatabase &database, const QString &statement)
{
    QStringList all;
    QSqlQuery query(database);
    if (!query.exec(statement))
        failWith(statement, query.lastError().text());
    while (query.next()) {
        QStringList texts;
        const QVariantList row = rowOf(query);
        for (const QVariant &value : row)
            texts.append(literal(value));
        all.append(texts.join(u'|'));
    }
    return all;
}

QStringList everyRow(const QSqlDatabase &database)
{
    QStringList all;
    QStringList tables = database.tables(QSql::Tables);
    tables.sort();
    for (const QString &table : std::as_const(tables))
        all << table << literals(database, u"SELECT * FROM \"%1\" ORDER BY rowid"_s.arg(table));
    return all;
}
