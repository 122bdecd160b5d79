// The file of a project and its unsaved changes: how the two come about, and which operations leave them alone.

#include "tests/project/projectfile.h"
#include "tests/support/messagelog.h"

#include <QComboBox>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;

using Act = std::function<void(Stage &)>;

namespace {

/// A project with rows to act on, saved to "mine.ormt".
void fillAndSave(Stage &stage)
{
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s, u"odd"_s);
    stage.call("insertQuestion", u"First?"_s, u"text"_s, false);
    stage.call("insertQuestion", u"Second?"_s, u"text"_s, false);
    QVERIFY(writeBytes(stage.path(u"text.ormt"_s), "No database at all. "_ba.repeated(50)));
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"mine.ormt"_s)));
    stage.find<QTableWidget>(u"personaTable"_s)->setCurrentCell(0, 0);
}

Act call(const char *slot)
{
    return [slot](Stage &stage) { stage.call(slot); };
}

/// Calls a slot with a path, which is expected to warn or not.
Act withPath(const char *slot, const QString &name, int warnings = 0)
{
    return [slot, name, warnings](Stage &stage) {
        const MessageLog log;
        stage.call(slot, stage.path(name));
        QCOMPARE(log.warnings().size(), warnings);
    };
}

/// Calls a slot with a pack of the project's own personas.
Act withPack(const char *slot)
{
    return [slot](Stage &stage) {
        QVERIFY(stage.result("exportPackToFile", stage.path(u"pack.ornk"_s)));
        stage.call(slot, stage.path(u"pack.ornk"_s));
    };
}

Act press(const QString &button, int question)
{
    return [button, question](Stage &stage) {
        questionView(stage)->selectRow(question);
        stage.button(button, u"Questions"_s)->click();
    };
}

void change(Stage &stage)
{
    stage.call("insertPersona", u"Number Two"_s, u"Calm."_s);
}

void save(Stage &stage)
{
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
}

void open(Stage &stage)
{
    if (!QFile::exists(stage.path(u"other.ormt"_s)))
        QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    QVERIFY(stage.result("openProjectFromFile", stage.path(u"other.ormt"_s)));
}

Act failToSave()
{
    return withPath("saveProjectToFile", u"no/where.ormt"_s, 1);
}

Act failToOpen()
{
    return withPath("openProjectFromFile", u"no/where.ormt"_s, 1);
}

void failToRead(Stage &stage)
{
    writeBytes(stage.path(u"text.ormt"_s), "No database at all. "_ba.repeated(50));
    withPath("openProjectFromFile", u"text.ormt"_s, 1)(stage);
}

} // namespace

class TestUnsaved : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void project_has_a_file_and_changes_data();
    void project_has_a_file_and_changes();
    void the_operation_itself_marks_the_project_data();
    void the_operation_itself_marks_the_project();
    void an_operation_that_changes_nothing_marks_it_too_data();
    void an_operation_that_changes_nothing_marks_it_too();
    void the_mark_stays_as_it_was_data();
    void the_mark_stays_as_it_was();
    void a_changed_tag_filter_is_a_change();
    void a_refresh_during_the_saving_is_no_change();
    void a_change_during_the_opening_is_no_change();
};

void TestUnsaved::project_has_a_file_and_changes_data()
{
    QTest::addColumn<QList<Act>>("acts");
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("changed");
    const Act renew = call("newProject");
    const auto add = [](const char *name, const QList<Act> &acts, const QString &file, bool changed) {
        QTest::newRow(name) << acts << file << changed;
    };
    const QString none;
    const QString saved = u"saved.ormt"_s;
    const QString opened = u"other.ormt"_s;
    add("at the start", {}, none, false);
    add("new after a change", {change, renew}, none, false);
    add("new after saving", {change, save, renew}, none, false);
    add("new after opening", {open, change, renew}, none, false);
    add("changed", {change}, none, true);
    add("changed after a new one", {save, renew, change}, none, true);
    add("not saved", {change, failToSave()}, none, true);
    add("not opened", {change, failToOpen()}, none, true);
    add("not read", {change, failToRead}, none, true);
    add("saved unchanged", {save}, saved, false);
    add("saved", {change, save}, saved, false);
    add("saved, then not saved", {save, failToSave()}, saved, false);
    add("saved, then not opened", {save, failToOpen()}, saved, false);
    add("saved, then not read", {save, failToRead}, saved, false);
    add("saved after opening", {open, change, save}, saved, false);
    add("opened", {open}, opened, false);
    add("opened after a change", {change, open}, opened, false);
    add("opened after saving", {change, save, change, open}, opened, false);
    add("opened after not read", {change, failToRead, open}, opened, false);
    add("saved and changed", {save, change}, saved, true);
    add("saved and changed, then not saved", {save, change, failToSave()}, saved, true);
    add("opened and changed", {open, change}, opened, true);
    add("opened and changed, then not opened", {open, change, failToOpen()}, opened, true);
    add("opened and changed, then not read", {open, change, failToRead}, opened, true);
}

void TestUnsaved::project_has_a_file_and_changes()
{
    QFETCH(const QList<Act>, acts);
    QFETCH(const QString, file);
    QFETCH(const bool, changed);
    Stage stage;
    // Changes are given up unasked.
    Stage::setTestMode(true);
    for (const Act &act : acts)
        act(stage);
    QCOMPARE(stage.asksBeforeClosing(), changed);
    if (file.isEmpty())
        QVERIFY(belongsToNoFile(stage));
    else
        QVERIFY(savesTo(stage, stage.path(file)));
}

void TestUnsaved::the_operation_itself_marks_the_project_data()
{
    QTest::addColumn<Act>("act");
    QTest::newRow("a new persona") << Act(change);
    QTest::newRow("a changed persona") << Act([](Stage &stage) {
        const QString uuid = stage.value(u"SELECT uuid FROM personas"_s).toString();
        stage.call("updatePersona", uuid, u"Number Two"_s, u"Calm."_s);
    });
    QTest::newRow("a copied persona") << call("copyPersona");
    QTest::newRow("a deleted persona") << call("deletePersona");
    QTest::newRow("an imported pack") << withPack("importPack");
    QTest::newRow("a new question") << Act(
        [](Stage &stage) { stage.call("insertQuestion", u"Third?"_s, u"text"_s, false); });
    QTest::newRow("a changed question") << Act(
        [](Stage &stage) { stage.call("updateQuestion", 1, u"First of all?"_s, u"text"_s, false); });
    QTest::newRow("a deleted question") << press(u"Delete"_s, 0);
    QTest::newRow("a question moved up") << press(u"Up"_s, 1);
    QTest::newRow("a question moved down") << press(u"Down"_s, 0);
    QTest::newRow("an answer") << call("runSurvey");
    QTest::newRow("the mark itself") << Act([](Stage &stage) { stage.window()->markDirty(); });
    QTest::newRow("the slot of the preamble") << call("preambleChanged");
    QTest::newRow("the slot of the postamble") << call("postambleChanged");
}

void TestUnsaved::the_operation_itself_marks_the_project()
{
    QFETCH(const Act, act);
    Stage stage;
    Stage::setTestMode(true);
    fillAndSave(stage);
    // So that the refresh, which passes through the text slots, is not what marks the project.
    const QSignalBlocker preamble(stage.find<QPlainTextEdit>(u"preambleEdit"_s));
    const QSignalBlocker postamble(stage.find<QPlainTextEdit>(u"postambleEdit"_s));
    stage.call("loadProject");
    QVERIFY(!stage.asksBeforeClosing());
    stage.find<QTableWidget>(u"personaTable"_s)->setCurrentCell(0, 0);
    act(stage);
    QVERIFY(stage.asksBeforeClosing());
}

void TestUnsaved::an_operation_that_changes_nothing_marks_it_too_data()
{
    QTest::addColumn<Act>("act");
    QTest::newRow("a refresh") << call("loadProject");
    QTest::newRow("the tag filter") << call("applyTagFilter");
    QTest::newRow("the same preamble") << Act([](Stage &stage) {
        auto *edit = stage.find<QPlainTextEdit>(u"preambleEdit"_s);
        edit->setPlainText(edit->toPlainText());
    });
    QTest::newRow("the same postamble") << Act([](Stage &stage) {
        auto *edit = stage.find<QPlainTextEdit>(u"postambleEdit"_s);
        edit->setPlainText(edit->toPlainText());
    });
    QTest::newRow("a persona that is not there")
        << Act([](Stage &stage) { stage.call("updatePersona", u"nobody"_s, u"Number Two"_s, u"Calm."_s); });
    QTest::newRow("a question that is not there")
        << Act([](Stage &stage) { stage.call("updateQuestion", 99, u"First of all?"_s, u"text"_s, false); });
    QTest::newRow("a pack that is known") << withPack("importPack");
    QTest::newRow("a pack that is not there yet") << withPath("importPack", u"missing.ornk"_s);
}

void TestUnsaved::an_operation_that_changes_nothing_marks_it_too()
{
    QFETCH(const Act, act);
    Stage stage;
    Stage::setTestMode(true);
    fillAndSave(stage);
    const QString all =
        u"SELECT (SELECT group_concat(name) FROM personas), (SELECT group_concat(prompt) FROM questions), "
        "preamble, postamble FROM boilerplate"_s;
    const Rows before = stage.rows(all);
    QVERIFY(!stage.asksBeforeClosing());
    act(stage);
    QVERIFY(stage.asksBeforeClosing());
    QCOMPARE(stage.rows(all), before);
}

void TestUnsaved::the_mark_stays_as_it_was_data()
{
    QTest::addColumn<Act>("act");
    QTest::newRow("refreshed questions") << call("loadQuestions");
    QTest::newRow("refreshed results") << call("loadResults");
    QTest::newRow("an edited cell") << Act([](Stage &stage) {
        QVERIFY(questionModel(stage)->setData(questionModel(stage)->index(0, 2), u"Edited?"_s));
        QCOMPARE(stage.value(u"SELECT prompt FROM questions WHERE order_num = 1"_s).toString(), u"Edited?"_s);
    });
    QTest::newRow("a row changed behind the window")
        << Act([](Stage &stage) { QVERIFY(stage.exec(u"UPDATE personas SET name = 'Number Three'"_s)); });
    QTest::newRow("an exported pack") << withPath("exportPackToFile", u"new.ornk"_s);
    QTest::newRow("a pack that is shown") << withPack("loadPack");
    QTest::newRow("a pack that is not imported") << withPath("importPack", u"no/where.ornk"_s, 1);
    QTest::newRow("a file that is not written") << failToSave();
    QTest::newRow("a file that is written over") << withPath("saveProjectToFile", u"mine.ormt"_s, 1);
    QTest::newRow("a file that is not opened") << failToOpen();
    QTest::newRow("a file that is not read") << Act(failToRead);
    QTest::newRow("the first question moved up") << press(u"Up"_s, 0);
    QTest::newRow("the last question moved down") << press(u"Down"_s, 1);
    QTest::newRow("nobody to delete or copy") << Act([](Stage &stage) {
        stage.find<QTableWidget>(u"personaTable"_s)->setCurrentCell(-1, -1);
        stage.call("deletePersona");
        stage.call("copyPersona");
    });
    QTest::newRow("a conversation") << call("showConversation");
    QTest::newRow("columns shown and hidden") << Act([](Stage &stage) {
        stage.action(u"Show Created"_s)->trigger();
        stage.action(u"Show Modified"_s)->trigger();
    });
    for (const char *slot : {"openProject", "saveProjectAs", "onImport", "exportPack", "showPreferences"})
        QTest::newRow(slot) << call(slot);
}

void TestUnsaved::the_mark_stays_as_it_was()
{
    QFETCH(const Act, act);
    for (const bool changed : {false, true}) {
        Stage stage;
        Stage::setTestMode(true);
        fillAndSave(stage);
        if (changed)
            stage.window()->markDirty();
        act(stage);
        QCOMPARE(stage.asksBeforeClosing(), changed);
    }
}

void TestUnsaved::a_changed_tag_filter_is_a_change()
{
    Stage stage;
    fillAndSave(stage);
    stage.find<QComboBox>(u"tagFilter"_s)->setCurrentText(u"odd"_s);
    QVERIFY(stage.asksBeforeClosing());
}

void TestUnsaved::a_refresh_during_the_saving_is_no_change()
{
    Stage stage;
    fillAndSave(stage);
    int refreshes = 0;
    connect(questionModel(stage), &QAbstractItemModel::modelReset, this, [&] {
        ++refreshes;
        stage.window()->markDirty();
    });
    save(stage);
    QVERIFY(refreshes > 0);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestUnsaved::a_change_during_the_opening_is_no_change()
{
    Stage stage;
    QVERIFY(makeProjectFile(stage.path(u"other.ormt"_s), oneOfEach()));
    int refreshes = 0;
    connect(stage.find<QTableWidget>(u"resultsTable"_s)->model(), &QAbstractItemModel::columnsInserted, this, [&] {
        ++refreshes;
        stage.window()->markDirty();
    });
    open(stage);
    QVERIFY(refreshes > 0);
    QVERIFY(!stage.asksBeforeClosing());
}

QTEST_MAIN(TestUnsaved)
#include "tst_unsaved.moc"
