#include "tests/support/surroundings.h"

#include <QApplication>
#include <QDateTime>
#include <QPalette>

#include <cstdio>
#include <ctime>

using namespace Qt::StringLiterals;

static constexpr int hour = 3600;

static bool refuse(const char *variable, const QString &value)
{
    std::fprintf(stderr, "%s=%s can't be had\n", variable, qUtf8Printable(value));
    return false;
}

/// A moment in the form of the zone rules: the day of the year from 0, and the time of day.
static QString ruleOf(const QDateTime &moment)
{
    return u"%1/%2"_s.arg(moment.date().dayOfYear() - 1).arg(moment.toString(u"HH:mm:ss"_s));
}

/// A zone that is at UTC until summer time begins at this moment, or an hour before it until it ends then.
static QString zoneOfChange(const QDateTime &moment, bool begins)
{
    // A rule is read in the local time that it puts an end to.
    const QString now = ruleOf(begins ? moment : moment.addSecs(hour));
    const QString halfAYearOff = ruleOf(moment.addDays(moment.date().dayOfYear() > 183 ? -182 : 182));
    return begins ? u"XST0XDT,%1,%2"_s.arg(now, halfAYearOff) : u"XST0XDT,%1,%2"_s.arg(halfAYearOff, now);
}

/// A zone in which this moment is a midnight.
static QString zoneOfMidnight(const QDateTime &moment)
{
    const int behind = QTime(0, 0).secsTo(moment.time());
    const int seconds = behind > 12 * hour ? behind - 24 * hour : behind;
    // East of UTC has the minus here.
    return u"XST%1%2"_s.arg(seconds < 0 ? u"-"_s : u""_s, QTime(0, 0).addSecs(qAbs(seconds)).toString(u"HH:mm:ss"_s));
}

static QDateTime localTime(const QDateTime &moment)
{
    return QDateTime::fromSecsSinceEpoch(moment.toSecsSinceEpoch());
}

bool takeClock()
{
    const QString asked = qEnvironmentVariable("ORRINET_CLOCK");
    if (asked.isEmpty())
        return true;
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch() + 1, QTimeZone::UTC);
    const bool midnight = asked == "midnight"_L1;
    qputenv("TZ", (midnight ? zoneOfMidnight(moment) : zoneOfChange(moment, asked == "forward"_L1)).toLatin1());
    tzset();
    const int change = localTime(moment).offsetFromUtc() - localTime(moment.addSecs(-1)).offsetFromUtc();
    const bool had = midnight ? localTime(moment).time() == QTime(0, 0)
                              : (asked == "forward"_L1 && change == hour) || (asked == "back"_L1 && change == -hour);
    return had || refuse("ORRINET_CLOCK", asked + " by TZ="_L1 + qEnvironmentVariable("TZ"));
}

bool takeLook()
{
    const QString asked = qEnvironmentVariable("ORRINET_LOOK");
    if (asked == "dark"_L1)
        QApplication::setPalette(QPalette(QColor(60, 60, 60), QColor(30, 30, 30)));
    else if (!asked.isEmpty())
        return refuse("ORRINET_LOOK", asked);
    return true;
}
