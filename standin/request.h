#pragma once

#include "loopback/request.h"

class QJsonObject;

namespace standin {

using loopback::Header;

/// One request as it came in. `connection` counts TCP connections from 1, `arrivedAt` is milliseconds of the endpoint's
/// life.
struct Request : loopback::Request
{
    int connection = 0;
    qint64 arrivedAt = 0;

    /// The body, empty unless it is a JSON object.
    QJsonObject json() const;
};

} // namespace standin
