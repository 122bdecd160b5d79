#pragma once

#include "loopback/certificate.h"

namespace standin {

/// What the endpoint shows of itself in the TLS handshake. All but UnknownIssuer are vouched for by Good, the one
/// certificate that a Detour trusts, so that each of the others fails for its own reason alone.
enum class Identity { Good, WrongHost, Expired, UnknownIssuer };

/// Made at the first call for an identity, and the same for the rest of the process; the keys exist in memory only.
loopback::Certificate certificateFor(Identity identity);

} // namespace standin
