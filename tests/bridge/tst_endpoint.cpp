// The bridge's way out: what goes to an endpoint, when it goes again, and what comes of it.

#include "bridge/endpoint.h"
#include "standin/certificate.h"
#include "tests/bridge/way.h"
#include "tests/support/testcase.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>

using namespace Qt::StringLiterals;
using bridge::Exchange;
using standin::ChatEndpoint;
using standin::Identity;
using standin::Reply;
using standin::Request;

namespace {

/// A variable of the environment, as it was before once this is gone.
class Variable
{
public:
    Variable(const char *changed, const QByteArray &value)
        : name(changed)
        , before(qgetenv(changed))
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }
    ~Variable()
    {
        if (before.isNull())
            qunsetenv(name);
        else
            qputenv(name, before);
    }
    Q_DISABLE_COPY_MOVE(Variable)

private:
    const char *name;
    QByteArray before;
};

/// The system names the endpoint as the proxy for all hosts.
struct ByProxy
{
    explicit ByProxy(const ChatEndpoint &endpoint)
        : proxy("https_proxy", "http://127.0.0.1:" + QByteArray::number(endpoint.port()))
    {
    }

    Variable proxy;
    Variable exceptions{"no_proxy", {}};
    Variable moreExceptions{"NO_PROXY", {}};
};

/// Whatever was posted before has arrived by the time that this request is answered.
bool settled(const Way &way)
{
    bridge::Endpoint out(way.route);
    QEventLoop loop;
    Exchange fence;
    fence.sent = "fence";
    out.post(fence, {}, [&loop](const Exchange &) { loop.quit(); });
    QTimer::singleShot(20'000, &loop, [&loop] { loop.exit(1); });
    return loop.exec() == 0;
}

/// Answers those that only wait for what went before at once, the others as told.
void answerAll(ChatEndpoint &endpoint, const Reply &reply)
{
    endpoint.answerWith(
        [reply](const Request &request) { return request.body == "fence" ? Reply::json("{}") : reply; });
}

int arrivedAt(const ChatEndpoint &endpoint)
{
    return int(
        std::ranges::count_if(endpoint.requests(), [](const Request &request) { return request.body != "fence"; }));
}

/// Statuses that say that the same request may succeed later.
QList<Reply> passing()
{
    QList<Reply> replies;
    for (const int status : {408, 409, 429, 500, 502, 503, 504})
        replies << Reply::status(status, "later");
    return replies;
}

/// What can't be taken for a reply.
QList<Reply> unusable()
{
    return {Reply().ending(Reply::End::DroppedBeforeHead),
            Reply::json("{}").ending(Reply::End::DroppedAfterHead),
            Reply::json("{\"a\": 1}").ending(Reply::End::Truncated),
            Reply::garbage("what?\r\n\r\n"),
            Reply::garbage("HTTP/1.1 200 OK\r\nContent-"),
            Reply::json("no gzip").with("Content-Encoding", "gzip")};
}

QByteArray ended(const QByteArray &how, int attempts)
{
    return how + ", attempts: " + QByteArray::number(attempts);
}

/// What came of a request, in one line.
QByteArray endOf(const Exchange &exchange)
{
    const QByteArray status = QByteArray::number(exchange.status);
    const bool isReply = exchange.status != 0 && exchange.failure.isEmpty();
    const bool isNone = exchange.status == 0 && !exchange.failure.isEmpty() && exchange.reply.isEmpty() &&
                        exchange.reason.isEmpty() && exchange.contentType.isEmpty();
    if (isReply)
        return ended(status + ' ' + exchange.reason + ' ' + exchange.contentType + ' ' + exchange.reply,
                     exchange.attempts);
    return ended(isNone ? "no reply"_ba : "neither a reply nor none: "_ba + status, exchange.attempts);
}

/// The same of a request that gets this reply in the end.
QByteArray endOf(const Reply &reply, int attempts)
{
    const QByteArray statusLine = reply.bytes().first(reply.bytes().indexOf('\r'));
    return ended(statusLine.sliced(statusLine.indexOf(' ') + 1) + " application/json " + reply.body, attempts);
}

bool arrivedAll(ChatEndpoint &endpoint, int count)
{
    QSignalSpy arrived(&endpoint, &ChatEndpoint::requestArrived);
    while (arrivedAt(endpoint) < count) {
        if (!arrived.wait(20'000))
            return false;
    }
    return true;
}

} // namespace

class TestEndpoint : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_request_goes_out_with_its_key_and_nothing_of_ours_data()
    {
        QTest::addColumn<QByteArray>("key");
        QTest::addColumn<QByteArray>("authorization");
        QTest::newRow("key") << "k-1"_ba << "Bearer k-1"_ba;
        QTest::newRow("no key") << QByteArray() << QByteArray();
    }
    void a_request_goes_out_with_its_key_and_nothing_of_ours()
    {
        QFETCH(const QByteArray, key);
        QFETCH(const QByteArray, authorization);
        Way way;
        way.endpoint.queue(Reply::json("{\"a\": 1}\n").with("Set-Cookie", "a=b"));
        const Exchange exchange = way.posted("{ \"b\": \"\xc3\xa9\" }\r\n", key);
        QCOMPARE(exchange.status, 200);
        QCOMPARE(exchange.reason, "OK"_ba);
        QCOMPARE(exchange.contentType, "application/json"_ba);
        QCOMPARE(exchange.reply, "{\"a\": 1}\n"_ba);
        QCOMPARE(exchange.attempts, 1);
        QCOMPARE(exchange.failure, QString());
        QVERIFY(exchange.beganAt.isValid());
        const Request request = way.endpoint.requests().constFirst();
        QCOMPARE(request.requestLine, "POST /v1/chat/completions HTTP/1.1"_ba);
        QCOMPARE(request.body, "{ \"b\": \"\xc3\xa9\" }\r\n"_ba);
        QCOMPARE(request.header("Authorization"), authorization);
        QCOMPARE(request.header("Content-Type"), "application/json"_ba);
        QCOMPARE(request.header("Content-Length"), QByteArray::number(request.body.size()));
        QVERIFY(request.header("Transfer-Encoding").isNull());
        QVERIFY(request.header("Proxy-Authorization").isNull());
    }

    void what_may_pass_is_tried_again()
    {
        Way way;
        QSignalSpy retrying(&way.out(), &bridge::Endpoint::retrying);
        const QList<Reply> failures = passing() + unusable();
        for (const Reply &failure : failures) {
            const qsizetype before = way.endpoint.requests().size();
            retrying.clear();
            for (int i = 0; i < 3; ++i)
                way.endpoint.queue(failure);
            way.endpoint.queue(Reply::json("at last"));
            const Exchange exchange = way.posted("the body");
            QCOMPARE(endOf(exchange), "200 OK application/json at last, attempts: 4"_ba);
            QCOMPARE(retrying.size(), 3);
            // Each attempt is one request: Qt repeats none by itself.
            QCOMPARE(way.endpoint.requests().size() - before, 4);
            QCOMPARE(way.endpoint.requests().constLast().body, "the body"_ba);
        }
    }

    void one_that_never_passes_ends_with_what_came_last()
    {
        Way way(quickly(2));
        const auto ask = [&way](const Reply &last) {
            way.endpoint.queue(Reply::status(500, "first"));
            way.endpoint.queue(Reply::status(500, "second"));
            way.endpoint.queue(last);
            return way.posted();
        };
        for (const auto replies = passing(); const Reply &reply : replies)
            QCOMPARE(endOf(ask(reply)), endOf(reply, 3));
        for (const auto replies = unusable(); const Reply &reply : replies)
            QCOMPARE(endOf(ask(reply)), "no reply, attempts: 3"_ba);
        QCOMPARE(way.endpoint.requests().size(), 3 * (passing().size() + unusable().size()));
    }

    void what_does_not_pass_is_asked_once()
    {
        Way way;
        QList<Reply> replies{Reply::status(401, "no").with("WWW-Authenticate", "Basic realm=\"a\""),
                             Reply::status(307, "no").with("Location", "/v1/elsewhere"),
                             Reply::status(303, "no").with("Location", "https://api.openai.com/")};
        for (const int status : {201, 400, 401, 402, 403, 404, 405, 410, 413, 415, 422, 451, 501, 505, 599})
            replies << Reply::status(status, "no");
        for (const Reply &reply : std::as_const(replies)) {
            way.endpoint.queue(reply);
            QCOMPARE(endOf(way.posted("{}", "k-1")), endOf(reply, 1));
        }
        QCOMPARE(way.endpoint.requests().size(), replies.size());
        for (const Request &request : way.endpoint.requests())
            QCOMPARE(request.requestLine, "POST /v1/chat/completions HTTP/1.1"_ba);
    }

    void without_retries_each_request_goes_out_once()
    {
        Way way(quickly(0));
        way.endpoint.queue(Reply::json("{}").keptAlive());
        QCOMPARE(way.posted().status, 200);
        // On the connection that stayed open from before.
        way.endpoint.queue(Reply().ending(Reply::End::DroppedBeforeHead));
        QCOMPARE(way.posted().status, 0);
        QCOMPARE(way.posted().status, 200);
        QCOMPARE(way.endpoint.requests().size(), 3);
    }

    void a_packed_reply_is_unpacked()
    {
        Way way;
        // zlib's form, without the length that stands before it.
        way.endpoint.queue(Reply::json(qCompress("the reply"_ba).sliced(4)).with("Content-Encoding", "deflate"));
        QCOMPARE(way.posted().reply, "the reply"_ba);
    }

    void an_attempt_has_its_time_whatever_comes_of_it()
    {
        Way way(quickly(0), 3);
        way.route.timeout = std::chrono::seconds(1);
        way.endpoint.queue(Reply().ending(Reply::End::Silent));
        way.endpoint.queue(Reply::json("1234567890").ending(Reply::End::Incomplete));
        way.endpoint.queue(Reply::json(QByteArray(1000, 'x')).dripping(1, 100));
        for (int i = 0; i < 3; ++i)
            way.post();
        QVERIFY(way.waitFor(3));
        for (const Exchange &exchange : std::as_const(way.ended)) {
            QCOMPARE(exchange.status, 0);
            QCOMPARE(exchange.failure, u"no answer within 1 seconds"_s);
            QCOMPARE(exchange.reply, QByteArray());
        }
        QCOMPARE(way.endpoint.requests().size(), 3);
        QCOMPARE(way.endpoint.mostInFlight(), 3);
    }

    void a_chunk_without_a_size_ends_in_no_reply()
    {
        Way way(quickly(0));
        // Qt may wait for more of it though the connection is closed.
        way.route.timeout = std::chrono::seconds(1);
        way.endpoint.queue(Reply::garbage("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\nzz\r\n"));
        const Exchange exchange = way.posted();
        QCOMPARE(exchange.status, 0);
        QVERIFY(!exchange.failure.isEmpty());
    }

    void an_endpoint_may_be_late()
    {
        quint16 port = 0;
        {
            QTcpServer server;
            QVERIFY(server.listen(QHostAddress::LocalHost));
            port = server.serverPort();
        }
        Way way;
        way.route.url.setPort(port);
        std::unique_ptr<ChatEndpoint> late;
        int failures = 0;
        connect(&way.out(), &bridge::Endpoint::retrying, &way.out(), [&] {
            QVERIFY(!way.out().hasAnswered());
            if (++failures < 3)
                return;
            late = std::make_unique<ChatEndpoint>(nullptr, port);
            late->takePlainRequests();
        });
        const Exchange exchange = way.posted();
        QCOMPARE(exchange.status, 200);
        QCOMPARE(exchange.attempts, 4);
        QCOMPARE(failures, 3);
        QVERIFY(way.out().hasAnswered());
    }

    void an_endpoint_that_is_not_there_never_answers()
    {
        Way way(quickly(1));
        way.route.url.setPort(1);
        const Exchange exchange = way.posted();
        QCOMPARE(exchange.status, 0);
        QCOMPARE(exchange.failure, u"Connection refused"_s);
        QCOMPARE(exchange.attempts, 2);
        QVERIFY(!way.out().hasAnswered());
    }

    void a_failure_is_an_answer()
    {
        Way way(quickly(0));
        way.endpoint.queue(Reply::status(500));
        way.posted();
        QVERIFY(way.out().hasAnswered());
    }

    void only_the_right_certificate_gets_the_key_data()
    {
        QTest::addColumn<Identity>("identity");
        QTest::addColumn<bool>("known");
        QTest::addColumn<bool>("taken");
        QTest::newRow("good") << Identity::Good << true << true;
        QTest::newRow("nobody knows it") << Identity::Good << false << false;
        QTest::newRow("wrong host") << Identity::WrongHost << true << false;
        QTest::newRow("expired") << Identity::Expired << true << false;
        QTest::newRow("unknown issuer") << Identity::UnknownIssuer << true << false;
    }
    void only_the_right_certificate_gets_the_key()
    {
        QFETCH(const Identity, identity);
        QFETCH(const bool, known);
        QFETCH(const bool, taken);
        Way way;
        const ByProxy proxy(way.endpoint);
        way.endpoint.setIdentity(identity);
        way.route.url = QUrl(u"https://api.openai.com/v1/chat/completions"_s);
        if (known)
            way.route.extraRoots = {standin::certificateFor(Identity::Good).certificate};
        const Exchange exchange = way.posted("{}", "k-1");
        QCOMPARE(exchange.status, taken ? 200 : 0);
        QCOMPARE(exchange.failure.contains("SSL"_L1), !taken);
        // A certificate does not get better.
        QCOMPARE(exchange.attempts, 1);
        QCOMPARE(way.endpoint.requests().size(), taken ? 1 : 0);
    }

    void neither_proxy_nor_trust_of_the_process_counts()
    {
        Way way(quickly(0));
        const ByProxy proxy(way.endpoint);
        way.route.url = QUrl(u"https://api.openai.com/v1/chat/completions"_s);
        way.out();
        ChatEndpoint other;
        const loopback::Detour detour(other.port(), standin::certificateFor(Identity::Good).certificate);
        QVERIFY(way.posted().failure.contains("SSL"_L1));
        QCOMPARE(other.connections(), 0);
        QCOMPARE(way.endpoint.connections(), 1);
    }

    void a_large_reply_arrives_whole()
    {
        Way way;
        QByteArray large(50'000'000, Qt::Uninitialized);
        for (qsizetype i = 0; i < large.size(); ++i)
            large[i] = char('a' + (i % 23));
        way.endpoint.queue(Reply::json(large));
        QVERIFY(way.posted().reply == large);
    }

    void so_many_are_under_way_at_a_time()
    {
        Way way({.retries = 0}, 3);
        answerAll(way.endpoint, Reply::json("{}").held());
        for (int i = 0; i < 5; ++i)
            way.post();
        QVERIFY(arrivedAll(way.endpoint, 3));
        QVERIFY(settled(way));
        QCOMPARE(arrivedAt(way.endpoint), 3);
        way.endpoint.release();
        QVERIFY(arrivedAll(way.endpoint, 5));
        way.endpoint.release();
        QVERIFY(way.waitFor(5));
    }

    void too_many_at_a_time_become_half_as_many()
    {
        Way way(quickly(), 4);
        answerAll(way.endpoint, Reply::json("{}").held());
        for (int i = 0; i < 4; ++i)
            way.endpoint.queue(Reply::status(429).held());
        for (int i = 0; i < 8; ++i)
            way.post(QByteArray::number(i));
        QVERIFY(arrivedAll(way.endpoint, 4));
        way.endpoint.release();
        QVERIFY(arrivedAll(way.endpoint, 6));
        QVERIFY(settled(way));
        QCOMPARE(arrivedAt(way.endpoint), 6);

        way.endpoint.answerWith([](const Request &) { return Reply::json("{}"); });
        way.endpoint.release();
        QVERIFY(way.waitFor(8));
        QCOMPARE(arrivedAt(way.endpoint), 12);
        for (const Exchange &exchange : std::as_const(way.ended))
            QCOMPARE(exchange.status, 200);
    }

    void one_that_is_told_to_wait_holds_back_all_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<bool>("holdsBack");
        QTest::newRow("too many") << Reply::status(429).with("Retry-After", "1000") << true;
        QTest::newRow("overloaded, with a time") << Reply::status(503).with("Retry-After", "1000") << true;
        QTest::newRow("overloaded") << Reply::status(503) << false;
        QTest::newRow("failed, with a time") << Reply::status(500).with("Retry-After", "1000") << false;
    }
    void one_that_is_told_to_wait_holds_back_all()
    {
        QFETCH(const Reply, reply);
        QFETCH(const bool, holdsBack);
        using std::chrono::hours;
        Way way({.retries = 1, .first = hours(1), .longest = hours(1), .longestAsked = hours(1)}, 2);
        answerAll(way.endpoint, Reply::json("{}"));
        way.endpoint.queue(reply);
        QSignalSpy retrying(&way.out(), &bridge::Endpoint::retrying);
        way.post("first");
        QVERIFY(retrying.wait());
        way.post("second");
        QVERIFY(holdsBack ? settled(way) : arrivedAll(way.endpoint, 2));
        QCOMPARE(arrivedAt(way.endpoint), holdsBack ? 1 : 2);
    }

    void who_objects_is_asked_before_each_attempt()
    {
        Way way;
        int leave = 2;
        way.out().setObjection([&leave] { return leave-- > 0 ? QString() : u"that will do"_s; });
        way.endpoint.answerWith([](const Request &) { return Reply::status(500); });
        Exchange exchange = way.posted();
        QCOMPARE(exchange.attempts, 2);
        QCOMPARE(exchange.status, 0);
        QCOMPARE(exchange.failure, u"that will do"_s);
        exchange = way.posted();
        QCOMPARE(exchange.attempts, 0);
        QCOMPARE(exchange.failure, u"that will do"_s);
        QCOMPARE(way.endpoint.requests().size(), 2);
    }

    void giving_up_ends_what_waits_and_leaves_what_is_under_way()
    {
        using std::chrono::hours;
        Way way({.retries = 9, .first = hours(1), .longest = hours(1)}, 2);
        way.endpoint.queue(Reply::status(500));
        way.endpoint.queue(Reply::json("{}").held());
        QSignalSpy retrying(&way.out(), &bridge::Endpoint::retrying);
        way.post("waits");
        QVERIFY(retrying.wait());
        way.post("under way");
        way.post("under way too");
        way.post("waits for its turn");
        QVERIFY(arrivedAll(way.endpoint, 3));
        way.out().setObjection([] { return u"enough"_s; });
        way.out().giveUpWaiting();
        QVERIFY(way.waitFor(3));
        way.endpoint.release();
        QVERIFY(way.waitFor(4));
        QStringList ends;
        for (const Exchange &exchange : std::as_const(way.ended))
            ends << QString::fromUtf8(exchange.sent) + u": "_s +
                        (exchange.status == 200 ? u"answered"_s : exchange.failure);
        ends.sort();
        QCOMPARE(ends, (QStringList{u"under way too: answered"_s, u"under way: answered"_s,
                                    u"waits for its turn: enough"_s, u"waits: enough"_s}));
    }

    void after_giving_up_a_failure_is_the_end()
    {
        using std::chrono::hours;
        Way way({.retries = 9, .first = hours(1), .longest = hours(1)});
        way.endpoint.queue(Reply::status(503, "the last word").held());
        way.post();
        QVERIFY(arrivedAll(way.endpoint, 1));
        way.out().setObjection([] { return u"enough"_s; });
        way.out().giveUpWaiting();
        way.endpoint.release();
        QVERIFY(way.waitFor(1));
        QCOMPARE(way.ended.constFirst().status, 503);
        QCOMPARE(way.ended.constFirst().reply, "the last word"_ba);
    }

    void many_that_fail_all_come_to_their_end()
    {
        const int rounds = qEnvironmentVariableIsSet("ORRINET_LONG") ? 300 : 2;
        Way way(quickly(5), 8);
        way.endpoint.answerWith([](const Request &) { return Reply::status(500); });
        for (int round = 1; round <= rounds; ++round) {
            for (int i = 0; i < 10; ++i)
                way.post();
            QVERIFY(way.waitFor(10 * round));
        }
        QCOMPARE(way.endpoint.requests().size(), 60 * rounds);
    }
};

ORRINET_TEST(TestEndpoint)
#include "tst_endpoint.moc"
