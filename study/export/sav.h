#pragma once

#include "study/export/losses.h"
#include "study/export/summary.h"

class QIODevice;

namespace study {

/// Writes a table as a file of SPSS, with the wording as variable labels, codes as value labels, and a user-missing
/// value for each reason. The same table makes the same bytes. A text has 32,759 bytes, a wording 255, a value label
/// 120. Returns why it couldn't be written, empty where it could.
QString writeSav(QIODevice &out, const Table &table, const QList<Summary> &summaries, Losses &losses);

} // namespace study
