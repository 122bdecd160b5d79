#pragma once

#include <QList>

#include <optional>

// How far one distribution of answers is from another: simulated ones from those of people, or one run from another.
// Both may be counts or shares, of any sums.

namespace study {

/// A number with how often it occurs, or its share.
struct Weighted
{
    double number = 0;
    double weight = 1;
};

/// Each number with the weight 1.
QList<Weighted> weighted(const QList<double> &numbers);
/// The places of ordered categories, from 1, with how often each occurs.
QList<Weighted> weightedPlaces(const QList<double> &counts);

/// Wasserstein-1 distance of two distributions over ordered categories that are one apart, over its maximum: the sum of
/// |F - G| over the number of categories - 1, where F and G are the cumulated shares. From 0, where they are the same,
/// to 1, where one has all at the first category and the other all at the last. Nothing for fewer than two categories,
/// different numbers of them, or a side without a share.
std::optional<double> wassersteinOrdered(const QList<double> &one, const QList<double> &other);

/// The same for numbers, over the range that is possible (`low` to `high`). Nothing where a side has no number, a
/// number is outside the range, or the range is empty.
std::optional<double> wassersteinNumbers(const QList<Weighted> &one, const QList<Weighted> &other, double low,
                                         double high);

/// The distance of Jensen and Shannon, the root of (D(p, m) + D(q, m)) / 2, where m is the mean of p and q and D the
/// divergence of Kullback and Leibler in bits: from 0, where they are the same, to 1, where they share no kind. Nothing
/// for different numbers of kinds or a side without a share.
std::optional<double> jensenShannonDistance(const QList<double> &one, const QList<double> &other);

/// The standard deviation of the one over that of the other: below 1 where the one varies less. Since shares tell of no
/// sample's size both are over n and not n - 1. Nothing where a side has no number or the other doesn't vary.
std::optional<double> deviationRatio(const QList<Weighted> &one, const QList<Weighted> &other);

} // namespace study
