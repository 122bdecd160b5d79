#include "study/check/result.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

namespace {

QJsonObject rangeObject(const Range &range)
{
    return {{u"low"_s, range.low}, {u"middle"_s, range.middle}, {u"high"_s, range.high}};
}

/// There is no half a token.
QJsonObject tokenObject(const Range &range)
{
    return rangeObject(
        {.low = std::round(range.low), .middle = std::round(range.middle), .high = std::round(range.high)});
}

QJsonObject pairObject(const PairCount &count)
{
    return {{u"answered"_s, count.answered}, {u"open"_s, count.open}};
}

/// The pairs, and the tokens of the requests to come for them.
QJsonObject countObject(const PairCount &count, const TokenRates &rates)
{
    const Tokens tokens = tokensOf(count.volume, rates);
    QJsonObject object = pairObject(count);
    object["tokensIn"_L1] = tokenObject(tokens.in());
    object["tokensOut"_L1] = tokenObject(tokens.out);
    return object;
}

QJsonArray personaArray(const Project &project, const CheckResult &result)
{
    QJsonArray array;
    for (qsizetype place = 0; place < project.personas.size(); ++place) {
        QJsonObject object = countObject(result.count.byPersona.at(place), result.settings.rates);
        object["uuid"_L1] = project.personas.at(place).entry.uuid;
        object["name"_L1] = project.personas.at(place).entry.name;
        array.append(object);
    }
    return array;
}

QJsonArray questionArray(const Project &project, const CheckResult &result)
{
    QJsonArray array;
    for (qsizetype place = 0; place < project.questions.size(); ++place) {
        const Question &question = project.questions.at(place);
        QJsonObject object = countObject(result.count.byQuestion.at(place), result.settings.rates);
        object["number"_L1] = question.number;
        object["type"_L1] = question.entry.answerType;
        object["adjudicated"_L1] = question.entry.judge;
        object["estimatedBy"_L1] = shownName(result.sizes.at(place).basis);
        array.append(object);
    }
    return array;
}

QJsonObject totalObject(const PairCount &all, const TokenRates &rates)
{
    const Tokens tokens = tokensOf(all.volume, rates);
    return {{u"in"_s, tokenObject(tokens.in())},         {u"system"_s, tokenObject(tokens.system)},
            {u"history"_s, tokenObject(tokens.history)}, {u"questions"_s, tokenObject(tokens.questions)},
            {u"formats"_s, tokenObject(tokens.formats)}, {u"out"_s, tokenObject(tokens.out)}};
}

QJsonObject rateObject(const CheckSettings &settings)
{
    return {{u"in"_s, rangeObject(settings.rates.in)},
            {u"out"_s, rangeObject(settings.rates.out)},
            {u"perMessage"_s, tokensPerMessage},
            {u"exchangesIn"_s, settings.rates.measuredIn},
            {u"exchangesOut"_s, settings.rates.measuredOut},
            {u"damagedLines"_s, settings.damagedLines}};
}

QJsonObject findingObject(const Finding &finding)
{
    QJsonObject object{{u"kind"_s, finding.kind},
                       {u"severity"_s, finding.blocks ? u"blocking"_s : u"warning"_s},
                       {u"text"_s, finding.text}};
    if (finding.question > 0)
        object["question"_L1] = finding.question;
    if (finding.persona != nullptr) {
        object["persona"_L1] = finding.persona->entry.name;
        object["uuid"_L1] = finding.persona->entry.uuid;
    }
    if (finding.count > 0)
        object["count"_L1] = finding.count;
    if (!finding.details.isEmpty())
        object["details"_L1] = QJsonArray::fromStringList(finding.details);
    return object;
}

} // namespace

QByteArray checkJson(const Project &project, const CheckResult &result)
{
    const CheckSettings &settings = result.settings;
    QJsonArray found;
    for (const Finding &finding : result.findings)
        found.append(findingObject(finding));
    QJsonObject object{
        {u"project"_s, QJsonObject{{u"file"_s, project.path}, {u"sha256"_s, QString::fromLatin1(project.sha256)}}},
        {u"pairs"_s, pairObject(result.count.all)},
        {u"requests"_s, QJsonObject{{u"all"_s, result.count.all.volume.requests},
                                    {u"adjudicated"_s, result.count.adjudicated.volume.requests}}},
        {u"personas"_s, personaArray(project, result)},
        {u"questions"_s, questionArray(project, result)},
        {u"tokens"_s, totalObject(result.count.all, settings.rates)},
        {u"rates"_s, rateObject(settings)},
        {u"findings"_s, found}};
    if (settings.prices)
        object["cost"_L1] = rangeObject(costOf(tokensOf(result.count.all.volume, settings.rates), *settings.prices));
    if (settings.context > 0)
        object["context"_L1] = QJsonObject{{u"tokens"_s, result.context.tokens},
                                           {u"middle"_s, result.context.middle},
                                           {u"high"_s, result.context.high}};
    return QJsonDocument(object).toJson();
}

} // namespace study
