#pragma once

#include "study/report/against.h"
#include "study/report/document.h"
#include "study/report/sections/sections.h"

#include <optional>

namespace study {

struct ReportOptions
{
    Recorded recorded;
    std::optional<Against> against;
};

/// The whole report on a project, which has to live until it is written out. The same project gives the same report.
Document makeReport(const Survey &survey, const ReportOptions &options = {});

} // namespace study
