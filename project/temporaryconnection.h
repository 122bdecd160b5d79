#pragma once

#include <QSqlDatabase>
#include <QString>

/// A second connection, to a SQLite file, that exists during one call: opened when it is made, closed and its name
/// released when it goes. Queries on it have to go before it does.
///
/// SQLite makes a file that does not exist, and takes one that is no database for open until it is read; only a folder,
/// or a path in a folder that is not there, fails to open.
class TemporaryConnection
{
public:
    /// Options are those of QSqlDatabase::setConnectOptions().
    TemporaryConnection(const QString &connectionName, const QString &path, const QString &options = {});
    ~TemporaryConnection();
    Q_DISABLE_COPY_MOVE(TemporaryConnection)

    bool isOpen() const { return handle.isOpen(); }
    /// Why it is not open.
    QString errorText() const;
    const QSqlDatabase &database() const { return handle; }
    void close() { handle.close(); }

private:
    QString name;
    QSqlDatabase handle;
};
