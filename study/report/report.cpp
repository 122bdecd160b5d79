#include "study/report/report.h"

using namespace Qt::StringLiterals;

namespace study {

Document makeReport(const Survey &survey, const ReportOptions &options)
{
    QList<Section> sections{madeSection(survey, options.recorded),
                            panelSection(survey),
                            completenessSection(survey),
                            questionsSection(survey),
                            samenessSection(survey),
                            wordsSection(survey)};
    if (options.against)
        sections << againstSection(survey, *options.against);
    sections << codebookSection(survey);
    Blocks blocks;
    QList<Flag> flags;
    for (const Section &section : std::as_const(sections)) {
        blocks << section.blocks;
        flags << section.flags;
    }
    return {.title = u"Report on simulated answers"_s, .blocks = glanceSection(survey, flags) + blocks};
}

} // namespace study
