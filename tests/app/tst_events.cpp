// Everything that can happen to the window, in any order, with a run in progress.

#include "tests/app/eventdriver.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

static constexpr int stepsOfHistory = 500;
static constexpr int usualEventHistories = 1;
static constexpr int longEventHistories = 40;
static constexpr int mostReplays = 100;

class TestEvents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_failing_list_is_cut_down_to_the_steps_that_it_takes()
    {
        const quint32 seed = testSeed();
        QList<Step> steps = randomSteps(seed, stepsOfHistory);
        steps[int(seed % 200)].which = -1;
        steps[200 + int(seed % 300)].which = -2;
        const auto fails = [](const QList<Step> &less) {
            const auto has = [&less](int which) {
                return std::ranges::any_of(less, [which](const Step &step) { return step.which == which; });
            };
            return has(-1) && has(-2);
        };
        const QList<Step> least = shrunk(steps, mostReplays, fails);
        QCOMPARE(least.size(), 2);
        QVERIFY(fails(least));
    }

    void whatever_happens_in_any_order_the_window_is_right()
    {
        const quint32 seed = testSeed();
        const int histories = qEnvironmentVariableIsSet("ORRINET_LONG") ? longEventHistories : usualEventHistories;
        for (int history = 0; history < histories; ++history) {
            const quint32 own = seed + quint32(history);
            const QList<Step> steps = beginning + randomSteps(own, stepsOfHistory);
            const Played played = play(steps);
            if (!played.complaint.isEmpty())
                report(own, steps.first(played.steps), played.complaint);
            QVERIFY2(played.complaint.isEmpty(), qPrintable(played.complaint));
            checkTally(played.tally);
        }
    }

private:
    /// So that there is something to be asked at first.
    const QList<Step> beginning{
        {Act::InsertPersona, 0, 1, 0},  {Act::InsertPersona, 1, 2, 0}, {Act::InsertQuestion, 0, 0, 0},
        {Act::InsertQuestion, 1, 1, 0}, {Act::Run, 0, 0, 0},           {Act::AwaitReply, 0, 0, 0}};

    struct Played
    {
        QString complaint;
        int steps = 0;
        EventDriver::Tally tally;
    };

    static Played play(const QList<Step> &steps)
    {
        EventDriver driver;
        const QString complaint = driver.run(steps);
        return {.complaint = complaint, .steps = driver.stepsDone(), .tally = driver.tally()};
    }

    /// Line by line, since QtTest cuts long texts; and first of all what is known without any replay.
    static void tell(const QString &text)
    {
        for (const QStringList lines = text.split(u'\n'); const QString &line : lines)
            qInfo("%ls", qUtf16Printable(line));
    }

    static void report(quint32 seed, const QList<Step> &steps, const QString &complaint)
    {
        tell(u"seed %1, step %2, %3: %4"_s.arg(seed).arg(steps.size()).arg(literal(steps.last()), complaint));
        const QList<Step> least =
            shrunk(steps, mostReplays, [](const QList<Step> &less) { return !play(less).complaint.isEmpty(); });
        tell(u"%1 steps are enough:\n%2\n%3"_s.arg(least.size()).arg(literal(least), play(least).complaint));
    }

    static void checkTally(const EventDriver::Tally &tally)
    {
        qInfo("%d steps in runs, %d answers (%d behind a dialog), %d failures, %d dialogs, %d windows, %d saved, %d "
              "opened",
              tally.stepsInRuns, tally.answers, tally.answersBehindDialogs, tally.failures, tally.dialogs,
              tally.windows, tally.saved, tally.opened);
        QVERIFY(tally.answers > 0);
        QVERIFY(tally.dialogs > 20);
    }
};

ORRINET_TEST(TestEvents)
#include "tst_events.moc"
