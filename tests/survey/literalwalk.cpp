#include "tests/survey/literalwalk.h"

#include "tests/survey/walkkit.h"

#include <QSqlError>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

LiteralWalk::LiteralWalk(const QSqlDatabase &database, Respondent answeredBy)
    : db(database)
    , respondent(answeredBy)
{
}

void LiteralWalk::run()
{
    events.append(u"run off"_s);
    takeSnapshot();
    askNext();
}

void LiteralWalk::takeSnapshot()
{
    QSqlQuery query(db);
    query.exec(u"SELECT uuid,system_prompt,attributes FROM personas ORDER BY name"_s);
    while (query.next()) {
        const QString systemPrompt = query.value(1).toString();
        personas.append({.uuid = query.value(0).toString(),
                         .text = systemPrompt.isEmpty() ? query.value(2).toString() : systemPrompt});
    }
    query.exec(u"SELECT question_id,prompt,answer_type FROM questions ORDER BY order_num"_s);
    while (query.next())
        questions.append(
            {.id = query.value(0).toInt(), .prompt = query.value(1).toString(), .type = query.value(2).toString()});
    query.exec(u"SELECT preamble,postamble FROM boilerplate LIMIT 1"_s);
    if (query.next()) {
        preamble = query.value(0).toString();
        postamble = query.value(1).toString();
    }
}

void LiteralWalk::askNext()
{
    for (; personaIndex < personas.size(); ++personaIndex, questionIndex = 0) {
        for (; questionIndex < questions.size(); ++questionIndex) {
            const Persona &persona = personas.at(personaIndex);
            const Question &question = questions.at(questionIndex);
            if (!isOpen(persona, question))
                continue;
            asked.append({persona.uuid, question.id});
            events.append("log "_L1 + messages(persona, question));
            if (respondent == Respondent::TestMode)
                handleAnswer(persona, question);
            else
                handleError();
            return;
        }
    }
    finish();
}

bool LiteralWalk::isOpen(const Persona &persona, const Question &question) const
{
    QSqlQuery query(db);
    query.prepare(u"SELECT COUNT(*) FROM responses WHERE persona_uuid=? AND question_id=?"_s);
    query.addBindValue(persona.uuid);
    query.addBindValue(question.id);
    return query.exec() && query.next() && query.value(0).toInt() == 0;
}

QString LiteralWalk::messages(const Persona &persona, const Question &question) const
{
    QList<std::pair<QString, QString>> all;
    QString system = preamble.isEmpty() ? QString() : QString(preamble + u'\n');
    system += persona.text;
    if (!postamble.isEmpty())
        system += (system.isEmpty() ? QString() : u"\n"_s) + postamble;
    if (!system.trimmed().isEmpty())
        all.append({u"system"_s, system.trimmed()});
    QSqlQuery query(db);
    query.prepare(u"SELECT q.prompt,r.text_answer FROM responses r JOIN questions q ON r.question_id=q.question_id "
                  "WHERE r.persona_uuid=? AND q.judge_question=0 ORDER BY r.created_at"_s);
    query.addBindValue(persona.uuid);
    query.exec();
    while (query.next()) {
        all.append({u"user"_s, query.value(0).toString()});
        all.append({u"assistant"_s, query.value(1).toString()});
    }
    all.append({u"user"_s, question.prompt});
    return sent(all);
}

void LiteralWalk::handleAnswer(const Persona &persona, const Question &question)
{
    static const QStringList choices{u"single_choice"_s, u"multi_choice"_s, u"likert"_s, u"ranking"_s};
    events.append(u"log <- test response"_s);
    {
        QSqlQuery query(db);
        query.prepare(u"INSERT INTO responses (persona_uuid, question_id, %1, created_at) "
                      "VALUES (?,?,'test response',CURRENT_TIMESTAMP)"_s.arg(
                          choices.contains(question.type) ? "json_answer"_L1 : "text_answer"_L1));
        query.addBindValue(persona.uuid);
        query.addBindValue(question.id);
        if (!query.exec())
            events.append("warning insert failed "_L1 + query.lastError().text());
    }
    events.append(u"grid"_s);
    ++questionIndex;
    askNext();
}

void LiteralWalk::handleError()
{
    events.append(u"log ! OPENAI_API_KEY not set"_s);
    events.append(u"warning survey error: OPENAI_API_KEY not set"_s);
    ++questionIndex;
    askNext();
}

void LiteralWalk::finish()
{
    events.append(u"run on"_s);
    events.append(u"grid"_s);
}
