#include "study/report/plots/plots.h"
#include "study/report/sections/quotations.h"
#include "study/report/sections/sections.h"
#include "study/report/wording.h"
#include "study/statistics/distribution.h"
#include "study/statistics/numbers.h"
#include "study/statistics/words.h"
#include "study/told.h"
#include "survey/requestassembly.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

namespace {

constexpr qsizetype mostOfPrompt = 3000;
constexpr qsizetype mostOfLabel = 200;
constexpr qsizetype mostLabels = 256;
constexpr qsizetype mostKinds = 30;
constexpr qsizetype mostParts = 11; ///< of a scale that can be drawn as one bar
constexpr int mostWords = 20;

QString shownOf(std::optional<double> value)
{
    return value ? shownNumber(*value) : u"-"_s;
}

/// What of the labels went out with the question.
QString whatWasTold(const Question &question, const Boilerplate &boilerplate)
{
    if (question.kind == Kind::Text || question.kind == Kind::Numeric)
        return u"The model was sent the question as it stands here."_s;
    if (question.labels.isEmpty()) {
        return question.labelsParse ? u"No labels are stored with it."_s
                                    : u"What is stored for its labels is no list; the model was told nothing of it."_s;
    }
    if (!answerFormat(question.entry).tools.isEmpty())
        return u"The model was given the labels as the only answers that it could choose from."_s;
    QStringList untold;
    for (const QStringList labels = untoldLabels(question, boilerplate); const QString &label : labels)
        untold << quoted(label, 40);
    const QString begin = u"Of the labels the model was told nothing but what prompt and boilerplate say. "_s;
    if (untold.isEmpty())
        return begin + u"They name each of them, or the ends of the scale."_s;
    const qsizetype left = untold.size() - std::min(qsizetype(8), untold.size());
    return begin + u"They don't name %1%2."_s.arg(untold.first(untold.size() - left).join(u", "_s),
                                                  left > 0 ? u" and %1 more"_s.arg(left) : QString());
}

TextTable labelTable(const Answers &answers)
{
    TextTable table{.caption = u"Answers by label; the number is the label's place."_s,
                    .header = {u"Label"_s, u"Number"_s, u"Answers"_s, u"Share of personas"_s},
                    .rows = {}};
    for (qsizetype kind = 0; kind < std::min(mostLabels, answers.kinds.size()); ++kind) {
        const auto count = qsizetype(answers.counts.at(kind));
        table.rows << TextTable::Row{{cut(answers.kinds.at(kind), mostOfLabel), QString::number(kind + 1),
                                      QString::number(count), percentOf(count, answers.n())}};
    }
    return table;
}

QList<Bar> barsOf(const Answers &answers)
{
    QList<Bar> bars;
    for (qsizetype kind = 0; kind < answers.kinds.size(); ++kind)
        bars << Bar{answers.kinds.at(kind), qsizetype(answers.counts.at(kind))};
    if (!answers.question->hasList())
        std::stable_sort(bars.begin(), bars.end(), [](const Bar &a, const Bar &b) { return a.count > b.count; });
    return bars;
}

ScaleRow scaleRow(const QString &name, const Answers &answers)
{
    ScaleRow row{.name = name, .counts = {}, .faint = answers.n() < smallGroup};
    for (const double count : answers.counts)
        row.counts << qsizetype(count);
    return row;
}

Figure scaleOf(const Survey &survey, const Answers &answers, int place)
{
    QList<ScaleRow> rows{scaleRow(u"all"_s, answers)};
    for (const PersonaGroup &group : survey.groups)
        rows << scaleRow(brief(group.name, 40), survey.answersOf(place, group.personas));
    return scaleFigure(u"Answers on the scale, all and by tag, number of answers in brackets"_s, rows);
}

Figure ranksOf(const Answers &answers)
{
    const qsizetype kinds = answers.kinds.size();
    QList<HeatRow> rows;
    QStringList columns;
    for (qsizetype kind = 0; kind < kinds; ++kind) {
        columns << QString::number(kind + 1);
        rows << HeatRow{answers.kinds.at(kind), QList<double>(kinds, 0.0)};
    }
    for (const QList<int> &order : answers.lists) {
        for (qsizetype rank = 0; rank < std::min(kinds, order.size()); ++rank)
            rows[order.at(rank)].shares[rank] += 1.0 / double(answers.n());
    }
    return heatFigure(u"How often each label came in which rank"_s, columns, rows);
}

void addNumbers(Blocks &blocks, const Answers &answers)
{
    const QList<double> &numbers = answers.numbers;
    blocks << histogramFigure(u"How often each range of numbers was given"_s, histogram(numbers));
    blocks << TextTable{
        .caption = {},
        .header = {u"Mean"_s, u"Standard deviation"_s, u"Least"_s, u"First quarter"_s, u"Median"_s, u"Third quarter"_s,
                   u"Most"_s},
        .rows = {{{shownOf(mean(numbers)), shownOf(standardDeviation(numbers)), shownOf(quantile(numbers, 0)),
                   shownOf(quantile(numbers, 0.25)), shownOf(median(numbers)), shownOf(quantile(numbers, 0.75)),
                   shownOf(quantile(numbers, 1))}}},
        .texts = 0};
}

QList<double> lengthsOf(const Answers &answers)
{
    QList<double> lengths;
    for (const QString &text : answers.given)
        lengths << characterCount(text);
    return lengths;
}

void addText(Blocks &blocks, const Answers &answers)
{
    blocks << histogramFigure(u"Lengths of the answers in characters"_s, histogram(lengthsOf(answers)));
    TextTable table{.caption = u"The words that occur in most answers, without the commonest ones of English."_s,
                    .header = {u"Word"_s, u"Answers"_s, u"Share"_s, u"Times"_s},
                    .rows = {}};
    for (const auto all = frequentWords(answers.given, mostWords); const FrequentWord &word : all) {
        table.rows << TextTable::Row{{brief(word.word, 60), QString::number(word.texts),
                                      percentOf(word.texts, answers.n()), QString::number(word.times)}};
    }
    if (!table.rows.isEmpty())
        blocks << table;
}

void addDrawing(Blocks &blocks, const Survey &survey, const Answers &answers, int place)
{
    const Question &question = *answers.question;
    if (question.kind == Kind::Numeric) {
        addNumbers(blocks, answers);
    } else if (question.kind == Kind::Text) {
        addText(blocks, answers);
    } else if (question.kind == Kind::Ranking && question.hasList()) {
        blocks << ranksOf(answers);
    } else if (question.kind == Kind::Likert && question.hasList() && question.labels.size() <= mostParts) {
        blocks << scaleOf(survey, answers, place) << labelTable(answers);
    } else {
        blocks << barsFigure(u"How often each label was chosen"_s, barsOf(answers), answers.n());
        if (question.hasList())
            blocks << labelTable(answers);
    }
}

/// The most frequent whole answer in words, as the first that gave it did.
QString mostFrequentAnswer(const Answers &answers, const MostFrequent &most)
{
    const auto first = answers.codes.indexOf(most.kind);
    if (first < 0)
        return {};
    if (answers.lists.isEmpty())
        return quoted(answers.given.at(first), 60);
    QStringList labels;
    for (const int label : answers.lists.at(first))
        labels << answers.kinds.at(label);
    return quoted(labels.join(answers.question->kind == Kind::Ranking ? u" > "_s : u", "_s), 60);
}

/// What is said of spread: how much of one kind the answers are.
TextTable spreadTable(const Answers &answers)
{
    const QList<double> counts = answers.wholeCounts();
    TextTable table{.caption = u"How far the answers spread; see the codebook for the formulas."_s,
                    .header = {u"What"_s, u"Value"_s},
                    .rows = {},
                    .texts = 1};
    if (const auto most = mostFrequent(counts))
        table.rows << TextTable::Row{
            {u"Share of the most frequent answer, %1"_s.arg(mostFrequentAnswer(answers, *most)), percent(most->share)}};
    table.rows << TextTable::Row{{u"Entropy over its maximum"_s, shownOf(normalisedEntropy(counts))}};
    const Question &question = *answers.question;
    QList<double> places;
    if (question.hasList() && question.kind != Kind::MultiChoice && question.kind != Kind::Ranking) {
        for (const int code : answers.codes)
            places << code + 1;
        table.rows << TextTable::Row{
            {u"Mean position of the chosen label, of %1"_s.arg(question.labels.size()), shownOf(mean(places))}};
    }
    if (question.kind == Kind::Likert && !places.isEmpty())
        table.rows << TextTable::Row{{u"Standard deviation of the position"_s, shownOf(standardDeviation(places))}};
    return table;
}

TextTable::Row groupRow(const QString &name, const Answers &answers)
{
    const auto most = mostFrequent(answers.wholeCounts());
    TextTable::Row row{{name, most ? mostFrequentAnswer(answers, *most) : u"-"_s, QString::number(answers.n()),
                        most ? percent(most->share) : u"-"_s, shownOf(normalisedEntropy(answers.wholeCounts()))},
                       answers.n() < smallGroup};
    const bool isNumeric = answers.question->kind == Kind::Numeric;
    const bool isText = answers.question->kind == Kind::Text;
    if (isNumeric)
        row.cells << shownOf(mean(answers.numbers)) << shownOf(standardDeviation(answers.numbers));
    if (isText)
        row.cells << shownOf(median(lengthsOf(answers)));
    return row;
}

TextTable tagTable(const Survey &survey, const Answers &answers, int place)
{
    TextTable table{.caption = u"The same by tag; rows of fewer than %1 answers are faint, since chance alone may have "
                               "made them."_s.arg(smallGroup),
                    .header = {u"Tag"_s, u"Most frequent answer"_s, u"n"_s, u"Its share"_s, u"Entropy"_s},
                    .rows = {groupRow(u"all"_s, answers)},
                    .texts = 2};
    if (answers.question->kind == Kind::Numeric)
        table.header << u"Mean"_s << u"Standard deviation"_s;
    if (answers.question->kind == Kind::Text)
        table.header << u"Median length"_s;
    for (const PersonaGroup &group : survey.groups)
        table.rows << groupRow(brief(group.name, 60), survey.answersOf(place, group.personas));
    return table;
}

void addQuestion(Blocks &blocks, const Survey &survey, int place)
{
    const Answers &answers = survey.answers.at(place);
    const Question &question = *answers.question;
    blocks << Heading{.level = 2,
                      .text = u"%1: %2"_s.arg(Survey::titleOf(question), brief(question.entry.prompt, 70)),
                      .anchor = Survey::anchorOf(question),
                      .startsPage = true};
    blocks << Verbatim{cut(question.entry.prompt, mostOfPrompt)};
    QString kind = shownName(question.kind);
    if (question.entry.judge)
        kind += u", adjudicated: another model answers it"_s;
    blocks << Paragraph{u"%1. %2"_s.arg(kind, whatWasTold(question, survey.project.boilerplate))};
    blocks << Paragraph{u"n = %1 of %2 personas; %3 open, %4 not usable."_s.arg(
        QString::number(answers.n()), QString::number(answers.all), QString::number(answers.open),
        QString::number(answers.unusable))};
    if (answers.n() == 0)
        return;
    addDrawing(blocks, survey, answers, place);
    blocks << spreadTable(answers);
    if (!survey.groups.isEmpty())
        blocks << tagTable(survey, answers, place);
    for (const auto all = quotationsOf(survey, answers); const Quotation &quotation : all)
        blocks << quotation;
}

} // namespace

Section questionsSection(const Survey &survey)
{
    Section section;
    QStringList untold;
    QString anchor;
    for (int place = 0; place < survey.answers.size(); ++place) {
        addQuestion(section.blocks, survey, place);
        const Question &question = *survey.answers.at(place).question;
        if (!untoldLabels(question, survey.project.boilerplate).isEmpty()) {
            untold << QString::number(question.number);
            anchor = anchor.isEmpty() ? Survey::anchorOf(question) : anchor;
        }
    }
    if (!untold.isEmpty()) {
        const qsizetype shown = std::min(mostKinds, untold.size());
        section.flags << Flag{u"The model was not told all labels of %1: number %2%3"_s.arg(
                                  counted(untold.size(), u"question"_s, u"questions"_s),
                                  untold.first(shown).join(u", "_s), shown < untold.size() ? u" ..."_s : QString()),
                              anchor};
    }
    return section;
}

} // namespace study
