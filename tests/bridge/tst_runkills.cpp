// Runs that are killed at every kind of moment, and go on in the file that they leave.

#include "tests/bridge/bridgestage.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QHash>
#include <QRandomGenerator>
#include <QSet>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

constexpr int killPersonas = 6;
constexpr int killQuestions = 5;

} // namespace

/// A run that is killed at a moment of its own.
class KilledRun
{
public:
    KilledRun(BridgeStage &onStage, QRandomGenerator &chance)
        : stage(onStage)
        , random(chance)
    {
    }

    /// Runs or goes on until the moment comes, or to the end; true where it was killed.
    bool run(const QString &target)
    {
        first = stage.endpoint.requests().size();
        killed = false;
        const QStringList jobs{u"--quiet"_s, u"--jobs"_s, QString::number(1 + random.bounded(4))};
        const bool isNew = !QFile::exists(target);
        process = isNew ? stage.startProject(u"in.ormt"_s, target, jobs)
                        : stage.start(stage.toEndpoint() + QStringList{u"--run"_s, target, u"--in-place"_s} + jobs);
        const QObject context;
        chooseMoment(context);
        const int status = stage.waitForEnd(process).status;
        process->disconnect();
        // Where the moment was the very end.
        if (status != -1)
            killed = false;
        return status == -1;
    }

    /// The pairs that this run asked, by persona.
    QHash<QString, QStringList> asked() const
    {
        QHash<QString, QStringList> pairs;
        for (qsizetype index = first; index < stage.endpoint.requests().size(); ++index) {
            const QString pair = pairOf(stage.endpoint.requests().at(index));
            pairs[pair.section(u' ', 0, 0)] << pair;
        }
        return pairs;
    }
    QString moment;

private:
    void chooseMoment(const QObject &context)
    {
        // Now and then beyond the end of the run.
        const qsizetype count = random.bounded(14);
        const qsizetype last = first + count;
        const int kind = random.bounded(4);
        const int delay = random.bounded(4000);
        moment = u"kind %1 at %2 and %3 us"_s.arg(kind).arg(count).arg(delay);
        auto *endpoint = &stage.endpoint;
        switch (kind) {
        case 0: // before any answer to this request
            QObject::connect(endpoint, &standin::ChatEndpoint::requestArrived, &context,
                             [this, last](int index) { killIf(index >= last); });
            break;
        case 1: // as soon as the answer is with the system
            QObject::connect(endpoint, &standin::ChatEndpoint::replied, &context,
                             [this, last](int index) { killIf(index >= last); });
            break;
        case 2: // a while after an answer
            QObject::connect(endpoint, &standin::ChatEndpoint::replied, &context,
                             [this, &context, last, delay](int index) {
                                 if (index >= last)
                                     QTimer::singleShot(std::chrono::microseconds(delay), Qt::PreciseTimer, &context,
                                                        [this] { killIf(true); });
                             });
            break;
        default: // in the middle of an answer
            QObject::connect(endpoint, &standin::ChatEndpoint::requestArrived, &context,
                             [this, endpoint, &context, last, delay](int index) {
                                 if (index != last)
                                     return;
                                 endpoint->queue(Reply::content(u"cut"_s).ending(Reply::End::Incomplete));
                                 QTimer::singleShot(std::chrono::microseconds(delay), Qt::PreciseTimer, &context,
                                                    [this] { killIf(true); });
                             });
        }
    }

    void killIf(bool reached)
    {
        if (reached && !std::exchange(killed, true))
            ::kill(pid_t(process->processId()), SIGKILL);
    }

    BridgeStage &stage;
    QRandomGenerator &random;
    QProcess *process = nullptr;
    qsizetype first = 0;
    bool killed = false;
};

class TestRunKills : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_kill_costs_what_is_in_flight_and_no_more()
    {
        const int wanted = qEnvironmentVariableIsSet("ORRINET_LONG") ? 60 : 5;
        QRandomGenerator random(testSeed());
        for (int kills = 0; kills < wanted;) {
            surviveOneSurvey(random, kills);
            if (QTest::currentTestFailed())
                return;
        }
    }

    void a_kill_while_the_copy_is_made_leaves_no_target()
    {
        QRandomGenerator random(testSeed());
        for (int round = 0; round < 3; ++round) {
            BridgeStage stage;
            const QString project = writeSurvey(stage.path(u"in.ormt"_s), 200, 3);
            const auto size = quint32(readBytes(project).size());
            // The system kills who writes beyond it. The copy is smaller than the project by what is free there.
            const rlim_t most = random.bounded(size - 8192);
            stage.setChildModifier([most] {
                const rlimit limit{.rlim_cur = most, .rlim_max = most};
                ::setrlimit(RLIMIT_FSIZE, &limit);
                const rlimit noCore{};
                ::setrlimit(RLIMIT_CORE, &noCore);
            });
            QCOMPARE(stage.runProject(project, u"out.ormt"_s).status, -1);
            QVERIFY(!QFile::exists(stage.path(u"out.ormt"_s)));
            QVERIFY(QFile::exists(stage.path(u"out.ormt.part"_s)));
            stage.setChildModifier({});
            const auto again = stage.runProject(project, u"out.ormt"_s);
            QCOMPARE(again.status, 3);
            QCOMPARE(again.errors,
                     QStringList{u"orrinet-bridge: out.ormt.part is there, left by a copy that was cut short; "
                                 "remove it first"_s});
            QCOMPARE(stage.endpoint.requests().size(), 0);
        }
    }

private:
    /// One survey, run after run until all pairs are answered.
    static void surviveOneSurvey(QRandomGenerator &random, int &kills)
    {
        BridgeStage stage;
        writeSurvey(stage.path(u"in.ormt"_s), killPersonas, killQuestions);
        const QString target = stage.path(u"out.ormt"_s);
        QStringList sure; // was stored after a kill
        for (bool over = false; !over;) {
            KilledRun run(stage, random);
            over = !run.run(target);
            kills += over ? 0 : 1;
            QCOMPARE(integrityOf(target), u"ok"_s);
            const QStringList stored = answeredPairs(target);
            const QString lost = whatIsLost(run, sure, stored);
            QVERIFY2(lost.isEmpty(), qPrintable(u"kill %1, %2: %3"_s.arg(kills).arg(run.moment, lost)));
            sure = stored;
        }
        QCOMPARE(sure.size(), killPersonas * killQuestions);
        QCOMPARE(QSet<QString>(sure.begin(), sure.end()).size(), sure.size());
    }

    /// Of each persona all but the last request must be stored, and nothing asked that was.
    static QString whatIsLost(const KilledRun &run, const QStringList &before, const QStringList &stored)
    {
        QStringList faults;
        for (const QString &pair : before) {
            if (stored.count(pair) != 1)
                faults << pair + u" was stored"_s;
        }
        const auto asked = run.asked();
        for (const QStringList &pairs : asked) {
            for (const QString &pair : pairs) {
                if (before.contains(pair))
                    faults << pair + u" was asked again"_s;
                if (pairs.count(pair) != 1)
                    faults << pair + u" was asked twice"_s;
                if (pair != pairs.last() && !stored.contains(pair))
                    faults << pair + u" was answered"_s;
            }
        }
        return faults.join(u", "_s);
    }
};

ORRINET_TEST(TestRunKills)
#include "tst_runkills.moc"
