#include "bridge/translation.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace bridge {

namespace {

/// Strict mode wants each object of a schema closed, with all of its properties required.
QJsonObject completed(const QJsonObject &schema)
{
    QJsonObject whole = schema;
    if (schema["items"_L1].isObject())
        whole["items"_L1] = completed(schema["items"_L1].toObject());
    if (schema["type"_L1] != "object"_L1)
        return whole;
    QJsonObject properties = schema["properties"_L1].toObject();
    for (auto property = properties.begin(); property != properties.end(); ++property)
        property.value() = completed(property.value().toObject());
    whole["properties"_L1] = properties;
    whole["required"_L1] = QJsonArray::fromStringList(properties.keys());
    whole["additionalProperties"_L1] = false;
    return whole;
}

QJsonObject schemaFormat(const QJsonObject &schema)
{
    const QJsonObject named{{u"name"_s, u"answer"_s}, {u"strict"_s, true}, {u"schema"_s, completed(schema)}};
    return {{u"type"_s, u"json_schema"_s}, {u"json_schema"_s, named}};
}

bool mentionsJson(const QJsonArray &messages)
{
    return std::any_of(messages.begin(), messages.end(), [](const QJsonValue &message) {
        return message["content"_L1].toString().contains("json"_L1, Qt::CaseInsensitive);
    });
}

QJsonObject requestForObject(const QJsonObject &schema)
{
    const QStringList keys = schema["properties"_L1].toObject().keys();
    return {
        {u"role"_s, u"system"_s},
        {u"content"_s, u"Answer with one JSON object that has these keys, each with a string as its value: %1."_s.arg(
                           keys.join(", "_L1))}};
}

void translateFormat(QJsonObject &body, Format format)
{
    // What is not there stays away: the operator would put a null in its place.
    const QJsonObject asked = body.value("response_format"_L1).toObject();
    const QJsonObject schema = asked["schema"_L1].toObject();
    if (format == Format::AsIs || asked["type"_L1] != "json_object"_L1 || schema.isEmpty())
        return;
    if (format == Format::JsonSchema) {
        body["response_format"_L1] = schemaFormat(schema);
        return;
    }
    body["response_format"_L1] = QJsonObject{{u"type"_s, u"json_object"_s}};
    QJsonArray messages = body.value("messages"_L1).toArray();
    if (!mentionsJson(messages)) {
        messages.append(requestForObject(schema));
        body["messages"_L1] = messages;
    }
}

} // namespace

QString ModelChoice::of(const QString &asked) const
{
    return instead.value(asked, always.isEmpty() ? asked : always);
}

QByteArray translate(const QByteArray &body, Format format, const ModelChoice &models)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject())
        return body;
    const QJsonObject asked = document.object();
    QJsonObject sent = asked;
    const QString model = asked["model"_L1].toString();
    if (const QString chosen = models.of(model); chosen != model)
        sent["model"_L1] = chosen;
    translateFormat(sent, format);
    return sent == asked ? body : QJsonDocument(sent).toJson(QJsonDocument::Compact);
}

} // namespace bridge
