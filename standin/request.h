#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

class QJsonObject;

namespace standin {

using Header = std::pair<QByteArray, QByteArray>;

/// One request as it came in. `head` is the bytes up to and with the empty line, `connection` counts TCP connections
/// from 1, `connectTarget` is host:port of the tunnel it came through, `arrivedAt` is milliseconds of the endpoint's
/// life.
struct Request
{
    QByteArray requestLine;
    QList<Header> headers;
    QByteArray head;
    QByteArray body;
    int connection = 0;
    QString connectTarget;
    qint64 arrivedAt = 0;

    /// The value of the first header of that name in any case; null if there is none.
    QByteArray header(const QByteArray &name) const;
    /// The body, empty unless it is a JSON object.
    QJsonObject json() const;
};

/// Takes the first request off the buffer once it is there with its whole body, whose length the head must tell.
std::optional<Request> takeRequest(QByteArray &buffer);

} // namespace standin
