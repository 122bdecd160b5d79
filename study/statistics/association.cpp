#include "study/statistics/association.h"

#include <algorithm>
#include <cmath>

namespace study {

CrossTable crossTable(const QList<int> &rows, const QList<int> &columns, int rowKinds, int columnKinds)
{
    CrossTable table(std::max(rowKinds, 0), QList<double>(std::max(columnKinds, 0), 0.0));
    for (qsizetype pair = 0; pair < std::min(rows.size(), columns.size()); ++pair) {
        const int row = rows.at(pair);
        const int column = columns.at(pair);
        if (row >= 0 && row < rowKinds && column >= 0 && column < columnKinds)
            table[row][column] += 1;
    }
    return table;
}

namespace {

/// What both forms of Cramér's V are made of.
struct Spread
{
    double pairs = 0;
    double rows = 0; ///< that occur
    double columns = 0;
    double phiSquare = 0; ///< chi square over the number of pairs
};

bool isCount(double count)
{
    return std::isfinite(count) && count >= 0;
}

struct Sums
{
    QList<double> rows;
    QList<double> columns;
    double all = 0;
};

std::optional<Sums> sumsOf(const CrossTable &table)
{
    Sums sums{.rows = QList<double>(table.size(), 0.0),
              .columns = QList<double>(table.isEmpty() ? 0 : table.first().size(), 0.0)};
    for (qsizetype row = 0; row < table.size(); ++row) {
        const QList<double> &counts = table.at(row);
        if (counts.size() != sums.columns.size() || !std::all_of(counts.begin(), counts.end(), isCount))
            return std::nullopt;
        for (qsizetype column = 0; column < counts.size(); ++column) {
            sums.rows[row] += counts.at(column);
            sums.columns[column] += counts.at(column);
            sums.all += counts.at(column);
        }
    }
    return std::isfinite(sums.all) ? std::optional(sums) : std::nullopt;
}

std::optional<Spread> spreadOf(const CrossTable &table)
{
    const auto sums = sumsOf(table);
    if (!sums)
        return std::nullopt;
    const auto occurs = [](double sum) { return sum > 0; };
    Spread spread{.pairs = sums->all,
                  .rows = double(std::count_if(sums->rows.begin(), sums->rows.end(), occurs)),
                  .columns = double(std::count_if(sums->columns.begin(), sums->columns.end(), occurs))};
    if (spread.rows < 2 || spread.columns < 2)
        return std::nullopt;
    for (qsizetype row = 0; row < table.size(); ++row) {
        for (qsizetype column = 0; column < sums->columns.size(); ++column) {
            const double expected = sums->rows.at(row) * (sums->columns.at(column) / sums->all);
            const double apart = table.at(row).at(column) - expected;
            if (expected > 0)
                spread.phiSquare += apart * (apart / expected) / sums->all;
        }
    }
    return spread;
}

} // namespace

std::optional<double> cramersV(const CrossTable &table)
{
    const auto spread = spreadOf(table);
    if (!spread)
        return std::nullopt;
    return std::min(std::sqrt(spread->phiSquare / (std::min(spread->rows, spread->columns) - 1)), 1.0);
}

std::optional<double> cramersVCorrected(const CrossTable &table)
{
    const auto spread = spreadOf(table);
    if (!spread || spread->pairs <= 1)
        return std::nullopt;
    const double rows = spread->rows - 1;
    const double columns = spread->columns - 1;
    const double others = spread->pairs - 1;
    const double choices = std::min(rows - (rows * rows / others), columns - (columns * columns / others));
    if (choices <= 0)
        return std::nullopt;
    const double phiSquare = std::max(spread->phiSquare - (rows * columns / others), 0.0);
    return std::min(std::sqrt(phiSquare / choices), 1.0);
}

std::optional<double> etaSquared(const QList<QList<double>> &groups)
{
    struct Group
    {
        long double sum = 0;
        long double count = 0;
    };
    QList<Group> sums;
    Group all;
    std::optional<double> first;
    bool varies = false;
    for (const QList<double> &group : groups) {
        Group sum;
        for (const double number : group) {
            if (!std::isfinite(number))
                continue;
            varies = varies || (first && number != *first);
            first = number;
            sum.sum += number;
            sum.count += 1;
        }
        if (sum.count > 0)
            sums << sum;
        all.sum += sum.sum;
        all.count += sum.count;
    }
    if (sums.size() < 2 || !varies)
        return std::nullopt;
    const long double middle = all.sum / all.count;
    long double between = 0;
    for (const Group &group : sums)
        between += group.count * std::pow((group.sum / group.count) - middle, 2.0L);
    long double total = 0;
    for (const QList<double> &group : groups) {
        for (const double number : group)
            total += std::isfinite(number) ? std::pow(number - middle, 2.0L) : 0.0L;
    }
    const double share = double(between / total);
    return std::isfinite(share) ? std::optional(std::min(share, 1.0)) : std::nullopt;
}

} // namespace study
