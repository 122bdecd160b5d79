#pragma once

#include "study/export/losses.h"
#include "study/export/table.h"

class QIODevice;

namespace study {

/// Writes a table as RFC 4180 has it: UTF-8, commas, lines that end in CR LF, names in the first. A value that is
/// missing is an empty cell. A text that a spreadsheet would take for a formula (it begins with =, +, -, @, a tab or
/// a CR) gets an apostrophe before it.
void writeCsv(QIODevice &out, const Table &table, bool byteOrderMark, Losses &losses);

} // namespace study
