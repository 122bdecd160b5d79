#include "tests/faults/descriptorshortage.h"

#include <QTest>

#include <fcntl.h>
#include <unistd.h>

DescriptorShortage::DescriptorShortage(int left)
{
    ::getrlimit(RLIMIT_NOFILE, &before);
    const int first = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    // The limit is one of numbers, not of the count: what is free below it is taken.
    const rlimit limit{.rlim_cur = rlim_t(first + left) + 64, .rlim_max = before.rlim_max};
    if (first < 0 || ::setrlimit(RLIMIT_NOFILE, &limit) != 0)
        QTest::qFail("no limit was set", __FILE__, __LINE__);
    for (int next = first; next >= 0; next = ::fcntl(first, F_DUPFD_CLOEXEC, 0))
        taken.append(next);
    for (; left > 0 && !taken.isEmpty(); --left)
        ::close(taken.takeLast());
}

DescriptorShortage::~DescriptorShortage()
{
    for (const int descriptor : std::as_const(taken))
        ::close(descriptor);
    ::setrlimit(RLIMIT_NOFILE, &before);
}
