// What the button "Show" puts into the conversation box: the system text and the answers, and how long it stays there.

#include "tests/support/entries.h"
#include "tests/support/shown.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QComboBox>
#include <QGroupBox>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

static void typeBoilerplate(Stage &stage, const QString &preamble, const QString &postamble)
{
    preambleEdit(stage)->setPlainText(preamble);
    postambleEdit(stage)->setPlainText(postamble);
}

/// A persona a and the questions One, Two and Three, on show; no boilerplate.
static bool fillBox(Stage &stage)
{
    const bool filled =
        enter(stage, PersonaEntered{.uuid = u"a"_s, .name = u"Persona A"_s, .attributes = u"Speaks as Persona A."_s},
              QuestionEntered{.prompt = u"One"_s}, QuestionEntered{.prompt = u"Two"_s},
              QuestionEntered{.prompt = u"Three"_s}) &&
        stage.call("loadProject");
    typeBoilerplate(stage, u""_s, u""_s);
    return filled;
}

static bool answerAs(Stage &stage, const QString &persona, int question, const QString &text)
{
    return enter(stage, AnswerEntered{.persona = persona, .question = question, .text = text});
}

/// The answers of the persona a: to question 1 "a1" and so on.
static bool answerQuestions(Stage &stage, const QList<int> &questions)
{
    bool done = true;
    for (const int question : questions)
        done = answerAs(stage, u"a"_s, question, u"a%1"_s.arg(question)) && done;
    return done;
}

class TestShowConversation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void system_text_is_put_together_from_its_parts_data()
    {
        QTest::addColumn<QString>("preamble");
        QTest::addColumn<QVariant>("systemPrompt");
        QTest::addColumn<QVariant>("description");
        QTest::addColumn<QString>("postamble");
        QTest::addColumn<QString>("shown");
        const QString none;
        const QVariant null;
        const QVariant text(u"Text"_s);
        QTest::newRow("all") << u"Pre"_s << null << text << u"Post"_s << u"Pre\nText\nPost\n"_s;
        QTest::newRow("no preamble") << none << null << text << u"Post"_s << u"Text\nPost\n"_s;
        QTest::newRow("no persona") << u"Pre"_s << null << null << u"Post"_s << u"Pre\n\nPost\n"_s;
        QTest::newRow("no postamble") << u"Pre"_s << null << text << none << u"Pre\nText\n"_s;
        QTest::newRow("preamble alone") << u"Pre"_s << null << QVariant(u""_s) << none << u"Pre\n\n"_s;
        QTest::newRow("persona alone") << none << null << text << none << u"Text\n"_s;
        QTest::newRow("postamble alone") << none << null << null << u"Post"_s << u"Post\n"_s;
        QTest::newRow("nothing") << none << null << null << none << none;
        QTest::newRow("lines and blanks within")
            << u"  Pre \n"_s << null << QVariant(u" Te\n\nxt "_s) << u" Post "_s << u"Pre \n\n Te\n\nxt \n Post \n"_s;
        QTest::newRow("prompt and description")
            << u"Pre"_s << QVariant(u"Prompt"_s) << text << none << u"Pre\nPrompt\n"_s;
        QTest::newRow("empty prompt") << u"Pre"_s << QVariant(u""_s) << text << none << u"Pre\nText\n"_s;
        QTest::newRow("blank prompt") << u"Pre"_s << QVariant(u" "_s) << text << none << u"Pre\n \n"_s;
    }
    void system_text_is_put_together_from_its_parts()
    {
        QFETCH(const QString, preamble);
        QFETCH(const QVariant, systemPrompt);
        QFETCH(const QVariant, description);
        QFETCH(const QString, postamble);
        QFETCH(const QString, shown);
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(stage.exec(u"UPDATE personas SET system_prompt = ?, attributes = ?"_s, {systemPrompt, description}));
        typeBoilerplate(stage, preamble, postamble);
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, u"1"_s), shown + u"Q: One\nA: (pending)"_s);
    }

    void boilerplate_is_that_of_the_edits()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        typeBoilerplate(stage, u"Pre"_s, u"Post"_s);
        // The table and the edits differ only where something writes past the program, as here.
        QVERIFY(stage.exec(u"UPDATE boilerplate SET preamble = 'stored', postamble = 'stored'"_s));
        QCOMPARE(ConversationBox(stage).show(), u"Pre\nSpeaks as Persona A.\nPost\nQ: One\nA: (pending)"_s);
        auto *preamble = preambleEdit(stage);
        const QSignalBlocker blocker(preamble);
        preamble->setPlainText(u"Typed"_s);
        QCOMPARE(ConversationBox(stage).show(), u"Typed\nSpeaks as Persona A.\nPost\nQ: One\nA: (pending)"_s);
    }

    void answered_questions_are_shown_up_to_the_chosen_one_data()
    {
        QTest::addColumn<QList<int>>("answered");
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("shown");
        QTest::newRow("none, first chosen") << QList<int>{} << u"1"_s << u"Q: One\nA: (pending)"_s;
        QTest::newRow("none, last chosen") << QList<int>{} << u"3"_s << u"Q: Three\nA: (pending)"_s;
        QTest::newRow("1 and 3, 3 chosen") << QList<int>{1, 3} << u"3"_s << u"Q: One\nA: a1\nQ: Three\nA: a3"_s;
        QTest::newRow("1 and 2, 1 chosen") << QList<int>{1, 2} << u"1"_s << u"Q: One\nA: a1"_s;
        QTest::newRow("1 and 3, 2 chosen") << QList<int>{1, 3} << u"2"_s << u"Q: One\nA: a1\nQ: Two\nA: (pending)"_s;
        QTest::newRow("3, 1 chosen") << QList<int>{3} << u"1"_s << u"Q: One\nA: (pending)"_s;
        QTest::newRow("all, 3 chosen") << QList<int>{1, 2, 3} << u"3"_s
                                       << u"Q: One\nA: a1\nQ: Two\nA: a2\nQ: Three\nA: a3"_s;
    }
    void answered_questions_are_shown_up_to_the_chosen_one()
    {
        QFETCH(const QList<int>, answered);
        QFETCH(const QString, chosen);
        QFETCH(const QString, shown);
        Stage stage;
        QVERIFY(fillBox(stage) && answerQuestions(stage, answered));
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, chosen), u"Speaks as Persona A.\n"_s + shown);
    }

    void answer_is_taken_from_all_columns_data()
    {
        QTest::addColumn<QVariant>("text");
        QTest::addColumn<QVariant>("number");
        QTest::addColumn<QVariant>("json");
        QTest::addColumn<QString>("shown");
        const QVariant null;
        const QVariant json(u"{\"answer\":\"x\",\"reasoning\":\"y\"}"_s);
        QTest::newRow("text") << QVariant(u" word "_s) << QVariant(5) << json << u" word"_s;
        QTest::newRow("number") << null << QVariant(3.14159265) << json << u"3.14159"_s;
        QTest::newRow("document") << QVariant(u""_s) << null << json << json.toString();
        QTest::newRow("nothing in the row") << null << null << null << u"(pending)"_s;
        QTest::newRow("empty texts") << QVariant(u""_s) << null << QVariant(u""_s) << u"(pending)"_s;
    }
    void answer_is_taken_from_all_columns()
    {
        QFETCH(const QVariant, text);
        QFETCH(const QVariant, number);
        QFETCH(const QVariant, json);
        QFETCH(const QString, shown);
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(enter(stage,
                      AnswerEntered{.persona = u"a"_s, .question = 1, .text = text, .number = number, .json = json}));
        QCOMPARE(ConversationBox(stage).show(), u"Speaks as Persona A.\nQ: One\nA: "_s + shown);
    }

    void newest_answer_counts()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        for (const auto &time : {u"2026-01-02"_s, u"2026-01-03"_s, u"2026-01-01"_s})
            QVERIFY(enter(stage, AnswerEntered{.persona = u"a"_s, .question = 1, .text = time, .createdAt = time}));
        QCOMPARE(ConversationBox(stage).show(), u"Speaks as Persona A.\nQ: One\nA: 2026-01-03"_s);
        // A newer row without an answer hides the older ones.
        QVERIFY(enter(stage, AnswerEntered{.persona = u"a"_s, .question = 1, .createdAt = u"2026-01-04"_s}));
        QCOMPARE(ConversationBox(stage).show(), u"Speaks as Persona A.\nQ: One\nA: (pending)"_s);
    }

    void an_empty_pending_prompt_leaves_no_trace()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(answerQuestions(stage, {1}));
        QVERIFY(stage.exec(u"UPDATE questions SET prompt = '' WHERE question_id = 2"_s));
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, u"2"_s), u"Speaks as Persona A.\nQ: One\nA: a1"_s);
        QVERIFY(stage.exec(u"UPDATE questions SET prompt = NULL WHERE question_id = 2"_s));
        QCOMPARE(ConversationBox(stage).show(), u"Speaks as Persona A.\nQ: One\nA: a1"_s);
    }

    void blank_answers_count_as_answers()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(answerAs(stage, u"a"_s, 1, u" \n "_s) && answerAs(stage, u"a"_s, 2, u" \n"_s));
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, u"2"_s),
                 u"Speaks as Persona A.\nQ: One\nA:  \n \nQ: Two\nA:"_s);
    }

    void persona_and_questions_are_those_of_the_tables()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(answerAs(stage, u"a"_s, 1, u"old answer"_s));
        QVERIFY(stage.exec(u"UPDATE personas SET name = 'Someone', attributes = 'Changed.'"_s));
        QVERIFY(stage.exec(u"UPDATE questions SET prompt = 'New ' || prompt"_s));
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, u"2"_s),
                 u"Changed.\nQ: New One\nA: old answer\nQ: New Two\nA: (pending)"_s);
    }

    void questions_are_walked_in_their_order()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(answerQuestions(stage, {1, 2, 3}));
        QVERIFY(stage.exec(u"UPDATE questions SET order_num = 4 - order_num"_s) && stage.call("loadQuestions"));
        // The chooser shows the numbers: 2 is the question Two, and what comes before it is now Three.
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, u"2"_s),
                 u"Speaks as Persona A.\nQ: Three\nA: a3\nQ: Two\nA: a2"_s);
    }

    void judge_questions_are_shown_too()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(stage.exec(u"UPDATE questions SET judge_question = 1 WHERE question_id <> 2"_s));
        QVERIFY(answerQuestions(stage, {1, 2}));
        const QString answered = u"Speaks as Persona A.\nQ: One\nA: a1\nQ: Two\nA: a2\n"_s;
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, u"3"_s), answered + u"Q: Three\nA: (pending)"_s);
    }

    void answers_are_those_of_the_chosen_persona()
    {
        Stage stage;
        // Two of the same name, of whom the second is chosen by its place.
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"b"_s, .name = u"Persona A"_s}));
        QVERIFY(fillBox(stage));
        QVERIFY(stage.exec(u"UPDATE personas SET attributes = uuid"_s));
        for (const auto &uuid : {u"a"_s, u"b"_s})
            QVERIFY(answerAs(stage, uuid, 1, u"of "_s + uuid));
        const ConversationBox box(stage);
        QCOMPARE(box.persona->count(), 2);
        for (int place = 0; place < 2; ++place) {
            box.persona->setCurrentIndex(place);
            const QString uuid = box.persona->currentData().toString();
            QCOMPARE(box.show(), u"%1\nQ: One\nA: of %1"_s.arg(uuid));
        }
    }

    void a_chosen_question_that_is_gone_does_not_end_the_walk()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(answerQuestions(stage, {1, 2, 3}));
        questionView(stage)->selectRow(1);
        stage.button(u"Delete"_s, u"Questions"_s)->click();
        const ConversationBox box(stage);
        QCOMPARE(box.question->count(), 3);
        QCOMPARE(box.show(u"Persona A"_s, u"2"_s), u"Speaks as Persona A.\nQ: One\nA: a1\nQ: Three\nA: a3"_s);
        QVERIFY(stage.exec(u"DELETE FROM responses WHERE question_id = 3"_s));
        QCOMPARE(box.show(), u"Speaks as Persona A.\nQ: One\nA: a1"_s);
    }

    void empty_choosers_stand_for_nobody_and_nothing()
    {
        Stage stage;
        typeBoilerplate(stage, u"Pre"_s, u"Post"_s);
        QVERIFY(enter(stage, PersonaEntered{.uuid = u"a"_s, .name = u"Persona A"_s, .attributes = u"Speaks."_s},
                      QuestionEntered{.prompt = u"One"_s}));
        QVERIFY(answerQuestions(stage, {1}));
        const ConversationBox box(stage);
        QCOMPARE(box.persona->count(), 0);
        QCOMPARE(box.question->count(), 0);
        // No question is the chosen one, so none is pending.
        QCOMPARE(box.show(), u"Pre\n\nPost"_s);
        QVERIFY(stage.call("loadQuestions"));
        QCOMPARE(box.show(), u"Pre\n\nPost\nQ: One\nA: (pending)"_s);
        QVERIFY(stage.call("loadProject"));
        box.question->clear();
        QCOMPARE(box.show(), u"Pre\nSpeaks.\nPost\nQ: One\nA: a1"_s);
    }

    void nothing_at_all_shows_nothing()
    {
        Stage stage;
        typeBoilerplate(stage, u""_s, u""_s);
        const ConversationBox box(stage);
        box.view->setPlainText(u"before"_s);
        QCOMPARE(box.show(), QString());
    }

    void a_persona_that_is_gone_has_no_text_but_its_answers()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        QVERIFY(answerQuestions(stage, {1}));
        typeBoilerplate(stage, u"Pre"_s, u"Post"_s);
        QVERIFY(stage.exec(u"DELETE FROM personas"_s));
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, u"1"_s), u"Pre\n\nPost\nQ: One\nA: a1"_s);
    }

    void failing_statements_count_as_no_rows_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::newRow("personas") << u"Pre\n\nQ: One\nA: a1\nQ: Two\nA: (pending)"_s;
        QTest::newRow("questions") << u"Pre\nSpeaks as Persona A."_s;
        QTest::newRow("responses") << u"Pre\nSpeaks as Persona A.\nQ: Two\nA: (pending)"_s;
    }
    void failing_statements_count_as_no_rows()
    {
        QFETCH(QString, shown);
        Stage stage;
        QVERIFY(fillBox(stage));
        typeBoilerplate(stage, u"Pre"_s, u""_s);
        QVERIFY(answerQuestions(stage, {1}));
        QVERIFY(stage.exec(u"DROP TABLE %1"_s.arg(QString::fromLatin1(QTest::currentDataTag()))));
        QCOMPARE(ConversationBox(stage).show(u"Persona A"_s, u"2"_s), shown);
    }

    void a_choice_alone_shows_nothing()
    {
        Stage stage;
        QVERIFY(enter(stage,
                      PersonaEntered{.uuid = u"b"_s, .name = u"Persona B"_s, .attributes = u"Speaks as Persona B."_s}));
        QVERIFY(fillBox(stage));
        const ConversationBox box(stage);
        QCOMPARE(box.text(), QString());
        const QString first = box.show(u"Persona A"_s, u"1"_s);
        box.persona->setCurrentText(u"Persona B"_s);
        box.question->setCurrentText(u"3"_s);
        QCOMPARE(box.text(), first);
        QCOMPARE(box.show(), u"Speaks as Persona B.\nQ: Three\nA: (pending)"_s);
    }

    void text_stays_until_the_next_show()
    {
        Stage stage;
        Stage::setTestMode(true);
        QVERIFY(fillBox(stage));
        const QString path = stage.path(u"saved.ormt"_s);
        QVERIFY(stage.result("saveProjectToFile", path));
        const ConversationBox box(stage);
        const QString shown = box.show();
        QVERIFY(!shown.isEmpty());
        QVERIFY(answerQuestions(stage, {1}) && stage.call("loadProject"));
        QCOMPARE(box.text(), shown);
        QVERIFY(stage.call("newProject"));
        QCOMPARE(box.question->count(), 0);
        QCOMPARE(box.text(), shown);
        QVERIFY(stage.result("openProjectFromFile", path));
        QCOMPARE(box.text(), shown);
        QVERIFY(stage.call("newProject"));
        QCOMPARE(box.show(), u"Act as the following persona."_s);
    }

    void a_closed_project_leaves_the_text()
    {
        Stage stage;
        QVERIFY(fillBox(stage));
        const ConversationBox box(stage);
        const QString shown = box.show();
        typeBoilerplate(stage, u"Pre"_s, u""_s);
        stage.database().close();
        QCOMPARE(box.show(), shown);
    }

    void showing_changes_nothing()
    {
        Stage stage;
        QVERIFY(enter(stage, QuestionEntered{}) && answerQuestions(stage, {1}) && stage.call("loadQuestions"));
        const QStringList before = everyRow(stage.database());
        QVERIFY(!stage.asksBeforeClosing());
        QVERIFY(!ConversationBox(stage).show().isEmpty());
        QCOMPARE(everyRow(stage.database()), before);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_run_shows_the_answers_so_far()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        typeBoilerplate(stage, u""_s, u""_s);
        stage.endpoint.queue(standin::Reply::content(u"first"_s));
        stage.endpoint.queue(standin::Reply::content(u"second"_s).held());
        stage.startRun();
        QVERIFY(stage.arrived(2));
        const ConversationBox box(stage);
        QCOMPARE(box.show(u"P1"_s, u"1"_s), u"P1\nQ: Q1\nA: first"_s);
        QCOMPARE(box.show(u"P1"_s, u"2"_s), u"P1\nQ: Q1\nA: first\nQ: Q2\nA: (pending)"_s);
        stage.endpoint.release();
        QVERIFY(stage.runEnded());
        QCOMPARE(box.show(), u"P1\nQ: Q1\nA: first\nQ: Q2\nA: second"_s);
    }
};

ORRINET_TEST(TestShowConversation)
#include "tst_showconversation.moc"
