#include "bridge/retry.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace bridge {

bool isRetried(int status)
{
    static constexpr std::array passing{408, 409, 429, 500, 502, 503, 504};
    return std::ranges::find(passing, status) != passing.end();
}

std::optional<milliseconds> retryAfter(const QByteArray &value, const QDateTime &now)
{
    bool isNumber = false;
    const double seconds = value.trimmed().toDouble(&isNumber);
    if (isNumber && seconds >= 0 && seconds < 1e9)
        return milliseconds(qint64(seconds * 1000));
    // A date of HTTP ends in the name of its zone, which Qt does not know.
    QString text = QString::fromLatin1(value.trimmed());
    if (text.endsWith(" GMT"_L1))
        text.replace(text.size() - 3, 3, u"+0000"_s);
    const QDateTime date = QDateTime::fromString(text, Qt::RFC2822Date);
    if (!date.isValid())
        return std::nullopt;
    return milliseconds(std::max<qint64>(0, now.msecsTo(date)));
}

milliseconds pauseAfter(int attempt, const RetryRule &rule, std::optional<milliseconds> asked, double chance)
{
    if (asked)
        return std::min(*asked, rule.longestAsked);
    const double doubled = double(rule.first.count()) * double(1LL << std::clamp(attempt - 1, 0, 40));
    const double whole = std::min(doubled, double(rule.longest.count()));
    return milliseconds(qint64(whole * (0.5 + chance / 2)));
}

} // namespace bridge
