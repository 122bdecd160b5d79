#pragma once

#include "standin/certificate.h"
#include "standin/reply.h"

#include <QObject>

class QSslSocket;
class QTimer;

namespace standin {

/// One TCP connection: a proxy's CONNECT in the clear, then TLS on the same socket, then requests one by one.
/// It deletes itself when it is closed.
class Connection : public QObject
{
    Q_OBJECT

public:
    Connection(qintptr descriptor, Identity shown, QObject *parent);

    /// Answers the request that was read last.
    void answer(const Reply &reply);

Q_SIGNALS:
    void requestRead(const standin::Request &request);
    /// The last byte is with the system, or the request was dropped; never for a reply that stalls.
    void answered();
    void closed();

private:
    void read();
    void openTunnel(const Request &request);
    void writeNext();
    void settle();

    QSslSocket *socket;
    QTimer *timer;
    Identity identity;
    QString target; // empty until the tunnel is open
    QByteArray incoming;
    QByteArray outgoing;
    Reply current;
    enum class Phase { Reading, Answering, AllHanded } phase = Phase::Reading;
};

} // namespace standin
