#include "study/check/result.h"

namespace study {

CheckResult checkProject(const Project &project, const CheckSettings &settings)
{
    const PairMap pairs(project);
    CheckResult result{.settings = settings, .sizes = answerSizes(project)};
    result.count = countRun(project, pairs, result.sizes);
    result.context = outgrown(project, pairs, result.sizes, settings.rates, settings.context);
    result.findings = findings(project, pairs, settings.bridged, result.context);
    return result;
}

} // namespace study
