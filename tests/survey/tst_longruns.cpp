// Runs of 100,000 pairs in one call: they must not need a stack that grows with the pairs.

#include "survey/surveyrunner.h"
#include "tests/support/messagelog.h"
#include "tests/support/stage.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

using namespace Qt::StringLiterals;

static constexpr int personaCount = 1'000;
static constexpr int questionCount = 100;
static constexpr int pairCount = personaCount * questionCount;
static constexpr auto smallStack = "ORRINET_TEST_SMALL_STACK";

static bool fillProject(Stage &stage)
{
    const auto numbers = [](int count) {
        return u"WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM numbers WHERE n<%1) "_s.arg(count);
    };
    // The trigger keeps the table empty and counts instead: answers, and those of them that are out of turn.
    return stage.exec(u"INSERT INTO personas (uuid, name) %1 SELECT n, printf('%05d', n) FROM numbers"_s.arg(
               numbers(personaCount))) &&
           stage.exec(u"INSERT INTO questions (question_id, order_num, prompt, answer_type) "
                      "%1 SELECT n, n, 'Q', 'text' FROM numbers"_s.arg(numbers(questionCount))) &&
           stage.exec(u"CREATE TABLE tally AS SELECT 0 AS answers, 0 AS astray"_s) &&
           stage.exec(u"CREATE TRIGGER count BEFORE INSERT ON responses BEGIN "
                      "UPDATE tally SET answers=answers+1, astray=astray+NOT (CAST(NEW.persona_uuid AS "
                      "INTEGER)=answers/%1+1 AND "
                      "NEW.question_id=answers%%1+1 AND NEW.text_answer='test response'); "
                      "SELECT RAISE(IGNORE); END"_s.arg(questionCount));
}

class TestLongRuns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
#ifdef Q_OS_UNIX
        rlimit limit{};
        QCOMPARE(getrlimit(RLIMIT_STACK, &limit), 0);
        if (qEnvironmentVariableIsSet(smallStack))
            QCOMPARE(limit.rlim_cur, rlim_t(1) << 20);
#endif
    }

    void a_long_run_in_test_mode_answers_every_pair_in_turn()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(fillProject(stage));
        SurveyRunner runner(nullptr, stage.project(), nullptr, nullptr);
        const QSignalSpy finished(&runner, &SurveyRunner::finished);
        runner.start();
        QCOMPARE(finished.size(), 1);
        QCOMPARE(stage.value(u"SELECT answers FROM tally"_s), pairCount);
        QCOMPARE(stage.value(u"SELECT astray FROM tally"_s), 0);
    }

    void a_long_run_without_a_key_fails_every_pair()
    {
        Stage stage;
        QVERIFY(fillProject(stage));
        SurveyRunner runner(nullptr, stage.project(), nullptr, nullptr);
        const QSignalSpy finished(&runner, &SurveyRunner::finished);
        QStringList warnings;
        {
            const MessageLog messages;
            runner.start();
            warnings = messages.warnings();
        }
        QCOMPARE(finished.size(), 1);
        QCOMPARE(warnings.size(), pairCount);
        QCOMPARE(warnings.count(u"survey error: OPENAI_API_KEY not set"_s), pairCount);
        QCOMPARE(stage.value(u"SELECT answers FROM tally"_s), 0);
    }

    void a_mebibyte_of_stack_is_enough_data()
    {
        QTest::addColumn<QString>("function");
        QTest::newRow("test mode") << u"a_long_run_in_test_mode_answers_every_pair_in_turn"_s;
        QTest::newRow("no key") << u"a_long_run_without_a_key_fails_every_pair"_s;
    }
    void a_mebibyte_of_stack_is_enough()
    {
#ifdef Q_OS_UNIX
        QFETCH(const QString, function);
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1StringView(smallStack), u"1"_s);
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(u"/bin/sh"_s, {u"-c"_s, u"ulimit -s 1024 && exec \"$0\" \"$1\""_s,
                                   QCoreApplication::applicationFilePath(), function});
        QVERIFY(child.waitForFinished(-1));
        const QByteArray output = child.readAll();
        QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0, output.constData());
        // The function and the two round it.
        QVERIFY2(output.contains("3 passed, 0 failed"), output.constData());
#else
        QSKIP("the stack of the main thread is fixed when the program is linked");
#endif
    }
};

QTEST_MAIN(TestLongRuns)
#include "tst_longruns.moc"
