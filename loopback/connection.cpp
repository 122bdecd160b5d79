#include "loopback/connection.h"

#include <QSslSocket>

#include <openssl/crypto.h>

namespace loopback {

namespace {

/// More than a CONNECT ever takes: a stranger is not to fill the memory.
constexpr qsizetype longestConnect = 16 * 1024;

} // namespace

Connection::Connection(qintptr descriptor, const Certificate &own, const Gate &entrance, QObject *parent)
    : QObject(parent)
    , socket(new QSslSocket(this))
    , certificate(own)
    , gate(entrance)
{
    connect(socket, &QSslSocket::readyRead, this, &Connection::read);
    // Not bytesWritten: between that and the socket's buffer the bytes are inside OpenSSL, where nothing counts them.
    connect(socket, &QSslSocket::encryptedBytesWritten, this, &Connection::settle);
    // In the clear there is no other.
    connect(socket, &QSslSocket::bytesWritten, this, [this] {
        if (socket->mode() == QSslSocket::UnencryptedMode)
            settle();
    });
    connect(socket, &QSslSocket::disconnected, this, [this] {
        Q_EMIT closed();
        deleteLater();
    });
    socket->setSocketDescriptor(descriptor);
}

bool Connection::isOpen() const
{
    return socket->state() == QAbstractSocket::ConnectedState;
}

void Connection::read()
{
    parser.feed(socket->readAll());
    if (phase == Phase::Reading)
        readRequest();
}

void Connection::readRequest()
{
    std::optional<Request> request = parser.next();
    if (!request) {
        if (parser.failed() || (target.isEmpty() && !gate.plain && parser.waiting() > longestConnect))
            refuse("400 Bad Request");
        return;
    }
    if (target.isEmpty() && !(gate.plain && request->method != "CONNECT")) {
        openTunnel(*request);
        return;
    }
    phase = Phase::Answering;
    request->connectTarget = target;
    Q_EMIT requestRead(*request);
}

bool Connection::mayEnter(const Request &request) const
{
    if (gate.credentials.isEmpty())
        return true;
    const QByteArray wanted = "Basic " + gate.credentials.toBase64();
    const QByteArray shown = request.header("Proxy-Authorization");
    // In a time that tells nothing of where the first difference is.
    return shown.size() == wanted.size() &&
           CRYPTO_memcmp(shown.constData(), wanted.constData(), size_t(wanted.size())) == 0;
}

void Connection::refuse(const QByteArray &statusLine, const QByteArray &headers)
{
    socket->write("HTTP/1.1 " + statusLine + "\r\n" + headers + "Content-Length: 0\r\nConnection: close\r\n\r\n");
    socket->disconnectFromHost();
}

void Connection::openTunnel(const Request &request)
{
    if (!mayEnter(request)) {
        // A client shows its credentials only when it is asked for them: once.
        if (++refusals > 1)
            refuse("407 Proxy Authentication Required");
        else
            socket->write("HTTP/1.1 407 Proxy Authentication Required\r\n"
                          "Proxy-Authenticate: Basic realm=\"orrinet\"\r\nContent-Length: 0\r\n\r\n");
        return;
    }
    if (request.method != "CONNECT") {
        refuse("405 Method Not Allowed");
        return;
    }
    if (!gate.target.isEmpty() && request.target != gate.target) {
        refuse("403 Forbidden");
        return;
    }
    target = QString::fromLatin1(request.target);
    socket->write("HTTP/1.1 200 Connection Established\r\n\r\n");
    socket->setLocalCertificate(certificate.certificate);
    socket->setPrivateKey(certificate.key);
    socket->startServerEncryption();
}

void Connection::write(const QByteArray &bytes)
{
    if (isOpen())
        socket->write(bytes);
}

void Connection::finish(bool closing)
{
    if (!isOpen())
        return;
    closesAfterwards = closing;
    phase = Phase::AllHanded;
    settle();
}

void Connection::settle()
{
    if (phase != Phase::AllHanded || socket->bytesToWrite() > 0 || socket->encryptedBytesToWrite() > 0)
        return;
    phase = Phase::Reading;
    Q_EMIT answered();
    if (closesAfterwards)
        socket->disconnectFromHost();
    else
        readRequest();
}

} // namespace loopback
