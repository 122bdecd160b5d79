#include "study/report/survey.h"

#include "study/report/wording.h"
#include "study/statistics/distribution.h"

#include <algorithm>
#include <numeric>

using namespace Qt::StringLiterals;

namespace study {

static bool isOfSeveral(const Question &question)
{
    return question.hasList() && (question.kind == Kind::MultiChoice || question.kind == Kind::Ranking);
}

static void take(Answers &answers, int persona, const Cell &cell)
{
    const Question &question = *answers.question;
    answers.personas << persona;
    answers.given << cell.answer->shown();
    answers.reasonings << cell.answer->reasoning();
    if (cell.number)
        answers.numbers << *cell.number;
    if (!question.hasList())
        return;
    for (const int label : cell.matches.labels)
        answers.counts[label] += 1;
    if (isOfSeveral(question))
        answers.lists << cell.matches.labels;
    else
        answers.codes << cell.matches.labels.first();
}

/// The same combination in another order is the same, but a ranking is an order.
static QStringList combinations(const Answers &answers)
{
    QStringList texts;
    for (QList<int> labels : answers.lists) {
        if (answers.question->kind != Kind::Ranking)
            std::sort(labels.begin(), labels.end());
        QStringList places;
        for (const int label : labels)
            places << QString::number(label);
        texts << places.join(u' ');
    }
    return texts;
}

Answers answersOf(const Project &project, const Cells &cells, int question, const QList<int> &personas)
{
    Answers answers;
    answers.question = &project.questions.at(question);
    answers.all = int(personas.size());
    answers.kinds = answers.question->hasList() ? answers.question->labels : QStringList();
    answers.counts.fill(0, answers.kinds.size());
    for (const int persona : personas) {
        const Cell &cell = cells.at(persona, question);
        if (cell.status == Status::Answered)
            take(answers, persona, cell);
        else
            ++(cell.status == Status::Open ? answers.open : answers.unusable);
    }
    if (isOfSeveral(*answers.question)) {
        answers.codes = codesOf(combinations(answers)).codes;
    } else if (!answers.question->hasList()) {
        const CodedTexts coded = codesOf(answers.given);
        answers.codes = coded.codes;
        answers.kinds = coded.kinds;
        answers.counts = countsOf(coded.codes, int(coded.kinds.size()));
    }
    return answers;
}

QList<double> Answers::wholeCounts() const
{
    if (!isOfSeveral(*question))
        return counts;
    const int most = codes.isEmpty() ? -1 : *std::max_element(codes.begin(), codes.end());
    return countsOf(codes, most + 1);
}

Survey::Survey(const Project &of)
    : project(of)
    , cells(of)
    , everybody(of.personas.size())
{
    std::iota(everybody.begin(), everybody.end(), 0);
    for (const QString &tag : project.tags) {
        PersonaGroup group{.name = tag, .personas = {}};
        for (const int persona : std::as_const(everybody)) {
            if (project.personas.at(persona).tags.contains(tag))
                group.personas << persona;
        }
        if (!group.personas.isEmpty())
            tags << group;
    }
    groups = tags;
    std::stable_sort(groups.begin(), groups.end(), [](const PersonaGroup &a, const PersonaGroup &b) {
        return a.personas.size() > b.personas.size();
    });
    groups = groups.first(std::min(qsizetype(mostGroups), groups.size()));
    std::sort(groups.begin(), groups.end(),
              [](const PersonaGroup &a, const PersonaGroup &b) { return a.name < b.name; });
    for (int question = 0; question < project.questions.size(); ++question)
        answers << answersOf(question, everybody);
}

Answers Survey::answersOf(int question, const QList<int> &personas) const
{
    return study::answersOf(project, cells, question, personas);
}

QString Survey::nameOf(int persona) const
{
    const QString &name = project.personas.at(persona).entry.name;
    return name.isEmpty() ? u"persona %1"_s.arg(persona + 1) : u'\u2068' + brief(name, 60) + u'\u2069';
}

QString Survey::titleOf(const Question &question)
{
    return u"Question %1"_s.arg(question.number);
}

QString Survey::anchorOf(const Question &question)
{
    return u"question-%1"_s.arg(question.number);
}

} // namespace study
