// What a run asks, in which order, and what becomes of each answer.

#include "inspect/chatlogwindow.h"
#include "survey/surveyrunner.h"
#include "tests/support/entries.h"
#include "tests/support/patience.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"
#include "tests/survey/runtrace.h"

#include <QJsonArray>
#include <QMetaMethod>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

class TestRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_runner_has_one_signal_and_two_slots()
    {
        const QMetaObject &meta = SurveyRunner::staticMetaObject;
        QStringList methods;
        for (int index = meta.methodOffset(); index < meta.methodCount(); ++index) {
            const QMetaMethod method = meta.method(index);
            methods.append(u"%1 %2 %3"_s.arg(method.methodType())
                               .arg(method.access())
                               .arg(QString::fromLatin1(method.methodSignature())));
        }
        QCOMPARE(methods,
                 QStringList({u"1 2 finished()"_s, u"2 0 handleAnswer(QString)"_s, u"2 0 handleError(QString)"_s}));
    }

    void the_menu_and_the_button_start_a_run_data()
    {
        QTest::addColumn<bool>("button");
        QTest::newRow("menu") << false;
        QTest::newRow("button") << true;
    }
    void the_menu_and_the_button_start_a_run()
    {
        QFETCH(const bool, button);
        SurveyStage stage;
        stage.fillTwoByTwo();
        if (button)
            stage.button(u"Run Survey"_s, u"Results"_s)->click();
        else
            stage.startRun();
        QVERIFY(stage.runEnded());
        QCOMPARE(stage.asked(), stage.twoByTwo);
    }

    void names_and_numbers_give_the_order()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        QVERIFY(stage.exec(u"UPDATE questions SET order_num=-order_num"_s));
        QVERIFY(stage.exec(u"UPDATE personas SET name='P0' WHERE name='P2'"_s));
        QVERIFY(stage.run());
        QCOMPARE(stage.asked(), (QStringList{u"P2 Q2"_s, u"P2 Q1"_s, u"P1 Q2"_s, u"P1 Q1"_s}));
    }

    void requests_go_one_by_one_on_connections_of_their_own()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s).keptAlive(); });
        QVERIFY(stage.run());
        QCOMPARE(stage.endpoint.requests().size(), 4);
        QCOMPARE(stage.endpoint.connections(), 4);
        QCOMPARE(stage.endpoint.mostInFlight(), 1);
    }

    void answered_pairs_are_skipped_data()
    {
        QTest::addColumn<QStringList>("answered");
        QTest::addColumn<QStringList>("open");
        const QString p1q1 = u"P1 Q1"_s;
        const QString p1q2 = u"P1 Q2"_s;
        const QString p2q1 = u"P2 Q1"_s;
        const QString p2q2 = u"P2 Q2"_s;
        QTest::newRow("first") << QStringList{p1q1} << QStringList{p1q2, p2q1, p2q2};
        QTest::newRow("last of a persona") << QStringList{p1q2} << QStringList{p1q1, p2q1, p2q2};
        QTest::newRow("a whole persona") << QStringList{p1q2, p1q1} << QStringList{p2q1, p2q2};
        QTest::newRow("a whole question") << QStringList{p2q1, p1q1} << QStringList{p1q2, p2q2};
        QTest::newRow("last") << QStringList{p2q2} << QStringList{p1q1, p1q2, p2q1};
        QTest::newRow("twice answered") << QStringList{p1q1, p1q1} << QStringList{p1q2, p2q1, p2q2};
        QTest::newRow("all") << QStringList{p1q1, p1q2, p2q1, p2q2} << QStringList{};
        QTest::newRow("deleted persona") << QStringList{u"P3 Q1"_s} << QStringList{p1q1, p1q2, p2q1, p2q2};
        QTest::newRow("deleted question") << QStringList{u"P1 Q3"_s} << QStringList{p1q1, p1q2, p2q1, p2q2};
    }
    void answered_pairs_are_skipped()
    {
        QFETCH(const QStringList, answered);
        QFETCH(const QStringList, open);
        SurveyStage stage;
        stage.fillTwoByTwo();
        // A row counts even where it holds nothing.
        for (const QString &pair : answered)
            QVERIFY(enter(stage,
                          AnswerEntered{.persona = stage.uuidOf(pair.first(2)), .question = pair.back().digitValue()}));
        QVERIFY(stage.run());
        QCOMPARE(stage.asked(), open);
    }

    void a_finished_survey_asks_nothing()
    {
        SurveyStage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.fillTwoByTwo();
        stage.startRun();
        Stage::setTestMode(false);
        const QString told = logText(stage);
        logWindow(stage)->hide();
        trace.clear();
        stage.startRun();
        QCOMPARE(trace.events(), QStringList({u"run off"_s, u"run on"_s, u"grid"_s}));
        QVERIFY(logWindow(stage)->isVisible());
        QCOMPARE(logText(stage), told);
        QCOMPARE(stage.endpoint.connections(), 0);
        QCOMPARE(stage.answered(), stage.twoByTwo);
    }

    void a_later_run_asks_what_has_been_added()
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

    void in_test_mode_each_answer_shows_before_the_next_question()
    {
        SurveyStage stage;
        const RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.addPersona(u"P1"_s, u"I am P1"_s);
        stage.addQuestion(u"Q1"_s);
        stage.addQuestion(u"Q2"_s, u"likert"_s);
        stage.addQuestion(u"Q3"_s);
        QVERIFY(setBoilerplate(stage, u"Be"_s, u"Now"_s));
        stage.startRun();
        const QJsonObject system = turn(u"system"_s, u"Be\nI am P1\nNow"_s);
        const QJsonObject first = turn(u"user"_s, u"Q1"_s);
        const QJsonObject second = turn(u"user"_s, u"Q2"_s);
        const QJsonObject answer = turn(u"assistant"_s, u"test response"_s);
        const QJsonObject noText = turn(u"assistant"_s, u""_s);
        const QJsonObject third = turn(u"user"_s, u"Q3"_s);
        const QStringList answered{u"log <- test response"_s, u"grid"_s};
        QCOMPARE(trace.events(),
                 QStringList({u"run off"_s, "log "_L1 + sentEntry({system, first})}) + answered +
                     QStringList{"log "_L1 + sentEntry({system, first, answer, second})} + answered +
                     QStringList{"log "_L1 + sentEntry({system, first, answer, second, noText, third})} + answered +
                     QStringList({u"run on"_s, u"grid"_s}));
        QCOMPARE(stage.endpoint.connections(), 0);
    }

    void an_answer_is_logged_stored_shown_and_then_noted_as_a_change()
    {
        SurveyStage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        stage.addQuestion(u"Q2"_s);
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        QStringList seen;
        trace.react = [&](const QString &event) {
            // The question has an event loop, in which a runner that has finished is deleted.
            if (event == u"run on"_s) {
                trace.react = {};
                return;
            }
            seen.append(
                u"%1 %2 %3"_s.arg(event.left(6)).arg(stage.count(u"responses"_s)).arg(stage.asksBeforeClosing()));
        };
        stage.startRun();
        QCOMPARE(seen, QStringList({u"run of 0 0"_s, u"log -> 0 0"_s, u"log <- 0 0"_s, u"grid 1 0"_s, u"log -> 1 1"_s,
                                    u"log <- 1 1"_s, u"grid 2 1"_s}));
    }

    void an_answer_is_stored_and_shown_as_it_comes()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.endpoint.answerWith(
            [&stage](const Request &) { return Reply::content("to "_L1 + stage.asked().constLast()).held(); });
        const auto answers = [&stage] { return stage.column(u"SELECT text_answer FROM responses ORDER BY id"_s); };
        QStringList stored;
        QList<QStringList> shown{{u"P1"_s, QString(), QString(), QString(), QString()},
                                 {u"P2"_s, QString(), QString(), QString(), QString()}};
        stage.startRun();
        for (int count = 0; count < 4; ++count) {
            QVERIFY(stage.arrived(count + 1));
            QCOMPARE(answers(), stored);
            QCOMPARE(cells(resultsTable(stage)), shown);
            stored << "to "_L1 + stage.twoByTwo.at(count);
            shown[count / 2][1 + (2 * (count % 2))] = stored.constLast();
            stage.endpoint.release();
        }
        QVERIFY(stage.runEnded());
        QCOMPARE(answers(), stored);
        QCOMPARE(stage.answered(), stage.twoByTwo);
        QCOMPARE(cells(resultsTable(stage)), shown);
    }

    void a_runner_needs_no_window_and_no_log_data()
    {
        QTest::addColumn<bool>("testMode");
        QTest::newRow("test mode") << true;
        QTest::newRow("requests") << false;
    }
    void a_runner_needs_no_window_and_no_log()
    {
        QFETCH(const bool, testMode);
        SurveyStage stage;
        stage.fillTwoByTwo();
        Stage::setTestMode(testMode);
        SurveyRunner runner(nullptr, stage.database(), nullptr, nullptr);
        QSignalSpy finished(&runner, &SurveyRunner::finished);
        QList<QStringList> answeredAtTheEnd;
        connect(&runner, &SurveyRunner::finished, this, [&] { answeredAtTheEnd.append(stage.answered()); });
        runner.start();
        QCOMPARE(answeredAtTheEnd.size(), testMode ? 1 : 0);
        QVERIFY(testMode || (stage.arrived(4) && finished.wait(patience)));
        QCOMPARE(answeredAtTheEnd, QList<QStringList>{stage.twoByTwo});
        QVERIFY(logWindow(stage) == nullptr);
        QCOMPARE(cells(resultsTable(stage)).constFirst(),
                 (QStringList{u"P1"_s, QString(), QString(), QString(), QString()}));
    }

    void the_model_is_that_of_the_settings_data()
    {
        QTest::addColumn<int>("judge");
        QTest::addColumn<QVariant>("persona");
        QTest::addColumn<QVariant>("adjudicator");
        QTest::addColumn<QString>("model");
        const QVariant absent;
        const QVariant forPersonas(u"model-p"_s);
        const QVariant forAdjudicated(u"model-a"_s);
        QTest::newRow("ordinary, no entries") << 0 << absent << absent << u"gpt-4.1"_s;
        QTest::newRow("adjudicated, no entries") << 1 << absent << absent << u"gpt-4.1-mini"_s;
        QTest::newRow("ordinary") << 0 << forPersonas << forAdjudicated << u"model-p"_s;
        QTest::newRow("adjudicated") << 1 << forPersonas << forAdjudicated << u"model-a"_s;
        QTest::newRow("adjudicated by any number") << -2 << forPersonas << forAdjudicated << u"model-a"_s;
        QTest::newRow("ordinary, empty entry") << 0 << QVariant(u""_s) << absent << u"gpt-4o-mini"_s;
        QTest::newRow("adjudicated, empty entry") << 1 << absent << QVariant(u""_s) << u"gpt-4o-mini"_s;
    }
    void the_model_is_that_of_the_settings()
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
        QVERIFY(enter(stage, QuestionEntered{.prompt = u"Q1"_s, .judge = judge}));
        QVERIFY(stage.run());
        QCOMPARE(stage.endpoint.requests().size(), 1);
        QCOMPARE(stage.endpoint.requests().constFirst().json().value("model"_L1).toString(), model);
    }

    void model_and_key_count_from_the_next_request_on()
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
};

ORRINET_TEST(TestRun)
#include "tst_run.moc"
