#include "study/statistics/numbers.h"

#include <algorithm>
#include <cmath>

namespace study {

static QList<double> finite(const QList<double> &numbers)
{
    QList<double> kept;
    std::copy_if(numbers.begin(), numbers.end(), std::back_inserter(kept), [](double n) { return std::isfinite(n); });
    return kept;
}

static std::optional<double> inRange(long double number)
{
    const double narrowed = double(number);
    return std::isfinite(narrowed) ? std::optional(narrowed) : std::nullopt;
}

/// Of at least one number, wide enough for sums of the largest.
static long double meanOf(const QList<double> &numbers)
{
    long double sum = 0;
    for (const double number : numbers)
        sum += number;
    return sum / (long double)(numbers.size());
}

std::optional<double> mean(const QList<double> &numbers)
{
    const QList<double> kept = finite(numbers);
    return kept.isEmpty() ? std::nullopt : inRange(meanOf(kept));
}

std::optional<double> standardDeviation(const QList<double> &numbers)
{
    const QList<double> kept = finite(numbers);
    if (kept.size() < 2)
        return std::nullopt;
    // The mean of numbers that are all the same is rounded, and then not theirs.
    if (std::all_of(kept.begin(), kept.end(), [&kept](double number) { return number == kept.first(); }))
        return 0.0;
    const long double middle = meanOf(kept);
    long double squares = 0;
    for (const double number : kept)
        squares += (number - middle) * (number - middle);
    return inRange(std::sqrt(squares / (long double)(kept.size() - 1)));
}

static double quantileOf(const QList<double> &sorted, double part)
{
    const double place = double(sorted.size() - 1) * part;
    const auto below = qsizetype(place);
    const qsizetype above = std::min(below + 1, sorted.size() - 1);
    return std::lerp(sorted.at(below), sorted.at(above), place - double(below));
}

std::optional<double> quantile(QList<double> numbers, double part)
{
    numbers = finite(numbers);
    if (numbers.isEmpty() || !(part >= 0 && part <= 1))
        return std::nullopt;
    std::sort(numbers.begin(), numbers.end());
    return quantileOf(numbers, part);
}

std::optional<double> median(const QList<double> &numbers)
{
    return quantile(numbers, 0.5);
}

static bool areWhole(const QList<double> &sorted)
{
    // Beyond, a number and a half is no number.
    static constexpr double largest = 1e15;
    return sorted.first() > -largest && sorted.last() < largest &&
           std::all_of(sorted.begin(), sorted.end(), [](double number) { return std::floor(number) == number; });
}

/// How many bins numbers that are not all the same get by the rule.
static int binCount(const QList<double> &sorted, int most)
{
    // Halves, since the range of the largest numbers is beyond the range of numbers.
    const double range = (sorted.last() / 2) - (sorted.first() / 2);
    const double middle = (quantileOf(sorted, 0.75) / 2) - (quantileOf(sorted, 0.25) / 2);
    const auto n = double(sorted.size());
    const double width = middle > 0 ? 2 * middle / std::cbrt(n) : range / (1 + std::log2(n));
    // The halves of the smallest numbers are 0, and what is divided then is no number.
    return int(std::fmin(std::fmax(std::ceil(range / width), 1), std::max(most, 1)));
}

/// The bins between borders, of which there is one more.
static QList<Bin> binsBetween(const QList<double> &borders, const QList<double> &sorted)
{
    QList<Bin> bins;
    auto from = sorted.begin();
    for (qsizetype place = 1; place < borders.size(); ++place) {
        const bool isLast = place == borders.size() - 1;
        const auto to = isLast ? sorted.end() : std::lower_bound(from, sorted.end(), borders.at(place));
        bins.append({.from = borders.at(place - 1), .to = borders.at(place), .count = int(to - from)});
        from = to;
    }
    return bins;
}

QList<Bin> histogram(const QList<double> &numbers, int most)
{
    QList<double> sorted = finite(numbers);
    if (sorted.isEmpty())
        return {};
    std::sort(sorted.begin(), sorted.end());
    const double first = sorted.first();
    const double last = sorted.last();
    if (first == last)
        return {{.from = first, .to = last, .count = int(sorted.size())}};
    QList<double> borders;
    if (areWhole(sorted) && last - first < most) {
        for (double border = first - 0.5; border <= last + 0.5; border += 1)
            borders << border;
    } else {
        const int bins = binCount(sorted, most);
        for (int border = 0; border <= bins; ++border)
            borders << std::lerp(first, last, double(border) / bins);
    }
    return binsBetween(borders, sorted);
}

} // namespace study
