#include "standin/certificate.h"

using loopback::Issued;

namespace standin {

static const Issued &issuedFor(Identity identity)
{
    static const QByteArray host = "api.openai.com";
    static const Issued good(host);
    switch (identity) {
    case Identity::Good:
        break;
    case Identity::WrongHost: {
        static const Issued wrongHost("elsewhere.example", &good);
        return wrongHost;
    }
    case Identity::Expired: {
        const QDateTime now = QDateTime::currentDateTimeUtc();
        static const Issued expired(host, &good, {.from = now.addDays(-60), .to = now.addDays(-30)});
        return expired;
    }
    case Identity::UnknownIssuer: {
        static const Issued unknownIssuer(host);
        return unknownIssuer;
    }
    }
    return good;
}

loopback::Certificate certificateFor(Identity identity)
{
    return issuedFor(identity).certificate();
}

} // namespace standin
