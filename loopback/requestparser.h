#pragma once

#include "loopback/request.h"

#include <memory>
#include <optional>

namespace loopback {

/// Takes requests of HTTP/1.1 off a stream of bytes, which may come in pieces of any size. The rules are llhttp's.
class RequestParser
{
public:
    RequestParser();
    ~RequestParser();
    Q_DISABLE_COPY_MOVE(RequestParser)

    void feed(const QByteArray &bytes);
    /// The next request that is there with its whole body. A CONNECT ends with its head, and what follows it is the
    /// tunnel's.
    std::optional<Request> next();
    /// What came is no HTTP; nothing more comes of it.
    bool failed() const;
    /// Bytes that have come and belong to no request given away.
    qsizetype waiting() const;

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace loopback
