#pragma once

#include "study/export/losses.h"
#include "study/export/table.h"

#include <QByteArray>

class QIODevice;

namespace study {

/// A text as JSON has it, in quotes.
QByteArray jsonText(const QString &text);

/// Writes a table as an array of objects, one a line, whose keys are the names in the order of the columns. A value
/// that is missing is null; an infinite number, which JSON hasn't, is a text.
void writeJson(QIODevice &out, const Table &table, Losses &losses);

} // namespace study
