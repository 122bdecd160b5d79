// The project's personas and tags written to a persona pack: all of them, whatever the list shows, with the tags that
// no persona uses and the tag links that no persona is left for. A file that is there is added to, not replaced.

#include "app/mainwindow.h"
#include "app/testmode.h"
#include "packs/copyrows.h"
#include "project/tables.h"
#include "project/temporaryconnection.h"

#include <QFileDialog>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

void MainWindow::exportPack()
{
    if (testMode())
        return;
    const QString path = QFileDialog::getSaveFileName(this, tr("Export Persona Pack"), QString(),
                                                      tr("Persona Pack (*.ornk);;All Files (*)"));
    if (!path.isEmpty())
        exportPackToFile(path);
}

/// The tables of a pack. pack_info and change_log have their place in the format and nothing in them yet.
static void createPackTables(const QSqlDatabase &pack)
{
    QSqlQuery query(pack);
    for (const auto statement :
         {"CREATE TABLE personas (uuid TEXT PRIMARY KEY, name TEXT, attributes TEXT, system_prompt TEXT, notes TEXT, "
          "created_at DATETIME, modified_at DATETIME)"_L1,
          "CREATE TABLE tags (id INTEGER PRIMARY KEY, name TEXT UNIQUE)"_L1,
          "CREATE TABLE persona_tags (persona_uuid TEXT, tag_id INTEGER, PRIMARY KEY(persona_uuid, tag_id))"_L1,
          "CREATE TABLE pack_info (uuid TEXT PRIMARY KEY, name TEXT, vendor TEXT, population TEXT, "
          "created_at DATETIME, modified_at DATETIME, notes TEXT, format_version INTEGER)"_L1,
          "CREATE TABLE change_log (id INTEGER PRIMARY KEY, timestamp DATETIME, entity TEXT, entity_uuid TEXT, "
          "description TEXT)"_L1})
        query.exec(statement);
}

bool MainWindow::exportPackToFile(const QString &path)
{
    if (!db.isOpen())
        return false;
    const TemporaryConnection pack(u"packout"_s, path);
    if (!pack.isOpen())
        return false;

    createPackTables(pack.database());
    copyRows(db, selectPersonaRows, pack.database(), insertPersonaRow);
    if (hasTable(db, "tags"_L1)) {
        copyRows(db, u"SELECT id,name FROM tags", pack.database(), u"INSERT INTO tags (id,name) VALUES (?,?)");
        copyRows(db, u"SELECT persona_uuid,tag_id FROM persona_tags", pack.database(),
                 u"INSERT INTO persona_tags (persona_uuid,tag_id) VALUES (?,?)");
    }
    return true;
}
