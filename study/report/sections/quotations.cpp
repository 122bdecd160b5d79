#include "study/report/sections/quotations.h"

#include "study/report/wording.h"
#include "study/statistics/numbers.h"
#include "study/statistics/words.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace study {

static constexpr int longestWhole = 300;
static constexpr qsizetype mostOfQuotation = 1000;

static int nearestTo(std::optional<double> middle, const QStringList &texts, const QList<double> &lengths)
{
    int chosen = -1;
    for (int place = 0; place < texts.size() && middle; ++place) {
        if (texts.at(place).isEmpty())
            continue;
        if (chosen < 0 || std::abs(lengths.at(place) - *middle) < std::abs(lengths.at(chosen) - *middle))
            chosen = place;
    }
    return chosen;
}

static int longestOfTheShort(const QStringList &texts, const QList<double> &lengths)
{
    int chosen = -1;
    for (int place = 0; place < texts.size(); ++place) {
        if (texts.at(place).isEmpty() || lengths.at(place) >= longestWhole)
            continue;
        if (chosen < 0 || lengths.at(place) > lengths.at(chosen))
            chosen = place;
    }
    return chosen;
}

QList<Quotation> quotationsOf(const Survey &survey, const Answers &answers)
{
    const bool hasReasons = !answers.reasonings.join(QString()).isEmpty();
    if (!hasReasons && answers.question->kind != Kind::Text)
        return {};
    const QStringList texts = hasReasons ? answers.reasonings : answers.given;
    QList<double> lengths;
    QList<double> lengthsOfSome;
    for (const QString &text : texts) {
        lengths << characterCount(text);
        if (!text.isEmpty())
            lengthsOfSome << lengths.last();
    }
    const std::optional<double> middle = median(lengthsOfSome);
    QList<int> chosen;
    for (const int place : {nearestTo(middle, texts, lengths), longestOfTheShort(texts, lengths)}) {
        if (place >= 0 && !chosen.contains(place))
            chosen << place;
    }
    QList<Quotation> quotations;
    for (const int place : std::as_const(chosen)) {
        QString source = survey.nameOf(answers.personas.at(place));
        if (hasReasons)
            source += u", for the answer "_s + quoted(answers.given.at(place));
        quotations << Quotation{cut(texts.at(place), mostOfQuotation), source};
    }
    return quotations;
}

QString quotationRule()
{
    return u"Quotations are chosen by a rule, not by taste: the reasoning, or for a text the answer, nearest to the "
           "median length, and the longest one under %1 characters; the first in the panel of those that are equal."_s
               .arg(longestWhole);
}

} // namespace study
