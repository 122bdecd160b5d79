#include "study/export/summary.h"

#include "study/export/losses.h"

#include <algorithm>
#include <cmath>

namespace study {

/// Beyond it not every whole number is one.
static constexpr int mostNines = 15;

static double reservedCode(int nines, qsizetype reason)
{
    return 3 - double(reason) - std::pow(10, nines);
}

double Summary::missingCode(qsizetype reason) const
{
    int nines = 2;
    while (nines < mostNines && takenNines.contains(nines))
        ++nines;
    return reservedCode(nines, reason);
}

static void takeNumber(Summary &summary, double number, Column::Type type)
{
    summary.least = summary.values == 0 ? number : std::min(summary.least, number);
    summary.greatest = summary.values == 0 ? number : std::max(summary.greatest, number);
    ++summary.values;
    if (type == Column::Type::Code)
        ++summary.codes[int(number)];
    for (int nines = 2; number < 0 && nines <= mostNines; ++nines) {
        if (number >= reservedCode(nines, 2) && number <= reservedCode(nines, 0))
            summary.takenNines.insert(nines);
    }
}

/// Of a text as it is written; without writing it.
static qsizetype bytesOf(const QString &text)
{
    qsizetype bytes = 0;
    for (const QChar unit : text)
        bytes += unit.unicode() < 0x80 ? 1 : unit.unicode() < 0x800 || unit.isSurrogate() ? 2 : 3;
    return bytes;
}

static void takeValue(Summary &summary, const Value &value, Column::Type type)
{
    if (const auto *number = std::get_if<double>(&value)) {
        takeNumber(summary, *number, type);
    } else if (const auto *text = std::get_if<QString>(&value)) {
        ++summary.values;
        summary.widest = std::max(summary.widest, bytesOf(cleaned(*text)));
    } else if (const auto *reason = std::get_if<Status>(&value)) {
        ++summary.reasons[*reason];
    }
}

void takeRow(QList<Summary> &summaries, const QList<Column> &columns, const QList<Value> &values)
{
    for (qsizetype column = 0; column < values.size(); ++column)
        takeValue(summaries[column], values.at(column), columns.at(column).type);
}

QList<Summary> summarise(const Table &table)
{
    QList<Summary> summaries(table.columns.size());
    for (qsizetype row = 0; row < table.rows; ++row)
        takeRow(summaries, table.columns, table.row(row));
    return summaries;
}

} // namespace study
