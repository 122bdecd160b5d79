#pragma once

#include <QSqlDatabase>
#include <QStringList>
#include <QVariant>

/// What a query gives.
using Rows = QList<QVariantList>;

/// A database under a test's own hands. A statement that ends otherwise than its function says fails the test.
class Sql
{
public:
    virtual ~Sql() = default;
    virtual QSqlDatabase database() = 0;

    /// Runs a statement; false, and the test has failed, if it fails.
    bool exec(const QString &statement, const QVariantList &values = {});
    /// Runs statements until one fails.
    bool exec(const QStringList &statements);
    /// Runs a statement that is to fail, and gives what the driver says of it.
    QString refusal(const QString &statement, const QVariantList &values = {});
    /// All rows of a query.
    Rows rows(const QString &query, const QVariantList &values = {});
    /// The first value of the first row of a query, invalid where there is none.
    QVariant value(const QString &query, const QVariantList &values = {});
    /// The first column of a query's rows.
    QStringList column(const QString &query, const QVariantList &values = {});
    /// The number of rows of a table.
    int count(const QString &table);

protected:
    Sql() = default;
    Q_DISABLE_COPY_MOVE(Sql)
};

/// Every row of every table, in the order in which they came, each value as a text that tells its type as well.
QStringList everyRow(const QSqlDatabase &database);
/// The rows of a query in the same form.
QStringList literals(const QSqlDatabase &database, const QString &query);
