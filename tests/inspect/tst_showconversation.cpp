// Whose conversation the button "Show" puts into the box, and how long it stays there.

#include "tests/inspect/conversationbox.h"
#include "tests/survey/surveystage.h"

#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

class TestShowConversation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void persona_and_questions_are_those_of_the_tables();
    void questions_are_walked_in_their_order();
    void judge_questions_are_shown_too();
    void answers_are_those_of_the_chosen_persona();
    void a_chosen_question_that_is_gone_does_not_end_the_walk();
    void empty_choosers_stand_for_nobody_and_nothing();
    void nothing_at_all_shows_nothing();
    void a_persona_that_is_gone_has_no_text_but_its_answers();
    void failing_statements_count_as_no_rows_data();
    void failing_statements_count_as_no_rows();
    void a_choice_alone_shows_nothing();
    void text_stays_until_the_next_show();
    void a_closed_project_leaves_the_text();
    void showing_changes_nothing();
    void a_run_shows_the_answers_so_far();
};

void TestShowConversation::persona_and_questions_are_those_of_the_tables()
{
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(answer(stage, 1, u"old answer"_s));
    QVERIFY(stage.exec(u"UPDATE personas SET name = 'Someone', attributes = 'Changed.'"_s));
    QVERIFY(stage.exec(u"UPDATE questions SET prompt = 'New ' || prompt"_s));
    QCOMPARE(Box(stage).show(u"Persona A"_s, u"2"_s),
             u"Changed.\nQ: New One\nA: old answer\nQ: New Two\nA: (pending)"_s);
}

void TestShowConversation::questions_are_walked_in_their_order()
{
    Stage stage;
    QVERIFY(fill(stage));
    for (const int question : {1, 2, 3})
        QVERIFY(answer(stage, question, u"a%1"_s.arg(question)));
    QVERIFY(stage.exec(u"UPDATE questions SET order_num = 4 - order_num"_s) && stage.call("loadQuestions"));
    // The chooser shows the numbers: 2 is the question Two, and what comes before it is now Three.
    QCOMPARE(Box(stage).show(u"Persona A"_s, u"2"_s), u"Speaks as Persona A.\nQ: Three\nA: a3\nQ: Two\nA: a2"_s);
}

void TestShowConversation::judge_questions_are_shown_too()
{
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(stage.exec(u"UPDATE questions SET judge_question = 1 WHERE question_id <> 2"_s));
    QVERIFY(answer(stage, 1, u"a1"_s) && answer(stage, 2, u"a2"_s));
    const QString answered = u"Speaks as Persona A.\nQ: One\nA: a1\nQ: Two\nA: a2\n"_s;
    QCOMPARE(Box(stage).show(u"Persona A"_s, u"3"_s), answered + u"Q: Three\nA: (pending)"_s);
}

void TestShowConversation::answers_are_those_of_the_chosen_persona()
{
    Stage stage;
    // Two of the same name, of whom the second is chosen by its place.
    QVERIFY(addPersona(stage, u"b"_s, u"Persona A"_s));
    QVERIFY(fill(stage));
    QVERIFY(stage.exec(u"UPDATE personas SET attributes = uuid"_s));
    for (const auto &uuid : {u"a"_s, u"b"_s})
        QVERIFY(addAnswer(stage, uuid, 1, {QString(u"of "_s + uuid), QVariant(), QVariant()}));
    const Box box(stage);
    QCOMPARE(box.persona->count(), 2);
    for (int place = 0; place < 2; ++place) {
        box.persona->setCurrentIndex(place);
        const QString uuid = box.persona->currentData().toString();
        QCOMPARE(box.show(), u"%1\nQ: One\nA: of %1"_s.arg(uuid));
    }
}

void TestShowConversation::a_chosen_question_that_is_gone_does_not_end_the_walk()
{
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(answer(stage, 1, u"a1"_s) && answer(stage, 2, u"a2"_s) && answer(stage, 3, u"a3"_s));
    stage.find<QTableView>(u"questionView"_s)->selectRow(1);
    stage.button(u"Delete"_s, u"Questions"_s)->click();
    const Box box(stage);
    QCOMPARE(box.question->count(), 3);
    QCOMPARE(box.show(u"Persona A"_s, u"2"_s), u"Speaks as Persona A.\nQ: One\nA: a1\nQ: Three\nA: a3"_s);
    QVERIFY(stage.exec(u"DELETE FROM responses WHERE question_id = 3"_s));
    QCOMPARE(box.show(), u"Speaks as Persona A.\nQ: One\nA: a1"_s);
}

void TestShowConversation::empty_choosers_stand_for_nobody_and_nothing()
{
    Stage stage;
    setBoilerplate(stage, u"Pre"_s, u"Post"_s);
    QVERIFY(addPersona(stage, u"a"_s, u"Persona A"_s) && addQuestion(stage, 1, u"One"_s, 1));
    QVERIFY(answer(stage, 1, u"a1"_s));
    const Box box(stage);
    QCOMPARE(box.persona->count(), 0);
    QCOMPARE(box.question->count(), 0);
    // No question is the chosen one, so none is pending.
    QCOMPARE(box.show(), u"Pre\n\nPost"_s);
    QVERIFY(stage.call("loadQuestions"));
    QCOMPARE(box.show(), u"Pre\n\nPost\nQ: One\nA: (pending)"_s);
    QVERIFY(stage.call("loadProject"));
    box.question->clear();
    QCOMPARE(box.show(), u"Pre\nSpeaks as Persona A.\nPost\nQ: One\nA: a1"_s);
}

void TestShowConversation::nothing_at_all_shows_nothing()
{
    Stage stage;
    setBoilerplate(stage, u""_s, u""_s);
    const Box box(stage);
    box.view->setPlainText(u"before"_s);
    QCOMPARE(box.show(), QString());
}

void TestShowConversation::a_persona_that_is_gone_has_no_text_but_its_answers()
{
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(answer(stage, 1, u"a1"_s));
    setBoilerplate(stage, u"Pre"_s, u"Post"_s);
    QVERIFY(stage.exec(u"DELETE FROM personas"_s));
    QCOMPARE(Box(stage).show(u"Persona A"_s, u"1"_s), u"Pre\n\nPost\nQ: One\nA: a1"_s);
}

void TestShowConversation::failing_statements_count_as_no_rows_data()
{
    QTest::addColumn<QString>("shown");
    QTest::newRow("personas") << u"Pre\n\nQ: One\nA: a1\nQ: Two\nA: (pending)"_s;
    QTest::newRow("questions") << u"Pre\nSpeaks as Persona A."_s;
    QTest::newRow("responses") << u"Pre\nSpeaks as Persona A.\nQ: Two\nA: (pending)"_s;
}

void TestShowConversation::failing_statements_count_as_no_rows()
{
    QFETCH(QString, shown);
    Stage stage;
    QVERIFY(fill(stage));
    setBoilerplate(stage, u"Pre"_s, u""_s);
    QVERIFY(answer(stage, 1, u"a1"_s));
    QVERIFY(stage.exec(u"DROP TABLE %1"_s.arg(QString::fromLatin1(QTest::currentDataTag()))));
    QCOMPARE(Box(stage).show(u"Persona A"_s, u"2"_s), shown);
}

void TestShowConversation::a_choice_alone_shows_nothing()
{
    Stage stage;
    QVERIFY(addPersona(stage, u"b"_s, u"Persona B"_s));
    QVERIFY(fill(stage));
    const Box box(stage);
    QCOMPARE(box.text(), QString());
    const QString first = box.show(u"Persona A"_s, u"1"_s);
    box.persona->setCurrentText(u"Persona B"_s);
    box.question->setCurrentText(u"3"_s);
    QCOMPARE(box.text(), first);
    QCOMPARE(box.show(), u"Speaks as Persona B.\nQ: Three\nA: (pending)"_s);
}

void TestShowConversation::text_stays_until_the_next_show()
{
    Stage stage;
    Stage::setTestMode(true);
    QVERIFY(fill(stage));
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    const Box box(stage);
    const QString shown = box.show();
    QVERIFY(!shown.isEmpty());
    QVERIFY(answer(stage, 1, u"a1"_s) && stage.call("loadProject"));
    QCOMPARE(box.text(), shown);
    QVERIFY(stage.call("newProject"));
    QCOMPARE(box.question->count(), 0);
    QCOMPARE(box.text(), shown);
    QVERIFY(stage.result("openProjectFromFile", path));
    QCOMPARE(box.text(), shown);
    QVERIFY(stage.call("newProject"));
    QCOMPARE(box.show(), u"Act as the following persona."_s);
}

void TestShowConversation::a_closed_project_leaves_the_text()
{
    Stage stage;
    QVERIFY(fill(stage));
    const Box box(stage);
    const QString shown = box.show();
    setBoilerplate(stage, u"Pre"_s, u""_s);
    stage.project().close();
    QCOMPARE(box.show(), shown);
}

void TestShowConversation::showing_changes_nothing()
{
    Stage stage;
    QVERIFY(addSurvey(stage));
    const auto before = stage.rows(u"SELECT * FROM responses"_s);
    QVERIFY(stage.call("loadQuestions"));
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(!Box(stage).show().isEmpty());
    QCOMPARE(stage.rows(u"SELECT * FROM responses"_s), before);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestShowConversation::a_run_shows_the_answers_so_far()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    setBoilerplate(stage, u""_s, u""_s);
    stage.endpoint.queue(standin::Reply::content(u"first"_s));
    stage.endpoint.queue(standin::Reply::content(u"second"_s).held());
    stage.startRun();
    QVERIFY(stage.arrived(2));
    const Box box(stage);
    QCOMPARE(box.show(u"P1"_s, u"1"_s), u"P1\nQ: Q1\nA: first"_s);
    QCOMPARE(box.show(u"P1"_s, u"2"_s), u"P1\nQ: Q1\nA: first\nQ: Q2\nA: (pending)"_s);
    stage.endpoint.release();
    QVERIFY(stage.runEnded());
    QCOMPARE(box.show(), u"P1\nQ: Q1\nA: first\nQ: Q2\nA: second"_s);
}

QTEST_MAIN(TestShowConversation)
#include "tst_showconversation.moc"
