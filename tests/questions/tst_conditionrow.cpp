// The condition of the question dialog and its other controls that are shown and filled but never stored.

#include "tests/questions/questionform.h"
#include "tests/support/testcase.h"

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
    form.box(u"Adjudicated Question"_s)->click();
    form.box(u"Allow web search first"_s)->click();
    form.ask->setCurrentIndex(1);
    for (int place = 0; place < 3; ++place)
        form.chooser(place)->setCurrentIndex(1);
}

class TestConditionRow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void choosers_are_shown_while_a_condition_is_chosen()
    {
        Stage stage;
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            QVERIFY(choosersShown(form, false));
            form.ask->setCurrentIndex(1);
            QVERIFY(choosersShown(form, true));
            form.ask->setCurrentIndex(0);
            QVERIFY(choosersShown(form, false));
        }));
    }

    void questions_with_choices_are_on_offer_in_their_order()
    {
        Stage stage;
        for (const auto &type : {u"ranking"_s, u"multi_choice"_s, u"text"_s, u"single_choice"_s, u"numeric"_s,
                                 u"likert"_s, u"Option"_s, u"single_choice"_s})
            QVERIFY(enter(stage, QuestionEntered{.type = type}));
        QVERIFY(stage.exec(u"UPDATE questions SET order_num = 20 - order_num"_s));
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            const QComboBox *chooser = form.chooser(0);
            QCOMPARE(items(chooser), QStringList({u"12"_s, u"16"_s, u"18"_s}));
            QVariantList identities;
            for (int index = 0; index < chooser->count(); ++index)
                identities.append(chooser->itemData(index));
            QCOMPARE(identities, QVariantList({8, 4, 2}));
            QCOMPARE(chooser->currentIndex(), 0);
        }));
    }

    void answers_are_those_of_the_chosen_question()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.type = u"single_choice"_s, .labels = u" [ \"A\", 2, \"\\u00e4\" ]"_s},
                      QuestionEntered{.type = u"multi_choice"_s, .labels = u"[\"C\",\"\",\"C\"]"_s},
                      QuestionEntered{.type = u"multi_choice"_s, .labels = u"[\"C\""_s},
                      QuestionEntered{.type = u"multi_choice"_s}));
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            form.ask->setCurrentIndex(1);
            const QComboBox *answers = form.chooser(2);
            QCOMPARE(items(answers), QStringList({u"A"_s, u""_s, u"ä"_s}));
            QVERIFY(!answers->itemData(0).isValid());
            form.chooser(0)->setCurrentIndex(1);
            QCOMPARE(items(answers), QStringList({u"C"_s, u""_s, u"C"_s}));
            form.chooser(0)->setCurrentIndex(2);
            QCOMPARE(items(answers), QStringList());
            form.chooser(0)->setCurrentIndex(1);
            QCOMPARE(answers->count(), 3);
            form.chooser(0)->setCurrentIndex(3);
            QCOMPARE(items(answers), QStringList());
        }));
    }

    void answers_are_read_when_the_choosers_are_shown()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.type = u"single_choice"_s, .labels = u"[\"A\"]"_s}));
        QVERIFY(editQuestion(stage, -1, [&](const QuestionForm &form) {
            const QComboBox *answers = form.chooser(2);
            QCOMPARE(answers->count(), 0);
            form.ask->setCurrentIndex(1);
            QCOMPARE(items(answers), QStringList({u"A"_s}));

            QVERIFY(stage.exec(u"UPDATE questions SET labels = '[\"B\"]'"_s));
            form.ask->setCurrentIndex(0);
            QCOMPARE(items(answers), QStringList({u"A"_s}));
            form.ask->setCurrentIndex(1);
            QCOMPARE(items(answers), QStringList({u"B"_s}));
        }));
    }

    void a_question_can_be_its_own_condition_by_its_stored_labels()
    {
        Stage stage;
        QVERIFY(listQuestion(stage, {.type = u"single_choice"_s, .labels = u"[\"A\"]"_s}));
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            QVERIFY(form.addLabel(u"B"_s));
            form.ask->setCurrentIndex(1);
            QCOMPARE(items(form.chooser(0)), QStringList({u"1"_s}));
            QCOMPARE(items(form.chooser(2)), QStringList({u"A"_s}));
            form.accept();
        }));
        QVERIFY(editQuestion(stage, 0, [](const QuestionForm &form) {
            form.ask->setCurrentIndex(1);
            QCOMPARE(items(form.chooser(2)), QStringList({u"A"_s, u"B"_s}));
        }));
    }

    void a_question_of_the_number_zero_offers_no_answers()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.id = 0, .type = u"single_choice"_s, .labels = u"[\"A\"]"_s}));
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            form.ask->setCurrentIndex(1);
            QCOMPARE(form.chooser(0)->count(), 1);
            QCOMPARE(form.chooser(2)->count(), 0);
        }));
    }

    void without_questions_to_choose_from_the_choosers_are_empty()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.type = u"likert"_s, .labels = u"[\"A\",\"B\"]"_s}));
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            form.ask->setCurrentIndex(1);
            QVERIFY(choosersShown(form, true));
            QCOMPARE(form.chooser(0)->count(), 0);
            QCOMPARE(items(form.chooser(1)), QStringList({u"was"_s, u"wasn't"_s}));
            QCOMPARE(form.chooser(1)->currentIndex(), 0);
            QCOMPARE(form.chooser(2)->count(), 0);
            QVERIFY(form.ok->isEnabled());
            form.accept();
        }));
        QCOMPARE(stage.count(u"questions WHERE ask_when = 'always' AND depends_on_question_id IS NULL AND "
                             "depends_on_answer IS NULL"_s),
                 2);
    }

    void a_failing_query_leaves_the_choosers_empty()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.type = u"single_choice"_s, .labels = u"[\"A\"]"_s}));
        QVERIFY(editQuestion(stage, -1, [&](const QuestionForm &form) {
            QVERIFY(stage.exec(u"ALTER TABLE questions RENAME TO elsewhere"_s));
            QCOMPARE(form.chooser(0)->count(), 1);
            form.ask->setCurrentIndex(1);
            QCOMPARE(form.chooser(2)->count(), 0);
        }));
        QVERIFY(editQuestion(stage, -1, [](const QuestionForm &form) {
            form.ask->setCurrentIndex(1);
            QCOMPARE(form.chooser(0)->count(), 0);
            QCOMPARE(form.chooser(2)->count(), 0);
        }));
    }

    void what_is_chosen_is_not_stored_data()
    {
        QTest::addColumn<int>("row");
        QTest::newRow("new question") << -1;
        QTest::newRow("existing question") << 0;
    }
    void what_is_chosen_is_not_stored()
    {
        QFETCH(const int, row);
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{.type = u"single_choice"_s, .labels = u"[\"A\",\"B\"]"_s}));
        QVERIFY(listQuestion(stage, {.type = u"multi_choice"_s, .labels = u"[\"C\",\"D\"]"_s}));
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

    void what_is_stored_is_not_shown_and_stays()
    {
        Stage stage;
        for (const auto &labels : {u"[\"A\",\"B\"]"_s, u"[\"C\",\"D\"]"_s})
            QVERIFY(enter(stage, QuestionEntered{.type = u"single_choice"_s, .labels = labels}));
        QVERIFY(
            stage.exec(u"UPDATE questions SET judge_question=1, search_enabled=1, "
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

    void web_search_is_never_enabled()
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
};

ORRINET_TEST(TestConditionRow)
#include "tst_conditionrow.moc"
