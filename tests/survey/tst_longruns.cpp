// Long runs in one call: they must not need a stack that grows with the pairs.

#include "survey/surveyrunner.h"
#include "tests/support/messagelog.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/stage.h"
#include "tests/support/testcase.h"

#include <QSignalSpy>
#include <QThread>

#include <memory>

using namespace Qt::StringLiterals;

static constexpr int personaCount = 200;
static constexpr int questionCount = 100;
static constexpr int pairCount = personaCount * questionCount;

static bool fillLongProject(Sql &project)
{
    const auto numbers = [](int count) {
        return u"WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n+1 FROM numbers WHERE n<%1) "_s.arg(count);
    };
    // The trigger keeps the table empty and counts instead: answers, and those of them that are out of turn.
    return project.exec(schemaStatements()) &&
           project.exec(u"INSERT INTO personas (uuid, name) %1 SELECT n, printf('%05d', n) FROM numbers"_s.arg(
               numbers(personaCount))) &&
           project.exec(u"INSERT INTO questions (question_id, order_num, prompt, answer_type) "
                        "%1 SELECT n, n, 'Q', 'text' FROM numbers"_s.arg(numbers(questionCount))) &&
           project.exec(u"CREATE TABLE tally AS SELECT 0 AS answers, 0 AS astray"_s) &&
           project.exec(u"CREATE TRIGGER count BEFORE INSERT ON responses BEGIN "
                        "UPDATE tally SET answers=answers+1, astray=astray+NOT (CAST(NEW.persona_uuid AS "
                        "INTEGER)=answers/%1+1 AND "
                        "NEW.question_id=answers%%1+1 AND NEW.text_answer='test response'); "
                        "SELECT RAISE(IGNORE); END"_s.arg(questionCount));
}

/// What a long run leaves behind: how often it finished, its answers, and those of them that were out of turn.
struct LongRun
{
    qsizetype finished = 0;
    int answers = -1;
    int astray = -1;
};

/// Runs in a thread with a mebibyte of stack: that is 52 bytes for each pair, less than any recursion needs.
static LongRun runOnSmallStack()
{
    LongRun result;
    const std::unique_ptr<QThread> thread(QThread::create([&result] {
        SideDatabase project(u":memory:"_s);
        if (!fillLongProject(project))
            return;
        SurveyRunner runner(nullptr, project.database(), nullptr, nullptr);
        const QSignalSpy finished(&runner, &SurveyRunner::finished);
        runner.start();
        result = {.finished = finished.size(),
                  .answers = project.value(u"SELECT answers FROM tally"_s).toInt(),
                  .astray = project.value(u"SELECT astray FROM tally"_s).toInt()};
    }));
    thread->setStackSize(1 << 20);
    thread->start();
    thread->wait();
    return result;
}

class TestLongRuns : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_long_run_in_test_mode_answers_every_pair_in_turn()
    {
        const Stage stage;
        Stage::setTestMode(true);
        const LongRun run = runOnSmallStack();
        QCOMPARE(run.finished, 1);
        QCOMPARE(run.answers, pairCount);
        QCOMPARE(run.astray, 0);
    }

    void a_long_run_without_a_key_fails_every_pair()
    {
        const Stage stage;
        const MessageLog messages;
        const LongRun run = runOnSmallStack();
        QCOMPARE(run.finished, 1);
        QCOMPARE(messages.warnings().size(), pairCount);
        QCOMPARE(messages.warnings().count(u"survey error: OPENAI_API_KEY not set"_s), pairCount);
        QCOMPARE(run.answers, 0);
    }
};

ORRINET_TEST(TestLongRuns)
#include "tst_longruns.moc"
