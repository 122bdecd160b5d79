#include "study/check/storedtime.h"

using namespace Qt::StringLiterals;

namespace study {

QDateTime storedTime(const QString &text)
{
    static constexpr qsizetype lengthOfDate = 10;
    const bool isOfSqlite = text.size() > lengthOfDate && text.at(lengthOfDate) == u' ';
    if (isOfSqlite) {
        // Never read as a local time, which takes the most of a check, and of which some were shown by no local clock.
        const QDateTime time = QDateTime::fromString(text + u'Z', Qt::ISODateWithMs);
        if (time.isValid())
            return time;
    }
    return QDateTime::fromString(text, Qt::ISODateWithMs);
}

} // namespace study
