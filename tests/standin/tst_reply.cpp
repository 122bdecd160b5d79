#include "standin/chatendpoint.h"
#include "standin/detour.h"
#include "tests/standin/client.h"
#include "tests/support/patience.h"
#include "tests/support/testcase.h"

#include <QTest>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Detour;
using standin::Reply;
using standin::Request;

class TestReply : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        endpoint = std::make_unique<ChatEndpoint>();
        detour = std::make_unique<Detour>(*endpoint);
    }

    void cleanup()
    {
        detour.reset();
        endpoint.reset();
    }

    void makers_put_their_text_where_a_client_reads_it()
    {
        endpoint->queue(Reply::content(u"a \"word\""_s));
        endpoint->queue(Reply::toolCall(u"{\"answer\":\"x\"}"_s));
        endpoint->queue(Reply::json("[1]"_ba));
        Client client;
        QCOMPARE(contentOf(client.posted()->readAll()), u"a \"word\""_s);
        const QJsonDocument call = QJsonDocument::fromJson(client.posted()->readAll());
        const QJsonValue message = call["choices"_L1][0]["message"_L1];
        QCOMPARE(message["tool_calls"_L1][0]["function"_L1]["arguments"_L1].toString(), u"{\"answer\":\"x\"}"_s);
        QVERIFY(message["content"_L1].isNull());
        QCOMPARE(client.posted()->readAll(), "[1]"_ba);
    }

    void headers_and_phrases_of_a_reply_reach_the_client()
    {
        Reply odd = Reply::status(418, "short"_ba).with("content-type"_ba, "text/plain"_ba).with("X-Odd"_ba, "yes"_ba);
        odd.reason = "I am odd"_ba;
        endpoint->queue(odd);
        Client client;
        const QNetworkReply *reply = client.posted();
        QCOMPARE(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 418);
        QCOMPARE(reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toByteArray(), "I am odd"_ba);
        QCOMPARE(reply->rawHeader("Content-Type"), "text/plain"_ba);
        QCOMPARE(reply->rawHeader("X-Odd"), "yes"_ba);
        QCOMPARE(reply->rawHeader("Content-Length"), "5"_ba);
        QCOMPARE(reply->rawHeader("Connection"), "close"_ba);
    }

    void endings_show_at_the_client_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QNetworkReply::NetworkError>("error");
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("received");
        const auto closed = QNetworkReply::RemoteHostClosedError;
        const Reply whole = Reply::json("1234567890"_ba);
        QTest::newRow("whole") << whole << QNetworkReply::NoError << 200 << "1234567890"_ba;
        QTest::newRow("no head") << whole.ending(Reply::End::DroppedBeforeHead) << closed << 0 << ""_ba;
        QTest::newRow("no body") << whole.ending(Reply::End::DroppedAfterHead) << closed << 200 << ""_ba;
        QTest::newRow("half a body") << whole.ending(Reply::End::Truncated) << closed << 200 << "12345"_ba;
        QTest::newRow("unauthorised") << Reply::status(401) << QNetworkReply::AuthenticationRequiredError << 401
                                      << ""_ba;
        QTest::newRow("too many") << Reply::status(429) << QNetworkReply::UnknownContentError << 429 << ""_ba;
        QTest::newRow("broken") << Reply::status(500, "why"_ba) << QNetworkReply::InternalServerError << 500
                                << "why"_ba;
        QTest::newRow("garbage") << Reply::garbage("SSH-2.0-no web server\r\n"_ba) << closed << 0 << ""_ba;
        const QByteArray raw = "HTTP/1.1 201 Made\r\nContent-Length: 2\r\n\r\nhi"_ba;
        QTest::newRow("raw") << Reply::garbage(raw) << QNetworkReply::NoError << 201 << "hi"_ba;
    }

    void endings_show_at_the_client()
    {
        QFETCH(const Reply, reply);
        QFETCH(const QNetworkReply::NetworkError, error);
        QFETCH(const int, status);
        QFETCH(const QByteArray, received);
        endpoint->answerWith([reply](const Request &) -> const Reply & { return reply; });
        Client client;
        QNetworkReply *answer = client.posted();
        QCOMPARE(answer->error(), error);
        QCOMPARE(answer->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), status);
        QCOMPARE(answer->readAll(), received);
        QCOMPARE(endpoint->inFlight(), 0);
    }

    void a_reply_closes_its_connection_unless_it_stalls_or_is_kept_alive()
    {
        for (const auto end : {Reply::End::Silent, Reply::End::Incomplete})
            QVERIFY(!Reply().ending(end).closes());
        for (const auto end : {Reply::End::Whole, Reply::End::Truncated, Reply::End::Raw})
            QVERIFY(Reply().ending(end).closes());
        QVERIFY(!Reply().keptAlive().closes());
        QVERIFY(Reply().keptAlive().ending(Reply::End::Truncated).closes());
    }

    /// By Qt up to some version; the client of a later one has to do so itself.
    void a_drop_without_a_byte_may_be_tried_again()
    {
        endpoint->queue(Reply().ending(Reply::End::DroppedBeforeHead));
        endpoint->queue(Reply::content(u"second try"_s));
        Client client;
        QNetworkReply *reply = client.posted("body"_ba);
        if (endpoint->requests().size() == 1) {
            QCOMPARE(reply->error(), QNetworkReply::RemoteHostClosedError);
            reply = client.posted("body"_ba);
        }
        QCOMPARE(contentOf(reply->readAll()), u"second try"_s);
        QCOMPARE(endpoint->requests().size(), 2);
        QCOMPARE(endpoint->requests().at(1).body, "body"_ba);
        QCOMPARE(endpoint->requests().at(1).connection, 2);
    }

    void a_silent_request_stays_open_until_the_client_gives_up()
    {
        endpoint->queue(Reply().ending(Reply::End::Silent));
        Client silenced;
        QNetworkReply *waiting = silenced.post();
        QVERIFY(QSignalSpy(endpoint.get(), &ChatEndpoint::requestArrived).wait(patience));
        Client().posted();
        QVERIFY(!waiting->isFinished());
        QCOMPARE(endpoint->inFlight(), 1);

        QSignalSpy closed(endpoint.get(), &ChatEndpoint::connectionClosed);
        waiting->abort();
        while (!closed.contains(QVariantList{1}))
            QVERIFY(closed.wait(patience));
        QCOMPARE(endpoint->inFlight(), 0);
    }

    void an_incomplete_reply_shows_its_beginning_and_stays_open()
    {
        endpoint->queue(Reply::json("1234567890"_ba).ending(Reply::End::Incomplete));
        Client client;
        QNetworkReply *reply = client.post();
        QVERIFY(QSignalSpy(reply, &QNetworkReply::readyRead).wait(patience));
        Client().posted();
        QCOMPARE(reply->readAll(), "12345"_ba);
        QVERIFY(!reply->isFinished());
        QCOMPARE(endpoint->inFlight(), 1);
    }

    void a_dripping_reply_arrives_in_pieces()
    {
        const QByteArray body(200, 'x');
        endpoint->queue(Reply::json(body).dripping(1, 1));
        QSignalSpy replied(endpoint.get(), &ChatEndpoint::replied);
        Client client;
        QNetworkReply *reply = client.post();
        QVERIFY(QSignalSpy(reply, &QNetworkReply::readyRead).wait(patience));
        QVERIFY(replied.isEmpty());
        QCOMPARE_LT(reply->bytesAvailable(), body.size());
        QVERIFY(QSignalSpy(reply, &QNetworkReply::finished).wait(patience));
        QCOMPARE(reply->readAll(), body);
    }

    void a_delayed_reply_waits_its_time_and_comes()
    {
        endpoint->queue(Reply::json("late"_ba).delayed(40));
        QSignalSpy replied(endpoint.get(), &ChatEndpoint::replied);
        // Timers of one thread fire in the order in which they fall due, however busy the machine is.
        QTimer earlier;
        earlier.setSingleShot(true);
        earlier.setTimerType(Qt::PreciseTimer);
        connect(endpoint.get(), &ChatEndpoint::requestArrived, &earlier, [&] { earlier.start(20); });
        qsizetype repliesBefore = -1;
        connect(&earlier, &QTimer::timeout, &earlier, [&] { repliesBefore = replied.size(); });
        Client client;
        QCOMPARE(client.posted()->readAll(), "late"_ba);
        QCOMPARE(repliesBefore, 0);
        QCOMPARE(replied.size(), 1);
    }

    void held_replies_go_when_released()
    {
        endpoint->queue(Reply::content(u"held"_s).held());
        Client client;
        QNetworkReply *reply = client.post();
        QVERIFY(QSignalSpy(endpoint.get(), &ChatEndpoint::requestArrived).wait(patience));
        Client().posted();
        QVERIFY(!reply->isFinished());

        endpoint->release();
        QVERIFY(QSignalSpy(reply, &QNetworkReply::finished).wait(patience));
        QCOMPARE(contentOf(reply->readAll()), u"held"_s);
    }

    void a_held_reply_outlives_its_client_data()
    {
        QTest::addColumn<bool>("atOnce");
        QTest::newRow("released as the connection closes") << true;
        QTest::newRow("released when the connection is forgotten") << false;
    }

    void a_held_reply_outlives_its_client()
    {
        QFETCH(const bool, atOnce);
        endpoint->queue(Reply().ending(Reply::End::DroppedBeforeHead).held());
        if (atOnce)
            connect(endpoint.get(), &ChatEndpoint::connectionClosed, endpoint.get(), &ChatEndpoint::release);
        QSignalSpy closed(endpoint.get(), &ChatEndpoint::connectionClosed);
        QSignalSpy replied(endpoint.get(), &ChatEndpoint::replied);
        {
            Client client;
            client.post();
            QVERIFY(QSignalSpy(endpoint.get(), &ChatEndpoint::requestArrived).wait(patience));
        }
        QVERIFY(closed.wait(patience));
        Client().posted();
        endpoint->release();
        QCOMPARE(Client().posted()->error(), QNetworkReply::NoError);
        QCOMPARE(replied, (QList<QVariantList>{{1}, {2}}));
    }

    void a_large_exchange_arrives_whole()
    {
        QByteArray large(8'000'000, Qt::Uninitialized);
        for (qsizetype i = 0; i < large.size(); ++i)
            large[i] = char('a' + (i % 23));
        endpoint->queue(Reply::json(large));
        Client client;
        QNetworkReply *reply = client.post(large);
        QVERIFY(QSignalSpy(reply, &QNetworkReply::finished).wait(patience));
        QVERIFY(reply->readAll() == large);
        QVERIFY(endpoint->requests().constFirst().body == large);
    }

private:
    std::unique_ptr<ChatEndpoint> endpoint;
    std::unique_ptr<Detour> detour;
};

ORRINET_TEST(TestReply)
#include "tst_reply.moc"
