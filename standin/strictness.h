#pragma once

#include "standin/reply.h"

#include <functional>

namespace standin {

class ChatEndpoint;

using Respond = std::function<Reply(const Request &)>;

/// Turns down what a hosted service is known to turn down, each with the error object that it is reported to give:
/// a key in `response_format` that its type does not have; `json_object` where no message has the word "json"; a strict
/// schema with an object that is open or has a property that is not required; more tokens than the context takes, a
/// token being four characters. What is let through is answered by @p respond, with `usage`, the model that was asked
/// for, and a `system_fingerprint`.
Respond strict(const Respond &respond, qsizetype contextTokens = 128'000);

/// Lets this many requests through, turns the next ones down for coming too fast (429), and begins anew.
Respond takingTurns(int taken, int refused, const QByteArray &retryAfter, const Respond &respond);

/// Turns down what comes while as many requests of this endpoint are still open (429).
Respond atATime(const ChatEndpoint &endpoint, int most, const QByteArray &retryAfter, const Respond &respond);

} // namespace standin
