#pragma once

#include <QString>

class QSqlDatabase;

/// The names of a persona's tags, sorted and joined for editing; empty where there are none or none can be read.
QString personaTagText(const QSqlDatabase &database, const QString &uuid);
