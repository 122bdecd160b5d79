// What the persona dialog reads when it opens, and what becomes of it while it is open.

#include "tests/personas/personaform.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"

#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

class TestPersonaEditorRead : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_persona_that_is_gone_opens_empty_and_is_still_updated()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        QVERIFY(stage.exec(u"DELETE FROM personas"_s));
        const QuietRefresh quiet(stage);
        QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
            QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u"a, b"_s}));
            form.type(u"Number Two"_s, u"Calm."_s, u"c"_s);
            form.accept();
        }));
        QCOMPARE(stage.count(u"personas"_s), 0);
        QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"c"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_persona_that_cant_be_read_can_be_overwritten()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        QVERIFY(stage.exec(u"ALTER TABLE personas RENAME COLUMN attributes TO elsewhere"_s));
        QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
            QCOMPARE(form.texts(), QStringList({u""_s, u""_s, u"a, b"_s}));
            QVERIFY(stage.exec(u"ALTER TABLE personas RENAME COLUMN elsewhere TO attributes"_s));
            form.accept();
        }));
        QCOMPARE(stage.rows(u"SELECT uuid, name, attributes FROM personas"_s), Rows({{u"p"_s, u""_s, u""_s}}));
    }

    void what_changes_behind_the_dialog_is_overwritten()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
            stage.call("updatePersona", u"p"_s, u"Number Two"_s, u"Calm."_s, u"c"_s);
            QCOMPARE(form.texts(), QStringList({u"Number One"_s, u"keeps bees"_s, u"a, b"_s}));
            form.accept();
        }));
        QCOMPARE(stage.rows(u"SELECT name, attributes FROM personas"_s), Rows({{u"Number One"_s, u"keeps bees"_s}}));
        QCOMPARE(tagsOf(stage, u"p"_s), QStringList({u"a"_s, u"b"_s}));
    }

    void the_persona_stays_the_one_that_was_opened()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
            // Another persona takes the first row meanwhile.
            QVERIFY(enter(stage, PersonaEntered{u"a"_s, u"Number Zero"_s}));
            refreshQuietly(stage);
            QCOMPARE(columnTexts(personaTable(stage), 0), QStringList({u"Number Zero"_s, u"Number One"_s}));
            typeInto(form.name, u"Number Two"_s);
            form.accept();
        }));
        QCOMPARE(stage.column(u"SELECT name FROM personas ORDER BY uuid"_s),
                 QStringList({u"Number Zero"_s, u"Number Two"_s}));
    }

    void missing_tag_tables_are_made_by_ok()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        QVERIFY(stage.exec({u"DROP TABLE tags"_s, u"DROP TABLE persona_tags"_s}));
        QVERIFY(editPersona(stage, 0, [](const PersonaForm &form) {
            QCOMPARE(form.texts(), QStringList({u"Number One"_s, u"keeps bees"_s, u""_s}));
            form.accept();
        }));
        QCOMPARE(stage.count(u"tags"_s), 0);
        QCOMPARE(stage.count(u"persona_tags"_s), 0);
        QCOMPARE(personaTable(stage)->rowCount(), 1);
    }

    void tags_that_cant_be_read_open_empty()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        QVERIFY(stage.exec(u"ALTER TABLE persona_tags RENAME TO elsewhere"_s));
        QVERIFY(editPersona(stage, 0, [&](const PersonaForm &form) {
            QCOMPARE(form.texts(), QStringList({u"Number One"_s, u"keeps bees"_s, u""_s}));
            QVERIFY(stage.exec(u"ALTER TABLE elsewhere RENAME TO persona_tags"_s));
            form.accept();
        }));
        QCOMPARE(tagsOf(stage, u"p"_s), QStringList());
        QCOMPARE(knownTags(stage), QStringList({u"b"_s, u"a"_s}));
    }

    void test_mode_keeps_the_dialog_off_the_screen()
    {
        Stage stage;
        QVERIFY(showTagged(stage));
        for (const bool testMode : {true, false}) {
            Stage::setTestMode(testMode);
            for (const int row : {0, -1})
                QVERIFY(editPersona(stage, row, [&](const PersonaForm &form) {
                    QCOMPARE(form.dialog->testAttribute(Qt::WA_DontShowOnScreen), testMode);
                    QCOMPARE(form.name->text().isEmpty(), row < 0);
                    typeInto(form.name, u"Number Two"_s);
                    form.accept();
                }));
        }
        // It stores all the same.
        QCOMPARE(stage.column(u"SELECT name FROM personas"_s), QStringList(3, u"Number Two"_s));
    }

    void a_run_goes_on_behind_the_dialog()
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
};

ORRINET_TEST(TestPersonaEditorRead)
#include "tst_personaeditorread.moc"
