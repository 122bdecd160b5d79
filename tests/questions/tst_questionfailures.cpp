// Statements that fail: nothing is reported, and what follows them is done all the same.

#include "tests/questions/questionlist.h"
#include "tests/support/modal.h"
#include "tests/support/testcase.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestQuestionFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_question_that_can_not_be_stored_leaves_the_refresh_and_the_flag_data()
    {
        QTest::addColumn<QString>("statements");
        QTest::newRow("new") << u"INSERT ON questions"_s;
        QTest::newRow("changed") << u"UPDATE ON questions"_s;
    }
    void a_question_that_can_not_be_stored_leaves_the_refresh_and_the_flag()
    {
        QFETCH(const QString, statements);
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.prompt = u"A"_s}));
        QVERIFY(forbid(stage, statements));
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(asksNothing([&] {
            if (statements.startsWith("INSERT"_L1))
                stage.call("insertQuestion", u"B"_s, u"text"_s, false);
            else
                stage.call("updateQuestion", 1, u"B"_s, u"text"_s, false);
        }));
        QCOMPARE(numbering(stage), u"1A"_s);
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList(u"A"_s));
        QCOMPARE(titles(resultsTable(stage)).size(), 3);
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
        QVERIFY(!stage.refusal(u"SELECT MAX(order_num) FROM questions"_s).isEmpty());
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(stage.call("insertQuestion", u"B"_s, u"text"_s, false));
        QCOMPARE(stage.column(u"SELECT order_num || prompt FROM kept"_s), QStringList({u"5A"_s, u"1B"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_delete_or_move_that_fails_halfway_stays_half_done_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("statements");
        QTest::addColumn<QString>("condition");
        QTest::addColumn<QString>("numbers");
        QTest::addColumn<QString>("shown");
        const auto update = u"UPDATE ON questions"_s;

        QTest::newRow("row not deleted") << u"Delete"_s << u"DELETE ON questions"_s << u"1"_s << u"1A 2B 2C"_s
                                         << u"122"_s;
        QTest::newRow("rows behind not renumbered") << u"Delete"_s << update << u"1"_s << u"1A 3C"_s << u"13"_s;
        QTest::newRow("row not moved up") << u"Up"_s << update << u"OLD.prompt = 'B'"_s << u"2A 2B 3C"_s << u"223"_s;
        QTest::newRow("neighbour above not moved")
            << u"Up"_s << update << u"OLD.prompt = 'A'"_s << u"1A 1B 3C"_s << u"113"_s;
        QTest::newRow("row not moved down")
            << u"Down"_s << update << u"OLD.prompt = 'B'"_s << u"1A 2B 2C"_s << u"122"_s;
        QTest::newRow("neighbour below not moved")
            << u"Down"_s << update << u"OLD.prompt = 'C'"_s << u"1A 3B 3C"_s << u"133"_s;
        QTest::newRow("nothing moved") << u"Down"_s << update << u"1"_s << u"1A 2B 3C"_s << u"123"_s;
    }
    void a_delete_or_move_that_fails_halfway_stays_half_done()
    {
        QFETCH(const QString, button);
        QFETCH(const QString, statements);
        QFETCH(const QString, condition);
        Stage stage;
        QVERIFY(listQuestions(stage, 3));
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(forbid(stage, statements, condition));
        questionView(stage)->selectRow(1);
        QVERIFY(asksNothing([&] { press(stage, button); }));
        QTEST(numbering(stage), "numbers");
        QTEST(columnTexts(stage, u"order_num"_s).join(QString()), "shown");
        QVERIFY(stage.asksBeforeClosing());
    }

    void nothing_happens_without_an_open_project()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 2));
        const auto offered = offeredQuestions(stage);
        const auto gridTitles = titles(resultsTable(stage));
        const auto *model = questionModel(stage);
        QCOMPARE(offered.size(), 2);
        QCOMPARE(gridTitles.size(), 5);
        stage.database().close();

        QVERIFY(stage.call("insertQuestion", u"C"_s, u"text"_s, false));
        QVERIFY(stage.call("updateQuestion", 1, u"C"_s, u"text"_s, false));
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(questionModel(stage), model);
        QCOMPARE(model->rowCount(), 2);
        QCOMPARE(offeredQuestions(stage), offered);
        QCOMPARE(titles(resultsTable(stage)), gridTitles);
        QVERIFY(!ConversationBox(stage).group->isHidden());
        QVERIFY(!stage.asksBeforeClosing());
    }

    void the_chooser_stays_empty_where_the_questions_can_not_be_read()
    {
        Stage stage;
        QVERIFY(listQuestions(stage, 2));
        QCOMPARE(offeredQuestions(stage).size(), 2);
        QVERIFY(stage.exec(u"ALTER TABLE questions RENAME TO gone"_s));
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(offeredQuestions(stage), Rows());
        QVERIFY(!stage.asksBeforeClosing());
    }
};

ORRINET_TEST(TestQuestionFailures)
#include "tst_questionfailures.moc"
