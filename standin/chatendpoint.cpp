#include "standin/chatendpoint.h"

#include "loopback/listener.h"
#include "standin/player.h"

#include <QHostAddress>

#include <utility>

using namespace Qt::StringLiterals;

namespace standin {

ChatEndpoint::ChatEndpoint(QObject *parent, quint16 port)
    : QObject(parent)
    , clock(this)
    , listener(new loopback::Listener(this))
    , fallback([](const Request &) { return Reply::content(u"ok"_s); })
{
    connect(listener, &loopback::Listener::connectionArrived, this, &ChatEndpoint::accept);
    if (!listener->listen(QHostAddress::LocalHost, port))
        qFatal("the endpoint cannot listen: %ls", qUtf16Printable(listener->errorString()));
    lifetime.start();
}

quint16 ChatEndpoint::port() const
{
    return listener->serverPort();
}

void ChatEndpoint::setIdentity(Identity shown)
{
    identity = shown;
}

void ChatEndpoint::takePlainRequests()
{
    gate.plain = true;
}

void ChatEndpoint::queue(const Reply &reply)
{
    script.enqueue(reply);
}

void ChatEndpoint::answerWith(const std::function<Reply(const Request &)> &respond)
{
    fallback = respond;
}

void ChatEndpoint::release()
{
    const WorkClock::Span working(clock, true);
    const QList<Held> due = std::exchange(heldReplies, {});
    for (const auto &[player, reply] : due) {
        if (player)
            player->play(reply);
    }
}

const QList<Request> &ChatEndpoint::requests() const
{
    return recorded;
}

int ChatEndpoint::connections() const
{
    return connectionCount;
}

int ChatEndpoint::inFlight() const
{
    return int(openRequests.size());
}

int ChatEndpoint::mostInFlight() const
{
    return mostOpenRequests;
}

qint64 ChatEndpoint::ownTime() const
{
    return clock.total();
}

void ChatEndpoint::accept(qintptr descriptor)
{
    const int number = ++connectionCount;
    auto *connection = new loopback::Connection(descriptor, certificateFor(identity), gate, this);
    auto *player = new Player(connection);
    connect(connection, &loopback::Connection::requestRead, this, [=, this](const loopback::Request &read) {
        record({read, number, lifetime.elapsed()});
        reply(player);
    });
    connect(connection, &loopback::Connection::answered, this, [=, this] {
        const int index = openRequests.take(number);
        const WorkClock::Span listening(clock, false);
        Q_EMIT replied(index);
    });
    connect(connection, &loopback::Connection::closed, this, [=, this] {
        openRequests.remove(number);
        const WorkClock::Span listening(clock, false);
        Q_EMIT connectionClosed(number);
    });
}

void ChatEndpoint::record(const Request &request)
{
    openRequests.insert(request.connection, int(recorded.size()));
    mostOpenRequests = qMax(mostOpenRequests, int(openRequests.size()));
    recorded << request;
}

void ChatEndpoint::reply(Player *player)
{
    const Request request = recorded.constLast();
    {
        const WorkClock::Span listening(clock, false);
        Q_EMIT requestArrived(int(recorded.size() - 1));
    }
    const Reply chosen = script.isEmpty() ? fallback(request) : script.dequeue();
    if (chosen.waits)
        heldReplies.append({player, chosen});
    else
        player->play(chosen);
}

} // namespace standin
