#include "survey/surveyrunner.h"
#include "tests/support/messagelog.h"
#include "tests/survey/surveystage.h"

#include <QMenu>
#include <QMenuBar>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

class TestMidRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void only_the_run_controls_are_disabled();
    void pressing_run_again_starts_nothing();
    void a_new_run_may_start_before_the_old_one_is_gone();
    void a_runner_needs_no_window_and_no_log();
    void a_closed_log_does_not_stop_the_run_data();
    void a_closed_log_does_not_stop_the_run();
    void a_log_closed_between_runs_is_of_no_note();
    void a_deleted_persona_is_asked_to_the_end();
    void a_deleted_question_is_asked_to_the_end();
    void questions_are_those_of_the_start();
    void personas_and_boilerplate_are_those_of_the_start();
    void what_is_added_waits_for_the_next_run();
    void answers_deleted_in_a_run_are_asked_for_from_there_on();
    void a_run_goes_on_in_another_project_data();
    void a_run_goes_on_in_another_project();
};

namespace {

/// Starts a run with two personas and two questions, and stops it while the first is being asked.
bool startHeld(SurveyStage &stage)
{
    stage.fillTwoByTwo();
    stage.endpoint.queue(Reply::content(u"first"_s).held());
    stage.startRun();
    return stage.arrived(1);
}

/// The texts of all menu entries and buttons that are disabled.
QStringList disabled(SurveyStage &stage)
{
    QStringList texts;
    for (const auto all = stage.window()->menuBar()->findChildren<QMenu *>(); const QMenu *menu : all) {
        for (const auto entries = menu->actions(); const QAction *action : entries) {
            if (!action->isEnabled())
                texts << action->text();
        }
    }
    for (const auto all = stage.window()->findChildren<QPushButton *>(); const QPushButton *button : all) {
        if (!button->isEnabled())
            texts << button->text();
    }
    return texts;
}

} // namespace

void TestMidRun::only_the_run_controls_are_disabled()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s).held(); });
    QCOMPARE(disabled(stage), QStringList());
    stage.startRun();
    for (int count = 1; count <= 4; ++count) {
        QCOMPARE(disabled(stage), (QStringList{u"Run"_s, u"Run Survey"_s}));
        QVERIFY(stage.arrived(count));
        QCOMPARE(disabled(stage), (QStringList{u"Run"_s, u"Run Survey"_s}));
        stage.endpoint.release();
    }
    QVERIFY(stage.runEnded());
    QCOMPARE(disabled(stage), QStringList());
}

void TestMidRun::pressing_run_again_starts_nothing()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    const QString told = stage.logText();
    stage.startRun();
    stage.button(u"Run Survey"_s, u"Results"_s)->click();
    QVERIFY(stage.call("runSurvey"));
    QCOMPARE(stage.window()->findChildren<SurveyRunner *>().size(), 1);
    QCOMPARE(stage.window()->findChildren<ChatLogWindow *>().size(), 1);
    QCOMPARE(stage.logText(), told);
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(stage.endpoint.mostInFlight(), 1);
}

void TestMidRun::a_new_run_may_start_before_the_old_one_is_gone()
{
    SurveyStage stage;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    QVERIFY(stage.run());
    QCOMPARE(stage.window()->findChildren<SurveyRunner *>().size(), 1);
    stage.addQuestion(u"Q2"_s);
    stage.startRun();
    QCOMPARE(stage.window()->findChildren<SurveyRunner *>().size(), 2);
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.answered(), (QStringList{u"P1 Q1"_s, u"P1 Q2"_s}));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(stage.window()->findChildren<SurveyRunner *>().size(), 0);
}

void TestMidRun::a_runner_needs_no_window_and_no_log()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    SurveyRunner runner(nullptr, stage.project(), nullptr, nullptr);
    QSignalSpy finished(&runner, &SurveyRunner::finished);
    runner.start();
    QVERIFY(finished.isEmpty());
    QVERIFY(finished.wait());
    QCOMPARE(stage.answered(), stage.twoByTwo);
    QVERIFY(stage.log() == nullptr);
    QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)).constFirst(),
             (QStringList{u"P1"_s, QString(), QString(), QString(), QString()}));
}

void TestMidRun::a_closed_log_does_not_stop_the_run_data()
{
    QTest::addColumn<QString>("by");
    QTest::newRow("by its button") << u"Close"_s;
    QTest::newRow("by Escape") << u"Escape"_s;
    QTest::newRow("by the window manager") << QString();
}

void TestMidRun::a_closed_log_does_not_stop_the_run()
{
    const MessageLog messages;
    SurveyStage stage;
    QFETCH(const QString, by);
    QVERIFY(startHeld(stage));
    QSignalSpy destroyed(stage.log(), &QObject::destroyed);
    if (by == "Close"_L1)
        stage.log()->findChild<QPushButton *>()->click();
    else if (by == "Escape"_L1)
        QTest::keyClick(stage.log(), Qt::Key_Escape);
    else
        stage.log()->close();
    QVERIFY(destroyed.size() == 1 || destroyed.wait());
    QCOMPARE(messages.infos(), QStringList{u"ChatLogWindow destroyed; logging disabled"_s});
    QVERIFY(stage.log() == nullptr);

    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.answered(), stage.twoByTwo);
    QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->item(1, 3)->text(), u"ok"_s);
    QVERIFY(stage.log() == nullptr);

    stage.addQuestion(u"Q3"_s);
    QVERIFY(stage.run());
    QVERIFY(stage.log()->isVisible());
    QVERIFY(stage.logText().startsWith("-> [{"_L1));
    QCOMPARE(stage.logText().count("\n<- ok"_L1), 2);
    QVERIFY(!stage.logText().contains("first\n"_L1));
    QCOMPARE(messages.warnings(), QStringList());
}

void TestMidRun::a_log_closed_between_runs_is_of_no_note()
{
    const MessageLog messages;
    SurveyStage stage;
    stage.fillTwoByTwo();
    QVERIFY(stage.run());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QSignalSpy destroyed(stage.log(), &QObject::destroyed);
    stage.log()->close();
    QVERIFY(destroyed.size() == 1 || destroyed.wait());
    QCOMPARE(messages.infos(), QStringList());
}

void TestMidRun::a_deleted_persona_is_asked_to_the_end()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    const QVariant uuid = stage.value(u"SELECT uuid FROM personas WHERE name='P1'"_s);
    auto *table = stage.find<QTableWidget>(u"personaTable"_s);
    table->setCurrentItem(table->findItems(u"P1"_s, Qt::MatchExactly).constFirst());
    stage.button(u"Delete"_s, u"Digital Twins"_s)->click();
    QCOMPARE(stage.value(u"SELECT COUNT(*) FROM personas"_s).toInt(), 1);

    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(stage.rows(u"SELECT question_id, text_answer FROM responses WHERE persona_uuid=?"_s, {uuid}),
             (QList<QVariantList>{{1, u"first"_s}, {2, u"ok"_s}}));
    QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)),
             (QList<QStringList>{{u"P2"_s, u"ok"_s, QString(), u"ok"_s, QString()}}));
}

void TestMidRun::a_deleted_question_is_asked_to_the_end()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    stage.find<QTableView>(u"questionView"_s)->selectRow(0);
    stage.button(u"Delete"_s, u"Questions"_s)->click();
    QCOMPARE(stage.value(u"SELECT COUNT(*) FROM questions"_s).toInt(), 1);

    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(stage.rows(u"SELECT question_id, COUNT(*) FROM responses GROUP BY question_id"_s),
             (QList<QVariantList>{{1, 2}, {2, 2}}));
    // The history joins the questions that are there.
    for (const Request &request : stage.endpoint.requests())
        QCOMPARE(request.json().value("messages"_L1).toArray().size(), 2);
}

void TestMidRun::questions_are_those_of_the_start()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    stage.call("updateQuestion", 1, u"new Q1"_s, u"numeric"_s, true, QString());
    stage.call("updateQuestion", 2, u"new Q2"_s, u"numeric"_s, true, QString());
    QVERIFY(stage.exec(u"UPDATE questions SET order_num=-order_num, judge_question=(question_id=2)"_s));
    stage.endpoint.queue(Reply::content(u"12"_s));
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), stage.twoByTwo);
    const QJsonObject second = stage.endpoint.requests().at(1).json();
    QVERIFY(!second.contains("response_format"_L1));
    QCOMPARE(second["model"_L1].toString(), u"gpt-4.1"_s);
    // The history is read as it stands.
    QCOMPARE(second["messages"_L1][1]["content"_L1].toString(), u"new Q1"_s);
    QCOMPARE(stage.rows(u"SELECT quote(text_answer), quote(numeric_answer) FROM responses WHERE id=2"_s),
             (QList<QVariantList>{{u"'12'"_s, u"NULL"_s}}));
}

void TestMidRun::personas_and_boilerplate_are_those_of_the_start()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    stage.call("updatePersona", stage.value(u"SELECT uuid FROM personas WHERE name='P2'"_s).toString(), u"P0"_s,
               u"new"_s, QString());
    stage.find<QPlainTextEdit>(u"preambleEdit"_s)->setPlainText(u"new"_s);
    stage.find<QPlainTextEdit>(u"postambleEdit"_s)->setPlainText(u"new"_s);
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QStringList texts;
    for (const Request &request : stage.endpoint.requests())
        texts << request.json().value("messages"_L1)[0]["content"_L1].toString();
    const QString first = u"Act as the following persona.\nP1"_s;
    const QString second = u"Act as the following persona.\nP2"_s;
    QCOMPARE(texts, (QStringList{first, first, second, second}));
}

void TestMidRun::what_is_added_waits_for_the_next_run()
{
    SurveyStage stage;
    QVERIFY(startHeld(stage));
    stage.addPersona(u"P3"_s, u"P3"_s);
    stage.addQuestion(u"Q3"_s);
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QVERIFY(stage.run());
    QCOMPARE(stage.asked().sliced(4), (QStringList{u"P1 Q3"_s, u"P2 Q3"_s, u"P3 Q1"_s, u"P3 Q2"_s, u"P3 Q3"_s}));
}

void TestMidRun::answers_deleted_in_a_run_are_asked_for_from_there_on()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    QVERIFY(stage.run());
    QVERIFY(stage.exec(u"DELETE FROM responses WHERE id=2"_s));
    stage.endpoint.queue(Reply::content(u"ok"_s).held());
    stage.startRun();
    QVERIFY(stage.arrived(5));
    // One that the run has passed and one that it has yet to come to.
    QVERIFY(stage.exec(u"DELETE FROM responses WHERE id IN (1, 4)"_s));
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked().sliced(4), (QStringList{u"P1 Q2"_s, u"P2 Q2"_s}));
}

void TestMidRun::a_run_goes_on_in_another_project_data()
{
    QTest::addColumn<bool>("opened");
    QTest::newRow("a new one") << false;
    QTest::newRow("one from a file") << true;
}

void TestMidRun::a_run_goes_on_in_another_project()
{
    SurveyStage stage;
    QFETCH(const bool, opened);
    stage.addPersona(u"P9"_s, u"P9"_s);
    stage.addQuestion(u"Q9"_s);
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"other.ormt"_s)));
    stage.action(u"New Project"_s)->trigger();

    QVERIFY(startHeld(stage));
    const QVariant uuid = stage.value(u"SELECT uuid FROM personas WHERE name='P1'"_s);
    if (opened) {
        // Asks about the changes otherwise.
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"changed.ormt"_s)));
        QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
    } else {
        stage.action(u"New Project"_s)->trigger();
    }
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(stage.rows(u"SELECT question_id, text_answer FROM responses WHERE persona_uuid=?"_s, {uuid}),
             (QList<QVariantList>{{1, u"first"_s}, {2, u"ok"_s}}));
    QList<QStringList> shown;
    if (opened)
        shown << QStringList{u"P9"_s, QString(), QString()};
    QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)), shown);
}

QTEST_MAIN(TestMidRun)
#include "tst_midrun.moc"
