#pragma once

#include <QtEnvironmentVariables>

/// True while the environment holds ORRINET_TEST_MODE, whatever its value: outside code then drives the window, with
/// no dialog and no network traffic. Asked anew at each point of use, so a change takes effect at once.
inline bool testMode()
{
    return qEnvironmentVariableIsSet("ORRINET_TEST_MODE");
}
