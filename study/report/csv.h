#pragma once

#include <QList>
#include <QStringList>

namespace study {

/// The rows of a table in CSV: separated by commas, with quotes where a field holds a comma, a quote (doubled) or a
/// line feed. Blank lines are passed over, a mark of the byte order too.
QList<QStringList> readCsv(const QString &text);

} // namespace study
