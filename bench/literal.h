#pragma once

#include <QStringList>

class QSqlDatabase;
class QTableWidget;

// The plain ways of doing what the program does in other ways, to measure it against.

/// Rebuilds the grid with a statement for each pair of cells, the header fitting its sections to their contents all
/// the time.
void rebuildLiterally(QTableWidget *table, const QSqlDatabase &database);

/// Rebuilds a grid from texts that are at hand, with the header as the program treats it: what the table widget costs
/// by itself.
void rebuildFrom(QTableWidget *table, const QStringList &titles, const QList<QStringList> &rows);

/// Counts the answers of every @p step th pair, with a statement for each.
void countAnswers(const QSqlDatabase &database, int step);
