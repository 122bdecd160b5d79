#include "bridge/pace.h"

#include <algorithm>

namespace bridge {

Pace::Pace(int most)
    : largest(most)
    , limit(most)
{
}

bool Pace::mayStart(qint64 now) const
{
    return now >= resumesAt && underway < int(limit);
}

void Pace::succeeded()
{
    --underway;
    limit = std::min(double(largest), limit + 1 / limit);
}

void Pace::limited(qint64 begunAt, qint64 now, milliseconds pause)
{
    --underway;
    resumesAt = std::max(resumesAt, now + pause.count());
    if (begunAt <= limitedAt)
        return;
    limitedAt = now;
    limit = std::max(1.0, limit / 2);
}

} // namespace bridge
