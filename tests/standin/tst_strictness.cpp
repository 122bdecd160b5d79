// What the endpoint turns down as the hosted service does, and what it says of the replies that it gives.

#include "standin/chatendpoint.h"
#include "standin/detour.h"
#include "standin/respondent.h"
#include "standin/strictness.h"
#include "tests/standin/client.h"
#include "tests/support/patience.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Reply;
using standin::Request;
using standin::Respond;

namespace {

/// A request of one user message.
QJsonObject asking(const QString &text, const QJsonObject &format = {})
{
    const QJsonObject question{{u"role"_s, u"user"_s}, {u"content"_s, text}};
    QJsonObject body{{u"model"_s, u"wanted"_s}, {u"messages"_s, QJsonArray{question}}};
    if (!format.isEmpty())
        body["response_format"_L1] = format;
    return body;
}

QJsonObject object(const char *json)
{
    return QJsonDocument::fromJson(json).object();
}

QJsonObject schemaFormatOf(const QJsonObject &named)
{
    return {{u"type"_s, u"json_schema"_s}, {u"json_schema"_s, named}};
}

/// A strict schema as the service takes it, but for what is put in place of its parts.
QJsonObject strictFormat(const QJsonObject &schema, const QString &name = u"answer"_s)
{
    return schemaFormatOf({{u"name"_s, name}, {u"strict"_s, true}, {u"schema"_s, schema}});
}

Reply replyOf(const Respond &respond, const QByteArray &body)
{
    Request request;
    request.body = body;
    return respond(request);
}

Reply replyOf(const Respond &respond, const QJsonObject &body)
{
    return replyOf(respond, QJsonDocument(body).toJson());
}

Reply answerOk(const Request & /*request*/)
{
    return Reply::content(u"four"_s);
}

QString messageOf(const Reply &reply)
{
    return QJsonDocument::fromJson(reply.body)["error"_L1]["message"_L1].toString();
}

QString codeOf(const Reply &reply)
{
    return QJsonDocument::fromJson(reply.body)["error"_L1]["code"_L1].toString();
}

} // namespace

class TestStrictness : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_format_is_taken_or_turned_down_with_its_reason_data()
    {
        QTest::addColumn<QJsonObject>("format");
        QTest::addColumn<QString>("message"); // empty: taken
        const QJsonObject closed = object(R"({"type":"object","properties":{"a":{"type":"string"}},)"
                                          R"("required":["a"],"additionalProperties":false})");
        QJsonObject open = closed;
        open.remove("additionalProperties"_L1);
        QJsonObject optional = closed;
        optional["required"_L1] = QJsonArray();
        QJsonObject nested = closed;
        nested["properties"_L1] = QJsonObject{{u"a"_s, open}};
        QJsonObject listed = closed;
        listed["properties"_L1] = QJsonObject{{u"a"_s, QJsonObject{{u"type"_s, u"array"_s}, {u"items"_s, open}}}};

        QTest::newRow("none") << QJsonObject() << QString();
        QTest::newRow("text") << object(R"({"type":"text"})") << QString();
        QTest::newRow("strict schema") << strictFormat(closed) << QString();
        QTest::newRow("open, but not strict")
            << schemaFormatOf({{u"name"_s, u"a"_s}, {u"schema"_s, open}}) << QString();
        QTest::newRow("schema beside the type")
            << object(R"({"type":"json_object","schema":{}})") << u"Unknown parameter: 'response_format.schema'."_s;
        QTest::newRow("schema beside the name")
            << schemaFormatOf({{u"name"_s, u"a"_s}, {u"schema"_s, closed}, {u"form"_s, 1}})
            << u"Unknown parameter: 'response_format.json_schema.form'."_s;
        QTest::newRow("no word of it") << object(R"({"type":"json_object"})")
                                       << u"'messages' must contain the word 'json' in some form, to use "
                                          "'response_format' of type 'json_object'."_s;
        QTest::newRow("no type") << object(R"({"typ":"text"})") << u"Unknown parameter: 'response_format.typ'."_s;
        QTest::newRow("another type")
            << object(R"({"type":"xml"})")
            << u"Invalid value: 'xml'. Supported values are: 'json_object', 'json_schema', and 'text'."_s;
        QTest::newRow("nothing in it") << object(R"({"type":"json_schema"})")
                                       << u"Missing required parameter: 'response_format.json_schema'."_s;
        QTest::newRow("no name") << schemaFormatOf({{u"schema"_s, closed}})
                                 << u"Missing required parameter: 'response_format.json_schema.name'."_s;
        QTest::newRow("a name of two words")
            << strictFormat(closed, u"the answer"_s)
            << u"Invalid 'response_format.json_schema.name': string does not match pattern. Expected a string that "
               "matches the pattern '^[a-zA-Z0-9_-]+$'."_s;
        QTest::newRow("no schema") << schemaFormatOf({{u"name"_s, u"a"_s}})
                                   << u"Invalid schema for response_format 'a': schema must be a JSON Schema of "
                                      "'type: \"object\"', got 'type: \"None\"'."_s;
        const QString start = u"Invalid schema for response_format 'answer': In context=(%1), "_s;
        const QString wantsClosed = u"'additionalProperties' is required to be supplied and to be false."_s;
        QTest::newRow("open") << strictFormat(open) << start.arg(QString()) + wantsClosed;
        QTest::newRow("optional") << strictFormat(optional)
                                  << start.arg(QString()) +
                                         "'required' is required to be supplied and to be an array including every "
                                         "key in properties. Missing 'a'."_L1;
        QJsonObject unset = closed;
        unset["items"_L1] = QJsonValue();
        QTest::newRow("a key without a value")
            << strictFormat(unset) << start.arg(QString()) + "None is not of type 'object', 'boolean'."_L1;
        QTest::newRow("open within") << strictFormat(nested) << start.arg(u"'properties', 'a'"_s) + wantsClosed;
        QTest::newRow("open in a list") << strictFormat(listed)
                                        << start.arg(u"'properties', 'a', 'items'"_s) + wantsClosed;
    }
    void a_format_is_taken_or_turned_down_with_its_reason()
    {
        QFETCH(const QJsonObject, format);
        QFETCH(const QString, message);
        const Reply reply = replyOf(standin::strict(answerOk), asking(u"How many?"_s, format));
        QCOMPARE(messageOf(reply), message);
        QCOMPARE(reply.code, message.isEmpty() ? 200 : 400);
        QCOMPARE(QJsonDocument::fromJson(reply.body).object().contains("choices"_L1), message.isEmpty());
    }

    void the_word_may_stand_in_any_case()
    {
        const Respond respond = standin::strict(answerOk);
        QCOMPARE(replyOf(respond, asking(u"As Json, please."_s, object(R"({"type":"json_object"})"))).code, 200);
    }

    void a_request_without_its_parts_is_turned_down_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("message");
        QTest::newRow("no JSON") << "no JSON"_ba << u"We could not parse the JSON body of your request."_s;
        QTest::newRow("no model") << R"({"messages":[]})"_ba << u"Missing required parameter: 'model'."_s;
        QTest::newRow("no messages") << R"({"model":"m"})"_ba << u"Missing required parameter: 'messages'."_s;
    }
    void a_request_without_its_parts_is_turned_down()
    {
        QFETCH(const QByteArray, body);
        QFETCH(const QString, message);
        const Reply reply = replyOf(standin::strict(answerOk), body);
        QCOMPARE(reply.code, 400);
        QCOMPARE(messageOf(reply), message);
    }

    void the_context_takes_so_many_tokens_and_no_more()
    {
        const Respond respond = standin::strict(answerOk, 10);
        QCOMPARE(replyOf(respond, asking(QString(40, u'x'))).code, 200);
        const Reply reply = replyOf(respond, asking(QString(41, u'x')));
        QCOMPARE(reply.code, 400);
        QCOMPARE(codeOf(reply), u"context_length_exceeded"_s);
    }

    void a_reply_tells_what_it_took_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<int>("tokensOut");
        QTest::newRow("content") << Reply::content(u"12345"_s) << 2;
        QTest::newRow("function call") << Reply::toolCall(u"123456789"_s) << 3;
        QTest::newRow("empty") << Reply::content(QString()) << 0;
    }
    void a_reply_tells_what_it_took()
    {
        QFETCH(const Reply, reply);
        QFETCH(const int, tokensOut);
        const Respond respond = standin::strict([reply](const Request &) { return reply; });
        const QJsonObject told = QJsonDocument::fromJson(replyOf(respond, asking(u"12345678"_s)).body).object();
        QCOMPARE(told["usage"_L1].toObject(), (QJsonObject{{u"prompt_tokens"_s, 2},
                                                           {u"completion_tokens"_s, tokensOut},
                                                           {u"total_tokens"_s, 2 + tokensOut}}));
        QCOMPARE(told["model"_L1], u"wanted"_s);
        QCOMPARE(told["system_fingerprint"_L1], u"fp_standin"_s);
        QCOMPARE(told["choices"_L1], QJsonDocument::fromJson(reply.body)["choices"_L1]);
    }

    void a_reply_that_is_no_completion_stays_as_it_is()
    {
        const Respond respond = standin::strict([](const Request &) { return Reply::status(500, "oops"); });
        const Reply reply = replyOf(respond, asking(u"How many?"_s));
        QCOMPARE(reply.code, 500);
        QCOMPARE(reply.body, "oops"_ba);
    }

    void turns_are_counted_exactly()
    {
        const Respond respond = standin::takingTurns(2, 3, "7", answerOk);
        const Respond same = respond;
        QList<int> codes;
        for (int i = 0; i < 5; ++i)
            codes << replyOf(respond, asking(u"a"_s)).code << replyOf(same, asking(u"b"_s)).code;
        QCOMPARE(codes, (QList<int>{200, 200, 429, 429, 429, 200, 200, 429, 429, 429}));
        const Reply refusal = replyOf(standin::takingTurns(0, 1, "7", answerOk), asking(u"a"_s));
        QCOMPARE(codeOf(refusal), u"rate_limit_exceeded"_s);
        QCOMPARE(refusal.headers, (QList<standin::Header>{{"Retry-After"_ba, "7"_ba}}));
    }

    void no_more_than_so_many_at_a_time()
    {
        ChatEndpoint endpoint;
        const standin::Detour detour(endpoint);
        const Respond held = [](const Request &) { return Reply::content(u"held"_s).held(); };
        endpoint.answerWith(standin::atATime(endpoint, 2, "0", held));
        Client first;
        Client second;
        QSignalSpy arrived(&endpoint, &ChatEndpoint::requestArrived);
        const QNetworkReply *firstReply = first.post();
        const QNetworkReply *secondReply = second.post();
        while (arrived.size() < 2)
            QVERIFY(arrived.wait());
        QCOMPARE(Client().posted()->attribute(QNetworkRequest::HttpStatusCodeAttribute), 429);

        QSignalSpy firstFinished(firstReply, &QNetworkReply::finished);
        QSignalSpy secondFinished(secondReply, &QNetworkReply::finished);
        endpoint.release();
        QVERIFY(!firstFinished.isEmpty() || firstFinished.wait(patience));
        QVERIFY(!secondFinished.isEmpty() || secondFinished.wait(patience));
        QNetworkReply *third = first.post();
        QVERIFY(arrived.wait());
        QVERIFY(!third->isFinished());
        endpoint.release();
        QVERIFY(QSignalSpy(third, &QNetworkReply::finished).wait());
        QCOMPARE(third->error(), QNetworkReply::NoError);
    }

    void a_respondent_answers_every_form_alike_data()
    {
        QTest::addColumn<bool>("reasoning");
        QTest::newRow("with reasoning") << true;
        QTest::newRow("without reasoning") << false;
    }
    void a_respondent_answers_every_form_alike()
    {
        QFETCH(const bool, reasoning);
        const QStringList keys = reasoning ? QStringList{u"answer"_s, u"reasoning"_s} : QStringList{u"answer"_s};
        QJsonObject properties;
        for (const QString &key : keys)
            properties[key] = QJsonObject{{u"type"_s, u"string"_s}};
        const QJsonObject schema{{u"type"_s, u"object"_s},
                                 {u"properties"_s, properties},
                                 {u"required"_s, QJsonArray::fromStringList(keys)},
                                 {u"additionalProperties"_s, false}};
        QJsonObject unshaped = asking(u"How many?"_s, object(R"({"type":"json_object"})"));
        const QJsonObject persona{{u"role"_s, u"system"_s}, {u"content"_s, u"You keep bees."_s}};
        const QJsonObject form{{u"role"_s, u"system"_s}, {u"content"_s, u"JSON: %1"_s.arg(keys.join(u", "_s))}};
        const QJsonObject question = unshaped["messages"_L1][0].toObject();
        unshaped["messages"_L1] = QJsonArray{persona, question, form};
        QJsonObject shaped = asking(u"How many?"_s, strictFormat(schema));
        shaped["messages"_L1] = QJsonArray{persona, question};
        QJsonObject reported =
            asking(u"How many?"_s, QJsonObject{{u"type"_s, u"json_object"_s}, {u"schema"_s, schema}});
        reported["messages"_L1] = shaped["messages"_L1];

        const Respond respond = standin::strict(standin::respond);
        const QString answer = contentOf(replyOf(respond, shaped).body);
        QCOMPARE(QJsonDocument::fromJson(answer.toUtf8()).object().keys(), keys);
        QCOMPARE(contentOf(replyOf(respond, unshaped).body), answer);
        QCOMPARE(contentOf(replyOf(standin::respond, reported).body), answer);
    }
};

ORRINET_TEST(TestStrictness)
#include "tst_strictness.moc"
