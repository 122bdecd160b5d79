#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <utility>

namespace loopback {

using Header = std::pair<QByteArray, QByteArray>;

/// One request as it came in. `head` is the bytes up to and with the empty line, `connectTarget` is host:port of the
/// tunnel that it came through, empty for a CONNECT itself.
struct Request
{
    QByteArray method;
    QByteArray target;
    QByteArray requestLine;
    QList<Header> headers;
    QByteArray head;
    QByteArray body;
    QString connectTarget;

    /// The value of the first header of that name in any case; null if there is none.
    QByteArray header(const QByteArray &name) const;
};

} // namespace loopback
