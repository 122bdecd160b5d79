#include "inspect/newestanswers.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

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
            place = shown({.textAnswer = query.value(2).toString(),
                           .numericAnswer = query.value(3),
                           .jsonAnswer = query.value(4).toString()});
        else if (order == Order::AsTheyStand)
            return false;
    }
    return true;
}

ShownAnswer NewestAnswers::shown(const ParsedAnswer &answer)
{
    ShownAnswer texts{.answer = displayValue(answer), .reasoning = {}};
    if (const QString *known = reasonings.object(answer.jsonAnswer)) {
        texts.reasoning = *known;
    } else {
        texts.reasoning = reasoning(answer);
        reasonings.insert(answer.jsonAnswer, new QString(texts.reasoning));
    }
    return texts;
}

NewestAnswers::ByQuestion NewestAnswers::of(const QString &personaUuid)
{
    // A persona without a uuid has no answers, since NULL equals nothing.
    if (personaUuid.isNull())
        return {};
    return answers.value(toBytes.of(personaUuid));
}
