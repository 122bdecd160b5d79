#include "project/temporaryconnection.h"

#include <QSqlError>

using namespace Qt::StringLiterals;

TemporaryConnection::TemporaryConnection(const QString &connectionName, const QString &path, const QString &options)
    : name(connectionName)
    , handle(QSqlDatabase::addDatabase(u"QSQLITE"_s, connectionName))
{
    handle.setDatabaseName(path);
    handle.setConnectOptions(options);
    handle.open();
}

TemporaryConnection::~TemporaryConnection()
{
    handle.close();
    // The name is only free when no handle refers to it any more.
    handle = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

QString TemporaryConnection::errorText() const
{
    return handle.lastError().text();
}
