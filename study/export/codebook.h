#pragma once

#include "study/export/format.h"
#include "study/export/losses.h"

namespace study {

/// What the codebook tells of a table.
struct Described
{
    Table table;
    QList<Summary> summaries;
    QList<Loss> losses; ///< of its file
};

/// For each variable its wording and type, and a row for each value that it may have: code, meaning and how often; for
/// numbers and texts one row for all, with the least and the greatest of the numbers; then a row for each reason why a
/// value is missing.
Table codebook(const Project &project, const QList<Described> &tables, Format format);

} // namespace study
