#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

class QSqlDatabase;

/// Counts, for each answer type, the pairs of persona and question that are answered and the columns that the answers
/// fill, and notes every pair that is not answered just as its type asks for.
class AnswerCheck
{
public:
    /// @p wanted is the number of pairs that the project should hold.
    AnswerCheck(const QSqlDatabase &project, qsizetype wanted);

    /// The counts as lines of a table, in the order in which the types are offered.
    QStringList table() const;
    /// An item for each flaw, empty when all is well.
    const QStringList &flaws() const { return found; }

private:
    struct Filled
    {
        bool text = false;
        bool numeric = false;
        bool json = false;

        bool operator==(const Filled &) const = default;
    };
    struct Tally
    {
        int answers = 0;
        int text = 0;
        int numeric = 0;
        int json = 0;
    };

    static Filled columnsFor(const QString &type);
    static QString columnNames(const Filled &filled);
    void count(const QString &type, const Filled &filled);

    QHash<QString, Tally> tallies;
    QStringList found;
};
