#include "study/report/recorded.h"

#include "study/record.h"
#include "study/report/wording.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

using namespace Qt::StringLiterals;

namespace study {

namespace {

using Tally = QMap<QString, qsizetype>; ///< in the order of the alphabet

/// What was seen of a record so far.
struct Seen
{
    qsizetype exchanges = 0;
    qsizetype failed = 0;
    qsizetype repeated = 0;
    Tally models;
    Tally fingerprints;
    QMap<QString, Tally> settings; ///< by name how often each value was sent
    QDateTime first;
    QDateTime last;
};

QString valueText(const QJsonValue &value)
{
    if (value.isObject())
        return value["type"_L1].toString(u"an object"_s);
    return value.isDouble() ? shownNumber(value.toDouble()) : value.toVariant().toString();
}

/// All of a request but what it says: that is of this persona and this question.
void takeSettings(Seen &seen, const QJsonObject &sent)
{
    static const QStringList contents{u"messages"_s, u"model"_s, u"tools"_s, u"tool_choice"_s};
    for (auto it = sent.begin(); it != sent.end(); ++it) {
        if (!contents.contains(it.key()))
            ++seen.settings[it.key()][valueText(it.value())];
    }
}

void takeExchange(Seen &seen, const RecordedExchange &exchange)
{
    ++seen.exchanges;
    seen.failed += exchange.succeeded() ? 0 : 1;
    seen.repeated += exchange.attempts > 1 ? 1 : 0;
    const QJsonObject sent =
        QJsonDocument::fromJson(exchange.sent.isEmpty() ? exchange.request : exchange.sent).object();
    takeSettings(seen, sent);
    if (!exchange.succeeded())
        return;
    ++seen.models[exchange.model.isEmpty() ? u"one that the reply doesn't name"_s : exchange.model];
    if (!exchange.systemFingerprint.isEmpty())
        ++seen.fingerprints[exchange.systemFingerprint];
    if (!exchange.beganAt.isValid())
        return;
    if (!seen.first.isValid() || exchange.beganAt < seen.first)
        seen.first = exchange.beganAt;
    if (!seen.last.isValid() || exchange.beganAt > seen.last)
        seen.last = exchange.beganAt;
}

QString inWords(const Tally &tally)
{
    constexpr qsizetype most = 8;
    QStringList words;
    for (auto it = tally.begin(); it != tally.end(); ++it) {
        if (words.size() < most)
            words << u"%1 (%2)"_s.arg(quoted(it.key(), 60), QString::number(it.value()));
    }
    if (tally.size() > most)
        words << u"%1 more"_s.arg(tally.size() - most);
    return words.join(u", "_s);
}

QString timeText(const QDateTime &time)
{
    return time.toUTC().toString(u"yyyy-MM-dd HH:mm"_s);
}

Recorded sentencesOf(const Seen &seen, int damagedLines)
{
    Recorded sentences;
    sentences << u"By the record, which may hold other runs too: %1, of which %2 failed and %3 took more than one "
                 "attempt."_s.arg(counted(seen.exchanges, u"request"_s, u"requests"_s), QString::number(seen.failed),
                                  QString::number(seen.repeated));
    if (!seen.models.isEmpty())
        sentences << u"Answered by: %1."_s.arg(inWords(seen.models));
    if (!seen.fingerprints.isEmpty())
        sentences << u"System fingerprints: %1."_s.arg(inWords(seen.fingerprints));
    for (auto it = seen.settings.begin(); it != seen.settings.end(); ++it)
        sentences << u"Setting %1: %2."_s.arg(quoted(it.key(), 40), inWords(it.value()));
    if (!seen.settings.contains(u"temperature"_s))
        sentences << u"No temperature was sent: the endpoint's own held."_s;
    if (seen.first.isValid())
        sentences << u"Between %1 and %2 UTC."_s.arg(timeText(seen.first), timeText(seen.last));
    if (damagedLines > 0)
        sentences << u"In the record %1 passed over."_s.arg(
            counted(damagedLines, u"damaged line was"_s, u"damaged lines were"_s));
    return sentences;
}

} // namespace

std::variant<Recorded, QString> readRecorded(const QString &path)
{
    Seen seen;
    const RecordReading reading =
        readRecord(path, [&seen](const RecordedExchange &exchange) { takeExchange(seen, exchange); });
    if (!reading.failure.isEmpty())
        return reading.failure;
    return sentencesOf(seen, reading.damagedLines);
}

} // namespace study
