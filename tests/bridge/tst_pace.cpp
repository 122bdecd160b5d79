// How many attempts are under way at a time, and what an endpoint that is asked too much does to that.

#include "bridge/pace.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QRandomGenerator>
#include <QTest>

using bridge::milliseconds;
using bridge::Pace;

namespace {

/// Starts as many as may be.
int startAll(Pace &pace, qint64 now)
{
    int count = 0;
    while (pace.mayStart(now)) {
        pace.started();
        ++count;
    }
    return count;
}

/// How many may be under way, of which none is.
int limitOf(Pace pace, qint64 now)
{
    return startAll(pace, now);
}

} // namespace

class TestPace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void so_many_are_under_way_and_no_more()
    {
        Pace pace(3);
        QCOMPARE(startAll(pace, 0), 3);
        pace.succeeded();
        QCOMPARE(startAll(pace, 0), 1);
        pace.failed();
        pace.failed();
        QCOMPARE(startAll(pace, 0), 2);
    }

    void a_failure_is_no_reason_to_slow_down()
    {
        Pace pace(4);
        for (int i = 0; i < 20; ++i) {
            pace.started();
            pace.failed();
        }
        QCOMPARE(limitOf(pace, 0), 4);
    }

    void those_under_way_together_halve_the_number_once()
    {
        Pace pace(8);
        QCOMPARE(startAll(pace, 10), 8);
        for (int i = 0; i < 8; ++i)
            pace.limited(10, 20 + i, milliseconds(0));
        QCOMPARE(limitOf(pace, 100), 4);

        // What was begun after that tells something new.
        QCOMPARE(startAll(pace, 100), 4);
        for (int i = 0; i < 4; ++i)
            pace.limited(100, 110, milliseconds(0));
        QCOMPARE(limitOf(pace, 200), 2);
    }

    void one_stays()
    {
        Pace pace(5);
        for (qint64 now = 0; now < 100; now += 10) {
            pace.started();
            pace.limited(now, now + 5, milliseconds(0));
        }
        QCOMPARE(limitOf(pace, 1000), 1);
    }

    void all_are_held_back()
    {
        Pace pace(4);
        pace.started();
        pace.limited(0, 1000, milliseconds(500));
        QCOMPARE(pace.startsAt(), 1500);
        QVERIFY(!pace.mayStart(1499));
        QVERIFY(pace.mayStart(1500));
    }

    void the_longest_pause_counts()
    {
        Pace pace(4);
        startAll(pace, 0);
        pace.limited(0, 1000, milliseconds(500));
        pace.limited(0, 1100, milliseconds(100));
        QCOMPARE(pace.startsAt(), 1500);
        // Also where it comes from one that does not halve the number.
        pace.limited(0, 1200, milliseconds(800));
        QCOMPARE(pace.startsAt(), 2000);
    }

    void successes_let_the_number_grow_again()
    {
        Pace pace(4);
        QCOMPARE(startAll(pace, 0), 4);
        for (int i = 0; i < 4; ++i)
            pace.limited(0, 10, milliseconds(0));
        // One more for about as many successes as there are at a time: 2, 2.5, 2.9, 3.24, 3.55, 3.83, 4.
        QList<int> limits;
        for (int i = 0; i < 10; ++i) {
            limits << limitOf(pace, 20);
            pace.started();
            pace.succeeded();
        }
        QCOMPARE(limits, (QList<int>{2, 2, 2, 3, 3, 3, 4, 4, 4, 4}));
    }

    void whatever_happens_it_neither_stalls_nor_exceeds_its_number()
    {
        QRandomGenerator random(testSeed());
        for (int round = 0; round < 200; ++round) {
            const int most = random.bounded(1, 20);
            Pace pace(most);
            QList<qint64> begun;
            qint64 now = 0;
            for (int step = 0; step < 200; ++step) {
                now += random.bounded(20);
                for (; pace.mayStart(now); pace.started())
                    begun << now;
                QCOMPARE_LE(begun.size(), most);
                // With nothing under way it is only a matter of time.
                QVERIFY(!begun.isEmpty() || pace.startsAt() > now);
                if (begun.isEmpty())
                    continue;
                const qint64 since = begun.takeAt(random.bounded(begun.size()));
                switch (random.bounded(3)) {
                case 0:
                    pace.succeeded();
                    break;
                case 1:
                    pace.failed();
                    break;
                default:
                    pace.limited(since, now, milliseconds(random.bounded(50)));
                }
            }
        }
    }
};

ORRINET_TEST(TestPace)
#include "tst_pace.moc"
