#include "standin/detour.h"

#include "standin/certificate.h"
#include "standin/chatendpoint.h"

#include <QHostAddress>

namespace standin {

Detour::Detour(const ChatEndpoint &endpoint)
    : formerProxy(QNetworkProxy::applicationProxy())
    , formerSystemProxy(QNetworkProxyFactory::usesSystemConfiguration())
    , formerConfiguration(QSslConfiguration::defaultConfiguration())
{
    QSslConfiguration configuration = formerConfiguration;
    configuration.setCaCertificates({certificateFor(Identity::Good).certificate});
    QSslConfiguration::setDefaultConfiguration(configuration);
    const QString loopback = QHostAddress(QHostAddress::LocalHost).toString();
    QNetworkProxy::setApplicationProxy({QNetworkProxy::HttpProxy, loopback, endpoint.port()});
}

Detour::~Detour()
{
    QSslConfiguration::setDefaultConfiguration(formerConfiguration);
    // A proxy of the application switches the system's off, so the system's must come last.
    QNetworkProxy::setApplicationProxy(formerProxy);
    if (formerSystemProxy)
        QNetworkProxyFactory::setUseSystemConfiguration(true);
}

} // namespace standin
