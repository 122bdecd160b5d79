#pragma once

#include <QStringList>

// Texts compared and named.

namespace study {

/// Whether words stand in a text, both folded. In scripts that part words by blanks they have to be whole: "no" is not
/// in "know".
bool hasWords(const QString &text, const QString &words);

/// A text in quotation marks, in one line, cut where it is long, without what could steer a terminal.
QString inQuotes(const QString &text);

/// The first three texts in quotation marks, and how many more there are.
QString listed(const QStringList &texts);

} // namespace study
