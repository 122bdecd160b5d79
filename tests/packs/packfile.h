#pragma once

#include "tests/personas/panel.h"

#include <QComboBox>
#include <QFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <algorithm>

/// A SQLite file seen through a connection of the test's own, which is gone when this is.
class FileDatabase
{
public:
    explicit FileDatabase(const QString &path)
        : name(QStringLiteral("test %1").arg(++made))
        , handle(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name))
    {
        handle.setDatabaseName(path);
        // Waiting for the disk is what takes most of the time, and no test pulls the plug.
        if (handle.open())
            QSqlQuery(QStringLiteral("PRAGMA synchronous = OFF"), handle);
    }
    ~FileDatabase()
    {
        handle = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    Q_DISABLE_COPY_MOVE(FileDatabase)

    const QSqlDatabase &database() const { return handle; }

    bool exec(const QString &statement, const QVariantList &values = {})
    {
        QSqlQuery query(handle);
        query.prepare(statement);
        for (const QVariant &value : values)
            query.addBindValue(value);
        return query.exec();
    }
    /// Runs statements until one fails.
    bool exec(const QStringList &statements)
    {
        return std::ranges::all_of(statements, [this](const QString &text) { return exec(text); });
    }
    /// The first column of a query's rows, "failed" if the query fails.
    QStringList column(const QString &text)
    {
        QSqlQuery query(handle);
        if (!query.exec(text))
            return {QStringLiteral("failed")};
        QStringList values;
        while (query.next())
            values.append(query.value(0).toString());
        return values;
    }

private:
    static inline int made = 0;

    QString name;
    QSqlDatabase handle;
};

/// The statements that make a pack, in their order.
inline QStringList packStatements()
{
    return {
        QStringLiteral("CREATE TABLE personas (uuid TEXT PRIMARY KEY, name TEXT, attributes TEXT, system_prompt TEXT, "
                       "notes TEXT, created_at DATETIME, modified_at DATETIME)"),
        QStringLiteral("CREATE TABLE tags (id INTEGER PRIMARY KEY, name TEXT UNIQUE)"),
        QStringLiteral("CREATE TABLE persona_tags (persona_uuid TEXT, tag_id INTEGER, "
                       "PRIMARY KEY(persona_uuid, tag_id))"),
        QStringLiteral("CREATE TABLE pack_info (uuid TEXT PRIMARY KEY, name TEXT, vendor TEXT, population TEXT, "
                       "created_at DATETIME, modified_at DATETIME, notes TEXT, format_version INTEGER)"),
        QStringLiteral("CREATE TABLE change_log (id INTEGER PRIMARY KEY, timestamp DATETIME, entity TEXT, "
                       "entity_uuid TEXT, description TEXT)"),
    };
}

/// Makes a pack with what the statements put into it, and gives its path.
inline QString writePack(const QString &path, const QStringList &statements = {})
{
    FileDatabase file(path);
    if (!file.exec(packStatements() + statements))
        qFatal("the pack %s could not be written", qUtf8Printable(path));
    return path;
}

/// The statement that enters a persona with a name and a description.
inline QString persona(const QString &uuid, const QString &name)
{
    return QStringLiteral("INSERT INTO personas VALUES ('%1', '%2', '%2 in full', NULL, NULL, "
                          "'2001-02-03T04:05:06.789', '2001-02-03 04:05:06')")
        .arg(uuid, name);
}

/// The statement that enters a tag.
inline QString tag(int id, const QString &name)
{
    return QStringLiteral("INSERT INTO tags VALUES (%1, '%2')").arg(id).arg(name);
}

/// The statement that links a persona to a tag.
inline QString link(const QString &uuid, int id)
{
    return QStringLiteral("INSERT INTO persona_tags VALUES ('%1', %2)").arg(uuid).arg(id);
}

/// Runs statements on the project behind the program's back; the views don't show it.
inline bool enter(Stage &stage, const QStringList &statements)
{
    return std::ranges::all_of(statements, [&stage](const QString &statement) { return stage.exec(statement); });
}

/// Every value of a query as a text that tells its type as well.
inline QStringList literals(const QSqlDatabase &database, const QString &text)
{
    QStringList rows;
    QSqlQuery query(database);
    query.exec(text);
    while (query.next()) {
        QStringList row;
        for (int index = 0; index < query.record().count(); ++index) {
            const QVariant value = query.value(index);
            const QByteArray bytes =
                value.metaType().id() == QMetaType::QByteArray ? value.toByteArray().toHex() : QByteArray();
            row.append(value.isNull() ? QStringLiteral("NULL")
                                      : QString::fromLatin1(value.typeName()) + u' ' +
                                            (bytes.isEmpty() ? value.toString() : QString::fromLatin1(bytes)));
        }
        rows.append(row.join(u'|'));
    }
    return rows;
}

/// Every row of every table of a database, in the order in which they came.
inline QStringList everyRow(const QSqlDatabase &database)
{
    QStringList all;
    QStringList tables = database.tables(QSql::Tables);
    tables.sort();
    for (const QString &table : std::as_const(tables)) {
        all.append(table);
        all.append(literals(database, QStringLiteral("SELECT * FROM \"%1\" ORDER BY rowid").arg(table)));
    }
    return all;
}

/// What the driver says about a path that it can't open.
inline QString openError(const QString &path)
{
    const FileDatabase file(path);
    return file.database().lastError().text();
}

inline QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Makes a file of the given bytes, and gives its path.
inline QString writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("the file %s could not be written", qUtf8Printable(path));
    return path;
}

inline QComboBox *tagFilter(Stage &stage)
{
    return stage.find<QComboBox>(QStringLiteral("tagFilter"));
}

/// The entries of a chooser.
inline QStringList entries(const QComboBox *chooser)
{
    QStringList texts;
    for (int index = 0; index < chooser->count(); ++index)
        texts.append(chooser->itemText(index));
    return texts;
}

/// The first column of the persona list, sorted.
inline QStringList shownNames(Stage &stage)
{
    QStringList names;
    const auto cells = Stage::cells(personaTable(stage));
    for (const QStringList &row : cells)
        names.append(row.first());
    names.sort();
    return names;
}
