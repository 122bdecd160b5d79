// Texts compared and named, and stored times.

#include "study/check/storedtime.h"
#include "study/check/wording.h"
#include "study/match.h"
#include "study/told.h"
#include "tests/support/testcase.h"

#include <QTest>
#include <QTimeZone>

using namespace Qt::StringLiterals;
using study::caselessText;
using study::hasWords;
using study::inQuotes;
using study::listed;
using study::storedTime;

class TestCheckWording : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A zone in which local time and UTC can't be mistaken for each other.
        qputenv("TZ", "XST-5");
        QCOMPARE(QDateTime(QDate(2020, 1, 1), QTime(0, 0)).offsetFromUtc(), 5 * 3600);
    }

    void words_are_whole_where_blanks_part_them_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("words");
        QTest::addColumn<bool>("there");
        QTest::newRow("the same") << u"Tea"_s << u"tea"_s << true;
        QTest::newRow("in a list") << u"Choose: tea; coffee."_s << u"Coffee"_s << true;
        QTest::newRow("across lines") << u"very\n often"_s << u"Very  often"_s << true;
        QTest::newRow("a part of a word") << u"Do you know?"_s << u"No"_s << false;
        QTest::newRow("a part of a word, and whole") << u"Do you know, or no?"_s << u"No"_s << true;
        QTest::newRow("the beginning of a word") << u"Teapot"_s << u"Tea"_s << false;
        QTest::newRow("a part of a number") << u"From 10 to 20"_s << u"1"_s << false;
        QTest::newRow("a number") << u"From 1 to 5"_s << u"5"_s << true;
        QTest::newRow("signs at its ends") << u"x(a)x"_s << u"(a)"_s << true;
        QTest::newRow("without blanks") << u"\u8336\u304c\u597d\u304d"_s << u"\u8336"_s << true;
        QTest::newRow("not there") << u"Tea?"_s << u"Cocoa"_s << false;
        QTest::newRow("nothing") << u"Tea?"_s << QString() << true;
    }
    void words_are_whole_where_blanks_part_them()
    {
        QFETCH(const QString, text);
        QFETCH(const QString, words);
        QTEST(hasWords(caselessText(text), caselessText(words)), "there");
    }

    void a_quoted_text_is_short_and_harmless_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("quoted");
        QTest::newRow("short") << u"Ann"_s << u"\"Ann\""_s;
        QTest::newRow("empty") << QString() << u"\"\""_s;
        QTest::newRow("several lines") << u" two\n\tlines "_s << u"\"two lines\""_s;
        QTest::newRow("for a terminal") << u"\x1b[2Jgone\u202e"_s << u"\"\uFFFD[2Jgone\uFFFD\""_s;
        QTest::newRow("at the limit") << QString(40, u'x') << u"\""_s + QString(40, u'x') + u"\""_s;
        QTest::newRow("long") << QString(41, u'x') << u"\""_s + QString(39, u'x') + u"\u2026\""_s;
        QTest::newRow("cut in a character")
            << QString(38, u'x') + u"\U0001F375yy"_s << u"\""_s + QString(38, u'x') + u"\u2026\""_s;
    }
    void a_quoted_text_is_short_and_harmless()
    {
        QFETCH(const QString, text);
        QTEST(inQuotes(text), "quoted");
    }

    void a_list_names_three()
    {
        QCOMPARE(listed({u"a"_s, u"b"_s, u"c"_s}), uR"("a", "b", "c")"_s);
        QCOMPARE(listed({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s}), uR"("a", "b", "c" and 2 more)"_s);
    }

    void a_stored_time_is_the_moment_that_was_meant_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDateTime>("time");
        const QDateTime moment(QDate(2001, 2, 3), QTime(4, 5, 6), QTimeZone::UTC);
        QTest::newRow("of SQLite") << u"2001-02-03 04:05:06"_s << moment;
        QTest::newRow("of SQLite, in parts") << u"2001-02-03 04:05:06.789"_s << moment.addMSecs(789);
        QTest::newRow("local") << moment.toLocalTime().toString(u"yyyy-MM-ddTHH:mm:ss.zzz"_s) << moment;
        QTest::newRow("UTC") << u"2001-02-03T04:05:06Z"_s << moment;
        QTest::newRow("of elsewhere") << u"2001-02-03T06:05:06+02:00"_s << moment;
        QTest::newRow("nothing") << QString() << QDateTime();
        QTest::newRow("no time") << u"yesterday, at noon"_s << QDateTime();
    }
    void a_stored_time_is_the_moment_that_was_meant()
    {
        QFETCH(const QString, text);
        QTEST(storedTime(text), "time");
    }
};

ORRINET_TEST(TestCheckWording)
#include "tst_checkwording.moc"
