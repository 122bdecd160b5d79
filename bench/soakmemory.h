#pragma once

#include "bench/soakcheck.h"
#include "standin/request.h"

class QSqlDatabase;
class QWidget;

// What each of the things that a long run fills takes, in bytes, made once more beside it and measured alone.

/// The rows of responses in a database in memory.
double rowsMemory(const QSqlDatabase &project);
/// The texts of the answers in a grid of this size whose cells were empty.
double gridMemory(int personas, int questions, const QList<SoakExchange> &exchanges);
/// The entries of the log in a plain view that is shown.
double logMemory(const QList<SoakExchange> &exchanges, const QStringList &warnings);
/// What the soak itself keeps: the endpoint's list of requests, and the exchanges.
double requestsMemory(const QList<standin::Request> &requests);
double exchangesMemory(const QList<SoakExchange> &exchanges);
