#include "survey/history.h"

#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

QList<Exchange> readHistory(const QSqlDatabase &database, const QString &personaUuid)
{
    QList<Exchange> history;
    QSqlQuery query(database);
    query.prepare(u"SELECT q.prompt,r.text_answer FROM responses r JOIN questions q ON r.question_id=q.question_id "
                  "WHERE r.persona_uuid=? AND q.judge_question=0 ORDER BY r.created_at"_s);
    query.addBindValue(personaUuid);
    query.exec();
    while (query.next())
        history.append({.prompt = query.value(0).toString(), .answer = query.value(1).toString()});
    return history;
}
