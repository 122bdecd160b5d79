#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <functional>
#include <optional>

// The record of orrinet-bridge: a line of JSON for each exchange with the endpoint.

namespace study {

struct RecordedExchange
{
    QDateTime beganAt;   ///< UTC; invalid where the record doesn't say
    qint64 duration = 0; ///< milliseconds, pauses between attempts included
    int attempts = 0;    ///< 0 where the record doesn't say
    int status = 0;      ///< of HTTP; 0 where no reply came
    QByteArray request;  ///< the body as the program made it
    QByteArray sent;     ///< the body as it went out
    QByteArray reply;    ///< the body that came back
    QString failure;     ///< why no reply came
    QString model;       ///< as the reply names it
    QString systemFingerprint;
    qint64 tokensIn = 0;  ///< 0 where the reply doesn't say
    qint64 tokensOut = 0; ///< the same

    bool succeeded() const { return status >= 200 && status < 300; }
    /// The text that the program takes out of the reply: a tool call's arguments, else the content.
    QString answerText() const;
};

/// The exchange of a line, nothing where the line is damaged.
std::optional<RecordedExchange> readExchange(const QByteArray &line);

/// What became of the reading of a record.
struct RecordReading
{
    int exchanges = 0;
    int damagedLines = 0; ///< passed over; blank ones don't count
    QString failure;      ///< one sentence where the file can't be read, or none of its lines is an exchange
};

/// Gives each exchange of a record in the order of the file, one at a time, as a record may be larger than the memory.
RecordReading readRecord(const QString &path, const std::function<void(const RecordedExchange &)> &take);

} // namespace study
