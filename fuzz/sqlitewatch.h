#pragma once

#include <QSqlDatabase>
#include <QStringList>

/// Watches and bounds what SQLite does in this process, on each connection that is opened after the first call of any
/// function here: also on those that the program opens and closes within one call. Without SQLite's library in reach,
/// where Qt's driver brings its own, nothing is watched and nothing bounded.
namespace SqliteWatch {

/// Lets all connections together take so many steps from now on, roughly; behind them statements fail as interrupted.
void allow(qint64 steps);
/// They have been taken.
bool ranOut();
/// How many have been.
qint64 stepsTaken();

/// From here on every statement is looked at: only those of the connection @p project may write, only to its own
/// database, and no trigger or view may be what writes.
void begin(const QSqlDatabase &project);
/// Ends that, and gives what was against it.
QStringList end();

} // namespace SqliteWatch
