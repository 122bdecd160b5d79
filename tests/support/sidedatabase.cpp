#include "tests/support/sidedatabase.h"

#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

SideDatabase::SideDatabase(const QString &path)
    : handle()
{
    static int made = 0;
    name = u"side %1"_s.arg(++made);
    handle = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
    handle.setDatabaseName(path);
    // Waiting for the disk is what takes most of the time, and no test pulls the plug.
    if (handle.open())
        QSqlQuery(u"PRAGMA synchronous = OFF"_s, handle);
}

SideDatabase::~SideDatabase()
{
    handle = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

QString SideDatabase::errorText() const
{
    return handle.lastError().text();
}

QString openError(const QString &path)
{
    return SideDatabase(path).errorText();
}

QString writeDatabase(const QString &path, const QStringList &statements)
{
    SideDatabase file(path);
    file.exec(u"BEGIN"_s);
    file.exec(statements);
    file.exec(u"COMMIT"_s);
    return path;
}

QStringList schemaStatements()
{
    QFile script(u":/project/sql/schema.sql"_s);
    QStringList statements;
    if (script.open(QIODevice::ReadOnly))
        statements = QString::fromUtf8(script.readAll()).split(u';', Qt::SkipEmptyParts);
    statements.removeIf([](const QString &piece) { return piece.trimmed().isEmpty(); });
    return statements;
}

QString writeProject(const QString &path, const QStringList &statements)
{
    return writeDatabase(path, schemaStatements() + statements);
}

QStringList packStatements()
{
    return {
        u"CREATE TABLE personas (uuid TEXT PRIMARY KEY, name TEXT, attributes TEXT, system_prompt TEXT, notes TEXT, "
        "created_at DATETIME, modified_at DATETIME)"_s,
        u"CREATE TABLE tags (id INTEGER PRIMARY KEY, name TEXT UNIQUE)"_s,
        u"CREATE TABLE persona_tags (persona_uuid TEXT, tag_id INTEGER, PRIMARY KEY(persona_uuid, tag_id))"_s,
        u"CREATE TABLE pack_info (uuid TEXT PRIMARY KEY, name TEXT, vendor TEXT, population TEXT, "
        "created_at DATETIME, modified_at DATETIME, notes TEXT, format_version INTEGER)"_s,
        u"CREATE TABLE change_log (id INTEGER PRIMARY KEY, timestamp DATETIME, entity TEXT, entity_uuid TEXT, "
        "description TEXT)"_s,
    };
}

QString writePack(const QString &path, const QStringList &statements)
{
    return writeDatabase(path, packStatements() + statements);
}

QByteArray readBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        QTest::qFail(qUtf8Printable(path + ": "_L1 + file.errorString()), __FILE__, __LINE__);
    return path;
}
