#include "tests/support/entries.h"

using namespace Qt::StringLiterals;

bool enter(Sql &database, const PersonaEntered &persona)
{
    bool done = database.exec(u"INSERT INTO personas (uuid, name, attributes, system_prompt, notes, created_at, "
                              "modified_at) VALUES (?,?,?,?,?,?,?)"_s,
                              {persona.uuid, persona.name, persona.attributes, persona.systemPrompt, persona.notes,
                               persona.createdAt, persona.modifiedAt});
    for (const QString &tag : persona.tags)
        done = enterTag(database, persona.uuid.toString(), tag) && done;
    return done;
}

bool enter(Sql &database, const QuestionEntered &question)
{
    return database.exec(
        u"INSERT INTO questions (question_id, order_num, prompt, answer_type, labels, reasoning_required, "
        "judge_question, ask_when, serial, created_at, modified_at) "
        "SELECT ?, IFNULL(?, IFNULL(MAX(order_num), 0) + 1), ?, ?, ?, ?, ?, 'always', 1, '2001-02-03 04:05:06', "
        "'2001-02-03 04:05:06' FROM questions"_s,
        {question.id, question.order, question.prompt, question.type, question.labels, question.reasoning,
         question.judge});
}

bool enter(Sql &database, const AnswerEntered &answer)
{
    return database.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer, numeric_answer, json_answer, "
                         "created_at) VALUES (?,?,?,?,?,?)"_s,
                         {answer.persona, answer.question, answer.text, answer.number, answer.json, answer.createdAt});
}

bool enter(Sql &database, const TagEntered &tag)
{
    return database.exec(u"INSERT INTO tags (id, name) VALUES (?,?)"_s, {tag.id, tag.name});
}

bool enter(Sql &database, const LinkEntered &link)
{
    return database.exec(u"INSERT INTO persona_tags (persona_uuid, tag_id) VALUES (?,?)"_s, {link.persona, link.tag});
}

bool enterTag(Sql &database, const QString &uuid, const QString &tag)
{
    return database.exec(u"INSERT OR IGNORE INTO tags (name) VALUES (?)"_s, {tag}) &&
           database.exec(u"INSERT INTO persona_tags SELECT ?, id FROM tags WHERE name = ?"_s, {uuid, tag});
}

bool enterQuestions(Sql &database, int number)
{
    return database.exec(u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
                         "INSERT INTO questions (order_num, prompt, answer_type, reasoning_required, judge_question, "
                         "ask_when, serial, created_at, modified_at) "
                         "SELECT i, 'Question ' || i, 'text', 0, 0, 'always', 1, '2001-02-03 04:05:06', "
                         "'2001-02-03 04:05:06' FROM n"_s,
                         {number});
}

bool setBoilerplate(Sql &database, const QVariant &preamble, const QVariant &postamble)
{
    return database.exec(u"DELETE FROM boilerplate"_s) &&
           database.exec(u"INSERT INTO boilerplate (preamble, postamble) VALUES (?,?)"_s, {preamble, postamble});
}

bool enterBeekeeper(Sql &database, const QString &uuid, const QString &name, const QStringList &tags)
{
    return enter(database,
                 PersonaEntered{.uuid = uuid,
                                .name = name,
                                .attributes = u"keeps bees"_s,
                                .systemPrompt = u"You keep bees."_s,
                                .notes = u"by hand"_s,
                                .tags = tags},
                 AnswerEntered{.persona = uuid, .question = 1, .text = u"honey"_s});
}

QString newestUuid(Sql &database)
{
    return database.value(u"SELECT uuid FROM personas ORDER BY rowid DESC"_s).toString();
}

QStringList tagsOf(Sql &database, const QString &uuid)
{
    return database.column(u"SELECT t.name FROM persona_tags pt JOIN tags t ON t.id = pt.tag_id "
                           "WHERE pt.persona_uuid = ? ORDER BY pt.rowid"_s,
                           {uuid});
}

QStringList knownTags(Sql &database)
{
    return database.column(u"SELECT name FROM tags ORDER BY id"_s);
}
