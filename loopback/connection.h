#pragma once

#include "loopback/certificate.h"
#include "loopback/requestparser.h"

#include <QObject>

class QSslSocket;

namespace loopback {

/// Who may open a tunnel, and whereto. Empty: everybody, and anywhere.
struct Gate
{
    QByteArray credentials; ///< "user:password"
    QByteArray target;      ///< "host:port"
    bool plain = false;     ///< takes requests in the clear too, without a tunnel
};

/// One TCP connection: a proxy's CONNECT in the clear, then TLS on the same socket, then requests one by one.
/// It deletes itself when it is closed.
class Connection : public QObject
{
    Q_OBJECT

public:
    Connection(qintptr descriptor, const Certificate &own, const Gate &gate, QObject *parent);

    bool isOpen() const;
    /// Sends bytes of the reply to the request that was read last.
    void write(const QByteArray &bytes);
    /// All bytes of the reply are written: once they are with the system the next request is read, or the connection is
    /// closed.
    void finish(bool closing);

Q_SIGNALS:
    void requestRead(const loopback::Request &request);
    /// The last byte is with the system.
    void answered();
    void closed();

private:
    void read();
    void readRequest();
    void openTunnel(const Request &request);
    void refuse(const QByteArray &statusLine, const QByteArray &headers = {});
    void settle();
    bool mayEnter(const Request &request) const;

    QSslSocket *socket;
    Certificate certificate;
    Gate gate;
    QString target; // empty until the tunnel is open
    RequestParser parser;
    int refusals = 0;
    enum class Phase { Reading, Answering, AllHanded } phase = Phase::Reading;
    bool closesAfterwards = false;
};

} // namespace loopback
