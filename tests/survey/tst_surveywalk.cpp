#include "inspect/chatlogwindow.h"
#include "survey/surveyrunner.h"
#include "tests/survey/walkkit.h"

#include <QMetaMethod>
#include <QTest>

using namespace Qt::StringLiterals;

class TestSurveyWalk : public QObject
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

    void personas_go_by_name_and_questions_by_their_number()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), QStringList({u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s}));
    }

    void the_number_counts_not_the_id()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(stage.exec(u"UPDATE questions SET order_num = 3 - order_num"_s));
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), QStringList({u"A2"_s, u"A1"_s, u"B2"_s, u"B1"_s}));
    }

    void answered_pairs_are_skipped_data()
    {
        QTest::addColumn<QStringList>("answered");
        QTest::addColumn<QStringList>("asked");
        QTest::newRow("first") << QStringList{u"A1"_s} << QStringList{u"A2"_s, u"B1"_s, u"B2"_s};
        QTest::newRow("last of a persona") << QStringList{u"A2"_s} << QStringList{u"A1"_s, u"B1"_s, u"B2"_s};
        QTest::newRow("a whole persona") << QStringList{u"A2"_s, u"A1"_s} << QStringList{u"B1"_s, u"B2"_s};
        QTest::newRow("a whole question") << QStringList{u"B1"_s, u"A1"_s} << QStringList{u"A2"_s, u"B2"_s};
        QTest::newRow("last") << QStringList{u"B2"_s} << QStringList{u"A1"_s, u"A2"_s, u"B1"_s};
        QTest::newRow("twice answered") << QStringList{u"A1"_s, u"A1"_s} << QStringList{u"A2"_s, u"B1"_s, u"B2"_s};
        QTest::newRow("all") << QStringList{u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s} << QStringList{};
        QTest::newRow("deleted persona") << QStringList{u"C1"_s} << QStringList{u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s};
        QTest::newRow("deleted question") << QStringList{u"A3"_s} << QStringList{u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s};
    }
    void answered_pairs_are_skipped()
    {
        QFETCH(const QStringList, answered);
        QFETCH(const QStringList, asked);
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        for (const QString &pair : answered)
            QVERIFY(addResponse(stage, pair.first(1), pair.sliced(1).toInt()));
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), answered + asked);
    }

    void a_row_without_content_is_an_answer()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        QVERIFY(stage.exec(u"INSERT INTO responses (persona_uuid, question_id) VALUES ('uuid-A', 1)"_s));
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage), QStringList({u"A1"_s, u"A2"_s, u"B1"_s, u"B2"_s}));
    }

    void a_complete_survey_ends_at_once_and_shows_the_log()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        stage.call("runSurvey");
        logWindow(stage)->hide();
        const RunTrace trace(stage);
        stage.call("runSurvey");
        QCOMPARE(trace.events, QStringList({u"run off"_s, u"run on"_s, u"grid"_s}));
        QVERIFY(logWindow(stage)->isVisible());
    }

    void what_came_later_is_asked_by_the_next_run()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        stage.call("runSurvey");
        QVERIFY(addPersona(stage, u"0"_s));
        QVERIFY(addQuestion(stage, 3, u"Q3"_s));
        stage.call("runSurvey");
        QCOMPARE(storedPairs(stage).sliced(4), QStringList({u"01"_s, u"02"_s, u"03"_s, u"A3"_s, u"B3"_s}));
    }

    void each_answer_shows_before_the_next_question()
    {
        Stage stage;
        const RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addPersona(stage, u"A"_s, u"I am A"_s));
        QVERIFY(setBoilerplate(stage, u"Be"_s, u"Now"_s));
        QVERIFY(addQuestion(stage, 1, u"Q1"_s));
        QVERIFY(addQuestion(stage, 2, u"Q2"_s, u"likert"_s));
        QVERIFY(addQuestion(stage, 3, u"Q3"_s));
        stage.call("runSurvey");
        const std::pair system{u"system"_s, u"Be\nI am A\nNow"_s};
        const std::pair first{u"user"_s, u"Q1"_s};
        const std::pair second{u"user"_s, u"Q2"_s};
        const std::pair answer{u"assistant"_s, u"test response"_s};
        const QString answered = u"log <- test response"_s;
        const QStringList expected{
            u"run off"_s,
            "log "_L1 + sent({system, first}),
            answered,
            u"grid"_s,
            "log "_L1 + sent({system, first, answer, second}),
            answered,
            u"grid"_s,
            "log "_L1 + sent({system, first, answer, second, {u"assistant"_s, QString()}, {u"user"_s, u"Q3"_s}}),
            answered,
            u"grid"_s,
            u"run on"_s,
            u"grid"_s};
        QCOMPARE(trace.events, expected);
    }

    void an_answer_is_logged_stored_shown_and_then_noted_as_a_change()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addPersona(stage, u"A"_s));
        QVERIFY(addQuestion(stage, 1, u"Q1"_s));
        QVERIFY(addQuestion(stage, 2, u"Q2"_s));
        QStringList seen;
        trace.react = [&](const QString &event) {
            // The question has an event loop, in which a runner that has finished is deleted.
            if (event == u"run on"_s) {
                trace.react = {};
                return;
            }
            const bool asks = stage.asksBeforeClosing();
            seen.append(u"%1 %2 %3"_s.arg(event.left(6)).arg(storedPairs(stage).size()).arg(asks));
        };
        stage.call("runSurvey");
        QCOMPARE(seen, QStringList({u"run of 0 0"_s, u"log -> 0 0"_s, u"log <- 0 0"_s, u"grid 1 0"_s, u"log -> 1 1"_s,
                                    u"log <- 1 1"_s, u"grid 2 1"_s}));
    }

    void the_grid_holds_each_answer_at_once()
    {
        Stage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        const auto *grid = stage.find<QTableWidget>(u"resultsTable"_s);
        QList<qsizetype> filled;
        trace.react = [&](const QString &event) {
            if (!event.startsWith("log ->"_L1))
                return;
            qsizetype answers = 0;
            const auto cells = Stage::cells(grid);
            for (const QStringList &row : cells)
                answers += row.count(u"test response"_s);
            filled.append(answers);
        };
        stage.call("runSurvey");
        QCOMPARE(filled, QList<qsizetype>({0, 1, 2, 3}));
        QCOMPARE(Stage::cells(grid).at(1), QStringList({u"B"_s, u"test response"_s, u""_s, u"test response"_s, u""_s}));
    }

    void finished_comes_once_and_after_all_answers()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(addTwoByTwo(stage));
        SurveyRunner runner(nullptr, stage.project(), nullptr, nullptr);
        QList<qsizetype> stored;
        connect(&runner, &SurveyRunner::finished, this, [&] { stored.append(storedPairs(stage).size()); });
        runner.start();
        QCOMPARE(stored, QList<qsizetype>{4});
    }
};

QTEST_MAIN(TestSurveyWalk)
#include "tst_surveywalk.moc"
