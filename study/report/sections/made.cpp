#include "study/report/sections/sections.h"
#include "study/report/wording.h"
#include "survey/requestassembly.h"

using namespace Qt::StringLiterals;

namespace study {

static constexpr qsizetype mostOfText = 4000;
static constexpr qsizetype mostOfTurn = 1500;

/// The first one of those with the most usable answers, -1 where nobody has any.
static int chosenPersona(const Survey &survey)
{
    QList<int> counts(survey.project.personas.size(), 0);
    for (const Answers &answers : survey.answers) {
        for (const int persona : answers.personas)
            ++counts[persona];
    }
    int chosen = -1;
    for (int persona = 0; persona < counts.size(); ++persona) {
        if (counts.at(persona) > (chosen < 0 ? 0 : counts.at(chosen)))
            chosen = persona;
    }
    return chosen;
}

static void addBoilerplate(Blocks &blocks, const QString &name, const QString &text)
{
    blocks << Heading{.level = 3, .text = name, .anchor = {}};
    if (text.isEmpty())
        blocks << Paragraph{u"Empty."_s, Tone::Faint};
    else
        blocks << Verbatim{cut(text, mostOfText)};
}

static void addConversation(Blocks &blocks, const Survey &survey, int persona)
{
    const Project &project = survey.project;
    blocks << Paragraph{
        u"%1, the first persona of those with the most usable answers. Laid out from the boilerplate, "
        "the persona and the answers as they are in the file; earlier answers that are no text went "
        "out as empty turns, and answers to adjudicated questions were not sent."_s.arg(survey.nameOf(persona))};
    const QString system =
        systemText(project.boilerplate.preamble, project.personas.at(persona).entry, project.boilerplate.postamble);
    blocks << Paragraph{u"System message:"_s} << Verbatim{cut(system, mostOfText)};
    for (int question = 0; question < project.questions.size(); ++question) {
        const Cell &cell = survey.cells.at(persona, question);
        if (cell.answer == nullptr)
            continue;
        blocks << Quotation{cut(project.questions.at(question).entry.prompt, mostOfTurn),
                            Survey::titleOf(project.questions.at(question))};
        blocks << Quotation{cut(cell.answer->shown(), mostOfTurn), survey.nameOf(persona)};
    }
}

Section madeSection(const Survey &survey, const Recorded &recorded)
{
    Section section;
    Blocks &blocks = section.blocks;
    blocks << Heading{.level = 2, .text = u"How it was made"_s, .anchor = u"made"_s, .startsPage = true};
    blocks << Paragraph{u"Each question was put to each persona in one request to a language model. The model was sent "
                        "the boilerplate around the text of the persona, its own earlier answers, and the question."_s};
    blocks << Heading{.level = 3, .text = u"Models and settings"_s, .anchor = {}};
    if (recorded.isEmpty())
        blocks << Paragraph{u"Not recorded. A project file doesn't hold which model answered, nor its settings; the "
                            "record of a bridge does (--record FILE)."_s};
    for (const QString &sentence : recorded)
        blocks << Paragraph{sentence};
    addBoilerplate(blocks, u"Before the persona, word for word"_s, survey.project.boilerplate.preamble);
    addBoilerplate(blocks, u"After the persona, word for word"_s, survey.project.boilerplate.postamble);
    blocks << Heading{.level = 3, .text = u"One whole conversation"_s, .anchor = {}};
    if (const int persona = chosenPersona(survey); persona >= 0)
        addConversation(blocks, survey, persona);
    else
        blocks << Paragraph{u"There is no usable answer yet."_s};
    return section;
}

} // namespace study
