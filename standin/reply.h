#pragma once

#include "standin/request.h"

namespace standin {

/// What one request is answered with: a plain value, put together as in `Reply::content(u"yes"_s).held()`.
struct Reply
{
    enum class End {
        Whole,
        DroppedBeforeHead, ///< closed without a byte; Qt then sends a POST one to three times more
        DroppedAfterHead,
        Truncated,  ///< half the promised body, then closed
        Silent,     ///< not a byte, and left open
        Incomplete, ///< half the promised body, and left open
        Raw         ///< the body alone, then closed; Qt tries what is no HTTP three times more
    };

    int code = 200;
    QByteArray reason; ///< empty: the usual phrase for the code
    /// Content-Type, Content-Length and "Connection: close" are added unless they stand here.
    QList<Header> headers;
    QByteArray body;
    End end = End::Whole;
    bool waits = false;  ///< for ChatEndpoint::release()
    int delay = 0;       ///< milliseconds before the first byte, after the release if it waits
    qsizetype chunk = 0; ///< bytes written at a time, 0 for all at once
    int interval = 0;    ///< milliseconds between two chunks

    static Reply json(const QByteArray &body);
    static Reply content(const QString &text);
    static Reply toolCall(const QString &argumentsText);
    static Reply status(int code, const QByteArray &body = {});
    static Reply garbage(const QByteArray &bytes);

    Reply ending(End how) const;
    Reply held() const;
    Reply delayed(int milliseconds) const;
    Reply dripping(qsizetype bytes, int milliseconds) const;
    Reply with(const QByteArray &header, const QByteArray &value) const;
    /// Leaves the connection open for the next request.
    Reply keptAlive() const;

    /// All that goes out for it.
    QByteArray bytes() const;
    /// Neither completes nor closes: the request stays open until the client gives up.
    bool stalls() const;
    bool closes() const;
};

} // namespace standin
