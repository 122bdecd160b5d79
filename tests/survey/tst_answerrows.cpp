// An answer in the database: how it is stored, and how it is shown when it is read back.

#include "standin/chatendpoint.h"
#include "standin/detour.h"
#include "survey/answers.h"
#include "survey/surveyrunner.h"
#include "tests/survey/walkkit.h"

#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace Qt::StringLiterals;

class TestAnswerRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void test_mode_stores_its_answer_by_type_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("column");
        QTest::newRow("text") << u"text"_s << u"text_answer"_s;
        QTest::newRow("numeric") << u"numeric"_s << u"text_answer"_s;
        QTest::newRow("unknown") << u"essay"_s << u"text_answer"_s;
        QTest::newRow("NULL") << QString() << u"text_answer"_s;
        QTest::newRow("wrong case") << u"Likert"_s << u"text_answer"_s;
        QTest::newRow("single_choice") << u"single_choice"_s << u"json_answer"_s;
        QTest::newRow("multi_choice") << u"multi_choice"_s << u"json_answer"_s;
        QTest::newRow("likert") << u"likert"_s << u"json_answer"_s;
        QTest::newRow("ranking") << u"ranking"_s << u"json_answer"_s;
    }
    void test_mode_stores_its_answer_by_type()
    {
        QFETCH(const QString, type);
        QFETCH(const QString, column);
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addPersona(stage, u"A"_s));
        QVERIFY(addQuestion(stage, 7, u"Q"_s, type));
        const QVariant before = stage.value(u"SELECT CURRENT_TIMESTAMP"_s);
        stage.call("runSurvey");

        const QString names = u"id,persona_uuid,question_id,created_at,text_answer,numeric_answer,json_answer,"
                              "question_serial,model,temperature,token_usage"_s;
        const auto rows = stage.rows("SELECT "_L1 + names + " FROM responses"_L1);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().at(1), u"uuid-A"_s);
        QCOMPARE(rows.first().at(2), 7);
        const QStringList columns = names.split(u',');
        const QStringList types{u"integer"_s, u"text"_s, u"integer"_s, u"text"_s};
        for (qsizetype index = 0; index < columns.size(); ++index) {
            const QVariant stored = stage.value(u"SELECT typeof(%1) FROM responses"_s.arg(columns.at(index)));
            const QString otherwise = columns.at(index) == column ? u"text"_s : u"null"_s;
            QCOMPARE(stored, types.value(index, otherwise));
        }
        QCOMPARE(stage.value(u"SELECT %1 FROM responses"_s.arg(column)), u"test response"_s);
        // UTC, to the second.
        QVERIFY(before.toString() <= rows.first().at(3).toString());
        QCOMPARE(stage.value(u"SELECT created_at <= CURRENT_TIMESTAMP FROM responses"_s), 1);
    }

    void a_reply_becomes_a_row_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QString &type, const QString &reply, const QString &expected) {
            QTest::newRow(name) << type << reply << expected;
        };
        row("text", u"text"_s, uR"({ "answer": 1 })"_s, uR"('{ "answer": 1 }',NULL,NULL)"_s);
        row("choice", u"single_choice"_s, uR"({"answer":"No"})"_s, uR"('No',NULL,'{"answer":"No"}')"_s);
        row("prose for a choice", u"single_choice"_s, u"No."_s, u"NULL,NULL,'No.'"_s);
        row("label that is none", u"single_choice"_s, uR"({"answer":"?"})"_s, uR"('?',NULL,'{"answer":"?"}')"_s);
        row("no answer", u"single_choice"_s, u"{}"_s, u"NULL,NULL,'{}'"_s);
        row("number", u"numeric"_s, uR"({"answer": 7})"_s, uR"(NULL,7.0,'{"answer":7}')"_s);
        row("number in a string", u"numeric"_s, uR"({"reasoning":"r","answer":"12.50"})"_s,
            uR"(NULL,12.5,'{"answer":"12.50","reasoning":"r"}')"_s);
        row("no number", u"numeric"_s, uR"({"answer":"few"})"_s, uR"('few',NULL,'{"answer":"few"}')"_s);
        row("bare number", u"numeric"_s, u"0"_s, u"NULL,0.0,NULL"_s);
        row("infinity", u"numeric"_s, u"inf"_s, u"NULL,9.0e+999,NULL"_s);
        row("not a number", u"numeric"_s, u"nan"_s, u"NULL,NULL,NULL"_s);
        row("prose for a number", u"numeric"_s, u"few"_s, u"'few',NULL,NULL"_s);
        row("several", u"multi_choice"_s, uR"({"answer":["a","b"]})"_s, uR"(NULL,NULL,'{"answer":["a","b"]}')"_s);
        row("array", u"ranking"_s, uR"([ "a" ])"_s, uR"(NULL,NULL,'[ "a" ]')"_s);
        row("point on a scale", u"likert"_s, uR"({"answer":1234567})"_s,
            uR"('1.23457e+06',NULL,'{"answer":1234567}')"_s);
    }
    void a_reply_becomes_a_row()
    {
        QFETCH(const QString, type);
        QFETCH(const QString, reply);
        Stage stage;
        setKey();
        standin::ChatEndpoint endpoint;
        const standin::Detour detour(endpoint);
        endpoint.queue(standin::Reply::content(reply));
        QVERIFY(addPersona(stage, u"A"_s));
        QVERIFY(addQuestion(stage, 1, u"Q"_s, type));
        SurveyRunner runner(nullptr, stage.project(), nullptr, nullptr);
        QSignalSpy finished(&runner, &SurveyRunner::finished);
        runner.start();
        QVERIFY(finished.wait());
        QCOMPARE(stage.rows(u"SELECT 1 FROM responses"_s).size(), 1);
        QTEST(stage
                  .value(u"SELECT quote(text_answer)||','||quote(numeric_answer)||','||quote(json_answer) "
                         "FROM responses"_s)
                  .toString(),
              "expected");
    }

    void an_empty_reply_counts_as_an_answer_data()
    {
        QTest::addColumn<QString>("type");
        for (const QString &type :
             {u"text"_s, u"numeric"_s, u"single_choice"_s, u"multi_choice"_s, u"likert"_s, u"ranking"_s, u"essay"_s})
            QTest::newRow(qUtf8Printable(type)) << type;
    }
    void an_empty_reply_counts_as_an_answer()
    {
        QFETCH(const QString, type);
        Stage stage;
        setKey();
        standin::ChatEndpoint endpoint;
        const standin::Detour detour(endpoint);
        endpoint.queue(standin::Reply::json("no JSON"));
        QVERIFY(addPersona(stage, u"A"_s));
        QVERIFY(addQuestion(stage, 1, u"Q"_s, type));
        for (int run = 0; run < 2; ++run) {
            SurveyRunner runner(nullptr, stage.project(), nullptr, nullptr);
            QSignalSpy finished(&runner, &SurveyRunner::finished);
            runner.start();
            QVERIFY(!finished.isEmpty() || finished.wait());
        }
        QCOMPARE(endpoint.requests().size(), 1);
        const auto rows = stage.rows(u"SELECT coalesce(text_answer,''),numeric_answer,coalesce(json_answer,'') "
                                     "FROM responses"_s);
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows.first().at(0), u""_s);
        QVERIFY(rows.first().at(1).isNull());
        QCOMPARE(rows.first().at(2), u""_s);
    }

    void one_column_is_shown_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVariant>("number");
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("expected");
        const QString none;
        QTest::newRow("nothing") << none << QVariant() << none << u""_s;
        QTest::newRow("text first") << u"t"_s << QVariant(7.0) << u"{}"_s << u"t"_s;
        QTest::newRow("a blank is a text") << u" "_s << QVariant(7.0) << u"{}"_s << u" "_s;
        QTest::newRow("number next") << none << QVariant(7.0) << u"{}"_s << u"7"_s;
        QTest::newRow("an empty text is none") << u""_s << QVariant(7.0) << u"{}"_s << u"7"_s;
        QTest::newRow("zero is a number") << none << QVariant(0.0) << u"{}"_s << u"0"_s;
        QTest::newRow("six digits") << none << QVariant(2.71728182) << u"{}"_s << u"2.71728"_s;
        QTest::newRow("no point without need") << none << QVariant(42.0) << none << u"42"_s;
        QTest::newRow("seven digits") << none << QVariant(1234567.0) << none << u"1.23457e+06"_s;
        QTest::newRow("infinity") << none << QVariant(std::numeric_limits<double>::infinity()) << none << u"inf"_s;
        QTest::newRow("integer") << none << QVariant(123456789LL) << none << u"1.23457e+08"_s;
        QTest::newRow("a word as number") << none << QVariant(u"x"_s) << u"{}"_s << u"0"_s;
        QTest::newRow("number that is NULL") << u""_s << QVariant(QMetaType(QMetaType::Double)) << u"{}"_s << u"{}"_s;
        QTest::newRow("JSON as it is") << none << QVariant() << u" {\"b\" : 1 } "_s << u" {\"b\" : 1 } "_s;
        QTest::newRow("prose for JSON") << none << QVariant() << u"no JSON"_s << u"no JSON"_s;
    }
    void one_column_is_shown()
    {
        QFETCH(const QString, text);
        QFETCH(const QVariant, number);
        QFETCH(const QString, json);
        QTEST(displayValue({.textAnswer = text, .numericAnswer = number, .jsonAnswer = json}), "expected");
    }

    void reasoning_comes_from_the_object_alone_data()
    {
        QTest::addColumn<QString>("json");
        QTest::addColumn<QString>("expected");
        QTest::newRow("string") << uR"({"answer":"a","reasoning":"r"})"_s << u"r"_s;
        QTest::newRow("white space") << u" {\n\"reasoning\" : \"r \\n s\" }\n"_s << u"r \n s"_s;
        QTest::newRow("empty") << uR"({"reasoning":""})"_s << u""_s;
        QTest::newRow("missing") << uR"({"answer":"a"})"_s << u""_s;
        QTest::newRow("wrong case") << uR"({"Reasoning":"r"})"_s << u""_s;
        QTest::newRow("number") << uR"({"reasoning":7})"_s << u""_s;
        QTest::newRow("array") << uR"({"reasoning":["r"]})"_s << u""_s;
        QTest::newRow("null") << uR"({"reasoning":null})"_s << u""_s;
        QTest::newRow("within the answer") << uR"({"answer":{"reasoning":"r"}})"_s << u""_s;
        QTest::newRow("in an array") << uR"([{"reasoning":"r"}])"_s << u""_s;
        QTest::newRow("not closed") << uR"({"reasoning":"r")"_s << u""_s;
        QTest::newRow("prose") << u"reasoning"_s << u""_s;
        QTest::newRow("NULL") << QString() << u""_s;
    }
    void reasoning_comes_from_the_object_alone()
    {
        QFETCH(const QString, json);
        QFETCH(const QString, expected);
        // Whatever is shown as the answer.
        QCOMPARE(reasoning({.textAnswer = {}, .numericAnswer = {}, .jsonAnswer = json}), expected);
        QCOMPARE(reasoning({.textAnswer = u"t"_s, .numericAnswer = 7.0, .jsonAnswer = json}), expected);
    }
};

QTEST_MAIN(TestAnswerRows)
#include "tst_answerrows.moc"
