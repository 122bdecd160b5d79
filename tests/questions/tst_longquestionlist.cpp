// Lists longer than what a table model reads at first: they are whole, their last rows can be worked on, and no
// statement stays open that would keep the project from being written out.

#include "tests/questions/questionlist.h"
#include "tests/support/testcase.h"

#include <QFile>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

/// The prompt of the question with this number; the numbering may have changed since it was entered.
static QString promptAt(Stage &stage, int number)
{
    return stage.value(u"SELECT prompt FROM questions WHERE order_num = ?"_s, {number}).toString();
}

/// Questions with the prompts "Question 1", "Question 2" ... on show.
static bool listManyQuestions(Stage &stage, int count)
{
    return enterQuestions(stage, count) && stage.call("loadQuestions");
}

/// True when the project can be written to a file, which an open statement prevents.
static bool canBeWrittenOut(Stage &stage)
{
    const QString file = stage.path(u"copy"_s);
    QFile::remove(file);
    return stage.exec(u"VACUUM INTO ?"_s, {file});
}

class TestLongQuestionList : public QObject
{
    Q_OBJECT

    static void addLengths()
    {
        QTest::addColumn<int>("length");
        QTest::newRow("a whole fetch") << 256;
        QTest::newRow("one more") << 257;
        QTest::newRow("several fetches") << 1000;
    }

private Q_SLOTS:
    void a_refresh_reads_the_list_to_its_end_data() { addLengths(); }
    void a_refresh_reads_the_list_to_its_end()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(listManyQuestions(stage, length));
        QCOMPARE(questionModel(stage)->rowCount(), length);
        QVERIFY(!questionModel(stage)->canFetchMore());
        QCOMPARE(questionCell(stage, length - 1, u"prompt"_s).data(), u"Question %1"_s.arg(length));
        QCOMPARE(offeredQuestions(stage).size(), length);
        QVERIFY(canBeWrittenOut(stage));
    }

    void the_last_question_can_be_moved_up_and_back_down_data() { addLengths(); }
    void the_last_question_can_be_moved_up_and_back_down()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(listManyQuestions(stage, length));
        questionView(stage)->selectRow(length - 1);
        // The row stays current, so each press carries the same question on, down to the end and no further.
        int number = length;
        for (const auto &button : {u"Up"_s, u"Up"_s, u"Down"_s, u"Down"_s, u"Down"_s}) {
            press(stage, button);
            number = std::min(button == "Up"_L1 ? number - 1 : number + 1, length);
            QCOMPARE(promptAt(stage, number), u"Question %1"_s.arg(length));
            QCOMPARE(questionView(stage)->currentIndex().row(), number - 1);
            QVERIFY(canBeWrittenOut(stage));
        }
        QCOMPARE(promptAt(stage, length - 1), u"Question %1"_s.arg(length - 1));
        QCOMPARE(questionModel(stage)->rowCount(), length);
    }

    void the_last_questions_can_be_deleted_data() { addLengths(); }
    void the_last_questions_can_be_deleted()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(listManyQuestions(stage, length));
        questionView(stage)->selectRow(length - 2);
        press(stage, u"Delete"_s);
        QCOMPARE(questionModel(stage)->rowCount(), length - 1);
        QCOMPARE(promptAt(stage, length - 1), u"Question %1"_s.arg(length));
        QVERIFY(canBeWrittenOut(stage));

        questionView(stage)->selectRow(length - 2);
        press(stage, u"Delete"_s);
        QCOMPARE(questionModel(stage)->rowCount(), length - 2);
        QCOMPARE(promptAt(stage, length - 2), u"Question %1"_s.arg(length - 2));
        QVERIFY(canBeWrittenOut(stage));
    }

    void editing_adding_and_changing_keep_the_list_whole_data() { addLengths(); }
    void editing_adding_and_changing_keep_the_list_whole()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(listManyQuestions(stage, length));
        QVERIFY(questionModel(stage)->setData(questionCell(stage, length - 1, u"prompt"_s), u"Last?"_s));
        QCOMPARE(promptAt(stage, length), u"Last?"_s);
        QCOMPARE(questionModel(stage)->rowCount(), length);
        QVERIFY(canBeWrittenOut(stage));
        QVERIFY(stage.call("insertQuestion", u"New?"_s, u"text"_s, false));
        QCOMPARE(promptAt(stage, length + 1), u"New?"_s);
        QCOMPARE(questionModel(stage)->rowCount(), length + 1);
        QVERIFY(canBeWrittenOut(stage));
        QVERIFY(stage.call("updateQuestion", length, u"Changed?"_s, u"text"_s, false));
        QCOMPARE(questionCell(stage, length - 1, u"prompt"_s).data(), u"Changed?"_s);
        QCOMPARE(questionModel(stage)->rowCount(), length + 1);
        QVERIFY(canBeWrittenOut(stage));
    }

    void a_new_project_can_follow_a_long_list()
    {
        Stage stage;
        QVERIFY(listManyQuestions(stage, 300));
        QVERIFY(stage.call("newProject"));
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QVERIFY(canBeWrittenOut(stage));
    }
};

ORRINET_TEST(TestLongQuestionList)
#include "tst_longquestionlist.moc"
