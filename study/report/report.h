#pragma once

#include "study/report/against.h"
#include "study/report/document.h"
#include "study/report/sections/sections.h"

#include <functional>
#include <optional>

namespace study {

/// What a report tells besides the project itself.
struct ReportOptions
{
    Recorded recorded;
    std::optional<Against> against;
};

struct Report
{
    Document document;
    QList<Flag> flags; ///< of all sections; the first page has the first of them
};

/// Told after each section how many of how many there are.
using SectionsMade = std::function<void(qsizetype made, qsizetype all)>;

/// The whole report on a project, which has to live until it is written out. The same project gives the same report.
Report makeReport(const Survey &survey, const ReportOptions &options = {}, const SectionsMade &made = {});

} // namespace study
