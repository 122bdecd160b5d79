#pragma once

#include <QNetworkProxy>
#include <QSslConfiguration>

namespace standin {

class ChatEndpoint;

/// While it lives, every https request of this process ends at the endpoint and nothing but the endpoint's
/// certificate is trusted. Its end puts the application's proxy and default TLS settings back.
class Detour
{
public:
    explicit Detour(const ChatEndpoint &endpoint);
    ~Detour();
    Q_DISABLE_COPY_MOVE(Detour)

private:
    QNetworkProxy formerProxy;
    bool formerSystemProxy;
    QSslConfiguration formerConfiguration;
};

} // namespace standin
