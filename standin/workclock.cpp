#include "standin/workclock.h"

#include <QCoreApplication>

namespace standin {

namespace {

bool isBelow(const QObject *object, const QObject *top)
{
    for (object = object->parent(); object; object = object->parent()) {
        if (object == top)
            return true;
    }
    return false;
}

} // namespace

WorkClock::WorkClock(QObject *watched)
    : owner(watched)
{
    QCoreApplication::instance()->installEventFilter(this);
}

qint64 WorkClock::total() const
{
    return past + (since.isValid() ? since.nsecsElapsed() : 0);
}

bool WorkClock::eventFilter(QObject *receiver, QEvent *event)
{
    if (since.isValid() || !isBelow(receiver, owner))
        return false;
    // Delivered from here, since a filter has no place to stop the clock after the event.
    const Span span(*this, true);
    receiver->event(event);
    return true;
}

WorkClock::Span::Span(WorkClock &which, bool working)
    : clock(which)
    , before(which.setRunning(working))
{
}

WorkClock::Span::~Span()
{
    clock.setRunning(before);
}

bool WorkClock::setRunning(bool running)
{
    const bool before = since.isValid();
    if (before && !running) {
        past += since.nsecsElapsed();
        since.invalidate();
    } else if (!before && running) {
        since.start();
    }
    return before;
}

} // namespace standin
