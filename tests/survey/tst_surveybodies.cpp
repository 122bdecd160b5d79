#include "tests/survey/surveystage.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

class TestSurveyBodies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_answer_type_shapes_the_body_data();
    void the_answer_type_shapes_the_body();
    void the_texts_make_the_system_message_data();
    void the_texts_make_the_system_message();
    void the_question_goes_out_as_stored();
};

namespace {

/// What a single choice adds to a body, given its labels and required keys as JSON.
QByteArray tool(const QByteArray &labels, const QByteArray &required)
{
    return R"({"tools": [{"type": "function", "function": {
                 "name": "select_answer", "description": "Pick exactly one option",
                 "parameters": {"type": "object",
                                "properties": {"answer": {"type": "string", "enum": )"_ba +
           labels + R"(}, "reasoning": {"type": "string"}}, "required": )" + required + R"(}}}],
               "tool_choice": {"type": "function", "function": {"name": "select_answer"}}})";
}

const QByteArray format = R"({"response_format": {"type": "json_object", "schema": {
    "type": "object", "properties": {"answer": {"type": "string"}}, "required": ["answer"]}}})"_ba;
const QByteArray reasonedFormat = R"({"response_format": {"type": "json_object", "schema": {
    "type": "object", "properties": {"answer": {"type": "string"}, "reasoning": {"type": "string"}},
    "required": ["answer", "reasoning"]}}})"_ba;
const QByteArray nothing = "{}"_ba;

} // namespace

void TestSurveyBodies::the_answer_type_shapes_the_body_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QVariant>("labels");
    QTest::addColumn<int>("reasoning");
    QTest::addColumn<QByteArray>("further");

    const QVariant labels(uR"(["yes","no"])"_s);
    const QString choice = u"single_choice"_s;
    QTest::newRow("single choice") << choice << labels << 0 << tool(R"(["yes", "no"])", R"(["answer"])");
    QTest::newRow("single choice with reasoning")
        << choice << labels << 1 << tool(R"(["yes", "no"])", R"(["answer", "reasoning"])");
    QTest::newRow("labels as they are") << choice << QVariant(uR"( [ "", 7, null, "yes", "yes", ["\u00e4"] ] )"_s) << 0
                                        << tool(R"(["", 7, null, "yes", "yes", ["\u00e4"]])", R"(["answer"])");
    QTest::newRow("no labels") << choice << QVariant(u"[]"_s) << 1 << nothing;
    QTest::newRow("labels NULL") << choice << QVariant() << 1 << nothing;
    QTest::newRow("labels empty") << choice << QVariant(u""_s) << 1 << nothing;
    QTest::newRow("labels no JSON") << choice << QVariant(u"yes, no"_s) << 1 << nothing;
    QTest::newRow("labels an object") << choice << QVariant(uR"({"yes": "no"})"_s) << 1 << nothing;
    for (const char *type : {"numeric", "multi_choice", "likert", "ranking"}) {
        QTest::addRow("%s", type) << QString::fromLatin1(type) << labels << 0 << format;
        QTest::addRow("%s with reasoning", type) << QString::fromLatin1(type) << labels << 1 << reasonedFormat;
        QTest::addRow("%s without labels", type) << QString::fromLatin1(type) << QVariant() << -1 << reasonedFormat;
    }
    for (const char *type : {"text", "other", "Single_Choice", "NUMERIC", "numeric ", ""})
        QTest::addRow("plain '%s'", type) << QString::fromLatin1(type) << labels << 1 << nothing;
}

void TestSurveyBodies::the_answer_type_shapes_the_body()
{
    SurveyStage stage;
    QFETCH(const QString, type);
    QFETCH(const QVariant, labels);
    QFETCH(const int, reasoning);
    QFETCH(const QByteArray, further);
    stage.addPersona(u"P1"_s, u"I am P1."_s);
    stage.addQuestion(u"Well?"_s, type);
    // What else a question has is not for a request.
    QVERIFY(stage.exec(u"UPDATE questions SET labels=?, reasoning_required=?, model='other-model', temperature=0.5, "
                       "description='other', search_enabled=1, ask_when='never', depends_on_question_id=99"_s,
                       {labels, reasoning}));
    QVERIFY(stage.run());

    QJsonObject body = QJsonDocument::fromJson(further).object();
    body.insert("model"_L1, u"gpt-4.1"_s);
    body.insert("messages"_L1, QJsonArray{turn(u"system"_s, u"Act as the following persona.\nI am P1."_s),
                                          turn(u"user"_s, u"Well?"_s)});
    QCOMPARE(stage.endpoint.requests().size(), 1);
    QCOMPARE(stage.endpoint.requests().constFirst().body, QJsonDocument(body).toJson(QJsonDocument::Indented));
}

void TestSurveyBodies::the_texts_make_the_system_message_data()
{
    QTest::addColumn<QVariantList>("boilerplate");
    QTest::addColumn<QVariantList>("persona");
    QTest::addColumn<QString>("text");
    const QVariant null;
    const QString a = u"A"_s;
    const QString b = u"B"_s;
    const QString c = u"C"_s;
    const QString empty = u""_s;
    const QString blanks = u" \n\t"_s;
    QTest::newRow("three lines") << QVariantList{a, c} << QVariantList{null, b} << u"A\nB\nC"_s;
    QTest::newRow("persona alone") << QVariantList{empty, empty} << QVariantList{null, u" \nB \n B\t"_s} << u"B \n B"_s;
    QTest::newRow("boilerplate NULL") << QVariantList{null, null} << QVariantList{null, b} << b;
    QTest::newRow("no boilerplate") << QVariantList{} << QVariantList{null, b} << b;
    QTest::newRow("system prompt instead of attributes")
        << QVariantList{a, c} << QVariantList{u"S"_s, b} << u"A\nS\nC"_s;
    QTest::newRow("empty system prompt") << QVariantList{a, c} << QVariantList{empty, b} << u"A\nB\nC"_s;
    QTest::newRow("system prompt of a blank") << QVariantList{empty, empty} << QVariantList{u" "_s, b} << empty;
    QTest::newRow("preamble alone") << QVariantList{a, empty} << QVariantList{null, null} << a;
    QTest::newRow("postamble alone") << QVariantList{empty, c} << QVariantList{null, null} << c;
    QTest::newRow("no persona text") << QVariantList{a, c} << QVariantList{null, empty} << u"A\n\nC"_s;
    QTest::newRow("preamble of blanks alone") << QVariantList{blanks, empty} << QVariantList{null, empty} << empty;
    QTest::newRow("nothing") << QVariantList{empty, empty} << QVariantList{null, null} << empty;
}

void TestSurveyBodies::the_texts_make_the_system_message()
{
    SurveyStage stage;
    QFETCH(const QVariantList, boilerplate);
    QFETCH(const QVariantList, persona);
    QFETCH(const QString, text);
    stage.addPersona(u"P1"_s, u"to be replaced"_s);
    stage.addQuestion(u"Well?"_s);
    QVERIFY(stage.exec(u"UPDATE personas SET system_prompt=?, attributes=?"_s, persona));
    if (boilerplate.isEmpty())
        QVERIFY(stage.exec(u"DELETE FROM boilerplate"_s));
    else
        QVERIFY(stage.exec(u"UPDATE boilerplate SET preamble=?, postamble=?"_s, boilerplate));
    QVERIFY(stage.run());

    QJsonArray expected{turn(u"user"_s, u"Well?"_s)};
    if (!text.isEmpty())
        expected.prepend(turn(u"system"_s, text));
    QCOMPARE(stage.endpoint.requests().constFirst().json()["messages"_L1].toArray(), expected);
}

void TestSurveyBodies::the_question_goes_out_as_stored()
{
    SurveyStage stage;
    const QString prompt = u" \u00C4h \u2026\t\"well\"?\r\n\n "_s;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(prompt, u"multi_choice"_s, true, uR"(["yes","no"])"_s);
    QVERIFY(stage.run());
    QCOMPARE(stage.endpoint.requests().constFirst().json()["messages"_L1].toArray().last(),
             QJsonValue(turn(u"user"_s, prompt)));
}

QTEST_MAIN(TestSurveyBodies)
#include "tst_surveybodies.moc"
