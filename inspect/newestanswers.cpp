#include "inspect/newestanswers.h"

#include <QSqlDatabase>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

NewestAnswers::NewestAnswers(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    query.setForwardOnly(true);
    // A value of another type never equals a text or a number that is looked up. Of answers of the same second the
    // oldest row comes first, as it does where SQLite sorts the rows of a single pair.
    query.exec(u"SELECT CAST(persona_uuid AS BLOB),question_id,text_answer,numeric_answer,json_answer FROM responses "
               "WHERE typeof(persona_uuid)='text' AND typeof(question_id)='integer' "
               "ORDER BY created_at DESC,rowid"_s);
    while (query.next()) {
        const std::pair pair(query.value(0).toByteArray(), query.value(1).toLongLong());
        if (!answers.contains(pair))
            answers.insert(pair, {.textAnswer = query.value(2).toString(),
                                  .numericAnswer = query.value(3),
                                  .jsonAnswer = query.value(4).toString()});
    }
}

ParsedAnswer NewestAnswers::find(const QString &personaUuid, int questionId) const
{
    // A persona without a uuid has no answers, since NULL equals nothing.
    if (personaUuid.isNull())
        return {};
    return answers.value({personaUuid.toUtf8(), questionId});
}
