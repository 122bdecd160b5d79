#include "loopback/request.h"

namespace loopback {

QByteArray Request::header(const QByteArray &name) const
{
    for (const auto &[key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

} // namespace loopback
