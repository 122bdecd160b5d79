#include "standin/connection.h"

#include <QSslSocket>
#include <QTimer>

namespace standin {

Connection::Connection(qintptr descriptor, Identity shown, QObject *parent)
    : QObject(parent)
    , socket(new QSslSocket(this))
    , timer(new QTimer(this))
    , identity(shown)
{
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, this, &Connection::writeNext);
    connect(socket, &QSslSocket::readyRead, this, &Connection::read);
    // Not bytesWritten: between that and the socket's buffer the bytes are inside OpenSSL, where nothing counts them.
    connect(socket, &QSslSocket::encryptedBytesWritten, this, &Connection::settle);
    connect(socket, &QSslSocket::disconnected, this, [this] {
        Q_EMIT closed();
        deleteLater();
    });
    socket->setSocketDescriptor(descriptor);
}

void Connection::answer(const Reply &reply)
{
    current = reply;
    outgoing = reply.bytes();
    if (reply.delay > 0)
        timer->start(reply.delay);
    else
        writeNext();
}

void Connection::read()
{
    incoming += socket->readAll();
    if (phase != Phase::Reading)
        return;
    std::optional<Request> request = takeRequest(incoming);
    if (!request)
        return;
    if (target.isEmpty()) {
        openTunnel(*request);
        return;
    }
    phase = Phase::Answering;
    request->connectTarget = target;
    Q_EMIT requestRead(*request);
}

void Connection::openTunnel(const Request &request)
{
    const QList<QByteArray> words = request.requestLine.split(' ');
    if (words.size() != 3 || words.first() != "CONNECT") {
        socket->write("HTTP/1.1 405 Method Not Allowed\r\nContent-Length: 0\r\n\r\n");
        socket->disconnectFromHost();
        return;
    }
    target = QString::fromLatin1(words.at(1));
    socket->write("HTTP/1.1 200 Connection Established\r\n\r\n");
    const Certificate own = certificateFor(identity);
    socket->setLocalCertificate(own.certificate);
    socket->setPrivateKey(own.key);
    socket->startServerEncryption();
}

void Connection::writeNext()
{
    if (socket->state() != QAbstractSocket::ConnectedState)
        return;
    const qsizetype count = current.chunk > 0 ? qMin(current.chunk, outgoing.size()) : outgoing.size();
    socket->write(outgoing.first(count));
    outgoing.remove(0, count);
    if (!outgoing.isEmpty())
        timer->start(current.interval);
    else if (!current.stalls())
        phase = Phase::AllHanded;
    settle();
}

void Connection::settle()
{
    if (phase != Phase::AllHanded || socket->bytesToWrite() > 0 || socket->encryptedBytesToWrite() > 0)
        return;
    phase = Phase::Reading;
    Q_EMIT answered();
    if (current.closes())
        socket->disconnectFromHost();
    else
        read();
}

} // namespace standin
