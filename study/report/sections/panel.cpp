#include "study/report/sections/sections.h"
#include "study/report/wording.h"
#include "study/statistics/likeness.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

static constexpr qsizetype mostOverlapping = 10;
static constexpr qsizetype mostGroupsListed = 10;
static constexpr qsizetype mostNames = 8;

static QStringList textsOf(const Project &project)
{
    QStringList texts;
    for (const Persona &persona : project.personas)
        texts << (persona.entry.systemPrompt.isEmpty() ? persona.entry.attributes : persona.entry.systemPrompt);
    return texts;
}

static void addTags(Blocks &blocks, const Survey &survey)
{
    if (survey.tags.isEmpty()) {
        blocks << Paragraph{u"No persona has a tag."_s};
        return;
    }
    TextTable table{.caption = u"Personas by tag; one with several tags counts in each."_s,
                    .header = {u"Tag"_s, u"Personas"_s, u"Share"_s},
                    .rows = {}};
    for (const PersonaGroup &group : survey.groups) {
        const qsizetype size = group.personas.size();
        table.rows << TextTable::Row{
            {brief(group.name, 60), QString::number(size), percentOf(size, survey.everybody.size())},
            size < smallGroup};
    }
    blocks << table;
    if (survey.tags.size() > survey.groups.size())
        blocks << Paragraph{u"The %1 largest of %2 tags are shown."_s.arg(survey.groups.size()).arg(survey.tags.size()),
                            Tone::Faint};
}

static void addOverlaps(Blocks &blocks, const Survey &survey)
{
    const QList<PersonaGroup> groups = survey.groups;
    const auto count = std::min(mostOverlapping, groups.size());
    if (count < 2)
        return;
    TextTable table{.caption = u"Personas that have both tags."_s, .header = {QString()}, .rows = {}};
    for (qsizetype row = 0; row < count; ++row) {
        table.header << brief(groups.at(row).name, 24);
        QStringList cells{brief(groups.at(row).name, 60)};
        for (qsizetype column = 0; column < count; ++column) {
            QList<int> both;
            std::set_intersection(groups.at(row).personas.begin(), groups.at(row).personas.end(),
                                  groups.at(column).personas.begin(), groups.at(column).personas.end(),
                                  std::back_inserter(both));
            cells << QString::number(both.size());
        }
        table.rows << TextTable::Row{cells};
    }
    blocks << table;
    if (groups.size() > count)
        blocks << Paragraph{u"Of the first %1 tags by name."_s.arg(count), Tone::Faint};
}

static QString namesOf(const Survey &survey, const QList<int> &places)
{
    QStringList names;
    for (const int place : places.first(std::min(mostNames, places.size())))
        names << survey.nameOf(place);
    const qsizetype left = places.size() - names.size();
    return names.join(u", "_s) + (left > 0 ? u" and %1 more"_s.arg(left) : QString());
}

static void addAlike(Section &section, const Survey &survey)
{
    const QList<AlikeTexts> groups = alikeTexts(textsOf(survey.project));
    section.blocks << Heading{
        .level = 3, .text = u"Personas that are nearly the same text"_s, .anchor = u"alike-personas"_s};
    if (groups.isEmpty()) {
        section.blocks << Paragraph{u"None, where %1 of the three words in a row that either text has count as nearly "
                                    "the same."_s.arg(percent(nearlyTheSame))};
        return;
    }
    qsizetype personas = 0;
    for (const AlikeTexts &group : groups)
        personas += group.places.size();
    TextTable table{.caption =
                        u"Groups in which each text shares %1 or more of its words, three in a row, with another "
                        "one."_s.arg(percent(nearlyTheSame)),
                    .header = {u"Personas"_s, u"How many"_s, u"Least likeness"_s},
                    .rows = {}};
    for (const AlikeTexts &group : groups.first(std::min(mostGroupsListed, groups.size()))) {
        table.rows << TextTable::Row{{namesOf(survey, group.places), QString::number(group.places.size()),
                                      group.same ? u"the same text"_s : percent(group.least)}};
    }
    section.blocks << table;
    if (groups.size() > mostGroupsListed)
        section.blocks << Paragraph{
            u"The %1 largest of %2 groups are shown."_s.arg(mostGroupsListed).arg(groups.size()), Tone::Faint};
    section.flags << Flag{
        u"%1 of %2 personas are nearly the same text as another one"_s.arg(personas).arg(survey.everybody.size()),
        u"alike-personas"_s};
}

Section panelSection(const Survey &survey)
{
    Section section;
    section.blocks << Heading{.level = 2, .text = u"The panel"_s, .anchor = u"panel"_s, .startsPage = true};
    addTags(section.blocks, survey);
    addOverlaps(section.blocks, survey);
    addAlike(section, survey);
    return section;
}

} // namespace study
