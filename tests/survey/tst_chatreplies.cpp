#include "tests/support/patience.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"
#include "tests/survey/chatexchange.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Reply;
using standin::Request;

namespace {

/// A reply whose first choice has this message.
QByteArray firstMessage(const QByteArray &message)
{
    return R"({"id": "x", "choices": [{"message": )"_ba + message + "}]}";
}

/// A message with this tool call and the content "spoken".
QByteArray withCall(const QByteArray &call)
{
    return firstMessage(R"({"content": "spoken", "tool_calls": [)"_ba + call + "]}");
}

} // namespace

class TestChatReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_answer_is_taken_from_the_first_choice_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("answer");
        const QString nothing;

        QTest::newRow("content") << firstMessage(R"({"content": "spoken"})") << u"spoken"_s;
        QTest::newRow("content as it stands") << firstMessage(R"({"content": " spoken\n"})") << u" spoken\n"_s;
        QTest::newRow("empty content") << firstMessage(R"({"content": ""})") << nothing;
        QTest::newRow("null content") << firstMessage(R"({"content": null})") << nothing;
        QTest::newRow("numeric content") << firstMessage(R"({"content": 7})") << nothing;
        QTest::newRow("array content") << firstMessage(R"({"content": ["spoken"]})") << nothing;
        QTest::newRow("no content") << firstMessage(R"({"role": "assistant"})") << nothing;

        QTest::newRow("call and content") << withCall(R"({"function": {"arguments": "called"}})") << u"called"_s;
        QTest::newRow("call alone") << firstMessage(R"({"tool_calls": [{"function": {"arguments": "called"}}]})")
                                    << u"called"_s;
        QTest::newRow("arguments as they stand")
            << withCall(R"({"function": {"arguments": " {\u0022answer\u0022 : 1}\n"}})") << u" {\"answer\" : 1}\n"_s;
        QTest::newRow("two calls")
            << withCall(R"({"function": {"arguments": "called"}}, {"function": {"arguments": "more"}})") << u"called"_s;
        QTest::newRow("empty first call of two")
            << withCall(R"({"function": {"arguments": ""}}, {"function": {"arguments": "more"}})") << u"spoken"_s;
        QTest::newRow("empty arguments") << withCall(R"({"function": {"arguments": ""}})") << u"spoken"_s;
        QTest::newRow("null arguments") << withCall(R"({"function": {"arguments": null}})") << u"spoken"_s;
        QTest::newRow("arguments an object")
            << withCall(R"({"function": {"arguments": {"answer": "x"}}})") << u"spoken"_s;
        QTest::newRow("no arguments") << withCall(R"({"function": {"name": "select_answer"}})") << u"spoken"_s;
        QTest::newRow("no function") << withCall(R"({"id": "x"})") << u"spoken"_s;
        QTest::newRow("call no object") << withCall(R"("call")") << u"spoken"_s;
        QTest::newRow("no calls") << withCall("") << u"spoken"_s;
        QTest::newRow("calls no array")
            << firstMessage(R"({"content": "spoken", "tool_calls": {"function": {"arguments": "x"}}})") << u"spoken"_s;
        QTest::newRow("empty arguments and null content")
            << firstMessage(R"({"content": null, "tool_calls": [{"function": {"arguments": ""}}]})") << nothing;

        QTest::newRow("two choices")
            << R"({"choices": [{"message": {"content": "one"}}, {"message": {"content": "two"}}]})"_ba << u"one"_s;
        QTest::newRow("empty first choice of two")
            << R"({"choices": [{"message": {"content": null}}, {"message": {"content": "two"}}]})"_ba << nothing;
        QTest::newRow("no message") << R"({"choices": [{"index": 0}]})"_ba << nothing;
        QTest::newRow("message no object") << firstMessage(R"("spoken")") << nothing;
        QTest::newRow("choice no object") << R"({"choices": ["spoken"]})"_ba << nothing;
        QTest::newRow("empty choices") << R"({"choices": []})"_ba << nothing;
        QTest::newRow("choices no array") << R"({"choices": {"message": {"content": "spoken"}}})"_ba << nothing;
        QTest::newRow("no choices") << R"({"content": "spoken"})"_ba << nothing;
        QTest::newRow("error object") << R"({"error": {"message": "spoken"}})"_ba << nothing;
        QTest::newRow("body an array") << R"([{"message": {"content": "spoken"}}])"_ba << nothing;
        QTest::newRow("no JSON") << "spoken"_ba << nothing;
        QTest::newRow("JSON and more") << firstMessage(R"({"content": "spoken"})") + "x" << nothing;
        QTest::newRow("no UTF-8") << firstMessage("{\"content\": \"\xFFspoken\"}") << nothing;
        QTest::newRow("nothing at all") << ""_ba << nothing;
    }
    void the_answer_is_taken_from_the_first_choice()
    {
        SurveyStage stage;
        QFETCH(const QByteArray, body);
        QFETCH(const QString, answer);
        stage.endpoint.queue(Reply::json(body));
        ChatExchange exchange;
        exchange.sendAnything();
        QVERIFY(exchange.ended());
        QCOMPARE(exchange.outcome(),
                 (QStringList{"rawResponse: "_L1 + QString::fromUtf8(body), "responseReceived: "_L1 + answer}));
    }

    void a_reply_in_pieces_is_read_whole()
    {
        SurveyStage stage;
        const Reply reply = Reply::content(u"word "_s.repeated(40).trimmed());
        stage.endpoint.queue(reply.dripping(100, 0));
        ChatExchange exchange;
        exchange.sendAnything();
        QVERIFY(exchange.ended());
        QCOMPARE(exchange.outcome(), (QStringList{"rawResponse: "_L1 + QString::fromUtf8(reply.body),
                                                  "responseReceived: "_L1 + u"word "_s.repeated(40).trimmed()}));
    }

    void it_deletes_itself_after_the_reply()
    {
        SurveyStage stage;
        stage.endpoint.queue(Reply::content(u"Fine."_s).held());
        ChatExchange exchange;
        exchange.sendAnything();
        const QPointer<ChatRequester> requester(exchange.object());
        const QPointer<QNetworkReply> reply(requester->findChild<QNetworkReply *>());
        QVERIFY(reply != nullptr);
        QVERIFY(stage.arrived(1));
        QSignalSpy answered(requester, &ChatRequester::responseReceived);
        connect(requester, &ChatRequester::responseReceived, this, [&] {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(requester != nullptr && reply != nullptr);
        });
        stage.endpoint.release();
        QVERIFY(exchange.ended());
        QCOMPARE(answered.size(), 1);
        QVERIFY(requester == nullptr && reply == nullptr);
    }

    void a_successor_may_be_sent_from_within_the_answer()
    {
        SurveyStage stage;
        stage.endpoint.queue(Reply::content(u"one"_s));
        stage.endpoint.queue(Reply::content(u"two"_s));
        QObject parent;
        ChatExchange first(&parent);
        ChatExchange second(&parent);
        connect(first.object(), &ChatRequester::responseReceived, &parent, [&second] { second.sendAnything(); });
        first.sendAnything();
        QVERIFY(first.ended());
        QVERIFY(second.ended());
        QCOMPARE(first.events().constLast(), u"responseReceived: one"_s);
        QCOMPARE(second.events().constLast(), u"responseReceived: two"_s);
    }

    void no_connection_outlives_its_request()
    {
        SurveyStage stage;
        stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s).keptAlive(); });
        QObject parent;
        QSignalSpy closed(&stage.endpoint, &ChatEndpoint::connectionClosed);
        for (int count = 1; count <= 3; ++count) {
            ChatExchange exchange(&parent);
            exchange.sendAnything();
            QVERIFY(exchange.ended());
            QVERIFY(closed.size() == count || closed.wait(patience));
            QCOMPARE(stage.endpoint.connections(), count);
        }
    }

    void destroying_the_parent_aborts_the_request()
    {
        SurveyStage stage;
        stage.endpoint.queue(Reply::content(u"Fine."_s).held());
        auto parent = std::make_unique<QObject>();
        ChatExchange exchange(parent.get());
        exchange.sendAnything();
        QVERIFY(stage.arrived(1));
        QCOMPARE(stage.endpoint.inFlight(), 1);

        QSignalSpy closed(&stage.endpoint, &ChatEndpoint::connectionClosed);
        parent.reset();
        QVERIFY(closed.wait(patience));
        QCOMPARE(stage.endpoint.inFlight(), 0);
        QVERIFY(exchange.outcome().isEmpty());
    }
};

ORRINET_TEST(TestChatReplies)
#include "tst_chatreplies.moc"
