#pragma once

#include <QDateTime>

namespace study {

/// The moment that a stored time stands for, invalid where the text is none. A date and a time with a blank between
/// them are UTC, as SQLite writes them; with a "T" and no offset they are local, as the program's own clock writes
/// them.
QDateTime storedTime(const QString &text);

} // namespace study
