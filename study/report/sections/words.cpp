#include "study/report/phrases.h"
#include "study/report/sections/sections.h"
#include "study/report/wording.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr qsizetype mostOfKind = 8;

/// Something found in what a persona said.
struct Finding
{
    int question = 0; ///< by number
    Quotation quotation;
};

Finding findingOf(const Survey &survey, const Answers &answers, int place, const Found &found, const QString &what)
{
    return {answers.question->number,
            {found.excerpt,
             u"%1, %2: %3"_s.arg(survey.nameOf(answers.personas.at(place)), Survey::titleOf(*answers.question), what)}};
}

/// In answers to questions for a text, in reasoning, and in answers that are no label.
QList<Finding> phrasesIn(const Survey &survey, const QStringList &phrases)
{
    QList<Finding> findings;
    for (const Answers &answers : survey.answers) {
        const bool isFree = !answers.question->hasList() && answers.question->kind != Kind::Numeric;
        for (int place = 0; place < answers.n(); ++place) {
            auto found = isFree ? findPhrase(answers.given.at(place), phrases) : std::nullopt;
            if (!found)
                found = findPhrase(answers.reasonings.at(place), phrases);
            if (found)
                findings << findingOf(survey, answers, place, *found, quoted(found->phrase));
        }
    }
    return findings;
}

/// The same in answers that can't be used, where refusals are often found.
QList<Finding> phrasesInUnusable(const Survey &survey, const QStringList &phrases)
{
    QList<Finding> findings;
    for (int question = 0; question < survey.answers.size(); ++question) {
        if (survey.answers.at(question).unusable == 0)
            continue;
        const Question &asked = *survey.answers.at(question).question;
        for (const int persona : survey.everybody) {
            const Cell &cell = survey.cells.at(persona, question);
            if (cell.answer == nullptr || cell.status == Status::Answered)
                continue;
            if (const auto found = findPhrase(cell.answer->shown(), phrases))
                findings << Finding{
                    asked.number,
                    {found->excerpt, u"%1, %2, not usable: %3"_s.arg(survey.nameOf(persona), Survey::titleOf(asked),
                                                                     quoted(found->phrase))}};
        }
    }
    return findings;
}

QList<Finding> contradictions(const Survey &survey)
{
    QList<Finding> findings;
    for (const Answers &answers : survey.answers) {
        const Question &question = *answers.question;
        const bool isOne = question.kind == Kind::SingleChoice || question.kind == Kind::Likert;
        if (!isOne || !question.hasList())
            continue;
        for (int place = 0; place < answers.n(); ++place) {
            const int chosen = answers.codes.at(place);
            if (const auto found = findOtherLabel(answers.reasonings.at(place), question.labels, chosen))
                findings << findingOf(survey, answers, place, *found,
                                      u"answered %1, the reasoning names %2"_s.arg(
                                          quoted(question.labels.at(chosen), 40), quoted(found->phrase, 40)));
        }
    }
    return findings;
}

void addFindings(Blocks &blocks, const QString &title, const QString &anchor, const QString &rule,
                 const QList<Finding> &findings)
{
    blocks << Heading{.level = 3, .text = u"%1: %2"_s.arg(title, QString::number(findings.size())), .anchor = anchor};
    blocks << Paragraph{rule, Tone::Faint};
    for (const Finding &finding : findings.first(std::min(mostOfKind, findings.size())))
        blocks << finding.quotation;
    if (findings.size() > mostOfKind)
        blocks << Paragraph{u"%1 more, not quoted."_s.arg(findings.size() - mostOfKind), Tone::Faint};
}

QString phraseRule(const QString &what, const QStringList &phrases)
{
    return u"%1: an answer in free text, one that can't be used, or a reasoning that holds one of these phrases as "
           "whole words, within its first %2 characters: %3."_s.arg(what, QString::number(searchedLength),
                                                                    phrases.join(u"; "_s));
}

} // namespace

Section wordsSection(const Survey &survey)
{
    Section section;
    Blocks &blocks = section.blocks;
    blocks << Heading{.level = 2, .text = u"Words"_s, .anchor = u"words"_s, .startsPage = true};
    blocks << Paragraph{u"Found by phrases and not by a judgement: each is a place to look at, and some are none of "
                        "what they are filed under. The phrases are English."_s};
    const QList<Finding> refused = phrasesIn(survey, refusals()) + phrasesInUnusable(survey, refusals());
    const QList<Finding> hedged = phrasesIn(survey, hedges());
    const QList<Finding> contradicting = contradictions(survey);
    addFindings(blocks, u"Refusals"_s, u"refusals"_s, phraseRule(u"Counted"_s, refusals()), refused);
    addFindings(blocks, u"Hedges"_s, u"hedges"_s, phraseRule(u"Counted"_s, hedges()), hedged);
    addFindings(blocks, u"Reasoning that names another label"_s, u"contradictions"_s,
                u"Counted: an answer of one label whose reasoning names another label of the question, as whole words, "
                "and not the one that was given. Labels of fewer than three characters, and those that are a part of "
                "the given one, are passed over."_s,
                contradicting);
    if (!refused.isEmpty())
        section.flags << Flag{u"%1 like a refusal"_s.arg(counted(refused.size(), u"answer reads"_s, u"answers read"_s)),
                              u"refusals"_s};
    if (!contradicting.isEmpty())
        section.flags << Flag{u"%1 another label than the answer"_s.arg(
                                  counted(contradicting.size(), u"reasoning names"_s, u"reasonings name"_s)),
                              u"contradictions"_s};
    return section;
}

} // namespace study
