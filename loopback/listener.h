#pragma once

#include <QTcpServer>

namespace loopback {

/// Hands out bare descriptors, since TLS is to start on a connection only after its CONNECT.
class Listener : public QTcpServer
{
    Q_OBJECT

public:
    using QTcpServer::QTcpServer;

Q_SIGNALS:
    void connectionArrived(qintptr descriptor);

protected:
    void incomingConnection(qintptr descriptor) override { Q_EMIT connectionArrived(descriptor); }
};

} // namespace loopback
