#pragma once

#include "bench/suites.h"

/// A long run with faults: a large panel asked over TLS, where one request in so many fails in some way. Runs are
/// started until no pair is open, and after each of them the table, the grid and the log are compared with what the
/// endpoint did. Prints figures, and gives the status of the process: not 0 where anything differs.
int soak(Report &report, Extent extent);
