#include "study/report/report.h"

using namespace Qt::StringLiterals;

namespace study {

using MakeSection = std::function<Section()>;

static QList<MakeSection> sectionsOf(const Survey &survey, const ReportOptions &options)
{
    QList<MakeSection> sections{[&] { return madeSection(survey, options.recorded); },
                                [&] { return panelSection(survey); },
                                [&] { return completenessSection(survey); },
                                [&] { return questionsSection(survey); },
                                [&] { return samenessSection(survey); },
                                [&] { return wordsSection(survey); }};
    if (options.against)
        sections << [&] { return againstSection(survey, *options.against); };
    return sections << [&] { return codebookSection(survey); };
}

Report makeReport(const Survey &survey, const ReportOptions &options, const SectionsMade &made)
{
    const QList<MakeSection> sections = sectionsOf(survey, options);
    Blocks blocks;
    QList<Flag> flags;
    for (qsizetype place = 0; place < sections.size(); ++place) {
        const Section section = sections.at(place)();
        blocks << section.blocks;
        flags << section.flags;
        if (made)
            made(place + 1, sections.size());
    }
    const Document document{.title = u"Report on simulated answers"_s, .blocks = glanceSection(survey, flags) + blocks};
    return {.document = document, .flags = flags};
}

} // namespace study
