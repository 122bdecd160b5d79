#pragma once

#include <QObject>

namespace bridge {

/// Makes Ctrl-C an event: the first one is reported, a second one ends the process at once, as ever.
class Interrupt : public QObject
{
    Q_OBJECT

public:
    explicit Interrupt(QObject *parent = nullptr);

Q_SIGNALS:
    void requested();
};

} // namespace bridge
