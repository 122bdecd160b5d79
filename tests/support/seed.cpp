#include "tests/support/seed.h"

#include <QRandomGenerator>
#include <QString>

quint32 testSeed()
{
    static const char *const name = "ORRINET_SEED";
    const quint32 seed =
        qEnvironmentVariableIsSet(name) ? qEnvironmentVariable(name).toUInt() : QRandomGenerator::global()->generate();
    qInfo("%s=%u", name, seed);
    return seed;
}
