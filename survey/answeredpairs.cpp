#include "survey/answeredpairs.h"

#include <QSqlQuery>
#include <QVariant>

using namespace Qt::StringLiterals;

/// Each statement goes over the whole table, and the one for all costs about as much as so many for one: a run that
/// goes on with the next persona never needs it, and a finished survey is not read a thousand times.
static constexpr int mostSingleReads = 8;

AnsweredPairs::AnsweredPairs(const QSqlDatabase &database)
    : db(database)
    , toBytes(database)
{
}

std::optional<AnsweredPairs::Questions> AnsweredPairs::of(const QString &personaUuid)
{
    if (!all && personasRead < mostSingleReads) {
        ++personasRead;
        return readOne(personaUuid);
    }
    if (!all)
        all = readAll();
    if (!all)
        return std::nullopt;
    // NULL equals nothing.
    return personaUuid.isNull() ? Questions() : all->value(toBytes.of(personaUuid));
}

std::optional<AnsweredPairs::Questions> AnsweredPairs::readOne(const QString &personaUuid) const
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(u"SELECT question_id FROM responses WHERE persona_uuid=? AND typeof(question_id)='integer'"_s);
    query.addBindValue(personaUuid);
    if (!query.exec())
        return std::nullopt;
    Questions answered;
    while (query.next())
        answered.insert(query.value(0).toLongLong());
    return answered;
}

std::optional<AnsweredPairs::ByPersona> AnsweredPairs::readAll() const
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(u"SELECT CAST(persona_uuid AS BLOB),question_id FROM responses "
                    "WHERE typeof(persona_uuid)='text' AND typeof(question_id)='integer'"_s))
        return std::nullopt;
    ByPersona answered;
    while (query.next())
        answered[query.value(0).toByteArray()].insert(query.value(1).toLongLong());
    return answered;
}
