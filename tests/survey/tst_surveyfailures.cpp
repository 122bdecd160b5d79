#include "survey/surveyrunner.h"
#include "tests/support/messagelog.h"
#include "tests/survey/surveystage.h"

#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Identity;
using standin::Reply;
using standin::Request;

Q_DECLARE_METATYPE(standin::Reply)

class TestSurveyFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_failed_pair_stays_open_data();
    void a_failed_pair_stays_open();
    void without_trust_every_pair_stays_open();
    void without_a_key_a_run_is_over_at_once();
    void a_failure_neither_refreshes_nor_marks_the_project();
    void a_failed_question_is_missing_from_the_history();
    void a_question_asked_again_comes_later_in_the_history();
    void a_failed_insert_leaves_the_pair_open();
    void an_unusable_reply_counts_as_answer_data();
    void an_unusable_reply_counts_as_answer();
    void pairs_that_cannot_be_checked_are_skipped();
    void a_run_ends_when_its_database_is_closed();
    void without_a_database_there_is_no_run();
    void an_unreadable_table_counts_as_empty_data();
    void an_unreadable_table_counts_as_empty();
};

namespace {

/// Answers one pair with this reply, all others in a usable way.
void failAt(SurveyStage &stage, const QString &pair, const Reply &reply)
{
    stage.endpoint.answerWith([&stage, pair, reply](const Request &) {
        return stage.asked().constLast() == pair ? reply : Reply::content(u"ok"_s);
    });
}

} // namespace

void TestSurveyFailures::a_failed_pair_stays_open_data()
{
    QTest::addColumn<Reply>("reply");
    QTest::addColumn<int>("code");
    const Reply usable = Reply::content(u"Not to be read."_s);
    QTest::newRow("401") << Reply::status(401, usable.body) << 204;
    QTest::newRow("429") << Reply::status(429, usable.body) << 299;
    QTest::newRow("500") << Reply::status(500, usable.body) << 401;
    QTest::newRow("dropped before the head") << usable.ending(Reply::End::DroppedBeforeHead) << 2;
    QTest::newRow("dropped after the head") << usable.ending(Reply::End::DroppedAfterHead) << 2;
    QTest::newRow("truncated") << usable.ending(Reply::End::Truncated) << 2;
    QTest::newRow("no HTTP") << Reply::garbage("hello\r\n\r\n") << 2;
}

void TestSurveyFailures::a_failed_pair_stays_open()
{
    const MessageLog messages;
    SurveyStage stage;
    QFETCH(const Reply, reply);
    QFETCH(const int, code);
    stage.fillTwoByTwo();
    failAt(stage, u"P1 Q2"_s, reply);
    QVERIFY(stage.run());
    QStringList asked = stage.asked();
    asked.removeDuplicates();
    QCOMPARE(asked, stage.twoByTwo);
    QCOMPARE(stage.answered(), (QStringList{u"P1 Q1"_s, u"P2 Q1"_s, u"P2 Q2"_s}));
    QCOMPARE(stage.endpoint.mostInFlight(), 1);

    QStringList failures = stage.logText().split(u'\n');
    failures.removeIf([](const QString &line) { return !line.startsWith("! "_L1); });
    QCOMPARE(failures.size(), 1);
    QVERIFY2(failures.first().endsWith(u" (code %1)"_s.arg(code)), qPrintable(failures.first()));
    QCOMPARE(messages.warnings(), QStringList{"survey error: "_L1 + failures.first().sliced(2)});
    QVERIFY(!stage.logText().contains("Not to be read."_L1));

    const qsizetype before = stage.asked().size();
    stage.endpoint.answerWith([](const Request &) { return Reply::content(u"ok"_s); });
    QVERIFY(stage.run());
    QCOMPARE(stage.asked().sliced(before), QStringList{u"P1 Q2"_s});
    QCOMPARE(stage.answered().constLast(), u"P1 Q2"_s);
    QCOMPARE(messages.warnings().size(), 1);
}

void TestSurveyFailures::without_trust_every_pair_stays_open()
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

void TestSurveyFailures::without_a_key_a_run_is_over_at_once()
{
    const MessageLog messages;
    SurveyStage stage;
    stage.fillTwoByTwo();
    Stage::setSetting(u"openai/api_key"_s, QString());
    QSignalSpy changed(stage.runEntry(), &QAction::enabledChanged);
    stage.startRun();
    QCOMPARE(changed, (QList<QVariantList>{{false}, {true}}));
    QVERIFY(stage.find<QPushButton>(u"runSurveyButton"_s)->isEnabled());
    QCOMPARE(messages.warnings(), QStringList(4, u"survey error: OPENAI_API_KEY not set"_s));
    QCOMPARE(stage.endpoint.connections(), 0);

    Stage::setSetting(u"openai/api_key"_s, u"test-key"_s);
    QVERIFY(stage.run());
    QCOMPARE(stage.answered(), stage.twoByTwo);
}

void TestSurveyFailures::a_failure_neither_refreshes_nor_marks_the_project()
{
    const MessageLog messages;
    SurveyStage stage;
    stage.fillTwoByTwo();
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    stage.endpoint.answerWith([](const Request &) { return Reply::status(500).held(); });
    stage.startRun();
    auto *grid = stage.find<QTableWidget>(u"resultsTable"_s);
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

void TestSurveyFailures::a_failed_question_is_missing_from_the_history()
{
    const MessageLog messages;
    SurveyStage stage;
    stage.fillTwoByTwo();
    failAt(stage, u"P1 Q1"_s, Reply::status(500));
    QVERIFY(stage.run());
    QCOMPARE(stage.endpoint.requests().at(1).json().value("messages"_L1).toArray().size(), 2);
    QCOMPARE(stage.endpoint.requests().at(3).json().value("messages"_L1).toArray().size(), 4);
}

void TestSurveyFailures::a_question_asked_again_comes_later_in_the_history()
{
    const MessageLog messages;
    SurveyStage stage;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    stage.addQuestion(u"Q2"_s);
    failAt(stage, u"P1 Q1"_s, Reply::status(500));
    QVERIFY(stage.run());
    // Times have seconds only.
    QVERIFY(stage.exec(u"UPDATE responses SET created_at='2020-01-01 00:00:00'"_s));
    stage.endpoint.queue(Reply::content(u"ok"_s));
    stage.addQuestion(u"Q3"_s);
    QVERIFY(stage.run());
    QCOMPARE(stage.asked().sliced(2), (QStringList{u"P1 Q1"_s, u"P1 Q3"_s}));
    QStringList prompts;
    const QJsonArray told = stage.endpoint.requests().constLast().json().value("messages"_L1).toArray();
    for (const auto &message : told) {
        if (message["role"_L1] == "user"_L1)
            prompts << message["content"_L1].toString();
    }
    QCOMPARE(prompts, (QStringList{u"Q2"_s, u"Q1"_s, u"Q3"_s}));
}

void TestSurveyFailures::a_failed_insert_leaves_the_pair_open()
{
    const MessageLog messages;
    SurveyStage stage;
    stage.fillTwoByTwo();
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QVERIFY(stage.exec(u"CREATE TRIGGER refusal BEFORE INSERT ON responses WHEN NEW.question_id=1 "
                       "BEGIN SELECT RAISE(ABORT, 'no room'); END"_s));
    stage.endpoint.queue(Reply::content(u"lost"_s));
    stage.endpoint.queue(Reply::content(u"ok"_s).held());
    stage.startRun();
    stage.find<QTableWidget>(u"resultsTable"_s)->item(0, 1)->setText(u"scribble"_s);
    QVERIFY(stage.arrived(2));
    // The answer is lost, but not what follows an answer.
    QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->item(0, 1)->text(), QString());
    QVERIFY(stage.asksBeforeClosing());
    QVERIFY(stage.logText().contains("\n<- lost\n"_L1));
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), stage.twoByTwo);
    QCOMPARE(stage.answered(), (QStringList{u"P1 Q2"_s, u"P2 Q2"_s}));
    QCOMPARE(messages.warnings(), QStringList(2, u"insert failed no room Unable to fetch row"_s));

    QVERIFY(stage.exec(u"DROP TRIGGER refusal"_s));
    QVERIFY(stage.run());
    QCOMPARE(stage.asked().sliced(4), (QStringList{u"P1 Q1"_s, u"P2 Q1"_s}));
}

void TestSurveyFailures::an_unusable_reply_counts_as_answer_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("body");
    for (const char *type : {"text", "numeric", "single_choice", "ranking", "other"}) {
        QTest::addRow("%s, no JSON", type) << QString::fromLatin1(type) << "no JSON"_ba;
        QTest::addRow("%s, no choices", type) << QString::fromLatin1(type) << "{}"_ba;
        QTest::addRow("%s, null", type) << QString::fromLatin1(type)
                                        << R"({"choices": [{"message": {"content": null}}]})"_ba;
        QTest::addRow("%s, nothing", type) << QString::fromLatin1(type) << ""_ba;
    }
}

void TestSurveyFailures::an_unusable_reply_counts_as_answer()
{
    SurveyStage stage;
    QFETCH(const QString, type);
    QFETCH(const QByteArray, body);
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s, type);
    stage.endpoint.queue(Reply::json(body));
    QVERIFY(stage.run());
    QCOMPARE(stage.rows(u"SELECT coalesce(text_answer, ''), coalesce(numeric_answer, ''), coalesce(json_answer, '') "
                        "FROM responses"_s),
             (QList<QVariantList>{{u""_s, u""_s, u""_s}}));
    QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)),
             (QList<QStringList>{{u"P1"_s, QString(), QString()}}));
    QVERIFY(stage.run());
    QCOMPARE(stage.endpoint.requests().size(), 1);
}

void TestSurveyFailures::pairs_that_cannot_be_checked_are_skipped()
{
    const MessageLog messages;
    SurveyStage stage;
    stage.fillTwoByTwo();
    stage.endpoint.queue(Reply::content(u"ok"_s).held());
    stage.startRun();
    QVERIFY(stage.arrived(1));
    QVERIFY(stage.exec(u"ALTER TABLE responses RENAME TO moved"_s));
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.asked(), QStringList{u"P1 Q1"_s});
    QCOMPARE(messages.warnings().size(), 1);
    QVERIFY2(messages.warnings().constFirst().startsWith("insert failed "_L1),
             qPrintable(messages.warnings().constFirst()));
}

void TestSurveyFailures::a_run_ends_when_its_database_is_closed()
{
    const MessageLog messages;
    SurveyStage stage;
    stage.fillTwoByTwo();
    stage.endpoint.queue(Reply::content(u"ok"_s).held());
    stage.startRun();
    QVERIFY(stage.arrived(1));
    stage.project().close();
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QVERIFY(stage.find<QPushButton>(u"runSurveyButton"_s)->isEnabled());
    QCOMPARE(stage.endpoint.requests().size(), 1);
    QCOMPARE(messages.warnings().filter(u"survey error"_s), QStringList());
    QCOMPARE(messages.warnings().filter(u"insert failed"_s).size(), 1);
}

void TestSurveyFailures::without_a_database_there_is_no_run()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    stage.project().close();
    QSignalSpy changed(stage.runEntry(), &QAction::enabledChanged);
    stage.startRun();
    QVERIFY(changed.isEmpty());
    QVERIFY(stage.log() == nullptr);

    SurveyRunner runner(stage.window(), stage.project(), nullptr, nullptr);
    QSignalSpy finished(&runner, &SurveyRunner::finished);
    runner.start();
    QCOMPARE(finished.size(), 1);
}

void TestSurveyFailures::an_unreadable_table_counts_as_empty_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QStringList>("asked");
    QTest::newRow("personas") << u"personas"_s << QStringList();
    QTest::newRow("questions") << u"questions"_s << QStringList();
    QTest::newRow("boilerplate") << u"boilerplate"_s << QStringList{u"P1"_s};
}

void TestSurveyFailures::an_unreadable_table_counts_as_empty()
{
    SurveyStage stage;
    QFETCH(const QString, table);
    QFETCH(const QStringList, asked);
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    QVERIFY(stage.exec("ALTER TABLE "_L1 + table + " RENAME TO moved"_L1));
    QVERIFY(stage.run());
    QStringList systemTexts;
    for (const Request &request : stage.endpoint.requests())
        systemTexts << request.json().value("messages"_L1)[0]["content"_L1].toString();
    QCOMPARE(systemTexts, asked);
}

QTEST_MAIN(TestSurveyFailures)
#include "tst_surveyfailures.moc"
