#pragma once

#include "bench/soakreplies.h"

#include <QStringList>

class Survey;

/// A pair that was asked in a run.
struct SoakExchange
{
    int persona = 0;
    int question = 0;
    QByteArray request;               ///< the body that was sent first
    QStringList replies;              ///< what was replied to it, by name
    std::optional<SoakAnswer> answer; ///< nothing where the pair stayed open
};

/// What a soak found wrong, told as it is found.
class Complaints
{
public:
    void add(const QString &complaint);
    int count() const { return number; }

private:
    int number = 0;
};

// What the program holds and shows against what the endpoint did, all runs taken together, in order.

/// The rows of responses are the answers.
void checkRows(const Survey &survey, const QList<SoakExchange> &exchanges, Complaints &complaints);
/// The grid shows each answer in its cells, and nothing elsewhere.
void checkGrid(Survey &survey, const QList<SoakExchange> &exchanges, Complaints &complaints);
/// The log holds the entries of each exchange once. @p warnings are the failures that were told to Qt's logging.
void checkLog(Survey &survey, const QList<SoakExchange> &exchanges, const QStringList &warnings,
              Complaints &complaints);

/// The entries that an exchange makes in the log, a failed one's with @p failure.
QStringList logEntries(const SoakExchange &exchange, const QString &failure);
/// The text by which the grid shows an answer.
QString shownText(const SoakAnswer &answer);
