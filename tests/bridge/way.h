#pragma once

#include "bridge/bridge.h"
#include "loopback/detour.h"
#include "standin/chatendpoint.h"

#include <functional>
#include <optional>

/// Retries without pauses that a test would have to wait for.
bridge::RetryRule quickly(int retries = 4);

// Options of a bridge that differ from the usual in one point.
bridge::BridgeOptions withBudget(qint64 requests, qint64 tokens = -1);
bridge::BridgeOptions withKey(const QByteArray &key, bool forwardsKey = true);
bridge::BridgeOptions withModel(const QString &model);
bridge::BridgeOptions withFormat(bridge::Format format);
bridge::BridgeOptions fromRecord();

/// The way out of the bridge, to an endpoint in this process that takes plain requests.
class Way
{
public:
    explicit Way(const bridge::RetryRule &rule = quickly(), int jobs = 1);

    standin::ChatEndpoint endpoint;
    bridge::Route route;
    /// Made of the route at the first call.
    bridge::Endpoint &out();

    /// In the order in which they end.
    QList<bridge::Exchange> ended;
    void post(const QByteArray &body = "{}", const QByteArray &key = {});
    /// Waits until so many have ended altogether; false where nothing happens for too long.
    bool waitFor(qsizetype count);
    /// What comes of one request; without an end the test has failed.
    bridge::Exchange posted(const QByteArray &body = "{}", const QByteArray &key = {});

private:
    std::optional<bridge::Endpoint> made;
    std::function<void()> tell = [] {};
};

/// A bridge in this process, which all https requests of this process go through while this lives.
class BridgeHere
{
public:
    explicit BridgeHere(const bridge::BridgeOptions &options = {}, const bridge::RetryRule &rule = quickly(),
                        int jobs = 1);
    ~BridgeHere();
    Q_DISABLE_COPY_MOVE(BridgeHere)

    Way way;
    standin::ChatEndpoint &endpoint = way.endpoint;
    bridge::Bridge bridge;

private:
    std::optional<loopback::Detour> detour;
};
