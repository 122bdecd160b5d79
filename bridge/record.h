#pragma once

#include "bridge/exchange.h"

#include <QFile>
#include <QHash>

#include <optional>

namespace bridge {

/// A line of JSON for one exchange, with its line feed: "time" (UTC, ISO 8601), "duration" (milliseconds), "attempts",
/// "request" and "sent" (the two bodies), "status", "reason", "type", "reply", "error", and what the reply says of
/// "usage", "model" and "system_fingerprint". Bodies that are no UTF-8 stand in base64 under a name that ends so.
QByteArray recordLine(const Exchange &exchange);
/// Nothing where the line is damaged.
std::optional<Exchange> readRecordLine(const QByteArray &line);

/// Appends exchanges to a file that its owner alone can read.
class Record
{
public:
    /// The file is made where there is none. An unfinished last line, as a power cut leaves it, is ended first.
    bool open(const QString &path);
    bool isOpen() const { return file.isOpen(); }
    /// A line that can't be written whole is taken back, so that the record can be read to its end.
    bool append(const Exchange &exchange);
    QString errorText() const { return error.isEmpty() ? file.errorString() : error; }

private:
    QFile file;
    bool torn = false; ///< the last line is not there, or not all of it
    QString error;
};

/// Answers from a record: each request, told by its bytes, gets its replies in their order, and the last one from then
/// on. The replies stay in the file until they are asked for.
class Replay
{
public:
    bool open(const QString &path);
    QString errorText() const { return file.errorString(); }
    /// Lines that could not be read.
    int damagedLines() const { return damaged; }
    std::optional<Exchange> replyTo(const QByteArray &asked);

private:
    struct Replies
    {
        QList<qint64> lines; // where they begin
        qsizetype next = 0;
    };

    QFile file;
    QHash<QByteArray, Replies> byRequest; // by the hash of its bytes
    int damaged = 0;
};

} // namespace bridge
