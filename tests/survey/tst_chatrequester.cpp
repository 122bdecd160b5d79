#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"
#include "tests/survey/chatexchange.h"

#include <QJsonDocument>
#include <QMetaMethod>
#include <QNetworkAccessManager>
#include <QSettings>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;
using standin::Reply;

class TestChatRequester : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void signals_and_slots_stand_in_their_order()
    {
        const QMetaObject &meta = ChatRequester::staticMetaObject;
        QList<QByteArray> methods;
        for (int index = meta.methodOffset(); index < meta.methodCount(); ++index)
            methods << meta.method(index).methodSignature();
        QCOMPARE(methods,
                 (QList<QByteArray>{"responseReceived(QString)", "requestFailed(QString)", "requestSent(QString)",
                                    "rawResponse(QString)", "finished()", "handleSslErrors(QList<QSslError>)"}));
    }

    void a_request_is_a_post_to_the_endpoint()
    {
        SurveyStage stage;
        ChatExchange exchange;
        exchange.sendAnything();
        QVERIFY(exchange.ended());
        QCOMPARE(stage.endpoint.requests().size(), 1);
        QCOMPARE(stage.endpoint.requests().constFirst().requestLine, "POST /v1/chat/completions HTTP/1.1"_ba);
        QCOMPARE(stage.endpoint.requests().constFirst().connectTarget, u"api.openai.com:443"_s);
    }

    void signals_come_in_the_order_of_the_exchange()
    {
        SurveyStage stage;
        const Reply reply = Reply::content(u"Fine."_s);
        stage.endpoint.queue(reply);
        ChatExchange exchange;
        exchange.sendAnything();
        QCOMPARE(exchange.events().size(), 1);
        QVERIFY(exchange.ended());
        QCOMPARE(exchange.events(),
                 (QStringList{"requestSent: "_L1 + QString::fromUtf8(stage.endpoint.requests().constFirst().body),
                              "rawResponse: "_L1 + QString::fromUtf8(reply.body), u"responseReceived: Fine."_s}));
    }

    void nothing_has_gone_out_when_the_body_is_told()
    {
        SurveyStage stage;
        ChatExchange exchange;
        QList<QNetworkAccessManager *> managers{nullptr};
        connect(exchange.object(), &ChatRequester::requestSent, exchange.object(),
                [&] { managers = exchange.object()->findChildren<QNetworkAccessManager *>(); });
        exchange.sendAnything();
        QVERIFY(managers.isEmpty());
        QCOMPARE(exchange.object()->findChildren<QNetworkAccessManager *>().size(), 1);
        QVERIFY(exchange.ended());
    }

    void a_full_body_is_sent_to_the_byte()
    {
        SurveyStage stage;
        ChatExchange exchange;
        exchange.object()->send({QJsonObject{{u"role"_s, u"user"_s}, {u"content"_s, u"Well?"_s}}}, u"some-model"_s,
                                {QJsonObject{{u"type"_s, u"function"_s}}}, {{u"type"_s, u"function"_s}},
                                {{u"type"_s, u"json_object"_s}}, 0.5);
        QVERIFY(exchange.ended());
        QCOMPARE(stage.endpoint.requests().constFirst().body, R"({
    "messages": [
        {
            "content": "Well?",
            "role": "user"
        }
    ],
    "model": "some-model",
    "response_format": {
        "type": "json_object"
    },
    "temperature": 0.5,
    "tool_choice": {
        "type": "function"
    },
    "tools": [
        {
            "type": "function"
        }
    ]
}
)"_ba);
    }

    void empty_arguments_leave_their_keys_out_data()
    {
        QTest::addColumn<QJsonArray>("tools");
        QTest::addColumn<QJsonObject>("toolChoice");
        QTest::addColumn<QJsonObject>("responseFormat");
        QTest::addColumn<double>("temperature");
        QTest::addColumn<QJsonObject>("further");

        const QJsonArray tools{QJsonObject{{u"type"_s, u"function"_s}}, 7};
        const QJsonObject choice{{u"type"_s, u"function"_s}};
        const QJsonObject format{{u"type"_s, u"json_object"_s}};
        const QJsonArray noTools;
        const QJsonObject none;
        QTest::newRow("nothing") << noTools << none << none << -1.0 << none;
        QTest::newRow("tools alone") << tools << none << none << -1.0 << QJsonObject{{u"tools"_s, tools}};
        QTest::newRow("tool choice alone")
            << noTools << choice << none << -1.0 << QJsonObject{{u"tool_choice"_s, choice}};
        QTest::newRow("format alone") << noTools << none << format << -1.0
                                      << QJsonObject{{u"response_format"_s, format}};
        QTest::newRow("temperature just below 0") << noTools << none << none << -1e-9 << none;
        QTest::newRow("temperature 0") << noTools << none << none << 0.0 << QJsonObject{{u"temperature"_s, 0}};
        QTest::newRow("temperature above 0")
            << noTools << none << none << 1.25 << QJsonObject{{u"temperature"_s, 1.25}};
        QTest::newRow("temperature no number")
            << noTools << none << none << std::numeric_limits<double>::quiet_NaN() << none;
        QTest::newRow("all") << tools << choice << format << 2.0
                             << QJsonObject{{u"tools"_s, tools},
                                            {u"tool_choice"_s, choice},
                                            {u"response_format"_s, format},
                                            {u"temperature"_s, 2}};
    }
    void empty_arguments_leave_their_keys_out()
    {
        SurveyStage stage;
        QFETCH(const QJsonArray, tools);
        QFETCH(const QJsonObject, toolChoice);
        QFETCH(const QJsonObject, responseFormat);
        QFETCH(const double, temperature);
        QFETCH(const QJsonObject, further);
        QJsonObject body = further;
        body.insert("model"_L1, u"some-model"_s);
        body.insert("messages"_L1, QJsonArray());

        ChatExchange exchange;
        exchange.object()->send({}, u"some-model"_s, tools, toolChoice, responseFormat, temperature);
        QVERIFY(exchange.ended());
        QCOMPARE(stage.endpoint.requests().constFirst().body, QJsonDocument(body).toJson(QJsonDocument::Indented));
    }

    void an_empty_model_is_replaced()
    {
        SurveyStage stage;
        ChatExchange exchange;
        exchange.object()->send({}, QString(), {}, {}, {}, -1.0);
        QVERIFY(exchange.ended());
        QCOMPARE(stage.endpoint.requests().constFirst().json()["model"_L1].toString(), u"gpt-4o-mini"_s);
    }

    void texts_travel_in_utf8()
    {
        SurveyStage stage;
        const QJsonArray messages{u"\u00E4 \u20AC \U0001F41D\n\t\\ /"_s};
        const QString answer = u"\u00DF \u4E2D \U0001F331"_s;
        stage.endpoint.queue(Reply::content(answer));
        ChatExchange exchange;
        exchange.object()->send(messages, u"some-model"_s, {}, {}, {}, -1.0);
        QVERIFY(exchange.ended());
        QVERIFY(stage.endpoint.requests().constFirst().body.contains("\u00E4 \u20AC \U0001F41D"));
        QCOMPARE(stage.endpoint.requests().constFirst().json()["messages"_L1].toArray(), messages);
        QVERIFY(exchange.events().constFirst().contains(u"\u00E4 \u20AC \U0001F41D"_s));
        QVERIFY(exchange.events().at(1).contains(answer));
        QCOMPARE(exchange.events().constLast(), "responseReceived: "_L1 + answer);
    }

    void the_key_goes_out_as_it_stands_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("plain") << u"test-key_1"_s;
        QTest::newRow("blank within") << u"test key"_s;
        QTest::newRow("blanks in front") << u"  test-key"_s;
        QTest::newRow("blanks behind") << u"test-key  "_s;
        QTest::newRow("blanks only") << u"   "_s;
        QTest::newRow("beyond ASCII") << u"schl\u00FCssel-\u20AC"_s;
        QTest::newRow("quotes") << u"\"test\""_s;
    }
    void the_key_goes_out_as_it_stands()
    {
        SurveyStage stage;
        QFETCH(const QString, key);
        Stage::setSetting(u"openai/api_key"_s, key);
        ChatExchange exchange;
        exchange.sendAnything();
        QVERIFY(exchange.ended());
        const QByteArray head = stage.endpoint.requests().constFirst().head;
        // The network layer drops blanks at the end of a line: they are no part of a header's value.
        QByteArray line = ": Bearer " + key.toUtf8();
        while (line.endsWith(' '))
            line.chop(1);
        line += "\r\n";
        QVERIFY2(head.contains(line), head.constData());
        QCOMPARE(head.toLower().count("\r\nauthorization: "), 1);
    }

    void the_content_type_has_no_addition()
    {
        SurveyStage stage;
        ChatExchange exchange;
        exchange.sendAnything();
        QVERIFY(exchange.ended());
        const QByteArray head = stage.endpoint.requests().constFirst().head.toLower();
        QCOMPARE(head.count("\r\ncontent-type: "), 1);
        QCOMPARE(head.count("\r\ncontent-type: application/json\r\n"), 1);
    }

    void the_key_is_read_when_the_object_is_made()
    {
        SurveyStage stage;
        ChatExchange exchange;
        Stage::setSetting(u"openai/api_key"_s, u"later-key"_s);
        exchange.sendAnything();
        QVERIFY(exchange.ended());
        QCOMPARE(stage.endpoint.requests().constFirst().header("Authorization"), "Bearer test-key"_ba);
    }

    void without_a_key_nothing_is_sent_data()
    {
        QTest::addColumn<QVariant>("key");
        QTest::newRow("no entry") << QVariant();
        QTest::newRow("empty entry") << QVariant(QString());
    }
    void without_a_key_nothing_is_sent()
    {
        SurveyStage stage;
        QFETCH(const QVariant, key);
        QSettings settings;
        if (key.isValid())
            settings.setValue("openai/api_key"_L1, key);
        else
            settings.remove("openai/api_key"_L1);
        QObject parent;
        ChatExchange exchange(&parent);
        exchange.sendAnything();
        QCOMPARE(exchange.events(), QStringList{u"requestFailed: OPENAI_API_KEY not set"_s});
        QVERIFY(exchange.object()->children().isEmpty());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(exchange.object() != nullptr);
    }

    void the_environment_holds_no_key()
    {
        SurveyStage stage;
        Stage::setSetting(u"openai/api_key"_s, QString());
        qputenv("OPENAI_API_KEY", "environment-key");
        ChatExchange exchange;
        exchange.sendAnything();
        qunsetenv("OPENAI_API_KEY");
        QCOMPARE(exchange.events(), QStringList{u"requestFailed: OPENAI_API_KEY not set"_s});
    }
};

ORRINET_TEST(TestChatRequester)
#include "tst_chatrequester.moc"
