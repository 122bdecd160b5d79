#pragma once

#include "loopback/detour.h"
#include "standin/chatendpoint.h"

namespace standin {

/// While it lives, every https request of this process ends at the endpoint, and nothing but the endpoint's
/// certificate is trusted.
class Detour : public loopback::Detour
{
public:
    explicit Detour(const ChatEndpoint &endpoint)
        : loopback::Detour(endpoint.port(), certificateFor(Identity::Good).certificate)
    {
    }
};

} // namespace standin
