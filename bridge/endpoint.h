#pragma once

#include "bridge/exchange.h"
#include "bridge/pace.h"

#include <QElapsedTimer>
#include <QList>
#include <QNetworkAccessManager>
#include <QObject>
#include <QTimer>
#include <QUrl>

#include <functional>

class QSslCertificate;

namespace bridge {

/// The way to an endpoint: where it is, who is trusted, and how patiently it is asked.
struct Route
{
    QUrl url; ///< of the chat completions
    QList<QSslCertificate> extraRoots;
    std::chrono::seconds timeout{120}; ///< for one attempt
    RetryRule retry;
    int jobs = 1; ///< attempts under way at a time
};

/// The way out: posts requests to the endpoint, and again where that may help. It uses neither the proxy nor the
/// certificates of the process but the system's, and follows no redirection, since that would take the key along.
class Endpoint : public QObject
{
    Q_OBJECT

public:
    /// Asked before each attempt: why there is to be none, empty where there may be one.
    using Objection = std::function<QString()>;

    /// Made before a Detour, whose settings it would otherwise take over.
    Endpoint(const Route &route, QObject *parent = nullptr);

    void setObjection(const Objection &asked) { objection = asked; }
    /// Posts what the exchange is to send. @p done gets it back with all that came of it.
    void post(const Exchange &exchange, const QByteArray &key, const std::function<void(const Exchange &)> &done);
    /// Ends what waits for a further attempt, as objected to; what is under way goes on, and nothing is tried again.
    void giveUpWaiting();
    /// Whether the endpoint has ever answered, with whatever status.
    bool hasAnswered() const { return answered; }

Q_SIGNALS:
    /// An attempt has failed and the request will be tried again.
    void retrying(const QString &why, qint64 pause);

private:
    struct Task;
    using TaskPointer = std::shared_ptr<Task>;

    void pump();
    TaskPointer takeDue(qint64 now);
    void attempt(const TaskPointer &task);
    void take(const TaskPointer &task, QNetworkReply *reply, bool timedOut);
    void tryAgain(const TaskPointer &task, milliseconds pause);
    void finish(const TaskPointer &task);

    Route route;
    QNetworkAccessManager manager;
    QSslConfiguration security;
    Objection objection = [] { return QString(); };
    Pace pace;
    QList<TaskPointer> waiting; // for leave, or for the end of a pause
    QTimer resume;
    QElapsedTimer clock;
    bool answered = false;
    bool givenUp = false;
};

} // namespace bridge
