// The bridge in the process of its client: what becomes of a request, of the key, of the budget and of the record.

#include "bridge/bridge.h"
#include "standin/strictness.h"
#include "tests/bridge/way.h"
#include "tests/standin/client.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTcpSocket>
#include <QTest>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;
using bridge::BridgeOptions;
using bridge::Exchange;
using standin::Reply;
using standin::Request;

namespace {

int statusOf(const QNetworkReply *reply)
{
    return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

QByteArray reasonOf(const QNetworkReply *reply)
{
    return reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toByteArray();
}

Reply answerOf(int tokensIn, int tokensOut)
{
    return Reply::json(R"({"usage":{"prompt_tokens":)" + QByteArray::number(tokensIn) + R"(,"completion_tokens":)" +
                       QByteArray::number(tokensOut) + "}}");
}

QList<Exchange> recordedIn(const QString &path)
{
    QList<Exchange> exchanges;
    const QByteArrayList lines = readBytes(path).split('\n');
    for (const QByteArray &line : lines) {
        if (const auto exchange = bridge::readRecordLine(line))
            exchanges << *exchange;
    }
    return exchanges;
}

#ifdef Q_OS_UNIX
/// While it lives no file of this process grows past this size.
class FullDisk
{
public:
    explicit FullDisk(qint64 size)
        : formerHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &former);
        rlimit limit = former;
        limit.rlim_cur = rlim_t(size);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &former);
        (void)std::signal(SIGXFSZ, formerHandler);
    }
    Q_DISABLE_COPY_MOVE(FullDisk)

private:
    rlimit former = {};
    void (*formerHandler)(int);
};
#endif

} // namespace

class TestBridge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_reply_comes_back_as_the_endpoint_gave_it_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::newRow("answer") << Reply::json("{\"a\":\n1}\r\n");
        QTest::newRow("of another type") << Reply::json("a").with("Content-Type", "text/plain; charset=utf-8");
        QTest::newRow("empty") << Reply::json({});
        QTest::newRow("no text") << Reply::json(QByteArray::fromHex("00ff0d0a"));
        QTest::newRow("refusal") << Reply::status(400, R"({"error":{"message":"no"}})");
        Reply unusual = Reply::status(422, "no");
        unusual.reason = "Not in that way, (please)";
        QTest::newRow("reason") << unusual;
        QTest::newRow("retried in vain") << Reply::status(503, "busy");
    }
    void a_reply_comes_back_as_the_endpoint_gave_it()
    {
        QFETCH(const Reply, reply);
        BridgeHere here({}, quickly(1));
        here.endpoint.answerWith([reply](const Request &) { return reply; });
        Client client;
        QNetworkReply *read = client.posted();
        QCOMPARE(statusOf(read), reply.code);
        QCOMPARE(read->readAll(), reply.body);
        const QList<standin::Header> own = reply.headers;
        QCOMPARE(read->rawHeader("Content-Type"), own.isEmpty() ? "application/json"_ba : own.constFirst().second);
        if (!reply.reason.isEmpty())
            QCOMPARE(reasonOf(read), reply.reason);
        QCOMPARE(here.endpoint.requests().size(), reply.code == 503 ? 2 : 1);
    }

    void a_request_goes_out_translated()
    {
        BridgeHere here(withModel(u"m"_s));
        here.endpoint.answerWith(standin::strict([](const Request &) { return Reply::content(u"yes"_s); }));
        Client client;
        const QNetworkReply *reply = client.posted(
            R"({"model":"a","messages":[],"response_format":{"type":"json_object","schema":{"type":"object",)"
            R"("properties":{"answer":{"type":"string"}},"required":["answer"]}}})");
        QCOMPARE(statusOf(reply), 200);
        QCOMPARE(here.endpoint.requests().constFirst().json()["model"_L1], u"m"_s);
    }

    void where_no_reply_came_the_bridge_says_so_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("dropped") << Reply().ending(Reply::End::DroppedBeforeHead) << "bridge: "_ba;
        QTest::newRow("cut") << Reply::json("12345").ending(Reply::End::Truncated) << "bridge: "_ba;
        QTest::newRow("moved") << Reply::status(307).with("Location", "https://elsewhere.example/")
                               << "bridge: the endpoint redirects, which is not followed"_ba;
    }
    void where_no_reply_came_the_bridge_says_so()
    {
        QFETCH(const Reply, reply);
        QFETCH(const QByteArray, reason);
        BridgeHere here({}, quickly(0));
        here.endpoint.queue(reply);
        Client client;
        QNetworkReply *read = client.posted();
        QCOMPARE(statusOf(read), 502);
        QVERIFY2(reasonOf(read).startsWith(reason), reasonOf(read).constData());
        QCOMPARE(read->readAll(), QByteArray());
        QCOMPARE(here.endpoint.requests().size(), 1);
        QCOMPARE(here.bridge.tally().failed, 1);
    }

    void the_key_that_goes_out_is_the_chosen_one_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<bool>("forwards");
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("the window's") << QByteArray() << true << "Bearer none"_ba;
        QTest::newRow("another") << "other"_ba << true << "Bearer other"_ba;
        QTest::newRow("another for a placeholder") << "other"_ba << false << "Bearer other"_ba;
        QTest::newRow("none for a placeholder") << QByteArray() << false << QByteArray();
    }
    void the_key_that_goes_out_is_the_chosen_one()
    {
        QFETCH(const QByteArray, key);
        QFETCH(const bool, forwards);
        QFETCH(const QByteArray, sent);
        BridgeHere here(withKey(key, forwards));
        Client client;
        client.posted();
        QCOMPARE(here.endpoint.requests().constFirst().header("Authorization"), sent);
    }

    void an_echoed_key_is_in_no_record_and_no_line()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        BridgeHere here(withKey("s3cret"), quickly(0));
        QVERIFY(here.bridge.record().open(path));
        QList<Exchange> told;
        connect(&here.bridge, &bridge::Bridge::exchangeEnded, &here.bridge,
                [&told](const Exchange &exchange) { told << exchange; });
        Reply echo = Reply::status(401, R"({"model":"s3cret","usage":{"s3cret":1},"error":"Incorrect key: s3cret"})");
        echo.reason = "No s3cret";
        here.endpoint.queue(echo.with("Content-Type", "text/s3cret"));
        Client client;
        QNetworkReply *reply = client.posted();
        QVERIFY(!readBytes(path).contains("s3cret"));
        QCOMPARE(told.size(), 1);
        QVERIFY(!bridge::recordLine(told.constFirst()).contains("s3cret"));
        QCOMPARE(recordedIn(path).constFirst().reason, "No [key]"_ba);
        // The window shows the reason of what fails.
        QCOMPARE(reasonOf(reply), "No [key]"_ba);
        QCOMPARE(here.endpoint.requests().constFirst().header("Authorization"), "Bearer s3cret"_ba);
    }

    void a_record_holds_both_forms_of_a_request()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        BridgeHere here(withModel(u"m"_s), quickly(1));
        QVERIFY(here.bridge.record().open(path));
        here.endpoint.queue(Reply::status(500));
        here.endpoint.queue(answerOf(3, 4));
        Client client;
        client.posted(R"({"model": "a"})");
        const QList<Exchange> recorded = recordedIn(path);
        QCOMPARE(recorded.size(), 1);
        QCOMPARE(recorded.constFirst().asked, R"({"model": "a"})"_ba);
        QCOMPARE(recorded.constFirst().sent, R"({"model":"m"})"_ba);
        QCOMPARE(recorded.constFirst().attempts, 2);
        QCOMPARE(recorded.constFirst().status, 200);
        QCOMPARE(recorded.constFirst().reply, answerOf(3, 4).body);
        QVERIFY(!readBytes(path).contains("none"));
    }

    void what_was_paid_for_is_recorded_though_nobody_waits_any_more()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        BridgeHere here({}, quickly(), 2);
        QVERIFY(here.bridge.record().open(path));
        here.endpoint.queue(Reply::json("paid").held());
        Client client;
        QNetworkReply *reply = client.post();
        QVERIFY(QSignalSpy(&here.endpoint, &standin::ChatEndpoint::requestArrived).wait());
        reply->abort();
        // By the time of another's answer the bridge knows that nobody is there.
        Client().posted();
        QSignalSpy ended(&here.bridge, &bridge::Bridge::exchangeEnded);
        here.endpoint.release();
        QVERIFY(ended.wait());
        QCOMPARE(recordedIn(path).constLast().reply, "paid"_ba);
    }

    void a_budget_of_requests_counts_each_attempt()
    {
        BridgeHere here(withBudget(3), quickly(1));
        QSignalSpy stopped(&here.bridge, &bridge::Bridge::stopped);
        here.endpoint.queue(Reply::status(500));
        here.endpoint.queue(Reply::json("2"));
        here.endpoint.queue(Reply::json("3"));
        Client client;
        QCOMPARE(client.posted()->readAll(), "2"_ba);
        QCOMPARE(client.posted()->readAll(), "3"_ba);
        for (int i = 0; i < 2; ++i) {
            const QNetworkReply *refused = client.posted();
            QCOMPARE(statusOf(refused), 503);
            QCOMPARE(reasonOf(refused), "bridge: the budget of 3 requests is used up"_ba);
        }
        QCOMPARE(here.endpoint.requests().size(), 3);
        QCOMPARE(stopped, (QList<QVariantList>{{u"the budget of 3 requests is used up"_s}}));
        const bridge::Tally &tally = here.bridge.tally();
        QCOMPARE(tally.asked, 2);
        QCOMPARE(tally.answered, 2);
        QCOMPARE(tally.sent, 3);
        QCOMPARE(tally.retried, 1);
        QCOMPARE(tally.refused, 2);
    }

    void a_budget_that_ends_before_a_further_attempt_ends_the_request()
    {
        BridgeHere here(withBudget(1), quickly(5));
        here.endpoint.answerWith([](const Request &) { return Reply::status(500); });
        Client client;
        const QNetworkReply *reply = client.posted();
        QCOMPARE(statusOf(reply), 502);
        QCOMPARE(reasonOf(reply), "bridge: the budget of 1 requests is used up"_ba);
        QCOMPARE(here.endpoint.requests().size(), 1);
        QCOMPARE(here.bridge.tally().sent, 1);
    }

    void a_budget_of_tokens_counts_both_ways()
    {
        BridgeHere here(withBudget(-1, 10));
        here.endpoint.answerWith([](const Request &) { return answerOf(3, 2); });
        Client client;
        QCOMPARE(statusOf(client.posted()), 200);
        QCOMPARE(statusOf(client.posted()), 200);
        const QNetworkReply *refused = client.posted();
        QCOMPARE(statusOf(refused), 503);
        QCOMPARE(reasonOf(refused), "bridge: the budget of 10 tokens is used up"_ba);
        QCOMPARE(here.endpoint.requests().size(), 2);
        QCOMPARE(here.bridge.tally().usage.tokensIn, 6);
        QCOMPARE(here.bridge.tally().usage.tokensOut, 4);
    }

    void a_budget_of_nothing_asks_nothing_data()
    {
        QTest::addColumn<qint64>("requests");
        QTest::addColumn<qint64>("tokens");
        QTest::newRow("requests") << qint64(0) << qint64(-1);
        QTest::newRow("tokens") << qint64(-1) << qint64(0);
    }
    void a_budget_of_nothing_asks_nothing()
    {
        QFETCH(const qint64, requests);
        QFETCH(const qint64, tokens);
        BridgeHere here(withBudget(requests, tokens));
        Client client;
        QCOMPARE(statusOf(client.posted()), 503);
        QVERIFY(here.endpoint.requests().isEmpty());
    }

    void stopping_ends_what_waits_for_a_pause_and_refuses_the_rest()
    {
        using std::chrono::hours;
        BridgeHere here({}, {.retries = 9, .first = hours(1), .longest = hours(1)});
        here.endpoint.queue(Reply::status(500));
        QSignalSpy retrying(&here.way.out(), &bridge::Endpoint::retrying);
        Client client;
        const QNetworkReply *waiting = client.post();
        QVERIFY(retrying.wait());
        here.bridge.stop(u"interrupted"_s);
        here.bridge.stop(u"again"_s);
        QCOMPARE(here.bridge.stopReason(), u"interrupted"_s);
        QVERIFY(QSignalSpy(waiting, &QNetworkReply::finished).wait());
        QCOMPARE(statusOf(waiting), 502);
        QCOMPARE(reasonOf(waiting), "bridge: interrupted"_ba);
        const QNetworkReply *refused = client.posted();
        QCOMPARE(statusOf(refused), 503);
        QCOMPARE(reasonOf(refused), "bridge: interrupted"_ba);
        QCOMPARE(here.endpoint.requests().size(), 1);
    }

    void what_is_under_way_when_it_stops_still_arrives()
    {
        BridgeHere here;
        here.endpoint.queue(Reply::json("paid").held());
        Client client;
        QNetworkReply *reply = client.post();
        QVERIFY(QSignalSpy(&here.endpoint, &standin::ChatEndpoint::requestArrived).wait());
        here.bridge.stop(u"interrupted"_s);
        here.endpoint.release();
        QVERIFY(QSignalSpy(reply, &QNetworkReply::finished).wait());
        QCOMPARE(reply->readAll(), "paid"_ba);
    }

    void a_refused_request_may_be_held()
    {
        BridgeOptions options = withBudget(0);
        options.holdsRefused = true;
        BridgeHere here(options);
        QSignalSpy refused(&here.bridge, &bridge::Bridge::requestRefused);
        Client client;
        const QNetworkReply *reply = client.post();
        QVERIFY(refused.wait());
        // Had it got a reply, that would be here by the time of another's.
        BridgeHere other;
        Client().posted();
        QVERIFY(!reply->isFinished());
        QCOMPARE(refused.size(), 1);
    }

    void a_record_that_is_full_stops_the_asking_and_loses_no_answer()
    {
#ifdef Q_OS_UNIX
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        BridgeHere here;
        QVERIFY(here.bridge.record().open(path));
        here.endpoint.answerWith([](const Request &request) { return Reply::json(request.body); });
        Client client;
        QCOMPARE(client.posted("1")->readAll(), "1"_ba);
        const QByteArray before = readBytes(path);
        {
            const FullDisk disk(before.size() + 10);
            QCOMPARE(client.posted("2")->readAll(), "2"_ba);
        }
        QVERIFY(here.bridge.stopReason().startsWith("the record can't be written: "_L1));
        const QNetworkReply *refused = client.posted("3");
        QCOMPARE(statusOf(refused), 503);
        QVERIFY2(reasonOf(refused).startsWith("bridge: the record can't be written: "), reasonOf(refused).constData());
        QCOMPARE(here.endpoint.requests().size(), 2);
        QVERIFY(readBytes(path).startsWith(before));
#endif
    }

    void what_is_under_way_when_the_record_is_full_has_a_line_of_its_own()
    {
#ifdef Q_OS_UNIX
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        BridgeHere here({}, quickly(), 2);
        QVERIFY(here.bridge.record().open(path));
        here.endpoint.queue(Reply::json("later").held());
        Client first;
        QNetworkReply *reply = first.post("1");
        QVERIFY(QSignalSpy(&here.endpoint, &standin::ChatEndpoint::requestArrived).wait());
        {
            const FullDisk disk(10);
            Client().posted("2");
        }
        here.endpoint.release();
        QVERIFY(QSignalSpy(reply, &QNetworkReply::finished).wait());
        QCOMPARE(reply->readAll(), "later"_ba);
        const QList<Exchange> recorded = recordedIn(path);
        QCOMPARE(recorded.size(), 1);
        QCOMPARE(recorded.constFirst().asked, "1"_ba);
#endif
    }

    void a_replay_answers_and_asks_nobody()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        {
            BridgeHere here(withModel(u"m"_s), quickly(0));
            QVERIFY(here.bridge.record().open(path));
            here.endpoint.queue(Reply::json("one"));
            here.endpoint.queue(Reply::status(429, "two"));
            here.endpoint.queue(Reply().ending(Reply::End::DroppedBeforeHead));
            Client client;
            client.posted(R"({"model":"a"})");
            client.posted(R"({"model":"a"})");
            client.posted(R"({"model":"b"})");
        }
        // What would have been sent plays no part.
        BridgeHere here(fromRecord(), quickly(0));
        QVERIFY(here.bridge.replay().open(path));
        Client client;
        QCOMPARE(client.posted(R"({"model":"a"})")->readAll(), "one"_ba);
        for (int i = 0; i < 2; ++i) {
            QNetworkReply *second = client.posted(R"({"model":"a"})");
            QCOMPARE(statusOf(second), 429);
            QCOMPARE(second->readAll(), "two"_ba);
        }
        QCOMPARE(statusOf(client.posted(R"({"model":"b"})")), 502);
        const QNetworkReply *unknown = client.posted(R"({"model":"c"})");
        QCOMPARE(statusOf(unknown), 502);
        QCOMPARE(reasonOf(unknown), "bridge: the record does not hold this request"_ba);
        QVERIFY(here.endpoint.requests().isEmpty());
        QCOMPARE(here.bridge.tally().sent, 0);
    }

    void others_get_407_and_nothing_more()
    {
        BridgeHere here;
        QTcpSocket socket;
        socket.setProxy(QNetworkProxy::NoProxy);
        socket.connectToHost(u"127.0.0.1"_s, here.bridge.port());
        socket.write("CONNECT api.openai.com:443 HTTP/1.1\r\nProxy-Authorization: Basic b3JyaW5ldDo=\r\n\r\n"
                     "POST /v1/chat/completions HTTP/1.1\r\nContent-Length: 2\r\n\r\n{}");
        socket.write("\r\n");
        QByteArray heard;
        while (socket.state() != QAbstractSocket::UnconnectedState || socket.bytesAvailable() > 0) {
            heard += socket.readAll();
            if (socket.state() != QAbstractSocket::UnconnectedState && heard.count("407") < 1)
                QVERIFY(QSignalSpy(&socket, &QTcpSocket::readyRead).wait());
            else
                break;
        }
        QVERIFY2(heard.startsWith("HTTP/1.1 407 ") && !heard.contains(" 200 "), heard.constData());
        QVERIFY(here.endpoint.requests().isEmpty());
        QCOMPARE(here.bridge.tally().asked, 0);
    }

    void two_bridges_have_secrets_and_certificates_of_their_own()
    {
        BridgeHere one;
        BridgeHere two;
        QVERIFY(one.bridge.password() != two.bridge.password());
        QCOMPARE(one.bridge.password().size(), 64);
        QVERIFY(one.bridge.certificate() != two.bridge.certificate());
    }

    void nothing_but_the_completions_is_passed_on()
    {
        BridgeHere here;
        QNetworkAccessManager manager;
        for (const QString &address :
             {u"https://api.openai.com/v1/models"_s, u"https://api.openai.com/v1/chat/completions?a=b"_s}) {
            QNetworkRequest request{QUrl(address)};
            request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
            const QNetworkReply *reply = manager.post(request, "{}");
            QVERIFY(QSignalSpy(reply, &QNetworkReply::finished).wait());
            QCOMPARE(statusOf(reply), 404);
        }
        QNetworkReply *reply = manager.get(QNetworkRequest(QUrl(u"https://api.openai.com/v1/chat/completions"_s)));
        QVERIFY(QSignalSpy(reply, &QNetworkReply::finished).wait());
        QCOMPARE(statusOf(reply), 404);
        QVERIFY(here.endpoint.requests().isEmpty());
    }
};

ORRINET_TEST(TestBridge)
#include "tst_bridge.moc"
