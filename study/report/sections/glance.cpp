#include "study/report/sections/sections.h"
#include "study/report/wording.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

static constexpr qsizetype mostFlags = 7;

Blocks glanceSection(const Survey &survey, const QList<Flag> &flags)
{
    const Project &project = survey.project;
    qsizetype answered = 0;
    for (const Answers &answers : survey.answers)
        answered += answers.n();
    const qsizetype pairs = project.personas.size() * project.questions.size();
    Blocks blocks{Heading{.level = 1, .text = u"Report on simulated answers"_s, .anchor = {}},
                  Paragraph{u"These answers were made by a language model that was told to speak as personas. They are "
                            "no evidence of what people think, do or want. Nobody was asked."_s,
                            Tone::Notice},
                  Heading{.level = 2, .text = u"At a glance"_s, .anchor = u"glance"_s}};
    blocks << TextTable{.caption = {},
                        .header = {u"What"_s, u"How much"_s},
                        .rows = {{{u"Personas"_s, QString::number(project.personas.size())}},
                                 {{u"Questions"_s, QString::number(project.questions.size())}},
                                 {{u"Pairs with a usable answer"_s,
                                   u"%1 of %2 (%3)"_s.arg(QString::number(answered), QString::number(pairs),
                                                          percentOf(answered, pairs))}}},
                        .texts = 1};
    blocks << Paragraph{u"SHA-256 of the project file: %1"_s.arg(QString::fromLatin1(project.sha256)), Tone::Faint};
    if (flags.isEmpty()) {
        blocks << Paragraph{u"Nothing stands out by the rules of this report, which says nothing of whether the "
                            "answers are good."_s};
        return blocks;
    }
    blocks << Paragraph{u"What to look at first:"_s};
    Entries entries;
    for (const Flag &flag : flags.first(std::min(mostFlags, flags.size())))
        entries.entries << Entries::Entry{flag.text, flag.anchor};
    blocks << entries;
    if (flags.size() > mostFlags)
        blocks << Paragraph{u"%1 more in the sections."_s.arg(flags.size() - mostFlags), Tone::Faint};
    return blocks;
}

} // namespace study
