#pragma once

#include <QString>

class QSqlDatabase;

/// Why a file is not what the program saves, empty where it is: a trigger or view in it, or a table of a survey that is
/// missing or has other columns.
QString projectFlaw(const QSqlDatabase &file);
