#include "bridge/personarun.h"

#include "project/boilerplate.h"
#include "project/schemascript.h"
#include "survey/surveyrunner.h"

using namespace Qt::StringLiterals;

namespace bridge {

PersonaRun::PersonaRun(QObject *parent)
    : QObject(parent)
{
    static int count = 0;
    name = u"persona-%1"_s.arg(++count);
    database = QSqlDatabase::addDatabase(u"QSQLITE"_s, name);
    database.setDatabaseName(u":memory:"_s);
    database.open();
    runSchemaScript(database);
}

PersonaRun::~PersonaRun()
{
    // The runner holds a copy of the handle.
    qDeleteAll(findChildren<SurveyRunner *>());
    answersBehind.reset();
    database = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

bool PersonaRun::fill(const AnswerFile &file, qint64 persona)
{
    if (!database.isOpen() || !file.fill(database, persona))
        return false;
    // What the window takes where a project has none.
    if (!readBoilerplate(database))
        insertDefaultBoilerplate(database);
    QSqlQuery newest(u"SELECT MAX(id) FROM responses"_s, database);
    lastRead = newest.next() ? newest.value(0).toLongLong() : 0;
    kept();
    answersBehind.emplace(database);
    return answersBehind->prepare(u"SELECT id, persona_uuid, question_id, text_answer, numeric_answer, json_answer, "
                                  "created_at FROM responses WHERE id > ? ORDER BY id"_s);
}

void PersonaRun::start()
{
    auto *runner = new SurveyRunner(nullptr, database, nullptr, this);
    connect(runner, &SurveyRunner::finished, this, &PersonaRun::finished);
    runner->start();
}

QList<StoredAnswer> PersonaRun::newAnswers()
{
    QSqlQuery &query = *answersBehind;
    query.bindValue(0, lastKept);
    query.exec();
    QList<StoredAnswer> answers;
    while (query.next()) {
        lastRead = query.value(0).toLongLong();
        answers.append(
            {query.value(1), query.value(2), query.value(3), query.value(4), query.value(5), query.value(6)});
    }
    query.finish();
    return answers;
}

} // namespace bridge
