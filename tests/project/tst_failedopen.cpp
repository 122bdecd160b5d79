// The window after a file that opened but could not be read: the project is emptied, yet still shown.

#include "tests/project/projectfile.h"
#include "tests/support/modal.h"

#include <QDialog>
#include <QGroupBox>

using namespace Qt::StringLiterals;

namespace {

/// Leaves a project of a file, with something in every view, emptied by a text file.
void failToOpen(Stage &stage)
{
    QVERIFY(stage.result("openProjectFromFile", writeProject(stage.path(u"mine.ormt"_s), oneOfEach())));
    warningOnce([](Stage &emptied) { QVERIFY(!emptied.result("openProjectFromFile", writeText(emptied))); })(stage);
    QCOMPARE(tableOfEachRow(stage), QStringList());
}

QStringList textsInAllViews(Stage &stage)
{
    const ConversationBox box(stage);
    QStringList texts{preambleEdit(stage)->toPlainText(), postambleEdit(stage)->toPlainText()};
    texts << shownPersonas(stage) << items(box.persona) << items(box.question) << items(tagFilter(stage));
    for (const auto rows = cells(resultsTable(stage)); const QStringList &row : rows)
        texts << row;
    return texts;
}

/// Types at the front of a text, and expects this row of boilerplate.
Act typingAtFront(const QString &edit, const QVariantList &row)
{
    return [edit, row](Stage &stage) {
        QTest::keyClicks(stage.find<QPlainTextEdit>(edit), u"A "_s);
        QCOMPARE(stage.rows(u"SELECT preamble, postamble FROM boilerplate"_s), Rows{row});
    };
}

void addQuestion(Stage &stage)
{
    stage.button(u"Add"_s, u"Questions"_s)->click();
    QCOMPARE(stage.rows(u"SELECT question_id, order_num, prompt FROM questions"_s),
             (Rows{{1, 1, u"Test question?"_s}}));
    QCOMPARE(questionModel(stage)->rowCount(), 1);
}

} // namespace

class TestFailedOpen : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_project_is_emptied_and_still_shown();
    void a_refresh_makes_the_window_whole_again();
    void window_carries_on_data();
    void window_carries_on();
    void a_shown_persona_can_be_edited();
    void a_run_has_nobody_to_ask();
    void the_emptied_project_can_be_saved();
};

void TestFailedOpen::the_project_is_emptied_and_still_shown()
{
    Stage stage;
    const QString path = writeOther(stage);
    QVERIFY(stage.result("openProjectFromFile", path));
    const QStringList before = textsInAllViews(stage);
    QCOMPARE(before, (QStringList{u"Pre."_s, u"Post."_s, u"Number One"_s, u"Number One"_s, u"1"_s, u"All"_s, u"odd"_s,
                                  u"Number One"_s, u"Hm."_s, QString()}));
    {
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", writeText(stage)));
        QCOMPARE(log.warnings(), QStringList{readingError(stage, stage.path(u"text.ormt"_s))});
    }
    QCOMPARE(tableOfEachRow(stage), QStringList());
    QCOMPARE(stage.count(u"sqlite_sequence"_s), 0);
    QVERIFY(questionView(stage)->model() == nullptr);
    QVERIFY(stage.window()->findChildren<QSqlTableModel *>().isEmpty());
    QCOMPARE(textsInAllViews(stage), before);
    QVERIFY(!ConversationBox(stage).group->isHidden());
    QVERIFY(onlyProjectIsConnected());
    QCOMPARE(stage.count(u"pragma_database_list WHERE name = 'disk'"_s), 0);
    QVERIFY(!stage.asksBeforeClosing());
    QVERIFY(savesTo(stage, path));
}

void TestFailedOpen::a_refresh_makes_the_window_whole_again()
{
    Stage stage;
    failToOpen(stage);
    stage.call("loadProject");
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(questionView(stage)->isColumnHidden(0));
    QCOMPARE(textsInAllViews(stage), (QStringList{u"Act as the following persona."_s, QString(), u"All"_s}));
    QVERIFY(ConversationBox(stage).group->isHidden());
}

void TestFailedOpen::window_carries_on_data()
{
    QTest::addColumn<Act>("act");
    QTest::addColumn<QStringList>("personas");
    QTest::addColumn<bool>("listed");
    const QStringList old{u"Number One"_s};
    const QStringList none;
    const auto add = [](const char *name, const Act &act, const QStringList &personas, bool listed) {
        QTest::newRow(name) << act << personas << listed;
    };
    add("add a question", addQuestion, old, true);
    add("delete a question", pressing(u"Delete"_s, u"Questions"_s), old, false);
    add("move a question up", pressing(u"Up"_s, u"Questions"_s), old, false);
    add("move a question down", pressing(u"Down"_s, u"Questions"_s), old, false);
    add("edit a question that is gone", [](Stage &stage) { stage.call("editQuestion", 0); }, old, true);
    add("copy a persona", pressing(u"Copy"_s, u"Digital Twins"_s), old, false);
    add("delete a persona", pressing(u"Delete"_s, u"Digital Twins"_s), none, true);
    add(
        "add a persona", [](Stage &stage) { stage.call("insertPersona", u"Number Two"_s, u"Calm."_s, u"even"_s); },
        {u"Number Two"_s}, true);
    add("show a conversation", pressing(u"Show"_s, u"Boilerplate"_s), old, false);
    add("refresh the questions", calling("loadQuestions"), old, true);
    add("refresh the results", calling("loadResults"), old, false);
    add("run", calling("runSurvey"), old, false);
    add("new project", calling("newProject"), none, true);
    add("open another", calling("openProjectFromFile", u"mine.ormt"_s), old, true);
    add("save", calling("saveProjectToFile", u"saved.ormt"_s), old, true);
    add("save over the old one", warningOnce(calling("saveProjectToFile", u"mine.ormt"_s)), old, false);
    add("export a pack", calling("exportPackToFile", u"pack.ornk"_s), old, false);
    add("import a pack", calling("importPack", u"mine.ormt"_s), old, true);
    add("show a pack", calling("loadPack", u"mine.ormt"_s), old, false);
    add("choose a tag", [](Stage &stage) { tagFilter(stage)->setCurrentText(u"odd"_s); }, none, true);
    add("change the preamble", typingAtFront(u"preambleEdit"_s, {u"A Pre."_s, u""_s}), old, false);
    add("change the postamble", typingAtFront(u"postambleEdit"_s, {u"Pre."_s, u"A Post."_s}), old, false);
    add("fail again", warningOnce(calling("openProjectFromFile", u"text.ormt"_s)), old, false);
}

void TestFailedOpen::window_carries_on()
{
    QFETCH(const Act, act);
    QFETCH(const QStringList, personas);
    QFETCH(const bool, listed);
    Stage stage;
    Stage::setTestMode(true);
    failToOpen(stage);
    personaTable(stage)->setCurrentCell(0, 0);
    act(stage);
    QCOMPARE(shownPersonas(stage), personas);
    QCOMPARE(questionModel(stage) != nullptr, listed);
    stage.call("loadProject");
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(shownPersonas(stage).size(), stage.count(u"personas"_s));
    QVERIFY(onlyProjectIsConnected());
}

void TestFailedOpen::a_shown_persona_can_be_edited()
{
    Stage stage;
    failToOpen(stage);
    const Modal modal([](QWidget *dialog) { qobject_cast<QDialog *>(dialog)->accept(); });
    stage.call("editPersona", 0, 0);
    QVERIFY(modal.wasAnswered());
    QCOMPARE(stage.count(u"personas"_s), 0);
    QVERIFY(shownPersonas(stage).isEmpty());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(stage.asksBeforeClosing());
}

void TestFailedOpen::a_run_has_nobody_to_ask()
{
    Stage stage;
    // Whoever is asked has an answer at once.
    Stage::setTestMode(true);
    failToOpen(stage);
    stage.action(u"Run"_s)->trigger();
    QVERIFY(stage.action(u"Run"_s)->isEnabled());
    QCOMPARE(stage.count(u"responses"_s), 0);
    QCOMPARE(resultsTable(stage)->rowCount(), 0);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestFailedOpen::the_emptied_project_can_be_saved()
{
    Stage stage;
    failToOpen(stage);
    const QString path = stage.path(u"saved.ormt"_s);
    QVERIFY(stage.result("saveProjectToFile", path));
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(!stage.asksBeforeClosing());
    // With the list comes the grid.
    QCOMPARE(resultsTable(stage)->rowCount(), 0);
    SideDatabase file(path);
    QCOMPARE(tableOfEachRow(file), QStringList());
}

ORRINET_TEST(TestFailedOpen)
#include "tst_failedopen.moc"
