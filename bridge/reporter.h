#pragma once

#include "bridge/bridge.h"

#include <QElapsedTimer>
#include <QObject>

namespace bridge {

/// Tells on the error output what the bridge does: on a terminal one line that is kept up to date, elsewhere a line for
/// each exchange.
class Reporter : public QObject
{
    Q_OBJECT

public:
    /// @p pairs is how many are open at the start of a run without a window, negative where there is no such run.
    Reporter(const Bridge *bridge, qint64 pairs, QObject *parent = nullptr);

    void summarise(qint64 openPairs);

private:
    void tell(const Exchange &exchange);
    QString progress() const;
    QString numbers() const;

    const Bridge *bridge;
    qint64 pairs;
    bool isTerminal;
    QElapsedTimer clock;
};

} // namespace bridge
