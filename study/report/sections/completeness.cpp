#include "study/report/plots/plots.h"
#include "study/report/sections/sections.h"
#include "study/report/wording.h"

using namespace Qt::StringLiterals;

namespace study {

static Mark markOf(Status status)
{
    switch (status) {
    case Status::Answered:
        return Mark::Done;
    case Status::Open:
        return Mark::Open;
    case Status::OutOfList:
        return Mark::OutOfList;
    case Status::NotANumber:
        return Mark::NotANumber;
    case Status::Unreadable:
        return Mark::Unreadable;
    }
    Q_UNREACHABLE_RETURN(Mark::Done);
}

namespace {

struct Stored
{
    qsizetype superseded = 0;
    qsizetype orphans = 0;
};

} // namespace

static Stored storedBeside(const Survey &survey)
{
    Stored stored;
    for (qsizetype place = 0; place < survey.project.answers.size(); ++place) {
        const Cells::Standing standing = survey.cells.standing(place);
        stored.superseded += standing == Cells::Standing::Superseded ? 1 : 0;
        stored.orphans += standing == Cells::Standing::Orphan ? 1 : 0;
    }
    return stored;
}

static TextTable byQuestion(const Survey &survey)
{
    TextTable table{.caption = u"By question."_s,
                    .header = {u"Question"_s, u"Type"_s, u"Usable"_s, u"Open"_s, u"Not usable"_s, u"Share usable"_s},
                    .rows = {},
                    .texts = 2};
    for (const Answers &answers : survey.answers) {
        const Question &question = *answers.question;
        table.rows << TextTable::Row{
            {u"%1. %2"_s.arg(QString::number(question.number), brief(question.entry.prompt, 90)),
             shownName(question.kind), QString::number(answers.n()), QString::number(answers.open),
             QString::number(answers.unusable), percentOf(answers.n(), answers.all)}};
    }
    return table;
}

static void addFlags(QList<Flag> &flags, const Survey &survey, const Stored &stored)
{
    qsizetype open = 0;
    qsizetype unusable = 0;
    for (const Answers &answers : survey.answers) {
        open += answers.open;
        unusable += answers.unusable;
    }
    const QString anchor = u"completeness"_s;
    if (open > 0)
        flags << Flag{u"%1 without an answer"_s.arg(counted(open, u"pair is"_s, u"pairs are"_s)), anchor};
    if (unusable > 0)
        flags << Flag{u"%1 not usable: out of the list, no number or unreadable"_s.arg(
                          counted(unusable, u"answer is"_s, u"answers are"_s)),
                      anchor};
    if (stored.superseded > 0)
        flags << Flag{u"%1 by a newer one"_s.arg(
                          counted(stored.superseded, u"answer was superseded"_s, u"answers were superseded"_s)),
                      anchor};
}

Section completenessSection(const Survey &survey)
{
    Section section;
    Blocks &blocks = section.blocks;
    blocks << Heading{.level = 2, .text = u"Completeness"_s, .anchor = u"completeness"_s, .startsPage = true};
    if (survey.everybody.isEmpty() || survey.answers.isEmpty()) {
        blocks << Paragraph{u"There are no pairs of a persona and a question."_s};
        return section;
    }
    const Figure map = mapFigure({.title = u"What became of each pair: personas in rows, questions in columns"_s,
                                  .rowsName = u"personas"_s,
                                  .columnsName = u"questions"_s,
                                  .rows = survey.everybody.size(),
                                  .columns = survey.answers.size(),
                                  .at = [&survey](qsizetype persona, qsizetype question) {
                                      return markOf(survey.cells.at(int(persona), int(question)).status);
                                  }});
    blocks << map << Paragraph{map.alternative, Tone::Faint} << byQuestion(survey);
    const Stored stored = storedBeside(survey);
    blocks << Paragraph{u"Of several answers to a pair the newest counts, the one that the grid shows: %1 older. "
                        "Answers of personas or questions that are not there any more: %2. Neither is counted in this "
                        "report."_s.arg(stored.superseded)
                            .arg(stored.orphans)};
    addFlags(section.flags, survey, stored);
    return section;
}

} // namespace study
