#pragma once

#include "survey/requestassembly.h"

class QSqlDatabase;

/// What a persona has answered so far, in the order of the answers. Only texts are replayed, and no adjudicated
/// question. A failing statement gives an empty list.
QList<Exchange> readHistory(const QSqlDatabase &database, const QString &personaUuid);
