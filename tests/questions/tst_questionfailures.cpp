// Statements that fail: nothing is reported, and what follows them is done all the same.

#include "tests/questions/questionnaire.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestQuestionFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_question_that_can_not_be_entered_leaves_the_refresh_and_the_flag()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO questions (order_num, prompt) VALUES (1, 'A')"_s));
        QVERIFY(forbid(stage, u"INSERT ON questions"_s));
        QVERIFY(stage.call("insertQuestion", u"B"_s, u"text"_s, false));
        QCOMPARE(numbering(stage), u"1A"_s);
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList(u"A"_s));
        QCOMPARE(gridTitles(stage).size(), 3);
        QVERIFY(stage.asksBeforeClosing());
    }

    // The table is replaced by a view whose numbers can't be computed but into which rows can be put.
    void a_question_gets_number_one_where_the_greatest_can_not_be_read()
    {
        Stage stage;
        QVERIFY(stage.exec(u"ALTER TABLE questions RENAME TO kept"_s));
        QVERIFY(stage.exec(u"INSERT INTO kept (order_num, prompt) VALUES (5, 'A')"_s));
        QVERIFY(stage.exec(u"CREATE VIEW questions AS SELECT question_id, abs(-9223372036854775807 - question_id) AS "
                           "order_num, prompt, answer_type, labels, reasoning_required, judge_question, ask_when, "
                           "serial, created_at, modified_at FROM kept"_s));
        QVERIFY(stage.exec(u"CREATE TRIGGER keep INSTEAD OF INSERT ON questions BEGIN "
                           "INSERT INTO kept (order_num, prompt) VALUES (NEW.order_num, NEW.prompt); END"_s));
        QVERIFY(!stage.exec(u"SELECT MAX(order_num) FROM questions"_s));
        QVERIFY(stage.call("insertQuestion", u"B"_s, u"text"_s, false));
        QCOMPARE(stage.value(u"SELECT group_concat(order_num || prompt, ' ') FROM kept"_s), u"5A 1B"_s);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_change_that_can_not_be_stored_leaves_the_refresh_and_the_flag()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO questions (question_id, order_num, prompt) VALUES (1, 1, 'A')"_s));
        QVERIFY(forbid(stage, u"UPDATE ON questions"_s));
        QVERIFY(stage.call("updateQuestion", 1, u"B"_s, u"text"_s, false));
        QCOMPARE(numbering(stage), u"1A"_s);
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList(u"A"_s));
        QCOMPARE(gridTitles(stage).size(), 3);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_delete_or_move_that_fails_halfway_stays_half_done_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("statements");
        QTest::addColumn<QString>("condition");
        QTest::addColumn<QString>("numbers");

        QTest::newRow("row not deleted") << u"Delete"_s << u"DELETE ON questions"_s << u"1"_s << u"1A 2B 2C"_s;
        QTest::newRow("rows behind not renumbered") << u"Delete"_s << u"UPDATE ON questions"_s << u"1"_s << u"1A 3C"_s;
        QTest::newRow("row not moved up")
            << u"Up"_s << u"UPDATE ON questions"_s << u"OLD.prompt = 'B'"_s << u"2A 2B 3C"_s;
        QTest::newRow("neighbour above not moved")
            << u"Up"_s << u"UPDATE ON questions"_s << u"OLD.prompt = 'A'"_s << u"1A 1B 3C"_s;
        QTest::newRow("row not moved down")
            << u"Down"_s << u"UPDATE ON questions"_s << u"OLD.prompt = 'B'"_s << u"1A 2B 2C"_s;
        QTest::newRow("neighbour below not moved")
            << u"Down"_s << u"UPDATE ON questions"_s << u"OLD.prompt = 'C'"_s << u"1A 3B 3C"_s;
        QTest::newRow("nothing moved") << u"Down"_s << u"UPDATE ON questions"_s << u"1"_s << u"1A 2B 3C"_s;
    }
    void a_delete_or_move_that_fails_halfway_stays_half_done()
    {
        QFETCH(const QString, button);
        QFETCH(const QString, statements);
        QFETCH(const QString, condition);
        QFETCH(const QString, numbers);
        Stage stage;
        QVERIFY(enterQuestions(stage, 3));
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(forbid(stage, statements, condition));
        questionView(stage)->selectRow(1);
        press(stage, button);
        QCOMPARE(numbering(stage), numbers);
        QCOMPARE(shownColumn(stage, u"order_num"_s),
                 stage.value(u"SELECT group_concat(order_num, ',') FROM (SELECT order_num FROM questions ORDER BY 1)"_s)
                     .toString()
                     .split(u','));
        QVERIFY(stage.asksBeforeClosing());
    }

    void nothing_happens_without_an_open_project()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 2));
        const auto offered = offeredQuestions(stage);
        const auto titles = gridTitles(stage);
        const auto *model = questionModel(stage);
        QCOMPARE(offered.size(), 2);
        QCOMPARE(titles.size(), 5);
        stage.project().close();

        QVERIFY(stage.call("insertQuestion", u"C"_s, u"text"_s, false));
        QVERIFY(stage.call("updateQuestion", 1, u"C"_s, u"text"_s, false));
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(questionModel(stage), model);
        QCOMPARE(model->rowCount(), 2);
        QCOMPARE(offeredQuestions(stage), offered);
        QCOMPARE(gridTitles(stage), titles);
        QVERIFY(!conversationGroup(stage)->isHidden());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void the_chooser_stays_empty_where_the_questions_can_not_be_read()
    {
        Stage stage;
        QVERIFY(enterQuestions(stage, 2));
        QCOMPARE(offeredQuestions(stage).size(), 2);
        QVERIFY(stage.exec(u"ALTER TABLE questions RENAME TO gone"_s));
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(offeredQuestions(stage), Rows());
        QVERIFY(!stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestQuestionFailures)
#include "tst_questionfailures.moc"
