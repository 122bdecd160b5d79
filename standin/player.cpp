#include "standin/player.h"

#include "loopback/connection.h"

#include <QTimer>

namespace standin {

Player::Player(loopback::Connection *played)
    : QObject(played)
    , connection(played)
    , timer(new QTimer(this))
{
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, this, &Player::writeNext);
}

void Player::play(const Reply &reply)
{
    current = reply;
    outgoing = reply.bytes();
    if (reply.delay > 0)
        timer->start(reply.delay);
    else
        writeNext();
}

void Player::writeNext()
{
    if (!connection->isOpen())
        return;
    const qsizetype count = current.chunk > 0 ? qMin(current.chunk, outgoing.size()) : outgoing.size();
    connection->write(outgoing.first(count));
    outgoing.remove(0, count);
    if (!outgoing.isEmpty())
        timer->start(current.interval);
    else if (!current.stalls())
        connection->finish(current.closes());
}

} // namespace standin
