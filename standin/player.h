#pragma once

#include "standin/reply.h"

#include <QObject>

class QTimer;

namespace loopback {
class Connection;
}

namespace standin {

/// Plays replies on a connection as they are meant to go out: late, in pieces, in part, or never. Belongs to the
/// connection.
class Player : public QObject
{
    Q_OBJECT

public:
    explicit Player(loopback::Connection *played);

    /// Answers the request that was read last.
    void play(const Reply &reply);

private:
    void writeNext();

    loopback::Connection *connection;
    QTimer *timer;
    QByteArray outgoing;
    Reply current;
};

} // namespace standin
