#pragma once

#include "tests/support/sql.h"

/// A SQLite file by a connection of the test's own, beside those of the program; the connection is gone when this is.
class SideDatabase : public Sql
{
public:
    /// Makes the file where there is none.
    explicit SideDatabase(const QString &path);
    ~SideDatabase() override;

    QSqlDatabase database() override { return handle; }
    bool isOpen() const { return handle.isOpen(); }
    /// Why it is not open.
    QString errorText() const;

private:
    QString name;
    QSqlDatabase handle;
};

/// What the driver says of a path that it can't open.
QString openError(const QString &path);

/// Makes a database file of these statements and gives its path.
QString writeDatabase(const QString &path, const QStringList &statements);

/// The statements of the program's schema script.
QStringList schemaStatements();

/// Makes a project file with the tables of the program and these statements, and gives its path.
QString writeProject(const QString &path, const QStringList &statements = {});

/// The statements that make the tables of a pack, in their order.
QStringList packStatements();

/// Makes a pack with the tables of one and these statements, and gives its path.
QString writePack(const QString &path, const QStringList &statements = {});

/// What a file holds, null where there is none.
QByteArray readBytes(const QString &path);

/// Makes a file of these bytes and gives its path.
QString writeBytes(const QString &path, const QByteArray &bytes);
