#include "bridge/record.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringDecoder>

using namespace Qt::StringLiterals;

namespace bridge {

namespace {

constexpr QFile::Permissions ownerAlone = QFile::ReadOwner | QFile::WriteOwner;

/// JSON has no place for bytes that are no text.
void insertBytes(QJsonObject &line, const QString &name, const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(bytes);
    if (decoder.hasError() || text.toUtf8() != bytes)
        line[QString(name + "_base64"_L1)] = QString::fromLatin1(bytes.toBase64());
    else
        line[name] = text;
}

QByteArray bytesOf(const QJsonObject &line, const QString &name)
{
    const QJsonValue encoded = line[QString(name + "_base64"_L1)];
    return encoded.isString() ? QByteArray::fromBase64(encoded.toString().toLatin1()) : line[name].toString().toUtf8();
}

QByteArray hashOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

} // namespace

QByteArray recordLine(const Exchange &exchange)
{
    QJsonObject line{{u"time"_s, exchange.beganAt.toString(Qt::ISODateWithMs)},
                     {u"duration"_s, exchange.duration},
                     {u"attempts"_s, exchange.attempts},
                     {u"status"_s, exchange.status},
                     {u"reason"_s, QString::fromLatin1(exchange.reason)},
                     {u"type"_s, QString::fromLatin1(exchange.contentType)}};
    insertBytes(line, u"request"_s, exchange.asked);
    insertBytes(line, u"sent"_s, exchange.sent);
    insertBytes(line, u"reply"_s, exchange.reply);
    if (!exchange.failure.isEmpty())
        line[u"error"_s] = exchange.failure;
    const QJsonObject reply = QJsonDocument::fromJson(exchange.reply).object();
    for (const QString &name : {u"usage"_s, u"model"_s, u"system_fingerprint"_s}) {
        if (reply.contains(name))
            line[name] = reply[name];
    }
    return QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<Exchange> readRecordLine(const QByteArray &line)
{
    const QJsonDocument document = QJsonDocument::fromJson(line);
    const QJsonObject read = document.object();
    const QByteArray asked = bytesOf(read, u"request"_s);
    if (asked.isEmpty() || !read["status"_L1].isDouble())
        return std::nullopt;
    return Exchange{.asked = asked,
                    .sent = bytesOf(read, u"sent"_s),
                    .beganAt = QDateTime::fromString(read["time"_L1].toString(), Qt::ISODateWithMs),
                    .duration = read["duration"_L1].toInteger(),
                    .attempts = read["attempts"_L1].toInt(),
                    .status = read["status"_L1].toInt(),
                    .reason = read["reason"_L1].toString().toLatin1(),
                    .contentType = read["type"_L1].toString().toLatin1(),
                    .reply = bytesOf(read, u"reply"_s),
                    .failure = read["error"_L1].toString()};
}

bool Record::open(const QString &path)
{
    file.setFileName(path);
    // Made for the owner alone from the first moment on; one that was there is closed to others.
    if (!file.open(QIODevice::ReadWrite | QIODevice::Append | QIODevice::Unbuffered, ownerAlone))
        return false;
    if ((file.permissions() & ~(ownerAlone | QFile::ReadUser | QFile::WriteUser)) && !file.setPermissions(ownerAlone)) {
        file.close();
        return false;
    }
    char last = '\n';
    if (file.size() > 0 && file.seek(file.size() - 1))
        file.read(&last, 1);
    return last == '\n' || file.write("\n") == 1;
}

bool Record::append(const Exchange &exchange)
{
    const QByteArray line = (torn ? "\n" : "") + recordLine(exchange);
    const qint64 before = file.size();
    if (file.write(line) == line.size()) {
        torn = false;
        return true;
    }
    error = file.errorString();
    // What a full disk has left of a line is taken back, or else not to spoil the next one.
    torn = !file.resize(before);
    return false;
}

bool Replay::open(const QString &path)
{
    file.setFileName(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    while (!file.atEnd()) {
        const qint64 start = file.pos();
        const QByteArray line = file.readLine();
        if (const auto exchange = readRecordLine(line))
            byRequest[hashOf(exchange->asked)].lines << start;
        else if (!line.trimmed().isEmpty())
            ++damaged;
    }
    return true;
}

std::optional<Exchange> Replay::replyTo(const QByteArray &asked)
{
    const auto known = byRequest.find(hashOf(asked));
    if (known == byRequest.end())
        return std::nullopt;
    const qsizetype index = std::min(known->next++, known->lines.size() - 1);
    if (!file.seek(known->lines.at(index)))
        return std::nullopt;
    return readRecordLine(file.readLine());
}

} // namespace bridge
