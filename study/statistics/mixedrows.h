#pragma once

#include <QByteArray>
#include <QList>

#include <cstdint>
#include <optional>
#include <vector>

// How far two personas are apart by all their answers, whatever the types of the questions.

namespace study {

/// Rows of answers, a column for each question. The distance of two rows is Gower's: the mean of the distances in those
/// columns where both have an answer, each from 0 to 1. Two rows without such a column have no distance.
class MixedRows
{
public:
    explicit MixedRows(int count);

    // Each adds a column, with a value for each row.

    /// Codes without an order: 0 where they are the same, else 1. -1 is no answer.
    void addNominal(const QList<int> &codes);
    /// Codes 0 to kinds - 1 in an order: how many places they lie apart, over kinds - 1. Codes outside are no answer.
    void addOrdinal(const QList<int> &codes, int kinds);
    /// Numbers: their difference over the range of the column, 0 where that has no range. Those that are not finite are
    /// no answer.
    void addNumbers(const QList<std::optional<double>> &numbers);
    /// Choices of several codes 0 to kinds - 1: the share, of those that either chose, of those that only one chose
    /// (Jaccard's distance), 0 where neither chose any.
    void addSets(const QList<std::optional<QList<int>>> &sets, int kinds);
    /// Codes 0 to kinds - 1 from the first to the last: the sum of the differences of their ranks over its maximum, the
    /// whole part of kinds^2 / 2 (Spearman's footrule). Those that are not ranked share the ranks that are left.
    void addRanks(const QList<std::optional<QList<int>>> &orders, int kinds);

    int size() const { return rows; }

    /// From 0 to 1.
    std::optional<double> distance(int one, int other) const;

    struct Neighbour
    {
        int row = 0;         ///< the first one of those as near
        double distance = 0; ///< from 0 to 1
        int shared = 0;      ///< columns in which both have an answer
    };
    /// The nearest other row of each row, nothing for one that has a distance to none. Takes time with the square of
    /// the number of rows: for 2,000 rows of 50 columns a fraction of a second.
    QList<std::optional<Neighbour>> nearestNeighbours() const;

    /// Groups of at least two rows with the same answer in each column, and none in the same columns; the largest group
    /// first, then by place. Rows without any answer are in no group.
    QList<QList<int>> identicalRows() const;

private:
    enum class Measure { Nominal, Difference, Sets };
    struct Column
    {
        Measure measure = Measure::Difference;
        /// Numbers per row, as many as `width`, of which the first is not a number where there is no answer.
        std::vector<double> values;
        int width = 1;
        double span = 1; ///< the largest distance that numbers can have
        /// Words of bits per row, as many as `words`, for sets.
        std::vector<std::uint64_t> bits;
        int words = 0;
    };
    Column emptyColumn(Measure measure, int width = 1) const;
    /// Not a number where either has no answer.
    static double apart(const Column &column, int one, int other);
    static double numbersApart(const Column &column, int one, int other);
    static double setsApart(const Column &column, int one, int other);
    std::vector<Neighbour> allNearest() const;
    QByteArray bytesOf(int row) const;

    int rows;
    std::vector<Column> columns;
};

} // namespace study
