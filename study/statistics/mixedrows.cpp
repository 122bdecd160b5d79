#include "study/statistics/mixedrows.h"

#include <QHash>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace study {

static constexpr double noAnswer = std::numeric_limits<double>::quiet_NaN();

MixedRows::MixedRows(int count)
    : rows(std::max(count, 0))
{
}

MixedRows::Column MixedRows::emptyColumn(Measure measure, int width) const
{
    Column column;
    column.measure = measure;
    column.width = std::max(width, 1);
    column.values.assign(size_t(rows) * size_t(column.width), noAnswer);
    return column;
}

void MixedRows::addNominal(const QList<int> &codes)
{
    Column column = emptyColumn(Measure::Nominal);
    for (int row = 0; row < std::min(rows, int(codes.size())); ++row) {
        if (codes.at(row) >= 0)
            column.values[size_t(row)] = codes.at(row);
    }
    columns.push_back(std::move(column));
}

void MixedRows::addOrdinal(const QList<int> &codes, int kinds)
{
    Column column = emptyColumn(Measure::Difference);
    column.span = std::max(kinds - 1, 1);
    for (int row = 0; row < std::min(rows, int(codes.size())); ++row) {
        if (codes.at(row) >= 0 && codes.at(row) < kinds)
            column.values[size_t(row)] = codes.at(row);
    }
    columns.push_back(std::move(column));
}

void MixedRows::addNumbers(const QList<std::optional<double>> &numbers)
{
    Column column = emptyColumn(Measure::Difference);
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (int row = 0; row < std::min(rows, int(numbers.size())); ++row) {
        const double number = numbers.at(row).value_or(noAnswer);
        if (!std::isfinite(number))
            continue;
        // The sum makes one 0 of both.
        column.values[size_t(row)] = number + 0.0;
        low = std::min(low, number);
        high = std::max(high, number);
    }
    if (high > low)
        column.span = high - low;
    if (!std::isfinite(column.span)) {
        for (double &value : column.values)
            value /= 2;
        column.span = (high / 2) - (low / 2);
    }
    columns.push_back(std::move(column));
}

void MixedRows::addSets(const QList<std::optional<QList<int>>> &sets, int kinds)
{
    Column column = emptyColumn(Measure::Sets);
    column.words = (std::max(kinds, 0) + 63) / 64;
    column.bits.assign(size_t(rows) * size_t(column.words), 0);
    for (int row = 0; row < std::min(rows, int(sets.size())); ++row) {
        if (!sets.at(row))
            continue;
        column.values[size_t(row)] = 0;
        for (const int code : *sets.at(row)) {
            if (code >= 0 && code < kinds)
                column.bits[(size_t(row) * size_t(column.words)) + size_t(code / 64)] |= std::uint64_t(1)
                                                                                         << (code % 64);
        }
    }
    columns.push_back(std::move(column));
}

void MixedRows::addRanks(const QList<std::optional<QList<int>>> &orders, int kinds)
{
    Column column = emptyColumn(Measure::Difference, kinds);
    column.span = std::max(std::floor(double(kinds) * kinds / 2), 1.0);
    for (int row = 0; row < std::min(rows, int(orders.size())); ++row) {
        if (!orders.at(row))
            continue;
        const auto ranks = column.values.begin() + (std::ptrdiff_t(row) * column.width);
        double rank = 0;
        for (const int code : *orders.at(row)) {
            if (code >= 0 && code < kinds && std::isnan(ranks[code]))
                ranks[code] = ++rank;
        }
        if (rank > 0)
            std::replace_if(ranks, ranks + kinds, [](double is) { return std::isnan(is); }, (rank + 1 + kinds) / 2);
    }
    columns.push_back(std::move(column));
}

double MixedRows::numbersApart(const Column &column, int one, int other)
{
    const double *values = &column.values[size_t(one) * size_t(column.width)];
    const double *others = &column.values[size_t(other) * size_t(column.width)];
    double sum = 0;
    for (int place = 0; place < column.width; ++place)
        sum += std::abs(values[place] - others[place]);
    return sum / column.span;
}

double MixedRows::setsApart(const Column &column, int one, int other)
{
    int either = 0;
    int both = 0;
    for (int word = 0; word < column.words; ++word) {
        const std::uint64_t bits = column.bits[(size_t(one) * size_t(column.words)) + size_t(word)];
        const std::uint64_t others = column.bits[(size_t(other) * size_t(column.words)) + size_t(word)];
        either += std::popcount(bits | others);
        both += std::popcount(bits & others);
    }
    return either == 0 ? 0 : double(either - both) / either;
}

double MixedRows::apart(const Column &column, int one, int other)
{
    if (column.measure == Measure::Difference)
        return numbersApart(column, one, other);
    const double value = column.values[size_t(one)];
    const double otherValue = column.values[size_t(other)];
    if (std::isnan(value) || std::isnan(otherValue))
        return noAnswer;
    if (column.measure == Measure::Sets)
        return setsApart(column, one, other);
    return value == otherValue ? 0 : 1;
}

std::optional<double> MixedRows::distance(int one, int other) const
{
    double sum = 0;
    int shared = 0;
    for (const Column &column : columns) {
        const double here = apart(column, one, other);
        if (std::isnan(here))
            continue;
        sum += here;
        ++shared;
    }
    return shared > 0 ? std::optional(sum / shared) : std::nullopt;
}

/// With no shared column for a row that has no neighbour. A row is held against all those behind it column by column,
/// so that the sums stay close by.
std::vector<MixedRows::Neighbour> MixedRows::allNearest() const
{
    std::vector<Neighbour> nearest(size_t(rows), {.distance = std::numeric_limits<double>::infinity()});
    std::vector<double> sums(size_t(rows), 0.0);
    std::vector<int> shared(size_t(rows), 0);
    for (int row = 0; row < rows; ++row) {
        std::fill(sums.begin(), sums.end(), 0.0);
        std::fill(shared.begin(), shared.end(), 0);
        for (const Column &column : columns) {
            if (std::isnan(column.values[size_t(row) * size_t(column.width)]))
                continue;
            for (int other = row + 1; other < rows; ++other) {
                const double here = apart(column, row, other);
                const bool both = !std::isnan(here);
                sums[size_t(other)] += both ? here : 0;
                shared[size_t(other)] += int(both);
            }
        }
        for (int other = row + 1; other < rows; ++other) {
            const int both = shared[size_t(other)];
            const double distance = both > 0 ? sums[size_t(other)] / both : noAnswer;
            if (distance < nearest[size_t(row)].distance)
                nearest[size_t(row)] = {.row = other, .distance = distance, .shared = both};
            if (distance < nearest[size_t(other)].distance)
                nearest[size_t(other)] = {.row = row, .distance = distance, .shared = both};
        }
    }
    return nearest;
}

QList<std::optional<MixedRows::Neighbour>> MixedRows::nearestNeighbours() const
{
    QList<std::optional<Neighbour>> neighbours;
    for (const Neighbour &neighbour : allNearest())
        neighbours << (neighbour.shared > 0 ? std::optional(neighbour) : std::nullopt);
    return neighbours;
}

/// All that a row holds, empty where it has no answer.
QByteArray MixedRows::bytesOf(int row) const
{
    QByteArray bytes;
    bool isAnswered = false;
    const auto append = [&bytes](const auto *from, int count) {
        bytes.append(reinterpret_cast<const char *>(from), count * qsizetype(sizeof *from));
    };
    for (const Column &column : columns) {
        const double *values = &column.values[size_t(row) * size_t(column.width)];
        append(values, column.width);
        if (column.words > 0)
            append(&column.bits[size_t(row) * size_t(column.words)], column.words);
        isAnswered = isAnswered || !std::isnan(*values);
    }
    return isAnswered ? bytes : QByteArray();
}

QList<QList<int>> MixedRows::identicalRows() const
{
    QHash<QByteArray, qsizetype> places;
    QList<QList<int>> groups;
    for (int row = 0; row < rows; ++row) {
        const QByteArray key = bytesOf(row);
        if (key.isEmpty())
            continue;
        const qsizetype place = places.value(key, groups.size());
        if (place == groups.size()) {
            places.insert(key, place);
            groups.append(QList<int>());
        }
        groups[place] << row;
    }
    groups.removeIf([](const QList<int> &group) { return group.size() < 2; });
    std::stable_sort(groups.begin(), groups.end(),
                     [](const QList<int> &a, const QList<int> &b) { return a.size() > b.size(); });
    return groups;
}

} // namespace study
