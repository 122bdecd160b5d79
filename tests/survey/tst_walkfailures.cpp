// Runs in which something fails: statements, the connection, the requests for want of a key. And what a run knows of
// changes made under it.

#include "survey/surveyrunner.h"
#include "tests/support/messagelog.h"
#include "tests/survey/walkkit.h"

#include <QSignalSpy>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

using namespace Qt::StringLiterals;

/// The events of a run that finds no pair.
static QStringList nothingAsked()
{
    return {u"run off"_s, u"run on"_s, u"grid"_s};
}

/// How every run ends.
static QStringList theEnd()
{
    const QStringList all = nothingAsked();
    return all.last(2);
}

/// The warning that the insert of an answer to A1 deserves, empty if it succeeds.
static QString insertWarning(Stage &stage)
{
    QSqlQuery query(stage.project());
    query.prepare(u"INSERT INTO responses "
                  "(persona_uuid, question_id, text_answer, numeric_answer, json_answer, created_at) "
                  "VALUES (?,?,?,?,?,CURRENT_TIMESTAMP)"_s);
    const QVariantList values{u"uuid-A"_s, 1, QString(), QVariant(), QString()};
    for (const QVariant &value : values)
        query.addBindValue(value);
    return query.exec() ? QString() : QString("warning insert failed "_L1 + query.lastError().text());
}

class TestWalkFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Stage::setTestMode(false); }

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
        Stage stage;
        RunTrace trace(stage);
        QVERIFY(addTwoByTwo(stage));
        // So many that the answers of single personas are no longer read one by one.
        for (char16_t name = u'C'; name <= u'Z'; ++name)
            QVERIFY(addPersona(stage, QString(name)));
        QVERIFY(stage.exec(statement));
        for (const bool testMode : {false, true}) {
            trace.events.clear();
            Stage::setTestMode(testMode);
            stage.call("runSurvey");
            QCOMPARE(trace.events, nothingAsked());
            QVERIFY(stage.find<QPushButton>(u"runSurveyButton"_s)->isEnabled());
        }
        QVERIFY(!stage.asksBeforeClosing());
    }

    void texts_that_cannot_be_read_are_empty_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::newRow("no row") << u"DELETE FROM boilerplate"_s;
        QTest::newRow("no table") << u"DROP TABLE boilerplate"_s;
        QTest::newRow("no column") << u"ALTER TABLE boilerplate DROP COLUMN postamble"_s;
        QTest::newRow("NULL") << u"UPDATE boilerplate SET preamble=NULL, postamble=NULL"_s;
    }
    void texts_that_cannot_be_read_are_empty()
    {
        QFETCH(const QString, statement);
        Stage stage;
        const RunTrace trace(stage);
        QVERIFY(addPersona(stage, u"A"_s, u"I am A"_s));
        QVERIFY(addQuestion(stage, 1, u"Q"_s));
        QVERIFY(setBoilerplate(stage, u"Be"_s, u"Now"_s));
        QVERIFY(stage.exec(statement));
        stage.call("runSurvey");
        QCOMPARE(trace.events.value(1), QString("log "_L1 + sent({{u"system"_s, u"I am A"_s}, {u"user"_s, u"Q"_s}})));
    }

    void a_snapshot_that_breaks_off_is_used_as_far_as_it_came_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QStringList>("stored");
        QTest::newRow("personas") << u"personas"_s << QStringList{u"A1"_s, u"A2"_s};
        QTest::newRow("questions") << u"questions"_s << QStringList{u"A1"_s, u"B1"_s};
    }
    void a_snapshot_that_breaks_off_is_used_as_far_as_it_came()
    {
        QFETCH(const QString, table);
        QFETCH(const QStringList, stored);
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        // With the index the rows come one by one, and the second cannot be computed.
        const bool personas = table == u"personas"_s;
        QVERIFY(stage.exec(
            u"ALTER TABLE %1 RENAME COLUMN %2 TO old"_s.arg(table, personas ? "attributes"_L1 : "prompt"_L1)));
        QVERIFY(stage.exec(u"ALTER TABLE %1 ADD COLUMN %2 TEXT GENERATED ALWAYS AS "
                           "(CASE %3 WHEN %4 THEN abs(-9223372036854775807 - 1) ELSE 'x' END) VIRTUAL"_s.arg(
                               table, personas ? "attributes"_L1 : "prompt"_L1, personas ? "name"_L1 : "order_num"_L1,
                               personas ? "'B'"_L1 : "2"_L1)));
        QVERIFY(stage.exec(u"CREATE INDEX walk ON %1 (%2)"_s.arg(table, personas ? "name"_L1 : "order_num"_L1)));
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), stored);
    }

    void a_failing_check_in_mid_run_skips_the_rest_without_a_word()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        trace.react = [&](const QString &event) {
            if (event == u"grid"_s && trace.events.count(u"grid"_s) == 2)
                QVERIFY(stage.exec(u"ALTER TABLE responses RENAME TO elsewhere"_s));
        };
        stage.call("runSurvey");
        QCOMPARE(trace.events.filter(u"log ->"_s).size(), 2);
        QCOMPARE(trace.events.filter(u"warning"_s), QStringList());
        QCOMPARE(trace.events.last(2), theEnd());
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM elsewhere"_s), 2);
    }

    void a_connection_closed_in_mid_run_skips_the_rest()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        trace.react = [&](const QString &event) {
            if (event == u"grid"_s)
                stage.project().close();
        };
        stage.call("runSurvey");
        // The refresh at the end finds no database.
        QCOMPARE(trace.events.last(2), QStringList({u"grid"_s, u"run on"_s}));
        QCOMPARE(trace.events.filter(u"log"_s).size(), 2);
        QCOMPARE(trace.events.filter(u"warning"_s), QStringList());
    }

    void a_closed_project_is_not_run()
    {
        Stage stage;
        QVERIFY(addTwoByTwo(stage));
        stage.project().close();
        stage.call("runSurvey");
        QVERIFY(logWindow(stage) == nullptr);
        QVERIFY(stage.window()->findChildren<SurveyRunner *>().isEmpty());
        QVERIFY(stage.action(u"Run"_s)->isEnabled());
    }

    void a_runner_of_a_closed_database_finishes_at_once()
    {
        Stage stage;
        QVERIFY(addTwoByTwo(stage));
        stage.project().close();
        SurveyRunner runner(nullptr, stage.project(), nullptr, nullptr);
        const QSignalSpy finished(&runner, &SurveyRunner::finished);
        runner.start();
        QCOMPARE(finished.size(), 1);
    }

    void a_failed_insert_leaves_the_pair_open_data()
    {
        QTest::addColumn<QString>("condition");
        QTest::addColumn<QString>("action");
        QTest::addColumn<QStringList>("stored");
        QTest::newRow("one question") << u"NEW.question_id=1"_s << u"SELECT RAISE(ABORT, 'refused')"_s
                                      << QStringList{u"A2"_s, u"B2"_s};
        QTest::newRow("one pair") << u"NEW.persona_uuid='uuid-A' AND NEW.question_id=1"_s
                                  << u"SELECT RAISE(FAIL, 'refused')"_s << QStringList{u"A2"_s, u"B1"_s, u"B2"_s};
        QTest::newRow("every row") << u"1"_s << u"SELECT RAISE(ABORT, '')"_s << QStringList{};
        QTest::newRow("statement") << u"0"_s << u"INSERT INTO nowhere VALUES (1)"_s << QStringList{};
    }
    void a_failed_insert_leaves_the_pair_open()
    {
        QFETCH(const QString, condition);
        QFETCH(const QString, action);
        QFETCH(const QStringList, stored);
        Stage stage;
        const RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(stage.exec(
            u"CREATE TRIGGER refuse BEFORE INSERT ON responses WHEN %1 BEGIN %2; END"_s.arg(condition, action)));
        const QString warning = insertWarning(stage);
        QVERIFY(!warning.isEmpty());
        stage.call("runSurvey");
        QCOMPARE(trace.events.mid(2, 3), QStringList({u"log <- test response"_s, warning, u"grid"_s}));
        QCOMPARE(trace.events.filter(u"warning"_s), QStringList(4 - stored.size(), warning));
        QCOMPARE(storedPairs(stage), stored);
        QVERIFY(stage.exec(u"DROP TRIGGER refuse"_s));
        stage.call("runSurvey");
        QStringList all = stored;
        for (const QString &pair : {u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s}) {
            if (!stored.contains(pair))
                all.append(pair);
        }
        QCOMPARE(storedPairs(stage), all);
    }

    void a_failed_insert_refreshes_and_marks_all_the_same()
    {
        Stage stage;
        const RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addPersona(stage, u"A"_s));
        QVERIFY(addQuestion(stage, 1, u"Q"_s));
        QVERIFY(stage.exec(u"ALTER TABLE responses DROP COLUMN created_at"_s));
        const QString warning = insertWarning(stage);
        QVERIFY(!warning.isEmpty());
        stage.call("runSurvey");
        QCOMPARE(trace.events.sliced(2),
                 QStringList({u"log <- test response"_s, warning, u"grid"_s, u"run on"_s, u"grid"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void without_a_key_every_pair_fails_at_once()
    {
        Stage stage;
        const RunTrace trace(stage);
        qputenv("OPENAI_API_KEY", "not looked at");
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(addPersona(stage, u"C"_s));
        QVERIFY(addResponse(stage, u"A"_s, 1));
        QVERIFY(stage.exec(u"DELETE FROM personas WHERE name='B'"_s));
        stage.call("runSurvey");
        const QStringList failed{u"log ! OPENAI_API_KEY not set"_s, u"warning survey error: OPENAI_API_KEY not set"_s};
        const QString first = "log "_L1 + sent({{u"user"_s, u"Q1"_s}});
        const QString second = "log "_L1 + sent({{u"user"_s, u"Q2"_s}});
        const QString withHistory =
            "log "_L1 + sent({{u"user"_s, u"Q1"_s}, {u"assistant"_s, u"old"_s}, {u"user"_s, u"Q2"_s}});
        QCOMPARE(trace.events, QStringList{u"run off"_s} + QStringList{withHistory} + failed + QStringList{first} +
                                   failed + QStringList{second} + failed + theEnd());
        QCOMPARE(storedPairs(stage), QStringList{u"A1"_s});
        QVERIFY(!stage.asksBeforeClosing());
        qunsetenv("OPENAI_API_KEY");
    }

    void a_run_that_only_failed_refreshes_the_grid_once()
    {
        Stage stage;
        const RunTrace trace(stage);
        QVERIFY(addTwoByTwo(stage));
        const auto *grid = stage.find<QTableWidget>(u"resultsTable"_s);
        QCOMPARE(grid->rowCount(), 0);
        stage.call("runSurvey");
        QCOMPARE(trace.events.count(u"grid"_s), 1);
        QCOMPARE(trace.events.filter(u"warning"_s).size(), 4);
        QCOMPARE(grid->rowCount(), 2);
        QCOMPARE(grid->columnCount(), 5);
    }

    void a_failed_run_leaves_all_its_pairs_to_the_next()
    {
        Stage stage;
        const RunTrace trace(stage);
        QVERIFY(addTwoByTwo(stage));
        stage.call("runSurvey");
        Stage::setTestMode(true);
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), QStringList({u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s}));
    }

    void a_run_without_window_and_log_only_warns()
    {
        Stage stage;
        QVERIFY(addTwoByTwo(stage));
        const MessageLog messages;
        SurveyRunner runner(nullptr, stage.project(), nullptr, nullptr);
        const QSignalSpy finished(&runner, &SurveyRunner::finished);
        runner.start();
        QCOMPARE(finished.size(), 1);
        QCOMPARE(messages.warnings(), QStringList(4, u"survey error: OPENAI_API_KEY not set"_s));
    }
};

QTEST_MAIN(TestWalkFailures)
#include "tst_walkfailures.moc"
