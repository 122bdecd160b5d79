#include "demo/answercheck.h"

#include "questions/answertypes.h"

#include <QSqlError>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

AnswerCheck::AnswerCheck(const QSqlDatabase &project, qsizetype wanted)
{
    QSqlQuery query(project);
    if (!query.exec(u"SELECT p.name, q.order_num, q.answer_type, r.id IS NOT NULL, "
                    "r.text_answer <> '', r.numeric_answer IS NOT NULL, r.json_answer <> '' "
                    "FROM personas p CROSS JOIN questions q "
                    "LEFT JOIN responses r ON r.persona_uuid = p.uuid AND r.question_id = q.question_id "
                    "ORDER BY p.name, q.order_num"_s))
        found << query.lastError().text();
    qsizetype pairs = 0;
    while (query.next()) {
        ++pairs;
        const QString type = query.value(2).toString();
        const QString pair =
            u"%1, question %2 (%3): "_s.arg(query.value(0).toString(), query.value(1).toString(), type);
        if (!query.value(3).toBool()) {
            found << pair % u"no answer"_s;
            continue;
        }
        const Filled filled{
            .text = query.value(4).toBool(), .numeric = query.value(5).toBool(), .json = query.value(6).toBool()};
        count(type, filled);
        if (filled != columnsFor(type))
            found << pair % u"fills "_s % columnNames(filled) % u" instead of "_s % columnNames(columnsFor(type));
    }
    if (pairs != wanted)
        found << u"%1 answers are expected, the project has place for %2"_s.arg(wanted).arg(pairs);
}

AnswerCheck::Filled AnswerCheck::columnsFor(const QString &type)
{
    const bool isNumeric = type == AnswerType::numeric;
    return {.text = !isNumeric, .numeric = isNumeric, .json = type != AnswerType::text};
}

QString AnswerCheck::columnNames(const Filled &filled)
{
    QStringList names;
    if (filled.text)
        names << u"text_answer"_s;
    if (filled.numeric)
        names << u"numeric_answer"_s;
    if (filled.json)
        names << u"json_answer"_s;
    return names.isEmpty() ? u"no column"_s : names.join(" and "_L1);
}

void AnswerCheck::count(const QString &type, const Filled &filled)
{
    Tally &tally = tallies[type];
    ++tally.answers;
    tally.text += filled.text ? 1 : 0;
    tally.numeric += filled.numeric ? 1 : 0;
    tally.json += filled.json ? 1 : 0;
}

static QString tableLine(const QStringList &cells)
{
    return cells[0].leftJustified(15) % cells[1].rightJustified(7) % cells[2].rightJustified(13) %
           cells[3].rightJustified(16) % cells[4].rightJustified(13);
}

QStringList AnswerCheck::table() const
{
    const auto shown = [](int count) { return count == 0 ? u"-"_s : QString::number(count); };
    QStringList lines{
        tableLine({u"answer type"_s, u"answers"_s, u"text_answer"_s, u"numeric_answer"_s, u"json_answer"_s})};
    const QStringList types = storedAnswerTypes();
    for (const QString &type : types) {
        const Tally tally = tallies.value(type);
        lines << tableLine({type, shown(tally.answers), shown(tally.text), shown(tally.numeric), shown(tally.json)});
    }
    return lines;
}
