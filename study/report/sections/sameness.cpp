#include "study/report/plots/plots.h"
#include "study/report/sections/sections.h"
#include "study/report/wording.h"
#include "study/statistics/association.h"
#include "study/statistics/distribution.h"
#include "study/statistics/mixedrows.h"
#include "study/statistics/numbers.h"
#include "study/statistics/words.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr int mostCompared = 3000;
constexpr qsizetype mostGroupsOfSame = 10;
constexpr qsizetype mostNamesOfSame = 12;
constexpr qsizetype mostPairs = 10;
constexpr qsizetype mostSameTexts = 15;
constexpr int shortestSaid = 20;
constexpr double nearlyAll = 0.9;

QString valueOrDash(std::optional<double> value)
{
    return value ? shownNumber(*value) : u"-"_s;
}

/// What goes with a question most of all tags.
struct Association
{
    QString tag;
    std::optional<double> value;
    std::optional<double> corrected;
};

/// By those who answered 1 for one with the tag, else 0.
QList<int> membership(const Answers &answers, const PersonaGroup &group)
{
    QList<int> codes;
    for (const int persona : answers.personas)
        codes << (std::binary_search(group.personas.begin(), group.personas.end(), persona) ? 1 : 0);
    return codes;
}

Association associationOf(const Answers &answers, const PersonaGroup &group)
{
    const QList<int> members = membership(answers, group);
    Association association{.tag = group.name, .value = {}, .corrected = {}};
    if (answers.question->kind == Kind::Numeric) {
        QList<QList<double>> numbers(2);
        for (qsizetype place = 0; place < members.size(); ++place)
            numbers[members.at(place)] << answers.numbers.at(place);
        association.value = etaSquared(numbers);
        association.corrected = association.value;
    } else if (answers.question->kind != Kind::Text) {
        const CrossTable table = crossTable(members, answers.codes, 2, int(answers.wholeCounts().size()));
        association.value = cramersV(table);
        association.corrected = cramersVCorrected(table);
    }
    return association;
}

Association strongest(const Survey &survey, const Answers &answers)
{
    Association best;
    for (const PersonaGroup &group : survey.groups) {
        const Association association = associationOf(answers, group);
        if (association.corrected && (!best.corrected || *association.corrected > *best.corrected))
            best = association;
    }
    return best;
}

TextTable sameByQuestion(const Survey &survey)
{
    TextTable table{
        .caption = u"By question: how much the answers are one, and the tag that goes with them most (eta "
                   "squared for numbers, Cram\u00e9r's V for the others, and the same corrected for chance)."_s,
        .header = {u"Question"_s, u"Tag"_s, u"n"_s, u"Most frequent"_s, u"Entropy"_s, u"By tag"_s, u"Corrected"_s},
        .rows = {},
        .texts = 2};
    for (const Answers &answers : survey.answers) {
        const QList<double> counts = answers.wholeCounts();
        const auto most = mostFrequent(counts);
        const Association association = strongest(survey, answers);
        const bool isNumeric = answers.question->kind == Kind::Numeric;
        table.rows << TextTable::Row{
            {u"%1. %2"_s.arg(QString::number(answers.question->number), brief(answers.question->entry.prompt, 60)),
             association.value ? brief(association.tag, 40) : u"-"_s, QString::number(answers.n()),
             most ? percent(most->share) : u"-"_s, valueOrDash(normalisedEntropy(counts)),
             valueOrDash(association.value), isNumeric ? u"-"_s : valueOrDash(association.corrected)},
            answers.n() < smallGroup};
    }
    return table;
}

/// The values by persona of the whole panel, where those who didn't answer have this one.
template<typename Value>
QList<Value> spreadOut(const Answers &answers, const QList<Value> &values, const Value &missing, int rows)
{
    QList<Value> all(rows, missing);
    for (qsizetype place = 0; place < answers.personas.size(); ++place) {
        if (answers.personas.at(place) < rows)
            all[answers.personas.at(place)] = values.at(place);
    }
    return all;
}

void addColumn(MixedRows &rows, const Answers &answers)
{
    const Question &question = *answers.question;
    const int kinds = int(answers.kinds.size());
    if (question.kind == Kind::Numeric) {
        const QList<std::optional<double>> numbers(answers.numbers.begin(), answers.numbers.end());
        rows.addNumbers(spreadOut<std::optional<double>>(answers, numbers, std::nullopt, rows.size()));
    } else if (question.hasList() && (question.kind == Kind::MultiChoice || question.kind == Kind::Ranking)) {
        const QList<std::optional<QList<int>>> lists(answers.lists.begin(), answers.lists.end());
        const auto all = spreadOut<std::optional<QList<int>>>(answers, lists, std::nullopt, rows.size());
        if (question.kind == Kind::Ranking)
            rows.addRanks(all, kinds);
        else
            rows.addSets(all, kinds);
    } else if (question.hasList() && question.kind == Kind::Likert) {
        rows.addOrdinal(spreadOut(answers, answers.codes, -1, rows.size()), kinds);
    } else {
        rows.addNominal(spreadOut(answers, answers.codes, -1, rows.size()));
    }
}

void addIdentical(Section &section, const Survey &survey, const MixedRows &rows)
{
    section.blocks << Heading{.level = 3, .text = u"Personas with the same answers throughout"_s, .anchor = u"same"_s};
    const QList<QList<int>> groups = rows.identicalRows();
    if (groups.isEmpty()) {
        section.blocks << Paragraph{u"None."_s};
        return;
    }
    qsizetype personas = 0;
    TextTable table{.caption = u"Groups that gave the same answer to each question."_s,
                    .header = {u"Personas"_s, u"How many"_s},
                    .rows = {}};
    for (const QList<int> &group : groups) {
        personas += group.size();
        if (table.rows.size() == mostGroupsOfSame)
            continue;
        QStringList names;
        for (const int place : group.first(std::min(mostNamesOfSame, group.size())))
            names << survey.nameOf(place);
        if (names.size() < group.size())
            names << u"..."_s;
        table.rows << TextTable::Row{{names.join(u", "_s), QString::number(group.size())}};
    }
    section.blocks << table;
    if (groups.size() > mostGroupsOfSame)
        section.blocks << Paragraph{u"The %1 largest of %2 groups."_s.arg(mostGroupsOfSame).arg(groups.size()),
                                    Tone::Faint};
    section.flags << Flag{u"%1 of %2 personas gave the same answers throughout as another one"_s.arg(personas).arg(
                              survey.everybody.size()),
                          u"same"_s};
}

/// Two that are each other's nearest are told once.
QList<int> nearestFirst(const QList<std::optional<MixedRows::Neighbour>> &nearest)
{
    QList<int> places;
    for (int row = 0; row < nearest.size(); ++row) {
        const auto &neighbour = nearest.at(row);
        if (!neighbour)
            continue;
        const auto &back = nearest.at(neighbour->row);
        if (!back || back->row != row || row < neighbour->row)
            places << row;
    }
    std::stable_sort(places.begin(), places.end(),
                     [&nearest](int a, int b) { return nearest.at(a)->distance < nearest.at(b)->distance; });
    return places;
}

void addNeighbours(Blocks &blocks, const Survey &survey, const MixedRows &rows)
{
    blocks << Heading{.level = 3, .text = u"How near the nearest other persona is"_s, .anchor = {}};
    const auto nearest = rows.nearestNeighbours();
    QList<double> distances;
    for (const auto &neighbour : nearest) {
        if (neighbour)
            distances << neighbour->distance;
    }
    if (distances.isEmpty()) {
        blocks << Paragraph{u"No two personas answered the same question."_s};
        return;
    }
    blocks << Paragraph{
        u"Gower's distance over all questions that both answered: 0 for the same answers, 1 where all "
        "differ as far as they can. Median %1, least %2, most %3."_s.arg(
            valueOrDash(median(distances)), valueOrDash(quantile(distances, 0)), valueOrDash(quantile(distances, 1)))};
    blocks << histogramFigure(u"Distance of each persona to its nearest neighbour"_s, histogram(distances));
    TextTable table{.caption = u"The nearest ones."_s,
                    .header = {u"Persona"_s, u"Nearest"_s, u"Distance"_s, u"Questions both answered"_s},
                    .rows = {},
                    .texts = 2};
    const QList<int> places = nearestFirst(nearest);
    for (const int row : places.first(std::min(mostPairs, places.size()))) {
        const MixedRows::Neighbour &neighbour = *nearest.at(row);
        table.rows << TextTable::Row{{survey.nameOf(row), survey.nameOf(neighbour.row), shownNumber(neighbour.distance),
                                      QString::number(neighbour.shared)}};
    }
    blocks << table;
}

/// A text that several personas gave word for word.
struct SameText
{
    QString text;
    QString place;
    int personas = 0;
};

void collectSame(QList<SameText> &found, const QStringList &texts, const QString &place, int shortest)
{
    const CodedTexts coded = codesOf(texts);
    const QList<double> counts = countsOf(coded.codes, int(coded.kinds.size()));
    for (qsizetype kind = 0; kind < counts.size(); ++kind) {
        if (counts.at(kind) >= 2 && characterCount(coded.kinds.at(kind)) >= shortest)
            found << SameText{coded.kinds.at(kind), place, int(counts.at(kind))};
    }
}

void addSameTexts(Section &section, const Survey &survey)
{
    QList<SameText> found;
    for (const Answers &answers : survey.answers) {
        const QString title = Survey::titleOf(*answers.question);
        if (answers.question->kind == Kind::Text)
            collectSame(found, answers.given, title, shortestSaid);
        collectSame(found, answers.reasonings, title + u", reasoning"_s, shortestSaid);
    }
    section.blocks << Heading{.level = 3, .text = u"The same text from several personas"_s, .anchor = u"same-texts"_s};
    if (found.isEmpty()) {
        section.blocks << Paragraph{u"None of %1 characters or more."_s.arg(shortestSaid)};
        return;
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const SameText &a, const SameText &b) { return a.personas > b.personas; });
    TextTable table{.caption = u"Texts and reasoning of %1 characters or more, word for word."_s.arg(shortestSaid),
                    .header = {u"Text"_s, u"Where"_s, u"Personas"_s},
                    .rows = {},
                    .texts = 2};
    for (const SameText &same : found.first(std::min(mostSameTexts, found.size())))
        table.rows << TextTable::Row{{cut(same.text, 200), same.place, QString::number(same.personas)}};
    section.blocks << table;
    if (found.size() > mostSameTexts)
        section.blocks << Paragraph{u"The %1 most frequent of %2."_s.arg(mostSameTexts).arg(found.size()), Tone::Faint};
    section.flags << Flag{
        u"%1 word for word from several personas"_s.arg(counted(found.size(), u"text came"_s, u"texts came"_s)),
        u"same-texts"_s};
}

void flagOneAnswer(QList<Flag> &flags, const Survey &survey)
{
    QStringList numbers;
    for (const Answers &answers : survey.answers) {
        const auto most = mostFrequent(answers.wholeCounts());
        if (answers.n() >= smallGroup && most && most->share >= nearlyAll)
            numbers << QString::number(answers.question->number);
    }
    if (numbers.isEmpty())
        return;
    constexpr qsizetype mostNumbers = 20;
    const QString more = numbers.size() > mostNumbers ? u" ..."_s : QString();
    flags << Flag{u"%1 or more gave one answer to %2: number %3%4"_s.arg(
                      percent(nearlyAll), counted(numbers.size(), u"question"_s, u"questions"_s),
                      numbers.first(std::min(mostNumbers, numbers.size())).join(u", "_s), more),
                  u"sameness"_s};
}

} // namespace

Section samenessSection(const Survey &survey)
{
    Section section;
    section.blocks << Heading{.level = 2, .text = u"Sameness"_s, .anchor = u"sameness"_s, .startsPage = true};
    section.blocks << Paragraph{u"Simulated answers vary less than people's do: between personas, and from one run to "
                                "the next. What follows tells how much of it is here, not how much there ought to "
                                "be."_s};
    if (survey.everybody.isEmpty() || survey.answers.isEmpty()) {
        section.blocks << Paragraph{u"There is nothing to compare."_s};
        return section;
    }
    flagOneAnswer(section.flags, survey);
    section.blocks << sameByQuestion(survey);
    MixedRows rows(int(std::min(qsizetype(mostCompared), survey.everybody.size())));
    for (const Answers &answers : survey.answers)
        addColumn(rows, answers);
    if (rows.size() < survey.everybody.size())
        section.blocks << Paragraph{u"Personas are compared with each other among the first %1."_s.arg(rows.size()),
                                    Tone::Faint};
    addIdentical(section, survey, rows);
    addNeighbours(section.blocks, survey, rows);
    addSameTexts(section, survey);
    return section;
}

} // namespace study
