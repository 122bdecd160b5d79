// Who may use the bridge, and what it gives away: nobody else, and nothing.

#include "bridge/bridge.h"
#include "tests/bridge/bridgestage.h"
#include "tests/support/testcase.h"

#include <QDir>
#include <QDirIterator>
#include <QEventLoop>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTest>

#include <arpa/inet.h>
#include <csignal>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using standin::Reply;

namespace {

const QByteArray tunnel = "CONNECT api.openai.com:443 HTTP/1.1\r\nHost: api.openai.com:443\r\n";

/// The ports at which a process listens, by its sockets.
QList<quint16> portsOf(qint64 process)
{
    const QString folder = u"/proc/%1/"_s.arg(process);
    QStringList sockets;
    QDirIterator descriptors(folder + "fd"_L1, QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    while (descriptors.hasNext()) {
        std::array<char, 64> target{};
        const auto size = ::readlink(QFile::encodeName(descriptors.next()).constData(), target.data(), target.size());
        const QString text = QString::fromLatin1(target.data(), qMax<qsizetype>(size, 0));
        if (text.startsWith("socket:["_L1))
            sockets << text.sliced(8).chopped(1);
    }
    QList<quint16> ports;
    const QList<QByteArray> lines = readBytes(folder + "net/tcp"_L1).split('\n');
    for (const QByteArray &line : lines) {
        const QStringList fields = QString::fromLatin1(line).simplified().split(u' ');
        if (fields.size() > 9 && fields.at(3) == "0A"_L1 && sockets.contains(fields.at(9)))
            ports << quint16(fields.at(1).section(u':', 1).toUInt(nullptr, 16));
    }
    return ports;
}

/// All that a listener says to these bytes, said once and once more after its answer, until it closes the connection.
QByteArray answerTo(quint16 port, const QByteArray &bytes)
{
    QTcpSocket socket;
    QEventLoop loop;
    QByteArray answer;
    QObject::connect(&socket, &QTcpSocket::readyRead, &loop, [&] {
        if (answer.isEmpty())
            socket.write(bytes);
        answer += socket.readAll();
    });
    QObject::connect(&socket, &QTcpSocket::disconnected, &loop, &QEventLoop::quit);
    socket.connectToHost(u"127.0.0.1"_s, port);
    socket.write(bytes);
    loop.exec();
    return answer;
}

/// Says the bytes in the same way, as a process of its own that may do no more than a signal handler, and passes on
/// what it hears.
void speakAsStranger(quint16 port, const QByteArray &bytes, int output)
{
    // As root another user is played; who is not root is a stranger enough as it is.
    if (::getuid() == 0 && ::setuid(65534) != 0)
        return;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int handle = ::socket(AF_INET, SOCK_STREAM, 0);
    if (::connect(handle, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
        return;
    std::array<char, 256> buffer{};
    for (bool isFirst = true;; isFirst = false) {
        if (!isFirst)
            if (const auto size = ::read(handle, buffer.data(), buffer.size());
                size <= 0 || ::write(output, buffer.data(), size_t(size)) != size)
                return;
        if (::write(handle, bytes.constData(), size_t(bytes.size())) < 0)
            return;
    }
}

QByteArray answerToStranger(quint16 port, const QByteArray &bytes)
{
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        std::signal(SIGPIPE, SIG_IGN);
        speakAsStranger(port, bytes, ends[1]);
        ::_exit(0);
    }
    ::close(ends[1]);
    QFile reading;
    QByteArray answer;
    if (child > 0 && reading.open(ends[0], QIODevice::ReadOnly, QFile::AutoCloseHandle))
        answer = reading.readAll();
    ::waitpid(child, nullptr, 0);
    return answer;
}

QByteArray with(const QByteArray &user, const QByteArray &password)
{
    return "Proxy-Authorization: Basic " + QByteArray(user + ':' + password).toBase64() + "\r\n\r\n";
}

const QByteArray asksForIt = "HTTP/1.1 407 Proxy Authentication Required\r\n"
                             "Proxy-Authenticate: Basic realm=\"orrinet\"\r\nContent-Length: 0\r\n\r\n";
const QByteArray refusesIt = "HTTP/1.1 407 Proxy Authentication Required\r\nContent-Length: 0\r\n"
                             "Connection: close\r\n\r\n";

/// The texts of a process's own folder and of its home.
QByteArray allThatCanBeRead(const BridgeStage &stage, const QProcess *process)
{
    const QString folder = u"/proc/%1/"_s.arg(process->processId());
    QByteArray all = readBytes(folder + "cmdline"_L1) + '\n' + readBytes(folder + "environ"_L1);
    QDirIterator files(stage.path(u"."_s), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext())
        all += '\n' + readBytes(files.next());
    return all;
}

} // namespace

class TestBridgeAccess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_stranger_is_asked_for_the_secret_and_gets_nothing_more()
    {
        BridgeStage stage;
        stage.setKey(u"sk-of-the-user"_s);
        stage.endpoint.answerWith([](const standin::Request &) { return Reply::content(u"ok"_s).held(); });
        QProcess *process = stage.startProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 1), u"out.ormt"_s);
        QVERIFY(stage.arrived(process, 1));
        const QList<quint16> ports = portsOf(process->processId());
        QCOMPARE(ports.size(), 1);
        const QByteArray noTunnel =
            "POST http://api.openai.com/v1/chat/completions HTTP/1.1\r\nContent-Length: 0\r\n\r\n";
        for (const QByteArray &bytes : {QByteArray(tunnel + "\r\n"), QByteArray(tunnel + with("orrinet", {})),
                                        QByteArray(tunnel + with("orrinet", QByteArray(64, '0'))),
                                        QByteArray(tunnel + with("root", QByteArray(64, 'f'))), noTunnel,
                                        "CONNECT example.org:443 HTTP/1.1\r\n\r\n"_ba}) {
            QCOMPARE(answerTo(ports.first(), bytes), QByteArray(asksForIt + refusesIt));
            QCOMPARE(answerToStranger(ports.first(), bytes), QByteArray(asksForIt + refusesIt));
        }
        QCOMPARE(answerTo(ports.first(), "\x16\x03\x01 no proxy \r\n\r\n"),
                 "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"_ba);
        stage.endpoint.release();
        QCOMPARE(stage.waitForEnd(process).status, 0);
        QCOMPARE(stage.endpoint.requests().size(), 1);
    }

    void the_secret_stands_nowhere()
    {
        BridgeStage stage;
        stage.setKey(u"sk-of-the-user"_s);
        stage.endpoint.answerWith([](const standin::Request &) { return Reply::content(u"ok"_s).held(); });
        QProcess *process = stage.startProject(writeSurvey(stage.path(u"in.ormt"_s), 1, 1), u"out.ormt"_s,
                                               {u"--record"_s, u"record"_s});
        QVERIFY(stage.arrived(process, 1));
        // Of the form that it has: see the_secret_opens_a_tunnel_to_the_one_host_alone.
        static const QRegularExpression secret(u"[0-9a-f]{64}"_s);
        QVERIFY(!QString::fromLatin1(allThatCanBeRead(stage, process)).contains(secret));
        stage.endpoint.release();
        const auto ended = stage.waitForEnd(process);
        QVERIFY(!ended.errors.join(u'\n').contains(secret));
        QVERIFY(!QString::fromLatin1(allThatCanBeRead(stage, process)).contains(secret));
    }

    void the_secret_opens_a_tunnel_to_the_one_host_alone()
    {
        bridge::Route route;
        bridge::Endpoint endpoint(route);
        bridge::Bridge bridge({}, &endpoint);
        const bridge::Bridge other({}, &endpoint);
        QVERIFY(bridge.listen());
        static const QRegularExpression form(u"^[0-9a-f]{64}$"_s);
        QVERIFY(bridge.password().contains(form));
        QVERIFY(bridge.password() != other.password());
        const QByteArray right = with(bridge.user().toLatin1(), bridge.password().toLatin1());
        for (const QByteArray &elsewhere :
             {"example.org:443"_ba, "api.openai.com:80"_ba, "127.0.0.1:443"_ba, "api.openai.com.example.org:443"_ba}) {
            QCOMPARE(answerTo(bridge.port(), "CONNECT " + elsewhere + " HTTP/1.1\r\n" + right),
                     "HTTP/1.1 403 Forbidden\r\nContent-Length: 0\r\nConnection: close\r\n\r\n"_ba);
        }
        QTcpSocket socket;
        QEventLoop loop;
        connect(&socket, &QTcpSocket::readyRead, &loop, &QEventLoop::quit);
        socket.connectToHost(u"127.0.0.1"_s, bridge.port());
        socket.write(tunnel + right);
        loop.exec();
        QCOMPARE(socket.readAll(), "HTTP/1.1 200 Connection Established\r\n\r\n"_ba);
    }
};

ORRINET_TEST(TestBridgeAccess)
#include "tst_bridgeaccess.moc"
