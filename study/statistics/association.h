#pragma once

#include <QList>

#include <optional>

// How much of the answers to one question goes with something else that is known of the personas, as a tag or another
// answer.

namespace study {

/// A row for each kind of one thing, in it a count for each kind of another.
using CrossTable = QList<QList<double>>;

/// How often each two codes occur together. Pairs are left out where either code is outside its kinds, as -1 is.
CrossTable crossTable(const QList<int> &rows, const QList<int> &columns, int rowKinds, int columnKinds);

/// Cramér's V, sqrt(chi square / (n * (smaller number of kinds - 1))): from 0, where the one tells nothing of the
/// other, to 1, where it tells all. Kinds that don't occur don't count. Nothing where a side has fewer than two kinds.
/// In small groups chance alone makes it large: see the corrected one.
std::optional<double> cramersV(const CrossTable &table);

/// The same, corrected for what chance alone is expected to give (Bergsma's correction): 0 where the table shows no
/// more. Nothing also where there are so few pairs that the correction leaves fewer than two kinds.
std::optional<double> cramersVCorrected(const CrossTable &table);

/// The share of the variance of numbers that lies between groups, sum of squares between over sum of squares in all:
/// from 0, where the groups have one mean, to 1, where each group has one number. Empty groups don't count, nor do
/// numbers that are not finite. Nothing for fewer than two groups, or where all numbers are the same.
std::optional<double> etaSquared(const QList<QList<double>> &groups);

} // namespace study
