#pragma once

#include "study/export/table.h"

#include <QMap>
#include <QSet>

namespace study {

/// What stands in a column of a table.
struct Summary
{
    qsizetype values = 0; ///< numbers and texts
    double least = 0;     ///< of the numbers
    double greatest = 0;
    QMap<int, qsizetype> codes;      ///< how often each
    QMap<Status, qsizetype> reasons; ///< how often no value, and why
    qsizetype widest = 0;            ///< of the texts, in bytes of UTF-8
    /// Of -97 to -99, -997 to -999 and so on: the numbers of nines of which one is a value.
    QSet<int> takenNines;

    /// The number that stands for a value missing for the reason of this place: -97, -98, -99, with more nines where
    /// one of these is a value.
    double missingCode(qsizetype reason) const;
};

/// Adds a row to the summaries of its columns.
void takeRow(QList<Summary> &summaries, const QList<Column> &columns, const QList<Value> &values);

/// One for each column, from one pass over the rows.
QList<Summary> summarise(const Table &table);

} // namespace study
