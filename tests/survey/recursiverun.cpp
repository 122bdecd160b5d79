#include "tests/survey/recursiverun.h"

#include "tests/support/surveystage.h"
#include "tests/survey/runtrace.h"

#include <QJsonArray>
#include <QSqlError>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

RecursiveRun::RecursiveRun(Sql &copy, Respondent answeredBy)
    : project(copy)
    , respondent(answeredBy)
{
}

void RecursiveRun::start()
{
    events.append(u"run off"_s);
    takeSnapshot();
    askNext();
}

void RecursiveRun::takeSnapshot()
{
    const Rows panel = project.rows(u"SELECT uuid,system_prompt,attributes FROM personas ORDER BY name"_s);
    for (const QVariantList &row : panel) {
        const QString systemPrompt = row.at(1).toString();
        personas.append(
            {.uuid = row.at(0).toString(), .text = systemPrompt.isEmpty() ? row.at(2).toString() : systemPrompt});
    }
    const Rows list = project.rows(u"SELECT question_id,prompt,answer_type FROM questions ORDER BY order_num"_s);
    for (const QVariantList &row : list)
        questions.append({.id = row.at(0).toInt(), .prompt = row.at(1).toString(), .type = row.at(2).toString()});
    preamble = project.value(u"SELECT preamble FROM boilerplate LIMIT 1"_s).toString();
    postamble = project.value(u"SELECT postamble FROM boilerplate LIMIT 1"_s).toString();
}

void RecursiveRun::askNext()
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

bool RecursiveRun::isOpen(const Persona &persona, const Question &question) const
{
    const QVariant count = project.value(u"SELECT COUNT(*) FROM responses WHERE persona_uuid=? AND question_id=?"_s,
                                         {persona.uuid, question.id});
    return count == 0;
}

QString RecursiveRun::messages(const Persona &persona, const Question &question) const
{
    QJsonArray all;
    QString system = preamble.isEmpty() ? QString() : QString(preamble + u'\n');
    system += persona.text;
    if (!postamble.isEmpty())
        system += (system.isEmpty() ? QString() : u"\n"_s) + postamble;
    if (!system.trimmed().isEmpty())
        all.append(turn(u"system"_s, system.trimmed()));
    const Rows history =
        project.rows(u"SELECT q.prompt,r.text_answer FROM responses r JOIN questions q ON r.question_id=q.question_id "
                     "WHERE r.persona_uuid=? AND q.judge_question=0 ORDER BY r.created_at"_s,
                     {persona.uuid});
    for (const QVariantList &row : history) {
        all.append(turn(u"user"_s, row.at(0).toString()));
        all.append(turn(u"assistant"_s, row.at(1).toString()));
    }
    all.append(turn(u"user"_s, question.prompt));
    return sentEntry(all);
}

void RecursiveRun::handleAnswer(const Persona &persona, const Question &question)
{
    static const QStringList choices{u"single_choice"_s, u"multi_choice"_s, u"likert"_s, u"ranking"_s};
    events.append(u"log <- test response"_s);
    {
        // It may be refused.
        QSqlQuery query(project.database());
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

void RecursiveRun::handleError()
{
    events.append(u"log ! OPENAI_API_KEY not set"_s);
    events.append(u"warning survey error: OPENAI_API_KEY not set"_s);
    ++questionIndex;
    askNext();
}

void RecursiveRun::finish()
{
    events.append(u"run on"_s);
    events.append(u"grid"_s);
}
