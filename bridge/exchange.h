#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace bridge {

/// One request of the window, and what became of it.
struct Exchange
{
    QByteArray asked; ///< the body as the window sent it
    QByteArray sent;  ///< the body as it went out
    QDateTime beganAt;
    qint64 duration = 0; ///< milliseconds, pauses between attempts included
    int attempts = 0;
    int status = 0; ///< of HTTP; 0 where no reply came
    QByteArray reason;
    QByteArray contentType;
    QByteArray reply;
    QString failure; ///< why no reply came

    bool succeeded() const { return status >= 200 && status < 300; }
};

/// What a reply says of itself; tokens are 0 where it says nothing.
struct Usage
{
    qint64 tokensIn = 0;
    qint64 tokensOut = 0;
};
Usage usageOf(const Exchange &exchange);

/// The bytes in which the key stands are replaced wherever they are found, so that no record or line shows it.
QByteArray withoutKey(QByteArray text, const QByteArray &key);

} // namespace bridge
