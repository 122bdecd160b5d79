#pragma once

#include <QElapsedTimer>
#include <QObject>

namespace standin {

/// Adds up the time that this thread spends in events of the objects below one object. TLS counts too: the sockets do
/// it in such events, before any handler of ours is called.
class WorkClock : public QObject
{
public:
    explicit WorkClock(QObject *watched);

    /// In nanoseconds.
    qint64 total() const;

    bool eventFilter(QObject *receiver, QEvent *event) override;

    /// Counts a call from outside as work while it lives, or leaves out what is not the owner's work.
    class Span
    {
    public:
        Span(WorkClock &which, bool working);
        ~Span();
        Q_DISABLE_COPY_MOVE(Span)

    private:
        WorkClock &clock;
        bool before;
    };

private:
    bool setRunning(bool running);

    QObject *owner;
    QElapsedTimer since; // invalid while the clock stands
    qint64 past = 0;
};

} // namespace standin
