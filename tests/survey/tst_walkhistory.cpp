// What a run reads once, at its start, and what it reads anew for each request.

#include "survey/surveyrunner.h"
#include "tests/survey/walkkit.h"

#include <QTest>

using namespace Qt::StringLiterals;

static std::pair<QString, QString> question(const QString &prompt)
{
    return {u"user"_s, prompt};
}

static std::pair<QString, QString> answer(const QString &text)
{
    return {u"assistant"_s, text};
}

static std::pair<QString, QString> said()
{
    return answer(u"test response"_s);
}

/// The "-> " entries of a run.
static QStringList requests(const RunTrace &trace)
{
    QStringList entries;
    for (const QString &event : trace.events) {
        if (event.startsWith("log -> "_L1))
            entries.append(event.sliced(4));
    }
    return entries;
}

class TestWalkHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void earlier_answers_are_told_in_the_order_of_their_time()
    {
        Stage stage;
        const RunTrace trace(stage);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(addQuestion(stage, 3, u"Q3"_s));
        QVERIFY(addResponse(stage, u"A"_s, 1, u"00:00:09"_s));
        QVERIFY(addResponse(stage, u"A"_s, 2, u"00:00:01"_s));
        stage.call("runSurvey");
        QCOMPARE(requests(trace).constFirst(),
                 sent({question(u"Q2"_s), answer(u"old"_s), question(u"Q1"_s), answer(u"old"_s), question(u"Q3"_s)}));
    }

    void both_rows_of_a_pair_are_told()
    {
        Stage stage;
        const RunTrace trace(stage);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(addResponse(stage, u"A"_s, 1, u"00:00:01"_s));
        QVERIFY(addResponse(stage, u"A"_s, 1, u"00:00:02"_s));
        QVERIFY(stage.exec(u"UPDATE responses SET text_answer='new' WHERE created_at LIKE '%2'"_s));
        stage.call("runSurvey");
        QCOMPARE(requests(trace).constFirst(),
                 sent({question(u"Q1"_s), answer(u"old"_s), question(u"Q1"_s), answer(u"new"_s), question(u"Q2"_s)}));
    }

    void only_texts_are_told_data()
    {
        QTest::addColumn<QString>("values");
        QTest::addColumn<QString>("told");
        QTest::newRow("text") << u"'t',7,'{}'"_s << u"t"_s;
        QTest::newRow("number alone") << u"NULL,7,NULL"_s << u""_s;
        QTest::newRow("number and JSON") << u"NULL,7,'{}'"_s << u""_s;
        QTest::newRow("JSON alone") << u"NULL,NULL,'prose'"_s << u""_s;
        QTest::newRow("nothing") << u"NULL,NULL,NULL"_s << u""_s;
    }
    void only_texts_are_told()
    {
        QFETCH(const QString, values);
        QFETCH(const QString, told);
        Stage stage;
        const RunTrace trace(stage);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer, numeric_answer, "
                           "json_answer) VALUES ('uuid-A', 1, %1)"_s.arg(values)));
        stage.call("runSurvey");
        QCOMPARE(requests(trace).constFirst(), sent({question(u"Q1"_s), answer(told), question(u"Q2"_s)}));
    }

    void answers_of_others_and_to_lost_questions_are_not_told()
    {
        Stage stage;
        const RunTrace trace(stage);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(addResponse(stage, u"B"_s, 1));
        QVERIFY(addResponse(stage, u"A"_s, 9));
        QVERIFY(stage.exec(u"INSERT INTO responses (persona_uuid, question_id) VALUES (NULL, 1)"_s));
        stage.call("runSurvey");
        QCOMPARE(requests(trace).constFirst(), sent({question(u"Q1"_s)}));
    }

    void adjudicated_questions_hear_the_rest_but_are_not_told_themselves()
    {
        Stage stage;
        const RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addPersona(stage, u"A"_s));
        QVERIFY(setBoilerplate(stage, u"Be"_s, QVariant()));
        for (int id = 1; id <= 4; ++id)
            QVERIFY(addQuestion(stage, id, u"Q%1"_s.arg(id)));
        QVERIFY(stage.exec(u"UPDATE questions SET judge_question=1 WHERE question_id IN (2,3)"_s));
        stage.call("runSurvey");
        const std::pair system{u"system"_s, u"Be"_s};
        QCOMPARE(requests(trace), QStringList({sent({system, question(u"Q1"_s)}),
                                               sent({system, question(u"Q1"_s), said(), question(u"Q2"_s)}),
                                               sent({system, question(u"Q1"_s), said(), question(u"Q3"_s)}),
                                               sent({system, question(u"Q1"_s), said(), question(u"Q4"_s)})}));
    }

    void a_pair_that_failed_is_told_later_by_its_time()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addPersona(stage, u"A"_s));
        QVERIFY(setBoilerplate(stage, QVariant(), QVariant()));
        QVERIFY(addQuestion(stage, 1, u"Q1"_s));
        QVERIFY(addQuestion(stage, 2, u"Q2"_s));
        QVERIFY(stage.exec(u"CREATE TRIGGER refuse BEFORE INSERT ON responses WHEN NEW.question_id=1 "
                           "BEGIN SELECT RAISE(ABORT, 'refused'); END"_s));
        stage.call("runSurvey");
        QCOMPARE(requests(trace), QStringList({sent({question(u"Q1"_s)}), sent({question(u"Q2"_s)})}));
        QVERIFY(stage.exec(u"DROP TRIGGER refuse"_s));
        QVERIFY(stage.exec(u"UPDATE responses SET created_at='2001-02-03 00:00:00'"_s));
        QVERIFY(addQuestion(stage, 3, u"Q3"_s));
        trace.events.clear();
        stage.call("runSurvey");
        QCOMPARE(requests(trace),
                 QStringList({sent({question(u"Q2"_s), said(), question(u"Q1"_s)}),
                              sent({question(u"Q2"_s), said(), question(u"Q1"_s), said(), question(u"Q3"_s)})}));
    }

    void an_unreadable_history_is_none()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        trace.react = [&](const QString &event) {
            if (event == u"run off"_s)
                return;
            trace.react = {};
            QVERIFY(stage.exec(u"DROP TABLE questions"_s));
        };
        stage.call("runSurvey");
        const QString first = sent({question(u"Q1"_s)});
        const QString second = sent({question(u"Q2"_s)});
        QCOMPARE(requests(trace), QStringList({first, second, first, second}));
        QCOMPARE(storedPairs(stage).size(), 4);
        QCOMPARE(trace.events.filter(u"warning"_s), QStringList());
    }

    void a_run_does_not_notice_changes_of_panel_and_questionnaire_data()
    {
        QTest::addColumn<QString>("change");
        QTest::newRow("persona deleted") << u"DELETE FROM personas WHERE name='B'"_s;
        QTest::newRow("all personas deleted") << u"DELETE FROM personas"_s;
        QTest::newRow("persona added") << u"INSERT INTO personas (uuid, name) VALUES ('uuid-C', 'C')"_s;
        QTest::newRow("persona renamed") << u"UPDATE personas SET name='0' WHERE name='B'"_s;
        QTest::newRow("persona rewritten") << u"UPDATE personas SET attributes='x', system_prompt='y'"_s;
        QTest::newRow("question added") << u"INSERT INTO questions (question_id, order_num) VALUES (9, 9)"_s;
        QTest::newRow("questions moved") << u"UPDATE questions SET order_num = -order_num"_s;
        QTest::newRow("texts changed") << u"UPDATE boilerplate SET preamble='x', postamble='y'"_s;
    }
    void a_run_does_not_notice_changes_of_panel_and_questionnaire()
    {
        QFETCH(const QString, change);
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        trace.react = [&](const QString &event) {
            if (event == u"run off"_s)
                return;
            trace.react = {};
            QVERIFY(stage.exec(change));
        };
        stage.call("runSurvey");
        const QString first = sent({question(u"Q1"_s)});
        const QString second = sent({question(u"Q1"_s), said(), question(u"Q2"_s)});
        QCOMPARE(requests(trace), QStringList({first, second, first, second}));
        QCOMPARE(storedPairs(stage), QStringList({u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s}));
    }

    void a_history_has_prompts_as_they_are_now_and_a_question_as_it_was()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(stage.exec(u"DELETE FROM personas WHERE name='B'"_s));
        trace.react = [&](const QString &event) {
            if (event == u"grid"_s)
                QVERIFY(stage.exec(u"UPDATE questions SET prompt='new'"_s));
        };
        stage.call("runSurvey");
        QCOMPARE(requests(trace),
                 QStringList({sent({question(u"Q1"_s)}), sent({question(u"new"_s), said(), question(u"Q2"_s)})}));
    }

    void answers_that_come_or_go_meanwhile_count()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(addResponse(stage, u"B"_s, 1));
        trace.react = [&](const QString &event) {
            if (event != u"grid"_s)
                return;
            trace.react = {};
            QVERIFY(stage.exec(u"DELETE FROM responses WHERE persona_uuid='uuid-B'"_s));
            QVERIFY(addResponse(stage, u"A"_s, 2));
        };
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), QStringList({u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s}));
        QCOMPARE(requests(trace).size(), 3);
    }

    void test_mode_is_asked_anew_for_each_pair()
    {
        Stage stage;
        RunTrace trace(stage);
        QVERIFY(addTwoByTwo(stage));
        trace.react = [&](const QString &event) {
            if (event.startsWith("warning"_L1))
                Stage::setTestMode(true);
            else if (event == u"grid"_s)
                Stage::setTestMode(false);
        };
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), QStringList({u"A2"_s, u"B2"_s}));
        QCOMPARE(trace.events.filter(u"log !"_s).size(), 2);
    }
};

QTEST_MAIN(TestWalkHistory)
#include "tst_walkhistory.moc"
