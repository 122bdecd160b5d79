#pragma once

#include <QByteArray>
#include <QDateTime>

#include <chrono>
#include <optional>

namespace bridge {

using std::chrono::milliseconds;

/// When a request is tried again.
struct RetryRule
{
    int retries = 4;
    milliseconds first{1000};           ///< pause after the first attempt, doubled after each further one
    milliseconds longest{60'000};       ///< of the pauses of our own
    milliseconds longestAsked{300'000}; ///< of those that an endpoint asks for
};

/// Whether a status says that the same request may well succeed later.
bool isRetried(int status);

/// What a Retry-After header asks for, a number of seconds or a date; nothing where it is neither.
std::optional<milliseconds> retryAfter(const QByteArray &value, const QDateTime &now);

/// The pause after the attempt of this number, counted from 1. @p chance from 0 to 1 spreads it between half and all of
/// its length, so that many do not come back at the same moment.
milliseconds pauseAfter(int attempt, const RetryRule &rule, std::optional<milliseconds> asked, double chance);

} // namespace bridge
