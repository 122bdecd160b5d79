#pragma once

// Surroundings of a test program that only its own process can make. ./dev matrix asks for them by the environment.
// Each function is false, and has said why, where what is asked for can't be had: a test would prove nothing then.

/// ORRINET_CLOCK: what befalls the local time within a second from now. "forward": summer time begins, "back": it ends,
/// "midnight": the day changes. Before the application object is made, and for the programs that the test starts too.
bool takeClock();

/// ORRINET_LOOK: "dark", a light text on a dark ground.
bool takeLook();
