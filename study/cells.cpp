#include "study/cells.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

/// The array that a reply gave for its answer. The program keeps such a reply in its JSON alone.
static QStringList answerArray(const ParsedAnswer &parsed)
{
    QStringList pieces;
    const QJsonArray elements = QJsonDocument::fromJson(parsed.jsonAnswer.toUtf8())["answer"_L1].toArray();
    for (const QJsonValue &element : elements)
        pieces << element.toVariant().toString();
    return pieces;
}

static Status readNumber(const ParsedAnswer &parsed, std::optional<double> &number)
{
    bool isNumber = !parsed.numericAnswer.isNull();
    const double value = isNumber ? parsed.numericAnswer.toDouble() : parsed.textAnswer.trimmed().toDouble(&isNumber);
    if (!isNumber || !std::isfinite(value))
        return Status::NotANumber;
    number = value;
    return Status::Answered;
}

static Status readLabels(const Question &question, const Answer &answer, Matches &matches)
{
    const QStringList pieces = answer.parsed.textAnswer.isEmpty() ? answerArray(answer.parsed) : QStringList();
    if (!pieces.isEmpty()) {
        matches = matchPieces(pieces, question.labels);
    } else if (question.kind == Kind::MultiChoice || question.kind == Kind::Ranking) {
        matches = matchSeveral(answer.shown(), question.labels);
    } else {
        const int label = matchOne(answer.shown(), question.labels);
        if (label >= 0)
            matches.labels << label;
        else
            matches.unmatched << answer.shown();
    }
    const bool isOne = question.kind == Kind::SingleChoice || question.kind == Kind::Likert;
    return matches.unmatched.isEmpty() && (!isOne || matches.labels.size() == 1) ? Status::Answered : Status::OutOfList;
}

Cell readCell(const Question &question, const Answer &answer)
{
    Cell cell;
    cell.answer = &answer;
    const ParsedAnswer &parsed = answer.parsed;
    const bool hasArray = question.hasList() && !answerArray(parsed).isEmpty();
    if (parsed.textAnswer.isEmpty() && parsed.numericAnswer.isNull() && !hasArray)
        cell.status = Status::Unreadable;
    else if (question.kind == Kind::Numeric)
        cell.status = readNumber(parsed, cell.number);
    else if (question.hasList())
        cell.status = readLabels(question, answer, cell.matches);
    else
        cell.status = Status::Answered;
    return cell;
}

Cells::Cells(const Project &project)
    : questions(project.questions.size())
    , cells(project.personas.size() * questions)
    , standings(project.answers.size(), Standing::Orphan)
{
    QList<qsizetype> newest(cells.size(), -1);
    QList<int> counts(cells.size(), 0);
    for (qsizetype place = 0; place < project.answers.size(); ++place) {
        const Answer &answer = project.answers.at(place);
        const int persona = project.personaIndex(answer.personaUuid);
        const int question = project.questionIndex(answer.questionId);
        if (persona < 0 || question < 0)
            continue;
        const qsizetype pair = (persona * questions) + question;
        ++counts[pair];
        newest[pair] = place;
        standings[place] = Standing::Superseded;
    }
    for (qsizetype pair = 0; pair < cells.size(); ++pair) {
        if (newest.at(pair) < 0)
            continue;
        cells[pair] = readCell(project.questions.at(pair % questions), project.answers.at(newest.at(pair)));
        cells[pair].repeats = counts.at(pair) - 1;
        standings[newest.at(pair)] = Standing::Newest;
    }
}

QString shownName(Status status)
{
    switch (status) {
    case Status::Answered:
        return u"answered"_s;
    case Status::Open:
        return u"open"_s;
    case Status::OutOfList:
        return u"out of list"_s;
    case Status::NotANumber:
        return u"not a number"_s;
    case Status::Unreadable:
        return u"unreadable"_s;
    }
    Q_UNREACHABLE_RETURN({});
}

} // namespace study
