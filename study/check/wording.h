#pragma once

#include <QStringList>

// Texts named in sentences.

namespace study {

/// A text in quotation marks, in one line, cut where it is long, without what could steer a terminal.
QString inQuotes(const QString &text);

/// The first three texts in quotation marks, and how many more there are.
QString listed(const QStringList &texts);

} // namespace study
