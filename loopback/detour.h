#pragma once

#include <QNetworkProxy>
#include <QSslConfiguration>

class QSslCertificate;

namespace loopback {

/// While it lives, every https request of this process goes to a port of this machine as to an HTTP proxy, and nothing
/// is trusted but one certificate, and what it vouches for. Its end puts the application's proxy and default TLS
/// settings back.
class Detour
{
public:
    /// User name and password are for a listener that asks for them.
    Detour(quint16 port, const QSslCertificate &trusted, const QString &user = {}, const QString &password = {});
    ~Detour();
    Q_DISABLE_COPY_MOVE(Detour)

private:
    QNetworkProxy formerProxy;
    bool formerSystemProxy;
    QSslConfiguration formerConfiguration;
};

} // namespace loopback
