#include "standin/strictness.h"

#include "standin/chatendpoint.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace standin {

namespace {

using Refusal = std::optional<Reply>;

Reply refused(int status, const QString &message, const QJsonValue &param, const QJsonValue &code,
              const QString &type = u"invalid_request_error"_s)
{
    const QJsonObject error{{u"message"_s, message}, {u"type"_s, type}, {u"param"_s, param}, {u"code"_s, code}};
    return Reply::status(status, QJsonDocument(QJsonObject{{u"error"_s, error}}).toJson());
}

Reply tooFast(const QByteArray &retryAfter)
{
    return refused(429, u"Rate limit reached. Please try again later."_s, QJsonValue(), u"rate_limit_exceeded"_s,
                   u"requests"_s)
        .with("Retry-After"_ba, retryAfter);
}

Refusal unlessKnown(const QJsonObject &object, const QString &path, const QStringList &known)
{
    for (const auto keys = object.keys(); const QString &key : keys) {
        const QString name = path + key;
        if (!known.contains(key))
            return refused(400, u"Unknown parameter: '%1'."_s.arg(name), name, u"unknown_parameter"_s);
    }
    return std::nullopt;
}

Refusal missing(const QString &name)
{
    return refused(400, u"Missing required parameter: '%1'."_s.arg(name), name, u"missing_required_parameter"_s);
}

/// What a strict schema lacks, empty where it lacks nothing. @p context is the way to it, as the service names it.
QString lackOf(const QJsonObject &schema, const QStringList &context)
{
    const QString place = u"In context=(%1), "_s.arg(context.join(", "_L1));
    for (const QJsonValue &value : schema) {
        if (value.isNull())
            return place + "None is not of type 'object', 'boolean'."_L1;
    }
    if (schema["items"_L1].isObject()) {
        if (const QString lack = lackOf(schema["items"_L1].toObject(), context + QStringList{u"'items'"_s});
            !lack.isEmpty())
            return lack;
    }
    if (schema["type"_L1] != "object"_L1)
        return {};
    if (schema["additionalProperties"_L1] != false)
        return place + "'additionalProperties' is required to be supplied and to be false."_L1;
    const QJsonObject properties = schema["properties"_L1].toObject();
    const QJsonArray required = schema["required"_L1].toArray();
    for (auto property = properties.begin(); property != properties.end(); ++property) {
        if (!required.contains(property.key()))
            return place +
                   u"'required' is required to be supplied and to be an array including every key in properties. "
                   "Missing '%1'."_s.arg(property.key());
        if (const QString lack = lackOf(property.value().toObject(),
                                        context + QStringList{u"'properties'"_s, u'\'' + property.key() + u'\''});
            !lack.isEmpty())
            return lack;
    }
    return {};
}

Refusal refusalOfSchema(const QJsonObject &format)
{
    if (!format["json_schema"_L1].isObject())
        return missing(u"response_format.json_schema"_s);
    const QJsonObject named = format["json_schema"_L1].toObject();
    if (const Refusal unknown = unlessKnown(named, u"response_format.json_schema."_s,
                                            {u"name"_s, u"description"_s, u"strict"_s, u"schema"_s}))
        return unknown;
    const QString name = named["name"_L1].toString();
    static const QRegularExpression allowed(u"^[a-zA-Z0-9_-]{1,64}$"_s);
    if (name.isEmpty())
        return missing(u"response_format.json_schema.name"_s);
    if (!allowed.match(name).hasMatch())
        return refused(400,
                       u"Invalid 'response_format.json_schema.name': string does not match pattern. Expected a string "
                       "that matches the pattern '^[a-zA-Z0-9_-]+$'."_s,
                       u"response_format.json_schema.name"_s, u"invalid_value"_s);
    const QJsonObject schema = named["schema"_L1].toObject();
    QString lack;
    if (schema["type"_L1] != "object"_L1)
        lack = u"schema must be a JSON Schema of 'type: \"object\"', got 'type: \"%1\"'."_s.arg(
            schema["type"_L1].toString(u"None"_s));
    else if (named["strict"_L1].toBool())
        lack = lackOf(schema, {});
    if (lack.isEmpty())
        return std::nullopt;
    return refused(400, u"Invalid schema for response_format '%1': %2"_s.arg(name, lack), u"response_format"_s,
                   QJsonValue());
}

bool mentionJson(const QJsonArray &messages)
{
    return std::any_of(messages.begin(), messages.end(), [](const QJsonValue &message) {
        return message["content"_L1].toString().contains("json"_L1, Qt::CaseInsensitive);
    });
}

Refusal refusalOfFormat(const QJsonObject &body)
{
    const QJsonValue asked = body["response_format"_L1];
    if (asked.isUndefined())
        return std::nullopt;
    const QJsonObject format = asked.toObject();
    const QString type = format["type"_L1].toString();
    const QStringList known =
        type == "json_schema"_L1 ? QStringList{u"type"_s, u"json_schema"_s} : QStringList{u"type"_s};
    if (Refusal unknown = unlessKnown(format, u"response_format."_s, known))
        return unknown;
    if (type == "json_schema"_L1)
        return refusalOfSchema(format);
    if (type == "json_object"_L1 && !mentionJson(body["messages"_L1].toArray()))
        return refused(400,
                       u"'messages' must contain the word 'json' in some form, to use 'response_format' of type "
                       "'json_object'."_s,
                       u"messages"_s, QJsonValue());
    if (type != "json_object"_L1 && type != "text"_L1)
        return refused(
            400, u"Invalid value: '%1'. Supported values are: 'json_object', 'json_schema', and 'text'."_s.arg(type),
            u"response_format.type"_s, u"invalid_value"_s);
    return std::nullopt;
}

qsizetype tokensIn(const QString &text)
{
    return (text.size() + 3) / 4;
}

qsizetype tokensOf(const QJsonArray &messages)
{
    qsizetype tokens = 0;
    for (const QJsonValue &message : messages)
        tokens += tokensIn(message["content"_L1].toString());
    return tokens;
}

Refusal refusalOf(const QJsonObject &body, qsizetype contextTokens)
{
    if (body.isEmpty())
        return refused(400, u"We could not parse the JSON body of your request."_s, QJsonValue(), QJsonValue());
    for (const QString &name : {u"model"_s, u"messages"_s}) {
        if (!body.contains(name))
            return missing(name);
    }
    if (const qsizetype tokens = tokensOf(body["messages"_L1].toArray()); tokens > contextTokens)
        return refused(400,
                       u"This model's maximum context length is %1 tokens. However, your messages resulted in %2 "
                       "tokens. Please reduce the length of the messages."_s.arg(contextTokens)
                           .arg(tokens),
                       u"messages"_s, u"context_length_exceeded"_s);
    return refusalOfFormat(body);
}

/// Only of a reply that is a completion there is something to tell.
Reply withAccount(Reply reply, const QJsonObject &asked)
{
    QJsonObject body = QJsonDocument::fromJson(reply.body).object();
    if (!body.contains("choices"_L1))
        return reply;
    const QJsonValue message = body["choices"_L1][0]["message"_L1];
    const qsizetype in = tokensOf(asked["messages"_L1].toArray());
    const qsizetype out = tokensIn(message["content"_L1].toString()) +
                          tokensIn(message["tool_calls"_L1][0]["function"_L1]["arguments"_L1].toString());
    body["usage"_L1] =
        QJsonObject{{u"prompt_tokens"_s, in}, {u"completion_tokens"_s, out}, {u"total_tokens"_s, in + out}};
    body["model"_L1] = asked["model"_L1];
    body["system_fingerprint"_L1] = u"fp_standin"_s;
    reply.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return reply;
}

} // namespace

Respond strict(const Respond &respond, qsizetype contextTokens)
{
    return [respond, contextTokens](const Request &request) {
        const QJsonObject body = request.json();
        if (const Refusal refusal = refusalOf(body, contextTokens))
            return *refusal;
        return withAccount(respond(request), body);
    };
}

Respond takingTurns(int taken, int refused, const QByteArray &retryAfter, const Respond &respond)
{
    // The copies of a function count together.
    const auto count = std::make_shared<int>(0);
    return [=](const Request &request) {
        const int place = (*count)++ % (taken + refused);
        return place < taken ? respond(request) : tooFast(retryAfter);
    };
}

Respond atATime(const ChatEndpoint &endpoint, int most, const QByteArray &retryAfter, const Respond &respond)
{
    // The request itself is open too by now.
    return [&endpoint, most, retryAfter, respond](const Request &request) {
        return endpoint.inFlight() <= most ? respond(request) : tooFast(retryAfter);
    };
}

} // namespace standin
