#pragma once

#include "loopback/connection.h"
#include "standin/certificate.h"
#include "standin/reply.h"
#include "standin/workclock.h"

#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QPointer>
#include <QQueue>

#include <functional>

namespace loopback {
class Listener;
}

namespace standin {

class Player;

/// A local chat completions endpoint with real TLS, in the thread of its client. A Detour leads the client here.
/// It is an HTTP proxy on loopback that answers what comes through its tunnels itself, and records it.
class ChatEndpoint : public QObject
{
    Q_OBJECT

public:
    /// On a free port, or on this one.
    explicit ChatEndpoint(QObject *parent = nullptr, quint16 port = 0);

    quint16 port() const;
    /// For connections to come; Good at the start.
    void setIdentity(Identity shown);

    /// From here on requests are taken in the clear too, without a tunnel: as a server on this machine does.
    void takePlainRequests();

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
        QPointer<Player> player;
        Reply reply;
    };

    void accept(qintptr descriptor);
    void record(const Request &request);
    void reply(Player *player);

    WorkClock clock;
    loopback::Listener *listener;
    QElapsedTimer lifetime;
    Identity identity = Identity::Good;
    loopback::Gate gate;
    QQueue<Reply> script;
    std::function<Reply(const Request &)> fallback;
    QList<Held> heldReplies;
    QList<Request> recorded;
    int connectionCount = 0;
    QHash<int, int> openRequests; // connection to index of the request that waits on it
    int mostOpenRequests = 0;
};

} // namespace standin
