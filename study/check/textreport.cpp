#include "study/check/result.h"

#include <QLocale>

#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

namespace {

QString grouped(double number, int decimals = 0)
{
    // Halves go up, as they do in JSON.
    const double shown = decimals == 0 ? std::round(number) : number;
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(shown, 'f', decimals);
}

QString grouped(qint64 number)
{
    return grouped(double(number));
}

QString rangeLine(const QString &title, const Range &range, int decimals = 0)
{
    static constexpr int titleWidth = 16;
    static constexpr int width = 14;
    QString line = title.leftJustified(titleWidth);
    for (const double figure : {range.low, range.middle, range.high})
        line += grouped(figure, decimals).rightJustified(width);
    return line + u'\n';
}

QString countLines(const Project &project, const RunCount &count)
{
    qint64 done = 0;
    qint64 begun = 0;
    for (const PairCount &persona : count.byPersona) {
        done += persona.open == 0 ? 1 : 0;
        begun += persona.open > 0 && persona.answered > 0 ? 1 : 0;
    }
    return u"%1: %2 personas, %3 questions\n"_s.arg(project.path, grouped(qint64(project.personas.size())),
                                                    grouped(qint64(project.questions.size()))) +
           u"pairs: %1, answered %2, open %3\n"_s.arg(grouped(count.all.answered + count.all.open),
                                                      grouped(count.all.answered), grouped(count.all.open)) +
           u"personas: %1 with all answers, %2 with some, %3 with none\n"_s.arg(
               grouped(done), grouped(begun), grouped(count.byPersona.size() - done - begun));
}

QString questionLines(const Project &project, const CheckResult &result)
{
    QString lines = u"\nquestion  type               answered        open  length of answers to come\n"_s;
    for (qsizetype place = 0; place < project.questions.size(); ++place) {
        const Question &question = project.questions.at(place);
        const PairCount &count = result.count.byQuestion.at(place);
        QString line = QString::number(question.number).rightJustified(8) + "  "_L1 +
                       shownName(question.kind).leftJustified(15) + grouped(count.answered).rightJustified(12) +
                       grouped(count.open).rightJustified(12);
        if (count.open > 0)
            line += "  "_L1 + shownName(result.sizes.at(place).basis);
        lines += line + u'\n';
    }
    return lines;
}

QString rateLine(const CheckSettings &settings)
{
    const auto characters = [](const Range &rate) { return QString::number(1 / rate.middle, 'f', 2); };
    const auto source = [](int exchanges) {
        return exchanges > 0 ? u"measured at %1 exchanges; low and high: its tenths at the ends"_s.arg(exchanges)
                             : u"assumed; low and high: a quarter fewer and more tokens"_s;
    };
    const TokenRates &rates = settings.rates;
    QString lines = u"characters a token: %1 in (%2)\n"_s.arg(characters(rates.in), source(rates.measuredIn)) +
                    u"                    %1 out (%2)\n"_s.arg(characters(rates.out), source(rates.measuredOut));
    if (settings.damagedLines > 0)
        lines += u"lines of the record that are damaged and passed over: %1\n"_s.arg(settings.damagedLines);
    return lines;
}

QString estimateLines(const CheckResult &result)
{
    const PairCount &all = result.count.all;
    if (all.open == 0)
        return u"\nrequests to come: none\n"_s;
    const Tokens tokens = tokensOf(all.volume, result.settings.rates);
    QString lines = u"\nrequests to come: %1"_s.arg(grouped(all.volume.requests));
    if (const qint64 others = result.count.adjudicated.open; others > 0)
        lines += u", %1 of them to the adjudicator's model"_s.arg(grouped(others));
    lines += "\n\n"_L1 + QString(16, u' ');
    for (const auto *title : {u"low", u"middle", u"high"})
        lines += QString(title).rightJustified(14);
    lines += u'\n' + rangeLine(u"tokens in"_s, tokens.in()) + rangeLine(u"  system texts"_s, tokens.system) +
             rangeLine(u"  history"_s, tokens.history) + rangeLine(u"  questions"_s, tokens.questions) +
             rangeLine(u"  formats"_s, tokens.formats) + rangeLine(u"tokens out"_s, tokens.out);
    if (result.settings.prices)
        lines += rangeLine(u"cost"_s, costOf(tokens, *result.settings.prices), 2);
    return lines + u'\n' + rateLine(result.settings) +
           u"answers to come: as long as those there are; low and high: their quartiles (see --help)\n"_s;
}

} // namespace

QString checkText(const Project &project, const CheckResult &result)
{
    QString text = countLines(project, result.count) + questionLines(project, result) + estimateLines(result);
    const QStringList told = sentences(result.findings);
    text += told.isEmpty() ? u"\nnothing found\n"_s : u'\n' + told.join(u'\n') + u'\n';
    return text;
}

} // namespace study
