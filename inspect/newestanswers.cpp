#include "inspect/newestanswers.h"

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

NewestAnswers::NewestAnswers(const QSqlDatabase &database)
    : toBytes(database)
{
    toBytes.prepare(u"SELECT CAST(? AS BLOB)"_s);
    read(database);
}

void NewestAnswers::read(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    query.setForwardOnly(true);
    // A value of another type never equals a text or a number that is looked up. Of answers of the same second the
    // oldest row comes first, as it does where SQLite sorts the rows of a single pair.
    query.exec(u"SELECT CAST(persona_uuid AS BLOB),question_id,text_answer,numeric_answer,json_answer FROM responses "
               "WHERE typeof(persona_uuid)='text' AND typeof(question_id)='integer' "
               "ORDER BY created_at DESC,rowid"_s);
    QByteArray uuid;
    ByQuestion *own = nullptr;
    while (query.next()) {
        const QByteArray rowUuid = query.value(0).toByteArray();
        // A run answers persona by persona, so that mostly the row before was the same one's.
        if (own == nullptr || rowUuid != uuid) {
            uuid = rowUuid;
            own = &answers[uuid];
        }
        const qsizetype known = own->size();
        ParsedAnswer &answer = (*own)[query.value(1).toLongLong()];
        if (own->size() > known)
            answer = {.textAnswer = query.value(2).toString(),
                      .numericAnswer = query.value(3),
                      .jsonAnswer = query.value(4).toString()};
    }
}

NewestAnswers::ByQuestion NewestAnswers::of(const QString &personaUuid)
{
    // A persona without a uuid has no answers, since NULL equals nothing.
    if (personaUuid.isNull())
        return {};
    toBytes.bindValue(0, personaUuid);
    const bool found = toBytes.exec() && toBytes.next();
    const QByteArray bytes = found ? toBytes.value(0).toByteArray() : QByteArray();
    toBytes.finish();
    return answers.value(bytes);
}
