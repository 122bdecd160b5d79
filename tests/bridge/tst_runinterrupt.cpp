#include "tests/bridge/bridgestage.h"
#include "tests/support/testcase.h"

#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

constexpr auto heldJobs = 3;

/// A run of three personas, which have answered a question each and wait for the reply to the next one.
class HeldRun
{
public:
    HeldRun()
    {
        stage.endpoint.answerWith([](const standin::Request &request) {
            return pairOf(request).endsWith(" Q1"_L1) ? Reply::content(u"ok"_s) : Reply::content(u"late"_s).held();
        });
        process = stage.startProject(writeSurvey(stage.path(u"in.ormt"_s), heldJobs + 2, 4), u"out.ormt"_s,
                                     {u"--jobs"_s, QString::number(heldJobs)});
        QVERIFY(stage.arrived(process, 2 * heldJobs));
    }

    bool interrupt(int signal)
    {
        ::kill(pid_t(process->processId()), signal);
        return stage.said(process, "orrinet-bridge: interrupted; nothing more is asked\n");
    }
    QString target() const { return stage.path(u"out.ormt"_s); }

    BridgeStage stage;
    QProcess *process = nullptr;
};

} // namespace

/// Ctrl-C in a run without a window.
class TestRunInterrupt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void an_interrupted_run_waits_for_what_is_in_flight_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("Ctrl-C") << SIGINT;
        QTest::newRow("the end of the session") << SIGTERM;
    }
    void an_interrupted_run_waits_for_what_is_in_flight()
    {
        QFETCH(const int, signal);
        HeldRun run;
        QVERIFY(run.interrupt(signal));
        QCOMPARE(run.process->state(), QProcess::Running);
        run.stage.endpoint.release();
        QCOMPARE(run.stage.waitForEnd(run.process).status, 1);
        QStringList asked = askedPairs(run.stage);
        asked.sort();
        QCOMPARE(asked.size(), 2 * heldJobs);
        QCOMPARE(answeredPairs(run.target()), asked);
        QCOMPARE(integrityOf(run.target()), u"ok"_s);
    }

    void a_second_interrupt_ends_the_run_at_once_data()
    {
        QTest::addColumn<int>("first");
        QTest::addColumn<int>("second");
        QTest::newRow("Ctrl-C twice") << SIGINT << SIGINT;
        QTest::newRow("Ctrl-C, then the end of the session") << SIGINT << SIGTERM;
        QTest::newRow("the end of the session, then Ctrl-C") << SIGTERM << SIGINT;
    }
    void a_second_interrupt_ends_the_run_at_once()
    {
        QFETCH(const int, first);
        QFETCH(const int, second);
        HeldRun run;
        QVERIFY(run.interrupt(first));
        ::kill(pid_t(run.process->processId()), second);
        QCOMPARE(run.stage.waitForEnd(run.process).status, -1);
        QCOMPARE(integrityOf(run.target()), u"ok"_s);
        QCOMPARE(answeredPairs(run.target()), (QStringList{u"P0001 Q1"_s, u"P0002 Q1"_s, u"P0003 Q1"_s}));

        run.stage.endpoint.answerWith([](const standin::Request &) { return Reply::content(u"again"_s); });
        QCOMPARE(run.stage.goOn(run.target()).status, 0);
        QCOMPARE(answeredPairs(run.target()).size(), (heldJobs + 2) * 4);
    }

    void an_interrupt_ends_the_wait_for_another_attempt()
    {
        BridgeStage stage;
        stage.endpoint.answerWith(
            [](const standin::Request &) { return Reply::status(429).with("Retry-After", "300"); });
        QProcess *process = stage.startProject(writeSurvey(stage.path(u"in.ormt"_s), 2, 2), u"out.ormt"_s);
        QVERIFY(stage.waitUntil(process,
                                [&] { return stage.endpoint.connections() == 1 && stage.endpoint.inFlight() == 0; }));
        ::kill(pid_t(process->processId()), SIGINT);
        const auto ended = stage.waitForEnd(process);
        QCOMPARE(ended.status, 1);
        QCOMPARE(stage.endpoint.requests().size(), 1);
        QCOMPARE(answeredPairs(stage.path(u"out.ormt"_s)), QStringList());
    }
};

ORRINET_TEST(TestRunInterrupt)
#include "tst_runinterrupt.moc"
