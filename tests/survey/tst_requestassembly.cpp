#include "survey/requestassembly.h"
#include "survey/surveyentries.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;

static QString compact(const QJsonArray &array)
{
    return QString::fromUtf8(QJsonDocument(array).toJson(QJsonDocument::Compact));
}

/// The three parts of a format in one object, those that are empty left out.
static QString shown(const AnswerFormat &format)
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

static QuestionEntry question(const QString &type, const QString &labels, bool reasoning)
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
        QCOMPARE(compact(messages), QString(u'[' + expected + u']'));
    }

    void a_message_has_a_text_even_where_there_is_none()
    {
        const QJsonArray messages = chatMessages(QString(), {{.prompt = QString(), .answer = QString()}}, QString());
        QCOMPARE(compact(messages), uR"([{"content":"","role":"user"},{"content":"","role":"assistant"},)"
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
        QTEST(shown(answerFormat(question(type, uR"(["Yes","No"])"_s, reasoning))), "expected");
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
        QCOMPARE(shown(answerFormat(question(u"single_choice"_s, labels, false))), u"{}"_s);
        QCOMPARE(shown(answerFormat(question(u"single_choice"_s, labels, true))), u"{}"_s);
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
        QCOMPARE(shown(answerFormat(question(u"single_choice"_s, labels, false))), toolFormat(sent, false));
        QCOMPARE(shown(answerFormat(question(u"single_choice"_s, labels, true))), toolFormat(sent, true));
    }

    void the_format_does_not_depend_on_the_rest_of_the_question_data()
    {
        QTest::addColumn<QString>("type");
        QTest::newRow("single_choice") << u"single_choice"_s;
        QTest::newRow("numeric") << u"numeric"_s;
        QTest::newRow("text") << u"text"_s;
    }
    void the_format_does_not_depend_on_the_rest_of_the_question()
    {
        QFETCH(const QString, type);
        const QuestionEntry plain = question(type, uR"(["Yes"])"_s, true);
        QuestionEntry other = plain;
        other.id = 2;
        other.prompt = u"P"_s;
        other.judge = true;
        QCOMPARE(shown(answerFormat(other)), shown(answerFormat(plain)));
    }
};

QTEST_GUILESS_MAIN(TestRequestAssembly)
#include "tst_requestassembly.moc"
