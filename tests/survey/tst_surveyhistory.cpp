#include "tests/survey/surveystage.h"

#include <QTest>

using namespace Qt::StringLiterals;
using standin::Reply;
using standin::Request;

class TestSurveyHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void an_answer_is_part_of_the_next_question();
    void an_answer_without_text_is_replayed_empty();
    void earlier_answers_are_replayed_in_the_order_of_time_data();
    void earlier_answers_are_replayed_in_the_order_of_time();
    void an_unreadable_history_is_left_out();
};

namespace {

QJsonArray messages(const Request &request)
{
    return request.json().value("messages"_L1).toArray();
}

} // namespace

void TestSurveyHistory::an_answer_is_part_of_the_next_question()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    stage.endpoint.answerWith(
        [&stage](const Request &) { return Reply::content("to "_L1 + stage.asked().constLast()); });
    QVERIFY(stage.run());
    const QString preamble = u"Act as the following persona.\n"_s;
    QList<QJsonArray> expected;
    for (const QString &persona : {u"P1"_s, u"P2"_s}) {
        expected << QJsonArray{turn(u"system"_s, preamble + persona), turn(u"user"_s, u"Q1"_s)};
        expected << QJsonArray{turn(u"system"_s, preamble + persona), turn(u"user"_s, u"Q1"_s),
                               turn(u"assistant"_s, u"to %1 Q1"_s.arg(persona)), turn(u"user"_s, u"Q2"_s)};
    }
    for (int index = 0; index < 4; ++index)
        QCOMPARE(messages(stage.endpoint.requests().at(index)), expected.at(index));
}

void TestSurveyHistory::an_answer_without_text_is_replayed_empty()
{
    SurveyStage stage;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s, u"numeric"_s);
    stage.addQuestion(u"Q2"_s);
    stage.endpoint.queue(Reply::content(uR"({"answer": 7, "reasoning": "so"})"_s));
    QVERIFY(stage.run());
    QJsonArray replayed = messages(stage.endpoint.requests().constLast());
    replayed.removeFirst();
    QCOMPARE(replayed, (QJsonArray{turn(u"user"_s, u"Q1"_s), turn(u"assistant"_s, u""_s), turn(u"user"_s, u"Q2"_s)}));
}

void TestSurveyHistory::earlier_answers_are_replayed_in_the_order_of_time_data()
{
    QTest::addColumn<int>("judge");
    QTest::newRow("to an ordinary question") << 0;
    QTest::newRow("to an adjudicated question") << 1;
}

void TestSurveyHistory::earlier_answers_are_replayed_in_the_order_of_time()
{
    SurveyStage stage;
    QFETCH(const int, judge);
    const QString uuid = stage.addPersona(u"P1"_s, u"P1"_s);
    for (const QString &prompt : {u"Q1"_s, u"Q2"_s, u"Q3"_s, u"adjudicated"_s, u"asked"_s})
        stage.addQuestion(prompt);
    QVERIFY(stage.exec(u"UPDATE questions SET judge_question=1 WHERE prompt='adjudicated'"_s));
    QVERIFY(stage.exec(u"UPDATE questions SET judge_question=? WHERE prompt='asked'"_s, {judge}));
    const auto answered = [&stage](const QString &persona, int question, const QVariant &text, const QString &time) {
        return stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer, numeric_answer, "
                          "json_answer, created_at) VALUES (?, ?, ?, 5, '{\"reasoning\":\"so\"}', ?)"_s,
                          {persona, question, text, time});
    };
    QVERIFY(answered(uuid, 1, u"late"_s, u"2020-01-04 00:00:00"_s));
    QVERIFY(answered(uuid, 2, u"early"_s, u"2020-01-01 00:00:00"_s));
    QVERIFY(answered(uuid, 2, u"again"_s, u"2020-01-03 00:00:00"_s));
    QVERIFY(answered(uuid, 3, QVariant(), u"2020-01-02 00:00:00"_s));
    QVERIFY(answered(uuid, 4, u"of an adjudicated question"_s, u"2020-01-02 00:00:00"_s));
    QVERIFY(answered(uuid, 99, u"to a question that is gone"_s, u"2020-01-02 00:00:00"_s));
    QVERIFY(answered(u"somebody-else"_s, 1, u"of somebody else"_s, u"2020-01-02 00:00:00"_s));

    QVERIFY(stage.run());
    QCOMPARE(stage.endpoint.requests().size(), 1);
    QJsonArray replayed = messages(stage.endpoint.requests().constFirst());
    replayed.removeFirst();
    QCOMPARE(replayed,
             (QJsonArray{turn(u"user"_s, u"Q2"_s), turn(u"assistant"_s, u"early"_s), turn(u"user"_s, u"Q3"_s),
                         turn(u"assistant"_s, u""_s), turn(u"user"_s, u"Q2"_s), turn(u"assistant"_s, u"again"_s),
                         turn(u"user"_s, u"Q1"_s), turn(u"assistant"_s, u"late"_s), turn(u"user"_s, u"asked"_s)}));
}

void TestSurveyHistory::an_unreadable_history_is_left_out()
{
    SurveyStage stage;
    stage.addPersona(u"P1"_s, u"P1"_s);
    stage.addQuestion(u"Q1"_s);
    stage.addQuestion(u"Q2"_s);
    stage.endpoint.queue(Reply::content(u"ok"_s).held());
    stage.startRun();
    QVERIFY(stage.arrived(1));
    QVERIFY(stage.exec(u"ALTER TABLE questions RENAME COLUMN judge_question TO other"_s));
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(stage.value(u"SELECT COUNT(*) FROM responses"_s).toInt(), 2);
    QCOMPARE(messages(stage.endpoint.requests().constLast()).size(), 2);
}

QTEST_MAIN(TestSurveyHistory)
#include "tst_surveyhistory.moc"
