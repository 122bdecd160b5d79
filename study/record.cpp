#include "study/record.h"

#include "study/output.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace study {

QString RecordedExchange::answerText() const
{
    const QJsonValue message = QJsonDocument::fromJson(reply)["choices"_L1][0]["message"_L1];
    const QString arguments = message["tool_calls"_L1][0]["function"_L1]["arguments"_L1].toString();
    return arguments.isEmpty() ? message["content"_L1].toString() : arguments;
}

/// A body that is no UTF-8 stands in base64 under a name of its own.
static QByteArray recordedBytes(const QJsonObject &line, const QString &name)
{
    const QJsonValue encoded = line.value(QString(name + "_base64"_L1));
    return encoded.isString() ? QByteArray::fromBase64(encoded.toString().toLatin1())
                              : line.value(name).toString().toUtf8();
}

std::optional<RecordedExchange> readExchange(const QByteArray &line)
{
    const QJsonObject read = QJsonDocument::fromJson(line).object();
    const QByteArray request = recordedBytes(read, u"request"_s);
    if (request.isEmpty() || !read.value("status"_L1).isDouble())
        return std::nullopt;
    const QJsonObject usage = read.value("usage"_L1).toObject();
    return RecordedExchange{.beganAt = QDateTime::fromString(read.value("time"_L1).toString(), Qt::ISODateWithMs),
                            .duration = read.value("duration"_L1).toInteger(),
                            .attempts = read.value("attempts"_L1).toInt(),
                            .status = read.value("status"_L1).toInt(),
                            .request = request,
                            .sent = recordedBytes(read, u"sent"_s),
                            .reply = recordedBytes(read, u"reply"_s),
                            .failure = read.value("error"_L1).toString(),
                            .model = read.value("model"_L1).toString(),
                            .systemFingerprint = read.value("system_fingerprint"_L1).toString(),
                            .tokensIn = std::max<qint64>(usage.value("prompt_tokens"_L1).toInteger(), 0),
                            .tokensOut = std::max<qint64>(usage.value("completion_tokens"_L1).toInteger(), 0)};
}

RecordReading readRecord(const QString &path, const std::function<void(const RecordedExchange &)> &take)
{
    RecordReading reading;
    QFile file(path);
    if (!QFileInfo(path).isFile()) {
        reading.failure = u"%1 is not there"_s.arg(path);
        return reading;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        reading.failure = u"%1 can't be read: %2"_s.arg(path, file.errorString());
        return reading;
    }
    Progress progress(u"reading the record"_s);
    while (!file.atEnd()) {
        const QByteArray line = file.readLine();
        if (const auto exchange = readExchange(line)) {
            ++reading.exchanges;
            take(*exchange);
        } else if (!line.trimmed().isEmpty()) {
            ++reading.damagedLines;
        } else if (line.isEmpty()) {
            break;
        }
        progress.show(file.pos(), file.size());
    }
    if (file.error() != QFile::NoError)
        reading.failure = u"%1 can't be read: %2"_s.arg(path, file.errorString());
    else if (reading.exchanges == 0 && reading.damagedLines > 0)
        reading.failure = u"%1 is no record: none of its lines is an exchange"_s.arg(path);
    return reading;
}

} // namespace study
