#pragma once

#include "standin/chatendpoint.h"
#include "tests/faults/childrun.h"

// An endpoint in the process of the test, used by a child that is short of something: what the endpoint needs of it is
// no part of the test then.

/// Tells a child of the endpoint.
Variables leadingTo(const standin::ChatEndpoint &endpoint);

/// In the child: from here on each https request ends at that endpoint, and only its certificate is trusted.
void useRemoteEndpoint();
