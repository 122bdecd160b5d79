#pragma once

#include <QtTypes>

/// The seed of a random test: that of ORRINET_SEED, or a new one each time. It is printed, so that a failure can be
/// repeated.
quint32 testSeed();
