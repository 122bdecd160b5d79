// What a request is made of: by the functions that make it, and as it goes out.

#include "survey/requestassembly.h"
#include "survey/surveyentries.h"
#include "tests/support/entries.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

static QString compactJson(const QJsonArray &array)
{
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

/// The three parts of a format in one object, those that are empty left out.
static QString partsOf(const AnswerFormat &format)
{
    QJsonObject parts;
    if (!format.tools.isEmpty())
        parts.insert("tools"_L1, format.tools);
    if (!format.toolChoice.isEmpty())
        parts.insert("tool_choice"_L1, format.toolChoice);
    if (!format.responseFormat.isEmpty())
        parts.insert("response_format"_L1, format.responseFormat);
    return QString::fromUtf8(QJsonDocument(parts).toJson(QJsonDocument::Compact));
}

static QuestionEntry questionEntry(const QString &type, const QString &labels, bool reasoning)
{
    return {.id = 1, .prompt = u"Q"_s, .answerType = type, .labels = labels, .reasoningRequired = reasoning};
}

static QString toolFormat(const QString &labels, bool reasoning)
{
    return uR"({"tool_choice":{"function":{"name":"select_answer"},"type":"function"},)"
           R"("tools":[{"function":{"description":"Pick exactly one option","name":"select_answer","parameters":)"
           R"({"properties":{"answer":{"enum":%1,"type":"string"},"reasoning":{"type":"string"}},)"
           R"("required":%2,"type":"object"}},"type":"function"}]})"_s.arg(
               labels, reasoning ? uR"(["answer","reasoning"])"_s : uR"(["answer"])"_s);
}

static QString jsonFormat(bool reasoning)
{
    const QString properties = reasoning ? uR"({"answer":{"type":"string"},"reasoning":{"type":"string"}})"_s
                                         : uR"({"answer":{"type":"string"}})"_s;
    return uR"({"response_format":{"schema":{"properties":%1,"required":%2,"type":"object"},"type":"json_object"}})"_s
        .arg(properties, reasoning ? uR"(["answer","reasoning"])"_s : uR"(["answer"])"_s);
}

class TestRequestAssembly : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_system_text_has_preamble_persona_and_postamble_data()
    {
        QTest::addColumn<QString>("preamble");
        QTest::addColumn<QString>("systemPrompt");
        QTest::addColumn<QString>("attributes");
        QTest::addColumn<QString>("postamble");
        QTest::addColumn<QString>("expected");
        const QString none;
        QTest::newRow("three lines") << u"A"_s << none << u"B"_s << u"C"_s << u"A\nB\nC"_s;
        QTest::newRow("nothing at all") << none << none << none << none << u""_s;
        QTest::newRow("empty is as good as null") << u""_s << u""_s << u"B"_s << u""_s << u"B"_s;
        QTest::newRow("persona alone, trimmed") << none << none << u" \tB \n"_s << none << u"B"_s;
        QTest::newRow("preamble alone") << u"A"_s << none << none << none << u"A"_s;
        QTest::newRow("postamble alone") << none << none << none << u"C"_s << u"C"_s;
        QTest::newRow("no postamble") << u"A"_s << none << u"B"_s << none << u"A\nB"_s;
        QTest::newRow("no preamble") << none << none << u"B"_s << u"C"_s << u"B\nC"_s;
        QTest::newRow("no persona") << u"A"_s << none << none << u"C"_s << u"A\n\nC"_s;
        QTest::newRow("system prompt alone") << none << u"S"_s << none << none << u"S"_s;
        QTest::newRow("system prompt, not attributes") << u"A"_s << u"S"_s << u"B"_s << u"C"_s << u"A\nS\nC"_s;
        QTest::newRow("a blank system prompt counts") << none << u" "_s << u"B"_s << none << u""_s;
        QTest::newRow("a blank preamble and no persona") << u" \n "_s << none << none << none << u""_s;
        QTest::newRow("a blank preamble is cut off") << u"  "_s << none << u"B"_s << none << u"B"_s;
        QTest::newRow("a blank postamble is cut off") << none << none << u"B"_s << u" \n"_s << u"B"_s;
        QTest::newRow("a blank persona is a line") << u"A"_s << none << u" "_s << u"C"_s << u"A\n \nC"_s;
        QTest::newRow("blanks within stay") << u" A "_s << none << u" B "_s << u" C "_s << u"A \n B \n C"_s;
        QTest::newRow("line feeds within stay") << u"A\n"_s << none << u"B\nb\n"_s << u"\nC"_s << u"A\n\nB\nb\n\n\nC"_s;
        QTest::newRow("a line feed as preamble") << u"\n"_s << none << none << u"C"_s << u"C"_s;
    }
    void a_system_text_has_preamble_persona_and_postamble()
    {
        QFETCH(const QString, preamble);
        QFETCH(const QString, systemPrompt);
        QFETCH(const QString, attributes);
        QFETCH(const QString, postamble);
        const PersonaEntry persona{
            .uuid = u"U"_s, .name = u"N"_s, .systemPrompt = systemPrompt, .attributes = attributes};
        QTEST(systemText(preamble, persona, postamble), "expected");
    }

    void messages_are_system_history_and_question_data()
    {
        QTest::addColumn<QString>("system");
        QTest::addColumn<int>("exchanges");
        QTest::addColumn<QString>("expected");
        const QString system = uR"({"content":"S","role":"system"},)"_s;
        const QString first = uR"({"content":"Q1","role":"user"},{"content":"A1","role":"assistant"},)"_s;
        const QString second = uR"({"content":"Q2","role":"user"},{"content":"","role":"assistant"},)"_s;
        const QString last = uR"({"content":" <Q> ","role":"user"})"_s;
        QTest::newRow("question alone") << QString() << 0 << last;
        QTest::newRow("an empty system text is none") << u""_s << 0 << last;
        QTest::newRow("with a system text") << u"S"_s << 0 << QString(system + last);
        QTest::newRow("with history") << u""_s << 1 << QString(first + last);
        QTest::newRow("with both") << u"S"_s << 2 << QString(system + first + second + last);
    }
    void messages_are_system_history_and_question()
    {
        QFETCH(const QString, system);
        QFETCH(const int, exchanges);
        QFETCH(const QString, expected);
        const QList<Exchange> history{{.prompt = u"Q1"_s, .answer = u"A1"_s}, {.prompt = u"Q2"_s, .answer = QString()}};
        const QJsonArray messages = chatMessages(system, history.first(exchanges), u" <Q> "_s);
        QCOMPARE(compactJson(messages), QString(u'[' + expected + u']'));
    }

    void a_message_has_a_text_even_where_there_is_none()
    {
        const QJsonArray messages = chatMessages(QString(), {{.prompt = QString(), .answer = QString()}}, QString());
        QCOMPARE(compactJson(messages), uR"([{"content":"","role":"user"},{"content":"","role":"assistant"},)"
                                        R"({"content":"","role":"user"}])"_s);
    }

    void the_format_follows_the_type_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<bool>("reasoning");
        QTest::addColumn<QString>("expected");
        const QString labels = uR"(["Yes","No"])"_s;
        for (const bool reasoning : {false, true}) {
            const auto row = [reasoning](const QString &type, const QString &expected) {
                QTest::addRow("'%s'%s", qUtf8Printable(type), reasoning ? " with reasoning" : "")
                    << type << reasoning << expected;
            };
            row(u"single_choice"_s, toolFormat(labels, reasoning));
            row(u"numeric"_s, jsonFormat(reasoning));
            row(u"multi_choice"_s, jsonFormat(reasoning));
            row(u"likert"_s, jsonFormat(reasoning));
            row(u"ranking"_s, jsonFormat(reasoning));
            for (const QString &other :
                 {u"text"_s, u""_s, u"Text"_s, u"Single_Choice"_s, u"SINGLE_CHOICE"_s, u"Numeric"_s, u"Likert"_s,
                  u"Ranking"_s, u"Multi_choice"_s, u" numeric"_s, u"single_choice "_s, u"Option"_s, u"essay"_s})
                row(other, u"{}"_s);
        }
    }
    void the_format_follows_the_type()
    {
        QFETCH(const QString, type);
        QFETCH(const bool, reasoning);
        QuestionEntry question = questionEntry(type, uR"(["Yes","No"])"_s, reasoning);
        QTEST(partsOf(answerFormat(question)), "expected");
        // Nothing else of the question counts.
        question.id = 2;
        question.prompt = u"P"_s;
        question.judge = true;
        QTEST(partsOf(answerFormat(question)), "expected");
    }

    void a_single_choice_without_usable_labels_has_no_format_data()
    {
        QTest::addColumn<QString>("labels");
        QTest::newRow("null") << QString();
        QTest::newRow("empty text") << u""_s;
        QTest::newRow("empty array") << u"[]"_s;
        QTest::newRow("empty array with blanks") << u" [ ] "_s;
        QTest::newRow("no JSON") << u"Yes, No"_s;
        QTest::newRow("object") << uR"({"0":"Yes"})"_s;
        QTest::newRow("string") << uR"("Yes")"_s;
        QTest::newRow("number") << u"7"_s;
        QTest::newRow("null literal") << u"null"_s;
        QTest::newRow("not closed") << uR"(["Yes","No")"_s;
        QTest::newRow("something behind it") << uR"(["Yes","No"] or not)"_s;
        QTest::newRow("comma at the end") << uR"(["Yes",])"_s;
    }
    void a_single_choice_without_usable_labels_has_no_format()
    {
        QFETCH(const QString, labels);
        QCOMPARE(partsOf(answerFormat(questionEntry(u"single_choice"_s, labels, false))), u"{}"_s);
        QCOMPARE(partsOf(answerFormat(questionEntry(u"single_choice"_s, labels, true))), u"{}"_s);
    }

    void usable_labels_are_sent_unchanged_data()
    {
        QTest::addColumn<QString>("labels");
        QTest::addColumn<QString>("sent");
        QTest::newRow("one") << uR"(["Yes"])"_s << uR"(["Yes"])"_s;
        QTest::newRow("in their order") << uR"(["b","a","c"])"_s << uR"(["b","a","c"])"_s;
        QTest::newRow("white space between them") << uR"( [ "b" ,  "a" ] )"_s << uR"(["b","a"])"_s;
        QTest::newRow("doubles") << uR"(["a","a"])"_s << uR"(["a","a"])"_s;
        QTest::newRow("empty label") << uR"([""])"_s << uR"([""])"_s;
        QTest::newRow("blanks round a label") << uR"([" a "])"_s << uR"([" a "])"_s;
        QTest::newRow("no strings") << uR"([1,true,null,["a"],{"a":1}])"_s << uR"([1,true,null,["a"],{"a":1}])"_s;
        QTest::newRow("beyond ASCII") << u"[\"\u00e9\u2713\"]"_s << u"[\"\u00e9\u2713\"]"_s;
    }
    void usable_labels_are_sent_unchanged()
    {
        QFETCH(const QString, labels);
        QFETCH(const QString, sent);
        QCOMPARE(partsOf(answerFormat(questionEntry(u"single_choice"_s, labels, false))), toolFormat(sent, false));
        QCOMPARE(partsOf(answerFormat(questionEntry(u"single_choice"_s, labels, true))), toolFormat(sent, true));
    }

    void a_request_has_the_format_of_its_question_data()
    {
        QTest::addColumn<QuestionEntered>("question");
        QTest::addColumn<QString>("further");
        const QString labels = uR"( [ "yes", "no" ] )"_s;
        QTest::newRow("function") << QuestionEntered{.type = u"single_choice"_s, .labels = labels}
                                  << toolFormat(uR"(["yes","no"])"_s, false);
        QTest::newRow("function with reasoning")
            << QuestionEntered{.type = u"single_choice"_s, .labels = labels, .reasoning = -1}
            << toolFormat(uR"(["yes","no"])"_s, true);
        QTest::newRow("JSON") << QuestionEntered{.type = u"likert"_s, .labels = labels} << jsonFormat(false);
        QTest::newRow("JSON with reasoning")
            << QuestionEntered{.type = u"numeric"_s, .reasoning = 1} << jsonFormat(true);
        QTest::newRow("no format") << QuestionEntered{.type = u"text"_s, .labels = labels, .reasoning = 1} << u"{}"_s;
        QTest::newRow("labels NULL") << QuestionEntered{.type = u"single_choice"_s, .reasoning = 1} << u"{}"_s;
    }
    void a_request_has_the_format_of_its_question()
    {
        SurveyStage stage;
        QFETCH(QuestionEntered, question);
        QFETCH(const QString, further);
        const QString prompt = u" \u00C4h \u2026\t\"well\"?\r\n\n "_s;
        question.prompt = prompt;
        stage.addPersona(u"P1"_s, u"I am P1."_s);
        QVERIFY(enter(stage, question));
        // What else a question has is not for a request.
        QVERIFY(stage.exec(u"UPDATE questions SET model='other-model', temperature=0.5, description='other', "
                           "search_enabled=1, ask_when='never', depends_on_question_id=99"_s));
        QVERIFY(stage.run());

        QJsonObject body = QJsonDocument::fromJson(further.toUtf8()).object();
        body.insert("model"_L1, u"gpt-4.1"_s);
        body.insert("messages"_L1, QJsonArray{turn(u"system"_s, u"Act as the following persona.\nI am P1."_s),
                                              turn(u"user"_s, prompt)});
        QCOMPARE(stage.endpoint.requests().size(), 1);
        QCOMPARE(stage.endpoint.requests().constFirst().body, QJsonDocument(body).toJson(QJsonDocument::Indented));
    }

    void a_request_has_the_texts_of_the_project_data()
    {
        QTest::addColumn<QVariant>("systemPrompt");
        QTest::addColumn<QVariant>("attributes");
        QTest::addColumn<QVariant>("preamble");
        QTest::addColumn<QString>("expected");
        QTest::newRow("attributes") << QVariant() << QVariant(u"B"_s) << QVariant(u"A"_s) << u"A\nB\nC"_s;
        QTest::newRow("system prompt") << QVariant(u"S"_s) << QVariant(u"B"_s) << QVariant(u"A"_s) << u"A\nS\nC"_s;
        QTest::newRow("empty system prompt") << QVariant(u""_s) << QVariant(u"B"_s) << QVariant() << u"B\nC"_s;
        QTest::newRow("postamble alone") << QVariant() << QVariant() << QVariant(u""_s) << u"C"_s;
    }
    void a_request_has_the_texts_of_the_project()
    {
        SurveyStage stage;
        QFETCH(const QVariant, systemPrompt);
        QFETCH(const QVariant, attributes);
        QFETCH(const QVariant, preamble);
        QFETCH(const QString, expected);
        QVERIFY(setBoilerplate(stage, preamble, u"C"_s));
        QVERIFY(enter(
            stage,
            PersonaEntered{.uuid = u"p"_s, .name = u"P"_s, .attributes = attributes, .systemPrompt = systemPrompt},
            QuestionEntered{.prompt = u"Well?"_s}));
        QVERIFY(stage.run());
        QCOMPARE(stage.endpoint.requests().size(), 1);
        QCOMPARE(stage.endpoint.requests().constFirst().json()["messages"_L1].toArray(),
                 (QJsonArray{turn(u"system"_s, expected), turn(u"user"_s, u"Well?"_s)}));
    }

    void a_request_without_texts_has_no_system_message()
    {
        SurveyStage stage;
        QVERIFY(setBoilerplate(stage, u" \n"_s, u""_s));
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"p"_s, .name = u"P"_s}, QuestionEntered{.prompt = u"Well?"_s}));
        QVERIFY(stage.run());
        QCOMPARE(stage.endpoint.requests().size(), 1);
        QCOMPARE(stage.endpoint.requests().constFirst().json()["messages"_L1].toArray(),
                 (QJsonArray{turn(u"user"_s, u"Well?"_s)}));
    }
};

ORRINET_TEST(TestRequestAssembly)
#include "tst_requestassembly.moc"
