#include "standin/reply.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace standin {

namespace {

QByteArray usualReason(int code)
{
    static constexpr std::pair<int, const char *> phrases[] = {{200, "OK"},
                                                               {307, "Temporary Redirect"},
                                                               {400, "Bad Request"},
                                                               {401, "Unauthorized"},
                                                               {403, "Forbidden"},
                                                               {404, "Not Found"},
                                                               {408, "Request Timeout"},
                                                               {409, "Conflict"},
                                                               {422, "Unprocessable Entity"},
                                                               {429, "Too Many Requests"},
                                                               {500, "Internal Server Error"},
                                                               {502, "Bad Gateway"},
                                                               {503, "Service Unavailable"},
                                                               {504, "Gateway Timeout"}};
    for (const auto &[known, phrase] : phrases) {
        if (known == code)
            return phrase;
    }
    return "Unnamed";
}

const Header *find(const QList<Header> &headers, const QByteArray &name)
{
    const auto found = std::ranges::find_if(
        headers, [&name](const Header &header) { return header.first.compare(name, Qt::CaseInsensitive) == 0; });
    return found == headers.cend() ? nullptr : &*found;
}

QByteArray headOf(const Reply &reply)
{
    QList<Header> headers = reply.headers;
    const Header usual[] = {{"Content-Type"_ba, "application/json"_ba},
                            {"Content-Length"_ba, QByteArray::number(reply.body.size())},
                            {"Connection"_ba, "close"_ba}};
    for (const Header &header : usual) {
        if (!find(headers, header.first))
            headers << header;
    }
    QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.code) + ' ' +
                      (reply.reason.isEmpty() ? usualReason(reply.code) : reply.reason) + "\r\n";
    for (const auto &[name, value] : std::as_const(headers))
        head += name + ": " + value + "\r\n";
    return head + "\r\n";
}

Reply completion(const QJsonObject &message, const QString &finishReason)
{
    const QJsonObject choice{{u"index"_s, 0}, {u"message"_s, message}, {u"finish_reason"_s, finishReason}};
    const QJsonObject body{{u"id"_s, u"chatcmpl-standin"_s},
                           {u"object"_s, u"chat.completion"_s},
                           {u"model"_s, u"standin"_s},
                           {u"choices"_s, QJsonArray{choice}}};
    return Reply::json(QJsonDocument(body).toJson(QJsonDocument::Compact));
}

} // namespace

Reply Reply::json(const QByteArray &body)
{
    Reply reply;
    reply.body = body;
    return reply;
}

Reply Reply::content(const QString &text)
{
    return completion({{u"role"_s, u"assistant"_s}, {u"content"_s, text}}, u"stop"_s);
}

Reply Reply::toolCall(const QString &argumentsText)
{
    const QJsonObject function{{u"name"_s, u"select_answer"_s}, {u"arguments"_s, argumentsText}};
    const QJsonObject call{{u"id"_s, u"call_standin"_s}, {u"type"_s, u"function"_s}, {u"function"_s, function}};
    return completion({{u"role"_s, u"assistant"_s}, {u"content"_s, QJsonValue()}, {u"tool_calls"_s, QJsonArray{call}}},
                      u"tool_calls"_s);
}

Reply Reply::status(int code, const QByteArray &body)
{
    Reply reply = json(body);
    reply.code = code;
    return reply;
}

Reply Reply::garbage(const QByteArray &bytes)
{
    return json(bytes).ending(End::Raw);
}

Reply Reply::ending(End how) const
{
    Reply reply = *this;
    reply.end = how;
    return reply;
}

Reply Reply::held() const
{
    Reply reply = *this;
    reply.waits = true;
    return reply;
}

Reply Reply::delayed(int milliseconds) const
{
    Reply reply = *this;
    reply.delay = milliseconds;
    return reply;
}

Reply Reply::dripping(qsizetype bytes, int milliseconds) const
{
    Reply reply = *this;
    reply.chunk = bytes;
    reply.interval = milliseconds;
    return reply;
}

Reply Reply::with(const QByteArray &header, const QByteArray &value) const
{
    Reply reply = *this;
    reply.headers.emplaceBack(header, value);
    return reply;
}

Reply Reply::keptAlive() const
{
    return with("Connection"_ba, "keep-alive"_ba);
}

QByteArray Reply::bytes() const
{
    switch (end) {
    case End::DroppedBeforeHead:
    case End::Silent:
        return {};
    case End::DroppedAfterHead:
        return headOf(*this);
    case End::Truncated:
    case End::Incomplete:
        return headOf(*this) + body.first(body.size() / 2);
    case End::Raw:
        return body;
    case End::Whole:
        break;
    }
    return headOf(*this) + body;
}

bool Reply::stalls() const
{
    return end == End::Silent || end == End::Incomplete;
}

bool Reply::closes() const
{
    if (stalls())
        return false;
    const Header *connection = find(headers, "Connection"_ba);
    return end != End::Whole || !connection || connection->second.compare("close", Qt::CaseInsensitive) == 0;
}

} // namespace standin
