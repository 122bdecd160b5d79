#pragma once

#include <QList>

#include <optional>

// How often two runs gave the same answer to the same question of the same persona.

namespace study {

struct Agreement
{
    int pairs = 0;    ///< where both have an answer
    double share = 0; ///< of pairs that are the same, from 0 to 1
    /// Cohen's kappa, (share - expected) / (1 - expected), where `expected` is the share that chance would give to two
    /// that answer as often: 1 where all is the same, 0 where it is as by chance, below 0 where it is less. Nothing
    /// where both give one and the same answer throughout, since then chance alone gives 1.
    std::optional<double> kappa;
};

/// Pairs are left out where either code is below 0. Nothing where no pair is left, or where the lists differ in length.
std::optional<Agreement> agreement(const QList<int> &one, const QList<int> &other);

} // namespace study
