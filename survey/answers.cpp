#include "survey/answers.h"

#include "questions/answertypes.h"
#include "survey/surveyrunner.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <optional>

using namespace Qt::StringLiterals;

/// The JSON object that a text holds, nothing where it holds something else.
static std::optional<QJsonDocument> objectDocument(const QString &text)
{
    QJsonParseError error;
    QJsonDocument document = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    return document;
}

static QString shownNumber(double number)
{
    return QString::number(number, 'g', 6);
}

QString displayValue(const ParsedAnswer &answer)
{
    if (!answer.textAnswer.isEmpty())
        return answer.textAnswer;
    if (!answer.numericAnswer.isNull())
        return shownNumber(answer.numericAnswer.toDouble());
    return answer.jsonAnswer;
}

QString reasoning(const ParsedAnswer &answer)
{
    const auto document = objectDocument(answer.jsonAnswer);
    return document ? document->object().value("reasoning"_L1).toString() : QString();
}

/// Takes a text for a number where the question asks for one and the text is one.
static void takeText(const QString &text, bool numeric, ParsedAnswer &parsed)
{
    bool isNumber = false;
    const double number = numeric ? text.toDouble(&isNumber) : 0.0;
    if (isNumber)
        parsed.numericAnswer = number;
    else
        parsed.textAnswer = text;
}

static void takeValue(const QJsonValue &value, bool numeric, ParsedAnswer &parsed)
{
    if (value.isString())
        takeText(value.toString(), numeric, parsed);
    else if (value.isBool())
        parsed.textAnswer = value.toBool() ? u"true"_s : u"false"_s;
    else if (value.isDouble() && numeric)
        parsed.numericAnswer = value.toDouble();
    else if (value.isDouble())
        parsed.textAnswer = shownNumber(value.toDouble());
}

ParsedAnswer SurveyRunner::interpretAnswer(const QString &text, const QString &answerType)
{
    ParsedAnswer parsed;
    const bool numeric = answerType == AnswerType::numeric;
    if (answerType == AnswerType::text) {
        parsed.textAnswer = text;
    } else if (const auto document = objectDocument(text)) {
        takeValue(document->object().value("answer"_L1), numeric, parsed);
        parsed.jsonAnswer = QString::fromUtf8(document->toJson(QJsonDocument::Compact));
    } else if (answerType == AnswerType::singleChoice || answerType == AnswerType::multiChoice ||
               answerType == AnswerType::likert || answerType == AnswerType::ranking) {
        // Not the text column: that one is replayed to the persona as its own words.
        parsed.jsonAnswer = text;
    } else {
        takeText(text, numeric, parsed);
    }
    return parsed;
}
