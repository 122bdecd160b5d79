#pragma once

#include "study/export/table.h"

namespace study {

/// A row for each persona: what it is, a 0 or 1 for each tag, and for each question what its type wants. The newest
/// answer of a pair counts. Project and cells have to live as long.
Table wideTable(const Project &project, const Cells &cells);

} // namespace study
