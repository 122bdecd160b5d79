#pragma once

#include "standin/certificate.h"
#include "standin/reply.h"
#include "standin/workclock.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QQueue>

#include <functional>

namespace standin {

class Connection;
class Listener;

/// A local chat completions endpoint with real TLS, in the thread of its client. A Detour leads the client here.
/// It is an HTTP proxy on loopback that answers what comes through its tunnels itself, and records it.
class ChatEndpoint : public QObject
{
    Q_OBJECT

public:
    explicit ChatEndpoint(QObject *parent = nullptr);

    quint16 port() const;
    /// For connections to come; Good at the start.
    void setIdentity(Identity shown);

    /// The answer to one request to come. Each try counts as one where Qt repeats a dropped POST.
    void queue(const Reply &reply);
    /// Answers all requests that find the queue empty; at the start with the content "ok".
    void answerWith(const std::function<Reply(const Request &)> &respond);
    /// Lets go all replies that are held by now, oldest request first.
    void release();

    const QList<Request> &requests() const;
    int connections() const;
    /// Requests that are neither answered to the last byte nor given up.
    int inFlight() const;
    int mostInFlight() const;
    /// Nanoseconds spent here, TLS included and the slots of its listeners left out. A benchmark takes it off.
    qint64 ownTime() const;

Q_SIGNALS:
    /// The request is recorded and not answered yet: what a slot queues now may be its answer. A slot must not run an
    /// event loop, since its sender's socket is in the middle of reading.
    void requestArrived(int index);
    /// The last byte was written, or the connection is about to be dropped on purpose; never after a reply that
    /// stalls.
    void replied(int index);
    void connectionClosed(int connection);

private:
    struct Held
    {
        QPointer<Connection> connection;
        Reply reply;
    };

    void accept(qintptr descriptor);
    void record(Request &request);
    void reply(Connection *connection);

    WorkClock clock;
    Listener *listener;
    QElapsedTimer lifetime;
    Identity identity = Identity::Good;
    QQueue<Reply> script;
    std::function<Reply(const Request &)> fallback;
    QList<Held> heldReplies;
    QList<Request> recorded;
    int connectionCount = 0;
    QHash<int, int> openRequests; // connection to index of the request that waits on it
    int mostOpenRequests = 0;
};

} // namespace standin
