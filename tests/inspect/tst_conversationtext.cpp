// The text of a conversation: the system text, and which answers of a persona stand in it.

#include "tests/inspect/conversationbox.h"

#include <QSignalBlocker>
#include <QTest>

using namespace Qt::StringLiterals;

class TestConversationText : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void system_text_is_put_together_from_its_parts_data();
    void system_text_is_put_together_from_its_parts();
    void persona_speaks_from_its_system_prompt_before_its_description_data();
    void persona_speaks_from_its_system_prompt_before_its_description();
    void boilerplate_is_that_of_the_edits();
    void answered_questions_are_shown_up_to_the_chosen_one_data();
    void answered_questions_are_shown_up_to_the_chosen_one();
    void answer_falls_back_from_column_to_column_data();
    void answer_falls_back_from_column_to_column();
    void newest_answer_counts();
    void an_empty_pending_prompt_leaves_no_trace();
    void blank_answers_count_as_answers();
};

void TestConversationText::system_text_is_put_together_from_its_parts_data()
{
    QTest::addColumn<QString>("preamble");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("postamble");
    QTest::addColumn<QString>("shown");
    const QString none;
    QTest::newRow("all") << u"Pre"_s << u"Persona"_s << u"Post"_s << u"Pre\nPersona\nPost\n"_s;
    QTest::newRow("no preamble") << none << u"Persona"_s << u"Post"_s << u"Persona\nPost\n"_s;
    QTest::newRow("no persona") << u"Pre"_s << none << u"Post"_s << u"Pre\n\nPost\n"_s;
    QTest::newRow("no postamble") << u"Pre"_s << u"Persona"_s << none << u"Pre\nPersona\n"_s;
    QTest::newRow("preamble alone") << u"Pre"_s << none << none << u"Pre\n\n"_s;
    QTest::newRow("persona alone") << none << u"Persona"_s << none << u"Persona\n"_s;
    QTest::newRow("postamble alone") << none << none << u"Post"_s << u"Post\n"_s;
    QTest::newRow("nothing") << none << none << none << none;
    QTest::newRow("lines and blanks within")
        << u"  Pre \n"_s << u" Per\n\nsona "_s << u" Post "_s << u"Pre \n\n Per\n\nsona \n Post \n"_s;
}

void TestConversationText::system_text_is_put_together_from_its_parts()
{
    QFETCH(QString, preamble);
    QFETCH(QString, description);
    QFETCH(QString, postamble);
    QFETCH(QString, shown);
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(stage.exec(u"UPDATE personas SET attributes = ?"_s, {description}));
    setBoilerplate(stage, preamble, postamble);
    QCOMPARE(Box(stage).show(u"Persona A"_s, u"1"_s), shown + u"Q: One\nA: (pending)"_s);
}

void TestConversationText::persona_speaks_from_its_system_prompt_before_its_description_data()
{
    QTest::addColumn<QVariant>("systemPrompt");
    QTest::addColumn<QVariant>("description");
    QTest::addColumn<QString>("shown");
    QTest::newRow("both") << QVariant(u"Prompt"_s) << QVariant(u"Text"_s) << u"X\nPrompt\n"_s;
    QTest::newRow("null prompt") << QVariant() << QVariant(u"Text"_s) << u"X\nText\n"_s;
    QTest::newRow("empty prompt") << QVariant(u""_s) << QVariant(u"Text"_s) << u"X\nText\n"_s;
    QTest::newRow("blank prompt") << QVariant(u" "_s) << QVariant(u"Text"_s) << u"X\n \n"_s;
    QTest::newRow("neither") << QVariant() << QVariant() << u"X\n\n"_s;
}

void TestConversationText::persona_speaks_from_its_system_prompt_before_its_description()
{
    QFETCH(QVariant, systemPrompt);
    QFETCH(QVariant, description);
    QFETCH(QString, shown);
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(stage.exec(u"UPDATE personas SET system_prompt = ?, attributes = ?"_s, {systemPrompt, description}));
    setBoilerplate(stage, u"X"_s, u""_s);
    QCOMPARE(Box(stage).show(), shown + u"Q: One\nA: (pending)"_s);
}

void TestConversationText::boilerplate_is_that_of_the_edits()
{
    Stage stage;
    QVERIFY(fill(stage));
    setBoilerplate(stage, u"Pre"_s, u"Post"_s);
    // The table and the edits differ only where something writes past the program, as here.
    QVERIFY(stage.exec(u"UPDATE boilerplate SET preamble = 'stored', postamble = 'stored'"_s));
    QCOMPARE(Box(stage).show(), u"Pre\nSpeaks as Persona A.\nPost\nQ: One\nA: (pending)"_s);
    auto *preamble = stage.find<QPlainTextEdit>(u"preambleEdit"_s);
    const QSignalBlocker blocker(preamble);
    preamble->setPlainText(u"Typed"_s);
    QCOMPARE(Box(stage).show(), u"Typed\nSpeaks as Persona A.\nPost\nQ: One\nA: (pending)"_s);
}

void TestConversationText::answered_questions_are_shown_up_to_the_chosen_one_data()
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

void TestConversationText::answered_questions_are_shown_up_to_the_chosen_one()
{
    QFETCH(QList<int>, answered);
    QFETCH(QString, chosen);
    QFETCH(QString, shown);
    Stage stage;
    QVERIFY(fill(stage));
    for (const int question : answered)
        QVERIFY(answer(stage, question, u"a%1"_s.arg(question)));
    QCOMPARE(Box(stage).show(u"Persona A"_s, chosen), u"Speaks as Persona A.\n"_s + shown);
}

void TestConversationText::answer_falls_back_from_column_to_column_data()
{
    QTest::addColumn<QVariant>("text");
    QTest::addColumn<QVariant>("number");
    QTest::addColumn<QVariant>("json");
    QTest::addColumn<QString>("shown");
    const QVariant null;
    const QVariant json(u"{\"answer\":\"x\",\"reasoning\":\"y\"}"_s);
    QTest::newRow("text before all") << QVariant(u"word"_s) << QVariant(5) << json << u"word"_s;
    QTest::newRow("number behind no text") << null << QVariant(5) << json << u"5"_s;
    QTest::newRow("number behind an empty text") << QVariant(u""_s) << QVariant(-2.5) << json << u"-2.5"_s;
    QTest::newRow("zero is a number") << null << QVariant(0) << json << u"0"_s;
    QTest::newRow("six digits") << null << QVariant(3.14159265) << null << u"3.14159"_s;
    QTest::newRow("seven digits") << null << QVariant(1234567) << null << u"1.23457e+06"_s;
    QTest::newRow("document behind both") << null << null << json << json.toString();
    QTest::newRow("document behind an empty text") << QVariant(u""_s) << null << json << json.toString();
    QTest::newRow("raw reply") << null << null << QVariant(u"Well, yes."_s) << u"Well, yes."_s;
    QTest::newRow("blank text") << QVariant(u" x "_s) << QVariant(5) << null << u" x"_s;
    QTest::newRow("nothing in the row") << null << null << null << u"(pending)"_s;
    QTest::newRow("empty texts") << QVariant(u""_s) << null << QVariant(u""_s) << u"(pending)"_s;
}

void TestConversationText::answer_falls_back_from_column_to_column()
{
    QFETCH(QVariant, text);
    QFETCH(QVariant, number);
    QFETCH(QVariant, json);
    QFETCH(QString, shown);
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(addAnswer(stage, u"a"_s, 1, QVariantList({text, number, json})));
    QCOMPARE(Box(stage).show(), u"Speaks as Persona A.\nQ: One\nA: "_s + shown);
}

void TestConversationText::newest_answer_counts()
{
    Stage stage;
    QVERIFY(fill(stage));
    const QVariant null;
    QVERIFY(addAnswer(stage, u"a"_s, 1, {u"middle"_s, null, null}, u"2026-01-02 00:00:00"_s));
    QVERIFY(addAnswer(stage, u"a"_s, 1, {u"newest"_s, null, null}, u"2026-01-03 00:00:00"_s));
    QVERIFY(addAnswer(stage, u"a"_s, 1, {u"oldest"_s, null, null}, u"2026-01-01 00:00:00"_s));
    QCOMPARE(Box(stage).show(), u"Speaks as Persona A.\nQ: One\nA: newest"_s);
    // A newer row without an answer hides the older ones.
    QVERIFY(addAnswer(stage, u"a"_s, 1, {null, null, null}, u"2026-01-04 00:00:00"_s));
    QCOMPARE(Box(stage).show(), u"Speaks as Persona A.\nQ: One\nA: (pending)"_s);
}

void TestConversationText::an_empty_pending_prompt_leaves_no_trace()
{
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(answer(stage, 1, u"a1"_s));
    QVERIFY(stage.exec(u"UPDATE questions SET prompt = '' WHERE question_id = 2"_s));
    QCOMPARE(Box(stage).show(u"Persona A"_s, u"2"_s), u"Speaks as Persona A.\nQ: One\nA: a1"_s);
    QVERIFY(stage.exec(u"UPDATE questions SET prompt = NULL WHERE question_id = 2"_s));
    QCOMPARE(Box(stage).show(), u"Speaks as Persona A.\nQ: One\nA: a1"_s);
}

void TestConversationText::blank_answers_count_as_answers()
{
    Stage stage;
    QVERIFY(fill(stage));
    QVERIFY(answer(stage, 1, u" \n "_s) && answer(stage, 2, u" \n"_s));
    QCOMPARE(Box(stage).show(u"Persona A"_s, u"2"_s), u"Speaks as Persona A.\nQ: One\nA:  \n \nQ: Two\nA:"_s);
}

QTEST_MAIN(TestConversationText)
#include "tst_conversationtext.moc"
