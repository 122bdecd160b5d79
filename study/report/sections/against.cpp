#include "study/report/against.h"
#include "study/report/plots/plots.h"
#include "study/report/sections/sections.h"
#include "study/report/wording.h"
#include "study/statistics/distribution.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr qsizetype mostUnmatched = 12;

QString distanceOrDash(std::optional<double> value)
{
    return value ? shownNumber(*value) : u"-"_s;
}

bool isOrdered(const Question &question)
{
    return question.kind == Kind::Likert && question.hasList();
}

bool isComparable(const Answers &own, const Counterpart &other)
{
    if (own.question->kind == Kind::Numeric)
        return !own.numbers.isEmpty() && !other.numbers.isEmpty();
    return own.question->hasList() && sharesOf(ownCounts(own)) && sharesOf(other.counts);
}

/// The mean shares of the other side's other questions with as many labels: what one would guess who knew how labels
/// are used but not what was asked. Empty where there is no such question.
QList<double> pooled(const Survey &survey, const Against &against, const Counterpart &left)
{
    QList<double> sum(left.counts.size(), 0);
    bool isThere = false;
    for (const Counterpart &other : against.counterparts) {
        const Kind kind = survey.project.questions.at(other.question).kind;
        const auto shares = sharesOf(other.counts);
        if (other.question == left.question || other.counts.size() != sum.size() || !shares ||
            kind != survey.project.questions.at(left.question).kind)
            continue;
        for (qsizetype place = 0; place < sum.size(); ++place)
            sum[place] += shares->at(place);
        isThere = true;
    }
    return isThere ? sum : QList<double>();
}

/// How far a distribution is from the other side's.
QStringList distancesOf(const Question &question, const QList<double> &counts, const QList<double> &other)
{
    if (counts.isEmpty())
        return {u"-"_s, u"-"_s, u"-"_s};
    return {isOrdered(question) ? distanceOrDash(wassersteinOrdered(counts, other)) : u"-"_s,
            distanceOrDash(jensenShannonDistance(counts, other)),
            isOrdered(question) ? distanceOrDash(deviationRatio(weightedPlaces(counts), weightedPlaces(other)))
                                : u"-"_s};
}

TextTable distanceTable()
{
    return {.caption = u"How far from the other side: the answers here, and two that know nothing of the question, all "
                       "labels alike and the other side's other questions pooled."_s,
            .header = {u"What"_s, u"Wasserstein over its maximum"_s, u"Jensen-Shannon"_s,
                       u"Ratio of standard deviations"_s},
            .rows = {},
            .texts = 1};
}

void addLabels(Blocks &blocks, const Survey &survey, const Against &against, const Counterpart &other)
{
    const Answers &own = survey.answers.at(other.question);
    const QList<double> counts = ownCounts(own);
    const QList<double> shares = *sharesOf(other.counts);
    const QList<double> ownShares = *sharesOf(counts);
    QList<Dumbbell> rows;
    for (qsizetype place = 0; place < counts.size(); ++place)
        rows << Dumbbell{own.kinds.at(place), ownShares.at(place), shares.at(place)};
    const QString what = own.question->kind == Kind::Ranking       ? u"Labels that came first"_s
                         : own.question->kind == Kind::MultiChoice ? u"Labels, of all that were named"_s
                                                                   : u"Labels"_s;
    blocks << dumbbellFigure(what, u"simulated"_s, against.name, rows);
    TextTable table = distanceTable();
    const QList<double> alike(counts.size(), 1.0);
    table.rows << TextTable::Row{QStringList{u"the answers here"_s} + distancesOf(*own.question, counts, other.counts)}
               << TextTable::Row{QStringList{u"all labels alike"_s} + distancesOf(*own.question, alike, other.counts)}
               << TextTable::Row{QStringList{u"pooled"_s} +
                                 distancesOf(*own.question, pooled(survey, against, other), other.counts)};
    blocks << table;
}

void addNumbersAgainst(Blocks &blocks, const Answers &own, const Counterpart &other)
{
    QList<double> all = own.numbers;
    for (const Weighted &each : other.numbers)
        all << each.number;
    const auto [low, high] = std::minmax_element(all.begin(), all.end());
    QList<Weighted> alike;
    constexpr int steps = 100;
    for (int step = 0; step <= steps; ++step)
        alike << Weighted{*low + ((*high - *low) * step / steps), 1};
    const QList<Weighted> numbers = weighted(own.numbers);
    TextTable table = distanceTable();
    table.caption += u" The range is that of both sides, %1 to %2."_s.arg(shownNumber(*low), shownNumber(*high));
    table.rows << TextTable::Row{{u"the answers here"_s,
                                  distanceOrDash(wassersteinNumbers(numbers, other.numbers, *low, *high)), u"-"_s,
                                  distanceOrDash(deviationRatio(numbers, other.numbers))}}
               << TextTable::Row{{u"all numbers alike"_s,
                                  distanceOrDash(wassersteinNumbers(alike, other.numbers, *low, *high)), u"-"_s,
                                  distanceOrDash(deviationRatio(alike, other.numbers))}};
    blocks << table;
}

void addAgreement(Blocks &blocks, const Counterpart &other)
{
    if (!other.agreement)
        return;
    blocks << Paragraph{u"Pair by pair: of %1 answered on both sides %2 are the same; Cohen's kappa %3."_s.arg(
        counted(other.agreement->pairs, u"persona"_s, u"personas"_s), percent(other.agreement->share),
        distanceOrDash(other.agreement->kappa))};
}

void addUnmatched(Blocks &blocks, const Counterpart &other)
{
    if (other.unmatched.isEmpty())
        return;
    QStringList words;
    for (const auto &[text, weight] : other.unmatched.first(std::min(mostUnmatched, other.unmatched.size())))
        words << u"%1 (%2)"_s.arg(quoted(text, 60), shownNumber(weight));
    if (other.unmatched.size() > mostUnmatched)
        words << u"%1 more"_s.arg(other.unmatched.size() - mostUnmatched);
    blocks << Paragraph{
        u"Not scored, since it matches no label or number of the question: %1."_s.arg(words.join(u", "_s))};
}

} // namespace

Section againstSection(const Survey &survey, const Against &against)
{
    Section section;
    Blocks &blocks = section.blocks;
    blocks << Heading{.level = 2,
                      .text = against.isPeople ? u"Against people"_s : u"Against another project"_s,
                      .anchor = u"against"_s,
                      .startsPage = true};
    blocks << Paragraph{u"Held against %1. A small distance tells that the shares are alike, and nothing of why."_s.arg(
        quoted(against.name))};
    for (const Counterpart &other : against.counterparts) {
        const Answers &own = survey.answers.at(other.question);
        blocks << Heading{.level = 3,
                          .text =
                              u"%1: %2"_s.arg(Survey::titleOf(*own.question), brief(own.question->entry.prompt, 70)),
                          .anchor = {}};
        if (!isComparable(own, other))
            blocks << Paragraph{u"Nothing that could be compared."_s};
        else if (own.question->kind == Kind::Numeric)
            addNumbersAgainst(blocks, own, other);
        else
            addLabels(blocks, survey, against, other);
        addAgreement(blocks, other);
        addUnmatched(blocks, other);
    }
    if (against.counterparts.isEmpty())
        blocks << Paragraph{u"It has none of the questions of this survey."_s};
    QStringList strangers;
    for (const QString &text : against.strangers.first(std::min(mostUnmatched, against.strangers.size())))
        strangers << quoted(text, 60);
    if (!strangers.isEmpty())
        blocks << Paragraph{u"Questions that this survey doesn't have, %1 in all: %2."_s.arg(
            QString::number(against.strangers.size()), strangers.join(u", "_s))};
    return section;
}

} // namespace study
