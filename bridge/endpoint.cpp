#include "bridge/endpoint.h"

#include "bridge/onceread.h"

#include <QHostAddress>
#include <QHttp1Configuration>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QRandomGenerator>
#include <QSslCertificate>
#include <QSslConfiguration>

using namespace Qt::StringLiterals;

namespace bridge {

namespace {

/// The proxy that the system names, whatever the process uses for itself.
class SystemProxy : public QNetworkProxyFactory
{
public:
    /// Asked once: there is one host to go to, and each asking costs the system's library some memory for good.
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery &query) override
    {
        if (known.isEmpty())
            known = systemProxyForQuery(query);
        return known;
    }

private:
    QList<QNetworkProxy> known;
};

bool isThisMachine(const QString &host)
{
    return host == "localhost"_L1 || QHostAddress(host).isLoopback();
}

/// True for what went wrong below HTTP, also where a part of a reply had come by then. A status of success leaves no
/// other reason for an error: the reply could not be unpacked, or not be told from what is around it.
bool isTransportError(QNetworkReply::NetworkError error, int status)
{
    return error != QNetworkReply::NoError && (error < QNetworkReply::ContentAccessDenied || status / 100 == 2);
}

} // namespace

struct Endpoint::Task
{
    Exchange exchange;
    QByteArray key;
    std::function<void(const Exchange &)> done;
    QElapsedTimer since;
    qint64 begunAt = 0;   // of the present attempt
    qint64 notBefore = 0; // of the next one
};

/// What a reply says, or why there is none.
static void readReply(Exchange &exchange, QNetworkReply *reply, const QString &failure)
{
    exchange.status = 0;
    exchange.reason.clear();
    exchange.contentType.clear();
    exchange.reply.clear();
    exchange.failure = failure;
    if (!failure.isEmpty())
        return;
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (!status.isValid() || isTransportError(reply->error(), status.toInt())) {
        // What Qt would have sent again: it has no words for that.
        exchange.failure =
            reply->error() == QNetworkReply::ContentReSendError ? u"Connection closed"_s : reply->errorString();
        return;
    }
    exchange.status = status.toInt();
    exchange.reason = reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toByteArray();
    exchange.contentType = reply->rawHeader("Content-Type");
    exchange.reply = reply->readAll();
}

Endpoint::Endpoint(const Route &way, QObject *parent)
    : QObject(parent)
    , route(way)
    , security(QSslConfiguration::defaultConfiguration())
    , pace(way.jobs)
{
    if (isThisMachine(route.url.host()))
        manager.setProxy(QNetworkProxy::NoProxy);
    else
        manager.setProxyFactory(new SystemProxy);
    manager.setAutoDeleteReplies(true);
    // Reading all the roots of a system takes as long as a dozen answers.
    if (route.url.scheme() == "https"_L1)
        security.setCaCertificates(QSslConfiguration::systemCaCertificates() + route.extraRoots);
    resume.setSingleShot(true);
    connect(&resume, &QTimer::timeout, this, &Endpoint::pump);
    clock.start();
}

void Endpoint::post(const Exchange &exchange, const QByteArray &key, const std::function<void(const Exchange &)> &done)
{
    auto task = std::make_shared<Task>(exchange, key, done);
    task->since.start();
    task->exchange.beganAt = QDateTime::currentDateTimeUtc();
    waiting << task;
    pump();
}

void Endpoint::giveUpWaiting()
{
    givenUp = true;
    const QList<TaskPointer> ended = std::exchange(waiting, {});
    for (const TaskPointer &task : ended) {
        readReply(task->exchange, nullptr, objection());
        finish(task);
    }
}

/// The one that has waited longest of those whose pause is over; nothing where there is none.
Endpoint::TaskPointer Endpoint::takeDue(qint64 now)
{
    const auto due = std::ranges::find_if(waiting, [now](const TaskPointer &task) { return task->notBefore <= now; });
    return due == waiting.end() ? nullptr : waiting.takeAt(due - waiting.begin());
}

void Endpoint::pump()
{
    // One moment for all that is decided here: what falls due in between would be waited for by nobody.
    const qint64 now = clock.elapsed();
    while (!waiting.isEmpty() && pace.mayStart(now)) {
        const TaskPointer task = takeDue(now);
        if (!task)
            break;
        attempt(task);
    }
    if (waiting.isEmpty())
        return;
    const auto soonest = std::ranges::min(waiting, {}, &Task::notBefore)->notBefore;
    if (const qint64 wait = std::max(pace.startsAt(), soonest) - now; wait > 0)
        resume.start(milliseconds(wait));
}

static QNetworkRequest requestFor(const Route &route, const QSslConfiguration &security, const QByteArray &key,
                                  qsizetype length)
{
    QNetworkRequest request(route.url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setHeader(QNetworkRequest::ContentLengthHeader, length);
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    // A connection for each: what ends one of them ends one request.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    QHttp1Configuration connections;
    connections.setNumberOfConnectionsPerHost(std::max(route.jobs, 6));
    request.setHttp1Configuration(connections);
    request.setSslConfiguration(security);
    if (!key.isEmpty())
        request.setRawHeader("Authorization", "Bearer " + key);
    return request;
}

void Endpoint::attempt(const TaskPointer &task)
{
    if (const QString why = objection(); !why.isEmpty()) {
        readReply(task->exchange, nullptr, why);
        finish(task);
        return;
    }
    pace.started();
    ++task->exchange.attempts;
    task->begunAt = clock.elapsed();
    const QByteArray &body = task->exchange.sent;
    auto *device = new OnceRead(body, nullptr);
    QNetworkReply *reply = manager.post(requestFor(route, security, task->key, body.size()), device);
    device->setParent(reply);
    // For the whole of an attempt: Qt's own limit begins anew with every byte.
    auto *limit = new QTimer(reply);
    limit->setSingleShot(true);
    connect(limit, &QTimer::timeout, reply, [reply] {
        reply->setProperty("timedOut", true);
        reply->abort();
    });
    limit->start(route.timeout);
    connect(reply, &QNetworkReply::finished, this,
            [this, task, reply] { take(task, reply, reply->property("timedOut").toBool()); });
}

void Endpoint::take(const TaskPointer &task, QNetworkReply *reply, bool timedOut)
{
    Exchange &exchange = task->exchange;
    readReply(exchange, reply, timedOut ? u"no answer within %1 seconds"_s.arg(route.timeout.count()) : QString());
    answered = answered || exchange.status != 0;
    const auto asked = retryAfter(reply->rawHeader("Retry-After"), QDateTime::currentDateTimeUtc());
    const milliseconds pause =
        pauseAfter(exchange.attempts, route.retry, asked, QRandomGenerator::global()->generateDouble());

    const bool tooMuch = exchange.status == 429 || (exchange.status == 503 && asked);
    if (tooMuch)
        pace.limited(task->begunAt, clock.elapsed(), pause);
    else if (exchange.succeeded())
        pace.succeeded();
    else
        pace.failed();

    // A certificate does not get better.
    const bool hopeless = exchange.status == 0 && reply->error() == QNetworkReply::SslHandshakeFailedError;
    const bool again = exchange.status == 0 ? !hopeless : isRetried(exchange.status);
    if (again && !givenUp && exchange.attempts <= route.retry.retries)
        tryAgain(task, pause);
    else
        finish(task);
    pump();
}

void Endpoint::tryAgain(const TaskPointer &task, milliseconds pause)
{
    const Exchange &exchange = task->exchange;
    Q_EMIT retrying(exchange.status == 0 ? exchange.failure : u"status %1"_s.arg(exchange.status), pause.count());
    task->notBefore = clock.elapsed() + pause.count();
    waiting << task;
}

void Endpoint::finish(const TaskPointer &task)
{
    task->exchange.duration = task->since.elapsed();
    task->done(task->exchange);
}

} // namespace bridge
