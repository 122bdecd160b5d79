// What the persona dialog reads when it opens, and what becomes of it while it is open.

#include "tests/personas/personaform.h"
#include "tests/survey/surveystage.h"

#include <QTest>

using namespace Qt::StringLiterals;

class TestPersonaEditorRead : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_persona_that_is_gone_opens_empty_and_is_still_updated();
    void a_persona_that_cant_be_read_can_be_overwritten();
    void what_changes_behind_the_dialog_is_overwritten();
    void the_persona_stays_the_one_that_was_opened();
    void missing_tag_tables_are_made_by_ok();
    void tags_that_cant_be_read_open_empty();
    void row_of_a_pack_opens_the_persona_of_the_project_data();
    void row_of_a_pack_opens_the_persona_of_the_project();
    void test_mode_keeps_the_dialog_off_the_screen_data();
    void test_mode_keeps_the_dialog_off_the_screen();
    void a_run_goes_on_behind_the_dialog();
};

void TestPersonaEditorRead::a_persona_that_is_gone_opens_empty_and_is_still_updated()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    QVERIFY(stage.exec(u"DELETE FROM personas"_s));
    QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
        QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u"a, b"_s}));
        form.setTexts(u"Number Two"_s, u"Calm."_s, u"c"_s);
        form.accept();
    }));
    QCOMPARE(count(stage, u"personas"_s), 0);
    QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"c"_s}));
    QVERIFY(stage.asksBeforeClosing());
}

void TestPersonaEditorRead::a_persona_that_cant_be_read_can_be_overwritten()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    QVERIFY(stage.exec(u"ALTER TABLE personas RENAME COLUMN attributes TO elsewhere"_s));
    QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
        QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u"a, b"_s}));
        QVERIFY(stage.exec(u"ALTER TABLE personas RENAME COLUMN elsewhere TO attributes"_s));
        form.accept();
    }));
    QCOMPARE(stage.rows(u"SELECT uuid, name, attributes FROM personas"_s), Rows({{u"p"_s, u""_s, u""_s}}));
}

void TestPersonaEditorRead::what_changes_behind_the_dialog_is_overwritten()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
        stage.call("updatePersona", u"p"_s, u"Number Two"_s, u"Calm."_s, u"c"_s);
        QCOMPARE(form.texts(), QStringList({u"Number One"_s, u"keeps bees"_s, u"a, b"_s}));
        form.accept();
    }));
    QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas"_s), Rows({{u"Number One"_s, u"keeps bees"_s}}));
    QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"a"_s, u"b"_s}));
}

void TestPersonaEditorRead::the_persona_stays_the_one_that_was_opened()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
        // Another persona takes the first row meanwhile.
        QVERIFY(enterPersona(stage, u"a"_s, u"Number Zero"_s));
        refreshQuietly(stage);
        form.name->setText(u"Number Two"_s);
        form.accept();
    }));
    QCOMPARE(column(stage, u"SELECT name FROM personas ORDER BY uuid"_s),
             QStringList({u"Number Zero"_s, u"Number Two"_s}));
}

void TestPersonaEditorRead::missing_tag_tables_are_made_by_ok()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    QVERIFY(stage.exec(u"DROP TABLE tags"_s) && stage.exec(u"DROP TABLE persona_tags"_s));
    QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
        QCOMPARE(form.texts(), QStringList({u"Number One"_s, u"keeps bees"_s, u""_s}));
        form.accept();
    }));
    QCOMPARE(count(stage, u"tags"_s), 0);
    QCOMPARE(count(stage, u"persona_tags"_s), 0);
    QCOMPARE(personaTable(stage)->rowCount(), 1);
}

void TestPersonaEditorRead::tags_that_cant_be_read_open_empty()
{
    Stage stage;
    QVERIFY(enterTagged(stage));
    QVERIFY(stage.exec(u"ALTER TABLE persona_tags RENAME TO elsewhere"_s));
    QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
        QCOMPARE(form.texts(), QStringList({u"Number One"_s, u"keeps bees"_s, u""_s}));
        QVERIFY(stage.exec(u"ALTER TABLE elsewhere RENAME TO persona_tags"_s));
        form.accept();
    }));
    QCOMPARE(tagsOf(stage, u"p"_s), QStringList());
    QCOMPARE(knownTags(stage), QStringList({u"b"_s, u"a"_s}));
}

void TestPersonaEditorRead::row_of_a_pack_opens_the_persona_of_the_project_data()
{
    QTest::addColumn<bool>("inProject");
    QTest::newRow("in the project too") << true;
    QTest::newRow("in the pack alone") << false;
}

void TestPersonaEditorRead::row_of_a_pack_opens_the_persona_of_the_project()
{
    QFETCH(const bool, inProject);
    Stage stage;
    QVERIFY(enterTagged(stage));
    const QString pack = stage.path(u"shown.ornk"_s);
    QVERIFY(stage.result("exportPackToFile", pack));
    QVERIFY(stage.exec(u"DELETE FROM persona_tags"_s));
    QVERIFY(stage.exec(inProject ? u"UPDATE personas SET name = 'Of the project'"_s : u"DELETE FROM personas"_s));
    QVERIFY(stage.call("loadPack", pack));
    QCOMPARE(Stage::cells(personaTable(stage)).constFirst().constFirst(), u"Number One"_s);
    QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
        const QStringList shown =
            inProject ? QStringList{u"Of the project"_s, u"keeps bees"_s, u""_s} : QStringList{u""_s, u""_s, u""_s};
        QCOMPARE(form.texts(), shown);
        form.setTexts(u"Number Two"_s, u"Calm."_s, u"c"_s);
        form.accept();
    }));
    const QStringList names = inProject ? QStringList{u"Number Two"_s} : QStringList();
    QCOMPARE(column(stage, u"SELECT name FROM personas"_s), names);
    QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"c"_s}));
}

void TestPersonaEditorRead::test_mode_keeps_the_dialog_off_the_screen_data()
{
    QTest::addColumn<bool>("testMode");
    QTest::newRow("test mode") << true;
    QTest::newRow("otherwise") << false;
}

void TestPersonaEditorRead::test_mode_keeps_the_dialog_off_the_screen()
{
    QFETCH(const bool, testMode);
    Stage stage;
    QVERIFY(enterTagged(stage));
    Stage::setTestMode(testMode);
    for (const int row : {0, -1}) {
        QVERIFY(editPersona(stage, row, [&](const PersonaForm &form) {
            QCOMPARE(form.dialog->testAttribute(Qt::WA_DontShowOnScreen), testMode);
            QCOMPARE(form.name->text(), row == 0 ? u"Number One"_s : QString());
            form.name->setText(u"Number Two"_s);
            form.accept();
        }));
    }
    QCOMPARE(column(stage, u"SELECT name FROM personas"_s), QStringList({u"Number Two"_s, u"Number Two"_s}));
}

void TestPersonaEditorRead::a_run_goes_on_behind_the_dialog()
{
    SurveyStage stage;
    stage.fillTwoByTwo();
    stage.endpoint.queue(standin::Reply::content(u"first"_s).held());
    stage.startRun();
    QVERIFY(stage.arrived(1));
    QVERIFY(editPersona(stage, -1, [&](const PersonaForm &form) {
        stage.endpoint.release();
        QVERIFY(stage.runEnded());
        QVERIFY(form.dialog->isVisible());
    }));
    QCOMPARE(stage.answered(), stage.twoByTwo);
}

QTEST_MAIN(TestPersonaEditorRead)
#include "tst_personaeditorread.moc"
