#pragma once

#include <QLatin1StringView>

class QSqlDatabase;

/// True when the database has a table of this name; names are compared with case.
bool hasTable(const QSqlDatabase &database, QLatin1StringView name);
