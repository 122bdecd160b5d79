#include "bridge/reporter.h"

#include <cstdio>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

namespace bridge {

namespace {

bool errorOutputIsTerminal()
{
#ifdef Q_OS_UNIX
    return ::isatty(STDERR_FILENO) == 1;
#else
    return false;
#endif
}

QString inSeconds(qint64 milliseconds)
{
    return QString::number(double(milliseconds) / 1000, 'f', 1) + " s"_L1;
}

QString asTime(qint64 seconds)
{
    return QString::asprintf("%lld:%02lld:%02lld", (long long)(seconds / 3600), (long long)(seconds / 60 % 60),
                             (long long)(seconds % 60));
}

} // namespace

Reporter::Reporter(const Bridge *reported, qint64 openPairs, QObject *parent)
    : QObject(parent)
    , bridge(reported)
    , pairs(openPairs)
    , isTerminal(errorOutputIsTerminal())
{
    clock.start();
    connect(bridge, &Bridge::exchangeEnded, this, &Reporter::tell);
    connect(bridge, &Bridge::stopped, this, [this](const QString &why) {
        std::fprintf(stderr, "%sorrinet-bridge: %s; nothing more is asked\n", isTerminal ? "\r\033[K" : "",
                     qUtf8Printable(why));
    });
}

void Reporter::tell(const Exchange &exchange)
{
    if (isTerminal) {
        std::fprintf(stderr, "\r\033[K%s", qUtf8Printable(progress()));
        return;
    }
    const Usage usage = usageOf(exchange);
    const QString outcome = exchange.status == 0
                                ? exchange.failure
                                : u"%1 %2"_s.arg(exchange.status).arg(QString::fromLatin1(exchange.reason));
    std::fprintf(stderr, "%s  %s  %d attempt%s  tokens %lld in, %lld out  %s\n",
                 qUtf8Printable(QDateTime::currentDateTime().toString(Qt::ISODate)),
                 qUtf8Printable(inSeconds(exchange.duration)), exchange.attempts, exchange.attempts == 1 ? "" : "s",
                 (long long)usage.tokensIn, (long long)usage.tokensOut, qUtf8Printable(outcome));
}

QString Reporter::numbers() const
{
    const Tally &tally = bridge->tally();
    return u"asked %1, failed %2, retried %3, tokens %4 in, %5 out"_s.arg(tally.asked)
        .arg(tally.failed)
        .arg(tally.retried)
        .arg(tally.usage.tokensIn)
        .arg(tally.usage.tokensOut);
}

QString Reporter::progress() const
{
    const qint64 done = bridge->tally().answered + bridge->tally().failed;
    const double seconds = double(std::max<qint64>(clock.elapsed(), 1)) / 1000;
    const double rate = double(done) / seconds;
    QString line = numbers() + u", %1/s"_s.arg(rate, 0, 'f', 1);
    if (pairs >= 0 && done > 0)
        line += u", %1 left"_s.arg(asTime(qint64(double(std::max<qint64>(pairs - done, 0)) / rate)));
    return line;
}

void Reporter::summarise(qint64 openPairs)
{
    QString line =
        numbers() + u", %1 requests sent, in %2"_s.arg(bridge->tally().sent).arg(asTime(clock.elapsed() / 1000));
    if (openPairs >= 0)
        line += u", %1 pairs open"_s.arg(openPairs);
    std::fprintf(stderr, "%sorrinet-bridge: %s\n", isTerminal ? "\r\033[K" : "", qUtf8Printable(line));
}

} // namespace bridge
