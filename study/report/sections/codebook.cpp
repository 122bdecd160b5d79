#include "study/report/sections/quotations.h"
#include "study/report/sections/sections.h"
#include "study/report/wording.h"
#include "study/statistics/likeness.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr qsizetype mostListedLabels = 40;

QString labelsInWords(const Question &question)
{
    if (!question.hasList())
        return u"-"_s;
    QStringList words;
    for (qsizetype place = 0; place < std::min(mostListedLabels, question.labels.size()); ++place)
        words << u"%1 = %2"_s.arg(QString::number(place + 1), brief(question.labels.at(place), 60));
    if (question.labels.size() > mostListedLabels)
        words << u"... of %1"_s.arg(question.labels.size());
    return words.join(u"; "_s);
}

TextTable questionTable(const Survey &survey)
{
    TextTable table{.caption = u"Questions, and the numbers of their labels."_s,
                    .header = {u"Question"_s, u"Type"_s, u"Labels"_s},
                    .rows = {},
                    .texts = 3};
    for (const Question &question : survey.project.questions)
        table.rows << TextTable::Row{
            {u"%1. %2"_s.arg(QString::number(question.number), brief(question.entry.prompt, 90)),
             shownName(question.kind), labelsInWords(question)}};
    return table;
}

TextTable statusTable()
{
    return {.caption = u"What becomes of a pair."_s,
            .header = {u"Status"_s, u"Meaning"_s},
            .rows = {{{shownName(Status::Answered), u"A usable answer is stored."_s}},
                     {{shownName(Status::Open), u"No answer is stored."_s}},
                     {{shownName(Status::OutOfList), u"The answer names something that is no label, or several where "
                                                     "one was asked for."_s}},
                     {{shownName(Status::NotANumber), u"The answer to a numeric question is no finite number."_s}},
                     {{shownName(Status::Unreadable), u"An answer is stored, without a text and without a number."_s}}},
            .texts = 2};
}

TextTable formulaTable()
{
    return {
        .caption = u"How what is told was computed; p is the share of a kind, k the number of kinds."_s,
        .header = {u"What"_s, u"Formula"_s, u"Range"_s},
        .rows = {{{u"Share of the most frequent answer"_s,
                   u"The largest p. Of several labels, a ranking, a text or a "
                   "number the whole answer is a kind."_s,
                   u"above 0 to 1"_s}},
                 {{u"Entropy over its maximum"_s,
                   u"- sum of p log2 p, over log2 k; k counts all labels, or without a list "
                   "the answers that occur"_s,
                   u"0 one answer to 1 all as frequent"_s}},
                 {{u"Standard deviation"_s, u"Root of the squared distances from the mean over n - 1"_s, u"0 up"_s}},
                 {{u"Quarters and median"_s, u"Type 7: place 1 + (n - 1) part, in proportion between two"_s,
                   u"that of the numbers"_s}},
                 {{u"Histogram"_s,
                   u"A bin for each whole number of a small range, else the width of Freedman and "
                   "Diaconis"_s,
                   u"-"_s}},
                 {{u"Cram\u00e9r's V"_s,
                   u"Root of chi squared over n (smaller number of kinds - 1); corrected as by "
                   "Bergsma (2013)"_s,
                   u"0 to 1"_s}},
                 {{u"Eta squared"_s, u"Sum of squares between those with the tag and those without, over that in all"_s,
                   u"0 to 1"_s}},
                 {{u"Gower's distance"_s,
                   u"Mean over the questions that both answered: 0 or 1 for one label or a text; places apart over the "
                   "largest for a scale; difference over the range for numbers; Jaccard's for several labels; footrule "
                   "over its maximum for ranks"_s,
                   u"0 the same to 1"_s}},
                 {{u"Nearly the same text"_s,
                   u"Three words in a row that both have, over those that either has, in the "
                   "first %1 characters: %2 or more"_s.arg(QString::number(comparedLength), percent(nearlyTheSame)),
                   u"0 to 1"_s}},
                 {{u"Wasserstein distance over its maximum"_s,
                   u"Sum of the differences of cumulated shares, over the "
                   "number of labels - 1, or over the range of the numbers"_s,
                   u"0 the same to 1 opposite ends"_s}},
                 {{u"Jensen-Shannon distance"_s, u"Root of the divergence to the base 2"_s, u"0 the same to 1"_s}},
                 {{u"Ratio of standard deviations"_s,
                   u"That of the answers here over that of the other side, both over "
                   "n"_s,
                   u"0 up; below 1 where these vary less"_s}}},
        .texts = 3};
}

Entries sources()
{
    return {{{u"That simulated answers vary less than people's, and change with wording and time: Bisbee, Clinton, "
              "Dorff, Kenkel and Larson (2024), Synthetic Replacements for Human Survey Data?, Political Analysis, doi "
              "10.1017/pan.2024.5."_s,
              {}},
             {u"Wasserstein distance over its maximum between answers of models and of people: Santurkar and others "
              "(2023), Whose Opinions Do Language Models Reflect?, arXiv 2303.17548."_s,
              {}},
             {u"Entropy of answers, and the order of labels: Dominguez-Olmedo, Hardt and Mendler-D\u00fcnner (2023), "
              "Questioning the Survey Responses of Large Language Models, arXiv 2306.07951."_s,
              {}},
             {u"The place of a label in the list, and small changes of wording: Rupprecht, Ahnert and Strohmaier "
              "(2025), Prompt Perturbations Reveal Human-Like Biases in LLM Survey Responses, arXiv 2507.07188."_s,
              {}}}};
}

} // namespace

Section codebookSection(const Survey &survey)
{
    Section section;
    Blocks &blocks = section.blocks;
    blocks << Heading{.level = 2, .text = u"Codebook and formulas"_s, .anchor = u"codebook"_s, .startsPage = true};
    blocks << questionTable(survey) << statusTable();
    blocks << Paragraph{u"An answer is a label where it is the same text, or the same but for case and white space. "
                        "What doesn't match is never guessed."_s};
    blocks << formulaTable() << Paragraph{quotationRule()};
    blocks << Paragraph{
        u"Rows of fewer than %1 answers are faint. There are no tests of significance, since the "
        "personas are no sample of anybody, and no score, since there is no one thing to score."_s.arg(smallGroup)};
    blocks << Paragraph{u"Sources:"_s} << sources();
    return section;
}

} // namespace study
