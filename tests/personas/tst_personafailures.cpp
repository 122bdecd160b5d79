// Statements that fail: nothing is reported, and what follows them is done all the same.

#include "tests/personas/panel.h"
#include "tests/support/messagelog.h"

#include <QTest>

using namespace Qt::StringLiterals;

/// Lets statements of one kind ("INSERT ON personas") fail from now on.
static bool forbid(Stage &stage, const QString &statements, const QString &condition = u"1"_s)
{
    return stage.exec(u"CREATE TRIGGER forbidden BEFORE %1 WHEN %2 BEGIN SELECT RAISE(ABORT, 'forbidden'); END"_s.arg(
        statements, condition));
}

class TestPersonaFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tags_are_linked_to_a_persona_that_could_not_be_entered()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(forbid(stage, u"INSERT ON personas"_s));
        const QuietRefresh quiet(stage);
        QVERIFY(stage.call("insertPersona", u"B"_s, u"b"_s, u"x y"_s));

        QCOMPARE(column(stage, u"SELECT name FROM personas"_s), QStringList{u"A"_s});
        const QStringList links = column(stage, u"SELECT persona_uuid FROM persona_tags"_s);
        QCOMPARE(links.size(), 2);
        QCOMPARE(links.first().size(), 36);
        QCOMPARE(links.last(), links.first());
        QCOMPARE(personaTable(stage)->rowCount(), 1);
        QVERIFY(stage.asksBeforeClosing());
    }

    void tags_follow_a_change_that_could_not_be_stored()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        const auto before = stage.rows(u"SELECT * FROM personas"_s);
        QVERIFY(forbid(stage, u"UPDATE ON personas"_s));
        const QuietRefresh quiet(stage);
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, u"x"_s));

        QCOMPARE(stage.rows(u"SELECT * FROM personas"_s), before);
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList{u"x"_s});
        QCOMPARE(Stage::cells(personaTable(stage)).constFirst().first(3), QStringList({u"A"_s, u"u1"_s, u"x"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_deletion_that_fails_refreshes_and_counts_as_a_change()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(enterPersona(stage, u"u2"_s, u"B"_s));
        QVERIFY(forbid(stage, u"DELETE ON personas"_s));
        const QuietRefresh quiet(stage);
        QVERIFY(stage.call("deletePersona"));

        QCOMPARE(count(stage, u"personas"_s), 2);
        QCOMPARE(personaTable(stage)->rowCount(), 2);
        QVERIFY(stage.asksBeforeClosing());
    }

    void a_persona_that_can_not_be_read_is_not_copied()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"x"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(stage.exec(u"ALTER TABLE personas RENAME COLUMN attributes TO narrative"_s));
        QVERIFY(stage.call("copyPersona"));

        QCOMPARE(count(stage, u"personas"_s), 1);
        QCOMPARE(count(stage, u"persona_tags"_s), 1);
        QCOMPARE(personaTable(stage)->rowCount(), 1);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void a_persona_whose_tags_can_not_be_read_is_copied_without_them()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"x"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        QVERIFY(stage.exec(u"ALTER TABLE persona_tags RENAME COLUMN tag_id TO tag"_s));
        {
            // The refresh can't read the links either.
            const MessageLog log;
            QVERIFY(stage.call("copyPersona"));
            QCOMPARE(log.warnings(), QStringList{u"no such column: pt.tag_id Unable to execute statement"_s});
        }
        QCOMPARE(column(stage, u"SELECT name FROM personas"_s), QStringList({u"A"_s, u"A"_s}));
        QCOMPARE(column(stage, u"SELECT persona_uuid FROM persona_tags"_s), QStringList{u"u1"_s});
        QVERIFY(stage.asksBeforeClosing());
    }

    void links_that_can_not_be_removed_do_not_keep_new_ones_out()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterTag(stage, u"u1"_s, u"x"_s));
        QVERIFY(forbid(stage, u"DELETE ON persona_tags"_s));
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"A"_s, u"a"_s, u"y"_s));
        QCOMPARE(tagsOf(stage, u"u1"_s), QStringList({u"x"_s, u"y"_s}));
    }

    void a_tag_that_can_not_be_entered_is_left_out()
    {
        Stage stage;
        stage.window();
        QVERIFY(forbid(stage, u"INSERT ON tags"_s, u"NEW.name = 'bad'"_s));
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x bad y"_s));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"x"_s, u"y"_s}));
        QCOMPARE(count(stage, u"persona_tags"_s), 2);
        QCOMPARE(knownTags(stage), QStringList({u"x"_s, u"y"_s}));
    }

    void a_link_that_can_not_be_entered_is_left_out()
    {
        Stage stage;
        QVERIFY(stage.exec(u"INSERT INTO tags (id, name) VALUES (7, 'bad')"_s));
        QVERIFY(forbid(stage, u"INSERT ON persona_tags"_s, u"NEW.tag_id = 7"_s));
        QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x bad y"_s));
        QCOMPARE(tagsOf(stage, newestUuid(stage)), QStringList({u"x"_s, u"y"_s}));
        QVERIFY(stage.asksBeforeClosing());
    }

    // The table of the links is taken to come and go with that of the tags.
    void missing_links_are_not_made_anew_while_there_are_tags()
    {
        Stage stage;
        QVERIFY(stage.exec(u"DROP TABLE persona_tags"_s));
        {
            const MessageLog log;
            QVERIFY(stage.call("insertPersona", u"A"_s, u"a"_s, u"x"_s));
            QCOMPARE(log.warnings(), QStringList{u"no such table: persona_tags Unable to execute statement"_s});
        }
        QCOMPARE(count(stage, u"personas"_s), 1);
        QCOMPARE(knownTags(stage), QStringList{u"x"_s});
        QVERIFY(!stage.project().tables().contains(u"persona_tags"_s));
        QVERIFY(stage.asksBeforeClosing());
    }

    void links_survive_when_the_tags_alone_are_missing()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        QVERIFY(enterTag(stage, u"u2"_s, u"x"_s));
        QVERIFY(stage.exec(u"DROP TABLE tags"_s));
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"A"_s, u"a"_s, u"y"_s));
        QCOMPARE(knownTags(stage), QStringList{u"y"_s});
        QCOMPARE(column(stage, u"SELECT persona_uuid FROM persona_tags ORDER BY rowid"_s),
                 QStringList({u"u2"_s, u"u1"_s}));
    }

    void nothing_happens_without_an_open_project()
    {
        Stage stage;
        QVERIFY(enterPersona(stage, u"u1"_s, u"A"_s));
        refreshQuietly(stage);
        QVERIFY(makeCurrent(stage, u"u1"_s));
        const auto shown = Stage::cells(personaTable(stage));
        stage.project().close();

        QVERIFY(stage.call("insertPersona", u"B"_s, u"b"_s, u"x"_s));
        QVERIFY(stage.call("updatePersona", u"u1"_s, u"B"_s, u"b"_s, u"x"_s));
        QVERIFY(stage.call("copyPersona"));
        QVERIFY(stage.call("deletePersona"));
        QCOMPARE(Stage::cells(personaTable(stage)), shown);
        QCOMPARE(personaTable(stage)->currentRow(), 0);
        QVERIFY(!stage.asksBeforeClosing());
    }
};

QTEST_MAIN(TestPersonaFailures)
#include "tst_personafailures.moc"
