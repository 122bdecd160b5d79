#include "survey/shortage.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#ifdef Q_OS_UNIX
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#endif

#ifdef Q_OS_UNIX
QString descriptorShortage()
{
    // More than a request takes, since the one before it may still hold its own. The thread of Qt's network makes an
    // event loop of its own.
    std::array<int, 16> descriptors{};
    for (int &descriptor : descriptors)
        descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int error = errno;
    const bool enough = descriptors.back() >= 0;
    for (const int descriptor : descriptors) {
        if (descriptor >= 0)
            ::close(descriptor);
    }
    return enough ? QString() : qt_error_string(error);
}
#else
QString descriptorShortage()
{
    return {};
}
#endif

bool hasRoomForReply(qint64 bytes)
{
    // Measured: a text is held in several forms at a time, and its layout in the log takes the most.
    static constexpr qint64 bytesForEach = 64;
    if (bytes > std::numeric_limits<qint64>::max() / bytesForEach)
        return false;
    // Asked for and given back untouched, which costs nothing.
    void *volatile room = std::malloc(size_t(std::max<qint64>(bytes, 0) * bytesForEach));
    std::free(room);
    return room != nullptr || bytes <= 0;
}
