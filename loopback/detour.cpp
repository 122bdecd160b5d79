#include "loopback/detour.h"

#include <QHostAddress>
#include <QSslCertificate>

namespace loopback {

Detour::Detour(quint16 port, const QSslCertificate &trusted, const QString &user, const QString &password)
    : formerProxy(QNetworkProxy::applicationProxy())
    , formerSystemProxy(QNetworkProxyFactory::usesSystemConfiguration())
    , formerConfiguration(QSslConfiguration::defaultConfiguration())
{
    QSslConfiguration configuration = formerConfiguration;
    configuration.setCaCertificates({trusted});
    QSslConfiguration::setDefaultConfiguration(configuration);
    const QString address = QHostAddress(QHostAddress::LocalHost).toString();
    QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, address, port, user, password});
}

Detour::~Detour()
{
    QSslConfiguration::setDefaultConfiguration(formerConfiguration);
    // A proxy of the application switches the system's off, so the system's must come last.
    QNetworkProxy::setApplicationProxy(formerProxy);
    if (formerSystemProxy)
        QNetworkProxyFactory::setUseSystemConfiguration(true);
}

} // namespace loopback
