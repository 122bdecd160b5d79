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

namespace {

/// What a row of the list shows.
struct PersonaRow
{
    QString uuid;
    QString name;
    QString attributes;
    QString createdAt;
    QString modifiedAt;
    QString tags;
};

} // namespace

static QList<PersonaRow> readPersonaRows(QSqlQuery &query)
{
    QList<PersonaRow> rows;
    while (query.next())
        rows.append({.uuid = query.value(0).toString(),
                     .name = query.value(1).toString(),
                     .attributes = query.value(2).toString(),
                     .createdAt = query.value(3).toString(),
                     .modifiedAt = query.value(4).toString(),
                     .tags = query.value(5).toString()});
    return rows;
}

static void fillPersonaRow(QTableWidget *table, int row, const PersonaRow &persona)
{
    table->setItem(row, PersonaColumn::Name, new QTableWidgetItem(persona.name));
    auto *uuidItem = new QTableWidgetItem(persona.uuid.left(8));
    uuidItem->setData(Qt::UserRole, persona.uuid);
    table->setItem(row, PersonaColumn::Uuid, uuidItem);
    table->setItem(row, PersonaColumn::Tags, new QTableWidgetItem(persona.tags));
    auto *narrative = new QPlainTextEdit(persona.attributes);
    narrative->setReadOnly(true);
    narrative->setFixedHeight(60);
    table->setCellWidget(row, PersonaColumn::Narrative, narrative);
    table->setItem(row, PersonaColumn::Created, new QTableWidgetItem(persona.createdAt));
    table->setItem(row, PersonaColumn::Modified, new QTableWidgetItem(persona.modifiedAt));
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
    const QList<PersonaRow> rows = readPersonaRows(query);
    // All rows before the first cell widget: a row inserted later lets the view place all the widgets anew.
    table->setRowCount(static_cast<int>(rows.size()));
    for (int row = 0; row < rows.size(); ++row)
        fillPersonaRow(table, row, rows.at(row));
    return true;
}
