// Who gets in where the endpoint of the tunnel asks for credentials, and what the others learn.

#include "loopback/certificate.h"
#include "loopback/connection.h"
#include "loopback/listener.h"
#include "tests/support/testcase.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QPointer>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QTest>

using namespace Qt::StringLiterals;
using loopback::Connection;

namespace {

/// A listener that lets in who knows the words, and records what they ask for there.
class Guarded : public QObject
{
    Q_OBJECT

public:
    Guarded()
    {
        connect(&listener, &loopback::Listener::connectionArrived, this, &Guarded::accept);
        if (!listener.listen(QHostAddress::LocalHost))
            qFatal("no port");
    }

    quint16 port() const { return listener.serverPort(); }
    QSslCertificate certificate() const { return identity.certificate; }
    const QList<loopback::Request> &requests() const { return read; }
    int open() const { return opened - closed; }

    loopback::Gate gate{.credentials = "user:secret", .target = "inside.example:443"};

private:
    void accept(qintptr descriptor)
    {
        ++opened;
        auto *connection = new Connection(descriptor, identity, gate, this);
        connect(connection, &Connection::closed, this, [this] { ++closed; });
        connect(connection, &Connection::requestRead, this, [this, connection](const loopback::Request &request) {
            read << request;
            connection->write("HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(request.body.size()) +
                              "\r\n\r\n" + request.body);
            connection->finish(request.header("Connection") == "close");
        });
    }

    loopback::Listener listener;
    loopback::Certificate identity = loopback::Issued("inside.example").certificate();
    QList<loopback::Request> read;
    int opened = 0;
    int closed = 0;
};

QByteArray opening(const QByteArray &credentials, const QByteArray &target = "inside.example:443",
                   const QByteArray &method = "CONNECT")
{
    const QByteArray shown =
        credentials.isNull() ? QByteArray() : "Proxy-Authorization: Basic " + credentials.toBase64() + "\r\n";
    return method + ' ' + target + " HTTP/1.1\r\n" + shown + "\r\n";
}

/// A client that says what it likes.
class Visitor
{
public:
    explicit Visitor(const Guarded &guarded)
    {
        socket.setProxy(QNetworkProxy::NoProxy);
        socket.connectToHost(QHostAddress(QHostAddress::LocalHost), guarded.port());
    }

    void say(const QByteArray &bytes) { socket.write(bytes); }
    /// Everything up to the end of a head.
    QByteArray heard()
    {
        QByteArray head;
        while (!head.endsWith("\r\n\r\n")) {
            if (socket.bytesAvailable() == 0 && !QSignalSpy(&socket, &QSslSocket::readyRead).wait())
                return "nothing came"_ba;
            head += socket.read(1);
        }
        return head;
    }
    QByteArray heardOf(const QByteArray &bytes)
    {
        say(bytes);
        return heard();
    }
    /// What comes until the connection is closed.
    QByteArray heardToTheEnd()
    {
        if (socket.state() != QAbstractSocket::UnconnectedState &&
            !QSignalSpy(&socket, &QSslSocket::disconnected).wait())
            return "it stays open"_ba;
        return socket.readAll();
    }
    bool encrypt(const Guarded &guarded)
    {
        QSslConfiguration configuration = socket.sslConfiguration();
        configuration.setCaCertificates({guarded.certificate()});
        socket.setSslConfiguration(configuration);
        socket.setPeerVerifyName(u"inside.example"_s);
        socket.startClientEncryption();
        return QSignalSpy(&socket, &QSslSocket::encrypted).wait();
    }

    QSslSocket socket;
};

const QByteArray opened = "HTTP/1.1 200 Connection Established\r\n\r\n";
const QByteArray askedOnce = "HTTP/1.1 407 Proxy Authentication Required\r\n"
                             "Proxy-Authenticate: Basic realm=\"orrinet\"\r\nContent-Length: 0\r\n\r\n";

QByteArray refusedWith(const QByteArray &status)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
}

} // namespace

class TestGate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void who_knows_the_words_gets_in()
    {
        Guarded guarded;
        Visitor visitor(guarded);
        QCOMPARE(visitor.heardOf(opening("user:secret")), opened);
        QVERIFY(visitor.encrypt(guarded));
        visitor.say("POST /a HTTP/1.1\r\nContent-Length: 3\r\n\r\none"
                    "POST /b HTTP/1.1\r\nContent-Length: 3\r\nConnection: close\r\n\r\ntwo");
        const QByteArray heard = visitor.heardToTheEnd();
        QVERIFY2(heard.contains("\r\n\r\none") && heard.endsWith("\r\n\r\ntwo"), heard.constData());
        QCOMPARE(guarded.requests().size(), 2);
        QCOMPARE(guarded.requests().constFirst().connectTarget, u"inside.example:443"_s);
    }

    void who_shows_nothing_is_asked_once_and_may_show_it_then()
    {
        Guarded guarded;
        Visitor visitor(guarded);
        QCOMPARE(visitor.heardOf(opening({})), askedOnce);
        QCOMPARE(visitor.heardOf(opening("user:secret")), opened);
    }

    void others_are_asked_once_and_then_turned_away_data()
    {
        QTest::addColumn<QByteArray>("first");
        QTest::addColumn<QByteArray>("second");
        QTest::newRow("nothing") << opening({}) << opening({});
        QTest::newRow("nothing, then wrong") << opening({}) << opening("user:wrong!");
        QTest::newRow("wrong") << opening("user:wrong!") << opening("user:wrong!");
        QTest::newRow("a beginning of it") << opening("user:secre") << opening("user:");
        QTest::newRow("more than it") << opening("user:secrets") << opening("user:secret ");
        QTest::newRow("another user") << opening("usef:secret") << opening("USER:secret");
        QTest::newRow("empty") << opening("") << opening("");
        QTest::newRow("another scheme") << opening({}).chopped(2) + "Proxy-Authorization: Bearer secret\r\n\r\n"
                                        << opening({}).chopped(2) +
                                               "Proxy-Authorization: " + "user:secret"_ba.toBase64() + "\r\n\r\n";
        QTest::newRow("in a header of the endpoint's")
            << opening({}).chopped(2) + "Authorization: Basic " + "user:secret"_ba.toBase64() + "\r\n\r\n"
            << opening({}).chopped(2) + "Authorization: Basic " + "user:secret"_ba.toBase64() + "\r\n\r\n";
        QTest::newRow("a wrong target too") << opening({}, "elsewhere.example:1") << opening("a:b", "[::1]:22");
        QTest::newRow("no tunnel") << opening({}, "http://inside.example/", "GET") << opening({}, "/", "POST");
    }
    void others_are_asked_once_and_then_turned_away()
    {
        QFETCH(const QByteArray, first);
        QFETCH(const QByteArray, second);
        Guarded guarded;
        Visitor visitor(guarded);
        QCOMPARE(visitor.heardOf(first), askedOnce);
        visitor.say(second);
        QCOMPARE(visitor.heardToTheEnd(), refusedWith("407 Proxy Authentication Required"));
        QVERIFY(guarded.requests().isEmpty());
    }

    void who_is_in_gets_nowhere_else_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("status");
        QTest::newRow("another host") << opening("user:secret", "elsewhere.example:443") << "403 Forbidden"_ba;
        QTest::newRow("another port") << opening("user:secret", "inside.example:22") << "403 Forbidden"_ba;
        QTest::newRow("in the clear") << opening("user:secret", "http://inside.example/", "POST")
                                      << "405 Method Not Allowed"_ba;
    }
    void who_is_in_gets_nowhere_else()
    {
        QFETCH(const QByteArray, bytes);
        QFETCH(const QByteArray, status);
        Guarded guarded;
        Visitor visitor(guarded);
        visitor.say(bytes);
        QCOMPARE(visitor.heardToTheEnd(), refusedWith(status));
        QVERIFY(guarded.requests().isEmpty());
    }

    void what_is_no_http_is_turned_away_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("a word") << "hello\r\n"_ba;
        QTest::newRow("a line without a version") << "GET /\n\r\n"_ba;
        QTest::newRow("TLS at once") << QByteArray::fromHex("16030100c8010000c40303");
        QTest::newRow("a head without end")
            << "CONNECT inside.example:443 HTTP/1.1\r\nA: " + QByteArray(17 * 1024, 'a');
        QTest::newRow("a body without end")
            << "POST / HTTP/1.1\r\nContent-Length: 1000000000\r\n\r\n" + QByteArray(17 * 1024, 'a');
    }
    void what_is_no_http_is_turned_away()
    {
        QFETCH(const QByteArray, bytes);
        Guarded guarded;
        Visitor visitor(guarded);
        visitor.say(bytes);
        QCOMPARE(visitor.heardToTheEnd(), refusedWith("400 Bad Request"));
        QVERIFY(guarded.requests().isEmpty());
    }

    void what_comes_through_a_tunnel_may_be_long()
    {
        Guarded guarded;
        Visitor visitor(guarded);
        QCOMPARE(visitor.heardOf(opening("user:secret")), opened);
        QVERIFY(visitor.encrypt(guarded));
        const QByteArray body(200'000, 'b');
        visitor.say("POST / HTTP/1.1\r\nConnection: close\r\nContent-Length: " + QByteArray::number(body.size()) +
                    "\r\n\r\n" + body);
        QVERIFY(visitor.heardToTheEnd().endsWith(QByteArray("\r\n\r\n" + body)));
    }

    void no_http_in_a_tunnel_closes_it()
    {
        Guarded guarded;
        Visitor visitor(guarded);
        QCOMPARE(visitor.heardOf(opening("user:secret")), opened);
        QVERIFY(visitor.encrypt(guarded));
        visitor.say("hello\r\n");
        QCOMPARE(visitor.heardToTheEnd(), refusedWith("400 Bad Request"));
        QCOMPARE(guarded.open(), 0);
    }

    void a_gate_without_words_lets_everybody_in()
    {
        Guarded guarded;
        guarded.gate = {};
        Visitor visitor(guarded);
        QCOMPARE(visitor.heardOf(opening({}, "elsewhere.example:1")), opened);
    }

    void a_gate_for_plain_requests_takes_them_with_and_without_a_tunnel()
    {
        Guarded guarded;
        guarded.gate = {.credentials = {}, .target = {}, .plain = true};
        Visitor plain(guarded);
        plain.say("POST /plain HTTP/1.1\r\nConnection: close\r\n\r\n");
        QVERIFY(plain.heardToTheEnd().startsWith("HTTP/1.1 200 OK"));
        QCOMPARE(guarded.requests().constFirst().connectTarget, QString());
        Visitor tunnelled(guarded);
        QCOMPARE(tunnelled.heardOf(opening({})), opened);
        QVERIFY(tunnelled.encrypt(guarded));
    }
};

ORRINET_TEST(TestGate)
#include "tst_gate.moc"
