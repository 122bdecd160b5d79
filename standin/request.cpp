#include "standin/request.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace standin {

QJsonObject Request::json() const
{
    return QJsonDocument::fromJson(body).object();
}

} // namespace standin
