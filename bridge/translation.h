#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

namespace bridge {

/// How the shape of an answer is asked for on the way out.
/// JsonSchema: the "json_schema" format in strict mode. JsonObject: the "json_object" format, which has no schema and
/// wants the word "json" in a message. AsIs: as the window asks.
enum class Format { JsonSchema, JsonObject, AsIs };

/// The model that is asked in place of another.
struct ModelChoice
{
    QString always;                  ///< for all others; empty: as asked
    QHash<QString, QString> instead; ///< by the name asked for

    QString of(const QString &asked) const;
};

/// The body of a chat completions request as it goes out. Where nothing is to be changed, or the body is no JSON
/// object, these are the same bytes.
QByteArray translate(const QByteArray &body, Format format, const ModelChoice &models);

} // namespace bridge
