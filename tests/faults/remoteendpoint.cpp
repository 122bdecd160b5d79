#include "tests/faults/remoteendpoint.h"

#include "standin/certificate.h"

#include <QHostAddress>
#include <QNetworkProxy>
#include <QSslConfiguration>

using namespace Qt::StringLiterals;

static const char *const portVariable = "ORRINET_ENDPOINT_PORT";
static const char *const issuerVariable = "ORRINET_ENDPOINT_ISSUER";

Variables leadingTo(const standin::ChatEndpoint &endpoint)
{
    const QSslCertificate issuer = certificateFor(standin::Identity::Good).certificate;
    return {{QString::fromLatin1(portVariable), QString::number(endpoint.port())},
            {QString::fromLatin1(issuerVariable), QString::fromLatin1(issuer.toPem())}};
}

void useRemoteEndpoint()
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates({QSslCertificate(qgetenv(issuerVariable))});
    QSslConfiguration::setDefaultConfiguration(configuration);
    const quint16 port = quint16(qEnvironmentVariableIntValue(portVariable));
    QNetworkProxy::setApplicationProxy(
        {QNetworkProxy::HttpProxy, QHostAddress(QHostAddress::LocalHost).toString(), port});
}
