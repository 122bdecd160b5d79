#pragma once

#include <QList>
#include <QStringList>

#include <optional>

// How answers spread over the kinds that there are. A distribution is a list with a number for each kind, in the order
// of the labels: how often it occurs, or its share. One that is empty, sums up to nothing or holds a number that is
// negative or not finite gives nothing.

namespace study {

/// How often each of the codes 0 to `kinds` - 1 occurs; other codes, as -1 for no answer, are left out.
QList<double> countsOf(const QList<int> &codes, int kinds);

struct CodedTexts
{
    QList<int> codes;  ///< a code for each text, -1 for one that is null
    QStringList kinds; ///< the texts that the codes stand for, in the order in which they came
};
/// Gives each text a code, and the same one to those that are the same character by character.
CodedTexts codesOf(const QStringList &texts);

/// The shares of the kinds, which sum up to 1.
std::optional<QList<double>> sharesOf(const QList<double> &counts);

struct MostFrequent
{
    int kind = 0;     ///< the first one of those that occur as often
    double share = 0; ///< more than 0, at most 1
    int ties = 1;     ///< how many kinds occur as often, itself with them
};
std::optional<MostFrequent> mostFrequent(const QList<double> &counts);

/// Shannon's entropy, - sum of p log2 p, in bits: from 0, where all are of one kind, to log2 of the number of kinds.
std::optional<double> entropy(const QList<double> &counts);

/// Entropy over its maximum, log2 of the number of kinds that there are (also those that don't occur): from 0, where
/// all are of one kind, to 1, where all kinds are as frequent. Nothing for fewer than two kinds, which leave no choice.
/// Where there is no list of kinds, those observed are the kinds.
std::optional<double> normalisedEntropy(const QList<double> &counts);

} // namespace study
