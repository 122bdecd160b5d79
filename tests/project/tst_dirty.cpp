// What makes the closing window ask, and what does not.

#include "tests/project/panel.h"

#include <QAction>
#include <QSqlTableModel>
#include <QTableView>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

using Act = std::function<void(Stage &)>;

namespace {

/// An unchanged project with two personas and two questions in its views: rows that come by a trigger while the project
/// is made are no change.
void prepare(Stage &stage)
{
    stage.exec(u"CREATE TRIGGER seed AFTER INSERT ON boilerplate BEGIN "
               "INSERT OR IGNORE INTO personas (uuid, name) VALUES ('one', 'Number One'), ('two', 'Number Two'); "
               "INSERT OR IGNORE INTO questions (question_id, order_num, prompt, answer_type) "
               "VALUES (1, 1, 'First?', 'text'), (2, 2, 'Second?', 'text'); "
               "INSERT OR IGNORE INTO tags VALUES (1, 'odd'); END"_s);
    stage.call("newProject");
    stage.exec(u"DROP TRIGGER seed"_s);
    stage.find<QTableWidget>(u"personaTable"_s)->setCurrentCell(0, 0);
    stage.find<QTableView>(u"questionView"_s)->selectRow(1);
}

void addCall(const char *name, const char *slot)
{
    QTest::addRow("%s", name) << Act([slot](Stage &stage) { stage.call(slot); });
}

void addButton(const char *name, const QString &text, const QString &page, int question)
{
    QTest::addRow("%s", name) << Act([text, page, question](Stage &stage) {
        stage.find<QTableView>(u"questionView"_s)->selectRow(question);
        stage.button(text, page)->click();
    });
}

void addTyping(const char *name, const char *edit, const QString &text)
{
    QTest::addRow("%s", name) << Act(
        [edit, text](Stage &stage) { stage.find<QPlainTextEdit>(QString::fromLatin1(edit))->setPlainText(text); });
}

} // namespace

class TestDirty : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void change_makes_the_window_ask_data();
    void change_makes_the_window_ask()
    {
        QFETCH(Act, act);
        Stage stage;
        Stage::setTestMode(true);
        prepare(stage);
        QVERIFY(!stage.asksBeforeClosing());
        act(stage);
        QVERIFY(stage.asksBeforeClosing());
        stage.call("newProject");
        QVERIFY(!stage.asksBeforeClosing());
    }

    void other_acts_do_not_data();
    void other_acts_do_not()
    {
        QFETCH(Act, act);
        Stage stage;
        Stage::setTestMode(true);
        prepare(stage);
        act(stage);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void prepared_project_has_rows_to_act_on()
    {
        Stage stage;
        prepare(stage);
        QCOMPARE(personaColumn(stage, 1), (QStringList{u"one"_s, u"two"_s}));
        QCOMPARE(stage.find<QTableView>(u"questionView"_s)->model()->rowCount(), 2);
        QCOMPARE(items(stage.find<QComboBox>(u"tagFilter"_s)), (QStringList{u"All"_s, u"odd"_s}));
    }

    void choosing_a_tag_and_All_again_is_a_change()
    {
        Stage stage;
        prepare(stage);
        auto *filter = stage.find<QComboBox>(u"tagFilter"_s);
        const auto before = stage.rows(u"SELECT * FROM personas, tags, boilerplate"_s);
        filter->setCurrentText(u"odd"_s);
        filter->setCurrentText(u"All"_s);
        QVERIFY(stage.asksBeforeClosing());
        QCOMPARE(stage.rows(u"SELECT * FROM personas, tags, boilerplate"_s), before);
    }
};

void TestDirty::change_makes_the_window_ask_data()
{
    QTest::addColumn<Act>("act");
    addTyping("a new preamble", "preambleEdit", u"Mine."_s);
    addTyping("a new postamble", "postambleEdit", u"Mine."_s);
    addTyping("the same preamble again", "preambleEdit", u"Act as the following persona."_s);
    addCall("a refresh", "loadProject");
    addCall("the slot of the preamble", "preambleChanged");
    addCall("the slot of the postamble", "postambleChanged");
    addCall("the slot of the tag filter", "applyTagFilter");
    addCall("a copied persona", "copyPersona");
    addCall("a deleted persona", "deletePersona");
    addCall("a stored answer", "runSurvey");
    QTest::addRow("a chosen tag") << Act(
        [](Stage &stage) { stage.find<QComboBox>(u"tagFilter"_s)->setCurrentText(u"odd"_s); });
    QTest::addRow("a new persona") << Act(
        [](Stage &stage) { stage.call("insertPersona", u"Number Three"_s, u"Calm."_s); });
    QTest::addRow("a changed persona") << Act(
        [](Stage &stage) { stage.call("updatePersona", u"one"_s, u"Number One"_s, u"Calm."_s); });
    QTest::addRow("a new question") << Act(
        [](Stage &stage) { stage.call("insertQuestion", u"Why?"_s, u"text"_s, false); });
    QTest::addRow("a changed question") << Act(
        [](Stage &stage) { stage.call("updateQuestion", 1, u"Why?"_s, u"text"_s, false); });
    addButton("a deleted question", u"Delete"_s, u"Questions"_s, 0);
    addButton("a question moved up", u"Up"_s, u"Questions"_s, 1);
    addButton("a question moved down", u"Down"_s, u"Questions"_s, 0);
    QTest::addRow("the mark itself") << Act([](Stage &stage) { stage.window()->markDirty(); });
}

void TestDirty::other_acts_do_not_data()
{
    QTest::addColumn<Act>("act");
    addCall("refreshed questions", "loadQuestions");
    addCall("refreshed results", "loadResults");
    addCall("a conversation shown", "showConversation");
    addCall("preferences", "showPreferences");
    addButton("the first question moved up", u"Up"_s, u"Questions"_s, 0);
    addButton("the last question moved down", u"Down"_s, u"Questions"_s, 1);
    addButton("a conversation asked for", u"Show"_s, u"Boilerplate"_s, 0);
    for (const auto text : {"Show Created"_L1, "Show Modified"_L1})
        QTest::newRow(text.data()) << Act([text](Stage &stage) { stage.action(QString(text))->trigger(); });
    QTest::addRow("no persona to copy or delete") << Act([](Stage &stage) {
        stage.find<QTableWidget>(u"personaTable"_s)->setCurrentCell(-1, -1);
        stage.call("copyPersona");
        stage.call("deletePersona");
    });
    QTest::addRow("a cell edited in the question list") << Act([](Stage &stage) {
        auto *model = stage.find<QTableView>(u"questionView"_s)->model();
        QVERIFY(model->setData(model->index(0, 2), u"Changed?"_s));
        QCOMPARE(stage.value(u"SELECT prompt FROM questions WHERE question_id = 1"_s).toString(), u"Changed?"_s);
    });
    QTest::addRow("a run with nothing to ask") << Act([](Stage &stage) {
        stage.exec(u"DELETE FROM questions"_s);
        stage.call("runSurvey");
    });
    QTest::addRow("a saved project") << Act([](Stage &stage) {
        stage.window()->markDirty();
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    });
    QTest::addRow("an opened project") << Act([](Stage &stage) {
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        stage.window()->markDirty();
        QVERIFY(stage.result("openProjectFromFile", stage.path(u"saved.ormt"_s)));
    });
}

QTEST_MAIN(TestDirty)
#include "tst_dirty.moc"
