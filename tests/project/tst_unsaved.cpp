// The file of a project and its unsaved changes: how the two come about, and which operations leave them alone.

#include "tests/project/projectfile.h"

using namespace Qt::StringLiterals;

namespace {

/// A project with rows to act on, saved to "mine.ormt". Test mode is on.
void saveMine(Stage &stage)
{
    Stage::setTestMode(true);
    stage.call("insertPersona", u"Number One"_s, u"Calm."_s, u"odd"_s);
    showQuestions(stage, 2);
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"mine.ormt"_s)));
    QVERIFY(!stage.asksBeforeClosing());
    personaTable(stage)->setCurrentCell(0, 0);
    QCOMPARE(items(tagFilter(stage)), (QStringList{u"All"_s, u"odd"_s}));
}

/// Calls a slot with a pack of the project's own personas.
Act callingWithPack(const char *slot)
{
    return [slot](Stage &stage) {
        QVERIFY(stage.result("exportPackToFile", stage.path(u"pack.ornk"_s)));
        stage.call(slot, stage.path(u"pack.ornk"_s));
    };
}

void addPersona(Stage &stage)
{
    stage.call("insertPersona", u"Number Two"_s, u"Calm."_s);
}

void save(Stage &stage)
{
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
}

void openOther(Stage &stage)
{
    QVERIFY(stage.result("openProjectFromFile", writeOther(stage)));
}

Act failedSaving()
{
    return warningOnce(calling("saveProjectToFile", u"no/where.ormt"_s));
}

Act failedOpening()
{
    return warningOnce(calling("openProjectFromFile", u"no/where.ormt"_s));
}

Act failedReading()
{
    return warningOnce([](Stage &stage) { QVERIFY(!stage.result("openProjectFromFile", writeText(stage))); });
}

} // namespace

class TestUnsaved : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void project_has_a_file_and_changes_data();
    void project_has_a_file_and_changes();
    void typing_marks_the_project();
    void the_operation_itself_marks_the_project_data();
    void the_operation_itself_marks_the_project();
    void an_operation_that_changes_nothing_marks_it_too_data();
    void an_operation_that_changes_nothing_marks_it_too();
    void the_mark_stays_as_it_was_data();
    void the_mark_stays_as_it_was();
    void a_refresh_during_the_saving_is_no_change();
    void a_change_during_the_opening_is_no_change();
};

void TestUnsaved::project_has_a_file_and_changes_data()
{
    QTest::addColumn<QList<Act>>("acts");
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("changed");
    const Act renew = calling("newProject");
    const Act change = addPersona;
    const Act open = openOther;
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
    add("not saved", {change, failedSaving()}, none, true);
    add("not opened", {change, failedOpening()}, none, true);
    add("not read", {change, failedReading()}, none, true);
    add("saved unchanged", {save}, saved, false);
    add("saved", {change, save}, saved, false);
    add("saved, then not saved", {save, failedSaving()}, saved, false);
    add("saved, then not opened", {save, failedOpening()}, saved, false);
    add("saved, then not read", {save, failedReading()}, saved, false);
    add("saved after opening", {open, change, save}, saved, false);
    add("opened", {open}, opened, false);
    add("opened after a change", {change, open}, opened, false);
    add("opened after saving", {change, save, change, open}, opened, false);
    add("opened after not read", {change, failedReading(), open}, opened, false);
    add("saved and changed", {save, change}, saved, true);
    add("saved and changed, then not saved", {save, change, failedSaving()}, saved, true);
    add("opened and changed", {open, change}, opened, true);
    add("opened and changed, then not opened", {open, change, failedOpening()}, opened, true);
    add("opened and changed, then not read", {open, change, failedReading()}, opened, true);
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

void TestUnsaved::typing_marks_the_project()
{
    Stage stage;
    for (QPlainTextEdit *edit : {preambleEdit(stage), postambleEdit(stage)}) {
        stage.call("newProject");
        QVERIFY(!stage.asksBeforeClosing());
        QTest::keyClicks(edit, u"M"_s);
        QVERIFY(stage.asksBeforeClosing());
    }
}

void TestUnsaved::the_operation_itself_marks_the_project_data()
{
    QTest::addColumn<Act>("act");
    QTest::newRow("a new persona") << Act(addPersona);
    QTest::newRow("a changed persona") << Act([](Stage &stage) {
        const QString uuid = stage.value(u"SELECT uuid FROM personas"_s).toString();
        stage.call("updatePersona", uuid, u"Number Two"_s, u"Calm."_s);
    });
    QTest::newRow("a copied persona") << calling("copyPersona");
    QTest::newRow("a deleted persona") << calling("deletePersona");
    QTest::newRow("an imported pack") << callingWithPack("importPack");
    QTest::newRow("a new question") << Act(
        [](Stage &stage) { stage.call("insertQuestion", u"Third?"_s, u"text"_s, false); });
    QTest::newRow("a changed question") << Act(
        [](Stage &stage) { stage.call("updateQuestion", 1, u"First of all?"_s, u"text"_s, false); });
    QTest::newRow("a deleted question") << pressingFor(0, u"Delete"_s);
    QTest::newRow("a question moved up") << pressingFor(1, u"Up"_s);
    QTest::newRow("a question moved down") << pressingFor(0, u"Down"_s);
    QTest::newRow("an answer") << calling("runSurvey");
    QTest::newRow("the mark itself") << Act([](Stage &stage) { stage.window()->markDirty(); });
    QTest::newRow("the slot of the preamble") << calling("preambleChanged");
    QTest::newRow("the slot of the postamble") << calling("postambleChanged");
}

void TestUnsaved::the_operation_itself_marks_the_project()
{
    QFETCH(const Act, act);
    Stage stage;
    saveMine(stage);
    const QuietRefresh quiet(stage);
    stage.call("loadProject");
    QVERIFY(!stage.asksBeforeClosing());
    personaTable(stage)->setCurrentCell(0, 0);
    act(stage);
    QVERIFY(stage.asksBeforeClosing());
}

void TestUnsaved::an_operation_that_changes_nothing_marks_it_too_data()
{
    QTest::addColumn<Act>("act");
    QTest::newRow("a refresh") << calling("loadProject");
    QTest::newRow("the slot of the tag filter") << calling("applyTagFilter");
    QTest::newRow("a chosen tag") << Act([](Stage &stage) { tagFilter(stage)->setCurrentText(u"odd"_s); });
    QTest::newRow("the same preamble") << Act(
        [](Stage &stage) { preambleEdit(stage)->setPlainText(preambleEdit(stage)->toPlainText()); });
    QTest::newRow("the same postamble") << Act(
        [](Stage &stage) { postambleEdit(stage)->setPlainText(postambleEdit(stage)->toPlainText()); });
    QTest::newRow("a persona that is not there")
        << Act([](Stage &stage) { stage.call("updatePersona", u"nobody"_s, u"Number Two"_s, u"Calm."_s); });
    QTest::newRow("a question that is not there")
        << Act([](Stage &stage) { stage.call("updateQuestion", 99, u"First of all?"_s, u"text"_s, false); });
    QTest::newRow("a pack that is known") << callingWithPack("importPack");
    QTest::newRow("a pack that is not there yet") << calling("importPack", u"missing.ornk"_s);
}

void TestUnsaved::an_operation_that_changes_nothing_marks_it_too()
{
    QFETCH(const Act, act);
    Stage stage;
    saveMine(stage);
    const QStringList before = everyRow(stage.database());
    act(stage);
    QVERIFY(stage.asksBeforeClosing());
    QCOMPARE(everyRow(stage.database()), before);
}

void TestUnsaved::the_mark_stays_as_it_was_data()
{
    QTest::addColumn<Act>("act");
    QTest::newRow("refreshed questions") << calling("loadQuestions");
    QTest::newRow("refreshed results") << calling("loadResults");
    QTest::newRow("an edited cell") << Act([](Stage &stage) {
        QVERIFY(questionModel(stage)->setData(questionModel(stage)->index(0, 2), u"Edited?"_s));
        QCOMPARE(stage.value(u"SELECT prompt FROM questions WHERE order_num = 1"_s).toString(), u"Edited?"_s);
    });
    QTest::newRow("a row changed behind the window")
        << Act([](Stage &stage) { QVERIFY(stage.exec(u"UPDATE personas SET name = 'Number Three'"_s)); });
    QTest::newRow("an exported pack") << calling("exportPackToFile", u"new.ornk"_s);
    QTest::newRow("a pack that is shown") << callingWithPack("loadPack");
    QTest::newRow("a pack that is not imported") << warningOnce(calling("importPack", u"no/where.ornk"_s));
    QTest::newRow("a file that is not written") << failedSaving();
    QTest::newRow("a file that is not written over") << warningOnce(calling("saveProjectToFile", u"mine.ormt"_s));
    QTest::newRow("a file that is not opened") << failedOpening();
    QTest::newRow("a file that is not read") << failedReading();
    QTest::newRow("the first question moved up") << pressingFor(0, u"Up"_s);
    QTest::newRow("the last question moved down") << pressingFor(1, u"Down"_s);
    QTest::newRow("nobody to delete or copy") << Act([](Stage &stage) {
        personaTable(stage)->setCurrentCell(-1, -1);
        stage.call("deletePersona");
        stage.call("copyPersona");
    });
    QTest::newRow("a run with nothing to ask") << Act([](Stage &stage) {
        QVERIFY(stage.exec(u"DELETE FROM questions"_s));
        stage.call("runSurvey");
    });
    QTest::newRow("a conversation") << pressing(u"Show"_s, u"Boilerplate"_s);
    QTest::newRow("columns shown and hidden") << Act([](Stage &stage) {
        stage.action(u"Show Created"_s)->trigger();
        stage.action(u"Show Modified"_s)->trigger();
    });
    for (const char *slot : {"openProject", "saveProjectAs", "onImport", "exportPack", "showPreferences"})
        QTest::newRow(slot) << calling(slot);
}

void TestUnsaved::the_mark_stays_as_it_was()
{
    QFETCH(const Act, act);
    for (const bool changed : {false, true}) {
        Stage stage;
        saveMine(stage);
        if (changed)
            stage.window()->markDirty();
        act(stage);
        QCOMPARE(stage.asksBeforeClosing(), changed);
    }
}

void TestUnsaved::a_refresh_during_the_saving_is_no_change()
{
    Stage stage;
    saveMine(stage);
    int refreshes = 0;
    connect(questionModel(stage), &QAbstractItemModel::modelReset, this, [&] {
        ++refreshes;
        stage.window()->markDirty();
    });
    save(stage);
    QCOMPARE_GT(refreshes, 0);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestUnsaved::a_change_during_the_opening_is_no_change()
{
    Stage stage;
    int refreshes = 0;
    connect(resultsTable(stage)->model(), &QAbstractItemModel::columnsInserted, this, [&] {
        ++refreshes;
        stage.window()->markDirty();
    });
    openOther(stage);
    QCOMPARE_GT(refreshes, 0);
    QVERIFY(!stage.asksBeforeClosing());
}

ORRINET_TEST(TestUnsaved)
#include "tst_unsaved.moc"
