// What a user may do while a run goes on, and what the run makes of it.

#include "survey/surveyrunner.h"
#include "tests/support/entries.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"
#include "tests/survey/runtrace.h"

#include <QAction>
#include <QJsonArray>
#include <QSet>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

/// Starts a run with two personas and two questions, and stops it while the first is being asked.
static bool startHeld(SurveyStage &stage)
{
    stage.fillTwoByTwo();
    stage.endpoint.queue(Reply::content(u"first"_s).held());
    stage.startRun();
    return stage.arrived(1);
}

static bool finishHeld(SurveyStage &stage)
{
    stage.endpoint.release();
    return stage.runEnded();
}

/// Actions and widgets that a user cannot reach.
static QSet<QObject *> disabledParts(SurveyStage &stage)
{
    QSet<QObject *> parts;
    for (const auto actions = stage.window()->findChildren<QAction *>(); QAction * action : actions) {
        if (!action->isEnabled())
            parts.insert(action);
    }
    for (const auto widgets = stage.window()->findChildren<QWidget *>(); QWidget * widget : widgets) {
        if (!widget->isEnabled())
            parts.insert(widget);
    }
    return parts;
}

class TestMidRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void only_the_two_run_controls_are_disabled()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s).held(); });
        const QSet<QObject *> before = disabledParts(stage);
        const QSet<QObject *> controls{stage.runEntry(), stage.button(u"Run Survey"_s, u"Results"_s)};
        QVERIFY(!before.intersects(controls));
        stage.startRun();
        for (int count = 1; count <= 4; ++count) {
            QCOMPARE(disabledParts(stage), before + controls);
            QVERIFY(stage.arrived(count));
            QCOMPARE(disabledParts(stage), before + controls);
            stage.endpoint.release();
        }
        QVERIFY(stage.runEnded());
        QCOMPARE(disabledParts(stage), before);
    }

    void pressing_run_again_starts_nothing()
    {
        SurveyStage stage;
        QVERIFY(startHeld(stage));
        const QString told = logText(stage);
        stage.startRun();
        stage.button(u"Run Survey"_s, u"Results"_s)->click();
        stage.call("runSurvey");
        QCOMPARE(stage.window()->findChildren<SurveyRunner *>().size(), 1);
        QCOMPARE(logText(stage), told);
        QVERIFY(finishHeld(stage));
        QCOMPARE(stage.asked(), stage.twoByTwo);
        QCOMPARE(stage.endpoint.mostInFlight(), 1);
    }

    void a_run_within_a_run_is_not_started()
    {
        SurveyStage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.fillTwoByTwo();
        trace.react = [&](const QString &event) {
            if (event.startsWith("log"_L1))
                stage.call("runSurvey");
        };
        stage.startRun();
        QCOMPARE(trace.events().count(u"run off"_s), 1);
        QCOMPARE(trace.events().count(u"run on"_s), 1);
        QCOMPARE(stage.answered(), stage.twoByTwo);
    }

    void a_new_run_may_start_before_the_old_one_is_gone()
    {
        SurveyStage stage;
        Stage::setTestMode(true);
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        stage.startRun();
        QVERIFY(stage.runEntry()->isEnabled());
        QVERIFY(stage.button(u"Run Survey"_s)->isEnabled());
        // The event loop has not run, so the old runner is still there.
        QVERIFY(enter(stage, QuestionEntered{.prompt = u"Q2"_s}));
        stage.startRun();
        QCOMPARE(stage.window()->findChildren<SurveyRunner *>().size(), 2);
        QCOMPARE(stage.answered(), (QStringList{u"P1 Q1"_s, u"P1 Q2"_s}));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(stage.window()->findChildren<SurveyRunner *>().size(), 0);
    }

    void a_deleted_persona_is_asked_to_the_end()
    {
        SurveyStage stage;
        QVERIFY(startHeld(stage));
        const QVariant uuid = stage.uuidOf(u"P1"_s);
        QVERIFY(makeCurrent(stage, uuid.toString()));
        stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
        QCOMPARE(stage.count(u"personas"_s), 1);

        QVERIFY(finishHeld(stage));
        QCOMPARE(stage.asked(), stage.twoByTwo);
        QCOMPARE(stage.rows(u"SELECT question_id, text_answer FROM responses WHERE persona_uuid=?"_s, {uuid}),
                 (Rows{{1, u"first"_s}, {2, u"ok"_s}}));
        QCOMPARE(cells(resultsTable(stage)), (QList<QStringList>{{u"P2"_s, u"ok"_s, QString(), u"ok"_s, QString()}}));
    }

    void a_deleted_question_is_asked_to_the_end()
    {
        SurveyStage stage;
        QVERIFY(startHeld(stage));
        questionView(stage)->selectRow(0);
        stage.button(u"Delete"_s, u"Questions"_s)->click();
        QCOMPARE(stage.count(u"questions"_s), 1);

        QVERIFY(finishHeld(stage));
        QCOMPARE(stage.asked(), stage.twoByTwo);
        QCOMPARE(stage.rows(u"SELECT question_id, COUNT(*) FROM responses GROUP BY question_id"_s),
                 (Rows{{1, 2}, {2, 2}}));
        // The history joins the questions that are there.
        for (const Request &request : stage.endpoint.requests())
            QCOMPARE(request.json().value("messages"_L1).toArray().size(), 2);
    }

    void questions_are_those_of_the_start()
    {
        SurveyStage stage;
        QVERIFY(startHeld(stage));
        stage.call("updateQuestion", 1, u"new Q1"_s, u"numeric"_s, true, QString());
        stage.call("updateQuestion", 2, u"new Q2"_s, u"numeric"_s, true, QString());
        QVERIFY(stage.exec(u"UPDATE questions SET order_num=-order_num, judge_question=(question_id=2)"_s));
        stage.endpoint.queue(Reply::content(u"12"_s));
        QVERIFY(finishHeld(stage));
        QCOMPARE(stage.asked(), stage.twoByTwo);
        const QJsonObject second = stage.endpoint.requests().at(1).json();
        QVERIFY(!second.contains("response_format"_L1));
        QCOMPARE(second["model"_L1].toString(), u"gpt-4.1"_s);
        // The history is read as it stands.
        QCOMPARE(second["messages"_L1][1]["content"_L1].toString(), u"new Q1"_s);
        QCOMPARE(stage.rows(u"SELECT quote(text_answer), quote(numeric_answer) FROM responses WHERE id=2"_s),
                 (Rows{{u"'12'"_s, u"NULL"_s}}));
    }

    void personas_and_boilerplate_are_those_of_the_start()
    {
        SurveyStage stage;
        QVERIFY(startHeld(stage));
        stage.call("updatePersona", stage.uuidOf(u"P2"_s).toString(), u"P0"_s, u"new"_s, QString());
        QTest::keyClicks(preambleEdit(stage), u"new"_s);
        QTest::keyClicks(postambleEdit(stage), u"new"_s);
        QCOMPARE(stage.value(u"SELECT postamble FROM boilerplate"_s), u"new"_s);
        QVERIFY(finishHeld(stage));
        QStringList texts;
        for (const Request &request : stage.endpoint.requests())
            texts << request.json().value("messages"_L1)[0]["content"_L1].toString();
        const QString first = u"Act as the following persona.\nP1"_s;
        const QString second = u"Act as the following persona.\nP2"_s;
        QCOMPARE(texts, (QStringList{first, first, second, second}));
    }

    void what_is_added_waits_for_the_next_run()
    {
        SurveyStage stage;
        QVERIFY(startHeld(stage));
        stage.addPersona(u"P3"_s, u"P3"_s);
        stage.addQuestion(u"Q3"_s);
        QVERIFY(finishHeld(stage));
        QCOMPARE(stage.asked(), stage.twoByTwo);
        QVERIFY(stage.run());
        QCOMPARE(stage.asked().sliced(4), (QStringList{u"P1 Q3"_s, u"P2 Q3"_s, u"P3 Q1"_s, u"P3 Q2"_s, u"P3 Q3"_s}));
    }

    void answers_that_come_and_go_count_from_there_on()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        QVERIFY(enter(stage, AnswerEntered{.persona = stage.uuidOf(u"P2"_s), .question = 1}));
        stage.endpoint.queue(Reply::content(u"ok"_s));
        stage.endpoint.queue(Reply::content(u"ok"_s).held());
        stage.startRun();
        QVERIFY(stage.arrived(2));
        // That of a pair that the run has passed and that of one that it has yet to come to.
        QVERIFY(stage.exec(u"DELETE FROM responses"_s));
        QVERIFY(enter(stage, AnswerEntered{.persona = stage.uuidOf(u"P2"_s), .question = 2}));
        QVERIFY(finishHeld(stage));
        QCOMPARE(stage.asked(), (QStringList{u"P1 Q1"_s, u"P1 Q2"_s, u"P2 Q1"_s}));
    }

    void test_mode_is_asked_anew_for_each_pair()
    {
        SurveyStage stage;
        Stage::setSetting(u"openai/api_key"_s, QString());
        RunTrace trace(stage);
        stage.fillTwoByTwo();
        trace.react = [&](const QString &event) {
            if (event.startsWith("warning"_L1))
                Stage::setTestMode(true);
            else if (event == u"grid"_s)
                Stage::setTestMode(false);
        };
        stage.startRun();
        QCOMPARE(stage.answered(), QStringList({u"P1 Q2"_s, u"P2 Q2"_s}));
        QCOMPARE(trace.events().filter(u"log !"_s).size(), 2);
    }

    void a_run_goes_on_in_another_project_data()
    {
        QTest::addColumn<bool>("opened");
        QTest::newRow("a new one") << false;
        QTest::newRow("one from a file") << true;
    }
    void a_run_goes_on_in_another_project()
    {
        QFETCH(const bool, opened);
        SurveyStage stage;
        stage.addPersona(u"P9"_s, u"P9"_s);
        stage.addQuestion(u"Q9"_s);
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"other.ormt"_s)));
        stage.action(u"New Project"_s)->trigger();

        QVERIFY(startHeld(stage));
        const QVariant uuid = stage.uuidOf(u"P1"_s);
        if (opened) {
            // Asks about the changes otherwise.
            QVERIFY(stage.result("saveProjectToFile", stage.path(u"changed.ormt"_s)));
            QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
        } else {
            stage.action(u"New Project"_s)->trigger();
        }
        QVERIFY(finishHeld(stage));
        QCOMPARE(stage.asked(), stage.twoByTwo);
        QCOMPARE(stage.rows(u"SELECT question_id, text_answer FROM responses WHERE persona_uuid=?"_s, {uuid}),
                 (Rows{{1, u"first"_s}, {2, u"ok"_s}}));
        QList<QStringList> shown;
        if (opened)
            shown << QStringList{u"P9"_s, QString(), QString()};
        QCOMPARE(cells(resultsTable(stage)), shown);
    }
};

ORRINET_TEST(TestMidRun)
#include "tst_midrun.moc"
