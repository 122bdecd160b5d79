#include "study/statistics/divergence.h"

#include "study/statistics/distribution.h"

#include <algorithm>
#include <cmath>

namespace study {

QList<Weighted> weighted(const QList<double> &numbers)
{
    QList<Weighted> all;
    for (const double number : numbers)
        all.append({.number = number, .weight = 1});
    return all;
}

QList<Weighted> weightedPlaces(const QList<double> &counts)
{
    QList<Weighted> all;
    for (const double count : counts)
        all.append({.number = double(all.size() + 1), .weight = count});
    return all;
}

std::optional<double> wassersteinOrdered(const QList<double> &one, const QList<double> &other)
{
    const auto shares = sharesOf(one);
    const auto otherShares = sharesOf(other);
    if (!shares || !otherShares || one.size() != other.size() || one.size() < 2)
        return std::nullopt;
    double distance = 0;
    double apart = 0;
    for (qsizetype kind = 0; kind < one.size() - 1; ++kind) {
        apart += shares->at(kind) - otherShares->at(kind);
        distance += std::abs(apart);
    }
    return std::min(distance / double(one.size() - 1), 1.0);
}

/// The numbers that have a weight, the weights as shares; nothing where there are none or one is no number.
static std::optional<QList<Weighted>> shared(const QList<Weighted> &numbers)
{
    QList<double> weights;
    for (const Weighted &number : numbers)
        weights << number.weight;
    const auto shares = sharesOf(weights);
    if (!shares)
        return std::nullopt;
    QList<Weighted> kept;
    for (qsizetype place = 0; place < numbers.size(); ++place) {
        if (!std::isfinite(numbers.at(place).number))
            return std::nullopt;
        if (shares->at(place) > 0)
            kept.append({.number = numbers.at(place).number, .weight = shares->at(place)});
    }
    return kept;
}

std::optional<double> wassersteinNumbers(const QList<Weighted> &one, const QList<Weighted> &other, double low,
                                         double high)
{
    auto steps = shared(one);
    const auto others = shared(other);
    // Halves, since the range of the largest numbers is beyond the range of numbers.
    const double range = (high / 2) - (low / 2);
    if (!steps || !others || !(range > 0) || !std::isfinite(range))
        return std::nullopt;
    for (const Weighted &step : *others)
        steps->append({.number = step.number, .weight = -step.weight});
    std::sort(steps->begin(), steps->end(), [](const Weighted &a, const Weighted &b) { return a.number < b.number; });
    if (steps->first().number < low || steps->last().number > high)
        return std::nullopt;
    double distance = 0;
    double apart = 0;
    for (qsizetype place = 0; place + 1 < steps->size(); ++place) {
        apart += steps->at(place).weight;
        distance += std::abs(apart) * (((steps->at(place + 1).number / 2) - (steps->at(place).number / 2)) / range);
    }
    return std::min(distance, 1.0);
}

std::optional<double> jensenShannonDistance(const QList<double> &one, const QList<double> &other)
{
    const auto shares = sharesOf(one);
    const auto otherShares = sharesOf(other);
    if (!shares || !otherShares || one.size() != other.size())
        return std::nullopt;
    const auto part = [](double share, double middle) { return share > 0 ? share * std::log2(share / middle) : 0.0; };
    double divergence = 0;
    for (qsizetype kind = 0; kind < one.size(); ++kind) {
        const double p = shares->at(kind);
        const double q = otherShares->at(kind);
        const double middle = (p + q) / 2;
        divergence += (part(p, middle) + part(q, middle)) / 2;
    }
    return std::sqrt(std::clamp(divergence, 0.0, 1.0));
}

static long double variance(const QList<Weighted> &numbers)
{
    long double middle = 0;
    for (const Weighted &number : numbers)
        middle += (long double)(number.number) * number.weight;
    long double squares = 0;
    for (const Weighted &number : numbers)
        squares += std::pow(number.number - middle, 2.0L) * number.weight;
    return squares;
}

static bool varies(const QList<Weighted> &numbers)
{
    return std::any_of(numbers.begin(), numbers.end(),
                       [&numbers](const Weighted &number) { return number.number != numbers.first().number; });
}

std::optional<double> deviationRatio(const QList<Weighted> &one, const QList<Weighted> &other)
{
    const auto numbers = shared(one);
    const auto others = shared(other);
    if (!numbers || !others || !varies(*others))
        return std::nullopt;
    if (!varies(*numbers))
        return 0.0;
    const double ratio = double(std::sqrt(variance(*numbers) / variance(*others)));
    return std::isfinite(ratio) ? std::optional(ratio) : std::nullopt;
}

} // namespace study
