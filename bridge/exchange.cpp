#include "bridge/exchange.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace bridge {

Usage usageOf(const Exchange &exchange)
{
    const QJsonValue usage = QJsonDocument::fromJson(exchange.reply)["usage"_L1];
    return {.tokensIn = usage["prompt_tokens"_L1].toInteger(), .tokensOut = usage["completion_tokens"_L1].toInteger()};
}

QByteArray withoutKey(QByteArray text, const QByteArray &key)
{
    return key.isEmpty() ? text : text.replace(key, "[key]");
}

} // namespace bridge
