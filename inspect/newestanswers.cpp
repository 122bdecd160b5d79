#include "inspect/newestanswers.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

/// The texts of the columns text_answer, numeric_answer and json_answer, of which the first is given.
static ShownAnswer shownFrom(const QSqlQuery &query, int firstColumn, ReasoningCache &known)
{
    const ParsedAnswer answer{.textAnswer = query.value(firstColumn).toString(),
                              .numericAnswer = query.value(firstColumn + 1),
                              .jsonAnswer = query.value(firstColumn + 2).toString()};
    ShownAnswer shown{.answer = displayValue(answer), .reasoning = {}};
    if (const QString *parsed = known.object(answer.jsonAnswer)) {
        shown.reasoning = *parsed;
    } else {
        shown.reasoning = reasoning(answer);
        known.insert(answer.jsonAnswer, new QString(shown.reasoning));
    }
    return shown;
}

QList<StoredAnswer> answersBehind(const QSqlDatabase &database, qint64 id, ReasoningCache &known)
{
    QList<StoredAnswer> answers;
    QSqlQuery query(database);
    query.setForwardOnly(true);
    query.prepare(u"SELECT persona_uuid<x'' AND typeof(question_id)='integer',CAST(persona_uuid AS BLOB),question_id,"
                  "text_answer,numeric_answer,json_answer FROM responses WHERE id>?"_s);
    query.addBindValue(id);
    query.exec();
    while (query.next())
        answers.append({.isOfPair = query.value(0).toBool(),
                        .personaUuid = query.value(1).toByteArray(),
                        .questionId = query.value(2).toLongLong(),
                        .shown = shownFrom(query, 3, known)});
    return answers;
}

NewestAnswers::NewestAnswers(const QSqlDatabase &database, ReasoningCache &known)
    : toBytes(database)
    , reasonings(known)
{
    // A run asks each pair once, so that mostly there is one answer to each and no order to look for.
    if (!read(database, Order::AsTheyStand)) {
        answers.clear();
        read(database, Order::NewestFirst);
    }
}

/// Keeps the first answer to each pair. False, and not all is read, where a pair has another one and the order does not
/// tell which of them counts.
bool NewestAnswers::read(const QSqlDatabase &database, Order order)
{
    QSqlQuery query(database);
    query.setForwardOnly(true);
    // Only texts and integers equal a text or a number that is looked up; texts are what sorts before all blobs. Of
    // answers of the same second the oldest row comes first, as it does where SQLite sorts the rows of a single pair.
    // A table without created_at can't be read, ordered or not.
    query.exec("SELECT CAST(persona_uuid AS BLOB),question_id,text_answer,numeric_answer,json_answer FROM responses "
               "WHERE persona_uuid<x'' AND (TRUE OR created_at)"_L1 +
               (order == Order::NewestFirst ? " ORDER BY created_at DESC,rowid"_L1 : ""_L1));
    QByteArray uuid;
    ByQuestion *own = nullptr;
    while (query.next()) {
        const QVariant questionId = query.value(1);
        if (questionId.typeId() != QMetaType::LongLong)
            continue;
        const QByteArray rowUuid = query.value(0).toByteArray();
        // A run answers persona by persona, so that mostly the row before was the same one's.
        if (own == nullptr || rowUuid != uuid) {
            uuid = rowUuid;
            own = &answers[uuid];
        }
        const qsizetype answered = own->size();
        ShownAnswer &place = (*own)[questionId.toLongLong()];
        if (own->size() > answered)
            place = shownFrom(query, 2, reasonings);
        else if (order == Order::AsTheyStand)
            return false;
    }
    return true;
}

NewestAnswers::ByQuestion NewestAnswers::of(const QString &personaUuid)
{
    // A persona without a uuid has no answers, since NULL equals nothing.
    if (personaUuid.isNull())
        return {};
    return answers.value(toBytes.of(personaUuid));
}
