// The refresh of the views from the project database: everything is rebuilt whole, nothing is patched.

#include "app/mainwindow.h"
#include "personas/personatable.h"
#include "project/tables.h"

#include <QComboBox>
#include <QSqlQuery>
#include <QTableWidget>

using namespace Qt::StringLiterals;

void MainWindow::loadProject()
{
    clearPersonaTable(personaTable);
    if (!db.isOpen())
        return;

    showBoilerplate();
    // The former filter goes into the statement even where the refilled combo no longer offers it.
    const bool tagged = hasTable(db, "tags"_L1);
    const QString filter = refillTagFilter(tagFilter, db, tagged);
    if (!fillPersonaTable(personaTable, db, tagged, filter))
        return;
    fillConversationPersonas();
    loadQuestions();
}

void MainWindow::fillConversationPersonas()
{
    conversationPersonaCombo->clear();
    QSqlQuery query(db);
    query.exec(u"SELECT uuid,name FROM personas ORDER BY name"_s);
    while (query.next())
        conversationPersonaCombo->addItem(query.value(1).toString(), query.value(0).toString());
}

void MainWindow::applyTagFilter()
{
    if (db.isOpen() && packPath.isEmpty())
        loadProject();
    else if (!packPath.isEmpty())
        loadPack(packPath);
}

void MainWindow::toggleCreated(bool checked)
{
    personaTable->setColumnHidden(PersonaColumn::Created, !checked);
}

void MainWindow::toggleModified(bool checked)
{
    personaTable->setColumnHidden(PersonaColumn::Modified, !checked);
}
