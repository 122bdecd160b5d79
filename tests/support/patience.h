#pragma once

/// How long, in milliseconds, a test waits for what is sure to come. Only a failure takes that long, so it is more than
/// the slowest machine needs, be it busy or under valgrind.
inline constexpr int patience = 60'000;
