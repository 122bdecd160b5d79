// The row that becomes of a reply, and the cells in which it shows.

#include "tests/support/entries.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;

/// The three columns of the only answer as SQL literals.
static QString quotedAnswer(Stage &stage)
{
    const QString query = u"SELECT quote(text_answer)||','||quote(numeric_answer)||','||quote(json_answer) "
                          "FROM responses"_s;
    return stage.column(query).join(u'\n');
}

class TestAnswerRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_reply_is_stored_and_shown_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QStringList>("shown");
        const auto row = [](const char *name, const QString &type, const Reply &reply, const QString &stored,
                            const QString &answer, const QString &reasoning = {}) {
            QTest::newRow(name) << type << reply << stored << QStringList{answer, reasoning};
        };
        const QString object = uR"({ "reasoning": "so", "answer": "yes" })"_s;
        row("text", u"text"_s, Reply::content(object), u"'%1',NULL,NULL"_s.arg(object), object);
        row("function call", u"single_choice"_s, Reply::toolCall(object),
            uR"('yes',NULL,'{"answer":"yes","reasoning":"so"}')"_s, u"yes"_s, u"so"_s);
        row("label that is none", u"single_choice"_s, Reply::content(uR"({"answer":"?"})"_s),
            uR"('?',NULL,'{"answer":"?"}')"_s, u"?"_s);
        row("no answer", u"single_choice"_s, Reply::content(u"{}"_s), u"NULL,NULL,'{}'"_s, u"{}"_s);
        row("number", u"numeric"_s, Reply::content(u"12.50"_s), u"NULL,12.5,NULL"_s, u"12.5"_s);
        row("number in a string", u"numeric"_s, Reply::content(uR"({"reasoning":"r","answer":"7"})"_s),
            uR"(NULL,7.0,'{"answer":"7","reasoning":"r"}')"_s, u"7"_s, u"r"_s);
        row("infinity", u"numeric"_s, Reply::content(u"inf"_s), u"NULL,9.0e+999,NULL"_s, u"inf"_s);
        row("not a number", u"numeric"_s, Reply::content(u"nan"_s), u"NULL,NULL,NULL"_s, QString());
        row("structure", u"ranking"_s, Reply::content(uR"({"answer": [1, 2]})"_s), uR"(NULL,NULL,'{"answer":[1,2]}')"_s,
            uR"({"answer":[1,2]})"_s);
        row("no JSON object", u"likert"_s, Reply::content(u"rather"_s), u"NULL,NULL,'rather'"_s, u"rather"_s);
    }
    void a_reply_is_stored_and_shown()
    {
        SurveyStage stage;
        QFETCH(const QString, type);
        QFETCH(const Reply, reply);
        QFETCH(const QString, stored);
        QFETCH(const QStringList, shown);
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s, type, false, uR"(["yes","no"])"_s);
        stage.endpoint.queue(reply);
        QVERIFY(stage.run());
        QCOMPARE(quotedAnswer(stage), stored);
        QCOMPARE(stage.answered(), QStringList{u"P1 Q1"_s});
        QCOMPARE(cells(resultsTable(stage)), QList<QStringList>{QStringList{u"P1"_s} + shown});
    }

    void an_empty_answer_counts_as_one_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("text") << u"text"_s << "no JSON"_ba;
        QTest::newRow("numeric") << u"numeric"_s << "{}"_ba;
        QTest::newRow("unknown type") << u"essay"_s << ""_ba;
        QTest::newRow("single choice") << u"single_choice"_s << R"({"choices": [{"message": {"content": null}}]})"_ba;
        QTest::newRow("multiple choice") << u"multi_choice"_s << "no JSON"_ba;
        QTest::newRow("likert") << u"likert"_s << "{}"_ba;
        QTest::newRow("ranking") << u"ranking"_s << ""_ba;
    }
    void an_empty_answer_counts_as_one()
    {
        SurveyStage stage;
        QFETCH(const QString, type);
        QFETCH(const QByteArray, body);
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s, type);
        stage.endpoint.queue(Reply::json(body));
        QVERIFY(stage.run());
        QCOMPARE(stage.rows(u"SELECT coalesce(text_answer, ''), quote(numeric_answer), coalesce(json_answer, '') "
                            "FROM responses"_s),
                 (Rows{{u""_s, u"NULL"_s, u""_s}}));
        QCOMPARE(cells(resultsTable(stage)), (QList<QStringList>{{u"P1"_s, QString(), QString()}}));
        QVERIFY(stage.run());
        QCOMPARE(stage.endpoint.requests().size(), 1);
    }

    void test_mode_stores_its_answer_by_type_data()
    {
        QTest::addColumn<QVariant>("type");
        QTest::addColumn<QString>("column");
        QTest::newRow("text") << QVariant(u"text"_s) << u"text_answer"_s;
        QTest::newRow("numeric") << QVariant(u"numeric"_s) << u"text_answer"_s;
        QTest::newRow("unknown") << QVariant(u"essay"_s) << u"text_answer"_s;
        QTest::newRow("NULL") << QVariant() << u"text_answer"_s;
        QTest::newRow("wrong case") << QVariant(u"Likert"_s) << u"text_answer"_s;
        QTest::newRow("single choice") << QVariant(u"single_choice"_s) << u"json_answer"_s;
        QTest::newRow("multiple choice") << QVariant(u"multi_choice"_s) << u"json_answer"_s;
        QTest::newRow("likert") << QVariant(u"likert"_s) << u"json_answer"_s;
        QTest::newRow("ranking") << QVariant(u"ranking"_s) << u"json_answer"_s;
    }
    void test_mode_stores_its_answer_by_type()
    {
        QFETCH(const QVariant, type);
        QFETCH(const QString, column);
        SurveyStage stage;
        Stage::setTestMode(true);
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"p"_s, .name = u"P"_s},
                      QuestionEntered{.id = 7, .prompt = u"Q"_s, .type = type}));
        const QVariant before = stage.value(u"SELECT CURRENT_TIMESTAMP"_s);
        stage.startRun();
        // The time is UTC, to the second; what is not named is NULL.
        QCOMPARE(stage.rows(u"SELECT persona_uuid, question_id, "
                            "typeof(created_at)='text' AND created_at BETWEEN ? AND CURRENT_TIMESTAMP, "
                            "coalesce(question_serial, model, temperature, token_usage, numeric_answer, 'NULL'), "
                            "%1, coalesce(%2, 'NULL') FROM responses"_s.arg(
                                column, column == "text_answer"_L1 ? "json_answer"_L1 : "text_answer"_L1),
                            {before}),
                 (Rows{{u"p"_s, 7, 1, u"NULL"_s, u"test response"_s, u"NULL"_s}}));
    }
};

ORRINET_TEST(TestAnswerRows)
#include "tst_answerrows.moc"
