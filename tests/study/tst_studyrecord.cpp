// What is read of a record of orrinet-bridge.

#include "study/record.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using study::readExchange;
using study::readRecord;
using study::RecordedExchange;
using study::RecordReading;

static QByteArray lineOf(const QByteArray &request)
{
    return R"({"request":")" + request + R"(","status":200})" + '\n';
}

class TestStudyRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_line_is_read_with_all_that_it_tells()
    {
        const auto read = readExchange(
            R"({"attempts":2,"duration":1234,"error":"gone","model":"m-1","reason":"OK","reply":"the reply",)"
            R"("request":"asked","sent":"went out","status":201,"system_fingerprint":"fp","time":)"
            R"("2026-11-20T12:00:00.345Z","type":"text/plain","usage":{"prompt_tokens":30,"completion_tokens":7}})"
            "\n");
        QVERIFY(read);
        QCOMPARE(read->beganAt, QDateTime(QDate(2026, 11, 20), QTime(12, 0, 0, 345), QTimeZone::UTC));
        QCOMPARE(read->duration, 1234);
        QCOMPARE(read->attempts, 2);
        QCOMPARE(read->status, 201);
        QVERIFY(read->succeeded());
        QCOMPARE(read->request, "asked");
        QCOMPARE(read->sent, "went out");
        QCOMPARE(read->reply, "the reply");
        QCOMPARE(read->failure, u"gone"_s);
        QCOMPARE(read->model, u"m-1"_s);
        QCOMPARE(read->systemFingerprint, u"fp"_s);
        QCOMPARE(read->tokensIn, 30);
        QCOMPARE(read->tokensOut, 7);
    }

    void what_a_line_leaves_out_is_empty()
    {
        const auto read = readExchange(R"({"request":"asked","status":0})");
        QVERIFY(read);
        QVERIFY(!read->succeeded());
        QVERIFY(!read->beganAt.isValid());
        QCOMPARE(read->tokensIn, 0);
        QCOMPARE(read->tokensOut, 0);
        QCOMPARE(read->reply, QByteArray());
        QCOMPARE(read->model, QString());
    }

    void bodies_that_are_no_text_are_decoded()
    {
        const auto read = readExchange(R"({"request_base64":"/w==","sent_base64":"/v8=","reply":"r","status":200})");
        QVERIFY(read);
        QCOMPARE(read->request, "\xff");
        QCOMPARE(read->sent, "\xfe\xff");
        QCOMPARE(read->reply, "r");
    }

    void a_damaged_line_gives_nothing_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("empty") << ""_ba;
        QTest::newRow("cut") << lineOf("asked").chopped(4);
        QTest::newRow("two in one") << lineOf("asked").chopped(1) + lineOf("asked");
        QTest::newRow("no object") << "[1]\n"_ba;
        QTest::newRow("no request") << R"({"status":200})"_ba;
        QTest::newRow("no status") << R"({"request":"a"})"_ba;
        QTest::newRow("a status that is none") << R"({"request":"a","status":"200"})"_ba;
    }
    void a_damaged_line_gives_nothing()
    {
        QFETCH(const QByteArray, line);
        QVERIFY(!readExchange(line));
    }

    void the_answer_is_what_the_program_takes_data()
    {
        QTest::addColumn<QByteArray>("message");
        QTest::addColumn<QString>("text");
        QTest::newRow("content") << R"({"content":"Tea"})"_ba << u"Tea"_s;
        QTest::newRow("a call") << R"({"content":"no","tool_calls":[{"function":{"arguments":"{}"}}]})"_ba << u"{}"_s;
        QTest::newRow("an empty call") << R"({"content":"Tea","tool_calls":[]})"_ba << u"Tea"_s;
        QTest::newRow("a call of nothing")
            << R"({"content":"Tea","tool_calls":[{"function":{"arguments":""}}]})"_ba << u"Tea"_s;
        QTest::newRow("nothing") << R"({"content":null})"_ba << QString();
    }
    void the_answer_is_what_the_program_takes()
    {
        QFETCH(const QByteArray, message);
        RecordedExchange exchange;
        exchange.reply = R"({"choices":[{"message":)" + message + R"(},{"message":{"content":"other"}}]})";
        QTEST(exchange.answerText(), "text");
    }

    void a_reply_that_is_no_json_has_no_answer()
    {
        RecordedExchange exchange;
        exchange.reply = "<html>";
        QCOMPARE(exchange.answerText(), QString());
    }

    void exchanges_come_in_their_order_and_damaged_lines_are_counted()
    {
        const QString path = write(u"mixed"_s, lineOf("1") + "no line\n\n  \n" + lineOf("2") + "{\"request\":\"lo\n" +
                                                   lineOf("3").chopped(1));
        QByteArrayList requests;
        const RecordReading reading =
            readRecord(path, [&requests](const RecordedExchange &exchange) { requests << exchange.request; });
        QCOMPARE(requests, (QByteArrayList{"1"_ba, "2"_ba, "3"_ba}));
        QCOMPARE(reading.exchanges, 3);
        QCOMPARE(reading.damagedLines, 2);
        QCOMPARE(reading.failure, QString());
    }

    void an_empty_record_has_no_exchange()
    {
        const RecordReading reading = readRecord(write(u"empty"_s, {}), [](const RecordedExchange &) {});
        QCOMPARE(reading.exchanges, 0);
        QCOMPARE(reading.failure, QString());
    }

    void what_is_no_record_is_told_in_one_sentence_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("reason");
        const QString text = write(u"text"_s, "Some words.\n");
        QTest::newRow("missing") << folder.filePath(u"missing"_s) << u"is not there"_s;
        QTest::newRow("a folder") << folder.path() << u"is not there"_s;
        QTest::newRow("a text") << text << u"is no record: none of its lines is an exchange"_s;
    }
    void what_is_no_record_is_told_in_one_sentence()
    {
        QFETCH(const QString, path);
        QFETCH(const QString, reason);
        QCOMPARE(readRecord(path, [](const RecordedExchange &) {}).failure, path + u' ' + reason);
    }

private:
    QString write(const QString &name, const QByteArray &bytes) { return writeBytes(folder.filePath(name), bytes); }

    QTemporaryDir folder;
};

ORRINET_TEST(TestStudyRecord)
#include "tst_studyrecord.moc"
