#include "standin/chatendpoint.h"
#include "standin/detour.h"
#include "tests/standin/client.h"
#include "tests/support/patience.h"
#include "tests/support/testcase.h"

#include <QSslSocket>
#include <QTcpSocket>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Detour;
using standin::Identity;
using standin::Reply;
using standin::Request;

namespace {

void beBusy(qint64 nanoseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.nsecsElapsed() < nanoseconds) {
    }
}

void openTunnel(QSslSocket &socket, const ChatEndpoint &endpoint)
{
    socket.setProxy(QNetworkProxy::NoProxy);
    socket.connectToHost(u"127.0.0.1"_s, endpoint.port());
    socket.write("CONNECT api.openai.com:443 HTTP/1.1\r\n\r\n");
    QVERIFY(QSignalSpy(&socket, &QSslSocket::readyRead).wait(patience));
    QVERIFY(socket.readAll().startsWith("HTTP/1.1 200 "));
}

bool encrypts(QSslSocket &socket)
{
    socket.setPeerVerifyName(u"api.openai.com"_s);
    socket.startClientEncryption();
    return QSignalSpy(&socket, &QSslSocket::encrypted).wait(patience);
}

} // namespace

class TestChatEndpoint : public QObject
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

    void an_unscripted_request_is_answered_ok()
    {
        QSignalSpy replied(endpoint.get(), &ChatEndpoint::replied);
        Client client;
        QNetworkReply *reply = client.posted();
        QCOMPARE(reply->error(), QNetworkReply::NoError);
        QCOMPARE(contentOf(reply->readAll()), u"ok"_s);
        QCOMPARE(replied, (QList<QVariantList>{{0}}));
    }

    void a_request_is_recorded_as_sent()
    {
        const QByteArray body = "{\"text\": \"dry \xE2\x82\xAC\\u0000\"}\r\n\r\n"_ba;
        Client client;
        client.posted(body);
        QCOMPARE(endpoint->requests().size(), 1);
        const Request request = endpoint->requests().constFirst();
        QCOMPARE(request.requestLine, "POST /v1/chat/completions HTTP/1.1"_ba);
        QCOMPARE(request.body, body);
        QCOMPARE(request.connectTarget, u"api.openai.com:443"_s);
        QCOMPARE(request.header("host"), "api.openai.com"_ba);
        QCOMPARE(request.header("AUTHORIZATION"), "Bearer none"_ba);
        QCOMPARE(request.header("Content-Length"), QByteArray::number(body.size()));
        QVERIFY(request.header("No-Such-Header").isNull());
        QVERIFY(request.head.startsWith("POST /v1/chat/completions HTTP/1.1\r\n"));
        QVERIFY(request.head.endsWith("\r\n\r\n"));
        QVERIFY(request.head.contains(": Bearer none\r\n"));
        QCOMPARE(request.headers.size(), request.head.count("\r\n") - 2);
    }

    void scripted_replies_come_first_and_in_order()
    {
        endpoint->queue(Reply::content(u"one"_s));
        endpoint->queue(Reply::content(u"two"_s));
        endpoint->answerWith([](const Request &) { return Reply::content(u"after"_s); });
        QStringList contents;
        for (int i = 0; i < 4; ++i)
            contents << contentOf(Client().posted()->readAll());
        QCOMPARE(contents, (QStringList{u"one"_s, u"two"_s, u"after"_s, u"after"_s}));
    }

    void a_slot_may_still_script_the_answer()
    {
        connect(endpoint.get(), &ChatEndpoint::requestArrived, endpoint.get(),
                [this](int index) { endpoint->queue(Reply::json(endpoint->requests().at(index).body)); });
        Client client;
        QCOMPARE(client.posted("first"_ba)->readAll(), "first"_ba);
        QCOMPARE(client.posted("second"_ba)->readAll(), "second"_ba);
    }

    void the_callback_sees_the_request()
    {
        endpoint->answerWith(
            [](const Request &request) { return Reply::content(request.json().value("say"_L1).toString()); });
        Client client;
        QCOMPARE(contentOf(client.posted("{\"say\": \"hello\"}"_ba)->readAll()), u"hello"_s);
    }

    void only_the_good_identity_is_trusted_data()
    {
        QTest::addColumn<Identity>("identity");
        QTest::addColumn<QList<QSslError::SslError>>("errors");
        using Errors = QList<QSslError::SslError>;
        QTest::newRow("good") << Identity::Good << Errors{};
        QTest::newRow("wrong host") << Identity::WrongHost << Errors{QSslError::HostNameMismatch};
        QTest::newRow("expired") << Identity::Expired << Errors{QSslError::CertificateExpired};
        QTest::newRow("unknown issuer") << Identity::UnknownIssuer << Errors{QSslError::SelfSignedCertificate};
    }

    void only_the_good_identity_is_trusted()
    {
        QFETCH(const Identity, identity);
        QFETCH(const QList<QSslError::SslError>, errors);
        endpoint->setIdentity(identity);
        Client client;
        QNetworkReply *reply = client.post();
        QList<QSslError::SslError> met;
        const QObject scope;
        connect(reply, &QNetworkReply::sslErrors, &scope, [&met](const QList<QSslError> &reported) {
            for (const QSslError &error : reported)
                met << error.error();
        });
        QVERIFY(QSignalSpy(reply, &QNetworkReply::finished).wait(patience));
        QCOMPARE(met, errors);
        QCOMPARE(reply->error(), errors.isEmpty() ? QNetworkReply::NoError : QNetworkReply::SslHandshakeFailedError);
        QCOMPARE(endpoint->requests().size(), errors.isEmpty() ? 1 : 0);
    }

    void connections_close_unless_kept_alive_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<int>("connections");
        QTest::newRow("closed") << Reply::json("{}"_ba) << 2;
        QTest::newRow("kept alive") << Reply::json("{}"_ba).keptAlive() << 1;
    }

    void connections_close_unless_kept_alive()
    {
        QFETCH(const Reply, reply);
        QFETCH(const int, connections);
        endpoint->answerWith([reply](const Request &) -> const Reply & { return reply; });
        Client client;
        client.posted();
        client.posted();
        QCOMPARE(endpoint->requests().size(), 2);
        QCOMPARE(endpoint->requests().constLast().connection, connections);
        QCOMPARE(endpoint->connections(), connections);

        Client().posted();
        QCOMPARE(endpoint->connections(), connections + 1);
    }

    void a_connection_answers_one_request_after_the_other()
    {
        endpoint->queue(Reply::json("1"_ba).keptAlive().held());
        QSslSocket socket;
        openTunnel(socket, *endpoint);
        QVERIFY(encrypts(socket));
        socket.write("POST /a HTTP/1.1\r\nContent-Length: 3\r\n\r\none");
        QVERIFY(QSignalSpy(endpoint.get(), &ChatEndpoint::requestArrived).wait(patience));
        socket.write("POST /b HTTP/1.1\r\nContent-Length: 3\r\n\r\ntwo");
        Client().posted();
        QCOMPARE(endpoint->inFlight(), 1);

        endpoint->release();
        QVERIFY(QSignalSpy(&socket, &QSslSocket::disconnected).wait(patience));
        QCOMPARE(socket.readAll().count("HTTP/1.1 200 OK"), 2);
        QCOMPARE(endpoint->requests().constFirst().body, "one"_ba);
        QCOMPARE(endpoint->requests().constLast().body, "two"_ba);
        QCOMPARE(endpoint->requests().constLast().requestLine, "POST /b HTTP/1.1"_ba);
        QCOMPARE(endpoint->requests().constLast().connection, 1);
    }

    void a_reply_counts_once_its_last_byte_is_written()
    {
        // Far more than the system takes in before the client reads.
        endpoint->queue(Reply::json(QByteArray(24'000'000, 'x')));
        QSslSocket socket;
        openTunnel(socket, *endpoint);
        QVERIFY(encrypts(socket));
        qint64 atClient = -1;
        const QObject scope;
        connect(endpoint.get(), &ChatEndpoint::replied, &scope, [&] { atClient = socket.bytesAvailable(); });
        socket.write("POST / HTTP/1.1\r\n\r\n");
        QVERIFY(QSignalSpy(&socket, &QSslSocket::disconnected).wait(patience));
        QCOMPARE_GT(atClient, 0);
        QCOMPARE_GT(socket.bytesAvailable(), 24'000'000);
    }

    void most_in_flight_counts_what_overlaps_data()
    {
        QTest::addColumn<bool>("parallel");
        QTest::addColumn<int>("most");
        QTest::newRow("one by one") << false << 1;
        QTest::newRow("at once") << true << 2;
    }

    void most_in_flight_counts_what_overlaps()
    {
        QFETCH(const bool, parallel);
        QFETCH(const int, most);
        if (parallel)
            endpoint->queue(Reply::content(u"first"_s).held());
        Client first;
        Client second;
        QNetworkReply *firstReply = first.post();
        QSignalSpy firstFinished(firstReply, &QNetworkReply::finished);
        QVERIFY(parallel ? QSignalSpy(endpoint.get(), &ChatEndpoint::requestArrived).wait(patience)
                         : firstFinished.wait(patience));
        second.posted();
        endpoint->release();
        QVERIFY(!firstFinished.isEmpty() || firstFinished.wait(patience));
        Client().posted();
        QCOMPARE(endpoint->mostInFlight(), most);
        QCOMPARE(endpoint->inFlight(), 0);
    }

    void anything_but_a_tunnel_is_refused_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("another method") << "GET http://api.openai.com/ HTTP/1.1"_ba << "HTTP/1.1 405 "_ba;
        QTest::newRow("half a line") << "CONNECT api.openai.com:443"_ba << "HTTP/1.1 400 "_ba;
    }

    void anything_but_a_tunnel_is_refused()
    {
        QFETCH(const QByteArray, line);
        QTcpSocket socket;
        socket.setProxy(QNetworkProxy::NoProxy);
        socket.connectToHost(u"127.0.0.1"_s, endpoint->port());
        socket.write(line + "\r\nHost: api.openai.com\r\n\r\n");
        QVERIFY(QSignalSpy(&socket, &QTcpSocket::disconnected).wait(patience));
        QFETCH(const QByteArray, answer);
        QVERIFY(socket.readAll().startsWith(answer));
        QVERIFY(endpoint->requests().isEmpty());
    }

    void the_detour_puts_settings_back_data()
    {
        QTest::addColumn<bool>("system");
        QTest::newRow("proxy of the system") << true;
        QTest::newRow("proxy of the application") << false;
    }

    void the_detour_puts_settings_back()
    {
        QFETCH(const bool, system);
        detour.reset();
        const QNetworkProxy own(QNetworkProxy::Socks5Proxy, u"proxy.example"_s, 1080);
        QNetworkProxy::setApplicationProxy(system ? QNetworkProxy(QNetworkProxy::DefaultProxy) : own);
        QNetworkProxyFactory::setUseSystemConfiguration(system);
        const QNetworkProxy proxy = QNetworkProxy::applicationProxy();
        const QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();

        detour = std::make_unique<Detour>(*endpoint);
        QCOMPARE(QNetworkProxy::applicationProxy().port(), endpoint->port());
        QVERIFY(!QNetworkProxyFactory::usesSystemConfiguration());
        QVERIFY(QSslConfiguration::defaultConfiguration() != configuration);

        detour.reset();
        QCOMPARE(QNetworkProxy::applicationProxy(), proxy);
        QCOMPARE(QNetworkProxyFactory::usesSystemConfiguration(), system);
        QVERIFY(QSslConfiguration::defaultConfiguration() == configuration);
        QNetworkProxyFactory::setUseSystemConfiguration(true);
    }

    void own_time_counts_answering()
    {
        static constexpr qint64 busy = 5'000'000;
        endpoint->answerWith([](const Request &) {
            beBusy(busy);
            return Reply();
        });
        Client client;
        client.posted();
        QCOMPARE_GE(endpoint->ownTime(), busy);
    }

    void own_time_counts_the_handshake()
    {
        QSslSocket socket;
        openTunnel(socket, *endpoint);
        const qint64 before = endpoint->ownTime();
        QVERIFY(encrypts(socket));
        QCOMPARE_GT(endpoint->ownTime(), before);
    }

    void own_time_leaves_out_its_listeners()
    {
        qint64 before = -1;
        qint64 after = -2;
        const QObject scope;
        connect(endpoint.get(), &ChatEndpoint::requestArrived, &scope, [&] {
            before = endpoint->ownTime();
            beBusy(1'000'000);
            after = endpoint->ownTime();
        });
        Client client;
        client.posted();
        QCOMPARE(after, before);
        QCOMPARE_GT(endpoint->ownTime(), after);
    }

    void an_endpoint_may_go_with_requests_open()
    {
        endpoint->queue(Reply().held());
        Client client;
        QNetworkReply *reply = client.post();
        QVERIFY(QSignalSpy(endpoint.get(), &ChatEndpoint::requestArrived).wait(patience));
        QSignalSpy finished(reply, &QNetworkReply::finished);
        endpoint.reset();
        QVERIFY(finished.wait(patience));
        QVERIFY(reply->error() != QNetworkReply::NoError);
    }

private:
    std::unique_ptr<ChatEndpoint> endpoint;
    std::unique_ptr<Detour> detour;
};

ORRINET_TEST(TestChatEndpoint)
#include "tst_chatendpoint.moc"
