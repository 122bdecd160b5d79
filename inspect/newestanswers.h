#pragma once

#include "project/textbytes.h"
#include "survey/answers.h"

#include <QByteArray>
#include <QCache>
#include <QHash>
#include <QString>

class QSqlDatabase;

/// The two texts by which an answer is shown.
struct ShownAnswer
{
    QString answer;
    QString reasoning;
};

/// The reasoning by the JSON that it was parsed from: a refresh meets all the answers of the last refresh again.
using ReasoningCache = QCache<QString, QString>;

/// An answer as it is stored.
struct StoredAnswer
{
    /// Persona and question are of the types that a grid looks up; of no pair otherwise.
    bool isOfPair = false;
    QByteArray personaUuid;
    qint64 questionId = 0;
    ShownAnswer shown;
};

/// The answers with an id above this one.
QList<StoredAnswer> answersBehind(const QSqlDatabase &database, qint64 id, ReasoningCache &known);

/// The newest answer of each persona to each question, read in one pass: what
/// "SELECT ... FROM responses WHERE persona_uuid=? AND question_id=? ORDER BY created_at DESC LIMIT 1"
/// would give for each pair, at the cost of one statement. Holds nothing where the table can't be read.
class NewestAnswers
{
public:
    using ByQuestion = QHash<qint64, ShownAnswer>;

    NewestAnswers(const QSqlDatabase &database, ReasoningCache &known);

    /// The answers of a persona, by the ids of the questions.
    ByQuestion of(const QString &personaUuid);

private:
    enum class Order { AsTheyStand, NewestFirst };
    bool read(const QSqlDatabase &database, Order order);
    TextBytes toBytes;
    ReasoningCache &reasonings;
    /// By the bytes of the uuid, so that no two different texts become equal on the way.
    QHash<QByteArray, ByQuestion> answers;
};
