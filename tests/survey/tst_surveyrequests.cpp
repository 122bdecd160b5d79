#include "tests/survey/surveystage.h"

#include <QSettings>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

class TestSurveyRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void personas_are_asked_one_after_the_other_data();
    void personas_are_asked_one_after_the_other();
    void names_and_numbers_give_the_order();
    void requests_go_one_by_one_on_connections_of_their_own();
    void an_answer_is_stored_and_shown_as_it_comes();
    void replies_are_stored_by_the_type_of_the_question_data();
    void replies_are_stored_by_the_type_of_the_question();
    void answered_pairs_are_skipped();
    void a_finished_survey_asks_nothing();
    void a_later_run_asks_what_has_been_added();
    void the_model_is_that_of_the_settings_data();
    void the_model_is_that_of_the_settings();
    void model_and_key_count_from_the_next_request_on();
};

void TestSurveyRequests::personas_are_asked_one_after_the_other_data()
{
    QTest::addColumn<bool>("button");
    QTest::newRow("by the menu") << false;
    QTest::newRow("by the button") << true;
}

void TestSurveyRequests::personas_are_asked_one_after_the_other()
{
    SurveyStage stage;
    QFETCH(const bool, button);
    stage.fillTwoByTwo();
    if (button)
        stage.button(u"Run Survey"_s, u"Results"_s)->click();
    else
        stage.action(u"Run"_s)->trigger();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), stage.twoByTwo);
}

void TestSurveyRequests::names_and_numbers_give_the_order()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    QVERIFY(stage.exec(u"UPDATE questions SET order_num=-order_num"_s));
    QVERIFY(stage.exec(u"UPDATE personas SET name='P0' WHERE name='P2'"_s));
    QVERIFY(stage.run());
    QCOMPARE(stage.asked(), (QStringList{u"P2 Q2"_s, u"P2 Q1"_s, u"P1 Q2"_s, u"P1 Q1"_s}));
}

void TestSurveyRequests::requests_go_one_by_one_on_connections_of_their_own()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s).keptAlive(); });
    QVERIFY(stage.run());
    QCOMPARE(stage.endpoint.requests().size(), 4);
    QCOMPARE(stage.endpoint.connections(), 4);
    QCOMPARE(stage.endpoint.mostInFlight(), 1);
}

void TestSurveyRequests::an_answer_is_stored_and_shown_as_it_comes()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    stage.endpoint.answerWith(
        [&stage](const Request &) { return Reply::content("to "_L1 + stage.asked().constLast()).held(); });
    const auto answers = [&stage] {
        return stage.rows(u"SELECT p.name || r.question_id, r.text_answer FROM responses r "
                          "JOIN personas p ON p.uuid=r.persona_uuid ORDER BY r.id"_s);
    };
    const auto *grid = stage.find<QTableWidget>(u"resultsTable"_s);
    QList<QVariantList> stored;
    QList<QStringList> shown{{u"P1"_s, QString(), QString(), QString(), QString()},
                             {u"P2"_s, QString(), QString(), QString(), QString()}};
    stage.startRun();
    for (int count = 0; count < 4; ++count) {
        QVERIFY(stage.arrived(count + 1));
        QCOMPARE(answers(), stored);
        QCOMPARE(Stage::cells(grid), shown);
        const QString answer = "to "_L1 + stage.twoByTwo.at(count);
        stored << QVariantList{u"P%1%2"_s.arg((count / 2) + 1).arg((count % 2) + 1), answer};
        shown[count / 2][1 + (2 * (count % 2))] = answer;
        stage.endpoint.release();
    }
    QVERIFY(stage.runEnded());
    QCOMPARE(answers(), stored);
    QCOMPARE(Stage::cells(grid), shown);
}

void TestSurveyRequests::replies_are_stored_by_the_type_of_the_question_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<QString>("row");
    QTest::addColumn<QStringList>("shown");
    const QString object = uR"({ "reasoning": "so", "answer": "yes" })"_s;
    const QString none;
    QTest::newRow("text") << u"text"_s << Reply::content(object) << u"'%1', NULL, NULL"_s.arg(object)
                          << QStringList{object, none};
    QTest::newRow("function call") << u"single_choice"_s << Reply::toolCall(object)
                                   << uR"('yes', NULL, '{"answer":"yes","reasoning":"so"}')"_s
                                   << QStringList{u"yes"_s, u"so"_s};
    QTest::newRow("number") << u"numeric"_s << Reply::content(u"12.50"_s) << u"NULL, 12.5, NULL"_s
                            << QStringList{u"12.5"_s, none};
    QTest::newRow("structure") << u"ranking"_s << Reply::content(uR"({"answer": [1, 2]})"_s)
                               << uR"(NULL, NULL, '{"answer":[1,2]}')"_s << QStringList{uR"({"answer":[1,2]})"_s, none};
    QTest::newRow("no JSON object") << u"likert"_s << Reply::content(u"rather"_s) << u"NULL, NULL, 'rather'"_s
                                    << QStringList{u"rather"_s, none};
}

void TestSurveyRequests::replies_are_stored_by_the_type_of_the_question()
{
    SurveyStage stage;
    QFETCH(const QString, type);
    QFETCH(const Reply, reply);
    QFETCH(const QString, row);
    QFETCH(const QStringList, shown);
    const QString uuid = stage.addPersona(u"P1"_s, u"P1"_s);
    const int question = stage.addQuestion(u"Q1"_s, type);
    stage.endpoint.queue(reply);
    QVERIFY(stage.run());
    QCOMPARE(stage.rows(u"SELECT persona_uuid, question_id, "
                        "quote(text_answer) || ', ' || quote(numeric_answer) || ', ' || quote(json_answer), "
                        "coalesce(question_serial, model, temperature, token_usage, 'nothing more'), "
                        "created_at BETWEEN datetime('now', '-1 hour') AND datetime('now') FROM responses"_s),
             (QList<QVariantList>{{uuid, question, row, u"nothing more"_s, 1}}));
    QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)),
             QList<QStringList>{QStringList{u"P1"_s} + shown});
}

void TestSurveyRequests::answered_pairs_are_skipped()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    // A row of any content counts.
    QVERIFY(stage.exec(u"INSERT INTO responses (persona_uuid, question_id) SELECT uuid, 1 FROM personas "
                       "WHERE name='P1'"_s));
    QVERIFY(stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer) SELECT uuid, 2, 'x' "
                       "FROM personas WHERE name='P2'"_s));
    QVERIFY(stage.run());
    QCOMPARE(stage.asked(), (QStringList{u"P1 Q2"_s, u"P2 Q1"_s}));
}

void TestSurveyRequests::a_finished_survey_asks_nothing()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    QVERIFY(stage.run());
    delete stage.log();
    stage.startRun();
    QVERIFY(stage.runEntry()->isEnabled());
    QVERIFY(stage.log()->isVisible());
    QCOMPARE(stage.logText(), QString());
    QCOMPARE(stage.endpoint.connections(), 4);
    QCOMPARE(stage.value(u"SELECT COUNT(*) FROM responses"_s).toInt(), 4);
}

void TestSurveyRequests::a_later_run_asks_what_has_been_added()
{
    SurveyStage stage;
    stage.addPersona(u"P2"_s, u"P2"_s);
    stage.addQuestion(u"Q1"_s);
    QVERIFY(stage.run());
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q2"_s);
    QVERIFY(stage.run());
    QCOMPARE(stage.asked(), (QStringList{u"P2 Q1"_s, u"P1 Q1"_s, u"P1 Q2"_s, u"P2 Q2"_s}));
}

void TestSurveyRequests::the_model_is_that_of_the_settings_data()
{
    QTest::addColumn<int>("judge");
    QTest::addColumn<QVariant>("persona");
    QTest::addColumn<QVariant>("adjudicator");
    QTest::addColumn<QString>("model");
    const QVariant absent;
    QTest::newRow("ordinary, no entries") << 0 << absent << absent << u"gpt-4.1"_s;
    QTest::newRow("adjudicated, no entries") << 1 << absent << absent << u"gpt-4.1-mini"_s;
    QTest::newRow("ordinary") << 0 << QVariant(u"model-p"_s) << QVariant(u"model-a"_s) << u"model-p"_s;
    QTest::newRow("adjudicated") << 1 << QVariant(u"model-p"_s) << QVariant(u"model-a"_s) << u"model-a"_s;
    QTest::newRow("adjudicated by any number")
        << -2 << QVariant(u"model-p"_s) << QVariant(u"model-a"_s) << u"model-a"_s;
    QTest::newRow("ordinary, empty entry") << 0 << QVariant(u""_s) << absent << u"gpt-4o-mini"_s;
    QTest::newRow("adjudicated, empty entry") << 1 << absent << QVariant(u""_s) << u"gpt-4o-mini"_s;
}

void TestSurveyRequests::the_model_is_that_of_the_settings()
{
    SurveyStage stage;
    QFETCH(const int, judge);
    QFETCH(const QVariant, persona);
    QFETCH(const QVariant, adjudicator);
    QFETCH(const QString, model);
    if (persona.isValid())
        QSettings().setValue("models/persona"_L1, persona);
    if (adjudicator.isValid())
        QSettings().setValue("models/adjudicator"_L1, adjudicator);
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    QVERIFY(stage.exec(u"UPDATE questions SET judge_question=?"_s, {judge}));
    QVERIFY(stage.run());
    QCOMPARE(stage.endpoint.requests().constLast().json().value("model"_L1).toString(), model);
}

void TestSurveyRequests::model_and_key_count_from_the_next_request_on()
{
    SurveyStage stage;
    Stage::setSetting(u"models/persona"_s, u"model-1"_s);
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    stage.addQuestion(u"Q2"_s);
    stage.endpoint.queue(Reply::content(u"ok"_s).held());
    stage.startRun();
    QVERIFY(stage.arrived(1));
    Stage::setSetting(u"models/persona"_s, u"model-2"_s);
    Stage::setSetting(u"openai/api_key"_s, u"other-key"_s);
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QStringList sentWith;
    for (const Request &request : stage.endpoint.requests())
        sentWith << QString::fromUtf8(request.header("Authorization")) + u' ' +
                        request.json().value("model"_L1).toString();
    QCOMPARE(sentWith, (QStringList{u"Bearer test-key model-1"_s, u"Bearer other-key model-2"_s}));
}

QTEST_MAIN(TestSurveyRequests)
#include "tst_surveyrequests.moc"
