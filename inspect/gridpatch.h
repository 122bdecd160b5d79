#pragma once

#include "inspect/newestanswers.h"

#include <QBitArray>
#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

#include <optional>

class QSqlDatabase;
class ResultsTable;

/// A persona of the grid, a row, and a question, two columns.
struct ResultPersona
{
    QString uuid;
    QString name;
};
struct ResultQuestion
{
    int id = 0;
    QString prompt;
};

/// Brings a grid up to date after new answers without building it anew, where it is certain that this ends the same:
/// where the database differs from that of the last refresh by new answers to open pairs alone, and nobody has touched
/// the table since. A rebuilding would undo whatever was done to it.
///
/// Certain is: SQLite counts every inserted, changed and deleted row of the connection; a table that was dropped and
/// made again is empty or has another text; and what is remembered was seen outside of any transaction, so that no
/// rollback goes back before it.
class GridPatch : public QObject
{
    Q_OBJECT

public:
    explicit GridPatch(ResultsTable *grid);

    /// Enters the answers that are new; false, and nothing is changed, where the grid has to be rebuilt.
    bool apply(const QSqlDatabase &database, ReasoningCache &known);

    /// While it lives, what happens to the table is the rebuilding's doing.
    class Rebuilding
    {
    public:
        explicit Rebuilding(GridPatch &which);
        ~Rebuilding();
        Q_DISABLE_COPY_MOVE(Rebuilding)

    private:
        GridPatch &patch;
    };

    /// Remembers what the grid has just been filled from: its rows and columns, and which of the pairs, row by row,
    /// have an answer.
    void remember(const QSqlDatabase &database, const QList<ResultPersona> &personas,
                  const QList<ResultQuestion> &questions, const QBitArray &answeredPairs);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// What tells that the database is as it was.
    struct Fingerprint
    {
        QString schema;
        qint64 changes = 0;
        qint64 lastAnswer = 0;
        qint64 answers = 0;
        qint64 personas = 0;
        qint64 questions = 0;
    };
    struct NewCell
    {
        int row;
        int question;
        ShownAnswer shown;
    };

    void watch();
    void touch();
    bool isUntouched() const;
    static std::optional<Fingerprint> fingerprint(const QSqlDatabase &database);
    std::optional<QList<NewCell>> newCells(const QSqlDatabase &database, ReasoningCache &known, qint64 expected) const;
    void enter(const QList<NewCell> &cells);

    ResultsTable *table;
    /// Nothing where the next refresh has to rebuild.
    std::optional<Fingerprint> seen;
    bool working = false;
    QHash<QByteArray, QList<int>> rowsOf; ///< by the bytes of the uuid
    QList<int> questionIds;
    QBitArray answered;
};
