#include "standin/respondent.h"
#include "tests/bridge/bridgestage.h"
#include "tests/support/testcase.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;

/// A survey from its record, without an endpoint.
class TestRunRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_replay_stores_the_same_rows_and_asks_nobody_data()
    {
        QTest::addColumn<QString>("jobs");
        QTest::newRow("four at a time") << u"4"_s;
    }
    void a_replay_stores_the_same_rows_and_asks_nobody()
    {
        QFETCH(const QString, jobs);
        BridgeStage stage;
        record(stage);
        const QByteArray before = readBytes(stage.path(u"record"_s));
        const auto ended = replay(stage, {u"--jobs"_s, jobs});
        QCOMPARE(ended.status, 1);
        QCOMPARE(stage.endpoint.requests().size(), asked);
        QCOMPARE(storedAnswers(stage.path(u"again.ormt"_s)), storedAnswers(stage.path(u"out.ormt"_s)));
        QCOMPARE(storedAnswers(stage.path(u"out.ormt"_s)).size(), 15);
        QCOMPARE(readBytes(stage.path(u"record"_s)), before);
    }

    void a_record_holds_an_exchange_for_each_request()
    {
        BridgeStage stage;
        record(stage);
        QStringList wanted = askedPairs(stage);
        QStringList recorded;
        const QByteArrayList lines = readBytes(stage.path(u"record"_s)).trimmed().split('\n');
        for (const QByteArray &line : lines) {
            standin::Request request;
            request.body = QJsonDocument::fromJson(line)["request"_L1].toString().toUtf8();
            recorded << pairOf(request);
        }
        wanted.removeDuplicates();
        wanted.sort();
        recorded.sort();
        QCOMPARE(recorded, wanted);
        QVERIFY(!(QFile::permissions(stage.path(u"record"_s)) & (QFile::ReadGroup | QFile::ReadOther)));
    }

    void a_damaged_line_costs_its_pair_alone()
    {
        BridgeStage stage;
        record(stage);
        QByteArrayList lines = readBytes(stage.path(u"record"_s)).trimmed().split('\n');
        // The very last pair of a persona: no later request depends on it.
        const auto last = std::ranges::find_if(lines, [](const QByteArray &line) {
            standin::Request request;
            request.body = QJsonDocument::fromJson(line)["request"_L1].toString().toUtf8();
            return pairOf(request) == "P0003 Q4"_L1;
        });
        QVERIFY(last != lines.end());
        last->truncate(last->size() / 2);
        writeBytes(stage.path(u"record"_s), lines.join('\n') + "\n\n");
        const auto ended = replay(stage, {});
        QCOMPARE(ended.status, 1);
        QVERIFY(ended.errors.contains(u"orrinet-bridge: 1 damaged line in record passed over"_s));
        QCOMPARE(ended.errors.filter(u"the record does not hold this request"_s).size(), 1);
        QStringList stored = answeredPairs(stage.path(u"out.ormt"_s));
        stored.removeOne(u"P0003 Q4"_s);
        QCOMPARE(answeredPairs(stage.path(u"again.ormt"_s)), stored);
    }

    void a_pair_that_is_in_no_record_stays_open()
    {
        BridgeStage stage;
        writeBytes(stage.path(u"record"_s), {});
        writeSurvey(stage.path(u"in.ormt"_s), 2, 2);
        const auto ended = replay(stage, {});
        QCOMPARE(ended.status, 1);
        QCOMPARE(stage.endpoint.requests().size(), 0);
        QCOMPARE(ended.errors.filter(u"the record does not hold this request"_s).size(), 4);
        QCOMPARE(answeredPairs(stage.path(u"again.ormt"_s)), QStringList());
    }

    void a_record_is_gone_on_with_by_a_run_in_place()
    {
        BridgeStage stage;
        record(stage);
        stage.endpoint.answerWith(standin::respond);
        QCOMPARE(stage.goOn(u"out.ormt"_s, {u"--record"_s, u"record"_s}).status, 0);
        QCOMPARE(readBytes(stage.path(u"record"_s)).count('\n'), 17);
    }

private:
    /// A survey of 4 personas and 4 questions with one failure, recorded.
    void record(BridgeStage &stage)
    {
        stage.endpoint.answerWith([](const standin::Request &request) {
            return pairOf(request) == "P0002 Q2"_L1 ? Reply::status(500).with("Retry-After", "0")
                                                    : standin::respond(request);
        });
        const auto ended = stage.runProject(writeSurvey(stage.path(u"in.ormt"_s), 4, 4), stage.path(u"out.ormt"_s),
                                            {u"--jobs"_s, u"3"_s, u"--retries"_s, u"1"_s, u"--record"_s, u"record"_s});
        QCOMPARE(ended.status, 1);
        asked = stage.endpoint.requests().size();
    }

    static BridgeStage::Ended replay(BridgeStage &stage, const QStringList &others)
    {
        return stage.run(
            stage.toEndpoint() +
            QStringList{u"--run"_s, u"in.ormt"_s, u"--save"_s, u"again.ormt"_s, u"--replay"_s, u"record"_s} + others);
    }

    qsizetype asked = 0;
};

ORRINET_TEST(TestRunRecord)
#include "tst_runrecord.moc"
