// Which requests are tried again, and when.

#include "bridge/retry.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using bridge::milliseconds;
using bridge::pauseAfter;
using bridge::RetryRule;

class TestRetry : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void these_statuses_and_no_others_are_tried_again()
    {
        QList<int> retried;
        for (int status = -1; status < 1000; ++status) {
            if (bridge::isRetried(status))
                retried << status;
        }
        QCOMPARE(retried, (QList<int>{408, 409, 429, 500, 502, 503, 504}));
    }

    void an_endpoint_may_say_when_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<qint64>("pause"); // negative: it says nothing
        QTest::newRow("absent") << QByteArray() << qint64(-1);
        QTest::newRow("empty") << ""_ba << qint64(-1);
        QTest::newRow("seconds") << "20"_ba << qint64(20'000);
        QTest::newRow("none") << "0"_ba << qint64(0);
        QTest::newRow("part of a second") << "0.25"_ba << qint64(250);
        QTest::newRow("blanks") << " 3\t"_ba << qint64(3'000);
        QTest::newRow("a year") << "31536000"_ba << qint64(31'536'000'000);
        QTest::newRow("past all numbers") << "1e300"_ba << qint64(-1);
        QTest::newRow("infinite") << "inf"_ba << qint64(-1);
        QTest::newRow("no number") << "nan"_ba << qint64(-1);
        QTest::newRow("below zero") << "-5"_ba << qint64(-1);
        QTest::newRow("a unit") << "20 s"_ba << qint64(-1);
        QTest::newRow("words") << "in a while"_ba << qint64(-1);
        QTest::newRow("date") << "Fri, 20 Nov 2026 12:00:30 GMT"_ba << qint64(30'000);
        QTest::newRow("date of another zone") << "Fri, 20 Nov 2026 14:01:00 +0200"_ba << qint64(60'000);
        QTest::newRow("date that is past") << "Fri, 20 Nov 2026 11:59:59 GMT"_ba << qint64(0);
        QTest::newRow("date that there is not") << "Fri, 31 Feb 2026 12:00:30 GMT"_ba << qint64(-1);
    }
    void an_endpoint_may_say_when()
    {
        QFETCH(const QByteArray, value);
        QFETCH(const qint64, pause);
        const QDateTime now(QDate(2026, 11, 20), QTime(12, 0), QTimeZone::UTC);
        const auto read = bridge::retryAfter(value, now);
        QCOMPARE(read.has_value() ? read->count() : -1, pause);
        // The hour is the same wherever the machine stands.
        const auto elsewhere = bridge::retryAfter(value, now.toTimeZone(QTimeZone(5 * 3600)));
        QVERIFY(elsewhere == read);
    }

    void pauses_double_up_to_a_limit()
    {
        const RetryRule rule;
        QList<qint64> pauses;
        for (int attempt = 1; attempt <= 9; ++attempt)
            pauses << pauseAfter(attempt, rule, {}, 1).count();
        QCOMPARE(pauses, (QList<qint64>{1000, 2000, 4000, 8000, 16'000, 32'000, 60'000, 60'000, 60'000}));
        for (const int attempt : {41, 64, 65, 100, std::numeric_limits<int>::max()})
            QCOMPARE(pauseAfter(attempt, rule, {}, 1).count(), 60'000);
    }

    void chance_spreads_a_pause_between_half_and_all_of_it()
    {
        const RetryRule rule;
        QCOMPARE(pauseAfter(3, rule, {}, 0).count(), 2000);
        QCOMPARE(pauseAfter(3, rule, {}, 0.5).count(), 3000);
        QCOMPARE(pauseAfter(3, rule, {}, 1).count(), 4000);
        QCOMPARE(pauseAfter(99, rule, {}, 0).count(), 30'000);
    }

    void what_is_asked_for_counts_up_to_a_limit()
    {
        const RetryRule rule;
        for (const double chance : {0.0, 1.0}) {
            QCOMPARE(pauseAfter(1, rule, milliseconds(7), chance).count(), 7);
            QCOMPARE(pauseAfter(9, rule, milliseconds(0), chance).count(), 0);
            QCOMPARE(pauseAfter(1, rule, milliseconds(120'000), chance).count(), 120'000);
            QCOMPARE(pauseAfter(1, rule, milliseconds(300'001), chance).count(), 300'000);
        }
    }
};

ORRINET_TEST(TestRetry)
#include "tst_retry.moc"
