#pragma once

#include <QString>

class QComboBox;
class QSqlDatabase;
class QTableWidget;

/// The columns of the persona list. The item of column Uuid displays the first 8 characters and holds the whole uuid
/// as its Qt::UserRole data, which is how a row is traced to its persona.
namespace PersonaColumn {
enum : int { Name, Uuid, Tags, Narrative, Created, Modified };
}

void clearPersonaTable(QTableWidget *table);

/// The whole uuid of a row of the persona list.
QString personaUuid(const QTableWidget *table, int row);

/// Refills the tag chooser with "All" and the names of the table tags, where @p tagged says that there is one, and
/// returns the text that it showed before. The chooser emits nothing meanwhile.
QString refillTagFilter(QComboBox *chooser, const QSqlDatabase &database, bool tagged);

/// Adds a row for each persona of a project or pack that bears the tag @p filter, for each persona where that is empty
/// or "All". A filter narrows the Tags column to that tag. A failing statement is logged and gives false.
bool fillPersonaTable(QTableWidget *table, const QSqlDatabase &database, bool tagged, const QString &filter);
