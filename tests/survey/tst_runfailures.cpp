// Runs in which something fails: requests, statements, the connection to the database.

#include "inspect/chatlogwindow.h"
#include "survey/surveyrunner.h"
#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"
#include "tests/survey/runtrace.h"

#include <QAction>
#include <QJsonArray>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Identity;
using standin::Reply;
using standin::Request;

static QString noKeyWarning()
{
    return u"survey error: OPENAI_API_KEY not set"_s;
}

class TestRunFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_failed_pair_stays_open_data()
    {
        QTest::addColumn<Reply>("reply");
        QTest::addColumn<int>("code");
        const Reply usable = Reply::content(u"Not to be read."_s);
        QTest::newRow("status") << Reply::status(401, usable.body) << 204;
        // Those are posted again by the network layer.
        QTest::newRow("dropped before the head") << usable.ending(Reply::End::DroppedBeforeHead) << 2;
        QTest::newRow("truncated") << usable.ending(Reply::End::Truncated) << 2;
    }
    void a_failed_pair_stays_open()
    {
        QFETCH(const Reply, reply);
        QFETCH(const int, code);
        const MessageLog messages;
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.endpoint.answerWith([&stage, &reply](const Request &) {
            return stage.asked().constLast() == "P1 Q2"_L1 ? reply : Reply::content(u"ok"_s);
        });
        QVERIFY(stage.run());
        QStringList asked = stage.asked();
        asked.removeDuplicates();
        QCOMPARE(asked, stage.twoByTwo);
        QCOMPARE(stage.answered(), (QStringList{u"P1 Q1"_s, u"P2 Q1"_s, u"P2 Q2"_s}));
        QCOMPARE(stage.endpoint.mostInFlight(), 1);
        QCOMPARE(messages.warnings().size(), 1);
        const QString failure = messages.warnings().constFirst();
        QVERIFY2(failure.startsWith("survey error: "_L1) && failure.endsWith(u" (code %1)"_s.arg(code)),
                 qPrintable(failure));
        QVERIFY(!logText(stage).contains("Not to be read."_L1));

        const qsizetype before = stage.asked().size();
        stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s); });
        QVERIFY(stage.run());
        QCOMPARE(stage.asked().sliced(before), QStringList{u"P1 Q2"_s});
        QCOMPARE(stage.answered().constLast(), u"P1 Q2"_s);
        QCOMPARE(messages.warnings().size(), 1);
    }

    void without_trust_every_pair_stays_open()
    {
        const MessageLog messages;
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.endpoint.queue(Reply::content(u"ok"_s).held());
        stage.startRun();
        QVERIFY(stage.arrived(1));
        stage.endpoint.setIdentity(Identity::Expired);
        stage.endpoint.release();
        QVERIFY(stage.runEnded());
        QCOMPARE(stage.asked(), QStringList{u"P1 Q1"_s});
        QCOMPARE(messages.warnings().size(), 3);
        for (const auto all = messages.warnings(); const QString &warning : all) {
            QVERIFY2(warning.startsWith("survey error: SSL handshake failed: "_L1), qPrintable(warning));
            QVERIFY2(warning.contains(" (code 6) - SSL errors: "_L1), qPrintable(warning));
        }
        stage.endpoint.setIdentity(Identity::Good);
        QVERIFY(stage.run());
        QCOMPARE(stage.asked(), stage.twoByTwo);
        QCOMPARE(stage.answered(), stage.twoByTwo);
    }

    void without_a_key_every_pair_fails_at_once()
    {
        SurveyStage stage;
        RunTrace trace(stage);
        Stage::setSetting(u"openai/api_key"_s, QString());
        stage.fillTwoByTwo();
        QVERIFY(setBoilerplate(stage, {}, {}));
        QVERIFY(enter(stage, AnswerEntered{.persona = stage.uuidOf(u"P1"_s), .question = 1, .text = u"old"_s}));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        stage.startRun();
        const QStringList failed{u"log ! OPENAI_API_KEY not set"_s, "warning "_L1 + noKeyWarning()};
        const QJsonObject first = turn(u"user"_s, u"Q1"_s);
        const QJsonObject second = turn(u"user"_s, u"Q2"_s);
        const QJsonObject p2 = turn(u"system"_s, u"P2"_s);
        QCOMPARE(trace.events(),
                 QStringList({u"run off"_s, "log "_L1 + sentEntry({turn(u"system"_s, u"P1"_s), first,
                                                                   turn(u"assistant"_s, u"old"_s), second})}) +
                     failed + QStringList{"log "_L1 + sentEntry({p2, first})} + failed +
                     QStringList{"log "_L1 + sentEntry({p2, second})} + failed + QStringList({u"run on"_s, u"grid"_s}));
        QVERIFY(stage.button(u"Run Survey"_s)->isEnabled());
        QCOMPARE(stage.answered(), QStringList{u"P1 Q1"_s});
        QVERIFY(!stage.asksBeforeClosing());
        QCOMPARE(stage.endpoint.connections(), 0);

        Stage::setSetting(u"openai/api_key"_s, u"test-key"_s);
        QVERIFY(stage.run());
        QCOMPARE(stage.answered(), stage.twoByTwo);
    }

    void a_runner_without_window_and_log_only_warns()
    {
        const MessageLog messages;
        SurveyStage stage;
        Stage::setSetting(u"openai/api_key"_s, QString());
        stage.fillTwoByTwo();
        SurveyRunner runner(nullptr, stage.database(), nullptr, nullptr);
        const QSignalSpy finished(&runner, &SurveyRunner::finished);
        runner.start();
        QCOMPARE(finished.size(), 1);
        QCOMPARE(messages.warnings(), QStringList(4, noKeyWarning()));
    }

    void a_failure_neither_refreshes_nor_marks_the_project()
    {
        const MessageLog messages;
        SurveyStage stage;
        stage.fillTwoByTwo();
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        stage.endpoint.answerWith([](const Request &) { return Reply::status(500).held(); });
        stage.startRun();
        const QTableWidget *grid = resultsTable(stage);
        grid->item(0, 1)->setText(u"scribble"_s);
        for (int count = 1; count <= 4; ++count) {
            QVERIFY(stage.arrived(count));
            QCOMPARE(grid->item(0, 1)->text(), u"scribble"_s);
            stage.endpoint.release();
        }
        QVERIFY(stage.runEnded());
        QCOMPARE(messages.warnings().size(), 4);
        QVERIFY(!stage.asksBeforeClosing());
        // The end of a run refreshes the grid, whatever became of it.
        QCOMPARE(grid->item(0, 1)->text(), QString());
    }

    void a_failed_insert_leaves_the_pair_open_and_the_run_going_data()
    {
        QTest::addColumn<QString>("harm");
        QTest::addColumn<QString>("repair");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QStringList>("stored");
        const auto row = [](const char *name, const QString &condition, const QString &action, const QString &reason,
                            const QStringList &stored) {
            QTest::newRow(name) << u"CREATE TRIGGER refuse BEFORE INSERT ON responses WHEN %1 BEGIN %2; END"_s.arg(
                                       condition, action)
                                << u"DROP TRIGGER refuse"_s << reason << stored;
        };
        row("one question", u"NEW.question_id=1"_s, u"SELECT RAISE(ABORT, 'no room')"_s, u"no room "_s,
            {u"P1 Q2"_s, u"P2 Q2"_s});
        row("one pair", u"(SELECT COUNT(*) FROM responses)=0 AND NEW.question_id=1"_s,
            u"SELECT RAISE(FAIL, 'no room')"_s, u"no room "_s, {u"P1 Q2"_s, u"P2 Q1"_s, u"P2 Q2"_s});
        row("every row", u"1"_s, u"SELECT RAISE(ABORT, '')"_s, QString(), {});
        row("statement", u"0"_s, u"INSERT INTO nowhere VALUES (1)"_s, QString(), {});
        QTest::newRow("column") << u"ALTER TABLE responses RENAME COLUMN created_at TO other"_s
                                << u"ALTER TABLE responses RENAME COLUMN other TO created_at"_s << QString()
                                << QStringList{};
    }
    void a_failed_insert_leaves_the_pair_open_and_the_run_going()
    {
        QFETCH(const QString, harm);
        QFETCH(const QString, repair);
        QFETCH(const QString, reason);
        QFETCH(const QStringList, stored);
        SurveyStage stage;
        const RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.fillTwoByTwo();
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        QVERIFY(stage.exec(harm));
        stage.startRun();
        // The answer is lost, but not what follows an answer.
        const QString warning = trace.events().value(3);
        QVERIFY2(warning.startsWith("warning insert failed "_L1 + reason), qPrintable(warning));
        QCOMPARE(trace.events().mid(2, 3), QStringList({u"log <- test response"_s, warning, u"grid"_s}));
        QCOMPARE(trace.events().filter(u"warning"_s), QStringList(4 - stored.size(), warning));
        QCOMPARE(stage.answered(), stored);
        QVERIFY(stage.asksBeforeClosing());

        QVERIFY(stage.exec(repair));
        stage.startRun();
        QStringList all = stored + stage.twoByTwo;
        all.removeDuplicates();
        QCOMPARE(stage.answered(), all);
    }

    void answers_that_can_neither_be_stored_nor_counted_end_the_run_data()
    {
        QTest::addColumn<bool>("closed");
        QTest::newRow("table gone") << false;
        QTest::newRow("database closed") << true;
    }
    void answers_that_can_neither_be_stored_nor_counted_end_the_run()
    {
        QFETCH(const bool, closed);
        const MessageLog messages;
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.endpoint.queue(Reply::content(u"ok"_s).held());
        stage.startRun();
        QVERIFY(stage.arrived(1));
        if (closed)
            stage.database().close();
        else
            QVERIFY(stage.exec(u"ALTER TABLE responses RENAME TO moved"_s));
        stage.endpoint.release();
        QVERIFY(stage.runEnded());
        QVERIFY(stage.button(u"Run Survey"_s)->isEnabled());
        QCOMPARE(stage.asked(), QStringList{u"P1 Q1"_s});
        QCOMPARE(messages.warnings().filter(u"insert failed "_s).size(), 1);
        QCOMPARE(messages.warnings().filter(u"survey error"_s), QStringList());
    }

    void a_failing_check_skips_the_rest_without_a_word_data()
    {
        QTest::addColumn<bool>("closed");
        QTest::newRow("table gone") << false;
        QTest::newRow("database closed") << true;
    }
    void a_failing_check_skips_the_rest_without_a_word()
    {
        QFETCH(const bool, closed);
        SurveyStage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.fillTwoByTwo();
        trace.react = [&](const QString &event) {
            if (event != u"grid"_s || trace.events().count(u"grid"_s) != 2)
                return;
            if (closed)
                stage.database().close();
            else
                QVERIFY(stage.exec(u"ALTER TABLE responses RENAME TO moved"_s));
        };
        stage.startRun();
        QCOMPARE(trace.requests().size(), 2);
        QCOMPARE(trace.events().filter(u"warning"_s), QStringList());
        QCOMPARE(trace.events().sliced(7), closed ? QStringList{u"run on"_s} : QStringList({u"run on"_s, u"grid"_s}));
    }

    void without_a_database_there_is_no_run()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.database().close();
        QSignalSpy changed(stage.runEntry(), &QAction::enabledChanged);
        stage.startRun();
        QVERIFY(changed.isEmpty());
        QVERIFY(logWindow(stage) == nullptr);
        QVERIFY(stage.window()->findChildren<SurveyRunner *>().isEmpty());

        SurveyRunner runner(stage.window(), stage.database(), nullptr, nullptr);
        QSignalSpy finished(&runner, &SurveyRunner::finished);
        runner.start();
        QCOMPARE(finished.size(), 1);
    }

    void a_run_without_pairs_ends_at_once_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::newRow("no personas") << u"DELETE FROM personas"_s;
        QTest::newRow("no questions") << u"DELETE FROM questions"_s;
        QTest::newRow("table personas missing") << u"DROP TABLE personas"_s;
        QTest::newRow("table questions missing") << u"DROP TABLE questions"_s;
        QTest::newRow("a column of personas missing") << u"ALTER TABLE personas DROP COLUMN system_prompt"_s;
        QTest::newRow("a column of questions missing") << u"ALTER TABLE questions DROP COLUMN labels"_s;
        QTest::newRow("table responses missing") << u"DROP TABLE responses"_s;
        QTest::newRow("a column of responses missing")
            << u"ALTER TABLE responses RENAME COLUMN question_id TO number"_s;
    }
    void a_run_without_pairs_ends_at_once()
    {
        QFETCH(const QString, statement);
        SurveyStage stage;
        RunTrace trace(stage);
        stage.fillTwoByTwo();
        // So many that the answers of single personas are no longer read one by one.
        for (char16_t name = u'A'; name <= u'Z'; ++name)
            QVERIFY(enter(stage, PersonaEntered{.uuid = QString(name), .name = QString(name)}));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        QVERIFY(stage.exec(statement));
        for (const bool testMode : {false, true}) {
            trace.clear();
            Stage::setTestMode(testMode);
            stage.startRun();
            QCOMPARE(trace.events(), QStringList({u"run off"_s, u"run on"_s, u"grid"_s}));
            QVERIFY(stage.button(u"Run Survey"_s)->isEnabled());
        }
        QVERIFY(!stage.asksBeforeClosing());
        QCOMPARE(stage.endpoint.connections(), 0);
    }

    void boilerplate_that_cannot_be_read_is_empty_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::newRow("no row") << u"DELETE FROM boilerplate"_s;
        QTest::newRow("no table") << u"DROP TABLE boilerplate"_s;
        QTest::newRow("no column") << u"ALTER TABLE boilerplate DROP COLUMN postamble"_s;
        QTest::newRow("NULL") << u"UPDATE boilerplate SET preamble=NULL, postamble=NULL"_s;
    }
    void boilerplate_that_cannot_be_read_is_empty()
    {
        QFETCH(const QString, statement);
        SurveyStage stage;
        const RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.addPersona(u"P1"_s, u"I am P1"_s);
        stage.addQuestion(u"Q1"_s);
        QVERIFY(setBoilerplate(stage, u"Be"_s, u"Now"_s));
        QVERIFY(stage.exec(statement));
        stage.startRun();
        QCOMPARE(trace.requests(), QStringList{sentEntry({turn(u"system"_s, u"I am P1"_s), turn(u"user"_s, u"Q1"_s)})});
    }

    void a_snapshot_that_breaks_off_is_used_as_far_as_it_came_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("order");
        QTest::addColumn<QString>("second");
        QTest::addColumn<QStringList>("stored");
        QTest::newRow("personas") << u"personas"_s << u"attributes"_s << u"name"_s << u"'P2'"_s
                                  << QStringList{u"P1 Q1"_s, u"P1 Q2"_s};
        QTest::newRow("questions") << u"questions"_s << u"prompt"_s << u"order_num"_s << u"2"_s
                                   << QStringList{u"P1 x"_s, u"P2 x"_s};
    }
    void a_snapshot_that_breaks_off_is_used_as_far_as_it_came()
    {
        QFETCH(const QString, table);
        QFETCH(const QString, column);
        QFETCH(const QString, order);
        QFETCH(const QString, second);
        QFETCH(const QStringList, stored);
        SurveyStage stage;
        Stage::setTestMode(true);
        stage.fillTwoByTwo();
        // With the index the rows come one by one, and the second cannot be computed.
        QVERIFY(stage.exec({u"ALTER TABLE %1 RENAME COLUMN %2 TO old"_s.arg(table, column),
                            u"ALTER TABLE %1 ADD COLUMN %2 TEXT GENERATED ALWAYS AS (CASE %3 WHEN %4 THEN "
                            "abs(-9223372036854775807 - 1) ELSE 'x' END) VIRTUAL"_s.arg(table, column, order, second),
                            u"CREATE INDEX inOrder ON %1 (%2)"_s.arg(table, order)}));
        stage.startRun();
        QCOMPARE(stage.answered(), stored);
    }
};

ORRINET_TEST(TestRunFailures)
#include "tst_runfailures.moc"
