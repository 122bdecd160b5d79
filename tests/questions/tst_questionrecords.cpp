// Adding and changing questions: what each column gets, and the refresh of all that depends on the questions.

#include "tests/questions/questionnaire.h"

#include <QDateTime>
#include <QTest>

using namespace Qt::StringLiterals;

/// A question that has a value of its own in every column.
static bool enterMarkedQuestion(Stage &stage)
{
    return stage.exec(u"INSERT INTO questions VALUES (7, 5, 'Old?', 'text', '[\"a\"]', 'about', 0, 3, 'm', 0.5, 9, "
                      "'never', 4, 'maybe', 6, '2001-02-03 04:05:06', '2001-02-03 04:05:06')"_s);
}

static QVariant cell(Stage &stage, const QString &column)
{
    return stage.value(u"SELECT %1 FROM questions"_s.arg(column));
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

    void a_new_question_has_in_column_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("storage");

        QTest::newRow("question_id") << QVariant(1) << u"integer"_s;
        QTest::newRow("order_num") << QVariant(1) << u"integer"_s;
        QTest::newRow("prompt") << QVariant(u"What?"_s) << u"text"_s;
        QTest::newRow("answer_type") << QVariant(u"likert"_s) << u"text"_s;
        QTest::newRow("labels") << QVariant(u"[\"a\",\"b\"]"_s) << u"text"_s;
        QTest::newRow("description") << QVariant(u""_s) << u"null"_s;
        QTest::newRow("reasoning_required") << QVariant(1) << u"integer"_s;
        QTest::newRow("judge_question") << QVariant(0) << u"integer"_s;
        QTest::newRow("model") << QVariant(u""_s) << u"null"_s;
        QTest::newRow("temperature") << QVariant(u""_s) << u"null"_s;
        QTest::newRow("search_enabled") << QVariant(1) << u"integer"_s;
        QTest::newRow("ask_when") << QVariant(u"always"_s) << u"text"_s;
        QTest::newRow("depends_on_question_id") << QVariant(u""_s) << u"null"_s;
        QTest::newRow("depends_on_answer") << QVariant(u""_s) << u"null"_s;
        QTest::newRow("serial") << QVariant(1) << u"integer"_s;
    }
    void a_new_question_has_in_column()
    {
        QFETCH(const QVariant, value);
        QFETCH(const QString, storage);
        const QString column = QString::fromLatin1(QTest::currentDataTag());
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"likert"_s, true, u"[\"a\",\"b\"]"_s));
        QCOMPARE(cell(stage, u"typeof(%1)"_s.arg(column)), storage);
        QCOMPARE(cell(stage, column).toString(), value.toString());
    }

    void a_new_question_is_dated_in_utc()
    {
        Stage stage;
        const QDateTime before = QDateTime::currentDateTimeUtc();
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"text"_s, true));
        QVERIFY(isNow(cell(stage, u"created_at"_s), before));
        QCOMPARE(cell(stage, u"modified_at"_s), cell(stage, u"created_at"_s));
    }

    void a_changed_question_has_in_column_data()
    {
        QTest::addColumn<QVariant>("value");

        QTest::newRow("question_id") << QVariant(7);
        QTest::newRow("order_num") << QVariant(5);
        QTest::newRow("prompt") << QVariant(u"New?"_s);
        QTest::newRow("answer_type") << QVariant(u"ranking"_s);
        QTest::newRow("labels") << QVariant(u"[\"b\"]"_s);
        QTest::newRow("description") << QVariant(u"about"_s);
        QTest::newRow("reasoning_required") << QVariant(1);
        QTest::newRow("judge_question") << QVariant(3);
        QTest::newRow("model") << QVariant(u"m"_s);
        QTest::newRow("temperature") << QVariant(0.5);
        QTest::newRow("search_enabled") << QVariant(9);
        QTest::newRow("ask_when") << QVariant(u"never"_s);
        QTest::newRow("depends_on_question_id") << QVariant(4);
        QTest::newRow("depends_on_answer") << QVariant(u"maybe"_s);
        QTest::newRow("serial") << QVariant(6);
        QTest::newRow("created_at") << QVariant(u"2001-02-03 04:05:06"_s);
    }
    void a_changed_question_has_in_column()
    {
        QFETCH(const QVariant, value);
        Stage stage;
        QVERIFY(enterMarkedQuestion(stage));
        QVERIFY(stage.call("updateQuestion", 7, u"New?"_s, u"ranking"_s, true, u"[\"b\"]"_s));
        QCOMPARE(cell(stage, QString::fromLatin1(QTest::currentDataTag())), value);
    }

    void a_changed_question_is_dated_in_utc()
    {
        Stage stage;
        QVERIFY(enterMarkedQuestion(stage));
        const QDateTime before = QDateTime::currentDateTimeUtc();
        QVERIFY(stage.call("updateQuestion", 7, u"New?"_s, u"text"_s, true));
        QVERIFY(isNow(cell(stage, u"modified_at"_s), before));
    }

    void reasoning_is_stored_as_one_or_zero()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"text"_s, false));
        const QString reasoning = u"typeof(reasoning_required) || reasoning_required"_s;
        QCOMPARE(cell(stage, reasoning), u"integer0"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"What?"_s, u"text"_s, true));
        QCOMPARE(cell(stage, reasoning), u"integer1"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"What?"_s, u"text"_s, false));
        QCOMPARE(cell(stage, reasoning), u"integer0"_s);
    }

    void labels_that_are_left_out_are_null()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"What?"_s, u"single_choice"_s, false));
        QCOMPARE(cell(stage, u"typeof(labels)"_s), u"null"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"What?"_s, u"single_choice"_s, false, u"[]"_s));
        QCOMPARE(cell(stage, u"labels"_s), u"[]"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"What?"_s, u"single_choice"_s, false));
        QCOMPARE(cell(stage, u"typeof(labels)"_s), u"null"_s);
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
        QCOMPARE(stage.rows(columns), Rows({QVariantList{text, text, text}}));
        QVERIFY(stage.call("updateQuestion", 1, u"a"_s, u"b"_s, false, u"c"_s));
        QVERIFY(stage.call("updateQuestion", 1, text, text, false, text));
        QCOMPARE(stage.rows(columns), Rows({QVariantList{text, text, text}}));
    }

    void each_new_question_gets_the_next_number()
    {
        Stage stage;
        for (const auto &prompt : {u"A"_s, u"B"_s, u"C"_s})
            QVERIFY(stage.call("insertQuestion", prompt, u"text"_s, false));
        QCOMPARE(numbering(stage), u"1A 2B 3C"_s);
    }

    void a_new_question_follows_the_greatest_number_there_is()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO questions (order_num, prompt) VALUES (7, 'A'), (2, 'B'), (NULL, 'C')"_s));
        QVERIFY(stage.call("insertQuestion", u"D"_s, u"text"_s, false));
        QCOMPARE(stage.value(u"SELECT order_num FROM questions WHERE prompt = 'D'"_s), 8);
    }

    void a_change_of_an_unknown_question_changes_no_row_and_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(enterMarkedQuestion(stage));
        const auto before = stage.rows(u"SELECT * FROM questions"_s);
        QVERIFY(stage.call("updateQuestion", 8, u"New?"_s, u"ranking"_s, true));
        QCOMPARE(stage.rows(u"SELECT * FROM questions"_s), before);
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList(u"Old?"_s));
        QVERIFY(stage.asksBeforeClosing());
    }

    void answers_stay_under_the_changed_wording()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO personas (uuid, name) VALUES ('u1', 'A')"_s));
        QVERIFY(stage.call("insertQuestion", u"Old?"_s, u"text"_s, false));
        QVERIFY(
            stage.exec(u"INSERT INTO responses (persona_uuid, question_id, text_answer) VALUES ('u1', 1, 'yes')"_s));
        const auto answers = stage.rows(u"SELECT * FROM responses"_s);

        QVERIFY(stage.call("updateQuestion", 1, u"New?"_s, u"text"_s, false));
        QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), answers);
        QCOMPARE(gridTitles(stage), QStringList({u"Persona"_s, u"New?"_s, u"Reasoning for New?"_s}));
        QCOMPARE(Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s)).constFirst().at(1), u"yes"_s);
    }

    void adding_and_changing_refresh_list_chooser_and_grid()
    {
        Stage stage;
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(stage.call("insertQuestion", u"A"_s, u"text"_s, false));
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList(u"A"_s));
        QCOMPARE(offeredQuestions(stage), Rows({QVariantList{u"1"_s, 1}}));
        QCOMPARE(gridTitles(stage), QStringList({u"Persona"_s, u"A"_s, u"Reasoning for A"_s}));

        QVERIFY(stage.call("newProject"));
        QVERIFY(enterMarkedQuestion(stage));
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(stage.call("updateQuestion", 7, u"B"_s, u"text"_s, false));
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(shownColumn(stage, u"prompt"_s), QStringList(u"B"_s));
        QCOMPARE(offeredQuestions(stage), Rows({QVariantList{u"5"_s, 7}}));
        QCOMPARE(gridTitles(stage), QStringList({u"Persona"_s, u"B"_s, u"Reasoning for B"_s}));
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
            QVERIFY(enterMarkedQuestion(stage));
        QVERIFY(!stage.asksBeforeClosing());
        QStringList events;
        const QObject context;
        connect(questionModel(stage), &QAbstractItemModel::modelReset, &context, [&] {
            events.append(u"%1, marked %2"_s.arg(cell(stage, u"prompt"_s).toString()).arg(stage.asksBeforeClosing()));
        });
        if (inserts)
            QVERIFY(stage.call("insertQuestion", u"New?"_s, u"text"_s, false));
        else
            QVERIFY(stage.call("updateQuestion", 7, u"New?"_s, u"text"_s, false));
        QCOMPARE(events, QStringList(u"New?, marked 1"_s));
    }
};

QTEST_MAIN(TestQuestionRecords)
#include "tst_questionrecords.moc"
