#pragma once

#include <QMainWindow>

class QSqlDatabase;
class QTableWidget;

/// A window like the program's, with a plain table in the place of the results grid: rebuilt to the letter at each
/// refresh, it is what the grid has to look like.
class GridTwin : public QMainWindow
{
public:
    /// @p original is the window that it is laid out like.
    explicit GridTwin(const QMainWindow *original);

    QTableWidget *table() const { return grid; }
    /// Builds the grid anew, with a statement for each pair of cells.
    void refresh(const QSqlDatabase &database);

private:
    QTableWidget *grid;
};

/// The first item, title or cell, that two grids don't have alike; empty if there is none. Both are of one size.
QString differentItem(const QTableWidget *left, const QTableWidget *right);

/// How two grids differ in what can be seen of them and read from them; empty if they don't.
QString differenceOf(QTableWidget *left, QTableWidget *right, bool withPicture);
