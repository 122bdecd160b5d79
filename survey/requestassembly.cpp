#include "survey/requestassembly.h"

#include "questions/answertypes.h"
#include "questions/labels.h"
#include "survey/surveyentries.h"

using namespace Qt::StringLiterals;

QString systemText(const QString &preamble, const PersonaEntry &persona, const QString &postamble)
{
    QString text;
    if (!preamble.isEmpty())
        text = preamble + u'\n';
    text += persona.systemPrompt.isEmpty() ? persona.attributes : persona.systemPrompt;
    if (!postamble.isEmpty()) {
        if (!text.isEmpty())
            text += u'\n';
        text += postamble;
    }
    return text.trimmed();
}

static QJsonObject message(const QString &role, const QString &content)
{
    return {{u"role"_s, role}, {u"content"_s, content}};
}

QJsonArray chatMessages(const QString &systemText, const QList<Exchange> &history, const QString &prompt)
{
    QJsonArray messages;
    if (!systemText.isEmpty())
        messages.append(message(u"system"_s, systemText));
    for (const Exchange &exchange : history) {
        messages.append(message(u"user"_s, exchange.prompt));
        messages.append(message(u"assistant"_s, exchange.answer));
    }
    messages.append(message(u"user"_s, prompt));
    return messages;
}

static QJsonArray requiredKeys(bool reasoningRequired)
{
    return reasoningRequired ? QJsonArray{u"answer"_s, u"reasoning"_s} : QJsonArray{u"answer"_s};
}

static const QJsonObject &stringType()
{
    static const QJsonObject type{{u"type"_s, u"string"_s}};
    return type;
}

static AnswerFormat forcedChoice(const QJsonArray &labels, bool reasoningRequired)
{
    const QJsonObject answer{{u"type"_s, u"string"_s}, {u"enum"_s, labels}};
    const QJsonObject parameters{{u"type"_s, u"object"_s},
                                 {u"properties"_s, QJsonObject{{u"answer"_s, answer}, {u"reasoning"_s, stringType()}}},
                                 {u"required"_s, requiredKeys(reasoningRequired)}};
    const QJsonObject function{{u"name"_s, u"select_answer"_s},
                               {u"description"_s, u"Pick exactly one option"_s},
                               {u"parameters"_s, parameters}};
    return {.tools = {QJsonObject{{u"type"_s, u"function"_s}, {u"function"_s, function}}},
            .toolChoice = {{u"type"_s, u"function"_s}, {u"function"_s, QJsonObject{{u"name"_s, u"select_answer"_s}}}},
            .responseFormat = {}};
}

static AnswerFormat jsonFormat(bool reasoningRequired)
{
    QJsonObject properties{{u"answer"_s, stringType()}};
    if (reasoningRequired)
        properties.insert("reasoning"_L1, stringType());
    const QJsonObject schema{
        {u"type"_s, u"object"_s}, {u"properties"_s, properties}, {u"required"_s, requiredKeys(reasoningRequired)}};
    return {.tools = {}, .toolChoice = {}, .responseFormat = {{u"type"_s, u"json_object"_s}, {u"schema"_s, schema}}};
}

AnswerFormat answerFormat(const QuestionEntry &question)
{
    const QString &type = question.answerType;
    if (type == AnswerType::singleChoice) {
        const QJsonArray labels = labelArray(question.labels);
        return labels.isEmpty() ? AnswerFormat{} : forcedChoice(labels, question.reasoningRequired);
    }
    if (type == AnswerType::numeric || type == AnswerType::multiChoice || type == AnswerType::likert ||
        type == AnswerType::ranking)
        return jsonFormat(question.reasoningRequired);
    return {};
}
