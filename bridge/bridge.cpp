#include "bridge/bridge.h"

#include "loopback/listener.h"

#include <QHostAddress>
#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace bridge {

namespace {

constexpr QByteArrayView hostName("api.openai.com");
constexpr QLatin1StringView userName("orrinet");

QByteArray newSecret()
{
    std::array<quint32, 8> words{};
    QRandomGenerator::system()->fillRange(words.data(), words.size());
    return QByteArray(reinterpret_cast<const char *>(words.data()), sizeof words).toHex();
}

/// The window shows no more of a failed request than this line.
QByteArray asReason(const QString &text)
{
    QByteArray reason = text.simplified().toLatin1();
    reason.truncate(200);
    return reason;
}

QByteArray replyBytes(int status, const QByteArray &reason, const QByteArray &contentType, const QByteArray &body)
{
    return "HTTP/1.1 " + QByteArray::number(status) + ' ' + reason +
           "\r\nContent-Type: " + (contentType.isEmpty() ? QByteArray("application/json") : contentType) +
           "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
}

/// What the window gets of an exchange. Where the endpoint gave no answer of its own, the bridge says so in its place;
/// a redirection is not passed on, since nobody is to follow it.
QByteArray replyBytes(const Exchange &exchange)
{
    if (exchange.status == 0)
        return replyBytes(502, asReason("bridge: "_L1 + exchange.failure), {}, {});
    if (exchange.status >= 300 && exchange.status < 400)
        return replyBytes(502, "bridge: the endpoint redirects, which is not followed", {}, {});
    return replyBytes(exchange.status, exchange.reason, exchange.contentType, exchange.reply);
}

} // namespace

Bridge::Bridge(const BridgeOptions &wanted, Endpoint *way, QObject *parent)
    : QObject(parent)
    , options(wanted)
    , endpoint(way)
    , listener(new loopback::Listener(this))
    , identity(hostName.toByteArray())
    , shown(identity.certificate())
    , secret(newSecret())
{
    connect(listener, &loopback::Listener::connectionArrived, this, &Bridge::accept);
    endpoint->setObjection([this] {
        const QString why = objection();
        counts.sent += why.isEmpty() ? 1 : 0;
        return why;
    });
    connect(endpoint, &Endpoint::retrying, this, [this] { ++counts.retried; });
}

Bridge::~Bridge() = default;

bool Bridge::listen()
{
    return listener->listen(QHostAddress::LocalHost);
}

quint16 Bridge::port() const
{
    return listener->serverPort();
}

QSslCertificate Bridge::certificate() const
{
    return shown.certificate;
}

QString Bridge::user() const
{
    return userName;
}

QString Bridge::password() const
{
    return QString::fromLatin1(secret);
}

void Bridge::stop(const QString &why)
{
    if (!refusal.isEmpty())
        return;
    refusal = why;
    Q_EMIT stopped(why);
    endpoint->giveUpWaiting();
}

void Bridge::accept(qintptr descriptor)
{
    const loopback::Gate gate{.credentials = user().toLatin1() + ':' + secret,
                              .target = hostName.toByteArray() + ":443"};
    auto *connection = new loopback::Connection(descriptor, shown, gate, this);
    connect(connection, &loopback::Connection::requestRead, this,
            [this, connection](const loopback::Request &request) { take(connection, request); });
}

void Bridge::take(const Peer &peer, const loopback::Request &request)
{
    if (request.method != "POST" || request.target != "/v1/chat/completions") {
        peer->write(replyBytes(404, "Not Found", {}, {}));
        peer->finish(true);
        return;
    }
    Q_EMIT requestTaken();
    if (const QString why = objection(); !why.isEmpty())
        refuse(peer, why);
    else if (options.replays)
        answerFromRecord(peer, request.body);
    else
        passOn(peer, request);
}

/// Why nothing may go out any more, empty where it may.
QString Bridge::objection()
{
    const auto usedUp = [](qint64 used, qint64 most) { return most >= 0 && used >= most; };
    if (usedUp(counts.sent, options.budget.requests))
        stop(u"the budget of %1 requests is used up"_s.arg(options.budget.requests));
    else if (usedUp(counts.usage.tokensIn + counts.usage.tokensOut, options.budget.tokens))
        stop(u"the budget of %1 tokens is used up"_s.arg(options.budget.tokens));
    return refusal;
}

void Bridge::refuse(const Peer &peer, const QString &why)
{
    ++counts.refused;
    Q_EMIT requestRefused(why);
    if (!peer || options.holdsRefused)
        return;
    peer->write(replyBytes(503, asReason("bridge: "_L1 + why), {}, {}));
    peer->finish(true);
}

void Bridge::answerFromRecord(const Peer &peer, const QByteArray &body)
{
    ++counts.asked;
    Exchange exchange = replayFile.replyTo(body).value_or(Exchange());
    if (exchange.asked.isEmpty()) {
        exchange.asked = body;
        exchange.failure = u"the record does not hold this request"_s;
    }
    end(peer, exchange, {});
}

QByteArray Bridge::keyFor(const loopback::Request &request) const
{
    if (!options.key.isEmpty() || !options.forwardsKey)
        return options.key;
    const QByteArray shownKey = request.header("Authorization");
    return shownKey.startsWith("Bearer ") ? shownKey.sliced(7) : QByteArray();
}

void Bridge::passOn(const Peer &peer, const loopback::Request &request)
{
    ++counts.asked;
    Exchange exchange;
    exchange.asked = request.body;
    exchange.sent = translate(request.body, options.format, options.models);
    const QByteArray key = keyFor(request);
    endpoint->post(exchange, key, [this, peer, key](const Exchange &ended) { end(peer, ended, key); });
}

/// Nothing is lost where the record can't be written: this reply still gets to the window, and no further one is asked
/// for.
void Bridge::end(const Peer &peer, Exchange exchange, const QByteArray &key)
{
    // Of a failed request the window shows the reason, of the others the reply.
    exchange.reason = withoutKey(exchange.reason, key);
    exchange.contentType = withoutKey(exchange.contentType, key);
    exchange.failure = QString::fromUtf8(withoutKey(exchange.failure.toUtf8(), key));
    const QByteArray reply = replyBytes(exchange);
    const Usage usage = usageOf(exchange);
    counts.usage.tokensIn += usage.tokensIn;
    counts.usage.tokensOut += usage.tokensOut;
    ++(exchange.succeeded() ? counts.answered : counts.failed);

    exchange.reply = withoutKey(exchange.reply, key);
    exchange.contentType = withoutKey(exchange.contentType, key);
    if (recordFile.isOpen() && !recordFile.append(exchange)) {
        ++counts.unrecorded;
        stop(u"the record can't be written: %1"_s.arg(recordFile.errorText()));
    }
    Q_EMIT exchangeEnded(exchange);
    if (!peer)
        return;
    peer->write(reply);
    peer->finish(true);
}

} // namespace bridge
