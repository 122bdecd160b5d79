#pragma once

#include "bridge/endpoint.h"
#include "bridge/record.h"
#include "bridge/translation.h"
#include "loopback/certificate.h"
#include "loopback/connection.h"

#include <QObject>
#include <QPointer>

namespace loopback {
class Listener;
}

namespace bridge {

/// The most that may be spent; negative: no limit.
struct Budget
{
    qint64 requests = -1; ///< attempts, since each may be billed
    qint64 tokens = -1;   ///< in and out, as the replies tell
};

struct BridgeOptions
{
    Format format = Format::JsonSchema;
    ModelChoice models;
    Budget budget;
    /// In place of the key that the window sends; where neither is to be used, no key goes out.
    QByteArray key;
    bool forwardsKey = true;
    bool replays = false;
    /// A request that is refused gets no reply: for a run that ends then.
    bool holdsRefused = false;
};

/// What has happened so far.
struct Tally
{
    qint64 asked = 0;
    qint64 answered = 0;
    qint64 failed = 0;
    qint64 refused = 0;
    qint64 retried = 0;
    qint64 sent = 0;       ///< attempts
    qint64 unrecorded = 0; ///< exchanges that could not be written to the record
    Usage usage;
};

/// Stands between this process's requests and an endpoint: a proxy on 127.0.0.1 that ends the TLS of the one host
/// itself, passes each request on, translated, and gives back what comes of it. Only who knows the credentials gets in.
class Bridge : public QObject
{
    Q_OBJECT

public:
    Bridge(const BridgeOptions &options, Endpoint *endpoint, QObject *parent = nullptr);
    ~Bridge() override;

    /// False where no port of this machine can be had.
    bool listen();
    quint16 port() const;
    QSslCertificate certificate() const;
    QString user() const;
    QString password() const;

    Record &record() { return recordFile; }
    Replay &replay() { return replayFile; }
    const Tally &tally() const { return counts; }

    /// From here on every request is refused with this text. What is under way comes to its end.
    void stop(const QString &why);
    QString stopReason() const { return refusal; }

Q_SIGNALS:
    /// A request has come from this process, and nothing has been done for it yet.
    void requestTaken();
    /// The end of an exchange, with no key in it, before the window gets the reply.
    void exchangeEnded(const bridge::Exchange &exchange);
    void requestRefused(const QString &why);
    /// Requests are refused from now on, for this reason.
    void stopped(const QString &why);

private:
    using Peer = QPointer<loopback::Connection>;

    void accept(qintptr descriptor);
    void take(const Peer &peer, const loopback::Request &request);
    void answerFromRecord(const Peer &peer, const QByteArray &body);
    void passOn(const Peer &peer, const loopback::Request &request);
    void end(const Peer &peer, Exchange exchange, const QByteArray &key);
    void refuse(const Peer &peer, const QString &why);
    QString objection();
    QByteArray keyFor(const loopback::Request &request) const;

    BridgeOptions options;
    Endpoint *endpoint;
    loopback::Listener *listener;
    loopback::Issued identity;
    loopback::Certificate shown;
    QByteArray secret;
    Record recordFile;
    Replay replayFile;
    Tally counts;
    QString refusal;
};

} // namespace bridge
