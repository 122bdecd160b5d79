// The personas and tags of a persona pack copied into the project, with their keys unchanged: a persona that the
// project has already stays as it is, and a tag id means in the project whatever tag has it there.

#include "app/mainwindow.h"
#include "app/testmode.h"
#include "packs/copyrows.h"
#include "project/tables.h"
#include "project/temporaryconnection.h"

#include <QDebug>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QSqlError>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

void MainWindow::onImport()
{
    if (testMode()) {
        Q_EMIT importRequested(QString());
        return;
    }
    const QString path = QFileDialog::getOpenFileName(this, tr("Open Persona Pack"), QString(),
                                                      tr("Persona Pack (*.ornk);;All Files (*)"));
    if (path.isEmpty())
        return;
    Q_EMIT importRequested(path);
    importPack(path);
}

static bool hasPersonas(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    return query.exec(u"SELECT COUNT(*) FROM personas"_s) && query.next() && query.value(0).toInt() > 0;
}

static bool hasPersona(const QSqlDatabase &database, const QString &uuid)
{
    QSqlQuery query(database);
    query.prepare(u"SELECT COUNT(*) FROM personas WHERE uuid=?"_s);
    query.addBindValue(uuid);
    return query.exec() && query.next() && query.value(0).toInt() > 0;
}

/// Asks what is to become of the personas that the project has; nothing where the user cancels.
std::optional<MainWindow::ImportMode> MainWindow::askImportMode()
{
    QMessageBox box(QMessageBox::Question, tr("Import Persona Pack"),
                    tr("Personas already exist in this project. Replace them or append?"), QMessageBox::NoButton, this);
    const QPushButton *replace = box.addButton(tr("Replace"), QMessageBox::AcceptRole);
    const QPushButton *append = box.addButton(tr("Append"), QMessageBox::AcceptRole);
    box.addButton(QMessageBox::Cancel);
    box.exec();
    if (box.clickedButton() == replace)
        return ImportMode::Replace;
    if (box.clickedButton() == append)
        return ImportMode::Append;
    return std::nullopt;
}

static void removePersonas(const QSqlDatabase &project)
{
    QSqlQuery query(project);
    for (const auto table : {"responses"_L1, "persona_tags"_L1, "tags"_L1, "personas"_L1})
        query.exec("DELETE FROM "_L1 + table);
}

void MainWindow::importPack(const QString &path)
{
    if (!db.isOpen())
        return;
    ImportMode mode = ImportMode::Append;
    if (hasPersonas(db) && !testMode()) {
        const auto asked = askImportMode();
        if (!asked)
            return;
        mode = *asked;
    }
    if (mode == ImportMode::Replace)
        removePersonas(db);

    TemporaryConnection pack(u"packfile"_s, path);
    if (!pack.isOpen()) {
        qWarning().noquote() << "failed to open pack" << pack.errorText();
        return;
    }
    copyPack(pack.database(), mode);
    pack.close();
    loadProject();
    dirty = true;
}

void MainWindow::copyPack(const QSqlDatabase &pack, ImportMode mode)
{
    const bool tagged = hasTable(db, "tags"_L1);
    QSqlQuery persona(pack);
    persona.exec(selectPersonaRows.toString());
    while (persona.next()) {
        if (mode == ImportMode::Append && hasPersona(db, persona.value(0).toString()))
            continue;
        const QSqlError error = insertRow(db, insertPersonaRow, persona).lastError();
        if (error.isValid())
            qWarning().noquote() << error.text();
    }
    if (!tagged)
        return;
    // All links of the pack, also those of personas that were passed over or that the pack does not hold.
    copyRows(pack, u"SELECT id,name FROM tags", db, u"INSERT OR IGNORE INTO tags (id,name) VALUES (?,?)");
    copyRows(pack, u"SELECT persona_uuid, tag_id FROM persona_tags", db,
             u"INSERT OR IGNORE INTO persona_tags (persona_uuid,tag_id) VALUES (?,?)");
}
