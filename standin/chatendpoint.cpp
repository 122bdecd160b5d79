#include "standin/chatendpoint.h"

#include "standin/connection.h"
#include "standin/listener.h"

#include <QHostAddress>

#include <utility>

using namespace Qt::StringLiterals;

namespace standin {

ChatEndpoint::ChatEndpoint(QObject *parent)
    : QObject(parent)
    , clock(this)
    , listener(new Listener(this))
    , fallback([](const Request &) { return Reply::content(u"ok"_s); })
{
    connect(listener, &Listener::connectionArrived, this, &ChatEndpoint::accept);
    if (!listener->listen(QHostAddress::LocalHost))
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
    for (const auto &[connection, reply] : due) {
        if (connection)
            connection->answer(reply);
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
    auto *connection = new Connection(descriptor, identity, this);
    connect(connection, &Connection::requestRead, this, [=, this](Request request) {
        request.connection = number;
        record(request);
        reply(connection);
    });
    connect(connection, &Connection::answered, this, [=, this] {
        const int index = openRequests.take(number);
        const WorkClock::Span listening(clock, false);
        Q_EMIT replied(index);
    });
    connect(connection, &Connection::closed, this, [=, this] {
        openRequests.remove(number);
        const WorkClock::Span listening(clock, false);
        Q_EMIT connectionClosed(number);
    });
}

void ChatEndpoint::record(Request &request)
{
    request.arrivedAt = lifetime.elapsed();
    openRequests.insert(request.connection, int(recorded.size()));
    mostOpenRequests = qMax(mostOpenRequests, int(openRequests.size()));
    recorded << request;
}

void ChatEndpoint::reply(Connection *connection)
{
    const Request request = recorded.constLast();
    {
        const WorkClock::Span listening(clock, false);
        Q_EMIT requestArrived(int(recorded.size() - 1));
    }
    const Reply chosen = script.isEmpty() ? fallback(request) : script.dequeue();
    if (chosen.waits)
        heldReplies.append({connection, chosen});
    else
        connection->answer(chosen);
}

} // namespace standin
