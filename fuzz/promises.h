#pragma once

#include <QStringList>

/// Notes that a promise is broken unless it @p holds.
void promise(bool holds, const char *what);
/// The same, with what was found in place of it.
void promise(bool holds, const char *what, const QString &found);

/// What was broken since the last call.
QStringList takeBrokenPromises();
