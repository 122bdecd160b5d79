#include "study/statistics/distribution.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace study {

QList<double> countsOf(const QList<int> &codes, int kinds)
{
    QList<double> counts(std::max(kinds, 0), 0.0);
    for (const int code : codes) {
        if (code >= 0 && code < counts.size())
            counts[code] += 1;
    }
    return counts;
}

CodedTexts codesOf(const QStringList &texts)
{
    CodedTexts coded;
    QHash<QString, int> known;
    for (const QString &text : texts) {
        if (text.isNull()) {
            coded.codes << -1;
            continue;
        }
        const auto place = known.constFind(text);
        if (place != known.constEnd()) {
            coded.codes << *place;
            continue;
        }
        const int code = int(coded.kinds.size());
        known.insert(text, code);
        coded.kinds << text;
        coded.codes << code;
    }
    return coded;
}

std::optional<QList<double>> sharesOf(const QList<double> &counts)
{
    if (!std::all_of(counts.begin(), counts.end(), [](double count) { return std::isfinite(count) && count >= 0; }))
        return std::nullopt;
    // A sum of numbers at the end of their range is beyond it.
    const double largest = counts.isEmpty() ? 0 : *std::max_element(counts.begin(), counts.end());
    if (largest <= 0)
        return std::nullopt;
    QList<double> shares;
    for (const double count : counts)
        shares << count / largest;
    const double sum = std::accumulate(shares.begin(), shares.end(), 0.0);
    for (double &share : shares)
        share /= sum;
    return shares;
}

std::optional<MostFrequent> mostFrequent(const QList<double> &counts)
{
    const auto shares = sharesOf(counts);
    if (!shares)
        return std::nullopt;
    const auto largest = std::max_element(counts.begin(), counts.end());
    const qsizetype kind = largest - counts.begin();
    return MostFrequent{
        .kind = int(kind), .share = shares->at(kind), .ties = int(std::count(counts.begin(), counts.end(), *largest))};
}

std::optional<double> entropy(const QList<double> &counts)
{
    const auto shares = sharesOf(counts);
    if (!shares)
        return std::nullopt;
    double bits = 0;
    for (const double share : *shares)
        bits -= share > 0 ? share * std::log2(share) : 0;
    return std::clamp(bits, 0.0, std::log2(double(counts.size())));
}

std::optional<double> normalisedEntropy(const QList<double> &counts)
{
    const auto bits = entropy(counts);
    if (!bits || counts.size() < 2)
        return std::nullopt;
    return *bits / std::log2(double(counts.size()));
}

} // namespace study
