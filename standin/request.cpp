#include "standin/request.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace standin {

namespace {

Request readHead(const QByteArray &head)
{
    Request request;
    request.head = head;
    QList<QByteArray> lines = head.split('\n');
    request.requestLine = lines.takeFirst().trimmed();
    for (const QByteArray &line : std::as_const(lines)) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0)
            request.headers.emplaceBack(line.first(colon), line.sliced(colon + 1).trimmed());
    }
    return request;
}

} // namespace

QByteArray Request::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

QJsonObject Request::json() const
{
    return QJsonDocument::fromJson(body).object();
}

std::optional<Request> takeRequest(QByteArray &buffer)
{
    static constexpr QByteArrayView end("\r\n\r\n");
    const qsizetype endAt = buffer.indexOf(end);
    if (endAt < 0)
        return std::nullopt;
    Request request = readHead(buffer.first(endAt + end.size()));
    const qsizetype length = request.header("Content-Length").toLongLong();
    if (buffer.size() < request.head.size() + length)
        return std::nullopt;
    request.body = buffer.sliced(request.head.size(), length);
    buffer.remove(0, request.head.size() + length);
    return request;
}

} // namespace standin
