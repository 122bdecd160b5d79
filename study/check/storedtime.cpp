#include "study/check/storedtime.h"

#include <QTimeZone>

namespace study {

QDateTime storedTime(const QString &text)
{
    static constexpr qsizetype lengthOfDate = 10;
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    const bool isOfSqlite = text.size() > lengthOfDate && text.at(lengthOfDate) == u' ';
    if (!isOfSqlite || time.timeSpec() != Qt::LocalTime)
        return time;
    // Read anew: a time that no local clock showed is one of UTC all the same.
    return {QDate::fromString(text.first(lengthOfDate), Qt::ISODate),
            QTime::fromString(text.sliced(lengthOfDate + 1), Qt::ISODateWithMs), QTimeZone::UTC};
}

} // namespace study
