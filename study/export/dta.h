#pragma once

#include "study/export/losses.h"
#include "study/export/summary.h"

class QIODevice;

namespace study {

/// Writes a table as a file of Stata 14 or later, with the wording as variable labels, codes as value labels, and an
/// extended missing value, from .a on, for each reason. The same table makes the same bytes. A wording has 80
/// characters, a value label 32,000 bytes; long texts are strL. Returns why it couldn't be written, empty where it
/// could.
QString writeDta(QIODevice &out, const Table &table, const QList<Summary> &summaries, Losses &losses);

} // namespace study
