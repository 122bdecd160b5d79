#pragma once

#include <QStringList>

class QSqlDatabase;

/// Makes the tables of a project in a database that has none. Returns what the driver says of each statement that
/// failed; the others are carried out all the same.
QStringList runSchemaScript(const QSqlDatabase &database);
