#pragma once

#include <QList>

#include <sys/resource.h>

/// While it lives, this process can have so many further file descriptors and no more.
class DescriptorShortage
{
public:
    explicit DescriptorShortage(int left);
    ~DescriptorShortage();
    Q_DISABLE_COPY_MOVE(DescriptorShortage)

private:
    rlimit before{};
    QList<int> taken;
};
