#include "survey/surveyentries.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

QList<PersonaEntry> readPersonas(const QSqlDatabase &database)
{
    QList<PersonaEntry> personas;
    QSqlQuery query(database);
    query.exec(u"SELECT uuid,name,system_prompt,attributes FROM personas ORDER BY name"_s);
    while (query.next()) {
        personas.append({.uuid = query.value(0).toString(),
                         .name = query.value(1).toString(),
                         .systemPrompt = query.value(2).toString(),
                         .attributes = query.value(3).toString()});
    }
    return personas;
}

QList<QuestionEntry> readQuestions(const QSqlDatabase &database)
{
    QList<QuestionEntry> questions;
    QSqlQuery query(database);
    query.exec(u"SELECT question_id,prompt,judge_question,answer_type,labels,reasoning_required FROM questions "
               "ORDER BY order_num"_s);
    while (query.next()) {
        questions.append({.id = query.value(0).toInt(),
                          .prompt = query.value(1).toString(),
                          .judge = query.value(2).toInt() != 0,
                          .answerType = query.value(3).toString(),
                          .labels = query.value(4).toString(),
                          .reasoningRequired = query.value(5).toInt() != 0});
    }
    return questions;
}
