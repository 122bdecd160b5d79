#include "bridge/interrupt.h"

#ifdef Q_OS_UNIX
#include <QSocketNotifier>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace bridge {

#ifdef Q_OS_UNIX

// A handler may do next to nothing: it writes a byte, which the event loop reads.
static int pipeEnds[2] = {-1, -1};

static void handleInterrupt(int /*signal*/)
{
    // The second one may be the other of the two.
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);
}

Interrupt::Interrupt(QObject *parent)
    : QObject(parent)
{
    if (::pipe2(pipeEnds, O_CLOEXEC) != 0)
        return;
    auto *notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
        notifier->setEnabled(false);
        Q_EMIT requested();
    });
    struct sigaction action = {};
    action.sa_handler = handleInterrupt;
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

#else

Interrupt::Interrupt(QObject *parent)
    : QObject(parent)
{
}

#endif

} // namespace bridge
