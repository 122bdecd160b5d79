// What a persona is told of its own earlier answers.

#include "tests/support/entries.h"
#include "tests/support/messagelog.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"
#include "tests/survey/runtrace.h"

#include <QJsonArray>
#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

class TestRunHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void an_answer_is_part_of_the_next_question()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.endpoint.answerWith(
            [&stage](const Request &) { return Reply::content("to "_L1 + stage.asked().constLast()); });
        QVERIFY(stage.run());
        QList<QJsonArray> expected;
        for (const QString &persona : {u"P1"_s, u"P2"_s}) {
            const QJsonObject system = turn(u"system"_s, u"Act as the following persona.\n"_s + persona);
            expected << QJsonArray{system, turn(u"user"_s, u"Q1"_s)};
            expected << QJsonArray{system, turn(u"user"_s, u"Q1"_s), turn(u"assistant"_s, u"to %1 Q1"_s.arg(persona)),
                                   turn(u"user"_s, u"Q2"_s)};
        }
        QList<QJsonArray> told;
        for (const Request &request : stage.endpoint.requests())
            told << request.json().value("messages"_L1).toArray();
        QCOMPARE(told, expected);
    }

    void earlier_answers_are_told_in_the_order_of_time_data()
    {
        QTest::addColumn<int>("judge");
        QTest::newRow("for an ordinary question") << 0;
        QTest::newRow("for an adjudicated question") << 1;
    }
    void earlier_answers_are_told_in_the_order_of_time()
    {
        QFETCH(const int, judge);
        SurveyStage stage;
        const RunTrace trace(stage);
        Stage::setTestMode(true);
        QVERIFY(setBoilerplate(stage, {}, {}));
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"p"_s, .name = u"P"_s}));
        for (int id = 1; id <= 5; ++id)
            QVERIFY(enter(stage, QuestionEntered{.id = id, .prompt = u"Q%1"_s.arg(id)}));
        QVERIFY(enter(stage, QuestionEntered{.id = 6, .prompt = u"adjudicated"_s, .judge = 1},
                      QuestionEntered{.id = 7, .prompt = u"asked"_s, .judge = judge}));
        int entered = 0;
        const auto answered = [&](const QString &time, int question, const QVariant &text, const QVariant &number,
                                  const QVariant &json, const QVariant &persona = u"p"_s) {
            entered += enter(stage, AnswerEntered{.persona = persona,
                                                  .question = question,
                                                  .text = text,
                                                  .number = number,
                                                  .json = json,
                                                  .createdAt = QString("2001-02-03 00:00:0"_L1 + time)})
                           ? 1
                           : 0;
        };
        const QVariant none;
        answered(u"6"_s, 1, u"text and more"_s, 5, uR"({"reasoning":"so"})"_s);
        answered(u"1"_s, 2, u"early"_s, none, none);
        answered(u"5"_s, 2, u"again"_s, none, none);
        answered(u"2"_s, 3, none, 5, none);
        answered(u"3"_s, 4, none, none, u"prose"_s);
        answered(u"4"_s, 5, none, none, none);
        answered(u"4"_s, 6, u"to an adjudicated question"_s, none, none);
        answered(u"4"_s, 99, u"to a question that is gone"_s, none, none);
        answered(u"4"_s, 1, u"of somebody else"_s, none, none, u"somebody-else"_s);
        answered(u"4"_s, 1, u"of nobody"_s, none, none, none);
        QCOMPARE(entered, 10);

        stage.startRun();
        QJsonArray told;
        for (const auto &[question, text] :
             {std::pair(u"Q2"_s, u"early"_s), std::pair(u"Q3"_s, u""_s), std::pair(u"Q4"_s, u""_s),
              std::pair(u"Q5"_s, u""_s), std::pair(u"Q2"_s, u"again"_s), std::pair(u"Q1"_s, u"text and more"_s)}) {
            told.append(turn(u"user"_s, question));
            told.append(turn(u"assistant"_s, text));
        }
        told.append(turn(u"user"_s, u"asked"_s));
        QCOMPARE(trace.requests(), QStringList{sentEntry(told)});
    }

    void a_failed_question_is_told_once_it_was_asked_again()
    {
        const MessageLog messages;
        SurveyStage stage;
        stage.addPersona(u"P1"_s, u"P1"_s);
        stage.addQuestion(u"Q1"_s);
        stage.addQuestion(u"Q2"_s);
        stage.endpoint.queue(Reply::status(500));
        QVERIFY(stage.run());
        QCOMPARE(messages.warnings().size(), 1);
        // Times have seconds only.
        QVERIFY(stage.exec(u"UPDATE responses SET created_at='2020-01-01 00:00:00'"_s));
        stage.addQuestion(u"Q3"_s);
        QVERIFY(stage.run());
        QList<QStringList> told;
        for (const Request &request : stage.endpoint.requests()) {
            QStringList questions;
            for (const auto all = request.json().value("messages"_L1).toArray(); const auto &message : all) {
                if (message["role"_L1] == "user"_L1)
                    questions << message["content"_L1].toString();
            }
            told << questions;
        }
        QCOMPARE(told, (QList<QStringList>{{u"Q1"_s}, {u"Q2"_s}, {u"Q2"_s, u"Q1"_s}, {u"Q2"_s, u"Q1"_s, u"Q3"_s}}));
    }

    void an_unreadable_history_is_left_out_data()
    {
        QTest::addColumn<QString>("harm");
        QTest::newRow("no table") << u"DROP TABLE questions"_s;
        QTest::newRow("no column") << u"ALTER TABLE questions RENAME COLUMN judge_question TO other"_s;
    }
    void an_unreadable_history_is_left_out()
    {
        QFETCH(const QString, harm);
        SurveyStage stage;
        RunTrace trace(stage);
        Stage::setTestMode(true);
        stage.fillTwoByTwo();
        QVERIFY(setBoilerplate(stage, {}, {}));
        trace.react = [&](const QString &event) {
            if (event == u"run off"_s)
                return;
            trace.react = {};
            QVERIFY(stage.exec(harm));
        };
        stage.startRun();
        QStringList expected;
        for (const QString &persona : {u"P1"_s, u"P2"_s}) {
            for (const QString &question : {u"Q1"_s, u"Q2"_s})
                expected << sentEntry({turn(u"system"_s, persona), turn(u"user"_s, question)});
        }
        QCOMPARE(trace.requests(), expected);
        QCOMPARE(stage.count(u"responses"_s), 4);
    }
};

ORRINET_TEST(TestRunHistory)
#include "tst_runhistory.moc"
