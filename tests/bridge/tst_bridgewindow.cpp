// The program's own window with the bridge in its process: what it shows and stores.

#include "standin/respondent.h"
#include "standin/strictness.h"
#include "tests/bridge/way.h"
#include "tests/support/seed.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QAction>
#include <QJsonArray>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;
using bridge::BridgeOptions;
using bridge::Format;
using standin::Reply;
using standin::Request;

namespace {

/// A survey whose requests go through a bridge to its endpoint.
class BridgedSurvey : public SurveyStage
{
public:
    explicit BridgedSurvey(const BridgeOptions &options = {}, const bridge::RetryRule &rule = quickly())
        : way(bridge::Route{.url = QUrl(u"http://127.0.0.1:%1/v1/chat/completions"_s.arg(endpoint.port())),
                            .extraRoots = {},
                            .retry = rule})
        , bridge(options, &way)
    {
        endpoint.takePlainRequests();
        if (!bridge.listen())
            qFatal("no port");
        detour.emplace(bridge.port(), bridge.certificate(), bridge.user(), bridge.password());
    }
    ~BridgedSurvey() override { closeWindow(); }

    bridge::Endpoint way;
    bridge::Bridge bridge;

private:
    std::optional<loopback::Detour> detour;
};

/// A question of each type, with and without reasoning.
void addEveryQuestion(SurveyStage &stage)
{
    const QString labels = uR"(["never","sometimes","often"])"_s;
    for (const bool reasoning : {false, true}) {
        stage.addQuestion(u"Tell: what do you do?"_s, u"text"_s, reasoning);
        stage.addQuestion(u"How often?"_s, u"single_choice"_s, reasoning, labels);
        stage.addQuestion(u"Choose all that apply: coffee; tea; water."_s, u"multi_choice"_s, reasoning, labels);
        stage.addQuestion(u"On a scale, do you like rain: no; a little; yes."_s, u"likert"_s, reasoning, labels);
        stage.addQuestion(u"How many cups?"_s, u"numeric"_s, reasoning);
        stage.addQuestion(u"Rank these: tram; car; bicycle."_s, u"ranking"_s, reasoning, labels);
    }
}

/// All that a run leaves behind for the user to see.
struct Traces
{
    explicit Traces(SurveyStage &stage)
        : log(logText(stage))
        , grid(cells(refreshedGrid(stage)))
        , rows(stage.rows(u"SELECT p.name, r.question_id, r.text_answer, r.numeric_answer, r.json_answer, "
                          "r.question_serial, r.model, r.temperature, r.token_usage FROM responses r "
                          "JOIN personas p ON p.uuid=r.persona_uuid ORDER BY r.id"_s))
    {
        for (const Request &request : stage.endpoint.requests())
            bodies << request.body;
    }

    QString log;
    QList<QStringList> grid;
    Rows rows;
    QByteArrayList bodies; ///< of the requests that arrived at the endpoint
};

/// What the columns of an answer hold, and which keys the stored object has.
QString shapeOf(const QVariantList &row)
{
    QStringList shape;
    if (!row.at(1).isNull())
        shape << u"text"_s;
    if (!row.at(2).isNull())
        shape << u"number"_s;
    if (!row.at(3).isNull())
        shape << QJsonDocument::fromJson(row.at(3).toString().toUtf8()).object().keys();
    return row.at(0).toString() + u": "_s + shape.join(u' ');
}

} // namespace

class TestBridgeWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void every_type_gets_its_answer()
    {
        QList<Rows> answers;
        for (const Format format : {Format::JsonSchema, Format::JsonObject}) {
            BridgedSurvey stage(withFormat(format));
            stage.endpoint.answerWith(standin::strict(standin::respond));
            stage.addPersona(u"P1"_s, u"You keep bees."_s);
            addEveryQuestion(stage);
            QVERIFY(stage.run());
            QCOMPARE(stage.endpoint.requests().size(), 12);
            QVERIFY(!logText(stage).contains("\n! "_L1));
            answers << stage.rows(u"SELECT answer_type, text_answer, numeric_answer, json_answer FROM responses JOIN "
                                  "questions USING (question_id) ORDER BY responses.id"_s);
        }
        QStringList shapes;
        for (const QVariantList &row : answers.constFirst())
            shapes << shapeOf(row);
        QCOMPARE(shapes,
                 (QStringList{u"text: text"_s, u"single_choice: text answer reasoning"_s,
                              u"multi_choice: text answer"_s, u"likert: text answer"_s, u"numeric: number answer"_s,
                              u"ranking: text answer"_s, u"text: text"_s, u"single_choice: text answer reasoning"_s,
                              u"multi_choice: text answer reasoning"_s, u"likert: text answer reasoning"_s,
                              u"numeric: number answer reasoning"_s, u"ranking: text answer reasoning"_s}));
        // The respondent answers alike however it is asked.
        QCOMPARE(answers.constLast(), answers.constFirst());
    }

    void as_it_is_the_service_turns_it_down()
    {
        BridgedSurvey stage(withFormat(Format::AsIs));
        stage.endpoint.answerWith(standin::strict(standin::respond));
        stage.addPersona(u"P1"_s, u"You keep bees."_s);
        addEveryQuestion(stage);
        for (int i = 0; i < 8; ++i)
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^survey error: .*Bad Request"_s));
        QVERIFY(stage.run());
        // Text and function calls are as everywhere; the four types that ask for JSON stay open.
        QCOMPARE(stage.count(u"responses"_s), 4);
        QCOMPARE(stage.endpoint.requests().size(), 12);
        const QStringList lines = logText(stage).split(u'\n');
        QCOMPARE(lines.filter(QRegularExpression(u"^! .*server replied: Bad Request \\(code 302\\)$"_s)).size(), 8);
    }

    void what_needs_no_translation_leaves_the_same_traces()
    {
        QList<Reply> replies{
            Reply::content(u"Well.\n\nYes."_s),
            Reply::toolCall(uR"({"answer":"often"})"_s),
            Reply::json("no JSON"),
            Reply::json({}),
            Reply::json("{\"choices\":\xff"),
            Reply::json(qCompress(Reply::content(u"packed"_s).body).sliced(4)).with("Content-Encoding", "deflate")};
        for (const int status : {400, 401, 403, 404, 408, 409, 422, 429, 500, 502, 503, 504})
            replies << Reply::status(status, R"({"error":{"message":"no"}})");
        const auto runOf = [&replies](SurveyStage &stage) {
            stage.addPersona(u"P1"_s, u"You keep bees."_s);
            for (const Reply &reply : std::as_const(replies)) {
                stage.endpoint.queue(reply);
                const int number = stage.addQuestion(u"What \u2713?"_s, u"single_choice"_s, true, uR"(["a","b"])"_s);
                if (number % 2 == 0)
                    stage.exec(u"UPDATE questions SET answer_type='text' WHERE question_id=?"_s, {number});
                if (reply.code != 200)
                    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^survey error: "_s));
            }
            if (!stage.run())
                QTest::qFail("the run has not ended", __FILE__, __LINE__);
            return Traces(stage);
        };
        SurveyStage itself;
        const Traces alone = runOf(itself);
        itself.closeWindow();
        BridgedSurvey bridged({}, quickly(0));
        const Traces through = runOf(bridged);
        QCOMPARE(through.log, alone.log);
        QCOMPARE(through.grid, alone.grid);
        QCOMPARE(through.rows, alone.rows);
        QCOMPARE(alone.rows.size(), 6);
        QCOMPARE(through.bodies, alone.bodies);
        QCOMPARE(alone.bodies.size(), replies.size());
    }

    void a_reply_that_is_damaged_leaves_the_pair_open()
    {
        const Reply whole = Reply::content(u"an answer that was paid for"_s);
        const QList<Reply> damaged{Reply().ending(Reply::End::DroppedBeforeHead),
                                   whole.ending(Reply::End::DroppedAfterHead),
                                   whole.ending(Reply::End::Truncated),
                                   whole.with("Content-Encoding", "gzip"),
                                   Reply::garbage("what?\r\n\r\n"),
                                   Reply::status(307).with("Location", "/v1/elsewhere")};
        BridgedSurvey stage({}, quickly(0));
        stage.addPersona(u"P1"_s, u"P1"_s);
        for (const Reply &reply : damaged) {
            stage.endpoint.queue(reply);
            stage.addQuestion(u"Q"_s);
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^survey error: .*bridge: "_s));
        }
        QVERIFY(stage.run());
        QCOMPARE(stage.count(u"responses"_s), 0);
        QCOMPARE(logText(stage).count("server replied: bridge: "_L1), damaged.size());
        // The next run asks them again.
        QVERIFY(stage.run());
        QCOMPARE(stage.count(u"responses"_s), int(damaged.size()));
    }

    void the_service_turning_down_at_random_loses_nothing()
    {
        QRandomGenerator random(testSeed());
        for (int round = 0; round < (qEnvironmentVariableIsSet("ORRINET_LONG") ? 100 : 2); ++round) {
            const int taken = random.bounded(1, 4);
            const int refused = random.bounded(1, 4);
            const QByteArray after = QByteArrayList{"0"_ba, "7"_ba, "soon"_ba}.at(random.bounded(3));
            BridgedSurvey stage(withFormat(random.bounded(2) == 0 ? Format::JsonSchema : Format::JsonObject));
            stage.endpoint.answerWith(standin::takingTurns(taken, refused, after, standin::strict(standin::respond)));
            stage.fillTwoByTwo();
            stage.addQuestion(u"Rank these: tram; car; bicycle."_s, u"ranking"_s, random.bounded(2) == 0);
            QVERIFY(stage.run());
            QCOMPARE(stage.count(u"responses"_s), 6);
            QCOMPARE(stage.bridge.tally().answered, 6);
            QCOMPARE(stage.bridge.tally().retried, stage.endpoint.requests().size() - 6);
        }
    }

    void a_budget_shows_in_the_log_and_the_rest_stays_open()
    {
        BridgedSurvey stage(withBudget(3));
        stage.fillTwoByTwo();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^survey error: .*budget of 3 requests"_s));
        QVERIFY(stage.run());
        QCOMPARE(stage.answered(), stage.twoByTwo.first(3));
        QVERIFY(logText(stage).contains("server replied: bridge: the budget of 3 requests is used up"_L1));
        QCOMPARE(stage.endpoint.requests().size(), 3);
    }

    void a_recorded_run_is_replayed_byte_for_byte()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        const auto fill = [](SurveyStage &stage) {
            stage.addPersona(u"P1"_s, u"You keep bees."_s);
            stage.addPersona(u"P2"_s, u"You drive a tram."_s);
            addEveryQuestion(stage);
        };
        QList<Traces> traces;
        {
            BridgedSurvey stage;
            QVERIFY(stage.bridge.record().open(path));
            stage.endpoint.answerWith(standin::strict(standin::respond));
            fill(stage);
            QVERIFY(stage.run());
            traces << Traces(stage);
        }
        BridgedSurvey stage(fromRecord());
        QVERIFY(stage.bridge.replay().open(path));
        fill(stage);
        // The endpoint is not asked, so there is nothing to wait for there.
        QVERIFY(stage.run());
        traces << Traces(stage);
        QVERIFY(stage.endpoint.requests().isEmpty());
        QCOMPARE(traces.constLast().log, traces.constFirst().log);
        QCOMPARE(traces.constLast().grid, traces.constFirst().grid);
        QCOMPARE(traces.constLast().rows, traces.constFirst().rows);
        QCOMPARE(traces.constFirst().rows.size(), 24);
    }
};

ORRINET_TEST(TestBridgeWindow)
#include "tst_bridgewindow.moc"
