#pragma once

#include "study/export/table.h"

namespace study {

/// A row for each stored answer and for each open pair, by persona, question and time; those whose persona or question
/// is not there any more come last. Project and cells have to live as long.
Table longTable(const Project &project, const Cells &cells);

} // namespace study
