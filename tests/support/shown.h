#pragma once

#include "tests/support/stage.h"

class QComboBox;
class QGroupBox;
class QPlainTextEdit;
class QSqlTableModel;
class QTableView;
class QTableWidget;
class QAbstractItemView;
class QModelIndex;

// What a window shows, read as a user reads it.

QTableWidget *personaTable(Stage &stage);
QTableWidget *resultsTable(Stage &stage);
QTableView *questionView(Stage &stage);
QComboBox *tagFilter(Stage &stage);
QPlainTextEdit *preambleEdit(Stage &stage);
QPlainTextEdit *postambleEdit(Stage &stage);
/// The model of the question list, or null.
QSqlTableModel *questionModel(Stage &stage);

/// The conversation box, used as a user does.
struct ConversationBox
{
    explicit ConversationBox(Stage &stage);

    QGroupBox *group;
    QComboBox *persona;
    QComboBox *question;
    QPushButton *showButton;
    QPlainTextEdit *view;

    QString text() const;
    /// Presses "Show" and gives what is shown then.
    QString show() const;
    /// The same after choosing by the texts in the choosers.
    QString show(const QString &personaName, const QString &number) const;
};

/// The texts of a table's cells, row by row; a cell without an item reads as null.
QList<QStringList> cells(const QTableWidget *table);
/// One column of a table from top to bottom.
QStringList columnTexts(const QTableWidget *table, int column);
/// One column of the question list from top to bottom.
QStringList columnTexts(Stage &stage, const QString &field);
/// The titles of columns or rows.
QStringList titles(const QTableWidget *table, Qt::Orientation orientation = Qt::Horizontal);
/// The entries of a chooser.
QStringList items(const QComboBox *chooser);
/// The names in the persona list, sorted.
QStringList shownPersonas(Stage &stage);

/// Makes the row of a persona the current one; false where the list does not show it.
bool makeCurrent(Stage &stage, const QString &uuid);

/// While it lives, a refresh of the view does not pass through the boilerplate slots, which mark the project as changed
/// at every refresh. What is marked then has been marked by the operation itself.
class QuietRefresh
{
public:
    explicit QuietRefresh(Stage &stage);

private:
    QSignalBlocker preamble;
    QSignalBlocker postamble;
};

/// Refreshes the views from the database and leaves the flag of unsaved changes as it was.
void refreshQuietly(Stage &stage);

/// From here on each refresh builds the results grid anew, which shows as a reset of its model, instead of entering
/// the new answers into it: for tests of when a refresh comes.
void keepGridRebuilt(Stage &stage);

/// Refreshes the results grid and gives it.
QTableWidget *refreshedGrid(Stage &stage);

/// Double-clicks a cell, in a window that is shown for it: the view counts that only on a cell that was pressed before.
void doubleClick(QAbstractItemView *view, const QModelIndex &index);
