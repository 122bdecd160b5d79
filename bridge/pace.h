#pragma once

#include "bridge/retry.h"

namespace bridge {

/// How many attempts may be under way at a time, and from when on. An endpoint that says that it is asked too much
/// halves the number and holds all of them back; each success after that lets it grow again, slowly. Moments are
/// milliseconds of one clock, chosen by the caller.
class Pace
{
public:
    explicit Pace(int most);

    bool mayStart(qint64 now) const;
    /// From when on an attempt may start as far as time goes.
    qint64 startsAt() const { return resumesAt; }
    void started() { ++underway; }
    void succeeded();
    void failed() { --underway; }
    /// @p begunAt is when the attempt was started: of those that were under way together only the first one counts.
    void limited(qint64 begunAt, qint64 now, milliseconds pause);

private:
    int largest;
    double limit;
    int underway = 0;
    qint64 resumesAt = 0;
    qint64 limitedAt = -1;
};

} // namespace bridge
