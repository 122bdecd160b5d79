// How a request goes out, given how the window asks.

#include "bridge/translation.h"
#include "tests/support/testcase.h"

#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;
using bridge::Format;
using bridge::ModelChoice;
using bridge::translate;

namespace {

QJsonObject jsonObject(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

QJsonObject translated(const QByteArray &body, Format format, const ModelChoice &models = {})
{
    return jsonObject(translate(body, format, models));
}

/// As the window asks for these keys.
QByteArray askingFor(const QStringList &keys, const QByteArray &text = "How many?")
{
    QJsonObject properties;
    for (const QString &key : keys)
        properties[key] = QJsonObject{{u"type"_s, u"string"_s}};
    const QJsonObject schema{
        {u"type"_s, u"object"_s}, {u"properties"_s, properties}, {u"required"_s, QJsonArray::fromStringList(keys)}};
    const QJsonObject question{{u"role"_s, u"user"_s}, {u"content"_s, QString::fromUtf8(text)}};
    return QJsonDocument(
               QJsonObject{{u"model"_s, u"asked"_s},
                           {u"messages"_s, QJsonArray{question}},
                           {u"response_format"_s, QJsonObject{{u"type"_s, u"json_object"_s}, {u"schema"_s, schema}}}})
        .toJson();
}

QByteArray withSchema(const QByteArray &schema)
{
    return R"({"response_format":{"type":"json_object","schema":)" + schema + "}}";
}

} // namespace

class TestTranslation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void where_nothing_is_to_be_changed_the_bytes_stay_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("everyFormat"); // else AsIs alone
        QTest::newRow("empty") << QByteArray() << true;
        QTest::newRow("no JSON") << "{\"model\": "_ba << true;
        QTest::newRow("no UTF-8") << "{\"model\": \"\xff\"}"_ba << true;
        QTest::newRow("a list") << "[ 1 ]"_ba << true;
        QTest::newRow("text question") << "{ \"messages\" : [],\r\n \"z\":1.50, \"a\":1e2 }\n"_ba << true;
        QTest::newRow("function") << R"({"tools": [{"function": {"parameters": {}}}], "tool_choice": {} })"_ba << true;
        QTest::newRow("format without a schema") << R"({"response_format": {"type": "json_object"} })"_ba << true;
        QTest::newRow("empty schema") << withSchema("{ }") << true;
        QTest::newRow("schema that is none") << withSchema("7") << true;
        QTest::newRow("strict already")
            << R"({"response_format": {"type":"json_schema","json_schema":{"schema":{"type":"object"}}}})"_ba << true;
        QTest::newRow("as the window asks") << askingFor({u"answer"_s}) << false;
    }
    void where_nothing_is_to_be_changed_the_bytes_stay()
    {
        QFETCH(const QByteArray, body);
        QFETCH(const bool, everyFormat);
        QCOMPARE(translate(body, Format::AsIs, {}), body);
        QCOMPARE(translate(body, Format::AsIs, {.always = {}, .instead = {{u"other"_s, u"m"_s}}}), body);
        for (const Format format : {Format::JsonSchema, Format::JsonObject})
            QCOMPARE(translate(body, format, {}) == body, everyFormat);
    }

    void a_schema_becomes_a_strict_one_data()
    {
        QTest::addColumn<QByteArray>("asked");
        QTest::addColumn<QByteArray>("sent");
        QTest::newRow("answer") << R"({"type":"object","properties":{"answer":{"type":"string"}},)"
                                   R"("required":["answer"]})"_ba
                                << R"({"type":"object","properties":{"answer":{"type":"string"}},)"
                                   R"("required":["answer"],"additionalProperties":false})"_ba;
        QTest::newRow("all are required")
            << R"({"type":"object","properties":{"b":{"type":"string"},"a":{"type":"number"}},"required":["b"]})"_ba
            << R"({"type":"object","properties":{"b":{"type":"string"},"a":{"type":"number"}},)"
               R"("required":["a","b"],"additionalProperties":false})"_ba;
        QTest::newRow("open") << R"({"type":"object","properties":{},"additionalProperties":true})"_ba
                              << R"({"type":"object","properties":{},"required":[],"additionalProperties":false})"_ba;
        QTest::newRow("within and in a list")
            << R"({"type":"object","properties":{"a":{"type":"object","properties":{"b":{"type":"array",)"
               R"("items":{"type":"object","properties":{"c":{"enum":[1]}}}}}}}})"_ba
            << R"({"type":"object","properties":{"a":{"type":"object","properties":{"b":{"type":"array",)"
               R"("items":{"type":"object","properties":{"c":{"enum":[1]}},"required":["c"],)"
               R"("additionalProperties":false}}},"required":["b"],"additionalProperties":false}},)"
               R"("required":["a"],"additionalProperties":false})"_ba;
    }
    void a_schema_becomes_a_strict_one()
    {
        QFETCH(const QByteArray, asked);
        QFETCH(const QByteArray, sent);
        const QJsonObject named{{u"name"_s, u"answer"_s}, {u"strict"_s, true}, {u"schema"_s, jsonObject(sent)}};
        const QJsonObject format{{u"type"_s, u"json_schema"_s}, {u"json_schema"_s, named}};
        QCOMPARE(translated(withSchema(asked), Format::JsonSchema), (QJsonObject{{u"response_format"_s, format}}));
    }

    void without_a_schema_the_keys_stand_in_a_message_data()
    {
        QTest::addColumn<QStringList>("keys");
        QTest::addColumn<QString>("named");
        QTest::newRow("answer") << QStringList{u"answer"_s} << u"answer"_s;
        QTest::newRow("reasoning too") << QStringList{u"answer"_s, u"reasoning"_s} << u"answer, reasoning"_s;
    }
    void without_a_schema_the_keys_stand_in_a_message()
    {
        QFETCH(const QStringList, keys);
        QFETCH(const QString, named);
        const QByteArray body = askingFor(keys);
        QJsonObject expected = jsonObject(body);
        expected["response_format"_L1] = QJsonObject{{u"type"_s, u"json_object"_s}};
        const QString text =
            u"Answer with one JSON object that has these keys, each with a string as its value: %1."_s.arg(named);
        const QJsonObject added{{u"role"_s, u"system"_s}, {u"content"_s, text}};
        expected["messages"_L1] = QJsonArray{expected["messages"_L1][0], added};
        QCOMPARE(translated(body, Format::JsonObject), expected);
    }

    void where_the_word_stands_no_message_is_added_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("alone") << "json"_ba;
        QTest::newRow("capitals") << "As JSON, please."_ba;
        QTest::newRow("within a word") << "geojsonlines"_ba;
    }
    void where_the_word_stands_no_message_is_added()
    {
        QFETCH(const QByteArray, text);
        const QByteArray body = askingFor({u"answer"_s}, text);
        QCOMPARE(translated(body, Format::JsonObject)["messages"_L1], jsonObject(body)["messages"_L1]);
    }

    void models_are_replaced_data()
    {
        QTest::addColumn<QString>("always");
        QTest::addColumn<QString>("a"); // what is asked in place of "a" and "b"
        QTest::addColumn<QString>("b");
        QTest::addColumn<bool>("insteadOfA");
        QTest::newRow("none") << QString() << u"a"_s << u"b"_s << false;
        QTest::newRow("always") << u"m"_s << u"m"_s << u"m"_s << false;
        QTest::newRow("one of them") << QString() << u"x"_s << u"b"_s << true;
        QTest::newRow("one of them, the others always") << u"m"_s << u"x"_s << u"m"_s << true;
    }
    void models_are_replaced()
    {
        QFETCH(const QString, always);
        QFETCH(const QString, a);
        QFETCH(const QString, b);
        QFETCH(const bool, insteadOfA);
        ModelChoice models{.always = always, .instead = {}};
        if (insteadOfA)
            models.instead[u"a"_s] = u"x"_s;
        for (const Format format : {Format::JsonSchema, Format::JsonObject, Format::AsIs}) {
            QCOMPARE(translated(R"({"model":"a","n":1})", format, models), (QJsonObject{{u"model"_s, a}, {u"n"_s, 1}}));
            QCOMPARE(translated(R"({"model":"b"})", format, models)["model"_L1], b);
        }
    }

    void all_else_stays_what_it_is()
    {
        QJsonObject body = jsonObject(askingFor({u"answer"_s}, "\u00e9\u2713 \\ \" \n\t \u0001"));
        body["temperature"_L1] = 0.2;
        body["seed"_L1] = 9'007'199'254'740'993LL;
        body["nothing"_L1] = QJsonValue();
        const QByteArray bytes = QJsonDocument(body).toJson();
        for (const Format format : {Format::JsonSchema, Format::JsonObject}) {
            QJsonObject sent = translated(bytes, format, {.always = u"m"_s, .instead = {}});
            QCOMPARE(sent.take("model"_L1), u"m"_s);
            QCOMPARE(sent.take("messages"_L1)[0], body["messages"_L1][0]);
            QVERIFY(sent.take("response_format"_L1) != body["response_format"_L1]);
            QCOMPARE(sent,
                     (QJsonObject{
                         {u"temperature"_s, 0.2}, {u"seed"_s, 9'007'199'254'740'993LL}, {u"nothing"_s, QJsonValue()}}));
        }
    }
};

ORRINET_TEST(TestTranslation)
#include "tst_translation.moc"
