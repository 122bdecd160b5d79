#include "bridge/personarun.h"

#include "project/boilerplate.h"
#include "project/schemascript.h"
#include "survey/surveyrunner.h"

#include <QSqlQuery>

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
    kept();
    return true;
}

void PersonaRun::start()
{
    auto *runner = new SurveyRunner(nullptr, database, nullptr, this);
    connect(runner, &SurveyRunner::finished, this, &PersonaRun::finished);
    runner->start();
}

QList<StoredAnswer> PersonaRun::newAnswers() const
{
    QSqlQuery query(database);
    query.prepare(u"SELECT persona_uuid, question_id, text_answer, numeric_answer, json_answer, created_at "
                  "FROM responses WHERE id > ? ORDER BY id"_s);
    query.addBindValue(lastKept);
    query.exec();
    QList<StoredAnswer> answers;
    while (query.next())
        answers.append(
            {query.value(0), query.value(1), query.value(2), query.value(3), query.value(4), query.value(5)});
    return answers;
}

void PersonaRun::kept()
{
    lastKept = newestAnswer();
}

qint64 PersonaRun::newestAnswer() const
{
    QSqlQuery query(u"SELECT MAX(id) FROM responses"_s, database);
    return query.next() ? query.value(0).toLongLong() : 0;
}

} // namespace bridge
