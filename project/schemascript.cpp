#include "project/schemascript.h"

#include <QFile>
#include <QSqlError>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

QStringList runSchemaScript(const QSqlDatabase &database)
{
    QFile file(u":/project/sql/schema.sql"_s);
    if (!file.open(QIODevice::ReadOnly))
        return {};

    // No statement of the script holds a semicolon but its last character.
    const QString script = QString::fromUtf8(file.readAll());
    const QStringList pieces = script.split(u';', Qt::SkipEmptyParts);
    QStringList failures;
    for (const QString &piece : pieces) {
        const QString statement = piece.trimmed();
        if (statement.isEmpty())
            continue;
        QSqlQuery query(database);
        if (!query.exec(statement))
            failures << query.lastError().text();
    }
    return failures;
}
