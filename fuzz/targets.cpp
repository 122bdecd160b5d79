#include "fuzz/targets.h"

#include <algorithm>

using namespace Qt::StringLiterals;

const QList<FuzzTarget> &fuzzTargets()
{
    static const QList<FuzzTarget> all{{"reply"_L1, fuzzReply},     {"labels"_L1, fuzzLabels},
                                       {"tags"_L1, fuzzTags},       {"reasoning"_L1, fuzzReasoning},
                                       {"project"_L1, fuzzProject}, {"import"_L1, fuzzImport},
                                       {"browse"_L1, fuzzBrowse}};
    return all;
}

const FuzzTarget &fuzzTarget(QLatin1StringView name)
{
    const auto found = std::ranges::find(fuzzTargets(), name, &FuzzTarget::name);
    if (found == fuzzTargets().cend())
        qFatal("no target %s", name.data());
    return *found;
}
