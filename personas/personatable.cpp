#include "personas/personatable.h"

#include <QComboBox>
#include <QDebug>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QSqlError>
#include <QSqlQuery>
#include <QTableWidget>

using namespace Qt::StringLiterals;

static constexpr auto noFilter = "All"_L1;

void clearPersonaTable(QTableWidget *table)
{
    table->clearContents();
    table->setRowCount(0);
}

QString personaUuid(const QTableWidget *table, int row)
{
    return table->item(row, PersonaColumn::Uuid)->data(Qt::UserRole).toString();
}

QString refillTagFilter(QComboBox *chooser, const QSqlDatabase &database, bool tagged)
{
    const QString shown = chooser->currentText();
    const QSignalBlocker blocker(chooser);
    chooser->clear();
    chooser->addItem(noFilter);
    if (tagged) {
        QSqlQuery query(database);
        query.exec(u"SELECT name FROM tags ORDER BY name"_s);
        while (query.next())
            chooser->addItem(query.value(0).toString());
    }
    chooser->setCurrentText(shown);
    return shown;
}

static void addPersonaRow(QTableWidget *table, const QSqlQuery &query)
{
    const int row = table->rowCount();
    const QString uuid = query.value(0).toString();
    table->insertRow(row);
    table->setItem(row, PersonaColumn::Name, new QTableWidgetItem(query.value(1).toString()));
    auto *uuidItem = new QTableWidgetItem(uuid.left(8));
    uuidItem->setData(Qt::UserRole, uuid);
    table->setItem(row, PersonaColumn::Uuid, uuidItem);
    table->setItem(row, PersonaColumn::Tags, new QTableWidgetItem(query.value(5).toString()));
    auto *narrative = new QPlainTextEdit(query.value(2).toString());
    narrative->setReadOnly(true);
    narrative->setFixedHeight(60);
    table->setCellWidget(row, PersonaColumn::Narrative, narrative);
    table->setItem(row, PersonaColumn::Created, new QTableWidgetItem(query.value(3).toString()));
    table->setItem(row, PersonaColumn::Modified, new QTableWidgetItem(query.value(4).toString()));
}

bool fillPersonaTable(QTableWidget *table, const QSqlDatabase &database, bool tagged, const QString &filter)
{
    const bool filtered = tagged && !filter.isEmpty() && filter != noFilter;
    const QString statement =
        "SELECT p.uuid, p.name, p.attributes, p.created_at, p.modified_at, "_L1 +
        (tagged ? "GROUP_CONCAT(t.name, ',') FROM personas p "
                  "LEFT JOIN persona_tags pt ON p.uuid = pt.persona_uuid LEFT JOIN tags t ON pt.tag_id = t.id "_L1
                : "'' FROM personas p "_L1) +
        (filtered ? "WHERE t.name = ? "_L1 : ""_L1) + "GROUP BY p.uuid"_L1;

    QSqlQuery query(database);
    bool done = query.prepare(statement);
    if (done) {
        if (filtered)
            query.addBindValue(filter);
        done = query.exec();
    }
    if (!done) {
        qWarning().noquote() << query.lastError().text();
        return false;
    }
    while (query.next())
        addPersonaRow(table, query);
    return true;
}
