// Lists longer than what a table model reads at first: they are whole, their last rows can be worked on, and no
// statement stays open that would keep the project from being written out.

#include "tests/questions/questionnaire.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// The name of the question with this number; the numbering may have changed since it was entered.
static QString promptAt(Stage &stage, int number)
{
    return stage.value(u"SELECT prompt FROM questions WHERE order_num = ?"_s, {number}).toString();
}

static bool enterLongList(Stage &stage, int count)
{
    const QString entry = u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < ?) "
                          "INSERT INTO questions (order_num, prompt, answer_type) SELECT i, 'Q' || i, 'text' FROM n"_s;
    return stage.exec(entry, {count}) && stage.call("loadQuestions");
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
        QTest::newRow("300 questions") << 300;
        QTest::newRow("5000 questions") << 5000;
    }

private Q_SLOTS:
    void a_refresh_reads_the_list_to_its_end_data() { addLengths(); }
    void a_refresh_reads_the_list_to_its_end()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(enterLongList(stage, length));
        QCOMPARE(questionModel(stage)->rowCount(), length);
        QVERIFY(!questionModel(stage)->canFetchMore());
        QCOMPARE(questionCell(stage, length - 1, u"prompt"_s).data(), u"Q%1"_s.arg(length));
        QCOMPARE(questionChooser(stage)->count(), length);
        QVERIFY(canBeWrittenOut(stage));
    }

    void the_last_question_can_be_moved_up_data() { addLengths(); }
    void the_last_question_can_be_moved_up()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(enterLongList(stage, length));
        questionView(stage)->selectRow(length - 1);
        press(stage, u"Up"_s);
        QCOMPARE(promptAt(stage, length - 1), u"Q%1"_s.arg(length));
        QCOMPARE(promptAt(stage, length), u"Q%1"_s.arg(length - 1));
        QCOMPARE(questionModel(stage)->rowCount(), length);
        QCOMPARE(questionView(stage)->currentIndex().row(), length - 2);
        QVERIFY(canBeWrittenOut(stage));

        // The row stays current, so the next press carries the same question on.
        press(stage, u"Up"_s);
        QCOMPARE(promptAt(stage, length - 2), u"Q%1"_s.arg(length));
        QCOMPARE(questionView(stage)->currentIndex().row(), length - 3);
    }

    void a_question_can_be_moved_down_to_the_end_data() { addLengths(); }
    void a_question_can_be_moved_down_to_the_end()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(enterLongList(stage, length));
        questionView(stage)->selectRow(length - 3);
        press(stage, u"Down"_s);
        press(stage, u"Down"_s);
        QCOMPARE(promptAt(stage, length), u"Q%1"_s.arg(length - 2));
        QCOMPARE(questionView(stage)->currentIndex().row(), length - 1);
        QVERIFY(canBeWrittenOut(stage));

        press(stage, u"Down"_s);
        QCOMPARE(promptAt(stage, length), u"Q%1"_s.arg(length - 2));
        QCOMPARE(questionModel(stage)->rowCount(), length);
    }

    void the_last_questions_can_be_deleted_data() { addLengths(); }
    void the_last_questions_can_be_deleted()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(enterLongList(stage, length));
        questionView(stage)->selectRow(length - 2);
        press(stage, u"Delete"_s);
        QCOMPARE(questionModel(stage)->rowCount(), length - 1);
        QCOMPARE(promptAt(stage, length - 1), u"Q%1"_s.arg(length));
        QVERIFY(canBeWrittenOut(stage));

        questionView(stage)->selectRow(length - 2);
        press(stage, u"Delete"_s);
        QCOMPARE(questionModel(stage)->rowCount(), length - 2);
        QCOMPARE(promptAt(stage, length - 2), u"Q%1"_s.arg(length - 2));
        QVERIFY(canBeWrittenOut(stage));
    }

    void the_last_question_can_be_edited_in_place_data() { addLengths(); }
    void the_last_question_can_be_edited_in_place()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(enterLongList(stage, length));
        QVERIFY(questionModel(stage)->setData(questionCell(stage, length - 1, u"prompt"_s), u"Last?"_s));
        QCOMPARE(promptAt(stage, length), u"Last?"_s);
        QCOMPARE(questionModel(stage)->rowCount(), length);
        QVERIFY(canBeWrittenOut(stage));
    }

    void adding_and_changing_keep_the_list_whole_data() { addLengths(); }
    void adding_and_changing_keep_the_list_whole()
    {
        QFETCH(const int, length);
        Stage stage;
        QVERIFY(enterLongList(stage, length));
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
        QVERIFY(enterLongList(stage, 300));
        QVERIFY(stage.call("newProject"));
        QCOMPARE(questionModel(stage)->rowCount(), 0);
        QVERIFY(canBeWrittenOut(stage));
    }
};

QTEST_MAIN(TestLongQuestionList)
#include "tst_longquestionlist.moc"
