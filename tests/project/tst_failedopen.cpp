// A file that opens but can't be read: the project is emptied by then, while the window still shows it.

#include "tests/project/projectfile.h"
#include "tests/support/messagelog.h"
#include "tests/support/modal.h"

#include <QComboBox>
#include <QDialog>
#include <QGroupBox>
#include <QPlainTextEdit>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

using Act = std::function<void(Stage &)>;

namespace {

/// Leaves a project of a file, with something in every view, emptied by a text file that does not open.
void failToOpen(Stage &stage)
{
    const QString path = stage.path(u"mine.ormt"_s);
    const QString text = stage.path(u"text.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    QVERIFY(writeBytes(text, "This is a text, and long enough to be taken for a page of a database. "_ba.repeated(9)));
    QVERIFY(stage.result("openProjectFromFile", path));
    const QString reason = refusal(stage, u"ATTACH DATABASE '%1' AS disk"_s.arg(text));
    const MessageLog log;
    QVERIFY(!stage.result("openProjectFromFile", text));
    QCOMPARE(log.warnings(), QStringList{reason});
}

bool isEmptied(Stage &stage)
{
    for (const auto table : {"metadata"_L1, "boilerplate"_L1, "personas"_L1, "questions"_L1, "question_attachments"_L1,
                             "responses"_L1, "tags"_L1, "persona_tags"_L1, "sqlite_sequence"_L1}) {
        if (count(stage, table) != 0)
            return false;
    }
    return true;
}

QStringList shownTexts(Stage &stage)
{
    QStringList texts = shownPersonas(stage);
    for (const auto edit : {"preambleEdit"_L1, "postambleEdit"_L1})
        texts << stage.find<QPlainTextEdit>(edit)->toPlainText();
    for (const auto listed = stage.page(u"Boilerplate"_s)->findChildren<QComboBox *>();
         const QComboBox *chooser : listed)
        texts << chooser->itemText(0);
    texts << stage.find<QComboBox>(u"tagFilter"_s)->itemText(1);
    for (const auto listedToo = Stage::cells(stage.find<QTableWidget>(u"resultsTable"_s));
         const QStringList &row : listedToo)
        texts << row;
    return texts;
}

} // namespace

class TestFailedOpen : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_project_is_emptied_and_still_shown_data();
    void the_project_is_emptied_and_still_shown();
    void a_refresh_makes_the_window_whole_again();
    void window_carries_on_data();
    void window_carries_on();
    void a_question_can_be_added();
    void a_shown_persona_can_be_edited();
    void a_run_has_nobody_to_ask();
    void the_emptied_project_can_be_saved();
    void the_emptied_project_is_not_saved_over_the_old_one();
};

void TestFailedOpen::the_project_is_emptied_and_still_shown_data()
{
    QTest::addColumn<bool>("changed");
    QTest::newRow("unchanged before") << false;
    QTest::newRow("changed before") << true;
}

void TestFailedOpen::the_project_is_emptied_and_still_shown()
{
    QFETCH(const bool, changed);
    Stage stage;
    Stage::setTestMode(true);
    const QString path = stage.path(u"mine.ormt"_s);
    QVERIFY(makeProjectFile(path, oneOfEach()));
    QVERIFY(writeBytes(stage.path(u"text.ormt"_s), "No database at all. "_ba.repeated(50)));
    QVERIFY(stage.result("openProjectFromFile", path));
    if (changed)
        stage.window()->markDirty();
    const QStringList before = shownTexts(stage);
    QCOMPARE(before.first(), u"Number One"_s);
    {
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", stage.path(u"text.ormt"_s)));
        QCOMPARE(log.warnings().size(), 1);
    }
    QVERIFY(isEmptied(stage));
    QVERIFY(questionView(stage)->model() == nullptr);
    QCOMPARE(stage.window()->findChildren<QSqlTableModel *>().size(), 0);
    QCOMPARE(shownTexts(stage), before);
    QVERIFY(!stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->isHidden());
    QVERIFY(onlyProjectIsConnected());
    QVERIFY(stage.rows(u"SELECT * FROM pragma_database_list WHERE name = 'disk'"_s).isEmpty());
    QCOMPARE(stage.asksBeforeClosing(), changed);
    QVERIFY(savesTo(stage, path));
}

void TestFailedOpen::a_refresh_makes_the_window_whole_again()
{
    Stage stage;
    failToOpen(stage);
    stage.call("loadProject");
    QVERIFY(shownPersonas(stage).isEmpty());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(questionView(stage)->isColumnHidden(0));
    QCOMPARE(stage.find<QPlainTextEdit>(u"preambleEdit"_s)->toPlainText(), u"Act as the following persona."_s);
    QCOMPARE(stage.find<QPlainTextEdit>(u"postambleEdit"_s)->toPlainText(), QString());
    QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->rowCount(), 0);
    QVERIFY(stage.page(u"Boilerplate"_s)->findChild<QGroupBox *>()->isHidden());
}

void TestFailedOpen::window_carries_on_data()
{
    QTest::addColumn<Act>("act");
    QTest::addColumn<QStringList>("personas");
    QTest::addColumn<bool>("listed");
    const QStringList old{u"Number One"_s};
    const auto button = [](const QString &text, const QString &page) {
        return Act([text, page](Stage &stage) { stage.button(text, page)->click(); });
    };
    const auto call = [](const char *slot) { return Act([slot](Stage &stage) { stage.call(slot); }); };
    const auto withPath = [](const char *slot, const QString &name) {
        return Act([slot, name](Stage &stage) { stage.call(slot, stage.path(name)); });
    };
    QTest::newRow("delete a question") << button(u"Delete"_s, u"Questions"_s) << old << false;
    QTest::newRow("move a question up") << button(u"Up"_s, u"Questions"_s) << old << false;
    QTest::newRow("move a question down") << button(u"Down"_s, u"Questions"_s) << old << false;
    QTest::newRow("edit a question that is gone")
        << Act([](Stage &stage) { stage.call("editQuestion", 0); }) << old << true;
    QTest::newRow("copy a persona") << button(u"Copy"_s, u"Digital Twins"_s) << old << false;
    QTest::newRow("delete a persona") << button(u"Delete"_s, u"Digital Twins"_s) << QStringList() << true;
    QTest::newRow("show a conversation") << button(u"Show"_s, u"Boilerplate"_s) << old << false;
    QTest::newRow("refresh the questions") << call("loadQuestions") << old << true;
    QTest::newRow("refresh the results") << call("loadResults") << old << false;
    QTest::newRow("run") << call("runSurvey") << old << false;
    QTest::newRow("new project") << call("newProject") << QStringList() << true;
    QTest::newRow("open another") << withPath("openProjectFromFile", u"mine.ormt"_s) << old << true;
    QTest::newRow("save") << withPath("saveProjectToFile", u"saved.ormt"_s) << old << true;
    QTest::newRow("export a pack") << withPath("exportPackToFile", u"pack.ornk"_s) << old << false;
    QTest::newRow("import a pack") << withPath("importPack", u"mine.ormt"_s) << old << true;
    QTest::newRow("show a pack") << withPath("loadPack", u"mine.ormt"_s) << old << false;
    QTest::newRow("choose a tag") << Act([](Stage &stage) {
        stage.find<QComboBox>(u"tagFilter"_s)->setCurrentText(u"odd"_s);
    }) << QStringList() << true;
    QTest::newRow("change the preamble") << Act([](Stage &stage) {
        stage.find<QPlainTextEdit>(u"preambleEdit"_s)->setPlainText(u"New."_s);
        QCOMPARE(stage.rows(u"SELECT preamble, postamble FROM boilerplate"_s), (Rows{{u"New."_s, QString()}}));
    }) << old << false;
    QTest::newRow("change the postamble") << Act([](Stage &stage) {
        stage.find<QPlainTextEdit>(u"postambleEdit"_s)->setPlainText(u"New."_s);
        QCOMPARE(stage.rows(u"SELECT preamble, postamble FROM boilerplate"_s), (Rows{{u"Pre."_s, u"New."_s}}));
    }) << old << false;
    QTest::newRow("add a persona") << Act([](Stage &stage) {
        stage.call("insertPersona", u"Number Two"_s, u"Calm."_s, u"even"_s);
    }) << QStringList{u"Number Two"_s}
                                   << true;
    QTest::newRow("fail again") << Act([](Stage &stage) {
        const MessageLog log;
        QVERIFY(!stage.result("openProjectFromFile", stage.path(u"text.ormt"_s)));
        QCOMPARE(log.warnings().size(), 1);
    }) << old << false;
}

void TestFailedOpen::window_carries_on()
{
    QFETCH(const Act, act);
    QFETCH(const QStringList, personas);
    QFETCH(const bool, listed);
    Stage stage;
    Stage::setTestMode(true);
    failToOpen(stage);
    stage.find<QTableWidget>(u"personaTable"_s)->setCurrentCell(0, 0);
    act(stage);
    QCOMPARE(shownPersonas(stage), personas);
    QCOMPARE(questionModel(stage) != nullptr, listed);
    stage.call("loadProject");
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(shownPersonas(stage).size(), count(stage, u"personas"_s));
    QVERIFY(onlyProjectIsConnected());
}

void TestFailedOpen::a_question_can_be_added()
{
    Stage stage;
    Stage::setTestMode(true);
    failToOpen(stage);
    stage.button(u"Add"_s, u"Questions"_s)->click();
    QCOMPARE(stage.rows(u"SELECT question_id, order_num, prompt FROM questions"_s),
             (Rows{{1, 1, u"Test question?"_s}}));
    QVERIFY(questionListIsWhole(stage));
    QCOMPARE(questionModel(stage)->rowCount(), 1);
    QVERIFY(stage.asksBeforeClosing());
}

void TestFailedOpen::a_shown_persona_can_be_edited()
{
    Stage stage;
    failToOpen(stage);
    const Modal modal([](QWidget *dialog) { qobject_cast<QDialog *>(dialog)->accept(); });
    stage.call("editPersona", 0, 0);
    QVERIFY(modal.wasAnswered());
    QCOMPARE(count(stage, u"personas"_s), 0);
    QVERIFY(shownPersonas(stage).isEmpty());
    QVERIFY(questionListIsWhole(stage));
    QVERIFY(stage.asksBeforeClosing());
}

void TestFailedOpen::a_run_has_nobody_to_ask()
{
    Stage stage;
    failToOpen(stage);
    stage.action(u"Run"_s)->trigger();
    QVERIFY(stage.action(u"Run"_s)->isEnabled());
    QCOMPARE(count(stage, u"responses"_s), 0);
    QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->rowCount(), 0);
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
    QCOMPARE(stage.find<QTableWidget>(u"resultsTable"_s)->rowCount(), 0);
    SideFile file(path);
    QCOMPARE(file.value(u"SELECT COUNT(*) FROM personas"_s).toInt(), 0);
    QCOMPARE(file.value(u"SELECT COUNT(*) FROM boilerplate"_s).toInt(), 0);
}

void TestFailedOpen::the_emptied_project_is_not_saved_over_the_old_one()
{
    Stage stage;
    failToOpen(stage);
    const QByteArray before = readBytes(stage.path(u"mine.ormt"_s));
    const MessageLog log;
    stage.action(u"Save"_s)->trigger();
    QCOMPARE(log.warnings(),
             QStringList{"vacuum into failed "_L1 + refusal(stage, u"VACUUM INTO ?"_s, {stage.path(u"mine.ormt"_s)})});
    QCOMPARE(readBytes(stage.path(u"mine.ormt"_s)), before);
    QVERIFY(questionView(stage)->model() == nullptr);
}

QTEST_MAIN(TestFailedOpen)
#include "tst_failedopen.moc"
