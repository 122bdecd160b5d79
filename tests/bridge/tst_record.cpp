// What a record keeps of an exchange, and what is answered from it.

#include "bridge/record.h"
#include "tests/support/seed.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using bridge::Exchange;
using bridge::readRecordLine;
using bridge::Record;
using bridge::recordLine;
using bridge::Replay;

namespace {

Exchange exchangeOf(const QByteArray &asked, const QByteArray &reply, int status = 200)
{
    return {.asked = asked,
            .sent = "sent " + asked,
            .beganAt = QDateTime(QDate(2026, 11, 20), QTime(12, 0, 0, 345), QTimeZone::UTC),
            .duration = 1234,
            .attempts = 2,
            .status = status,
            .reason = "Reason",
            .contentType = "application/json",
            .reply = reply,
            .failure = {}};
}

QByteArray lineOf(const QByteArray &asked, const QByteArray &reply)
{
    return recordLine(exchangeOf(asked, reply));
}

bool isSame(const Exchange &a, const Exchange &b)
{
    return a.asked == b.asked && a.sent == b.sent && a.beganAt == b.beganAt && a.duration == b.duration &&
           a.attempts == b.attempts && a.status == b.status && a.reason == b.reason && a.contentType == b.contentType &&
           a.reply == b.reply && a.failure == b.failure;
}

/// The replies to a request, one after the other.
QByteArrayList repliesTo(Replay &replay, const QByteArray &asked, int times)
{
    QByteArrayList replies;
    for (int i = 0; i < times; ++i) {
        const auto exchange = replay.replyTo(asked);
        replies << (exchange ? exchange->reply : "none"_ba);
    }
    return replies;
}

QByteArray randomBytes(QRandomGenerator &random)
{
    QByteArray bytes(1 + random.bounded(40), Qt::Uninitialized);
    const int highest = random.bounded(2) == 0 ? 128 : 256;
    for (char &byte : bytes)
        byte = char(random.bounded(highest));
    return bytes;
}

constexpr QFile::Permissions forOwner = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;

} // namespace

class TestRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_line_tells_all_that_came_of_a_request()
    {
        const QByteArray reply = R"({"usage":{"prompt_tokens":3},"model":"m","system_fingerprint":"fp","choices":[]})";
        const QByteArray line = lineOf("asked", reply);
        QCOMPARE(line.count('\n'), 1);
        QVERIFY(line.endsWith('\n'));
        QCOMPARE(QJsonDocument::fromJson(line).object(),
                 (QJsonObject{{u"time"_s, u"2026-11-20T12:00:00.345Z"_s},
                              {u"duration"_s, 1234},
                              {u"attempts"_s, 2},
                              {u"status"_s, 200},
                              {u"reason"_s, u"Reason"_s},
                              {u"type"_s, u"application/json"_s},
                              {u"request"_s, u"asked"_s},
                              {u"sent"_s, u"sent asked"_s},
                              {u"reply"_s, QString::fromUtf8(reply)},
                              {u"usage"_s, QJsonObject{{u"prompt_tokens"_s, 3}}},
                              {u"model"_s, u"m"_s},
                              {u"system_fingerprint"_s, u"fp"_s}}));
    }

    void a_line_gives_the_exchange_back_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("text") << "{\"a\": \"b\"}\r\n"_ba;
        QTest::newRow("beyond ASCII") << "\u00e9\u2713\U0001F600"_ba;
        QTest::newRow("no UTF-8") << "\xff\xfe\x80"_ba;
        QTest::newRow("half a surrogate") << "\xed\xa0\x80"_ba;
        QTest::newRow("a mark at the beginning") << "\xef\xbb\xbf{}"_ba;
        QTest::newRow("control characters") << "a\0b\x01\x7f\u0085\u2028"_ba;
        QTest::newRow("quotes and strokes") << "\\\"/\\u0041"_ba;
        QTest::newRow("no character") << "\xef\xbf\xbe\xef\xbf\xbf\xef\xbf\xbd"_ba;
        QTest::newRow("what looks like a record") << lineOf("a", "b");
    }
    void a_line_gives_the_exchange_back()
    {
        QFETCH(const QByteArray, bytes);
        Exchange exchange = exchangeOf(bytes, bytes, 429);
        exchange.reason = "R\xe9"
                          "ason";
        exchange.failure = u"\u00e9 \" \n"_s;
        const auto read = readRecordLine(recordLine(exchange));
        QVERIFY(read && isSame(*read, exchange));
    }

    void a_line_gives_any_bytes_back()
    {
        QRandomGenerator random(testSeed());
        for (int round = 0; round < 2'000; ++round) {
            const Exchange exchange = exchangeOf(randomBytes(random), randomBytes(random), random.bounded(600));
            const auto read = readRecordLine(recordLine(exchange));
            QVERIFY(read && isSame(*read, exchange));
        }
    }

    void an_exchange_without_a_reply_has_its_reason()
    {
        Exchange exchange = exchangeOf("asked", {}, 0);
        exchange.failure = u"Connection refused"_s;
        const auto read = readRecordLine(recordLine(exchange));
        QVERIFY(read);
        QCOMPARE(read->status, 0);
        QCOMPARE(read->failure, u"Connection refused"_s);
    }

    void a_damaged_line_gives_nothing_data()
    {
        QTest::addColumn<QByteArray>("line");
        const QByteArray whole = lineOf("asked", "reply");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("cut") << whole.first(whole.size() / 2);
        QTest::newRow("its last sign is missing") << whole.chopped(2);
        QTest::newRow("two in one") << whole.chopped(1) + whole;
        QTest::newRow("no object") << "[1]\n"_ba;
        QTest::newRow("no request") << R"({"status":200,"reply":"a"})"_ba;
        QTest::newRow("no status") << R"({"request":"a","reply":"a"})"_ba;
        QTest::newRow("a status that is none") << R"({"request":"a","status":"200"})"_ba;
    }
    void a_damaged_line_gives_nothing()
    {
        QFETCH(const QByteArray, line);
        QVERIFY(!readRecordLine(line));
    }

    void exchanges_are_appended()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        for (const QByteArray &asked : {"1"_ba, "2"_ba}) {
            Record record;
            QVERIFY(!record.isOpen());
            QVERIFY(record.open(path));
            QVERIFY(record.isOpen());
            QVERIFY(record.append(exchangeOf(asked, "a")));
            QVERIFY(record.append(exchangeOf(asked, "b")));
            // Nothing stays behind in the process.
            QVERIFY(readBytes(path).endsWith(lineOf(asked, "b")));
        }
        QCOMPARE(readBytes(path), lineOf("1", "a") + lineOf("1", "b") + lineOf("2", "a") + lineOf("2", "b"));
    }

    void its_owner_alone_reads_it_data()
    {
        QTest::addColumn<bool>("wasThere");
        QTest::newRow("made") << false;
        QTest::newRow("there before, for everybody") << true;
    }
    void its_owner_alone_reads_it()
    {
        QFETCH(const bool, wasThere);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        if (wasThere) {
            writeBytes(path, lineOf("1", "a"));
            QVERIFY(QFile::setPermissions(path, forOwner | QFile::ReadGroup | QFile::ReadOther | QFile::WriteOther));
        }
        Record record;
        QVERIFY(record.open(path));
        QCOMPARE(QFile::permissions(path), forOwner);
        QCOMPARE(readBytes(path), wasThere ? lineOf("1", "a") : QByteArray());
    }

    void an_unfinished_last_line_is_ended_first_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("added");
        QTest::newRow("none") << lineOf("1", "a") << QByteArray();
        QTest::newRow("unfinished") << lineOf("1", "a") + lineOf("2", "b").chopped(9) << "\n"_ba;
        QTest::newRow("all but its end") << lineOf("1", "a").chopped(1) << "\n"_ba;
    }
    void an_unfinished_last_line_is_ended_first()
    {
        QFETCH(const QByteArray, before);
        QFETCH(const QByteArray, added);
        const QTemporaryDir folder;
        const QString path = writeBytes(folder.filePath(u"r.jsonl"_s), before);
        Record record;
        QVERIFY(record.open(path));
        QVERIFY(record.append(exchangeOf("3", "c")));
        QCOMPARE(readBytes(path), before + added + lineOf("3", "c"));
    }

    void what_is_no_file_is_no_record()
    {
        const QTemporaryDir folder;
        Record record;
        QVERIFY(!record.open(folder.path()));
        QVERIFY(!record.errorText().isEmpty());
        QVERIFY(!record.open(folder.filePath(u"missing/r.jsonl"_s)));
        QVERIFY(!record.isOpen());
        Replay replay;
        QVERIFY(!replay.open(folder.filePath(u"r.jsonl"_s)));
        QVERIFY(!replay.errorText().isEmpty());
    }

    void replies_come_in_their_order_and_the_last_one_stays()
    {
        const QTemporaryDir folder;
        Replay replay;
        QVERIFY(replay.open(writeBytes(folder.filePath(u"r.jsonl"_s),
                                       lineOf("x", "x1") + lineOf("y", "y1") + lineOf("x", "x2") + lineOf("x", "x3"))));
        QCOMPARE(repliesTo(replay, "x", 2), (QByteArrayList{"x1"_ba, "x2"_ba}));
        QCOMPARE(repliesTo(replay, "y", 3), (QByteArrayList{"y1"_ba, "y1"_ba, "y1"_ba}));
        QCOMPARE(repliesTo(replay, "x", 3), (QByteArrayList{"x3"_ba, "x3"_ba, "x3"_ba}));
        QCOMPARE(replay.damagedLines(), 0);
    }

    void a_request_is_told_by_its_bytes()
    {
        const QTemporaryDir folder;
        Replay replay;
        QVERIFY(
            replay.open(writeBytes(folder.filePath(u"r.jsonl"_s), lineOf(R"({"a":1})", "1") + lineOf("\xff", "2"))));
        QCOMPARE(repliesTo(replay, R"({"a":1})", 1), (QByteArrayList{"1"_ba}));
        QCOMPARE(repliesTo(replay, R"({"a": 1})", 1), (QByteArrayList{"none"_ba}));
        QCOMPARE(repliesTo(replay, "sent {\"a\":1}", 1), (QByteArrayList{"none"_ba}));
        QCOMPARE(repliesTo(replay, "\xff", 1), (QByteArrayList{"2"_ba}));
        QCOMPARE(repliesTo(replay, {}, 1), (QByteArrayList{"none"_ba}));
    }

    void damaged_lines_are_passed_over_and_counted()
    {
        const QTemporaryDir folder;
        Replay replay;
        QVERIFY(replay.open(writeBytes(folder.filePath(u"r.jsonl"_s), "no line\n\n  \n" + lineOf("x", "x1") +
                                                                          lineOf("x", "lost").chopped(9) + '\n' +
                                                                          lineOf("x", "x2") + "{\"request\"")));
        QCOMPARE(replay.damagedLines(), 3);
        QCOMPARE(repliesTo(replay, "x", 3), (QByteArrayList{"x1"_ba, "x2"_ba, "x2"_ba}));
    }

    void an_empty_record_answers_nothing()
    {
        const QTemporaryDir folder;
        Replay replay;
        QVERIFY(replay.open(writeBytes(folder.filePath(u"r.jsonl"_s), {})));
        QCOMPARE(replay.damagedLines(), 0);
        QCOMPARE(repliesTo(replay, "x", 1), (QByteArrayList{"none"_ba}));
    }

    void what_was_recorded_is_answered_from_it()
    {
        QRandomGenerator random(testSeed());
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"r.jsonl"_s);
        QHash<QByteArray, QByteArrayList> expected;
        Record record;
        QVERIFY(record.open(path));
        for (int i = 0; i < 300; ++i) {
            const QByteArray asked = "asked " + QByteArray::number(random.bounded(60));
            const QByteArray reply = randomBytes(random);
            expected[asked] << reply;
            QVERIFY(record.append(exchangeOf(asked, reply)));
        }
        Replay replay;
        QVERIFY(replay.open(path));
        for (auto [asked, replies] : expected.asKeyValueRange())
            QCOMPARE(repliesTo(replay, asked, int(replies.size()) + 1), replies + QByteArrayList{replies.constLast()});
    }
};

ORRINET_TEST(TestRecord)
#include "tst_record.moc"
