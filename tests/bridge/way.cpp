#include "tests/bridge/way.h"

#include "tests/support/patience.h"

#include <QEventLoop>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;
using bridge::Exchange;

bridge::RetryRule quickly(int retries)
{
    using std::chrono::milliseconds;
    return {.retries = retries, .first = milliseconds(1), .longest = milliseconds(1), .longestAsked = milliseconds(1)};
}

bridge::BridgeOptions withBudget(qint64 requests, qint64 tokens)
{
    bridge::BridgeOptions options;
    options.budget = {.requests = requests, .tokens = tokens};
    return options;
}

bridge::BridgeOptions withKey(const QByteArray &key, bool forwardsKey)
{
    bridge::BridgeOptions options;
    options.key = key;
    options.forwardsKey = forwardsKey;
    return options;
}

bridge::BridgeOptions withModel(const QString &model)
{
    bridge::BridgeOptions options;
    options.models.always = model;
    return options;
}

bridge::BridgeOptions withFormat(bridge::Format format)
{
    bridge::BridgeOptions options;
    options.format = format;
    return options;
}

bridge::BridgeOptions fromRecord()
{
    bridge::BridgeOptions options;
    options.replays = true;
    return options;
}

Way::Way(const bridge::RetryRule &rule, int jobs)
    : route{.url = QUrl(u"http://127.0.0.1:%1/v1/chat/completions"_s.arg(endpoint.port())),
            .extraRoots = {},
            .retry = rule,
            .jobs = jobs}
{
    endpoint.takePlainRequests();
}

bridge::Endpoint &Way::out()
{
    if (!made)
        made.emplace(route);
    return *made;
}

void Way::post(const QByteArray &body, const QByteArray &key)
{
    Exchange exchange;
    exchange.asked = "asked " + body;
    exchange.sent = body;
    out().post(exchange, key, [this](const Exchange &done) {
        ended << done;
        tell();
    });
}

bool Way::waitFor(qsizetype count)
{
    QEventLoop loop;
    QTimer deadline;
    deadline.setSingleShot(true);
    QObject::connect(&deadline, &QTimer::timeout, &loop, [&loop] { loop.exit(1); });
    tell = [&] {
        deadline.start(patience);
        if (ended.size() >= count)
            loop.exit(0);
    };
    deadline.start(patience);
    const bool came = ended.size() >= count || loop.exec() == 0;
    tell = [] {};
    return came;
}

Exchange Way::posted(const QByteArray &body, const QByteArray &key)
{
    const qsizetype before = ended.size();
    post(body, key);
    if (!waitFor(before + 1))
        QTest::qFail("the request has not ended", __FILE__, __LINE__);
    return ended.isEmpty() ? Exchange() : ended.constLast();
}

BridgeHere::BridgeHere(const bridge::BridgeOptions &options, const bridge::RetryRule &rule, int jobs)
    : way(rule, jobs)
    , bridge(options, &way.out())
{
    if (!bridge.listen())
        qFatal("no port");
    detour.emplace(bridge.port(), bridge.certificate(), bridge.user(), bridge.password());
}

BridgeHere::~BridgeHere() = default;
