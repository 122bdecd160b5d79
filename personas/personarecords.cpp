// The rows of the table personas. Every change ends in a refresh of the whole view; nothing cascades, so a deleted
// persona leaves its answers and tag links behind.

#include "app/mainwindow.h"
#include "personas/personatable.h"
#include "personas/personatags.h"
#include "personas/tagtext.h"

#include <QDateTime>
#include <QSqlQuery>
#include <QTableWidget>
#include <QUuid>

using namespace Qt::StringLiterals;

void MainWindow::insertPersona(const QString &name, const QString &description, const QString &tags)
{
    if (!db.isOpen())
        return;
    const QString uuid = QUuid::createUuid().toString(QUuid::WithoutBraces);
    {
        QSqlQuery query(db);
        query.prepare(u"INSERT INTO personas (uuid,name,attributes,created_at,modified_at) "
                      "VALUES (?,?,?,?,CURRENT_TIMESTAMP)"_s);
        query.addBindValue(uuid);
        query.addBindValue(name);
        query.addBindValue(description);
        query.addBindValue(QDateTime::currentDateTime());
        query.exec();
    }
    syncPersonaTags(uuid, splitTags(tags));
    loadProject();
    dirty = true;
}

void MainWindow::updatePersona(const QString &uuid, const QString &name, const QString &description,
                               const QString &tags)
{
    if (!db.isOpen())
        return;
    {
        QSqlQuery query(db);
        query.prepare(u"UPDATE personas SET name=?, attributes=?, modified_at=CURRENT_TIMESTAMP WHERE uuid=?"_s);
        query.addBindValue(name);
        query.addBindValue(description);
        query.addBindValue(uuid);
        query.exec();
    }
    syncPersonaTags(uuid, splitTags(tags));
    loadProject();
    dirty = true;
}

/// The uuid of the current row, nothing where there is none or no project is open.
std::optional<QString> MainWindow::currentPersona() const
{
    const int row = personaTable->currentRow();
    if (row < 0 || !db.isOpen())
        return std::nullopt;
    return personaUuid(personaTable, row);
}

void MainWindow::deletePersona()
{
    const std::optional<QString> uuid = currentPersona();
    if (!uuid)
        return;
    {
        QSqlQuery query(db);
        query.prepare(u"DELETE FROM personas WHERE uuid=?"_s);
        query.addBindValue(*uuid);
        query.exec();
    }
    dirty = true;
    loadProject();
}

void MainWindow::copyPersona()
{
    const std::optional<QString> uuid = currentPersona();
    if (!uuid)
        return;
    QString name;
    QString description;
    {
        QSqlQuery query(db);
        query.prepare(u"SELECT name, attributes FROM personas WHERE uuid=?"_s);
        query.addBindValue(*uuid);
        if (!query.exec() || !query.next())
            return;
        name = query.value(0).toString();
        description = query.value(1).toString();
    }
    insertPersona(name, description, personaTagText(db, *uuid));
}
