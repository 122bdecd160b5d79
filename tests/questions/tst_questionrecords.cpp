// Adding and changing questions: what each column gets, and the refresh of all that depends on the questions.

#include "tests/questions/questionlist.h"
#include "tests/support/testcase.h"

#include <QDateTime>
#include <QTest>

using namespace Qt::StringLiterals;

/// A question that has a value of its own in every column.
static bool enterFullQuestion(Stage &stage)
{
    return stage.exec(u"INSERT INTO questions VALUES (7, 5, 'Old?', 'text', '[\"a\"]', 'about', 0, 3, 'm', 0.5, 9, "
                      "'never', 4, 'maybe', 6, '2001-02-03 04:05:06', '2001-02-03 04:05:06')"_s);
}

static QVariant fieldOf(Stage &stage, const QString &column)
{
    return stage.value(u"SELECT %1 FROM questions"_s.arg(column));
}

/// The columns in the order of the table, as SQL literals.
static QString columnsButTimes(Stage &stage)
{
    const QString names = u"question_id order_num prompt answer_type labels description reasoning_required "
                          "judge_question model temperature search_enabled ask_when depends_on_question_id "
                          "depends_on_answer serial"_s;
    QStringList fields;
    for (const auto all = names.split(u' '); const QString &name : all)
        fields.append(fieldOf(stage, u"quote(%1)"_s.arg(name)).toString());
    return fields.join(u'|');
}

static bool isNow(const QVariant &value, QDateTime before)
{
    QDateTime time = QDateTime::fromString(value.toString(), u"yyyy-MM-dd HH:mm:ss"_s);
    time.setTimeZone(QTimeZone::UTC);
    before = before.addMSecs(-before.time().msec());
    return before <= time && time <= QDateTime::currentDateTimeUtc();
}

class TestQuestionRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A zone in which local time and UTC can't be mistaken for each other.
        qputenv("TZ", "XST-5");
        QCOMPARE(QDateTime(QDate(2020, 1, 1), QTime(0, 0)).offsetFromUtc(), 5 * 3600);
    }

    void a_new_question_has_in_its_columns()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"likert"_s, true, u"[\"a\",\"b\"]"_s));
        QCOMPARE(columnsButTimes(stage),
                 u"1|1|'What?'|'likert'|'[\"a\",\"b\"]'|NULL|1|0|NULL|NULL|1|'always'|NULL|NULL|1"_s);
    }

    void a_new_question_is_dated_in_utc()
    {
        Stage stage;
        const QDateTime before = QDateTime::currentDateTimeUtc();
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"text"_s, true));
        QVERIFY(isNow(fieldOf(stage, u"created_at"_s), before));
        QCOMPARE(fieldOf(stage, u"modified_at"_s), fieldOf(stage, u"created_at"_s));
    }

    void a_changed_question_has_in_its_columns()
    {
        Stage stage;
        QVERIFY(enterFullQuestion(stage));
        QVERIFY(stage.call("updateQuestion", 7, u"New?"_s, u"ranking"_s, true, u"[\"b\"]"_s));
        QCOMPARE(columnsButTimes(stage), u"7|5|'New?'|'ranking'|'[\"b\"]'|'about'|1|3|'m'|0.5|9|'never'|4|'maybe'|6"_s);
    }

    void a_changed_question_is_dated_in_utc()
    {
        Stage stage;
        QVERIFY(enterFullQuestion(stage));
        const QDateTime before = QDateTime::currentDateTimeUtc();
        QVERIFY(stage.call("updateQuestion", 7, u"New?"_s, u"text"_s, true));
        QVERIFY(isNow(fieldOf(stage, u"modified_at"_s), before));
        QCOMPARE(fieldOf(stage, u"created_at"_s), u"2001-02-03 04:05:06"_s);
    }

    void reasoning_is_stored_as_one_or_zero()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"text"_s, false));
        const QString reasoning = u"typeof(reasoning_required) || reasoning_required"_s;
        QCOMPARE(fieldOf(stage, reasoning), u"integer0"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"What?"_s, u"text"_s, true));
        QCOMPARE(fieldOf(stage, reasoning), u"integer1"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"What?"_s, u"text"_s, false));
        QCOMPARE(fieldOf(stage, reasoning), u"integer0"_s);
    }

    void labels_that_are_left_out_are_null()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"single_choice"_s, false));
        QCOMPARE(fieldOf(stage, u"typeof(labels)"_s), u"null"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"What?"_s, u"single_choice"_s, false, u"[]"_s));
        QCOMPARE(fieldOf(stage, u"labels"_s), u"[]"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"What?"_s, u"single_choice"_s, false));
        QCOMPARE(fieldOf(stage, u"typeof(labels)"_s), u"null"_s);
    }

    void texts_are_stored_as_given_data()
    {
        QTest::addColumn<QString>("text");

        QTest::newRow("empty") << u""_s;
        QTest::newRow("line breaks") << u"one\r\ntwo\n"_s;
        QTest::newRow("quotes") << u"it's \"x\"; --"_s;
        QTest::newRow("outside ASCII") << u"\u00DC\u00A0\u4E2D\U0001F41D"_s;
        QTest::newRow("unknown type") << u"Text"_s;
    }
    void texts_are_stored_as_given()
    {
        QFETCH(const QString, text);
        Stage stage;
        const QString columns = u"SELECT prompt, answer_type, labels FROM questions"_s;
        QVERIFY(stage.call("insertQuestion", text, text, false, text));
        QCOMPARE(stage.rows(columns), Rows({{text, text, text}}));
        QVERIFY(stage.call("updateQuestion", 1, u"a"_s, u"b"_s, false, u"c"_s));
        QVERIFY(stage.call("updateQuestion", 1, text, text, false, text));
        QCOMPARE(stage.rows(columns), Rows({{text, text, text}}));
    }

    void a_new_question_follows_the_greatest_number_there_is()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.order = 7}, QuestionEntered{.order = 2}));
        QVERIFY(stage.exec(u"INSERT INTO questions (order_num) VALUES (NULL)"_s));
        for (const auto &prompt : {u"A"_s, u"B"_s})
            QVERIFY(stage.call("insertQuestion", prompt, u"text"_s, false));
        QCOMPARE(stage.column(u"SELECT order_num FROM questions WHERE prompt IN ('A', 'B') ORDER BY question_id"_s),
                 QStringList({u"8"_s, u"9"_s}));
    }

    void a_change_of_an_unknown_question_changes_no_row_and_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(enterFullQuestion(stage));
        const auto before = stage.rows(u"SELECT * FROM questions"_s);
        QVERIFY(stage.call("updateQuestion", 8, u"New?"_s, u"ranking"_s, true));
        QCOMPARE(stage.rows(u"SELECT * FROM questions"_s), before);
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList(u"Old?"_s));
        QVERIFY(stage.asksBeforeClosing());
    }

    void answers_stay_under_the_changed_wording()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"p"_s}, QuestionEntered{.prompt = u"Old?"_s},
                      AnswerEntered{.persona = u"p"_s, .question = 1, .text = u"yes"_s}));
        const auto answers = stage.rows(u"SELECT * FROM responses"_s);

        QVERIFY(stage.call("updateQuestion", 1, u"New?"_s, u"text"_s, false));
        QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), answers);
        QCOMPARE(titles(resultsTable(stage)), QStringList({u"Persona"_s, u"New?"_s, u"Reasoning for New?"_s}));
        QCOMPARE(columnTexts(resultsTable(stage), 1), QStringList(u"yes"_s));
    }

    void adding_and_changing_refresh_list_chooser_and_grid()
    {
        Stage stage;
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(stage.call("insertQuestion", u"A"_s, u"text"_s, false));
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList(u"A"_s));
        QCOMPARE(offeredQuestions(stage), Rows({{u"1"_s, 1}}));
        QCOMPARE(titles(resultsTable(stage)), QStringList({u"Persona"_s, u"A"_s, u"Reasoning for A"_s}));

        QVERIFY(stage.call("newProject"));
        QVERIFY(enterFullQuestion(stage));
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(stage.call("updateQuestion", 7, u"B"_s, u"text"_s, false));
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(columnTexts(stage, u"prompt"_s), QStringList(u"B"_s));
        QCOMPARE(offeredQuestions(stage), Rows({{u"5"_s, 7}}));
        QCOMPARE(titles(resultsTable(stage)), QStringList({u"Persona"_s, u"B"_s, u"Reasoning for B"_s}));
    }

    void the_flag_is_set_between_the_statement_and_the_refresh_data()
    {
        QTest::addColumn<bool>("inserts");
        QTest::newRow("insert") << true;
        QTest::newRow("update") << false;
    }
    void the_flag_is_set_between_the_statement_and_the_refresh()
    {
        QFETCH(const bool, inserts);
        Stage stage;
        if (!inserts)
            QVERIFY(enterFullQuestion(stage));
        QVERIFY(!stage.asksBeforeClosing());
        QStringList events;
        const QObject context;
        connect(questionModel(stage), &QAbstractItemModel::modelReset, &context, [&] {
            events.append(
                u"%1, marked %2"_s.arg(fieldOf(stage, u"prompt"_s).toString()).arg(stage.asksBeforeClosing()));
        });
        if (inserts)
            QVERIFY(stage.call("insertQuestion", u"New?"_s, u"text"_s, false));
        else
            QVERIFY(stage.call("updateQuestion", 7, u"New?"_s, u"text"_s, false));
        QCOMPARE(events, QStringList(u"New?, marked 1"_s));
    }
};

ORRINET_TEST(TestQuestionRecords)
#include "tst_questionrecords.moc"
