#pragma once

#include <QList>
#include <QStringList>

#include <optional>

// Texts that are nearly the same, as of personas made from one mould.

namespace study {

/// Where texts count as nearly the same, of the words in a row that either has, how many both have.
inline constexpr double nearlyTheSame = 0.8;
/// Of a longer text its beginning alone is compared, in UTF-16 units: enough to know a persona by, and panels of very
/// long narratives stay feasible.
inline constexpr qsizetype comparedLength = 10'000;

/// The share, of all different three words in a row that either text has, of those that both have (Jaccard's index of
/// shingles): 0 to 1. Case, punctuation and white space don't count. Texts of fewer words are one shingle. Nothing
/// where either has no word. Words are compared by hashes of 64 bits.
std::optional<double> likeness(const QString &one, const QString &other);

struct AlikeTexts
{
    QList<int> places; ///< of at least two texts, in order
    double least = 1;  ///< the least likeness of those by which the group was found
    bool same = false; ///< all are the same, character by character
};

/// Groups of texts of which each is like some other one of its group, by `least` or more, the largest group first, then
/// by place. No text is in two groups, and texts without a word are in none.
QList<AlikeTexts> alikeTexts(const QStringList &texts, double least = nearlyTheSame);

} // namespace study
