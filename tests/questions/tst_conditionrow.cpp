// The condition of the question dialog and its other controls that are shown and filled but never stored.

#include "tests/questions/questionform.h"

#include <QTest>

using namespace Qt::StringLiterals;

static bool choosersShown(const QuestionForm &form, bool shown)
{
    for (int place = 0; place < 3; ++place) {
        if (form.shows(form.chooser(place)) != shown)
            return false;
    }
    return true;
}

/// The columns that belong to the controls which are never stored.
static Rows unstoredColumns(Stage &stage)
{
    return stage.rows(u"SELECT judge_question, search_enabled, ask_when, depends_on_question_id, depends_on_answer "
                      "FROM questions ORDER BY question_id"_s);
}

/// Works with all the controls that are never stored.
static void useUnstoredControls(const QuestionForm &form)
{
    form.box(u"Adjudicated Question"_s)->toggle();
    form.box(u"Allow web search first"_s)->click();
    form.ask->setCurrentIndex(1);
    form.chooser(0)->setCurrentIndex(1);
    form.chooser(1)->setCurrentIndex(1);
    form.chooser(2)->setCurrentIndex(1);
}

class TestConditionRow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosers_are_shown_while_a_condition_is_chosen_data();
    void choosers_are_shown_while_a_condition_is_chosen();
    void questions_with_choices_are_on_offer_in_their_order();
    void a_question_can_be_its_own_condition();
    void answers_are_those_of_the_chosen_question();
    void answers_are_read_when_the_choosers_are_shown();
    void answers_on_offer_are_the_stored_labels_data();
    void answers_on_offer_are_the_stored_labels();
    void labels_of_the_open_dialog_are_not_on_offer();
    void a_question_of_the_number_zero_offers_no_answers();
    void without_questions_to_choose_from_the_choosers_are_empty();
    void a_failing_query_leaves_the_choosers_empty();
    void what_is_chosen_is_not_stored_data();
    void what_is_chosen_is_not_stored();
    void what_is_stored_is_not_shown_and_stays();
    void web_search_is_never_enabled();
};

void TestConditionRow::choosers_are_shown_while_a_condition_is_chosen_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("new question") << -1;
    QTest::newRow("existing question") << 0;
}

void TestConditionRow::choosers_are_shown_while_a_condition_is_chosen()
{
    QFETCH(const int, row);
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"A\"]"_s));
    QVERIFY(editQuestion(stage, row, [](const QuestionForm &form) {
        QVERIFY(choosersShown(form, false));
        form.ask->setCurrentIndex(1);
        QVERIFY(choosersShown(form, true));
        form.ask->setCurrentIndex(0);
        QVERIFY(choosersShown(form, false));
    }));
}

void TestConditionRow::questions_with_choices_are_on_offer_in_their_order()
{
    Stage stage;
    for (const auto &type : {u"ranking"_s, u"multi_choice"_s, u"text"_s, u"single_choice"_s, u"numeric"_s, u"likert"_s,
                             u"Option"_s, u"single_choice"_s})
        QVERIFY(enterQuestion(stage, type));
    QVERIFY(stage.exec(u"UPDATE questions SET order_num = 20 - order_num"_s));
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        const QComboBox *chooser = form.chooser(0);
        QCOMPARE(QuestionForm::texts(chooser), QStringList({u"12"_s, u"16"_s, u"18"_s}));
        QVariantList identities;
        for (int index = 0; index < chooser->count(); ++index)
            identities.append(chooser->itemData(index));
        QCOMPARE(identities, QVariantList({8, 4, 2}));
        QCOMPARE(chooser->currentIndex(), 0);
    }));
}

void TestConditionRow::a_question_can_be_its_own_condition()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"multi_choice"_s, u"[\"A\",\"B\"]"_s));
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
        form.ask->setCurrentIndex(1);
        QCOMPARE(QuestionForm::texts(form.chooser(0)), QStringList({u"1"_s}));
        QCOMPARE(QuestionForm::texts(form.chooser(2)), QStringList({u"A"_s, u"B"_s}));
    }));
}

void TestConditionRow::answers_are_those_of_the_chosen_question()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"A\",\"B\"]"_s));
    QVERIFY(enterQuestion(stage, u"multi_choice"_s, u"[\"C\",\"\",\"C\"]"_s));
    QVERIFY(enterQuestion(stage, u"multi_choice"_s, u"[]"_s));
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        form.ask->setCurrentIndex(1);
        const QComboBox *answers = form.chooser(2);
        QCOMPARE(QuestionForm::texts(answers), QStringList({u"A"_s, u"B"_s}));
        QVERIFY(!answers->itemData(0).isValid());
        form.chooser(0)->setCurrentIndex(1);
        QCOMPARE(QuestionForm::texts(answers), QStringList({u"C"_s, u""_s, u"C"_s}));
        form.chooser(0)->setCurrentIndex(2);
        QCOMPARE(QuestionForm::texts(answers), QStringList());
        form.chooser(0)->setCurrentIndex(0);
        QCOMPARE(QuestionForm::texts(answers), QStringList({u"A"_s, u"B"_s}));
    }));
}

void TestConditionRow::answers_are_read_when_the_choosers_are_shown()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"A\"]"_s));
    QVERIFY(editQuestion(stage, -1, [&](const QuestionForm &form) {
        const QComboBox *answers = form.chooser(2);
        QCOMPARE(answers->count(), 0);
        form.ask->setCurrentIndex(1);
        QCOMPARE(QuestionForm::texts(answers), QStringList({u"A"_s}));

        QVERIFY(stage.exec(u"UPDATE questions SET labels = '[\"B\"]'"_s));
        form.ask->setCurrentIndex(0);
        QCOMPARE(QuestionForm::texts(answers), QStringList({u"A"_s}));
        form.ask->setCurrentIndex(1);
        QCOMPARE(QuestionForm::texts(answers), QStringList({u"B"_s}));
    }));
}

void TestConditionRow::answers_on_offer_are_the_stored_labels_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<QStringList>("offered");
    QTest::newRow("labels") << QVariant(u"[ \"A\", \"\\u00e4\" ]"_s) << QStringList{u"A"_s, u"ä"_s};
    QTest::newRow("no strings") << QVariant(u"[1,2]"_s) << QStringList{u""_s, u""_s};
    QTest::newRow("null") << QVariant() << QStringList();
    QTest::newRow("empty text") << QVariant(u""_s) << QStringList();
    QTest::newRow("damaged") << QVariant(u"[\"A\""_s) << QStringList();
    QTest::newRow("object") << QVariant(u"{\"a\":\"A\"}"_s) << QStringList();
}

void TestConditionRow::answers_on_offer_are_the_stored_labels()
{
    QFETCH(const QVariant, stored);
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, stored));
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        form.ask->setCurrentIndex(1);
        QCOMPARE(form.chooser(0)->count(), 1);
        QTEST(QuestionForm::texts(form.chooser(2)), "offered");
    }));
}

void TestConditionRow::labels_of_the_open_dialog_are_not_on_offer()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"A\"]"_s));
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
        QVERIFY(form.addLabel(u"B"_s));
        form.ask->setCurrentIndex(1);
        QCOMPARE(QuestionForm::texts(form.chooser(2)), QStringList({u"A"_s}));
        form.accept();
    }));
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
        form.ask->setCurrentIndex(1);
        QCOMPARE(QuestionForm::texts(form.chooser(2)), QStringList({u"A"_s, u"B"_s}));
    }));
}

void TestConditionRow::a_question_of_the_number_zero_offers_no_answers()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"A\"]"_s));
    QVERIFY(stage.exec(u"UPDATE questions SET question_id = 0"_s));
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        form.ask->setCurrentIndex(1);
        QCOMPARE(form.chooser(0)->count(), 1);
        QCOMPARE(form.chooser(2)->count(), 0);
    }));
}

void TestConditionRow::without_questions_to_choose_from_the_choosers_are_empty()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"likert"_s, u"[\"A\",\"B\"]"_s));
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        form.ask->setCurrentIndex(1);
        QVERIFY(choosersShown(form, true));
        QCOMPARE(form.chooser(0)->count(), 0);
        QCOMPARE(QuestionForm::texts(form.chooser(1)), QStringList({u"was"_s, u"wasn't"_s}));
        QCOMPARE(form.chooser(1)->currentIndex(), 0);
        QCOMPARE(form.chooser(2)->count(), 0);
        QVERIFY(form.ok->isEnabled());
        form.accept();
    }));
    QCOMPARE(stage.rows(u"SELECT ask_when, depends_on_question_id IS NULL, depends_on_answer IS NULL FROM questions "
                        "ORDER BY question_id DESC LIMIT 1"_s),
             Rows({{u"always"_s, 1, 1}}));
}

void TestConditionRow::a_failing_query_leaves_the_choosers_empty()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"A\"]"_s));
    QVERIFY(stage.exec(u"ALTER TABLE questions RENAME TO elsewhere"_s));
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        form.ask->setCurrentIndex(1);
        QCOMPARE(form.chooser(0)->count(), 0);
        QCOMPARE(form.chooser(2)->count(), 0);
    }));
}

void TestConditionRow::what_is_chosen_is_not_stored_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("new question") << -1;
    QTest::newRow("existing question") << 0;
}

void TestConditionRow::what_is_chosen_is_not_stored()
{
    QFETCH(const int, row);
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"A\",\"B\"]"_s));
    QVERIFY(enterQuestion(stage, u"multi_choice"_s, u"[\"C\",\"D\"]"_s));
    Rows expected = unstoredColumns(stage);
    if (row < 0)
        expected.append(expected.first());
    QVERIFY(editQuestion(stage, row, [](const QuestionForm &form) {
        useUnstoredControls(form);
        QVERIFY(form.box(u"Adjudicated Question"_s)->isChecked());
        QCOMPARE(form.chooser(0)->currentText(), u"2"_s);
        QCOMPARE(form.chooser(1)->currentText(), u"wasn't"_s);
        QCOMPARE(form.chooser(2)->currentText(), u"D"_s);
        form.accept();
    }));
    QCOMPARE(unstoredColumns(stage), expected);
}

void TestConditionRow::what_is_stored_is_not_shown_and_stays()
{
    Stage stage;
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"A\",\"B\"]"_s));
    QVERIFY(enterQuestion(stage, u"single_choice"_s, u"[\"C\",\"D\"]"_s));
    QVERIFY(stage.exec(u"UPDATE questions SET judge_question=1, search_enabled=1, "
                       "ask_when='when the answer to question', depends_on_question_id=2, depends_on_answer='D'"_s));
    QVERIFY(stage.call("loadQuestions"));
    const Rows before = unstoredColumns(stage);
    QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
        QVERIFY(!form.box(u"Adjudicated Question"_s)->isChecked());
        QVERIFY(!form.box(u"Allow web search first"_s)->isChecked());
        QCOMPARE(form.ask->currentIndex(), 0);
        QVERIFY(choosersShown(form, false));
        QCOMPARE(form.chooser(0)->currentIndex(), 0);
        QCOMPARE(form.chooser(1)->currentIndex(), 0);
        form.accept();
    }));
    QCOMPARE(unstoredColumns(stage), before);
}

void TestConditionRow::web_search_is_never_enabled()
{
    Stage stage;
    QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
        const QCheckBox *search = form.box(u"Allow web search first"_s);
        QVERIFY(!search->isEnabled());
        useUnstoredControls(form);
        for (int type = 0; type < form.type->count(); ++type) {
            form.type->setCurrentIndex(type);
            QVERIFY(!search->isEnabled());
        }
        QVERIFY(!search->isChecked());
    }));
}

QTEST_MAIN(TestConditionRow)
#include "tst_conditionrow.moc"
