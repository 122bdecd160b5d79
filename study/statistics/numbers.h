#pragma once

#include <QList>

#include <optional>

// What numbers have in the middle, and how far they lie apart. Numbers that are not finite are left out; where none is
// left, or where the result is beyond the range of numbers, there is nothing.

namespace study {

/// The arithmetic mean.
std::optional<double> mean(const QList<double> &numbers);

/// The standard deviation of a sample: the root of the sum of squared distances from the mean over n - 1. Nothing for
/// fewer than two numbers, 0 for numbers that are all the same.
std::optional<double> standardDeviation(const QList<double> &numbers);

/// The number at or below which a part of the numbers lies, `part` from 0 to 1: what lies at the place
/// 1 + (n - 1) * part of the sorted numbers, between two of them in proportion (the rule known as type 7).
std::optional<double> quantile(QList<double> numbers, double part);

/// The quantile of 1/2.
std::optional<double> median(const QList<double> &numbers);

struct Bin
{
    double from = 0;
    double to = 0; ///< below it, but in the last bin at most
    int count = 0;
};

/// The bins of a histogram, all of one width, from the smallest number to the largest. The width is that of Freedman
/// and Diaconis, 2 * (third quartile - first quartile) / n^(1/3), or where the quartiles are the same the range over
/// 1 + log2 n (Sturges), cut down to a whole number of bins of at most `most`. Whole numbers that span less than `most`
/// get a bin each, from half below to half above. Numbers that are all the same make one bin without a width, none at
/// all no bin.
QList<Bin> histogram(const QList<double> &numbers, int most = 40);

} // namespace study
