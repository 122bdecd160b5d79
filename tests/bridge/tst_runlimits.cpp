#include "tests/bridge/bridgestage.h"
#include "tests/support/testcase.h"

#include <QJsonDocument>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using standin::Reply;

/// The most that may be in flight by the rule: half after a refusal, and with each answer a little more.
class Allowance
{
public:
    void refused() { limit = qMax(1.0, limit / 2); }
    void answered() { limit = qMin(8.0, limit + 1 / limit); }
    int now() const { return int(limit); }

private:
    double limit = 8;
};

namespace {

constexpr auto manyJobs = 8;

Reply tooMuch(const QByteArray &pause)
{
    return Reply::status(429).with("Retry-After", pause);
}

Reply costing(int in, int out)
{
    return Reply::json("{\"choices\":[{\"message\":{\"content\":\"ok\"}}],\"usage\":{\"prompt_tokens\":" +
                       QByteArray::number(in) + ",\"completion_tokens\":" + QByteArray::number(out) + "}}");
}

} // namespace

/// What an endpoint allows, and what the user does.
class TestRunLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_refusal_for_asking_too_much_halves_what_is_in_flight()
    {
        BridgeStage stage;
        Allowance allowed;
        QStringList tooMany;
        qsizetype refusals = manyJobs;
        stage.endpoint.answerWith([&](const standin::Request &) {
            if (refusals == 0 && stage.endpoint.inFlight() > allowed.now())
                tooMany << u"%1 where %2 may be"_s.arg(stage.endpoint.inFlight()).arg(allowed.now());
            return refusals > 0 ? tooMuch("0").held() : Reply::content(u"ok"_s).held();
        });
        QProcess *process = stage.startProject(writeSurvey(stage.path(u"in.ormt"_s), 12, 2), u"out.ormt"_s,
                                               {u"--jobs"_s, QString::number(manyJobs)});
        QVERIFY(stage.arrived(process, manyJobs));
        allowed.refused();
        refusals = 0;
        stage.endpoint.release();
        QVERIFY(stage.arrived(process, manyJobs + manyJobs / 2));
        // From here on all that has come by a moment is answered together.
        QTimer answering;
        QObject::connect(&answering, &QTimer::timeout, &stage.endpoint, [&] {
            for (int count = stage.endpoint.inFlight(); count > 0; --count)
                allowed.answered();
            stage.endpoint.release();
        });
        answering.start(10);
        QCOMPARE(stage.waitForEnd(process).status, 0);
        QCOMPARE(tooMany, QStringList());
        QCOMPARE(stage.endpoint.mostInFlight(), manyJobs);
        QCOMPARE(stage.endpoint.requests().size(), 12 * 2 + manyJobs);
        QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)).size(), 12 * 2);
    }

    void the_pause_that_an_endpoint_asks_for_holds_all_of_them()
    {
        BridgeStage stage;
        stage.endpoint.answerWith([](const standin::Request &) { return tooMuch("0.3").held(); });
        QProcess *process = stage.startProject(writeSurvey(stage.path(u"in.ormt"_s), manyJobs, 2), u"out.ormt"_s,
                                               {u"--jobs"_s, QString::number(manyJobs)});
        QVERIFY(stage.arrived(process, manyJobs));
        stage.endpoint.answerWith([](const standin::Request &) { return Reply::content(u"ok"_s); });
        QElapsedTimer clock;
        clock.start();
        qint64 soonest = -1;
        QObject::connect(&stage.endpoint, &standin::ChatEndpoint::requestArrived, &stage.endpoint, [&] {
            if (soonest < 0)
                soonest = clock.elapsed();
        });
        stage.endpoint.release();
        QCOMPARE(stage.waitForEnd(process).status, 0);
        QCOMPARE_GE(soonest, 300);
        QCOMPARE(stage.endpoint.requests().size(), manyJobs * 3);
    }

    void a_pair_that_is_refused_to_the_end_stays_open()
    {
        BridgeStage stage;
        stage.endpoint.answerWith([](const standin::Request &request) {
            return pairOf(request) == "P0002 Q1"_L1 ? tooMuch("0") : Reply::content(u"ok"_s);
        });
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 3, 2), u"out.ormt"_s,
                                            {u"--jobs"_s, u"3"_s, u"--retries"_s, u"2"_s});
        QCOMPARE(ended.status, 1);
        QCOMPARE(askedPairs(stage).count(u"P0002 Q1"_s), 3);
        QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)).size(), 5);
    }

    void a_budget_of_requests_is_kept_to_the_last_one_data()
    {
        QTest::addColumn<int>("budget");
        QTest::addColumn<QString>("jobsWanted");
        QTest::newRow("nothing") << 0 << u"1"_s;
        QTest::newRow("several at a time") << 7 << u"4"_s;
        QTest::newRow("fewer than at a time") << 3 << u"8"_s;
    }
    void a_budget_of_requests_is_kept_to_the_last_one()
    {
        QFETCH(const int, budget);
        QFETCH(const QString, jobsWanted);
        BridgeStage stage;
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 10, 2), u"out.ormt"_s,
                                            {u"--max-requests"_s, QString::number(budget), u"--jobs"_s, jobsWanted});
        QCOMPARE(ended.status, 1);
        QCOMPARE(stage.endpoint.requests().size(), budget);
        QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)).size(), budget);
        const QString text = u"orrinet-bridge: the budget of %1 requests is used up; nothing more is asked"_s;
        QCOMPARE(ended.errors.count(text.arg(budget)), 1);
    }

    void further_attempts_are_of_the_budget_too()
    {
        BridgeStage stage;
        stage.endpoint.answerWith([](const standin::Request &) { return tooMuch("0"); });
        const auto ended =
            stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 2, 2), u"out.ormt"_s, {u"--max-requests"_s, u"3"_s});
        QCOMPARE(ended.status, 1);
        QCOMPARE(stage.endpoint.requests().size(), 3);
        QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)), QStringList());
    }

    void a_budget_of_just_enough_ends_as_ever()
    {
        BridgeStage stage;
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 3, 2), u"out.ormt"_s,
                                            {u"--max-requests"_s, u"6"_s, u"--max-tokens"_s, u"1"_s});
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.errors.filter(u"budget"_s), QStringList());
    }

    void a_budget_of_tokens_counts_both_ways()
    {
        BridgeStage stage;
        stage.endpoint.answerWith([](const standin::Request &) { return costing(9, 2); });
        const auto ended =
            stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 4, 2), u"out.ormt"_s, {u"--max-tokens"_s, u"33"_s});
        QCOMPARE(ended.status, 1);
        QCOMPARE(stage.endpoint.requests().size(), 3);
        QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)).size(), 3);
        QCOMPARE(ended.errors.count(u"orrinet-bridge: the budget of 33 tokens is used up; nothing more is asked"_s), 1);
    }
};

ORRINET_TEST(TestRunLimits)
#include "tst_runlimits.moc"
