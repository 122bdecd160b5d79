// Requests taken off a stream of bytes: the same whatever the pieces in which it comes, and nothing of what is no HTTP.

#include "loopback/requestparser.h"
#include "tests/support/seed.h"
#include "tests/support/testcase.h"

#include <QRandomGenerator>
#include <QTest>

using loopback::Header;
using loopback::Request;
using loopback::RequestParser;
using namespace Qt::StringLiterals;

namespace {

/// All that a stream gave, one text for each request, and "no HTTP" where it ended so.
using Outcome = QList<QByteArray>;

QByteArray described(const Request &request)
{
    QByteArray text =
        request.method + '|' + request.target + '|' + request.requestLine + '|' + request.head + '|' + request.body;
    for (const auto &[name, value] : request.headers)
        text += '|' + name + '=' + (value.isNull() ? "null"_ba : value);
    return text;
}

/// Ends of the pieces, counted from the beginning of the stream.
Outcome parsed(const QByteArray &stream, const QList<qsizetype> &ends)
{
    RequestParser parser;
    Outcome outcome;
    qsizetype begin = 0;
    for (const qsizetype end : ends) {
        parser.feed(stream.sliced(begin, end - begin));
        begin = end;
        while (const auto request = parser.next())
            outcome << described(*request);
    }
    if (parser.failed())
        outcome << "no HTTP"_ba;
    return outcome;
}

Outcome parsedWhole(const QByteArray &stream)
{
    return parsed(stream, {stream.size()});
}

Outcome parsedInPieces(const QByteArray &stream, qsizetype size)
{
    QList<qsizetype> ends;
    for (qsizetype end = size; end < stream.size(); end += size)
        ends << end;
    return parsed(stream, ends << stream.size());
}

Outcome parsedAtRandom(const QByteArray &stream, QRandomGenerator &random)
{
    QList<qsizetype> ends;
    for (qsizetype end = 0; end < stream.size();)
        ends << (end = qMin(stream.size(), end + 1 + qsizetype(random.bounded(40))));
    return parsed(stream, ends);
}

QByteArray post(const QByteArray &target, const QByteArray &body)
{
    return "POST " + target +
           " HTTP/1.1\r\nHost: api.openai.com\r\nX-Empty:\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\n\r\n" + body;
}

/// Requests of every sort, one behind the other.
QByteArray pipeline()
{
    return post("/one", R"({"text": "a"})") + "GET /two?a=b HTTP/1.1\r\n\r\n" +
           "POST /three HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nfirst\r\n3;x=y\r\n, 2\r\n0\r\n\r\n" +
           "CONNECT api.openai.com:443 HTTP/1.1\r\nProxy-Authorization: Basic b3I=\r\n\r\n" +
           post("/five", "empty\r\n\r\nlines and a \0 zero"_ba) +
           "POST /six HTTP/1.1\r\nconnection: close\r\ncontent-LENGTH:  0 \r\n\r\n" + post("/seven", "end");
}

} // namespace

class TestRequestParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_request_has_its_parts()
    {
        RequestParser parser;
        const QByteArray bytes = post("/v1/chat/completions", "body");
        parser.feed(bytes);
        const auto request = parser.next();
        QVERIFY(request);
        QCOMPARE(request->method, "POST"_ba);
        QCOMPARE(request->target, "/v1/chat/completions"_ba);
        QCOMPARE(request->requestLine, "POST /v1/chat/completions HTTP/1.1"_ba);
        QCOMPARE(
            request->headers,
            (QList<Header>{{"Host"_ba, "api.openai.com"_ba}, {"X-Empty"_ba, ""_ba}, {"Content-Length"_ba, "4"_ba}}));
        QVERIFY(!request->header("x-empty").isNull());
        QVERIFY(request->header("X-Absent").isNull());
        QCOMPARE(request->head + request->body, bytes);
        QCOMPARE(request->body, "body"_ba);
        QVERIFY(request->connectTarget.isNull());
        QVERIFY(!parser.next());
        QVERIFY(!parser.failed());
    }

    void pieces_of_every_size_give_the_same_requests()
    {
        const QByteArray stream = pipeline();
        const Outcome whole = parsedWhole(stream);
        QCOMPARE(whole.size(), 7);
        QVERIFY(whole.at(2).contains("first, 2"));
        QVERIFY(whole.at(4).contains("lines and a \0 zero"_ba));
        for (qsizetype size = 1; size < stream.size(); ++size)
            QCOMPARE(parsedInPieces(stream, size), whole);
    }

    void a_request_comes_with_its_last_byte()
    {
        const QByteArray bytes = post("/", "body");
        RequestParser parser;
        for (const char byte : bytes.chopped(1)) {
            parser.feed(QByteArray(1, byte));
            QVERIFY(!parser.next());
        }
        QCOMPARE(parser.waiting(), bytes.size() - 1);
        parser.feed(bytes.last(1));
        QVERIFY(parser.next());
        QCOMPARE(parser.waiting(), 0);
    }

    void what_follows_a_tunnel_is_not_a_part_of_it()
    {
        RequestParser parser;
        const QByteArray after = post("/", "inside");
        parser.feed("CONNECT a:1 HTTP/1.1\r\nContent-Length: 3\r\n\r\n" + after);
        const auto tunnel = parser.next();
        QVERIFY(tunnel);
        QCOMPARE(tunnel->target, "a:1"_ba);
        QCOMPARE(tunnel->body, QByteArray());
        QCOMPARE(parser.waiting(), after.size());
        QCOMPARE(parser.next().value_or(Request()).body, "inside"_ba);
    }

    void what_is_no_http_gives_nothing_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("a word") << "hello\r\n\r\n"_ba;
        QTest::newRow("a reply") << "HTTP/1.1 200 OK\r\n\r\n"_ba;
        QTest::newRow("TLS") << QByteArray::fromHex("16030100c8010000c40303");
        QTest::newRow("zeros") << QByteArray(8, '\0');
        QTest::newRow("no such method") << "PROST / HTTP/1.1\r\n\r\n"_ba;
        QTest::newRow("another version") << "POST / HTTP/7.3\r\n\r\n"_ba;
        QTest::newRow("another protocol") << "POST / FTP/1.1\r\n\r\n"_ba;
        QTest::newRow("a blank in a header's name") << "POST / HTTP/1.1\r\nA b: c\r\n\r\n"_ba;
        QTest::newRow("a header without a colon") << "POST / HTTP/1.1\r\nA\r\n\r\n"_ba;
        QTest::newRow("a control character") << "POST / HTTP/1.1\r\nA: b\x01\r\n\r\n"_ba;
        QTest::newRow("a length that is none") << "POST / HTTP/1.1\r\nContent-Length: four\r\n\r\nbody"_ba;
        QTest::newRow("a length below zero") << "POST / HTTP/1.1\r\nContent-Length: -4\r\n\r\nbody"_ba;
        QTest::newRow("a length past all numbers")
            << "POST / HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\nbody"_ba;
        QTest::newRow("two lengths") << "POST / HTTP/1.1\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\nab"_ba;
        QTest::newRow("length and chunks")
            << "POST / HTTP/1.1\r\nContent-Length: 4\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"_ba;
        QTest::newRow("a chunk that has no size") << "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"_ba;
    }
    void what_is_no_http_gives_nothing()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(parsedWhole(bytes), Outcome{"no HTTP"_ba});
        QCOMPARE(parsedInPieces(bytes, 1), Outcome{"no HTTP"_ba});
        // And nothing does after it.
        QCOMPARE(parsed(bytes + post("/", "body"), {bytes.size(), bytes.size() + post("/", "body").size()}),
                 Outcome{"no HTTP"_ba});
    }

    void a_line_that_ends_otherwise_is_no_danger_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("line feeds alone") << "POST / HTTP/1.1\nContent-Length: 0\n\n"_ba;
        QTest::newRow("no version") << "GET /\r\n\r\n"_ba;
        QTest::newRow("no version and a line feed alone") << "GET /\n\r\n"_ba;
        QTest::newRow("no version and line feeds alone") << "GET /\n\n"_ba;
        QTest::newRow("empty lines before") << "\r\n\r\nGET / HTTP/1.1\r\nA: b\r\n\r\n"_ba;
        QTest::newRow("carriage returns alone") << "GET / HTTP/1.1\rA: b\r\r"_ba;
        QTest::newRow("a version that is cut") << "GET / HTTP/1.1\n\r\n"_ba;
    }
    void a_line_that_ends_otherwise_is_no_danger()
    {
        QFETCH(const QByteArray, bytes);
        const Outcome whole = parsedWhole(bytes);
        QCOMPARE(parsedInPieces(bytes, 1), whole);
        // Either it is none, or it has its line.
        for (const QByteArray &request : whole)
            QVERIFY2(request == "no HTTP" || request.contains("|GET / HTTP/1.1|"), request.constData());
    }

    void damaged_requests_are_the_same_in_any_pieces()
    {
        QRandomGenerator random(testSeed());
        const QByteArray whole = pipeline();
        const int rounds = qEnvironmentVariableIsSet("ORRINET_LONG") ? 200'000 : 1'000;
        int failures = 0;
        for (int round = 0; round < rounds; ++round) {
            QByteArray stream = whole;
            for (quint32 count = random.bounded(1U, 5U); count > 0; --count) {
                const qsizetype place = random.bounded(stream.size());
                if (random.bounded(3) == 0)
                    stream.remove(place, 1 + random.bounded(3));
                else
                    stream[place] = "\r\n\0 :;,/=0aZ\xff"[random.bounded(13)];
            }
            const Outcome outcome = parsedWhole(stream);
            QCOMPARE(parsedAtRandom(stream, random), outcome);
            failures += outcome.contains("no HTTP") ? 1 : 0;
        }
        QCOMPARE_GT(failures, 0);
        QCOMPARE_LT(failures, rounds);
    }
};

ORRINET_TEST(TestRequestParser)
#include "tst_requestparser.moc"
